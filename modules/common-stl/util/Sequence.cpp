#include "util/Sequence.h"

#include "AlwaysAssert.h"

namespace QRN_SPACE {

namespace {

const unsigned kLineInitVal = 214;
const unsigned kLineSize = 236;

// v + step in two's complement: the counter is meant to run past the largest
// int into the negatives, where the next call notices the wrap. Done in
// unsigned arithmetic because signed overflow is undefined.
int wrappingAdd(int v, unsigned int step) {
    return static_cast<int>(static_cast<unsigned int>(v) + step);
}

}  // namespace

Sequence::Sequence(int initVal) {
    // Checked once the mutex exists, before the value is stored.
    QRN_ALWAYS_ASSERT(initVal >= 0, kLineInitVal);
    _next = initVal;
}

Sequence::~Sequence() = default;

int Sequence::getNext() {
    Monitor hold(_mutex);
    int v = _next;
    _next = wrappingAdd(v, 1);
    if (v < 0) {
        // Restart at 0 and store 0, so the next call answers 0 again
        // (intended).
        _next = 0;
        return 0;
    }
    return v;
}

int Sequence::getNext(unsigned int size) {
    QRN_ALWAYS_ASSERT(size > 0, kLineSize);
    Monitor hold(_mutex);
    int v = _next;
    if (v < 0) {
        _next = static_cast<int>(size);  // the block 0 .. size-1 is handed out
        return 0;
    }
    _next = wrappingAdd(v, size);
    return v;
}

}  // namespace QRN_SPACE
