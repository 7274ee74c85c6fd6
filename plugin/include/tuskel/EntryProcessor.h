#ifndef TUSKEL_ENTRYPROCESSOR_H
#define TUSKEL_ENTRYPROCESSOR_H

#include "io/BufferBaseOutputStream.h"
#include "tuskel/CommonBufferBase.h"
#include "tuskel/CommonDecompressor.h"
#include "unarchiver/Tuskel.h"

// The entry processor every unarchiver gets from CommonDecompressor: for
// each entry it asks the host for a buffer of the entry's size and answers a
// stream into it, with the action "decompress". endUnarchiving() tells the
// host that the archive is done.
//
// Does not own the host processor or the host buffers. Owns the entry info
// handed to processEntry() and the adapter and stream it builds for the
// current entry; they live until the next entry arrives, endUnarchiving()
// or destruction, whichever comes first.
class TUSKEL_API EntryProcessor : public QRN_SPACE::ArchiveEntryProcessor {
public:
    explicit EntryProcessor(CommonEntryProcessor* processor);
    EntryProcessor(const EntryProcessor&) = delete;
    EntryProcessor& operator=(const EntryProcessor&) = delete;
    ~EntryProcessor() override;

    QRN_SPACE::OutputStream* processEntry(QRN_SPACE::ArchiveEntryInfo* info, int& action) override;
    void endUnarchiving() override;

    CommonEntryProcessor* processor;               // not owned
    QRN_SPACE::ArchiveEntryInfo* entryInfo;        // owned: the current entry
    int count;                                     // entries the host was asked a buffer for
    CommonBufferBase* outBuffer;                   // owned: adapter over the host's buffer
    QRN_SPACE::BufferBaseOutputStream* out;        // owned: stream over outBuffer
    int gzipSize;  // uncompressed size from a GZIP trailer, 0 for other inputs

private:
    // Frees the current entry's objects: stream, adapter, then info.
    void _release();
};

#endif
