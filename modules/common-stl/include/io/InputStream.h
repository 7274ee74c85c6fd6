#ifndef QRN_IO_INPUTSTREAM_H
#define QRN_IO_INPUTSTREAM_H

#include "lang/Exception.h"
#include "lang/RNObject.h"

namespace QRN_SPACE {

// A source of bytes. Subclasses implement available(), close() and read();
// the block read and skip are built on read() unless overridden.
class TUSKEL_API InputStream : public RNObject {
public:
    InputStream() = default;
    InputStream(const InputStream&) = delete;
    InputStream& operator=(const InputStream&) = delete;
    ~InputStream() override;

    // Bytes readable without blocking. Default: throws "Unimplemented".
    virtual int available();
    // Default: throws "Unimplemented".
    virtual void close();
    // The next byte as 0..255, or -1 at the end. Default: throws "Unimplemented".
    virtual int read();
    // Up to len bytes; may be short. Answers 0 (never -1) at the end and for
    // len < 1: a result of 0 means nothing more is to come.
    virtual int read(char* buf, int len);
    // Reads and discards up to n bytes in chunks of at most 512; answers the
    // count skipped, 0 for n < 1.
    virtual long skip(long n);
    // Default: no mark support; mark() and reset() do nothing.
    virtual bool markSupported();
    virtual void mark(int readLimit);
    virtual void reset();

protected:
    // Throws "Stream is already closed" once close() has run.
    void _ensureOpen() const {
        if (_closed) _throwClosed();
    }
    [[noreturn]] static void _throwClosed();

    bool _closed = false;
};

}  // namespace QRN_SPACE

#endif
