// The file and buffered streams against the C and C++ standard libraries
// and the bare system call, over one text file in the page cache. One
// process, interleaved rounds of:
//   g  std::getline on an std::ifstream              l  BufferedInputStream(FileInputStream)::readLine
//   f  fgetc                                         r  read() of the same, one byte per virtual call
//   v  read() of an in-memory stream, one virtual call per byte and nothing else: r's floor
//   x  fwrite of 100-byte pieces                     w  BufferedOutputStream(FileOutputStream), the same pieces
//   y  fwrite as x, with a stdio buffer of the size the streams get
//   p  read(2) in 1 MiB blocks                       b  FileInputStream::read in 1 MiB blocks
// with the per-round ratios l/g, r/f, v/f, r/v, w/x, w/y and b/p and their
// medians. Absolute speeds drift on a shared machine; ratios within a round
// do not.
//
//   file_stream_bench [rounds] [megabytes] [directory] [stream buffer bytes]
//
// The file (and what the writers write) lives in a fresh directory under
// the given one (default $TMPDIR or /tmp), removed at the end.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "Random.h"
#include "io/BufferedInputStream.h"
#include "io/BufferedOutputStream.h"
#include "io/FileInputStream.h"
#include "io/FileOutputStream.h"

using namespace QRN_SPACE;
using tuskel_bench::Random;

namespace {

int gStreamBuffer = 64 * 1024;  // what the buffered streams (and y's stdio) get
const int kBlock = 1 << 20;
const int kPiece = 100;

std::string gDirectory;  // removed at exit, also after a failed check

void removeDirectory() {
    if (!gDirectory.empty()) std::system(("rm -rf '" + gDirectory + "'").c_str());
}

void check(bool ok, const char* what) {
    if (!ok) {
        std::fprintf(stderr, "%s failed\n", what);
        std::exit(1);
    }
}

// Lines of 0 to about 120 characters of words and numbers.
std::string makeText(size_t bytes) {
    static const char* const words[] = {"the", "archive", "member", "of", "a", "stream", "header", "buffer",
                                        "inflate", "entry", "is", "and", "with", "scanner", "mail", "gateway"};
    Random r{0x2545F4914F6CDD1Dull};
    std::string out;
    out.reserve(bytes + 256);
    while (out.size() < bytes) {
        for (size_t n = r.below(20); n > 0; --n) {
            out += words[r.below(sizeof words / sizeof *words)];
            out += r.below(8) == 0 ? std::to_string(r.next() % 100000) + " " : " ";
        }
        out += '\n';
    }
    return out;
}

// What a reader saw: a check that it read everything, in order.
struct Seen {
    unsigned long lines = 0, bytes = 0, sum = 0;
    bool operator==(const Seen& o) const { return lines == o.lines && bytes == o.bytes && sum == o.sum; }
};

Seen getlineAll(const std::string& path) {
    Seen s;
    std::ifstream in(path, std::ios::binary);
    for (std::string line; std::getline(in, line);) ++s.lines, s.bytes += line.size();
    return s;
}

Seen readLineAll(const std::string& path) {
    Seen s;
    FileInputStream file(path.c_str());
    BufferedInputStream in(file, gStreamBuffer);
    for (std::string line; in.readLine(line);) ++s.lines, s.bytes += line.size();
    return s;
}

Seen fgetcAll(const std::string& path) {
    Seen s;
    FILE* f = std::fopen(path.c_str(), "rb");
    check(f != nullptr, "fopen");
    for (int c; (c = std::fgetc(f)) != EOF;) ++s.bytes, s.sum += static_cast<unsigned>(c);
    std::fclose(f);
    return s;
}

// One byte per call through the base class, as a caller holding an
// InputStream& makes them; the reference is laundered so that the compiler
// cannot see the dynamic type and inline the call away.
Seen bytesOf(InputStream& stream) {
    InputStream* in = &stream;
    benchmark::DoNotOptimize(in);
    Seen s;
    for (int c; (c = in->read()) != -1;) ++s.bytes, s.sum += static_cast<unsigned>(c);
    return s;
}

Seen readByteAll(const std::string& path) {
    FileInputStream file(path.c_str());
    BufferedInputStream in(file, gStreamBuffer);
    return bytesOf(in);
}

// The least one virtual read() per byte can cost: the bytes already in memory.
class MemoryBytes : public InputStream {
public:
    explicit MemoryBytes(const std::string& data) : _data(data) {}
    int read() override { return _at < _data.size() ? static_cast<unsigned char>(_data[_at++]) : -1; }

private:
    const std::string& _data;
    size_t _at = 0;
};

void fwriteAll(const std::string& text, const std::string& path, std::vector<char>* buffer = nullptr) {
    FILE* f = std::fopen(path.c_str(), "wb");
    check(f != nullptr, "fopen");
    if (buffer != nullptr) check(std::setvbuf(f, buffer->data(), _IOFBF, buffer->size()) == 0, "setvbuf");
    for (size_t at = 0; at < text.size(); at += kPiece) {
        std::fwrite(text.data() + at, 1, std::min<size_t>(kPiece, text.size() - at), f);
    }
    check(std::fclose(f) == 0, "fclose");
}

void streamWriteAll(const std::string& text, const std::string& path) {
    FileOutputStream file(path.c_str(), FileOutputStream::MODE_CREATE);
    BufferedOutputStream out(file, gStreamBuffer);
    for (size_t at = 0; at < text.size(); at += kPiece) {
        out.write(text.data() + at, static_cast<int>(std::min<size_t>(kPiece, text.size() - at)));
    }
    out.close();
    file.close();
}

Seen sysReadAll(const std::string& path, std::vector<char>& block) {
    Seen s;
    int fd = ::open(path.c_str(), O_RDONLY);
    check(fd >= 0, "open");
    for (ssize_t n; (n = ::read(fd, block.data(), kBlock)) > 0;) ++s.lines, s.bytes += static_cast<unsigned long>(n);
    ::close(fd);
    return s;
}

Seen streamBlocksAll(const std::string& path, std::vector<char>& block) {
    Seen s;
    FileInputStream in(path.c_str());
    for (int n; (n = in.read(block.data(), kBlock)) > 0;) ++s.lines, s.bytes += static_cast<unsigned long>(n);
    return s;
}

bool sameFile(const std::string& path, const std::string& text) {
    std::ifstream in(path, std::ios::binary);
    std::string content((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    return content == text;
}

struct Variant {
    char name;
    std::function<void()> run;
    std::function<bool()> verify;
    std::vector<double> seconds;
};

double median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v.size() % 2 ? v[v.size() / 2] : (v[v.size() / 2 - 1] + v[v.size() / 2]) / 2;
}

}  // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 9;
    const size_t megabytes = argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 256;
    const char* tmp = std::getenv("TMPDIR");
    std::string base = argc > 3 ? argv[3] : tmp != nullptr ? tmp : "/tmp";
    std::string pattern = base + "/tuskel-file-bench-XXXXXX";
    check(mkdtemp(&pattern[0]) != nullptr, "mkdtemp");
    gDirectory = pattern;
    std::atexit(removeDirectory);
    if (argc > 4) gStreamBuffer = std::atoi(argv[4]);
    std::vector<char> stdioBuffer(static_cast<size_t>(gStreamBuffer));

    const std::string text = makeText(megabytes << 20), path = gDirectory + "/text";
    const std::string written[3] = {gDirectory + "/x", gDirectory + "/y", gDirectory + "/w"};
    fwriteAll(text, path);
    std::vector<char> block(kBlock);
    const Seen blocks = sysReadAll(path, block);  // and now it is in the page cache
    std::printf("%zu bytes of text in %s; stream buffers of %d bytes\n", text.size(), path.c_str(), gStreamBuffer);

    Seen lines, bytes, got[7];
    lines.lines = static_cast<unsigned long>(std::count(text.begin(), text.end(), '\n'));
    lines.bytes = text.size() - lines.lines;
    for (char c : text) ++bytes.bytes, bytes.sum += static_cast<unsigned char>(c);
    std::vector<Variant> variants = {
        {'g', [&] { got[0] = getlineAll(path); }, [&] { return got[0] == lines; }, {}},
        {'l', [&] { got[1] = readLineAll(path); }, [&] { return got[1] == lines; }, {}},
        {'f', [&] { got[2] = fgetcAll(path); }, [&] { return got[2] == bytes; }, {}},
        {'r', [&] { got[3] = readByteAll(path); }, [&] { return got[3] == bytes; }, {}},
        {'v', [&] { MemoryBytes in(text); got[4] = bytesOf(in); }, [&] { return got[4] == bytes; }, {}},
        {'x', [&] { fwriteAll(text, written[0]); }, [&] { return sameFile(written[0], text); }, {}},
        {'y', [&] { fwriteAll(text, written[1], &stdioBuffer); }, [&] { return sameFile(written[1], text); }, {}},
        {'w', [&] { streamWriteAll(text, written[2]); }, [&] { return sameFile(written[2], text); }, {}},
        {'p', [&] { got[5] = sysReadAll(path, block); }, [&] { return got[5] == blocks; }, {}},
        {'b', [&] { got[6] = streamBlocksAll(path, block); }, [&] { return got[6] == blocks; }, {}},
    };
    auto rate = [&](char name, size_t round) {
        for (const Variant& v : variants) {
            if (v.name == name) return static_cast<double>(text.size()) / v.seconds[round];
        }
        return 0.0;
    };
    const char* const ratios[] = {"lg", "rf", "vf", "rv", "wx", "wy", "bp"};
    std::vector<std::vector<double>> ratioRounds(sizeof ratios / sizeof *ratios);

    for (int round = 0; round < rounds; ++round) {
        for (size_t k = 0; k < variants.size(); ++k) {
            Variant& v = variants[(k + static_cast<size_t>(round)) % variants.size()];  // rotate against drift
            auto start = std::chrono::steady_clock::now();
            v.run();
            v.seconds.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
            if (round == 0) check(v.verify(), std::string(1, v.name).c_str());
        }
        std::printf("round %d:", round + 1);
        for (const Variant& v : variants) std::printf("  %c %.0f MB/s", v.name, rate(v.name, round) / 1e6);
        std::printf("\n        ");
        for (size_t i = 0; i < ratioRounds.size(); ++i) {
            ratioRounds[i].push_back(rate(ratios[i][0], round) / rate(ratios[i][1], round));
            std::printf("  %c/%c %.3f", ratios[i][0], ratios[i][1], ratioRounds[i].back());
        }
        std::printf("\n");
    }
    std::printf("median:");
    for (size_t i = 0; i < ratioRounds.size(); ++i) {
        std::printf("  %c/%c %.3f", ratios[i][0], ratios[i][1], median(ratioRounds[i]));
    }
    std::printf("\n");
    return 0;
}
