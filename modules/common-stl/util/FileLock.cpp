#include "util/FileLock.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

namespace QRN_SPACE {

namespace {

const mode_t kPrivateMode = 0600;
const mode_t kSharedMode = 0666;

}  // namespace

FileLock::FileLock(const char* path, bool share) : _share(share) {
    // setPath's flag defaults to false, so `share` is overwritten (intended).
    setPath(path);
}

FileLock::~FileLock() { close(); }

void FileLock::setPath(const char* path, bool share) {
    close();
    _share = share;
    // A null path is taken as the empty one: the lock stays closed.
    if (path == nullptr || path[0] == '\0') return;
    std::strncpy(_path, path, PATH_SIZE - 1);
    _path[PATH_SIZE - 1] = '\0';
    _fd = ::open(_path, O_RDWR | O_CREAT, kPrivateMode);
    if (_fd != -1 && _share) fchmod(_fd, kSharedMode);
    // Length 0 locks the whole file however long it grows.
    _lockRequest.l_type = F_WRLCK;
    _lockRequest.l_whence = SEEK_SET;
    _lockRequest.l_start = 0;
    _lockRequest.l_len = 0;
    _unlockRequest = _lockRequest;
    _unlockRequest.l_type = F_UNLCK;
}

int FileLock::lock() {
    if (_fd == -1) return -1;
    return fcntl(_fd, F_SETLKW, &_lockRequest);
}

int FileLock::unlock() {
    if (_fd == -1) return -1;
    return fcntl(_fd, F_SETLKW, &_unlockRequest);
}

int FileLock::close() {
    if (_fd == -1 || ::close(_fd) != 0) return -1;
    _fd = -1;
    return 0;
}

int FileLock::unlink() {
    // A lock whose file is not open does not remove it.
    if (_fd == -1) return -1;
    return ::unlink(_path);
}

bool FileLock::isValid() const { return _fd != -1; }

}  // namespace QRN_SPACE
