// The signature tests of FileTypeIdent, one per row of its table, and the
// character classes the text tests use. Each test looks only at the bytes
// its rule names; the minimum lengths are the table's own, and where they
// exceed what is inspected they are kept that way on purpose.

#include <cstring>

#include "filetype/FileTypeIdent.h"

namespace QRN_SPACE {

namespace {

typedef const unsigned char* Bytes;

// Character classes: 0 not text, 1 plain text (BEL to LF, FF, CR, ESC,
// printable ASCII, NEL), 3 the other C1 controls, 2 the upper half of Latin-1.
const unsigned char kCharClass[256] = {
    0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 0, 1, 1, 0, 0,  // 00-0F
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0,  // 10-1F
    1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1,  // 20-2F
    1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1,  // 30-3F
    1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1,  // 40-4F
    1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1,  // 50-5F
    1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1,  // 60-6F
    1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0,  // 70-7F
    3, 3, 3, 3, 3, 1, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3,  // 80-8F
    3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3,  // 90-9F
    2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2,  // A0-AF
    2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2,  // B0-BF
    2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2,  // C0-CF
    2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2,  // D0-DF
    2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2,  // E0-EF
    2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2,  // F0-FF
};
const unsigned char kPlainText = 1;

// Does buf hold at least `min` bytes with `sig` (n bytes) at `offset`?
// Every caller has offset + n <= min; intended: several demand a byte or
// more beyond what they compare.
bool has(Bytes buf, int len, int min, int offset, const char* sig, int n) {
    return buf != nullptr && len >= min && std::memcmp(buf + offset, sig, static_cast<size_t>(n)) == 0;
}

unsigned char lower(unsigned char c) { return c >= 'A' && c <= 'Z' ? static_cast<unsigned char>(c + ('a' - 'A')) : c; }

// Are the bytes at `offset` the lower-case `text`, case ignored? The
// caller has made sure they are there.
bool textAt(Bytes buf, int offset, const char* text) {
    for (int i = 0; text[i] != '\0'; ++i) {
        if (lower(buf[offset + i]) != static_cast<unsigned char>(text[i])) return false;
    }
    return true;
}

// Do the first min(len, 200) bytes all have a class that `accept` takes?
template <class Accept>
bool allText(Bytes buf, int len, Accept accept) {
    if (buf == nullptr) return false;
    const int n = len < FileTypeIdent::TEXT_LENGTH ? len : FileTypeIdent::TEXT_LENGTH;
    for (int i = 0; i < n; ++i) {
        if (!accept(kCharClass[buf[i]])) return false;
    }
    return true;
}

// The three compound-document signatures shared by several rows.
bool isCompoundDocument(Bytes buf, int len) {
    return has(buf, len, 4, 0, "\xFE\x37\x00\x23", 4) || has(buf, len, 6, 0, "\xD0\xCF\x11\xE0\xA1\xB1", 6) ||
           has(buf, len, 6, 0, "\xDB\xA5\x2D\x00\x00\x00", 6);
}

}  // namespace

bool FileTypeIdent::isPlainTxtFile(Bytes buf, int len) {
    return allText(buf, len, [](unsigned char c) { return c == kPlainText; });
}

bool FileTypeIdent::isHtmFile(Bytes buf, int len) {
    if (buf == nullptr) return false;
    if ((len >= 5 && textAt(buf, 0, "<html")) || (len >= 6 && textAt(buf, 0, "<title")) ||
        (len >= 5 && textAt(buf, 0, "<head"))) {
        return true;
    }
    // Otherwise only a document type declaration, "<!doctype html", with
    // any number of blanks before "html"; leading white space is not skipped.
    const int kDoctype = 2, kBlank = 9, kMinimum = 14, kTail = 4;
    if (len < kMinimum || buf[0] != '<' || buf[1] != '!') return false;
    if (!textAt(buf, kDoctype, "doctype") || buf[kBlank] != ' ') return false;
    int at = kBlank + 1;
    while (at < len - kTail && buf[at] == ' ') ++at;
    return textAt(buf, at, "html");
}

bool FileTypeIdent::isTxtFile(Bytes buf, int len) {
    return allText(buf, len, [](unsigned char c) { return c != 0; });
}

bool FileTypeIdent::isBatFile(Bytes buf, int len) { return isTxtFile(buf, len); }

bool FileTypeIdent::isVbsFile(Bytes buf, int len) { return isTxtFile(buf, len); }

bool FileTypeIdent::isJsFile(Bytes buf, int len) { return isTxtFile(buf, len); }

bool FileTypeIdent::isJpgFile(Bytes buf, int len) { return has(buf, len, 3, 0, "\xFF\xD8", 2); }

bool FileTypeIdent::isGifFile(Bytes buf, int len) { return has(buf, len, 4, 0, "GIF8", 4); }

bool FileTypeIdent::isPicFile(Bytes buf, int len) { return has(buf, len, 3, 0, "\x91\x19", 2); }

bool FileTypeIdent::isTiffFile(Bytes buf, int len) {
    return has(buf, len, 4, 0, "IIN1", 4) || has(buf, len, 4, 0, "MM\x00*", 4) || has(buf, len, 4, 0, "II*\x00", 4);
}

// Intended: byte 0 is not inspected.
bool FileTypeIdent::isPngFile(Bytes buf, int len) { return has(buf, len, 5, 1, "PNG", 3); }

bool FileTypeIdent::isBmpFile(Bytes buf, int len) { return has(buf, len, 3, 0, "BM", 2); }

bool FileTypeIdent::isIcoFile(Bytes buf, int len) { return has(buf, len, 3, 0, "IC", 2); }

// A frame sync: FF, then the high four bits of the next byte all set.
bool FileTypeIdent::isMp3File(Bytes buf, int len) {
    return has(buf, len, 3, 0, "\xFF", 1) && (buf[1] & 0xF0) == 0xF0;
}

bool FileTypeIdent::isWavFile(Bytes buf, int len) { return has(buf, len, 12, 0, "RIFF", 4) && has(buf, len, 12, 8, "WAVE", 4); }

bool FileTypeIdent::isMidFile(Bytes buf, int len) { return has(buf, len, 4, 0, "MThd", 4); }

bool FileTypeIdent::isMorvanePatternFile(Bytes buf, int len) { return has(buf, len, 4, 0, "\x1A\xD1\xBD\x1A", 4); }

// A sequence header (B3) or a pack header (BA) start code.
bool FileTypeIdent::isMpgFile(Bytes buf, int len) {
    return has(buf, len, 4, 0, "\x00\x00\x01", 3) && (buf[3] == 0xB3 || buf[3] == 0xBA);
}

bool FileTypeIdent::isAviFile(Bytes buf, int len) { return has(buf, len, 11, 0, "RIFF", 4) && has(buf, len, 11, 8, "AVI", 3); }

bool FileTypeIdent::isFlcFile(Bytes buf, int len) { return has(buf, len, 6, 4, "\x12\xAF", 2); }

bool FileTypeIdent::isFliFile(Bytes buf, int len) { return has(buf, len, 6, 4, "\x11\xAF", 2); }

bool FileTypeIdent::isMovFile(Bytes buf, int len) { return has(buf, len, 8, 4, "moov", 4) || has(buf, len, 8, 4, "mdat", 4); }

bool FileTypeIdent::isPdfFile(Bytes buf, int len) { return has(buf, len, 5, 0, "%PDF-", 5); }

bool FileTypeIdent::isExeFile(Bytes buf, int len) { return has(buf, len, 2, 0, "MZ", 2) || has(buf, len, 2, 0, "NE", 2); }

// A near or short jump as the first instruction.
bool FileTypeIdent::isComFile(Bytes buf, int len) { return has(buf, len, 1, 0, "\xE9", 1) || has(buf, len, 1, 0, "\xEB", 1); }

bool FileTypeIdent::isChmFile(Bytes buf, int len) { return has(buf, len, 4, 0, "ITSF", 4); }

bool FileTypeIdent::isMsOfficeFile(Bytes buf, int len) { return isCompoundDocument(buf, len); }

bool FileTypeIdent::isDocFile(Bytes buf, int len) {
    return has(buf, len, 5, 0, "PO^Q`", 5) || isCompoundDocument(buf, len) || has(buf, len, 4, 0, "\xFFWPC", 4);
}

bool FileTypeIdent::isDotFile(Bytes buf, int len) { return isCompoundDocument(buf, len); }

bool FileTypeIdent::isPptFile(Bytes buf, int len) { return isCompoundDocument(buf, len); }

bool FileTypeIdent::isZipFile(Bytes buf, int len) { return has(buf, len, 5, 0, "PK\x03\x04", 4); }

bool FileTypeIdent::isArcFile(Bytes buf, int len) { return has(buf, len, 3, 0, "\x1A", 1); }

bool FileTypeIdent::isArjFile(Bytes buf, int len) { return has(buf, len, 3, 0, "\x60\xEA", 2); }

bool FileTypeIdent::isRarFile(Bytes buf, int len) { return has(buf, len, 5, 0, "Rar!", 4); }

bool FileTypeIdent::isTarFile(Bytes buf, int len) { return has(buf, len, 262, 257, "ustar", 5); }

bool FileTypeIdent::isGzipFile(Bytes buf, int len) { return has(buf, len, 3, 0, "\x1F\x8B", 2); }

bool FileTypeIdent::isZFile(Bytes buf, int len) { return has(buf, len, 3, 0, "\x1F\x9D", 2); }

bool FileTypeIdent::isMscmpFile(Bytes buf, int len) {
    return has(buf, len, 9, 0, "SZDD\x88\xF0\x27\x33", 8) || has(buf, len, 9, 0, "KWAJ\x88\xF0\x27\xD1", 8);
}

bool FileTypeIdent::isCabFile(Bytes buf, int len) { return has(buf, len, 9, 0, "MSCF\x00\x00\x00\x00", 8); }

bool FileTypeIdent::isZooFile(Bytes buf, int len) { return has(buf, len, 25, 20, "\xDC\xA7\xC4\xFD", 4); }

// The last row: every scan ends with a match.
bool FileTypeIdent::isNullFile(Bytes, int) { return true; }

}  // namespace QRN_SPACE
