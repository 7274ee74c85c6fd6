#ifndef QRN_IO_BUFFERBASE_H
#define QRN_IO_BUFFERBASE_H

#include "lang/Exception.h"
#include "lang/RNObject.h"

namespace QRN_SPACE {

/// A random-access byte container addressed by absolute position from 0.
///
/// It has no cursor: BufferBaseInputStream and BufferBaseOutputStream give
/// it one. The library passes all its data through buffers: the host's
/// input, the bytes the unarchivers read, every unpacked entry.
///
/// Contract of every implementation (each class says where it departs):
/// - read(pos) answers 0..255, or -1 at or past the end; read(pos, buf, len)
///   copies min(len, size - pos) bytes and answers 0 (not -1) at the end.
/// - writes past the end grow the buffer; the gap reads as zero bytes.
/// - insert moves the tail up; cut moves it down; truncate never grows.
/// - a null buffer or a length below 1 answers 0 and changes nothing.
/// - every data operation first checks validity (IOException "Broken
///   BufferBase"), then a negative position (IOException "Index out of
///   bound"); append checks validity only. A position past the end is never
///   an error.
///
/// Threads: the interface holds no lock. The stores (ContinuousMemBufferBase,
/// MemBufferBase, FileBufferBase) make each single operation atomic with a
/// lock of their own; a sequence of operations is not atomic. Buffers are
/// not copyable; whoever creates one owns it.
/// @ingroup buffers
class TUSKEL_API BufferBase : public RNObject {
public:
    /// @name Type codes returned by getType()
    /// @{
    static constexpr int TYPE_MEMORY = 0;             ///< MemBufferBase (and the host adapter).
    static constexpr int TYPE_FILE = 1;               ///< FileBufferBase.
    static constexpr int TYPE_SMART = 2;              ///< SmartBufferBase, whatever its store.
    static constexpr int TYPE_CONTINUOUS_MEMORY = 4;  ///< ContinuousMemBufferBase.
    // The wrappers (3 is left unused).
    static constexpr int TYPE_FILTERED = 5;  ///< FilteredBufferBase.
    static constexpr int TYPE_LIMITED = 6;   ///< LimitedBufferBase.
    static constexpr int TYPE_PIPE = 7;      ///< PipeBufferBase.
    /// @}

    /// Valid, empty, type TYPE_MEMORY; the subclass adjusts.
    BufferBase() = default;
    BufferBase(const BufferBase&) = delete;
    BufferBase& operator=(const BufferBase&) = delete;
    ~BufferBase() override;

    /// The byte at `pos` as 0..255, or -1 at or past the end.
    /// @throws IOException "Broken BufferBase", "Index out of bound" for a
    ///   negative `pos`.
    virtual int read(long pos) = 0;
    /// Copies up to `len` bytes at `pos` into `buf` (the caller's) and answers
    /// how many: min(len, size - pos), 0 at or past the end, for a null `buf`
    /// or for `len` below 1.
    /// @throws IOException as read(long).
    virtual int read(long pos, char* buf, int len) = 0;
    /// Overwrites the byte at `pos`; past the end the buffer grows to pos + 1
    /// and the gap reads as zeros.
    /// @throws IOException as read(long); a store's own failures (memory, disk).
    virtual void write(long pos, char c) = 0;
    /// Overwrites `len` bytes at `pos` from `buf` (copied, not kept), growing as
    /// write(long, char) does; answers `len`, 0 for a null `buf` or `len`
    /// below 1.
    /// @throws IOException as write(long, char).
    virtual int write(long pos, const char* buf, int len) = 0;
    /// Inserts one byte at `pos`: the bytes from `pos` on move up by one.
    /// @throws IOException as write(long, char).
    virtual void insert(long pos, char c) = 0;
    /// Inserts `len` bytes from `buf` at `pos`; answers `len`, 0 for a null
    /// `buf` or `len` below 1.
    /// @throws IOException as write(long, char).
    virtual int insert(long pos, const char* buf, int len) = 0;
    /// Removes the byte at `pos`; nothing at or past the end.
    /// @throws IOException as read(long).
    virtual void cut(long pos) = 0;
    /// Removes up to `len` bytes at `pos` and answers how many: everything
    /// from `pos` on when fewer are left, 0 at or past the end or for `len`
    /// below 1.
    /// @throws IOException as read(long).
    virtual int cut(long pos, int len) = 0;
    /// Adds one byte at the end.
    /// @throws IOException "Broken BufferBase"; a store's own failures.
    virtual void append(char c) = 0;
    /// Adds `len` bytes from `buf` at the end; answers `len`, 0 for a null
    /// `buf` or `len` below 1.
    /// @throws IOException as append(char).
    virtual int append(const char* buf, int len) = 0;
    /// Shrinks the content to `newSize` bytes; a larger size changes nothing.
    /// @throws IOException as read(long).
    virtual void truncate(long newSize) = 0;

    /// The number of bytes held (0 for an invalid buffer).
    virtual long getSize() const;
    /// False when construction failed; every data operation then throws
    /// "Broken BufferBase".
    virtual bool isValid() const;
    /// A hint that the content has been consumed and need not be kept.
    virtual void discardUsedBuffer();
    /// One address for all bytes (contiguous memory only), else null. The
    /// buffer keeps owning the bytes.
    virtual char* getMemAddress();
    /// The backing descriptor (file-backed only), else -1. The buffer keeps
    /// owning it: do not close it.
    virtual int getFileDescriptor();
    /// One of the TYPE_ codes; the class's, not that of any store behind it.
    virtual int getType();

protected:
    /// @name Guard checks for subclasses
    /// The two checks that start every data operation.
    /// @{

    /// Throws IOException "Broken BufferBase" when the buffer is invalid.
    void _checkValid() const {
        if (!_valid) _throwBroken();
    }
    /// _checkValid(), then IOException "Index out of bound" for a negative `pos`.
    void _checkPos(long pos) const {
        _checkValid();
        if (pos < 0) _throwOutOfBound();
    }
    /// Throws IOException "Broken BufferBase".
    [[noreturn]] static void _throwBroken();
    /// Throws IOException "Index out of bound".
    [[noreturn]] static void _throwOutOfBound();
    /// @}

    long _size = 0;           ///< Kept by stores that hold their own bytes; what getSize() answers.
    bool _valid = true;       ///< False when construction failed; what isValid() answers.
    bool _discarded = false;  ///< Set by discardUsedBuffer().
    int _type = TYPE_MEMORY;  ///< What getType() answers; set by the subclass's constructor.
};

/// Thrown by a buffer that would exceed its size limit: LimitedBufferBase,
/// "BufferBase exceeded size limit".
/// @ingroup buffers
class TUSKEL_API BufferBaseOverSizeException : public Exception {
public:
    using Exception::Exception;
    ~BufferBaseOverSizeException() override;
};

}  // namespace QRN_SPACE

#endif
