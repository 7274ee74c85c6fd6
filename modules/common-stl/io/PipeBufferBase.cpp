#include "io/PipeBufferBase.h"

#include <new>
#include <type_traits>

namespace QRN_SPACE {

namespace {

const ErrorSite kNoProducer{"io/BufferBase", 1515};

}  // namespace

// ---- PipeBufferBase --------------------------------------------------------

PipeBufferBase::PipeBufferBase(BufferBase* inner) : FilteredBufferBase(inner), _dataAvailable(_mutex) {
    _type = TYPE_PIPE;
}

PipeBufferBase::~PipeBufferBase() = default;

int PipeBufferBase::read(long pos) {
    Monitor hold(_mutex);
    for (;;) {
        const int r = _wrapped().read(pos);
        if (r != -1 || _writingClosed) return r;
        _dataAvailable.wait();
    }
}

int PipeBufferBase::read(long pos, char* buf, int len) {
    Monitor hold(_mutex);
    for (;;) {
        const int n = _wrapped().read(pos, buf, len);
        // Nothing to wait for when nothing was asked.
        if (n != 0 || _writingClosed || buf == nullptr || len < 1) return n;
        _dataAvailable.wait();
    }
}

// Runs an operation that adds bytes under the mutex, then wakes every
// consumer.
template <class Op>
auto PipeBufferBase::_adding(Op op) -> decltype(op()) {
    Monitor hold(_mutex);
    if constexpr (std::is_void_v<decltype(op())>) {
        op();
        _dataAvailable.notifyAll();
    } else {
        auto result = op();
        _dataAvailable.notifyAll();
        return result;
    }
}

void PipeBufferBase::write(long pos, char c) {
    _adding([&] { _wrapped().write(pos, c); });
}

int PipeBufferBase::write(long pos, const char* buf, int len) {
    return _adding([&] { return _wrapped().write(pos, buf, len); });
}

void PipeBufferBase::insert(long pos, char c) {
    _adding([&] { _wrapped().insert(pos, c); });
}

int PipeBufferBase::insert(long pos, const char* buf, int len) {
    return _adding([&] { return _wrapped().insert(pos, buf, len); });
}

void PipeBufferBase::append(char c) {
    _adding([&] { _wrapped().append(c); });
}

int PipeBufferBase::append(const char* buf, int len) {
    return _adding([&] { return _wrapped().append(buf, len); });
}

// Removing bytes gives a consumer nothing new to read: no wake-up.
void PipeBufferBase::cut(long pos) {
    Monitor hold(_mutex);
    _wrapped().cut(pos);
}

int PipeBufferBase::cut(long pos, int len) {
    Monitor hold(_mutex);
    return _wrapped().cut(pos, len);
}

void PipeBufferBase::truncate(long newSize) {
    Monitor hold(_mutex);
    _wrapped().truncate(newSize);
}

PipeProducerOutputStream* PipeBufferBase::getProducerOutputStream() {
    Monitor hold(_mutex);
    if (!_producer) {
        _producer.reset(new (std::nothrow) PipeProducerOutputStream(this));
        if (!_producer) throwAt<OutOfMemoryException>("Out of memory", kNoProducer);
    }
    return _producer.get();
}

void PipeBufferBase::closeWriting() {
    Monitor hold(_mutex);
    _writingClosed = true;
    _dataAvailable.notifyAll();
}

// ---- PipeProducerOutputStream ----------------------------------------------

PipeProducerOutputStream::PipeProducerOutputStream(PipeBufferBase* pipe) : _pipe(pipe) {}

PipeProducerOutputStream::~PipeProducerOutputStream() = default;

void PipeProducerOutputStream::close() {
    {
        Monitor hold(_mutex);
        if (_closed) return;
        _closed = true;
    }
    // Outside our own mutex: the pipe's is taken alone.
    _pipe->closeWriting();
}

void PipeProducerOutputStream::flush() {}

void PipeProducerOutputStream::write(char c) {
    Monitor hold(_mutex);
    _ensureOpen();
    if (_ignored) return;
    _pipe->write(_position, c);
    ++_position;
}

int PipeProducerOutputStream::write(const char* buf, int len) {
    Monitor hold(_mutex);
    _ensureOpen();
    if (_ignored) return len;
    const int n = _pipe->write(_position, buf, len);
    _position += n;  // by the count written: intended
    return n;
}

void PipeProducerOutputStream::ignoreProducer() {
    Monitor hold(_mutex);
    _ignored = true;
}

}  // namespace QRN_SPACE
