#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "support/TestStreams.h"
#include "utils/IOUtils.h"

using namespace QRN_SPACE;
using tuskel_test::bytes;
using tuskel_test::ChunkedInputStream;
using tuskel_test::CollectingOutputStream;

namespace {

std::string ioError(const std::function<void()>& f) {
    try {
        f();
    } catch (IOException& e) {
        return e.getMessage() + " @ " + e.getErrorLocation();
    }
    return "no error";
}

const std::string kEof = "unexpected EOF @ ../../core/tuskel/src/utils/IOUtils, line57";

}  // namespace

TEST(IOUtils, ReadsLittleEndianFromStreamsAndThrowsAtTheEnd) {
    ChunkedInputStream in(bytes({0x34, 0x12, 0x78, 0x56, 0x34, 0x12, 0xFF, 0xFF, 0xFF, 0xFF, 0xAB, 1, 2, 3}));
    EXPECT_EQ(IOUtils::readUShort(in), 0x1234);
    EXPECT_EQ(IOUtils::readUInt(in), 0x12345678);
    EXPECT_EQ(static_cast<unsigned>(IOUtils::readUInt(in)), 0xFFFFFFFFu);
    EXPECT_EQ(IOUtils::readUChar(in), 0xAB);
    EXPECT_EQ(ioError([&] { IOUtils::readUInt(in); }), kEof);  // three bytes left
}

TEST(IOUtils, WritesLittleEndianToStreamsAndMemory) {
    CollectingOutputStream out;
    IOUtils::writeUInt(out, 0x12345678);
    IOUtils::writeUShort(out, 0xABCD);
    IOUtils::writeUChar(out, 0x1EF);
    EXPECT_EQ(out.data, bytes({0x78, 0x56, 0x34, 0x12, 0xCD, 0xAB, 0xEF}));

    char mem[7];
    IOUtils::writeUInt(mem, 0x89ABCDEFL);
    IOUtils::writeUShort(mem + 4, 0x1234);
    IOUtils::writeUChar(mem + 6, 0x80);
    EXPECT_EQ(std::string(mem, 7), bytes({0xEF, 0xCD, 0xAB, 0x89, 0x34, 0x12, 0x80}));
    EXPECT_EQ(IOUtils::readUInt(mem), 0x89ABCDEFu);
    EXPECT_EQ(IOUtils::readUShort(mem + 4), 0x1234);
    EXPECT_EQ(IOUtils::readUChar(mem + 6), 0x80);
}

TEST(IOUtils, GettersReadAtAnOffsetAndRestoreThePosition) {
    ChunkedInputStream in(bytes({9, 0, 1, 2, 0x34, 0x12, 0x78, 0x56}));
    in.read();
    EXPECT_EQ(IOUtils::getUShort(in, 3), 0x1234);
    EXPECT_EQ(IOUtils::getUInt(in, 3), 0x56781234);
    EXPECT_EQ(IOUtils::getUChar(in, 1), 1);
    EXPECT_EQ(in.position(), 1u);

    EXPECT_EQ(ioError([&] { IOUtils::getUShort(in, 6); }), kEof);
    EXPECT_EQ(in.position(), 8u);  // not reset after the end-of-stream throw
    in.reset();
    std::string err = ioError([&] { IOUtils::getUChar(in, 100); });
    EXPECT_NE(err.find("@ ../../core/tuskel/src/utils/IOUtils, line25"), std::string::npos) << err;
    EXPECT_EQ(in.position(), 1u);  // getUChar resets before it throws
}

TEST(IOUtils, CopiesInChunksOf1024AndStopsQuietlyAtTheEnd) {
    std::string data = tuskel_test::patternBytes(2000);
    {
        ChunkedInputStream in(data);
        CollectingOutputStream out;
        IOUtils::readAndWrite(in, out, 3000);
        EXPECT_EQ(out.writes, (std::vector<int>{1024, 976}));
        EXPECT_EQ(out.data, data);
    }
    {
        ChunkedInputStream in(data);
        CollectingOutputStream out;
        IOUtils::readAndWrite(in, out, 0);
        IOUtils::readAndWrite(in, out, 1500);
        EXPECT_EQ(out.data, data.substr(0, 1500));
        EXPECT_EQ(in.requests(), (std::vector<int>{1024, 476}));
    }
    {
        ChunkedInputStream in(data, 7);  // awkward short reads
        CollectingOutputStream out;
        EXPECT_EQ(IOUtils::readAndWrite(in, out), 0);
        EXPECT_EQ(out.data, data);
    }
}

TEST(IOUtils, WholeStreamReaders) {
    std::string data = tuskel_test::patternBytes(3000);
    ChunkedInputStream in(data, 33);
    char buf[100];
    EXPECT_EQ(IOUtils::readFull(in, buf, 100), 100);
    EXPECT_EQ(std::string(buf, 100), data.substr(0, 100));
    EXPECT_EQ(IOUtils::readFull(in, buf, 0), 0);
    EXPECT_EQ(IOUtils::readFull(in), 2900);
    EXPECT_EQ(IOUtils::readFull(in, buf, 10), 0);  // short is not an error
    in.reset();
    EXPECT_EQ(IOUtils::skip(in), 3000);

    ChunkedInputStream text(bytes({'a', 'b', 0, 'c'}));
    EXPECT_EQ(IOUtils::readString(text), "ab");
    EXPECT_EQ(IOUtils::readString(text), "c");
    EXPECT_EQ(IOUtils::readString(text), "");
}
