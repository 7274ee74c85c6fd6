#ifndef QRN_IO_CONTINUOUSMEMBUFFERBASE_H
#define QRN_IO_CONTINUOUSMEMBUFFERBASE_H

#include <memory>

#include "io/BufferBase.h"
#include "io/ReadAhead.h"
#include "util/RWLock.h"

namespace QRN_SPACE {

/// A BufferBase that keeps all its bytes in one heap block, so that
/// getMemAddress() hands out a single pointer to the whole content.
///
/// The pointer stays owned by the buffer and valid until the next operation
/// that grows it. Growth allocates the needed size plus a fixed 4096 bytes of
/// headroom and copies the live bytes: the class suits content whose size is
/// known in advance (pass it as the initial capacity) or moderate. The block
/// never shrinks.
///
/// Threads: reads take the lock shared, changes exclusive; each operation is
/// atomic, a sequence of them is not.
///
/// An insert beyond the end keeps its historical shape (intended): the bytes
/// land at `pos`, the size grows by their count only, so they lie outside
/// the content whenever pos > size; the zero fill runs from `pos` as well.
///
/// Failing allocations and sizes past what a long can address raise
/// OutOfMemoryException "Out of memory"; the buffer stays as it was.
/// getType() answers TYPE_CONTINUOUS_MEMORY.
/// @ingroup buffers
class TUSKEL_API ContinuousMemBufferBase : public BufferBase {
public:
    /// An empty buffer with room for `initialCapacity` bytes (plus the
    /// headroom); 0 or less allocates nothing. Never throws: when the block
    /// cannot be allocated the buffer is invalid ("Broken BufferBase" from
    /// then on).
    explicit ContinuousMemBufferBase(long initialCapacity);
    ~ContinuousMemBufferBase() override;

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
    /// The first byte of the content; null before the first growth. Owned by
    /// the buffer; invalidated by any operation that grows it.
    char* getMemAddress() override;

private:
    using Block = std::unique_ptr<char[]>;

    // Makes room for `need` bytes. A replaced block is handed back to the
    // caller, who keeps it alive until its copy is done: the source of a
    // write may lie inside this very buffer.
    Block _ensureCapacity(long need);
    bool _holds(const char* p) const;  // p points into the block
    void _pad(long pos, long count);
    int _insertLocked(long pos, const char* buf, int len);

    Block _data;            // the block; null until the first growth
    long _capacity = 0;     // bytes allocated in _data
    mutable RWLock _lock;   // guards _data, _capacity and _size
    ReadAhead _ahead;
};

}  // namespace QRN_SPACE

#endif
