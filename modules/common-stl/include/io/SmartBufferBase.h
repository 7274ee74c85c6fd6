#ifndef QRN_IO_SMARTBUFFERBASE_H
#define QRN_IO_SMARTBUFFERBASE_H

#include <memory>
#include <string>

#include "io/BufferBase.h"

namespace QRN_SPACE {

/// The store a SmartBufferBase starts with.
/// @ingroup buffers
enum BufferBasePolicy {
    POLICY_MEM = 0,                   ///< MemBufferBase, stays there.
    POLICY_MEM_SMART = 1,             ///< MemBufferBase, moves to a file past the barrier.
    POLICY_CONTINUOUS_MEM = 2,        ///< ContinuousMemBufferBase, stays there.
    POLICY_CONTINUOUS_MEM_SMART = 3,  ///< ContinuousMemBufferBase, moves past the barrier.
    POLICY_FILE = 4                   ///< FileBufferBase (named in SmartBufferBase::_basePath when set).
};

/// The buffer for content of unknown size: it keeps the bytes in memory while
/// they are few and moves them, once, into an anonymous temporary file when
/// they pass the barrier.
///
/// It owns its store and forwards every operation to it, so each operation
/// throws what the store throws (ContinuousMemBufferBase, MemBufferBase,
/// FileBufferBase); getType() answers TYPE_SMART whatever the store.
///
/// States (policies 1 and 3; the others are fixed from construction, as is
/// a store created in a file because initialSize was above the barrier):
///
/// ```
///   in memory --(a checked operation finds size > _barrier)--> in file
///       |
///       +--(discardUsedBuffer())--> in memory for good
/// ```
///
/// The check runs before the operation, on the size before it, and only in
/// write (both), insert (both), the block cut and append(char): so a store
/// grows past the barrier by the operation that crosses it and moves at the
/// next checked one. The block append never checks and the single-byte cut
/// does not either: intended, **a buffer filled by block appends stays in
/// memory at any size**.
///
/// A failed move (no temporary file: IOException "Broken BufferBase"; a full
/// disk: IOException with the system's error text) raises its exception and
/// leaves the memory store as it was; the next checked operation tries again.
/// The check itself asks the store for its size only once the bytes that
/// operations may have added could reach the barrier.
///
/// Threads: no lock of its own: the store makes single calls atomic, but the move is
/// not guarded, so a buffer that may move must be changed by one thread at a
/// time. A policy outside 0..4 creates no store: the buffer is invalid.
/// @ingroup buffers
class TUSKEL_API SmartBufferBase : public BufferBase {
public:
    /// @name Process-wide settings
    /// Read without a lock: set them before buffers are made, not while
    /// another thread makes or changes one. _basePath serves POLICY_FILE
    /// only; the move past the barrier and the file store of policies 1 and 3
    /// always use an anonymous temporary file (intended).
    /// @{
    static BufferBasePolicy _policy;  ///< The policy of the constructors that take none; POLICY_MEM_SMART.
    static long _barrier;             ///< Bytes a movable store may hold in memory; 1 MiB.
    static std::string _basePath;     ///< Directory of POLICY_FILE's named files; empty: anonymous.
    /// @}

    /// An empty buffer under _policy.
    SmartBufferBase();
    /// An empty buffer under `policy`.
    explicit SmartBufferBase(BufferBasePolicy policy);
    /// A buffer for about `initialSize` bytes under _policy: the memory
    /// store's initial capacity, and compared with the barrier under policies
    /// 1 and 3 (above it, the store is a file from the start).
    explicit SmartBufferBase(long initialSize);
    /// A buffer for about `initialSize` bytes under `policy`. A store that
    /// cannot be made leaves the buffer invalid; an allocation failure of
    /// the store object itself escapes as std::bad_alloc.
    SmartBufferBase(long initialSize, BufferBasePolicy policy);
    /// Deletes the store (and with it a temporary file).
    ~SmartBufferBase() override;

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

    /// The store's size.
    long getSize() const override;
    /// True when there is a store and it is valid.
    bool isValid() const override;
    /// Passes the hint to the store and keeps the buffer in memory for good.
    void discardUsedBuffer() override;
    /// The store's: the content's address under a contiguous-memory policy
    /// until the move to a file, else null.
    char* getMemAddress() override;
    /// The store's: the file's descriptor once in a file, else -1.
    int getFileDescriptor() override;

private:
    void _init(long initialSize, BufferBasePolicy policy);
    void _migrate();

    // The hot checks of every forwarded call are defined here, so that they
    // inline into it.

    // The spill decision.
    bool _pastBarrier() {
        if (!_mayMigrate) return false;            // a file already, or a store fixed by its policy
        if (_discarded) return false;              // consumed content is not worth a copy
        if (_sizeBound <= _barrier) return false;  // cannot be past it: spares asking the store
        _sizeBound = _inner->getSize();
        return _sizeBound > _barrier;  // strictly: a store of exactly the barrier stays
    }
    void _checkBarrier() {
        if (_pastBarrier()) _migrate();
    }
    // Called before an operation that may grow the store to `end` bytes.
    void _mayGrowTo(long end) {
        if (_mayMigrate && end > _sizeBound) _sizeBound = end;
    }
    BufferBase& _store() {
        if (!_inner) _throwBroken();
        return *_inner;
    }

    std::unique_ptr<BufferBase> _inner;  // the store; owned
    bool _mayMigrate = false;            // in memory and may still move to a file
    // At least the store's size while it may move, so that a check far
    // below the barrier need not ask the store (and take its lock). Grown
    // before each operation that may add bytes; cuts leave it high.
    long _sizeBound = 0;
};

}  // namespace QRN_SPACE

#endif
