#include "util/Utils.h"

#include <cctype>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "lang/Exception.h"
#include "util/StringHelper.h"

namespace QRN_SPACE {

namespace {

const char* const kSource = "Utils";
const int kLineBadOct = 109;
const int kLineBadHex = 114;
const int kLineBadDec = 124;

bool isBlankOrNul(char c) { return c == '\0' || c == ' '; }

bool isHexDigit(char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; }

bool isDecDigit(char c) { return c >= '0' && c <= '9'; }

int digitValue(char c, int base) {
    switch (base) {
    case 8:
        if (c < '0' || c > '7') throwAt<Exception>("invalid oct number", {kSource, kLineBadOct});
        return c - '0';
    case 16:
        if (!isHexDigit(c)) throwAt<Exception>("invalid hex number", {kSource, kLineBadHex});
        return isDecDigit(c) ? c - '0' : c - 'A';  // letter arithmetic is intended
    default:
        if (!isDecDigit(c)) throwAt<Exception>("invalid dec number", {kSource, kLineBadDec});
        return c - '0';
    }
}

std::string localStamp(const char* layout) {
    time_t now = time(nullptr);
    struct tm parts;
    localtime_r(&now, &parts);
    char buf[32];
    size_t n = strftime(buf, sizeof buf, layout, &parts);
    return std::string(buf, n);
}

bool isDelimiter(char c, const char* delimiters) { return std::strchr(delimiters, c) != nullptr; }

}  // namespace

void Utils::trimString(std::string& s, const char* set) {
    StringHelper::trim(s, set != nullptr ? set : "\n\r\t ");
}

void Utils::stringTokenizer(const std::string& s, std::vector<std::string>& out,
                            const std::string& delimiters, TrimFunction trim,
                            const char* trimSet) {
    size_t start = 0;
    while (start <= s.size()) {
        size_t end = s.find_first_of(delimiters, start);
        if (end == std::string::npos) end = s.size();
        if (end > start) {
            std::string piece = s.substr(start, end - start);
            if (trim != nullptr && trimSet != nullptr) trim(piece, trimSet);
            out.push_back(piece);
        }
        start = end + 1;
    }
}

int Utils::parseInt(const char* s, unsigned int len, int base) {
    // Unsigned accumulation: overflow wraps instead of being undefined.
    unsigned int result = 0;
    for (unsigned int i = 0; i < len; ++i) {
        if (isBlankOrNul(s[i])) continue;
        result = result * static_cast<unsigned int>(base) +
                 static_cast<unsigned int>(digitValue(s[i], base));
        if (i + 1 < len && !isHexDigit(s[i + 1])) break;
    }
    return static_cast<int>(result);
}

std::string Utils::getLocalDate() { return localStamp("%Y-%m-%d"); }

std::string Utils::getLocalTime() { return localStamp("%H:%M:%S"); }

bool Utils::isdigits(const char* s, const char* extra) {
    if (s == nullptr || *s == '\0') return false;
    for (; *s != '\0'; ++s) {
        if (isDecDigit(*s)) continue;
        if (extra == nullptr || std::strchr(extra, *s) == nullptr) return false;
    }
    return true;
}

bool Utils::compareBytes(const unsigned char* a, const unsigned char* b, unsigned int n) {
    return n == 0 || std::memcmp(a, b, n) == 0;
}

char Utils::CHAR_TO_HEX(int v) { return "0123456789ABCDEF"[v & 0xF]; }

char Utils::HEX_TO_CHAR(int hi, int lo) {
    auto value = [](int c) { return c > '9' ? c - 55 : c - '0'; };
    return static_cast<char>((value(hi) << 4) + value(lo));
}

std::string Utils::formatString(const char* format, ...) {
    char buf[4096];
    va_list args;
    va_start(args, format);
    vsnprintf(buf, sizeof buf, format, args);
    va_end(args);
    return buf;
}

const char* Utils::memstr(const char* hay, int hayLen, const char* needle, int needleLen) {
    if (hay == nullptr || needle == nullptr || needleLen < 0 || needleLen > hayLen) return nullptr;
    if (needleLen == 0) return hay;
    const void* found = memmem(hay, static_cast<size_t>(hayLen), needle, static_cast<size_t>(needleLen));
    return static_cast<const char*>(found);
}

const char* Utils::strToK(const char* s, int n, const char* delimiters) {
    if (s == nullptr || n < 0) return nullptr;
    if (delimiters == nullptr) delimiters = "";
    for (int token = 0;; ++token) {
        while (*s != '\0' && isDelimiter(*s, delimiters)) ++s;
        if (*s == '\0') return nullptr;
        if (token == n) return s;
        while (*s != '\0' && !isDelimiter(*s, delimiters)) ++s;
    }
}

}  // namespace QRN_SPACE
