#include <map>
#include <sstream>

#include "UnarchiverTesting.h"
#include "plugin/HostDoubles.h"
#include "support/LogCapture.h"
#include "support/TestFiles.h"
#include "unarchiver/ZipConstants.h"
#include "unarchiver/ZipUnarchiver.h"
#include "utils/IOUtils.h"

using namespace unarchiver_test;
using tuskel_test::shellQuote;
using tuskel_test::StringBuffer;
typedef ZipConstants Z;

namespace {

// Archives by Info-ZIP's zip from a small tree (zip.zip deflated, zip0.zip
// stored, pipe.zip written to a pipe: data descriptors) and by Python's
// zipfile (good.zip and planted.zip: a to d, c stored; long.zip: names of
// 511 and 512 bytes; 5 empty files), with zipfile's view of each in <archive>.list.
const char* const kMakeScript = R"PY(
import glob, os, random, struct, zipfile
os.makedirs("root/sub"); os.makedirs("root/emptydir")
for name, data in (("hello.txt", b"hello, world\n"), ("empty.txt", b""), ("sub/text.txt", b"a" * 100000),
                   ("random.bin", random.Random(7).randbytes(70000))):
    open("root/" + name, "wb").write(data)
assert os.system("cd root && zip -qr ../zip.zip . && zip -qr0 ../zip0.zip . && zip -qr - . | cat >../pipe.zip") == 0
text = b"".join(b"line %d of a python entry\n" % i for i in range(3000))
b = zipfile.ZipInfo("b.txt", (2001, 2, 3, 4, 5, 6))
b.extra, b.comment, b.compress_type = b"\x99\x99\x04\x00abcd", b"entry comment", zipfile.ZIP_DEFLATED
# planted.zip's b, stored: 160 bytes no reader takes for a record, then three central records pointing at 0.
record = struct.pack("<IHHHHIIIIHHHHHII", 0x02014B50, *[0] * 8, 1, *[0] * 6) + b"x"
for name, b, data in (("good.zip", b, text[:2000]), ("planted.zip", zipfile.ZipInfo("b.txt"), bytes(160) + 3 * record)):
    with zipfile.ZipFile(name, "w", zipfile.ZIP_DEFLATED) as z:
        z.writestr("a.txt", text[:3000]); z.writestr(b, data)
        z.writestr("c.txt", text[:1000], zipfile.ZIP_STORED); z.writestr("d.txt", text)
with zipfile.ZipFile("long.zip", "w") as z: z.writestr("n" * 511, b"x"); z.writestr("n" * 512, b"y")
with zipfile.ZipFile("empties.zip", "w") as z: [z.writestr("f%d" % i, b"") for i in range(5)]
dos = lambda d: (d[0] - 1980) << 25 | d[1] << 21 | d[2] << 16 | d[3] << 11 | d[4] << 5 | d[5] // 2
for a in glob.glob("*.zip"):
    open(a + ".list", "w").writelines("%s %d %d %d %d %d %d %d\n" % (i.filename, i.CRC, i.compress_size, i.file_size,
        dos(i.date_time), i.header_offset, i.flag_bits, i.compress_type) for i in zipfile.ZipFile(a).infolist())
)PY";

std::string zipPath(const std::string& name) {
    static tuskel_test::TempDir dir;
    static const int made = [] {
        tuskel_test::writeFile(dir.file("make.py"), kMakeScript);
        return tuskel_test::runCommand("cd " + shellQuote(dir.path()) + " && python3 make.py");
    }();
    EXPECT_EQ(made, 0);
    return dir.file(name);
}

std::string zip(const std::string& name) { return tuskel_test::readFile(zipPath(name)); }

std::string unzipped(const std::string& archive, const std::string& entry) {
    return tuskel_test::commandOutput("unzip -p " + shellQuote(zipPath(archive)) + " " + shellQuote(entry));
}

// Name, CRC, sizes and DOS time in one text, to compare a record with zipfile's view.
std::string key(const std::string& name, unsigned crc, unsigned csize, unsigned size, unsigned time) {
    return name + " " + std::to_string(crc) + " " + std::to_string(csize) + " " + std::to_string(size) + " " +
           std::to_string(time);
}

struct Listed {
    std::string name;
    unsigned crc, csize, size, time, offset, flags, method;
    std::string key() const { return ::key(name, crc, csize, size, time); }
};

std::vector<Listed> listed(const std::string& archive) {
    std::istringstream lines(tuskel_test::readFile(zipPath(archive + ".list")));
    std::vector<Listed> all;
    for (Listed e; lines >> e.name >> e.crc >> e.csize >> e.size >> e.time >> e.offset >> e.flags >> e.method;) {
        all.push_back(e);
    }
    return all;
}

// Where an entry's data starts: behind its local header, name and extra field.
size_t dataOf(const std::string& data, const Listed& e) {
    return e.offset + Z::LOCHDR + e.name.size() + static_cast<size_t>(IOUtils::readUShort(&data[e.offset + Z::LOCEXT]));
}

std::string patched(std::string data, size_t at, long value, int width = 2) {
    width == 2 ? IOUtils::writeUShort(&data[at], static_cast<unsigned>(value)) : IOUtils::writeUInt(&data[at], value);
    return data;
}

const ZipInfo& zipInfo(const ArchiveEntryInfo& e) { return static_cast<const ZipEntryInfo&>(e).zipInfo(); }

// Runs an unarchiver over a stream handing out at most `chunk` bytes per read, or over a buffer.
void unpack(const std::string& data, Recorder& r, bool overBuffer, int chunk = 1 << 30, DecompressProcessor* dp = nullptr) {
    ChunkedInputStream in(data, chunk);
    StringBuffer buffer(data);
    std::unique_ptr<ZipUnarchiver> u(overBuffer ? new ZipUnarchiver(&buffer, r, dp) : new ZipUnarchiver(&in, r, dp));
    u->start();
}

}  // namespace

TEST(ZipRecords, ReadersRefuseOrThrowAndStopWhereTheRecordEnds) {
    std::string names = zip("long.zip"), good = zip("good.zip"), pipe = zip("pipe.zip");
    size_t cen = names.find("PK\1\2"), end = good.size() - Z::ENDHDR, b = listed("good.zip")[1].offset;
    Listed hello;
    for (const Listed& e : listed("pipe.zip")) hello = e.name == "hello.txt" ? e : hello;
    size_t d = dataOf(pipe, hello) + hello.csize, dir = good.find("PK\1\2");
    auto local = [](InputStream& in) { return in.mark(Z::LOCHDR), ZipInfo().read(in, false); };
    auto central = [](InputStream& in) { return ZipCentralDir().read(in); };
    auto endRecord = [](InputStream& in) { return ZipEndCentralDir().read(in); };
    auto descriptor = [&](InputStream& in) {  // true when what it read is hello.txt's
        ZipInfo i;
        i.flags = Z::FLAG_DATA_DESCRIPTOR;
        i.readDataDescriptor(in);
        return key("", i.crc, i.compressedSize, i.uncompressedSize, 0) == key("", hello.crc, hello.csize, hello.size, 0);
    };
    // The reader's answer ("1", "0" or what it throws) and where it leaves the stream.
    struct Case { std::string data; size_t at; std::function<bool(InputStream&)> read; std::string outcome; size_t after; };
    Case cases[] = {
        {names.substr(0, 29), 0, local, "0", 29},
        {names.substr(0, 130), 0, local, "unexpected EOF", 130},
        {patched(names, cen + Z::CENNAM, 0), cen, central, "empty file name in central directory", cen + 46},
        {good.substr(0, end + 20) + tuskel_test::bytes({5, 0, 'a'}), end, endRecord, "unexpected EOF", end + 23},
        {pipe, d, descriptor, "1", d + 16},
        {pipe.substr(0, d) + pipe.substr(d + 4), d, descriptor, "1", d + 12},  // without its signature
        {pipe.substr(0, d + 15), d, descriptor, "0", d},
        {good, b, descriptor, "0", b},  // a local header follows: no descriptor
        {good, dir, descriptor, "0", dir},
    };
    for (const auto& c : cases) {
        for (int chunk : {1, 7, 1 << 30}) {
            SCOPED_TRACE(c.outcome + " at " + std::to_string(c.at) + " chunk " + std::to_string(chunk));
            ChunkedInputStream in(c.data, chunk);
            in.skip(static_cast<long>(c.at));
            std::string answer, thrown = failure([&] { answer = c.read(in) ? "1" : "0"; });
            EXPECT_EQ(thrown == "no error" ? answer : thrown, c.outcome);
            EXPECT_EQ(in.position(), c.after);
        }
    }
}

TEST(ZipRecords, FindPosReachesBackOverTheLongestComment) {
    // Comments that put the record across the search's block seams and around its reach.
    std::string good = zip("good.zip"), end = good.substr(good.size() - Z::ENDHDR);
    for (int n : {0, 1005, 1007, 1008, 1009, 1010, 2031, 2032, 2033, 65513, 65514, 65535}) {
        std::string comment = tuskel_test::patternBytes(static_cast<size_t>(n), 5);
        StringBuffer buffer(patched(good, good.size() - 2, n) + comment);
        long pos = ZipEndCentralDir::findPos(buffer);
        ASSERT_EQ(pos, n <= 65513 ? static_cast<long>(good.size()) - Z::ENDHDR : 0) << n;
        ChunkedInputStream in(buffer.data().substr(static_cast<size_t>(pos)), 7);
        ZipEndCentralDir found;
        EXPECT_TRUE(n > 65513 || (found.read(in) && found.comment == comment && found.totalEntries == 4)) << n;
    }
    // A record at position 0 reads as not found: intended.
    std::pair<std::string, long> notFound[] = {{end, 0}, {" " + end, 1}, {end.substr(0, 4), 0}, {std::string(5000, 'P'), 0}};
    for (const auto& c : notFound) {
        StringBuffer buffer(c.first);
        EXPECT_EQ(ZipEndCentralDir::findPos(buffer), c.second) << c.first.size();
    }
}

TEST(ZipUnarchiver, ArchivesOfRealToolsUnpackLikeUnzip) {
    for (const char* name : {"zip.zip", "zip0.zip", "pipe.zip", "good.zip", "long.zip"}) {
        std::string data = zip(name);
        auto list = listed(name);
        std::vector<std::string> contents;
        std::string events;
        for (const auto& e : list) {
            contents.push_back(e.csize ? unzipped(name, e.name) : "");
            events += e.csize || (e.flags & Z::FLAG_DATA_DESCRIPTOR) ? "beFCf" : "bef";  // an empty entry's stream is left alone
        }
        for (int chunk : {1, 7, 33791, 1 << 30}) {
            for (bool overBuffer : {false, true}) {
                SCOPED_TRACE(std::string(name) + " chunk " + std::to_string(chunk) + (overBuffer ? " buffer" : ""));
                Recorder r;
                unpack(data, r, overBuffer, chunk);
                ASSERT_EQ(r.entries.size(), list.size() + 1);
                EXPECT_EQ(r.events, events + "bef");  // begin and end around every entry, the final one too
                // The final entry has no name and carries the whole directory.
                const ZipInfo& dir = zipInfo(*r.entries.back());
                EXPECT_EQ(r.entries.back()->name + std::to_string(r.entries.back()->algorithm), "0");
                EXPECT_EQ((std::vector<int>{dir.localEntries, dir.centralEntries, dir.endCentralDir.totalEntries}),
                          std::vector<int>(3, static_cast<int>(list.size())));
                ASSERT_EQ(dir.centralDirs.size(), list.size());
                for (size_t i = 0; i < list.size(); ++i) {
                    const ArchiveEntryInfo& e = *r.entries[i];
                    const ZipCentralDir& d = dir.centralDirs[i];
                    EXPECT_EQ(key(e.name, e.crc, e.size, e.usize, e.time) + " #" + std::to_string(e.order),
                              list[i].key() + " #" + std::to_string(i));
                    EXPECT_EQ(key(d.name, d.crc, d.compressedSize, d.uncompressedSize, d.time), list[i].key());
                    EXPECT_EQ(d.localHeaderOffset, list[i].offset);
                    EXPECT_EQ(e.algorithm, list[i].csize && list[i].method == Z::DEFLATED);
                    EXPECT_EQ(ZipArchiveProcessor().process(&e), (list[i].flags & Z::FLAG_DATA_DESCRIPTOR) == 0);
                    EXPECT_TRUE(r.outs[i]->data == contents[i]);
                }
                EXPECT_TRUE(r.contained.empty());
            }
        }
    }
}

TEST(ZipUnarchiver, CopyOrSkipByTheActionCode) {
    std::string data = zip("good.zip");
    auto list = listed("good.zip");
    auto raw = [&](size_t i) { return data.substr(dataOf(data, list[i]), list[i].csize); };
    for (int action : {A::ACTION_COPY, A::ACTION_SKIP, 7}) {  // unknown codes skip
        Recorder r;
        r.decide = [&](ArchiveEntryInfo&) { return action; };
        unpack(data, r, false, 7);
        EXPECT_EQ(r.names(), "a.txt b.txt c.txt d.txt $ ");
        for (size_t i = 0; i < 4; ++i) EXPECT_EQ(r.outs[i]->data, action == 1 ? raw(i) : "") << action;
    }
    // Intended: the action is not reset between entries. Answering "copy"
    // once and leaving it alone afterwards copies every entry raw.
    Recorder r;
    r.decide = [](ArchiveEntryInfo& e) { return e.order == 0 ? A::ACTION_COPY : Recorder::kLeaveAlone; };
    unpack(data, r, false);
    EXPECT_EQ(r.outs[1]->data, raw(1));
    const ZipCentralDir& b = zipInfo(*r.entries.back()).centralDirs.at(1);
    EXPECT_EQ(b.extra + b.comment, std::string("\x99\x99\x04\x00" "abcd" "entry comment", 21));
}

TEST(ZipUnarchiver, AFailedEntryIsContainedAndTheRestFoundThroughTheDirectory) {
    // Entries a, b, c, d; b fails. Over a stream the walk ends quietly
    // behind it. Over a buffer a second walk from the local header that the
    // directory names next offers the rest with its own final entry, then the
    // first walk ends too; whatever the directory claims, the walks end.
    std::string good = zip("good.zip"), planted = zip("planted.zip");
    // Where c's central record (the last but one) holds its local header's offset.
    auto offsetOfC = [](const std::string& z) { return z.rfind("PK\1\2", z.rfind("PK\1\2") - 1) + Z::CENOFF; };
    size_t b = listed("good.zip")[1].offset, pb = listed("planted.zip")[1].offset, c = offsetOfC(good);
    size_t end = good.size() - Z::ENDHDR;
    auto atB = [&](int field, int value) { return patched(good, b + field, value); };
    auto rewrite = [](int algorithm) {
        return [=](ArchiveEntryInfo& e) { return e.algorithm = e.order == 1 ? algorithm : e.algorithm, 2; };
    };
    std::string bad = atB(Z::LOCHOW, 12), m12 = "Unknown algorithm: 12in zip", ab = "a.txt b.txt ", rest = "c.txt d.txt $ $ ";
    std::map<std::string, std::string> want;
    for (const char* name : {"a.txt", "c.txt", "d.txt"}) want[name] = unzipped("good.zip", name);
    // What is contained, the entries offered up to b, and those a buffer adds.
    struct Case { std::string data; std::function<int(ArchiveEntryInfo&)> decide; std::string message, offered, more; };
    Case cases[] = {
        {good, [](ArchiveEntryInfo& e) { return e.order == 1 ? -1 : 2; }, "Archiving aborted", ab, rest},
        {bad, nullptr, m12, ab, rest},
        {atB(Z::LOCHOW, 1), nullptr, "Unknown algorithm: 1in zip", ab, rest},  // intended: not SHRINK
        {atB(Z::LOCHOW, 6), nullptr, "Unknown algorithm: 6in zip", ab, rest},  // intended: no blank
        {good, rewrite(A::ALGORITHM_SHRINK), "SHRINK algorithm unimplemented", ab, rest},
        {good, rewrite(A::ALGORITHM_IMPLODE), "IMPLODE algorithm unimplemented", ab, rest},
        {good, rewrite(9), "Unknown algorithm: 8in zip", ab, rest},
        {atB(Z::LOCFLG, 1), nullptr, "encrypted ZIP entry", "a.txt ", rest},
        {atB(Z::LOCNAM, 513), nullptr, "bad entry name", "a.txt ", rest},
        {patched(bad, c, b, 4), nullptr, m12, ab, "b.txt $ $ "},        // c's record points back at b
        {patched(bad, c, 0, 4), nullptr, m12, ab, "a.txt b.txt $ $ "},  // or at a
        {patched(bad, end + Z::ENDTOT, 65535), nullptr, m12, ab, rest},
        {patched(bad, end + Z::ENDOFF, static_cast<long>(end), 4), nullptr, m12, ab, "$ "},
        {bad.substr(0, end + 10), nullptr, m12, ab, "$ "},  // end record cut short
        // Back at b, which fails again; records planted in its data lead to offset 0
        // from the second walk's last mark: a round that would read b's data again is refused.
        {patched(patched(planted, pb + Z::LOCHOW, 12), offsetOfC(planted), pb, 4), nullptr, m12, ab, "b.txt $ $ "},
    };
    for (const auto& k : cases) {
        SCOPED_TRACE(k.message + " " + k.more);
        Recorder overStream, overBuffer;
        if (k.decide) overStream.decide = overBuffer.decide = k.decide;
        unpack(k.data, overStream, false, 7);
        EXPECT_EQ(overStream.contained, std::vector<std::string>{k.message});
        EXPECT_EQ(overStream.names(), k.offered + "$ ");
        // Intended: the second walk has no decompress processor, so init()
        // runs for a, b and the first walk's last round only.
        SkippingProcessor dp;
        dp.from = 1 << 30;
        unpack(k.data, overBuffer, true, 1 << 30, &dp);
        EXPECT_EQ(dp.inits, 3);
        EXPECT_EQ(overBuffer.contained, std::vector<std::string>(overBuffer.contained.size(), k.message));
        EXPECT_EQ(overBuffer.names(), k.offered + k.more);
        for (Recorder* r : {&overStream, &overBuffer}) {
            for (size_t i = 0; i < r->entries.size(); ++i) {
                EXPECT_TRUE(r->outs[i]->data == want[r->entries[i]->name]) << i;
                EXPECT_TRUE(r->entries[i]->name != "c.txt" || r->entries[i]->order == 2);
            }
        }
    }
    // d fails too: the second walk reads a stream and cannot restart again.
    Recorder r;
    unpack(patched(bad, listed("good.zip")[3].offset + Z::LOCHOW, 12), r, true);
    EXPECT_EQ(r.names(), ab + rest);
    EXPECT_EQ(failure([&] { unpack(bad.substr(0, bad.find("PK\1\2")), r, true); }), "failed to restart zip unarchiving");
    // Aborting each of 5 empty entries: each abort leaves the walk on the
    // next header; the restart after the first offers the rest once, and
    // later aborts do not walk the rest again (n * n / 2 entries).
    Recorder aborting;
    aborting.decide = [](ArchiveEntryInfo&) { return A::ACTION_ABORT; };
    unpack(zip("empties.zip"), aborting, true);
    EXPECT_EQ(aborting.entries.size(), 2 * 5 + 1u);
}

TEST(ZipUnarchiver, ThroughTheHostEntryPoint) {
    std::string good = zip("good.zip");
    std::vector<std::string> all;
    for (const auto& e : listed("good.zip")) all.push_back(unzipped("good.zip", e.name));
    Listed b = listed("good.zip")[1], d = listed("good.zip")[3];
    struct Case { std::string data; std::vector<std::string> contents; int result; std::string logged; } cases[] = {
        {good, all, 0, ""},
        {patched(good, Z::LOCFLG, 1), {}, 3, ""},  // an encrypted first entry is not ZIP
        {zip("pipe.zip"), {}, 0, ""},  // descriptor entries are not offered; the walk loses its way behind one
        // b (method 12) reaches the host and stays empty; over a stream the walk ends there.
        {patched(good, b.offset + Z::LOCHOW, 12), {all[0], ""}, 0, ""},
        // Deflate data cut short is not contained: those before stay handed over.
        {good.substr(0, dataOf(good, d) + d.csize / 2), all, 1, "Exception[inflate: error -5"},
    };
    for (const auto& c : cases) {
        tuskel_test::MemoryHostBuffer input(c.data);
        tuskel_test::RecordingEntryProcessor host;
        tuskel_test::LogCapture log(3);
        EXPECT_EQ(CommonDecompressor().decompress(&input, &host), c.result);
        std::vector<std::string> got = host.contents(), want = c.contents;
        if (c.result == 1 && got.size() == want.size()) want.back().resize(got.back().size());  // as far as it came
        EXPECT_TRUE(got == want) << got.size();
        EXPECT_EQ(log.text().find("Exception["), c.logged.empty() ? std::string::npos : log.text().find(c.logged));
    }
}
