#ifndef TUSKEL_TOOLS_ZIPDIRECTORY_H
#define TUSKEL_TOOLS_ZIPDIRECTORY_H

#include <string>
#include <vector>

#include "io/BufferBase.h"
#include "unarchiver/ZipCentralDir.h"
#include "unarchiver/ZipEndCentralDir.h"

namespace tuskel_tool {

// A ZIP's central directory, read with the library's record readers from
// the end record backwards, as unzip reads it. Offsets in it are taken
// relative to where the archive begins (`bias`): bytes in front of the
// archive, such as a self-extractor whose offsets were never adjusted, are
// allowed for.
class ZipDirectory {
public:
    // Reads the directory of `input`; see found() and damage().
    explicit ZipDirectory(QRN_SPACE::BufferBase& input);

    // An end record was found.
    bool found() const { return _found; }
    // Why the directory cannot be trusted whole; empty when it can.
    const std::string& damage() const { return _damage; }
    // The records read, in directory order (all of them when undamaged).
    const std::vector<QRN_SPACE::ZipCentralDir>& records() const { return _records; }
    const QRN_SPACE::ZipEndCentralDir& end() const { return _end; }
    // Bytes in front of the archive: add to every offset it records.
    long bias() const { return _bias; }
    // Record `i` shares its bytes with another: its local header offset
    // repeats, or its header and data as recorded reach the next one's.
    bool overlaps(size_t i) const { return _overlapping[i]; }
    // Where the entry of record `i` must end: the next local header offset
    // recorded, or the directory's own.
    long long dataLimit(size_t i) const { return _limits[i]; }

private:
    void _read(QRN_SPACE::BufferBase& input);
    void _findOverlaps();

    bool _found = false;
    std::string _damage;
    std::vector<QRN_SPACE::ZipCentralDir> _records;
    QRN_SPACE::ZipEndCentralDir _end;
    long _bias = 0;
    std::vector<bool> _overlapping;  // per record
    std::vector<long long> _limits;  // per record
};

}  // namespace tuskel_tool

#endif
