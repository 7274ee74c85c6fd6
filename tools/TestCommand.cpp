// tuskel test: unpacks every entry and checks its size and CRC-32 against
// what the archive records, naming every entry that does not agree.
#include <cstdio>

#include "Commands.h"
#include "Names.h"
#include "Progress.h"
#include "Report.h"

namespace tuskel_tool {

namespace {

// Takes an entry's bytes and keeps none: the walk checks them on the way.
class NullStream : public QRN_SPACE::OutputStream {
public:
    explicit NullStream(Progress& progress) : _progress(progress) {}
    using QRN_SPACE::OutputStream::write;
    void write(char) override {}
    int write(const char*, int len) override {
        _progress.tick();
        return len;
    }
    void close() override {}

private:
    Progress& _progress;
};

class TestSink : public EntrySink {
public:
    TestSink(const std::string& file, Progress& progress) : _file(file), _progress(progress), _null(progress) {}

    bool wants(const Entry&) override {
        _progress.tick(entries++);
        return true;
    }

    QRN_SPACE::OutputStream* open(const Entry& entry) override { return entry.directory ? nullptr : &_null; }

    void close(const Entry& entry, const EntryResult& result) override {
        if (result.status == EntryResult::OK) return;
        ++bad;
        complain(_file, entry.name, (result.status == EntryResult::SKIPPED ? "skipped: " : "bad: ") + result.problem);
    }

    int entries = 0;
    int bad = 0;

private:
    std::string _file;
    Progress& _progress;
    NullStream _null;
};

}  // namespace

int runTest(const TestOptions& options, const Common& common) {
    Opened opened;
    if (int status = openArchive(options.file, opened)) return status;
    Progress progress(*opened.input, common.quiet);
    TestSink sink(options.file, progress);
    opened.archive->walk(sink, nullptr);
    progress.clearLine();
    reportProblems(options.file, *opened.archive);
    const bool good = sink.bad == 0 && opened.archive->problems().empty();
    if (!common.quiet) {
        if (good) {
            std::printf("%s: %d entr%s ok\n", printable(options.file).c_str(), sink.entries, sink.entries == 1 ? "y" : "ies");
        } else {
            std::printf("%s: %d of %d entr%s bad\n", printable(options.file).c_str(), sink.bad, sink.entries,
                        sink.entries == 1 ? "y" : "ies");
        }
    }
    return good ? EXIT_ALL_GOOD : EXIT_SOME_BAD;
}

}  // namespace tuskel_tool
