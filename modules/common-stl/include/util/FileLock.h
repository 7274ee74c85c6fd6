#ifndef QRN_UTIL_FILELOCK_H
#define QRN_UTIL_FILELOCK_H

#include <fcntl.h>

#include "lang/RNObject.h"

namespace QRN_SPACE {

/// An exclusive fcntl record lock on a whole lock file.
///
/// It serialises **processes, not threads**: two threads of one process both
/// get it. Never throws: -1 reports a failure, with errno set by the system
/// where it comes from a system call. The file is created when missing and
/// removed only by unlink(). One object is not guarded against use from
/// several threads.
/// @ingroup sync
class TUSKEL_API FileLock : public RNObject {
public:
    /// Paths are cut at PATH_SIZE - 1 bytes.
    static const int PATH_SIZE = 256;

    /// Opens the lock file at `path` (copied) through setPath(path).
    /// `share` has no effect (intended): setPath's own flag defaults to
    /// false. Only an explicit setPath(path, true) makes the lock file
    /// world-writable.
    FileLock(const char* path, bool share);
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;
    /// Closes the file (which releases the lock), never removes it.
    ~FileLock() override;

    /// Closes the current file, then opens `path` (copied), creating it with
    /// mode 0600 (less the umask); `share` then sets its mode to 0666. An
    /// empty or null path, or one that cannot be opened, leaves the lock
    /// closed.
    void setPath(const char* path, bool share = false);

    /// Blocks until the lock is granted; 0, or -1 when closed or refused.
    int lock();
    /// Releases the lock; 0, or -1 when closed or refused.
    int unlock();
    /// Closes the file; 0, or -1 when closed already or when close fails.
    int close();
    /// Removes the lock file; 0, or -1 when closed or refused.
    int unlink();
    /// True while a lock file is open.
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
