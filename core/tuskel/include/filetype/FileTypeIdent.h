#ifndef TUSKEL_FILETYPE_FILETYPEIDENT_H
#define TUSKEL_FILETYPE_FILETYPEIDENT_H

// Tells what kind of file a byte sequence is from its first 1024 bytes,
// steered by the name's extension or, without one, by a declared content
// type. Stateless: every operation is class-level and works over constant
// tables, so any number of threads may identify at once.
//
// The signature rows are tried in a fixed order of priority; the extension
// or content type only decides which rows are tried first. Type codes come
// in groups of a hundred (see the TYPE_ constants); 999 is unknown.

#include <string>

#include "io/BufferBase.h"
#include "io/InputStream.h"

namespace QRN_SPACE {

class TUSKEL_API FileTypeIdent {
public:
    // Text and scripts.
    static const int TYPE_TXT = 100;
    static const int TYPE_HTM = 101;
    static const int TYPE_VBS = 102;
    static const int TYPE_JS = 103;
    static const int TYPE_BAT = 104;
    // Images.
    static const int TYPE_JPG = 200;
    static const int TYPE_GIF = 201;
    static const int TYPE_PIC = 202;
    static const int TYPE_TIFF = 203;
    static const int TYPE_PNG = 204;
    static const int TYPE_BMP = 205;
    static const int TYPE_ICO = 206;
    // Video, and the maker's own pattern files.
    static const int TYPE_MPG = 300;
    static const int TYPE_AVI = 301;
    static const int TYPE_FLC = 302;
    static const int TYPE_FLI = 303;
    static const int TYPE_MOV = 304;
    static const int TYPE_MORVANE_PATTERN = 350;
    // Audio.
    static const int TYPE_MP3 = 400;
    static const int TYPE_WAV = 401;
    static const int TYPE_MID = 402;
    // Executables and documents.
    static const int TYPE_EXE = 500;
    static const int TYPE_COM = 501;
    static const int TYPE_PDF = 502;
    static const int TYPE_DOC = 504;
    static const int TYPE_DOT = 505;
    static const int TYPE_PPT = 506;
    static const int TYPE_CHM = 507;
    // Archives: 700 up to 799.
    static const int TYPE_ZIP = 700;
    static const int TYPE_RAR = 701;
    static const int TYPE_ARC = 702;
    static const int TYPE_ARJ = 703;
    static const int TYPE_TAR = 704;
    static const int TYPE_GZIP = 705;
    static const int TYPE_Z = 706;
    static const int TYPE_MSCMP = 707;
    static const int TYPE_CAB = 708;
    static const int TYPE_ZOO = 709;
    static const int TYPE_UNKNOWN = 999;

    // Leading bytes examined, and of those the ones the text tests look at.
    static const int HEAD_LENGTH = 1024;
    static const int TEXT_LENGTH = 200;
    // Rows of the signature table; the last one matches anything.
    static const int SIGNATURE_ROWS = 40;

    // The type of the buffer's first bytes; 999 for a null buffer, or when
    // the name's extension is unknown, or a content type (consulted only
    // when the name has no extension) names no row. Errors of the buffer
    // pass through.
    static int checkFileType(BufferBase* buf, std::string name, std::string contentType);
    // The same from a stream's next bytes; the stream is left where it was
    // (mark and reset). One read: a stream that hands out fewer bytes at a
    // time is judged on what that read gave.
    static int checkFileType(InputStream* in, std::string name, std::string contentType);
    // From the name alone: the extension after the last ".", 999 without one.
    static int checkFileType(const char* name);

    // The type the extension table gives `ext` (case ignored), or 999.
    static int extToType(const char* ext);
    // Does a comma-separated list of extensions ("zip, gz, exe") hold one
    // of this type? False for 999 and for a null or empty list.
    static bool isTypeInList(int type, const char* list);
    // Does the list hold `ext`, both trimmed of blanks, case ignored?
    static bool isExtInList(const char* ext, const char* list);
    // The first extension row equal to `ext` ignoring case, or -1.
    static int indexTypeTbl(const std::string& ext);
    // The first content row whose text begins with `contentType` ignoring
    // case, or -1.
    static int indexContentTbl(std::string& contentType);
    // The text after the last "."; empty without one or when it ends the name.
    static std::string fileSuffix(std::string& name);
    // The type of the first row from `first` to `last` whose test matches,
    // else of the first matching row outside that range.
    static int priorMatch(const unsigned char* buf, int len, int first, int last);
    static bool isArchiveFile(int type);  // 700 <= type < 800

    // Every one of the first min(len, 200) bytes is plain text.
    static bool isPlainTxtFile(const unsigned char* buf, int len);

    // The signature tests, in the order of the table. Each answers false
    // for a null buf, except isNullFile, which answers true for anything.
    // Several demand more bytes than they look at: intended.
    static bool isHtmFile(const unsigned char* buf, int len);
    static bool isTxtFile(const unsigned char* buf, int len);
    static bool isBatFile(const unsigned char* buf, int len);
    static bool isVbsFile(const unsigned char* buf, int len);
    static bool isJsFile(const unsigned char* buf, int len);
    static bool isJpgFile(const unsigned char* buf, int len);
    static bool isGifFile(const unsigned char* buf, int len);
    static bool isPicFile(const unsigned char* buf, int len);
    static bool isTiffFile(const unsigned char* buf, int len);
    static bool isPngFile(const unsigned char* buf, int len);
    static bool isBmpFile(const unsigned char* buf, int len);
    static bool isIcoFile(const unsigned char* buf, int len);
    static bool isMp3File(const unsigned char* buf, int len);
    static bool isWavFile(const unsigned char* buf, int len);
    static bool isMidFile(const unsigned char* buf, int len);
    static bool isMorvanePatternFile(const unsigned char* buf, int len);
    static bool isMpgFile(const unsigned char* buf, int len);
    static bool isAviFile(const unsigned char* buf, int len);
    static bool isFlcFile(const unsigned char* buf, int len);
    static bool isFliFile(const unsigned char* buf, int len);
    static bool isMovFile(const unsigned char* buf, int len);
    static bool isPdfFile(const unsigned char* buf, int len);
    static bool isExeFile(const unsigned char* buf, int len);
    static bool isComFile(const unsigned char* buf, int len);
    static bool isChmFile(const unsigned char* buf, int len);
    static bool isMsOfficeFile(const unsigned char* buf, int len);
    static bool isDocFile(const unsigned char* buf, int len);
    static bool isDotFile(const unsigned char* buf, int len);
    static bool isPptFile(const unsigned char* buf, int len);
    static bool isZipFile(const unsigned char* buf, int len);
    static bool isArcFile(const unsigned char* buf, int len);
    static bool isArjFile(const unsigned char* buf, int len);
    static bool isRarFile(const unsigned char* buf, int len);
    static bool isTarFile(const unsigned char* buf, int len);
    static bool isGzipFile(const unsigned char* buf, int len);
    static bool isZFile(const unsigned char* buf, int len);
    static bool isMscmpFile(const unsigned char* buf, int len);
    static bool isCabFile(const unsigned char* buf, int len);
    static bool isZooFile(const unsigned char* buf, int len);
    static bool isNullFile(const unsigned char* buf, int len);
};

}  // namespace QRN_SPACE

#endif
