#include "tuskel/CommonBufferBase.h"

#include "util/Log.h"

namespace {

const char* const kSource = "CommonBufferBase";
const int kLineReadByte = 19;
const int kLineReadBlock = 36;
const int kLineWriteByteLimit = 46;
const int kLineWriteByteSeek = 51;
const int kLineWriteBlockLimit = 61;
const int kLineWriteBlockSeek = 66;
const int kLineInsertByte = 74;
const int kLineInsertBlock = 79;
const int kLineCutByte = 85;
const int kLineCutBlock = 90;
const int kLineAppendByte = 98;
const int kLineAppendBlock = 108;
const int kLineTruncate = 116;

// Origins of CommonBuffer::seek.
const int kSeekSet = 0;
const int kSeekEnd = 2;

const int kFailed = -1;

const char* const kSeekFail = "seek fail\n";
const char* const kOverLimit = "off bigger than the buffer size\n";

void logError(int line, const char* text) {
    logAt(kSource, line);
    Utils::errMsg("%s", text);
}

}  // namespace

CommonBufferBase::CommonBufferBase(CommonBuffer* buffer, long limit) : buffer(buffer), limit(limit) {}

CommonBufferBase::~CommonBufferBase() { buffer = nullptr; }

bool CommonBufferBase::_seekTo(long off) { return buffer != nullptr && buffer->seek(kSeekSet, off) == off; }

// Only the seek to the end answering 0 counts as success, so over a host
// whose seek answers the new position append() works on an empty buffer
// only. Intended.
bool CommonBufferBase::_seekToEnd() { return buffer != nullptr && buffer->seek(kSeekEnd, 0) == 0; }

bool CommonBufferBase::_exceedsLimit(long off, long len) const {
    if (limit <= 0) return false;
    long end;
    // A sum past the range of long is past any limit; one below it is not.
    if (__builtin_add_overflow(off, len, &end)) return len > 0;
    return end > limit;
}

int CommonBufferBase::read(long off) {
    if (!_seekTo(off)) {
        logError(kLineReadByte, kSeekFail);
        return kFailed;
    }
    char c;
    // A short host read is not logged: it is the ordinary end of the data.
    if (buffer->read(&c, 1) != 1) return kFailed;
    return static_cast<unsigned char>(c);
}

int CommonBufferBase::read(long off, char* buf, int len) {
    if (!_seekTo(off)) {
        logError(kLineReadBlock, kSeekFail);
        return kFailed;
    }
    return buffer->read(buf, len);
}

void CommonBufferBase::write(long off, char c) {
    if (_exceedsLimit(off, 1)) {
        logError(kLineWriteByteLimit, kOverLimit);
        return;
    }
    if (!_seekTo(off)) {
        logError(kLineWriteByteSeek, kSeekFail);
        return;
    }
    buffer->write(&c, 1);
}

int CommonBufferBase::write(long off, const char* buf, int len) {
    if (_exceedsLimit(off, len)) {
        logError(kLineWriteBlockLimit, kOverLimit);
        return kFailed;
    }
    if (!_seekTo(off)) {
        logError(kLineWriteBlockSeek, "seek fail");  // without the line feed: intended
        return kFailed;
    }
    return buffer->write(buf, len);
}

void CommonBufferBase::insert(long, char) { logError(kLineInsertByte, "insert function is null"); }

int CommonBufferBase::insert(long, const char*, int) {
    logError(kLineInsertBlock, "insert function is null");
    return kFailed;
}

void CommonBufferBase::cut(long) { logError(kLineCutByte, "cut function is null"); }

int CommonBufferBase::cut(long, int) {
    logError(kLineCutBlock, "cut function is null");
    return kFailed;
}

// append() has no limit check, unlike write(): intended.
void CommonBufferBase::append(char c) {
    if (!_seekToEnd()) {
        logError(kLineAppendByte, "append(c):seek fail");
        return;
    }
    buffer->write(&c, 1);
}

int CommonBufferBase::append(const char* buf, int len) {
    if (!_seekToEnd()) {
        logError(kLineAppendBlock, "append(buf,len):seek fail");
        return kFailed;
    }
    return buffer->write(buf, len);
}

// The text names another operation; it is kept as the log has always read.
void CommonBufferBase::truncate(long) { logError(kLineTruncate, "read(off,buf,len):seek fail"); }
