#ifndef QRN_IO_BUFFEREDINPUTSTREAM_H
#define QRN_IO_BUFFEREDINPUTSTREAM_H

#include <memory>
#include <string>

#include "io/FilterInputStream.h"

namespace QRN_SPACE {

/// Reads a wrapped stream through a buffer of its own, so that small reads
/// do not each reach it.
///
/// The wrapped stream is not owned and never closed here; it must outlive
/// this stream. Adds a line reader and a mark of its own: the bytes read
/// after mark(limit) are kept, the buffer growing up to `limit` bytes for
/// them, until more than `limit` bytes have been read from the mark. A mark
/// serves one reset() only. Operations throw IOException "Stream is already
/// closed" after close(), OutOfMemoryException "Out of memory" when the
/// buffer cannot grow for a mark, and what the wrapped stream throws. One
/// user at a time.
/// @ingroup streams
class TUSKEL_API BufferedInputStream : public FilterInputStream {
public:
    /// The buffer size when none is given.
    static constexpr int DEFAULT_SIZE = 8192;

    /// Reads `in` (not owned) through a buffer of `size` bytes (DEFAULT_SIZE
    /// for a size below 1), owned; std::bad_alloc when it cannot be had.
    explicit BufferedInputStream(InputStream& in, int size = DEFAULT_SIZE);
    /// Frees the buffer; the wrapped stream stays open.
    ~BufferedInputStream() override;

    /// Buffered bytes plus what the wrapped stream reports.
    int available() override;
    /// Releases the buffer; the wrapped stream stays open. A second close()
    /// does nothing.
    void close() override;
    /// The next byte as 0..255, or -1 at the end. Refilling is kept out of
    /// line, so that a byte from the buffer takes a few instructions.
    int read() override {
        if (_position < _count) return static_cast<unsigned char>(_buffer[_position++]);
        return _readAfterFill();
    }
    /// Keeps refilling until `len` bytes are delivered or the wrapped stream
    /// ends: short only at the end, 0 there and for a null `buf`.
    int read(char* buf, int len) override;
    /// Without a mark the wrapped stream skips past what is buffered; with
    /// one, the bytes are read so that reset() can bring them back.
    long skip(long n) override;
    /// True.
    bool markSupported() override;
    /// Keeps the bytes read from here on, up to `readLimit` of them, for one
    /// reset().
    void mark(int readLimit) override;
    /// Back to the mark, which is used up.
    /// @throws IOException "No mark was set" without a mark: before any
    ///   mark(), on a second reset(), or once a refill has given the mark up
    ///   because more than its limit was read past it.
    void reset() override;

    /// The next line without its terminator (CR, LF or CR LF) into `line`.
    /// False, with `line` empty, only when the stream had nothing left.
    bool readLine(std::string& line);

protected:
    /// Refills the buffer once the position has reached the count, keeping
    /// the marked bytes; answers the bytes obtained, 0 at the end.
    int fillBuffer();

private:
    int _readAfterFill();
    bool _scanLine(std::string& line);
    int _next(char c, int& at) const;
    void _dropMark();
    void _growMarkBuffer();
    void _slideMarkToFront();

    std::unique_ptr<char[]> _buffer;  // null once closed
    int _capacity;
    int _position = 0;      // next byte to deliver
    int _count = 0;         // valid bytes in the buffer
    int _initialSize;       // what the buffer shrinks back to
    int _markPosition = -1; // -1: no mark
    int _markLimit = 0;
    // Where the next LF and CR lie at or after the position (_count: none
    // there); -1 until searched, again after every refill or reset().
    int _lfAt = -1, _crAt = -1;
};

}  // namespace QRN_SPACE

#endif
