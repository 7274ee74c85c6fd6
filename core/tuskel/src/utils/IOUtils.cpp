#include "utils/IOUtils.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace QRN_SPACE {

namespace {

const char* const kSource = "../../core/tuskel/src/utils/IOUtils";
const int kLineGetUChar = 25;
const int kLineEof = 57;
const int kCopyChunk = 1024;

}  // namespace

int IOUtils::readUChar(InputStream& in) {
    int c = in.read();
    if (c == -1) throwAt<IOException>("unexpected EOF", {kSource, kLineEof});
    return c;
}

int IOUtils::readUShort(InputStream& in) {
    int low = readUChar(in);
    return low + 256 * readUChar(in);
}

int IOUtils::readUInt(InputStream& in) {
    unsigned int low = static_cast<unsigned int>(readUShort(in));
    unsigned int high = static_cast<unsigned int>(readUShort(in));
    return static_cast<int>(low + 65536u * high);
}

void IOUtils::writeUChar(OutputStream& out, int value) { out.write(static_cast<char>(value & 0xFF)); }

void IOUtils::writeUShort(OutputStream& out, unsigned int value) {
    writeUChar(out, static_cast<int>(value & 0xFF));
    writeUChar(out, static_cast<int>((value >> 8) & 0xFF));
}

void IOUtils::writeUInt(OutputStream& out, long value) {
    unsigned long bits = static_cast<unsigned long>(value);
    writeUShort(out, static_cast<unsigned int>(bits & 0xFFFF));
    writeUShort(out, static_cast<unsigned int>((bits >> 16) & 0xFFFF));
}

void IOUtils::writeUChar(char* p, int value) { p[0] = static_cast<char>(value & 0xFF); }

void IOUtils::writeUShort(char* p, unsigned int value) {
    writeUChar(p, static_cast<int>(value & 0xFF));
    writeUChar(p + 1, static_cast<int>((value >> 8) & 0xFF));
}

void IOUtils::writeUInt(char* p, long value) {
    unsigned long bits = static_cast<unsigned long>(value);
    writeUShort(p, static_cast<unsigned int>(bits & 0xFFFF));
    writeUShort(p + 2, static_cast<unsigned int>((bits >> 16) & 0xFFFF));
}

int IOUtils::getUChar(InputStream& in, unsigned int offset) {
    char c = 0;
    in.mark(static_cast<int>(offset + 1));
    in.skip(offset);
    int got = in.read(&c, 1);
    in.reset();
    // Whatever errno holds now is the message: intended.
    if (got != 1) throwSystemError({kSource, kLineGetUChar}, errno);
    return static_cast<unsigned char>(c);
}

int IOUtils::getUShort(InputStream& in, unsigned int offset) {
    in.mark(static_cast<int>(offset + 2));
    in.skip(offset);
    int value = readUShort(in);
    in.reset();
    return value & 0xFFFF;
}

int IOUtils::getUInt(InputStream& in, unsigned int offset) {
    in.mark(static_cast<int>(offset + 4));
    in.skip(offset);
    int value = readUInt(in);
    in.reset();
    return value;
}

int IOUtils::readAndWrite(InputStream& in, OutputStream& out) {
    char buf[kCopyChunk];
    for (;;) {
        int got = in.read(buf, kCopyChunk);
        if (got < 1) return got;
        out.write(buf, got);
    }
}

void IOUtils::readAndWrite(InputStream& in, OutputStream& out, long n) {
    char buf[kCopyChunk];
    while (n > 0) {
        int got = in.read(buf, static_cast<int>(std::min<long>(n, kCopyChunk)));
        if (got < 1) return;
        out.write(buf, got);
        n -= got;
    }
}

int IOUtils::readFull(InputStream& in, char* buf, int len) {
    int total = 0;
    while (total < len) {
        int got = in.read(buf + total, len - total);
        if (got < 1) break;
        total += got;
    }
    return total;
}

long IOUtils::readFull(InputStream& in) {
    char buf[kCopyChunk];
    long total = 0;
    for (int got; (got = in.read(buf, kCopyChunk)) > 0;) total += got;
    return total;
}

long IOUtils::skip(InputStream& in) { return readFull(in); }

std::string IOUtils::readString(InputStream& in) {
    std::string s;
    for (int c; (c = in.read()) >= 1;) s.push_back(static_cast<char>(c));
    return s;
}

}  // namespace QRN_SPACE
