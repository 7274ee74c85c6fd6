#include "unarchiver/ZipInfo.h"

#include <cstring>
#include <new>

#include "unarchiver/ZipConstants.h"
#include "utils/IOUtils.h"
#include "ZipFields.h"

namespace QRN_SPACE {

namespace {

// Where the exceptions thrown here say they come from.
const char* const kSource = "../../core/tuskel/src/unarchiver/ZipInfo";
const int kLineEncrypted = 35;
const int kLineBadName = 44;
const int kLineNoMemory = 60;
const int kSignatureSize = 4;

typedef ZipConstants Z;

}  // namespace

ZipInfo::~ZipInfo() = default;

bool ZipInfo::hasDataDescriptor() const { return (flags & Z::FLAG_DATA_DESCRIPTOR) != 0; }

bool ZipInfo::read(InputStream& in, bool headerOnly) {
    char h[Z::LOCHDR];
    if (IOUtils::readFull(in, h, Z::LOCHDR) < Z::LOCHDR) return false;
    if (static_cast<int>(IOUtils::readUInt(h)) != Z::LOCSIG) return false;
    versionNeeded = IOUtils::readUShort(h + Z::LOCVER);  // version needed to extract
    flags = IOUtils::readUShort(h + Z::LOCFLG);          // general purpose bits
    if (flags & Z::FLAG_ENCRYPTED) throwAt<ArchivingException>("encrypted ZIP entry", {kSource, kLineEncrypted});
    method = IOUtils::readUShort(h + Z::LOCHOW);  // compression method
    time = IOUtils::readUInt(h + Z::LOCTIM);      // DOS time and date
    if (!hasDataDescriptor()) {  // otherwise these follow the data
        crc = IOUtils::readUInt(h + Z::LOCCRC);               // CRC-32
        compressedSize = IOUtils::readUInt(h + Z::LOCSIZ);    // compressed size
        uncompressedSize = IOUtils::readUInt(h + Z::LOCLEN);  // uncompressed size
    }
    int nameLength = IOUtils::readUShort(h + Z::LOCNAM);  // file name length
    if (nameLength > Z::MAXNAMELENGTH) throwAt<ArchivingException>("bad entry name", {kSource, kLineBadName});
    extraLength = IOUtils::readUShort(h + Z::LOCEXT);  // extra field length
    if (headerOnly) return true;

    // The caller marked the header's first byte; come back to the end of the
    // fixed part however the stream delivered it.
    in.reset();
    in.skip(Z::LOCHDR);
    // Name and extra field in one read; the name must arrive whole, a short
    // extra field is not an error.
    zipfields::Block block;
    int got = block.read(in, nameLength + extraLength, nameLength);
    const char* p = block.get();
    name.assign(p, static_cast<size_t>(nameLength));
    if (extraLength > 0) {
        // At the declared length, zero-padded: more than arrived only where
        // the input ends inside the field, and at most 64 KiB.
        extra.reset(new (std::nothrow) char[static_cast<size_t>(extraLength)]());
        if (!extra) throwAt<OutOfMemoryException>("Out of memory", {kSource, kLineNoMemory});
        std::memcpy(extra.get(), p + nameLength, static_cast<size_t>(got - nameLength));
    }
    return true;
}

void ZipInfo::readDataDescriptor(InputStream& in) {
    if (!hasDataDescriptor()) return;
    char d[Z::EXTHDR];
    in.mark(Z::EXTHDR);
    if (IOUtils::readFull(in, d, Z::EXTHDR) < Z::EXTHDR) {
        in.reset();
        return;
    }
    int first = static_cast<int>(IOUtils::readUInt(d));
    in.reset();
    if (first == Z::LOCSIG || first == Z::CENSIG) return;  // no descriptor: the next record follows
    // The signature is optional; without it every field sits 4 bytes earlier.
    int shift = first == Z::EXTSIG ? 0 : kSignatureSize;
    crc = IOUtils::readUInt(d + Z::EXTCRC - shift);               // CRC-32
    compressedSize = IOUtils::readUInt(d + Z::EXTSIZ - shift);    // compressed size
    uncompressedSize = IOUtils::readUInt(d + Z::EXTLEN - shift);  // uncompressed size
    in.skip(Z::EXTHDR - shift);
}

int ZipInfo::readCentralDirs(InputStream& in, int count) {
    centralDirRead = true;
    flags = 0;
    int good = 0;
    // The count is of local headers taken up, 30 bytes of input each at the
    // least: the directory is bounded by the input, never by a header field.
    if (count > 0) centralDirs.reserve(centralDirs.size() + static_cast<size_t>(count));
    // At most `count` reads; every record that reads consumes its 46 bytes.
    for (int i = 0; i < count; ++i) {
        centralDirs.emplace_back();
        if (centralDirs.back().read(in)) ++good;
    }
    return good;
}

}  // namespace QRN_SPACE
