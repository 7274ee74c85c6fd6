#ifndef QRN_UTIL_STRINGHELPER_H
#define QRN_UTIL_STRINGHELPER_H

#include <string>

#include "lang/Export.h"

namespace QRN_SPACE {

// Case handling, comparisons, trimming and number/boolean text. Stateless;
// null C strings are accepted wherever the description says so.
class TUSKEL_API StringHelper {
public:
    static std::string& toupper(std::string& s);
    static std::string& tolower(std::string& s);

    // Both null is equal, one null is not.
    static bool equals(const char* a, const char* b);
    static bool equalsIgnoreCase(const char* a, const char* b);
    // Does text a begin (end) with b? False when either is null.
    static bool startsWith(const char* a, const char* b);
    static bool startsWithIgnoreCase(const char* a, const char* b);
    static bool endsWith(const char* a, const char* b);
    static bool endsWithIgnoreCase(const char* a, const char* b);

    // Position in text of the first (last) match at or after `from`, -1 when none.
    static int indexOfIgnoreCase(const char* text, const char* pattern, int from);
    static int lastIndexOfIgnoreCase(const char* text, const char* pattern);

    // Removes every character of `set` from both ends.
    static std::string& trim(std::string& s, const char* set);
    static std::string& trimToLength(std::string& s, unsigned int n);

    static std::string ntoa(int value);     // "%d"
    static std::string ltoa(long value);    // "%ld"
    static std::string ftoa(float value);   // "%f"
    static std::string dtoa(double value);  // "%g"
    static bool atob(const char* text);     // "true" in any case
    static std::string btoa(bool value);

    static std::string& replaceChar(std::string& s, char from, char to);
    // Replaces the first occurrence, then searches again from the start until
    // `from` is gone. Intended: a `to` that contains `from` never ends, so
    // callers must not pass one.
    static std::string& replace(std::string& s, const char* from, const char* to);
};

}  // namespace QRN_SPACE

#endif
