#ifndef TUSKEL_UNARCHIVER_ZIPCONSTANTS_H
#define TUSKEL_UNARCHIVER_ZIPCONSTANTS_H

/// @file
/// ZipConstants: the numbers of the ZIP format.

#include "lang/Export.h"

namespace QRN_SPACE {

/// Signatures, record sizes, field offsets, flag bits and method numbers of
/// the ZIP format, and the self-extractor markers. All on-disk integers are
/// little-endian.
/// @ingroup archive
class TUSKEL_API ZipConstants {
public:
    /// @name Record signatures, read as little-endian 32-bit words
    /// @{
    static const int LOCSIG = 0x04034B50;  ///< "PK\3\4" local file header.
    static const int EXTSIG = 0x08074B50;  ///< "PK\7\8" data descriptor.
    static const int CENSIG = 0x02014B50;  ///< "PK\1\2" central directory record.
    static const int ENDSIG = 0x06054B50;  ///< "PK\5\6" end of central directory.
    static const int SPHSIG = 0x30304B50;  ///< "PK00" spanning marker.
    /// @}

    /// @name Fixed sizes of the records
    /// @{
    static const int LOCHDR = 30;  ///< Local file header.
    static const int EXTHDR = 16;  ///< Data descriptor with its signature; 12 without.
    static const int CENHDR = 46;  ///< Central directory record.
    static const int ENDHDR = 22;  ///< End of central directory record.
    /// @}

    /// @name Local file header field offsets
    /// @{
    static const int LOCVER = 4;   ///< Version needed to extract.
    static const int LOCFLG = 6;   ///< General purpose flags.
    static const int LOCHOW = 8;   ///< Compression method.
    static const int LOCTIM = 10;  ///< DOS time and date.
    static const int LOCCRC = 14;  ///< CRC-32.
    static const int LOCSIZ = 18;  ///< Compressed size.
    static const int LOCLEN = 22;  ///< Uncompressed size.
    static const int LOCNAM = 26;  ///< Name length.
    static const int LOCEXT = 28;  ///< Extra field length.
    /// @}

    /// @name Data descriptor field offsets (with the signature)
    /// @{
    static const int EXTCRC = 4;   ///< CRC-32.
    static const int EXTSIZ = 8;   ///< Compressed size.
    static const int EXTLEN = 12;  ///< Uncompressed size.
    /// @}

    /// @name Central directory record field offsets
    /// @{
    static const int CENVEM = 4;   ///< Version made by.
    static const int CENVER = 6;   ///< Version needed to extract.
    static const int CENFLG = 8;   ///< General purpose flags.
    static const int CENHOW = 10;  ///< Compression method.
    static const int CENTIM = 12;  ///< DOS time and date.
    static const int CENCRC = 16;  ///< CRC-32.
    static const int CENSIZ = 20;  ///< Compressed size.
    static const int CENLEN = 24;  ///< Uncompressed size.
    static const int CENNAM = 28;  ///< Name length.
    static const int CENEXT = 30;  ///< Extra field length.
    static const int CENCOM = 32;  ///< Comment length.
    static const int CENDSK = 34;  ///< Disk number start.
    static const int CENATT = 36;  ///< Internal attributes.
    static const int CENATX = 38;  ///< External attributes.
    static const int CENOFF = 42;  ///< Local header offset.
    /// @}

    /// @name End of central directory field offsets
    /// @{
    static const int ENDDSK = 4;   ///< Number of this disk.
    static const int ENDSRT = 6;   ///< Disk where the directory starts.
    static const int ENDSUB = 8;   ///< Records on this disk.
    static const int ENDTOT = 10;  ///< Records in total.
    static const int ENDSIZ = 12;  ///< Directory size.
    static const int ENDOFF = 16;  ///< Directory offset.
    static const int ENDCOM = 20;  ///< Comment length.
    /// @}

    /// @name General purpose flag bits
    /// @{
    static const int FLAG_ENCRYPTED = 0x0001;        ///< Encrypted: refused.
    static const int FLAG_DATA_DESCRIPTOR = 0x0008;  ///< Sizes and CRC follow the data.
    /// @}

    /// @name Compression methods
    /// Only STORED and DEFLATED are decoded.
    /// @{
    static const int STORED = 0;            ///< Stored.
    static const int SHRINK = 1;            ///< Shrunk.
    static const int REDUCED_FACTOR_1 = 2;  ///< Reduced, factor 1.
    static const int REDUCED_FACTOR_2 = 3;  ///< Reduced, factor 2.
    static const int REDUCED_FACTOR_3 = 4;  ///< Reduced, factor 3.
    static const int REDUCED_FACTOR_4 = 5;  ///< Reduced, factor 4.
    static const int IMPLODED = 6;          ///< Imploded.
    static const int RESERVED1 = 7;         ///< Reserved.
    static const int DEFLATED = 8;          ///< Deflated.
    static const int RESERVED2 = 9;         ///< Reserved.
    static const int PKWARE_IMPLODING = 10; ///< Old implode variant.
    /// @}

    /// Longest entry name accepted in a local header.
    static const int MAXNAMELENGTH = 512;

    /// @name PE layout used by the self-extractor detection
    /// @{
    static const int OffsetOfNumberSections = 6;   ///< Section count, from "PE".
    static const int OffsetOfSectionTable = 248;   ///< 4 + 20 + 224 from "PE".
    static const int SizePerSectionTable = 40;     ///< Bytes of one section header.
    /// @}

    /// The self-extractor marker block starts with these bytes.
    static constexpr unsigned char SIG_ZIPEXE[8] = {'N', 'M', 'C', 0x01, 's', 'f', 'x', 0x02};
    /// A section name that holds the marker block.
    static constexpr const char* SIG__winzip = "_winzip";
    /// Another section name that holds the marker block.
    static constexpr const char* SIG_winzip = "winzip";
};

}  // namespace QRN_SPACE

#endif
