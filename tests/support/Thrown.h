#ifndef TUSKEL_TEST_THROWN_H
#define TUSKEL_TEST_THROWN_H

#include <string>

#include "lang/Exception.h"

namespace tuskel_test {

// "message @ location" (or the message alone, unless `where`) of the E that
// f throws, or "no error". An exception of any other type escapes and fails
// the test.
template <class E = QRN_SPACE::Exception, class F>
std::string thrown(F&& f, bool where = true) {
    try {
        f();
    } catch (E& e) {
        return e.getMessage() + (where ? " @ " + e.getErrorLocation() : "");
    }
    return "no error";
}

}  // namespace tuskel_test

#endif
