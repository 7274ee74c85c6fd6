#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "support/TestFiles.h"
#include "util/FileLock.h"

using namespace QRN_SPACE;
using tuskel_test::TempDir;

namespace {

int modeOf(const std::string& path) {
    struct stat st;
    return stat(path.c_str(), &st) == 0 ? static_cast<int>(st.st_mode & 07777) : -1;
}

}  // namespace

TEST(FileLock, OpensLocksUnlinksAndCloses) {
    TempDir dir;
    for (const char* path : {"", static_cast<const char*>(nullptr), "/no/such/dir/lock"}) {
        FileLock closed(path, false);
        EXPECT_FALSE(closed.isValid());
        EXPECT_EQ(closed.lock(), -1);
        EXPECT_EQ(closed.unlock(), -1);
        EXPECT_EQ(closed.close(), -1);
        EXPECT_EQ(closed.unlink(), -1);
    }
    const std::string path = dir.file("lock");
    FileLock lock(path.c_str(), false);
    ASSERT_TRUE(lock.isValid());
    EXPECT_EQ(lock.lock(), 0);
    EXPECT_EQ(lock.unlock(), 0);
    EXPECT_EQ(lock.unlink(), 0);  // removes the file, stays open
    EXPECT_EQ(modeOf(path), -1);
    EXPECT_EQ(lock.lock(), 0);
    EXPECT_EQ(lock.close(), 0);
    EXPECT_EQ(lock.close(), -1);
    lock.setPath(path.c_str());  // recreates it
    lock.setPath("");            // closes, never removes
    EXPECT_FALSE(lock.isValid());
    EXPECT_NE(modeOf(path), -1);

    std::string longPath = dir.path() + "/";
    longPath.append(300 - longPath.size(), 'n');
    lock.setPath(longPath.c_str());
    EXPECT_NE(modeOf(longPath.substr(0, 255)), -1);  // cut at 255 bytes
}

TEST(FileLock, ShareTakesEffectOnlyThroughSetPath) {
    TempDir dir;
    mode_t old = umask(022);
    {
        FileLock viaConstructor(dir.file("a").c_str(), true);
        FileLock viaSetPath("", false);
        viaSetPath.setPath(dir.file("b").c_str(), true);
    }
    umask(old);
    EXPECT_EQ(modeOf(dir.file("a")), 0600);  // intended: the flag is ignored
    EXPECT_EQ(modeOf(dir.file("b")), 0666);  // fchmod ignores the umask
}

// A child sees the parent's lock, and its own lock() returns only once the
// parent has written its mark and released.
TEST(FileLock, ExcludesAnotherProcessUntilReleased) {
    TempDir dir;
    const std::string path = dir.file("lock");
    FileLock parentLock(path.c_str(), false);
    ASSERT_EQ(parentLock.lock(), 0);
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t parent = getpid();
    pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        FileLock childLock(path.c_str(), false);
        int fd = open(path.c_str(), O_RDWR);
        struct flock probe = {};
        probe.l_type = F_WRLCK;
        if (fd < 0 || fcntl(fd, F_GETLK, &probe) != 0 || probe.l_pid != parent) _exit(10);
        if (write(ready[1], "r", 1) != 1 || childLock.lock() != 0) _exit(11);
        char mark = 0;
        _exit(pread(fd, &mark, 1, 0) == 1 && mark == 'P' ? 0 : 12);
    }
    char signal = 0;
    ASSERT_EQ(read(ready[0], &signal, 1), 1);
    // A second descriptor stays open until the end: closing any descriptor
    // of the file would drop this process's lock.
    int fd = open(path.c_str(), O_RDWR);
    ASSERT_EQ(pwrite(fd, "P", 1, 0), 1);
    EXPECT_EQ(parentLock.unlock(), 0);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    close(fd);
    close(ready[0]);
    close(ready[1]);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
}
