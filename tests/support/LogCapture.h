#ifndef TUSKEL_TEST_LOGCAPTURE_H
#define TUSKEL_TEST_LOGCAPTURE_H

#include <string>
#include <vector>

namespace tuskel_test {

// Installs a logger that records every piece handed to the callback, from
// an empty record, and removes it again on destruction. One capture at a
// time.
class LogCapture {
public:
    explicit LogCapture(int level);
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    // Every callback argument, in order.
    const std::vector<std::string>& pieces() const;
    // The pieces joined, as a host would print them.
    std::string text() const;
};

}  // namespace tuskel_test

#endif
