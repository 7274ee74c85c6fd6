#include "HostDoubles.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <stdexcept>

#include "support/TestFiles.h"

namespace tuskel_test {

int MemoryHostBuffer::read(char* buf, int len) {
    ++calls;
    if (throwOnRead) throw std::bad_alloc();
    long left = static_cast<long>(data.size()) - position;
    int n = static_cast<int>(std::max(0L, std::min<long>({left, len, maxRead})));
    if (n > 0) std::memcpy(buf, data.data() + position, n);
    position += n;
    return n;
}

int MemoryHostBuffer::write(const char* buf, int len) {
    ++calls;
    if (len <= 0) return 0;
    size_t end = static_cast<size_t>(position) + len;
    if (data.size() < end) data.resize(end, '\0');
    std::memcpy(&data[position], buf, len);
    position += len;
    return len;
}

long MemoryHostBuffer::_seek(int origin, long offset) {
    ++calls;
    long base = origin == 2 ? static_cast<long>(data.size()) : origin == 1 ? position : 0;
    long target = base + offset;
    if (target < 0 || target == failSeekAt) return -1;
    position = target;
    return target;
}

long MemoryHostBuffer::seek(int origin, long offset) { return _seek(origin, offset); }

long MemoryHostBuffer::tell() {
    ++calls;
    return position + tellBias;
}

long EndSeekZeroHostBuffer::seek(int origin, long offset) {
    long result = _seek(origin, offset);
    return origin == 2 && result >= 0 ? 0 : result;
}

CommonBuffer* RecordingEntryProcessor::getBuffer(EntryRecord* info) {
    if (throwOnGetBuffer) throw std::runtime_error("host refuses");
    records.push_back(*info);
    if (refuse.count(static_cast<int>(records.size()) - 1) != 0) return nullptr;
    buffers.push_back(std::make_unique<MemoryHostBuffer>());
    return buffers.back().get();
}

std::vector<std::string> RecordingEntryProcessor::contents() const {
    std::vector<std::string> out;
    for (const auto& buffer : buffers) out.push_back(buffer->data);
    return out;
}

std::string gzipWithTool(const std::string& data, const std::string& options, const std::string& name) {
    TempDir dir;
    std::string path = dir.file(name);
    writeFile(path, data);
    return commandOutput("gzip -c " + options + " " + shellQuote(path));
}

}  // namespace tuskel_test
