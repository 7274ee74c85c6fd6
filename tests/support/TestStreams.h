#ifndef TUSKEL_TEST_TESTSTREAMS_H
#define TUSKEL_TEST_TESTSTREAMS_H

#include <memory>
#include <string>
#include <vector>

#include "io/ContinuousMemBufferBase.h"
#include "io/InputStream.h"
#include "io/OutputStream.h"

namespace tuskel_test {

// Bytes from a list of integers, so a test can spell out exact input.
std::string bytes(std::initializer_list<int> values);

// Deterministic bytes that differ from position to position, so that an
// offset or byte-order slip shows.
std::string patternBytes(size_t n, unsigned seed = 1);

// An input stream over a string that hands out at most `maxChunk` bytes per
// block read, with mark/reset; it records every block read's request size.
class ChunkedInputStream : public QRN_SPACE::InputStream {
public:
    explicit ChunkedInputStream(std::string data, int maxChunk = 1 << 30)
        : _data(std::move(data)), _maxChunk(maxChunk) {}

    int available() override;
    void close() override { _closed = true; }
    int read() override;
    int read(char* buf, int len) override;
    long skip(long n) override;
    bool markSupported() override { return true; }
    void mark(int) override { _mark = _pos; }
    void reset() override { _pos = _mark; }

    size_t position() const { return _pos; }
    const std::vector<int>& requests() const { return _requests; }

private:
    std::string _data;
    int _maxChunk;
    size_t _pos = 0;
    size_t _mark = 0;
    std::vector<int> _requests;
};

// An input stream that implements only read(): exercises the defaults.
class ByteOnlyInputStream : public QRN_SPACE::InputStream {
public:
    explicit ByteOnlyInputStream(std::string data) : _data(std::move(data)) {}
    using InputStream::read;
    int read() override;
    int calls = 0;

private:
    std::string _data;
    size_t _pos = 0;
};

// Collects everything written and the size of every block write.
class CollectingOutputStream : public QRN_SPACE::OutputStream {
public:
    using OutputStream::write;
    void close() override { _closed = true; }
    void write(char c) override;
    int write(const char* buf, int len) override;

    std::string data;
    std::vector<int> writes;
};

// The library's contiguous memory buffer holding `data`, and a buffer's
// whole content as a string.
std::unique_ptr<QRN_SPACE::ContinuousMemBufferBase> memoryBuffer(const std::string& data = std::string());
std::string contentOf(QRN_SPACE::BufferBase& buffer);

}  // namespace tuskel_test

#endif
