#ifndef TUSKEL_UNARCHIVER_ZIPCENTRALDIR_H
#define TUSKEL_UNARCHIVER_ZIPCENTRALDIR_H

#include <string>

#include "io/InputStream.h"

namespace QRN_SPACE {

/// One central directory record: what the archive's directory says about an
/// entry, including where its local header lies.
///
/// A plain record; one thread at a time.
/// @ingroup archive
class TUSKEL_API ZipCentralDir {
public:
    /// Reads one record at the current position.
    ///
    /// False for a short read or a wrong signature.
    /// @throws IOException "empty file name in central directory" for a
    ///   record without a name; "unexpected EOF" inside the variable part.
    bool read(InputStream& in);

    /// Reads records in sequence into this object until the one with the
    /// zero-based `index` has been read; answers `index`, or -1 when the
    /// records run out first. A negative index is answered at once.
    /// @throws IOException as read().
    int getNextDir(InputStream& in, int index);

    int versionMadeBy = 0;                ///< Version made by.
    int versionNeeded = 0;                ///< Version needed to extract.
    int flags = 0;                        ///< General purpose flags.
    int method = 0;                       ///< Compression method.
    unsigned int time = 0;                ///< DOS time and date.
    unsigned int crc = 0;                 ///< CRC-32.
    unsigned int compressedSize = 0;      ///< Compressed size.
    unsigned int uncompressedSize = 0;    ///< Uncompressed size.
    int diskNumberStart = 0;              ///< Disk number start.
    int internalAttributes = 0;           ///< Internal attributes.
    unsigned int externalAttributes = 0;  ///< External attributes.
    unsigned int localHeaderOffset = 0;   ///< From the archive's first byte.
    std::string name;                     ///< The entry's name.
    std::string extra;                    ///< Extra field, raw bytes.
    std::string comment;                  ///< File comment.
};

}  // namespace QRN_SPACE

#endif
