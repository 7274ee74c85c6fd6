// How much the GZIP path costs over zlib itself. One process, the same
// compressed bytes in memory, interleaved rounds of:
//   a  zlib inflate straight into the output
//   b  zlib with the driver's shape: 33,792-byte reads, 51,200-byte blocks copied out
//   c  GzipUnarchiver + DeflateDecompressor over pre-touched memory buffers
//   d  CommonDecompressor::decompress end to end, as a host calls it: a
//      memory-backed CommonBuffer in, a pre-touched one out, no logger
// and, end to end like d, ZIP archives made by Info-ZIP's zip (ZipCorpus.h):
//   z  one deflated entry holding the same bytes
//   p  plain zlib over the same 20,000 deflate streams, one after the other
//   q  as p, with one z_stream reset between streams and one Z_FINISH call
//      each: the least plain zlib spends per stream
//   s  20,000 small files (1 B to 8 KiB), deflated
//   t  the same files stored
//   n  t's bytes copied into the same places through a 1 KiB buffer, one
//      read and one write per KiB as the copy helper does: t's floor
//   m  memcpy of t's stored bytes into the same places
// with the per-round throughput ratios of every variant after a and b
// against both (and of s against p and q, t against n and m). Another
// variant joins the rounds with one more entry in `variants`. Absolute speeds drift on a shared machine;
// ratios within a round do not.
//
//   gzip_inflate_bench [rounds] [megabytes] [zip directory]
//   gzip_inflate_bench --save FILE [megabytes]   writes the gzip input and exits
//
// The ZIP archives are made in the zip directory (default: one under
// $TMPDIR) and kept there, for timing other unzippers on them.
#include <benchmark/benchmark.h>
#include <zlib.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "MemoryHost.h"
#include "Random.h"
#include "ZipCorpus.h"
#include "io/BufferBaseOutputStream.h"
#include "io/ContinuousMemBufferBase.h"
#include "unarchiver/GzipUnarchiver.h"

using namespace QRN_SPACE;
using tuskel_bench::Random;

namespace {

const int kInputBlock = 33792;
const int kOutputBlock = 51200;
const size_t kGzipHeader = 10;  // zlib's own gzip header carries no optional field

void appendText(std::string& out, Random& r, size_t n) {
    static const char* const words[] = {"the", "archive", "member", "of", "a", "stream", "header", "buffer",
                                        "inflate", "entry", "is", "and", "with", "scanner", "mail", "gateway",
                                        "content", "type", "zero", "block", "window", "length", "code", "data"};
    size_t end = out.size() + n;
    while (out.size() < end) {
        out += words[r.below(sizeof words / sizeof *words)];
        out += r.below(12) == 0 ? ".\n" : " ";
        if (r.below(40) == 0) out += std::to_string(r.next() % 100000);
    }
}

// Records and code-like bytes: small deltas, skewed opcodes, zero padding.
void appendBinary(std::string& out, Random& r, size_t n) {
    size_t end = out.size() + n;
    uint32_t id = static_cast<uint32_t>(r.next());
    while (out.size() < end) {
        id += 1 + static_cast<uint32_t>(r.below(4));
        out.append(reinterpret_cast<const char*>(&id), sizeof id);
        static const unsigned char ops[] = {0x8B, 0x89, 0xE8, 0x48, 0x83, 0xC3, 0x55, 0x5D, 0x0F, 0x00};
        for (int i = 0; i < 12; ++i) out.push_back(static_cast<char>(ops[std::min<size_t>(r.below(16), 9)]));
        out.append(r.below(3), '\0');
    }
}

// Already compressed: deflated text, or noise.
void appendCompressed(std::string& out, Random& r, size_t n) {
    if (r.below(2) == 0) {
        std::string text;
        appendText(text, r, n * 3);
        uLongf size = compressBound(text.size());
        std::string packed(size, '\0');
        compress2(reinterpret_cast<Bytef*>(&packed[0]), &size, reinterpret_cast<const Bytef*>(text.data()), text.size(), 9);
        out.append(packed, 0, std::min<size_t>(size, n));
    } else {
        for (size_t i = 0; i < n; i += 8) {
            uint64_t v = r.next();
            out.append(reinterpret_cast<const char*>(&v), std::min<size_t>(8, n - i));
        }
    }
}

std::string makeData(size_t bytes) {
    Random r{0x9E3779B97F4A7C15ull};
    std::string out;
    out.reserve(bytes + (1 << 20));
    while (out.size() < bytes) {
        size_t piece = 4096 + r.below(256 * 1024);
        switch (r.below(4)) {
        case 0: case 1: appendText(out, r, piece); break;
        case 2: appendBinary(out, r, piece); break;
        default: appendCompressed(out, r, piece / 2); break;
        }
    }
    return out;
}

std::string gzipOf(const std::string& data) {
    z_stream z{};
    deflateInit2(&z, 6, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
    std::string out(deflateBound(&z, data.size()) + 64, '\0');
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data()));
    z.avail_in = static_cast<uInt>(data.size());
    z.next_out = reinterpret_cast<Bytef*>(&out[0]);
    z.avail_out = static_cast<uInt>(out.size());
    if (deflate(&z, Z_FINISH) != Z_STREAM_END) std::abort();
    out.resize(z.total_out);
    deflateEnd(&z);
    return out;
}

void check(bool ok, const char* what) {
    if (!ok) {
        std::fprintf(stderr, "%s failed\n", what);
        std::exit(1);
    }
}

// a: one inflate call over everything.
void inflateDirect(const std::string& gz, char* out, size_t outSize) {
    z_stream z{};
    check(inflateInit2(&z, -MAX_WBITS) == Z_OK, "inflateInit2");
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(gz.data() + kGzipHeader));
    z.avail_in = static_cast<uInt>(gz.size() - kGzipHeader);
    z.next_out = reinterpret_cast<Bytef*>(out);
    z.avail_out = static_cast<uInt>(outSize);
    int r;
    while ((r = inflate(&z, Z_NO_FLUSH)) == Z_OK) {
    }
    check(r == Z_STREAM_END, "inflate (a)");
    inflateEnd(&z);
}

// b: the driver's loop without its streams.
void inflateShaped(const std::string& gz, char* out) {
    z_stream z{};
    check(inflateInit2(&z, -MAX_WBITS) == Z_OK, "inflateInit2");
    static char input[kInputBlock];
    static char block[kOutputBlock];
    size_t pos = kGzipHeader, written = 0;
    z.next_out = reinterpret_cast<Bytef*>(block);
    z.avail_out = kOutputBlock;
    for (;;) {
        if (z.avail_in == 0) {
            size_t n = std::min<size_t>(kInputBlock, gz.size() - pos);
            std::memcpy(input, gz.data() + pos, n);
            pos += n;
            z.next_in = reinterpret_cast<Bytef*>(input);
            z.avail_in = static_cast<uInt>(n);
        }
        int r = inflate(&z, Z_NO_FLUSH);
        if (r == Z_OK) {
            if (z.avail_out == 0) {
                std::memcpy(out + written, block, kOutputBlock);
                written += kOutputBlock;
                z.next_out = reinterpret_cast<Bytef*>(block);
                z.avail_out = kOutputBlock;
            }
            continue;
        }
        check(r == Z_STREAM_END, "inflate (b)");
        std::memcpy(out + written, block, kOutputBlock - z.avail_out);
        break;
    }
    inflateEnd(&z);
}

// p: one raw deflate stream of a ZIP entry, as plain zlib would unpack it.
void inflateEntry(const char* in, size_t inSize, char* out, size_t outSize) {
    z_stream z{};
    check(inflateInit2(&z, -MAX_WBITS) == Z_OK, "inflateInit2");
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(in));
    z.avail_in = static_cast<uInt>(inSize);
    z.next_out = reinterpret_cast<Bytef*>(out);
    z.avail_out = static_cast<uInt>(outSize);
    int r;
    while ((r = inflate(&z, Z_NO_FLUSH)) == Z_OK) {
    }
    check(r == Z_STREAM_END, "inflate (p)");
    inflateEnd(&z);
}

// q: as p, but the stream is reset rather than set up again, and the whole
// output is asked for at once.
class ReusedInflate {
public:
    ReusedInflate() { check(inflateInit2(&_z, -MAX_WBITS) == Z_OK, "inflateInit2"); }
    ~ReusedInflate() { inflateEnd(&_z); }
    void run(const char* in, size_t inSize, char* out, size_t outSize) {
        check(inflateReset(&_z) == Z_OK, "inflateReset");
        _z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(in));
        _z.avail_in = static_cast<uInt>(inSize);
        _z.next_out = reinterpret_cast<Bytef*>(out);
        _z.avail_out = static_cast<uInt>(outSize);
        check(inflate(&_z, Z_FINISH) == Z_STREAM_END, "inflate (q)");
    }

private:
    z_stream _z{};
};

// n: a copy in 1 KiB steps through a buffer of its own.
void copyThrough1K(const char* in, size_t n, char* out) {
    static char chunk[1024];
    for (size_t done = 0; done < n;) {
        size_t k = std::min(n - done, sizeof chunk);
        std::memcpy(chunk, in + done, k);
        benchmark::ClobberMemory();  // two real copies, not one fused
        std::memcpy(out + done, chunk, k);
        done += k;
    }
}

// c: the library's own path; the host buffer stands in as a memory buffer.
struct IntoBuffer : ArchiveEntryProcessor {
    explicit IntoBuffer(BufferBase* buffer) : stream(buffer) {}
    OutputStream* processEntry(ArchiveEntryInfo* info, int& action) override {
        entry.reset(info);  // kept: the unarchiver records the trailer into it
        action = ArchiveConstants::ACTION_DECOMPRESS;
        return &stream;
    }
    BufferBaseOutputStream stream;
    std::unique_ptr<ArchiveEntryInfo> entry;
};

struct Variant {
    Variant(const char* name, std::function<void()> run, std::function<bool()> verify, size_t bytes,
            std::vector<size_t> baselines = {}, bool compared = true)
        : name(name), run(std::move(run)), verify(std::move(verify)), bytes(bytes), baselines(std::move(baselines)),
          compared(compared) {}

    const char* name;
    std::function<void()> run;
    std::function<bool()> verify;
    size_t bytes;   // unpacked per run
    std::vector<size_t> baselines;  // further variants to compare with
    bool compared;  // against a and b
    std::vector<double> seconds;

    double rate(int round) const { return bytes / seconds[static_cast<size_t>(round)]; }
};

const size_t kSmallFiles = 20000;

double median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v.size() % 2 ? v[v.size() / 2] : (v[v.size() / 2 - 1] + v[v.size() / 2]) / 2;
}

}  // namespace

// Writes the benchmark's gzip input to a file, for measurements made by
// other processes.
int save(const char* path, size_t megabytes) {
    std::string gz = gzipOf(makeData(megabytes << 20));
    FILE* f = std::fopen(path, "wb");
    check(f != nullptr && std::fwrite(gz.data(), 1, gz.size(), f) == gz.size() && std::fclose(f) == 0, path);
    return 0;
}

int main(int argc, char** argv) {
    if (argc > 2 && std::strcmp(argv[1], "--save") == 0) {
        return save(argv[2], argc > 3 ? std::strtoul(argv[3], nullptr, 10) : 64);
    }
    int rounds = argc > 1 ? std::atoi(argv[1]) : 9;
    size_t megabytes = argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 64;
    std::string data = makeData(megabytes << 20);
    std::string gz = gzipOf(data);
    std::printf("%zu bytes, gzip %zu bytes (%.1f%%)\n", data.size(), gz.size(), 100.0 * gz.size() / data.size());

    // Every output is touched before the first round.
    std::string outA(data.size(), '\0'), outB(data.size(), '\0');
    ContinuousMemBufferBase inC(static_cast<long>(gz.size())), outC(static_cast<long>(data.size()));
    inC.append(gz.data(), static_cast<int>(gz.size()));
    outC.write(0, std::string(data.size(), '\0').data(), static_cast<int>(data.size()));
    std::string memoryD(data.size(), '\0');
    tuskel_bench::MemoryOutput outD(&memoryD[0], memoryD.size());
    CommonDecompressor decompressor;
    decompressor.setLogger(0, nullptr);

    std::vector<Variant> variants = {
        {"a zlib direct", [&] { inflateDirect(gz, &outA[0], outA.size()); }, [&] { return outA == data; },
         data.size(), {}, false},
        {"b zlib shaped", [&] { inflateShaped(gz, &outB[0]); }, [&] { return outB == data; }, data.size(), {}, false},
        {"c GzipUnarchiver",
         [&] {
             IntoBuffer processor(&outC);
             GzipUnarchiver(&inC, processor, nullptr).start();
         },
         [&] { return std::string(outC.getMemAddress(), static_cast<size_t>(outC.getSize())) == data; },
         data.size()},
        {"d decompress",
         [&] {
             tuskel_bench::MemoryInput in(gz.data(), gz.size());
             tuskel_bench::PreparedEntries entries(outD);
             check(decompressor.decompress(&in, &entries) == 0 && entries.offered == 1, "decompress (d)");
         },
         [&] { return memoryD == data && outD.size() == static_cast<long>(data.size()); }, data.size()},
    };

    const char* tmp = std::getenv("TMPDIR");
    std::string zipDir = argc > 3 ? argv[3] : std::string(tmp ? tmp : "/tmp") + "/tuskel-zip-bench";
    tuskel_bench::ZipCorpus zip = tuskel_bench::makeZipCorpus(data, zipDir, kSmallFiles);
    std::printf("zip: one entry %zu bytes; %zu files of %zu bytes: deflated %zu, stored %zu (in %s)\n",
                zip.big.size(), zip.files.size(), zip.total, zip.small.size(), zip.stored.size(), zipDir.c_str());
    std::string memoryZ(data.size(), '\xA5');
    tuskel_bench::MemoryOutput outZ(&memoryZ[0], memoryZ.size());
    tuskel_bench::ArenaEntries entriesS(zip.files), entriesT(zip.files);
    std::string all, memoryM(zip.total, '\xA5');
    for (const auto& f : zip.files) all += f;
    auto unzip = [&](const std::string& archive, CommonEntryProcessor& entries, const char* what) {
        tuskel_bench::MemoryInput in(archive.data(), archive.size());
        check(decompressor.decompress(&in, &entries) == 0, what);
    };
    variants.push_back({"z zip, one entry",
                        [&] {
                            tuskel_bench::PreparedEntries entries(outZ);
                            unzip(zip.big, entries, "decompress (z)");
                            check(entries.offered == 1, "one entry (z)");
                        },
                        [&] { return memoryZ == data && outZ.size() == static_cast<long>(data.size()); },
                        data.size()});
    // Every file of the tree into its own place of `memory`, by `copy`
    // (file index, its bytes there) or, for the deflated tree's stored
    // files, memcpy.
    auto eachFile = [&](std::string& memory, const std::function<void(size_t, char*)>& copy) {
        size_t at = 0;
        for (size_t i = 0; i < zip.files.size(); ++i) {
            copy(i, &memory[at]);
            at += zip.files[i].size();
        }
    };
    using Inflate = std::function<void(const char*, size_t, char*, size_t)>;
    using Copy = std::function<void(const char*, size_t, char*)>;
    auto eachDeflated = [&](std::string& memory, const Inflate& inflate) {
        eachFile(memory, [&](size_t i, char* out) {
            const char* entry = zip.small.data() + zip.smallAt[i];
            if (zip.smallStored[i]) {
                std::memcpy(out, entry, zip.files[i].size());
            } else {
                inflate(entry, zip.smallSize[i], out, zip.files[i].size());
            }
        });
    };
    auto eachStored = [&](std::string& memory, const Copy& copy) {
        eachFile(memory,
                 [&](size_t i, char* out) { copy(zip.stored.data() + zip.storedAt[i], zip.files[i].size(), out); });
    };
    std::string memoryP(zip.total, '\xA5'), memoryQ(zip.total, '\xA5'), memoryN(zip.total, '\xA5');
    ReusedInflate reused;
    const size_t plain = variants.size();
    variants.emplace_back("p zlib per small file", [&] { eachDeflated(memoryP, inflateEntry); },
                          [&] { return memoryP == all; }, zip.total, std::vector<size_t>{}, false);
    variants.emplace_back("q zlib reset per file",
                          [&] {
                              eachDeflated(memoryQ, [&](const char* in, size_t inSize, char* out, size_t outSize) {
                                  reused.run(in, inSize, out, outSize);
                              });
                          },
                          [&] { return memoryQ == all; }, zip.total, std::vector<size_t>{});
    const size_t small = variants.size();
    variants.push_back({"s zip, small files",
                        [&] {
                            entriesS.restart();
                            unzip(zip.small, entriesS, "decompress (s)");
                        },
                        [&] { return entriesS.holds(zip.files); }, zip.total, {plain, plain + 1}});
    const size_t stored = variants.size();
    variants.push_back({"t zip, stored",
                        [&] {
                            entriesT.restart();
                            unzip(zip.stored, entriesT, "decompress (t)");
                        },
                        [&] { return entriesT.holds(zip.files); }, zip.total, {stored + 1, stored + 2}});
    variants.push_back({"n copy in 1 KiB steps", [&] { eachStored(memoryN, copyThrough1K); },
                        [&] { return memoryN == all; }, zip.total, {stored + 2}, false});
    variants.push_back({"m memcpy stored",
                        [&] {
                            eachStored(memoryM, [](const char* in, size_t n, char* out) { std::memcpy(out, in, n); });
                        },
                        [&] { return memoryM == all; }, zip.total, {}, false});

    for (int round = 0; round < rounds; ++round) {
        for (size_t k = 0; k < variants.size(); ++k) {
            Variant& v = variants[(k + round) % variants.size()];  // rotate the order against drift
            auto start = std::chrono::steady_clock::now();
            v.run();
            v.seconds.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
            if (round == 0) check(v.verify(), v.name);
        }
        std::printf("round %d:", round + 1);
        for (Variant& v : variants) std::printf("  %c %.0f MB/s", v.name[0], v.rate(round) / 1e6);
        std::printf("\n        ");
        for (const Variant& v : variants) {
            if (v.compared) {
                std::printf("  %c/b %.3f  %c/a %.3f", v.name[0], v.rate(round) / variants[1].rate(round), v.name[0],
                            v.rate(round) / variants[0].rate(round));
            }
            for (size_t b : v.baselines) {
                const Variant& base = variants[b];
                std::printf("  %c/%c %.3f", v.name[0], base.name[0], v.rate(round) / base.rate(round));
            }
        }
        std::printf("\n");
    }
    auto medianRatio = [&](const Variant& v, const Variant& base) {
        std::vector<double> ratios;
        for (int r = 0; r < rounds; ++r) ratios.push_back(v.rate(r) / base.rate(r));
        return median(ratios);
    };
    for (const Variant& v : variants) {
        std::vector<double> rates;
        for (int r = 0; r < rounds; ++r) rates.push_back(v.rate(r) / 1e6);
        std::printf("median %-20s %6.0f MB/s", v.name, median(rates));
        if (v.compared) std::printf("  /b %.3f  /a %.3f", medianRatio(v, variants[1]), medianRatio(v, variants[0]));
        for (size_t b : v.baselines) std::printf("  /%c %.3f", variants[b].name[0], medianRatio(v, variants[b]));
        std::printf("\n");
    }
    // Entries per second; for the deflated tree also what each entry costs
    // beyond inflating its bytes at a's speed, and beyond plain zlib on the
    // same streams (p): headers, names, objects, host calls, and the
    // driver's read-ahead of one whole 33,792-byte block per entry.
    for (size_t i : {small, stored}) {
        const Variant& v = variants[i];
        std::vector<double> entries, beyondA, beyondP;
        for (int r = 0; r < rounds; ++r) {
            size_t k = static_cast<size_t>(r);
            double t = v.seconds[k];
            entries.push_back(kSmallFiles / t);
            beyondA.push_back((t - zip.total / variants[0].rate(r)) / kSmallFiles * 1e6);
            beyondP.push_back((t - variants[plain].seconds[k]) / kSmallFiles * 1e6);
        }
        std::printf("median %-20s %6.0f entries/s", v.name, median(entries));
        if (i == small) std::printf(", %.2f us per entry beyond a, %.2f beyond p", median(beyondA), median(beyondP));
        std::printf("\n");
    }
    return 0;
}
