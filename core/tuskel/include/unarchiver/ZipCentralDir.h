#ifndef TUSKEL_UNARCHIVER_ZIPCENTRALDIR_H
#define TUSKEL_UNARCHIVER_ZIPCENTRALDIR_H

#include <string>

#include "io/InputStream.h"

namespace QRN_SPACE {

// One central directory record: what the archive's directory says about an
// entry, including where its local header lies.
class TUSKEL_API ZipCentralDir {
public:
    // Reads one record at the current position. False for a short read or a
    // wrong signature; IOException "empty file name in central directory"
    // for a record without a name, "unexpected EOF" inside the variable part.
    bool read(InputStream& in);

    // Reads records in sequence into this object until the one with the
    // zero-based `index` has been read; answers index, or -1 when the
    // records run out first. A negative index is answered at once.
    int getNextDir(InputStream& in, int index);

    int versionMadeBy = 0;
    int versionNeeded = 0;
    int flags = 0;
    int method = 0;
    unsigned int time = 0;  // DOS time and date
    unsigned int crc = 0;
    unsigned int compressedSize = 0;
    unsigned int uncompressedSize = 0;
    int diskNumberStart = 0;
    int internalAttributes = 0;
    unsigned int externalAttributes = 0;
    unsigned int localHeaderOffset = 0;  // from the archive's first byte
    std::string name;
    std::string extra;  // raw bytes
    std::string comment;
};

}  // namespace QRN_SPACE

#endif
