#ifndef QRN_IO_FILTEROUTPUTSTREAM_H
#define QRN_IO_FILTEROUTPUTSTREAM_H

#include "io/OutputStream.h"

namespace QRN_SPACE {

// Forwards writes to a wrapped stream that it does not own: neither close()
// nor the destructor flushes or closes it.
class TUSKEL_API FilterOutputStream : public OutputStream {
public:
    explicit FilterOutputStream(OutputStream& out) : _out(out) {}
    ~FilterOutputStream() override;

    using OutputStream::write;
    void close() override;
    void flush() override;
    void write(char c) override;
    int write(const char* buf, int len) override;

protected:
    OutputStream& _out;
};

}  // namespace QRN_SPACE

#endif
