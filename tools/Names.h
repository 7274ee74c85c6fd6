#ifndef TUSKEL_TOOLS_NAMES_H
#define TUSKEL_TOOLS_NAMES_H

#include <string>

namespace tuskel_tool {

// What a ZIP says about how an entry's name is encoded.
struct NameEncoding {
    bool utf8Flag = false;  // general purpose flag bit 11
    int madeBy = -1;        // host system of "version made by"; -1 unknown
    std::string extra;      // the entry's extra field, raw
};

// The name as unzip shows it, in UTF-8: taken as UTF-8 when the archive's
// flag says so, or from an Info-ZIP Unicode path field whose checksum
// matches the name; converted from CP437 when the archive was made on
// MS-DOS (FAT); otherwise the stored bytes unchanged (which may not be valid
// UTF-8: see printable()).
std::string decodeZipName(const std::string& raw, const NameEncoding& encoding);

// The text with control characters and bytes that are not UTF-8 written as
// \xHH, so that a name can never steer the terminal or forge a line.
std::string printable(const std::string& text);

// "version made by" of an archive made on MS-DOS (FAT).
constexpr int kHostFat = 0;

// The last component of a path.
std::string baseName(const std::string& path);

// The text with bytes that are not UTF-8 replaced by U+FFFD, for JSON.
std::string validUtf8(const std::string& text);

}  // namespace tuskel_tool

#endif
