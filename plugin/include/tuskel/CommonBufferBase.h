#ifndef TUSKEL_COMMONBUFFERBASE_H
#define TUSKEL_COMMONBUFFERBASE_H

/// @file
/// CommonBufferBase: a host CommonBuffer seen as a library BufferBase.

#include "io/BufferBase.h"
#include "tuskel/CommonDecompressor.h"

/// Presents a host CommonBuffer as a library BufferBase.
///
/// Every positioned operation seeks the host buffer from its start and then
/// reads or writes there; the adapter keeps no position of its own. Insert,
/// cut and truncate cannot be expressed through the host interface and only
/// log an error. Failures are logged (source "CommonBufferBase") and answered
/// with -1 where the operation answers a number; nothing is thrown by the
/// adapter itself, though whatever the host's operations throw passes
/// through.
///
/// Does not own the host buffer, which must outlive the adapter; destruction
/// never calls the host. An adapter and its host buffer are used by one
/// thread at a time. getType() answers BufferBase::TYPE_MEMORY and getSize()
/// 0: the adapter does not know the host's size.
///
/// @ingroup adapters
class TUSKEL_API CommonBufferBase : public QRN_SPACE::BufferBase {
public:
    /// Wraps `buffer`, not owned.
    /// @param buffer the host's buffer; null makes every operation fail.
    /// @param limit the most bytes the two write forms may fill, counted
    ///   from position 0; 0 or less for no limit.
    CommonBufferBase(CommonBuffer* buffer, long limit);
    /// Forgets the host buffer without calling it.
    ~CommonBufferBase() override;

    /// The byte at `off` as 0..255; -1 when the seek fails (logged "seek fail")
    /// or the host reads no byte (not logged: the ordinary end).
    int read(long off) override;
    /// Seeks to `off` and answers the host's read() unchanged; -1 when the
    /// seek fails (logged).
    int read(long off, char* buf, int len) override;
    /// Writes one byte at `off`; refused with a logged "off bigger than the
    /// buffer size" when it would end past the limit. The host's result is
    /// ignored.
    void write(long off, char c) override;
    /// Seeks to `off` and answers the host's write(); -1, logged, when the
    /// bytes would end past the limit or the seek fails.
    int write(long off, const char* buf, int len) override;
    /// Not supported: logs "insert function is null".
    void insert(long off, char c) override;
    /// Not supported: logs "insert function is null" and answers -1.
    int insert(long off, const char* buf, int len) override;
    /// Not supported: logs "cut function is null".
    void cut(long off) override;
    /// Not supported: logs "cut function is null" and answers -1.
    int cut(long off, int len) override;
    /// Seeks the host to its end and writes one byte there. No limit check
    /// (intended). The seek counts as done only when the host answers 0, so
    /// over a host whose seek answers the new position this works on an
    /// empty buffer only (intended); otherwise logs "append(c):seek fail".
    void append(char c) override;
    /// As append(char) for a block: answers the host's write(), or -1 with
    /// "append(buf,len):seek fail" logged.
    int append(const char* buf, int len) override;
    /// Not supported: logs an error (whose text names another operation,
    /// "read(off,buf,len):seek fail", intended) and changes nothing.
    void truncate(long newSize) override;

    CommonBuffer* buffer;  ///< The host's buffer; not owned; null once destroyed.
    long limit;            ///< Checked by write() only, never by append(); 0 or less: none.

private:
    // Positions the host buffer at off; true when the host answers off.
    bool _seekTo(long off);
    // Would writing len bytes at off pass the limit?
    bool _exceedsLimit(long off, long len) const;
    // The seek to the end that append() needs.
    bool _seekToEnd();
};

#endif
