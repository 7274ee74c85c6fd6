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

int StringBuffer::read(long pos) {
    _checkPos(pos);
    if (pos >= getSize()) return -1;
    return static_cast<unsigned char>(_data[static_cast<size_t>(pos)]);
}

int StringBuffer::read(long pos, char* buf, int len) {
    _checkPos(pos);
    if (buf == nullptr || len < 1 || pos >= getSize()) return 0;
    long n = std::min<long>(len, getSize() - pos);
    std::copy_n(_data.data() + pos, n, buf);
    return static_cast<int>(n);
}

int StringBuffer::write(long pos, const char* buf, int len) {
    _checkPos(pos);
    if (buf == nullptr || len < 1) return 0;
    size_t end = static_cast<size_t>(pos) + static_cast<size_t>(len);
    if (end > _data.size()) _data.resize(end, '\0');
    std::copy_n(buf, len, &_data[static_cast<size_t>(pos)]);
    return len;
}

int StringBuffer::insert(long pos, const char* buf, int len) {
    _checkPos(pos);
    if (buf == nullptr || len < 1) return 0;
    if (pos > getSize()) _data.resize(static_cast<size_t>(pos), '\0');
    _data.insert(static_cast<size_t>(pos), buf, static_cast<size_t>(len));
    return len;
}

int StringBuffer::cut(long pos, int len) {
    _checkPos(pos);
    if (len < 1 || pos >= getSize()) return 0;
    long n = std::min<long>(len, getSize() - pos);
    _data.erase(static_cast<size_t>(pos), static_cast<size_t>(n));
    return static_cast<int>(n);
}

int StringBuffer::append(const char* buf, int len) {
    _checkValid();
    if (buf == nullptr || len < 1) return 0;
    _data.append(buf, static_cast<size_t>(len));
    return len;
}

void StringBuffer::truncate(long newSize) {
    _checkPos(newSize);
    if (newSize < getSize()) _data.resize(static_cast<size_t>(newSize));
}

}  // namespace tuskel_test
