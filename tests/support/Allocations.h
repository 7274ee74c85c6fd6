#ifndef TUSKEL_TEST_ALLOCATIONS_H
#define TUSKEL_TEST_ALLOCATIONS_H

#include <atomic>
#include <cstddef>

namespace tuskel_test {

// Heap use through operator new and delete, for bounds on what a reader
// allocates against its input: the largest single allocation, and the bytes
// live now and at their peak, each since the caller last set it. Linking
// this replaces the global allocation operators of the program, in builds
// where TUSKEL_COUNT_ALLOCATIONS is defined: those without sanitizers, whose
// runtimes bring their own. Elsewhere they stay 0.
extern std::atomic<size_t> largestAllocation;
extern std::atomic<long> liveBytes, peakBytes;

}  // namespace tuskel_test

#endif
