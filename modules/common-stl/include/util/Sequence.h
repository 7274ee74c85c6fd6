#ifndef QRN_UTIL_SEQUENCE_H
#define QRN_UTIL_SEQUENCE_H

#include "util/Mutex.h"

namespace QRN_SPACE {

// Hands out increasing int values from any thread. After the largest int it
// restarts at 0, and 0 is then handed out twice in a row (intended). Never
// throws; the arguments are checked by assertions that abort in every build.
class TUSKEL_API Sequence : public RNObject {
public:
    explicit Sequence(int initVal);  // initVal >= 0: the first value
    Sequence(const Sequence&) = delete;
    Sequence& operator=(const Sequence&) = delete;
    ~Sequence() override;

    int getNext();
    // Reserves `size` (> 0) consecutive values and answers the first. Whether
    // the last of them still fits in an int is noticed by the next call.
    int getNext(unsigned int size);

private:
    int _next = 0;  // the value handed out next; negative once it wrapped
    Mutex _mutex;   // guards _next
};

}  // namespace QRN_SPACE

#endif
