#ifndef QRN_IO_FILEBUFFERBASE_H
#define QRN_IO_FILEBUFFERBASE_H

#include <cstdio>
#include <memory>
#include <string>

#include "io/BufferBase.h"
#include "util/Mutex.h"

namespace QRN_SPACE {

/// A BufferBase that keeps its bytes in a temporary file, through one stdio
/// stream, so that content of any size costs no memory.
///
/// The buffer owns the file: an anonymous one (tmpfile) vanishes with its
/// stream, a named one (made by mkstemp in a given directory) is removed by
/// the destructor, also when that runs during an exception's unwinding.
///
/// Only the first getSize() bytes of the file are content; cuts and
/// truncates never shorten the file. Appending and sequential reading cost
/// one write or read per call (a seek only where the stream is elsewhere);
/// an insert or a cut inside the content copies the whole tail in 1024-byte
/// steps; a gap is zero-filled byte by byte.
///
/// Threads: one mutex serialises every operation, reads included (they move
/// the stream position); a sequence of operations is not atomic. Every write is
/// flushed before its operation returns, so a failure (a full disk) is
/// reported by the operation that caused it: IOException with the system's
/// error text, the size and the bytes before the failure unchanged, the
/// mutex released. Bytes that a failing insert or cut had already moved stay
/// moved. A read that finds the file shorter than the content (the file was
/// cut from outside) reports "Input/output error".
///
/// Intended oddities: an insert beyond the end is anchored at `pos` as in
/// ContinuousMemBufferBase (the size grows by the count only; the bytes it
/// takes in from the old end up to `pos` read as zeros); open() after close()
/// empties the file while the size stays.
///
/// When the file cannot be created the buffer is invalid ("Broken
/// BufferBase" from every data operation). getType() answers TYPE_FILE.
/// @ingroup buffers
class TUSKEL_API FileBufferBase : public BufferBase {
public:
    /// An empty buffer in an anonymous temporary file (tmpfile). Never
    /// throws: without a file the buffer is invalid.
    FileBufferBase();
    /// An empty buffer in a temporary file named by mkstemp in `directory`
    /// (not kept); null or empty means an anonymous one. Never throws:
    /// without a file the buffer is invalid.
    explicit FileBufferBase(const char* directory);
    /// Closes the stream; removes a named file that is still the buffer's.
    ~FileBufferBase() override;

    /// Closes the stream of a named file and leaves the buffer invalid, the
    /// file staying on disk until the destructor; nothing when closed
    /// already. A failing fclose is not reported.
    /// @throws IOException "The method is not supported, if the file name is
    ///   empty." for an anonymous file.
    void close();
    /// Reopens a closed named file emptied (mode "wb+") and makes the buffer
    /// valid again, while the size keeps its value: intended, the old
    /// content then reads as missing ("Input/output error"). Nothing when
    /// open already; the buffer stays invalid when the file cannot be
    /// opened.
    /// @throws IOException as close().
    void open();

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
    /// The file's descriptor; -1 while closed or invalid. Owned by the
    /// buffer. For looking at the file (fstat, pread, mmap): closing it or
    /// moving its offset would mislead the stream.
    int getFileDescriptor() override;

private:
    // The smart buffer's one move into a file is the one batch of writes.
    friend class SmartBufferBase;

    void _init();
    void _beginBatch();
    void _endBatch();
    [[noreturn]] void _fail(int error, ErrorSite site);
    void _seek(long pos, bool forWrite);
    void _moved(long to, bool reading);
    void _readAt(long pos, char* buf, long len, ErrorSite site);
    void _writeAt(long pos, const char* buf, long len);
    void _pad(long pos, long count);
    void _fileMove(long to, long from);
    int _insertLocked(long pos, const char* buf, int len);
    int _cutLocked(long pos, int len);

    FILE* _file = nullptr;  // null when creation failed or after close()
    std::string _path;      // the named file; empty for an anonymous one
    bool _created = false;  // a file at _path is ours to remove
    long _streamAt = -1;    // where the stream stands; -1 when unknown
    bool _reading = false;  // the last transfer was a read
    bool _batching = false; // writes are flushed once, by _endBatch()
    std::unique_ptr<char[]> _batchBuffer;  // stdio's buffer for a batch; outlives _file
    mutable Mutex _lock;    // guards all of the above and _size
};

}  // namespace QRN_SPACE

#endif
