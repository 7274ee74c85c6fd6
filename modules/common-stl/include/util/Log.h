#ifndef QRN_UTIL_LOG_H
#define QRN_UTIL_LOG_H

#include <atomic>

#include "lang/Export.h"

namespace QRN_SPACE {
class InputStream;
}

// The host's log function: receives each message in three pieces (prefix,
// text, "\n") and is expected to join them.
typedef void (*LogCallback)(const char*);

// Process-wide logger state, written without a lock (setLogger belongs before
// decompression starts). Atomics so that concurrent callers may mislabel a
// line but never race.
struct LogOptions {
    std::atomic<int> level{0};
    std::atomic<LogCallback> callback{nullptr};
};

extern LogOptions ops;
// Source name and line printed with the next message; callers set both
// immediately before logging (see logAt).
extern std::atomic<const char*> LOG_FILE;
extern std::atomic<int> LOG_LINE;

inline void logAt(const char* file, int line) {
    LOG_FILE.store(file, std::memory_order_relaxed);
    LOG_LINE.store(line, std::memory_order_relaxed);
}

// Host-side helpers at global scope: the three log functions and the quick
// GZIP magic test.
class TUSKEL_API Utils {
public:
    // Delivered at level 3 and above.
    static void dbgMsg(const char* format, ...) __attribute__((format(printf, 1, 2)));
    // Delivered at level 1 and above.
    static void errMsg(const char* format, ...) __attribute__((format(printf, 1, 2)));
    // Delivered at any level: info ignores the level on purpose.
    static void infoMsg(const char* format, ...) __attribute__((format(printf, 1, 2)));

    // Does the stream start with the GZIP magic? The position is unchanged.
    static bool check_gzip(QRN_SPACE::InputStream& in);
};

#endif
