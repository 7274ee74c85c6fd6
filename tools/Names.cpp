#include "Names.h"

#include <cstdint>

#include "unarchiver/Crc.h"
#include "utils/IOUtils.h"

namespace tuskel_tool {

namespace {

using QRN_SPACE::IOUtils;

const int kUnicodePathTag = 0x7075;  // Info-ZIP Unicode path extra field
const int kUnicodePathVersion = 1;

// The upper half of code page 437; the lower half is ASCII.
const uint16_t kCp437High[128] = {
    0x00C7, 0x00FC, 0x00E9, 0x00E2, 0x00E4, 0x00E0, 0x00E5, 0x00E7, 0x00EA, 0x00EB, 0x00E8, 0x00EF, 0x00EE,
    0x00EC, 0x00C4, 0x00C5, 0x00C9, 0x00E6, 0x00C6, 0x00F4, 0x00F6, 0x00F2, 0x00FB, 0x00F9, 0x00FF, 0x00D6,
    0x00DC, 0x00A2, 0x00A3, 0x00A5, 0x20A7, 0x0192, 0x00E1, 0x00ED, 0x00F3, 0x00FA, 0x00F1, 0x00D1, 0x00AA,
    0x00BA, 0x00BF, 0x2310, 0x00AC, 0x00BD, 0x00BC, 0x00A1, 0x00AB, 0x00BB, 0x2591, 0x2592, 0x2593, 0x2502,
    0x2524, 0x2561, 0x2562, 0x2556, 0x2555, 0x2563, 0x2551, 0x2557, 0x255D, 0x255C, 0x255B, 0x2510, 0x2514,
    0x2534, 0x252C, 0x251C, 0x2500, 0x253C, 0x255E, 0x255F, 0x255A, 0x2554, 0x2569, 0x2566, 0x2560, 0x2550,
    0x256C, 0x2567, 0x2568, 0x2564, 0x2565, 0x2559, 0x2558, 0x2552, 0x2553, 0x256B, 0x256A, 0x2518, 0x250C,
    0x2588, 0x2584, 0x258C, 0x2590, 0x2580, 0x03B1, 0x00DF, 0x0393, 0x03C0, 0x03A3, 0x03C3, 0x00B5, 0x03C4,
    0x03A6, 0x0398, 0x03A9, 0x03B4, 0x221E, 0x03C6, 0x03B5, 0x2229, 0x2261, 0x00B1, 0x2265, 0x2264, 0x2320,
    0x2321, 0x00F7, 0x2248, 0x00B0, 0x2219, 0x00B7, 0x221A, 0x207F, 0x00B2, 0x25A0, 0x00A0,
};

void appendUtf8(std::string& out, uint32_t c) {
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

std::string fromCp437(const std::string& raw) {
    std::string out;
    for (unsigned char c : raw) appendUtf8(out, c < 0x80 ? c : kCp437High[c - 0x80]);
    return out;
}

// Length of the well-formed UTF-8 sequence at text[i] (no overlongs, no
// surrogates, nothing past U+10FFFF), or 0.
size_t utf8Length(const std::string& text, size_t i) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    if (c < 0x80) return 1;
    size_t n;
    unsigned char lo = 0x80, hi = 0xBF;  // bounds of the second byte
    if (c >= 0xC2 && c <= 0xDF) {
        n = 2;
    } else if (c >= 0xE0 && c <= 0xEF) {
        n = 3;
        if (c == 0xE0) lo = 0xA0;
        if (c == 0xED) hi = 0x9F;
    } else if (c >= 0xF0 && c <= 0xF4) {
        n = 4;
        if (c == 0xF0) lo = 0x90;
        if (c == 0xF4) hi = 0x8F;
    } else {
        return 0;
    }
    if (i + n > text.size()) return 0;
    for (size_t k = 1; k < n; ++k) {
        const unsigned char d = static_cast<unsigned char>(text[i + k]);
        if (d < (k == 1 ? lo : 0x80) || d > (k == 1 ? hi : 0xBF)) return 0;
    }
    return n;
}

// The UTF-8 name of an Info-ZIP Unicode path field, when there is one that
// was written for this very name (its CRC-32 matches the stored bytes).
bool unicodePath(const std::string& raw, const std::string& extra, std::string& out) {
    size_t at = 0;
    while (at + 4 <= extra.size()) {
        const char* field = extra.data() + at;
        const int tag = IOUtils::readUShort(field);
        const size_t length = static_cast<size_t>(IOUtils::readUShort(field + 2));
        if (at + 4 + length > extra.size()) return false;
        if (tag == kUnicodePathTag && length >= 5 && IOUtils::readUChar(field + 4) == kUnicodePathVersion) {
            QRN_SPACE::Iso3309Crc crc;
            crc.add(raw.data(), static_cast<unsigned int>(raw.size()));
            if (IOUtils::readUInt(field + 5) != crc.crc()) {
                return false;
            }
            out.assign(field + 9, length - 5);
            return true;
        }
        at += 4 + length;
    }
    return false;
}

}  // namespace

std::string decodeZipName(const std::string& raw, const NameEncoding& encoding) {
    if (encoding.utf8Flag) return raw;
    std::string unicode;
    if (unicodePath(raw, encoding.extra, unicode)) return unicode;
    // unzip converts from the OEM code page only for archives made on FAT.
    if (encoding.madeBy == kHostFat) return fromCp437(raw);
    return raw;
}

std::string printable(const std::string& text) {
    static const char kHex[] = "0123456789abcdef";
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size();) {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        size_t n = utf8Length(text, i);
        // C0 controls, DEL, and C1 controls (U+0080..U+009F: C2 80..C2 9F).
        const bool control = c < 0x20 || c == 0x7F ||
                             (n == 2 && c == 0xC2 && static_cast<unsigned char>(text[i + 1]) < 0xA0);
        if (n == 0 || control) {
            if (n == 0) n = 1;
            for (size_t k = 0; k < n; ++k) {
                const unsigned char b = static_cast<unsigned char>(text[i + k]);
                out += "\\x";
                out += kHex[b >> 4];
                out += kHex[b & 15];
            }
        } else {
            out.append(text, i, n);
        }
        i += n;
    }
    return out;
}

std::string validUtf8(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size();) {
        const size_t n = utf8Length(text, i);
        if (n == 0) {
            out += "\xEF\xBF\xBD";
            ++i;
        } else {
            out.append(text, i, n);
            i += n;
        }
    }
    return out;
}

std::string baseName(const std::string& path) {
    const size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

}  // namespace tuskel_tool
