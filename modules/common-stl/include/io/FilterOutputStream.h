#ifndef QRN_IO_FILTEROUTPUTSTREAM_H
#define QRN_IO_FILTEROUTPUTSTREAM_H

#include "io/OutputStream.h"

namespace QRN_SPACE {

/// Forwards writes to a wrapped stream; the base of the output filters.
///
/// Does not own the wrapped stream, which must outlive the filter: neither
/// close() nor the destructor flushes or closes it. Each operation throws
/// what the wrapped stream throws; the filter's own closed flag is not
/// checked. One user at a time.
/// @ingroup streams
class TUSKEL_API FilterOutputStream : public OutputStream {
public:
    /// Writes to `out`, not owned.
    explicit FilterOutputStream(OutputStream& out) : _out(out) {}
    ~FilterOutputStream() override;

    using OutputStream::write;
    /// Marks the filter closed; the wrapped stream stays open.
    void close() override;
    /// The wrapped stream's flush.
    void flush() override;
    /// The wrapped stream's write.
    void write(char c) override;
    /// The wrapped stream's write; answers its result.
    int write(const char* buf, int len) override;

protected:
    OutputStream& _out;  ///< The wrapped stream; not owned.
};

}  // namespace QRN_SPACE

#endif
