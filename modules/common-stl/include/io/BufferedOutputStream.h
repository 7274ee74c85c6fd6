#ifndef QRN_IO_BUFFEREDOUTPUTSTREAM_H
#define QRN_IO_BUFFEREDOUTPUTSTREAM_H

#include <memory>

#include "io/FilterOutputStream.h"

namespace QRN_SPACE {

/// Collects small writes in a buffer of its own and hands them to a wrapped
/// stream a buffer at a time.
///
/// The wrapped stream is not owned and never closed here; it must outlive
/// this stream. A write at least as large as the buffer goes straight
/// through when nothing is waiting. flush() empties the buffer but does not
/// flush the wrapped stream. Operations throw IOException "Stream is already
/// closed" after close(), and what the wrapped stream throws. One user at a
/// time.
/// @ingroup streams
class TUSKEL_API BufferedOutputStream : public FilterOutputStream {
public:
    /// The buffer size when none is given.
    static constexpr int DEFAULT_SIZE = 8192;

    /// Writes to `out` (not owned) through a buffer of `size` bytes
    /// (DEFAULT_SIZE for a size below 1), owned; std::bad_alloc when it
    /// cannot be had.
    explicit BufferedOutputStream(OutputStream& out, int size = DEFAULT_SIZE);
    /// Closes, which writes what is waiting; a failure there is swallowed
    /// (call close() to see it).
    ~BufferedOutputStream() override;

    using OutputStream::write;
    /// Writes what is waiting and releases the buffer; the wrapped stream
    /// stays open. A second close() does nothing.
    void close() override;
    /// Writes what is waiting to the wrapped stream (without flushing that).
    void flush() override;
    /// Adds one byte; a full buffer is written out.
    void write(char c) override {
        _ensureOpen();
        if (_count == _size) flush();  // a flush that threw left it full
        _buffer[_count++] = c;
        if (_count == _size) flush();
    }
    /// Adds `len` bytes; answers `len` (0 for `len` below 1 or a null `buf`).
    int write(const char* buf, int len) override;

private:
    std::unique_ptr<char[]> _buffer;  // null once closed
    int _count = 0;                   // bytes waiting
    int _size;
};

}  // namespace QRN_SPACE

#endif
