#include "io/InputStream.h"

#include <algorithm>

namespace QRN_SPACE {

namespace {

const char* const kSource = "../../../modules/common-stl/include/io/InputStream";
const int kLineClosed = 55;
const int kLineAvailable = 63;
const int kLineClose = 68;
const int kLineRead = 73;
const int kSkipChunk = 512;

}  // namespace

InputStream::~InputStream() = default;

void InputStream::_throwClosed() {
    throwAt<IOException>("Stream is already closed", {kSource, kLineClosed});
}

int InputStream::available() { throwAt<IOException>("Unimplemented", {kSource, kLineAvailable}); }

void InputStream::close() { throwAt<IOException>("Unimplemented", {kSource, kLineClose}); }

int InputStream::read() { throwAt<IOException>("Unimplemented", {kSource, kLineRead}); }

int InputStream::read(char* buf, int len) {
    if (buf == nullptr) return 0;
    int count = 0;
    while (count < len) {
        int c = read();
        if (c == -1) break;
        buf[count++] = static_cast<char>(c);
    }
    return count;
}

long InputStream::skip(long n) {
    char scratch[kSkipChunk];
    long total = 0;
    while (total < n) {
        int chunk = static_cast<int>(std::min<long>(kSkipChunk, n - total));
        int got = read(scratch, chunk);
        if (got < 1) break;
        total += got;
        if (got < chunk) break;
    }
    return total;
}

bool InputStream::markSupported() { return false; }

void InputStream::mark(int) {}

void InputStream::reset() {}

}  // namespace QRN_SPACE
