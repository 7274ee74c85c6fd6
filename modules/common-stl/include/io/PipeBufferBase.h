#ifndef QRN_IO_PIPEBUFFERBASE_H
#define QRN_IO_PIPEBUFFERBASE_H

#include <memory>

#include "io/FilteredBufferBase.h"
#include "io/OutputStream.h"
#include "util/Mutex.h"

namespace QRN_SPACE {

class PipeProducerOutputStream;

/// Hands bytes from one producer thread to consumer threads through the
/// buffer it wraps.
///
/// The wrapped buffer is not owned; it must outlive the pipe. The producer writes
/// through getProducerOutputStream(); consumers read at increasing positions
/// and block until their position holds data or writing has ended.
///
/// ```
///   open for writing --(producer close(), or closeWriting())--> closed
/// ```
///
/// A consumer whose position has no data waits on a condition while
/// writing is open; every operation that adds bytes and closeWriting() wake
/// all waiters, and each reads again to decide. Once closed, reads answer
/// at once (-1 or 0 past the end).
///
/// Threads: this is the one buffer meant for several threads at once. Every
/// data operation holds the pipe's mutex throughout, released on every
/// exit; the queries take no lock. There is no time-out and no bound: a
/// producer must always end with close(), and writes never wait for readers.
/// A block read with a null buffer or a length below 1 answers 0 at once.
/// Lock order: a producer stream's own mutex, then the pipe's. Operations
/// throw what the wrapped buffer throws. getType() answers TYPE_PIPE.
/// @ingroup buffers
class TUSKEL_API PipeBufferBase : public FilteredBufferBase {
public:
    /// A pipe over `inner`, not owned, open for writing.
    explicit PipeBufferBase(BufferBase* inner);
    /// Deletes the producer stream. No consumer may still be waiting.
    ~PipeBufferBase() override;

    /// The byte at `pos`, blocking while writing is open and `pos` holds no
    /// data; -1 past the end once writing has ended.
    int read(long pos) override;
    /// Up to `len` bytes at `pos`, blocking while writing is open and `pos`
    /// holds no data; 0 past the end once writing has ended, and at once for
    /// a null `buf` or `len` below 1.
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

    /// The one producer stream, made on the first call; owned by the pipe
    /// (its users must not delete it), valid while the pipe lives.
    /// @throws OutOfMemoryException "Out of memory" when it cannot be made.
    PipeProducerOutputStream* getProducerOutputStream();
    /// Ends writing and wakes every waiting consumer; cannot be undone.
    void closeWriting();

private:
    template <class Op>
    auto _adding(Op op) -> decltype(op());

    bool _writingClosed = false;                          // the producer has finished
    std::unique_ptr<PipeProducerOutputStream> _producer;  // made on request; owned
    Mutex _mutex;                                         // guards every operation
    Condition _dataAvailable;  // on _mutex: data added or writing ended
};

/// The producer's end of a PipeBufferBase: writes from its own cursor (0 at
/// first) into the pipe.
///
/// The cursor advances by the count the pipe reports written, unlike
/// BufferBaseOutputStream's: intended. Made and owned by the pipe; it does
/// not own the pipe. Its operations lock a mutex of their own, so the
/// producer may close it from another thread. Writes after close() throw
/// IOException "Stream is already closed".
/// @ingroup buffers
class TUSKEL_API PipeProducerOutputStream : public OutputStream {
public:
    /// Deleted by the pipe only.
    ~PipeProducerOutputStream() override;

    using OutputStream::write;
    /// Ends writing on the pipe; a second close() does nothing.
    void close() override;
    /// Nothing to flush: every write reaches the pipe at once.
    void flush() override;
    /// Writes one byte at the cursor and wakes the consumers.
    /// @throws IOException "Stream is already closed" after close(); what the
    ///   wrapped buffer throws.
    void write(char c) override;
    /// Writes `len` bytes at the cursor and wakes the consumers; answers the
    /// count the pipe wrote, by which the cursor advances.
    /// @throws IOException as write(char).
    int write(const char* buf, int len) override;
    /// Drops every later write without an error (answering its length), so
    /// that a producer whose consumer gave up can run to its end.
    void ignoreProducer();

private:
    friend class PipeBufferBase;
    explicit PipeProducerOutputStream(PipeBufferBase* pipe);

    PipeBufferBase* _pipe;  // not owned
    long _position = 0;     // where the next byte goes
    bool _ignored = false;  // writes are dropped
    Mutex _mutex;           // guards the fields above and the closed flag
};

}  // namespace QRN_SPACE

#endif
