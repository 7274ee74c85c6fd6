#include "tuskel/EntryProcessor.h"

#include <new>

#include "util/Log.h"

using QRN_SPACE::ArchiveConstants;
using QRN_SPACE::ArchiveEntryInfo;
using QRN_SPACE::BufferBaseOutputStream;
using QRN_SPACE::OutputStream;

namespace {

const char* const kSource = "EntryProcessor";
const int kLineNullInfo = 13;
const int kLineEntryFound = 26;
const int kLineZeroSize = 33;
const int kLineNoHostBuffer = 40;
const int kLineNoAdapter = 47;
const int kLineNoStream = 53;

void logError(int line, const char* text) {
    logAt(kSource, line);
    Utils::errMsg("%s", text);
}

}  // namespace

EntryProcessor::EntryProcessor(CommonEntryProcessor* processor)
    : processor(processor), entryInfo(nullptr), count(0), outBuffer(nullptr), out(nullptr), gzipSize(0) {}

EntryProcessor::~EntryProcessor() { _release(); }

void EntryProcessor::_release() {
    delete out;
    out = nullptr;
    delete outBuffer;
    outBuffer = nullptr;
    delete entryInfo;
    entryInfo = nullptr;
}

OutputStream* EntryProcessor::processEntry(ArchiveEntryInfo* info, int& action) {
    if (info == nullptr) {
        logError(kLineNullInfo, "entryInfo is NULL");
        return nullptr;
    }
    // The unarchiver is done with the previous entry's stream once it
    // reports the next entry (or the same one again, when it recovers), so
    // that entry's objects go now rather than piling up until the end.
    _release();
    entryInfo = info;

    EntryRecord record;
    record.size = info->size;
    record.usize = info->usize;
    // A GZIP header carries no size; the trailer's ISIZE stands in.
    if (gzipSize > 0 && record.usize == 0) record.usize = gzipSize;

    logAt(kSource, kLineEntryFound);
    Utils::dbgMsg("find entry[%s], usize[%ld]", info->name.c_str(), static_cast<long>(record.usize));

    action = ArchiveConstants::ACTION_DECOMPRESS;
    if (processor == nullptr) return nullptr;
    // Entries of unknown or zero size are never offered to the host.
    if (record.usize == 0) {
        logAt(kSource, kLineZeroSize);
        Utils::dbgMsg("tmp_info.usize == 0");
        return nullptr;
    }

    ++count;
    CommonBuffer* hostBuffer = processor->getBuffer(&record);
    if (hostBuffer == nullptr) {
        logError(kLineNoHostBuffer, "out_buffer == NULL");
        return nullptr;
    }
    // The entry's size is the adapter's write limit: an entry that inflates
    // to more than it declared cannot write past the host's buffer.
    outBuffer = new (std::nothrow) CommonBufferBase(hostBuffer, record.usize);
    if (outBuffer == nullptr) {
        logError(kLineNoAdapter, "out_bb == NULL");
        return nullptr;
    }
    out = new (std::nothrow) BufferBaseOutputStream(outBuffer);
    if (out == nullptr) {
        logError(kLineNoStream, "out == NULL");
        delete outBuffer;
        outBuffer = nullptr;
        return nullptr;
    }
    return out;
}

void EntryProcessor::endUnarchiving() {
    if (processor != nullptr) processor->finish();
    _release();
}
