#ifndef TUSKEL_UNARCHIVER_ZIPENDCENTRALDIR_H
#define TUSKEL_UNARCHIVER_ZIPENDCENTRALDIR_H

#include <string>

#include "io/BufferBase.h"
#include "io/InputStream.h"

namespace QRN_SPACE {

// The end of central directory record: where the directory is and how many
// records it holds.
class TUSKEL_API ZipEndCentralDir {
public:
    // Reads the record at the current position. False for a short read or a
    // wrong signature; "unexpected EOF" inside the comment.
    bool read(InputStream& in);

    // Position of the end record, searched backwards over at most the last
    // 65,535 bytes of the buffer (the record and the longest comment); 0 when
    // not found. A record at position 0 also answers 0: intended.
    static long findPos(BufferBase& buffer);

    int thisDisk = 0;
    int startDisk = 0;
    int entriesOnDisk = 0;
    int totalEntries = 0;
    unsigned int directorySize = 0;
    unsigned int directoryOffset = 0;  // from the archive's first byte
    std::string comment;
};

}  // namespace QRN_SPACE

#endif
