#ifndef QRN_UTIL_RWLOCK_H
#define QRN_UTIL_RWLOCK_H

#include <atomic>
#include <cstdint>

#include "util/Mutex.h"

namespace QRN_SPACE {

/// A readers-writer lock built from a Mutex and two Conditions. Never throws.
///
/// Readers are preferred on purpose: only an active writer holds readers
/// back, a writer that is merely waiting does not, so **a steady stream of
/// readers can starve a writer**. unlock() releases by the lock's own counts,
/// not by who calls it: with a writer active it releases the writer,
/// otherwise one reader; called with no holder it drives the reader count
/// below zero (unchecked, as the blocking calls are). Not recursive: a
/// thread that holds it shared and asks for it exclusively deadlocks.
///
/// The two counts live in one atomic word so that an uncontended lock or
/// unlock is a single compare-and-swap; the mutex and conditions are used
/// only when a caller has to wait or somebody is waiting.
/// @ingroup sync
class TUSKEL_API RWLock : public RNObject {
public:
    /// An unheld lock.
    RWLock();
    RWLock(const RWLock&) = delete;
    RWLock& operator=(const RWLock&) = delete;
    ~RWLock() override;

    /// Takes the lock shared, blocking while a writer is active; always 0.
    int rdlock();
    /// Takes the lock shared if no writer is active; 0, or -1.
    int tryrdlock();
    /// Takes the lock exclusively, blocking while anybody holds it; always 0.
    int wrlock();
    /// Takes the lock exclusively if nobody holds it; 0, or -1.
    int trywrlock();
    /// Releases the writer if one is active, else one reader; always 0.
    int unlock();

private:
    // Active writers (0 or 1) in the high half, active readers (a signed
    // 32-bit count) in the low half.
    std::atomic<uint64_t> _counts{0};
    std::atomic<int> _waitingReaders{0};  // changed under _mutex only
    std::atomic<int> _waitingWriters{0};  // changed under _mutex only
    Mutex _mutex;         // serialises waiting and waking
    Condition _writerGo;  // waited on by writers
    Condition _readerGo;  // waited on by readers
};

/// Holds an RWLock shared for the rest of the enclosing block, released on
/// every exit including an exception. Does not own the lock. Header-only.
/// @ingroup sync
class ReadGuard {
public:
    /// Takes `lock` shared.
    explicit ReadGuard(RWLock& lock) : _lock(lock) { _lock.rdlock(); }
    ReadGuard(const ReadGuard&) = delete;
    ReadGuard& operator=(const ReadGuard&) = delete;
    /// Releases the lock.
    ~ReadGuard() { _lock.unlock(); }

private:
    RWLock& _lock;
};

/// Holds an RWLock exclusively for the rest of the enclosing block, released
/// on every exit including an exception. Does not own the lock. Header-only.
/// @ingroup sync
class WriteGuard {
public:
    /// Takes `lock` exclusively.
    explicit WriteGuard(RWLock& lock) : _lock(lock) { _lock.wrlock(); }
    WriteGuard(const WriteGuard&) = delete;
    WriteGuard& operator=(const WriteGuard&) = delete;
    /// Releases the lock.
    ~WriteGuard() { _lock.unlock(); }

private:
    RWLock& _lock;
};

}  // namespace QRN_SPACE

#endif
