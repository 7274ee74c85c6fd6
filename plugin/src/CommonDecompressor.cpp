#include "tuskel/CommonDecompressor.h"

#include <cxxabi.h>

#include <climits>
#include <exception>
#include <memory>

#include "io/BufferBaseInputStream.h"
#include "tuskel/CommonBufferBase.h"
#include "tuskel/EntryProcessor.h"
#include "unarchiver/ArchiveId.h"
#include "util/Log.h"
#include "utils/IOUtils.h"

using QRN_SPACE::ArchiveFactory;
using QRN_SPACE::ArchiveId;
using QRN_SPACE::BufferBaseInputStream;
using QRN_SPACE::IOUtils;
using QRN_SPACE::Unarchiver;

namespace {

const char* const kSource = "CommonDecompressor";
const int kLineNullArgument = 19;
const int kLineNoUnarchiver = 43;
const int kLineRunFailed = 52;
const int kLineSetUpFailed = 63;
const int kLineNotSupported = 66;

// Origins of CommonBuffer::seek.
const int kSeekSet = 0;
const int kSeekEnd = 2;

// The GZIP trailer ends with ISIZE, four bytes.
const long kGzipIsizeLength = 4;

// The text logged for a failure that is not one of the library's own.
const char* const kUnknownFailure = "unknown exception";

int failed(int line, const char* message) {
    logAt(kSource, line);
    Utils::errMsg("Exception[%s]", message);
    return CommonDecompressor::RESULT_FAILED;
}

int toMarkLimit(long size) { return size > INT_MAX ? INT_MAX : static_cast<int>(size); }

// The uncompressed size in the GZIP trailer: the last four bytes of the
// input. The stream is left where it was.
int readGzipTrailerSize(BufferBaseInputStream& stream, long inputSize) {
    stream.mark(toMarkLimit(inputSize));
    stream.skip(inputSize - kGzipIsizeLength);
    int size = IOUtils::readUInt(stream);
    stream.reset();
    return size;
}

// Runs work and turns whatever it throws into result 1 with one log line at
// `line`: nothing escapes to the host (a thread being cancelled is the one
// unwinding that must go on).
template <class Work>
int guarded(int line, Work&& work) {
    try {
        return work();
    } catch (QRN_SPACE::Exception& e) {
        return failed(line, e.toString());
    } catch (abi::__forced_unwind&) {
        throw;
    } catch (std::exception& e) {
        return failed(line, e.what());
    } catch (...) {
        return failed(line, kUnknownFailure);
    }
}

// Identifies the input held in hb and unpacks it into processor. The locals
// go in reverse order of creation: unarchiver, entry processor, stream,
// adapter.
int unpack(CommonBuffer* hb, CommonEntryProcessor* processor) {
    // The results of the two seeks are not checked: a host that cannot seek
    // shows up as input that no format accepts.
    hb->seek(kSeekEnd, 0);
    long inputSize = hb->tell();
    hb->seek(kSeekSet, 0);

    CommonBufferBase input(hb, inputSize);
    BufferBaseInputStream stream(&input);
    stream.mark(toMarkLimit(inputSize));

    ArchiveId* id = ArchiveFactory::identify(stream);
    if (id == &QRN_SPACE::ARCHIVEID_NONE) {
        logAt(kSource, kLineNotSupported);
        Utils::dbgMsg("Not find the archiver, not support");
        return CommonDecompressor::RESULT_UNSUPPORTED;
    }
    stream.reset();

    EntryProcessor entries(processor);
    if (Utils::check_gzip(stream)) entries.gzipSize = readGzipTrailerSize(stream, inputSize);

    std::unique_ptr<Unarchiver> unarchiver(id->unarchiver(&stream, entries, nullptr));
    if (!unarchiver) {
        logAt(kSource, kLineNoUnarchiver);
        Utils::errMsg("unarchiver is NULL");
        return CommonDecompressor::RESULT_FAILED;
    }
    return guarded(kLineRunFailed, [&] {
        unarchiver->start();
        return CommonDecompressor::RESULT_OK;
    });
}

}  // namespace

int CommonDecompressor::decompress(CommonBuffer* hb, CommonEntryProcessor* processor) {
    if (hb == nullptr || processor == nullptr) {
        logAt(kSource, kLineNullArgument);
        Utils::errMsg("hb == NULL || processor == NULL");
        return RESULT_NULL_ARGUMENT;
    }
    // Failures while setting up, identifying or creating the unarchiver.
    return guarded(kLineSetUpFailed, [&] { return unpack(hb, processor); });
}

void CommonDecompressor::setLogger(int newLevel, void (*newCallback)(const char*)) {
    level = newLevel;
    callback = newCallback;
    ops.level.store(newLevel, std::memory_order_relaxed);
    ops.callback.store(newCallback, std::memory_order_relaxed);
}

// Deliberately a no-op: the library has no options.
void CommonDecompressor::setOptions(int, void*) {}
