// The file streams over real kernel objects: regular files, pipes, a FIFO, a
// socket pair, devices, a directory, a missing path and a stale descriptor.
#include <gtest/gtest.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <functional>

#include "io/FileInputStream.h"
#include "io/FileOutputStream.h"
#include "support/TestFiles.h"
#include "support/TestStreams.h"
#include "support/Thrown.h"

using namespace QRN_SPACE;
using namespace tuskel_test;

namespace {

const std::string kIn = " @ io/InputStream, line";
const std::string kOut = " @ io/OutputStream, line";

std::string text(int error) { return std::strerror(error); }

int openOrFail(const std::string& path, int flags) {
    int fd = ::open(path.c_str(), flags);
    EXPECT_GE(fd, 0) << path;
    return fd;
}

// A descriptor number that nothing holds, far above what open() hands out.
int staleDescriptor() {
    int fd = ::fcntl(0, F_DUPFD, 900);
    ::close(fd);
    return fd;
}

}  // namespace

TEST(FileStreams, EveryFailingCallThrowsItsSystemErrorAtItsLine) {
    TempDir dir;
    const std::string missing = dir.file("missing"), file = dir.file("f");
    writeFile(file, "0123456789");
    int pipeFds[2];
    ASSERT_EQ(::pipe(pipeFds), 0);
    const int stale = staleDescriptor();
    // A stream on the file whose descriptor is then replaced by a pipe's.
    const int switchedFd = openOrFail(file, O_RDONLY);
    FileInputStream switched(switchedFd);
    std::string big(80000, 'x');
    ::fcntl(pipeFds[1], F_SETFL, O_NONBLOCK);  // a write larger than the pipe comes back short
    FileOutputStream full(openOrFail("/dev/full", O_WRONLY)), intoPipe(::dup(pipeFds[1])), standardOut(1);
    standardOut.close();  // intended: descriptor 1 stays open, the stream is closed
    FileInputStream closed(file.c_str());
    closed.close();
    const std::pair<std::function<void()>, std::string> cases[] = {
        {[&] { FileInputStream{missing.c_str()}; }, missing + ": " + text(ENOENT) + kIn + "99"},
        {[&] { FileOutputStream(missing.c_str(), 1); }, missing + ": " + text(ENOENT) + kOut + "68"},
        {[&] { FileOutputStream(dir.path().c_str(), 0); }, dir.path() + ": " + text(EISDIR) + kOut + "68"},
        {[&] { FileInputStream(-1).available(); }, text(EBADF) + kIn + "116"},
        {[&] { FileInputStream(stale).available(); }, text(EBADF) + kIn + "122"},
        {[&] { FileInputStream("/dev/null").available(); }, text(ENOTTY) + kIn + "133"},
        {[&] { FileInputStream("/proc/self/stat").available(); }, text(EINVAL) + kIn + "144"},  // no end to seek to
        {[&] { FileInputStream(stale).close(); }, text(EBADF) + kIn + "156"},
        {[&] { FileInputStream(dir.path().c_str()).read(); }, text(EISDIR) + kIn + "169"},
        {[&] { FileInputStream(dir.path().c_str()).read(&big[0], 4); }, text(EISDIR) + kIn + "182"},
        {[&] { FileInputStream(::dup(pipeFds[0])).skip(1); }, text(ESPIPE) + kIn + "194"},
        {[&] { FileInputStream(stale).markSupported(); }, text(EBADF) + kIn + "204"},
        {[&] { closed.markSupported(); }, text(EBADF) + kIn + "204"},  // intended: no open check
        {[&] { FileInputStream(::dup(pipeFds[0])).mark(1); },
         "File::mark: " + text(ESPIPE) + ", possibly non-seekable fd" + kIn + "223"},
        {[&] { FileInputStream(file.c_str()).reset(); }, "No mark set" + kIn + "231"},
        {[&] { switched.mark(0), ::dup2(pipeFds[0], switchedFd), switched.reset(); }, text(ESPIPE) + kIn + "233"},
        {[&] { switched.mark(0); }, "File::mark: " + text(ESPIPE) + ", possibly non-seekable fd" + kIn + "223"},
        {[&] { switched.reset(); }, "No mark set" + kIn + "231"},  // the failed mark cleared the old one
        {[&] { full.write('x'); }, text(ENOSPC) + kOut + "105"},
        {[&] { full.write("xy", 2); }, text(ENOSPC) + kOut + "113"},
        {[&] { errno = 0, intoPipe.write(big.data(), 80000); }, text(0) + kOut + "113"},  // intended: errno as found
        {[&] { FileOutputStream(stale).close(); }, text(EBADF) + kOut + "94"},
        {[&] { closed.read(); }, "Stream is already closed @ ../../../modules/common-stl/include/io/InputStream, line55"},
        {[&] { standardOut.write('x'); },
         "Stream is already closed @ ../../../modules/common-stl/include/io/OutputStream, line58"},
    };
    for (const auto& [call, want] : cases) EXPECT_EQ(thrown<IOException>(call), want);
    EXPECT_NE(::fcntl(1, F_GETFD), -1);
    ::close(pipeFds[0]), ::close(pipeFds[1]);
}

TEST(FileStreams, EachKindOfDescriptorReportsWhatIsReadyAndWhetherItCanMark) {
    TempDir dir;
    const std::string fifo = dir.file("fifo");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    int pipeFds[2], sockets[2];
    ASSERT_EQ(::pipe(pipeFds), 0);
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, sockets), 0);
    const int fifoFd = openOrFail(fifo, O_RDWR);  // both ends at once: opening does not wait
    const std::pair<int, int> ends[] = {{pipeFds[0], pipeFds[1]}, {fifoFd, fifoFd}, {sockets[0], sockets[1]}};
    int written = 3;
    for (const auto& [readFd, writeFd] : ends) {
        ASSERT_EQ(::write(writeFd, "0123456789", static_cast<size_t>(written)), written);
        FileInputStream in(readFd);
        EXPECT_EQ(in.available(), written);
        EXPECT_FALSE(in.markSupported());
        EXPECT_EQ(in.read(), '0');
        EXPECT_EQ(in.available(), written - 1);
        written += 2;
    }
    ::close(pipeFds[1]), ::close(sockets[1]);

    // Devices cannot mark, yet /dev/zero seeks (to 0) all the same.
    FileInputStream null("/dev/null"), zero("/dev/zero");
    char buf[4] = {1, 1, 1, 1};
    EXPECT_EQ((std::vector<int>{null.markSupported(), null.read(), null.read(buf, 4), zero.markSupported(),
                                zero.read(buf, 4), buf[3]}),
              (std::vector<int>{false, -1, 0, false, 4, 0}));
    zero.mark(1);
    zero.reset();
}

TEST(FileStreams, RegularFilesSeekForAvailableSkipMarkAndReset) {
    TempDir dir;
    const std::string path = dir.file("data"), data = patternBytes(100);
    writeFile(path, data);
    FileInputStream in(path.c_str());
    EXPECT_TRUE(in.markSupported());
    char buf[30];
    ASSERT_EQ(in.read(buf, 30), 30);
    EXPECT_EQ(in.available(), 70);  // and the position stays
    in.mark(0);
    EXPECT_EQ(in.read(), static_cast<unsigned char>(data[30]));
    in.skip(3);
    in.reset();
    in.reset();  // the mark stays for another reset
    ASSERT_EQ(in.read(buf, 5), 5);
    EXPECT_EQ(std::string(buf, 5), data.substr(30, 5));
    EXPECT_EQ(in.skip(-10), -10);  // intended: backwards
    EXPECT_EQ(in.read(), static_cast<unsigned char>(data[25]));
    EXPECT_EQ(in.skip(1000), 1000);  // intended: past the end
    EXPECT_EQ((std::vector<int>{in.available(), in.read(), in.read(buf, 10)}), (std::vector<int>{0, -1, 0}));
}

TEST(FileStreams, OpenModesAndTheDescriptorsThatStayOpen) {
    TempDir dir;
    const struct {
        int mode;
        bool exists;
        std::string after;
    } cases[] = {{0, true, "ab"}, {0, false, "ab"}, {1, true, "0123456789ab"}, {2, true, "0123456789ab"},
                 {2, false, "ab"}, {3, true, "ab23456789"}, {-7, true, "ab23456789"}};
    const mode_t mask = ::umask(0);
    ::umask(mask);
    for (const auto& c : cases) {
        const std::string path = dir.file("out" + std::to_string(c.mode) + (c.exists ? "e" : "m"));
        if (c.exists) writeFile(path, "0123456789");
        FileOutputStream out(path.c_str(), c.mode);
        out.write('a'), out.write("b", 1), out.close(), out.close();
        EXPECT_EQ(readFile(path), c.after) << path;
        struct stat st;
        ASSERT_EQ(::stat(path.c_str(), &st), 0);
        if (!c.exists) {
            EXPECT_EQ(st.st_mode & 0777, 0666 & ~mask) << path;
        }
    }
    // Standard output and error stay open; standard input is closed like any other.
    const int savedIn = ::dup(0);
    for (int fd : {0, 1, 2}) FileOutputStream(fd).close();
    EXPECT_EQ((std::vector<int>{::fcntl(0, F_GETFD) == -1, ::fcntl(1, F_GETFD) == -1, ::fcntl(2, F_GETFD) == -1}),
              (std::vector<int>{true, false, false}));
    ::dup2(savedIn, 0), ::close(savedIn);
}
