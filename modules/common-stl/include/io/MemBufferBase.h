#ifndef QRN_IO_MEMBUFFERBASE_H
#define QRN_IO_MEMBUFFERBASE_H

#include <atomic>
#include <deque>
#include <memory>

#include "io/BufferBase.h"
#include "io/ReadAhead.h"
#include "util/RWLock.h"

namespace QRN_SPACE {

/// A BufferBase that keeps its bytes in an ordered list of separately
/// allocated blocks (at least 4096 bytes each when grown), found by binary
/// search.
///
/// Growing never copies stored bytes; an insert or a cut rebuilds at most
/// the one block it lands in. The buffer owns its blocks. Blocks follow each
/// other without gaps; every block but the last is full.
///
/// Threads: reads take the lock shared, changes exclusive; each operation is
/// atomic, a sequence of them is not.
///
/// An insert at or beyond the end is a plain write (intended): the gap from
/// the old end reads as zeros and the bytes land at `pos`.
///
/// Discarding: after discardUsedBuffer(), every read releases the blocks that
/// lie wholly before the last byte it read. Positions keep their values, but
/// a released range is gone: reading, writing, inserting or cutting there
/// throws IOException "Index out of bound", and truncating into it empties
/// the buffer. So a discarding buffer must have ONE reader that moves
/// forward; a second reader (or a rewinding one) loses the bytes the first
/// has passed.
///
/// Allocation failures raise IOException with the system's error text; the
/// buffer stays usable and unchanged by the failed operation. getType()
/// answers TYPE_MEMORY.
/// @ingroup buffers
class TUSKEL_API MemBufferBase : public BufferBase {
public:
    /// One block of the list. Owns its bytes. Used under the buffer's lock;
    /// not thread-safe on its own.
    class Buffer {
    public:
        /// The smallest block the list grows by.
        static const int MIN_CAPACITY = 4096;

        /// A block for the content from absolute position `start`. Unless
        /// `exact`, a capacity below MIN_CAPACITY is raised to it. All
        /// `capacity` bytes start as zeros.
        /// @throws IOException with the system's error text when the bytes
        ///   cannot be allocated.
        Buffer(long start, int capacity, bool exact);
        Buffer(const Buffer&) = delete;
        Buffer& operator=(const Buffer&) = delete;

        /// Frees the bytes.
        ~Buffer();

        /// Removes up to `len` bytes at absolute `pos` (inside this block) and
        /// answers how many. The block shrinks to its exact new size, or to
        /// nothing when all its bytes go.
        /// @throws IOException as the constructor; the block is then unchanged.
        int cut(long pos, int len);

        long start;     ///< Absolute position of data[0].
        int capacity;   ///< Bytes allocated in data.
        int used;       ///< Bytes of data holding content, from data[0].
        char* data;     ///< The bytes; owned.
    };

    /// An empty buffer that allocates on the first write.
    MemBufferBase();
    /// An empty buffer with one block of `initialCapacity` (at least 4096)
    /// bytes. Never throws: the buffer is invalid when the block cannot be
    /// allocated.
    explicit MemBufferBase(long initialCapacity);
    ~MemBufferBase() override;

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
    /// From now on every read releases the blocks wholly before the last
    /// byte it read (see the class description); cannot be undone.
    void discardUsedBuffer() override;

private:
    using Block = std::unique_ptr<Buffer>;

    int _findBlock(long pos) const;
    bool _covers(int index, long pos) const;
    long _origin() const;
    void _checkRetained(long pos) const;
    void _ensureCapacity(long need);
    void _pad(long count);
    void _cleanupMem(long upTo);
    void _prefetch(size_t i, long pos, long n) const;
    int _copyOut(long pos, char* buf, int len) const;
    int _writeLocked(long pos, const char* buf, int len);
    int _cutBlocks(long pos, int len);
    void _restart(std::size_t from, long start);

    std::deque<Block> _blocks;  // in position order
    mutable RWLock _lock;       // guards _blocks, _size and _discarded
    mutable std::atomic<int> _hint{0};  // index of the last block found
    ReadAhead _ahead;
};

}  // namespace QRN_SPACE

#endif
