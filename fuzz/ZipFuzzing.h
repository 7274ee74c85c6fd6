#ifndef TUSKEL_FUZZ_ZIPFUZZING_H
#define TUSKEL_FUZZ_ZIPFUZZING_H

// Shared by the ZIP harnesses: an entry processor whose answers vary with
// the entry index to reach skip, raw copy, abort and inflation, writing into
// a stream that stops a bomb instead of filling memory.

#include <memory>

#include "support/TestStreams.h"
#include "unarchiver/Tuskel.h"

namespace tuskel_fuzz {

const size_t kOutputCap = 1 << 22;

struct CappedOutput : tuskel_test::CollectingOutputStream {
    using OutputStream::write;
    int write(const char* buf, int len) override {
        if (data.size() + static_cast<size_t>(len) > kOutputCap) throw QRN_SPACE::IOException("output cap");
        return CollectingOutputStream::write(buf, len);
    }
};

// Keeps each entry until endUnarchiving(), as the contract asks. `salt`
// shifts the answers, so that a single-entry format gets them all too.
struct VaryingProcessor : QRN_SPACE::ArchiveEntryProcessor {
    CappedOutput out;
    std::unique_ptr<QRN_SPACE::ArchiveEntryInfo> entry;
    unsigned salt = 0;
    QRN_SPACE::OutputStream* processEntry(QRN_SPACE::ArchiveEntryInfo* info, int& action) override {
        entry.reset(info);
        static const int answers[] = {2, 2, 1, 2, 0, 2, -1, 7};
        action = answers[(static_cast<unsigned>(info->order) + salt) % 8];
        return &out;
    }
    void endUnarchiving() override { entry.reset(); }
};

}  // namespace tuskel_fuzz

#endif
