#ifndef QRN_IO_FILTERINPUTSTREAM_H
#define QRN_IO_FILTERINPUTSTREAM_H

#include "io/InputStream.h"

namespace QRN_SPACE {

/// Forwards reads to a wrapped stream; the base of the input filters.
///
/// Does not own the wrapped stream, which must outlive the filter: close()
/// marks only the filter closed, and the filter's own flag is not checked on
/// reads. Mark and reset are not forwarded (no mark support). Each operation
/// throws what the wrapped stream throws. One user at a time.
/// @ingroup streams
class TUSKEL_API FilterInputStream : public InputStream {
public:
    /// Reads `in`, not owned.
    explicit FilterInputStream(InputStream& in) : _in(in) {}
    ~FilterInputStream() override;

    /// The wrapped stream's.
    int available() override;
    /// Marks the filter closed; the wrapped stream stays open.
    void close() override;
    /// The wrapped stream's next byte.
    int read() override;
    /// The wrapped stream's block read.
    int read(char* buf, int len) override;
    /// The wrapped stream's skip.
    long skip(long n) override;

protected:
    InputStream& _in;  ///< The wrapped stream; not owned.
};

}  // namespace QRN_SPACE

#endif
