#include "Report.h"

#include <cstdio>

#include "Names.h"
#include "Progress.h"

namespace tuskel_tool {

void complain(const std::string& file, const std::string& what) {
    Progress::clearLine();
    std::fprintf(stderr, "tuskel: %s: %s\n", printable(file).c_str(), printable(what).c_str());
}

void complain(const std::string& file, const std::string& entry, const std::string& what) {
    Progress::clearLine();
    std::fprintf(stderr, "tuskel: %s: %s: %s\n", printable(file).c_str(), printable(entry).c_str(),
                 printable(what).c_str());
}

void complainIo(const std::string& file, const std::string& message) {
    if (message.compare(0, file.size() + 2, file + ": ") == 0) {
        Progress::clearLine();
        std::fprintf(stderr, "tuskel: %s\n", printable(message).c_str());
    } else {
        complain(file, message);
    }
}

}  // namespace tuskel_tool
