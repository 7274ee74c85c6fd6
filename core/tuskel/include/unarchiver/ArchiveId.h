#ifndef TUSKEL_UNARCHIVER_ARCHIVEID_H
#define TUSKEL_UNARCHIVER_ARCHIVEID_H

/// @file
/// The format registry. Each supported container format is one ArchiveId:
/// it tells whether a stream holds its format and creates the unarchiver and
/// checksum object the format uses. ArchiveFactory::factory lists them in the
/// order they are asked; the first that accepts wins.

#include <vector>

#include "unarchiver/Tuskel.h"
#include "util/Mutex.h"

namespace QRN_SPACE {

class Crc;

/// One container format: recognises it and creates what reads it.
///
/// The registered identifiers hold no state: any number of threads may use
/// one at once (each on its own stream).
/// @ingroup archive
class TUSKEL_API ArchiveId {
public:
    virtual ~ArchiveId();
    /// Does `in` hold this format? The stream must support mark and reset
    /// and is left where it was. A format test that runs out of input or
    /// meets a bad header answers false.
    virtual bool accept(InputStream& in) = 0;
    /// A new unarchiver reading `in`; the caller owns it. `in`, `processor`
    /// and `decompressProcessor` (may be null) are not owned and must
    /// outlive it. Null when the format cannot be read.
    virtual Unarchiver* unarchiver(InputStream* in, ArchiveEntryProcessor& processor,
                                   DecompressProcessor* decompressProcessor) = 0;
    /// The same over a buffer (not owned).
    /// @throws OutOfMemoryException "Out of memory" when the unarchiver's own
    ///   stream cannot be allocated.
    virtual Unarchiver* unarchiver(BufferBase* buffer, ArchiveEntryProcessor& processor,
                                   DecompressProcessor* decompressProcessor) = 0;
    /// A new archiver writing the format; the caller owns it. Null in this
    /// library: no format is written.
    virtual Archiver* archiver(OutputStream& out) = 0;
    /// Can this entry be stored in the format? False in this library.
    virtual bool entryArchivable(const ArchiveEntryInfo* info) = 0;
    /// A new checksum object of the format's kind, in its initial state; the
    /// caller owns it. Null when the format has none.
    virtual Crc* crc() = 0;
    /// Can the format be written at all? False in this library.
    virtual bool archivable() = 0;
};

/// Refuses everything: no format, no unarchiver, no checksum.
/// @ingroup archive
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

/// A format read by unarchiver class `T`, which provides a static
/// checkFormat(InputStream&) and constructors over a stream and a buffer.
/// Header-only.
/// @ingroup archive
template <class T>
class SimpleArchiveId : public virtual EmptyArchiveId {
public:
    /// `T::checkFormat(in)`. A format test that runs out of input or meets a
    /// bad header (IOException, ArchivingException) refuses, so the next
    /// format is still asked; other exceptions pass through.
    bool accept(InputStream& in) override {
        try {
            return T::checkFormat(in);
        } catch (ArchivingException&) {
            return false;
        } catch (IOException&) {
            return false;
        }
    }
    /// A new `T` reading `in`; the caller owns it.
    Unarchiver* unarchiver(InputStream* in, ArchiveEntryProcessor& processor,
                           DecompressProcessor* decompressProcessor) override {
        return new T(in, processor, decompressProcessor);
    }
    /// A new `T` reading `buffer`; the caller owns it.
    Unarchiver* unarchiver(BufferBase* buffer, ArchiveEntryProcessor& processor,
                           DecompressProcessor* decompressProcessor) override {
        return new T(buffer, processor, decompressProcessor);
    }
};

/// Adds the checksum class `C` of the format to SimpleArchiveId. Header-only.
/// @ingroup archive
template <class T, class C>
class CrcArchiveId : public virtual SimpleArchiveId<T> {
public:
    /// A new `C` in its initial state; the caller owns it.
    Crc* crc() override { return new C(); }
};

/// The result of a lookup that found nothing: compare addresses with
/// ArchiveFactory::identify()'s answer.
/// @ingroup archive
extern TUSKEL_API EmptyArchiveId ARCHIVEID_NONE;
/// An identifier for callers that need an "unknown" one; no lookup answers it.
/// @ingroup archive
extern TUSKEL_API EmptyArchiveId ARCHIVEID_UNKNOWN;

/// The process-wide format registry: GZIP, then ZIP.
///
/// Filled when the library is loaded and only read afterwards, so lookups
/// from several threads need no lock. The identifiers are never deleted.
/// Self-extracting ZIP executables are not registered (see check_zipexe()).
/// @ingroup archive
class TUSKEL_API ArchiveFactory {
public:
    /// The registered identifiers in the order they are asked; null until
    /// first needed. Do not change it once hosts may be calling in.
    static std::vector<ArchiveId*>* factory;
    /// Guards the list's creation.
    static Mutex mutex;

    /// The first registered identifier that accepts `in`, else
    /// &ARCHIVEID_NONE. Each test leaves the stream where it was (it must
    /// support mark and reset). The answer is the registry's: do not delete
    /// it.
    static ArchiveId* identify(InputStream& in);
};

/// The same pair for packers; nothing registers one in this library.
/// @ingroup archive
class TUSKEL_API PackFactory {
public:
    static std::vector<ArchiveId*>* factory;  ///< Always null here.
    static Mutex mutex;                        ///< Guards the list's creation.
};

}  // namespace QRN_SPACE

#endif
