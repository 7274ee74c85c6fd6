#ifndef TUSKEL_TEST_ALLOCATIONS_H
#define TUSKEL_TEST_ALLOCATIONS_H

#include <atomic>
#include <cstddef>

namespace tuskel_test {

// The largest single allocation by operator new or new[] since it was last
// set to 0, for bounds on what a reader allocates against its input. Linking
// this replaces the global allocation operators of the test program, in
// builds where TUSKEL_COUNT_ALLOCATIONS is defined: those without
// sanitizers, whose runtimes bring their own. Elsewhere it stays 0.
extern std::atomic<size_t> largestAllocation;

}  // namespace tuskel_test

#endif
