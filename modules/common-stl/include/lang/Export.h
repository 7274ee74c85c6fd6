#ifndef QRN_LANG_EXPORT_H
#define QRN_LANG_EXPORT_H

/// @file
/// TUSKEL_API, the mark of what the shared library exports.

/// Marks a class or function that libtuskel.so exports.
///
/// The library is built with hidden default visibility; what hosts link
/// against is marked with TUSKEL_API. Everything else stays private.
/// @ingroup core
#define TUSKEL_API __attribute__((visibility("default")))

#endif
