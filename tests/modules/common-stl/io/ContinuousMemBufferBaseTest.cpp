#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "io/ContinuousMemBufferBase.h"
#include "support/TestStreams.h"

using namespace QRN_SPACE;

TEST(ContinuousMemBufferBase, ConstructionAndTheBrokenState) {
    const long capacities[] = {0, -5, 1, 100000, LONG_MAX};  // LONG_MAX + headroom cannot exist
    for (long capacity : capacities) {
        ContinuousMemBufferBase buffer(capacity);
        EXPECT_EQ(buffer.isValid(), capacity != LONG_MAX) << capacity;
        EXPECT_EQ(buffer.getMemAddress() != nullptr, capacity > 0 && capacity != LONG_MAX) << capacity;
        EXPECT_EQ(buffer.getType(), 4);
    }
    ContinuousMemBufferBase broken(LONG_MAX);
    try {
        broken.read(-1);  // validity is checked first
        ADD_FAILURE() << "no exception";
    } catch (IOException& e) {
        EXPECT_EQ(e.getMessage() + " @ " + e.getErrorLocation(),
                  "Broken BufferBase @ modules/common-stl/include/io/BufferBase, line96");
    }
    EXPECT_THROW(broken.append('x'), IOException);
}

TEST(ContinuousMemBufferBase, GrowsBy4096BytesOfHeadroom) {
    struct Case {
        long capacity;
        int appends;
        int moves;  // reallocations, seen as a new address
    };
    const Case cases[] = {
        {0, 4097, 1}, {0, 4098, 2}, {0, 8194, 2}, {0, 8195, 3},  // need + 4096 each time
        {4096, 8191, 0}, {4096, 8192, 0}, {4096, 8193, 1},
    };
    for (const Case& c : cases) {
        ContinuousMemBufferBase buffer(c.capacity);
        int moves = 0;
        for (int i = 0; i < c.appends; ++i) {
            char* before = buffer.getMemAddress();
            buffer.append(static_cast<char>(i));
            // The old block lives until the copy is made, so a move always
            // shows as a new address.
            moves += buffer.getMemAddress() != before;
        }
        EXPECT_EQ(moves, c.moves) << c.capacity << " / " << c.appends;
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

    // However far pos lies, the fill stays inside the block, and stale bytes
    // never show inside the grown size.
    ContinuousMemBufferBase stale(0);
    stale.append("ZZZZZZZZ", 8);
    stale.truncate(2);
    stale.insert(4, "pqrs", 4);
    stale.insert(100000, "yz", 2);
    EXPECT_EQ(std::string(stale.getMemAddress(), 8), std::string("ZZ\0\0pq\0\0", 8));
    EXPECT_EQ(std::string(stale.getMemAddress() + 100000, 2), "yz");
}

TEST(ContinuousMemBufferBase, SourcesInsideTheBufferSurviveGrowthAndShifts) {
    const std::string data = tuskel_test::patternBytes(3000);
    ContinuousMemBufferBase buffer(0);
    buffer.append(data.data(), 3000);
    buffer.append(buffer.getMemAddress(), 3000);
    buffer.write(9000, buffer.getMemAddress(), 3000);           // grows: reads the old block
    buffer.insert(0, buffer.getMemAddress() + 1000, 4000);      // no growth: reads across the shift
    const std::string tail = data + data + std::string(3000, '\0') + data;
    const std::string expected = tail.substr(1000, 4000) + tail;
    ASSERT_EQ(buffer.getSize(), static_cast<long>(expected.size()));
    EXPECT_EQ(std::string(buffer.getMemAddress(), expected.size()), expected);
}
