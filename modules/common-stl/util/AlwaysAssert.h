#ifndef QRN_UTIL_ALWAYSASSERT_H
#define QRN_UTIL_ALWAYSASSERT_H

// The C library's assertion reporter. <assert.h> declares it only without
// NDEBUG, so it is declared here with glibc's own signature.
extern "C" void __assert_fail(const char* assertion, const char* file, unsigned int line,
                              const char* function) noexcept __attribute__((__noreturn__));

// An argument check of the synchronisation classes: it aborts with the
// standard assertion report in every build type (NDEBUG does not remove it).
// The report names the source "Mutex", where these checks have always lived;
// `line` is a named constant of the calling file.
#define QRN_ALWAYS_ASSERT(expr, line) \
    ((expr) ? static_cast<void>(0) : __assert_fail(#expr, "Mutex", (line), __PRETTY_FUNCTION__))

#endif
