// Sequential append, sequential read and random 4 KiB reads over the two
// in-memory buffers, with std::vector<char> as the reference, and the same
// vector behind the buffers' reader-writer lock (one lock per call, as the
// buffers take it) to show what the lock alone costs.
//
//   scripts/bench.sh membuffer_bench -- --benchmark_repetitions=5
//       --benchmark_enable_random_interleaving=true --benchmark_report_aggregates_only=true
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "io/ContinuousMemBufferBase.h"
#include "io/MemBufferBase.h"
#include "util/RWLock.h"

using namespace QRN_SPACE;

namespace {

const long kKiB = 1024;
const long kMiB = 1024 * kKiB;

// The reference: a vector grown by the standard library's own policy.
class VectorStore {
public:
    explicit VectorStore(long) {}
    void append(const char* p, int len) { _v.insert(_v.end(), p, p + len); }
    int read(long pos, char* out, int len) {
        long size = static_cast<long>(_v.size());
        if (pos >= size) return 0;
        int n = static_cast<int>(std::min<long>(len, size - pos));
        std::memcpy(out, _v.data() + pos, static_cast<size_t>(n));
        return n;
    }

private:
    std::vector<char> _v;
};

// The reference with one lock per call, exclusive for appends.
class LockedVectorStore {
public:
    explicit LockedVectorStore(long size) : _v(size) {}
    void append(const char* p, int len) {
        WriteGuard hold(_lock);
        _v.append(p, len);
    }
    int read(long pos, char* out, int len) {
        ReadGuard hold(_lock);
        return _v.read(pos, out, len);
    }

private:
    VectorStore _v;
    RWLock _lock;
};

// The paged buffer, as the smart buffer creates it (no size hint).
class PagedStore {
public:
    explicit PagedStore(long) {}
    void append(const char* p, int len) { _b.append(p, len); }
    int read(long pos, char* out, int len) { return _b.read(pos, out, len); }

private:
    MemBufferBase _b;
};

// The contiguous buffer created with its final size.
class ContiguousStore {
public:
    explicit ContiguousStore(long finalSize) : _b(finalSize) {}
    void append(const char* p, int len) { _b.append(p, len); }
    int read(long pos, char* out, int len) { return _b.read(pos, out, len); }

private:
    ContinuousMemBufferBase _b;
};

std::string source(long n) {
    std::string s(static_cast<size_t>(n), '\0');
    std::mt19937 rng(7);
    for (char& c : s) c = static_cast<char>(rng());
    return s;
}

template <class Store>
void fill(Store& store, const std::string& piece, long total) {
    const int len = static_cast<int>(piece.size());
    for (long done = 0; done < total; done += len) store.append(piece.data(), len);
}

// args: total bytes, piece size
template <class Store>
void BM_Append(benchmark::State& state) {
    const long total = state.range(0);
    const std::string piece = source(state.range(1));
    for (auto _ : state) {
        Store store(total);
        fill(store, piece, total);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * total);
}

// args: total bytes, piece size. Filled in 1 KiB appends beforehand, so the
// paged buffer holds its smallest blocks.
template <class Store>
void BM_SequentialRead(benchmark::State& state) {
    const long total = state.range(0);
    const int len = static_cast<int>(state.range(1));
    Store store(total);
    fill(store, source(kKiB), total);
    std::vector<char> out(static_cast<size_t>(len));
    for (auto _ : state) {
        for (long pos = 0; pos < total; pos += len) {
            benchmark::DoNotOptimize(store.read(pos, out.data(), len));
        }
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * total);
}

// args: total bytes. 256 reads of 4 KiB at random offsets per iteration.
template <class Store>
void BM_RandomRead4K(benchmark::State& state) {
    const long total = state.range(0);
    const int len = 4096;
    Store store(total);
    fill(store, source(kKiB), total);
    std::mt19937 rng(11);
    std::vector<long> offsets(256);
    for (long& o : offsets) o = static_cast<long>(rng() % static_cast<unsigned>(total - len));
    std::vector<char> out(len);
    for (auto _ : state) {
        for (long o : offsets) benchmark::DoNotOptimize(store.read(o, out.data(), len));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<long>(offsets.size()) * len);
}

void sizesAndPieces(benchmark::internal::Benchmark* b) {
    for (long total : {64 * kKiB, 64 * kMiB}) {
        for (long piece : {kKiB, 64 * kKiB}) b->Args({total, piece});
    }
}

void sizes(benchmark::internal::Benchmark* b) {
    for (long total : {64 * kKiB, 64 * kMiB}) b->Args({total});
}

}  // namespace

BENCHMARK_TEMPLATE(BM_Append, VectorStore)->Apply(sizesAndPieces);
BENCHMARK_TEMPLATE(BM_Append, LockedVectorStore)->Apply(sizesAndPieces);
BENCHMARK_TEMPLATE(BM_Append, PagedStore)->Apply(sizesAndPieces);
BENCHMARK_TEMPLATE(BM_Append, ContiguousStore)->Apply(sizesAndPieces);
BENCHMARK_TEMPLATE(BM_SequentialRead, VectorStore)->Apply(sizesAndPieces);
BENCHMARK_TEMPLATE(BM_SequentialRead, LockedVectorStore)->Apply(sizesAndPieces);
BENCHMARK_TEMPLATE(BM_SequentialRead, PagedStore)->Apply(sizesAndPieces);
BENCHMARK_TEMPLATE(BM_SequentialRead, ContiguousStore)->Apply(sizesAndPieces);
BENCHMARK_TEMPLATE(BM_RandomRead4K, VectorStore)->Apply(sizes);
BENCHMARK_TEMPLATE(BM_RandomRead4K, LockedVectorStore)->Apply(sizes);
BENCHMARK_TEMPLATE(BM_RandomRead4K, PagedStore)->Apply(sizes);
BENCHMARK_TEMPLATE(BM_RandomRead4K, ContiguousStore)->Apply(sizes);

BENCHMARK_MAIN();
