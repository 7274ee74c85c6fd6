#ifndef TUSKEL_UNARCHIVER_ZIPCONSTANTS_H
#define TUSKEL_UNARCHIVER_ZIPCONSTANTS_H

// Signatures, record sizes, field offsets, flag bits and method numbers of
// the ZIP format, and the self-extractor markers. All on-disk integers are
// little-endian.

#include "lang/Export.h"

namespace QRN_SPACE {

class TUSKEL_API ZipConstants {
public:
    // Record signatures, read as little-endian 32-bit words.
    static const int LOCSIG = 0x04034B50;  // "PK\3\4" local file header
    static const int EXTSIG = 0x08074B50;  // "PK\7\8" data descriptor
    static const int CENSIG = 0x02014B50;  // "PK\1\2" central directory record
    static const int ENDSIG = 0x06054B50;  // "PK\5\6" end of central directory
    static const int SPHSIG = 0x30304B50;  // "PK00" spanning marker

    // Fixed sizes of the records.
    static const int LOCHDR = 30;
    static const int EXTHDR = 16;  // with its signature; 12 without
    static const int CENHDR = 46;
    static const int ENDHDR = 22;

    // Local file header field offsets.
    static const int LOCVER = 4;
    static const int LOCFLG = 6;
    static const int LOCHOW = 8;
    static const int LOCTIM = 10;
    static const int LOCCRC = 14;
    static const int LOCSIZ = 18;
    static const int LOCLEN = 22;
    static const int LOCNAM = 26;
    static const int LOCEXT = 28;

    // Data descriptor field offsets (with the signature).
    static const int EXTCRC = 4;
    static const int EXTSIZ = 8;
    static const int EXTLEN = 12;

    // Central directory record field offsets.
    static const int CENVEM = 4;
    static const int CENVER = 6;
    static const int CENFLG = 8;
    static const int CENHOW = 10;
    static const int CENTIM = 12;
    static const int CENCRC = 16;
    static const int CENSIZ = 20;
    static const int CENLEN = 24;
    static const int CENNAM = 28;
    static const int CENEXT = 30;
    static const int CENCOM = 32;
    static const int CENDSK = 34;
    static const int CENATT = 36;
    static const int CENATX = 38;
    static const int CENOFF = 42;

    // End of central directory field offsets.
    static const int ENDDSK = 4;
    static const int ENDSRT = 6;
    static const int ENDSUB = 8;
    static const int ENDTOT = 10;
    static const int ENDSIZ = 12;
    static const int ENDOFF = 16;
    static const int ENDCOM = 20;

    // General purpose flag bits.
    static const int FLAG_ENCRYPTED = 0x0001;
    static const int FLAG_DATA_DESCRIPTOR = 0x0008;  // sizes and CRC follow the data

    // Compression methods.
    static const int STORED = 0;
    static const int SHRINK = 1;
    static const int REDUCED_FACTOR_1 = 2;
    static const int REDUCED_FACTOR_2 = 3;
    static const int REDUCED_FACTOR_3 = 4;
    static const int REDUCED_FACTOR_4 = 5;
    static const int IMPLODED = 6;
    static const int RESERVED1 = 7;
    static const int DEFLATED = 8;
    static const int RESERVED2 = 9;
    static const int PKWARE_IMPLODING = 10;

    // Longest entry name accepted in a local header.
    static const int MAXNAMELENGTH = 512;

    // PE layout used by the self-extractor detection.
    static const int OffsetOfNumberSections = 6;
    static const int OffsetOfSectionTable = 248;  // 4 + 20 + 224 from "PE"
    static const int SizePerSectionTable = 40;

    // The self-extractor marker block starts with these bytes.
    static constexpr unsigned char SIG_ZIPEXE[8] = {'N', 'M', 'C', 0x01, 's', 'f', 'x', 0x02};
    // Section names that hold the marker block.
    static constexpr const char* SIG__winzip = "_winzip";
    static constexpr const char* SIG_winzip = "winzip";
};

}  // namespace QRN_SPACE

#endif
