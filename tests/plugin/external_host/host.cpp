// A host built apart from the project, from nothing but the installed
// header and library: if a slot, a field or an exported name differed from
// what the library was built with, this would fail to link or misbehave.
//
//   host IN.gz OUT    unpacks the single entry of IN.gz into OUT
//
// Plain C++98, as old hosts are.
#include <tuskel/CommonDecompressor.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

std::string gLog;

void collectLog(const char* piece) { gLog += piece; }

class StringBuffer : public CommonBuffer {
public:
    explicit StringBuffer(const std::string& data) : data(data), position(0) {}

    int read(char* buf, int len) {
        long left = static_cast<long>(data.size()) - position;
        int n = left < len ? static_cast<int>(left) : len;
        if (n <= 0) return 0;
        std::memcpy(buf, data.data() + position, n);
        position += n;
        return n;
    }
    int write(const char* buf, int len) {
        if (data.size() < static_cast<size_t>(position + len)) data.resize(position + len);
        std::memcpy(&data[position], buf, len);
        position += len;
        return len;
    }
    long seek(int origin, long offset) {
        position = (origin == 2 ? static_cast<long>(data.size()) : 0) + offset;
        return position;
    }
    long tell() { return position; }

    std::string data;
    long position;
};

class Collector : public CommonEntryProcessor {
public:
    Collector() : finished(0) {}
    ~Collector() {
        for (size_t i = 0; i < buffers.size(); ++i) delete buffers[i];
    }
    CommonBuffer* getBuffer(EntryRecord* info) {
        records.push_back(*info);
        buffers.push_back(new StringBuffer(std::string()));
        return buffers.back();
    }
    void finish() { ++finished; }

    std::vector<EntryRecord> records;
    std::vector<StringBuffer*> buffers;
    int finished;
};

bool readFile(const char* path, std::string& out) {
    FILE* f = std::fopen(path, "rb");
    if (f == 0) return false;
    char buf[65536];
    for (size_t n; (n = std::fread(buf, 1, sizeof buf, f)) > 0;) out.append(buf, n);
    std::fclose(f);
    return true;
}

int fail(const char* what) {
    std::fprintf(stderr, "host: %s\nlog:\n%s", what, gLog.c_str());
    return 1;
}

bool logged(const char* line) { return gLog.find(line) != std::string::npos; }

}  // namespace

int main(int argc, char** argv) {
    std::string input;
    if (argc != 3 || !readFile(argv[1], input)) return fail("usage: host IN.gz OUT");

    CommonDecompressor decompressor;
    decompressor.setLogger(CommonDecompressor::LOG_DEBUG, collectLog);
    if (decompressor.level != 3 || decompressor.callback != collectLog) return fail("fields out of place");
    decompressor.setOptions(1, &input);

    StringBuffer archive(input);
    Collector entries;
    if (decompressor.decompress(&archive, &entries) != CommonDecompressor::RESULT_OK) return fail("not unpacked");
    if (entries.buffers.size() != 1 || entries.finished != 1) return fail("not one entry");
    const std::string& out = entries.buffers[0]->data;
    // The size offered is the trailer's ISIZE: the last four bytes, little-endian.
    unsigned long isize = 0;
    for (int i = 1; i <= 4; ++i) isize = isize * 256 + static_cast<unsigned char>(input[input.size() - i]);
    if (static_cast<unsigned long>(entries.records[0].usize) != isize || out.size() != isize) return fail("size");
    if (!logged("[DBG][EntryProcessor:26] find entry[")) return fail("no entry log line");

    StringBuffer junk("neither GZIP nor ZIP");
    if (decompressor.decompress(&junk, &entries) != CommonDecompressor::RESULT_UNSUPPORTED) return fail("junk");
    if (!logged("[DBG][CommonDecompressor:66] Not find the archiver, not support\n")) return fail("no junk log");
    if (decompressor.decompress(0, &entries) != CommonDecompressor::RESULT_NULL_ARGUMENT) return fail("null");
    if (!logged("[ERR][CommonDecompressor:19] hb == NULL || processor == NULL\n")) return fail("no null log");

    FILE* f = std::fopen(argv[2], "wb");
    if (f == 0 || std::fwrite(out.data(), 1, out.size(), f) != out.size() || std::fclose(f) != 0) {
        return fail("cannot write the output");
    }
    return 0;
}
