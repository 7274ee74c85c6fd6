#include "util/Mutex.h"

#include <ctime>
#include <limits>

namespace QRN_SPACE {

Mutex::Mutex() { pthread_mutex_init(&_mutex, nullptr); }

Mutex::~Mutex() { pthread_mutex_destroy(&_mutex); }

int Mutex::lock() { return pthread_mutex_lock(&_mutex); }

int Mutex::trylock() { return pthread_mutex_trylock(&_mutex); }

int Mutex::unlock() { return pthread_mutex_unlock(&_mutex); }

Monitor::Monitor(Mutex& mutex) : _mutex(&mutex) { _mutex->lock(); }

Monitor::~Monitor() { _mutex->unlock(); }

Condition::Condition(Mutex& mutex) : _mutex(&mutex) { pthread_cond_init(&_cond, nullptr); }

Condition::~Condition() { pthread_cond_destroy(&_cond); }

int Condition::wait() { return pthread_cond_wait(&_cond, &_mutex->_mutex); }

int Condition::wait(int seconds) {
    struct timespec deadline;
    time_t now = time(nullptr);
    // Whole seconds only. time_t is 32-bit on i386: a far deadline saturates
    // instead of overflowing into the past.
    const time_t latest = std::numeric_limits<time_t>::max();
    deadline.tv_sec = (seconds > 0 && now > latest - seconds) ? latest : now + seconds;
    deadline.tv_nsec = 0;
    return pthread_cond_timedwait(&_cond, &_mutex->_mutex, &deadline);
}

int Condition::notify() { return pthread_cond_signal(&_cond); }

int Condition::notifyAll() { return pthread_cond_broadcast(&_cond); }

int Condition::lock() { return _mutex->lock(); }

int Condition::unlock() { return _mutex->unlock(); }

}  // namespace QRN_SPACE
