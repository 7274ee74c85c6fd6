// tuskel list: what an archive holds, from its central directory as unzip
// lists it, or from its local headers when the directory is missing or
// damaged; with the file type of every entry, identified from its first
// bytes.
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <nlohmann/json.hpp>

#include "Commands.h"
#include "FileTypes.h"
#include "Names.h"
#include "Progress.h"
#include "Report.h"
#include "io/ContinuousMemBufferBase.h"
#include "unarchiver/FileTypeProcessor.h"

namespace tuskel_tool {

namespace {

using QRN_SPACE::FileTypeProcessor;

const int kNoType = -1;  // directories and unreadable entries

// Remembers the type of the last check and answers "enough": a listing
// needs an entry's first bytes only, and this ends its inflation there.
class TypeRecorder : public FileTypeProcessor::CallBack {
public:
    int getAction(int fileType) override {
        type = fileType;
        return kEnough;
    }
    int type = kNoType;
    static const int kEnough = 2;
};

struct Listed {
    Entry entry;
    int type = kNoType;
    std::string problem;
};

// Collects an entry's first bytes and has them identified as soon as there
// are enough of them (or the entry ends).
class HeadStream : public QRN_SPACE::OutputStream {
public:
    HeadStream(FileTypeProcessor& identify, TypeRecorder& recorder)
        : _identify(identify), _recorder(recorder), _head(kHead) {}

    void begin() {
        _head.truncate(0);
        _checked = false;
        _recorder.type = kNoType;
    }
    using QRN_SPACE::OutputStream::write;
    void write(char c) override { write(&c, 1); }
    int write(const char* buf, int len) override {
        const long room = kHead - _head.getSize();
        if (room > 0) _head.append(buf, static_cast<int>(std::min<long>(room, len)));
        if (_head.getSize() >= kHead) identify();
        return len;
    }
    void close() override {}
    int identify() {
        if (!_checked) _identify.check(&_head);
        _checked = true;
        return _recorder.type;
    }

private:
    FileTypeProcessor& _identify;
    TypeRecorder& _recorder;
    QRN_SPACE::ContinuousMemBufferBase _head;
    bool _checked = false;
    static const long kHead = 1024;
};

class ListSink : public EntrySink {
public:
    ListSink(FileTypeProcessor& identify, TypeRecorder& recorder, Progress& progress)
        : _identify(identify), _head(identify, recorder), _progress(progress) {}

    long long needs() const override { return _identify.requiredLength(); }

    QRN_SPACE::OutputStream* open(const Entry& entry) override {
        _progress.tick(static_cast<int>(entries.size()));
        entries.push_back({entry, kNoType, ""});
        if (entry.directory) return nullptr;
        std::string name = entry.name;
        _identify.setFileName(name);
        _head.begin();
        return &_head;
    }

    void close(const Entry& entry, const EntryResult& result) override {
        if (entries.empty() || entries.back().entry.index != entry.index) entries.push_back({entry, kNoType, ""});
        Listed& listed = entries.back();
        if (result.status == EntryResult::OK) {
            listed.type = _head.identify();
        } else {
            listed.problem = result.problem;
        }
    }

    std::vector<Listed> entries;

private:
    FileTypeProcessor& _identify;
    HeadStream _head;
    Progress& _progress;
};

std::string localTime(time_t t) {
    struct tm parts;
    char text[32] = "";
    if (localtime_r(&t, &parts) != nullptr) std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts);
    return text;
}

std::string crcText(const Entry& entry) {
    char text[9] = "";
    if (entry.crcKnown) std::snprintf(text, sizeof text, "%08x", entry.crc);
    return text;
}

void printText(const std::vector<Listed>& entries) {
    std::printf("%10s %10s %-8s %-8s %-19s %-14s %s\n", "Length", "Compressed", "Method", "CRC-32", "Modified",
                "Type", "Name");
    long long size = 0, compressed = 0;
    for (const Listed& l : entries) {
        const Entry& e = l.entry;
        std::string type = l.type == kNoType ? "-" : std::to_string(l.type) + " " + typeName(l.type);
        std::printf("%10lld %10lld %-8s %-8s %-19s %-14s %s%s\n", e.size, e.compressedSize, e.methodName(),
                    crcText(e).c_str(), localTime(e.mtime).c_str(), type.c_str(), printable(e.name).c_str(),
                    l.problem.empty() ? "" : ("  (" + l.problem + ")").c_str());
        if (e.size > 0) size += e.size;
        if (e.compressedSize > 0) compressed += e.compressedSize;
    }
    std::printf("%10lld %10lld %zu entr%s\n", size, compressed, entries.size(), entries.size() == 1 ? "y" : "ies");
}

void printJson(const std::string& file, Archive& archive, const std::vector<Listed>& entries) {
    nlohmann::json list = nlohmann::json::array();
    for (const Listed& l : entries) {
        const Entry& e = l.entry;
        nlohmann::json item = {
            {"name", validUtf8(e.name)},
            {"size", e.size},
            {"compressed_size", e.compressedSize},
            {"method", e.methodName()},
            {"crc32", crcText(e)},
            {"modified", localTime(e.mtime)},
            {"directory", e.directory},
            {"symlink", e.symlink},
        };
        if (l.type != kNoType) {
            item["type"] = l.type;
            item["type_name"] = typeName(l.type);
            item["kind"] = typeKind(l.type);
        }
        if (!l.problem.empty()) item["problem"] = l.problem;
        list.push_back(std::move(item));
    }
    nlohmann::json problems = nlohmann::json::array();
    for (const std::string& p : archive.problems()) problems.push_back(validUtf8(p));
    nlohmann::json document = {{"file", validUtf8(file)},
                               {"format", formatName(archive.format())},
                               {"entries", std::move(list)},
                               {"problems", std::move(problems)}};
    std::puts(document.dump(2).c_str());
}

}  // namespace

int runList(const ListOptions& options, const Common& common) {
    Opened opened;
    if (int status = openArchive(options.file, opened)) return status;
    Archive& archive = *opened.archive;
    Progress progress(*opened.input, common.quiet);
    TypeRecorder recorder;
    FileTypeProcessor identify;
    // The recorder stays installed for this listing only.
    FileTypeProcessor::call_back = &recorder;
    ListSink sink(identify, recorder, progress);
    if (!archive.walkDirectory(sink, &identify)) archive.walk(sink, &identify);
    FileTypeProcessor::call_back = nullptr;
    progress.clearLine();

    if (!options.json) reportProblems(options.file, archive);
    options.json ? printJson(options.file, archive, sink.entries) : printText(sink.entries);
    if (std::fflush(stdout) != 0) {
        complain("standard output", std::strerror(errno));
        return EXIT_IO_ERROR;
    }
    bool bad = !archive.problems().empty();
    for (const Listed& l : sink.entries) bad = bad || !l.problem.empty();
    return bad ? EXIT_SOME_BAD : EXIT_ALL_GOOD;
}

}  // namespace tuskel_tool
