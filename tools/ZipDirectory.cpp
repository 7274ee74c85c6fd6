#include "ZipDirectory.h"

#include <algorithm>
#include <climits>

#include "io/BufferBaseInputStream.h"
#include "unarchiver/ZipConstants.h"

namespace tuskel_tool {

namespace {

using QRN_SPACE::ZipConstants;

}  // namespace

ZipDirectory::ZipDirectory(QRN_SPACE::BufferBase& input) {
    try {
        _read(input);
    } catch (QRN_SPACE::Exception& e) {
        // A record cut short inside its name or comment, an empty name.
        _damage = e.getMessage();
    }
    _findOverlaps();
}

// In the order of their offsets, each record must end before the next
// begins: otherwise many records could have one bomb inflated many times.
// Only the name counts of the header's variable part, as the local extra
// field may be shorter than the directory's.
void ZipDirectory::_findOverlaps() {
    std::vector<size_t> order(_records.size());
    for (size_t i = 0; i < order.size(); ++i) order[i] = i;
    std::stable_sort(order.begin(), order.end(), [this](size_t a, size_t b) {
        return _records[a].localHeaderOffset < _records[b].localHeaderOffset;
    });
    _overlapping.assign(_records.size(), false);
    _limits.assign(_records.size(), _found ? static_cast<long long>(_end.directoryOffset) : LLONG_MAX);
    for (size_t k = 0; k + 1 < order.size(); ++k) {
        const QRN_SPACE::ZipCentralDir& record = _records[order[k]];
        const long long next = _records[order[k + 1]].localHeaderOffset;
        const long long end = static_cast<long long>(record.localHeaderOffset) + ZipConstants::LOCHDR +
                              static_cast<long long>(record.name.size()) + record.compressedSize;
        if (end > next) _overlapping[order[k]] = true;
        if (next == record.localHeaderOffset) _overlapping[order[k + 1]] = true;
        _limits[order[k]] = next;
    }
}

void ZipDirectory::_read(QRN_SPACE::BufferBase& input) {
    const long endPos = QRN_SPACE::ZipEndCentralDir::findPos(input);
    if (endPos == 0) {
        _damage = "no end of central directory record";
        return;
    }
    QRN_SPACE::BufferBaseInputStream in(&input);
    in.skip(endPos);
    if (!_end.read(in)) {
        _damage = "end of central directory record cut short";
        return;
    }
    _found = true;
    // Where the directory should begin, from the end record's own position:
    // the difference to the offset it states is what precedes the archive.
    // Compared unsigned first: a 32-bit long cannot hold every size.
    if (_end.directorySize > static_cast<unsigned long>(endPos) ||
        _end.directoryOffset > static_cast<unsigned long>(endPos) - _end.directorySize) {
        _damage = "central directory offset or size points outside the file";
        return;
    }
    const long start = endPos - static_cast<long>(_end.directorySize);
    _bias = start - static_cast<long>(_end.directoryOffset);
    QRN_SPACE::BufferBaseInputStream records(&input);
    records.skip(start);
    // Every record takes at least its fixed part, so a forged count cannot
    // make this loop run longer than the directory's bytes allow.
    const long most = static_cast<long>(_end.directorySize) / ZipConstants::CENHDR;
    for (long i = 0; i < _end.totalEntries && i < most; ++i) {
        QRN_SPACE::ZipCentralDir record;
        if (!record.read(records)) {
            _damage = "central directory record " + std::to_string(i + 1) + " of " +
                      std::to_string(_end.totalEntries) + " is unreadable";
            return;
        }
        _records.push_back(std::move(record));
    }
    if (static_cast<long>(_records.size()) < _end.totalEntries) {
        _damage = "central directory holds fewer records than its end record counts";
    }
}

}  // namespace tuskel_tool
