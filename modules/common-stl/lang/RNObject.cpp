#include "lang/RNObject.h"

#include <typeinfo>

namespace QRN_SPACE {

RNObject::~RNObject() = default;

const char* RNObject::toString() const { return typeid(*this).name(); }

}  // namespace QRN_SPACE
