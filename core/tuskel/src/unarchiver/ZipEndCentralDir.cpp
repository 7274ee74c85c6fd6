#include "unarchiver/ZipEndCentralDir.h"

#include <algorithm>

#include "unarchiver/ZipConstants.h"
#include "utils/IOUtils.h"
#include "ZipFields.h"

namespace QRN_SPACE {

namespace {

typedef ZipConstants Z;

// The end record plus the longest comment its 16-bit length allows.
const long kSearchReach = 65535;
// Each step reaches 1024 bytes further back and reads 4 more, so that a
// signature straddling two steps is still seen whole.
const long kSearchStep = 1024;
const long kSearchBlock = kSearchStep + 4;

bool isEndSignature(const char* p) { return static_cast<int>(IOUtils::readUInt(p)) == Z::ENDSIG; }

}  // namespace

bool ZipEndCentralDir::read(InputStream& in) {
    char h[Z::ENDHDR];
    if (IOUtils::readFull(in, h, Z::ENDHDR) < Z::ENDHDR) return false;
    if (static_cast<int>(IOUtils::readUInt(h)) != Z::ENDSIG) return false;
    thisDisk = IOUtils::readUShort(h + Z::ENDDSK);         // number of this disk
    startDisk = IOUtils::readUShort(h + Z::ENDSRT);        // disk where the directory starts
    entriesOnDisk = IOUtils::readUShort(h + Z::ENDSUB);    // records on this disk
    totalEntries = IOUtils::readUShort(h + Z::ENDTOT);     // records in total
    directorySize = IOUtils::readUInt(h + Z::ENDSIZ);      // directory size in bytes
    directoryOffset = IOUtils::readUInt(h + Z::ENDOFF);    // directory offset
    int commentLength = IOUtils::readUShort(h + Z::ENDCOM);  // comment length
    zipfields::Block block;
    block.read(in, commentLength, commentLength);
    comment.assign(block.get(), static_cast<size_t>(commentLength));
    return true;
}

long ZipEndCentralDir::findPos(BufferBase& buffer) {
    long size = buffer.getSize();
    long limit = std::min(kSearchReach, size);
    if (limit <= 4) return 0;
    char block[kSearchBlock];
    // span grows by kSearchStep each round up to limit: at most 64 rounds.
    for (long span = 4; span < limit;) {
        span = std::min(span + kSearchStep, limit);
        long start = size - span;
        int length = static_cast<int>(std::min(span, kSearchBlock));
        if (buffer.read(start, block, length) < length) return 0;
        for (int i = length - 4; i >= 0; --i) {
            // A hit at position 0 reads as "not found": intended.
            if (isEndSignature(block + i)) return start + i;
        }
    }
    return 0;
}

}  // namespace QRN_SPACE
