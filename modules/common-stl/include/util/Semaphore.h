#ifndef QRN_UTIL_SEMAPHORE_H
#define QRN_UTIL_SEMAPHORE_H

#include "util/Mutex.h"

namespace QRN_SPACE {

/// A counting semaphore over a Mutex and a Condition, for any number of
/// threads.
///
/// Never throws; the initial count is checked by an assertion that aborts
/// the process in every build.
/// @ingroup sync
class TUSKEL_API Semaphore : public RNObject {
public:
    /// A semaphore with `count` permits; `count` must be at least 1 (else the
    /// process aborts).
    explicit Semaphore(int count);
    Semaphore(const Semaphore&) = delete;
    Semaphore& operator=(const Semaphore&) = delete;
    ~Semaphore() override;

    /// Takes a permit, blocking while the count is below 1; always 0.
    int wait();
    /// Takes a permit if one is free; 0, or -1 when the count is not positive.
    int trywait();
    /// Returns a permit and wakes one waiter; always 0.
    int post();

private:
    int _count;
    Mutex _mutex;     // guards _count
    Condition _more;  // signalled when the count rises above 0
};

}  // namespace QRN_SPACE

#endif
