#include "lang/Exception.h"

#include <cstring>

#include "util/StringHelper.h"

namespace QRN_SPACE {

Exception::Exception() = default;

Exception::Exception(const std::string& message) : message(message) {}

Exception::~Exception() = default;

const std::string& Exception::getMessage() const { return message; }

const char* Exception::toString() { return message.c_str(); }

std::string Exception::getErrorLocation() const {
    return file + ", line" + StringHelper::ntoa(line);
}

IOException::~IOException() = default;
OutOfMemoryException::~OutOfMemoryException() = default;
CompressionException::~CompressionException() = default;
ArchivingException::~ArchivingException() = default;
EncodingException::~EncodingException() = default;

void throwSystemError(ErrorSite site, int error, const std::string& prefix, const char* suffix) {
    throwAt<IOException>(prefix + std::strerror(error) + suffix, site);
}

}  // namespace QRN_SPACE
