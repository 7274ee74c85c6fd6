#ifndef QRN_IO_OUTPUTSTREAM_H
#define QRN_IO_OUTPUTSTREAM_H

#include "lang/Exception.h"
#include "lang/RNObject.h"

namespace QRN_SPACE {

/// A sink of bytes.
///
/// Subclasses implement close(), write(char) and write(const char*, int);
/// write(const char*) is built on the latter. Failures are IOException, as
/// for InputStream.
///
/// Threads: a stream has one user at a time (PipeProducerOutputStream
/// excepted). Streams are not copyable; wrappers never own what they wrap.
/// @ingroup streams
class TUSKEL_API OutputStream : public RNObject {
public:
    OutputStream() = default;
    OutputStream(const OutputStream&) = delete;
    OutputStream& operator=(const OutputStream&) = delete;
    ~OutputStream() override;

    /// Ends writing; later writes throw "Stream is already closed" where the
    /// subclass checks. Default: throws IOException "Unimplemented".
    virtual void close();
    /// Passes on what the stream holds back. Default: does nothing.
    virtual void flush();
    /// Writes one byte. Default: throws IOException "Unimplemented".
    virtual void write(char c);
    /// The characters of a zero-terminated string, without the terminator;
    /// a null `s` counts as empty. Answers what write(const char*, int) does.
    virtual int write(const char* s);
    /// Writes `len` bytes from `buf` (the caller's, not kept); answers what
    /// the sink reports. Default: throws IOException "Unimplemented".
    virtual int write(const char* buf, int len);

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
