// The file, smart and pipe buffers against what a program would write by
// hand for the same job, with the floors their design fixes beside them:
//
// - FileBuffer: 256 MiB appended in 64 KiB calls and read back in 64 KiB
//   calls, against an fwrite/fread loop on a file in the same directory.
// - BelowBarrier: a smart buffer filled to 1 MiB (its barrier) and read
//   back, and 64 KiB appended a byte at a time (each call checks the
//   barrier), against the paged store it wraps. Reaching a store through
//   the buffer interface costs a call of its own, which shows in single
//   bytes: a FilteredBufferBase over the same store (forwarding alone) is
//   the floor there.
// - Migration: the one move of a 1 MiB memory store to a file, against
//   writing the same bytes to a temporary file in one fwrite, and against
//   the floor of the move's 1024-byte steps (1024 write(2) calls).
// - Pipe: 1 GiB in 64 KiB pieces from a producer to a consumer thread over
//   a discarding paged buffer, against a bounded queue of std::mutex and
//   std::condition_variable moving the same pieces, and against the same
//   queue unbounded: the pipe never holds its producer back.
//
//   scripts/bench.sh bufferstores_bench -- --benchmark_repetitions=5
//       --benchmark_enable_random_interleaving=true --benchmark_report_aggregates_only=true
//
// The files go to $TUSKEL_BENCH_DIR, else /tmp (where tmpfile() puts its own).
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Random.h"
#include "io/FileBufferBase.h"
#include "io/FilteredBufferBase.h"
#include "io/MemBufferBase.h"
#include "io/PipeBufferBase.h"
#include "io/SmartBufferBase.h"

using namespace QRN_SPACE;

namespace {

const long kKiB = 1024;
const long kMiB = 1024 * kKiB;

std::string benchDir() {
    const char* dir = std::getenv("TUSKEL_BENCH_DIR");
    return dir != nullptr ? dir : "/tmp";
}

std::string source(long n) {
    std::string s(static_cast<size_t>(n), '\0');
    tuskel_bench::Random rng{7};
    for (char& c : s) c = static_cast<char>(rng.next());
    return s;
}

double seconds(std::chrono::steady_clock::time_point since) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

// ---- FileBuffer --------------------------------------------------------------

const long kFileTotal = 256 * kMiB;
const int kFilePiece = static_cast<int>(64 * kKiB);

void BM_FileBuffer(benchmark::State& state) {
    const std::string piece = source(kFilePiece), dir = benchDir();
    std::vector<char> in(static_cast<size_t>(kFilePiece));
    for (auto _ : state) {
        FileBufferBase buffer(dir.c_str());
        for (long pos = 0; pos < kFileTotal; pos += kFilePiece) buffer.append(piece.data(), kFilePiece);
        for (long pos = 0; pos < kFileTotal; pos += kFilePiece) buffer.read(pos, in.data(), kFilePiece);
        benchmark::DoNotOptimize(in.data());
    }
    state.SetBytesProcessed(state.iterations() * 2 * kFileTotal);
}

void BM_FileBuffer_Stdio(benchmark::State& state) {
    const std::string piece = source(kFilePiece), path = benchDir() + "/bufferstores-bench-stdio";
    std::vector<char> in(static_cast<size_t>(kFilePiece));
    for (auto _ : state) {
        FILE* f = std::fopen(path.c_str(), "wb+");
        for (long pos = 0; pos < kFileTotal; pos += kFilePiece) std::fwrite(piece.data(), 1, kFilePiece, f);
        std::rewind(f);
        for (long pos = 0; pos < kFileTotal; pos += kFilePiece) std::fread(in.data(), 1, kFilePiece, f);
        benchmark::DoNotOptimize(in.data());
        std::fclose(f);
        unlink(path.c_str());
    }
    state.SetBytesProcessed(state.iterations() * 2 * kFileTotal);
}

// ---- BelowBarrier ------------------------------------------------------------

struct Smart {
    SmartBufferBase b{POLICY_MEM_SMART};
    void write(long pos, const char* p, int len) { b.write(pos, p, len); }
    void append(char c) { b.append(c); }
    int read(long pos, char* out, int len) { return b.read(pos, out, len); }
};

// The store a smart buffer makes (MemBufferBase(0)), called directly.
struct Paged {
    MemBufferBase b{0};
    void write(long pos, const char* p, int len) { b.write(pos, p, len); }
    void append(char c) { b.append(c); }
    int read(long pos, char* out, int len) { return b.read(pos, out, len); }
};

// The floor of a wrapper: the paged store behind FilteredBufferBase.
struct Forwarded : Paged {
    FilteredBufferBase f{&b};
    void write(long pos, const char* p, int len) { f.write(pos, p, len); }
    void append(char c) { f.append(c); }
    int read(long pos, char* out, int len) { return f.read(pos, out, len); }
};

// args: piece size. Written in order up to 1 MiB, then read back.
template <class Store>
void BM_BelowBarrier(benchmark::State& state) {
    const int len = static_cast<int>(state.range(0));
    const std::string piece = source(len);
    std::vector<char> in(static_cast<size_t>(len));
    for (auto _ : state) {
        Store store;
        for (long pos = 0; pos < kMiB; pos += len) store.write(pos, piece.data(), len);
        for (long pos = 0; pos < kMiB; pos += len) benchmark::DoNotOptimize(store.read(pos, in.data(), len));
    }
    state.SetBytesProcessed(state.iterations() * 2 * kMiB);
}

// 64 KiB appended a byte at a time.
template <class Store>
void BM_BelowBarrierBytes(benchmark::State& state) {
    for (auto _ : state) {
        Store store;
        for (long i = 0; i < 64 * kKiB; ++i) store.append(static_cast<char>(i));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * 64 * kKiB);
}

// ---- Migration ---------------------------------------------------------------

// One move of a 1 MiB store (the barrier one byte below), timed alone.
void BM_Migration(benchmark::State& state) {
    const long saved = SmartBufferBase::_barrier;
    SmartBufferBase::_barrier = kMiB - 1;
    const std::string data = source(kMiB);
    for (auto _ : state) {
        SmartBufferBase buffer;
        buffer.append(data.data(), static_cast<int>(kMiB));
        const auto start = std::chrono::steady_clock::now();
        buffer.append('x');
        state.SetIterationTime(seconds(start));
        if (buffer.getFileDescriptor() == -1) state.SkipWithError("no move");
    }
    SmartBufferBase::_barrier = saved;
    state.SetBytesProcessed(state.iterations() * kMiB);
}

// The same bytes into a new temporary file in one fwrite.
void BM_Migration_Fwrite(benchmark::State& state) {
    const std::string data = source(kMiB);
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        FILE* f = std::tmpfile();
        std::fwrite(data.data(), 1, data.size(), f);
        std::fflush(f);
        state.SetIterationTime(seconds(start));
        std::fclose(f);
    }
    state.SetBytesProcessed(state.iterations() * kMiB);
}

// The floor of a move in 1024-byte steps: one write(2) per step.
void BM_Migration_Floor(benchmark::State& state) {
    const std::string data = source(kMiB);
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        FILE* f = std::tmpfile();
        for (long pos = 0; pos < kMiB; pos += kKiB) benchmark::DoNotOptimize(write(fileno(f), data.data() + pos, kKiB));
        state.SetIterationTime(seconds(start));
        std::fclose(f);
    }
    state.SetBytesProcessed(state.iterations() * kMiB);
}

// ---- Pipe --------------------------------------------------------------------

const long kPipeTotal = 1024 * kMiB;
const int kPipePiece = static_cast<int>(64 * kKiB);

void BM_Pipe(benchmark::State& state) {
    const std::string piece = source(kPipePiece);
    std::vector<char> in(static_cast<size_t>(kPipePiece));
    for (auto _ : state) {
        MemBufferBase store;
        store.discardUsedBuffer();
        PipeBufferBase pipe(&store);
        PipeProducerOutputStream* out = pipe.getProducerOutputStream();
        std::thread producer([&] {
            for (long done = 0; done < kPipeTotal; done += kPipePiece) out->write(piece.data(), kPipePiece);
            out->close();
        });
        for (long pos = 0, n; (n = pipe.read(pos, in.data(), kPipePiece)) > 0; pos += n) benchmark::DoNotOptimize(in.data());
        producer.join();
    }
    state.SetBytesProcessed(state.iterations() * kPipeTotal);
}

// A queue of pieces copied in and out, bounded to `depth` pieces.
class PieceQueue {
public:
    explicit PieceQueue(size_t depth) : _depth(depth) {}
    void push(const char* p, int len) {
        std::unique_lock<std::mutex> hold(_mutex);
        _room.wait(hold, [&] { return _pieces.size() < _depth; });
        _pieces.emplace_back(p, p + len);
        _ready.notify_one();
    }
    void close() {
        std::lock_guard<std::mutex> hold(_mutex);
        _closed = true;
        _ready.notify_one();
    }
    // Copies the next piece out; 0 once closed and empty.
    int pop(char* out) {
        std::unique_lock<std::mutex> hold(_mutex);
        _ready.wait(hold, [&] { return !_pieces.empty() || _closed; });
        if (_pieces.empty()) return 0;
        const std::vector<char>& piece = _pieces.front();
        const int n = static_cast<int>(piece.size());
        std::copy(piece.begin(), piece.end(), out);
        _pieces.pop_front();
        _room.notify_one();
        return n;
    }

private:
    const size_t _depth;
    std::mutex _mutex;
    std::condition_variable _ready, _room;
    std::deque<std::vector<char>> _pieces;
    bool _closed = false;
};

// args: queue depth in pieces (16: 1 MiB; 0: unbounded, as the pipe is).
void BM_Pipe_Queue(benchmark::State& state) {
    const std::string piece = source(kPipePiece);
    std::vector<char> in(static_cast<size_t>(kPipePiece));
    for (auto _ : state) {
        PieceQueue queue(state.range(0) > 0 ? static_cast<size_t>(state.range(0)) : SIZE_MAX);
        std::thread producer([&] {
            for (long done = 0; done < kPipeTotal; done += kPipePiece) queue.push(piece.data(), kPipePiece);
            queue.close();
        });
        while (queue.pop(in.data()) > 0) benchmark::DoNotOptimize(in.data());
        producer.join();
    }
    state.SetBytesProcessed(state.iterations() * kPipeTotal);
}

}  // namespace

BENCHMARK(BM_FileBuffer)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_FileBuffer_Stdio)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_TEMPLATE(BM_BelowBarrier, Smart)->Arg(kKiB)->Arg(64 * kKiB);
BENCHMARK_TEMPLATE(BM_BelowBarrier, Paged)->Arg(kKiB)->Arg(64 * kKiB);
BENCHMARK_TEMPLATE(BM_BelowBarrierBytes, Smart);
BENCHMARK_TEMPLATE(BM_BelowBarrierBytes, Paged);
BENCHMARK_TEMPLATE(BM_BelowBarrierBytes, Forwarded);
BENCHMARK(BM_Migration)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Migration_Fwrite)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Migration_Floor)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Pipe)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Pipe_Queue)->Arg(16)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime();

BENCHMARK_MAIN();
