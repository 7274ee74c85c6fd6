#ifndef TUSKEL_TEST_HOSTDOUBLES_H
#define TUSKEL_TEST_HOSTDOUBLES_H

// A host's side of the library over the public header alone, as a host
// outside the project would write it.

#include <deque>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "tuskel/CommonDecompressor.h"

namespace tuskel_test {

// A host buffer over a std::string whose seek answers the new position (so
// the seek to the end answers 0 only when it is empty), as hosts usually do.
class MemoryHostBuffer : public CommonBuffer {
public:
    explicit MemoryHostBuffer(const std::string& data = std::string(), int maxRead = 1 << 30)
        : data(data), position(0), maxRead(maxRead), calls(0), tellBias(0) {}

    int read(char* buf, int len) {
        ++calls;
        if (position > static_cast<long>(data.size())) return 0;
        int n = static_cast<int>(data.copy(buf, len < maxRead ? len : maxRead, position));
        position += n;
        return n;
    }
    int write(const char* buf, int len) {
        ++calls;
        if (static_cast<size_t>(position) > data.size()) data.resize(position);
        data.replace(position, len, buf, len);
        position += len;
        return len;
    }
    long seek(int origin, long offset) {
        ++calls;
        long target = (origin == 2 ? static_cast<long>(data.size()) : 0) + offset;
        if (target < 0) return -1;
        return position = target;
    }
    long tell() { return position + tellBias; }

    std::string data;
    long position;
    int maxRead;    // hands out at most this many bytes per read
    int calls;      // every read, write and seek
    long tellBias;  // added to tell(): a host that misstates its size
};

// Records every entry offered and hands out memory buffers of its own.
class RecordingEntryProcessor : public CommonEntryProcessor {
public:
    RecordingEntryProcessor() : finished(0), throwOnGetBuffer(false) {}

    CommonBuffer* getBuffer(EntryRecord* info) {
        if (throwOnGetBuffer) throw std::runtime_error("host refuses");
        records.push_back(*info);
        if (refuse.count(static_cast<int>(records.size()) - 1) != 0) return 0;
        buffers.push_back(MemoryHostBuffer());
        return &buffers.back();
    }
    void finish() { ++finished; }

    // The bytes of every entry that got a buffer, in order.
    std::vector<std::string> contents() const {
        std::vector<std::string> out;
        for (size_t i = 0; i < buffers.size(); ++i) out.push_back(buffers[i].data);
        return out;
    }

    std::vector<EntryRecord> records;
    std::set<int> refuse;  // indexes of offered entries answered with null
    std::deque<MemoryHostBuffer> buffers;  // grows without moving what it handed out
    int finished;
    bool throwOnGetBuffer;  // getBuffer() throws std::runtime_error
};

}  // namespace tuskel_test

#endif
