#include <gtest/gtest.h>

#include "filetype/FileTypeIdent.h"
#include "support/TestStreams.h"

using QRN_SPACE::FileTypeIdent;
using tuskel_test::bytes;
typedef FileTypeIdent F;

namespace {

const unsigned char* u(const std::string& s) { return reinterpret_cast<const unsigned char*>(s.data()); }
int n(const std::string& s) { return static_cast<int>(s.size()); }

int identify(const std::string& data, const std::string& name = "", const std::string& type = "") {
    return F::checkFileType(tuskel_test::memoryBuffer(data).get(), name, type);
}

const std::string kBinary = bytes({0, 1, 2, 0x7F});

}  // namespace

// Each row's signature at the length its test demands, in the table's order:
// matched there, refused one byte shorter (several demand more than they
// look at: intended) and without a buffer.
TEST(FileTypeIdent, EverySignatureRowInOrderAtItsMinimumLength) {
    struct Row { bool (*test)(const unsigned char*, int); std::string sample; int type; } rows[] = {
        {F::isHtmFile, "<html", 101}, {F::isTxtFile, "a", 100}, {F::isBatFile, "a", 104}, {F::isVbsFile, "a", 102},
        {F::isJsFile, "a", 103}, {F::isJpgFile, "\xFF\xD8.", 200}, {F::isGifFile, "GIF8", 201},
        {F::isPicFile, "\x91\x19.", 202}, {F::isTiffFile, bytes({'M', 'M', 0, '*'}), 203},
        {F::isPngFile, "\x89PNG.", 204}, {F::isBmpFile, "BM.", 205}, {F::isIcoFile, "IC.", 206},
        {F::isMp3File, "\xFF\xF3.", 400}, {F::isWavFile, "RIFF....WAVE", 401}, {F::isMidFile, "MThd", 402},
        {F::isMorvanePatternFile, "\x1A\xD1\xBD\x1A", 350}, {F::isMpgFile, bytes({0, 0, 1, 0xBA}), 300},
        {F::isAviFile, "RIFF....AVI", 301}, {F::isFlcFile, "....\x12\xAF", 302}, {F::isFliFile, "....\x11\xAF", 303},
        {F::isMovFile, "....mdat", 304}, {F::isPdfFile, "%PDF-", 502}, {F::isExeFile, "NE", 500},
        {F::isComFile, "\xEB", 501}, {F::isChmFile, "ITSF", 507}, {F::isMsOfficeFile, bytes({0xFE, 0x37, 0, 0x23}), 999},
        {F::isDocFile, "\xFFWPC", 504}, {F::isDotFile, "\xD0\xCF\x11\xE0\xA1\xB1", 505},
        {F::isPptFile, bytes({0xDB, 0xA5, 0x2D, 0, 0, 0}), 506}, {F::isZipFile, "PK\3\4.", 700},
        {F::isArcFile, "\x1A..", 702}, {F::isArjFile, "\x60\xEA.", 703}, {F::isRarFile, "Rar!.", 701},
        {F::isTarFile, std::string(257, '.') + "ustar", 704}, {F::isGzipFile, "\x1F\x8B.", 705},
        {F::isZFile, "\x1F\x9D.", 706}, {F::isMscmpFile, "KWAJ\x88\xF0\x27\xD1.", 707},
        {F::isCabFile, bytes({'M', 'S', 'C', 'F', 0, 0, 0, 0, '.'}), 708},
        {F::isZooFile, std::string(20, '.') + "\xDC\xA7\xC4\xFD.", 709}, {F::isNullFile, "", 999},
    };
    ASSERT_EQ(sizeof rows / sizeof rows[0], static_cast<size_t>(F::SIGNATURE_ROWS));
    for (int row = 0; row < F::SIGNATURE_ROWS; ++row) {
        const Row& r = rows[row];
        SCOPED_TRACE(row);
        EXPECT_EQ(F::priorMatch(u(r.sample), n(r.sample), row, row), r.type);
        bool isText = row >= 1 && row <= 4;  // true for zero bytes
        EXPECT_EQ(r.test(u(r.sample), n(r.sample) - 1), row == 39 || isText);
        EXPECT_EQ(r.test(nullptr, n(r.sample)), row == 39);
    }
    // The other spellings of the multi-signature rows.
    for (std::string other : {std::string("IIN1"), bytes({'I', 'I', '*', 0})}) EXPECT_TRUE(F::isTiffFile(u(other), 4));
    for (std::string other : {std::string("PO^Q`"), std::string("\xD0\xCF\x11\xE0\xA1\xB1")}) EXPECT_TRUE(F::isDocFile(u(other), 6));
    EXPECT_TRUE(F::isMovFile(u("....moov"), 8) && F::isMscmpFile(u("SZDD\x88\xF0\x27\x33."), 9));
    EXPECT_FALSE(F::isMpgFile(u(bytes({0, 0, 1, 0xB4})), 4) || F::isMp3File(u("\xFF\xE0."), 3));
}

TEST(FileTypeIdent, CharacterClassesAndTheFirst200Bytes) {
    for (int c = 0; c < 256; ++c) {
        bool plain = (c >= 7 && c <= 10) || c == 12 || c == 13 || c == 27 || (c >= 0x20 && c < 0x7F) || c == 0x85;
        int cls = c >= 0xA0 ? 2 : (c >= 0x80 && c != 0x85) ? 3 : plain;
        unsigned char b = static_cast<unsigned char>(c);
        EXPECT_EQ(F::isTxtFile(&b, 1) * 10 + F::isPlainTxtFile(&b, 1), (cls != 0) * 10 + (cls == 1)) << c;
    }
    std::string text(200, 'a');
    EXPECT_TRUE(F::isTxtFile(u(text + kBinary), 204) && F::isPlainTxtFile(u(text + kBinary), 204));
    text[199] = '\xA0';
    EXPECT_EQ(F::isTxtFile(u(text), 200) * 10 + F::isPlainTxtFile(u(text), 200), 10);
}

TEST(FileTypeIdent, HtmlIsATagAtTheVeryStartOrADoctype) {
    struct Case { const char* text; bool html; } cases[] = {
        {"<HTML>", true}, {"<Title>x", true}, {"<head", true}, {"<!DOCTYPE html>", true}, {"<!doctype    HTML", true},
        {"<!doctype html", true}, {"<!doctype htm", false}, {"<!doctype      ", false}, {"<!DOCTYPE xhtml", false},
        {"<!doctype\thtml", false}, {" <html>", false}, {"<body><html>", false}, {"<htm", false},
    };
    for (const Case& c : cases) EXPECT_EQ(F::isHtmFile(u(c.text), n(c.text)), c.html) << c.text;
}

// Names, content types and bytes together, and the lookups they go through.
TEST(FileTypeIdent, HintsChooseTheRowsTriedFirst) {
    const std::string zip = "PK\3\4?", office = "\xD0\xCF\x11\xE0\xA1\xB1", text = "MThd and then text",
                      avi = "RIFF\x12\xAF..AVI ", mpg = bytes({0, 0, 1, 0xB3, 0x11, 0xAF}), mov = "text" "moov" "text";
    struct Case { std::string data, name, type; int expected; } cases[] = {
        {zip, "data.bin", "", 999},  // intended: an unknown extension, whatever the bytes
        {zip, "data", "", 700}, {zip, "data", "application", 700}, {zip, "data", "application/zip", 999},
        {zip, "data", "TEXT", 700},  // row 0 only ("text/html"), then the general scan
        {zip, "x.exe", "", 700}, {zip, "x.Zip", "text/html", 700},  // the content type only without an extension
        {"", "", "", 100}, {"GIF8" + kBinary, "x.txt", "", 201},
        {office, "x.doc", "", 504}, {office, "x.exe", "", 999}, {office, "", "", 999},
        {text, "", "", 100}, {text, "run.js", "", 103}, {text, "", "audid", 402}, {text, "", "video", 100},
        // Ranges that start one row early, as the table has them.
        {avi, "", "video/flc", 302}, {mpg, "", "video/quicktime", 303}, {mov, "", "application", 304},
        {"<html>", "page.HTM", "", 101}, {"<html>", "page.txt", "", 100},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(identify(c.data, c.name, c.type), c.expected) << c.name << " " << c.type << " " << c.data;
    }
    EXPECT_EQ(F::checkFileType(static_cast<QRN_SPACE::BufferBase*>(nullptr), "", ""), 999);
    EXPECT_EQ(F::checkFileType(static_cast<QRN_SPACE::InputStream*>(nullptr), "x.zip", ""), 999);
    // The stream form reads once, 1024 bytes, and is put back where it was.
    tuskel_test::ChunkedInputStream in("junk" + zip + std::string(5000, 'x'));
    in.skip(4);
    EXPECT_EQ(F::checkFileType(&in, "a.zip", ""), 700);
    EXPECT_EQ(in.position(), 4u);
    EXPECT_EQ(in.requests(), std::vector<int>({1024}));
    // "fli" names the FLC row and "flc" the FLI row: intended.
    EXPECT_EQ(std::vector<int>({F::checkFileType("archive."), F::checkFileType("README"), F::checkFileType("a.b.ZIP"),
                                F::checkFileType("movie.fli"), F::checkFileType("movie.flc"), F::extToType("z"),
                                F::extToType("cab"), F::extToType("xyz"), F::checkFileType(nullptr)}),
              std::vector<int>({999, 999, 700, 302, 303, 706, 708, 999, 999}));
    EXPECT_EQ(std::vector<bool>({F::isTypeInList(700, " zip ,gz"), F::isTypeInList(705, "zip,\tGZ\r\n"),
                                 F::isTypeInList(999, "zip"), F::isTypeInList(700, ""), F::isTypeInList(700, nullptr),
                                 F::isExtInList(" ZIP\n", "gz,zip"), F::isExtInList("rar", "gz,zip"),
                                 F::isExtInList("", "zip"), F::isArchiveFile(700), F::isArchiveFile(709),
                                 F::isArchiveFile(800), F::isArchiveFile(999), F::isArchiveFile(699)}),
              std::vector<bool>({true, true, false, false, false, true, false, false, true, true, false, false, false}));
}
