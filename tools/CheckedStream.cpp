#include "CheckedStream.h"

namespace tuskel_tool {

void CheckedStream::reset(QRN_SPACE::OutputStream* sink) {
    _sink = sink;
    _crc.reset();
    _written = 0;
}

void CheckedStream::write(char c) { write(&c, 1); }

int CheckedStream::write(const char* buf, int len) {
    if (buf == nullptr || len < 1) return 0;
    _crc.add(buf, static_cast<unsigned int>(len));
    _written += len;
    try {
        _sink->write(buf, len);
    } catch (QRN_SPACE::Exception& e) {
        throw OutputFailure{e.getMessage()};
    }
    return len;
}

void CheckedStream::flush() {
    try {
        _sink->flush();
    } catch (QRN_SPACE::Exception& e) {
        throw OutputFailure{e.getMessage()};
    }
}

}  // namespace tuskel_tool
