#ifndef TUSKEL_COMMONDECOMPRESSOR_H
#define TUSKEL_COMMONDECOMPRESSOR_H

/// @file
/// The host's side of libtuskel.so: the only header a host application needs.
///
/// It is self-contained and plain C++98 so that any host compiler can use it,
/// and the library itself is built against this same file, so the order of
/// the virtual operations and of the fields below is the binary contract.
///
/// A host keeps ownership of everything it hands over: the library never
/// creates or deletes a CommonBuffer or a CommonEntryProcessor.

#ifndef TUSKEL_API
/// Marks what the shared library exports (its default visibility is hidden).
#define TUSKEL_API __attribute__((visibility("default")))
#endif

/// One whole input, or the output of one entry, held by the host.
///
/// Implemented by the host; the library only calls it, and positions it with
/// seek() before every read or write. The library never deletes one. A buffer
/// is used by one library call at a time: CommonDecompressor::decompress()
/// does not share it between threads. None of the operations may rely on
/// throwing to report a failure: an exception thrown here ends the current
/// decompress() call with result 1.
///
/// @ingroup host
class CommonBuffer {
public:
    /// The library never deletes a host buffer through this type.
    virtual ~CommonBuffer() {}
    /// Copies up to `len` bytes from the current position into `buf`,
    /// advances, and answers the number copied (0 at the end).
    virtual int read(char* buf, int len) = 0;
    /// Stores `len` bytes from `buf` at the current position, advances, and
    /// answers the number stored.
    virtual int write(const char* buf, int len) = 0;
    /// Moves the current position by `offset` from `origin` (0: the start,
    /// 2: the end) and answers the new position.
    ///
    /// The library treats a seek from the start as done only when it answers
    /// the requested position. The seek to the end that an append into an
    /// entry buffer makes is treated as done only when it answers 0, so over
    /// a host that answers the new position, appending works on an empty
    /// buffer only (intended; the unarchivers write, they do not append).
    virtual long seek(int origin, long offset) = 0;
    /// The current position; after a seek to the end, the size.
    virtual long tell() = 0;
};

/// What the library tells the host about an entry before asking for its
/// buffer.
///
/// Built by the library for the CommonEntryProcessor::getBuffer() call and
/// valid only during it. Both sizes are what the archive declares, so a host
/// must not trust them for allocation.
///
/// @ingroup host
struct EntryRecord {
    int size;   ///< Compressed (stored) length.
    /// Uncompressed length, never 0 (such entries are not offered). When
    /// positive, the most bytes the library writes into the entry's buffer;
    /// a declared size of 2 GiB or more arrives negative and then sets no
    /// bound. For a GZIP file whose header gives no size it is the trailer's
    /// ISIZE.
    int usize;
};

/// Receives the unpacked entries of one decompress() call.
///
/// Implemented by the host; called by the library on the thread that called
/// decompress(), one entry after another.
///
/// @ingroup host
class CommonEntryProcessor {
public:
    /// A buffer for the entry's uncompressed bytes, or null to skip it.
    ///
    /// @param info the entry's sizes, valid during this call only.
    /// @return a buffer that the host keeps owning. It must stay valid until
    ///   the library next calls getBuffer() or finish(), or decompress()
    ///   returns. The library writes into it from position 0, front to
    ///   back, at most `info->usize` bytes when that is positive: bytes past
    ///   it are refused, one error line each, and the entry ends short. Null
    ///   skips the entry without failing the archive.
    virtual CommonBuffer* getBuffer(EntryRecord* info) = 0;
    /// The entries handed out so far are complete.
    ///
    /// Called once after a GZIP file's entry. For a ZIP archive it is called
    /// after every entry, whether it was offered or not, and once more after
    /// the central directory, so a host sees it several times per archive.
    /// A decompress() that fails may have called it for the entries before
    /// the failure; one that succeeds has called it last.
    virtual void finish() = 0;

protected:
    /// Not virtual: the two operations above are the only slots. Protected,
    /// because nothing may delete a processor through this type.
    ~CommonEntryProcessor() {}
};

/// The entry point: unpacks a GZIP or ZIP input held in a host buffer.
///
/// Create one, install a logger, then call decompress() as often as needed.
/// decompress() keeps no state in the object, so it may run on several
/// threads at once on different inputs, through one shared instance or one
/// per thread; setLogger() changes process-wide state without a lock and
/// belongs before any thread starts decompressing.
///
/// @ingroup host
class TUSKEL_API CommonDecompressor {
public:
    /// Results of decompress().
    enum Result {
        RESULT_OK = 0,             ///< The archive was read to its end.
        RESULT_FAILED = 1,         ///< The archive could not be read; one error line was logged.
        RESULT_NULL_ARGUMENT = 2,  ///< The buffer or the processor was null.
        RESULT_UNSUPPORTED = 3     ///< Neither GZIP nor ZIP (a self-extracting ZIP executable included).
    };

    /// Log levels for setLogger(): errors are delivered at 1 and above, debug
    /// lines at 3 and above, info lines at any level.
    enum LogLevel {
        LOG_ERRORS = 1,  ///< Error lines only.
        LOG_DEBUG = 3    ///< Error and debug lines.
    };

    /// No logger: the library stays silent until setLogger() is called.
    CommonDecompressor() : level(0), callback(0) {}

    /// Unpacks the archive held in `hb` and hands every entry to `processor`.
    ///
    /// The input is measured by seeking `hb` to its end, identified, and its
    /// entries are written one by one into buffers that `processor` hands
    /// out, with calls to processor->finish() after each entry and at the end
    /// (see CommonEntryProcessor::finish()). Entries of size 0 are
    /// never offered, and an entry whose buffer the host refuses is skipped.
    /// Neither argument is ever deleted.
    ///
    /// Never throws: a failure inside the library, and any exception thrown
    /// by the host's own operations, becomes result 1 with one error line
    /// "Exception[...]" in the log. Entries already handed to the host stay
    /// handed.
    ///
    /// @return a #Result code: 0 read to the end, 1 failed, 2 a null
    ///   argument (nothing else touched), 3 not a supported format (no entry
    ///   offered).
    int decompress(CommonBuffer* hb, CommonEntryProcessor* processor);
    /// Routes the library's log to `callback`.
    ///
    /// The callback receives every message in three pieces: the prefix
    /// (`"[ERR][file:line] "`, `"[DBG]..."` or `"[INF]..."`), the text (cut at
    /// 1022 characters), and a line feed; it is expected to join them. A null
    /// callback silences the log. The setting is process-wide, shared by all
    /// instances, and written without a lock: make it before decompressing.
    /// Concurrent decompress() calls may interleave their pieces or print
    /// each other's source line.
    void setLogger(int level, void (*callback)(const char*));
    /// Accepts and ignores its arguments: the library has no options.
    void setOptions(int option, void* value);

    int level;                      ///< As last given to setLogger().
    void (*callback)(const char*);  ///< As last given to setLogger().
};

#endif
