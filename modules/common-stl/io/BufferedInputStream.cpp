#include "io/BufferedInputStream.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <new>

namespace QRN_SPACE {

namespace {

const char* const kSource = "io/InputStream";
const int kLineGrow = 310;
const int kLineNoMark = 426;
const int kSkipChunk = 1024;

}  // namespace

BufferedInputStream::BufferedInputStream(InputStream& in, int size)
    : FilterInputStream(in), _capacity(size < 1 ? DEFAULT_SIZE : size), _initialSize(_capacity) {
    _buffer.reset(new char[static_cast<size_t>(_capacity)]);
}

BufferedInputStream::~BufferedInputStream() = default;

int BufferedInputStream::available() {
    _ensureOpen();
    const long long total = static_cast<long long>(_count - _position) + _in.available();  // no int overflow
    return total > INT_MAX ? INT_MAX : static_cast<int>(total);
}

void BufferedInputStream::close() {
    if (_closed) return;
    _buffer.reset();
    _capacity = _position = _count = 0;  // so that a read() after close() refills, and fails
    _closed = true;
}

int BufferedInputStream::_readAfterFill() {
    if (fillBuffer() == 0) return -1;
    return static_cast<unsigned char>(_buffer[_position++]);
}

int BufferedInputStream::read(char* buf, int len) {
    _ensureOpen();
    if (buf == nullptr) return 0;
    int done = 0;
    while (done < len) {
        if (_position >= _count && fillBuffer() == 0) break;
        const int n = std::min(len - done, _count - _position);
        std::memcpy(buf + done, _buffer.get() + _position, static_cast<size_t>(n));
        _position += n;
        done += n;
    }
    return done;
}

long BufferedInputStream::skip(long n) {
    _ensureOpen();
    long total = 0;
    char scratch[kSkipChunk];
    while (total < n) {
        const int buffered = static_cast<int>(std::min<long>(n - total, _count - _position));
        _position += buffered;
        total += buffered;
        if (total == n) break;
        if (_markPosition < 0) return total + _in.skip(n - total);
        // Under a mark the skipped bytes must stay in the buffer for reset().
        const int got = read(scratch, static_cast<int>(std::min<long>(kSkipChunk, n - total)));
        if (got < 1) break;
        total += got;
    }
    return total;
}

bool BufferedInputStream::markSupported() { return true; }

void BufferedInputStream::mark(int readLimit) {
    _markPosition = _position;
    _markLimit = readLimit;
}

void BufferedInputStream::reset() {
    _ensureOpen();
    if (_markPosition < 0) throwAt<IOException>("No mark was set", {kSource, kLineNoMark});
    _position = _markPosition;
    _markPosition = -1;  // intended: a mark serves one reset() only
    _lfAt = _crAt = -1;
}

// Where the refill goes depends on the mark:
//   no mark                      -> the whole buffer is free
//   read past the mark's limit   -> the mark is given up, likewise
//   mark at 0, within its limit  -> grow towards the limit, keeping everything
//   mark further in              -> slide the marked bytes to the front first
// A refill always asks the wrapped stream for at least one byte.
int BufferedInputStream::fillBuffer() {
    _ensureOpen();  // the buffer is gone after close()
    _lfAt = _crAt = -1;
    if (_markPosition < 0) {
        _position = 0;
    } else if (_position - _markPosition > _markLimit) {
        _dropMark();
    } else if (_markPosition == 0) {
        _growMarkBuffer();
    } else {
        _slideMarkToFront();
    }
    _count = _position;
    const int got = _in.read(_buffer.get() + _position, _capacity - _position);
    if (got < 1) return 0;  // a stream that answers -1 here ends just the same
    _count += got;
    return got;
}

void BufferedInputStream::_dropMark() {
    _markPosition = -1;
    _position = 0;
    if (_capacity <= _initialSize) return;
    // Shrinking back is only for memory's sake: when even the small buffer
    // cannot be had, the grown one serves on.
    char* smaller = new (std::nothrow) char[static_cast<size_t>(_initialSize)];
    if (smaller == nullptr) return;
    _buffer.reset(smaller);
    _capacity = _initialSize;
}

// The capacity doubles, but not beyond the mark's limit. A buffer full at
// that size cannot grow, and a read into no room would answer 0 and look
// like the end of the stream: the mark is given up instead and the refill
// goes on. A buffer that still has room (after short reads) is filled
// further: growing it then would let a stream that trickles its bytes
// double it on every refill, towards the limit, for a few bytes.
void BufferedInputStream::_growMarkBuffer() {
    if (_count < _capacity) return;
    const int doubled = _capacity > INT_MAX / 2 ? INT_MAX : _capacity * 2;
    const int wanted = std::min(doubled, _markLimit);
    if (wanted <= _capacity) {
        _dropMark();  // full at the limit, and read to its end (a refill runs only there)
        return;
    }
    char* grown = new (std::nothrow) char[static_cast<size_t>(wanted)];
    if (grown == nullptr) throwAt<OutOfMemoryException>("Out of memory", {kSource, kLineGrow});
    std::memcpy(grown, _buffer.get(), static_cast<size_t>(_count));
    _buffer.reset(grown);
    _capacity = wanted;
}

void BufferedInputStream::_slideMarkToFront() {
    const int kept = _count - _markPosition;
    std::memmove(_buffer.get(), _buffer.get() + _markPosition, static_cast<size_t>(kept));
    _position -= _markPosition;
    _markPosition = 0;
}

bool BufferedInputStream::readLine(std::string& line) {
    _ensureOpen();
    line.clear();
    bool any = false;
    for (;;) {
        if (_position >= _count && fillBuffer() == 0) return any;
        if (_scanLine(line)) break;
        any = true;
    }
    // Past the terminator; a CR takes one LF after it along, even from the
    // next fill.
    if (_buffer[_position++] == '\r' && (_position < _count || fillBuffer() > 0) && _buffer[_position] == '\n') {
        ++_position;
    }
    return true;
}

// Appends the bytes before the next CR or LF in the buffer and stops there;
// answers whether a terminator was found.
bool BufferedInputStream::_scanLine(std::string& line) {
    const int stop = std::min(_next('\n', _lfAt), _next('\r', _crAt));
    line.append(_buffer.get() + _position, static_cast<size_t>(stop - _position));
    _position = stop;
    return stop != _count;
}

// The index of the next `c` at or after the position, or _count. A result
// ahead of the position stays right until the buffer changes, so lines
// ended by one kind alone do not rescan the rest of the buffer for the
// other kind at every line.
int BufferedInputStream::_next(char c, int& at) const {
    if (at >= _position) return at;
    const char* from = _buffer.get() + _position;
    const void* hit = std::memchr(from, c, static_cast<size_t>(_count - _position));
    at = hit == nullptr ? _count : _position + static_cast<int>(static_cast<const char*>(hit) - from);
    return at;
}

}  // namespace QRN_SPACE
