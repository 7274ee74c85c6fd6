#include "HostBuffers.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace tuskel_tool {

namespace {

const int kSeekSet = 0;
const int kSeekEnd = 2;

}  // namespace

MappedFile::~MappedFile() {
    if (_data != nullptr) munmap(const_cast<char*>(_data), _size);
}

bool MappedFile::open(const std::string& path, std::string& error) {
    int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        error = path + ": " + std::strerror(errno);
        return false;
    }
    struct stat st;
    bool ok = fstat(fd, &st) == 0;
    if (ok && !S_ISREG(st.st_mode)) {
        errno = EINVAL;
        ok = false;
    }
    // The library addresses its input with long offsets.
    if (ok && static_cast<uintmax_t>(st.st_size) > static_cast<uintmax_t>(LONG_MAX)) {
        errno = EFBIG;
        ok = false;
    }
    if (ok && st.st_size > 0) {
        void* p = mmap(nullptr, static_cast<size_t>(st.st_size), PROT_READ, MAP_PRIVATE, fd, 0);
        if (p == MAP_FAILED) {
            ok = false;
        } else {
            _data = static_cast<const char*>(p);
            _size = static_cast<size_t>(st.st_size);
            madvise(p, _size, MADV_SEQUENTIAL);
        }
    }
    if (!ok) error = path + ": " + std::strerror(errno);
    close(fd);
    return ok;
}

int MemoryInputBuffer::read(char* buf, int len) {
    if (buf == nullptr || len <= 0 || static_cast<size_t>(_position) >= _size) return 0;
    size_t n = _size - static_cast<size_t>(_position);
    if (n > static_cast<size_t>(len)) n = static_cast<size_t>(len);
    std::memcpy(buf, _data + _position, n);
    _position += static_cast<long>(n);
    return static_cast<int>(n);
}

int MemoryInputBuffer::write(const char*, int) { return 0; }

long MemoryInputBuffer::seek(int origin, long offset) {
    long base = origin == kSeekEnd ? static_cast<long>(_size) : origin == kSeekSet ? 0 : _position;
    long target;
    if (__builtin_add_overflow(base, offset, &target) || target < 0) return -1;
    _position = target;
    return target;
}

int SequentialFdBuffer::read(char*, int) { return 0; }

int SequentialFdBuffer::write(const char* buf, int len) {
    int done = 0;
    while (done < len) {
        ssize_t n = ::write(_fd, buf + done, static_cast<size_t>(len - done));
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            if (!_failed) std::fprintf(stderr, "tuskel: %s: %s\n", _name.c_str(), std::strerror(errno));
            _failed = true;
            break;
        }
        done += static_cast<int>(n);
    }
    _position += done;
    return done;
}

long SequentialFdBuffer::seek(int origin, long offset) {
    // Everything before the position is written, so it is also the end.
    if ((origin == kSeekSet && offset == _position) || (origin == kSeekEnd && offset == 0)) return _position;
    if (!_failed) std::fprintf(stderr, "tuskel: %s: cannot seek back in the output\n", _name.c_str());
    _failed = true;
    return -1;
}

}  // namespace tuskel_tool
