#ifndef TUSKEL_TEST_ZIPTESTSUPPORT_H
#define TUSKEL_TEST_ZIPTESTSUPPORT_H

// Archives made by real tools at test time, and what those tools say about
// them, for the ZIP tests.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/TestFiles.h"
#include "support/TestStreams.h"
#include "unarchiver/Tuskel.h"

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

// An entry processor that keeps every entry it is given (it owns them), hands
// each a collecting stream, answers what `decide` says, and logs the calls:
// "begin", "end", "release", and "entry <name>".
class Recorder : public QRN_SPACE::ArchiveEntryProcessor {
public:
    // Returned by `decide` to leave the action variable untouched.
    static const int kLeaveAlone = 1000;

    struct Seen {
        QRN_SPACE::ArchiveEntryInfo* info;   // owned by the recorder
        int algorithmOffered;               // as processEntry saw it
        tuskel_test::CollectingOutputStream* out;
    };

    std::function<int(QRN_SPACE::ArchiveEntryInfo&)> decide = [](QRN_SPACE::ArchiveEntryInfo&) {
        return QRN_SPACE::ArchiveConstants::ACTION_DECOMPRESS;
    };

    std::vector<std::string> calls;
    std::vector<Seen> seen;
    std::vector<std::string> contained;  // messages of the exceptions held while releaseSession() ran

    void beginUnarchiving() override { calls.push_back("begin"); }
    void endUnarchiving() override { calls.push_back("end"); }
    void releaseSession() override;
    QRN_SPACE::OutputStream* processEntry(QRN_SPACE::ArchiveEntryInfo* info, int& action) override;

    // Names of the entries offered, in order; the final entry shows as "".
    std::vector<std::string> names() const;

private:
    std::vector<std::unique_ptr<QRN_SPACE::ArchiveEntryInfo>> _kept;
    std::vector<std::unique_ptr<tuskel_test::CollectingOutputStream>> _outs;
};

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
