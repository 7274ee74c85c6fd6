// tuskel scan: a content scanner's walk. Every entry is held (in memory up
// to the smart buffer's barrier, then in a temporary file) behind a size
// limit, identified, and opened in turn when it is an archive itself, down
// to --max-depth levels. An entry that outgrows its limit ends that branch
// with a message, in bounded memory and disk, and the walk goes on.
#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <memory>
#include <nlohmann/json.hpp>

#include "Commands.h"
#include "FileTypes.h"
#include "Names.h"
#include "Progress.h"
#include "Report.h"
#include "filetype/FileTypeIdent.h"
#include "io/BufferBaseOutputStream.h"
#include "io/FilteredBufferBase.h"
#include "io/SmartBufferBase.h"

namespace tuskel_tool {

namespace {

const long long kRatioFloor = 1 << 20;  // below this an entry's ratio is never held against it
const char kNestingMark = '!';

struct Scan {
    const ScanOptions& options;
    Progress& progress;
    int entries = 0;
    int bad = 0;
};

// An entry's bytes into its held buffer, through the limit. Once the limit
// is passed the rest is dropped and the inflater is told to stop.
class HoldStream : public QRN_SPACE::OutputStream {
public:
    HoldStream(QRN_SPACE::BufferBase& limited, Cutter& cutter, Progress& progress)
        : _out(&limited), _cutter(cutter), _progress(progress) {}

    using QRN_SPACE::OutputStream::write;
    void write(char c) override { write(&c, 1); }
    int write(const char* buf, int len) override {
        _progress.tick();
        if (exceeded) return len;
        try {
            _out.write(buf, len);
        } catch (QRN_SPACE::BufferBaseOverSizeException&) {
            exceeded = true;
            _cutter.cut();
        }
        return len;
    }
    void close() override {}

    bool exceeded = false;

private:
    QRN_SPACE::BufferBaseOutputStream _out;
    Cutter& _cutter;
    Progress& _progress;
};

class ScanSink : public EntrySink {
public:
    ScanSink(Scan& scan, const std::string& path, int depth, Cutter& cutter)
        : _scan(scan), _path(path), _depth(depth), _cutter(cutter) {}

    QRN_SPACE::OutputStream* open(const Entry& entry) override;
    void close(const Entry& entry, const EntryResult& result) override;

private:
    long long _limitFor(const Entry& entry) const;
    void _descend(const Entry& entry, const std::string& path);

    Scan& _scan;
    std::string _path;  // of the archive this sink walks
    int _depth;         // its level: 1 for the file itself
    Cutter& _cutter;
    std::unique_ptr<QRN_SPACE::SmartBufferBase> _held;
    std::unique_ptr<QRN_SPACE::LimitedBufferBase> _limited;
    std::unique_ptr<HoldStream> _stream;
    long long _limit = 0;
};

void printLine(Scan& scan, const std::string& path, const Entry* entry, long long size, int type, const char* crc,
               const std::string& problem) {
    ++scan.entries;
    if (scan.options.json) {
        nlohmann::json line = {{"path", validUtf8(path)}, {"crc", crc}};
        if (entry != nullptr) {
            line["size"] = size;
            line["compressed_size"] = entry->compressedSize;
            line["directory"] = entry->directory;
        }
        if (type >= 0) {
            line["type"] = type;
            line["type_name"] = typeName(type);
            line["kind"] = typeKind(type);
        }
        if (!problem.empty()) line["error"] = validUtf8(problem);
        std::puts(line.dump().c_str());
        return;
    }
    Progress::clearLine();
    const std::string typeText = type >= 0 ? std::to_string(type) + " " + typeName(type) : "-";
    std::printf("%-9s %12lld %12lld  %-14s %s%s%s\n", crc, size, entry != nullptr ? entry->compressedSize : -1LL,
                typeText.c_str(), printable(path).c_str(), problem.empty() ? "" : ": ",
                printable(problem).c_str());
}

// An entry may take max-bytes, and no more than max-ratio times its
// compressed size once it is larger than a megabyte.
long long ScanSink::_limitFor(const Entry& entry) const {
    long long limit = _scan.options.maxBytes;
    if (entry.compressedSize >= 0 && _scan.options.maxRatio > 0) {
        const double byRatio = std::max<double>(_scan.options.maxRatio * entry.compressedSize, kRatioFloor);
        if (byRatio < static_cast<double>(limit)) limit = static_cast<long long>(byRatio);
    }
    return limit;
}

QRN_SPACE::OutputStream* ScanSink::open(const Entry& entry) {
    _scan.progress.tick(_scan.entries);
    if (entry.directory) {
        printLine(_scan, _path + kNestingMark + entry.name, &entry, 0, -1, "-", "");
        return nullptr;
    }
    _limit = _limitFor(entry);
    _held.reset(new QRN_SPACE::SmartBufferBase());
    _limited.reset(new QRN_SPACE::LimitedBufferBase(_held.get(), static_cast<long>(std::min<long long>(_limit, LONG_MAX))));
    _stream.reset(new HoldStream(*_limited, _cutter, _scan.progress));
    return _stream.get();
}

void ScanSink::close(const Entry& entry, const EntryResult& result) {
    const std::string path = _path + kNestingMark + entry.name;
    if (!_stream) {  // never opened: its data could not be read
        ++_scan.bad;
        printLine(_scan, path, &entry, entry.size, -1, "-", result.problem);
        return;
    }
    std::string problem = result.problem;
    const char* crc = result.status == EntryResult::OK ? (result.cut ? "unchecked" : "ok") : "bad";
    int type = -1;
    if (_stream->exceeded) {
        problem = "stopped at " + std::to_string(_limit) + " bytes, the limit for this entry (--max-bytes, --max-ratio)";
    } else {
        type = QRN_SPACE::FileTypeIdent::checkFileType(_held.get(), entry.name, "");
    }
    if (result.status != EntryResult::OK || _stream->exceeded) ++_scan.bad;
    printLine(_scan, path, &entry, result.written, type, crc, problem);
    if (!_stream->exceeded && result.status == EntryResult::OK) _descend(entry, path);
    _stream.reset();
    _limited.reset();
    _held.reset();
}

// An entry that is an archive itself is walked in turn, one level down.
void ScanSink::_descend(const Entry& entry, const std::string& path) {
    std::unique_ptr<QRN_SPACE::SmartBufferBase> held = std::move(_held);
    Archive nested(*held, entry.name);
    if (nested.format() == Format::None) return;
    if (_depth >= _scan.options.maxDepth) {
        ++_scan.bad;
        printLine(_scan, path, nullptr, 0, -1, "-", "not opened: --max-depth reached");
        return;
    }
    Cutter cutter;
    ScanSink inner(_scan, path, _depth + 1, cutter);
    nested.walk(inner, &cutter);
    for (const std::string& problem : nested.problems()) {
        ++_scan.bad;
        printLine(_scan, path, nullptr, 0, -1, "-", problem);
    }
}

}  // namespace

int runScan(const ScanOptions& options, const Common& common) {
    Opened opened;
    if (int status = openArchive(options.file, opened)) return status;
    Progress progress(*opened.input, common.quiet);
    Scan scan{options, progress};
    Cutter cutter;
    ScanSink top(scan, options.file, 1, cutter);
    opened.archive->walk(top, &cutter);
    for (const std::string& problem : opened.archive->problems()) {
        ++scan.bad;
        printLine(scan, options.file, nullptr, 0, -1, "-", problem);
    }
    progress.clearLine();
    if (std::fflush(stdout) != 0) {
        complain("standard output", std::strerror(errno));
        return EXIT_IO_ERROR;
    }
    return scan.bad == 0 ? EXIT_ALL_GOOD : EXIT_SOME_BAD;
}

}  // namespace tuskel_tool
