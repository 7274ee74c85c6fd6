#include "io/StringOutputStream.h"

namespace QRN_SPACE {

StringOutputStream::StringOutputStream(int capacity) {
    if (capacity > 0) _content.reserve(static_cast<size_t>(capacity));
}

StringOutputStream::~StringOutputStream() = default;

// Intended: the stream stays open, ready for a new content.
void StringOutputStream::close() { std::string().swap(_content); }

void StringOutputStream::flush() {}

void StringOutputStream::write(char c) { _content.push_back(c); }

int StringOutputStream::write(const char* buf, int len) {
    if (buf == nullptr || len < 1) return 0;
    _content.append(buf, static_cast<size_t>(len));
    return len;
}

}  // namespace QRN_SPACE
