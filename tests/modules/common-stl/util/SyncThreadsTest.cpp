#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "util/Mutex.h"
#include "util/RWLock.h"
#include "util/Semaphore.h"
#include "util/Sequence.h"

using namespace QRN_SPACE;

namespace {

// A thread's kernel id, published before it calls something that must block.
class Tid {
public:
    void publish() { _tid.store(static_cast<int>(syscall(SYS_gettid))); }

    // Waits until the thread sleeps in the kernel: the state the blocking
    // call reaches, and no other, in the threads below.
    void awaitBlocked() const {
        while (_tid.load() == 0) std::this_thread::yield();
        const std::string stat = "/proc/self/task/" + std::to_string(_tid.load()) + "/stat";
        for (;;) {
            std::ifstream in(stat);
            std::string line;
            std::getline(in, line);
            // pid (comm) STATE ...: the state follows the last ')'.
            size_t close = line.rfind(')');
            if (close != std::string::npos && close + 2 < line.size() && line[close + 2] == 'S') return;
            std::this_thread::yield();
        }
    }

private:
    std::atomic<int> _tid{0};
};

void spinUntil(const std::atomic<int>& value, int target) {
    while (value.load() < target) std::this_thread::yield();
}

}  // namespace

TEST(RWLockThreads, WriterUnlockLetsEveryBlockedReaderIn) {
    RWLock lock;
    const int kReaders = 3;
    Tid tids[kReaders];
    std::atomic<bool> writerHolds{true};
    std::atomic<int> entered{0};
    std::atomic<int> sawWriter{0};
    ASSERT_EQ(lock.wrlock(), 0);
    std::vector<std::thread> readers;
    for (int i = 0; i < kReaders; ++i) {
        readers.emplace_back([&, i] {
            tids[i].publish();
            lock.rdlock();
            if (writerHolds.load()) ++sawWriter;
            ++entered;
            spinUntil(entered, kReaders);  // all readers are inside at once
            lock.unlock();
        });
    }
    for (Tid& t : tids) t.awaitBlocked();
    EXPECT_EQ(entered.load(), 0);
    writerHolds = false;
    lock.unlock();
    for (std::thread& t : readers) t.join();
    EXPECT_EQ(entered.load(), kReaders);
    EXPECT_EQ(sawWriter.load(), 0);
    EXPECT_EQ(lock.trywrlock(), 0);
    lock.unlock();
}

TEST(RWLockThreads, ReadersKeepEnteringWhileAWriterWaits) {
    RWLock lock;
    ASSERT_EQ(lock.rdlock(), 0);
    Tid writerTid;
    std::atomic<int> writerIn{0};
    std::thread writer([&] {
        writerTid.publish();
        lock.wrlock();
        ++writerIn;
        lock.unlock();
    });
    writerTid.awaitBlocked();
    // Intended reader preference: a waiting writer does not hold readers back.
    EXPECT_EQ(lock.tryrdlock(), 0);
    std::thread reader([&] {
        lock.rdlock();
        lock.unlock();
    });
    reader.join();
    EXPECT_EQ(writerIn.load(), 0);
    lock.unlock();
    EXPECT_EQ(writerIn.load(), 0);  // one reader is still in
    lock.unlock();
    writer.join();
    EXPECT_EQ(writerIn.load(), 1);
}

TEST(RWLockThreads, WritersExcludeEachOtherAndReaders) {
    RWLock lock;
    int shared[2] = {0, 0};  // written only under the write lock
    std::atomic<int> torn{0};
    std::atomic<int> writersInside{0};
    std::atomic<int> overlap{0};
    std::vector<std::thread> threads;
    for (int w = 0; w < 2; ++w) {
        threads.emplace_back([&] {
            for (int i = 0; i < 2000; ++i) {
                WriteGuard hold(lock);
                if (++writersInside != 1) ++overlap;
                ++shared[0];
                ++shared[1];
                --writersInside;
            }
        });
    }
    for (int r = 0; r < 2; ++r) {
        threads.emplace_back([&] {
            for (int i = 0; i < 2000; ++i) {
                ReadGuard hold(lock);
                if (shared[0] != shared[1]) ++torn;
                if (writersInside.load() != 0) ++overlap;
            }
        });
    }
    for (std::thread& t : threads) t.join();
    EXPECT_EQ(shared[0], 4000);
    EXPECT_EQ(shared[1], 4000);
    EXPECT_EQ(torn.load(), 0);
    EXPECT_EQ(overlap.load(), 0);
}

TEST(SemaphoreThreads, WaitBlocksUntilPost) {
    Semaphore sem(1);
    ASSERT_EQ(sem.trywait(), 0);
    Tid waiterTid;
    std::atomic<int> passed{0};
    std::thread waiter([&] {
        waiterTid.publish();
        sem.wait();
        ++passed;
    });
    waiterTid.awaitBlocked();
    EXPECT_EQ(passed.load(), 0);
    sem.post();
    waiter.join();
    EXPECT_EQ(passed.load(), 1);
    EXPECT_EQ(sem.trywait(), -1);  // the post was consumed

    // Every post is matched by exactly one wait.
    const int kItems = 5000;
    std::thread producer([&] {
        for (int i = 0; i < kItems; ++i) sem.post();
    });
    for (int i = 0; i < kItems; ++i) sem.wait();
    producer.join();
    EXPECT_EQ(sem.trywait(), -1);
}

TEST(ConditionThreads, NotifyWakesWaitersThatRetestTheirPredicate) {
    Mutex mutex;
    Condition cond(mutex);
    bool ready = false;  // guarded by mutex
    const int kWaiters = 3;
    Tid tids[kWaiters];
    std::atomic<int> woken{0};
    std::atomic<int> timedOut{0};
    std::vector<std::thread> waiters;
    for (int i = 0; i < kWaiters; ++i) {
        waiters.emplace_back([&, i] {
            Monitor hold(mutex);
            tids[i].publish();
            // The far deadline must not wrap into the past (32-bit time_t).
            while (!ready) {
                if ((i == 0 ? cond.wait() : cond.wait(INT_MAX)) == ETIMEDOUT) ++timedOut;
            }
            ++woken;
        });
    }
    for (Tid& t : tids) t.awaitBlocked();
    EXPECT_EQ(woken.load(), 0);
    cond.lock();
    ready = true;
    EXPECT_EQ(cond.notifyAll(), 0);
    cond.unlock();
    for (std::thread& t : waiters) t.join();
    EXPECT_EQ(woken.load(), kWaiters);
    EXPECT_EQ(timedOut.load(), 0);

    // notify() hands over one item at a time.
    int items = 0;  // guarded by mutex
    std::thread consumer([&] {
        for (int taken = 0; taken < 100; ++taken) {
            Monitor hold(mutex);
            while (items == 0) cond.wait();
            --items;
        }
    });
    for (int i = 0; i < 100; ++i) {
        Monitor hold(mutex);
        ++items;
        cond.notify();
    }
    consumer.join();
    EXPECT_EQ(items, 0);
}

TEST(SequenceThreads, ValuesAreUniqueAcrossThreads) {
    Sequence seq(0);
    const int kThreads = 4;
    const int kEach = 2000;
    std::vector<std::vector<int>> got(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < kEach; ++i) {
                if (i % 2 == 0) {
                    got[t].push_back(seq.getNext());
                } else {
                    int first = seq.getNext(3);
                    for (int k = 0; k < 3; ++k) got[t].push_back(first + k);
                }
            }
        });
    }
    for (std::thread& t : threads) t.join();
    std::set<int> all;
    size_t count = 0;
    for (const auto& values : got) {
        all.insert(values.begin(), values.end());
        count += values.size();
    }
    EXPECT_EQ(all.size(), count);  // no value twice
    EXPECT_EQ(*all.begin(), 0);
    EXPECT_EQ(*all.rbegin(), static_cast<int>(count) - 1);  // no gap
}
