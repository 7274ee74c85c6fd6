#ifndef QRN_IO_FILTEREDBUFFERBASE_H
#define QRN_IO_FILTEREDBUFFERBASE_H

#include "io/BufferBase.h"

namespace QRN_SPACE {

/// Forwards every operation to the buffer it wraps and answers its results;
/// the base of the wrappers that put a policy in front of a buffer.
///
/// It does not own the wrapped buffer (never deletes or closes it), which
/// must outlive it; a null one makes the wrapper invalid ("Broken
/// BufferBase"). Each operation throws what the wrapped buffer throws and is
/// as thread-safe as the wrapped buffer's. discardUsedBuffer() reaches the
/// wrapped buffer only. getType() answers TYPE_FILTERED.
/// @ingroup buffers
class TUSKEL_API FilteredBufferBase : public BufferBase {
public:
    /// Wraps `inner`, not owned; null makes the wrapper invalid.
    explicit FilteredBufferBase(BufferBase* inner);
    /// Leaves the wrapped buffer alone.
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

    /// The wrapped buffer's size; 0 without one.
    long getSize() const override;
    /// True when there is a wrapped buffer and it is valid.
    bool isValid() const override;
    /// Passes the hint to the wrapped buffer.
    void discardUsedBuffer() override;
    /// The wrapped buffer's address, or null.
    char* getMemAddress() override;
    /// The wrapped buffer's descriptor, or -1.
    int getFileDescriptor() override;

protected:
    /// The wrapped buffer.
    /// @throws IOException "Broken BufferBase" when there is none.
    BufferBase& _wrapped() const;

    BufferBase* _inner;  ///< The wrapped buffer; not owned; may be null.
};

/// Keeps the wrapped buffer from growing past a limit (0 or less: no limit).
///
/// Every operation checks the size before it; those that can grow it (and
/// the reads and getSize()) check again after. So the operation that pushes
/// the size past the limit **completes** on the wrapped buffer and then
/// throws BufferBaseOverSizeException "BufferBase exceeded size limit", and
/// from then on every operation, reads and getSize() included, throws the
/// same: the buffer is spent (intended). A size equal to the limit is
/// allowed.
///
/// Does not own the wrapped buffer. Not thread-safe: the spent flag is
/// unguarded, so one thread at a time. getType() answers TYPE_LIMITED.
/// @ingroup buffers
class TUSKEL_API LimitedBufferBase : public FilteredBufferBase {
public:
    /// Wraps `inner` (not owned; null makes the wrapper invalid) with a limit
    /// of `limit` bytes; 0 or less for none.
    LimitedBufferBase(BufferBase* inner, long limit);
    /// Leaves the wrapped buffer alone.
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

    /// The wrapped buffer's size.
    /// @throws BufferBaseOverSizeException once the limit has been passed.
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
