#ifndef QRN_IO_BUFFEREDINPUTSTREAM_H
#define QRN_IO_BUFFEREDINPUTSTREAM_H

#include <memory>
#include <string>

#include "io/FilterInputStream.h"

namespace QRN_SPACE {

// Reads a wrapped stream (not owned, never closed here) through a buffer of
// its own, so that small reads do not each reach it. Adds a line reader and
// a mark of its own: the bytes read after mark(limit) are kept, the buffer
// growing up to `limit` bytes for them, until more than `limit` bytes have
// been read from the mark. A mark serves one reset() only.
class TUSKEL_API BufferedInputStream : public FilterInputStream {
public:
    static constexpr int DEFAULT_SIZE = 8192;

    // A buffer of `size` bytes (DEFAULT_SIZE for a size below 1), owned.
    explicit BufferedInputStream(InputStream& in, int size = DEFAULT_SIZE);
    ~BufferedInputStream() override;

    // Buffered bytes plus what the wrapped stream reports.
    int available() override;
    // Releases the buffer; the wrapped stream stays open.
    void close() override;
    // The next byte as 0..255, or -1 at the end. Refilling is kept out of
    // line, so that a byte from the buffer takes a few instructions.
    int read() override {
        if (_position < _count) return static_cast<unsigned char>(_buffer[_position++]);
        return _readAfterFill();
    }
    // Keeps refilling until len bytes are delivered or the wrapped stream
    // ends: short only at the end, 0 there.
    int read(char* buf, int len) override;
    // Without a mark the wrapped stream skips past what is buffered; with
    // one, the bytes are read so that reset() can bring them back.
    long skip(long n) override;
    bool markSupported() override;
    void mark(int readLimit) override;
    // Back to the mark, which is used up: a second reset() throws.
    void reset() override;

    // The next line without its terminator (CR, LF or CR LF) into `line`.
    // False, with `line` empty, only when the stream had nothing left.
    bool readLine(std::string& line);

protected:
    // Refills the buffer once the position has reached the count, keeping
    // the marked bytes; answers the bytes obtained, 0 at the end.
    int fillBuffer();

private:
    int _readAfterFill();
    bool _scanLine(std::string& line);
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
};

}  // namespace QRN_SPACE

#endif
