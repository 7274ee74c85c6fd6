// Self-extractor detection over a 32-bit PE image held in a contiguous
// memory buffer whose one section, 64 MiB of noise with no marker block, is
// scanned to its end: as ".data" (two fixed probes, then the marker's 8
// bytes looked for) and as "_winzip" (its first 4 bytes looked for).
//
//   scripts/bench.sh zipexe_bench -- --benchmark_repetitions=5 --benchmark_report_aggregates_only=true
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>

#include "bench/Random.h"
#include "io/BufferBaseInputStream.h"
#include "io/ContinuousMemBufferBase.h"
#include "unarchiver/ZipConstants.h"
#include "unarchiver/ZipExeUnarchiver.h"
#include "utils/IOUtils.h"

using namespace QRN_SPACE;

namespace {

const long kSection = 64L << 20;
const long kRaw = 0x400;  // where the section's bytes start
const long kHeader = 0x40;

// DOS header, "PE" at 0x40 with one section of kSection bytes at kRaw.
std::unique_ptr<ContinuousMemBufferBase> image(const char* sectionName) {
    std::unique_ptr<ContinuousMemBufferBase> buffer(new ContinuousMemBufferBase(kRaw + kSection));
    char head[kRaw] = {'M', 'Z'};
    IOUtils::writeUShort(head + 0x18, 0x40);  // a new-style executable
    IOUtils::writeUInt(head + 0x3C, kHeader);
    head[kHeader] = 'P', head[kHeader + 1] = 'E';
    IOUtils::writeUShort(head + kHeader + ZipConstants::OffsetOfNumberSections, 1);
    char* section = head + kHeader + ZipConstants::OffsetOfSectionTable;
    for (int i = 0; sectionName[i] != '\0'; ++i) section[i] = sectionName[i];
    IOUtils::writeUInt(section + 16, kSection);
    IOUtils::writeUInt(section + 20, kRaw);
    buffer->append(head, kRaw);
    tuskel_bench::Random random{0x2545F4914F6CDD1Dull};
    char block[4096];
    for (long done = 0; done < kSection; done += sizeof block) {
        for (char& c : block) c = static_cast<char>(random.next() >> 56);
        buffer->append(block, sizeof block);
    }
    return buffer;
}

void BM_CheckZipExe(benchmark::State& state, const char* sectionName) {
    auto buffer = image(sectionName);
    BufferBaseInputStream in(buffer.get());
    long pos = 0;
    if (check_zipexe(in, pos)) std::abort();  // the noise must hold no marker
    for (auto _ : state) benchmark::DoNotOptimize(check_zipexe(in, pos));
    state.SetBytesProcessed(state.iterations() * kSection);
}

}  // namespace

BENCHMARK_CAPTURE(BM_CheckZipExe, data, ".data")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_CheckZipExe, winzip, "_winzip")->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
