// The format registry and everything it needs at load time. Static objects
// of different files are constructed in no fixed order, so the mutexes, the
// special identifiers and the registration live here, defined in the order
// they must come to life.

#include <vector>

#include "unarchiver/ArchiveId.h"
#include "unarchiver/Crc.h"
#include "unarchiver/FileTypeProcessor.h"
#include "unarchiver/GzipUnarchiver.h"
#include "unarchiver/ZipUnarchiver.h"

namespace QRN_SPACE {

Mutex ArchiveFactory::mutex;
std::vector<ArchiveId*>* ArchiveFactory::factory = nullptr;
Mutex PackFactory::mutex;
std::vector<ArchiveId*>* PackFactory::factory = nullptr;

EmptyArchiveId ARCHIVEID_UNKNOWN;
EmptyArchiveId ARCHIVEID_NONE;
Mutex FileTypeProcessor::mutex;

namespace {

std::vector<ArchiveId*>& archiveIds() {
    // Intended: the null test is not repeated under the lock. The list is
    // created while the library loads, before any host thread can call in,
    // and is only read afterwards.
    if (ArchiveFactory::factory == nullptr) {
        Monitor lock(ArchiveFactory::mutex);
        ArchiveFactory::factory = new std::vector<ArchiveId*>();
    }
    return *ArchiveFactory::factory;
}

// Runs once while the library loads, after the objects above.
struct FormatRegistration {
    FormatRegistration() {
        // GZIP first: the cheapest test (a 10-byte header), and the
        // tie-break should a later format accept the same input.
        archiveIds().push_back(new CrcArchiveId<GzipUnarchiver, Iso3309Crc>());
        // ZIP second: a 30-byte local header test, only for what is not GZIP.
        archiveIds().push_back(new CrcArchiveId<ZipUnarchiver, Iso3309Crc>());
    }
} registration;

}  // namespace

ArchiveId::~ArchiveId() = default;

EmptyArchiveId::~EmptyArchiveId() = default;

bool EmptyArchiveId::accept(InputStream&) { return false; }

Unarchiver* EmptyArchiveId::unarchiver(InputStream*, ArchiveEntryProcessor&, DecompressProcessor*) { return nullptr; }

Unarchiver* EmptyArchiveId::unarchiver(BufferBase*, ArchiveEntryProcessor&, DecompressProcessor*) { return nullptr; }

Archiver* EmptyArchiveId::archiver(OutputStream&) { return nullptr; }

bool EmptyArchiveId::entryArchivable(const ArchiveEntryInfo*) { return false; }

Crc* EmptyArchiveId::crc() { return nullptr; }

bool EmptyArchiveId::archivable() { return false; }

ArchiveId* ArchiveFactory::identify(InputStream& in) {
    for (ArchiveId* id : archiveIds()) {
        if (id->accept(in)) return id;
    }
    return &ARCHIVEID_NONE;
}

}  // namespace QRN_SPACE
