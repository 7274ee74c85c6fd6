// What each in-memory buffer does alone; the rules all stores share are
// checked against a model in BufferStoresTest.
#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "io/ContinuousMemBufferBase.h"
#include "io/MemBufferBase.h"
#include "support/BufferScript.h"
#include "support/TestStreams.h"
#include "support/Thrown.h"

using namespace QRN_SPACE;
using tuskel_test::patternBytes;
using tuskel_test::readAll;
using tuskel_test::thrown;

namespace {

const std::string kOutOfBound = "Index out of bound @ modules/common-stl/include/io/BufferBase, line102";

}  // namespace

TEST(ContinuousMemBufferBase, GrowsBy4096BytesOfHeadroomOrBreaks) {
    ContinuousMemBufferBase broken(LONG_MAX);  // LONG_MAX + headroom cannot exist
    EXPECT_EQ(thrown<IOException>([&] { broken.read(-1); }),  // validity is checked first
              "Broken BufferBase @ modules/common-stl/include/io/BufferBase, line96");
    // Reallocations by appends one byte at a time; the old block lives until
    // the copy is made, so each shows as a new address.
    for (auto [capacity, appends, moves] : {std::tuple{0L, 4097, 1}, {0L, 4098, 2}, {0L, 8195, 3}, {4096L, 8193, 1}}) {
        ContinuousMemBufferBase buffer(capacity);
        for (int i = 0; i < appends; ++i) {
            char* before = buffer.getMemAddress();
            buffer.append(static_cast<char>(i));
            moves -= buffer.getMemAddress() != before;
        }
        EXPECT_EQ(moves, 0) << capacity << " / " << appends;
    }
    // A write whose source is the buffer's own block, through a growth: the
    // bytes are copied before the old block goes.
    ContinuousMemBufferBase self(0);
    const std::string head = patternBytes(5000, 3);
    self.append(head.data(), 5000);
    ASSERT_EQ(self.write(5000, self.getMemAddress(), 5000), 5000);
    EXPECT_EQ(std::string(self.getMemAddress() + 5000, 5000), head);
}

// A discarding read releases the blocks before the one holding the end of
// what it read; a released position throws, which shows the block edges.
TEST(MemBufferBase, DiscardingReadsReleaseWholeBlocksAndGrowthFailureReportsTheSystemError) {
    const std::string data = patternBytes(50000);
    for (auto [writeSize, lastRead, released] :
         {std::tuple{1, 4094L, false}, {1, 4095L, true}, {1, 4096L, true}, {50000, 49999L, false}}) {
        MemBufferBase buffer;
        for (size_t at = 0; at < data.size(); at += writeSize) buffer.append(data.data() + at, writeSize);
        buffer.discardUsedBuffer();
        ASSERT_EQ(buffer.read(lastRead), static_cast<unsigned char>(data[lastRead]));
        EXPECT_EQ(thrown<IOException>([&] { buffer.read(0); }) == kOutOfBound, released) << lastRead;
    }
    MemBufferBase buffer;
    for (size_t at = 0; at < data.size(); at += 1000) buffer.append(data.data() + at, 1000);
    buffer.discardUsedBuffer();
    EXPECT_EQ(readAll(buffer), data);  // one forward reader sees everything
    EXPECT_EQ(thrown<IOException>([&] { buffer.write(LONG_MAX - 1, "xyz", 3); }),
              std::string(std::strerror(ENOMEM)) + " @ io/BufferBase, line447");
}

// A block holds zeros past what it uses, even where the allocator has just
// handed back bytes of its own.
TEST(MemBufferBase, NewBlocksStartAsZeros) {
    for (int capacity : {100, 4096, 10000}) {
        void* junk = std::malloc(size_t(capacity));
        std::memset(junk, 0xA5, size_t(capacity));
        asm volatile("" : : "r"(junk) : "memory");  // the fill must happen
        std::free(junk);
        MemBufferBase::Buffer block(0, capacity, true);
        EXPECT_EQ(std::string(block.data, size_t(capacity)), std::string(size_t(capacity), '\0')) << capacity;
    }
}
