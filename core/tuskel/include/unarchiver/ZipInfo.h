#ifndef TUSKEL_UNARCHIVER_ZIPINFO_H
#define TUSKEL_UNARCHIVER_ZIPINFO_H

#include <memory>
#include <string>
#include <vector>

#include "io/InputStream.h"
#include "unarchiver/Tuskel.h"
#include "unarchiver/ZipCentralDir.h"
#include "unarchiver/ZipEndCentralDir.h"

namespace QRN_SPACE {

/// The current entry's local file header and data descriptor, and, for the
/// final entry of a walk, the archive's central directory and end record.
///
/// Owns its extra data and every directory record. One thread at a time.
/// @ingroup archive
class TUSKEL_API ZipInfo : public ArchiveEntryHeader {
public:
    /// An empty header.
    ZipInfo() = default;
    ZipInfo(const ZipInfo&) = delete;
    ZipInfo& operator=(const ZipInfo&) = delete;
    ~ZipInfo() override;

    /// Reads a local header at the current position, which the caller has
    /// marked.
    ///
    /// False for a short read or a wrong signature. With `headerOnly` the
    /// name and extra field are left unread, so format detection reads
    /// exactly the fixed 30 bytes.
    /// @throws ArchivingException "encrypted ZIP entry", or "bad entry name"
    ///   for a name over 512 bytes.
    /// @throws IOException "unexpected EOF" inside the name or extra field.
    /// @throws OutOfMemoryException "Out of memory" when the extra field
    ///   cannot be held.
    bool read(InputStream& in, bool headerOnly);

    /// After an entry's data, when flag bit 3 is set: reads the descriptor,
    /// with or without its signature, and leaves the stream after it. When
    /// the next record follows directly, nothing moves. The stream must
    /// support mark and reset.
    void readDataDescriptor(InputStream& in);

    /// Reads `count` central records from the current position into
    /// centralDirs; a record that answers false stays in the list and
    /// reading goes on. Answers the number read successfully. Clears #flags.
    /// @throws IOException from ZipCentralDir::read(), which ends the reading.
    int readCentralDirs(InputStream& in, int count);

    /// Is flag bit 3 (sizes and CRC after the data) set?
    bool hasDataDescriptor() const;

    std::string name;                        ///< The entry's name.
    unsigned int compressedSize = 0;         ///< Compressed size (from the descriptor when there is one).
    int method = 0;                          ///< Compression method (ZipConstants).
    unsigned int time = 0;                   ///< DOS time and date.
    std::unique_ptr<char[]> extra;           ///< Extra field, null when empty.
    int extraLength = 0;                     ///< Bytes in #extra.
    unsigned int uncompressedSize = 0;       ///< Uncompressed size (from the descriptor when there is one).
    unsigned int crc = 0;                    ///< CRC-32 as stored; never verified.
    std::string comment;                     ///< Not read from a local header; empty.
    int flags = 0;                           ///< General purpose flags.
    int versionNeeded = 0;                   ///< Version needed to extract.
    std::vector<ZipCentralDir> centralDirs;  ///< The directory, in file order (final entry only).
    ZipEndCentralDir endCentralDir;          ///< The end record (final entry only).
    bool centralDirRead = false;             ///< True once readCentralDirs() ran.
    /// Local headers taken up before the directory (final entry only).
    int localEntries = 0;
    /// Directory records read successfully (final entry only).
    int centralEntries = 0;
};

}  // namespace QRN_SPACE

#endif
