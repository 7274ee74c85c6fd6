#ifndef TUSKEL_TOOLS_COMMANDS_H
#define TUSKEL_TOOLS_COMMANDS_H

#include <memory>
#include <string>
#include <vector>

#include "Archive.h"
#include "InputFile.h"

namespace tuskel_tool {

// Options every command takes.
struct Common {
    bool quiet = false;  // no progress bar, no summary
};

struct ListOptions {
    std::string file;
    bool json = false;
};

struct TestOptions {
    std::string file;
};

struct ExtractOptions {
    std::string file;
    std::string directory = ".";
    bool overwrite = false;
    std::vector<std::string> names;  // patterns; empty: every entry
};

struct CatOptions {
    std::string file;
    std::vector<std::string> names;
};

struct TypeOptions {
    std::vector<std::string> files;
    std::string name;  // steers identification by extension
    bool nameGiven = false;
    std::string contentType;
};

struct ScanOptions {
    std::string file;
    bool json = false;
    int maxDepth = 8;
    long long maxBytes = 256LL << 20;
    double maxRatio = 100;
};

struct DecompressOptions {
    std::string file;
    std::string directory;
    bool verbose = false;
};

int runList(const ListOptions& options, const Common& common);
int runTest(const TestOptions& options, const Common& common);
int runExtract(const ExtractOptions& options, const Common& common);
int runCat(const CatOptions& options, const Common& common);
int runType(const TypeOptions& options, const Common& common);
int runScan(const ScanOptions& options, const Common& common);
int runDecompress(const DecompressOptions& options);

// An input file opened as an archive.
struct Opened {
    std::unique_ptr<InputFile> input;
    std::unique_ptr<Archive> archive;
};

// Opens `path`; answers 0, or the exit status after saying what is wrong
// (it cannot be read; it is no archive this tool reads).
int openArchive(const std::string& path, Opened& opened);

// Does an entry's name match one of the patterns (all match when none)?
bool selected(const std::string& name, const std::vector<std::string>& patterns);

// Problems of the archive as a whole, each on standard error.
void reportProblems(const std::string& file, Archive& archive);

}  // namespace tuskel_tool

#endif
