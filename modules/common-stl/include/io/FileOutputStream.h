#ifndef QRN_IO_FILEOUTPUTSTREAM_H
#define QRN_IO_FILEOUTPUTSTREAM_H

#include "io/OutputStream.h"

namespace QRN_SPACE {

// Writes a POSIX file descriptor directly, one write(2) per call; flush()
// has nothing to do. The stream owns its descriptor and closes it, except
// standard output and standard error (1 and 2), which stay open. A short
// write is an error, not retried. Every system error is an IOException with
// strerror(errno).
class TUSKEL_API FileOutputStream : public OutputStream {
public:
    // The open modes (permission bits 0666 less the umask where a file is made).
    enum {
        MODE_CREATE = 0,         // create, or empty an existing file
        MODE_APPEND = 1,         // append to an existing file
        MODE_CREATE_APPEND = 2,  // append, creating the file if needed
        MODE_OVERWRITE = 3       // (or any other value) write over an existing file from its start
    };

    // Opens `path` in `mode`; on failure the stream is closed and the
    // constructor throws path + ": " + the system error.
    FileOutputStream(const char* path, int mode);
    // Adopts `fd` unchecked; the stream closes it unless it is 1 or 2.
    explicit FileOutputStream(int fd);
    // Closes; a failure to close is swallowed here (call close() to see it).
    ~FileOutputStream() override;

    using OutputStream::write;
    void close() override;
    void write(char c) override;
    // One write(2) of len bytes; anything but all of them throws. Answers len.
    int write(const char* buf, int len) override;

private:
    int _fd;
};

}  // namespace QRN_SPACE

#endif
