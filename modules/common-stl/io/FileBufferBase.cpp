#include "io/FileBufferBase.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <new>
#include <vector>

namespace QRN_SPACE {

namespace {

// Where each failure is reported.
const char* const kHeader = "modules/common-stl/include/io/BufferBase";
const char* const kSource = "io/BufferBase";
const ErrorSite kPadFailed{kHeader, 346};
const ErrorSite kShortWrite{kHeader, 355};
const ErrorSite kSeekFailed{kHeader, 364};
const ErrorSite kGetcFailed{kSource, 791};
const ErrorSite kMoveUpFailed{kSource, 874};
const ErrorSite kMoveDownFailed{kSource, 890};
const ErrorSite kCloseUnnamed{kSource, 1017};
const ErrorSite kOpenUnnamed{kSource, 1032};

const long kChunk = 1024;  // the step of a tail move
const size_t kBatchBuffer = 64 * 1024;
const char* const kNoName = "The method is not supported, if the file name is empty.";

// pos + len for two non-negative values. No file reaches past LONG_MAX, so
// a larger end is refused as too large instead of overflowing.
long endOf(long pos, long len) {
    if (pos > LONG_MAX - len) throwSystemError(kShortWrite, EFBIG);
    return pos + len;
}

}  // namespace

FileBufferBase::FileBufferBase() { _init(); }

FileBufferBase::FileBufferBase(const char* directory) : _path(directory != nullptr ? directory : "") { _init(); }

void FileBufferBase::_init() {
    _type = TYPE_FILE;
    _valid = false;
    if (_path.empty()) {
        _file = std::tmpfile();
    } else {
        _path += "/XXXXXX";
        std::vector<char> name(_path.begin(), _path.end());
        name.push_back('\0');
        const int fd = mkstemp(name.data());
        if (fd != -1) {
            _path = name.data();
            _created = true;
            _file = fdopen(fd, "wb+");
            if (_file == nullptr) ::close(fd);
        }
    }
    _valid = _file != nullptr;
}

FileBufferBase::~FileBufferBase() {
    if (_file != nullptr) std::fclose(_file);
    if (_created) unlink(_path.c_str());
}

void FileBufferBase::close() {
    if (_path.empty()) throwAt<IOException>(kNoName, kCloseUnnamed);
    Monitor hold(_lock);
    if (!_valid) return;
    std::fclose(_file);
    _file = nullptr;
    _valid = false;
    _streamAt = -1;
}

void FileBufferBase::open() {
    if (_path.empty()) throwAt<IOException>(kNoName, kOpenUnnamed);
    Monitor hold(_lock);
    if (_valid) return;
    _file = std::fopen(_path.c_str(), "wb+");  // intended: empties the file, _size stays
    if (_file == nullptr) return;
    _streamAt = -1;
    _created = true;
    _valid = true;
}

// Raises the system error; the stream's error and end flags are cleared so
// that the next operation starts afresh.
void FileBufferBase::_fail(int error, ErrorSite site) {
    std::clearerr(_file);
    _streamAt = -1;
    throwSystemError(site, error);
}

// Places the stream at pos. Appends and sequential reads find it there
// already; only a write after a read seeks anyway, as stdio requires.
void FileBufferBase::_seek(long pos, bool forWrite) {
    if (pos == _streamAt && !(forWrite && _reading)) return;
    if (std::fseek(_file, pos, SEEK_SET) != 0) _fail(errno, kSeekFailed);
    _streamAt = pos;
}

// Records where a transfer left the stream.
void FileBufferBase::_moved(long to, bool reading) {
    _streamAt = to;
    _reading = reading;
}

// Reads exactly `len` bytes at `pos`. A file that ends early (cut from
// outside, or emptied by open()) is an I/O error: errno says nothing then.
void FileBufferBase::_readAt(long pos, char* buf, long len, ErrorSite site) {
    _seek(pos, false);
    if (std::fread(buf, 1, static_cast<size_t>(len), _file) != static_cast<size_t>(len)) {
        _fail(std::ferror(_file) ? errno : EIO, site);
    }
    _moved(pos + len, true);
}

// Writes and flushes, so that a failure shows in the operation that made it
// (or, in a batch, at its end).
void FileBufferBase::_writeAt(long pos, const char* buf, long len) {
    _seek(pos, true);
    const size_t n = static_cast<size_t>(len);
    if (std::fwrite(buf, 1, n, _file) != n || (!_batching && std::fflush(_file) != 0)) _fail(errno, kShortWrite);
    _moved(pos + len, false);
}

// A run of writes that succeeds or fails as a whole: stdio gathers them in a
// large buffer and one flush at the end reports a failure of any of them.
void FileBufferBase::_beginBatch() {
    Monitor hold(_lock);
    if (_file == nullptr || _batching) return;
    // Only a stream that has seen no I/O may take a buffer of its own; stdio
    // keeps its default size unless it is handed the memory.
    if (_streamAt == -1 && _size == 0 && !_batchBuffer) {
        _batchBuffer.reset(new (std::nothrow) char[kBatchBuffer]);
        if (_batchBuffer) std::setvbuf(_file, _batchBuffer.get(), _IOFBF, kBatchBuffer);
    }
    _batching = true;
}

void FileBufferBase::_endBatch() {
    Monitor hold(_lock);
    if (!_batching) return;
    _batching = false;
    if (std::fflush(_file) != 0) _fail(errno, kShortWrite);
}

// Writes `count` zero bytes at `pos`, one by one; the size is the caller's.
void FileBufferBase::_pad(long pos, long count) {
    if (count < 1) return;
    _seek(pos, true);
    for (long i = 0; i < count; ++i) {
        if (std::fputc(0, _file) == EOF) _fail(errno, kPadFailed);
    }
    if (std::fflush(_file) != 0) _fail(errno, kPadFailed);
    _moved(pos + count, false);
}

// Moves the content from `from` to the end so that it starts at `to`, in
// 1024-byte steps: from the end backwards when moving up, so that the
// overlapping source is read before it is overwritten; forwards when down.
void FileBufferBase::_fileMove(long to, long from) {
    if (to == from || _size <= from) return;
    char chunk[kChunk];
    if (to > from) {
        for (long hi = _size, lo; hi > from; hi = lo) {
            lo = std::max(hi - kChunk, from);
            _readAt(lo, chunk, hi - lo, kMoveUpFailed);
            _writeAt(lo + (to - from), chunk, hi - lo);
        }
        return;
    }
    for (long at = from; at < _size; at += kChunk) {
        const long n = std::min(kChunk, _size - at);
        _readAt(at, chunk, n, kMoveDownFailed);
        _writeAt(at - (from - to), chunk, n);
    }
}

int FileBufferBase::read(long pos) {
    Monitor hold(_lock);
    _checkPos(pos);
    if (pos >= _size) return -1;
    _seek(pos, false);
    const int c = std::fgetc(_file);
    if (c == EOF) _fail(std::ferror(_file) ? errno : EIO, kGetcFailed);
    _moved(pos + 1, true);
    return c;
}

// Answers what the file holds, which is less than asked only when the file
// has been cut from outside.
int FileBufferBase::read(long pos, char* buf, int len) {
    Monitor hold(_lock);
    _checkPos(pos);
    if (buf == nullptr || len < 1 || pos >= _size) return 0;
    _seek(pos, false);
    const size_t n = static_cast<size_t>(std::min<long>(len, _size - pos));
    const size_t got = std::fread(buf, 1, n, _file);
    _moved(pos + static_cast<long>(got), true);
    if (got < n) std::clearerr(_file);
    return static_cast<int>(got);
}

void FileBufferBase::write(long pos, char c) { write(pos, &c, 1); }

int FileBufferBase::write(long pos, const char* buf, int len) {
    Monitor hold(_lock);
    _checkPos(pos);
    if (buf == nullptr || len < 1) return 0;
    const long end = endOf(pos, len);
    _pad(_size, pos - _size);  // zero gap from the old end up to pos
    _writeAt(pos, buf, len);
    _size = std::max(_size, end);
    return len;
}

void FileBufferBase::insert(long pos, char c) { insert(pos, &c, 1); }

int FileBufferBase::insert(long pos, const char* buf, int len) {
    Monitor hold(_lock);
    _checkPos(pos);
    if (buf == nullptr || len < 1) return 0;
    return _insertLocked(pos, buf, len);
}

int FileBufferBase::_insertLocked(long pos, const char* buf, int len) {
    const long size = _size;
    if (pos < size) {
        endOf(size, len);
        _fileMove(pos + len, pos);
    } else {
        endOf(pos, len);
        // Intended: the zero fill is anchored at pos, as in the contiguous
        // buffer, and the size grows by len only. The bytes between the old
        // end and pos that the grown size takes in are zeroed too: the file
        // may hold older bytes there.
        _pad(pos, pos - size);
        _pad(size, std::min(pos, size + len) - size);
    }
    _writeAt(pos, buf, len);
    _size = size + len;
    return len;
}

void FileBufferBase::cut(long pos) { cut(pos, 1); }

int FileBufferBase::cut(long pos, int len) {
    Monitor hold(_lock);
    _checkPos(pos);
    if (len < 1) return 0;
    return _cutLocked(pos, len);
}

// Intended: the file keeps its length, only the size shrinks.
int FileBufferBase::_cutLocked(long pos, int len) {
    const long size = _size;
    if (pos >= size) return 0;
    if (len < size - pos) {  // pos + len < size, without forming the sum
        _fileMove(pos, pos + len);
        _size = size - len;
        return len;
    }
    _size = pos;
    return static_cast<int>(size - pos);  // <= len, so it fits
}

void FileBufferBase::append(char c) { append(&c, 1); }

int FileBufferBase::append(const char* buf, int len) {
    Monitor hold(_lock);
    _checkValid();
    if (buf == nullptr || len < 1) return 0;
    const long end = endOf(_size, len);
    _writeAt(_size, buf, len);
    _size = end;
    return len;
}

void FileBufferBase::truncate(long newSize) {
    Monitor hold(_lock);
    _checkPos(newSize);
    if (newSize < _size) _size = newSize;  // intended: the file keeps its length
}

long FileBufferBase::getSize() const {
    Monitor hold(_lock);
    return _size;
}

int FileBufferBase::getFileDescriptor() {
    Monitor hold(_lock);
    return _file != nullptr ? fileno(_file) : -1;
}

}  // namespace QRN_SPACE
