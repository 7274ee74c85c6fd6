// tuskel decompress: the host-interface path. The file is mapped and handed
// to CommonDecompressor as a host buffer; every entry it unpacks goes to
// standard output or into numbered files, and the library's result code is
// the exit status.
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "Commands.h"
#include "HostBuffers.h"
#include "OutputProcessor.h"
#include "Report.h"
#include "tuskel/CommonDecompressor.h"

namespace tuskel_tool {

namespace {

const mode_t kDirectoryMode = 0755;

const char* meaning(int result) {
    switch (result) {
        case CommonDecompressor::RESULT_OK: return "ok";
        case CommonDecompressor::RESULT_FAILED: return "failed: the archive could not be read";
        case CommonDecompressor::RESULT_NULL_ARGUMENT: return "bad arguments";
        case CommonDecompressor::RESULT_UNSUPPORTED: return "not supported: neither GZIP nor ZIP";
        default: return "unknown result";
    }
}

void logToStderr(const char* piece) { std::fputs(piece, stderr); }

}  // namespace

int runDecompress(const DecompressOptions& options) {
    MappedFile input;
    std::string error;
    if (!input.open(options.file, error)) {
        std::fprintf(stderr, "tuskel: %s\n", error.c_str());
        return EXIT_IO_ERROR;
    }
    if (!options.directory.empty() && mkdir(options.directory.c_str(), kDirectoryMode) != 0 && errno != EEXIST) {
        complain(options.directory, std::strerror(errno));
        return EXIT_IO_ERROR;
    }
    CommonDecompressor decompressor;
    decompressor.setLogger(options.verbose ? CommonDecompressor::LOG_DEBUG : 0,
                           options.verbose ? logToStderr : nullptr);
    MemoryInputBuffer buffer(input.data(), input.size());
    OutputProcessor entries(options.directory);
    const int result = decompressor.decompress(&buffer, &entries);
    entries.finish();  // closes the last file, whatever the library did

    // The result goes where it cannot mix with unpacked bytes.
    FILE* report = options.directory.empty() ? stderr : stdout;
    std::fprintf(report, "tuskel: result %d: %s; %d entr%s\n", result, meaning(result), entries.entries(),
                 entries.entries() == 1 ? "y" : "ies");
    if (std::fflush(stdout) != 0 || entries.failed()) return EXIT_IO_ERROR;
    return result;
}

}  // namespace tuskel_tool
