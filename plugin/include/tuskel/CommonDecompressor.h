#ifndef TUSKEL_COMMONDECOMPRESSOR_H
#define TUSKEL_COMMONDECOMPRESSOR_H

// The host's side of libtuskel.so: the only header a host application needs.
// It is self-contained and plain C++98 so that any host compiler can use it,
// and the library itself is built against this same file, so the order of
// the virtual operations and of the fields below is the binary contract.
//
// A host keeps ownership of everything it hands over: the library never
// creates or deletes a CommonBuffer or a CommonEntryProcessor.

#ifndef TUSKEL_API
#define TUSKEL_API __attribute__((visibility("default")))
#endif

// One whole input, or the output of one entry, held by the host. The library
// positions it with seek() before every read or write.
class CommonBuffer {
public:
    virtual ~CommonBuffer() {}
    // Copies up to len bytes from the current position into buf, advances,
    // and answers the number copied (0 at the end).
    virtual int read(char* buf, int len) = 0;
    // Stores len bytes at the current position, advances, and answers the
    // number stored.
    virtual int write(const char* buf, int len) = 0;
    // origin 0: from the start, 2: from the end. The library treats a seek
    // from the start as done when it answers the new position; append()
    // into an entry buffer expects 0 from the seek to the end.
    virtual long seek(int origin, long offset) = 0;
    // The current position; after a seek to the end, the size.
    virtual long tell() = 0;
};

// What the library tells the host about an entry before asking for its
// buffer. Valid only during the getBuffer() call. Both sizes are what the
// archive declares, so a host must not trust them for allocation.
struct EntryRecord {
    int size;   // compressed (stored) length
    int usize;  // uncompressed length; when positive, the most the library writes
};

// Receives the unpacked entries.
class CommonEntryProcessor {
public:
    // A buffer for the entry's uncompressed bytes, or null to skip it. The
    // host keeps the buffer; the library writes into it from position 0.
    virtual CommonBuffer* getBuffer(EntryRecord* info) = 0;
    // The archive has been read to its end; the entries handed out so far
    // are complete.
    virtual void finish() = 0;

protected:
    // Not virtual: the two operations above are the only slots. Protected,
    // because nothing may delete a processor through this type.
    ~CommonEntryProcessor() {}
};

// The entry point. Create one, install a logger, then call decompress() as
// often as needed; one instance per thread, or a shared one whose logger is
// set before any thread starts.
class TUSKEL_API CommonDecompressor {
public:
    // Results of decompress().
    enum Result {
        RESULT_OK = 0,           // the archive was read to its end
        RESULT_FAILED = 1,       // the archive could not be read; an error was logged
        RESULT_NULL_ARGUMENT = 2,
        RESULT_UNSUPPORTED = 3   // neither GZIP nor ZIP
    };

    // Log levels: errors are delivered at 1 and above, debug lines at 3 and
    // above, info lines at any level.
    enum LogLevel { LOG_ERRORS = 1, LOG_DEBUG = 3 };

    CommonDecompressor() : level(0), callback(0) {}

    // Unpacks the archive held in hb and hands every entry to processor.
    int decompress(CommonBuffer* hb, CommonEntryProcessor* processor);
    // Routes the library's log to callback, which receives every message in
    // three pieces (prefix, text, "\n"). A null callback silences the log.
    // The setting is process-wide: make it before decompressing.
    void setLogger(int level, void (*callback)(const char*));
    // Accepts and ignores its arguments.
    void setOptions(int option, void* value);

    int level;                      // as last given to setLogger
    void (*callback)(const char*);  // as last given to setLogger
};

#endif
