#ifndef TUSKEL_UNARCHIVER_GZIPINFO_H
#define TUSKEL_UNARCHIVER_GZIPINFO_H

#include <memory>
#include <string>

#include "unarchiver/Tuskel.h"

namespace QRN_SPACE {

// One GZIP member header, plus the trailer values once they are read.
class TUSKEL_API GzipInfo : public ArchiveEntryHeader {
public:
    GzipInfo();
    GzipInfo(const GzipInfo&) = delete;
    GzipInfo& operator=(const GzipInfo&) = delete;
    ~GzipInfo() override;

    // Parses a header from the current position. False (not an exception)
    // when fewer than 10 bytes arrive or the magic, method or flags are not
    // GZIP. headerOnly stops after the fixed 10 bytes; otherwise the
    // optional fields are read too and an end of stream inside them throws
    // IOException "unexpected EOF".
    bool read(InputStream& in, bool headerOnly);

    // The stored header CRC-16; nothing is computed or verified.
    unsigned short caculateCrc16();

    std::string name;         // FNAME, empty when absent
    int method = 0;
    int flags = 0;
    unsigned int mtime = 0;
    int xflags = 0;
    int os = 0;
    std::unique_ptr<char[]> extra;  // FEXTRA payload, null when absent
    int extraLength = 0;
    std::string comment;      // FCOMMENT
    unsigned short headerCrc = 0;  // FHCRC
    unsigned int crc32 = 0;   // from the trailer; 0 until read
    unsigned int isize = 0;   // from the trailer; 0 until read

private:
    void _readExtra(InputStream& in);
};

}  // namespace QRN_SPACE

// The entry of a GZIP file as offered to the entry processor. Owns its
// GzipInfo (the base's `info`) and deletes it with itself.
class TUSKEL_API GzipEntryInfo : public QRN_SPACE::ArchiveEntryInfo {
public:
    GzipEntryInfo();
    ~GzipEntryInfo() override;

    QRN_SPACE::GzipInfo& gzipInfo();
};

#endif
