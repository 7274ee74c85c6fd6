#ifndef TUSKEL_UNARCHIVER_GZIPCONSTANTS_H
#define TUSKEL_UNARCHIVER_GZIPCONSTANTS_H

#include "lang/Export.h"

namespace QRN_SPACE {

// The GZIP member layout (RFC 1952); multi-byte fields are little-endian.
class TUSKEL_API GzipConstants {
public:
    static constexpr int GZIP_MAGIC = 0x8B1F;  // bytes 1F 8B read as a 16-bit value

    // Flag bits.
    static constexpr int FTEXT = 0x01;
    static constexpr int FHCRC = 0x02;     // a header CRC-16 follows the strings
    static constexpr int FEXTRA = 0x04;    // XLEN and XLEN bytes follow the fixed header
    static constexpr int FNAME = 0x08;     // zero-terminated original name
    static constexpr int FCOMMENT = 0x10;  // zero-terminated comment
    static constexpr int RESERVED = 0xE0;  // any of these makes the header invalid

    // The fixed header.
    static constexpr int GZIPHDR = 10;
    static constexpr int MAGIC_OFFSET = 0;
    static constexpr int METHOD_OFFSET = 2;
    static constexpr int FLAG_OFFSET = 3;
    static constexpr int MTIME_OFFSET = 4;
    static constexpr int XFLAG_OFFSET = 8;
    static constexpr int OS_OFFSET = 9;

    // Compression methods. Stored is accepted although RFC 1952 defines
    // only deflate.
    static constexpr int DEFLATED = 8;
    static constexpr int STORED = 0;

    // CRC-32 then ISIZE after the compressed body.
    static constexpr int TRAILER_SIZE = 8;
};

}  // namespace QRN_SPACE

#endif
