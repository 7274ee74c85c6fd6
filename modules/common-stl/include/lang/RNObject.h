#ifndef QRN_LANG_RNOBJECT_H
#define QRN_LANG_RNOBJECT_H

#include "lang/Export.h"

namespace QRN_SPACE {

/// Root of the library's class hierarchy.
///
/// Holds no state; any number of threads may call toString() at once.
/// @ingroup core
class TUSKEL_API RNObject {
public:
    /// Virtual, so that every library object can be deleted through its base.
    virtual ~RNObject();

    /// The mangled run-time type name of the dynamic class, such as
    /// "16CommonBufferBase"; subclasses with a better text override it.
    /// The text is static: the caller does not free it.
    virtual const char* toString() const;
};

}  // namespace QRN_SPACE

#endif
