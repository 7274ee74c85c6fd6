#ifndef QRN_IO_FILTERINPUTSTREAM_H
#define QRN_IO_FILTERINPUTSTREAM_H

#include "io/InputStream.h"

namespace QRN_SPACE {

// Forwards reads to a wrapped stream that it does not own: close() marks only
// the filter closed, and the filter's own flag is not checked on reads.
// Mark and reset are not forwarded (no mark support).
class TUSKEL_API FilterInputStream : public InputStream {
public:
    explicit FilterInputStream(InputStream& in) : _in(in) {}
    ~FilterInputStream() override;

    int available() override;
    void close() override;
    int read() override;
    int read(char* buf, int len) override;
    long skip(long n) override;

protected:
    InputStream& _in;
};

}  // namespace QRN_SPACE

#endif
