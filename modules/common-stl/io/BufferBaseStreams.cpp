#include <climits>

#include "io/BufferBaseInputStream.h"
#include "io/BufferBaseOutputStream.h"

namespace QRN_SPACE {

namespace {

// Cursor arithmetic that saturates instead of overflowing: a cursor moved
// absurdly far still only reads the end (or fails the position check).
long advance(long position, long delta) {
    if (delta > 0 && position > LONG_MAX - delta) return LONG_MAX;
    if (delta < 0 && position < LONG_MIN - delta) return LONG_MIN;
    return position + delta;
}

}  // namespace

BufferBaseInputStream::~BufferBaseInputStream() = default;

int BufferBaseInputStream::available() {
    _ensureOpen();
    long left = _buffer->getSize() - _position;
    if (left < 0) return 0;
    return left > INT_MAX ? INT_MAX : static_cast<int>(left);
}

void BufferBaseInputStream::close() { _closed = true; }

int BufferBaseInputStream::read() {
    _ensureOpen();
    int c = _buffer->read(_position);
    if (c < 0) return -1;
    ++_position;
    return c;
}

int BufferBaseInputStream::read(char* buf, int len) {
    _ensureOpen();
    int n = _buffer->read(_position, buf, len);
    _position = advance(_position, n);
    return n;
}

long BufferBaseInputStream::skip(long n) {
    _ensureOpen();
    if (n < 0) return 0;
    _position = advance(_position, n);
    return n;
}

bool BufferBaseInputStream::markSupported() {
    _ensureOpen();
    return true;
}

void BufferBaseInputStream::mark(int) {
    _ensureOpen();
    _mark = _position;
}

void BufferBaseInputStream::reset() {
    _ensureOpen();
    if (_mark >= 0) _position = _mark;
}

BufferBaseOutputStream::~BufferBaseOutputStream() = default;

void BufferBaseOutputStream::close() { _closed = true; }

void BufferBaseOutputStream::flush() {}

void BufferBaseOutputStream::write(char c) {
    _ensureOpen();
    _buffer->write(_position, c);
    _position = advance(_position, 1);
}

int BufferBaseOutputStream::write(const char* buf, int len) {
    _ensureOpen();
    int written = _buffer->write(_position, buf, len);
    _position = advance(_position, len);
    return written;
}

}  // namespace QRN_SPACE
