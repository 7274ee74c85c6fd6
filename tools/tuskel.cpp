// tuskel: lists, tests, extracts and scans GZIP files, ZIP archives and
// self-extracting ZIPs with the library's C++ interface; `decompress` takes
// the host-interface path.
#include <CLI/CLI.hpp>
#include <climits>

#include "Commands.h"
#include "Report.h"

namespace {

using namespace tuskel_tool;

const char* const kExitStatuses =
    "Exit status:\n"
    "  0   all good\n"
    "  1   some entries bad, skipped or refused (each is named on standard error)\n"
    "  3   not an archive: neither GZIP nor ZIP nor a self-extracting ZIP\n"
    "  64  usage: a bad command line\n"
    "  74  input or output error: FILE unreadable, or an output not written\n"
    "decompress answers the library's result instead: 0 unpacked, 1 the archive\n"
    "could not be read, 3 neither GZIP nor ZIP; and 64 or 74 as above.\n";

// Byte counts with an optional K, M or G (powers of 1024).
long long parseBytes(const std::string& text) {
    size_t used = 0;
    long long value = std::stoll(text, &used);
    const std::string unit = text.substr(used);
    long long scale = 1;
    if (unit == "K" || unit == "k") scale = 1LL << 10;
    else if (unit == "M" || unit == "m") scale = 1LL << 20;
    else if (unit == "G" || unit == "g") scale = 1LL << 30;
    else if (!unit.empty()) throw std::invalid_argument(text);
    if (value < 1 || value > LLONG_MAX / scale) throw std::out_of_range(text);
    return value * scale;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"tuskel: look inside GZIP files, ZIP archives and self-extracting ZIPs, safely.", "tuskel"};
    app.footer(kExitStatuses);
    app.set_version_flag("--version", std::string("tuskel " TUSKEL_VERSION));
    app.require_subcommand(1);
    app.fallthrough();  // -q may come after the command too
    Common common;
    app.add_flag("-q,--quiet", common.quiet, "No progress bar and no summary");

    ListOptions list;
    CLI::App* listCommand = app.add_subcommand("list", "Entries with sizes, method, CRC-32, time and file type");
    listCommand->add_option("FILE", list.file, "The archive")->required();
    listCommand->add_flag("--json", list.json, "One JSON document on standard output");

    TestOptions test;
    CLI::App* testCommand = app.add_subcommand("test", "Unpack every entry and check its size and CRC-32");
    testCommand->add_option("FILE", test.file, "The archive")->required();

    ExtractOptions extract;
    CLI::App* extractCommand = app.add_subcommand("extract", "Entries into files under DIR, and nowhere else");
    extractCommand->add_option("FILE", extract.file, "The archive")->required();
    extractCommand->add_option("NAME", extract.names, "Only entries matching these names or patterns");
    extractCommand->add_option("-d,--directory", extract.directory, "Where to extract (default: .)");
    extractCommand->add_flag("-o,--overwrite", extract.overwrite, "Replace existing files");

    CatOptions cat;
    CLI::App* catCommand = app.add_subcommand("cat", "Entry bytes to standard output, as unzip -p");
    catCommand->add_option("FILE", cat.file, "The archive")->required();
    catCommand->add_option("NAME", cat.names, "Only entries matching these names or patterns");

    TypeOptions type;
    CLI::App* typeCommand = app.add_subcommand("type", "The file type of each FILE, from its first bytes");
    typeCommand->add_option("FILE", type.files, "Files to identify")->required();
    CLI::Option* nameOption = typeCommand->add_option("--name", type.name,
        "Identify as if named NAME (default: the file's own name; '' for none)");
    typeCommand->add_option("--content-type", type.contentType, "A declared content type, used when no name is");

    ScanOptions scan;
    std::string maxBytes;
    CLI::App* scanCommand = app.add_subcommand("scan", "Identify every entry, opening nested archives, within limits");
    scanCommand->add_option("FILE", scan.file, "The archive")->required();
    scanCommand->add_flag("--json", scan.json, "One JSON object per line");
    scanCommand->add_option("--max-depth", scan.maxDepth, "Levels of nested archives to open (default 8)")
        ->check(CLI::Range(1, 64));
    scanCommand->add_option("--max-bytes", maxBytes, "Most bytes one entry may unpack to (default 256M)");
    scanCommand->add_option("--max-ratio", scan.maxRatio,
        "Most times its compressed size an entry over 1M may unpack to (default 100)")->check(CLI::PositiveNumber);

    DecompressOptions decompress;
    CLI::App* decompressCommand = app.add_subcommand("decompress",
        "Unpack through the host interface: entries to standard output, or numbered files in DIR");
    decompressCommand->add_option("FILE", decompress.file, "The GZIP or ZIP file")->required();
    decompressCommand->add_option("-d", decompress.directory, "Write entries as DIR/1, DIR/2, ...");
    decompressCommand->add_flag("-v", decompress.verbose, "The library's log on standard error");

    for (CLI::App* command : app.get_subcommands({})) command->footer(kExitStatuses);
    try {
        app.parse(argc, argv);
        if (!maxBytes.empty()) scan.maxBytes = parseBytes(maxBytes);
    } catch (const CLI::ParseError& e) {
        const int status = app.exit(e);
        return status == 0 ? EXIT_ALL_GOOD : EXIT_USAGE;
    } catch (const std::logic_error&) {
        std::fprintf(stderr, "tuskel: --max-bytes: not a byte count: %s\n", maxBytes.c_str());
        return EXIT_USAGE;
    }
    type.nameGiven = nameOption->count() > 0;

    if (listCommand->parsed()) return runList(list, common);
    if (testCommand->parsed()) return runTest(test, common);
    if (extractCommand->parsed()) return runExtract(extract, common);
    if (catCommand->parsed()) return runCat(cat, common);
    if (typeCommand->parsed()) return runType(type, common);
    if (scanCommand->parsed()) return runScan(scan, common);
    return runDecompress(decompress);
}
