#ifndef TUSKEL_UNARCHIVER_GZIPCONSTANTS_H
#define TUSKEL_UNARCHIVER_GZIPCONSTANTS_H

#include "lang/Export.h"

namespace QRN_SPACE {

/// The GZIP member layout (RFC 1952); multi-byte fields are little-endian.
/// @ingroup archive
class TUSKEL_API GzipConstants {
public:
    static constexpr int GZIP_MAGIC = 0x8B1F;  ///< Bytes 1F 8B read as a 16-bit value.

    /// @name Flag bits
    /// @{
    static constexpr int FTEXT = 0x01;     ///< Probably text; not used here.
    static constexpr int FHCRC = 0x02;     ///< A header CRC-16 follows the strings.
    static constexpr int FEXTRA = 0x04;    ///< XLEN and XLEN bytes follow the fixed header.
    static constexpr int FNAME = 0x08;     ///< Zero-terminated original name.
    static constexpr int FCOMMENT = 0x10;  ///< Zero-terminated comment.
    static constexpr int RESERVED = 0xE0;  ///< Any of these makes the header invalid.
    /// @}

    /// @name The fixed header: its size and field offsets
    /// @{
    static constexpr int GZIPHDR = 10;       ///< Bytes of the fixed header.
    static constexpr int MAGIC_OFFSET = 0;   ///< ID1 ID2.
    static constexpr int METHOD_OFFSET = 2;  ///< CM.
    static constexpr int FLAG_OFFSET = 3;    ///< FLG.
    static constexpr int MTIME_OFFSET = 4;   ///< MTIME, 4 bytes.
    static constexpr int XFLAG_OFFSET = 8;   ///< XFL.
    static constexpr int OS_OFFSET = 9;      ///< OS.
    /// @}

    /// @name Compression methods
    /// Stored is accepted although RFC 1952 defines only deflate.
    /// @{
    static constexpr int DEFLATED = 8;  ///< Deflate.
    static constexpr int STORED = 0;    ///< Stored: the body is copied.
    /// @}

    /// CRC-32 then ISIZE after the compressed body.
    static constexpr int TRAILER_SIZE = 8;
};

}  // namespace QRN_SPACE

#endif
