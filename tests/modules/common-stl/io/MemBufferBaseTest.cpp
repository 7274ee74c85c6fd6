#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <string>

#include "io/MemBufferBase.h"
#include "support/TestStreams.h"

using namespace QRN_SPACE;
using tuskel_test::patternBytes;

namespace {

// A discarding read releases the blocks before the one holding the end of
// what it read; a released position throws, which shows the block edges.
bool released(MemBufferBase& buffer, long pos) {
    try {
        buffer.read(pos);
        return false;
    } catch (IOException& e) {
        return e.getMessage() == "Index out of bound";
    }
}

}  // namespace

TEST(MemBufferBase, DiscardingReadsReleaseWholeBlocksOnly) {
    struct Case {
        bool oneWrite;  // else byte by byte: blocks of 4096
        long lastRead;
        bool firstBlockGone;
    };
    const Case cases[] = {
        {false, 4094, false}, {false, 4095, true}, {false, 4096, true},
        {true, 9999, false},  // one block of 10000; the last block always stays
    };
    const std::string data = patternBytes(10000);
    for (const Case& c : cases) {
        MemBufferBase buffer;
        if (c.oneWrite) {
            buffer.write(0, data.data(), 10000);
        } else {
            for (char ch : data) buffer.append(ch);
        }
        buffer.discardUsedBuffer();
        ASSERT_EQ(buffer.read(c.lastRead), static_cast<unsigned char>(data[c.lastRead]));
        EXPECT_EQ(released(buffer, 0), c.firstBlockGone) << c.lastRead;
        EXPECT_EQ(buffer.getSize(), 10000);
    }
}

TEST(MemBufferBase, OneForwardReaderConsumesADiscardedBuffer) {
    const std::string data = patternBytes(50000);
    MemBufferBase buffer;
    for (size_t at = 0; at < data.size(); at += 1000) buffer.append(data.data() + at, 1000);
    buffer.discardUsedBuffer();
    std::string got;
    char piece[4099];
    for (int n; (n = buffer.read(static_cast<long>(got.size()), piece, 4099)) > 0;) got.append(piece, n);
    EXPECT_EQ(got, data);
    EXPECT_TRUE(released(buffer, 40959));
    EXPECT_FALSE(released(buffer, 49999));
    EXPECT_THROW(buffer.write(100, "x", 1), IOException);
    EXPECT_THROW(buffer.insert(100, "x", 1), IOException);
    EXPECT_THROW(buffer.cut(100, 1), IOException);

    buffer.truncate(10);  // into the released range: empty at that size
    buffer.append("new", 3);
    EXPECT_TRUE(released(buffer, 9));
    EXPECT_EQ(buffer.cut(10, 3), 3);  // no block left
    buffer.write(12, "z", 1);
    EXPECT_EQ(buffer.getSize(), 13);
    EXPECT_EQ(buffer.read(10), 0);
    EXPECT_EQ(buffer.read(12), 'z');
}

TEST(MemBufferBase, InsertsAtABlockStartAndPastTheEnd) {
    MemBufferBase buffer;
    const std::string data = patternBytes(5000);
    buffer.append(data.data(), 5000);
    EXPECT_EQ(buffer.insert(0, "ab", 2), 2);
    // Intended: past the end an insert is a plain write with a zero gap.
    EXPECT_EQ(buffer.insert(5012, "xyz", 3), 3);
    std::string all(5015, '\0');
    ASSERT_EQ(buffer.read(0, &all[0], 5015), 5015);
    EXPECT_EQ(all, "ab" + data + std::string(10, '\0') + "xyz");
    buffer.discardUsedBuffer();
    EXPECT_EQ(buffer.read(1), 'b');  // the end of a two-byte block of its own
    EXPECT_TRUE(released(buffer, 0));
}

TEST(MemBufferBase, RefusedGrowthReportsTheSystemError) {
    MemBufferBase buffer;
    try {
        buffer.write(LONG_MAX - 1, "xyz", 3);
        ADD_FAILURE() << "no exception";
    } catch (IOException& e) {
        EXPECT_EQ(e.getMessage(), std::strerror(ENOMEM));
        EXPECT_EQ(e.getErrorLocation(), "io/BufferBase, line447");
    }
    if (LONG_MAX > INT_MAX) {
        EXPECT_FALSE(MemBufferBase(LONG_MAX).isValid());  // no block holds that much
    }
    EXPECT_EQ(MemBufferBase(10).getType(), 0);
}
