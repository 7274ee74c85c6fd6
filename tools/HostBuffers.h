#ifndef TUSKEL_TOOLS_HOSTBUFFERS_H
#define TUSKEL_TOOLS_HOSTBUFFERS_H

#include <cstddef>
#include <string>

#include "tuskel/CommonDecompressor.h"

namespace tuskel_tool {

// A file mapped read-only for the life of the object. An empty file maps to
// no memory at all. Not copyable.
class MappedFile {
public:
    MappedFile() = default;
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;
    ~MappedFile();

    // Maps path; on failure answers false and sets error to a message.
    bool open(const std::string& path, std::string& error);
    const char* data() const { return _data; }
    size_t size() const { return _size; }

private:
    const char* _data = nullptr;
    size_t _size = 0;
};

// The input handed to the library: bytes the host keeps (not owned).
// Seeks past the end are allowed, as with lseek, and then read nothing.
class MemoryInputBuffer : public CommonBuffer {
public:
    MemoryInputBuffer(const char* data, size_t size) : _data(data), _size(size) {}

    int read(char* buf, int len) override;
    int write(const char* buf, int len) override;  // read-only: stores nothing
    long seek(int origin, long offset) override;
    long tell() override { return _position; }

private:
    const char* _data;
    size_t _size;
    long _position = 0;
};

// One entry's output, written in order to a descriptor (standard output or
// a file of its own). Positions count from the entry's first byte; only a
// seek to the current position succeeds, which is all the library needs
// when it fills an entry front to back. Does not own the descriptor.
class SequentialFdBuffer : public CommonBuffer {
public:
    SequentialFdBuffer(int fd, std::string name) : _fd(fd), _name(std::move(name)) {}

    int read(char* buf, int len) override;  // nothing to read back
    int write(const char* buf, int len) override;
    long seek(int origin, long offset) override;
    long tell() override { return _position; }

    // True once a write or a seek could not be honoured.
    bool failed() const { return _failed; }

private:
    int _fd;
    std::string _name;  // for error messages
    long _position = 0;
    bool _failed = false;
};

}  // namespace tuskel_tool

#endif
