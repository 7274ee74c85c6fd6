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

// A discarded buffer releases the blocks before the one that holds the end
// of the last read, and a released position can no longer be read: this
// tells where the block edges lie.
bool released(MemBufferBase& buffer, long pos) {
    try {
        buffer.read(pos);
        return false;
    } catch (IOException& e) {
        EXPECT_EQ(e.getMessage(), "Index out of bound");
        return true;
    }
}

}  // namespace

TEST(MemBufferBase, IsTheTypeZeroStoreWithNoSingleAddress) {
    MemBufferBase buffer;
    EXPECT_TRUE(buffer.isValid());
    EXPECT_EQ(buffer.getType(), 0);
    buffer.append('a');
    EXPECT_EQ(buffer.getSize(), 1);
    EXPECT_EQ(buffer.getMemAddress(), nullptr);
    EXPECT_EQ(buffer.getFileDescriptor(), -1);

    MemBufferBase sized(10);
    EXPECT_TRUE(sized.isValid());
    EXPECT_EQ(sized.getSize(), 0);
    if (LONG_MAX > INT_MAX) {
        MemBufferBase huge(LONG_MAX);  // no block holds that much
        EXPECT_FALSE(huge.isValid());
        EXPECT_THROW(huge.append('x'), IOException);
    }
}

TEST(MemBufferBase, DiscardingReadsReleaseWholeBlocksOnly) {
    // Appended byte by byte: blocks of 4096. Written at once: one block.
    struct Case {
        const char* name;
        bool oneWrite;
        long readUpTo;  // the last byte read
        bool firstBlockGone;
    };
    const Case cases[] = {
        {"appends, before the edge", false, 4094, false},
        {"appends, last byte of the block", false, 4095, true},
        {"appends, past the edge", false, 4096, true},
        {"one write, inside", false, 2000, false},
        {"one write, last byte", true, 9999, false},  // its one block stays
    };
    const std::string data = patternBytes(10000);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        MemBufferBase buffer;
        if (c.oneWrite) {
            buffer.write(0, data.data(), 10000);
        } else {
            for (char ch : data) buffer.append(ch);
        }
        buffer.discardUsedBuffer();
        ASSERT_EQ(buffer.read(c.readUpTo), static_cast<unsigned char>(data[c.readUpTo]));
        EXPECT_EQ(released(buffer, 0), c.firstBlockGone);
        EXPECT_EQ(buffer.getSize(), 10000);  // positions keep their values
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
    EXPECT_TRUE(released(buffer, 0));
    EXPECT_TRUE(released(buffer, 40959));
    EXPECT_EQ(buffer.read(49999), static_cast<unsigned char>(data[49999]));  // the last block stays
    char c = 'x';
    EXPECT_THROW(buffer.write(100, &c, 1), IOException);
    EXPECT_THROW(buffer.insert(100, &c, 1), IOException);
    EXPECT_THROW(buffer.cut(100, 1), IOException);

    // Appending continues behind the consumed part.
    buffer.append("tail", 4);
    EXPECT_EQ(buffer.getSize(), 50004);
    char tail[4];
    EXPECT_EQ(buffer.read(50000, tail, 4), 4);
    EXPECT_EQ(std::string(tail, 4), "tail");

    // Truncating into the released range empties the buffer at that size.
    buffer.truncate(10);
    EXPECT_EQ(buffer.getSize(), 10);
    EXPECT_TRUE(released(buffer, 9));
    buffer.append("new", 3);
    EXPECT_EQ(buffer.read(10, tail, 4), 3);
    EXPECT_EQ(std::string(tail, 3), "new");

    // Cutting everything left keeps later appends at the right position.
    EXPECT_EQ(buffer.cut(10, 3), 3);
    buffer.write(12, "z", 1);
    EXPECT_EQ(buffer.getSize(), 13);
    EXPECT_EQ(buffer.read(10), 0);
    EXPECT_EQ(buffer.read(12), 'z');
}

TEST(MemBufferBase, InsertAtABlockStartAddsAnExactBlockInFront) {
    MemBufferBase buffer;
    const std::string data = patternBytes(5000);
    buffer.append(data.data(), 5000);
    EXPECT_EQ(buffer.insert(0, "ab", 2), 2);
    EXPECT_EQ(buffer.getSize(), 5002);
    buffer.discardUsedBuffer();
    EXPECT_EQ(buffer.read(1), 'b');  // the end of the two-byte block
    EXPECT_TRUE(released(buffer, 0));
    std::string rest(5000, '\0');
    EXPECT_EQ(buffer.read(2, &rest[0], 5000), 5000);
    EXPECT_EQ(rest, data);
}

TEST(MemBufferBase, InsertPastTheEndIsAWrite) {
    MemBufferBase buffer;
    buffer.append("abc", 3);
    // Intended: unlike the contiguous store, the gap is zero-filled and the
    // bytes land at pos.
    EXPECT_EQ(buffer.insert(13, "xyz", 3), 3);
    EXPECT_EQ(buffer.getSize(), 16);
    char out[16];
    ASSERT_EQ(buffer.read(0, out, 16), 16);
    EXPECT_EQ(std::string(out, 16), std::string("abc") + std::string(10, '\0') + "xyz");
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
    EXPECT_EQ(buffer.append("ok", 2), 2);  // not left locked
}
