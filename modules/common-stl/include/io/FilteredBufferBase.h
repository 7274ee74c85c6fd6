#ifndef QRN_IO_FILTEREDBUFFERBASE_H
#define QRN_IO_FILTEREDBUFFERBASE_H

#include "io/BufferBase.h"

namespace QRN_SPACE {

// Forwards every operation to the buffer it wraps and answers its results;
// the base of the wrappers that put a policy in front of a buffer. It does
// not own the wrapped buffer (never deletes or closes it), which must
// outlive it; a null one makes the wrapper invalid ("Broken BufferBase").
// discardUsedBuffer() reaches the wrapped buffer only.
class TUSKEL_API FilteredBufferBase : public BufferBase {
public:
    explicit FilteredBufferBase(BufferBase* inner);
    ~FilteredBufferBase() override;

    int read(long pos) override;
    int read(long pos, char* buf, int len) override;
    void write(long pos, char c) override;
    int write(long pos, const char* buf, int len) override;
    void insert(long pos, char c) override;
    int insert(long pos, const char* buf, int len) override;
    void cut(long pos) override;
    int cut(long pos, int len) override;
    void append(char c) override;
    int append(const char* buf, int len) override;
    void truncate(long newSize) override;

    long getSize() const override;
    bool isValid() const override;
    void discardUsedBuffer() override;
    char* getMemAddress() override;
    int getFileDescriptor() override;

protected:
    BufferBase& _wrapped() const;

    BufferBase* _inner;  // not owned
};

// Keeps the wrapped buffer from growing past a limit (0 or less: no limit).
// Every operation checks the size before it; those that can grow it (and
// the reads and getSize()) check again after. So the operation that pushes
// the size past the limit completes on the wrapped buffer and then throws
// BufferBaseOverSizeException "BufferBase exceeded size limit", and from
// then on every operation, reads included, throws the same: the buffer is
// spent (intended). A size equal to the limit is allowed.
class TUSKEL_API LimitedBufferBase : public FilteredBufferBase {
public:
    LimitedBufferBase(BufferBase* inner, long limit);
    ~LimitedBufferBase() override;

    int read(long pos) override;
    int read(long pos, char* buf, int len) override;
    void write(long pos, char c) override;
    int write(long pos, const char* buf, int len) override;
    void insert(long pos, char c) override;
    int insert(long pos, const char* buf, int len) override;
    void cut(long pos) override;
    int cut(long pos, int len) override;
    void append(char c) override;
    int append(const char* buf, int len) override;
    void truncate(long newSize) override;

    long getSize() const override;

private:
    void _ensureSize() const;
    template <class Op>
    auto _checked(Op op) -> decltype(op());

    long _limit;                    // bytes at most; 0 or less: unlimited
    mutable bool _exceeded = false;  // set once the limit was found passed; never cleared
};

}  // namespace QRN_SPACE

#endif
