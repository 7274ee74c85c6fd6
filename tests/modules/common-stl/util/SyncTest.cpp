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

namespace {

double monotonicSeconds() {
    struct timespec t;
    clock_gettime(CLOCK_MONOTONIC, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) / 1e9;
}

// Sleeps until the calendar clock is at least `fraction` into a second.
void alignToFraction(double fraction) {
    for (;;) {
        struct timespec now;
        clock_gettime(CLOCK_REALTIME, &now);
        double into = static_cast<double>(now.tv_nsec) / 1e9;
        if (into >= fraction) return;
        struct timespec pause = {0, static_cast<long>((fraction - into) * 1e9) + 1000};
        nanosleep(&pause, nullptr);
    }
}

}  // namespace

TEST(Sequence, HandsOutConsecutiveValuesAndBlocks) {
    Sequence seq(5);
    EXPECT_EQ(seq.getNext(), 5);
    EXPECT_EQ(seq.getNext(10), 6);  // reserves 6..15
    EXPECT_EQ(seq.getNext(), 16);
    EXPECT_EQ(seq.getNext(1), 17);

    Sequence zero(0);
    EXPECT_EQ(zero.getNext(), 0);
    EXPECT_EQ(zero.getNext(), 1);
}

TEST(Sequence, WrapsToZeroAndHandsOutZeroTwice) {
    struct Case {
        const char* name;
        int start;
        std::vector<unsigned> sizes;  // 0: getNext(), else getNext(size)
        std::vector<int> expected;
    };
    const Case cases[] = {
        // Intended: after the wrap 0 comes twice.
        {"single steps", INT_MAX, {0, 0, 0, 0}, {INT_MAX, 0, 0, 1}},
        {"block across the end", INT_MAX - 1, {3, 0, 0}, {INT_MAX - 1, 0, 0}},
        {"block after the wrap", INT_MAX, {0, 4, 0}, {INT_MAX, 0, 4}},
        {"block past the end, then a block", INT_MAX - 2, {2, 5, 2, 0}, {INT_MAX - 2, INT_MAX, 0, 2}},
    };
    for (const Case& c : cases) {
        Sequence seq(c.start);
        std::vector<int> got;
        for (unsigned size : c.sizes) got.push_back(size == 0 ? seq.getNext() : seq.getNext(size));
        EXPECT_EQ(got, c.expected) << c.name;
    }
}

TEST(Semaphore, TryWaitCountsDown) {
    Semaphore one(1);
    EXPECT_EQ(one.trywait(), 0);
    EXPECT_EQ(one.trywait(), -1);
    EXPECT_EQ(one.post(), 0);
    EXPECT_EQ(one.trywait(), 0);
    EXPECT_EQ(one.trywait(), -1);

    Semaphore three(3);
    EXPECT_EQ(three.wait(), 0);  // a positive count never blocks
    EXPECT_EQ(three.trywait(), 0);
    EXPECT_EQ(three.trywait(), 0);
    EXPECT_EQ(three.trywait(), -1);
    three.post();
    three.post();
    EXPECT_EQ(three.wait(), 0);
    EXPECT_EQ(three.wait(), 0);
    EXPECT_EQ(three.trywait(), -1);
}

TEST(RWLock, TryCallsFollowTheCounts) {
    RWLock lock;
    ASSERT_EQ(lock.rdlock(), 0);
    EXPECT_EQ(lock.tryrdlock(), 0);  // readers share
    EXPECT_EQ(lock.trywrlock(), -1);
    EXPECT_EQ(lock.unlock(), 0);
    EXPECT_EQ(lock.unlock(), 0);

    EXPECT_EQ(lock.trywrlock(), 0);
    EXPECT_EQ(lock.tryrdlock(), -1);
    EXPECT_EQ(lock.trywrlock(), -1);
    EXPECT_EQ(lock.unlock(), 0);
    EXPECT_EQ(lock.tryrdlock(), 0);
    EXPECT_EQ(lock.unlock(), 0);
    EXPECT_EQ(lock.wrlock(), 0);
    EXPECT_EQ(lock.unlock(), 0);
}

TEST(RWLock, UnlockWithoutHolderDrivesTheReaderCountNegative) {
    RWLock lock;
    EXPECT_EQ(lock.unlock(), 0);
    // Intended: no holder check; the count is now -1, which a writer sees as
    // "readers active" until a reader brings it back to 0.
    EXPECT_EQ(lock.trywrlock(), -1);
    EXPECT_EQ(lock.tryrdlock(), 0);
    EXPECT_EQ(lock.trywrlock(), 0);
    lock.unlock();
}

TEST(RWLock, GuardsReleaseOnException) {
    RWLock lock;
    try {
        WriteGuard hold(lock);
        throw 1;
    } catch (int) {
    }
    try {
        ReadGuard hold(lock);
        throw 1;
    } catch (int) {
    }
    EXPECT_EQ(lock.trywrlock(), 0);
    lock.unlock();
}

TEST(Condition, TimedWaitEndsAtAWholeSecond) {
    Mutex mutex;
    Condition cond(mutex);
    ASSERT_EQ(cond.lock(), 0);
    EXPECT_EQ(cond.wait(0), ETIMEDOUT);
    EXPECT_EQ(cond.wait(-5), ETIMEDOUT);  // a deadline in the past

    // The deadline is time() + 1 with no fraction: started late in a second
    // the wait ends at the next whole second, well before a full second has
    // passed. A deadline of "now + 1 s" never ends that early; a run under
    // heavy load may miss the window, so three attempts are allowed.
    bool shortWait = false;
    for (int attempt = 0; attempt < 3 && !shortWait; ++attempt) {
        alignToFraction(0.8);
        time_t before = time(nullptr);
        double start = monotonicSeconds();
        EXPECT_EQ(cond.wait(1), ETIMEDOUT);
        double elapsed = monotonicSeconds() - start;
        struct timespec after;
        clock_gettime(CLOCK_REALTIME, &after);  // time() itself may lag a tick
        EXPECT_GE(after.tv_sec, before + 1);    // never before the deadline
        shortWait = elapsed < 0.95;
    }
    EXPECT_TRUE(shortWait);
    EXPECT_EQ(cond.unlock(), 0);
}

TEST(Mutex, TryLockReportsBusy) {
    Mutex mutex;
    EXPECT_EQ(mutex.trylock(), 0);
    EXPECT_EQ(mutex.trylock(), EBUSY);
    EXPECT_EQ(mutex.unlock(), 0);
    {
        Monitor hold(mutex);
        EXPECT_EQ(mutex.trylock(), EBUSY);
    }
    EXPECT_EQ(mutex.trylock(), 0);
    mutex.unlock();
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
                 "Mutex:[0-9]+: int QRN_SPACE::Sequence::getNext\\(unsigned int\\): "
                 "Assertion `size > 0' failed");
}
