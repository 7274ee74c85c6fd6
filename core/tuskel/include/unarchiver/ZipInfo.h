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

// The current entry's local file header and data descriptor, and, for the
// final entry of a walk, the archive's central directory and end record.
// Owns its extra data and every directory record.
class TUSKEL_API ZipInfo : public ArchiveEntryHeader {
public:
    ZipInfo() = default;
    ZipInfo(const ZipInfo&) = delete;
    ZipInfo& operator=(const ZipInfo&) = delete;
    ~ZipInfo() override;

    // Reads a local header at the current position, which the caller has
    // marked. False for a short read or a wrong signature. ArchivingException
    // "encrypted ZIP entry" or "bad entry name" (name over 512 bytes). With
    // headerOnly the name and extra field are left unread, so format
    // detection reads exactly the fixed 30 bytes.
    bool read(InputStream& in, bool headerOnly);

    // After an entry's data, when flag bit 3 is set: reads the descriptor,
    // with or without its signature, and leaves the stream after it. When
    // the next record follows directly, nothing moves.
    void readDataDescriptor(InputStream& in);

    // Reads `count` central records from the current position into
    // centralDirs; a record that fails stays in the list and reading goes
    // on. Answers the number read successfully.
    int readCentralDirs(InputStream& in, int count);

    bool hasDataDescriptor() const;

    std::string name;
    unsigned int compressedSize = 0;
    int method = 0;
    unsigned int time = 0;  // DOS time and date
    std::unique_ptr<char[]> extra;
    int extraLength = 0;
    unsigned int uncompressedSize = 0;
    unsigned int crc = 0;
    std::string comment;
    int flags = 0;
    int versionNeeded = 0;
    std::vector<ZipCentralDir> centralDirs;  // in file order
    ZipEndCentralDir endCentralDir;
    bool centralDirRead = false;
    // Recorded with the directory for the final entry of a walk.
    int localEntries = 0;    // local headers taken up before the directory
    int centralEntries = 0;  // directory records read successfully
};

}  // namespace QRN_SPACE

#endif
