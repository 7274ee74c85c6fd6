#ifndef TUSKEL_UNARCHIVER_CRC_H
#define TUSKEL_UNARCHIVER_CRC_H

/// @file
/// Incremental checksums. The archive identifiers hand out fresh objects
/// (ArchiveId::crc()); the caller owns each one.

#include "lang/Export.h"

namespace QRN_SPACE {

/// An incremental checksum.
///
/// Never throws. One object serves one thread at a time; objects share
/// nothing.
/// @ingroup archive
class TUSKEL_API Crc {
public:
    Crc() = default;
    Crc(const Crc&) = delete;
    Crc& operator=(const Crc&) = delete;
    virtual ~Crc();

    /// Adds one byte; answers the checksum of everything added so far.
    virtual unsigned int add(char c) = 0;
    /// Adds `n` bytes at `p` (read, not kept); answers the checksum so far. A
    /// null `p` adds nothing, whatever `n` is.
    virtual unsigned int add(const void* p, unsigned int n) = 0;
    /// The checksum of everything added so far.
    virtual unsigned int crc() = 0;
};

/// The CRC-32 of ISO 3309 (reflected, polynomial 0xEDB88320), as ZIP and
/// GZIP store it. A fresh object answers 0; "123456789" gives 0xCBF43926.
/// @ingroup archive
class TUSKEL_API Iso3309Crc : public Crc {
public:
    /// The initial state: crc() answers 0.
    Iso3309Crc() = default;
    ~Iso3309Crc() override;

    unsigned int add(char c) override;
    unsigned int add(const void* p, unsigned int n) override;
    unsigned int crc() override;
    /// Back to the initial state, for the next entry; answers this object.
    Iso3309Crc& reset();

private:
    static const unsigned int INITIAL = 0xFFFFFFFFu;
    unsigned int _register = INITIAL;  // pre-conditioned, not yet complemented
};

}  // namespace QRN_SPACE

#endif
