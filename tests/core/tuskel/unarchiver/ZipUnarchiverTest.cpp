#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "support/TestFiles.h"
#include "support/TestStreams.h"
#include "unarchiver/ArchiveId.h"
#include "unarchiver/Crc.h"
#include "unarchiver/ZipConstants.h"
#include "unarchiver/ZipUnarchiver.h"
#include "utils/IOUtils.h"
#include "ZipTestSupport.h"

using namespace QRN_SPACE;
using tuskel_test::ChunkedInputStream;
using tuskel_test::readFile;
using tuskel_test::shellQuote;
using tuskel_test::StringBuffer;
using ziptest::Recorder;
using ziptest::ZipArchives;

namespace {

typedef ArchiveConstants A;

enum Form { kOverStream, kOverBuffer };

// Runs an unarchiver over `data`, as a stream handing out at most `chunk`
// bytes per read, or as a buffer.
void unpack(const std::string& data, Recorder& recorder, Form form, int chunk = 1 << 30) {
    if (form == kOverStream) {
        ChunkedInputStream in(data, chunk);
        ZipUnarchiver(&in, recorder, nullptr).start();
    } else {
        StringBuffer buffer(data);
        ZipUnarchiver(&buffer, recorder, nullptr).start();
    }
}

const ZipInfo& zipInfoOf(const Recorder::Seen& seen) { return static_cast<ZipEntryInfo&>(*seen.info).zipInfo(); }

// Patches a 16-bit field of the local header at `offset`.
std::string patched(std::string data, size_t offset, int field, int value) {
    IOUtils::writeUShort(&data[offset + static_cast<size_t>(field)], static_cast<unsigned>(value));
    return data;
}

// Where the central record with the given index starts, found the way a
// reader finds it: end record, directory offset, records in turn.
size_t centralRecordAt(const std::string& data, int index) {
    StringBuffer buffer(data);
    ChunkedInputStream in(data);
    in.skip(ZipEndCentralDir::findPos(buffer));
    ZipEndCentralDir end;
    EXPECT_TRUE(end.read(in));
    ChunkedInputStream records(data);
    records.skip(end.directoryOffset);
    ZipCentralDir record;
    EXPECT_EQ(record.getNextDir(records, index - 1), index - 1);
    return records.position();
}

// What the tools say about an archive: its entries, and for each the bytes
// unzip -p writes.
struct Reference {
    explicit Reference(const std::string& archive) : listed(ziptest::listEntries(archive)) {
        for (const auto& e : listed) {
            bool readable = (e.flags & ZipConstants::FLAG_ENCRYPTED) == 0 &&
                            (e.method == ZipConstants::STORED || e.method == ZipConstants::DEFLATED);
            contents.push_back(readable ? ziptest::unzipEntry(archive, e.name) : std::string());
        }
    }
    std::vector<ziptest::Listed> listed;
    std::vector<std::string> contents;
};

// Every entry handed out equals what unzip -p writes; descriptor sizes and
// CRCs reach the entry; the final entry carries the whole directory.
void expectLikeUnzip(const Reference& ref, const Recorder& r) {
    const auto& listed = ref.listed;
    ASSERT_EQ(r.seen.size(), listed.size() + 1);
    for (size_t i = 0; i < listed.size(); ++i) {
        const auto& s = r.seen[i];
        const auto& e = listed[i];
        SCOPED_TRACE(e.name);
        EXPECT_EQ(s.info->name, e.name);
        EXPECT_EQ(s.info->order, static_cast<int>(i));
        EXPECT_EQ(s.info->crc, e.crc);
        EXPECT_EQ(static_cast<unsigned>(s.info->size), e.compressedSize);
        EXPECT_EQ(static_cast<unsigned>(s.info->usize), e.size);
        EXPECT_EQ(zipInfoOf(s).time, e.dosTime);
        EXPECT_EQ(ZipArchiveProcessor().process(s.info), (e.flags & ZipConstants::FLAG_DATA_DESCRIPTOR) == 0);
        if (e.compressedSize == 0) {
            EXPECT_EQ(s.info->algorithm, A::ALGORITHM_STORED);
            EXPECT_TRUE(s.out->writes.empty());  // a stream answered for an empty entry is not written to
        } else {
            EXPECT_EQ(s.algorithmOffered, e.method == ZipConstants::DEFLATED ? A::ALGORITHM_DEFLATE : A::ALGORITHM_STORED);
            EXPECT_EQ(s.out->data, ref.contents[i]);
        }
    }
    const auto& final = r.seen.back();
    EXPECT_EQ(final.info->name, "");
    EXPECT_EQ(final.info->algorithm, A::ALGORITHM_STORED);
    EXPECT_EQ(final.info->size, 0);
    const ZipInfo& dir = zipInfoOf(final);
    EXPECT_TRUE(dir.centralDirRead);
    EXPECT_EQ(dir.localEntries, static_cast<int>(listed.size()));
    EXPECT_EQ(dir.centralEntries, static_cast<int>(listed.size()));
    ASSERT_EQ(dir.centralDirs.size(), listed.size());
    for (size_t i = 0; i < listed.size(); ++i) EXPECT_EQ(dir.centralDirs[i].name, listed[i].name);
    EXPECT_EQ(dir.endCentralDir.totalEntries, static_cast<int>(listed.size()));
}

}  // namespace

TEST_F(ZipArchives, ArchivesOfRealToolsUnpackLikeUnzip) {
    ArchiveEntryInfo notZip;  // sizes "known first" only for a ZIP entry that says so
    EXPECT_FALSE(ZipArchiveProcessor().process(&notZip));
    EXPECT_FALSE(ZipArchiveProcessor().process(nullptr));
    // pipe.zip and *_stream.zip carry data descriptors after deflated data.
    for (const char* name : {"zip.zip", "zip0.zip", "pipe.zip", "py_stored.zip", "py_deflated.zip",
                             "py_deflated_stream.zip"}) {
        std::string data = readFile(path(name));
        Reference ref(path(name));
        for (int chunk : {1, 7, 33791, 1 << 30}) {
            for (Form form : {kOverStream, kOverBuffer}) {
                SCOPED_TRACE(std::string(name) + " chunk " + std::to_string(chunk) + " form " + std::to_string(form));
                Recorder r;
                unpack(data, r, form, chunk);
                expectLikeUnzip(ref, r);
                EXPECT_TRUE(r.contained.empty());
            }
        }
    }
}

TEST_F(ZipArchives, ActionCodes) {
    std::string archive = path("good.zip");
    std::string data = readFile(archive);
    auto listed = ziptest::listEntries(archive);
    auto raw = [&](size_t i) {
        const auto& e = listed[i];
        return data.substr(e.headerOffset + 30 + e.name.size() + e.extra.size(), e.compressedSize);
    };
    auto plain = [&](size_t i) { return ziptest::unzipEntry(archive, listed[i].name); };
    struct Case {
        int action;
        std::function<std::string(size_t)> expected;  // bytes written for entry i
    } cases[] = {
        {A::ACTION_DECOMPRESS, plain},
        {A::ACTION_COPY, raw},
        {A::ACTION_SKIP, [](size_t) { return std::string(); }},
        {7, [](size_t) { return std::string(); }},  // unknown codes skip
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.action);
        Recorder r;
        r.decide = [&](ArchiveEntryInfo&) { return c.action; };
        unpack(data, r, kOverStream, 7);
        // beginUnarchiving and endUnarchiving around every entry, the final one too.
        EXPECT_EQ(r.calls, (std::vector<std::string>{"begin", "entry a.txt", "end", "begin", "entry b.txt", "end",
                                                     "begin", "entry c.txt", "end", "begin", "entry d.txt", "end",
                                                     "begin", "entry ", "end"}));
        for (size_t i = 0; i < 4; ++i) EXPECT_EQ(r.seen[i].out->data, c.expected(i)) << i;
        EXPECT_EQ(zipInfoOf(r.seen.back()).centralEntries, 4);
    }

    // Intended: the action is not reset between entries. Answering "copy"
    // once and leaving it alone afterwards copies every entry raw.
    Recorder r;
    r.decide = [](ArchiveEntryInfo& info) { return info.order == 0 ? A::ACTION_COPY : Recorder::kLeaveAlone; };
    unpack(data, r, kOverStream);
    EXPECT_EQ(r.seen[1].out->data, raw(1));
}

TEST_F(ZipArchives, AbortAndUnsupportedEntriesAreContained) {
    // Four entries a, b, c, d; b fails. `archive` is the file the tools
    // describe (a patched copy differs only in b's method).
    std::string good = readFile(path("good.zip"));
    size_t b = ziptest::listEntries(path("good.zip"))[1].headerOffset;
    auto rewrite = [](int algorithm) {
        return [algorithm](ArchiveEntryInfo& i) {
            if (i.order == 1) i.algorithm = algorithm;
            return A::ACTION_DECOMPRESS;
        };
    };
    struct Case {
        std::string what;
        std::string archive;
        std::string data;
        std::function<int(ArchiveEntryInfo&)> decide;
        std::string message;
        bool offered;  // is b offered before it fails?
    } cases[] = {
        {"abort", "good.zip", good,
         [](ArchiveEntryInfo& i) { return i.order == 1 ? A::ACTION_ABORT : A::ACTION_DECOMPRESS; },
         "Archiving aborted", true},
        {"bzip2", "bzip2.zip", readFile(path("bzip2.zip")), nullptr, "Unknown algorithm: 12in zip", true},
        {"method 1", "good.zip", patched(good, b, ZipConstants::LOCHOW, ZipConstants::SHRINK), nullptr,
         "Unknown algorithm: 1in zip", true},
        {"method 6", "good.zip", patched(good, b, ZipConstants::LOCHOW, ZipConstants::IMPLODED), nullptr,
         "Unknown algorithm: 6in zip", true},
        {"rewritten to shrink", "good.zip", good, rewrite(A::ALGORITHM_SHRINK), "SHRINK algorithm unimplemented", true},
        {"rewritten to implode", "good.zip", good, rewrite(A::ALGORITHM_IMPLODE), "IMPLODE algorithm unimplemented",
         true},
        {"rewritten to 9", "good.zip", good, rewrite(9), "Unknown algorithm: 8in zip", true},
        {"encrypted", "enc.zip", readFile(path("enc.zip")), nullptr, "encrypted ZIP entry", false},
        {"513-byte name", "longname.zip", readFile(path("longname.zip")), nullptr, "bad entry name", false},
    };
    std::map<std::string, Reference> refs;
    for (const char* archive : {"good.zip", "bzip2.zip", "enc.zip", "longname.zip"}) refs.emplace(archive, path(archive));
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const Reference& ref = refs.at(c.archive);
        const auto& listed = ref.listed;
        ASSERT_EQ(listed.size(), 4u);
        std::vector<std::string> upToB = {listed[0].name};
        if (c.offered) upToB.push_back(listed[1].name);

        // Over a stream the walk ends quietly behind the failed entry.
        Recorder overStream;
        if (c.decide) overStream.decide = c.decide;
        unpack(c.data, overStream, kOverStream, 7);
        EXPECT_EQ(overStream.contained, std::vector<std::string>{c.message});
        std::vector<std::string> expected = upToB;
        expected.push_back("");
        EXPECT_EQ(overStream.names(), expected);

        // Over a buffer the entries behind it are found through the
        // directory and offered by a second walk, which ends with its own
        // final entry; then the first walk ends too.
        Recorder overBuffer;
        if (c.decide) overBuffer.decide = c.decide;
        unpack(c.data, overBuffer, kOverBuffer);
        EXPECT_EQ(overBuffer.contained, std::vector<std::string>{c.message});
        expected = upToB;
        expected.insert(expected.end(), {listed[2].name, listed[3].name, "", ""});
        ASSERT_EQ(overBuffer.names(), expected);
        size_t c_ = upToB.size();
        EXPECT_EQ(overBuffer.seen[c_].out->data, ref.contents[2]);
        EXPECT_EQ(overBuffer.seen[c_ + 1].out->data, ref.contents[3]);
        EXPECT_EQ(overBuffer.seen[c_].info->order, 2);
        EXPECT_EQ(zipInfoOf(overBuffer.seen[c_ + 2]).centralEntries, 4);
    }
}

TEST_F(ZipArchives, RestartIsNotReenteredAndRunsOncePerWalk) {
    std::string d = shellQuote(dir->path());
    // a, b (bzip2), c, d (bzip2), e: the second walk meets d and cannot
    // restart again (it reads a stream), so it ends there.
    ziptest::python(dir->path(), R"(
import zipfile
with zipfile.ZipFile("two-broken.zip", "w", zipfile.ZIP_DEFLATED) as z:
    for name, mode in (("a", 8), ("b", 12), ("c", 8), ("d", 12), ("e", 8)):
        z.writestr(name, name.encode() * 3000, mode)
)");
    Recorder twice;
    unpack(readFile(path("two-broken.zip")), twice, kOverBuffer);
    EXPECT_EQ(twice.names(), (std::vector<std::string>{"a", "b", "c", "d", "", ""}));
    EXPECT_EQ(twice.contained.size(), 2u);

    // Aborting every entry of an archive of empty files: each abort leaves
    // the walk on the next header, so the first walk meets every entry.
    // The restart after the first abort offers the rest once; later aborts
    // do not walk the rest again, which would offer n * n / 2 entries.
    const int n = 300;
    ASSERT_EQ(tuskel_test::runCommand("mkdir -p " + d + "/empties && cd " + d +
                                      "/empties && for i in $(seq 1 " + std::to_string(n) +
                                      "); do : > f$i; done && zip -q ../empties.zip f*"),
              0);
    Recorder aborting;
    aborting.decide = [](ArchiveEntryInfo&) { return A::ACTION_ABORT; };
    unpack(readFile(path("empties.zip")), aborting, kOverBuffer);
    EXPECT_EQ(aborting.seen.size(), static_cast<size_t>(2 * n + 1));  // n, n - 1 again, two final entries
    EXPECT_EQ(aborting.names().back(), "");
}

TEST_F(ZipArchives, WhateverTheDirectoryClaimsTheWalkEnds) {
    std::string data = readFile(path("bzip2.zip"));
    StringBuffer probe(data);
    size_t end = static_cast<size_t>(ZipEndCentralDir::findPos(probe));
    size_t dirStart = centralRecordAt(data, 0);
    size_t recordC = centralRecordAt(data, 2);
    auto offsetOfC = [&](unsigned value) {
        std::string s = data;
        IOUtils::writeUInt(&s[recordC + ZipConstants::CENOFF], value);
        return s;
    };
    auto withTotal = [](std::string s, size_t endAt, int total) {
        IOUtils::writeUShort(&s[endAt + ZipConstants::ENDTOT], static_cast<unsigned>(total));
        return s;
    };
    unsigned bAt = ziptest::listEntries(path("bzip2.zip"))[1].headerOffset;
    std::string pointingAtEnd = data;
    IOUtils::writeUInt(&pointingAtEnd[end + ZipConstants::ENDOFF], static_cast<long>(end));
    struct Case {
        std::string what;
        std::string data;
        std::vector<std::string> offered;
    } cases[] = {
        {"c's offset points at b, the failed entry", offsetOfC(bAt), {"a.txt", "b.txt", "b.txt", "", ""}},
        {"c's offset points back at a", offsetOfC(0), {"a.txt", "b.txt", "a.txt", "b.txt", "", ""}},
        {"65,535 entries", withTotal(data, end, 65535), {"a.txt", "b.txt", "c.txt", "d.txt", "", ""}},
        {"directory offset at the end record", pointingAtEnd, {"a.txt", "b.txt", ""}},
        {"end record cut short", data.substr(0, end + 10), {"a.txt", "b.txt", ""}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        Recorder r;
        unpack(c.data, r, kOverBuffer);
        EXPECT_EQ(r.names(), c.offered);
    }

    // b fails (method 12), c's record sends the second walk back to b, which
    // fails again; the walk then stands on b's data, where three records
    // lead to offset 0 from the second walk's last mark, b's data: a round
    // that would read b's data again is refused.
    std::string planted = readFile(path("planted.zip"));
    auto plantedList = ziptest::listEntries(path("planted.zip"));
    planted = patched(planted, plantedList[1].headerOffset, ZipConstants::LOCHOW, 12);
    IOUtils::writeUInt(&planted[centralRecordAt(planted, 2) + ZipConstants::CENOFF], plantedList[1].headerOffset);
    Recorder refused;
    unpack(planted, refused, kOverBuffer);
    EXPECT_EQ(refused.names(), (std::vector<std::string>{"a.txt", "b.txt", "b.txt", "", ""}));

    // No end record at all: the restart itself fails and says so.
    Recorder r;
    try {
        unpack(data.substr(0, dirStart), r, kOverBuffer);
        ADD_FAILURE() << "no exception";
    } catch (ArchivingException& e) {
        EXPECT_EQ(e.getMessage(), "failed to restart zip unarchiving");
    }
}

TEST_F(ZipArchives, IdentifiedByOneLocalHeaderAfterGzip) {
    std::string d = shellQuote(dir->path());
    ASSERT_EQ(tuskel_test::runCommand("cd " + d + " && gzip -c zip.zip > zip.zip.gz && cd root &&"
                                      " zip -q -P pw ../enc-first.zip hello.txt"),
              0);
    ASSERT_NE(ArchiveFactory::factory, nullptr);
    ASSERT_GE(ArchiveFactory::factory->size(), 2u);
    ArchiveId* gzipId = (*ArchiveFactory::factory)[0];
    ArchiveId* zipId = (*ArchiveFactory::factory)[1];
    std::string zip = readFile(path("zip.zip"));
    struct Case {
        std::string what;
        std::string data;
        std::string checked;  // what checkFormat answers or throws
        size_t position;      // where it leaves the stream
        ArchiveId* identified;
    } cases[] = {
        {"zip", zip, "true", 0, zipId},
        {"zip written to a pipe", readFile(path("pipe.zip")), "true", 0, zipId},
        {"gzip holding a zip", readFile(path("zip.zip.gz")), "false", 0, gzipId},
        {"self-extractor stub", "MZ" + std::string(200, '\0') + zip, "false", 0, &ARCHIVEID_NONE},
        {"encrypted first entry", readFile(path("enc-first.zip")), "encrypted ZIP entry", 30, &ARCHIVEID_NONE},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        ChunkedInputStream in(c.data, 1);
        std::string checked;
        try {
            checked = ZipUnarchiver::checkFormat(in) ? "true" : "false";
        } catch (ArchivingException& e) {
            checked = e.getMessage();
        }
        EXPECT_EQ(checked, c.checked);
        EXPECT_EQ(in.position(), c.position);
        ChunkedInputStream again(c.data, 7);
        EXPECT_EQ(ArchiveFactory::identify(again), c.identified);
    }

    // Both forms of the ZIP unarchiver, and a fresh CRC object each time.
    ArchiveEntryProcessor processor;
    ChunkedInputStream in(zip);
    std::unique_ptr<Unarchiver> overStream(zipId->unarchiver(&in, processor, nullptr));
    EXPECT_NE(dynamic_cast<ZipUnarchiver*>(overStream.get()), nullptr);
    StringBuffer buffer(zip);
    std::unique_ptr<Unarchiver> overBuffer(zipId->unarchiver(&buffer, processor, nullptr));
    EXPECT_NE(dynamic_cast<ZipUnarchiver*>(overBuffer.get()), nullptr);
    std::unique_ptr<Crc> crc(zipId->crc()), other(zipId->crc());
    EXPECT_NE(dynamic_cast<Iso3309Crc*>(crc.get()), nullptr);
    EXPECT_NE(crc.get(), other.get());
}

TEST_F(ZipArchives, OnlyDataOfKnownSizeCanBePassedOver) {
    // Skipping (the default processor's answer) passes over every entry
    // whose size the local header states.
    struct Skipping : ArchiveEntryProcessor {
        std::vector<std::string> names;
        OutputStream* processEntry(ArchiveEntryInfo* info, int& action) override {
            names.push_back(info->name);
            return ArchiveEntryProcessor::processEntry(info, action);
        }
    };
    std::vector<std::string> all;
    for (const auto& e : ziptest::listEntries(path("zip.zip"))) all.push_back(e.name);
    all.push_back("");
    Skipping sized;
    ChunkedInputStream in(readFile(path("zip.zip")), 7);
    ZipUnarchiver(&in, sized, nullptr).start();
    EXPECT_EQ(sized.names, all);

    // Behind a descriptor nothing tells where the data ends: skipping
    // (pipe.zip), or copying a stored entry written by Python to a stream
    // that cannot seek, reads the data as a descriptor; the walk loses its
    // way and ends early, with the final entry.
    Skipping unsized;
    ChunkedInputStream piped(readFile(path("pipe.zip")), 7);
    ZipUnarchiver(&piped, unsized, nullptr).start();
    EXPECT_LT(unsized.names.size(), all.size());
    EXPECT_EQ(unsized.names.back(), "");
    Recorder stored;
    unpack(readFile(path("py_stored_stream.zip")), stored, kOverStream);
    ASSERT_EQ(stored.names(), (std::vector<std::string>{"first.txt", ""}));
    EXPECT_EQ(stored.seen[0].out->data, "");
}
