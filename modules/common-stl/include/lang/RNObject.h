#ifndef QRN_LANG_RNOBJECT_H
#define QRN_LANG_RNOBJECT_H

#include "lang/Export.h"

namespace QRN_SPACE {

// Root of the library's class hierarchy.
class TUSKEL_API RNObject {
public:
    virtual ~RNObject();

    // The mangled run-time type name of the dynamic class, e.g.
    // "16CommonBufferBase"; subclasses with a better text override it.
    virtual const char* toString() const;
};

}  // namespace QRN_SPACE

#endif
