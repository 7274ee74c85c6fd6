// Peak memory of one decompress call. The process holds the gzip input,
// read from FILE, and an output of the trailer's size, touched; in mode
// "decompress" it then unpacks the input once through the host interface.
// Run it in both modes: the difference of the peaks is what decompress
// costs beyond the input and the output.
//
//   decompress_rss FILE.gz baseline|decompress
#include <sys/resource.h>
#include <sys/stat.h>
#include <zlib.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "MemoryHost.h"

namespace {

void check(bool ok, const char* what) {
    if (!ok) {
        std::fprintf(stderr, "decompress_rss: %s failed\n", what);
        std::exit(1);
    }
}

unsigned int littleEndian32(const unsigned char* p) {
    return p[0] | (p[1] << 8) | (p[2] << 16) | (static_cast<unsigned int>(p[3]) << 24);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: decompress_rss FILE.gz baseline|decompress\n", stderr);
        return 64;
    }
    bool run = std::strcmp(argv[2], "decompress") == 0;
    struct stat st;
    check(stat(argv[1], &st) == 0 && st.st_size > 8, argv[1]);
    size_t inSize = static_cast<size_t>(st.st_size);
    char* in = static_cast<char*>(std::malloc(inSize));
    FILE* f = std::fopen(argv[1], "rb");
    check(in != nullptr && f != nullptr && std::fread(in, 1, inSize, f) == inSize, "reading the input");
    std::fclose(f);

    const unsigned char* trailer = reinterpret_cast<const unsigned char*>(in + inSize - 8);
    size_t outSize = littleEndian32(trailer + 4);
    char* out = static_cast<char*>(std::malloc(outSize));
    check(out != nullptr, "allocating the output");
    // Not zero: malloc and a zero fill may become calloc, which touches nothing.
    std::memset(out, 0xA5, outSize);

    if (run) {
        tuskel_bench::MemoryInput input(in, inSize);
        tuskel_bench::MemoryOutput output(out, outSize);
        tuskel_bench::PreparedEntries entries(output);
        CommonDecompressor decompressor;
        decompressor.setLogger(0, nullptr);
        check(decompressor.decompress(&input, &entries) == 0, "decompress");
        uLong crc = crc32(crc32(0, Z_NULL, 0), reinterpret_cast<const Bytef*>(out), static_cast<uInt>(outSize));
        check(static_cast<size_t>(output.size()) == outSize && crc == littleEndian32(trailer), "the output check");
    }

    struct rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    std::printf("%s: input %zu bytes, output %zu bytes, max RSS %ld KiB\n", argv[2], inSize, outSize,
                usage.ru_maxrss);
    std::free(out);
    std::free(in);
    return 0;
}
