// Hostile input at scale: prefixes and deterministic mutants of the test
// archives, each through every entry point that reads untrusted bytes: the
// host's decompress(), ZipUnarchiver and GzipUnarchiver over a buffer, and
// check_zipexe with ZipExeUnarchiver. Only result codes and the library's
// own exceptions may come out; the sanitizers and the leak checker catch
// the rest, and a sanitizer's report is followed by the input that caused
// it (saved as sweep-failure.bin in the working directory).
#include <exception>
#include <fstream>
#include <iostream>
#include <random>

#include "UnarchiverTesting.h"
#include "ArchiveFuzzing.h"
#include "io/BufferBaseInputStream.h"
#include "plugin/HostDoubles.h"
#include "unarchiver/GzipConstants.h"
#include "unarchiver/GzipUnarchiver.h"
#include "unarchiver/ZipConstants.h"
#include "unarchiver/ZipExeUnarchiver.h"
#include "unarchiver/ZipUnarchiver.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/common_interface_defs.h>
#endif

using namespace unarchiver_test;

namespace {

struct Input {
    std::string name, data;
};

// The archives the other tests read, made once per run by their scripts: ZIPs with and without data descriptors,
// GZIP files, and self-extractors each holding a small archive.
std::vector<Input> archives() {
    std::vector<Input> all;
    auto add = [&](const char* script, const std::string& name, const char* arguments = "") {
        all.push_back({name, tuskel_test::readFile(madeBy(script, name, arguments))});
    };
    for (const char* name : {"empties.zip", "long.zip", "good.zip", "planted.zip", "pipe-small.zip", "zip.zip",
                             "zip0.zip", "pipe.zip"}) {
        add(TUSKEL_MAKE_ZIPS, name);
    }
    std::istringstream gzips(tuskel_test::readFile(madeBy(TUSKEL_MAKE_GZIPS, "gzips.list")));
    for (std::string name; gzips >> name;) add(TUSKEL_MAKE_GZIPS, name);
    std::istringstream exes(tuskel_test::readFile(madeBy(TUSKEL_MAKE_EXES, "exes.list", "--small")));
    for (std::string name, pos; exes >> name >> pos;) add(TUSKEL_MAKE_EXES, name, "--small");
    return all;
}

// The input being fed, for the sanitizers' death callback.
std::string currentName;
const std::string* currentData = nullptr;

[[maybe_unused]] void saveCurrentInput() {
    std::cerr << "sweep input: " << currentName << "\n";
    if (currentData != nullptr) std::ofstream("sweep-failure.bin", std::ios::binary) << *currentData;
}

// decompress() logs from inside its handlers: an exception being handled
// while it logs is the one that reached the host boundary.
long foreignAtBoundary = 0;
void onLog(const char*) {
    if (!std::current_exception()) return;
    try {
        throw;
    } catch (Exception&) {
    } catch (...) {
        ++foreignAtBoundary;
    }
}

// What came out of the entry points over a sweep.
struct Tally {
    long unpacked = 0, libraryExceptions = 0;  // unpacked: decompress() answered 0
    std::vector<std::string> failures;

    void fail(const std::string& what) { failures.push_back(currentName + ": " + what); }
};

template <class F>
void contained(Tally& tally, const char* entry, F&& f) {
    try {
        f();
    } catch (Exception&) {
        ++tally.libraryExceptions;
    } catch (std::exception& e) {
        tally.fail(std::string(entry) + " let out " + e.what());
    } catch (...) {
        tally.fail(std::string(entry) + " let out something else");
    }
}

// Every entry point once over `data`; `salt` varies how the host reads and
// what the processors answer.
void feed(Tally& tally, const std::string& name, const std::string& data, unsigned salt) {
    currentName = name, currentData = &data;
    tuskel_test::MemoryHostBuffer host(data, salt % 2 ? 7 : 1 << 30);
    tuskel_test::RecordingEntryProcessor entries;
    const long foreign = foreignAtBoundary;
    const int result = CommonDecompressor().decompress(&host, &entries);
    if (result == 2 || result < 0 || result > 3 || foreignAtBoundary != foreign) {
        tally.fail(join("decompress answered", result, "after", foreignAtBoundary - foreign, "foreign exceptions"));
    }
    tally.unpacked += result == 0;
    auto buffer = tuskel_test::memoryBuffer(data);
    tuskel_fuzz::VaryingProcessor zip, gzip, exe;
    zip.salt = gzip.salt = exe.salt = salt;
    contained(tally, "ZipUnarchiver", [&] { ZipUnarchiver(buffer.get(), zip, nullptr).start(); });
    contained(tally, "GzipUnarchiver", [&] { GzipUnarchiver(buffer.get(), gzip, nullptr).start(); });
    contained(tally, "check_zipexe", [&] {
        BufferBaseInputStream in(buffer.get());
        long pos = -1;
        const bool found = check_zipexe(in, pos);
        if (in.available() != static_cast<int>(data.size())) tally.fail("check_zipexe moved the stream");
        if (found) ZipExeUnarchiver(buffer.get(), exe, nullptr).start();
    });
}

// Runs a sweep with the logger on and checks its tally.
class Sweep : public ::testing::Test {
protected:
    void SetUp() override {
        CommonDecompressor().setLogger(CommonDecompressor::LOG_DEBUG, onLog);  // every line, hostile names too
#if defined(__SANITIZE_ADDRESS__)
        __sanitizer_set_death_callback(saveCurrentInput);
#endif
    }
    void TearDown() override {
        CommonDecompressor().setLogger(0, nullptr);
        currentData = nullptr;
        EXPECT_EQ(tally.failures.size(), 0u) << tally.failures.front();
        EXPECT_TRUE(tally.unpacked > 0 && tally.libraryExceptions > 0);  // the inputs reach both kinds of path
    }
    Tally tally;
};

// Stride prefixes of a larger input, and mutants in all. The sweep takes
// seconds without sanitizers and about 20 s with them, so it runs in every
// build: decompress() must hold on i386 and x86_64 alike.
const size_t kStrides = 1000, kMutants = 20000;

// Every prefix of an input of up to 16 KiB, the whole included; of a larger
// one every prefix within 1 KiB of either end, where the records are dense,
// and kStrides evenly between.
std::vector<size_t> prefixLengths(size_t size) {
    const size_t kWhole = 16384, kEdge = 1024;
    const size_t step = size <= kWhole ? 1 : (size - 2 * kEdge) / kStrides + 1;
    std::vector<size_t> lengths;
    for (size_t n = 0; n <= size; n += n < kEdge || n + kEdge >= size ? 1 : step) lengths.push_back(n);
    return lengths;
}

TEST_F(Sweep, EveryPrefixEndsInAResultCodeOrALibraryException) {
    unsigned salt = 0;
    for (const Input& input : archives()) {
        for (size_t n : prefixLengths(input.data.size())) {
            feed(tally, input.name + " cut at " + std::to_string(n), input.data.substr(0, n), salt++);
        }
    }
}

// A little-endian header field.
struct Field {
    size_t at;
    int width;
};

// The fields of every record the bytes seem to hold that a reader sizes,
// counts, positions or decides by: ZIP records found by their signatures,
// the self-extractor's marker, the GZIP header and trailer, and the DOS, PE
// and NE headers of an executable.
std::vector<Field> headerFields(const std::string& d) {
    std::vector<Field> fields;
    auto add = [&](size_t base, std::vector<std::pair<int, int>> offsetsAndWidths) {
        for (auto [offset, width] : offsetsAndWidths) {
            if (base + offset + width <= d.size()) fields.push_back({base + offset, width});
        }
    };
    const std::pair<std::string, std::vector<std::pair<int, int>>> records[] = {
        {"PK\3\4", {{6, 2}, {8, 2}, {18, 4}, {22, 4}, {26, 2}, {28, 2}}},  // flags, method, sizes, name, extra
        {"PK\1\2", {{8, 2}, {10, 2}, {20, 4}, {24, 4}, {28, 2}, {30, 2}, {32, 2}, {34, 2}, {42, 4}}},  // + comment,
        {"PK\5\6", {{4, 2}, {6, 2}, {8, 2}, {10, 2}, {12, 4}, {16, 4}, {20, 2}}},  // disk, offset; disks, counts
        {"PK\7\10", {{8, 4}, {12, 4}}},
        {std::string(reinterpret_cast<const char*>(ZipConstants::SIG_ZIPEXE), 4), {{12, 4}}},
    };
    for (const auto& [signature, offsets] : records) {
        for (size_t at = d.find(signature); at != std::string::npos; at = d.find(signature, at + 1)) add(at, offsets);
    }
    if (d.size() >= 10 && d.compare(0, 2, "\x1F\x8B") == 0) {
        add(0, {{2, 1}, {3, 1}});  // method, flags
        if (d[3] & GzipConstants::FEXTRA) add(0, {{10, 2}});
        add(d.size() - 8, {{0, 4}, {4, 4}});
    }
    if (d.size() < 64 || (d.compare(0, 2, "MZ") != 0 && d.compare(0, 2, "ZM") != 0)) return fields;
    add(0, {{2, 2}, {4, 2}, {0x18, 2}, {0x3C, 4}});  // last page, pages, relocations, new header
    const size_t h = static_cast<unsigned>(IOUtils::readUInt(&d[0x3C]));
    if (h + 64 > d.size()) return fields;
    const int count = IOUtils::readUShort(&d[h + (d.compare(h, 2, "PE") == 0 ? 6 : 0x1C)]);
    if (d.compare(h, 2, "PE") == 0) {
        add(h, {{6, 2}});
        for (int i = 0; i < count && i < 16; ++i) add(h + 248 + 40 * i, {{16, 4}, {20, 4}});  // raw size, pointer
    } else if (d.compare(h, 2, "NE") == 0) {
        add(h, {{0x1C, 2}, {0x22, 2}, {0x24, 2}, {0x26, 2}, {0x32, 2}});  // segments, tables, shift
        const size_t table = h + IOUtils::readUShort(&d[h + 0x22]);
        for (int i = 0; i < count && i < 8; ++i) add(table + 8 * i, {{0, 2}, {2, 2}});  // sector, length
    }
    return fields;
}

// 0, 1, -1, the largest and smallest signed values of the width, the input's size - 1 and + 1.
const int kBoundaries = 7;
long long boundary(int k, int width, size_t size) {
    const long long top = 1LL << (8 * width - 1);
    const long long values[kBoundaries] = {0, 1, -1, top - 1, top, static_cast<long long>(size) - 1,
                                           static_cast<long long>(size) + 1};
    return values[k];
}

// Mutant j of `count` of an input: the even ones set header fields to
// boundary values, spread evenly over every field and value; the odd ones
// (and the even ones once every field had its values) flip a bit or set a
// byte to 00, FF, 7F or 80, half of them within a record's first bytes.
std::string mutant(const std::string& data, const std::vector<Field>& fields, size_t j, size_t count,
                   std::mt19937& rng) {
    std::string m = data;
    const size_t combinations = fields.size() * kBoundaries, evens = (count + 1) / 2;
    if (j % 2 == 0 && j / 2 < combinations) {
        const size_t c = combinations <= evens ? j / 2 : j / 2 * combinations / evens;
        const Field& f = fields[c / kBoundaries];
        const long long value = boundary(static_cast<int>(c % kBoundaries), f.width, data.size());
        for (int i = 0; i < f.width; ++i) m[f.at + i] = static_cast<char>(value >> (8 * i));
        return m;
    }
    size_t at = rng() % data.size();
    if (!fields.empty() && rng() % 2 == 0) at = std::min(data.size() - 1, fields[rng() % fields.size()].at + rng() % 32);
    const unsigned kind = rng() % 5;
    static const char kSet[] = {'\x00', '\xFF', '\x7F', '\x80'};
    m[at] = kind == 4 ? static_cast<char>(m[at] ^ (1 << rng() % 8)) : kSet[kind];
    return m;
}

TEST_F(Sweep, MutantsEndInAResultCodeOrALibraryException) {
    const std::vector<Input> inputs = archives();
    size_t made = 0;
    for (size_t i = 0; i < inputs.size(); ++i) {
        const Input& input = inputs[i];
        const size_t count = kMutants / inputs.size() + (i < kMutants % inputs.size() ? 1 : 0);
        const std::vector<Field> fields = headerFields(input.data);
        std::mt19937 rng(static_cast<unsigned>(i) + 1);
        for (size_t j = 0; j < count; ++j, ++made) {
            const std::string m = mutant(input.data, fields, j, count, rng);
            feed(tally, input.name + " mutant " + std::to_string(j), m, static_cast<unsigned>(made));
        }
    }
    EXPECT_EQ(made, kMutants);
}

}  // namespace
