#include "ZipWalk.h"

#include <climits>
#include <cstdio>

#include "ZipEntries.h"
#include "io/BufferBaseInputStream.h"
#include "unarchiver/DeflateDecompressor.h"
#include "unarchiver/ZipConstants.h"
#include "unarchiver/ZipEntryInfo.h"
#include "utils/IOUtils.h"

namespace tuskel_tool {

namespace {

using QRN_SPACE::ArchiveConstants;
using QRN_SPACE::ZipConstants;

std::string hex32(uint32_t value) {
    char text[9];
    std::snprintf(text, sizeof text, "%08x", value);
    return text;
}

bool readable(int method) { return method == ZipConstants::STORED || method == ZipConstants::DEFLATED; }

EntryResult skipped(const std::string& problem) {
    EntryResult result;
    result.status = EntryResult::SKIPPED;
    result.problem = problem;
    return result;
}

EntryResult bad(const std::string& problem) {
    EntryResult result;
    result.status = EntryResult::BAD;
    result.problem = problem;
    return result;
}

// Why an entry's data cannot be read at all, or empty.
std::string unreadable(const Entry& entry, int flags) {
    if (isEncrypted(flags)) return "encrypted";
    if (!readable(entry.method)) return "unsupported compression method " + std::to_string(entry.method);
    return "";
}

}  // namespace

EntryResult judge(const Entry& expected, CheckedStream& out, bool cut) {
    EntryResult result;
    result.written = out.written();
    result.crc = out.crc();
    result.cut = cut;
    if (cut) return result;
    if (expected.size >= 0 && result.written != expected.size) {
        result.status = EntryResult::BAD;
        result.problem = "size " + std::to_string(result.written) + " but " + std::to_string(expected.size) +
                         " recorded";
    } else if (expected.crcKnown && result.crc != expected.crc) {
        result.status = EntryResult::BAD;
        result.problem = "CRC-32 " + hex32(result.crc) + " but " + hex32(expected.crc) + " recorded";
    }
    return result;
}

// The directory's offset counts from where the archive begins; an archive
// whose offsets were adjusted for a stub in front (or never needed it) is
// read at the offset itself. Answers the bias that found the header, or -1.
long DirectReader::_atLocalHeader(const QRN_SPACE::ZipCentralDir& record, QRN_SPACE::InputStream& in) {
    for (long bias : {_directory.bias(), 0L}) {
        // Unsigned, so that the sum cannot overflow a 32-bit long.
        if (record.localHeaderOffset >= static_cast<unsigned long>(_input.getSize() - bias)) continue;
        in.reset();
        in.skip(static_cast<long>(record.localHeaderOffset) + bias);
        in.mark(ZipConstants::LOCHDR);
        QRN_SPACE::ZipInfo local;
        if (local.read(in, false)) return bias;
        if (bias == 0) break;
    }
    return -1;
}

void DirectReader::read(size_t at, int index, EntrySink& sink) {
    const QRN_SPACE::ZipCentralDir& record = _directory.records()[at];
    Entry entry = entryFromCentral(record, index);
    if (!sink.wants(entry)) return;
    if (_directory.overlaps(at)) return sink.close(entry, bad("overlaps another entry"));
    const std::string why = unreadable(entry, record.flags);
    if (!why.empty()) return sink.close(entry, skipped(why));
    PositionStream in(&_input);
    in.mark(0);
    try {
        const long bias = _atLocalHeader(record, in);
        if (bias < 0) {
            return sink.close(entry, bad("no local header at offset " + std::to_string(record.localHeaderOffset)));
        }
        in.limit(_directory.dataLimit(at) + bias);
        if (_dp != nullptr) _dp->init();  // before open(), which may tell it the entry's name
        QRN_SPACE::OutputStream* out = sink.open(entry);
        if (out == nullptr) return;
        _out.reset(out);
        long size = static_cast<long>(record.compressedSize);
        if (entry.method == ZipConstants::DEFLATED) {
            QRN_SPACE::DeflateDecompressor(true, _dp).decompress(in, size, _out);
        } else {
            if (sink.needs() >= 0 && sink.needs() < size) size = static_cast<long>(sink.needs());
            QRN_SPACE::IOUtils::readAndWrite(in, _out, size);
        }
        _out.flush();
    } catch (QRN_SPACE::Exception& e) {
        return sink.close(entry, bad(e.getMessage()));
    }
    const bool headOnly = sink.needs() >= 0 && _out.written() >= sink.needs() && entry.size > _out.written();
    sink.close(entry, judge(entry, _out, isCut(_dp) || headOnly));
}

int PositionStream::read() {
    if (_position >= _limit) return -1;
    const int c = BufferBaseInputStream::read();
    if (c >= 0) ++_position;
    return c;
}

int PositionStream::read(char* buf, int len) {
    if (_position >= _limit) return len > 0 ? -1 : 0;
    if (len > _limit - _position) len = static_cast<int>(_limit - _position);
    const int got = BufferBaseInputStream::read(buf, len);
    if (got > 0) _position += got;
    return got;
}

long PositionStream::skip(long n) {
    const long skipped = BufferBaseInputStream::skip(n);
    _position = skipped > LONG_MAX - _position ? LONG_MAX : _position + skipped;
    return skipped;
}

void PositionStream::mark(int readLimit) {
    BufferBaseInputStream::mark(readLimit);
    _mark = _position;
}

void PositionStream::reset() {
    BufferBaseInputStream::reset();
    _position = _mark;
}

ZipWalkProcessor::ZipWalkProcessor(EntrySink& sink, const ZipDirectory& directory, DirectReader& direct,
                                   QRN_SPACE::DecompressProcessor* dp, const PositionStream& in)
    : _sink(sink),
      _directory(directory),
      _direct(direct),
      _dp(dp),
      _in(in),
      _trusted(directory.found() && directory.damage().empty()),
      _reached(directory.records().size()) {
    const auto& records = directory.records();
    for (size_t i = 0; i < records.size(); ++i) _byOffset.emplace(records[i].localHeaderOffset, i);
}

// The directory record of the local header at `headerPos`, which the walk
// has not met before. The directory counts from where the archive begins,
// unless its offsets already count from the file's start (see DirectReader).
const QRN_SPACE::ZipCentralDir* ZipWalkProcessor::_match(long headerPos) {
    for (long long at : {static_cast<long long>(headerPos) - _directory.bias(), static_cast<long long>(headerPos)}) {
        auto found = _byOffset.find(at);
        if (found != _byOffset.end() && !_reached[found->second]) {
            _recordIndex = found->second;
            _reached[_recordIndex] = true;
            return &_directory.records()[_recordIndex];
        }
    }
    return nullptr;
}

QRN_SPACE::OutputStream* ZipWalkProcessor::processEntry(QRN_SPACE::ArchiveEntryInfo* info, int& action) {
    _info.reset(info);  // kept until the next entry: the descriptor is still read into it
    action = ArchiveConstants::ACTION_SKIP;
    const QRN_SPACE::ZipInfo& local = static_cast<QRN_SPACE::ZipEntryInfo*>(info)->zipInfo();
    if (local.centralDirRead) return nullptr;  // the walk's final entry: the directory, no data
    _record = _match(_in.position() - ZipConstants::LOCHDR - static_cast<long>(local.name.size()) - local.extraLength);
    if (_record == nullptr && _trusted) return nullptr;
    _entry = entryFromLocal(local, _entries++, _record);
    // A stored entry whose size follows its data: the walk cannot tell where
    // the data ends, so it ends here; nor can it trust where an entry that
    // overlaps another ends. The directory reader takes over.
    const bool storedWithDescriptor = _entry.method == ZipConstants::STORED && hasDescriptor(local.flags);
    if (_record != nullptr && (storedWithDescriptor || _directory.overlaps(_recordIndex))) {
        _direct.read(_recordIndex, _entry.index, _sink);
        throw WalkEnded();
    }
    if (storedWithDescriptor) {
        if (_sink.wants(_entry)) {
            _sink.close(_entry, skipped("stored with its size after the data, and not in the central directory"));
        }
        throw WalkEnded();
    }
    if (!_sink.wants(_entry)) return nullptr;
    const std::string why = unreadable(_entry, local.flags);
    if (!why.empty()) {
        _sink.close(_entry, skipped(why));
        return nullptr;
    }
    QRN_SPACE::OutputStream* out = _sink.open(_entry);
    if (out == nullptr) return nullptr;
    _out.reset(out);
    _pending = true;
    action = ArchiveConstants::ACTION_DECOMPRESS;
    return &_out;
}

void ZipWalkProcessor::endUnarchiving() {
    if (!_pending) return;
    // Sizes and CRC that followed the data have been read into the entry by
    // now; the directory's agree with them in any sound archive.
    if (_record == nullptr && hasDescriptor(static_cast<QRN_SPACE::ZipEntryInfo&>(*_info).zipInfo().flags)) {
        _entry.size = static_cast<unsigned int>(_info->usize);
        _entry.compressedSize = static_cast<unsigned int>(_info->size);
        _entry.crc = _info->crc;
        _entry.crcKnown = true;
    }
    _close(judge(_entry, _out, isCut(_dp)));
}

void ZipWalkProcessor::_close(const EntryResult& result) {
    _pending = false;
    _sink.close(_entry, result);
}

void ZipWalkProcessor::releaseSession() {
    if (_pending) _close(bad("abandoned by the unarchiver"));
}

void ZipWalkProcessor::fail(const std::string& problem) {
    if (_pending) _close(bad(problem));
}

void ZipWalkProcessor::readRest() {
    const auto& records = _directory.records();
    for (size_t i = 0; i < records.size(); ++i) {
        if (!_reached[i]) _direct.read(i, _entries++, _sink);
    }
}

}  // namespace tuskel_tool
