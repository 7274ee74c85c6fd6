#include "unarchiver/ZipUnarchiver.h"

#include <new>

#include "io/BufferBaseInputStream.h"
#include "unarchiver/DeflateDecompressor.h"
#include "unarchiver/ZipConstants.h"
#include "util/StringHelper.h"
#include "utils/IOUtils.h"

namespace QRN_SPACE {

namespace {

// Where the exceptions thrown here say they come from.
const char* const kSource = "../../core/tuskel/src/unarchiver/ZipUnarchiver";
const int kLineStreamMemory = 65;
const int kLineEntryMemory = 82;
const int kLineAborted = 143;
const int kLineShrink = 183;
const int kLineImplode = 185;
const int kLineUnknown = 188;
const int kLineRestartMemory = 237;
const int kLineNoEndRecord = 240;

// What checkFormat marks: a local header and then some.
const int kFormatCheckLimit = 128;

typedef ArchiveConstants A;
typedef ZipConstants Z;

int algorithmOf(int method) {
    if (method == Z::STORED) return A::ALGORITHM_STORED;
    if (method == Z::DEFLATED) return A::ALGORITHM_DEFLATE;
    // Shrink (1) and implode (6) land here too, never on ALGORITHM_SHRINK or
    // ALGORITHM_IMPLODE: intended (see _decode).
    return A::ALGORITHM_UNKNOWN;
}

// After an entry's data: the descriptor, when flag bit 3 announced one, and
// its sizes and CRC into the entry.
void readDescriptor(InputStream& in, ZipEntryInfo& entry) {
    ZipInfo& header = entry.zipInfo();
    header.readDataDescriptor(in);
    if (header.hasDataDescriptor()) {
        entry.size = static_cast<int>(header.compressedSize);
        entry.usize = static_cast<int>(header.uncompressedSize);
        entry.crc = header.crc;
    }
}

// Where a stream over `buffer` stands, clamped to the buffer's end.
long positionOf(InputStream& in, const BufferBase& buffer) { return buffer.getSize() - in.available(); }

}  // namespace

ZipUnarchiver::ZipUnarchiver(InputStream* in, ArchiveEntryProcessor& processor, DecompressProcessor* dp,
                             unsigned int startOffset)
    : _in(in), _buffer(nullptr), _processor(processor), _dp(dp), _startOffset(startOffset) {}

ZipUnarchiver::ZipUnarchiver(BufferBase* buffer, ArchiveEntryProcessor& processor, DecompressProcessor* dp,
                             unsigned int startOffset)
    : _in(nullptr), _buffer(buffer), _processor(processor), _dp(dp), _startOffset(startOffset) {
    _ownedIn.reset(new (std::nothrow) BufferBaseInputStream(buffer));
    if (!_ownedIn) throwAt<OutOfMemoryException>("Out of memory", {kSource, kLineStreamMemory});
    _in = _ownedIn.get();
}

ZipUnarchiver::~ZipUnarchiver() = default;

bool ZipUnarchiver::checkFormat(InputStream& in) {
    in.mark(kFormatCheckLimit);
    ZipInfo header;
    bool isZip = header.read(in, true);
    in.reset();
    return isZip;
}

std::unique_ptr<ZipEntryInfo> ZipUnarchiver::_nextEntry() {
    std::unique_ptr<ZipInfo> header(new (std::nothrow) ZipInfo());
    std::unique_ptr<ZipEntryInfo> entry(header ? new (std::nothrow) ZipEntryInfo(header.get()) : nullptr);
    if (!entry) throwAt<OutOfMemoryException>("Out of memory", {kSource, kLineEntryMemory});
    header.release();  // the entry owns it now
    entry->order = _counter++;
    return entry;
}

void ZipUnarchiver::start() {
    if (_startOffset != 0) _in->skip(_startOffset);
    _restarted = false;
    // Intended: set once per walk, not per entry, so a processor that leaves
    // it alone repeats its previous answer.
    int action = A::ACTION_SKIP;
    // Every round that goes on has taken up a local header, leaving the
    // input at least 30 bytes past the round's mark, so the walk ends
    // within (input size / 30) rounds.
    std::unique_ptr<ZipEntryInfo> entry;
    do {
        entry = _nextEntry();
    } while (_takeUp(entry, action));
    _finish(std::move(entry), action);
}

// One round of the walk: false when no local header is left. `entry` stays
// here until it is handed to the processor; whatever is still here when an
// exception passes is deleted with it.
bool ZipUnarchiver::_takeUp(std::unique_ptr<ZipEntryInfo>& entry, int& action) {
    if (_dp != nullptr) _dp->init();
    _processor.beginUnarchiving();
    _in->mark(Z::LOCHDR);
    try {
        if (!entry->zipInfo().read(*_in, false)) return false;
        _unpack(std::move(entry), action);
    } catch (ArchivingException&) {
        // Intended: one entry's failure never reaches the caller. Over a
        // buffer the walk resumes behind it; either way it then goes on at
        // the input's current position.
        _processor.releaseSession();
        restart();
    }
    return true;
}

void ZipUnarchiver::_unpack(std::unique_ptr<ZipEntryInfo> entry, int& action) {
    ZipInfo& header = entry->zipInfo();
    entry->name = header.name;
    entry->method = header.method;
    entry->flags = header.flags;
    entry->time = header.time;
    entry->size = static_cast<int>(header.compressedSize);
    entry->usize = static_cast<int>(header.uncompressedSize);
    entry->crc = header.crc;
    // Sizes are used as the entry holds them, signed 32-bit: a size of 2 GiB
    // or more counts as empty here and skips nothing below.
    const int size = entry->size;
    const bool empty = size < 1 && !header.hasDataDescriptor();  // a directory, an empty file
    if (!empty) entry->algorithm = algorithmOf(header.method);

    // The processor owns the entry from here on and keeps it alive until
    // endUnarchiving(): the descriptor is still recorded into it.
    ZipEntryInfo& offered = *entry;
    OutputStream* out = _processor.processEntry(entry.release(), action);
    if (action == A::ACTION_ABORT) throwAt<ArchivingException>("Archiving aborted", {kSource, kLineAborted});
    if (empty) {
        // Nothing is written to a stream answered for an empty entry.
        readDescriptor(*_in, offered);
        offered.algorithm = A::ALGORITHM_STORED;
    } else {
        if (action == A::ACTION_COPY) {
            _copy(out, size);
        } else if (action == A::ACTION_DECOMPRESS) {
            // The algorithm as it stands after processEntry, which may rewrite it.
            _decode(offered.algorithm, offered.zipInfo().method, out, size);
        } else {  // skip, and any code the unarchivers do not know
            _in->skip(size);
        }
        readDescriptor(*_in, offered);
        if (out != nullptr) {
            out->flush();
            out->close();
        }
    }
    _processor.endUnarchiving();
}

void ZipUnarchiver::_decode(int algorithm, int method, OutputStream* out, int size) {
    switch (algorithm) {
    case A::ALGORITHM_STORED:
        _copy(out, size);
        break;
    case A::ALGORITHM_DEFLATE: {
        DeflateDecompressor inflater(true, _dp);
        if (out != nullptr) {
            inflater.decompress(*_in, size, *out);
        } else {
            _in->skip(size);
        }
        break;
    }
    // Intended: only reachable when a processor rewrites the algorithm;
    // methods 1 and 6 themselves report "Unknown algorithm".
    case A::ALGORITHM_SHRINK:
        throwAt<ArchivingException>("SHRINK algorithm unimplemented", {kSource, kLineShrink});
    case A::ALGORITHM_IMPLODE:
        throwAt<ArchivingException>("IMPLODE algorithm unimplemented", {kSource, kLineImplode});
    default:
        // Intended: no blank between the number and "in zip".
        throwAt<ArchivingException>("Unknown algorithm: " + StringHelper::ntoa(method) + "in zip",
                                    {kSource, kLineUnknown});
    }
}

// Stored bytes go to the stream unchanged. With no stream the data is
// passed over as for a skip, so that the entries behind it are still
// reached; a descriptor entry has size 0 here and nothing can be passed over.
void ZipUnarchiver::_copy(OutputStream* out, int size) {
    if (out != nullptr) {
        IOUtils::readAndWrite(*_in, *out, size);
    } else {
        _in->skip(size);
    }
}

// The local headers are over: the directory and the end record go to the
// processor with a final entry of empty name.
void ZipUnarchiver::_finish(std::unique_ptr<ZipEntryInfo> entry, int& action) {
    // The failed header read began at the mark; the directory is read from
    // there so that its records are read aligned.
    _in->reset();
    ZipInfo& header = entry->zipInfo();
    const int localEntries = _counter - 1;
    header.centralEntries = header.readCentralDirs(*_in, localEntries);
    header.endCentralDir.read(*_in);
    header.localEntries = localEntries;
    header.compressedSize = 0;
    header.uncompressedSize = 0;
    entry->name.clear();
    entry->algorithm = A::ALGORITHM_STORED;
    entry->time = 0;
    _processor.processEntry(entry.release(), action);
    _processor.endUnarchiving();
}

// Bounds: restart() runs at most once per walk (a later failure is contained
// as over a plain stream, since the first restart has already walked on
// from the directory; repeating it for every failure would walk the rest
// of the archive once per failed entry) and is never re-entered: the second
// unarchiver reads a stream, not a buffer. Its loop ends once the second unarchiver's counter, which every
// start() raises by at least one, passes the directory's total (at most
// 65,535); and a round after the first runs only if it resumes beyond the
// directory records just read, so those rounds read disjoint, ascending
// stretches of the buffer and cannot come back to what was walked before.
void ZipUnarchiver::restart() {
    if (_buffer == nullptr || _restarted) return;
    _restarted = true;
    std::unique_ptr<BufferBaseInputStream> in(new (std::nothrow) BufferBaseInputStream(_buffer));
    if (!in) throwAt<OutOfMemoryException>("Out of memory", {kSource, kLineRestartMemory});
    in->mark(static_cast<int>(_buffer->getSize()));
    long pos = ZipEndCentralDir::findPos(*_buffer);
    if (pos == 0) throwAt<ArchivingException>("failed to restart zip unarchiving", {kSource, kLineNoEndRecord});
    in->reset();
    in->skip(pos);
    ZipEndCentralDir end;
    if (!end.read(*in)) return;
    in->reset();
    in->skip(end.directoryOffset);

    // Intended: no decompress processor for the resumed walk.
    ZipUnarchiver second(in.get(), _processor, nullptr, 0);
    second._counter = _counter;  // the index of the entry after the failed one
    ZipCentralDir record;
    for (bool firstRound = true; second._counter <= end.totalEntries && record.getNextDir(*in, _counter) >= 0;
         firstRound = false) {
        long recordsEnd = positionOf(*in, *_buffer);
        // Intended: back to the last mark, which after the first round is one
        // the second unarchiver set.
        in->reset();
        in->skip(record.localHeaderOffset);
        if (!firstRound && positionOf(*in, *_buffer) < recordsEnd) break;
        second.start();
    }
}

}  // namespace QRN_SPACE
