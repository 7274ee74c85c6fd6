#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "io/ContinuousMemBufferBase.h"
#include "io/MemBufferBase.h"
#include "support/TestStreams.h"

using namespace QRN_SPACE;

namespace {

const int kRecord = 16;

// Writer id, sequence number, then bytes derived from both: a torn or
// interleaved record shows.
std::string record(int writer, int seq) {
    std::string r(kRecord, '\0');
    r[0] = static_cast<char>(writer);
    for (int k = 1; k < kRecord; ++k) {
        r[k] = static_cast<char>(k < 5 ? seq >> (8 * (k - 1)) : writer * 31 + seq * 7 + k);
    }
    return r;
}

int seqOf(const char* r) {
    int seq = 0;
    for (int k = 0; k < 4; ++k) seq |= static_cast<unsigned char>(r[1 + k]) << (8 * k);
    return seq;
}

}  // namespace

TEST(MemoryBufferThreads, ConcurrentAppendsStayWholeWhileReadersLook) {
    const int kWriters = 3;
    const int kEach = 1500;
    std::unique_ptr<BufferBase> stores[] = {std::unique_ptr<BufferBase>(new MemBufferBase()),
                                            std::unique_ptr<BufferBase>(new ContinuousMemBufferBase(0))};
    for (auto& buffer : stores) {
        std::atomic<int> started{0};
        std::atomic<int> writersDone{0};
        std::atomic<int> torn{0};
        auto startTogether = [&] {
            ++started;
            while (started < kWriters + 2) std::this_thread::yield();
        };
        std::vector<std::thread> threads;
        for (int w = 0; w < kWriters; ++w) {
            threads.emplace_back([&, w] {
                startTogether();
                for (int i = 0; i < kEach; ++i) buffer->append(record(w, i).data(), kRecord);
                ++writersDone;
            });
        }
        for (unsigned r = 1; r <= 2; ++r) {
            threads.emplace_back([&, r] {
                startTogether();
                char rec[kRecord];
                for (unsigned probe = r; writersDone < kWriters; probe = probe * 1103515245u + 12345u) {
                    long records = buffer->getSize() / kRecord;
                    if (records == 0) continue;
                    long at = static_cast<long>(probe % static_cast<unsigned>(records)) * kRecord;
                    if (buffer->read(at, rec, kRecord) != kRecord ||
                        std::string(rec, kRecord) != record(rec[0], seqOf(rec))) {
                        ++torn;
                    }
                }
            });
        }
        for (std::thread& t : threads) t.join();
        EXPECT_EQ(torn, 0);
        ASSERT_EQ(buffer->getSize(), long(kWriters) * kEach * kRecord);
        // Every record once, each writer's in its own order.
        std::vector<int> next(kWriters, 0);
        char rec[kRecord];
        for (long at = 0; at < buffer->getSize(); at += kRecord) {
            buffer->read(at, rec, kRecord);
            ASSERT_TRUE(rec[0] >= 0 && rec[0] < kWriters) << at;
            ASSERT_EQ(std::string(rec, kRecord), record(rec[0], next[rec[0]]++)) << at;
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
        if (n == 0) std::this_thread::yield();
        got.append(piece, static_cast<size_t>(n));
    }
    producer.join();
    EXPECT_EQ(got, data);
}
