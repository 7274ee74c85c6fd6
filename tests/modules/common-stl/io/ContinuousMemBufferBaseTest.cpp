#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "io/ContinuousMemBufferBase.h"
#include "support/TestStreams.h"

using namespace QRN_SPACE;
using tuskel_test::patternBytes;

namespace {

// How often the block moved while appending `count` single bytes.
int moves(ContinuousMemBufferBase& buffer, int count) {
    int moved = 0;
    char* last = buffer.getMemAddress();
    for (int i = 0; i < count; ++i) {
        buffer.append(static_cast<char>(i));
        // The old block is alive until the new one holds the copy, so a
        // reallocation always shows as a new address.
        if (buffer.getMemAddress() != last) ++moved;
        last = buffer.getMemAddress();
    }
    return moved;
}

}  // namespace

TEST(ContinuousMemBufferBase, Construction) {
    struct Case {
        long capacity;
        bool valid;
        bool allocated;
    };
    const Case cases[] = {
        {0, true, false}, {-5, true, false}, {1, true, true}, {100000, true, true},
        {LONG_MAX, false, false},  // capacity plus headroom is past LONG_MAX
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.capacity);
        ContinuousMemBufferBase buffer(c.capacity);
        EXPECT_EQ(buffer.isValid(), c.valid);
        EXPECT_EQ(buffer.getMemAddress() != nullptr, c.allocated);
        EXPECT_EQ(buffer.getSize(), 0);
        EXPECT_EQ(buffer.getType(), 4);
        EXPECT_EQ(buffer.getFileDescriptor(), -1);
    }
    ContinuousMemBufferBase broken(LONG_MAX);
    try {
        broken.append('x');
        ADD_FAILURE() << "no exception";
    } catch (IOException& e) {
        EXPECT_EQ(e.getMessage(), "Broken BufferBase");
        EXPECT_EQ(e.getErrorLocation(), "modules/common-stl/include/io/BufferBase, line96");
    }
    EXPECT_THROW(broken.read(-1), IOException);  // validity is checked first
    EXPECT_THROW(broken.truncate(0), IOException);
}

TEST(ContinuousMemBufferBase, GrowsBy4096BytesOfHeadroom) {
    struct Case {
        long capacity;
        int appends;
        int moves;
    };
    const Case cases[] = {
        // From nothing: capacity 4097 after the first byte, then need + 4096.
        {0, 1, 1},     {0, 4097, 1},  {0, 4098, 2},
        {0, 8194, 2},  {0, 8195, 3},
        // Sized up front: room for capacity + 4096 bytes.
        {4096, 8191, 0}, {4096, 8192, 0}, {4096, 8193, 1},
        {65536, 65536, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(c.capacity) + " / " + std::to_string(c.appends));
        ContinuousMemBufferBase buffer(c.capacity);
        EXPECT_EQ(moves(buffer, c.appends), c.moves);
        ASSERT_EQ(buffer.getSize(), c.appends);
        const char* mem = buffer.getMemAddress();
        for (int i = 0; i < c.appends; ++i) ASSERT_EQ(mem[i], static_cast<char>(i)) << i;
    }
}

TEST(ContinuousMemBufferBase, InsertPastTheEndLandsOutsideTheContent) {
    ContinuousMemBufferBase buffer(0);
    buffer.append("abc", 3);
    buffer.insert(5, 'x');
    // Intended: the size grows by one and the byte lands at 5, outside it.
    EXPECT_EQ(buffer.getSize(), 4);
    EXPECT_EQ(buffer.read(3), 0);
    EXPECT_EQ(buffer.read(5), -1);
    EXPECT_EQ(buffer.getMemAddress()[5], 'x');

    // The zero fill from pos is bounded by the block, however far pos is.
    ContinuousMemBufferBase far(0);
    EXPECT_EQ(far.insert(100000, "yz", 2), 2);
    EXPECT_EQ(far.getSize(), 2);
    EXPECT_EQ(far.read(0), 0);
    EXPECT_EQ(far.read(1), 0);
    EXPECT_EQ(std::string(far.getMemAddress() + 100000, 2), "yz");

    // Stale bytes past the end never reappear inside the grown size.
    ContinuousMemBufferBase stale(0);
    stale.append("ZZZZZZZZ", 8);
    stale.truncate(2);
    stale.insert(4, "pqrs", 4);
    EXPECT_EQ(stale.getSize(), 6);
    char out[6];
    ASSERT_EQ(stale.read(0, out, 6), 6);
    EXPECT_EQ(std::string(out, 6), std::string("ZZ\0\0pq", 6));
}

TEST(ContinuousMemBufferBase, SourcesInsideTheBufferSurviveGrowth) {
    const std::string data = patternBytes(3000);
    ContinuousMemBufferBase buffer(0);
    buffer.append(data.data(), 3000);
    // Each call grows the block while reading from the old one.
    EXPECT_EQ(buffer.append(buffer.getMemAddress(), 3000), 3000);
    EXPECT_EQ(buffer.write(9000, buffer.getMemAddress(), 3000), 3000);
    EXPECT_EQ(buffer.insert(0, buffer.getMemAddress() + 1000, 4000), 4000);
    const std::string expectedTail = data + data + std::string(3000, '\0') + data;
    const std::string expected = expectedTail.substr(1000, 4000) + expectedTail;
    ASSERT_EQ(buffer.getSize(), static_cast<long>(expected.size()));
    EXPECT_EQ(std::string(buffer.getMemAddress(), expected.size()), expected);
}
