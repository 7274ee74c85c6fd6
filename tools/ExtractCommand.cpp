// tuskel extract: entries into files and directories under DIR, and nowhere
// else; modes and times as the archive records them (never setuid, setgid
// or sticky); existing files are kept unless -o.
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <stdexcept>

#include "Commands.h"
#include "Progress.h"
#include "Report.h"
#include "SafeTree.h"
#include "io/BufferedOutputStream.h"
#include "io/FileOutputStream.h"

namespace tuskel_tool {

namespace {

const int kFileBuffer = 64 * 1024;
const long long kLongestLink = 4096;  // a link target longer than a path is no link

mode_t currentUmask() {
    const mode_t mask = umask(0);
    umask(mask);
    return mask;
}

// Collects a symbolic link's target, which is an entry's data.
class TargetStream : public QRN_SPACE::OutputStream {
public:
    using QRN_SPACE::OutputStream::write;
    void write(char c) override { write(&c, 1); }
    int write(const char* buf, int len) override {
        if (static_cast<long long>(target.size()) + len <= kLongestLink) {
            target.append(buf, static_cast<size_t>(len));
        } else {
            tooLong = true;
        }
        return len;
    }
    void close() override {}
    std::string target;
    bool tooLong = false;
};

class ExtractSink : public EntrySink {
public:
    ExtractSink(const ExtractOptions& options, SafeTree& tree, Progress& progress)
        : _options(options), _tree(tree), _progress(progress), _umask(currentUmask()) {}

    bool wants(const Entry& entry) override { return selected(entry.name, _options.names); }

    QRN_SPACE::OutputStream* open(const Entry& entry) override {
        _progress.tick(_entries++);
        std::string why;
        if (entry.directory) {
            const unsigned int mode = entry.mode != 0 ? entry.mode : (0777 & ~_umask);
            if (!_tree.createDirectory(entry.name, mode, entry.mtime, why)) _refuse(entry, why);
            return nullptr;
        }
        if (entry.symlink) {
            _link.target.clear();
            _link.tooLong = false;
            return &_link;
        }
        const int fd = _tree.createFile(entry.name, _options.overwrite, why);
        if (fd < 0) {
            _refuse(entry, why);
            return nullptr;
        }
        _file.reset(new QRN_SPACE::FileOutputStream(fd));
        _buffered.reset(new QRN_SPACE::BufferedOutputStream(*_file, kFileBuffer));
        _fd = fd;
        return _buffered.get();
    }

    void close(const Entry& entry, const EntryResult& result) override {
        if (entry.symlink && result.status == EntryResult::OK) return _makeLink(entry);
        if (_fd >= 0) _finishFile(entry);
        if (result.status == EntryResult::OK) return;
        ++bad;
        complain(_options.file, entry.name,
                 (result.status == EntryResult::SKIPPED ? "skipped: " : "bad: ") + result.problem);
    }

    int bad = 0;

private:
    void _refuse(const Entry& entry, const std::string& why) {
        ++bad;
        complain(_options.file, entry.name, why);
    }

    void _makeLink(const Entry& entry) {
        std::string why;
        if (_link.tooLong) {
            _refuse(entry, "refused: link target too long");
        } else if (!_tree.createSymlink(entry.name, _link.target, _options.overwrite, why)) {
            _refuse(entry, why);
        }
    }

    // Data written: the recorded permission bits (without setuid, setgid
    // and sticky) and time go on the file before it is closed.
    void _finishFile(const Entry& entry) {
        try {
            _buffered->close();
        } catch (QRN_SPACE::Exception& e) {
            _fd = -1;
            throw OutputFailure{entry.name + ": " + e.getMessage()};
        }
        const mode_t mode = entry.mode != 0 ? static_cast<mode_t>(entry.mode & 0777) : (0666 & ~_umask);
        fchmod(_fd, mode);
        const struct timespec times[2] = {{entry.mtime, 0}, {entry.mtime, 0}};
        futimens(_fd, times);
        _fd = -1;
        _buffered.reset();
        _file->close();
        _file.reset();
    }

    const ExtractOptions& _options;
    SafeTree& _tree;
    Progress& _progress;
    mode_t _umask;
    int _entries = 0;
    std::unique_ptr<QRN_SPACE::FileOutputStream> _file;
    std::unique_ptr<QRN_SPACE::BufferedOutputStream> _buffered;
    int _fd = -1;  // the open file's descriptor, owned by _file
    TargetStream _link;
};

}  // namespace

int runExtract(const ExtractOptions& options, const Common& common) {
    Opened opened;
    if (int status = openArchive(options.file, opened)) return status;
    std::unique_ptr<SafeTree> tree;
    try {
        tree.reset(new SafeTree(options.directory, currentUmask()));
    } catch (std::runtime_error& e) {
        complain(options.file, e.what());
        return EXIT_IO_ERROR;
    }
    Progress progress(*opened.input, common.quiet);
    ExtractSink sink(options, *tree, progress);
    try {
        opened.archive->walk(sink, nullptr);
    } catch (OutputFailure& failure) {
        complain(options.file, failure.message);
        return EXIT_IO_ERROR;
    } catch (QRN_SPACE::Exception& e) {
        complain(options.file, e.getMessage());
        return EXIT_IO_ERROR;
    }
    tree->finish();
    progress.clearLine();
    reportProblems(options.file, *opened.archive);
    return sink.bad == 0 && opened.archive->problems().empty() ? EXIT_ALL_GOOD : EXIT_SOME_BAD;
}

}  // namespace tuskel_tool
