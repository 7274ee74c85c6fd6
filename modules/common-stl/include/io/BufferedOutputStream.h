#ifndef QRN_IO_BUFFEREDOUTPUTSTREAM_H
#define QRN_IO_BUFFEREDOUTPUTSTREAM_H

#include <memory>

#include "io/FilterOutputStream.h"

namespace QRN_SPACE {

// Collects small writes in a buffer of its own and hands them to a wrapped
// stream (not owned, never closed here) a buffer at a time; a write at least
// as large as the buffer goes straight through when nothing is waiting.
// flush() empties the buffer but does not flush the wrapped stream.
class TUSKEL_API BufferedOutputStream : public FilterOutputStream {
public:
    static constexpr int DEFAULT_SIZE = 8192;

    // A buffer of `size` bytes (DEFAULT_SIZE for a size below 1), owned.
    explicit BufferedOutputStream(OutputStream& out, int size = DEFAULT_SIZE);
    // Closes, which writes what is waiting; a failure there is swallowed
    // (call close() to see it).
    ~BufferedOutputStream() override;

    using OutputStream::write;
    // Writes what is waiting and releases the buffer; the wrapped stream
    // stays open.
    void close() override;
    // Writes what is waiting to the wrapped stream.
    void flush() override;
    void write(char c) override {
        _ensureOpen();
        _buffer[_count++] = c;
        if (_count == _size) flush();
    }
    // Answers len.
    int write(const char* buf, int len) override;

private:
    std::unique_ptr<char[]> _buffer;  // null once closed
    int _count = 0;                   // bytes waiting
    int _size;
};

}  // namespace QRN_SPACE

#endif
