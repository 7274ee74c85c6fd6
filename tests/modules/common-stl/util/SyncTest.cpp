#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <ctime>
#include <vector>

#include "util/Mutex.h"
#include "util/RWLock.h"
#include "util/Semaphore.h"
#include "util/Sequence.h"

using namespace QRN_SPACE;

TEST(Sequence, HandsOutValuesAndWrapsToZeroTwice) {
    struct Case {
        int start;
        std::vector<unsigned> sizes;  // 0: getNext(), else getNext(size)
        std::vector<int> expected;
    };
    const Case cases[] = {
        {5, {0, 10, 0}, {5, 6, 16}},
        {INT_MAX, {0, 0, 0, 0}, {INT_MAX, 0, 0, 1}},  // intended: 0 twice
        {INT_MAX - 1, {3, 0, 0}, {INT_MAX - 1, 0, 0}},
        {INT_MAX, {0, 4, 0}, {INT_MAX, 0, 4}},
        {INT_MAX - 2, {2, 5, 2, 0}, {INT_MAX - 2, INT_MAX, 0, 2}},
    };
    for (const Case& c : cases) {
        Sequence seq(c.start);
        std::vector<int> got;
        for (unsigned size : c.sizes) got.push_back(size == 0 ? seq.getNext() : seq.getNext(size));
        EXPECT_EQ(got, c.expected) << c.start;
    }
}

TEST(Semaphore, TryWaitCountsDown) {
    Semaphore sem(2);
    EXPECT_EQ(sem.wait(), 0);  // a positive count never blocks
    EXPECT_EQ(sem.trywait(), 0);
    EXPECT_EQ(sem.trywait(), -1);
    EXPECT_EQ(sem.post(), 0);
    EXPECT_EQ(sem.trywait(), 0);
    EXPECT_EQ(sem.trywait(), -1);
}

TEST(RWLock, TryCallsFollowTheCountsAndUnlockDoesNotCheckTheHolder) {
    RWLock lock;
    ASSERT_EQ(lock.rdlock(), 0);
    EXPECT_EQ(lock.tryrdlock(), 0);  // readers share
    EXPECT_EQ(lock.trywrlock(), -1);
    lock.unlock();
    lock.unlock();
    EXPECT_EQ(lock.trywrlock(), 0);
    EXPECT_EQ(lock.tryrdlock(), -1);
    EXPECT_EQ(lock.trywrlock(), -1);
    lock.unlock();

    // Intended: an unmatched unlock takes the reader count to -1, which
    // keeps writers out until a reader brings it back to 0.
    EXPECT_EQ(lock.unlock(), 0);
    EXPECT_EQ(lock.trywrlock(), -1);
    EXPECT_EQ(lock.tryrdlock(), 0);
    EXPECT_EQ(lock.trywrlock(), 0);
    lock.unlock();

    try {
        WriteGuard hold(lock);
        throw 1;
    } catch (int) {
    }
    EXPECT_EQ(lock.trywrlock(), 0);  // the guard released it
    lock.unlock();
}

TEST(Condition, TimedWaitEndsAtAWholeSecond) {
    Mutex mutex;
    Condition cond(mutex);
    ASSERT_EQ(cond.lock(), 0);
    EXPECT_EQ(mutex.trylock(), EBUSY);
    EXPECT_EQ(cond.wait(0), ETIMEDOUT);
    EXPECT_EQ(cond.wait(-5), ETIMEDOUT);
    // The deadline is time() + 1 with no fraction: started late in a second
    // the wait ends at the next whole second, before a full second passed,
    // which a deadline of "now + 1 s" never does. Under heavy load a run
    // may miss the window, hence three attempts.
    bool early = false;
    for (int attempt = 0; attempt < 3 && !early; ++attempt) {
        struct timespec now;
        clock_gettime(CLOCK_REALTIME, &now);
        struct timespec pause = {0, now.tv_nsec < 800000000 ? 800000000 - now.tv_nsec : 0};
        nanosleep(&pause, nullptr);
        struct timespec start, end;
        clock_gettime(CLOCK_MONOTONIC, &start);
        time_t before = time(nullptr);
        EXPECT_EQ(cond.wait(1), ETIMEDOUT);
        clock_gettime(CLOCK_REALTIME, &now);  // time() itself may lag a tick
        EXPECT_GE(now.tv_sec, before + 1);     // never before the deadline
        clock_gettime(CLOCK_MONOTONIC, &end);
        early = (end.tv_sec - start.tv_sec) * 1000000000L + (end.tv_nsec - start.tv_nsec) < 950000000L;
    }
    EXPECT_TRUE(early);
    EXPECT_EQ(cond.unlock(), 0);
}

// The checks abort in every build type: this suite is built with NDEBUG.
TEST(SyncDeathTest, ArgumentChecksAbortWithTheStandardReport) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(Semaphore(0),
                 "Mutex:[0-9]+: QRN_SPACE::Semaphore::Semaphore\\(int\\): Assertion `count >= 1' failed");
    EXPECT_DEATH(Sequence(-1),
                 "Mutex:[0-9]+: QRN_SPACE::Sequence::Sequence\\(int\\): Assertion `initVal >= 0' failed");
    Sequence seq(1);
    EXPECT_DEATH(seq.getNext(0),
                 "Mutex:[0-9]+: int QRN_SPACE::Sequence::getNext\\(unsigned int\\): Assertion `size > 0' failed");
}
