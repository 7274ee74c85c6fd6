#include "Archive.h"

#include <memory>

#include "CheckedStream.h"
#include "Names.h"
#include "ZipWalk.h"
#include "io/BufferBaseInputStream.h"
#include "unarchiver/GzipConstants.h"
#include "unarchiver/GzipUnarchiver.h"
#include "unarchiver/ZipExeUnarchiver.h"
#include "unarchiver/ZipInfo.h"
#include "unarchiver/ZipUnarchiver.h"

namespace tuskel_tool {

namespace {

using QRN_SPACE::ArchiveConstants;
using QRN_SPACE::GzipConstants;

const int kTrailerSize = 8;

bool endsWith(const std::string& text, const std::string& tail) {
    return text.size() > tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

// The little-endian word at `pos` of the buffer, or 0 when it is not there.
uint32_t wordAt(QRN_SPACE::BufferBase& input, long pos) {
    unsigned char bytes[4] = {};
    if (pos < 0 || input.read(pos, reinterpret_cast<char*>(bytes), 4) != 4) return 0;
    return bytes[0] | (bytes[1] << 8) | (bytes[2] << 16) | (static_cast<uint32_t>(bytes[3]) << 24);
}

// Bytes of a GZIP member header as read.
long gzipHeaderLength(const QRN_SPACE::GzipInfo& info) {
    long length = GzipConstants::GZIPHDR;
    if (info.flags & GzipConstants::FEXTRA) length += 2 + info.extraLength;
    if (info.flags & GzipConstants::FNAME) length += static_cast<long>(info.name.size()) + 1;
    if (info.flags & GzipConstants::FCOMMENT) length += static_cast<long>(info.comment.size()) + 1;
    if (info.flags & GzipConstants::FHCRC) length += 2;
    return length;
}

// The entry processor of a GZIP file: one entry, checked against the
// trailer that follows the deflate data.
class GzipWalkProcessor : public QRN_SPACE::ArchiveEntryProcessor {
public:
    GzipWalkProcessor(EntrySink& sink, QRN_SPACE::BufferBase& input, const std::string& fileName,
                      QRN_SPACE::DecompressProcessor* dp)
        : _sink(sink), _input(input), _fileName(fileName), _dp(dp) {}

    QRN_SPACE::OutputStream* processEntry(QRN_SPACE::ArchiveEntryInfo* info, int& action) override {
        _info.reset(info);  // the trailer is still read into it
        action = ArchiveConstants::ACTION_SKIP;
        const QRN_SPACE::GzipInfo& header = static_cast<GzipEntryInfo*>(info)->gzipInfo();
        _entry.rawName = header.name;
        _entry.name = header.name.empty() ? gzipEntryName(_fileName) : header.name;
        _entry.method = header.method;
        _entry.mtime = static_cast<time_t>(header.mtime);
        // The trailer at the end of the file, for what is shown before the
        // data is read; the one after the data is what the data is checked by.
        const long size = _input.getSize();
        _entry.size = wordAt(_input, size - 4);
        _entry.crc = wordAt(_input, size - kTrailerSize);
        _entry.crcKnown = true;
        _entry.compressedSize = std::max(0L, size - gzipHeaderLength(header) - kTrailerSize);
        if (!_sink.wants(_entry)) return nullptr;
        QRN_SPACE::OutputStream* out = _sink.open(_entry);
        if (out == nullptr) return nullptr;
        _out.reset(out);
        _pending = true;
        action = ArchiveConstants::ACTION_DECOMPRESS;
        return &_out;
    }

    void endUnarchiving() override {
        if (!_pending) return;
        _pending = false;
        const QRN_SPACE::GzipInfo& header = static_cast<GzipEntryInfo&>(*_info).gzipInfo();
        Entry expected = _entry;
        expected.crc = header.crc32;
        expected.size = -1;  // ISIZE holds the size modulo 2^32: compared below
        const bool cut = isCut(_dp);
        EntryResult result = judge(expected, _out, cut);
        if (!cut && result.status == EntryResult::OK && static_cast<uint32_t>(result.written) != header.isize) {
            result.status = EntryResult::BAD;
            result.problem = "size " + std::to_string(result.written) + " but " + std::to_string(header.isize) +
                             " recorded";
        }
        _sink.close(_entry, result);
    }

    // An exception left the unarchiver: the entry is bad, unless it had
    // been cut short, after which the trailer is read from wherever the
    // inflater stopped (and may well be missing). Answers whether the
    // archive is to blame.
    bool fail(const std::string& problem) {
        if (!_pending) return true;
        _pending = false;
        const bool cut = isCut(_dp);
        EntryResult result = judge(_entry, _out, cut);
        if (!cut) {
            result.status = EntryResult::BAD;
            result.problem = problem;
        }
        _sink.close(_entry, result);
        return !cut;
    }

private:
    EntrySink& _sink;
    QRN_SPACE::BufferBase& _input;
    std::string _fileName;
    QRN_SPACE::DecompressProcessor* _dp;
    std::unique_ptr<QRN_SPACE::ArchiveEntryInfo> _info;
    Entry _entry;
    bool _pending = false;
    CheckedStream _out;
};

}  // namespace

const char* formatName(Format format) {
    switch (format) {
        case Format::Gzip: return "gzip";
        case Format::Zip: return "zip";
        case Format::ZipExe: return "self-extracting zip";
        default: return "none";
    }
}

EntrySink::~EntrySink() = default;

std::string gzipEntryName(const std::string& fileName) {
    std::string name = baseName(fileName);
    if (endsWith(name, ".gz") || endsWith(name, ".GZ")) return name.substr(0, name.size() - 3);
    if (endsWith(name, ".tgz")) return name.substr(0, name.size() - 4) + ".tar";
    return name;
}

int Cutter::init() {
    _cut = false;
    return 0;
}

int Cutter::getAction() { return _cut ? kCutAction : 0; }

Archive::Archive(QRN_SPACE::BufferBase& input, const std::string& fileName) : _input(input), _fileName(fileName) {
    _detect();
}

Archive::~Archive() = default;

// GZIP, then ZIP (as the library's registry tries them), then a
// self-extractor, then a ZIP behind bytes of some other kind, which only its
// directory can tell.
void Archive::_detect() {
    QRN_SPACE::BufferBaseInputStream in(&_input);
    in.mark(0);
    try {
        if (QRN_SPACE::GzipUnarchiver::checkFormat(in)) {
            _format = Format::Gzip;
            return;
        }
        in.reset();
        try {
            if (QRN_SPACE::ZipUnarchiver::checkFormat(in)) _format = Format::Zip;
        } catch (QRN_SPACE::ArchivingException&) {
            _format = Format::Zip;  // a local header after all: its first entry is encrypted or misnamed
        }
        if (_format != Format::None) return;
        in.reset();
        long pos = 0;
        if (QRN_SPACE::check_zipexe(in, pos)) {
            _format = Format::ZipExe;
            _zipStart = static_cast<unsigned int>(pos);
            return;
        }
    } catch (QRN_SPACE::Exception&) {
        return;  // too short or unreadable to be any of them
    }
    const ZipDirectory& zip = directory();
    if (zip.found() && zip.bias() > 0) {
        QRN_SPACE::BufferBaseInputStream at(&_input);
        at.skip(zip.bias());
        at.mark(0);
        QRN_SPACE::ZipInfo local;
        try {
            if (local.read(at, true)) {
                _format = Format::Zip;
                _zipStart = static_cast<unsigned int>(zip.bias());
            }
        } catch (QRN_SPACE::ArchivingException&) {
            _format = Format::Zip;
            _zipStart = static_cast<unsigned int>(zip.bias());
        }
    }
}

const ZipDirectory& Archive::directory() {
    if (!_directory) _directory.reset(new ZipDirectory(_input));
    return *_directory;
}

void Archive::walk(EntrySink& sink, QRN_SPACE::DecompressProcessor* dp) {
    if (_format == Format::Gzip) _walkGzip(sink, dp);
    if (_format == Format::Zip || _format == Format::ZipExe) _walkZip(sink, dp);
}

void Archive::_walkGzip(EntrySink& sink, QRN_SPACE::DecompressProcessor* dp) {
    GzipWalkProcessor processor(sink, _input, _fileName, dp);
    try {
        QRN_SPACE::GzipUnarchiver(&_input, processor, dp).start();
    } catch (QRN_SPACE::Exception& e) {
        if (processor.fail(e.getMessage())) _problems.push_back(e.getMessage());
    }
}

void Archive::_walkZip(EntrySink& sink, QRN_SPACE::DecompressProcessor* dp) {
    const ZipDirectory& zip = directory();
    if (!zip.damage().empty()) _problems.push_back("central directory: " + zip.damage());
    DirectReader direct(_input, zip, dp);
    // Over a stream, not the buffer: a failed entry then never makes the
    // library walk the rest again without `dp`, which would leave nothing
    // to stop a bomb behind it; readRest() reaches what the walk did not.
    PositionStream in(&_input);
    ZipWalkProcessor processor(sink, zip, direct, dp, in);
    try {
        std::unique_ptr<QRN_SPACE::Unarchiver> walk;
        if (_format == Format::ZipExe) {
            walk.reset(new QRN_SPACE::ZipExeUnarchiver(&in, processor, dp));
        } else {
            walk.reset(new QRN_SPACE::ZipUnarchiver(&in, processor, dp, _zipStart));
        }
        walk->start();
    } catch (const WalkEnded&) {
        // Nothing wrong: readRest() reads on from the directory.
    } catch (QRN_SPACE::Exception& e) {
        // The walk cannot go on past this (a corrupt deflate stream, a
        // header cut short); the directory still leads to the entries behind.
        processor.fail(e.getMessage());
        _problems.push_back("walk of local headers ended: " + e.getMessage());
    }
    processor.readRest();
}

bool Archive::walkDirectory(EntrySink& sink, QRN_SPACE::DecompressProcessor* dp) {
    if (_format != Format::Zip && _format != Format::ZipExe) return false;
    const ZipDirectory& zip = directory();
    if (!zip.found() || !zip.damage().empty()) return false;
    DirectReader direct(_input, zip, dp);
    for (size_t i = 0; i < zip.records().size(); ++i) direct.read(i, static_cast<int>(i), sink);
    return true;
}

}  // namespace tuskel_tool
