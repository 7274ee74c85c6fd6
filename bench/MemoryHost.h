#ifndef TUSKEL_BENCH_MEMORYHOST_H
#define TUSKEL_BENCH_MEMORYHOST_H

// A host that keeps everything in memory, as a scanner holding a message
// would: the input as it is, and each entry written into memory the host
// prepared (and touched) beforehand. Only the host header is used.

#include <cstddef>
#include <cstring>

#include "tuskel/CommonDecompressor.h"

namespace tuskel_bench {

// The input; does not own the bytes.
class MemoryInput : public CommonBuffer {
public:
    MemoryInput(const char* data, size_t size) : _data(data), _size(static_cast<long>(size)) {}

    int read(char* buf, int len) {
        long n = _size - _position;
        if (n > len) n = len;
        if (n <= 0) return 0;
        std::memcpy(buf, _data + _position, static_cast<size_t>(n));
        _position += n;
        return static_cast<int>(n);
    }
    int write(const char*, int) { return 0; }
    long seek(int origin, long offset) {
        long target = (origin == 2 ? _size : origin == 1 ? _position : 0) + offset;
        if (target < 0) return -1;
        return _position = target;
    }
    long tell() { return _position; }

private:
    const char* _data;
    long _size;
    long _position = 0;
};

// An entry's destination: fixed memory of the host; does not own it.
class MemoryOutput : public CommonBuffer {
public:
    MemoryOutput(char* data, size_t capacity) : _data(data), _capacity(static_cast<long>(capacity)) {}

    void rewind() { _position = _size = 0; }
    long size() const { return _size; }

    int read(char*, int) { return 0; }
    int write(const char* buf, int len) {
        long n = _capacity - _position;
        if (n > len) n = len;
        if (n <= 0) return 0;
        std::memcpy(_data + _position, buf, static_cast<size_t>(n));
        _position += n;
        if (_position > _size) _size = _position;
        return static_cast<int>(n);
    }
    long seek(int origin, long offset) {
        long target = (origin == 2 ? _size : origin == 1 ? _position : 0) + offset;
        if (target < 0 || target > _capacity) return -1;
        return _position = target;
    }
    long tell() { return _position; }

private:
    char* _data;
    long _capacity;
    long _position = 0;
    long _size = 0;
};

// Hands every entry the same prepared output.
class PreparedEntries : public CommonEntryProcessor {
public:
    explicit PreparedEntries(MemoryOutput& out) : _out(out) {}

    CommonBuffer* getBuffer(EntryRecord*) {
        ++offered;
        _out.rewind();
        return &_out;
    }
    void finish() { ++finished; }

    int offered = 0;
    int finished = 0;

private:
    MemoryOutput& _out;
};

}  // namespace tuskel_bench

#endif
