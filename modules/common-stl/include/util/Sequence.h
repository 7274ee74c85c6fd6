#ifndef QRN_UTIL_SEQUENCE_H
#define QRN_UTIL_SEQUENCE_H

#include "util/Mutex.h"

namespace QRN_SPACE {

/// Hands out increasing int values from any thread.
///
/// After the largest int it restarts at 0, and **0 is then handed out twice
/// in a row** (intended). Never throws; the arguments are checked by
/// assertions that abort the process in every build.
/// @ingroup sync
class TUSKEL_API Sequence : public RNObject {
public:
    /// A sequence whose first value is `initVal`, which must be at least 0
    /// (else the process aborts).
    explicit Sequence(int initVal);
    Sequence(const Sequence&) = delete;
    Sequence& operator=(const Sequence&) = delete;
    ~Sequence() override;

    /// The next value.
    int getNext();
    /// Reserves `size` (at least 1, else the process aborts) consecutive
    /// values and answers the first. Whether the last of them still fits in
    /// an int is noticed by the next call.
    int getNext(unsigned int size);

private:
    int _next = 0;  // the value handed out next; negative once it wrapped
    Mutex _mutex;   // guards _next
};

}  // namespace QRN_SPACE

#endif
