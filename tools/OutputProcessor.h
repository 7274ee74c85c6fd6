#ifndef TUSKEL_TOOLS_OUTPUTPROCESSOR_H
#define TUSKEL_TOOLS_OUTPUTPROCESSOR_H

#include <memory>
#include <string>

#include "HostBuffers.h"
#include "tuskel/CommonDecompressor.h"

namespace tuskel_tool {

// Sends every entry to standard output, one after the other, or, given a
// directory, into files named 1, 2, 3, ... in the order the entries come.
// Owns the current entry's buffer and file, which it closes when the next
// entry arrives or the archive ends (the library is done with them then).
class OutputProcessor : public CommonEntryProcessor {
public:
    // An empty directory means standard output.
    explicit OutputProcessor(std::string directory) : _directory(std::move(directory)) {}
    OutputProcessor(const OutputProcessor&) = delete;
    OutputProcessor& operator=(const OutputProcessor&) = delete;
    ~OutputProcessor() { _closeCurrent(); }

    CommonBuffer* getBuffer(EntryRecord* info) override;
    void finish() override { _closeCurrent(); }

    int entries() const { return _entries; }
    // True once any entry could not be stored whole.
    bool failed() const { return _failed; }

private:
    void _closeCurrent();

    std::string _directory;
    std::unique_ptr<SequentialFdBuffer> _current;
    int _currentFd = -1;  // owned when it is a file of ours
    int _entries = 0;
    bool _failed = false;
};

}  // namespace tuskel_tool

#endif
