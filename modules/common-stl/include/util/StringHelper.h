#ifndef QRN_UTIL_STRINGHELPER_H
#define QRN_UTIL_STRINGHELPER_H

#include <string>

#include "lang/Export.h"

namespace QRN_SPACE {

/// Case handling, comparisons, trimming and number/boolean text.
///
/// Stateless: any thread may call any operation. Nothing throws but
/// std::bad_alloc. Null C strings are accepted wherever the description says
/// so. Case is that of the C locale's toupper/tolower, byte by byte. The
/// operations that take a std::string& change it in place and answer it.
/// @ingroup util
class TUSKEL_API StringHelper {
public:
    /// Upper-cases `s` in place.
    static std::string& toupper(std::string& s);
    /// Lower-cases `s` in place.
    static std::string& tolower(std::string& s);

    /// Equal texts; both null is equal, one null is not.
    static bool equals(const char* a, const char* b);
    /// As equals(), case ignored.
    static bool equalsIgnoreCase(const char* a, const char* b);
    /// Does text `a` begin with `b`? False when either is null.
    static bool startsWith(const char* a, const char* b);
    /// As startsWith(), case ignored.
    static bool startsWithIgnoreCase(const char* a, const char* b);
    /// Does text `a` end with `b`? False when either is null.
    static bool endsWith(const char* a, const char* b);
    /// As endsWith(), case ignored.
    static bool endsWithIgnoreCase(const char* a, const char* b);

    /// Position in `text` of the first match of `pattern`, case ignored, at or
    /// after `from` (below 0 counts as 0); -1 when none or either is null.
    static int indexOfIgnoreCase(const char* text, const char* pattern, int from);
    /// Position in `text` of the last match of `pattern`, case ignored; -1
    /// when none or either is null.
    static int lastIndexOfIgnoreCase(const char* text, const char* pattern);

    /// Removes every character of `set` from both ends; a null `set` removes
    /// nothing.
    static std::string& trim(std::string& s, const char* set);
    /// Cuts `s` to at most `n` bytes.
    static std::string& trimToLength(std::string& s, unsigned int n);

    static std::string ntoa(int value);     ///< `value` as "%d".
    static std::string ltoa(long value);    ///< `value` as "%ld".
    static std::string ftoa(float value);   ///< `value` as "%f".
    static std::string dtoa(double value);  ///< `value` as "%g".
    static bool atob(const char* text);     ///< True for "true" in any case; false otherwise and for null.
    static std::string btoa(bool value);    ///< "true" or "false".

    /// Replaces every `from` character with `to`.
    static std::string& replaceChar(std::string& s, char from, char to);
    /// Replaces the first occurrence of `from`, then searches again from the
    /// start until `from` is gone; a null or empty `from`, or a null `to`,
    /// changes nothing. Intended: **a `to` that contains `from` never
    /// ends**, so callers must not pass one.
    static std::string& replace(std::string& s, const char* from, const char* to);
};

}  // namespace QRN_SPACE

#endif
