#include "unarchiver/ZipCentralDir.h"

#include "unarchiver/ZipConstants.h"
#include "utils/IOUtils.h"
#include "ZipFields.h"

namespace QRN_SPACE {

namespace {

// Where the exceptions thrown here say they come from.
const char* const kSource = "../../core/tuskel/src/unarchiver/ZipCentralDir";
const int kLineEmptyName = 38;

typedef ZipConstants Z;

}  // namespace

bool ZipCentralDir::read(InputStream& in) {
    char h[Z::CENHDR];
    if (IOUtils::readFull(in, h, Z::CENHDR) < Z::CENHDR) return false;
    if (static_cast<int>(IOUtils::readUInt(h)) != Z::CENSIG) return false;
    versionMadeBy = IOUtils::readUShort(h + Z::CENVEM);       // version made by
    versionNeeded = IOUtils::readUShort(h + Z::CENVER);       // version needed to extract
    flags = IOUtils::readUShort(h + Z::CENFLG);               // general purpose bits
    method = IOUtils::readUShort(h + Z::CENHOW);              // compression method
    time = IOUtils::readUInt(h + Z::CENTIM);                  // DOS time and date
    crc = IOUtils::readUInt(h + Z::CENCRC);                   // CRC-32
    compressedSize = IOUtils::readUInt(h + Z::CENSIZ);        // compressed size
    uncompressedSize = IOUtils::readUInt(h + Z::CENLEN);      // uncompressed size
    int nameLength = IOUtils::readUShort(h + Z::CENNAM);      // file name length
    int extraLength = IOUtils::readUShort(h + Z::CENEXT);     // extra field length
    int commentLength = IOUtils::readUShort(h + Z::CENCOM);   // file comment length
    diskNumberStart = IOUtils::readUShort(h + Z::CENDSK);     // disk number start
    internalAttributes = IOUtils::readUShort(h + Z::CENATT);  // internal attributes
    externalAttributes = IOUtils::readUInt(h + Z::CENATX);    // external attributes
    localHeaderOffset = IOUtils::readUInt(h + Z::CENOFF);     // local header offset
    if (nameLength < 1) throwAt<IOException>("empty file name in central directory", {kSource, kLineEmptyName});
    // Name, extra field and comment follow each other: one read for all.
    int variable = nameLength + extraLength + commentLength;
    zipfields::Block block;
    block.read(in, variable, variable);
    const char* p = block.get();
    name.assign(p, static_cast<size_t>(nameLength));
    extra.assign(p + nameLength, static_cast<size_t>(extraLength));
    comment.assign(p + nameLength + extraLength, static_cast<size_t>(commentLength));
    return true;
}

int ZipCentralDir::getNextDir(InputStream& in, int index) {
    // index + 1 reads at most; each that succeeds consumes its 46 bytes.
    for (int i = 0; i <= index; ++i) {
        if (!read(in)) return -1;
    }
    return index;
}

}  // namespace QRN_SPACE
