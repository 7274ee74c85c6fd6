#ifndef QRN_IO_STRINGOUTPUTSTREAM_H
#define QRN_IO_STRINGOUTPUTSTREAM_H

#include <string>

#include "io/OutputStream.h"

namespace QRN_SPACE {

// Collects everything written into one string. It is never closed: close()
// throws the content away and later writes start a new one.
class TUSKEL_API StringOutputStream : public OutputStream {
public:
    // Reserves `capacity` bytes up front.
    explicit StringOutputStream(int capacity = 0);
    ~StringOutputStream() override;

    using OutputStream::write;
    // Empties the content and releases its storage.
    void close() override;
    void flush() override;
    void write(char c) override;
    // Answers len (0 for len below 1).
    int write(const char* buf, int len) override;

    std::string& getString() { return _content; }

private:
    std::string _content;
};

}  // namespace QRN_SPACE

#endif
