#include "unarchiver/GzipUnarchiver.h"

#include <cstring>
#include <new>

#include "io/BufferBaseInputStream.h"
#include "unarchiver/DeflateDecompressor.h"
#include "unarchiver/GzipConstants.h"
#include "util/Log.h"
#include "utils/IOUtils.h"

namespace QRN_SPACE {

namespace {

const char* const kSource = "../../core/tuskel/src/unarchiver/GzipUnarchiver";
const int kLineStreamMemory = 36;
const int kLineEntryMemory = 56;
const int kLineNotGzip = 59;
const int kLineAborted = 84;

const int kCopyBlock = 1024;
const int kTrailer = GzipConstants::TRAILER_SIZE;
const int kCrcSize = 4;  // the trailer: CRC-32, then ISIZE

typedef ArchiveConstants A;

}  // namespace

GzipUnarchiver::GzipUnarchiver(InputStream* in, ArchiveEntryProcessor& processor, DecompressProcessor* dp)
    : _in(in), _processor(processor), _dp(dp) {}

GzipUnarchiver::GzipUnarchiver(BufferBase* buffer, ArchiveEntryProcessor& processor, DecompressProcessor* dp)
    : _in(nullptr), _processor(processor), _dp(dp) {
    _ownedIn.reset(new (std::nothrow) BufferBaseInputStream(buffer));
    if (!_ownedIn) throwAt<OutOfMemoryException>("Out of memory", {kSource, kLineStreamMemory});
    _in = _ownedIn.get();
}

GzipUnarchiver::~GzipUnarchiver() = default;

bool GzipUnarchiver::checkFormat(InputStream& in) {
    in.mark(GzipConstants::GZIPHDR);
    GzipInfo header;
    bool isGzip = header.read(in, true);
    in.reset();
    return isGzip;
}

void GzipUnarchiver::start() {
    if (_dp != nullptr) _dp->init();
    _processor.beginUnarchiving();

    // Ours until processEntry takes it; deleted on any failure before that.
    std::unique_ptr<::GzipEntryInfo> entry(new (std::nothrow)::GzipEntryInfo());
    if (!entry || entry->info == nullptr) throwAt<OutOfMemoryException>("Out of memory", {kSource, kLineEntryMemory});
    GzipInfo& header = entry->gzipInfo();
    if (_in == nullptr || !header.read(*_in, false)) {
        throwAt<ArchivingException>("non-gzip format", {kSource, kLineNotGzip});
    }
    entry->name = header.name;
    entry->algorithm = header.method == GzipConstants::DEFLATED ? A::ALGORITHM_DEFLATE : A::ALGORITHM_STORED;
    entry->time = header.mtime;
    // Intended: the trailer is read after the body, so the processor sees 0
    // here rather than a size looked up at the end of the file.
    entry->usize = static_cast<int>(header.isize);

    int action = A::ACTION_SKIP;
    ::GzipEntryInfo& offered = *entry;
    OutputStream* out = _processor.processEntry(entry.release(), action);
    _act(action, offered, out);
    if (out != nullptr) {
        out->flush();
        out->close();
    }
    _processor.endUnarchiving();
    // Intended: a second member, or anything else after the first trailer,
    // is left unread.
}

void GzipUnarchiver::_act(int action, ::GzipEntryInfo& entry, OutputStream* out) {
    switch (action) {
    case A::ACTION_ABORT:
        throwAt<ArchivingException>("Archiving aborted", {kSource, kLineAborted});
    case A::ACTION_COPY:
        if (out != nullptr) readAndWrite(*out, entry);
        break;
    case A::ACTION_DECOMPRESS:
        if (entry.algorithm == A::ALGORITHM_STORED) {
            if (out != nullptr) readAndWrite(*out, entry);
        } else {
            _inflate(entry, out);
        }
        break;
    default:  // skip, and any code the unarchivers do not know
        IOUtils::skip(*_in);
        break;
    }
}

void GzipUnarchiver::_inflate(::GzipEntryInfo& entry, OutputStream* out) {
    DeflateDecompressor inflater(true, _dp);
    if (out != nullptr) inflater.decompress(*_in, 0, *out);
    // Recorded for the processor; intended: never compared with the data.
    GzipInfo& header = entry.gzipInfo();
    header.crc32 = static_cast<unsigned int>(IOUtils::readUInt(*_in));
    header.isize = static_cast<unsigned int>(IOUtils::readUInt(*_in));
}

bool GzipUnarchiver::readAndWrite(OutputStream& out, ArchiveEntryInfo& info) {
    char block[kCopyBlock];
    char tail[kTrailer];  // the last bytes seen, across block boundaries
    long seen = 0;
    for (int n; _in != nullptr && (n = _in->read(block, kCopyBlock)) >= 1;) {
        out.write(block, n);
        if (n >= kTrailer) {
            std::memcpy(tail, block + n - kTrailer, kTrailer);
        } else {
            std::memmove(tail, tail + n, static_cast<size_t>(kTrailer - n));
            std::memcpy(tail + kTrailer - n, block, static_cast<size_t>(n));
        }
        seen += n;
    }
    GzipInfo* header = dynamic_cast<GzipInfo*>(info.info);
    if (seen >= kTrailer && header != nullptr) {
        header->crc32 = IOUtils::readUInt(tail);
        header->isize = IOUtils::readUInt(tail + kCrcSize);
    }
    return true;
}

}  // namespace QRN_SPACE

bool Utils::check_gzip(QRN_SPACE::InputStream& in) {
    in.mark(2);
    int magic = QRN_SPACE::IOUtils::readUShort(in);
    in.reset();
    return magic == QRN_SPACE::GzipConstants::GZIP_MAGIC;
}
