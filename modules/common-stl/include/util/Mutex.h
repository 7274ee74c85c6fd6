#ifndef QRN_UTIL_MUTEX_H
#define QRN_UTIL_MUTEX_H

#include <pthread.h>

#include "lang/RNObject.h"

namespace QRN_SPACE {

// A non-recursive POSIX mutex. Never throws: results are the POSIX codes.
class TUSKEL_API Mutex : public RNObject {
public:
    Mutex();
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;
    ~Mutex() override;

    int lock();
    int trylock();  // EBUSY when held
    int unlock();

private:
    friend class Condition;
    pthread_mutex_t _mutex;
};

// Holds a Mutex for the rest of the enclosing block. Does not own it.
class TUSKEL_API Monitor : public RNObject {
public:
    explicit Monitor(Mutex& mutex);
    Monitor(const Monitor&) = delete;
    Monitor& operator=(const Monitor&) = delete;
    ~Monitor() override;

private:
    Mutex* _mutex;
};

// A POSIX condition variable bound to a Mutex it does not own (which must
// outlive it). Waits need that mutex held; callers re-test their predicate.
class TUSKEL_API Condition : public RNObject {
public:
    explicit Condition(Mutex& mutex);
    Condition(const Condition&) = delete;
    Condition& operator=(const Condition&) = delete;
    ~Condition() override;

    int wait();
    // Deadline = time() + seconds, in whole seconds, so the wait may be up
    // to a second shorter than asked. ETIMEDOUT when it passed.
    int wait(int seconds);
    int notify();
    int notifyAll();
    int lock();
    int unlock();

private:
    pthread_cond_t _cond;
    Mutex* _mutex;
};

}  // namespace QRN_SPACE

#endif
