#ifndef QRN_IO_FILEINPUTSTREAM_H
#define QRN_IO_FILEINPUTSTREAM_H

#include "io/InputStream.h"

namespace QRN_SPACE {

/// Reads a POSIX file descriptor directly, without buffering of its own (put
/// a BufferedInputStream in front for small reads).
///
/// The stream owns its descriptor and closes it. Mark and reset are file
/// positions, so they work on anything that can seek; a mark ignores its read
/// limit and lasts until the next mark(). Every system error is an
/// IOException with strerror(errno); after close(), every operation but
/// close() and markSupported() throws "Stream is already closed". One user
/// at a time (the file position is shared with whoever else holds the
/// descriptor).
/// @ingroup streams
class TUSKEL_API FileInputStream : public InputStream {
public:
    /// Opens `path` read-only.
    /// @throws IOException path + ": " + the system error when it cannot be
    ///   opened.
    explicit FileInputStream(const char* path);
    /// Adopts `fd` unchecked; the stream closes it.
    explicit FileInputStream(int fd);
    /// Closes; a failure to close is swallowed here (call close() to see it).
    ~FileInputStream() override;

    /// Devices, FIFOs and sockets: what the kernel holds ready (FIONREAD).
    /// Anything else: bytes between the position and the end of the file.
    int available() override;
    /// Closes the descriptor once; later calls do nothing.
    /// @throws IOException when close(2) fails (the descriptor is gone all
    ///   the same).
    void close() override;
    /// The next byte as 0..255, or -1 at the end of the file.
    int read() override;
    /// One read(2) of up to `len` bytes: may be short, 0 at the end.
    int read(char* buf, int len) override;
    /// Seeks `n` bytes from the current position and answers how far it
    /// moved: a negative `n` moves back, and past the end of a file is
    /// allowed.
    long skip(long n) override;
    /// False for devices, FIFOs and sockets; makes no open check (a closed
    /// stream throws the system's "Bad file descriptor").
    bool markSupported() override;
    /// Records the current position.
    /// @throws IOException "File::mark: " + the system error + ", possibly
    ///   non-seekable fd" where the descriptor cannot seek.
    void mark(int readLimit) override;
    /// Seeks back to the mark, which stays for another reset().
    /// @throws IOException "No mark set" without a mark.
    void reset() override;

private:
    int _fd;
    long long _mark = -1;  // -1: no mark; not off_t, whose size depends on the includer's flags
};

}  // namespace QRN_SPACE

#endif
