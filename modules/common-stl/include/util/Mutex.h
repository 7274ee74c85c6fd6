#ifndef QRN_UTIL_MUTEX_H
#define QRN_UTIL_MUTEX_H

#include <pthread.h>

#include "lang/RNObject.h"

namespace QRN_SPACE {

/// A non-recursive POSIX mutex with default attributes.
///
/// Never throws: results are the POSIX codes (0 on success). Locking it twice
/// from one thread deadlocks; unlocking it from a thread that does not hold
/// it is undefined, as for pthread_mutex_t. Destroy it only when unlocked.
/// @ingroup sync
class TUSKEL_API Mutex : public RNObject {
public:
    /// An unlocked mutex.
    Mutex();
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;
    ~Mutex() override;

    /// Blocks until the calling thread holds the mutex; 0, or a POSIX code.
    int lock();
    /// Takes the mutex if it is free; 0, EBUSY when held.
    int trylock();
    /// Releases the mutex the calling thread holds; 0, or a POSIX code.
    int unlock();

private:
    friend class Condition;
    pthread_mutex_t _mutex;
};

/// Holds a Mutex for the rest of the enclosing block, released on every exit
/// including an exception.
///
/// Does not own the mutex, which must outlive it. Never throws; the lock's
/// result is not checked.
/// @ingroup sync
class TUSKEL_API Monitor : public RNObject {
public:
    /// Locks `mutex`, blocking until it is held.
    explicit Monitor(Mutex& mutex);
    Monitor(const Monitor&) = delete;
    Monitor& operator=(const Monitor&) = delete;
    /// Unlocks the mutex.
    ~Monitor() override;

private:
    Mutex* _mutex;
};

/// A POSIX condition variable bound to a Mutex.
///
/// Does not own the mutex, which must outlive it. Waits need that mutex
/// held; callers re-test their predicate, since a wait may end without a
/// notification. Never throws: results are the POSIX codes (0 on success).
/// Destroy it only when no thread waits.
/// @ingroup sync
class TUSKEL_API Condition : public RNObject {
public:
    /// A condition over `mutex`, not owned.
    explicit Condition(Mutex& mutex);
    Condition(const Condition&) = delete;
    Condition& operator=(const Condition&) = delete;
    ~Condition() override;

    /// Releases the mutex, waits for a notification and takes the mutex
    /// again; 0, or a POSIX code.
    int wait();
    /// As wait(), with a deadline of time() + `seconds`, in whole seconds, so
    /// the wait may be up to a second shorter than asked. ETIMEDOUT when it
    /// passed.
    int wait(int seconds);
    /// Wakes one waiting thread, if any; 0.
    int notify();
    /// Wakes every waiting thread; 0.
    int notifyAll();
    /// Locks the bound mutex (Mutex::lock()).
    int lock();
    /// Unlocks the bound mutex (Mutex::unlock()).
    int unlock();

private:
    pthread_cond_t _cond;
    Mutex* _mutex;
};

}  // namespace QRN_SPACE

#endif
