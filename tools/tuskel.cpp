// tuskel: a command-line host for libtuskel. It maps the input, hands it to
// the library as a CommonBuffer and writes every unpacked entry to standard
// output or into numbered files.

#include <getopt.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "HostBuffers.h"
#include "OutputProcessor.h"
#include "tuskel/CommonDecompressor.h"

namespace {

// Exit statuses of the tool's own failures (sysexits.h values); otherwise
// the status is the library's result code.
const int kExitUsage = 64;
const int kExitNoInput = 66;
const int kExitCannotCreate = 73;
const int kExitIoError = 74;

const mode_t kDirectoryMode = 0755;

const char* const kUsage =
    "usage: tuskel decompress [-v] [-d DIR] FILE\n"
    "\n"
    "Unpacks the GZIP or ZIP file FILE. Every entry goes to standard output,\n"
    "one after the other, or with -d into the files DIR/1, DIR/2, ... in the\n"
    "order of the archive (DIR is created when missing).\n"
    "\n"
    "  -d DIR  write the entries into numbered files under DIR\n"
    "  -v      show the library's log on standard error\n"
    "\n"
    "The exit status is the library's result: 0 unpacked, 1 failed (see -v),\n"
    "2 bad arguments, 3 neither GZIP nor ZIP; 64 usage, 66 unreadable input,\n"
    "73 DIR cannot be created, 74 an entry could not be written.\n";

struct Options {
    std::string file;
    std::string directory;
    bool verbose = false;
};

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

// argv[1] is the command; options may come before or after FILE.
bool parse(int argc, char** argv, Options& options) {
    if (argc < 2 || std::strcmp(argv[1], "decompress") != 0) return false;
    optind = 2;
    for (int c; (c = getopt(argc, argv, "vd:h")) != -1;) {
        if (c == 'v') {
            options.verbose = true;
        } else if (c == 'd') {
            options.directory = optarg;
        } else {
            return false;
        }
    }
    if (optind != argc - 1) return false;
    options.file = argv[optind];
    return !options.file.empty();
}

bool makeDirectory(const std::string& path) {
    if (mkdir(path.c_str(), kDirectoryMode) == 0 || errno == EEXIST) return true;
    std::fprintf(stderr, "tuskel: %s: %s\n", path.c_str(), std::strerror(errno));
    return false;
}

int run(const Options& options) {
    tuskel_tool::MappedFile input;
    std::string error;
    if (!input.open(options.file, error)) {
        std::fprintf(stderr, "tuskel: %s\n", error.c_str());
        return kExitNoInput;
    }
    if (!options.directory.empty() && !makeDirectory(options.directory)) return kExitCannotCreate;

    CommonDecompressor decompressor;
    decompressor.setLogger(options.verbose ? CommonDecompressor::LOG_DEBUG : 0,
                           options.verbose ? logToStderr : nullptr);
    tuskel_tool::MemoryInputBuffer buffer(input.data(), input.size());
    tuskel_tool::OutputProcessor entries(options.directory);
    int result = decompressor.decompress(&buffer, &entries);
    entries.finish();  // closes the last file, whatever the library did

    // The result goes where it cannot mix with unpacked bytes.
    FILE* report = options.directory.empty() ? stderr : stdout;
    std::fprintf(report, "tuskel: result %d: %s; %d entr%s\n", result, meaning(result), entries.entries(),
                 entries.entries() == 1 ? "y" : "ies");
    if (std::fflush(stdout) != 0) return kExitIoError;
    if (entries.failed()) return kExitIoError;
    return result;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    if (argc == 2 && (std::strcmp(argv[1], "-h") == 0 || std::strcmp(argv[1], "--help") == 0)) {
        std::fputs(kUsage, stdout);
        return 0;
    }
    if (!parse(argc, argv, options)) {
        std::fputs(kUsage, stderr);
        return kExitUsage;
    }
    return run(options);
}
