#ifndef TUSKEL_TOOLS_INPUTFILE_H
#define TUSKEL_TOOLS_INPUTFILE_H

#include <memory>
#include <string>

#include "io/BufferBase.h"

namespace tuskel_tool {

// A file opened read-only and seen as a BufferBase, so the unarchivers can
// read it at random positions (and recover through a ZIP's directory) the way
// they read any buffer. Reads go through one window of the file kept in
// memory, refilled with pread(2): memory stays at the window's size however
// large the file is. Every operation that would change the file throws
// IOException. One thread at a time; owns its descriptor.
class InputFile : public QRN_SPACE::BufferBase {
public:
    // IOException "PATH: <system error>" when the file cannot be opened or
    // is not a regular file.
    explicit InputFile(const std::string& path);
    ~InputFile() override;

    int read(long pos) override;
    int read(long pos, char* buf, int len) override;
    void write(long pos, char c) override;
    int write(long pos, const char* buf, int len) override;
    void insert(long pos, char c) override;
    int insert(long pos, const char* buf, int len) override;
    void cut(long pos) override;
    int cut(long pos, int len) override;
    void append(char c) override;
    int append(const char* buf, int len) override;
    void truncate(long newSize) override;

    const std::string& path() const { return _path; }
    // The furthest position read so far: how far the work has come.
    long reached() const { return _reached; }

private:
    // Makes the window hold `pos`; false when pos is past the end.
    bool _load(long pos);
    [[noreturn]] void _readOnly() const;

    std::string _path;
    int _fd = -1;
    std::unique_ptr<char[]> _window;
    long _windowStart = 0;
    long _windowLength = 0;  // bytes valid in _window
    long _reached = 0;
};

}  // namespace tuskel_tool

#endif
