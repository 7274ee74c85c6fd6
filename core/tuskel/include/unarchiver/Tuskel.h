#ifndef TUSKEL_UNARCHIVER_TUSKEL_H
#define TUSKEL_UNARCHIVER_TUSKEL_H

// The archive model: entries, entry processors, unarchivers and codecs.
// An Unarchiver reads one container; for each entry it fills an
// ArchiveEntryInfo, asks an ArchiveEntryProcessor what to do with it and
// where to write it, and decodes it with a Decompressor.

#include <string>

#include "io/BufferBase.h"
#include "io/InputStream.h"
#include "io/OutputStream.h"

namespace QRN_SPACE {

// Codes shared by the formats and their processors.
class TUSKEL_API ArchiveConstants {
public:
    // Set by ArchiveEntryProcessor::processEntry; any other value skips.
    static constexpr int ACTION_ABORT = -1;       // the unarchiver raises ArchivingException
    static constexpr int ACTION_SKIP = 0;         // the entry's data is passed over
    static constexpr int ACTION_COPY = 1;         // stored bytes are copied undecoded
    static constexpr int ACTION_DECOMPRESS = 2;   // decoded (inflated or copied) into the stream

    // ArchiveEntryInfo::algorithm.
    static constexpr int ALGORITHM_UNKNOWN = -1;  // not yet read, or not decodable
    static constexpr int ALGORITHM_STORED = 0;
    static constexpr int ALGORITHM_DEFLATE = 1;
    static constexpr int ALGORITHM_SHRINK = 2;    // recognised, never decoded
    static constexpr int ALGORITHM_IMPLODE = 3;   // recognised, never decoded
};

// The format's own header record for an entry (a GZIP member header, a ZIP
// local header with the archive's directory).
class TUSKEL_API ArchiveEntryHeader {
public:
    virtual ~ArchiveEntryHeader();
};

// One entry as the format describes it. Owns `info`.
class TUSKEL_API ArchiveEntryInfo {
public:
    ArchiveEntryInfo() = default;
    ArchiveEntryInfo(const ArchiveEntryInfo&) = delete;
    ArchiveEntryInfo& operator=(const ArchiveEntryInfo&) = delete;
    virtual ~ArchiveEntryInfo();

    // Orders entries by `order` and nothing else.
    virtual bool operator<(const ArchiveEntryInfo& other) const;

    ArchiveEntryHeader* info = nullptr;  // owned
    int algorithm = ArchiveConstants::ALGORITHM_UNKNOWN;
    int method = 0;       // the format's own method number
    int flags = 0;        // the format's own flag bits
    int order = 0;        // entry index, 0 for the first
    std::string name;     // the entry's path as stored
    int attributes = 0;   // set to 0 by the formats
    unsigned int time = 0;  // as the format stores it (DOS time and date, MTIME)
    int size = 0;         // compressed (stored) length of the entry's data
    int usize = 0;        // uncompressed length; 0 when the header does not say
    unsigned int crc = 0; // CRC-32 as stored; never verified here
};

// Decides what happens to each entry. The processor takes ownership of every
// info handed to processEntry and must keep it alive until endUnarchiving():
// the unarchiver still records values read after the data (a GZIP trailer, a
// ZIP data descriptor) into it. The stream it returns stays its own (the
// unarchiver flushes and closes it, never deletes it).
class TUSKEL_API ArchiveEntryProcessor {
public:
    ArchiveEntryProcessor() = default;
    ArchiveEntryProcessor(const ArchiveEntryProcessor&) = delete;
    ArchiveEntryProcessor& operator=(const ArchiveEntryProcessor&) = delete;
    virtual ~ArchiveEntryProcessor();
    virtual void beginUnarchiving();
    // Sets `action` and answers the stream for the entry's bytes, or null.
    // Default: action 0 (skip), null; the info is kept until the next entry
    // or the processor's end.
    virtual OutputStream* processEntry(ArchiveEntryInfo* info, int& action);
    virtual void endUnarchiving();
    virtual void releaseSession();

private:
    ArchiveEntryInfo* _skipped = nullptr;  // the default's last info; owned
};

class TUSKEL_API ArchiveProcessor {
public:
    virtual ~ArchiveProcessor();
    virtual bool process(const ArchiveEntryInfo* info);  // default true
};

class TUSKEL_API Unarchiver {
public:
    Unarchiver() = default;
    Unarchiver(const Unarchiver&) = delete;
    Unarchiver& operator=(const Unarchiver&) = delete;
    virtual ~Unarchiver();
    // Reads the whole container. Default: ArchivingException "Unimplemented".
    virtual void start();
};

// The record addRawEntry takes.
class TUSKEL_API ArchiveEntry {
public:
    virtual ~ArchiveEntry();
};

// The writing side; no format of this library writes, so every default
// raises ArchivingException "Unimplemented". The caller keeps what it passes.
class TUSKEL_API Archiver {
public:
    virtual ~Archiver();
    virtual void addEntry(ArchiveEntryInfo* info, InputStream& in);
    virtual void addRawEntry(ArchiveEntryInfo* info, InputStream& in);
    virtual void addRawEntry(ArchiveEntry* entry);
    virtual void finish();
};

// Inspects entry contents for an unarchiver (optional; never owned).
class TUSKEL_API DecompressProcessor {
public:
    virtual int init() = 0;
    virtual void setFileName(std::string& name) = 0;
    virtual void setContentType(std::string& type) = 0;
    virtual int check(InputStream* in) = 0;
    virtual int check(BufferBase* buffer) = 0;
    // Leading bytes of an entry a check needs.
    virtual int requiredLength() = 0;
    // The answer of the last check.
    virtual int getAction() = 0;
    virtual ~DecompressProcessor();
};

class TUSKEL_API Decompressor {
public:
    explicit Decompressor(DecompressProcessor* processor = nullptr) : _processor(processor) {}
    Decompressor(const Decompressor&) = delete;
    Decompressor& operator=(const Decompressor&) = delete;
    virtual ~Decompressor();

    // Default: CompressionException "Unimplemented".
    virtual void decompress(InputStream& in, OutputStream& out);
    virtual int getAlgorithm();               // default 0
    virtual const char* getAlgorithmName();   // default "none"

    // A new decompressor for an entry algorithm (1: raw deflate), or null.
    // The caller owns it.
    static Decompressor* newByAlgorithm(int algorithm);

protected:
    DecompressProcessor* _processor;  // may be null; not owned
};

class TUSKEL_API Encoder {
public:
    virtual ~Encoder();
    virtual void encode(InputStream& in, OutputStream& out);  // EncodingException "Unimplemented"
    virtual int getAlgorithm();
    virtual const char* getAlgorithmName();
    static Encoder* newByAlgorithm(int algorithm);  // always null
};

class TUSKEL_API Decoder {
public:
    virtual ~Decoder();
    virtual void decode(InputStream& in, OutputStream& out);  // EncodingException "Unimplemented"
    virtual int getAlgorithm();
    virtual const char* getAlgorithmName();
    static Decoder* newByAlgorithm(int algorithm);  // always null
};

}  // namespace QRN_SPACE

#endif
