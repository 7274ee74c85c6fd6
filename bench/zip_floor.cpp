// The floor of unpacking a ZIP with zlib: every entry the central directory
// lists is inflated (or copied, if stored) with nothing around it but zlib
// and, with --crc, zlib's crc32; the bytes go to standard output with
// --write, else nowhere. With --readahead the compressed bytes are first
// copied in blocks of 33,792 bytes, whatever the entry's size, as the
// library's inflate driver reads them. Output comes in the driver's blocks
// of 51,200 bytes. bench/compare.sh times it beside
// tuskel and its peers, so that a target above what zlib itself allows
// shows as such.
//
//   zip_floor [--crc] [--write] [--readahead] FILE.zip
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

namespace {

uint32_t u16(const unsigned char* p) { return p[0] | (p[1] << 8); }
uint32_t u32(const unsigned char* p) { return u16(p) | (u16(p + 2) << 16); }

const unsigned char* data;
size_t size;
bool withCrc = false, writeOut = false, readAhead = false;
unsigned char out[51200];
const size_t kInputBlock = 33792;
unsigned char block[kInputBlock];

void emit(const unsigned char* p, size_t n, uLong& crc) {
    if (withCrc) crc = crc32(crc, p, static_cast<uInt>(n));
    if (writeOut && fwrite(p, 1, n, stdout) != n) _exit(74);
}

bool entry(size_t local, uint32_t method, size_t compressed) {
    if (local + 30 > size || u32(data + local) != 0x04034B50) return false;
    const size_t start = local + 30 + u16(data + local + 26) + u16(data + local + 28);
    if (start + compressed > size) return false;
    uLong crc = crc32(0, nullptr, 0);
    if (method == 0) {
        emit(data + start, compressed, crc);
        return true;
    }
    z_stream z = {};
    if (inflateInit2(&z, -15) != Z_OK) return false;
    z.next_in = const_cast<Bytef*>(data + start);
    z.avail_in = readAhead ? 0 : static_cast<uInt>(compressed);
    size_t at = start;
    int r;
    do {
        if (readAhead && z.avail_in == 0) {
            const size_t n = std::min(kInputBlock, size - at);
            std::memcpy(block, data + at, n);
            at += n;
            z.next_in = block;
            z.avail_in = static_cast<uInt>(n);
        }
        z.next_out = out;
        z.avail_out = sizeof out;
        r = inflate(&z, Z_NO_FLUSH);
        emit(out, sizeof out - z.avail_out, crc);
    } while (r == Z_OK);
    inflateEnd(&z);
    return r == Z_STREAM_END;
}

}  // namespace

int main(int argc, char** argv) {
    const char* path = nullptr;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--crc") == 0) withCrc = true;
        else if (std::strcmp(argv[i], "--readahead") == 0) readAhead = true;
        else if (std::strcmp(argv[i], "--write") == 0) writeOut = true;
        else path = argv[i];
    }
    int fd = path ? open(path, O_RDONLY) : -1;
    struct stat st;
    if (fd < 0 || fstat(fd, &st) != 0 || st.st_size < 22) return 66;
    size = static_cast<size_t>(st.st_size);
    data = static_cast<const unsigned char*>(mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0));
    if (data == MAP_FAILED) return 66;
    size_t end = size - 22;
    while (end > 0 && u32(data + end) != 0x06054B50) --end;
    size_t at = u32(data + end + 16);
    for (uint32_t n = u16(data + end + 10); n > 0 && at + 46 <= size; --n) {
        const unsigned char* record = data + at;
        if (!entry(u32(record + 42), u16(record + 10), u32(record + 20))) return 1;
        at += 46 + u16(record + 28) + u16(record + 30) + u16(record + 32);
    }
    return 0;
}
