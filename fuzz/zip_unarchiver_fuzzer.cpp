// Arbitrary bytes as a ZIP held in a buffer, so that a failed entry sends
// the walk through restart() and the central directory.
#include <cstdint>

#include "ArchiveFuzzing.h"
#include "io/ContinuousMemBufferBase.h"
#include "unarchiver/ZipUnarchiver.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    QRN_SPACE::ContinuousMemBufferBase buffer(static_cast<long>(size));
    buffer.append(reinterpret_cast<const char*>(data), static_cast<int>(size));
    tuskel_fuzz::VaryingProcessor processor;
    tuskel_fuzz::Cutter cutter;
    try {
        QRN_SPACE::ZipUnarchiver(&buffer, processor, &cutter).start();
    } catch (QRN_SPACE::Exception&) {
    }
    return 0;
}
