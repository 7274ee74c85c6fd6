#ifndef QRN_LANG_EXCEPTION_H
#define QRN_LANG_EXCEPTION_H

#include <string>

#include "lang/RNObject.h"

namespace QRN_SPACE {

// Every error the library raises: thrown by value, caught by reference,
// carrying its message and the source location of the throw.
class TUSKEL_API Exception : public RNObject {
public:
    std::string message;
    std::string file;  // set by the thrower
    int line = 0;      // set by the thrower

    Exception();
    explicit Exception(const std::string& message);
    ~Exception() override;

    using RNObject::toString;  // the const overload still names the type

    virtual const std::string& getMessage() const;
    // The non-const overload answers the message; this is what gets logged.
    virtual const char* toString();
    // file + ", line" + line. The missing blank is intended.
    virtual std::string getErrorLocation() const;
};

class TUSKEL_API IOException : public Exception {
public:
    using Exception::Exception;
    ~IOException() override;
};

class TUSKEL_API OutOfMemoryException : public Exception {
public:
    using Exception::Exception;
    ~OutOfMemoryException() override;
};

class TUSKEL_API CompressionException : public Exception {
public:
    using Exception::Exception;
    ~CompressionException() override;
};

class TUSKEL_API ArchivingException : public Exception {
public:
    using Exception::Exception;
    ~ArchivingException() override;
};

class TUSKEL_API EncodingException : public Exception {
public:
    using Exception::Exception;
    ~EncodingException() override;
};

// Where a throw happened. The file texts are part of the library's contract,
// so they are named constants at each throw site, never __FILE__.
struct ErrorSite {
    const char* file;
    int line;
};

// Builds an exception of type E with its location and throws it.
template <class E>
[[noreturn]] void throwAt(const std::string& message, ErrorSite site) {
    E e(message);
    e.file = site.file;
    e.line = site.line;
    throw e;
}

// The IOException of a failed system call: the system's text for `error`
// (strerror), prefixed by "path: " when a path is involved. Every system
// error of the library is raised here, so all such messages look alike.
[[noreturn]] void throwSystemError(int error, ErrorSite site, const std::string& path = std::string());

}  // namespace QRN_SPACE

#endif
