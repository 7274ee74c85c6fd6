// Both in-memory buffers against a std::string model, under seeded random
// operation sequences and awkward read sizes.
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

// The contract, plus each store's own insert beyond the end.
class Model {
public:
    explicit Model(bool insertPastEndWrites) : _insertPastEndWrites(insertPastEndWrites) {}

    long size() const { return static_cast<long>(data.size()); }

    int read(long pos) const { return pos < size() ? static_cast<unsigned char>(data[pos]) : -1; }

    std::string read(long pos, int len) const {
        return pos < size() ? data.substr(static_cast<size_t>(pos), static_cast<size_t>(len)) : "";
    }

    void write(long pos, const std::string& bytes) {
        size_t end = static_cast<size_t>(pos) + bytes.size();
        if (end > data.size()) data.resize(end, '\0');
        data.replace(static_cast<size_t>(pos), bytes.size(), bytes);
    }

    void insert(long pos, const std::string& bytes) {
        if (pos < size()) {
            data.insert(static_cast<size_t>(pos), bytes);
        } else if (_insertPastEndWrites) {
            write(pos, bytes);
        } else {
            // The size grows by the count only; what lands inside the new
            // size from `pos` on is the head of the bytes, the rest is zero.
            size_t old = data.size();
            data.resize(old + bytes.size(), '\0');
            for (size_t k = static_cast<size_t>(pos); k < data.size(); ++k) data[k] = bytes[k - pos];
        }
    }

    int cut(long pos, int len) {
        if (pos >= size()) return 0;
        size_t n = std::min<size_t>(static_cast<size_t>(len), data.size() - static_cast<size_t>(pos));
        data.erase(static_cast<size_t>(pos), n);
        return static_cast<int>(n);
    }

    void truncate(long newSize) {
        if (newSize < size()) data.resize(static_cast<size_t>(newSize));
    }

    std::string data;

private:
    bool _insertPastEndWrites;
};

struct Store {
    const char* name;
    std::function<std::unique_ptr<BufferBase>()> make;
    bool insertPastEndWrites;
};

const Store kStores[] = {
    {"paged", [] { return std::unique_ptr<BufferBase>(new MemBufferBase()); }, true},
    {"paged 100", [] { return std::unique_ptr<BufferBase>(new MemBufferBase(100)); }, true},
    {"paged 5000", [] { return std::unique_ptr<BufferBase>(new MemBufferBase(5000)); }, true},
    {"contiguous", [] { return std::unique_ptr<BufferBase>(new ContinuousMemBufferBase(0)); }, false},
    {"contiguous 3000", [] { return std::unique_ptr<BufferBase>(new ContinuousMemBufferBase(3000)); },
     false},
};

// Reads the whole buffer in pieces of the given sizes, in turn.
std::string readAll(BufferBase& buffer, std::initializer_list<int> pieces) {
    std::string out;
    std::string piece;
    for (auto it = pieces.begin();; ++it) {
        if (it == pieces.end()) it = pieces.begin();
        piece.assign(static_cast<size_t>(*it), '\x55');
        int n = buffer.read(static_cast<long>(out.size()), &piece[0], *it);
        if (n == 0) return out;
        out.append(piece, 0, static_cast<size_t>(n));
    }
}

// Positions near and past the end, and block edges.
long pickPos(std::mt19937& rng, long size) {
    switch (rng() % 4) {
        case 0: return static_cast<long>(rng() % static_cast<unsigned>(size + 1));
        case 1: return std::max(0L, size - static_cast<long>(rng() % 3));
        case 2: return size + static_cast<long>(rng() % 6000);
        default: return 4096L * static_cast<long>(1 + rng() % 3) + static_cast<long>(rng() % 3) - 1;
    }
}

int pickLen(std::mt19937& rng) {
    static const int kLens[] = {1, 2, 7, 4095, 4096, 4097, 10000};
    return (rng() % 2) ? kLens[rng() % 7] : static_cast<int>(1 + rng() % 300);
}

}  // namespace

TEST(MemoryBufferModel, RandomOperationsMatchTheModel) {
    for (const Store& store : kStores) {
        for (unsigned seed = 1; seed <= 12; ++seed) {
            SCOPED_TRACE(std::string(store.name) + " seed " + std::to_string(seed));
            std::mt19937 rng(seed);
            std::unique_ptr<BufferBase> buffer = store.make();
            Model model(store.insertPastEndWrites);
            for (int step = 0; step < 250; ++step) {
                const long pos = pickPos(rng, model.size());
                const int len = pickLen(rng);
                const std::string bytes = patternBytes(static_cast<size_t>(len), rng());
                const int op = static_cast<int>(rng() % 11);
                switch (op) {
                    case 0: ASSERT_EQ(buffer->read(pos), model.read(pos)) << pos; break;
                    case 1: {
                        std::string got(static_cast<size_t>(len), '\x55');
                        int n = buffer->read(pos, &got[0], len);
                        got.resize(static_cast<size_t>(std::max(n, 0)));
                        ASSERT_EQ(got, model.read(pos, len)) << pos << "+" << len;
                        break;
                    }
                    case 2: buffer->write(pos, bytes[0]); model.write(pos, bytes.substr(0, 1)); break;
                    case 3: ASSERT_EQ(buffer->write(pos, bytes.data(), len), len); model.write(pos, bytes); break;
                    case 4: buffer->insert(pos, bytes[0]); model.insert(pos, bytes.substr(0, 1)); break;
                    case 5: ASSERT_EQ(buffer->insert(pos, bytes.data(), len), len); model.insert(pos, bytes); break;
                    case 6: buffer->cut(pos); model.cut(pos, 1); break;
                    case 7: ASSERT_EQ(buffer->cut(pos, len), model.cut(pos, len)); break;
                    case 8: buffer->append(bytes[0]); model.data += bytes[0]; break;
                    case 9: ASSERT_EQ(buffer->append(bytes.data(), len), len); model.data += bytes; break;
                    default: buffer->truncate(pos); model.truncate(pos); break;
                }
                ASSERT_EQ(buffer->getSize(), model.size()) << "op " << op << " at " << pos << "+" << len;
                if (step % 25 == 0) {
                    ASSERT_EQ(readAll(*buffer, {1, 7, 4097, 33791}), model.data);
                }
            }
            ASSERT_EQ(readAll(*buffer, {4096}), model.data);
        }
    }
}

TEST(MemoryBufferModel, ContractAtTheEdges) {
    for (const Store& store : kStores) {
        SCOPED_TRACE(store.name);
        std::unique_ptr<BufferBase> buffer = store.make();
        char buf[10];
        EXPECT_EQ(buffer->read(0), -1);
        EXPECT_EQ(buffer->read(0, buf, 10), 0);
        const std::string ten = patternBytes(10);
        EXPECT_EQ(buffer->append(ten.data(), 10), 10);
        EXPECT_EQ(buffer->read(10), -1);
        EXPECT_EQ(buffer->read(10, buf, 10), 0);
        EXPECT_EQ(buffer->read(9), static_cast<unsigned char>(ten[9]));  // a high byte is not -1

        // Null buffers and lengths below 1 change nothing.
        EXPECT_EQ(buffer->read(0, nullptr, 5), 0);
        EXPECT_EQ(buffer->read(0, buf, 0), 0);
        EXPECT_EQ(buffer->write(0, nullptr, 5), 0);
        EXPECT_EQ(buffer->write(0, buf, -1), 0);
        EXPECT_EQ(buffer->insert(0, nullptr, 5), 0);
        EXPECT_EQ(buffer->append(nullptr, 5), 0);
        EXPECT_EQ(buffer->append(buf, 0), 0);
        EXPECT_EQ(buffer->cut(0, 0), 0);
        EXPECT_EQ(buffer->getSize(), 10);

        buffer->truncate(15);  // never grows
        EXPECT_EQ(buffer->getSize(), 10);
        EXPECT_EQ(buffer->cut(1, 100), 9);
        EXPECT_EQ(buffer->getSize(), 1);
        EXPECT_EQ(buffer->cut(1, 5), 0);
        buffer->cut(1);
        EXPECT_EQ(buffer->getSize(), 1);

        buffer->write(10, 'x');  // zero gap
        EXPECT_EQ(buffer->getSize(), 11);
        EXPECT_EQ(readAll(*buffer, {3}), ten.substr(0, 1) + std::string(9, '\0') + "x");

        for (long bad : {-1L, LONG_MIN}) {
            EXPECT_THROW(buffer->read(bad), IOException);
            EXPECT_THROW(buffer->write(bad, 'x'), IOException);
            EXPECT_THROW(buffer->insert(bad, 'x'), IOException);
            EXPECT_THROW(buffer->cut(bad, 1), IOException);
            EXPECT_THROW(buffer->truncate(bad), IOException);
        }
        try {
            buffer->read(-1, buf, 1);
            ADD_FAILURE() << "no exception";
        } catch (IOException& e) {
            EXPECT_EQ(e.getMessage(), "Index out of bound");
            EXPECT_EQ(e.getErrorLocation(), "modules/common-stl/include/io/BufferBase, line102");
        }
        EXPECT_EQ(buffer->getSize(), 11);
    }
}

TEST(MemoryBufferModel, SizesPastLongMaxAreRefusedAndTheBufferStaysUsable) {
    for (const Store& store : kStores) {
        SCOPED_TRACE(store.name);
        std::unique_ptr<BufferBase> buffer = store.make();
        buffer->append("abc", 3);
        EXPECT_THROW(buffer->write(LONG_MAX - 1, "xyz", 3), Exception);
        EXPECT_THROW(buffer->write(LONG_MAX, 'x'), Exception);
        EXPECT_THROW(buffer->insert(LONG_MAX, "xyz", 3), Exception);
        // The lock was released and nothing changed.
        EXPECT_EQ(buffer->getSize(), 3);
        EXPECT_EQ(buffer->append("d", 1), 1);
        EXPECT_EQ(readAll(*buffer, {2}), "abcd");
        EXPECT_EQ(buffer->cut(0, INT_MAX), 4);  // pos + len past the end, no overflow
        EXPECT_EQ(buffer->getSize(), 0);
    }
}
