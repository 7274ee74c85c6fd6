#ifndef TUSKEL_TOOLS_REPORT_H
#define TUSKEL_TOOLS_REPORT_H

#include <string>

namespace tuskel_tool {

// Exit statuses, one per class of outcome.
enum ExitStatus {
    EXIT_ALL_GOOD = 0,
    EXIT_SOME_BAD = 1,       // some entries bad, skipped or refused
    EXIT_NOT_ARCHIVE = 3,    // neither GZIP nor ZIP nor a self-extractor
    EXIT_USAGE = 64,         // bad command line
    EXIT_IO_ERROR = 74,      // the input could not be read or the output written
};

// Messages on standard error, each naming the file and, where there is one,
// the entry: "tuskel: FILE: ENTRY: what". Names and messages (which may
// quote an archive's bytes) are printed with control characters escaped.
void complain(const std::string& file, const std::string& what);
void complain(const std::string& file, const std::string& entry, const std::string& what);
// A system error about `file`, whose message may name the file already.
void complainIo(const std::string& file, const std::string& message);

}  // namespace tuskel_tool

#endif
