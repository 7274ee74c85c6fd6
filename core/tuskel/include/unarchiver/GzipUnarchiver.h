#ifndef TUSKEL_UNARCHIVER_GZIPUNARCHIVER_H
#define TUSKEL_UNARCHIVER_GZIPUNARCHIVER_H

#include <memory>

#include "unarchiver/GzipInfo.h"
#include "unarchiver/Tuskel.h"

namespace QRN_SPACE {

/// Reads a GZIP file as an archive of one entry: the first member.
///
/// Its header becomes a GzipEntryInfo that is offered to the entry
/// processor, which decides whether the body is skipped, copied raw or
/// inflated. Anything after the first member's trailer is left unread
/// (intended). One walk on one thread at a time.
/// @ingroup archive
class TUSKEL_API GzipUnarchiver : public Unarchiver {
public:
    /// Reads `in`, which it does not own. The processors are not owned; the
    /// decompress processor may be null. All must outlive the unarchiver.
    GzipUnarchiver(InputStream* in, ArchiveEntryProcessor& processor, DecompressProcessor* dp);
    /// Reads `buffer` (not owned) through a stream of its own.
    /// @throws OutOfMemoryException "Out of memory" when that stream cannot
    ///   be allocated.
    GzipUnarchiver(BufferBase* buffer, ArchiveEntryProcessor& processor, DecompressProcessor* dp);
    ~GzipUnarchiver() override;

    /// Does the stream start with a GZIP header (the fixed 10 bytes)? The
    /// position is unchanged; the stream must support mark and reset.
    static bool checkFormat(InputStream& in);

    /// Offers the one entry and acts on the processor's answer.
    ///
    /// The processor owns the info from processEntry on and must keep it
    /// alive until endUnarchiving(): the trailer values are stored into it.
    /// The entry's usize is 0 when offered (the size is in the trailer).
    /// A stored body ("decompress" or "copy") is copied to the end of the
    /// input, trailer included.
    /// @throws ArchivingException "non-gzip format" when the header cannot be
    ///   read; "Archiving aborted" for action -1.
    /// @throws CompressionException, OutOfMemoryException from inflating
    ///   (see DeflateDecompressor::decompress()).
    /// @throws IOException "unexpected EOF" for a missing trailer; what the
    ///   streams throw.
    void start() override;

    /// Copies the rest of the input to `out` as it is, trailer included,
    /// and records the last 8 bytes as the CRC-32 and ISIZE into the
    /// entry's GzipInfo. Answers true.
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
