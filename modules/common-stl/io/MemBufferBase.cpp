#include "io/MemBufferBase.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <new>

namespace QRN_SPACE {

namespace {

const char* const kSource = "io/BufferBase";
const int kLineBlockData = 331;
const int kLineBlockCut = 387;
const int kLineFirstBlock = 433;
const int kLineNextBlock = 447;
const int kLineInsertFront = 599;
const int kLineInsertInside = 608;

[[noreturn]] void fail(int error, int line) { throwSystemError({kSource, line}, error); }

// pos + len for two non-negative values; a sum past LONG_MAX could never be
// allocated and is refused as such instead of overflowing.
long endOf(long pos, long len) {
    if (pos > LONG_MAX - len) fail(ENOMEM, kLineNextBlock);
    return pos + len;
}

// A new block; a capacity that an int cannot hold or a failed allocation of
// the block itself is reported at `line`.
std::unique_ptr<MemBufferBase::Buffer> newBlock(long start, long capacity, bool exact, int line) {
    if (capacity > INT_MAX) fail(ENOMEM, line);
    MemBufferBase::Buffer* block = new (std::nothrow)
        MemBufferBase::Buffer(start, static_cast<int>(capacity), exact);
    if (block == nullptr) fail(ENOMEM, line);
    return std::unique_ptr<MemBufferBase::Buffer>(block);
}

}  // namespace

// ---- Buffer ----------------------------------------------------------------

MemBufferBase::Buffer::Buffer(long start, int capacity, bool exact)
    : start(start), capacity(capacity), used(0), data(nullptr) {
    if (!exact && this->capacity < MIN_CAPACITY) this->capacity = MIN_CAPACITY;
    if (this->capacity < 1) this->capacity = 1;  // malloc(0) may answer null
    // Zeroed: the block is public, and its bytes past `used` must never
    // show what the allocator last held there.
    data = static_cast<char*>(std::calloc(static_cast<size_t>(this->capacity), 1));
    if (data == nullptr) fail(errno, kLineBlockData);
}

MemBufferBase::Buffer::~Buffer() { std::free(data); }

int MemBufferBase::Buffer::cut(long pos, int len) {
    const int offset = static_cast<int>(pos - start);
    const int n = std::min(len, used - offset);
    if (n == used) {  // every byte goes: the caller drops the block
        used = capacity = 0;
        return n;
    }
    const int rest = used - n;
    char* fresh = static_cast<char*>(std::malloc(static_cast<size_t>(rest)));
    if (fresh == nullptr) fail(errno, kLineBlockCut);
    std::memcpy(fresh, data, static_cast<size_t>(offset));
    std::memcpy(fresh + offset, data + offset + n, static_cast<size_t>(rest - offset));
    std::free(data);
    data = fresh;
    capacity = used = rest;
    return n;
}

// ---- MemBufferBase ---------------------------------------------------------

MemBufferBase::MemBufferBase() { _type = TYPE_MEMORY; }

MemBufferBase::MemBufferBase(long initialCapacity) {
    _type = TYPE_MEMORY;
    try {
        _blocks.push_back(newBlock(0, initialCapacity, false, kLineFirstBlock));
    } catch (...) {
        _valid = false;
    }
}

MemBufferBase::~MemBufferBase() = default;

// The block whose range [start, start + capacity) holds pos; without a hit
// the last block examined (the nearest one); -1 when there are no blocks.
int MemBufferBase::_findBlock(long pos) const {
    const int count = static_cast<int>(_blocks.size());
    if (count == 0) return -1;
    // Sequential access lands in the block of the last lookup or the next
    // one, appends in the last block: try those before searching. The hint
    // is only a guess, checked before use, so a stale one costs nothing.
    const int hint = _hint.load(std::memory_order_relaxed);
    for (int guess : {hint, hint + 1, count - 1}) {
        if (guess >= 0 && guess < count && _covers(guess, pos)) {
            if (guess != hint) _hint.store(guess, std::memory_order_relaxed);
            return guess;
        }
    }
    int lo = 0;
    int hi = count - 1;
    int mid = 0;
    while (lo <= hi) {
        mid = lo + (hi - lo) / 2;
        const Buffer& b = *_blocks[static_cast<size_t>(mid)];
        if (pos < b.start) {
            hi = mid - 1;
        } else if (pos - b.start < b.capacity) {
            _hint.store(mid, std::memory_order_relaxed);
            return mid;
        } else {
            lo = mid + 1;
        }
    }
    return mid;
}

bool MemBufferBase::_covers(int index, long pos) const {
    const Buffer& b = *_blocks[static_cast<size_t>(index)];
    return b.start <= pos && pos - b.start < b.capacity;
}

// The lowest position still held: 0 unless a discarding read released blocks.
long MemBufferBase::_origin() const { return _blocks.empty() ? _size : _blocks.front()->start; }

void MemBufferBase::_checkRetained(long pos) const {
    if (pos < _origin()) _throwOutOfBound();
}

void MemBufferBase::_ensureCapacity(long need) {
    if (need <= _size) return;
    if (_blocks.empty()) {
        // _size is 0 here unless discarding released everything.
        _blocks.push_back(newBlock(_size, need - _size, false, kLineFirstBlock));
        return;
    }
    const Buffer& last = *_blocks.back();
    const long end = last.start + last.capacity;
    if (need <= end) return;
    _blocks.push_back(newBlock(end, need - end, false, kLineNextBlock));
}

// Zero-fills `count` bytes from the end into the room the blocks have.
void MemBufferBase::_pad(long count) {
    if (count < 1) return;
    const size_t n = _blocks.size();
    for (size_t i = static_cast<size_t>(_findBlock(_size)); count > 0 && i < n; ++i) {
        Buffer& b = *_blocks[i];
        const int k = static_cast<int>(std::min<long>(b.capacity - b.used, count));
        std::memset(b.data + b.used, 0, static_cast<size_t>(k));
        b.used += k;
        _size += k;
        count -= k;
    }
}

void MemBufferBase::_cleanupMem(long upTo) {
    if (!_discarded) return;
    const int keep = _findBlock(upTo);
    if (keep > 0) _blocks.erase(_blocks.begin(), _blocks.begin() + keep);
}

int MemBufferBase::_copyOut(long pos, char* buf, int len) const {
    if (pos >= _size) return 0;
    _checkRetained(pos);
    const int n = static_cast<int>(std::min<long>(len, _size - pos));
    int done = 0;
    size_t i = static_cast<size_t>(_findBlock(pos));
    for (;; ++i) {
        const Buffer& b = *_blocks[i];
        const long offset = pos + done - b.start;
        const int k = static_cast<int>(std::min<long>(b.used - offset, n - done));
        std::memcpy(buf + done, b.data + offset, static_cast<size_t>(k));
        done += k;
        if (done == n) break;
    }
    // The next sequential read starts in the last block copied from.
    _hint.store(static_cast<int>(i), std::memory_order_relaxed);
    if (_ahead.follows(pos, pos + n)) _prefetch(i, pos + n, ReadAhead::span(n));
    return n;
}

// Prefetches `n` bytes from `pos` on, starting the search at block i.
void MemBufferBase::_prefetch(size_t i, long pos, long n) const {
    for (const size_t count = _blocks.size(); n > 0 && i < count; ++i) {
        const Buffer& b = *_blocks[i];
        const long offset = std::max<long>(pos - b.start, 0);
        const long k = std::min<long>(b.used - offset, n);
        if (k <= 0) continue;
        ReadAhead::fetch(b.data + offset, k);
        n -= k;
    }
}

int MemBufferBase::read(long pos) {
    char c;
    return read(pos, &c, 1) == 1 ? static_cast<unsigned char>(c) : -1;
}

int MemBufferBase::read(long pos, char* buf, int len) {
    _checkPos(pos);
    if (buf == nullptr || len < 1) return 0;
    {
        ReadGuard hold(_lock);
        if (!_discarded) return _copyOut(pos, buf, len);
    }
    // Releasing blocks changes the list, so a discarding read holds the lock
    // exclusively; the one-reader rule (see the header) still applies.
    WriteGuard hold(_lock);
    const int n = _copyOut(pos, buf, len);
    if (n > 0) _cleanupMem(pos + n);
    return n;
}

int MemBufferBase::_writeLocked(long pos, const char* buf, int len) {
    _checkRetained(std::min(pos, _size));
    _ensureCapacity(endOf(pos, len));
    _pad(pos - _size);  // zero gap from the old end up to pos
    long at = pos;
    int done = 0;
    const size_t count = _blocks.size();
    for (size_t i = static_cast<size_t>(_findBlock(pos)); done < len && i < count; ++i) {
        Buffer& b = *_blocks[i];
        const long offset = at - b.start;
        if (offset < 0 || offset > b.used) continue;
        const int k = static_cast<int>(std::min<long>(b.capacity - offset, len - done));
        std::memcpy(b.data + offset, buf + done, static_cast<size_t>(k));
        b.used = static_cast<int>(std::max<long>(b.used, offset + k));
        at += k;
        done += k;
    }
    _size = std::max(_size, at);
    return len;
}

void MemBufferBase::write(long pos, char c) { write(pos, &c, 1); }

int MemBufferBase::write(long pos, const char* buf, int len) {
    _checkPos(pos);
    if (buf == nullptr || len < 1) return 0;
    WriteGuard hold(_lock);
    return _writeLocked(pos, buf, len);
}

void MemBufferBase::append(char c) { append(&c, 1); }

// Appends at the end under one lock, so concurrent appends never land on the
// same position.
int MemBufferBase::append(const char* buf, int len) {
    _checkValid();
    if (buf == nullptr || len < 1) return 0;
    WriteGuard hold(_lock);
    return _writeLocked(_size, buf, len);
}

void MemBufferBase::insert(long pos, char c) { insert(pos, &c, 1); }

int MemBufferBase::insert(long pos, const char* buf, int len) {
    _checkPos(pos);
    if (buf == nullptr || len < 1) return 0;
    // Intended: at or past the end an insert is a plain write.
    if (pos >= getSize()) return write(pos, buf, len);
    WriteGuard hold(_lock);
    if (pos >= _size) return _writeLocked(pos, buf, len);  // shrunk meanwhile
    _checkRetained(pos);
    (void)endOf(_size, len);  // refuses a grown size past LONG_MAX
    const size_t i = static_cast<size_t>(_findBlock(pos));
    Buffer& b = *_blocks[i];
    if (pos == b.start) {
        // A block of its own in front of b; exact, so that it stays full.
        Block front = newBlock(pos, len, true, kLineInsertFront);
        std::memcpy(front->data, buf, static_cast<size_t>(len));
        front->used = len;
        _blocks.insert(_blocks.begin() + static_cast<long>(i), std::move(front));
    } else {
        const int offset = static_cast<int>(pos - b.start);
        Block merged = newBlock(b.start, static_cast<long>(len) + b.used, true, kLineInsertInside);
        std::memcpy(merged->data, b.data, static_cast<size_t>(offset));
        std::memcpy(merged->data + offset, buf, static_cast<size_t>(len));
        std::memcpy(merged->data + offset + len, b.data + offset, static_cast<size_t>(b.used - offset));
        merged->used = len + b.used;
        _blocks[i] = std::move(merged);
    }
    for (size_t k = i + 1; k < _blocks.size(); ++k) _blocks[k]->start += len;
    _size += len;
    return len;
}

void MemBufferBase::cut(long pos) { cut(pos, 1); }

int MemBufferBase::cut(long pos, int len) {
    _checkPos(pos);
    if (len < 1) return 0;
    WriteGuard hold(_lock);
    if (pos >= _size) return 0;
    _checkRetained(pos);
    return _cutBlocks(pos, len);
}

int MemBufferBase::_cutBlocks(long pos, int len) {
    const size_t first = static_cast<size_t>(_findBlock(pos));
    const long firstStart = _blocks[first]->start;
    size_t i = first;
    int removed = 0;
    try {
        while (removed < len && i < _blocks.size()) {
            Buffer& b = *_blocks[i];
            removed += b.cut(pos + removed, len - removed);
            if (b.used == 0) {
                _blocks.erase(_blocks.begin() + static_cast<long>(i));
            } else {
                ++i;
            }
        }
    } catch (...) {
        // A block could not be rebuilt: keep what was cut consistent.
        _restart(first, firstStart);
        _size -= removed;
        throw;
    }
    _restart(first, firstStart);
    _size -= removed;
    return removed;
}

// Closes the gaps a cut left: from index `from` on, each block starts where
// the previous one's content ends.
void MemBufferBase::_restart(size_t from, long start) {
    for (size_t k = from; k < _blocks.size(); ++k) {
        _blocks[k]->start = start;
        start += _blocks[k]->used;
    }
}

void MemBufferBase::truncate(long newSize) {
    _checkPos(newSize);
    WriteGuard hold(_lock);
    if (newSize >= _size) return;
    if (newSize < _origin()) {
        // Everything still held lies past newSize.
        _blocks.clear();
        _size = newSize;
        return;
    }
    const size_t i = static_cast<size_t>(_findBlock(newSize));
    _blocks[i]->used = static_cast<int>(newSize - _blocks[i]->start);
    _blocks.erase(_blocks.begin() + static_cast<long>(i) + 1, _blocks.end());
    _size = newSize;
}

long MemBufferBase::getSize() const {
    ReadGuard hold(_lock);
    return _size;
}

void MemBufferBase::discardUsedBuffer() {
    WriteGuard hold(_lock);
    _discarded = true;
}

}  // namespace QRN_SPACE
