#ifndef TUSKEL_UNARCHIVER_ZIPENTRYINFO_H
#define TUSKEL_UNARCHIVER_ZIPENTRYINFO_H

#include "unarchiver/Tuskel.h"
#include "unarchiver/ZipInfo.h"

namespace QRN_SPACE {

/// A ZIP entry as offered to the entry processor.
///
/// Owns its ZipInfo (the base's `info`) and deletes it with itself. The
/// final entry of a walk has an empty name and carries the central
/// directory in its ZipInfo.
/// @ingroup archive
class TUSKEL_API ZipEntryInfo : public ArchiveEntryInfo {
public:
    /// Takes ownership of `zipInfo`, which must not be null.
    explicit ZipEntryInfo(ZipInfo* zipInfo);
    ~ZipEntryInfo() override;

    /// The header record, owned by the entry.
    ZipInfo& zipInfo();
    /// The header record, owned by the entry.
    const ZipInfo& zipInfo() const;
};

/// Tells whether an entry's sizes and CRC were known from its local header
/// (flag bit 3 clear) rather than from a descriptor after its data.
/// Stateless.
/// @ingroup archive
class TUSKEL_API ZipArchiveProcessor : public ArchiveProcessor {
public:
    ~ZipArchiveProcessor() override;
    /// True when flag bit 3 of the entry's ZipInfo is clear; false for an
    /// entry that carries no ZipInfo.
    bool process(const ArchiveEntryInfo* info) override;
};

}  // namespace QRN_SPACE

#endif
