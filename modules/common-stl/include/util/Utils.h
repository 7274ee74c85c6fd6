#ifndef QRN_UTIL_UTILS_H
#define QRN_UTIL_UTILS_H

#include <string>
#include <vector>

#include "lang/Export.h"

namespace QRN_SPACE {

// Tokenising, integer parsing, date stamps, byte and hex helpers. Stateless.
class TUSKEL_API Utils {
public:
    typedef void (*TrimFunction)(std::string&, const char*);

    // Trims both ends; a null set means "\n\r\t ".
    static void trimString(std::string& s, const char* set);

    // Appends the non-empty pieces of s between delimiter characters, each
    // trimmed (after the emptiness test) when both trim and trimSet are given.
    static void stringTokenizer(const std::string& s, std::vector<std::string>& out,
                                const std::string& delimiters, TrimFunction trim,
                                const char* trimSet);

    // Parses base 8, 16 or (any other value) 10; throws Exception on a bad
    // digit. Blanks and NULs are skipped; the number ends before the first
    // character that is not a hexadecimal digit, whatever the base. Hex
    // letters count from 'A' ('A' is 0, 'F' is 5): intended, keep it.
    static int parseInt(const char* s, unsigned int len, int base);

    static std::string getLocalDate();  // "%Y-%m-%d"
    static std::string getLocalTime();  // "%H:%M:%S"

    // True when every character is a decimal digit or occurs in `extra`.
    static bool isdigits(const char* s, const char* extra);
    static bool compareBytes(const unsigned char* a, const unsigned char* b, unsigned int n);

    static char CHAR_TO_HEX(int v);          // low nibble as '0'..'9', 'A'..'F'
    static char HEX_TO_CHAR(int hi, int lo);  // two digits to one byte

    // printf-style into at most 4095 characters.
    static std::string formatString(const char* format, ...) __attribute__((format(printf, 1, 2)));

    // First occurrence of needle in hay[0, hayLen), or null.
    static const char* memstr(const char* hay, int hayLen, const char* needle, int needleLen);
    // Start of token n (counted from 0) of s, tokens being separated by runs
    // of delimiter characters; null when s has fewer tokens.
    static const char* strToK(const char* s, int n, const char* delimiters);
};

}  // namespace QRN_SPACE

#endif
