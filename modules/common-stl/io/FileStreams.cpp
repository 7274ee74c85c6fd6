#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>

#include "io/FileInputStream.h"
#include "io/FileOutputStream.h"

namespace QRN_SPACE {

namespace {

const char* const kInSource = "io/InputStream";
const int kLineOpenIn = 99;
const int kLineAvailableBadFd = 116;
const int kLineAvailableStat = 122;
const int kLineAvailableIoctl = 133;
const int kLineAvailableSeek = 144;
const int kLineCloseIn = 156;
const int kLineReadByte = 169;
const int kLineReadBlock = 182;
const int kLineSkip = 194;
const int kLineMarkSupported = 204;
const int kLineMark = 223;
const int kLineNoMark = 231;
const int kLineReset = 233;

const char* const kOutSource = "io/OutputStream";
const int kLineOpenOut = 68;
const int kLineCloseOut = 94;
const int kLineWriteByte = 105;
const int kLineWriteBlock = 113;

const mode_t kCreateMode = 0666;

[[noreturn]] void failIn(int line) { throwSystemError({kInSource, line}, errno); }
[[noreturn]] void failOut(int line) { throwSystemError({kOutSource, line}, errno); }

// Kinds of descriptor that cannot seek and whose readable count the kernel
// keeps (FIONREAD) instead.
bool isStreamLike(mode_t mode) { return S_ISCHR(mode) || S_ISFIFO(mode) || S_ISSOCK(mode); }

int openFlags(int mode) {
    switch (mode) {
    case FileOutputStream::MODE_CREATE: return O_WRONLY | O_CREAT | O_TRUNC;
    case FileOutputStream::MODE_APPEND: return O_WRONLY | O_APPEND;
    case FileOutputStream::MODE_CREATE_APPEND: return O_WRONLY | O_CREAT | O_APPEND;
    default: return O_WRONLY;
    }
}

int clampToInt(off_t n) { return n < 0 ? 0 : n > INT_MAX ? INT_MAX : static_cast<int>(n); }

// The descriptor of `path`; a failure marks the stream closed and throws
// path + ": " + the system error at `site`.
int openPath(const char* path, int flags, bool& closed, ErrorSite site) {
    const int fd = ::open(path, flags, kCreateMode);
    if (fd < 0) {
        const int error = errno;
        closed = true;
        throwSystemError(site, error, std::string(path) + ": ");
    }
    return fd;
}

// For destructors: a failure to close has nobody to go to from there.
template <class Stream>
void closeQuietly(Stream& stream) {
    try {
        stream.close();
    } catch (...) {
    }
}

}  // namespace

FileInputStream::FileInputStream(const char* path)
    : _fd(openPath(path, O_RDONLY, _closed, {kInSource, kLineOpenIn})) {}

FileInputStream::FileInputStream(int fd) : _fd(fd) {}

FileInputStream::~FileInputStream() { closeQuietly(*this); }

int FileInputStream::available() {
    _ensureOpen();
    if (_fd == -1) {
        errno = EBADF;
        failIn(kLineAvailableBadFd);
    }
    struct stat st;
    if (::fstat(_fd, &st) != 0) failIn(kLineAvailableStat);
    if (isStreamLike(st.st_mode)) {
        int ready = 0;
        if (::ioctl(_fd, FIONREAD, &ready) != 0) failIn(kLineAvailableIoctl);
        return ready;
    }
    const off_t here = ::lseek(_fd, 0, SEEK_CUR);
    const off_t end = here < 0 ? -1 : ::lseek(_fd, 0, SEEK_END);
    if (end < 0 || ::lseek(_fd, here, SEEK_SET) < 0) failIn(kLineAvailableSeek);
    return clampToInt(end - here);  // 0 once a skip went past the end
}

void FileInputStream::close() {
    if (_closed) return;
    _closed = true;
    const int result = ::close(_fd);
    _fd = -1;
    if (result != 0) failIn(kLineCloseIn);
}

int FileInputStream::read() {
    _ensureOpen();
    unsigned char c;
    const ssize_t got = ::read(_fd, &c, 1);
    if (got < 0) failIn(kLineReadByte);
    return got == 0 ? -1 : c;
}

int FileInputStream::read(char* buf, int len) {
    _ensureOpen();
    if (len < 1) return 0;
    const ssize_t got = ::read(_fd, buf, static_cast<size_t>(len));
    if (got < 0) failIn(kLineReadBlock);
    return static_cast<int>(got);
}

long FileInputStream::skip(long n) {
    _ensureOpen();
    const off_t from = ::lseek(_fd, 0, SEEK_CUR);
    const off_t to = from < 0 ? -1 : ::lseek(_fd, static_cast<off_t>(n), SEEK_CUR);
    if (to < 0) failIn(kLineSkip);
    return static_cast<long>(to - from);  // intended: unchecked n, backwards or past the end
}

bool FileInputStream::markSupported() {
    struct stat st;
    if (::fstat(_fd, &st) != 0) failIn(kLineMarkSupported);
    return !isStreamLike(st.st_mode);
}

void FileInputStream::mark(int) {
    _ensureOpen();
    _mark = ::lseek(_fd, 0, SEEK_CUR);  // -1, no mark, when the position cannot be taken
    if (_mark < 0) {
        const int error = errno;
        throwSystemError({kInSource, kLineMark}, error, "File::mark: ", ", possibly non-seekable fd");
    }
}

void FileInputStream::reset() {
    _ensureOpen();
    if (_mark == -1) throwAt<IOException>("No mark set", {kInSource, kLineNoMark});
    if (::lseek(_fd, _mark, SEEK_SET) < 0) failIn(kLineReset);
}

FileOutputStream::FileOutputStream(const char* path, int mode)
    : _fd(openPath(path, openFlags(mode), _closed, {kOutSource, kLineOpenOut})) {}

FileOutputStream::FileOutputStream(int fd) : _fd(fd) {}

FileOutputStream::~FileOutputStream() { closeQuietly(*this); }

void FileOutputStream::close() {
    if (_closed) return;
    _closed = true;
    // Standard output and standard error belong to the process; standard
    // input is closed like any other descriptor.
    if (_fd == STDOUT_FILENO || _fd == STDERR_FILENO) return;
    const int result = ::close(_fd);
    _fd = -1;
    if (result != 0) failOut(kLineCloseOut);
}

void FileOutputStream::write(char c) {
    _ensureOpen();
    if (::write(_fd, &c, 1) != 1) failOut(kLineWriteByte);
}

int FileOutputStream::write(const char* buf, int len) {
    _ensureOpen();
    if (len < 0) {
        // A negative length would reach write(2) as a huge count.
        errno = EINVAL;
        failOut(kLineWriteBlock);
    }
    // Intended: a short write is an error, and its text is whatever errno holds.
    if (::write(_fd, buf, static_cast<size_t>(len)) != len) failOut(kLineWriteBlock);
    return len;
}

}  // namespace QRN_SPACE
