#include "unarchiver/ZipExeUnarchiver.h"

#include <climits>
#include <new>

#include "io/BufferBaseInputStream.h"

namespace QRN_SPACE {

namespace {

const char* const kSource = "../../core/tuskel/src/unarchiver/ZipExeUnarchiver";
const int kLineStreamMemory = 32;
const int kLineZipMemory = 20;
const int kLineNotZipExe = 49;

// The inner unarchiver, over the executable's stream or buffer.
template <class Source>
ZipUnarchiver* newZip(Source source, ArchiveEntryProcessor& processor, DecompressProcessor* dp) {
    ZipUnarchiver* zip = new (std::nothrow) ZipUnarchiver(source, processor, dp, 0);
    if (zip == nullptr) throwAt<OutOfMemoryException>("Out of memory", {kSource, kLineZipMemory});
    return zip;
}

}  // namespace

ZipExeUnarchiver::ZipExeUnarchiver(InputStream* in, ArchiveEntryProcessor& processor, DecompressProcessor* dp)
    : _in(in), _zip(newZip(in, processor, dp)) {}

ZipExeUnarchiver::ZipExeUnarchiver(BufferBase* buffer, ArchiveEntryProcessor& processor, DecompressProcessor* dp)
    : _in(nullptr) {
    _ownedIn.reset(new (std::nothrow) BufferBaseInputStream(buffer));
    if (!_ownedIn) throwAt<OutOfMemoryException>("Out of memory", {kSource, kLineStreamMemory});
    _in = _ownedIn.get();
    // Over the buffer itself, so that a failed entry can restart through
    // the central directory, whose offsets count from the file's start.
    _zip.reset(newZip(buffer, processor, dp));
}

ZipExeUnarchiver::~ZipExeUnarchiver() = default;

bool ZipExeUnarchiver::checkFormat(InputStream& in) {
    long pos = 0;
    return check_zipexe(in, pos);
}

void ZipExeUnarchiver::start() {
    if (!_zip || _in == nullptr) return;
    long pos = 0;
    if (!check_zipexe(*_in, pos)) throwAt<ArchivingException>("not zip exe format", {kSource, kLineNotZipExe});
    // The local headers are walked from the archive's start; their
    // positions count from there. A marked position past what a long holds
    // (i386) lies past the end of any input here, as it does on x86_64.
    _zip->_in->skip(pos < 0 ? LONG_MAX : pos);
    _zip->start();
}

}  // namespace QRN_SPACE
