// Arbitrary bytes as a self-extracting executable held in a buffer: the
// detection must answer without reading past what it was given and put the
// stream back where it stood; what it recognises is then unpacked.
#include <cstdint>

#include "ArchiveFuzzing.h"
#include "io/BufferBaseInputStream.h"
#include "io/ContinuousMemBufferBase.h"
#include "unarchiver/ZipExeUnarchiver.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    QRN_SPACE::ContinuousMemBufferBase buffer(static_cast<long>(size));
    buffer.append(reinterpret_cast<const char*>(data), static_cast<int>(size));
    QRN_SPACE::BufferBaseInputStream in(&buffer);
    long pos = -1;
    bool found = QRN_SPACE::check_zipexe(in, pos);
    if (in.read() != (size > 0 ? data[0] : -1)) __builtin_trap();  // not back at the start
    // What is not recognised is still handed over now and then: the
    // unarchiver must refuse it with its own exception.
    if (!found && size % 4 != 0) return 0;
    tuskel_fuzz::VaryingProcessor processor;
    tuskel_fuzz::Cutter cutter;
    in.reset();
    try {
        if (size % 2 == 0) {
            QRN_SPACE::ZipExeUnarchiver(&buffer, processor, &cutter).start();
        } else {
            QRN_SPACE::ZipExeUnarchiver(&in, processor, &cutter).start();
        }
    } catch (QRN_SPACE::Exception&) {
    }
    return 0;
}
