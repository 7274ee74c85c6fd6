#ifndef QRN_IO_FILEOUTPUTSTREAM_H
#define QRN_IO_FILEOUTPUTSTREAM_H

#include "io/OutputStream.h"

namespace QRN_SPACE {

/// Writes a POSIX file descriptor directly, one write(2) per call; flush()
/// has nothing to do.
///
/// The stream owns its descriptor and closes it, except standard output and
/// standard error (1 and 2), which stay open. A short write is an error, not
/// retried. Every system error is an IOException with strerror(errno);
/// writes throw "Stream is already closed" after close(). One user at a
/// time.
/// @ingroup streams
class TUSKEL_API FileOutputStream : public OutputStream {
public:
    /// The open modes (permission bits 0666 less the umask where a file is made).
    enum {
        MODE_CREATE = 0,         ///< Create, or empty an existing file.
        MODE_APPEND = 1,         ///< Append to an existing file.
        MODE_CREATE_APPEND = 2,  ///< Append, creating the file if needed.
        MODE_OVERWRITE = 3       ///< (Or any other value.) Write over an existing file from its start.
    };

    /// Opens `path` in `mode`.
    /// @throws IOException path + ": " + the system error when it cannot be
    ///   opened.
    FileOutputStream(const char* path, int mode);
    /// Adopts `fd` unchecked; the stream closes it unless it is 1 or 2.
    explicit FileOutputStream(int fd);
    /// Closes; a failure to close is swallowed here (call close() to see it).
    ~FileOutputStream() override;

    using OutputStream::write;
    /// Closes the descriptor once (never 1 or 2); later calls do nothing.
    /// @throws IOException when close(2) fails.
    void close() override;
    /// One write(2) of one byte.
    /// @throws IOException when it is not written.
    void write(char c) override;
    /// One write(2) of `len` bytes; anything but all of them throws (with
    /// whatever errno then holds). Answers `len`.
    int write(const char* buf, int len) override;

private:
    int _fd;
};

}  // namespace QRN_SPACE

#endif
