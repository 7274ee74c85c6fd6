// The locks, the in-memory buffers and the pipe under several threads
// (ThreadSanitizer runs this executable). A wake-up that never comes fails a
// bounded wait, or the test's time limit where a thread then sleeps for good.
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <climits>
#include <fstream>
#include <functional>
#include <thread>

#include "io/ContinuousMemBufferBase.h"
#include "io/MemBufferBase.h"
#include "io/PipeBufferBase.h"
#include "util/Mutex.h"
#include "util/RWLock.h"

using namespace QRN_SPACE;

namespace {

// Spins, then yields, until done() holds or `seconds` passed; answers done().
template <class F>
bool within(int seconds, F done) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    for (int k = 0; !done() && std::chrono::steady_clock::now() < end; ++k) {
        if (k > 1000) std::this_thread::yield();
    }
    return done();
}

// Runs f(0 .. count-1) in threads and returns once every one of them sleeps:
// in these threads only the call under test can make them do so.
std::vector<std::thread> startBlocked(int count, std::function<void(int)> f) {
    auto tids = std::make_shared<std::vector<std::atomic<long>>>(count);
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) threads.emplace_back([=] { (*tids)[i] = syscall(SYS_gettid), f(i); });
    for (auto& tid : *tids) {
        EXPECT_TRUE(within(30, [&] {
            std::ifstream stat("/proc/self/task/" + std::to_string(tid.load()) + "/stat");
            std::string pid, name, state;  // "pid (name) STATE ..."
            return tid != 0 && stat >> pid >> name >> state && state == "S";
        }));
    }
    return threads;
}

}  // namespace

// Three readers and two writers block behind a writer. Its unlock must let
// every reader in (all three are inside together) and wake a writer; each
// writer's unlock wakes the next. Nobody is ever inside beside a writer.
TEST(RWLockThreads, WriterUnlockWakesEveryBlockedReaderAndTheNextWriter) {
    for (int round = 0; round < 3; ++round) {  // a lucky interleaving can hide a wake-up too few
        RWLock lock;
        std::atomic<int> readers{0}, writers{1}, overlaps{0}, together{0};
        lock.wrlock();
        auto threads = startBlocked(5, [&](int i) {
            i < 3 ? lock.rdlock() : lock.wrlock();
            if (i < 3) {
                overlaps += writers != 0;
                ++readers;
                together += within(10, [&] { return readers == 3; });
            } else {
                overlaps += ++writers != 1 || readers % 3 != 0;
                --writers;
            }
            lock.unlock();
        });
        --writers;
        lock.unlock();
        for (std::thread& t : threads) t.join();
        EXPECT_EQ(overlaps, 0);
        EXPECT_EQ(together, 3);
    }
}

TEST(RWLockThreads, ReadersKeepEnteringWhileAWriterWaits) {
    RWLock lock;
    std::atomic<bool> writerIn{false};
    lock.rdlock();
    auto writer = startBlocked(1, [&](int) { lock.wrlock(), writerIn = true, lock.unlock(); });
    EXPECT_EQ(lock.tryrdlock(), 0);  // intended reader preference
    lock.unlock();
    EXPECT_FALSE(writerIn);  // one reader is still in
    lock.unlock();           // the last reader out wakes the writer
    writer[0].join();
}

// A far deadline waits for the notification: where time_t has 32 bits,
// now + INT_MAX must not wrap into the past and time out at once.
TEST(ConditionThreads, FarDeadlineWaitsForTheNotification) {
    Mutex mutex;
    Condition ready(mutex);
    std::atomic<int> result{-1};
    auto waiter = startBlocked(1, [&](int) {
        Monitor hold(mutex);
        result = ready.wait(INT_MAX);
    });
    {
        Monitor hold(mutex);
        ready.notify();
    }
    waiter[0].join();
    EXPECT_EQ(result, 0);
}

// Two threads hand the lock over, reader to writer, writer to writer and
// writer to reader in turn. The holder unlocks just as the other starts to
// wait, a little later each round, and waits for the other's turn before it
// locks again: no later unlock can make up for a lost wake-up.
TEST(RWLockThreads, EveryHandOverWakesTheWaiter) {
    const int kRounds = 50000;
    RWLock lock;
    std::atomic<int> held{-1}, trying{-1}, taken{-1};
    std::thread second([&] {
        for (int i = 0; i < kRounds && within(10, [&] { return held == i; }); ++i) {
            trying = i;
            i % 3 == 2 ? lock.rdlock() : lock.wrlock();
            taken = i;
            lock.unlock();
        }
    });
    for (int i = 0; i < kRounds; ++i) {
        i % 3 == 0 ? lock.rdlock() : lock.wrlock();
        held = i;
        within(10, [&] { return trying == i; });
        for (int spin = i % 257; spin > 0; --spin) taken.load();
        lock.unlock();
        ASSERT_TRUE(within(10, [&] { return taken == i; })) << "round " << i << " lost its wake-up";
    }
    second.join();
}

// Three writers append 16-byte records of their own letter while two
// readers look at random records: none is ever torn, and in the end each
// writer's records are all there.
TEST(MemoryBufferThreads, AppendsStayWholeWhileReadersLook) {
    std::unique_ptr<BufferBase> stores[] = {std::make_unique<MemBufferBase>(),
                                            std::make_unique<ContinuousMemBufferBase>(0)};
    for (auto& buffer : stores) {
        auto letterAt = [&](long at) {
            char r[16];
            return buffer->read(at, r, 16) == 16 && std::string(r, 16) == std::string(16, r[0]) ? r[0] : '?';
        };
        std::atomic<int> writing{3}, torn{0};
        std::vector<std::thread> threads;
        for (int t = 0; t < 5; ++t) {
            threads.emplace_back([&, t] {
                for (int i = 0; t < 3 && i < 1500; ++i) buffer->append(std::string(16, char('a' + t)).data(), 16);
                writing -= t < 3;
                for (unsigned probe = t; writing > 0; probe = probe * 1103515245u + 12345u) {
                    const long records = buffer->getSize() / 16;
                    torn += records > 0 && letterAt(long(probe % records) * 16) == '?';
                }
            });
        }
        for (std::thread& t : threads) t.join();
        EXPECT_EQ(torn, 0);
        std::string letters;
        for (long at = 0; at < buffer->getSize(); at += 16) letters += letterAt(at);
        std::sort(letters.begin(), letters.end());
        EXPECT_EQ(letters, std::string(1500, 'a') + std::string(1500, 'b') + std::string(1500, 'c'));
    }
}

// Three consumers each read every byte at its position, one by the byte
// read and two by the block read. The producer writes byte i only once every
// consumer has announced that it reads position i, a little later each
// round, and closes once all wait past the end: a lost wake-up leaves a
// consumer asleep for good, and the test hangs until its time limit.
TEST(PipeBufferThreads, EveryWriteAndTheCloseWakeEveryWaitingConsumer) {
    const int kRounds = 50000;
    MemBufferBase store;
    PipeBufferBase pipe(&store);
    PipeProducerOutputStream* producer = pipe.getProducerOutputStream();
    std::atomic<int> reading[3] = {-1, -1, -1}, wrong{0}, atEnd[3] = {9, 9, 9};
    std::vector<std::thread> consumers;
    for (int k = 0; k < 3; ++k) {
        consumers.emplace_back([&, k] {
            char c = 0;
            for (int i = 0; i < kRounds; ++i) {
                reading[k] = i;
                const int r = (i + k) % 2 ? pipe.read(i) : pipe.read(i, &c, 1) == 1 ? static_cast<unsigned char>(c) : -1;
                wrong += r != (i & 0xFF);
            }
            reading[k] = kRounds;
            atEnd[k] = k == 1 ? pipe.read(kRounds) : pipe.read(kRounds, &c, 1);
        });
    }
    for (int i = 0; i <= kRounds; ++i) {
        for (auto& r : reading) {
            while (r < i) std::this_thread::yield();
        }
        for (int spin = i % 257; spin > 0; --spin) wrong.load();
        i < kRounds ? producer->write(static_cast<char>(i)) : producer->close();
    }
    for (std::thread& t : consumers) t.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ((std::vector<int>{atEnd[0], atEnd[1], atEnd[2]}), (std::vector<int>{0, -1, 0}));  // the end: 0 or -1
}
