#include "util/RWLock.h"

namespace QRN_SPACE {

RWLock::RWLock() : _writerGo(_mutex), _readerGo(_mutex) {}

RWLock::~RWLock() = default;

int RWLock::rdlock() {
    Monitor hold(_mutex);
    // Only an active writer keeps readers out (reader preference, intended).
    while (_writers != 0) _readerGo.wait();
    ++_readers;
    return 0;
}

int RWLock::tryrdlock() {
    Monitor hold(_mutex);
    if (_writers != 0) return -1;
    ++_readers;
    return 0;
}

int RWLock::wrlock() {
    Monitor hold(_mutex);
    while (_writers != 0 || _readers != 0) _writerGo.wait();
    ++_writers;
    return 0;
}

int RWLock::trywrlock() {
    Monitor hold(_mutex);
    if (_writers != 0 || _readers != 0) return -1;
    ++_writers;
    return 0;
}

int RWLock::unlock() {
    Monitor hold(_mutex);
    if (_writers != 0) {
        --_writers;
        _writerGo.notify();
        _readerGo.notifyAll();
        return 0;
    }
    // No check for a holder: an unmatched unlock takes the count below zero.
    if (--_readers == 0) _writerGo.notify();
    return 0;
}

}  // namespace QRN_SPACE
