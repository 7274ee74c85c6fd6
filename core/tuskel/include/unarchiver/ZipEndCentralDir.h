#ifndef TUSKEL_UNARCHIVER_ZIPENDCENTRALDIR_H
#define TUSKEL_UNARCHIVER_ZIPENDCENTRALDIR_H

#include <string>

#include "io/BufferBase.h"
#include "io/InputStream.h"

namespace QRN_SPACE {

/// The end of central directory record: where the directory is and how many
/// records it holds.
///
/// A plain record; one thread at a time.
/// @ingroup archive
class TUSKEL_API ZipEndCentralDir {
public:
    /// Reads the record at the current position. False for a short read or
    /// a wrong signature.
    /// @throws IOException "unexpected EOF" inside the comment.
    bool read(InputStream& in);

    /// Position of the end record, searched backwards over at most the last
    /// 65,535 bytes of the buffer (the record and the longest comment); 0
    /// when not found. **A record at position 0 also answers 0**: intended.
    /// @throws IOException what the buffer throws.
    static long findPos(BufferBase& buffer);

    int thisDisk = 0;                  ///< Number of this disk.
    int startDisk = 0;                 ///< Disk where the directory starts.
    int entriesOnDisk = 0;             ///< Records on this disk.
    int totalEntries = 0;              ///< Records in total.
    unsigned int directorySize = 0;    ///< Directory size in bytes.
    unsigned int directoryOffset = 0;  ///< From the archive's first byte.
    std::string comment;               ///< Archive comment.
};

}  // namespace QRN_SPACE

#endif
