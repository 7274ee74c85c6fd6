#include "Commands.h"

#include <fnmatch.h>

#include "Report.h"

namespace tuskel_tool {

int openArchive(const std::string& path, Opened& opened) {
    try {
        opened.input.reset(new InputFile(path));
        opened.archive.reset(new Archive(*opened.input, path));
    } catch (QRN_SPACE::Exception& e) {
        complainIo(path, e.getMessage());
        return EXIT_IO_ERROR;
    }
    if (opened.archive->format() == Format::None) {
        complain(path, "not a GZIP or ZIP archive, nor a self-extracting ZIP");
        return EXIT_NOT_ARCHIVE;
    }
    return EXIT_ALL_GOOD;
}

bool selected(const std::string& name, const std::vector<std::string>& patterns) {
    if (patterns.empty()) return true;
    for (const std::string& pattern : patterns) {
        if (name == pattern || fnmatch(pattern.c_str(), name.c_str(), 0) == 0) return true;
    }
    return false;
}

void reportProblems(const std::string& file, Archive& archive) {
    for (const std::string& problem : archive.problems()) complain(file, problem);
}

}  // namespace tuskel_tool
