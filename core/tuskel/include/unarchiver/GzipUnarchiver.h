#ifndef TUSKEL_UNARCHIVER_GZIPUNARCHIVER_H
#define TUSKEL_UNARCHIVER_GZIPUNARCHIVER_H

#include <memory>

#include "unarchiver/GzipInfo.h"
#include "unarchiver/Tuskel.h"

namespace QRN_SPACE {

// Reads a GZIP file as an archive of one entry: the first member. Its header
// becomes a GzipEntryInfo that is offered to the entry processor, which
// decides whether the body is skipped, copied raw or inflated.
class TUSKEL_API GzipUnarchiver : public Unarchiver {
public:
    // Reads `in`, which it does not own. The processors are not owned; the
    // decompress processor may be null.
    GzipUnarchiver(InputStream* in, ArchiveEntryProcessor& processor, DecompressProcessor* dp);
    // Reads `buffer` (not owned) through a stream of its own; throws
    // OutOfMemoryException when that stream cannot be allocated.
    GzipUnarchiver(BufferBase* buffer, ArchiveEntryProcessor& processor, DecompressProcessor* dp);
    ~GzipUnarchiver() override;

    // Does the stream start with a GZIP header? The position is unchanged.
    static bool checkFormat(InputStream& in);

    // Offers the one entry and acts on the processor's answer. The
    // processor owns the info from processEntry on and must keep it alive
    // until endUnarchiving(): the trailer values are stored into it.
    void start() override;

    // Copies the rest of the input to `out` as it is, trailer included,
    // and records the last 8 bytes as the CRC-32 and ISIZE. Answers true.
    bool readAndWrite(OutputStream& out, ArchiveEntryInfo& info);

private:
    void _act(int action, GzipEntryInfo& entry, OutputStream* out);
    void _inflate(GzipEntryInfo& entry, OutputStream* out);

    InputStream* _in;                        // not owned, unless it is _ownedIn
    ArchiveEntryProcessor& _processor;
    DecompressProcessor* _dp;                // may be null
    std::unique_ptr<InputStream> _ownedIn;   // the stream over a buffer
};

}  // namespace QRN_SPACE

#endif
