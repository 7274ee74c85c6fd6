#ifndef QRN_UTIL_UTILS_H
#define QRN_UTIL_UTILS_H

#include <string>
#include <vector>

#include "lang/Export.h"

namespace QRN_SPACE {

/// Tokenising, integer parsing, date stamps, byte and hex helpers.
///
/// Stateless: any thread may call any operation (the date stamps use
/// localtime_r). Nothing throws but parseInt() and std::bad_alloc. Pointers
/// answered point into the caller's own text. Not to be confused with the
/// global ::Utils, which holds the logging functions.
/// @ingroup util
class TUSKEL_API Utils {
public:
    /// A trimming function for stringTokenizer(), such as trimString().
    typedef void (*TrimFunction)(std::string&, const char*);

    /// Trims both ends of `s` of the characters in `set`; a null `set` means
    /// line feed, carriage return, tab and blank.
    static void trimString(std::string& s, const char* set);

    /// Appends the non-empty pieces of `s` between delimiter characters to
    /// `out`, each trimmed (after the emptiness test, so a piece may end up
    /// empty) when both `trim` and `trimSet` are given.
    static void stringTokenizer(const std::string& s, std::vector<std::string>& out,
                                const std::string& delimiters, TrimFunction trim,
                                const char* trimSet);

    /// Parses the first `len` characters of `s` in base 8, 16 or (any other
    /// value) 10.
    ///
    /// Blanks and NULs are skipped; the number ends before the first
    /// character that is not a hexadecimal digit, whatever the base.
    /// **Hex letters count from 'A' ('A' is 0, 'F' is 5, and lower case is
    /// further off)**: intended, keep it. Overflow wraps.
    /// @throws Exception "invalid oct number", "invalid hex number" or
    ///   "invalid dec number" on a digit the base does not have.
    static int parseInt(const char* s, unsigned int len, int base);

    static std::string getLocalDate();  ///< Today in local time as "%Y-%m-%d".
    static std::string getLocalTime();  ///< Now in local time as "%H:%M:%S".

    /// True when `s` is not empty and every character is a decimal digit or
    /// occurs in `extra` (may be null); false for a null `s`.
    static bool isdigits(const char* s, const char* extra);
    /// Are the first `n` bytes equal? True for `n` 0.
    static bool compareBytes(const unsigned char* a, const unsigned char* b, unsigned int n);

    /// The low nibble of `v` as '0'..'9', 'A'..'F'.
    static char CHAR_TO_HEX(int v);
    /// Two upper-case hex digits to one byte (lower case gives wrong values).
    static char HEX_TO_CHAR(int hi, int lo);

    /// printf-style into at most 4095 characters; longer text is cut.
    static std::string formatString(const char* format, ...) __attribute__((format(printf, 1, 2)));

    /// First occurrence of `needle` in hay[0, hayLen), or null (also for null
    /// arguments or a needle longer than the hay); `hay` for an empty
    /// needle.
    static const char* memstr(const char* hay, int hayLen, const char* needle, int needleLen);
    /// Start of token `n` (counted from 0) of `s`, tokens being separated by
    /// runs of delimiter characters; null when `s` has fewer tokens or is
    /// null.
    static const char* strToK(const char* s, int n, const char* delimiters);
};

}  // namespace QRN_SPACE

#endif
