#ifndef TUSKEL_UNARCHIVER_ARCHIVEID_H
#define TUSKEL_UNARCHIVER_ARCHIVEID_H

// The format registry. Each supported container format is one ArchiveId:
// it tells whether a stream holds its format and creates the unarchiver and
// checksum object the format uses. ArchiveFactory::factory lists them in the
// order they are asked; the first that accepts wins.

#include <vector>

#include "unarchiver/Tuskel.h"
#include "util/Mutex.h"

namespace QRN_SPACE {

class Crc;

class TUSKEL_API ArchiveId {
public:
    virtual ~ArchiveId();
    // Does `in` hold this format? The stream is left where it was.
    virtual bool accept(InputStream& in) = 0;
    // A new unarchiver reading `in` (or `buffer`); the caller owns it.
    virtual Unarchiver* unarchiver(InputStream* in, ArchiveEntryProcessor& processor,
                                   DecompressProcessor* decompressProcessor) = 0;
    virtual Unarchiver* unarchiver(BufferBase* buffer, ArchiveEntryProcessor& processor,
                                   DecompressProcessor* decompressProcessor) = 0;
    virtual Archiver* archiver(OutputStream& out) = 0;
    virtual bool entryArchivable(const ArchiveEntryInfo* info) = 0;
    // A new checksum object of the format's kind; the caller owns it.
    virtual Crc* crc() = 0;
    virtual bool archivable() = 0;
};

// Refuses everything.
class TUSKEL_API EmptyArchiveId : public ArchiveId {
public:
    ~EmptyArchiveId() override;
    bool accept(InputStream& in) override;
    Unarchiver* unarchiver(InputStream* in, ArchiveEntryProcessor& processor,
                           DecompressProcessor* decompressProcessor) override;
    Unarchiver* unarchiver(BufferBase* buffer, ArchiveEntryProcessor& processor,
                           DecompressProcessor* decompressProcessor) override;
    Archiver* archiver(OutputStream& out) override;
    bool entryArchivable(const ArchiveEntryInfo* info) override;
    Crc* crc() override;
    bool archivable() override;
};

// A format read by unarchiver class T, which provides a static
// checkFormat(InputStream&) and constructors over a stream and a buffer.
template <class T>
class SimpleArchiveId : public virtual EmptyArchiveId {
public:
    // A format test that runs out of input or meets a bad header refuses,
    // so the next format is still asked.
    bool accept(InputStream& in) override {
        try {
            return T::checkFormat(in);
        } catch (ArchivingException&) {
            return false;
        } catch (IOException&) {
            return false;
        }
    }
    Unarchiver* unarchiver(InputStream* in, ArchiveEntryProcessor& processor,
                           DecompressProcessor* decompressProcessor) override {
        return new T(in, processor, decompressProcessor);
    }
    Unarchiver* unarchiver(BufferBase* buffer, ArchiveEntryProcessor& processor,
                           DecompressProcessor* decompressProcessor) override {
        return new T(buffer, processor, decompressProcessor);
    }
};

// Adds the checksum class C of the format.
template <class T, class C>
class CrcArchiveId : public virtual SimpleArchiveId<T> {
public:
    Crc* crc() override { return new C(); }
};

// The result of a lookup that found nothing (compare addresses), and an
// identifier for callers that need an "unknown" one.
extern TUSKEL_API EmptyArchiveId ARCHIVEID_NONE;
extern TUSKEL_API EmptyArchiveId ARCHIVEID_UNKNOWN;

// The process-wide registry, filled when the library is loaded and only
// read afterwards. The identifiers are never deleted.
class TUSKEL_API ArchiveFactory {
public:
    static std::vector<ArchiveId*>* factory;  // null until first needed
    static Mutex mutex;                        // guards the list's creation

    // The first registered identifier that accepts `in`, else &ARCHIVEID_NONE.
    static ArchiveId* identify(InputStream& in);
};

// The same pair for packers; nothing registers one in this library.
class TUSKEL_API PackFactory {
public:
    static std::vector<ArchiveId*>* factory;
    static Mutex mutex;
};

}  // namespace QRN_SPACE

#endif
