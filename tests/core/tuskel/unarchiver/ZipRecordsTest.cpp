#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "support/TestFiles.h"
#include "support/TestStreams.h"
#include "unarchiver/ZipConstants.h"
#include "unarchiver/ZipInfo.h"
#include "ZipTestSupport.h"

using namespace QRN_SPACE;
using tuskel_test::bytes;
using tuskel_test::ChunkedInputStream;
using tuskel_test::readFile;
using tuskel_test::StringBuffer;
using tuskel_test::TempDir;

namespace {

// "true" or "false" as a reader answered, or the message of what it threw.
std::string outcome(const std::function<bool()>& read) {
    try {
        return read() ? "true" : "false";
    } catch (Exception& e) {
        return e.getMessage();
    }
}

}  // namespace

TEST(ZipRecords, CentralRecordsMatchWhatZipfileRecorded) {
    TempDir dir;
    ziptest::python(dir.path(), R"(
import zipfile
with zipfile.ZipFile("py.zip", "w") as z:
    z.writestr("stored.txt", b"stored bytes\n" * 10, zipfile.ZIP_STORED)
    i = zipfile.ZipInfo("dir/deflated.bin", (2001, 2, 3, 4, 5, 6))
    i.extra = b"\x99\x99\x04\x00abcd"
    i.comment = b"entry comment"
    z.writestr(i, bytes(range(256)) * 40, zipfile.ZIP_DEFLATED)
    z.writestr("z.txt", b"last", zipfile.ZIP_DEFLATED)
)");
    std::string data = readFile(dir.file("py.zip"));
    auto listed = ziptest::listEntries(dir.file("py.zip"));
    ASSERT_EQ(listed.size(), 3u);
    size_t directory = data.find("PK\x01\x02");
    for (int chunk : {1, 7, 1 << 30}) {
        SCOPED_TRACE(chunk);
        // Two more records asked for than there are: the failed reads stay.
        ChunkedInputStream in(data, chunk);
        in.skip(static_cast<long>(directory));
        ZipInfo info;
        EXPECT_EQ(info.readCentralDirs(in, 5), 3);
        ASSERT_EQ(info.centralDirs.size(), 5u);
        for (size_t i = 0; i < listed.size(); ++i) {
            const ZipCentralDir& d = info.centralDirs[i];
            EXPECT_EQ(d.name, listed[i].name);
            EXPECT_EQ(d.crc, listed[i].crc);
            EXPECT_EQ(d.compressedSize, listed[i].compressedSize);
            EXPECT_EQ(d.uncompressedSize, listed[i].size);
            EXPECT_EQ(d.localHeaderOffset, listed[i].headerOffset);
            EXPECT_EQ(d.time, listed[i].dosTime);
            EXPECT_EQ(d.extra, listed[i].extra);
            EXPECT_EQ(d.comment, listed[i].comment);
        }
    }
    // getNextDir: the record of that index, -1 past the end, and a negative
    // index answered without reading.
    for (int index : {0, 2, 3, -3}) {
        ChunkedInputStream in(data, 7);
        in.skip(static_cast<long>(directory));
        ZipCentralDir d;
        EXPECT_EQ(d.getNextDir(in, index), index <= 2 ? index : -1) << index;
        if (index == 2) {
            EXPECT_EQ(d.name, "z.txt");
        }
        if (index < 0) {
            EXPECT_EQ(in.position(), directory);
        }
    }
}

TEST(ZipRecords, ReadersRefuseOrThrow) {
    TempDir dir;
    ziptest::python(dir.path(), R"(
import zipfile
for n in (511, 512, 513):
    with zipfile.ZipFile("name%d.zip" % n, "w") as z: z.writestr("n" * n, b"x")
zipfile.ZipFile("empty.zip", "w").close()
)");
    tuskel_test::writeFile(dir.file("a.txt"), "secret text");
    ASSERT_EQ(tuskel_test::runCommand("cd " + tuskel_test::shellQuote(dir.path()) + " && zip -q -P pw enc.zip a.txt"), 0);
    std::string n512 = readFile(dir.file("name512.zip"));
    size_t central = n512.find("PK\x01\x02");
    std::string noName = n512;
    noName[central + ZipConstants::CENNAM] = 0;
    noName[central + ZipConstants::CENNAM + 1] = 0;
    std::string end = readFile(dir.file("empty.zip"));
    auto local = [](bool headerOnly) {
        return [headerOnly](InputStream& in) {
            in.mark(ZipConstants::LOCHDR);
            ZipInfo info;
            bool ok = info.read(in, headerOnly);
            EXPECT_TRUE(!headerOnly || info.name.empty());
            return ok;
        };
    };
    auto centralRecord = [](InputStream& in) { return ZipCentralDir().read(in); };
    auto endRecord = [](InputStream& in) { return ZipEndCentralDir().read(in); };
    struct Case {
        std::string what;
        std::string data;
        size_t at;
        std::function<bool(InputStream&)> read;
        std::string outcome;  // "true", "false" or the exception message
        size_t position;      // where the stream stands afterwards
    } cases[] = {
        {"511-byte name", readFile(dir.file("name511.zip")), 0, local(false), "true", 30 + 511},
        {"512-byte name", n512, 0, local(false), "true", 30 + 512},
        {"513-byte name", readFile(dir.file("name513.zip")), 0, local(false), "bad entry name", 30},
        {"encrypted", readFile(dir.file("enc.zip")), 0, local(false), "encrypted ZIP entry", 30},
        {"header only", n512, 0, local(true), "true", 30},
        {"wrong signature", n512.substr(1), 0, local(false), "false", 30},
        {"29 bytes", n512.substr(0, 29), 0, local(false), "false", 29},
        {"name cut short", n512.substr(0, 130), 0, local(false), "unexpected EOF", 130},
        {"central record", n512, central, centralRecord, "true", central + 46 + 512},
        {"central record without a name", noName, central, centralRecord, "empty file name in central directory",
         central + 46},
        {"central record cut short", n512.substr(0, central + 50), central, centralRecord, "unexpected EOF",
         central + 50},
        {"end record", end, 0, endRecord, "true", 22},
        {"end record of 21 bytes", end.substr(0, 21), 0, endRecord, "false", 21},
        {"comment cut short", end.substr(0, 20) + bytes({5, 0, 'a'}), 0, endRecord, "unexpected EOF", 23},
    };
    for (const auto& c : cases) {
        for (int chunk : {1, 7, 1 << 30}) {
            SCOPED_TRACE(c.what + " chunk " + std::to_string(chunk));
            ChunkedInputStream in(c.data, chunk);
            in.skip(static_cast<long>(c.at));
            EXPECT_EQ(outcome([&] { return c.read(in); }), c.outcome);
            EXPECT_EQ(in.position(), c.position);
        }
    }
}

TEST(ZipRecords, DataDescriptorWithOrWithoutSignatureOrAbsent) {
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
    std::string data = readFile(dir.file("stream.zip"));
    auto listed = ziptest::listEntries(dir.file("stream.zip"));
    ASSERT_EQ(listed.size(), 2u);
    const auto& one = listed[0];
    size_t dataEnd = one.headerOffset + 30 + one.name.size() + one.compressedSize;
    std::string unsigned_ = data.substr(0, dataEnd) + data.substr(dataEnd + 4);  // the same, signature dropped
    size_t directory = data.find("PK\x01\x02");
    struct Case {
        std::string what;
        std::string data;
        size_t at;
        size_t after;
        bool read;
        int flags;
    } cases[] = {
        {"with signature", data, dataEnd, dataEnd + 16, true, ZipConstants::FLAG_DATA_DESCRIPTOR},
        {"without signature", unsigned_, dataEnd, dataEnd + 12, true, ZipConstants::FLAG_DATA_DESCRIPTOR},
        {"a local header follows", data, listed[1].headerOffset, listed[1].headerOffset, false,
         ZipConstants::FLAG_DATA_DESCRIPTOR},
        {"the directory follows", data, directory, directory, false, ZipConstants::FLAG_DATA_DESCRIPTOR},
        {"fewer than 16 bytes", data.substr(0, dataEnd + 15), dataEnd, dataEnd, false,
         ZipConstants::FLAG_DATA_DESCRIPTOR},
        {"flag bit 3 clear", data, dataEnd, dataEnd, false, 0},
    };
    for (const auto& c : cases) {
        for (int chunk : {1, 7, 1 << 30}) {
            SCOPED_TRACE(c.what + " chunk " + std::to_string(chunk));
            ChunkedInputStream in(c.data, chunk);
            in.skip(static_cast<long>(c.at));
            ZipInfo info;
            info.flags = c.flags;
            info.readDataDescriptor(in);
            EXPECT_EQ(in.position(), c.after);
            EXPECT_EQ(info.crc, c.read ? one.crc : 0u);
            EXPECT_EQ(info.compressedSize, c.read ? one.compressedSize : 0u);
            EXPECT_EQ(info.uncompressedSize, c.read ? one.size : 0u);
        }
    }
}

TEST(ZipRecords, FindPosReachesBackOverTheLongestComment) {
    TempDir dir;
    // Comment lengths that put the record across the search's block seams
    // (1007-1009, 2031-2033) and around its reach; the entry in front keeps
    // every seam away from the buffer's start.
    const std::vector<int> lengths = {0, 1005, 1007, 1008, 1009, 1010, 2031, 2032, 2033, 65513, 65514, 65535};
    std::string script = "import zipfile\nfor n in (";
    for (int n : lengths) script += std::to_string(n) + ",";
    script += R"():
    with zipfile.ZipFile("c%d.zip" % n, "w") as z:
        z.writestr("a.bin", bytes(range(256)) * 20)
        z.comment = bytes((i * 7 + 1) % 251 for i in range(n))
zipfile.ZipFile("empty.zip", "w").close()
)";
    ziptest::python(dir.path(), script);
    for (int n : lengths) {
        SCOPED_TRACE(n);
        std::string data = readFile(dir.file("c" + std::to_string(n) + ".zip"));
        StringBuffer buffer(data);
        long record = static_cast<long>(data.size()) - ZipConstants::ENDHDR - n;
        long pos = ZipEndCentralDir::findPos(buffer);
        ASSERT_EQ(pos, n <= 65513 ? record : 0);
        if (pos == 0) continue;
        ChunkedInputStream in(data, 7);
        in.skip(pos);
        ZipEndCentralDir end;
        ASSERT_TRUE(end.read(in));
        EXPECT_EQ(end.totalEntries, 1);
        EXPECT_EQ(end.entriesOnDisk, 1);
        EXPECT_EQ(end.directoryOffset + end.directorySize, static_cast<unsigned>(record));
        EXPECT_EQ(end.comment, data.substr(static_cast<size_t>(record) + ZipConstants::ENDHDR));
    }

    std::string empty = readFile(dir.file("empty.zip"));
    struct Case {
        std::string data;
        long expected;
    } notFound[] = {
        {empty, 0},  // a record at position 0 reads as not found: intended
        {" " + empty, 1},
        {empty.substr(0, 4), 0},
        {std::string(5000, 'P'), 0},
    };
    for (const auto& c : notFound) {
        StringBuffer buffer(c.data);
        EXPECT_EQ(ZipEndCentralDir::findPos(buffer), c.expected) << c.data.size();
    }
}
