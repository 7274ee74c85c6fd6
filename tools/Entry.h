#ifndef TUSKEL_TOOLS_ENTRY_H
#define TUSKEL_TOOLS_ENTRY_H

#include <cstdint>
#include <ctime>
#include <string>

#include "io/OutputStream.h"

namespace tuskel_tool {

enum class Format { None, Gzip, Zip, ZipExe };

const char* formatName(Format format);

// One entry of an archive as the tool reports it, whichever record it came
// from (a GZIP header and trailer, a ZIP local header, its data descriptor
// or its central directory record).
struct Entry {
    std::string rawName;  // as stored
    std::string name;     // as unzip shows it (see decodeZipName)
    int index = 0;        // 0 for the first entry met
    int method = 0;       // the format's method number (8: deflate)
    long long size = -1;            // uncompressed, as recorded; -1 unknown
    long long compressedSize = -1;  // -1 unknown
    uint32_t crc = 0;
    bool crcKnown = false;
    time_t mtime = 0;
    unsigned int mode = 0;  // Unix type and permission bits; 0 when not recorded
    bool directory = false;
    bool symlink = false;

    const char* methodName() const;
};

// What came of an entry's data.
struct EntryResult {
    enum Status { OK, BAD, SKIPPED };
    Status status = OK;
    long long written = 0;  // bytes produced
    uint32_t crc = 0;       // CRC-32 of those bytes
    bool cut = false;       // the sink cut the entry short: nothing to check
    std::string problem;    // why BAD or SKIPPED
};

// Where a command wants the entries of a walk to go.
//
// For every entry: wants(); if wanted and its data can be read at all,
// open(); if that answers a stream, the data goes there and close() follows
// with what came of it. A wanted entry whose data cannot be read (encrypted,
// an unknown method) goes to close() at once, SKIPPED.
class EntrySink {
public:
    virtual ~EntrySink();
    virtual bool wants(const Entry&) { return true; }
    // How many leading bytes of an entry the sink needs; -1 for all. A
    // stored entry is copied no further; a deflated one is cut short by
    // the walk's decompress processor, if it has one.
    virtual long long needs() const { return -1; }
    // The stream for the entry's bytes (kept by the sink: the walk only
    // writes to it), or null when the sink has done with the entry.
    virtual QRN_SPACE::OutputStream* open(const Entry& entry) = 0;
    virtual void close(const Entry& entry, const EntryResult& result) = 0;
};

// The sink's own output failed (a full disk, a closed pipe): not the
// archive's fault, so it ends the walk and the command.
struct OutputFailure {
    std::string message;
};

}  // namespace tuskel_tool

#endif
