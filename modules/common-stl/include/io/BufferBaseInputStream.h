#ifndef QRN_IO_BUFFERBASEINPUTSTREAM_H
#define QRN_IO_BUFFERBASEINPUTSTREAM_H

#include "io/BufferBase.h"
#include "io/InputStream.h"

namespace QRN_SPACE {

/// A sequential cursor over a BufferBase.
///
/// Does not own the buffer, which must outlive the stream; closing the stream
/// leaves the buffer alone. Skipping is not clamped to the buffer's size:
/// past the end reads answer -1 / 0. mark() ignores its limit (everything
/// stays addressable) and reset() without a mark rewinds to 0. Every
/// operation throws IOException "Stream is already closed" after close(),
/// and otherwise what the buffer throws. One user at a time; several streams
/// may read one buffer, each with its own cursor.
/// @ingroup streams
class TUSKEL_API BufferBaseInputStream : public InputStream {
public:
    /// A cursor at position 0 of `buffer`, not owned.
    explicit BufferBaseInputStream(BufferBase* buffer) : _buffer(buffer) {}
    ~BufferBaseInputStream() override;

    /// The bytes between the cursor and the buffer's end, 0 past it.
    int available() override;
    /// Marks the stream closed; the buffer is untouched.
    void close() override;
    /// The byte at the cursor, which advances; -1 at the end.
    int read() override;
    /// Reads at the cursor, which advances by the buffer's answer.
    int read(char* buf, int len) override;
    /// Moves the cursor `n` bytes on, past the end if asked, and answers `n`;
    /// 0 for a negative `n`.
    long skip(long n) override;
    /// True.
    bool markSupported() override;
    /// Remembers the cursor; the limit is ignored.
    void mark(int readLimit) override;
    /// Back to the mark, which stays; to 0 without one.
    void reset() override;

private:
    BufferBase* _buffer;  // not owned
    long _mark = 0;
    long _position = 0;
};

}  // namespace QRN_SPACE

#endif
