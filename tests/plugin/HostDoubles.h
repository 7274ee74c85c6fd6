#ifndef TUSKEL_TEST_HOSTDOUBLES_H
#define TUSKEL_TEST_HOSTDOUBLES_H

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "tuskel/CommonDecompressor.h"

namespace tuskel_test {

// A host buffer over a std::string whose seek answers the new position, as
// hosts usually do. It counts every call so tests can see what the library
// asked of the host.
class MemoryHostBuffer : public CommonBuffer {
public:
    explicit MemoryHostBuffer(std::string data = std::string()) : data(std::move(data)) {}

    int read(char* buf, int len) override;
    int write(const char* buf, int len) override;
    long seek(int origin, long offset) override;
    long tell() override;

    std::string data;
    long position = 0;
    int maxRead = 1 << 30;  // hands out at most this many bytes per read
    long failSeekAt = -1;   // a seek to this offset answers -1 and stays put
    long tellBias = 0;      // added to every tell(): a host that misstates its size
    bool throwOnRead = false;  // read() throws std::bad_alloc
    int calls = 0;          // every host operation

protected:
    long _seek(int origin, long offset);
};

// Positions like MemoryHostBuffer but answers 0 to the seek to the end.
class EndSeekZeroHostBuffer : public MemoryHostBuffer {
public:
    using MemoryHostBuffer::MemoryHostBuffer;
    long seek(int origin, long offset) override;
};

// Records every entry the library offers and hands out memory buffers.
class RecordingEntryProcessor : public CommonEntryProcessor {
public:
    CommonBuffer* getBuffer(EntryRecord* info) override;
    void finish() override { ++finished; }

    // The unpacked bytes of every entry that got a buffer, in order.
    std::vector<std::string> contents() const;

    std::vector<EntryRecord> records;
    std::set<int> refuse;  // indexes of offered entries answered with null
    std::vector<std::unique_ptr<MemoryHostBuffer>> buffers;
    int finished = 0;
    bool throwOnGetBuffer = false;  // throws std::runtime_error
};

// `data` compressed by the gzip program with the given options; with a
// name, the file handed to gzip has that name (stored unless -n is given).
std::string gzipWithTool(const std::string& data, const std::string& options, const std::string& name = "data");

}  // namespace tuskel_test

#endif
