#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "util/Mutex.h"
#include "util/RWLock.h"
#include "util/Semaphore.h"

using namespace QRN_SPACE;

namespace {

// A thread publishes its kernel id right before a call that must block; the
// test then waits until the kernel reports it sleeping, which in these
// threads only that call can make it do.
class Tid {
public:
    void publish() { _tid = static_cast<int>(syscall(SYS_gettid)); }
    void awaitBlocked() const {
        while (_tid.load() == 0) std::this_thread::yield();
        for (;;) {
            std::ifstream in("/proc/self/task/" + std::to_string(_tid.load()) + "/stat");
            std::string line;
            std::getline(in, line);
            size_t close = line.rfind(')');  // "pid (comm) STATE ..."
            if (close != std::string::npos && line.compare(close, 3, ") S") == 0) return;
            std::this_thread::yield();
        }
    }

private:
    std::atomic<int> _tid{0};
};

}  // namespace

TEST(RWLockThreads, WriterUnlockLetsEveryBlockedReaderIn) {
    RWLock lock;
    Tid tids[3];
    std::atomic<bool> writerHolds{true};
    std::atomic<int> entered{0};
    std::atomic<int> sawWriter{0};
    lock.wrlock();
    std::vector<std::thread> readers;
    for (Tid& tid : tids) {
        readers.emplace_back([&] {
            tid.publish();
            lock.rdlock();
            if (writerHolds) ++sawWriter;
            ++entered;
            while (entered < 3) std::this_thread::yield();  // all inside at once
            lock.unlock();
        });
    }
    for (Tid& tid : tids) tid.awaitBlocked();
    EXPECT_EQ(entered, 0);
    writerHolds = false;
    lock.unlock();
    for (std::thread& t : readers) t.join();
    EXPECT_EQ(sawWriter, 0);
    EXPECT_EQ(lock.trywrlock(), 0);
    lock.unlock();
}

TEST(RWLockThreads, ReadersKeepEnteringWhileAWriterWaits) {
    RWLock lock;
    lock.rdlock();
    Tid writerTid;
    std::atomic<bool> writerIn{false};
    std::thread writer([&] {
        writerTid.publish();
        lock.wrlock();
        writerIn = true;
        lock.unlock();
    });
    writerTid.awaitBlocked();
    // Intended reader preference: a waiting writer holds no reader back.
    EXPECT_EQ(lock.tryrdlock(), 0);
    std::thread reader([&] {
        lock.rdlock();
        lock.unlock();
    });
    reader.join();
    lock.unlock();
    EXPECT_FALSE(writerIn);  // one reader is still in
    lock.unlock();
    writer.join();
    EXPECT_TRUE(writerIn);
}

TEST(SemaphoreThreads, WaitBlocksUntilPost) {
    Semaphore sem(1);
    ASSERT_EQ(sem.trywait(), 0);
    Tid waiterTid;
    std::atomic<bool> passed{false};
    std::thread waiter([&] {
        waiterTid.publish();
        sem.wait();
        passed = true;
    });
    waiterTid.awaitBlocked();
    EXPECT_FALSE(passed);
    sem.post();
    waiter.join();
    EXPECT_TRUE(passed);
    EXPECT_EQ(sem.trywait(), -1);  // the post was consumed
}

TEST(ConditionThreads, NotifyAllWakesEveryWaiter) {
    Mutex mutex;
    Condition cond(mutex);
    bool ready = false;  // guarded by mutex
    Tid tids[3];
    std::atomic<int> woken{0};
    std::atomic<int> timedOut{0};
    std::vector<std::thread> waiters;
    for (int i = 0; i < 3; ++i) {
        waiters.emplace_back([&, i] {
            Monitor hold(mutex);
            tids[i].publish();
            // A far deadline must not wrap into the past on a 32-bit time_t.
            while (!ready) {
                if ((i == 0 ? cond.wait() : cond.wait(INT_MAX)) == ETIMEDOUT) ++timedOut;
            }
            ++woken;
        });
    }
    for (Tid& tid : tids) tid.awaitBlocked();
    cond.lock();
    ready = true;
    EXPECT_EQ(cond.notifyAll(), 0);
    cond.unlock();
    for (std::thread& t : waiters) t.join();
    EXPECT_EQ(woken, 3);
    EXPECT_EQ(timedOut, 0);
}
