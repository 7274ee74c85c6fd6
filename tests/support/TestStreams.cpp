#include "support/TestStreams.h"

#include <algorithm>

namespace tuskel_test {

std::string bytes(std::initializer_list<int> values) {
    std::string out;
    for (int v : values) out.push_back(static_cast<char>(v));
    return out;
}

std::string patternBytes(size_t n, unsigned seed) {
    std::string out(n, '\0');
    unsigned state = seed * 2654435761u + 1;
    for (size_t i = 0; i < n; ++i) {
        state = state * 1103515245u + 12345u;
        out[i] = static_cast<char>((state >> 16) ^ i);
    }
    return out;
}

int ChunkedInputStream::available() {
    return _pos < _data.size() ? static_cast<int>(_data.size() - _pos) : 0;
}

int ChunkedInputStream::read() {
    if (_pos >= _data.size()) return -1;
    return static_cast<unsigned char>(_data[_pos++]);
}

int ChunkedInputStream::read(char* buf, int len) {
    _requests.push_back(len);
    if (len < 1 || _pos >= _data.size()) return 0;
    size_t n = std::min({static_cast<size_t>(len), static_cast<size_t>(_maxChunk), _data.size() - _pos});
    std::copy_n(_data.data() + _pos, n, buf);
    _pos += n;
    return static_cast<int>(n);
}

long ChunkedInputStream::skip(long n) {
    if (n < 1) return 0;
    _pos += static_cast<size_t>(n);
    return n;
}

int ByteOnlyInputStream::read() {
    ++calls;
    if (_pos >= _data.size()) return -1;
    return static_cast<unsigned char>(_data[_pos++]);
}

void CollectingOutputStream::write(char c) {
    _ensureOpen();
    data.push_back(c);
}

int CollectingOutputStream::write(const char* buf, int len) {
    _ensureOpen();
    writes.push_back(len);
    if (buf != nullptr && len > 0) data.append(buf, static_cast<size_t>(len));
    return len;
}

std::unique_ptr<QRN_SPACE::ContinuousMemBufferBase> memoryBuffer(const std::string& data) {
    std::unique_ptr<QRN_SPACE::ContinuousMemBufferBase> buffer(
        new QRN_SPACE::ContinuousMemBufferBase(static_cast<long>(data.size())));
    buffer->append(data.data(), static_cast<int>(data.size()));
    return buffer;
}

std::string contentOf(QRN_SPACE::BufferBase& buffer) {
    std::string out(static_cast<size_t>(buffer.getSize()), '\0');
    out.resize(static_cast<size_t>(buffer.read(0, &out[0], static_cast<int>(out.size()))));
    return out;
}

}  // namespace tuskel_test
