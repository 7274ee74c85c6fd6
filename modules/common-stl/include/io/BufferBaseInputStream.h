#ifndef QRN_IO_BUFFERBASEINPUTSTREAM_H
#define QRN_IO_BUFFERBASEINPUTSTREAM_H

#include "io/BufferBase.h"
#include "io/InputStream.h"

namespace QRN_SPACE {

// A sequential cursor over a BufferBase it does not own; the buffer must
// outlive the stream. Skipping is not clamped to the buffer's size: past the
// end reads answer -1 / 0. mark() ignores its limit (everything stays
// addressable) and reset() without a mark rewinds to 0.
class TUSKEL_API BufferBaseInputStream : public InputStream {
public:
    explicit BufferBaseInputStream(BufferBase* buffer) : _buffer(buffer) {}
    ~BufferBaseInputStream() override;

    int available() override;
    void close() override;
    int read() override;
    int read(char* buf, int len) override;
    long skip(long n) override;
    bool markSupported() override;
    void mark(int readLimit) override;
    void reset() override;

private:
    BufferBase* _buffer;  // not owned
    long _mark = 0;
    long _position = 0;
};

}  // namespace QRN_SPACE

#endif
