#ifndef QRN_IO_READAHEAD_H
#define QRN_IO_READAHEAD_H

#include <algorithm>
#include <atomic>

namespace QRN_SPACE {

/// Read-ahead for the in-memory buffers; an implementation detail of
/// ContinuousMemBufferBase and MemBufferBase, not exported.
///
/// A buffer's read releases its shared lock with an atomic operation, which
/// waits for the read's cache misses; so a reader walking a large buffer in
/// small pieces would take its misses one read at a time. When a read begins
/// where the previous one ended, the bytes the next read will want are
/// prefetched instead. Safe from any number of threads; never throws.
/// @ingroup buffers
class ReadAhead {
public:
    /// Bytes fetched ahead at most.
    static constexpr long LIMIT = 4096;

    /// Records a read of [pos, end); true when it continues the previous one.
    /// Concurrent readers may overwrite each other's record: the guess then
    /// costs a useless prefetch or misses a useful one, nothing else.
    bool follows(long pos, long end) const {
        const bool sequential = _next.load(std::memory_order_relaxed) == pos;
        _next.store(end, std::memory_order_relaxed);
        return sequential;
    }

    /// How far to fetch ahead of a read of `len` bytes: at most LIMIT.
    static long span(long len) { return std::min(len, LIMIT); }

    /// Prefetches the `n` bytes at `p`, one cache line at a time. A hint only:
    /// `p` is never dereferenced.
    static void fetch(const char* p, long n) {
        for (long at = 0; at < n; at += kLine) __builtin_prefetch(p + at);
    }

private:
    static constexpr long kLine = 64;

    mutable std::atomic<long> _next{0};
};

}  // namespace QRN_SPACE

#endif
