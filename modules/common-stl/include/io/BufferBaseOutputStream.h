#ifndef QRN_IO_BUFFERBASEOUTPUTSTREAM_H
#define QRN_IO_BUFFERBASEOUTPUTSTREAM_H

#include "io/BufferBase.h"
#include "io/OutputStream.h"

namespace QRN_SPACE {

/// Writes into a BufferBase, overwriting from its own cursor (which starts at
/// 0), never appending.
///
/// Does not own the buffer, which must outlive the stream; closing the
/// stream leaves the buffer alone. Writes throw IOException "Stream is
/// already closed" after close(), and otherwise what the buffer throws. One
/// user at a time.
/// @ingroup streams
class TUSKEL_API BufferBaseOutputStream : public OutputStream {
public:
    /// A cursor at position 0 of `buffer`, not owned.
    explicit BufferBaseOutputStream(BufferBase* buffer) : _buffer(buffer) {}
    ~BufferBaseOutputStream() override;

    using OutputStream::write;
    /// Marks the stream closed; the buffer is untouched.
    void close() override;
    /// Nothing to flush: every write reaches the buffer at once.
    void flush() override;
    /// Overwrites the byte at the cursor, which advances by one.
    void write(char c) override;
    /// Overwrites at the cursor and answers what the buffer wrote. The
    /// cursor advances by the requested `len`, not by what the buffer wrote:
    /// intended (a refused write still moves on).
    int write(const char* buf, int len) override;

private:
    BufferBase* _buffer;  // not owned
    long _position = 0;
};

}  // namespace QRN_SPACE

#endif
