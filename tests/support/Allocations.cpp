#include "support/Allocations.h"

#include <cstdlib>
#include <new>

namespace tuskel_test {

std::atomic<size_t> largestAllocation{0};
std::atomic<long> liveBytes{0}, peakBytes{0};

}  // namespace tuskel_test

#ifdef TUSKEL_COUNT_ALLOCATIONS
namespace {

using namespace tuskel_test;

// Each block carries its size in front, so that a release can count it.
const size_t kHeader = alignof(std::max_align_t);

template <class T>
void raise(std::atomic<T>& most, T now) {
    for (T seen = most; now > seen && !most.compare_exchange_weak(seen, now);) {
    }
}

void* allocate(size_t n) noexcept {
    char* block = static_cast<char*>(std::malloc(n + kHeader));
    if (block == nullptr) return nullptr;
    *reinterpret_cast<size_t*>(block) = n;
    raise(largestAllocation, n);
    raise(peakBytes, liveBytes += static_cast<long>(n));
    return block + kHeader;
}

void release(void* p) noexcept {
    if (p == nullptr) return;
    char* block = static_cast<char*>(p) - kHeader;
    liveBytes -= static_cast<long>(*reinterpret_cast<size_t*>(block));
    std::free(block);
}

void* allocateOrThrow(size_t n) {
    if (void* p = allocate(n)) return p;
    throw std::bad_alloc();
}

}  // namespace

void* operator new(size_t n) { return allocateOrThrow(n); }
void* operator new[](size_t n) { return allocateOrThrow(n); }
void* operator new(size_t n, const std::nothrow_t&) noexcept { return allocate(n); }
void* operator new[](size_t n, const std::nothrow_t&) noexcept { return allocate(n); }
void operator delete(void* p) noexcept { release(p); }
void operator delete[](void* p) noexcept { release(p); }
void operator delete(void* p, size_t) noexcept { release(p); }
void operator delete[](void* p, size_t) noexcept { release(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { release(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { release(p); }
#endif
