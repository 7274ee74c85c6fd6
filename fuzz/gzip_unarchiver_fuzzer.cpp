// Arbitrary bytes as a whole GZIP input: header parsing, every optional
// field, raw copy of stored members and inflation must fail cleanly.
#include <cstdint>
#include <memory>
#include <string>

#include "io/ContinuousMemBufferBase.h"
#include "support/TestStreams.h"
#include "unarchiver/GzipUnarchiver.h"

namespace {

const size_t kOutputCap = 1 << 22;  // a bomb stops here instead of filling memory

struct Recorder : QRN_SPACE::ArchiveEntryProcessor {
    struct CappedOutput : tuskel_test::CollectingOutputStream {
        using OutputStream::write;
        int write(const char* buf, int len) override {
            if (data.size() + static_cast<size_t>(len) > kOutputCap) throw QRN_SPACE::IOException("output cap");
            return CollectingOutputStream::write(buf, len);
        }
    } out;
    std::unique_ptr<QRN_SPACE::ArchiveEntryInfo> entry;
    QRN_SPACE::OutputStream* processEntry(QRN_SPACE::ArchiveEntryInfo* info, int& action) override {
        entry.reset(info);
        action = QRN_SPACE::ArchiveConstants::ACTION_DECOMPRESS;
        return &out;
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    QRN_SPACE::ContinuousMemBufferBase buffer(static_cast<long>(size));
    buffer.append(reinterpret_cast<const char*>(data), static_cast<int>(size));
    Recorder recorder;
    try {
        QRN_SPACE::GzipUnarchiver(&buffer, recorder, nullptr).start();
    } catch (QRN_SPACE::Exception&) {
    }
    return 0;
}
