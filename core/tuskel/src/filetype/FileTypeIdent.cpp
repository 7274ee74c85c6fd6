// FileTypeIdent: the signature, extension and content-type tables and the
// identification built on them. The tables are constant arrays, complete
// before any code runs, and searched linearly.

#include "filetype/FileTypeIdent.h"

#include <strings.h>

#include <vector>

#include "util/StringHelper.h"
#include "util/Utils.h"

namespace QRN_SPACE {

namespace {

typedef FileTypeIdent F;
typedef bool (*SignatureTest)(const unsigned char*, int);

struct SignatureRow {
    SignatureTest test;
    int type;
};

// In order of priority: the first row that matches names the type. Two
// consequences are intended: a compound document found without a hint is
// 999 (row 25 before the document rows), and text found without a hint is
// 101 or 100, never a script.
const SignatureRow kSignatures[F::SIGNATURE_ROWS] = {
    {F::isHtmFile, F::TYPE_HTM},                          // 0
    {F::isTxtFile, F::TYPE_TXT},                          // 1
    {F::isBatFile, F::TYPE_BAT},                          // 2
    {F::isVbsFile, F::TYPE_VBS},                          // 3
    {F::isJsFile, F::TYPE_JS},                            // 4
    {F::isJpgFile, F::TYPE_JPG},                          // 5
    {F::isGifFile, F::TYPE_GIF},                          // 6
    {F::isPicFile, F::TYPE_PIC},                          // 7
    {F::isTiffFile, F::TYPE_TIFF},                        // 8
    {F::isPngFile, F::TYPE_PNG},                          // 9
    {F::isBmpFile, F::TYPE_BMP},                          // 10
    {F::isIcoFile, F::TYPE_ICO},                          // 11
    {F::isMp3File, F::TYPE_MP3},                          // 12
    {F::isWavFile, F::TYPE_WAV},                          // 13
    {F::isMidFile, F::TYPE_MID},                          // 14
    {F::isMorvanePatternFile, F::TYPE_MORVANE_PATTERN},  // 15
    {F::isMpgFile, F::TYPE_MPG},                          // 16
    {F::isAviFile, F::TYPE_AVI},                          // 17
    {F::isFlcFile, F::TYPE_FLC},                          // 18
    {F::isFliFile, F::TYPE_FLI},                          // 19
    {F::isMovFile, F::TYPE_MOV},                          // 20
    {F::isPdfFile, F::TYPE_PDF},                          // 21
    {F::isExeFile, F::TYPE_EXE},                          // 22
    {F::isComFile, F::TYPE_COM},                          // 23
    {F::isChmFile, F::TYPE_CHM},                          // 24
    {F::isMsOfficeFile, F::TYPE_UNKNOWN},                 // 25
    {F::isDocFile, F::TYPE_DOC},                          // 26
    {F::isDotFile, F::TYPE_DOT},                          // 27
    {F::isPptFile, F::TYPE_PPT},                          // 28
    {F::isZipFile, F::TYPE_ZIP},                          // 29
    {F::isArcFile, F::TYPE_ARC},                          // 30
    {F::isArjFile, F::TYPE_ARJ},                          // 31
    {F::isRarFile, F::TYPE_RAR},                          // 32
    {F::isTarFile, F::TYPE_TAR},                          // 33
    {F::isGzipFile, F::TYPE_GZIP},                        // 34
    {F::isZFile, F::TYPE_Z},                              // 35
    {F::isMscmpFile, F::TYPE_MSCMP},                      // 36
    {F::isCabFile, F::TYPE_CAB},                          // 37
    {F::isZooFile, F::TYPE_ZOO},                          // 38
    {F::isNullFile, F::TYPE_UNKNOWN},                     // 39: always matches
};

struct ExtensionRow {
    const char* ext;
    int row;  // into kSignatures
};

// Ends with an empty extension. Intended: "fli" names the FLC row and
// "flc" the FLI row.
const ExtensionRow kExtensions[] = {
    {"html", 0}, {"htm", 0}, {"txt", 1},  {"bat", 2},  {"vbs", 3},  {"js", 4},   {"jpg", 5},   {"jpeg", 5},
    {"gif", 6},  {"pic", 7}, {"tiff", 8}, {"tif", 8},  {"png", 9},  {"bmp", 10}, {"ico", 11},  {"mp3", 12},
    {"wav", 13}, {"mid", 14}, {"mpg", 16}, {"mpeg", 16}, {"avi", 17}, {"fli", 18}, {"flc", 19}, {"mov", 20},
    {"pdf", 21}, {"exe", 22}, {"com", 23}, {"chm", 24}, {"doc", 26}, {"dot", 27}, {"ppt", 28}, {"zip", 29},
    {"arc", 30}, {"arj", 31}, {"rar", 32}, {"tar", 33}, {"gz", 34},  {"Z", 35},   {"cab", 37},  {"zoo", 38},
    {"", -1},
};

struct ContentRow {
    const char* type;
    int first, last;  // rows of kSignatures tried first
};

// Ends with empty text. Intended as designed: "audid", and the ranges that
// start one row early ("video/mpeg", "video/fli", "video/flc",
// "video/quicktime", "application").
const ContentRow kContents[] = {
    {"text/html", 0, 0},        {"text", 1, 1},         {"image/jpeg", 5, 5},  {"image/gif", 6, 6},
    {"image/tiff", 8, 8},       {"image", 5, 11},       {"audio/mpeg", 12, 12}, {"audio/midi", 14, 14},
    {"audid", 12, 14},          {"video/mpeg", 15, 16}, {"video/fli", 17, 18}, {"video/flc", 18, 19},
    {"video/quicktime", 19, 20}, {"video", 15, 20},     {"application", 20, 38}, {"", -1, -1},
};

// Without a hint every row is preferred (the last one always matches).
const int kAnyRow = 10000;
// Archive codes run from TYPE_ZIP up to here.
const int kArchiveEnd = 800;

const char* const kListDelimiters = ",";
const char* const kBlanks = " \t\r\n";

// The items of a comma-separated list, each trimmed of blanks.
std::vector<std::string> listItems(const char* list) {
    std::vector<std::string> items;
    Utils::stringTokenizer(list, items, kListDelimiters, Utils::trimString, kBlanks);
    return items;
}

bool isEmpty(const char* s) { return s == nullptr || *s == '\0'; }

// The rows to prefer for this extension or content type; false when the
// hint names none, which makes the type unknown.
bool preferredRows(std::string& ext, std::string& contentType, int& first, int& last) {
    first = 0, last = kAnyRow;
    if (!ext.empty()) {
        // Intended: an unknown extension is unknown, whatever the bytes say.
        int index = F::indexTypeTbl(ext);
        if (index < 0) return false;
        first = last = kExtensions[index].row;
    } else if (!contentType.empty()) {
        // Consulted only without an extension.
        int index = F::indexContentTbl(contentType);
        if (index < 0) return false;
        first = kContents[index].first, last = kContents[index].last;
    }
    return true;
}

// Identifies `count` bytes read from the start of the content; a count of
// -1 from the read means nothing could be read.
int identify(const unsigned char* head, int count, std::string& name, std::string& contentType) {
    if (count < 0) return F::TYPE_UNKNOWN;
    std::string ext = F::fileSuffix(name);
    int first, last;
    if (!preferredRows(ext, contentType, first, last)) return F::TYPE_UNKNOWN;
    return F::priorMatch(head, count, first, last);
}

}  // namespace

int FileTypeIdent::checkFileType(BufferBase* buf, std::string name, std::string contentType) {
    if (buf == nullptr) return TYPE_UNKNOWN;
    unsigned char head[HEAD_LENGTH];
    int count = buf->read(0, reinterpret_cast<char*>(head), HEAD_LENGTH);
    return identify(head, count, name, contentType);
}

int FileTypeIdent::checkFileType(InputStream* in, std::string name, std::string contentType) {
    if (in == nullptr) return TYPE_UNKNOWN;
    unsigned char head[HEAD_LENGTH];
    in->mark(HEAD_LENGTH);
    int count = in->read(reinterpret_cast<char*>(head), HEAD_LENGTH);
    in->reset();
    return identify(head, count, name, contentType);
}

int FileTypeIdent::checkFileType(const char* name) {
    if (name == nullptr) return TYPE_UNKNOWN;
    std::string text(name);
    std::string ext = fileSuffix(text);
    return ext.empty() ? TYPE_UNKNOWN : extToType(ext.c_str());
}

int FileTypeIdent::extToType(const char* ext) {
    if (ext == nullptr) return TYPE_UNKNOWN;
    int index = indexTypeTbl(ext);
    return index < 0 ? TYPE_UNKNOWN : kSignatures[kExtensions[index].row].type;
}

bool FileTypeIdent::isTypeInList(int type, const char* list) {
    if (type == TYPE_UNKNOWN || isEmpty(list)) return false;
    for (const std::string& item : listItems(list)) {
        if (extToType(item.c_str()) == type) return true;
    }
    return false;
}

bool FileTypeIdent::isExtInList(const char* ext, const char* list) {
    if (isEmpty(ext) || isEmpty(list)) return false;
    std::string wanted(ext);
    StringHelper::trim(wanted, kBlanks);
    for (const std::string& item : listItems(list)) {
        if (StringHelper::equalsIgnoreCase(item.c_str(), wanted.c_str())) return true;
    }
    return false;
}

int FileTypeIdent::indexTypeTbl(const std::string& ext) {
    for (int i = 0; kExtensions[i].row >= 0; ++i) {
        if (strcasecmp(kExtensions[i].ext, ext.c_str()) == 0) return i;
    }
    return -1;
}

int FileTypeIdent::indexContentTbl(std::string& contentType) {
    for (int i = 0; kContents[i].first >= 0; ++i) {
        if (StringHelper::startsWithIgnoreCase(kContents[i].type, contentType.c_str())) return i;
    }
    return -1;
}

std::string FileTypeIdent::fileSuffix(std::string& name) {
    size_t dot = name.rfind('.');
    if (dot == std::string::npos) return std::string();
    return name.substr(dot + 1);
}

int FileTypeIdent::priorMatch(const unsigned char* buf, int len, int first, int last) {
    if (first < 0) first = 0;
    for (int row = first; row <= last && row < SIGNATURE_ROWS; ++row) {
        if (kSignatures[row].test(buf, len)) return kSignatures[row].type;
    }
    // The general scan needs no bound of its own: the last row always
    // matches, here or in the preferred range above.
    for (int row = 0; row < SIGNATURE_ROWS; ++row) {
        if (row >= first && row <= last) continue;
        if (kSignatures[row].test(buf, len)) return kSignatures[row].type;
    }
    return TYPE_UNKNOWN;
}

bool FileTypeIdent::isArchiveFile(int type) { return type >= TYPE_ZIP && type < kArchiveEnd; }

}  // namespace QRN_SPACE
