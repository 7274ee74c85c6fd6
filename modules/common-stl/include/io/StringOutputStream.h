#ifndef QRN_IO_STRINGOUTPUTSTREAM_H
#define QRN_IO_STRINGOUTPUTSTREAM_H

#include <string>

#include "io/OutputStream.h"

namespace QRN_SPACE {

/// Collects everything written into one string.
///
/// It is never closed: close() throws the content away and later writes
/// start a new one. Never throws but std::bad_alloc. One user at a time.
/// @ingroup streams
class TUSKEL_API StringOutputStream : public OutputStream {
public:
    /// Reserves `capacity` bytes up front.
    explicit StringOutputStream(int capacity = 0);
    ~StringOutputStream() override;

    using OutputStream::write;
    /// Empties the content and releases its storage; the stream stays usable.
    void close() override;
    /// Nothing to flush.
    void flush() override;
    /// Adds one byte.
    void write(char c) override;
    /// Adds `len` bytes; answers `len` (0 for `len` below 1 or a null `buf`).
    int write(const char* buf, int len) override;

    /// The content written so far, owned by the stream; the caller may
    /// change or take it (by swap, say). Valid while the stream lives.
    std::string& getString() { return _content; }

private:
    std::string _content;
};

}  // namespace QRN_SPACE

#endif
