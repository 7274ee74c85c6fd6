#ifndef TUSKEL_UNARCHIVER_TUSKEL_H
#define TUSKEL_UNARCHIVER_TUSKEL_H

/// @file
/// The archive model: entries, entry processors, unarchivers and codecs.
///
/// An Unarchiver reads one container; for each entry it fills an
/// ArchiveEntryInfo, asks an ArchiveEntryProcessor what to do with it and
/// where to write it, and decodes it with a Decompressor. An unarchiver and
/// its processors serve one walk on one thread at a time.

#include <string>

#include "io/BufferBase.h"
#include "io/InputStream.h"
#include "io/OutputStream.h"

namespace QRN_SPACE {

/// Codes shared by the formats and their processors.
/// @ingroup archive
class TUSKEL_API ArchiveConstants {
public:
    /// @name Action codes
    /// Set by ArchiveEntryProcessor::processEntry(); any other value skips.
    /// @{
    static constexpr int ACTION_ABORT = -1;      ///< The unarchiver raises ArchivingException "Archiving aborted".
    static constexpr int ACTION_SKIP = 0;        ///< The entry's data is passed over.
    static constexpr int ACTION_COPY = 1;        ///< Stored bytes are copied undecoded.
    static constexpr int ACTION_DECOMPRESS = 2;  ///< Decoded (inflated or copied) into the stream.
    /// @}

    /// @name Entry algorithms
    /// Values of ArchiveEntryInfo::algorithm.
    /// @{
    static constexpr int ALGORITHM_UNKNOWN = -1;  ///< Not yet read, or not decodable.
    static constexpr int ALGORITHM_STORED = 0;    ///< Stored: copied as it is.
    static constexpr int ALGORITHM_DEFLATE = 1;   ///< Deflate: inflated.
    static constexpr int ALGORITHM_SHRINK = 2;    ///< Recognised, never decoded.
    static constexpr int ALGORITHM_IMPLODE = 3;   ///< Recognised, never decoded.
    /// @}
};

/// The format's own header record for an entry (a GZIP member header, a ZIP
/// local header with the archive's directory). Owned by the entry that
/// carries it.
/// @ingroup archive
class TUSKEL_API ArchiveEntryHeader {
public:
    /// Virtual, so that the entry can delete any format's record.
    virtual ~ArchiveEntryHeader();
};

/// One entry as the format describes it.
///
/// Owns `info` and deletes it with itself. Filled by the unarchiver, then
/// owned by the entry processor it is handed to (see
/// ArchiveEntryProcessor::processEntry()). A plain record: one thread at a
/// time.
/// @ingroup archive
class TUSKEL_API ArchiveEntryInfo {
public:
    /// No header record; algorithm ALGORITHM_UNKNOWN, everything else 0 or
    /// empty.
    ArchiveEntryInfo() = default;
    ArchiveEntryInfo(const ArchiveEntryInfo&) = delete;
    ArchiveEntryInfo& operator=(const ArchiveEntryInfo&) = delete;
    /// Deletes `info`.
    virtual ~ArchiveEntryInfo();

    /// Orders entries by `order` and nothing else.
    virtual bool operator<(const ArchiveEntryInfo& other) const;

    ArchiveEntryHeader* info = nullptr;                   ///< The format's header record; owned; may be null.
    int algorithm = ArchiveConstants::ALGORITHM_UNKNOWN;  ///< One of the ArchiveConstants ALGORITHM_ codes.
    int method = 0;         ///< The format's own method number.
    int flags = 0;          ///< The format's own flag bits.
    int order = 0;          ///< Entry index, 0 for the first.
    std::string name;       ///< The entry's path as stored.
    int attributes = 0;     ///< Set to 0 by the formats.
    unsigned int time = 0;  ///< As the format stores it (DOS time and date, MTIME).
    /// Compressed (stored) length of the entry's data. A ZIP size of 2 GiB or
    /// more arrives negative.
    int size = 0;
    /// Uncompressed length; 0 when the header does not say (always for GZIP,
    /// whose size is in its trailer).
    int usize = 0;
    unsigned int crc = 0;   ///< CRC-32 as stored; never verified here.
};

/// Decides what happens to each entry, and where its bytes go.
///
/// The processor takes ownership of every info handed to processEntry() and
/// must keep it alive until endUnarchiving(): the unarchiver still records
/// values read after the data (a GZIP trailer, a ZIP data descriptor) into
/// it. The stream it returns stays its own (the unarchiver flushes and closes
/// it, never deletes it). Exceptions thrown by its operations pass through
/// the unarchiver (the ZIP unarchiver contains ArchivingException, see
/// ZipUnarchiver::start()). The defaults skip every entry.
/// @ingroup archive
class TUSKEL_API ArchiveEntryProcessor {
public:
    ArchiveEntryProcessor() = default;
    ArchiveEntryProcessor(const ArchiveEntryProcessor&) = delete;
    ArchiveEntryProcessor& operator=(const ArchiveEntryProcessor&) = delete;
    /// Deletes the last info the default processEntry() kept.
    virtual ~ArchiveEntryProcessor();
    /// Called before each entry's header is read. Default: does nothing.
    virtual void beginUnarchiving();
    /// Takes ownership of `info`, sets `action` (ArchiveConstants ACTION_
    /// codes) and answers the stream for the entry's bytes, or null (nothing
    /// is then written). Default: action 0 (skip), null; the info is kept
    /// until the next entry or the processor's end.
    virtual OutputStream* processEntry(ArchiveEntryInfo* info, int& action);
    /// Called after each entry's data (for ZIP also after the final entry
    /// that carries the central directory). Default: does nothing.
    virtual void endUnarchiving();
    /// Called when the ZIP unarchiver gives up on an entry and resumes.
    /// Default: does nothing.
    virtual void releaseSession();

private:
    ArchiveEntryInfo* _skipped = nullptr;  // the default's last info; owned
};

/// A yes/no question about an entry; see ZipArchiveProcessor. The library's
/// processors hold no state.
/// @ingroup archive
class TUSKEL_API ArchiveProcessor {
public:
    virtual ~ArchiveProcessor();
    /// Answers the question for `info` (not kept). Default: true.
    virtual bool process(const ArchiveEntryInfo* info);
};

/// Reads one container and hands its entries to an entry processor.
///
/// Created by ArchiveId::unarchiver() (the caller owns it) or directly. One
/// walk on one thread at a time.
/// @ingroup archive
class TUSKEL_API Unarchiver {
public:
    Unarchiver() = default;
    Unarchiver(const Unarchiver&) = delete;
    Unarchiver& operator=(const Unarchiver&) = delete;
    virtual ~Unarchiver();
    /// Reads the whole container. Default: ArchivingException "Unimplemented".
    virtual void start();
};

/// The record Archiver::addRawEntry() takes.
/// @ingroup archive
class TUSKEL_API ArchiveEntry {
public:
    virtual ~ArchiveEntry();
};

/// The writing side; no format of this library writes.
///
/// Every default raises ArchivingException "Unimplemented". The caller keeps
/// what it passes. The defaults hold no state.
/// @ingroup archive
class TUSKEL_API Archiver {
public:
    virtual ~Archiver();
    /// Adds an entry, encoding the bytes of `in`. Default: throws.
    virtual void addEntry(ArchiveEntryInfo* info, InputStream& in);
    /// Adds an entry whose bytes in `in` are already encoded. Default: throws.
    virtual void addRawEntry(ArchiveEntryInfo* info, InputStream& in);
    /// Adds a raw entry record. Default: throws.
    virtual void addRawEntry(ArchiveEntry* entry);
    /// Completes the archive. Default: throws.
    virtual void finish();
};

/// Inspects entry contents for an unarchiver: its answer can cut an entry
/// short.
///
/// Optional; unarchivers and decompressors never own one. The unarchivers
/// call init() before each entry; DeflateDecompressor polls getAction() and
/// skips the rest of the entry once it answers 2. FileTypeProcessor is the
/// library's implementation. One unarchiver at a time.
/// @ingroup archive
class TUSKEL_API DecompressProcessor {
public:
    /// Forgets the previous entry; answers 0 in the library's implementation.
    virtual int init() = 0;
    /// The entry's name (copied).
    virtual void setFileName(std::string& name) = 0;
    /// The entry's declared content type (copied).
    virtual void setContentType(std::string& type) = 0;
    /// Judges the entry from the stream's next bytes, leaving the stream
    /// where it was; answers the action.
    virtual int check(InputStream* in) = 0;
    /// Judges the entry from the buffer's first bytes; answers the action.
    virtual int check(BufferBase* buffer) = 0;
    /// Leading bytes of an entry a check needs.
    virtual int requiredLength() = 0;
    /// The answer of the last check.
    virtual int getAction() = 0;
    virtual ~DecompressProcessor();
};

/// Decodes one compressed stream; see DeflateDecompressor.
///
/// One decompression at a time; no state is shared between instances.
/// @ingroup archive
class TUSKEL_API Decompressor {
public:
    /// A decompressor consulting `processor` (may be null; not owned).
    explicit Decompressor(DecompressProcessor* processor = nullptr) : _processor(processor) {}
    Decompressor(const Decompressor&) = delete;
    Decompressor& operator=(const Decompressor&) = delete;
    virtual ~Decompressor();

    /// Decodes `in` into `out`. Default: CompressionException "Unimplemented".
    virtual void decompress(InputStream& in, OutputStream& out);
    /// The ArchiveConstants ALGORITHM_ code. Default: 0.
    virtual int getAlgorithm();
    /// The algorithm's name, a static text. Default: "none".
    virtual const char* getAlgorithmName();

    /// A new decompressor for an entry algorithm (1: raw deflate), or null.
    /// The caller owns it.
    static Decompressor* newByAlgorithm(int algorithm);

protected:
    DecompressProcessor* _processor;  ///< May be null; not owned.
};

/// The encoding side; nothing in this library encodes. The defaults hold no
/// state.
/// @ingroup archive
class TUSKEL_API Encoder {
public:
    virtual ~Encoder();
    /// Encodes `in` into `out`. Default: EncodingException "Unimplemented".
    virtual void encode(InputStream& in, OutputStream& out);
    /// The ArchiveConstants ALGORITHM_ code. Default: 0.
    virtual int getAlgorithm();
    /// The algorithm's name, a static text. Default: "none".
    virtual const char* getAlgorithmName();
    /// Always null: there are no encoders.
    static Encoder* newByAlgorithm(int algorithm);
};

/// A decoder interface beside Decompressor; nothing in this library
/// implements it. The defaults hold no state.
/// @ingroup archive
class TUSKEL_API Decoder {
public:
    virtual ~Decoder();
    /// Decodes `in` into `out`. Default: EncodingException "Unimplemented".
    virtual void decode(InputStream& in, OutputStream& out);
    /// The ArchiveConstants ALGORITHM_ code. Default: 0.
    virtual int getAlgorithm();
    /// The algorithm's name, a static text. Default: "none".
    virtual const char* getAlgorithmName();
    /// Always null: there are no decoders.
    static Decoder* newByAlgorithm(int algorithm);
};

}  // namespace QRN_SPACE

#endif
