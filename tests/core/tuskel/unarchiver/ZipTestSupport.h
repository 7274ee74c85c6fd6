#ifndef TUSKEL_TEST_ZIPTESTSUPPORT_H
#define TUSKEL_TEST_ZIPTESTSUPPORT_H

// Archives made by real tools at test time, and what those tools say about
// them, for the ZIP tests.

#include <string>
#include <vector>

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

}  // namespace ziptest

#endif
