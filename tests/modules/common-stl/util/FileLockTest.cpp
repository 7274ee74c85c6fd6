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

bool exists(const std::string& path) {
    struct stat st;
    return stat(path.c_str(), &st) == 0;
}

mode_t modeOf(const std::string& path) {
    struct stat st;
    EXPECT_EQ(stat(path.c_str(), &st), 0) << path;
    return st.st_mode & 07777;
}

// Sets the umask for the rest of the scope.
class UmaskScope {
public:
    explicit UmaskScope(mode_t mask) : _old(umask(mask)) {}
    ~UmaskScope() { umask(_old); }

private:
    mode_t _old;
};

}  // namespace

TEST(FileLock, ClosedLockAnswersMinusOne) {
    for (const char* path : {"", static_cast<const char*>(nullptr)}) {
        FileLock lock(path, false);
        EXPECT_FALSE(lock.isValid());
        EXPECT_EQ(lock.lock(), -1);
        EXPECT_EQ(lock.unlock(), -1);
        EXPECT_EQ(lock.close(), -1);
        EXPECT_EQ(lock.unlink(), -1);
    }
}

TEST(FileLock, OpensLocksClosesAndUnlinks) {
    TempDir dir;
    const std::string path = dir.file("lock");
    FileLock lock(path.c_str(), false);
    ASSERT_TRUE(lock.isValid());
    EXPECT_TRUE(exists(path));
    EXPECT_EQ(lock.lock(), 0);
    EXPECT_EQ(lock.lock(), 0);  // the process holds it already
    EXPECT_EQ(lock.unlock(), 0);

    EXPECT_EQ(lock.unlink(), 0);  // removes the file, keeps it open
    EXPECT_FALSE(exists(path));
    EXPECT_TRUE(lock.isValid());
    EXPECT_EQ(lock.lock(), 0);
    EXPECT_EQ(lock.unlock(), 0);

    EXPECT_EQ(lock.close(), 0);
    EXPECT_FALSE(lock.isValid());
    EXPECT_EQ(lock.close(), -1);
    EXPECT_EQ(lock.unlink(), -1);

    lock.setPath(path.c_str());  // reopens (and recreates)
    EXPECT_TRUE(lock.isValid());
    EXPECT_TRUE(exists(path));
    lock.setPath("");  // closes and stays closed
    EXPECT_FALSE(lock.isValid());
    EXPECT_TRUE(exists(path));  // never removed implicitly

    FileLock missingDir(dir.file("no/such/dir").c_str(), false);
    EXPECT_FALSE(missingDir.isValid());
    EXPECT_EQ(missingDir.lock(), -1);
}

TEST(FileLock, ShareTakesEffectOnlyThroughSetPath) {
    TempDir dir;
    UmaskScope mask(022);
    const std::string viaConstructor = dir.file("ctor");
    {
        // Intended: the constructor's share flag has no effect.
        FileLock lock(viaConstructor.c_str(), true);
        ASSERT_TRUE(lock.isValid());
    }
    EXPECT_EQ(modeOf(viaConstructor), 0600u);

    const std::string viaSetPath = dir.file("set");
    FileLock lock("", false);
    lock.setPath(viaSetPath.c_str(), true);
    ASSERT_TRUE(lock.isValid());
    EXPECT_EQ(modeOf(viaSetPath), 0666u);  // fchmod ignores the umask
}

TEST(FileLock, LongPathsAreCutAt255Bytes) {
    TempDir dir;
    std::string path = dir.path() + "/";
    path.append(300 - path.size(), 'n');
    const std::string cut = path.substr(0, 255);
    FileLock lock(path.c_str(), false);
    ASSERT_TRUE(lock.isValid());
    EXPECT_TRUE(exists(cut));
    EXPECT_EQ(lock.unlink(), 0);
    EXPECT_FALSE(exists(cut));
}

// The lock serialises processes: a child sees the parent's lock, blocks in
// lock() and gets it only once the parent has written its mark and released.
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
        probe.l_whence = SEEK_SET;
        if (fd < 0 || fcntl(fd, F_GETLK, &probe) != 0) _exit(10);
        if (probe.l_type != F_WRLCK || probe.l_pid != parent) _exit(11);
        if (write(ready[1], "r", 1) != 1) _exit(12);
        if (childLock.lock() != 0) _exit(13);
        char mark = 0;
        if (pread(fd, &mark, 1, 0) != 1 || mark != 'P') _exit(14);
        childLock.unlock();
        _exit(0);
    }
    close(ready[1]);
    char signal = 0;
    ASSERT_EQ(read(ready[0], &signal, 1), 1);
    close(ready[0]);
    // Written through a second descriptor that stays open until the end:
    // closing any descriptor of the file would drop this process's lock.
    int fd = open(path.c_str(), O_RDWR);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(pwrite(fd, "P", 1, 0), 1);
    EXPECT_EQ(parentLock.unlock(), 0);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    close(fd);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
}
