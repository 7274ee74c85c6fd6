// Both in-memory buffers against a std::string model under seeded random
// operation sequences, read back in awkward piece sizes.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <functional>
#include <memory>
#include <random>
#include <string>

#include "io/ContinuousMemBufferBase.h"
#include "io/MemBufferBase.h"
#include "support/TestStreams.h"

using namespace QRN_SPACE;
using tuskel_test::patternBytes;

namespace {

struct Store {
    const char* name;
    std::function<BufferBase*()> make;
    bool insertPastEndWrites;  // else the contiguous store's own shape
};

const Store kStores[] = {
    {"paged", [] { return new MemBufferBase(); }, true},
    {"paged 100", [] { return new MemBufferBase(100); }, true},
    {"paged 5000", [] { return new MemBufferBase(5000); }, true},
    {"contiguous", [] { return new ContinuousMemBufferBase(0); }, false},
    {"contiguous 3000", [] { return new ContinuousMemBufferBase(3000); }, false},
};

void modelWrite(std::string& m, size_t pos, const std::string& bytes) {
    if (pos + bytes.size() > m.size()) m.resize(pos + bytes.size(), '\0');
    m.replace(pos, bytes.size(), bytes);
}

void modelInsert(std::string& m, size_t pos, const std::string& bytes, bool pastEndWrites) {
    if (pos < m.size()) {
        m.insert(pos, bytes);
    } else if (pastEndWrites) {
        modelWrite(m, pos, bytes);
    } else {
        // The size grows by the count only; from pos on the grown part holds
        // the head of the bytes, before pos zeros.
        m.resize(m.size() + bytes.size(), '\0');
        for (size_t k = pos; k < m.size(); ++k) m[k] = bytes[k - pos];
    }
}

std::string readAll(BufferBase& buffer, std::initializer_list<int> pieces) {
    std::string out;
    for (auto it = pieces.begin();; ++it) {
        if (it == pieces.end()) it = pieces.begin();
        std::string piece(static_cast<size_t>(*it), '\x55');
        int n = buffer.read(static_cast<long>(out.size()), &piece[0], *it);
        if (n == 0) return out;
        out.append(piece, 0, static_cast<size_t>(n));
    }
}

}  // namespace

TEST(MemoryBufferModel, RandomOperationsMatchTheModel) {
    const int kLens[] = {1, 2, 7, 4095, 4096, 4097, 10000};
    for (const Store& store : kStores) {
        for (unsigned seed = 1; seed <= 12; ++seed) {
            SCOPED_TRACE(std::string(store.name) + " seed " + std::to_string(seed));
            std::mt19937 rng(seed);
            std::unique_ptr<BufferBase> buffer(store.make());
            std::string m;
            for (int step = 0; step < 250; ++step) {
                const long size = static_cast<long>(m.size());
                // Inside, at and past the end, and at block edges.
                const long picks[] = {long(rng() % (size + 1)), std::max(0L, size - long(rng() % 3)),
                                      size + long(rng() % 6000),
                                      4096L * long(1 + rng() % 3) + long(rng() % 3) - 1};
                const long pos = picks[rng() % 4];
                const int len = (rng() % 2) ? kLens[rng() % 7] : static_cast<int>(1 + rng() % 300);
                const std::string bytes = patternBytes(static_cast<size_t>(len), rng());
                const size_t at = static_cast<size_t>(pos);
                const size_t have = at < m.size() ? std::min(m.size() - at, size_t(len)) : 0;
                switch (rng() % 11) {
                    case 0: ASSERT_EQ(buffer->read(pos), have ? static_cast<unsigned char>(m[at]) : -1); break;
                    case 1: {
                        std::string got(static_cast<size_t>(len), '\x55');
                        got.resize(static_cast<size_t>(buffer->read(pos, &got[0], len)));
                        ASSERT_EQ(got, m.substr(std::min(at, m.size()), have));
                        break;
                    }
                    case 2: buffer->write(pos, bytes[0]); modelWrite(m, at, bytes.substr(0, 1)); break;
                    case 3: ASSERT_EQ(buffer->write(pos, bytes.data(), len), len); modelWrite(m, at, bytes); break;
                    case 4:
                        buffer->insert(pos, bytes[0]);
                        modelInsert(m, at, bytes.substr(0, 1), store.insertPastEndWrites);
                        break;
                    case 5:
                        ASSERT_EQ(buffer->insert(pos, bytes.data(), len), len);
                        modelInsert(m, at, bytes, store.insertPastEndWrites);
                        break;
                    case 6: buffer->cut(pos); m.erase(std::min(at, m.size()), 1); break;
                    case 7:
                        ASSERT_EQ(buffer->cut(pos, len), static_cast<int>(have));
                        m.erase(std::min(at, m.size()), have);
                        break;
                    case 8: buffer->append(bytes[0]); m += bytes[0]; break;
                    case 9: ASSERT_EQ(buffer->append(bytes.data(), len), len); m += bytes; break;
                    default: buffer->truncate(pos); m.resize(std::min(at, m.size())); break;
                }
                ASSERT_EQ(buffer->getSize(), static_cast<long>(m.size())) << "step " << step;
                if (step % 25 == 0) {
                    ASSERT_EQ(readAll(*buffer, {1, 7, 4097, 33791}), m);
                }
            }
        }
    }
}

TEST(MemoryBufferModel, EdgesOfTheContract) {
    for (const Store& store : kStores) {
        SCOPED_TRACE(store.name);
        std::unique_ptr<BufferBase> buffer(store.make());
        const std::string ten = patternBytes(10);
        char buf[10];
        EXPECT_EQ(buffer->read(0, buf, 10), 0);
        buffer->append(ten.data(), 10);
        EXPECT_EQ(buffer->read(10), -1);
        EXPECT_EQ(buffer->read(10, buf, 10), 0);
        // Null buffers and lengths below 1 change nothing.
        EXPECT_EQ(buffer->read(0, nullptr, 5) + buffer->write(0, nullptr, 5) + buffer->write(0, buf, -1) +
                      buffer->insert(0, nullptr, 5) + buffer->append(buf, 0) + buffer->cut(0, 0),
                  0);
        buffer->truncate(15);  // never grows
        EXPECT_EQ(buffer->cut(1, 100), 9);
        buffer->write(10, 'x');  // zero gap
        EXPECT_EQ(readAll(*buffer, {3}), ten.substr(0, 1) + std::string(9, '\0') + "x");
        try {
            buffer->read(-1, buf, 1);
            ADD_FAILURE() << "no exception";
        } catch (IOException& e) {
            EXPECT_EQ(e.getMessage() + " @ " + e.getErrorLocation(),
                      "Index out of bound @ modules/common-stl/include/io/BufferBase, line102");
        }
        EXPECT_THROW(buffer->truncate(LONG_MIN), IOException);

        // Sizes past LONG_MAX are refused, the lock is released and nothing
        // changed.
        EXPECT_THROW(buffer->write(LONG_MAX - 1, "xyz", 3), Exception);
        EXPECT_THROW(buffer->insert(LONG_MAX, "xyz", 3), Exception);
        EXPECT_EQ(buffer->append("d", 1), 1);
        EXPECT_EQ(buffer->getSize(), 12);
        EXPECT_EQ(buffer->cut(0, INT_MAX), 12);
    }
}
