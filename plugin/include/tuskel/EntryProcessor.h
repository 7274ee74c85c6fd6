#ifndef TUSKEL_ENTRYPROCESSOR_H
#define TUSKEL_ENTRYPROCESSOR_H

/// @file
/// EntryProcessor: forwards an unarchiver's entries to a host's
/// CommonEntryProcessor.

#include "io/BufferBaseOutputStream.h"
#include "tuskel/CommonBufferBase.h"
#include "tuskel/CommonDecompressor.h"
#include "unarchiver/Tuskel.h"

/// The entry processor every unarchiver gets from CommonDecompressor.
///
/// For each entry it asks the host for a buffer of the entry's size and
/// answers a stream into it, with the action "decompress" (2).
/// endUnarchiving() tells the host that the entries handed out so far are
/// complete.
///
/// Does not own the host processor or the host buffers. Owns the entry info
/// handed to processEntry() and the adapter and stream it builds for the
/// current entry; they live until the next entry arrives, endUnarchiving()
/// or destruction, whichever comes first. Failures are logged (source
/// "EntryProcessor"), never thrown by the processor itself; what the host's
/// getBuffer() or finish() throws passes through. One processor serves one
/// unarchiver on one thread.
///
/// @ingroup adapters
class TUSKEL_API EntryProcessor : public QRN_SPACE::ArchiveEntryProcessor {
public:
    /// Forwards to `processor`, not owned; null offers nothing to any host.
    explicit EntryProcessor(CommonEntryProcessor* processor);
    EntryProcessor(const EntryProcessor&) = delete;
    EntryProcessor& operator=(const EntryProcessor&) = delete;
    /// Frees the current entry's objects; does not call the host.
    ~EntryProcessor() override;

    /// Takes ownership of `info`, sets `action` to 2 and answers a stream
    /// into a host buffer for the entry, or null.
    ///
    /// The host is asked through getBuffer() with the entry's sizes (an
    /// uncompressed size of 0 replaced by #gzipSize when that is positive).
    /// Null, with nothing written, when `info` is null (logged "entryInfo is
    /// NULL"; `action` then unchanged), when there is no host processor, when
    /// the uncompressed size is 0 (the host is not asked), or when the host
    /// gives no buffer (logged "out_buffer == NULL"). The stream refuses
    /// bytes past the entry's declared size. It stays owned by this
    /// processor.
    QRN_SPACE::OutputStream* processEntry(QRN_SPACE::ArchiveEntryInfo* info, int& action) override;
    /// Calls the host's finish() (when there is a host processor) and frees
    /// the current entry's objects. The unarchivers call it after each entry
    /// and at the end of the archive, so a host sees finish() once for a GZIP
    /// file and once per ZIP entry plus once more at the end.
    void endUnarchiving() override;

    CommonEntryProcessor* processor;         ///< The host's sink; not owned.
    QRN_SPACE::ArchiveEntryInfo* entryInfo;  ///< The current entry; owned.
    int count;                               ///< Entries the host was asked a buffer for.
    CommonBufferBase* outBuffer;             ///< Adapter over the host's buffer for the current entry; owned.
    QRN_SPACE::BufferBaseOutputStream* out;  ///< Stream over #outBuffer; owned.
    /// Uncompressed size from a GZIP trailer, set by the caller before the
    /// walk; 0 for other inputs.
    int gzipSize;

private:
    // Frees the current entry's objects: stream, adapter, then info.
    void _release();
};

#endif
