#ifndef TUSKEL_BENCH_RANDOM_H
#define TUSKEL_BENCH_RANDOM_H

#include <cstddef>
#include <cstdint>

namespace tuskel_bench {

// Deterministic 64-bit generator (xorshift*), so every run measures the
// same bytes.
struct Random {
    uint64_t s;
    uint64_t next() {
        s ^= s >> 12;
        s ^= s << 25;
        s ^= s >> 27;
        return s * 2685821657736338717ull;
    }
    size_t below(size_t n) { return static_cast<size_t>(next() % n); }
};

}  // namespace tuskel_bench

#endif
