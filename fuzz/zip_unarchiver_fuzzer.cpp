// Arbitrary bytes as a ZIP held in a buffer, so that a failed entry sends
// the walk through restart() and the central directory. The answers vary
// with the entry index to reach skip, raw copy, abort and inflation.
#include <cstdint>
#include <memory>

#include "io/ContinuousMemBufferBase.h"
#include "support/TestStreams.h"
#include "unarchiver/ZipUnarchiver.h"

namespace {

const size_t kOutputCap = 1 << 22;  // a bomb stops here instead of filling memory

struct CappedOutput : tuskel_test::CollectingOutputStream {
    using OutputStream::write;
    int write(const char* buf, int len) override {
        if (data.size() + static_cast<size_t>(len) > kOutputCap) throw QRN_SPACE::IOException("output cap");
        return CollectingOutputStream::write(buf, len);
    }
};

// Keeps each entry until endUnarchiving(), as the contract asks.
struct Processor : QRN_SPACE::ArchiveEntryProcessor {
    CappedOutput out;
    std::unique_ptr<QRN_SPACE::ArchiveEntryInfo> entry;
    QRN_SPACE::OutputStream* processEntry(QRN_SPACE::ArchiveEntryInfo* info, int& action) override {
        entry.reset(info);
        static const int answers[] = {2, 2, 1, 2, 0, 2, -1, 7};
        action = answers[static_cast<unsigned>(info->order) % 8];
        return &out;
    }
    void endUnarchiving() override { entry.reset(); }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    QRN_SPACE::ContinuousMemBufferBase buffer(static_cast<long>(size));
    buffer.append(reinterpret_cast<const char*>(data), static_cast<int>(size));
    Processor processor;
    try {
        QRN_SPACE::ZipUnarchiver(&buffer, processor, nullptr).start();
    } catch (QRN_SPACE::Exception&) {
    }
    return 0;
}
