#include "io/OutputStream.h"

#include <cstring>

namespace QRN_SPACE {

namespace {

const char* const kSource = "../../../modules/common-stl/include/io/OutputStream";
const int kLineClosed = 58;
const int kLineClose = 66;
const int kLineWriteChar = 73;
const int kLineWriteBlock = 91;

}  // namespace

OutputStream::~OutputStream() = default;

void OutputStream::_throwClosed() {
    throwAt<IOException>("Stream is already closed", {kSource, kLineClosed});
}

void OutputStream::close() { throwAt<IOException>("Unimplemented", {kSource, kLineClose}); }

void OutputStream::flush() {}

void OutputStream::write(char) { throwAt<IOException>("Unimplemented", {kSource, kLineWriteChar}); }

int OutputStream::write(const char* s) {
    return write(s, s != nullptr ? static_cast<int>(std::strlen(s)) : 0);
}

int OutputStream::write(const char*, int) {
    throwAt<IOException>("Unimplemented", {kSource, kLineWriteBlock});
}

}  // namespace QRN_SPACE
