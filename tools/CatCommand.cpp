// tuskel cat: entry bytes to standard output, one entry after the other,
// as unzip -p writes them.
#include <cerrno>
#include <cstring>

#include "Commands.h"
#include "Progress.h"
#include "Report.h"
#include "StdoutStream.h"

namespace tuskel_tool {

namespace {

class CatSink : public EntrySink {
public:
    CatSink(const std::string& file, const std::vector<std::string>& names, Progress& progress)
        : _file(file), _names(names), _progress(progress) {}

    bool wants(const Entry& entry) override { return !entry.directory && selected(entry.name, _names); }

    QRN_SPACE::OutputStream* open(const Entry&) override {
        _progress.tick(_entries++);
        return &_out.stream();
    }

    void close(const Entry& entry, const EntryResult& result) override {
        if (result.status == EntryResult::OK) return;
        ++bad;
        complain(_file, entry.name, (result.status == EntryResult::SKIPPED ? "skipped: " : "bad: ") + result.problem);
    }

    // Whatever is still gathered goes out.
    void finish() { _out.stream().flush(); }

    int bad = 0;

private:
    std::string _file;
    const std::vector<std::string>& _names;
    Progress& _progress;
    StdoutStream _out;
    int _entries = 0;
};

}  // namespace

int runCat(const CatOptions& options, const Common& common) {
    Opened opened;
    if (int status = openArchive(options.file, opened)) return status;
    Progress progress(*opened.input, common.quiet);
    CatSink sink(options.file, options.names, progress);
    try {
        opened.archive->walk(sink, nullptr);
        sink.finish();
    } catch (OutputFailure& failure) {
        complain("standard output", failure.message);
        return EXIT_IO_ERROR;
    } catch (QRN_SPACE::Exception& e) {
        complain("standard output", e.getMessage());
        return EXIT_IO_ERROR;
    }
    progress.clearLine();
    reportProblems(options.file, *opened.archive);
    return sink.bad == 0 && opened.archive->problems().empty() ? EXIT_ALL_GOOD : EXIT_SOME_BAD;
}

}  // namespace tuskel_tool
