#ifndef TUSKEL_TOOLS_STDOUTSTREAM_H
#define TUSKEL_TOOLS_STDOUTSTREAM_H

#include "io/BufferedOutputStream.h"
#include "io/FileOutputStream.h"

namespace tuskel_tool {

// Standard output as a buffered library stream: large blocks pass straight
// through, small ones are gathered. Closing never closes descriptor 1.
class StdoutStream {
public:
    StdoutStream() : _fd(1), _buffered(_fd, kBuffer) {}
    QRN_SPACE::OutputStream& stream() { return _buffered; }

private:
    static const int kBuffer = 64 * 1024;
    QRN_SPACE::FileOutputStream _fd;
    QRN_SPACE::BufferedOutputStream _buffered;
};

}  // namespace tuskel_tool

#endif
