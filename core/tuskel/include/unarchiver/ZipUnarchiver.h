#ifndef TUSKEL_UNARCHIVER_ZIPUNARCHIVER_H
#define TUSKEL_UNARCHIVER_ZIPUNARCHIVER_H

#include <memory>

#include "unarchiver/Tuskel.h"
#include "unarchiver/ZipEntryInfo.h"

namespace QRN_SPACE {

/// Reads a ZIP archive by walking its local headers from the front, offering
/// each entry to the entry processor and skipping, copying or inflating its
/// data as the processor answers.
///
/// The central directory is only read once the local headers run out, and
/// is handed over with a final entry that has an empty name (and usize 0).
/// The entry processor's endUnarchiving() is called after every entry and
/// after that final one.
///
/// ```
///   start ─▶ LOCAL HEADER ──header──▶ ENTRY: processEntry, data, descriptor,
///              ▲    │                   endUnarchiving ──┐
///              │    │                       │            │
///              │    │ no header             │ ArchivingException
///              │    │ (back to its mark)    ▼            │
///              │    │                  releaseSession, restart()
///              │    ▼                       │            │
///              │  CENTRAL DIRECTORY         │            │
///              │  records, end record,      │            │
///              │  final entry ─▶ done       │            │
///              └────────────────────────────┴────────────┘
///                 (resume at the input's current position)
/// ```
///
/// restart(), over a buffer only: end record (searched from the back) ─▶
/// directory ─▶ record of the entry after the failed one ─▶ a second
/// unarchiver walks from that entry's local header to the end, final entry
/// included. Over a plain stream restart() does nothing, so a failed entry
/// ends the walk quietly through the central directory.
///
/// The entry processor owns every entry handed to processEntry and keeps it
/// alive until endUnarchiving() (the data descriptor is recorded into it
/// after the data), and owns the stream it answers, which the unarchiver
/// flushes and closes but never deletes. The action variable is set to 0
/// once per walk, not per entry, so a processor that leaves it alone repeats
/// its previous answer (intended). No CRC is computed or compared. One walk
/// on one thread at a time.
/// @ingroup archive
class TUSKEL_API ZipUnarchiver : public Unarchiver {
public:
    /// Reads `in`, which it does not own. The processors are not owned; the
    /// decompress processor may be null. All must outlive the unarchiver.
    /// `startOffset` bytes are skipped first (the archive's position inside
    /// a self-extractor).
    ZipUnarchiver(InputStream* in, ArchiveEntryProcessor& processor, DecompressProcessor* dp,
                  unsigned int startOffset = 0);
    /// Reads `buffer` (not owned, must outlive the unarchiver) through a
    /// stream of its own; only this form can restart() after a failed entry.
    /// @throws OutOfMemoryException "Out of memory" when the stream cannot be
    ///   allocated.
    ZipUnarchiver(BufferBase* buffer, ArchiveEntryProcessor& processor, DecompressProcessor* dp,
                  unsigned int startOffset = 0);
    ~ZipUnarchiver() override;

    /// Does the stream begin with a local header? The stream must support
    /// mark and reset, and its position is unchanged, except that an
    /// encrypted first entry or an overlong first name throws
    /// ArchivingException with the stream 30 bytes on.
    static bool checkFormat(InputStream& in);

    /// Walks the whole archive.
    ///
    /// An ArchivingException about one entry (an abort, an unsupported
    /// method such as "Unknown algorithm: 6in zip" with no blank, intended,
    /// or a bad header) never leaves: the processor's releaseSession() is
    /// called and the walk goes on through restart().
    /// @throws IOException, CompressionException, OutOfMemoryException: these
    ///   do leave, after the entries before them were handed over.
    void start() override;

    /// Resumes after a failed entry through the central directory; runs at
    /// most once per walk and does nothing over a plain stream.
    /// @throws ArchivingException "failed to restart zip unarchiving" when
    ///   the buffer holds no end record.
    void restart();

private:
    friend class ZipExeUnarchiver;  // moves _in to the archive inside an executable

    std::unique_ptr<ZipEntryInfo> _nextEntry();
    bool _takeUp(std::unique_ptr<ZipEntryInfo>& entry, int& action);
    void _unpack(std::unique_ptr<ZipEntryInfo> entry, int& action);
    void _decode(int algorithm, int method, OutputStream* out, int size);
    void _copy(OutputStream* out, int size);
    void _finish(std::unique_ptr<ZipEntryInfo> entry, int& action);

    InputStream* _in;                       // not owned, unless it is _ownedIn
    BufferBase* _buffer;                    // null over a stream; not owned
    ArchiveEntryProcessor& _processor;
    DecompressProcessor* _dp;               // may be null; not owned
    int _counter = 0;                       // local headers taken up so far
    unsigned int _startOffset;              // skipped before the first header
    bool _restarted = false;                // restart() already ran in this walk
    std::unique_ptr<InputStream> _ownedIn;  // the stream over _buffer
};

}  // namespace QRN_SPACE

#endif
