#include "OutputProcessor.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace tuskel_tool {

namespace {

const mode_t kFileMode = 0644;

}  // namespace

CommonBuffer* OutputProcessor::getBuffer(EntryRecord*) {
    _closeCurrent();
    ++_entries;
    if (_directory.empty()) {
        _current.reset(new SequentialFdBuffer(STDOUT_FILENO, "standard output"));
        return _current.get();
    }
    std::string path = _directory + "/" + std::to_string(_entries);
    int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kFileMode);
    if (fd < 0) {
        std::fprintf(stderr, "tuskel: %s: %s\n", path.c_str(), std::strerror(errno));
        _failed = true;
        return nullptr;  // the library skips the entry
    }
    _currentFd = fd;
    _current.reset(new SequentialFdBuffer(fd, path));
    return _current.get();
}

void OutputProcessor::_closeCurrent() {
    if (_current && _current->failed()) _failed = true;
    _current.reset();
    if (_currentFd >= 0 && close(_currentFd) != 0) {
        std::fprintf(stderr, "tuskel: closing entry %d: %s\n", _entries, std::strerror(errno));
        _failed = true;
    }
    _currentFd = -1;
}

}  // namespace tuskel_tool
