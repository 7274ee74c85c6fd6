#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>

#include "support/TestStreams.h"
#include "support/Thrown.h"
#include "utils/IOUtils.h"

using namespace QRN_SPACE;
using namespace tuskel_test;

const std::string kAt = " @ ../../core/tuskel/src/utils/IOUtils, line";

TEST(IOUtils, LittleEndianValuesWrittenAndReadAtAnOffsetWithoutMoving) {
    CollectingOutputStream out;
    IOUtils::writeUInt(out, 0x89ABCDEFL);
    IOUtils::writeUShort(out, 0xFEDC);
    IOUtils::writeUChar(out, 0x1A5);  // the low byte only
    EXPECT_EQ(out.data, bytes({0xEF, 0xCD, 0xAB, 0x89, 0xDC, 0xFE, 0xA5}));
    ChunkedInputStream in("_" + out.data);
    in.read();  // offsets count from here
    EXPECT_EQ(unsigned(IOUtils::getUInt(in, 0)), 0x89ABCDEFu);
    EXPECT_EQ(IOUtils::getUShort(in, 4), 0xFEDC);
    EXPECT_EQ(IOUtils::getUChar(in, 6), 0xA5);
    EXPECT_EQ(in.position(), 1u);
    EXPECT_EQ(thrown<IOException>([&] { IOUtils::getUInt(in, 4); }), "unexpected EOF" + kAt + "57");  // 3 bytes left
    EXPECT_EQ(in.position(), 8u);  // not reset after the end-of-stream throw
    in.reset();
    errno = EDOM;  // intended: the message is whatever errno holds
    EXPECT_EQ(thrown<IOException>([&] { IOUtils::getUChar(in, 100); }), std::strerror(EDOM) + kAt + "25");
    EXPECT_EQ(in.position(), 1u);  // getUChar resets before it throws
}

TEST(IOUtils, CopiesInChunksOf1024AndStopsQuietlyAtTheEnd) {
    const std::string data = patternBytes(3000);
    ChunkedInputStream whole(data.substr(0, 2000)), limited(data), awkward(data, 7);
    CollectingOutputStream out, part, all;
    IOUtils::readAndWrite(whole, out, 3000);  // more than there is
    IOUtils::readAndWrite(limited, part, 0);
    IOUtils::readAndWrite(limited, part, 1500);
    EXPECT_EQ(limited.requests(), (std::vector<int>{1024, 476}));
    EXPECT_EQ(IOUtils::readAndWrite(awkward, all), 0);
    EXPECT_EQ(out.data + part.data + all.data, data.substr(0, 2000) + data.substr(0, 1500) + data);
}
