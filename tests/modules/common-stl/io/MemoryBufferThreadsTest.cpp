#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "io/ContinuousMemBufferBase.h"
#include "io/MemBufferBase.h"
#include "support/TestStreams.h"

using namespace QRN_SPACE;

namespace {

const int kRecord = 16;

// writer id, sequence number (4 bytes), then 11 bytes derived from both, so
// a torn or interleaved record shows.
std::string record(int writer, int seq) {
    std::string r(kRecord, '\0');
    r[0] = static_cast<char>(writer);
    for (int k = 0; k < 4; ++k) r[1 + k] = static_cast<char>(seq >> (8 * k));
    for (int k = 5; k < kRecord; ++k) r[k] = static_cast<char>(writer * 31 + seq * 7 + k);
    return r;
}

bool wellFormed(const char* r, int* writer, int* seq) {
    *writer = static_cast<unsigned char>(r[0]);
    *seq = 0;
    for (int k = 0; k < 4; ++k) *seq |= static_cast<unsigned char>(r[1 + k]) << (8 * k);
    return std::string(r, kRecord) == record(*writer, *seq);
}

struct Store {
    const char* name;
    std::function<std::unique_ptr<BufferBase>()> make;
};

const Store kStores[] = {
    {"paged", [] { return std::unique_ptr<BufferBase>(new MemBufferBase()); }},
    {"contiguous", [] { return std::unique_ptr<BufferBase>(new ContinuousMemBufferBase(0)); }},
};

}  // namespace

TEST(MemoryBufferThreads, ConcurrentAppendsStayWholeWhileReadersLook) {
    const int kWriters = 3;
    const int kEach = 1500;
    for (const Store& store : kStores) {
        SCOPED_TRACE(store.name);
        std::unique_ptr<BufferBase> buffer = store.make();
        std::atomic<int> writersDone{0};
        std::atomic<int> torn{0};
        std::atomic<int> started{0};  // everybody starts together
        auto startTogether = [&] {
            ++started;
            while (started.load() < kWriters + 2) std::this_thread::yield();
        };
        std::vector<std::thread> threads;
        for (int w = 0; w < kWriters; ++w) {
            threads.emplace_back([&, w] {
                startTogether();
                for (int i = 0; i < kEach; ++i) {
                    std::string r = record(w, i);
                    buffer->append(r.data(), kRecord);  // one atomic operation
                }
                ++writersDone;
            });
        }
        for (int r = 0; r < 2; ++r) {
            threads.emplace_back([&, r] {
                char rec[kRecord];
                unsigned probe = static_cast<unsigned>(r) * 7919u;
                startTogether();
                while (writersDone.load() < kWriters) {
                    long records = buffer->getSize() / kRecord;
                    if (records == 0) continue;
                    probe = probe * 1103515245u + 12345u;
                    long at = static_cast<long>(probe % static_cast<unsigned>(records)) * kRecord;
                    int writer = 0;
                    int seq = 0;
                    if (buffer->read(at, rec, kRecord) != kRecord || !wellFormed(rec, &writer, &seq)) ++torn;
                }
            });
        }
        for (std::thread& t : threads) t.join();
        EXPECT_EQ(torn.load(), 0);
        ASSERT_EQ(buffer->getSize(), static_cast<long>(kWriters) * kEach * kRecord);
        // Every record once, and each writer's records in its own order.
        std::vector<int> next(kWriters, 0);
        char rec[kRecord];
        for (long at = 0; at < buffer->getSize(); at += kRecord) {
            ASSERT_EQ(buffer->read(at, rec, kRecord), kRecord);
            int writer = 0;
            int seq = 0;
            ASSERT_TRUE(wellFormed(rec, &writer, &seq)) << at;
            ASSERT_LT(writer, kWriters);
            EXPECT_EQ(seq, next[writer]++);
        }
    }
}

TEST(MemoryBufferThreads, OneConsumerDrainsADiscardedBufferWhileAProducerFills) {
    const std::string data = tuskel_test::patternBytes(300000);
    MemBufferBase buffer;
    buffer.discardUsedBuffer();
    std::thread producer([&] {
        for (size_t at = 0; at < data.size(); at += 1000) buffer.append(data.data() + at, 1000);
    });
    std::string got;
    char piece[4099];
    while (got.size() < data.size()) {
        int n = buffer.read(static_cast<long>(got.size()), piece, sizeof piece);
        if (n == 0) {
            std::this_thread::yield();
            continue;
        }
        got.append(piece, static_cast<size_t>(n));
    }
    producer.join();
    EXPECT_EQ(got, data);
    EXPECT_THROW(buffer.read(0), IOException);  // consumed blocks are gone
}
