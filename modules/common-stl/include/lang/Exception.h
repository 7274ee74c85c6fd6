#ifndef QRN_LANG_EXCEPTION_H
#define QRN_LANG_EXCEPTION_H

#include <string>

#include "lang/RNObject.h"

namespace QRN_SPACE {

/// Every error the library raises: thrown by value, caught by reference,
/// carrying its message and the source location of the throw.
///
/// The subclasses add nothing but their type. Catch `Exception&` to see
/// every failure of the library; toString() or getMessage() gives the text.
/// An exception object is a value: copy it freely, share none across threads
/// while one of them changes it.
/// @ingroup core
class TUSKEL_API Exception : public RNObject {
public:
    std::string message;  ///< The text given at construction.
    std::string file;     ///< Source file of the throw, set by the thrower; empty until then.
    int line = 0;         ///< Source line of the throw, set by the thrower.

    /// An empty message, no location.
    Exception();
    /// The given message, no location.
    explicit Exception(const std::string& message);
    ~Exception() override;

    using RNObject::toString;  // the const overload still names the type

    /// The message.
    virtual const std::string& getMessage() const;
    /// The message as a C string, valid while the exception lives and is not
    /// changed; this is what gets logged. The const overload, inherited
    /// from RNObject, answers the type name instead.
    virtual const char* toString();
    /// `file` + ", line" + `line`, such as
    /// "../../core/tuskel/src/utils/IOUtils, line25". The missing blank is
    /// intended.
    virtual std::string getErrorLocation() const;
};

/// Failed or impossible stream and buffer I/O; the message is often the
/// system's error text (strerror).
/// @ingroup core
class TUSKEL_API IOException : public Exception {
public:
    using Exception::Exception;
    ~IOException() override;
};

/// An allocation of the library's own that failed ("Out of memory").
/// @ingroup core
class TUSKEL_API OutOfMemoryException : public Exception {
public:
    using Exception::Exception;
    ~OutOfMemoryException() override;
};

/// A compression operation that is unsupported ("Unimplemented") or that
/// failed (inflate errors).
/// @ingroup core
class TUSKEL_API CompressionException : public Exception {
public:
    using Exception::Exception;
    ~CompressionException() override;
};

/// An unsupported archive operation, a bad or unsupported entry, or an entry
/// processor that asked to abort.
/// @ingroup core
class TUSKEL_API ArchivingException : public Exception {
public:
    using Exception::Exception;
    ~ArchivingException() override;
};

/// An unsupported encoding operation ("Unimplemented").
/// @ingroup core
class TUSKEL_API EncodingException : public Exception {
public:
    using Exception::Exception;
    ~EncodingException() override;
};

/// Where a throw happened.
///
/// The file texts are part of the library's contract, so they are named
/// constants at each throw site, never `__FILE__`.
/// @ingroup core
struct ErrorSite {
    const char* file;  ///< Source file text, static; copied into Exception::file.
    int line;          ///< Source line; copied into Exception::line.
};

/// Builds an exception of type `E` with `message` and the location `site`,
/// and throws it by value.
/// @ingroup core
template <class E>
[[noreturn]] void throwAt(const std::string& message, ErrorSite site) {
    E e(message);
    e.file = site.file;
    e.line = site.line;
    throw e;
}

/// Throws the IOException of a failed system call: strerror(`error`)
/// between `prefix` (a path and ": ", where one is involved) and `suffix`.
///
/// Callers take errno right after the call, before anything else can change
/// it.
/// @ingroup core
[[noreturn]] TUSKEL_API void throwSystemError(ErrorSite site, int error, const std::string& prefix = std::string(),
                                              const char* suffix = "");

}  // namespace QRN_SPACE

#endif
