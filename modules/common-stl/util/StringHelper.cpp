#include "util/StringHelper.h"

#include <strings.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>

namespace QRN_SPACE {

namespace {

std::string lowered(const char* s) {
    std::string out(s);
    StringHelper::tolower(out);
    return out;
}

template <class T>
std::string format(const char* layout, T value) {
    char buf[64];
    std::snprintf(buf, sizeof buf, layout, value);
    return buf;
}

}  // namespace

std::string& StringHelper::toupper(std::string& s) {
    for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return s;
}

std::string& StringHelper::tolower(std::string& s) {
    for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

bool StringHelper::equals(const char* a, const char* b) {
    if (a == nullptr || b == nullptr) return a == b;
    return std::strcmp(a, b) == 0;
}

bool StringHelper::equalsIgnoreCase(const char* a, const char* b) {
    if (a == nullptr || b == nullptr) return a == b;
    return strcasecmp(a, b) == 0;
}

bool StringHelper::startsWith(const char* a, const char* b) {
    if (a == nullptr || b == nullptr) return false;
    return std::strncmp(a, b, std::strlen(b)) == 0;
}

bool StringHelper::startsWithIgnoreCase(const char* a, const char* b) {
    if (a == nullptr || b == nullptr) return false;
    return strncasecmp(a, b, std::strlen(b)) == 0;
}

bool StringHelper::endsWith(const char* a, const char* b) {
    if (a == nullptr || b == nullptr) return false;
    size_t la = std::strlen(a), lb = std::strlen(b);
    return lb <= la && std::strcmp(a + la - lb, b) == 0;
}

bool StringHelper::endsWithIgnoreCase(const char* a, const char* b) {
    if (a == nullptr || b == nullptr) return false;
    size_t la = std::strlen(a), lb = std::strlen(b);
    return lb <= la && strcasecmp(a + la - lb, b) == 0;
}

int StringHelper::indexOfIgnoreCase(const char* text, const char* pattern, int from) {
    if (text == nullptr || pattern == nullptr) return -1;
    size_t start = from < 0 ? 0 : static_cast<size_t>(from);
    if (start > std::strlen(text)) return -1;
    size_t pos = lowered(text + start).find(lowered(pattern));
    return pos == std::string::npos ? -1 : static_cast<int>(start + pos);
}

int StringHelper::lastIndexOfIgnoreCase(const char* text, const char* pattern) {
    if (text == nullptr || pattern == nullptr) return -1;
    size_t pos = lowered(text).rfind(lowered(pattern));
    return pos == std::string::npos ? -1 : static_cast<int>(pos);
}

std::string& StringHelper::trim(std::string& s, const char* set) {
    if (set == nullptr) return s;
    size_t last = s.find_last_not_of(set);
    if (last == std::string::npos) {
        s.clear();
        return s;
    }
    s.erase(last + 1);
    s.erase(0, s.find_first_not_of(set));
    return s;
}

std::string& StringHelper::trimToLength(std::string& s, unsigned int n) {
    if (s.size() > n) s.resize(n);
    return s;
}

std::string StringHelper::ntoa(int value) { return format("%d", value); }
std::string StringHelper::ltoa(long value) { return format("%ld", value); }
std::string StringHelper::ftoa(float value) {
    // "%f" of a large float is long: size the text instead of cutting it.
    int n = std::snprintf(nullptr, 0, "%f", static_cast<double>(value));
    std::string out(static_cast<size_t>(n), '\0');
    std::snprintf(&out[0], out.size() + 1, "%f", static_cast<double>(value));
    return out;
}
std::string StringHelper::dtoa(double value) { return format("%g", value); }

bool StringHelper::atob(const char* text) { return equalsIgnoreCase(text, "true"); }

std::string StringHelper::btoa(bool value) { return value ? "true" : "false"; }

std::string& StringHelper::replaceChar(std::string& s, char from, char to) {
    std::replace(s.begin(), s.end(), from, to);
    return s;
}

std::string& StringHelper::replace(std::string& s, const char* from, const char* to) {
    if (from == nullptr || to == nullptr || *from == '\0') return s;
    const size_t fromLen = std::strlen(from);
    for (size_t pos = s.find(from); pos != std::string::npos; pos = s.find(from)) {
        s.replace(pos, fromLen, to);
    }
    return s;
}

}  // namespace QRN_SPACE
