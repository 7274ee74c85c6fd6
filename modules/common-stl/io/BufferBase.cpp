#include "io/BufferBase.h"

namespace QRN_SPACE {

namespace {

const char* const kHeader = "modules/common-stl/include/io/BufferBase";
const int kLineBroken = 96;
const int kLineOutOfBound = 102;

}  // namespace

BufferBase::~BufferBase() = default;

void BufferBase::_throwBroken() { throwAt<IOException>("Broken BufferBase", {kHeader, kLineBroken}); }

void BufferBase::_throwOutOfBound() {
    throwAt<IOException>("Index out of bound", {kHeader, kLineOutOfBound});
}

long BufferBase::getSize() const { return _size; }

bool BufferBase::isValid() const { return _valid; }

void BufferBase::discardUsedBuffer() { _discarded = true; }

char* BufferBase::getMemAddress() { return nullptr; }

int BufferBase::getFileDescriptor() { return -1; }

int BufferBase::getType() { return _type; }

BufferBaseOverSizeException::~BufferBaseOverSizeException() = default;

}  // namespace QRN_SPACE
