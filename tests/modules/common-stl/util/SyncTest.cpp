#include <gtest/gtest.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <climits>
#include <fstream>

#include "support/TestFiles.h"
#include "util/FileLock.h"
#include "util/RWLock.h"
#include "util/Semaphore.h"
#include "util/Sequence.h"

using namespace QRN_SPACE;
using V = std::vector<int>;  // braced lists evaluate in order: one row per sequence of calls

TEST(Sync, SequenceSemaphoreAndTheTryCallsOfRWLock) {
    // Each size is replaced by what the call answered, 0 standing for
    // getNext(). Intended: 0 comes twice after the wrap.
    for (auto [start, sizes, want] : {std::tuple{5, V{0, 10, 0}, V{5, 6, 16}},
                                      {INT_MAX, {0, 0, 0, 0}, {INT_MAX, 0, 0, 1}},
                                      {INT_MAX - 1, {3, 0, 0}, {INT_MAX - 1, 0, 0}},
                                      {INT_MAX - 2, {2, 5, 2, 0}, {INT_MAX - 2, INT_MAX, 0, 2}}}) {
        Sequence seq(start);
        for (int& size : sizes) size = size == 0 ? seq.getNext() : seq.getNext(unsigned(size));
        EXPECT_EQ(sizes, want) << start;
    }
    Semaphore sem(1);
    EXPECT_EQ((V{sem.trywait(), sem.trywait(), sem.post(), sem.trywait()}), (V{0, -1, 0, 0}));
    RWLock rw;
    EXPECT_EQ((V{rw.rdlock(), rw.tryrdlock(), rw.trywrlock(), rw.unlock(), rw.unlock()}), (V{0, 0, -1, 0, 0}));
    EXPECT_EQ((V{rw.trywrlock(), rw.tryrdlock(), rw.trywrlock(), rw.unlock()}), (V{0, -1, -1, 0}));
    // Intended: an unmatched unlock takes the reader count to -1, which
    // keeps writers out until a reader brings it back to 0.
    EXPECT_EQ((V{rw.unlock(), rw.trywrlock(), rw.tryrdlock(), rw.trywrlock()}), (V{0, -1, 0, 0}));
}

// The checks abort in every build type: this suite is built with NDEBUG.
TEST(SyncDeathTest, ArgumentChecksAbortWithTheStandardReport) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(Semaphore(0), "Mutex:[0-9]+: QRN_SPACE::Semaphore::Semaphore\\(int\\): Assertion `count >= 1' failed");
    EXPECT_DEATH(Sequence(-1), "Mutex:[0-9]+: QRN_SPACE::Sequence::Sequence\\(int\\): Assertion `initVal >= 0' failed");
    EXPECT_DEATH(Sequence(1).getNext(0),
                 "Mutex:[0-9]+: int QRN_SPACE::Sequence::getNext\\(unsigned int\\): Assertion `size > 0' failed");
}

TEST(FileLock, TakesShareOnlyFromSetPathAndExcludesAnotherProcessUntilReleased) {
    tuskel_test::TempDir dir;
    const std::string path = dir.file("lock");
    struct stat st = {};
    const mode_t oldMask = umask(022);
    FileLock lock(path.c_str(), true), other("", true);
    EXPECT_TRUE(stat(path.c_str(), &st) == 0 && (st.st_mode & 0777) == 0600);  // intended: the flag is ignored here
    other.setPath(path.c_str(), true);
    EXPECT_TRUE(stat(path.c_str(), &st) == 0 && (st.st_mode & 0777) == 0666);  // fchmod ignores the umask
    umask(oldMask);

    // The child's lock() has to wait until the mark is written and the
    // lock released; a lock that does not exclude lets it read too early.
    ASSERT_EQ(lock.lock(), 0);
    const pid_t child = fork();
    if (child == 0) _exit(FileLock(path.c_str(), false).lock() == 0 && std::ifstream(path).get() == 'P' ? 0 : 1);
    usleep(200000);  // by now the child waits in its lock(), unless the lock does not exclude
    // Through a second descriptor, closed only after the unlock: closing any
    // descriptor of the file drops this process's lock.
    const int fd = open(path.c_str(), O_WRONLY);
    ASSERT_EQ(write(fd, "P", 1), 1);
    EXPECT_EQ(lock.unlock(), 0);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    close(fd);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;

    // Paths are cut at 255 bytes: the lock is on the file the cut path names.
    const std::string cut = dir.file(std::string(255 - dir.file("").size(), 'x'));
    FileLock longer((cut + "tail").c_str(), false);
    EXPECT_TRUE(longer.isValid() && stat(cut.c_str(), &st) == 0);
    EXPECT_EQ(longer.unlink(), 0);
    EXPECT_NE(stat(cut.c_str(), &st), 0);
}
