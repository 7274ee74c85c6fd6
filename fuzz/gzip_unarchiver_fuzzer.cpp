// Arbitrary bytes as a whole GZIP input: header parsing, every optional
// field, raw copy of stored members and inflation must fail cleanly.
#include <cstdint>
#include <memory>
#include <string>

#include "ArchiveFuzzing.h"
#include "io/ContinuousMemBufferBase.h"
#include "unarchiver/GzipUnarchiver.h"

namespace {

struct Recorder : QRN_SPACE::ArchiveEntryProcessor {
    tuskel_fuzz::CappedOutput out;
    std::unique_ptr<QRN_SPACE::ArchiveEntryInfo> entry;
    int answer = QRN_SPACE::ArchiveConstants::ACTION_DECOMPRESS;
    QRN_SPACE::OutputStream* processEntry(QRN_SPACE::ArchiveEntryInfo* info, int& action) override {
        entry.reset(info);
        action = answer;
        return &out;
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    QRN_SPACE::ContinuousMemBufferBase buffer(static_cast<long>(size));
    buffer.append(reinterpret_cast<const char*>(data), static_cast<int>(size));
    // Mostly inflation; the input's length picks the other answers, and
    // every third input is cut short as a host that has seen enough does.
    static const int answers[] = {2, 2, 2, 1, 0, -1, 7};
    Recorder recorder;
    recorder.answer = answers[size % 7];
    tuskel_fuzz::Cutter cutter;
    cutter.entries = 2 + static_cast<unsigned>(size % 3 == 0);
    try {
        QRN_SPACE::GzipUnarchiver(&buffer, recorder, &cutter).start();
    } catch (QRN_SPACE::Exception&) {
    }
    return 0;
}
