#ifndef TUSKEL_UNARCHIVER_GZIPINFO_H
#define TUSKEL_UNARCHIVER_GZIPINFO_H

#include <memory>
#include <string>

#include "unarchiver/Tuskel.h"

namespace QRN_SPACE {

/// One GZIP member header, plus the trailer values once they are read.
///
/// Owns its fields. One thread at a time.
/// @ingroup archive
class TUSKEL_API GzipInfo : public ArchiveEntryHeader {
public:
    /// An empty header.
    GzipInfo();
    GzipInfo(const GzipInfo&) = delete;
    GzipInfo& operator=(const GzipInfo&) = delete;
    ~GzipInfo() override;

    /// Parses a header from the current position of `in`.
    ///
    /// False (not an exception) when fewer than 10 bytes arrive or the magic,
    /// method or flags are not GZIP. `headerOnly` stops after the fixed 10
    /// bytes; otherwise the optional fields are read too.
    /// @throws IOException "unexpected EOF" for an end of stream inside the
    ///   optional fields.
    /// @throws OutOfMemoryException "Out of memory" when the extra field
    ///   cannot be held.
    bool read(InputStream& in, bool headerOnly);

    /// The stored header CRC-16; nothing is computed or verified.
    unsigned short caculateCrc16();

    std::string name;               ///< FNAME, empty when absent.
    int method = 0;                 ///< CM: GzipConstants::DEFLATED or STORED.
    int flags = 0;                  ///< FLG.
    unsigned int mtime = 0;         ///< MTIME, seconds since 1970 as stored.
    int xflags = 0;                 ///< XFL.
    int os = 0;                     ///< OS.
    std::unique_ptr<char[]> extra;  ///< FEXTRA payload, null when absent.
    int extraLength = 0;            ///< Bytes in #extra.
    std::string comment;            ///< FCOMMENT, empty when absent.
    unsigned short headerCrc = 0;   ///< FHCRC, 0 when absent.
    unsigned int crc32 = 0;         ///< From the trailer; 0 until read; never verified.
    unsigned int isize = 0;         ///< From the trailer; 0 until read.

private:
    void _readExtra(InputStream& in);
};

}  // namespace QRN_SPACE

/// The entry of a GZIP file as offered to the entry processor.
///
/// Owns its GzipInfo (the base's `info`) and deletes it with itself.
/// @ingroup archive
class TUSKEL_API GzipEntryInfo : public QRN_SPACE::ArchiveEntryInfo {
public:
    /// An entry with a new, empty GzipInfo; `info` stays null when that
    /// cannot be allocated.
    GzipEntryInfo();
    ~GzipEntryInfo() override;

    /// The header record, owned by the entry; `info` must not be null.
    QRN_SPACE::GzipInfo& gzipInfo();
};

#endif
