#include "io/ContinuousMemBufferBase.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <functional>
#include <new>

namespace QRN_SPACE {

namespace {

const char* const kSource = "io/BufferBase";
const int kLineNoMemory = 205;

// Fixed headroom per reallocation (linear growth, not doubling).
const long kHeadroom = 4096;

[[noreturn]] void throwOutOfMemory() {
    throwAt<OutOfMemoryException>("Out of memory", {kSource, kLineNoMemory});
}

// pos + len for two non-negative values. A sum past LONG_MAX could never be
// allocated; it is refused as such instead of overflowing.
long endOf(long pos, long len) {
    if (pos > LONG_MAX - len) throwOutOfMemory();
    return pos + len;
}

}  // namespace

ContinuousMemBufferBase::ContinuousMemBufferBase(long initialCapacity) {
    _type = TYPE_CONTINUOUS_MEMORY;
    try {
        _ensureCapacity(initialCapacity);
    } catch (...) {
        _valid = false;
    }
    if (!_data && initialCapacity > 0) _valid = false;
}

ContinuousMemBufferBase::~ContinuousMemBufferBase() = default;

ContinuousMemBufferBase::Block ContinuousMemBufferBase::_ensureCapacity(long need) {
    if (_capacity >= need) return nullptr;
    long capacity = endOf(need, kHeadroom);
    Block grown;
    try {
        grown.reset(new char[static_cast<size_t>(capacity)]);
    } catch (const std::bad_alloc&) {
        throwOutOfMemory();
    }
    if (_data) std::memcpy(grown.get(), _data.get(), static_cast<size_t>(_size));
    _data.swap(grown);
    _capacity = capacity;
    return grown;  // the old block, freed by the caller after its copy
}

bool ContinuousMemBufferBase::_holds(const char* p) const {
    std::less_equal<const char*> atMost;
    return _data && atMost(_data.get(), p) && !atMost(_data.get() + _capacity, p);
}

void ContinuousMemBufferBase::_pad(long pos, long count) {
    if (count > 0) std::memset(_data.get() + pos, 0, static_cast<size_t>(count));
}

int ContinuousMemBufferBase::read(long pos) {
    _checkPos(pos);
    ReadGuard hold(_lock);
    if (pos >= _size) return -1;
    return static_cast<unsigned char>(_data[pos]);
}

int ContinuousMemBufferBase::read(long pos, char* buf, int len) {
    _checkPos(pos);
    if (buf == nullptr || len < 1) return 0;
    ReadGuard hold(_lock);
    if (pos >= _size) return 0;
    const long n = std::min<long>(len, _size - pos);
    std::memcpy(buf, _data.get() + pos, static_cast<size_t>(n));
    const long end = pos + n;
    if (_ahead.follows(pos, end)) ReadAhead::fetch(_data.get() + end, std::min(ReadAhead::span(n), _size - end));
    return static_cast<int>(n);
}

void ContinuousMemBufferBase::write(long pos, char c) {
    _checkPos(pos);
    WriteGuard hold(_lock);
    Block old = _ensureCapacity(endOf(pos, 1));
    _pad(_size, pos - _size);  // zero gap from the old end up to pos
    _data[pos] = c;
    _size = std::max(_size, pos + 1);
}

int ContinuousMemBufferBase::write(long pos, const char* buf, int len) {
    _checkPos(pos);
    if (buf == nullptr || len < 1) return 0;
    WriteGuard hold(_lock);
    long end = endOf(pos, len);
    Block old = _ensureCapacity(end);
    _pad(_size, pos - _size);
    std::memmove(_data.get() + pos, buf, static_cast<size_t>(len));
    _size = std::max(_size, end);
    return len;
}

void ContinuousMemBufferBase::insert(long pos, char c) {
    _checkPos(pos);
    WriteGuard hold(_lock);
    _insertLocked(pos, &c, 1);
}

int ContinuousMemBufferBase::insert(long pos, const char* buf, int len) {
    _checkPos(pos);
    if (buf == nullptr || len < 1) return 0;
    WriteGuard hold(_lock);
    return _insertLocked(pos, buf, len);
}

int ContinuousMemBufferBase::_insertLocked(long pos, const char* buf, int len) {
    const long size = _size;
    Block old;
    if (pos < size) {
        old = _ensureCapacity(endOf(size, len));
        std::memmove(_data.get() + pos + len, _data.get() + pos, static_cast<size_t>(size - pos));
        if (!old && _holds(buf)) {
            // The source lies in this very block and was just shifted: its
            // bytes from pos on now sit len further up.
            const long from = buf - _data.get();
            const long before = std::min<long>(len, std::max(0L, pos - from));
            std::memcpy(_data.get() + pos, buf, static_cast<size_t>(before));
            std::memcpy(_data.get() + pos + before, buf + before + len, static_cast<size_t>(len - before));
            _size = size + len;
            return len;
        }
    } else {
        old = _ensureCapacity(endOf(pos, len));
        // Intended: the zero fill is anchored at pos, not at the old end, and
        // the size below grows by len only. The fill is kept inside the block
        // (a gap wider than len + headroom would run past it), and the bytes
        // between the old end and pos, which the grown size takes in, are
        // zeroed so that they never show stale or uninitialised memory.
        _pad(pos, std::min(pos - size, _capacity - pos));
        _pad(size, std::min(pos, size + len) - size);
    }
    std::memmove(_data.get() + pos, buf, static_cast<size_t>(len));
    _size = size + len;
    return len;
}

void ContinuousMemBufferBase::cut(long pos) {
    _checkPos(pos);
    WriteGuard hold(_lock);
    if (pos >= _size) return;
    std::memmove(_data.get() + pos, _data.get() + pos + 1, static_cast<size_t>(_size - pos - 1));
    --_size;
}

int ContinuousMemBufferBase::cut(long pos, int len) {
    _checkPos(pos);
    if (len < 1) return 0;
    WriteGuard hold(_lock);
    const long size = _size;
    if (pos >= size) return 0;
    if (len < size - pos) {  // pos + len < size, without forming the sum
        std::memmove(_data.get() + pos, _data.get() + pos + len,
                     static_cast<size_t>(size - pos - len));
        _size = size - len;
        return len;
    }
    _size = pos;
    return static_cast<int>(size - pos);  // <= len, so it fits
}

void ContinuousMemBufferBase::append(char c) {
    _checkValid();
    WriteGuard hold(_lock);
    _ensureCapacity(endOf(_size, 1));
    _data[_size++] = c;
}

int ContinuousMemBufferBase::append(const char* buf, int len) {
    _checkValid();
    if (buf == nullptr || len < 1) return 0;
    WriteGuard hold(_lock);
    Block old = _ensureCapacity(endOf(_size, len));
    std::memmove(_data.get() + _size, buf, static_cast<size_t>(len));
    _size += len;
    return len;
}

void ContinuousMemBufferBase::truncate(long newSize) {
    _checkPos(newSize);
    WriteGuard hold(_lock);
    if (newSize < _size) _size = newSize;
}

long ContinuousMemBufferBase::getSize() const {
    ReadGuard hold(_lock);
    return _size;
}

char* ContinuousMemBufferBase::getMemAddress() {
    ReadGuard hold(_lock);
    return _data.get();
}

}  // namespace QRN_SPACE
