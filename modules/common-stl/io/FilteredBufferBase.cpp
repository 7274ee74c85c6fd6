#include "io/FilteredBufferBase.h"

#include <type_traits>

namespace QRN_SPACE {

namespace {

const char* const kHeader = "modules/common-stl/include/io/BufferBase";
const ErrorSite kSpent{kHeader, 714};
const ErrorSite kPassed{kHeader, 719};
const char* const kOverSize = "BufferBase exceeded size limit";

}  // namespace

// ---- FilteredBufferBase ----------------------------------------------------

FilteredBufferBase::FilteredBufferBase(BufferBase* inner) : _inner(inner) {
    _type = TYPE_FILTERED;
    _valid = inner != nullptr;
}

FilteredBufferBase::~FilteredBufferBase() = default;

BufferBase& FilteredBufferBase::_wrapped() const {
    if (_inner == nullptr) _throwBroken();
    return *_inner;
}

int FilteredBufferBase::read(long pos) { return _wrapped().read(pos); }

int FilteredBufferBase::read(long pos, char* buf, int len) { return _wrapped().read(pos, buf, len); }

void FilteredBufferBase::write(long pos, char c) { _wrapped().write(pos, c); }

int FilteredBufferBase::write(long pos, const char* buf, int len) { return _wrapped().write(pos, buf, len); }

void FilteredBufferBase::insert(long pos, char c) { _wrapped().insert(pos, c); }

int FilteredBufferBase::insert(long pos, const char* buf, int len) { return _wrapped().insert(pos, buf, len); }

void FilteredBufferBase::cut(long pos) { _wrapped().cut(pos); }

int FilteredBufferBase::cut(long pos, int len) { return _wrapped().cut(pos, len); }

void FilteredBufferBase::append(char c) { _wrapped().append(c); }

int FilteredBufferBase::append(const char* buf, int len) { return _wrapped().append(buf, len); }

void FilteredBufferBase::truncate(long newSize) { _wrapped().truncate(newSize); }

long FilteredBufferBase::getSize() const { return _inner != nullptr ? _inner->getSize() : 0; }

bool FilteredBufferBase::isValid() const { return _inner != nullptr && _inner->isValid(); }

void FilteredBufferBase::discardUsedBuffer() {
    if (_inner != nullptr) _inner->discardUsedBuffer();
}

char* FilteredBufferBase::getMemAddress() { return _inner != nullptr ? _inner->getMemAddress() : nullptr; }

int FilteredBufferBase::getFileDescriptor() { return _inner != nullptr ? _inner->getFileDescriptor() : -1; }

// ---- LimitedBufferBase -----------------------------------------------------

LimitedBufferBase::LimitedBufferBase(BufferBase* inner, long limit) : FilteredBufferBase(inner), _limit(limit) {
    _type = TYPE_LIMITED;
}

LimitedBufferBase::~LimitedBufferBase() = default;

void LimitedBufferBase::_ensureSize() const {
    if (_exceeded) throwAt<BufferBaseOverSizeException>(kOverSize, kSpent);
    if (_limit > 0 && _wrapped().getSize() > _limit) {
        _exceeded = true;
        throwAt<BufferBaseOverSizeException>(kOverSize, kPassed);
    }
}

// Runs an operation that may grow the buffer between two checks.
template <class Op>
auto LimitedBufferBase::_checked(Op op) -> decltype(op()) {
    _ensureSize();
    if constexpr (std::is_void_v<decltype(op())>) {
        op();
        _ensureSize();
    } else {
        auto result = op();
        _ensureSize();
        return result;
    }
}

int LimitedBufferBase::read(long pos) {
    return _checked([&] { return FilteredBufferBase::read(pos); });
}

int LimitedBufferBase::read(long pos, char* buf, int len) {
    return _checked([&] { return FilteredBufferBase::read(pos, buf, len); });
}

void LimitedBufferBase::write(long pos, char c) {
    _checked([&] { FilteredBufferBase::write(pos, c); });
}

int LimitedBufferBase::write(long pos, const char* buf, int len) {
    return _checked([&] { return FilteredBufferBase::write(pos, buf, len); });
}

void LimitedBufferBase::insert(long pos, char c) {
    _checked([&] { FilteredBufferBase::insert(pos, c); });
}

int LimitedBufferBase::insert(long pos, const char* buf, int len) {
    return _checked([&] { return FilteredBufferBase::insert(pos, buf, len); });
}

// Shrinking operations check only before: they cannot pass the limit.
void LimitedBufferBase::cut(long pos) {
    _ensureSize();
    FilteredBufferBase::cut(pos);
}

int LimitedBufferBase::cut(long pos, int len) {
    _ensureSize();
    return FilteredBufferBase::cut(pos, len);
}

void LimitedBufferBase::append(char c) {
    _checked([&] { FilteredBufferBase::append(c); });
}

int LimitedBufferBase::append(const char* buf, int len) {
    return _checked([&] { return FilteredBufferBase::append(buf, len); });
}

void LimitedBufferBase::truncate(long newSize) {
    _ensureSize();
    FilteredBufferBase::truncate(newSize);
}

long LimitedBufferBase::getSize() const {
    _ensureSize();
    const long size = FilteredBufferBase::getSize();
    _ensureSize();
    return size;
}

}  // namespace QRN_SPACE
