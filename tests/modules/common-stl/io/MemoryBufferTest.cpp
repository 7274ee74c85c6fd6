// Both in-memory buffers against a std::string model under seeded random
// operations read back in awkward piece sizes, then what each does alone.
#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <memory>
#include <random>

#include "io/ContinuousMemBufferBase.h"
#include "io/MemBufferBase.h"
#include "support/TestStreams.h"
#include "support/Thrown.h"

using namespace QRN_SPACE;
using tuskel_test::patternBytes;
using tuskel_test::thrown;

namespace {

const std::string kOutOfBound = "Index out of bound @ modules/common-stl/include/io/BufferBase, line102";

void modelWrite(std::string& m, size_t pos, const std::string& bytes) {
    m.resize(std::max(m.size(), pos + bytes.size()), '\0');
    m.replace(pos, bytes.size(), bytes);
}

// At or past the end the paged store writes (zero gap, bytes at pos) while
// the contiguous one grows by the count only and holds, from pos on, the
// head of the bytes (intended).
void modelInsert(std::string& m, size_t pos, const std::string& bytes, bool paged) {
    if (pos < m.size()) return void(m.insert(pos, bytes));
    m.resize((paged ? pos : m.size()) + bytes.size(), '\0');
    if (pos < m.size()) m.replace(pos, std::string::npos, bytes, 0, m.size() - pos);
}

// Everything from 0, in pieces of 1, 7, 4097 and 33,791 bytes in turn.
std::string readAll(BufferBase& buffer) {
    const int pieces[] = {1, 7, 4097, 33791};
    std::string out, piece(33791, '\x55');
    for (int i = 0, n; (n = buffer.read(long(out.size()), &piece[0], pieces[i % 4])) > 0; ++i) {
        out.append(piece, 0, size_t(n));
    }
    return out;
}

}  // namespace

TEST(MemoryBufferModel, RandomOperationsMatchTheModel) {
    const int kLens[] = {1, 2, 7, 4095, 4096, 4097, 10000};
    // Paged, -1 standing for no first block, and contiguous stores.
    for (auto [capacity, paged] : {std::pair{-1L, true}, {100L, true}, {5000L, true}, {0L, false}, {3000L, false}}) {
        auto make = [capacity = capacity, paged = paged]() -> std::unique_ptr<BufferBase> {
            if (!paged) return std::make_unique<ContinuousMemBufferBase>(capacity);
            return capacity < 0 ? std::make_unique<MemBufferBase>() : std::make_unique<MemBufferBase>(capacity);
        };
        // The edges of the contract: no-ops, the position check, and sizes
        // past LONG_MAX refused without a change.
        auto edges = make();
        char buf[4] = {};
        EXPECT_EQ((std::vector<int>{edges->read(0, buf, 4), edges->write(0, nullptr, 4), edges->write(0, buf, -1),
                                    edges->insert(0, nullptr, 4), edges->append("abc", 3), edges->cut(0, 0)}),
                  (std::vector<int>{0, 0, 0, 0, 3, 0}));
        EXPECT_EQ(thrown<IOException>([&] { edges->read(-1, buf, 1); }), kOutOfBound);
        EXPECT_THROW(edges->write(LONG_MAX - 1, "xyz", 3), Exception);
        EXPECT_THROW(edges->insert(LONG_MAX, "xyz", 3), Exception);
        EXPECT_EQ(readAll(*edges), "abc");

        for (unsigned seed = 1; seed <= 12; ++seed) {
            SCOPED_TRACE("capacity " + std::to_string(capacity) + " seed " + std::to_string(seed));
            std::mt19937 rng(seed);
            auto buffer = make();
            std::string m;
            for (int step = 0; step < 250; ++step) {
                // Inside, at and past the end, and at block edges.
                const long size = long(m.size());
                const long picks[] = {long(rng() % (size + 1)), std::max(0L, size - long(rng() % 3)),
                                      size + long(rng() % 6000), long(4096 * (1 + rng() % 3) + rng() % 3) - 1};
                const long pos = picks[rng() % 4];
                const int len = (rng() % 2) ? kLens[rng() % 7] : int(1 + rng() % 300);
                const std::string bytes = patternBytes(size_t(len), rng()), byte = bytes.substr(0, 1);
                const size_t at = size_t(pos), have = at < m.size() ? std::min(m.size() - at, size_t(len)) : 0;
                std::string got(size_t(len), '\x55');
                switch (rng() % 11) {
                    case 0: ASSERT_EQ(buffer->read(pos), have ? static_cast<unsigned char>(m[at]) : -1); break;
                    case 1: got.resize(size_t(buffer->read(pos, &got[0], len))); break;
                    case 2: buffer->write(pos, byte[0]); modelWrite(m, at, byte); break;
                    case 3: ASSERT_EQ(buffer->write(pos, bytes.data(), len), len); modelWrite(m, at, bytes); break;
                    case 4: buffer->insert(pos, byte[0]); modelInsert(m, at, byte, paged); break;
                    case 5:
                        ASSERT_EQ(buffer->insert(pos, bytes.data(), len), len);
                        modelInsert(m, at, bytes, paged);
                        break;
                    case 6: buffer->cut(pos); m.erase(std::min(at, m.size()), 1); break;
                    case 7: ASSERT_EQ(buffer->cut(pos, len), int(have)); m.erase(std::min(at, m.size()), have); break;
                    case 8: buffer->append(byte[0]); m += byte; break;
                    case 9: ASSERT_EQ(buffer->append(bytes.data(), len), len); m += bytes; break;
                    default: buffer->truncate(pos); m.resize(std::min(at, m.size())); break;  // never grows
                }
                ASSERT_EQ(buffer->getSize(), long(m.size())) << "step " << step;
                ASSERT_TRUE(got.size() == size_t(len) || got == m.substr(std::min(at, m.size()), have));
                ASSERT_TRUE(step % 25 != 0 || readAll(*buffer) == m);
            }
        }
    }
}

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
