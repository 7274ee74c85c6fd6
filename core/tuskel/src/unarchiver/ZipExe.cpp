// check_zipexe: recognising self-extracting ZIP executables. Every probe
// reads at a position counted from where the stream stood when the check
// began (reset, mark, skip, read), so the stream only ever moves forward
// from that mark and is put back there at the end.
//
// Header fields are untrusted: positions are summed in 64 bits and refused
// past what a stream can skip to, and a scan's block grows only as far as
// bytes actually arrive.

#include <climits>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

#include "unarchiver/ZipConstants.h"
#include "unarchiver/ZipExeUnarchiver.h"
#include "utils/IOUtils.h"

namespace QRN_SPACE {

namespace {

typedef ZipConstants Z;
typedef std::uint64_t Offset;  // from the check's start; sums of 32-bit fields never wrap

// DOS header (the first 64 bytes).
const int kDosHeader = 64;
const int kDosLastPageBytes = 2;     // bytes used in the last 512-byte page
const int kDosPages = 4;             // pages in the image
const int kDosRelocations = 0x18;    // 0x40 here marks a new-style executable
const int kDosNewHeader = 0x3C;      // offset of the new header
const int kNewStyleRelocations = 0x40;
const int kDosPage = 512;
const int kMz = 0x5A4D;     // "MZ"
const int kZm = 0x4D5A;     // "ZM"
const int kLocal = 0x4B50;  // "PK", the archive right after a DOS image

// New header: its first 64 bytes hold every field read.
const int kNewHeader = 64;
const int kPe = 0x4550;  // "PE"
const int kNe = 0x454E;  // "NE"

// PE section header.
const int kMaxSections = 256;
const int kSectionRawSize = 16;
const int kSectionRawPointer = 20;
const char kDataName[] = ".data";  // a prefix: 5 bytes compared

// Where the stubs keep the marker in ".data", the block and overlap of the
// scans, and how much of the marker each scan compares.
const Offset kDataMarker1 = 0x740;
const Offset kDataMarker2 = 0x860;
const int kScanBlock = 65535;
const int kDataOverlap = 16;
const int kWinzipOverlap = 4;
const int kSignature = sizeof Z::SIG_ZIPEXE;
const int kWinzipSignature = 4;
const int kMarker = 16;
const int kMarkerPosition = 12;  // the archive's position within the marker

// NE header and segment table.
const int kNeSegmentCount = 0x1C;
const int kNeSegmentTable = 0x22;
const int kNeResourceTable = 0x24;
const int kNeResidentNames = 0x26;
const int kNeAlignShift = 0x32;
const int kNeSegmentEntry = 8;
const int kNeSegmentRead = 4;  // sector, then length
const int kNeSegmentLength = 2;
const Offset kNeMarkerSameTables = 0x6A4;  // resource table where the resident names are
const Offset kNeMarkerOther = 0xD0;
// A sector shifted further lies beyond any stream; refusing it also keeps
// the shift defined.
const int kNeMaxShift = 47;

// Copying in small pieces once a read outgrows the block.
const int kGrowChunk = 4096;

// The first index below `limit` where the marker's first `n` bytes start,
// or -1. The caller keeps n bytes readable behind every such index. memmem
// stays linear where a first-byte search would compare at every byte of a
// section full of that byte.
int findMarker(const unsigned char* block, int limit, int n) {
    if (limit <= 0) return -1;
    const void* hit = memmem(block, static_cast<size_t>(limit) + n - 1, Z::SIG_ZIPEXE, static_cast<size_t>(n));
    return hit == nullptr ? -1 : static_cast<int>(static_cast<const unsigned char*>(hit) - block);
}

bool isMarker(const char* bytes) { return std::memcmp(bytes, Z::SIG_ZIPEXE, kSignature) == 0; }

// The name equals "_winzip" or "winzip"; what follows in its 8 bytes is not looked at.
bool isWinzip(const char* name) {
    return std::memcmp(name, Z::SIG__winzip, std::strlen(Z::SIG__winzip)) == 0 ||
           std::memcmp(name, Z::SIG_winzip, std::strlen(Z::SIG_winzip)) == 0;
}

long markedPosition(const char* marker) { return static_cast<long>(IOUtils::readUInt(marker + kMarkerPosition)); }

// The block a scan reads into. It is kept for the whole check and grows
// only by bytes that have arrived, so a size field that claims gigabytes
// costs nothing on a small input.
class ScanBlock {
public:
    // Reads up to n bytes from the stream; answers how many arrived.
    int fill(InputStream& in, int n) {
        int got = IOUtils::readFull(in, _data.get(), n < _capacity ? n : _capacity);
        while (got == _capacity && got < n) {
            char chunk[kGrowChunk];
            int want = n - got < kGrowChunk ? n - got : kGrowChunk;
            int more = IOUtils::readFull(in, chunk, want);
            if (more < 1 || !_grow(got, chunk, more)) break;
            got += more;
            if (more < want) break;
        }
        return got;
    }
    const unsigned char* data() const { return reinterpret_cast<const unsigned char*>(_data.get()); }
    bool outOfMemory() const { return _outOfMemory; }

private:
    // Appends `n` bytes behind the `kept` ones, in a block of exactly that size.
    bool _grow(int kept, const char* bytes, int n) {
        std::unique_ptr<char[]> grown(new (std::nothrow) char[static_cast<size_t>(kept) + n]);
        if (!grown) {
            _outOfMemory = true;
            return false;
        }
        if (kept > 0) std::memcpy(grown.get(), _data.get(), static_cast<size_t>(kept));
        std::memcpy(grown.get() + kept, bytes, static_cast<size_t>(n));
        _data.swap(grown);
        _capacity = kept + n;
        return true;
    }

    std::unique_ptr<char[]> _data;
    int _capacity = 0;
    bool _outOfMemory = false;
};

// What a probe for the marker at a fixed place found.
enum class Probe { kShort, kAbsent, kFound };

class ExeReader {
public:
    explicit ExeReader(InputStream& in) : _in(in) {}
    bool find(long& pos);

private:
    bool _seek(Offset at, int n);
    bool _readAt(Offset at, char* buf, int n);
    Probe _probe(Offset at, long& pos);
    bool _scan(Offset at, Offset size, int overlap, int signature, long& pos);
    bool _plainDos(const char* dos, long& pos);
    bool _pe(Offset header, const char* fields, long& pos);
    bool _ne(Offset header, const char* fields, long& pos);

    InputStream& _in;
    ScanBlock _block;
};

// Back to the check's start, then forward to `at`, marking for n bytes
// more. False when the stream cannot get there.
bool ExeReader::_seek(Offset at, int n) {
    // Refused before the reset, so that the mark still serves the check's
    // own return to the start (a buffered stream's mark serves one reset).
    if (at > static_cast<Offset>(LONG_MAX)) return false;
    _in.reset();
    Offset limit = at + static_cast<Offset>(n);
    _in.mark(limit > static_cast<Offset>(INT_MAX) ? INT_MAX : static_cast<int>(limit));
    for (Offset left = at; left > 0;) {
        long step = _in.skip(static_cast<long>(left));
        if (step < 1) return false;
        left -= static_cast<Offset>(step) < left ? static_cast<Offset>(step) : left;
    }
    return true;
}

bool ExeReader::_readAt(Offset at, char* buf, int n) { return _seek(at, n) && IOUtils::readFull(_in, buf, n) == n; }

Probe ExeReader::_probe(Offset at, long& pos) {
    char marker[kMarker];
    if (!_readAt(at, marker, kMarker)) return Probe::kShort;
    if (!isMarker(marker)) return Probe::kAbsent;
    pos = markedPosition(marker);
    return Probe::kFound;
}

// Scans `size` bytes at `at` in blocks of at most 65,535 bytes, each
// overlapping the previous one by `overlap`, for the marker's first
// `signature` bytes at every index below the block's length less the
// overlap. Ends without a hit when `overlap` or fewer bytes remain or a
// block arrives short.
bool ExeReader::_scan(Offset at, Offset size, int overlap, int signature, long& pos) {
    for (Offset left = size; left > static_cast<Offset>(overlap);) {
        const int length = left < static_cast<Offset>(kScanBlock) ? static_cast<int>(left) : kScanBlock;
        if (!_seek(at, length) || _block.fill(_in, length) < length) return false;
        const int hit = findMarker(_block.data(), length - overlap, signature);
        if (hit >= 0) {
            if (hit + kMarker <= length) {
                pos = markedPosition(reinterpret_cast<const char*>(_block.data()) + hit);
                return true;
            }
            // A short overlap can leave the position word behind the block:
            // it is read from the stream rather than from past the block.
            char word[kMarker - kMarkerPosition];
            if (!_readAt(at + static_cast<Offset>(hit + kMarkerPosition), word, sizeof word)) return false;
            pos = static_cast<long>(IOUtils::readUInt(word));
            return true;
        }
        at += static_cast<Offset>(length - overlap);
        left -= static_cast<Offset>(length - overlap);
    }
    return false;
}

bool ExeReader::find(long& pos) {
    char dos[kDosHeader];
    if (!_readAt(0, dos, kDosHeader)) return false;
    const int signature = IOUtils::readUShort(dos);
    if (signature != kMz && signature != kZm) return false;
    if (IOUtils::readUShort(dos + kDosRelocations) != kNewStyleRelocations) return _plainDos(dos, pos);
    const Offset header = IOUtils::readUInt(dos + kDosNewHeader);
    char fields[kNewHeader];
    if (!_readAt(header, fields, kNewHeader)) return false;
    switch (IOUtils::readUShort(fields)) {
    case kPe:
        return _pe(header, fields, pos);
    case kNe:
        return _ne(header, fields, pos);
    default:
        return false;
    }
}

// The archive directly behind the DOS image, whose size the page fields give.
bool ExeReader::_plainDos(const char* dos, long& pos) {
    const std::int64_t end = static_cast<std::int64_t>(IOUtils::readUShort(dos + kDosPages)) * kDosPage - kDosPage +
                             IOUtils::readUShort(dos + kDosLastPageBytes);
    char local[2];
    if (end < 0 || !_readAt(static_cast<Offset>(end), local, sizeof local)) return false;
    if (IOUtils::readUShort(local) != kLocal) return false;
    pos = static_cast<long>(end);
    return true;
}

// Sections from the last to the first: ".data" at its two fixed places and
// then throughout, a "_winzip" or "winzip" section throughout.
bool ExeReader::_pe(Offset header, const char* fields, long& pos) {
    const int sections = IOUtils::readUShort(fields + Z::OffsetOfNumberSections);
    if (sections > kMaxSections) return false;
    for (int i = sections - 1; i >= 0; --i) {
        char section[Z::SizePerSectionTable];
        const Offset at = header + Z::OffsetOfSectionTable + static_cast<Offset>(Z::SizePerSectionTable) * i;
        if (!_readAt(at, section, Z::SizePerSectionTable)) return false;
        const Offset rawSize = IOUtils::readUInt(section + kSectionRawSize);
        const Offset raw = IOUtils::readUInt(section + kSectionRawPointer);
        if (std::memcmp(section, kDataName, sizeof kDataName - 1) == 0 && rawSize != 0) {
            for (Offset place : {kDataMarker1, kDataMarker2}) {
                Probe found = _probe(raw + place, pos);
                if (found != Probe::kAbsent) return found == Probe::kFound;
            }
            if (_scan(raw, rawSize, kDataOverlap, kSignature, pos)) return true;
        }
        if (isWinzip(section)) {
            if (_scan(raw, rawSize, kWinzipOverlap, kWinzipSignature, pos)) return true;
        }
        if (_block.outOfMemory()) return false;
    }
    return false;
}

// The marker in the last segment: at one of two fixed places, else anywhere
// in the segment.
bool ExeReader::_ne(Offset header, const char* fields, long& pos) {
    const int count = IOUtils::readUShort(fields + kNeSegmentCount);
    const int table = IOUtils::readUShort(fields + kNeSegmentTable);
    const int resources = IOUtils::readUShort(fields + kNeResourceTable);
    const int residentNames = IOUtils::readUShort(fields + kNeResidentNames);
    const int shift = IOUtils::readUShort(fields + kNeAlignShift);
    // Without segments this reads the 8 bytes before the table.
    const std::int64_t last = static_cast<std::int64_t>(header) + table + std::int64_t(kNeSegmentEntry) * (count - 1);
    char entry[kNeSegmentRead];
    if (last < 0 || !_readAt(static_cast<Offset>(last), entry, kNeSegmentRead)) return false;
    const Offset sector = IOUtils::readUShort(entry);
    if (sector != 0 && shift > kNeMaxShift) return false;
    const Offset start = sector == 0 ? 0 : sector << shift;
    const int length = IOUtils::readUShort(entry + kNeSegmentLength);
    Probe found = _probe(start + (resources == residentNames ? kNeMarkerSameTables : kNeMarkerOther), pos);
    if (found != Probe::kAbsent) return found == Probe::kFound;
    if (length < kMarker) return false;
    if (!_seek(start, length) || _block.fill(_in, length) < length) return false;
    const int hit = findMarker(_block.data(), length - kMarker, kSignature);
    if (hit < 0) return false;
    pos = markedPosition(reinterpret_cast<const char*>(_block.data()) + hit);
    return true;
}

}  // namespace

bool check_zipexe(InputStream& in, long& pos) {
    in.mark(kDosHeader);
    ExeReader reader(in);
    bool found;
    try {
        found = reader.find(pos);
    } catch (...) {
        in.reset();
        throw;
    }
    in.reset();
    return found;
}

}  // namespace QRN_SPACE
