#ifndef QRN_UTIL_FILELOCK_H
#define QRN_UTIL_FILELOCK_H

#include <fcntl.h>

#include "lang/RNObject.h"

namespace QRN_SPACE {

// An exclusive fcntl record lock on a whole lock file: it serialises
// processes, not threads (two threads of one process both get it). Never
// throws: -1 reports a failure, with errno set by the system where it comes
// from a system call. The file is created when missing and removed only by
// unlink(). One object is not guarded against use from several threads.
class TUSKEL_API FileLock : public RNObject {
public:
    static const int PATH_SIZE = 256;  // paths are cut at PATH_SIZE - 1 bytes

    // `share` has no effect (intended): the path is opened through
    // setPath(path), whose own flag defaults to false. Only an explicit
    // setPath(path, true) makes the lock file world-writable.
    FileLock(const char* path, bool share);
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;
    ~FileLock() override;  // closes the file, never removes it

    // Closes the current file, then opens `path`, creating it with mode 0600
    // (less the umask); `share` then sets its mode to 0666. An empty or null
    // path leaves the lock closed.
    void setPath(const char* path, bool share = false);

    int lock();    // blocks until the lock is granted; -1 when closed
    int unlock();  // -1 when closed
    int close();   // -1 when closed already or when close fails
    int unlink();  // removes the lock file; -1 when closed
    bool isValid() const;

private:
    int _fd = -1;                    // the open lock file, -1 when closed
    struct flock _lockRequest{};     // write lock on the whole file
    struct flock _unlockRequest{};   // the same range with F_UNLCK
    char _path[PATH_SIZE] = {};      // always terminated at PATH_SIZE - 1
    bool _share = false;             // world-writable lock file wanted
};

}  // namespace QRN_SPACE

#endif
