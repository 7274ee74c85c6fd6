// File type identification of 1 KiB inputs held in a contiguous memory
// buffer, one input of each signature kind, with a name that matches the
// kind and without a name (the rows are then tried in their order, so the
// kinds late in the table cost the most; "unknown" matches only the last
// row). "mix" cycles through every kind and gives the headline figure.
//
//   scripts/bench.sh filetype_bench -- --benchmark_repetitions=5 --benchmark_report_aggregates_only=true
#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "bench/Random.h"
#include "filetype/FileTypeIdent.h"
#include "io/ContinuousMemBufferBase.h"

using namespace QRN_SPACE;

namespace {

const size_t kInput = 1024;

struct Kind {
    const char* label;
    const char* name;  // matches the kind
    std::string head;  // the rest of the 1 KiB is noise, or text for the text kinds
    bool text;
};

const Kind kKinds[] = {
    {"text", "notes.txt", "", true},
    {"html", "page.html", "<!DOCTYPE html><html><head><title>x</title></head>", true},
    {"gif", "image.gif", "GIF89a", false},
    {"mp3", "song.mp3", "\xFF\xFB\x90", false},
    {"avi", "movie.avi", std::string("RIFF\0\0\0\0AVI LIST", 16), false},
    {"pdf", "paper.pdf", "%PDF-1.4\n", false},
    {"exe", "tool.exe", "MZ\x90", false},
    {"doc", "letter.doc", "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", false},
    {"zip", "archive.zip", "PK\x03\x04\x14", false},
    {"tar", "archive.tar", "", false},
    {"gzip", "archive.gz", "\x1F\x8B\x08", false},
    {"zoo", "archive.zoo", std::string("ZOO 2.10 Archive.\x1A\0\0\xDC\xA7\xC4\xFD", 24), false},
    {"unknown", "data.bin", "", false},
};
const int kKindCount = sizeof kKinds / sizeof kKinds[0];

std::unique_ptr<ContinuousMemBufferBase> input(const Kind& kind) {
    tuskel_bench::Random random{0x9E3779B97F4A7C15ull};
    std::string bytes(kInput, '\0');
    for (char& c : bytes) c = kind.text ? "abcdefgh ijklmnop\n"[random.below(18)] : static_cast<char>(random.next() >> 56);
    if (!kind.text) bytes[0] = '\x7F';  // no row takes the noise for text or a signature of its own
    bytes.replace(0, kind.head.size(), kind.head);
    if (std::string(kind.label) == "tar") bytes.replace(257, 6, std::string("ustar\0", 6));
    std::unique_ptr<ContinuousMemBufferBase> buffer(new ContinuousMemBufferBase(static_cast<long>(kInput)));
    buffer->append(bytes.data(), static_cast<int>(bytes.size()));
    return buffer;
}

// args: kind, named (0 or 1)
void BM_CheckFileType(benchmark::State& state) {
    const Kind& kind = kKinds[state.range(0)];
    auto buffer = input(kind);
    const std::string name = state.range(1) != 0 ? kind.name : "";
    for (auto _ : state) benchmark::DoNotOptimize(FileTypeIdent::checkFileType(buffer.get(), name, ""));
    state.SetLabel(std::string(kind.label) + (state.range(1) != 0 ? " named" : ""));
    state.SetItemsProcessed(state.iterations());
}

// args: named (0 or 1)
void BM_CheckFileTypeMix(benchmark::State& state) {
    std::vector<std::unique_ptr<ContinuousMemBufferBase>> buffers;
    std::vector<std::string> names;
    for (const Kind& kind : kKinds) {
        buffers.push_back(input(kind));
        names.push_back(state.range(0) != 0 ? kind.name : "");
    }
    for (auto _ : state) {
        for (int i = 0; i < kKindCount; ++i) {
            benchmark::DoNotOptimize(FileTypeIdent::checkFileType(buffers[i].get(), names[i], ""));
        }
    }
    state.SetLabel(state.range(0) != 0 ? "mix named" : "mix");
    state.SetItemsProcessed(state.iterations() * kKindCount);
}

void kindsAndNames(benchmark::internal::Benchmark* b) {
    for (int kind = 0; kind < kKindCount; ++kind) {
        for (int named : {0, 1}) b->Args({kind, named});
    }
}

}  // namespace

BENCHMARK(BM_CheckFileType)->Apply(kindsAndNames);
BENCHMARK(BM_CheckFileTypeMix)->Arg(0)->Arg(1);

BENCHMARK_MAIN();
