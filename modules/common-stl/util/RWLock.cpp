#include "util/RWLock.h"

namespace QRN_SPACE {

namespace {

const uint64_t kOneWriter = uint64_t(1) << 32;

int writersOf(uint64_t counts) { return static_cast<int>(counts >> 32); }

int readersOf(uint64_t counts) { return static_cast<int32_t>(static_cast<uint32_t>(counts)); }

// The same word with the reader count moved by delta (wrapping in 32 bits,
// never carrying into the writer half).
uint64_t withReaders(uint64_t counts, int delta) {
    uint32_t readers = static_cast<uint32_t>(counts) + static_cast<uint32_t>(delta);
    return (counts & ~uint64_t(0xFFFFFFFFu)) | readers;
}

}  // namespace

// A waiter registers itself (under the mutex) before it looks at the counts,
// and an unlocker changes the counts before it looks for waiters; both with
// sequentially consistent operations, so at least one of them sees the
// other and no wake-up is lost.

RWLock::RWLock() : _writerGo(_mutex), _readerGo(_mutex) {}

RWLock::~RWLock() = default;

int RWLock::rdlock() {
    if (tryrdlock() == 0) return 0;
    Monitor hold(_mutex);
    _waitingReaders.fetch_add(1);
    // Only an active writer keeps readers out (reader preference, intended).
    while (tryrdlock() != 0) _readerGo.wait();
    _waitingReaders.fetch_sub(1);
    return 0;
}

int RWLock::tryrdlock() {
    uint64_t counts = _counts.load();
    while (writersOf(counts) == 0) {
        if (_counts.compare_exchange_weak(counts, withReaders(counts, 1))) return 0;
    }
    return -1;
}

int RWLock::wrlock() {
    if (trywrlock() == 0) return 0;
    Monitor hold(_mutex);
    _waitingWriters.fetch_add(1);
    while (trywrlock() != 0) _writerGo.wait();
    _waitingWriters.fetch_sub(1);
    return 0;
}

int RWLock::trywrlock() {
    uint64_t idle = 0;
    return _counts.compare_exchange_strong(idle, kOneWriter) ? 0 : -1;
}

int RWLock::unlock() {
    uint64_t counts = _counts.load();
    for (;;) {
        if (writersOf(counts) != 0) {
            if (!_counts.compare_exchange_weak(counts, counts - kOneWriter)) continue;
            if (_waitingWriters.load() != 0 || _waitingReaders.load() != 0) {
                Monitor hold(_mutex);
                _writerGo.notify();
                _readerGo.notifyAll();
            }
            return 0;
        }
        // No check for a holder: an unmatched unlock takes the count below zero.
        uint64_t released = withReaders(counts, -1);
        if (!_counts.compare_exchange_weak(counts, released)) continue;
        if (readersOf(released) == 0 && _waitingWriters.load() != 0) {
            Monitor hold(_mutex);
            _writerGo.notify();
        }
        return 0;
    }
}

}  // namespace QRN_SPACE
