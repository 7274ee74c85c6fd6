#ifndef TUSKEL_TOOLS_CHECKEDSTREAM_H
#define TUSKEL_TOOLS_CHECKEDSTREAM_H

#include <cstdint>

#include "Entry.h"
#include "io/OutputStream.h"
#include "unarchiver/Crc.h"

namespace tuskel_tool {

// Stands between an unarchiver and a sink's stream: counts the bytes and
// keeps their CRC-32 (the library's Iso3309Crc) on the way through. A
// failure of the sink's stream becomes an OutputFailure, so it cannot be
// taken for a fault of the archive. Close does not close the sink's stream:
// the sink does that when it is told the entry is done.
class CheckedStream : public QRN_SPACE::OutputStream {
public:
    // Starts counting afresh for a new entry's stream (not owned).
    void reset(QRN_SPACE::OutputStream* sink);

    using QRN_SPACE::OutputStream::write;
    void write(char c) override;
    int write(const char* buf, int len) override;
    void flush() override;
    void close() override {}

    long long written() const { return _written; }
    uint32_t crc() { return _crc.crc(); }

private:
    QRN_SPACE::OutputStream* _sink = nullptr;
    QRN_SPACE::Iso3309Crc _crc;
    long long _written = 0;
};

}  // namespace tuskel_tool

#endif
