#include "UnarchiverTesting.h"
#include "plugin/HostDoubles.h"
#include "support/Allocations.h"
#include "support/LogCapture.h"
#include "support/TestFiles.h"
#include "unarchiver/ZipConstants.h"
#include "unarchiver/ZipUnarchiver.h"
#include "utils/IOUtils.h"

using namespace unarchiver_test;
using tuskel_test::shellQuote;
using tuskel_test::memoryBuffer;
typedef ZipConstants Z;

namespace {

// The archives make_zips.py makes with zip and zipfile, and zipfile's view of them, once per run.
std::string zipPath(const std::string& name) { return madeBy(TUSKEL_MAKE_ZIPS, name); }

std::string zip(const std::string& name) { return tuskel_test::readFile(zipPath(name)); }

std::string unzipped(const std::string& archive, const std::string& entry) {
    return tuskel_test::commandOutput("unzip -p " + shellQuote(zipPath(archive)) + " " + shellQuote(entry));
}

struct Listed {
    std::string name;
    unsigned crc, csize, size, time, offset, flags, method, data;
    std::string key() const { return join(name, crc, csize, size, time); }  // as a record holds them
};

std::vector<Listed> listed(const std::string& archive) {
    std::istringstream in(tuskel_test::readFile(zipPath(archive + ".list")));
    std::vector<Listed> v;
    for (Listed e; in >> e.name >> e.crc >> e.csize >> e.size >> e.time >> e.offset >> e.flags >> e.method >> e.data;) {
        v.push_back(e);
    }
    return v;
}

// Runs an unarchiver over a stream handing out at most `chunk` bytes per read, or over a buffer.
void unpack(std::string data, Recorder& r, bool overBuffer, int chunk = 1 << 30, DecompressProcessor* dp = nullptr) {
    ChunkedInputStream in(data, chunk);
    auto buffer = memoryBuffer(data);
    (overBuffer ? ZipUnarchiver(buffer.get(), r, dp) : ZipUnarchiver(&in, r, dp)).start();
}

}  // namespace

TEST(ZipRecords, FindPosReachesBackOverTheLongestComment) {
    auto findPos = [](const std::string& data) { return ZipEndCentralDir::findPos(*memoryBuffer(data)); };
    // Comments that put the record across the search's block seams and around its reach.
    std::string good = zip("good.zip"), end = good.substr(good.size() - Z::ENDHDR);
    for (int n : {0, 1005, 1007, 1008, 1009, 1010, 2031, 2032, 2033, 65513, 65514, 65535}) {
        std::string comment = tuskel_test::patternBytes(static_cast<size_t>(n), 5);
        std::string data = patched(good, good.size() - 2, n) + comment;
        long pos = findPos(data);
        ASSERT_EQ(pos, n <= 65513 ? static_cast<long>(good.size()) - Z::ENDHDR : 0) << n;
        ChunkedInputStream in(data.substr(static_cast<size_t>(pos)), 7);
        ZipEndCentralDir found;
        EXPECT_TRUE(n > 65513 || (found.read(in) && found.comment == comment && found.totalEntries == 4)) << n;
    }
    // A record at position 0 reads as not found: intended.
    EXPECT_EQ(join(findPos(end), findPos(" " + end), findPos(end.substr(0, 4)), findPos(std::string(5000, 'P'))),
              join(0, 1, 0, 0));
}

// Names, extra fields and comments are as long as a header claims; on a
// short input a reader allocates for what arrives, not for the claim.
TEST(ZipRecords, LengthClaimsOnAShortInputCostOnlyWhatArrives) {
    std::string central(Z::CENHDR, '\0'), end(Z::ENDHDR, '\0');
    IOUtils::writeUInt(&central[0], Z::CENSIG);
    for (int at : {Z::CENNAM, Z::CENEXT, Z::CENCOM}) IOUtils::writeUShort(&central[at], 0xFFFF);
    IOUtils::writeUInt(&end[0], Z::ENDSIG);
    IOUtils::writeUShort(&end[Z::ENDCOM], 0xFFFF);
    const std::pair<std::string, std::function<void(InputStream&)>> records[] = {
        {central + "name", [](InputStream& in) { ZipCentralDir().read(in); }},
        {end + "comment", [](InputStream& in) { ZipEndCentralDir().read(in); }},
    };
    for (const auto& record : records) {
        ChunkedInputStream in(record.first);
        tuskel_test::largestAllocation = 0;
        EXPECT_EQ(thrown<IOException>([&] { record.second(in); }, false), "unexpected EOF");
        EXPECT_LE(tuskel_test::largestAllocation, 1024u);
    }
}

TEST(ZipUnarchiver, ArchivesOfRealToolsUnpackLikeUnzip) {
    for (const char* name : {"zip.zip", "zip0.zip", "pipe.zip", "good.zip", "long.zip"}) {
        auto list = listed(name);
        // Each entry as zipfile sees it: index and algorithm, then its central record and local header offset.
        // Begin and end around every entry, the final one too; an empty entry's stream is left alone.
        std::string want, events;
        std::vector<std::string> contents;
        for (size_t i = 0; i < list.size(); ++i) {
            const Listed& e = list[i];
            want += join(e.key(), i, e.csize && e.method == Z::DEFLATED, "|") + e.key() + join(e.offset, '\n');
            contents.push_back(e.csize ? unzipped(name, e.name) : "");
            events += e.csize || (e.flags & Z::FLAG_DATA_DESCRIPTOR) ? "beFCf" : "bef";
        }
        for (int chunk : {1, 7, 33791, 1 << 30}) {
            for (bool overBuffer : {false, true}) {
                SCOPED_TRACE(std::string(name) + " chunk " + std::to_string(chunk) + (overBuffer ? " buffer" : ""));
                Recorder r;
                unpack(zip(name), r, overBuffer, chunk);
                ASSERT_EQ(join(r.events, r.contained.size()), join(events + "bef", 0));
                // The final entry has no name and carries the whole directory.
                const ZipInfo& dir = static_cast<ZipEntryInfo&>(*r.entries.back()).zipInfo();
                const ArchiveEntryInfo& last = *r.entries.back();
                EXPECT_EQ(join(last.name, last.algorithm, dir.localEntries, dir.centralEntries,
                               dir.endCentralDir.totalEntries), join("", 0, list.size(), list.size(), list.size()));
                std::string got;
                for (size_t i = 0; i < list.size() && i < dir.centralDirs.size(); ++i) {
                    const ArchiveEntryInfo& e = *r.entries[i];
                    const ZipCentralDir& d = dir.centralDirs[i];
                    got += join(join(e.name, e.crc, e.size, e.usize, e.time), e.order, e.algorithm, "|") +
                           join(d.name, d.crc, d.compressedSize, d.uncompressedSize, d.time, d.localHeaderOffset, '\n');
                    EXPECT_TRUE(r.outs[i]->data == contents[i]) << i;
                }
                EXPECT_EQ(got, want);
            }
        }
        // Descriptors written without their signature are followed as well; one announced but missing
        // (a's or d's flag patched: a local header or the directory follows) is not looked for.
        std::string bare = zip(name);
        for (size_t at; (at = bare.find("PK\7\10")) != std::string::npos;) bare.erase(at, 4);
        if (std::string(name) == "good.zip") bare = patched(patched(bare, Z::LOCFLG, 8), list[3].offset + Z::LOCFLG, 8);
        Recorder r;
        unpack(bare, r, false, 7);
        EXPECT_EQ(join(r.entries.size(), static_cast<ZipEntryInfo&>(*r.entries.back()).zipInfo().centralEntries),
                  join(list.size() + 1, list.size()));
        for (size_t i = 0; i < list.size() && i < r.outs.size(); ++i) EXPECT_TRUE(r.outs[i]->data == contents[i]) << i;
    }
}

TEST(ZipUnarchiver, UnknownCodesSkipAndTheActionIsNotResetBetweenEntries) {
    std::string data = zip("good.zip");
    auto list = listed("good.zip");
    Recorder skipping, copying;
    skipping.decide = [](ArchiveEntryInfo&, int& a) { a = 7; };
    // Intended: the action is not reset between entries. Answering "copy"
    // once and leaving it alone afterwards copies every entry raw.
    copying.decide = [](ArchiveEntryInfo& e, int& a) { a = e.order == 0 ? A::ACTION_COPY : a; };
    unpack(data, skipping, false, 7);
    unpack(data, copying, false, 7);
    EXPECT_EQ(skipping.names() + copying.names(), "a.txt b.txt c.txt d.txt $ a.txt b.txt c.txt d.txt $ ");
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(skipping.outs[i]->data + "|" + copying.outs[i]->data, "|" + data.substr(list[i].data, list[i].csize));
    }
}

TEST(ZipUnarchiver, AFailedEntryIsContainedAndTheRestFoundThroughTheDirectory) {
    // Entries a, b, c, d; b fails. Over a stream the walk ends quietly
    // behind it. Over a buffer a second walk from the local header that the
    // directory names next offers the rest with its own final entry, then the
    // first walk ends too; whatever the directory claims, the walks end.
    std::string good = zip("good.zip"), planted = zip("planted.zip");
    // Where c's central record (the last but one) holds its local header's offset.
    auto offsetOfC = [](const std::string& z) { return z.rfind("PK\1\2", z.rfind("PK\1\2") - 1) + Z::CENOFF; };
    size_t b = listed("good.zip")[1].offset, pb = listed("planted.zip")[1].offset, end = good.size() - Z::ENDHDR;
    auto rewrite = [](int x) {
        return [=](ArchiveEntryInfo& e, int& a) { e.algorithm = e.order == 1 ? x : e.algorithm, a = 2; };
    };
    std::string bad = patched(good, b + Z::LOCHOW, 12), m12 = "Unknown algorithm: 12in zip";
    std::string ab = "a.txt b.txt ", cd = "c.txt d.txt $ $ ";
    // What is contained, the entries offered up to b, and those a buffer adds.
    struct Case { std::string data; Recorder::Decide decide; std::string message, offered, more; };
    Case cases[] = {
        {good, [](ArchiveEntryInfo& e, int& a) { a = e.order == 1 ? -1 : 2; }, "Archiving aborted", ab, cd},
        {bad, nullptr, m12, ab, cd},
        {patched(good, b + Z::LOCHOW, 1), nullptr, "Unknown algorithm: 1in zip", ab, cd},  // intended: not SHRINK
        {patched(good, b + Z::LOCHOW, 6), nullptr, "Unknown algorithm: 6in zip", ab, cd},  // intended: no blank
        {good, rewrite(A::ALGORITHM_SHRINK), "SHRINK algorithm unimplemented", ab, cd},
        {good, rewrite(A::ALGORITHM_IMPLODE), "IMPLODE algorithm unimplemented", ab, cd},
        {good, rewrite(9), "Unknown algorithm: 8in zip", ab, cd},
        {patched(good, b + Z::LOCFLG, 1), nullptr, "encrypted ZIP entry", "a.txt ", cd},
        {patched(good, b + Z::LOCNAM, 513), nullptr, "bad entry name", "a.txt ", cd},
        {patched(bad, offsetOfC(good), b, 4), nullptr, m12, ab, "b.txt $ $ "},        // c's record points back at b
        {patched(bad, offsetOfC(good), 0, 4), nullptr, m12, ab, "a.txt b.txt $ $ "},  // or at a
        {patched(bad, end + Z::ENDTOT, 65535), nullptr, m12, ab, cd},
        {patched(bad, end + Z::ENDOFF, static_cast<long>(end), 4), nullptr, m12, ab, "$ "},
        {bad.substr(0, end + 10), nullptr, m12, ab, "$ "},  // end record cut short
        // Back at b, which fails again; records planted in its data lead to offset 0
        // from the second walk's last mark: a round that would read b's data again is refused.
        {patched(patched(planted, pb + Z::LOCHOW, 12), offsetOfC(planted), pb, 4), nullptr, m12, ab, "b.txt $ $ "},
        // d fails too: the second walk reads a stream and cannot restart again.
        {patched(bad, listed("good.zip")[3].offset + Z::LOCHOW, 12), nullptr, m12, ab, cd},
    };
    for (const auto& k : cases) {
        SCOPED_TRACE(k.message + " " + k.more);
        Recorder streamed, buffered;
        if (k.decide) streamed.decide = buffered.decide = k.decide;
        unpack(k.data, streamed, false, 7);
        EXPECT_EQ(join(streamed.names(), streamed.contained.size(), streamed.contained.at(0)),
                  join(k.offered + "$ ", 1, k.message));
        // Intended: the second walk has no decompress processor, so init()
        // runs for a, b and the first walk's last round only.
        SkippingProcessor dp;
        unpack(k.data, buffered, true, 1 << 30, &dp);
        EXPECT_EQ(join(buffered.names(), buffered.contained.at(0), dp.inits), join(k.offered + k.more, k.message, 3));
    }
    // Aborting each of 5 empty entries: each abort leaves the walk on the
    // next header; the restart after the first offers the rest once, and
    // later aborts do not walk the rest again (n * n / 2 entries).
    Recorder aborting;
    aborting.decide = [](ArchiveEntryInfo&, int& a) { a = A::ACTION_ABORT; };
    unpack(zip("empties.zip"), aborting, true);
    EXPECT_EQ(aborting.entries.size(), 2 * 5 + 1u);
    // Without an end record the restart itself fails, and says so.
    EXPECT_EQ(thrown([&] { unpack(bad.substr(0, bad.find("PK\1\2")), aborting, true); }, false),
              "failed to restart zip unarchiving");
}

TEST(ZipUnarchiver, ThroughTheHostEntryPoint) {
    std::string good = zip("good.zip");
    auto list = listed("good.zip");
    std::vector<std::string> all;
    for (const auto& e : list) all.push_back(unzipped("good.zip", e.name));
    size_t dir = good.find("PK\1\2"), cut = list[3].data + list[3].csize / 2;
    // The entries handed to the host, the result, what is logged.
    struct Case { std::string data; std::vector<std::string> contents; int result; std::string logged; } cases[] = {
        {good, all, 0, ""},
        // The ZIP test throws on an encrypted first entry: the entry point takes that for "not ZIP".
        {patched(good, Z::LOCFLG, 1), {}, 3, ""},
        // Entries behind a descriptor are not offered; the walk loses its way behind the first.
        {zip("pipe.zip"), {}, 0, ""},
        // A deflate error or a broken directory is not contained: those before stay handed over.
        {good.substr(0, cut), {all[0], all[1], all[2], ""}, 1, "Exception[inflate: error -5"},
        {patched(good, dir + Z::CENNAM, 0), all, 1, "Exception[empty file name in central directory]"},
    };
    for (const auto& c : cases) {
        tuskel_test::MemoryHostBuffer input(c.data);
        tuskel_test::RecordingEntryProcessor host;
        tuskel_test::LogCapture log(3);
        EXPECT_EQ(CommonDecompressor().decompress(&input, &host), c.result);
        EXPECT_TRUE(host.contents() == c.contents) << host.contents().size();
        EXPECT_EQ(log.text().find("Exception["), c.logged.empty() ? std::string::npos : log.text().find(c.logged));
    }
}
