#ifndef QRN_UTIL_LOG_H
#define QRN_UTIL_LOG_H

#include <atomic>

#include "lang/Export.h"

/// @file
/// The library's diagnostics: the logging functions that feed the host's
/// callback, and the process-wide logger state behind them.
///
/// The state (#ops, #LOG_FILE, #LOG_LINE, logAt()) is the library's own and
/// is not exported from libtuskel.so; hosts set the logger through
/// CommonDecompressor::setLogger() and may call the ::Utils functions.

namespace QRN_SPACE {
class InputStream;
}

/// The host's log function: receives each message in three pieces (prefix,
/// text, line feed) and is expected to join them.
/// @ingroup util
typedef void (*LogCallback)(const char*);

/// Process-wide logger state, written without a lock (setLogger belongs
/// before decompression starts).
///
/// Atomics so that concurrent callers may mislabel a line but never race.
/// @ingroup util
struct LogOptions {
    std::atomic<int> level{0};                   ///< Errors at 1 and above, debug at 3 and above.
    std::atomic<LogCallback> callback{nullptr};  ///< Null: nothing is logged.
};

/// The logger state that CommonDecompressor::setLogger() writes. Not exported.
/// @ingroup util
extern LogOptions ops;
/// Source name printed with the next message; callers set it with
/// #LOG_LINE immediately before logging (see logAt()). Not exported.
/// @ingroup util
extern std::atomic<const char*> LOG_FILE;
/// Source line printed with the next message. Not exported.
/// @ingroup util
extern std::atomic<int> LOG_LINE;

/// Sets #LOG_FILE and #LOG_LINE for the next message. `file` must be a
/// static text. Another thread may change both before the message goes out:
/// the line is then mislabelled, nothing worse.
/// @ingroup util
inline void logAt(const char* file, int line) {
    LOG_FILE.store(file, std::memory_order_relaxed);
    LOG_LINE.store(line, std::memory_order_relaxed);
}

/// Host-side helpers at global scope: the three log functions and the quick
/// GZIP magic test.
///
/// The log functions format `format` printf-style and hand the host's
/// callback three pieces: the prefix `[DBG]`, `[ERR]` or `[INF]` followed by
/// `[file:line] ` (from #LOG_FILE and #LOG_LINE), the text cut at 1022
/// characters, and a line feed. Without a callback they do nothing. They
/// never throw and may be called from any thread; concurrent messages may
/// interleave their pieces.
/// @ingroup util
class TUSKEL_API Utils {
public:
    /// A debug line; delivered at level 3 and above.
    static void dbgMsg(const char* format, ...) __attribute__((format(printf, 1, 2)));
    /// An error line; delivered at level 1 and above.
    static void errMsg(const char* format, ...) __attribute__((format(printf, 1, 2)));
    /// An info line; delivered at any level: info ignores the level on purpose.
    static void infoMsg(const char* format, ...) __attribute__((format(printf, 1, 2)));

    /// Does the stream start with the GZIP magic? The position is unchanged
    /// (the stream must support mark and reset).
    /// @throws QRN_SPACE::IOException "unexpected EOF" for a stream of fewer
    ///   than 2 bytes, the position then not restored; what the stream throws.
    static bool check_gzip(QRN_SPACE::InputStream& in);
};

#endif
