// A complete libtuskel host, built from the installed header alone. It
// unpacks a GZIP file or a ZIP archive and writes the bytes of every entry
// to standard output, one entry after the other; a line per entry and the
// result go to standard error.
//
//   unpack [-v] FILE        -v: the library's debug log on standard error
//
// Exit status: the result of decompress() (0 unpacked, 1 failed, 3 neither
// GZIP nor ZIP); 1 as well when an entry was skipped or came out shorter
// than declared; 64 usage, 66 FILE unreadable, 74 standard output failed.
#include <tuskel/CommonDecompressor.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <utility>

namespace {

// The origins CommonBuffer::seek is called with.
const int kSeekSet = 0;
const int kSeekEnd = 2;

// The most this host holds of one entry. An archive may declare any size,
// so the host sets its own ceiling instead of trusting the declaration.
const int kMaxEntrySize = 256 << 20;

// Bytes in memory: the whole input, or the output of one entry. Writes past
// the end grow it, up to `limit` bytes; seeks may go anywhere from 0 on and
// answer the new position, as the library expects.
class MemoryBuffer : public CommonBuffer {
public:
    explicit MemoryBuffer(long limit, std::string bytes = std::string())
        : bytes_(std::move(bytes)), limit_(limit), position_(0) {}
    MemoryBuffer(const MemoryBuffer&) = delete;
    MemoryBuffer& operator=(const MemoryBuffer&) = delete;

    int read(char* buf, int len) override {
        if (len <= 0 || position_ >= size()) return 0;
        long n = std::min<long>(len, size() - position_);
        std::memcpy(buf, bytes_.data() + position_, n);
        position_ += n;
        return static_cast<int>(n);
    }

    int write(const char* buf, int len) override {
        if (len <= 0 || position_ > limit_ - len) return 0;  // past the limit: refused
        if (position_ + len > size()) bytes_.resize(position_ + len);
        std::memcpy(&bytes_[position_], buf, len);
        position_ += len;
        return len;
    }

    long seek(int origin, long offset) override {
        long base = origin == kSeekEnd ? size() : origin == kSeekSet ? 0 : position_;
        if (offset < -base || offset > LONG_MAX - base) return -1;
        position_ = base + offset;
        return position_;
    }

    long tell() override { return position_; }

    const std::string& bytes() const { return bytes_; }

private:
    long size() const { return static_cast<long>(bytes_.size()); }

    std::string bytes_;
    long limit_;
    long position_;
};

// Receives the entries. The library is done with an entry's buffer once it
// asks for the next one or calls finish(), so each entry is written out
// then and its buffer freed: memory holds one entry at a time.
class EntryWriter : public CommonEntryProcessor {
public:
    EntryWriter() : entries_(0), skipped_(0), short_(0), declared_(0) {}

    CommonBuffer* getBuffer(EntryRecord* info) override {
        done();
        ++entries_;
        // A negative size (an archive's 4 GiB or more) or one past the
        // ceiling: skip the entry; the library goes on with the next.
        if (info->usize < 0 || info->usize > kMaxEntrySize) {
            std::fprintf(stderr, "entry %d: skipped, declares %d bytes\n", entries_, info->usize);
            ++skipped_;
            return 0;
        }
        declared_ = info->usize;
        current_.reset(new MemoryBuffer(declared_));
        return current_.get();
    }

    void finish() override { done(); }

    bool incomplete() const { return skipped_ > 0 || short_ > 0; }
    int entries() const { return entries_; }

private:
    // Writes out the entry in hand, if any. The library writes at most the
    // declared size; fewer bytes mean the entry was cut short.
    void done() {
        if (!current_) return;
        const std::string& bytes = current_->bytes();
        std::fwrite(bytes.data(), 1, bytes.size(), stdout);
        bool cut = static_cast<long>(bytes.size()) < declared_;
        std::fprintf(stderr, "entry %d: %lu bytes%s\n", entries_, static_cast<unsigned long>(bytes.size()),
                     cut ? ", fewer than declared" : "");
        if (cut) ++short_;
        current_.reset();
    }

    std::unique_ptr<MemoryBuffer> current_;
    int entries_;
    int skipped_;
    int short_;
    long declared_;
};

// The library hands each message over in three pieces: a prefix such as
// "[ERR][CommonBufferBase:61] ", the text, and "\n". They are joined here
// and written with one call, so that messages of several threads never mix.
void logPiece(const char* piece) {
    static thread_local std::string line;
    if (std::strcmp(piece, "\n") != 0) {
        line += piece;
        return;
    }
    if (!line.empty() && line[line.size() - 1] == '\n') line.erase(line.size() - 1);  // some texts end in one
    line += '\n';
    std::fputs(line.c_str(), stderr);
    line.clear();
}

}  // namespace

int main(int argc, char** argv) {
    bool verbose = argc == 3 && std::strcmp(argv[1], "-v") == 0;
    if (argc != 2 && !verbose) {
        std::fprintf(stderr, "usage: unpack [-v] FILE\n");
        return 64;
    }
    const char* path = argv[argc - 1];
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        std::fprintf(stderr, "unpack: %s: %s\n", path, std::strerror(errno));
        return 66;
    }
    std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    MemoryBuffer input(static_cast<long>(bytes.size()), std::move(bytes));

    CommonDecompressor decompressor;
    // Process-wide: set once, before any thread decompresses.
    decompressor.setLogger(verbose ? CommonDecompressor::LOG_DEBUG : CommonDecompressor::LOG_ERRORS, logPiece);
    EntryWriter entries;
    int result = decompressor.decompress(&input, &entries);
    entries.finish();  // the entry in hand, also when the archive failed midway

    std::fprintf(stderr, "unpack: %s: result %d; entries offered: %d\n", path, result, entries.entries());
    if (std::fflush(stdout) != 0) return 74;
    return result != CommonDecompressor::RESULT_OK ? result : entries.incomplete() ? 1 : 0;
}
