#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "support/TestFiles.h"
#include "support/TestStreams.h"
#include "unarchiver/ZipConstants.h"
#include "unarchiver/ZipInfo.h"
#include "utils/IOUtils.h"
#include "ZipTestSupport.h"

using namespace QRN_SPACE;
using tuskel_test::ChunkedInputStream;
using tuskel_test::readFile;
using tuskel_test::StringBuffer;
using tuskel_test::TempDir;

namespace {

// The chunk sizes every reader is fed with: byte by byte, odd, unlimited.
const int kChunks[] = {1, 7, 1 << 30};

// "true" or "false" as a reader answered, or the message of what it threw.
std::string outcome(const std::function<bool()>& read) {
    try {
        return read() ? "true" : "false";
    } catch (Exception& e) {
        return e.getMessage();
    }
}

// Python's zipfile, written to a file: deflated and stored entries, an
// entry with an extra field and a comment, and an archive comment.
std::string pythonArchive(const TempDir& dir) {
    ziptest::python(dir.path(), R"(
import zipfile
with zipfile.ZipFile("py.zip", "w") as z:
    z.writestr("stored.txt", b"stored bytes\n" * 10, zipfile.ZIP_STORED)
    i = zipfile.ZipInfo("dir/deflated.bin", (2001, 2, 3, 4, 5, 6))
    i.extra = b"\x99\x99\x04\x00abcd"
    i.comment = b"entry comment"
    z.writestr(i, bytes(range(256)) * 40, zipfile.ZIP_DEFLATED)
    z.writestr("z.txt", b"last", zipfile.ZIP_DEFLATED)
    z.comment = b"archive comment"
)");
    return dir.file("py.zip");
}

}  // namespace

TEST(ZipInfoRead, LocalHeadersMatchWhatZipfileRecorded) {
    TempDir dir;
    std::string path = pythonArchive(dir);
    std::string data = readFile(path);
    auto listed = ziptest::listEntries(path);
    ASSERT_EQ(listed.size(), 3u);
    for (int chunk : kChunks) {
        for (const auto& e : listed) {
            SCOPED_TRACE(e.name + " chunk " + std::to_string(chunk));
            ChunkedInputStream in(data, chunk);
            in.skip(e.headerOffset);
            in.mark(ZipConstants::LOCHDR);
            ZipInfo info;
            ASSERT_TRUE(info.read(in, false));
            EXPECT_EQ(info.name, e.name);
            EXPECT_EQ(info.crc, e.crc);
            EXPECT_EQ(info.compressedSize, e.compressedSize);
            EXPECT_EQ(info.uncompressedSize, e.size);
            EXPECT_EQ(info.method, e.method);
            EXPECT_EQ(info.flags, e.flags);
            EXPECT_EQ(info.time, e.dosTime);
            ASSERT_EQ(info.extraLength, static_cast<int>(e.extra.size()));
            if (info.extraLength > 0) {
                EXPECT_EQ(std::string(info.extra.get(), e.extra.size()), e.extra);
            }
            EXPECT_EQ(in.position(), e.headerOffset + 30 + e.name.size() + e.extra.size());
        }
    }
}

TEST(ZipInfoRead, HeaderChecks) {
    TempDir dir;
    ziptest::python(dir.path(), R"(
import zipfile
for n in (511, 512, 513):
    with zipfile.ZipFile("name%d.zip" % n, "w") as z:
        z.writestr("n" * n, b"x")
)");
    tuskel_test::writeFile(dir.file("a.txt"), "secret text");
    ASSERT_EQ(tuskel_test::runCommand("cd " + tuskel_test::shellQuote(dir.path()) + " && zip -q -P pw enc.zip a.txt"),
              0);
    std::string n512 = readFile(dir.file("name512.zip"));
    struct Case {
        std::string what;
        std::string data;
        bool headerOnly;
        std::string outcome;  // "true", "false" or the exception message
        size_t position;      // where the stream stands afterwards
    } cases[] = {
        {"511-byte name", readFile(dir.file("name511.zip")), false, "true", 30 + 511},
        {"512-byte name", n512, false, "true", 30 + 512},
        {"513-byte name", readFile(dir.file("name513.zip")), false, "bad entry name", 30},
        {"encrypted", readFile(dir.file("enc.zip")), false, "encrypted ZIP entry", 30},
        {"header only", n512, true, "true", 30},
        {"wrong signature", n512.substr(1), false, "false", 30},
        {"29 bytes", n512.substr(0, 29), false, "false", 29},
        {"name cut short", n512.substr(0, 30 + 100), false, "unexpected EOF", 130},
    };
    for (const auto& c : cases) {
        for (int chunk : kChunks) {
            SCOPED_TRACE(c.what + " chunk " + std::to_string(chunk));
            ChunkedInputStream in(c.data, chunk);
            in.mark(ZipConstants::LOCHDR);
            ZipInfo info;
            EXPECT_EQ(outcome([&] { return info.read(in, c.headerOnly); }), c.outcome);
            EXPECT_EQ(in.position(), c.position);
            if (c.headerOnly) {
                EXPECT_EQ(info.name, "");
            }
        }
    }
}

TEST(ZipInfoRead, DataDescriptorWithAndWithoutSignatureOrAbsent) {
    TempDir dir;
    ziptest::python(dir.path(), R"(
import io, zipfile
class Unseekable(io.RawIOBase):
    def __init__(self): self.data = bytearray()
    def writable(self): return True
    def write(self, b): self.data += b; return len(b)
out = Unseekable()
with zipfile.ZipFile(out, "w", zipfile.ZIP_DEFLATED) as z:
    z.writestr("one.txt", b"first entry " * 50)
    z.writestr("two.txt", b"second")
open("stream.zip", "wb").write(out.data)
)");
    std::string path = dir.file("stream.zip");
    std::string data = readFile(path);
    auto listed = ziptest::listEntries(path);
    ASSERT_EQ(listed.size(), 2u);
    const auto& one = listed[0];
    size_t dataEnd = one.headerOffset + 30 + one.name.size() + one.compressedSize;
    std::string unsigned_ = data.substr(0, dataEnd) + data.substr(dataEnd + 4);  // same descriptor, signature dropped

    struct Case {
        std::string what;
        std::string data;
        size_t at;
        size_t after;
        bool read;
    } cases[] = {
        {"with signature", data, dataEnd, dataEnd + 16, true},
        {"without signature", unsigned_, dataEnd, dataEnd + 12, true},
        {"a local header follows", data, listed[1].headerOffset, listed[1].headerOffset, false},
        {"the directory follows", data, data.find("PK\x01\x02"), data.find("PK\x01\x02"), false},
        {"fewer than 16 bytes", data.substr(0, dataEnd + 15), dataEnd, dataEnd, false},
    };
    for (const auto& c : cases) {
        for (int chunk : kChunks) {
            SCOPED_TRACE(c.what + " chunk " + std::to_string(chunk));
            ChunkedInputStream in(c.data, chunk);
            in.skip(static_cast<long>(c.at));
            ZipInfo info;
            info.flags = ZipConstants::FLAG_DATA_DESCRIPTOR;
            info.readDataDescriptor(in);
            EXPECT_EQ(in.position(), c.after);
            EXPECT_EQ(info.crc, c.read ? one.crc : 0u);
            EXPECT_EQ(info.compressedSize, c.read ? one.compressedSize : 0u);
            EXPECT_EQ(info.uncompressedSize, c.read ? one.size : 0u);
        }
    }
    ChunkedInputStream in(data);
    in.skip(static_cast<long>(dataEnd));
    ZipInfo noFlag;
    noFlag.readDataDescriptor(in);
    EXPECT_EQ(in.position(), dataEnd);
    EXPECT_EQ(noFlag.crc, 0u);
}

TEST(ZipCentralDirRead, RecordsMatchWhatZipfileRecorded) {
    TempDir dir;
    std::string path = pythonArchive(dir);
    std::string data = readFile(path);
    auto listed = ziptest::listEntries(path);
    size_t start = data.find("PK\x01\x02");
    ASSERT_NE(start, std::string::npos);
    for (int chunk : kChunks) {
        SCOPED_TRACE(chunk);
        ChunkedInputStream in(data, chunk);
        in.skip(static_cast<long>(start));
        ZipInfo info;
        EXPECT_EQ(info.readCentralDirs(in, static_cast<int>(listed.size()) + 2), static_cast<int>(listed.size()));
        EXPECT_TRUE(info.centralDirRead);
        ASSERT_EQ(info.centralDirs.size(), listed.size() + 2);  // the failed reads stay
        for (size_t i = 0; i < listed.size(); ++i) {
            const ZipCentralDir& d = info.centralDirs[i];
            const auto& e = listed[i];
            EXPECT_EQ(d.name, e.name);
            EXPECT_EQ(d.crc, e.crc);
            EXPECT_EQ(d.compressedSize, e.compressedSize);
            EXPECT_EQ(d.uncompressedSize, e.size);
            EXPECT_EQ(d.localHeaderOffset, e.headerOffset);
            EXPECT_EQ(d.time, e.dosTime);
            EXPECT_EQ(d.method, e.method);
            EXPECT_EQ(d.extra, e.extra);
            EXPECT_EQ(d.comment, e.comment);
        }
        EXPECT_EQ(info.centralDirs.back().name, "");
    }

    // getNextDir: the record with the given index, -1 past the end, a
    // negative index answered without reading.
    for (int index : {0, 2, 3, -3}) {
        ChunkedInputStream in(data, 7);
        in.skip(static_cast<long>(start));
        ZipCentralDir d;
        int expected = index <= 2 ? index : -1;
        EXPECT_EQ(d.getNextDir(in, index), expected) << index;
        if (expected >= 0) {
            EXPECT_EQ(d.name, listed[static_cast<size_t>(index)].name);
        }
        if (index < 0) {
            EXPECT_EQ(in.position(), start);
        }
    }
}

TEST(ZipCentralDirRead, EmptyAndTruncatedNamesThrow) {
    TempDir dir;
    std::string data = readFile(pythonArchive(dir));
    size_t start = data.find("PK\x01\x02");
    std::string emptyName = data;
    emptyName[start + ZipConstants::CENNAM] = 0;
    emptyName[start + ZipConstants::CENNAM + 1] = 0;
    ChunkedInputStream in(emptyName);
    in.skip(static_cast<long>(start));
    ZipCentralDir d;
    EXPECT_EQ(outcome([&] { return d.read(in); }), "empty file name in central directory");

    ChunkedInputStream cut(data.substr(0, start + ZipConstants::CENHDR + 3));
    cut.skip(static_cast<long>(start));
    EXPECT_EQ(outcome([&] { return d.read(cut); }), "unexpected EOF");
}

TEST(ZipEndCentralDir, FindPosReachesBackOverTheLongestComment) {
    TempDir dir;
    // Comment lengths that put the record across the search's block seams
    // (1007-1009, 2031-2033) and around its reach; the entry in front keeps
    // every seam away from the buffer's start.
    const std::vector<int> lengths = {0,    1,    1005, 1006, 1007, 1008,  1009,  1010,
                                      2031, 2032, 2033, 2034, 65512, 65513, 65514, 65535};
    std::string script = "import zipfile\nfor n in (";
    for (int n : lengths) script += std::to_string(n) + ",";
    script += R"():
    with zipfile.ZipFile("c%d.zip" % n, "w") as z:
        z.writestr("a.bin", bytes(range(256)) * 20)
        z.comment = bytes((i * 7 + 1) % 251 for i in range(n))
)";
    ziptest::python(dir.path(), script);
    for (int n : lengths) {
        SCOPED_TRACE(n);
        std::string data = readFile(dir.file("c" + std::to_string(n) + ".zip"));
        StringBuffer buffer(data);
        long pos = ZipEndCentralDir::findPos(buffer);
        long record = static_cast<long>(data.size()) - ZipConstants::ENDHDR - n;
        EXPECT_EQ(pos, n <= 65513 ? record : 0);
        if (pos == 0) continue;
        ChunkedInputStream in(data, 7);
        in.skip(pos);
        ZipEndCentralDir end;
        ASSERT_TRUE(end.read(in));
        EXPECT_EQ(end.totalEntries, 1);
        EXPECT_EQ(end.entriesOnDisk, 1);
        EXPECT_EQ(end.directoryOffset + end.directorySize, static_cast<unsigned>(record));
        EXPECT_EQ(end.comment, data.substr(static_cast<size_t>(record) + ZipConstants::ENDHDR));
        EXPECT_EQ(in.position(), data.size());
    }
}

TEST(ZipEndCentralDir, NotFoundCases) {
    TempDir dir;
    ziptest::python(dir.path(), "import zipfile\nzipfile.ZipFile('empty.zip', 'w').close()\n");
    std::string empty = readFile(dir.file("empty.zip"));
    ASSERT_EQ(empty.size(), 22u);
    StringBuffer atZero(empty);
    EXPECT_EQ(ZipEndCentralDir::findPos(atZero), 0);  // a record at position 0 reads as not found: intended
    StringBuffer shifted(" " + empty);
    EXPECT_EQ(ZipEndCentralDir::findPos(shifted), 1);
    StringBuffer four(empty.substr(0, 4));
    EXPECT_EQ(ZipEndCentralDir::findPos(four), 0);
    StringBuffer none(std::string(5000, 'P'));
    EXPECT_EQ(ZipEndCentralDir::findPos(none), 0);

    ChunkedInputStream shortRecord(empty.substr(0, 21));
    ZipEndCentralDir end;
    EXPECT_EQ(outcome([&] { return end.read(shortRecord); }), "false");
    ChunkedInputStream cutComment(empty.substr(0, 20) + tuskel_test::bytes({5, 0, 'a'}));
    EXPECT_EQ(outcome([&] { return end.read(cutComment); }), "unexpected EOF");
}
