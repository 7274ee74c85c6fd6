#ifndef QRN_IO_OUTPUTSTREAM_H
#define QRN_IO_OUTPUTSTREAM_H

#include "lang/Exception.h"
#include "lang/RNObject.h"

namespace QRN_SPACE {

// A sink of bytes. Subclasses implement close(), write(char) and
// write(const char*, int); write(const char*) is built on the latter.
class TUSKEL_API OutputStream : public RNObject {
public:
    OutputStream() = default;
    OutputStream(const OutputStream&) = delete;
    OutputStream& operator=(const OutputStream&) = delete;
    ~OutputStream() override;

    // Default: throws "Unimplemented".
    virtual void close();
    // Default: does nothing.
    virtual void flush();
    // Default: throws "Unimplemented".
    virtual void write(char c);
    // The characters of a zero-terminated string, without the terminator.
    virtual int write(const char* s);
    // Writes len bytes; answers what the sink reports. Default: throws "Unimplemented".
    virtual int write(const char* buf, int len);

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
