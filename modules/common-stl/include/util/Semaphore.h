#ifndef QRN_UTIL_SEMAPHORE_H
#define QRN_UTIL_SEMAPHORE_H

#include "util/Mutex.h"

namespace QRN_SPACE {

// A counting semaphore over a Mutex and a Condition. Never throws; the
// initial count is checked by an assertion that aborts in every build.
class TUSKEL_API Semaphore : public RNObject {
public:
    explicit Semaphore(int count);  // count >= 1
    Semaphore(const Semaphore&) = delete;
    Semaphore& operator=(const Semaphore&) = delete;
    ~Semaphore() override;

    int wait();     // blocks while the count is below 1; always 0
    int trywait();  // 0, or -1 when the count is not positive
    int post();     // always 0

private:
    int _count;
    Mutex _mutex;     // guards _count
    Condition _more;  // signalled when the count rises above 0
};

}  // namespace QRN_SPACE

#endif
