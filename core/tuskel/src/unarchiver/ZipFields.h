#ifndef TUSKEL_SRC_UNARCHIVER_ZIPFIELDS_H
#define TUSKEL_SRC_UNARCHIVER_ZIPFIELDS_H

// Shared by the ZIP record readers; not part of the library's interface.

#include <string>

#include "io/InputStream.h"
#include "utils/IOUtils.h"

namespace QRN_SPACE {
namespace zipfields {

// Reads a variable-length field (name, extra, comment) of `length` bytes.
// One block read does the work; when it comes up short the rest is read
// byte by byte, so the end of the stream surfaces as "unexpected EOF" from
// the I/O utilities, exactly as a byte-wise read would report it.
inline std::string read(InputStream& in, int length) {
    std::string field(static_cast<size_t>(length > 0 ? length : 0), '\0');
    if (field.empty()) return field;
    int got = IOUtils::readFull(in, &field[0], length);
    for (; got < length; ++got) field[static_cast<size_t>(got)] = static_cast<char>(IOUtils::readUChar(in));
    return field;
}

}  // namespace zipfields
}  // namespace QRN_SPACE

#endif
