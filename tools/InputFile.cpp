#include "InputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>

namespace tuskel_tool {

namespace {

using QRN_SPACE::IOException;

// Large enough that the kernel's read-ahead does the rest, small enough to
// be nothing beside the output.
const long kWindow = 256 * 1024;
// A window taken forward keeps this much of what lies before it: a reader
// that looked ahead (the inflater reads 33,792 bytes at a time) and steps
// back to where its data ended finds it still there.
const long kKeepBehind = 64 * 1024;

[[noreturn]] void throwSystemError(const std::string& path) {
    throw IOException(path + ": " + std::strerror(errno));
}

}  // namespace

InputFile::InputFile(const std::string& path) : _path(path) {
    _fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (_fd < 0) throwSystemError(path);
    struct stat st;
    if (fstat(_fd, &st) != 0) {
        int error = errno;
        ::close(_fd);
        errno = error;
        throwSystemError(path);
    }
    if (!S_ISREG(st.st_mode)) {
        ::close(_fd);
        throw IOException(path + (S_ISDIR(st.st_mode) ? ": is a directory" : ": not a regular file"));
    }
    // Positions are longs: a file a long cannot address is refused, not cut.
    if (static_cast<unsigned long long>(st.st_size) > static_cast<unsigned long long>(LONG_MAX)) {
        ::close(_fd);
        errno = EFBIG;
        throwSystemError(path);
    }
    _size = static_cast<long>(st.st_size);
    _window.reset(new char[kWindow]);
}

InputFile::~InputFile() {
    if (_fd >= 0) ::close(_fd);
}

bool InputFile::_load(long pos) {
    if (pos >= _size) return false;
    if (pos >= _windowStart && pos < _windowStart + _windowLength) return true;
    const long start = pos >= _windowStart + _windowLength ? std::max(pos - kKeepBehind, 0L) : pos;
    const long want = std::min(kWindow, _size - start);
    long got = 0;
    while (got < want) {
        ssize_t n = pread(_fd, _window.get() + got, static_cast<size_t>(want - got), static_cast<off_t>(start + got));
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) throwSystemError(_path);
        if (n == 0) break;  // the file shrank under us: what is there is all
        got += n;
    }
    _windowStart = start;
    _windowLength = got;
    return pos < start + got;
}

int InputFile::read(long pos) {
    _checkPos(pos);
    if (!_load(pos)) return -1;
    _reached = std::max(_reached, pos + 1);
    return static_cast<unsigned char>(_window[pos - _windowStart]);
}

int InputFile::read(long pos, char* buf, int len) {
    _checkPos(pos);
    if (buf == nullptr || len < 1) return 0;
    int copied = 0;
    while (copied < len && _load(pos + copied)) {
        const long at = pos + copied - _windowStart;
        const int n = static_cast<int>(std::min<long>(len - copied, _windowLength - at));
        std::memcpy(buf + copied, _window.get() + at, static_cast<size_t>(n));
        copied += n;
    }
    _reached = std::max(_reached, pos + copied);
    return copied;
}

void InputFile::_readOnly() const { throw IOException(_path + ": the input is read-only"); }

void InputFile::write(long, char) { _readOnly(); }
int InputFile::write(long, const char*, int) { _readOnly(); }
void InputFile::insert(long, char) { _readOnly(); }
int InputFile::insert(long, const char*, int) { _readOnly(); }
void InputFile::cut(long) { _readOnly(); }
int InputFile::cut(long, int) { _readOnly(); }
void InputFile::append(char) { _readOnly(); }
int InputFile::append(const char*, int) { _readOnly(); }
void InputFile::truncate(long) { _readOnly(); }

}  // namespace tuskel_tool
