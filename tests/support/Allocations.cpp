#include "support/Allocations.h"

#include <cstdlib>
#include <new>

namespace tuskel_test {

std::atomic<size_t> largestAllocation{0};

}  // namespace tuskel_test

#ifdef TUSKEL_COUNT_ALLOCATIONS
namespace {

void* allocate(size_t n) noexcept {
    using tuskel_test::largestAllocation;
    for (size_t seen = largestAllocation; n > seen && !largestAllocation.compare_exchange_weak(seen, n);) {
    }
    return std::malloc(n != 0 ? n : 1);
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
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, size_t) noexcept { std::free(p); }
void operator delete[](void* p, size_t) noexcept { std::free(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { std::free(p); }
#endif
