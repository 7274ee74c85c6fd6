#ifndef QRN_IO_BUFFERBASEOUTPUTSTREAM_H
#define QRN_IO_BUFFERBASEOUTPUTSTREAM_H

#include "io/BufferBase.h"
#include "io/OutputStream.h"

namespace QRN_SPACE {

// Writes into a BufferBase it does not own, overwriting from its own cursor
// (which starts at 0), never appending.
class TUSKEL_API BufferBaseOutputStream : public OutputStream {
public:
    explicit BufferBaseOutputStream(BufferBase* buffer) : _buffer(buffer) {}
    ~BufferBaseOutputStream() override;

    using OutputStream::write;
    void close() override;
    void flush() override;
    void write(char c) override;
    // Advances by the requested len, not by what the buffer wrote: intended.
    int write(const char* buf, int len) override;

private:
    BufferBase* _buffer;  // not owned
    long _position = 0;
};

}  // namespace QRN_SPACE

#endif
