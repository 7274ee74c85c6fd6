#include "io/SmartBufferBase.h"

#include <algorithm>
#include <climits>
#include <new>

#include "io/ContinuousMemBufferBase.h"
#include "io/FileBufferBase.h"
#include "io/MemBufferBase.h"

namespace QRN_SPACE {

namespace {

const ErrorSite kNoFileBuffer{"io/BufferBase", 1118};
const int kChunk = 1024;  // the step of the move to a file

// from + len, saturating: a sum past LONG_MAX stays there instead of
// wrapping into a small bound. A length below 1 adds nothing.
long endOf(long from, long len) {
    if (len < 1) return from;
    return from > LONG_MAX - len ? LONG_MAX : from + len;
}

}  // namespace

BufferBasePolicy SmartBufferBase::_policy = POLICY_MEM_SMART;
long SmartBufferBase::_barrier = 1048576;
std::string SmartBufferBase::_basePath;

SmartBufferBase::SmartBufferBase() { _init(0, _policy); }

SmartBufferBase::SmartBufferBase(BufferBasePolicy policy) { _init(0, policy); }

SmartBufferBase::SmartBufferBase(long initialSize) { _init(initialSize, _policy); }

SmartBufferBase::SmartBufferBase(long initialSize, BufferBasePolicy policy) { _init(initialSize, policy); }

SmartBufferBase::~SmartBufferBase() = default;

void SmartBufferBase::_init(long initialSize, BufferBasePolicy policy) {
    _type = TYPE_SMART;
    _inner.reset();
    _mayMigrate = false;
    _sizeBound = 0;
    const bool large = initialSize > _barrier;
    switch (policy) {
        case POLICY_MEM:
            _inner.reset(new MemBufferBase(initialSize));
            break;
        case POLICY_MEM_SMART:
            _inner.reset(large ? static_cast<BufferBase*>(new FileBufferBase()) : new MemBufferBase(initialSize));
            _mayMigrate = !large;
            break;
        case POLICY_CONTINUOUS_MEM:
            _inner.reset(new ContinuousMemBufferBase(initialSize));
            break;
        case POLICY_CONTINUOUS_MEM_SMART:
            _inner.reset(large ? static_cast<BufferBase*>(new FileBufferBase())
                               : new ContinuousMemBufferBase(initialSize));
            _mayMigrate = !large;
            break;
        case POLICY_FILE:
            _inner.reset(_basePath.empty() ? new FileBufferBase() : new FileBufferBase(_basePath.c_str()));
            break;
    }
}

// Moves a memory store past the barrier into an anonymous temporary file,
// copying in 1024-byte steps. Should the copy fail (no temporary file, a
// full disk), the exception leaves the memory store in place, the file
// buffer is released with it, and the next checked operation tries again.
void SmartBufferBase::_migrate() {
    std::unique_ptr<FileBufferBase> file(new (std::nothrow) FileBufferBase());
    if (!file) throwAt<OutOfMemoryException>("Out of memory", kNoFileBuffer);
    // One flush for the whole copy rather than one per step; a failure
    // still fails the move, and the memory store stays.
    file->_beginBatch();
    char chunk[kChunk];
    for (long pos = 0, n; (n = _inner->read(pos, chunk, kChunk)) >= 1; pos += n) {
        file->append(chunk, static_cast<int>(n));
    }
    file->_endBatch();
    _inner = std::move(file);
    _mayMigrate = false;
}

int SmartBufferBase::read(long pos) { return _store().read(pos); }

int SmartBufferBase::read(long pos, char* buf, int len) { return _store().read(pos, buf, len); }

void SmartBufferBase::write(long pos, char c) {
    _checkBarrier();
    _mayGrowTo(endOf(pos, 1));
    _store().write(pos, c);
}

int SmartBufferBase::write(long pos, const char* buf, int len) {
    _checkBarrier();
    _mayGrowTo(endOf(pos, len));
    return _store().write(pos, buf, len);
}

// Past the end a store grows to pos + len or by len: both stay within the
// bound moved to pos first.
void SmartBufferBase::insert(long pos, char c) {
    _checkBarrier();
    _mayGrowTo(endOf(std::max(_sizeBound, pos), 1));
    _store().insert(pos, c);
}

int SmartBufferBase::insert(long pos, const char* buf, int len) {
    _checkBarrier();
    _mayGrowTo(endOf(std::max(_sizeBound, pos), len));
    return _store().insert(pos, buf, len);
}

void SmartBufferBase::cut(long pos) { _store().cut(pos); }  // unchecked: intended

int SmartBufferBase::cut(long pos, int len) {
    _checkBarrier();
    return _store().cut(pos, len);
}

void SmartBufferBase::append(char c) {
    _checkBarrier();
    _mayGrowTo(endOf(_sizeBound, 1));
    _store().append(c);
}

// Unchecked, so block appends never move the store: intended.
int SmartBufferBase::append(const char* buf, int len) {
    _mayGrowTo(endOf(_sizeBound, len));
    return _store().append(buf, len);
}

void SmartBufferBase::truncate(long newSize) { _store().truncate(newSize); }

long SmartBufferBase::getSize() const { return _inner ? _inner->getSize() : _size; }

bool SmartBufferBase::isValid() const { return _inner && _inner->isValid(); }

void SmartBufferBase::discardUsedBuffer() {
    _discarded = true;
    if (_inner) _inner->discardUsedBuffer();
}

char* SmartBufferBase::getMemAddress() { return _inner ? _inner->getMemAddress() : nullptr; }

int SmartBufferBase::getFileDescriptor() { return _inner ? _inner->getFileDescriptor() : -1; }

}  // namespace QRN_SPACE
