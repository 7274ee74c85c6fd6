#include "unarchiver/GzipInfo.h"

#include <new>

#include "unarchiver/GzipConstants.h"
#include "utils/IOUtils.h"

namespace QRN_SPACE {

namespace {

const char* const kSource = "../../core/tuskel/src/unarchiver/GzipInfo";
const int kLineExtraMemory = 68;

typedef GzipConstants G;

// Bytes up to a zero byte (consumed, not kept). No length limit: the input
// is finite and an end of stream throws.
std::string readZeroTerminated(InputStream& in) {
    std::string text;
    for (int c = IOUtils::readUChar(in); c != 0; c = IOUtils::readUChar(in)) text.push_back(static_cast<char>(c));
    return text;
}

}  // namespace

GzipInfo::GzipInfo() = default;

GzipInfo::~GzipInfo() = default;

bool GzipInfo::read(InputStream& in, bool headerOnly) {
    char header[G::GZIPHDR];
    if (IOUtils::readFull(in, header, G::GZIPHDR) < G::GZIPHDR) return false;
    // MAGIC
    if (IOUtils::readUShort(header + G::MAGIC_OFFSET) != G::GZIP_MAGIC) return false;
    // CM: deflate, or stored
    int cm = IOUtils::readUChar(header + G::METHOD_OFFSET);
    if (cm != G::DEFLATED && cm != G::STORED) return false;
    // FLG: no reserved bit
    int flg = IOUtils::readUChar(header + G::FLAG_OFFSET);
    if ((flg & G::RESERVED) != 0) return false;
    method = cm;
    flags = flg;
    // MTIME
    mtime = IOUtils::readUInt(header + G::MTIME_OFFSET);
    // XFL
    xflags = IOUtils::readUChar(header + G::XFLAG_OFFSET);
    // OS
    os = IOUtils::readUChar(header + G::OS_OFFSET);
    if (headerOnly) return true;

    // FEXTRA: XLEN, then XLEN bytes
    if ((flags & G::FEXTRA) != 0) _readExtra(in);
    // FNAME
    if ((flags & G::FNAME) != 0) name = readZeroTerminated(in);
    // FCOMMENT
    if ((flags & G::FCOMMENT) != 0) comment = readZeroTerminated(in);
    // FHCRC: kept, never verified
    if ((flags & G::FHCRC) != 0) headerCrc = static_cast<unsigned short>(IOUtils::readUShort(in));
    return true;
}

void GzipInfo::_readExtra(InputStream& in) {
    int xlen = IOUtils::readUShort(in);
    extraLength = xlen;
    if (xlen == 0) return;
    // At the declared length, zeroed, as the read may come up short: at most
    // 64 KiB, once per member, whatever the input.
    extra.reset(new (std::nothrow) char[xlen]());
    if (!extra) throwAt<OutOfMemoryException>("Out of memory", {kSource, kLineExtraMemory});
    // Intended: a short extra field is not an error here; the body that
    // follows then fails to inflate.
    IOUtils::readFull(in, extra.get(), xlen);
}

unsigned short GzipInfo::caculateCrc16() { return headerCrc; }

}  // namespace QRN_SPACE

GzipEntryInfo::GzipEntryInfo() { info = new (std::nothrow) QRN_SPACE::GzipInfo(); }

GzipEntryInfo::~GzipEntryInfo() = default;

QRN_SPACE::GzipInfo& GzipEntryInfo::gzipInfo() { return *static_cast<QRN_SPACE::GzipInfo*>(info); }
