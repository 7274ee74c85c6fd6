#ifndef TUSKEL_TEST_ZIPTESTSUPPORT_H
#define TUSKEL_TEST_ZIPTESTSUPPORT_H

// Archives made by real tools at test time, and what those tools say about
// them, for the ZIP tests.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/TestFiles.h"

namespace ziptest {

// Runs a python3 script with the working directory `dir`; fails the test
// when it exits non-zero.
void python(const std::string& dir, const std::string& script);

// One entry as Python's zipfile reads it from the central directory.
struct Listed {
    std::string name;
    unsigned crc = 0;
    unsigned compressedSize = 0;
    unsigned size = 0;
    unsigned headerOffset = 0;
    unsigned dosTime = 0;  // DOS date << 16 | DOS time
    int flags = 0;
    int method = 0;
    std::string extra;    // central record's extra field, raw
    std::string comment;  // entry comment, raw
};
std::vector<Listed> listEntries(const std::string& archive);

// The bytes unzip -p writes for one entry.
std::string unzipEntry(const std::string& archive, const std::string& name);

// Writes a small tree (text, random bytes, an empty file, a directory, a
// nested file) under dir/root and answers the relative paths of its files.
std::vector<std::string> makeTree(const std::string& dir);

// The archives the ZIP tests read, made once per test program by zip and
// Python: zip.zip (deflated), zip0.zip (stored), pipe.zip (written to a pipe:
// data descriptors) of a small tree with directories and an empty file;
// py_stored, py_deflated and their _stream variants (written to a stream
// that cannot seek); good.zip, bzip2.zip, longname.zip and enc.zip (entries
// a..d, with b unpackable only in good.zip); planted.zip (see its test).
class ZipArchives : public ::testing::Test {
protected:
    static void SetUpTestSuite();
    static void TearDownTestSuite();
    static std::string path(const std::string& name);
    static tuskel_test::TempDir* dir;
};

}  // namespace ziptest

#endif
