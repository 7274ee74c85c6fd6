#ifndef QRN_IO_INPUTSTREAM_H
#define QRN_IO_INPUTSTREAM_H

#include "lang/Exception.h"
#include "lang/RNObject.h"

namespace QRN_SPACE {

/// A source of bytes.
///
/// Subclasses implement available(), close() and read(); the block read and
/// skip are built on read() unless overridden. Failures are IOException:
/// "Unimplemented" from an operation a subclass left out, "Stream is already
/// closed" from a stream used after close() (where the subclass checks), the
/// system's error text from file streams.
///
/// Threads: a stream has one user at a time; none of the streams locks.
/// Streams are not copyable; wrappers never own what they wrap.
/// @ingroup streams
class TUSKEL_API InputStream : public RNObject {
public:
    InputStream() = default;
    InputStream(const InputStream&) = delete;
    InputStream& operator=(const InputStream&) = delete;
    ~InputStream() override;

    /// Bytes readable without blocking. Default: throws IOException
    /// "Unimplemented".
    virtual int available();
    /// Releases what the stream holds; later reads may throw "Stream is
    /// already closed". Default: throws IOException "Unimplemented".
    virtual void close();
    /// The next byte as 0..255, or -1 at the end. Default: throws IOException
    /// "Unimplemented".
    virtual int read();
    /// Up to `len` bytes into `buf` (the caller's); may be short. Answers 0
    /// (never -1) at the end, for a null `buf` and for `len` below 1: a
    /// result of 0 means nothing more is to come. Default: read() byte by
    /// byte until `len` or the end.
    virtual int read(char* buf, int len);
    /// Reads and discards up to `n` bytes in chunks of at most 512; answers
    /// the count skipped, 0 for `n` below 1. Stops at the first short chunk.
    virtual long skip(long n);
    /// Whether mark() and reset() work. Default: false.
    virtual bool markSupported();
    /// Remembers the position so that reset() can return to it, for at least
    /// `readLimit` bytes read. Default: does nothing.
    virtual void mark(int readLimit);
    /// Returns to the mark. Default: does nothing.
    virtual void reset();

protected:
    /// Throws IOException "Stream is already closed" once close() has run.
    void _ensureOpen() const {
        if (_closed) _throwClosed();
    }
    /// Throws IOException "Stream is already closed".
    [[noreturn]] static void _throwClosed();

    bool _closed = false;  ///< Set by close() in the subclasses that track it.
};

}  // namespace QRN_SPACE

#endif
