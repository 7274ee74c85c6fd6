#include "io/BufferedOutputStream.h"

#include <algorithm>
#include <cstring>

namespace QRN_SPACE {

BufferedOutputStream::BufferedOutputStream(OutputStream& out, int size)
    : FilterOutputStream(out), _size(size < 1 ? DEFAULT_SIZE : size) {
    _buffer.reset(new char[static_cast<size_t>(_size)]);
}

BufferedOutputStream::~BufferedOutputStream() {
    try {
        close();
    } catch (...) {
        // The wrapped stream's failure has nobody to go to from here.
    }
}

void BufferedOutputStream::close() {
    if (_closed) return;
    flush();
    _buffer.reset();
    _closed = true;
}

void BufferedOutputStream::flush() {
    _ensureOpen();
    if (_count < 1) return;
    _out.write(_buffer.get(), _count);
    _count = 0;  // intended: the wrapped stream's own flush() is not called
}

int BufferedOutputStream::write(const char* buf, int len) {
    _ensureOpen();
    if (buf == nullptr || len < 1) return 0;
    int done = 0;
    if (_count > 0 || len < _size) {
        done = std::min(len, _size - _count);
        std::memcpy(_buffer.get() + _count, buf, static_cast<size_t>(done));
        _count += done;
        if (_count == _size) flush();
    }
    const int rest = len - done;
    if (rest >= _size) {
        _out.write(buf + done, rest);  // the buffer is empty here: no copy at all
    } else if (rest > 0) {
        std::memcpy(_buffer.get(), buf + done, static_cast<size_t>(rest));
        _count = rest;
    }
    return len;
}

}  // namespace QRN_SPACE
