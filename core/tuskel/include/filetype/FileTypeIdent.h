#ifndef TUSKEL_FILETYPE_FILETYPEIDENT_H
#define TUSKEL_FILETYPE_FILETYPEIDENT_H

/// @file
/// FileTypeIdent: file type codes from signature bytes, extensions and
/// content types.

#include <string>

#include "io/BufferBase.h"
#include "io/InputStream.h"

namespace QRN_SPACE {

/// Tells what kind of file a byte sequence is from its first 1024 bytes,
/// steered by the name's extension or, without one, by a declared content
/// type.
///
/// Stateless: every operation is class-level and works over constant
/// tables, so any number of threads may identify at once. Nothing throws of
/// its own accord; errors of a buffer or stream pass through. Every failure
/// to decide answers 999.
///
/// The signature rows are tried in a fixed order of priority; the extension
/// or content type only decides which rows are tried first. Type codes come
/// in groups of a hundred (see the TYPE_ constants); 999 is unknown. Kept
/// as they are, and worth knowing:
/// - **an unknown extension answers 999 at once**, whatever the bytes say
///   ("data.bin" holding a ZIP is 999; "data" is 700);
/// - a compound document without an extension hint answers 999 (the
///   generic row comes before the document rows), and text without a hint
///   answers 101 or 100, never 102, 103 or 104;
/// - "fli" names the FLC test (302) and "flc" the FLI test (303);
/// - several content-type ranges start one row early, and one row reads
///   "audid".
/// @ingroup filetype
class TUSKEL_API FileTypeIdent {
public:
    /// @name Text and scripts
    /// @{
    static const int TYPE_TXT = 100;  ///< Text.
    static const int TYPE_HTM = 101;  ///< HTML.
    static const int TYPE_VBS = 102;  ///< VB script.
    static const int TYPE_JS = 103;   ///< Script (.js).
    static const int TYPE_BAT = 104;  ///< Batch file.
    /// @}
    /// @name Images
    /// @{
    static const int TYPE_JPG = 200;   ///< JPEG.
    static const int TYPE_GIF = 201;   ///< GIF.
    static const int TYPE_PIC = 202;   ///< PIC.
    static const int TYPE_TIFF = 203;  ///< TIFF.
    static const int TYPE_PNG = 204;   ///< PNG.
    static const int TYPE_BMP = 205;   ///< BMP.
    static const int TYPE_ICO = 206;   ///< Icon.
    /// @}
    /// @name Video, and the maker's own pattern files
    /// @{
    static const int TYPE_MPG = 300;               ///< MPEG video.
    static const int TYPE_AVI = 301;               ///< AVI.
    static const int TYPE_FLC = 302;               ///< FLC animation.
    static const int TYPE_FLI = 303;               ///< FLI animation.
    static const int TYPE_MOV = 304;               ///< Movie ("moov" or "mdat").
    static const int TYPE_MORVANE_PATTERN = 350;   ///< The maker's pattern file.
    /// @}
    /// @name Audio
    /// @{
    static const int TYPE_MP3 = 400;  ///< MP3.
    static const int TYPE_WAV = 401;  ///< WAV.
    static const int TYPE_MID = 402;  ///< MIDI.
    /// @}
    /// @name Executables and documents
    /// @{
    static const int TYPE_EXE = 500;  ///< Executable ("MZ" or "NE").
    static const int TYPE_COM = 501;  ///< DOS COM program.
    static const int TYPE_PDF = 502;  ///< PDF.
    static const int TYPE_DOC = 504;  ///< Word-processor document.
    static const int TYPE_DOT = 505;  ///< Document template.
    static const int TYPE_PPT = 506;  ///< Presentation.
    static const int TYPE_CHM = 507;  ///< Compiled help.
    /// @}
    /// @name Archives: 700 up to 799
    /// @{
    static const int TYPE_ZIP = 700;    ///< ZIP.
    static const int TYPE_RAR = 701;    ///< RAR.
    static const int TYPE_ARC = 702;    ///< ARC.
    static const int TYPE_ARJ = 703;    ///< ARJ.
    static const int TYPE_TAR = 704;    ///< tar.
    static const int TYPE_GZIP = 705;   ///< GZIP.
    static const int TYPE_Z = 706;      ///< compress (.Z).
    static const int TYPE_MSCMP = 707;  ///< SZDD / KWAJ compressed file.
    static const int TYPE_CAB = 708;    ///< Cabinet.
    static const int TYPE_ZOO = 709;    ///< ZOO.
    /// @}
    static const int TYPE_UNKNOWN = 999;  ///< Not identified.

    /// Leading bytes examined.
    static const int HEAD_LENGTH = 1024;
    /// Leading bytes the text tests look at.
    static const int TEXT_LENGTH = 200;
    /// Rows of the signature table; the last one matches anything.
    static const int SIGNATURE_ROWS = 40;

    /// The type of the buffer's first bytes (one positioned read of up to
    /// 1024); 999 for a null buffer, or when the name's extension is
    /// unknown, or a content type (consulted only when the name has no
    /// extension) names no row. Errors of the buffer pass through.
    static int checkFileType(BufferBase* buf, std::string name, std::string contentType);
    /// The same from a stream's next bytes; the stream is left where it was
    /// (mark and reset). One read: a stream that hands out fewer bytes at a
    /// time is judged on what that read gave.
    static int checkFileType(InputStream* in, std::string name, std::string contentType);
    /// From the name alone: the extension after the last ".", 999 without one.
    static int checkFileType(const char* name);

    /// The type the extension table gives `ext` (case ignored), or 999.
    static int extToType(const char* ext);
    /// Does a comma-separated list of extensions ("zip, gz, exe") hold one
    /// of this type? False for 999 and for a null or empty list.
    static bool isTypeInList(int type, const char* list);
    /// Does the list hold `ext`, both trimmed of blanks, case ignored? False
    /// when either is null or empty.
    static bool isExtInList(const char* ext, const char* list);
    /// The first extension row equal to `ext` ignoring case, or -1.
    static int indexTypeTbl(const std::string& ext);
    /// The first content row whose text begins with `contentType` ignoring
    /// case, or -1.
    static int indexContentTbl(std::string& contentType);
    /// The text after the last "."; empty without one or when it ends the name.
    static std::string fileSuffix(std::string& name);
    /// The type of the first row from `first` to `last` whose test matches
    /// the `len` bytes at `buf`, else of the first matching row outside that
    /// range (the last row always matches).
    static int priorMatch(const unsigned char* buf, int len, int first, int last);
    /// Is `type` an archive: 700 <= type < 800?
    static bool isArchiveFile(int type);

    /// Every one of the first min(len, 200) bytes is plain text: 07-0A, 0C,
    /// 0D, 1B, 20-7E or 85. Not one of the signature rows.
    static bool isPlainTxtFile(const unsigned char* buf, int len);

    /// @name The signature tests, in the order of the table
    /// Each looks at the `len` bytes at `buf` and answers false for a null
    /// `buf`, except isNullFile(), which answers true for anything. Several
    /// demand more bytes than they look at: intended. Offsets count from 0.
    /// @{

    /// HTML: "<html", "<title" or "<head" at 0, or "<!doctype html" with
    /// blanks before "html"; case ignored, leading blanks not skipped.
    static bool isHtmFile(const unsigned char* buf, int len);
    /// Text: none of the first min(len, 200) bytes is 00-06, 0B, 0E-1A,
    /// 1C-1F or 7F (bytes 80 and above count as text).
    static bool isTxtFile(const unsigned char* buf, int len);
    static bool isBatFile(const unsigned char* buf, int len);   ///< As isTxtFile().
    static bool isVbsFile(const unsigned char* buf, int len);   ///< As isTxtFile().
    static bool isJsFile(const unsigned char* buf, int len);    ///< As isTxtFile().
    static bool isJpgFile(const unsigned char* buf, int len);   ///< FF D8 at 0; len >= 3.
    static bool isGifFile(const unsigned char* buf, int len);   ///< "GIF8" at 0; len >= 4.
    static bool isPicFile(const unsigned char* buf, int len);   ///< 91 19 at 0; len >= 3.
    /// "IIN1", "MM" 00 "*" or "II*" 00 at 0; len >= 4.
    static bool isTiffFile(const unsigned char* buf, int len);
    static bool isPngFile(const unsigned char* buf, int len);   ///< "PNG" at 1; len >= 5.
    static bool isBmpFile(const unsigned char* buf, int len);   ///< "BM" at 0; len >= 3.
    static bool isIcoFile(const unsigned char* buf, int len);   ///< "IC" at 0; len >= 3.
    /// FF at 0 and the high four bits of byte 1 set; len >= 3.
    static bool isMp3File(const unsigned char* buf, int len);
    static bool isWavFile(const unsigned char* buf, int len);   ///< "RIFF" at 0, "WAVE" at 8; len >= 12.
    static bool isMidFile(const unsigned char* buf, int len);   ///< "MThd" at 0; len >= 4.
    /// 1A D1 BD 1A at 0; len >= 4.
    static bool isMorvanePatternFile(const unsigned char* buf, int len);
    /// 00 00 01 at 0 and byte 3 B3 or BA; len >= 4.
    static bool isMpgFile(const unsigned char* buf, int len);
    static bool isAviFile(const unsigned char* buf, int len);   ///< "RIFF" at 0, "AVI" at 8; len >= 11.
    static bool isFlcFile(const unsigned char* buf, int len);   ///< 12 AF at 4; len >= 6.
    static bool isFliFile(const unsigned char* buf, int len);   ///< 11 AF at 4; len >= 6.
    static bool isMovFile(const unsigned char* buf, int len);   ///< "moov" or "mdat" at 4; len >= 8.
    static bool isPdfFile(const unsigned char* buf, int len);   ///< "%PDF-" at 0; len >= 5.
    static bool isExeFile(const unsigned char* buf, int len);   ///< "MZ" or "NE" at 0; len >= 2.
    static bool isComFile(const unsigned char* buf, int len);   ///< E9 or EB at 0; len >= 1.
    static bool isChmFile(const unsigned char* buf, int len);   ///< "ITSF" at 0; len >= 4.
    /// A compound document or an older document format: FE 37 00 23
    /// (len >= 4), D0 CF 11 E0 A1 B1 or DB A5 2D 00 00 00 (len >= 6) at 0.
    /// Its row answers 999.
    static bool isMsOfficeFile(const unsigned char* buf, int len);
    /// "PO^Q`" at 0 (len >= 5), an isMsOfficeFile() signature, or FF "WPC"
    /// at 0 (len >= 4).
    static bool isDocFile(const unsigned char* buf, int len);
    static bool isDotFile(const unsigned char* buf, int len);   ///< As isMsOfficeFile().
    static bool isPptFile(const unsigned char* buf, int len);   ///< As isMsOfficeFile().
    static bool isZipFile(const unsigned char* buf, int len);   ///< "PK" 03 04 at 0; len >= 5.
    static bool isArcFile(const unsigned char* buf, int len);   ///< 1A at 0; len >= 3.
    static bool isArjFile(const unsigned char* buf, int len);   ///< 60 EA at 0; len >= 3.
    static bool isRarFile(const unsigned char* buf, int len);   ///< "Rar!" at 0; len >= 5.
    static bool isTarFile(const unsigned char* buf, int len);   ///< "ustar" at 257; len >= 262.
    static bool isGzipFile(const unsigned char* buf, int len);  ///< 1F 8B at 0; len >= 3.
    static bool isZFile(const unsigned char* buf, int len);     ///< 1F 9D at 0; len >= 3.
    /// "SZDD" 88 F0 27 33 or "KWAJ" 88 F0 27 D1 at 0; len >= 9.
    static bool isMscmpFile(const unsigned char* buf, int len);
    /// "MSCF" and four 00 bytes at 0; len >= 9.
    static bool isCabFile(const unsigned char* buf, int len);
    static bool isZooFile(const unsigned char* buf, int len);   ///< DC A7 C4 FD at 20; len >= 25.
    static bool isNullFile(const unsigned char* buf, int len);  ///< True for anything: the last row.
    /// @}
};

}  // namespace QRN_SPACE

#endif
