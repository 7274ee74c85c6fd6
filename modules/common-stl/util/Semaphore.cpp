#include "util/Semaphore.h"

#include "AlwaysAssert.h"

namespace QRN_SPACE {

namespace {

const unsigned kLineCount = 180;

}  // namespace

Semaphore::Semaphore(int count) : _count(count), _more(_mutex) {
    // Checked once the mutex and the condition exist.
    QRN_ALWAYS_ASSERT(count >= 1, kLineCount);
}

Semaphore::~Semaphore() = default;

int Semaphore::wait() {
    Monitor hold(_mutex);
    while (_count < 1) _more.wait();
    --_count;
    return 0;
}

int Semaphore::trywait() {
    Monitor hold(_mutex);
    if (_count <= 0) return -1;
    --_count;
    return 0;
}

int Semaphore::post() {
    Monitor hold(_mutex);
    if (++_count > 0) _more.notify();
    return 0;
}

}  // namespace QRN_SPACE
