#ifndef QRN_LANG_EXPORT_H
#define QRN_LANG_EXPORT_H

// The library is built with hidden default visibility; what hosts link
// against is marked with TUSKEL_API. Everything else stays private.
#define TUSKEL_API __attribute__((visibility("default")))

#endif
