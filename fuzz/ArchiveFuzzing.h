#ifndef TUSKEL_FUZZ_ARCHIVEFUZZING_H
#define TUSKEL_FUZZ_ARCHIVEFUZZING_H

// Shared by the archive harnesses: an entry processor whose answers vary
// with the entry index to reach skip, raw copy, abort and inflation, writing
// into a stream that stops a bomb instead of filling memory, and a
// decompress processor that cuts entries short.

#include <memory>
#include <string>

#include "support/TestStreams.h"
#include "unarchiver/Tuskel.h"
#include "unarchiver/ZipEntryInfo.h"

namespace tuskel_fuzz {

const size_t kOutputCap = 1 << 22;

struct CappedOutput : tuskel_test::CollectingOutputStream {
    using OutputStream::write;
    int write(const char* buf, int len) override {
        if (data.size() + static_cast<size_t>(len) > kOutputCap) throw QRN_SPACE::IOException("output cap");
        return CollectingOutputStream::write(buf, len);
    }
};

// Cuts every fourth entry short once its inflation is under way, as a host
// that has seen enough of an entry does.
struct Cutter : QRN_SPACE::DecompressProcessor {
    unsigned entries = 0, polls = 0;
    int init() override {
        ++entries;
        polls = 0;
        return 0;
    }
    void setFileName(std::string&) override {}
    void setContentType(std::string&) override {}
    int check(QRN_SPACE::InputStream*) override { return 0; }
    int check(QRN_SPACE::BufferBase*) override { return 0; }
    int requiredLength() override { return 0; }
    int getAction() override { return entries % 4 == 3 && ++polls > 1 ? 2 : 0; }
};

// Keeps each entry until endUnarchiving(), as the contract asks. Now and
// then it rewrites the algorithm, as a processor may. `salt` shifts the
// answers, so that a single-entry format gets them all too.
struct VaryingProcessor : QRN_SPACE::ArchiveEntryProcessor {
    CappedOutput out;
    std::unique_ptr<QRN_SPACE::ArchiveEntryInfo> entry;
    unsigned salt = 0;
    QRN_SPACE::OutputStream* processEntry(QRN_SPACE::ArchiveEntryInfo* info, int& action) override {
        entry.reset(info);
        static const int answers[] = {2, 2, 1, 2, 0, 2, -1, 7};
        const unsigned order = static_cast<unsigned>(info->order) + salt;
        action = answers[order % 8];
        if (order % 16 == 9) info->algorithm = QRN_SPACE::ArchiveConstants::ALGORITHM_SHRINK;
        if (order % 16 == 13) info->algorithm = QRN_SPACE::ArchiveConstants::ALGORITHM_IMPLODE;
        QRN_SPACE::ZipArchiveProcessor().process(info);
        return &out;
    }
    void endUnarchiving() override { entry.reset(); }
};

}  // namespace tuskel_fuzz

#endif
