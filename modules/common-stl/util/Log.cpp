#include "util/Log.h"

#include <cstdarg>
#include <cstdio>

LogOptions ops;
std::atomic<const char*> LOG_FILE{""};
std::atomic<int> LOG_LINE{0};

namespace {

const int kLevelError = 1;
const int kLevelDebug = 3;
// Both pieces are cut at 1022 characters plus the terminating zero.
const size_t kLineBound = 1023;

void deliver(LogCallback callback, const char* tag, const char* format, va_list args) {
    char buf[1024];
    const char* file = LOG_FILE.load(std::memory_order_relaxed);
    std::snprintf(buf, kLineBound, "[%s][%s:%d] ", tag, file != nullptr ? file : "",
                  LOG_LINE.load(std::memory_order_relaxed));
    callback(buf);
    std::vsnprintf(buf, kLineBound, format, args);
    callback(buf);
    callback("\n");
}

// The callback is read once, so the three pieces go to the same function.
LogCallback callbackAt(int minimumLevel) {
    LogCallback callback = ops.callback.load(std::memory_order_relaxed);
    if (callback == nullptr || ops.level.load(std::memory_order_relaxed) < minimumLevel) return nullptr;
    return callback;
}

}  // namespace

void Utils::dbgMsg(const char* format, ...) {
    LogCallback callback = callbackAt(kLevelDebug);
    if (callback == nullptr) return;
    va_list args;
    va_start(args, format);
    deliver(callback, "DBG", format, args);
    va_end(args);
}

void Utils::errMsg(const char* format, ...) {
    LogCallback callback = callbackAt(kLevelError);
    if (callback == nullptr) return;
    va_list args;
    va_start(args, format);
    deliver(callback, "ERR", format, args);
    va_end(args);
}

void Utils::infoMsg(const char* format, ...) {
    LogCallback callback = ops.callback.load(std::memory_order_relaxed);
    if (callback == nullptr) return;
    va_list args;
    va_start(args, format);
    deliver(callback, "INF", format, args);
    va_end(args);
}
