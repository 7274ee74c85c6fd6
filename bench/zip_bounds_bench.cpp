// Bounds of the ZIP walk as the entry count grows: archives of 2,000,
// 20,000 and 200,000 small entries made by Python's zipfile (past 65,535
// entries it adds a ZIP64 end record, and the counts of the classic one
// saturate at 65,535), walked over a buffer as they are and with every other
// local header broken (a name length above 512), so that the walk fails and
// recovers through the central directory; and the host's decompress() over
// the intact ones. Reported per run: the time per entry, the entries
// offered, what the final entry carries (directory records read, the end
// record's total), and from the allocation operators the heap the run held
// at its peak beyond what it started with, per entry, next to what the
// directory handed to the processor takes per entry (zlib's own
// allocations, a constant per inflated entry, are not counted).
//
//   scripts/bench.sh zip_bounds_bench        (archives in $TUSKEL_BENCH_DIR, else /tmp)
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <memory>
#include <string>

#include "MemoryHost.h"
#include "io/ContinuousMemBufferBase.h"
#include "support/Allocations.h"
#include "unarchiver/ZipConstants.h"
#include "unarchiver/ZipEntryInfo.h"
#include "unarchiver/ZipUnarchiver.h"
#include "utils/IOUtils.h"

using namespace QRN_SPACE;
using tuskel_test::liveBytes;
using tuskel_test::peakBytes;

namespace {

void check(bool ok, const std::string& what) {
    if (!ok) {
        std::fprintf(stderr, "zip_bounds_bench: %s failed\n", what.c_str());
        std::exit(1);
    }
}

// `entries` small deflated entries of 15-character names (short enough to need no heap of their own), made by zipfile.
std::string makeArchive(long entries) {
    const char* base = std::getenv("TUSKEL_BENCH_DIR");
    const std::string path = std::string(base != nullptr ? base : "/tmp") + "/zip-bounds-" +
                             std::to_string(entries) + ".zip";
    const std::string script =
        "import sys, zipfile\n"
        "with zipfile.ZipFile(sys.argv[2], 'w', zipfile.ZIP_DEFLATED) as z:\n"
        "    for i in range(int(sys.argv[1])):\n"
        "        z.writestr('d%03d/%06d.txt' % (i // 1000, i), b'entry %d of the archive\\n' % i * 2)\n";
    check(std::system(("python3 -c \"" + script + "\" " + std::to_string(entries) + " '" + path + "'").c_str()) == 0,
          "zipfile");
    std::ifstream in(path, std::ios::binary);
    std::string data((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    check(!data.empty(), "reading " + path);
    std::remove(path.c_str());
    return data;
}

// The archive with the name length of every other local header (the second,
// fourth, ...) set beyond what a reader accepts.
std::string breakEveryOther(std::string zip) {
    typedef ZipConstants Z;
    size_t at = 0;
    for (long i = 0; zip.compare(at, 4, "PK\3\4") == 0; ++i) {
        const size_t next = at + Z::LOCHDR + IOUtils::readUShort(&zip[at + Z::LOCNAM]) +
                            IOUtils::readUShort(&zip[at + Z::LOCEXT]) + IOUtils::readUInt(&zip[at + Z::LOCSIZ]);
        if (i % 2 == 1) IOUtils::writeUShort(&zip[at + Z::LOCNAM], Z::MAXNAMELENGTH + 1);
        at = next;
    }
    return zip;
}

const std::string& archive(long entries, bool broken) {
    static std::map<std::pair<long, bool>, std::string> made;
    std::string& zip = made[{entries, broken}];
    if (zip.empty()) zip = broken ? breakEveryOther(archive(entries, false)) : makeArchive(entries);
    return zip;
}

// Unpacks into nothing, as a host would that only looks; keeps each entry
// until endUnarchiving(), and the last final entry (the one that carries the
// central directory) until the next run.
struct Sink : ArchiveEntryProcessor {
    struct Nowhere : OutputStream {
        using OutputStream::write;
        void close() override {}
        void flush() override {}
        void write(char) override {}
        int write(const char*, int len) override { return len; }
    } out;
    std::unique_ptr<ArchiveEntryInfo> entry, directory;
    long offered = 0;
    OutputStream* processEntry(ArchiveEntryInfo* info, int& action) override {
        entry.reset(info);
        ++offered;
        action = ArchiveConstants::ACTION_DECOMPRESS;
        return &out;
    }
    void endUnarchiving() override {
        if (entry && entry->name.empty()) directory = std::move(entry);
        entry.reset();
    }
};

void report(benchmark::State& state, long entries, long peak) {
    state.counters["per_entry"] =
        benchmark::Counter(static_cast<double>(entries), benchmark::Counter::kIsIterationInvariantRate |
                                                             benchmark::Counter::kInvert);
    state.counters["peak_B_per_entry"] = static_cast<double>(peak) / entries;
}

void BM_WalkOverBuffer(benchmark::State& state, bool broken) {
    const long entries = state.range(0);
    const std::string& zip = archive(entries, broken);
    ContinuousMemBufferBase buffer(static_cast<long>(zip.size()));
    buffer.append(zip.data(), static_cast<int>(zip.size()));
    Sink sink;
    long peak = 0;
    for (auto _ : state) {
        sink.offered = 0;
        sink.directory.reset();
        const long before = liveBytes;
        peakBytes = before;
        ZipUnarchiver(&buffer, sink, nullptr).start();
        peak = peakBytes - before;
    }
    const ZipInfo& dir = static_cast<ZipEntryInfo&>(*sink.directory).zipInfo();
    report(state, entries, peak);
    state.counters["offered"] = static_cast<double>(sink.offered);
    state.counters["central"] = dir.centralEntries;
    state.counters["end_total"] = dir.endCentralDir.totalEntries;
    state.counters["dir_B_per_entry"] =
        static_cast<double>(dir.centralDirs.capacity() * sizeof(ZipCentralDir)) / entries;
}

void BM_Decompress(benchmark::State& state) {
    const long entries = state.range(0);
    const std::string& zip = archive(entries, false);
    static char memory[4096];
    tuskel_bench::MemoryOutput output(memory, sizeof memory);
    long peak = 0;
    for (auto _ : state) {
        tuskel_bench::MemoryInput input(zip.data(), zip.size());
        tuskel_bench::PreparedEntries host(output);
        const long before = liveBytes;
        peakBytes = before;
        check(CommonDecompressor().decompress(&input, &host) == CommonDecompressor::RESULT_OK, "decompress");
        peak = peakBytes - before;
        check(host.offered == entries, "offering every entry");
    }
    report(state, entries, peak);
}

}  // namespace

BENCHMARK_CAPTURE(BM_WalkOverBuffer, intact, false)->Arg(2000)->Arg(20000)->Arg(200000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_WalkOverBuffer, broken, true)->Arg(2000)->Arg(20000)->Arg(200000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Decompress)->Arg(2000)->Arg(20000)->Arg(200000)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
