// The library inside a host that calls it from many threads at once
// (ThreadSanitizer runs this executable). The registry, the codecs and the
// file type tables keep no per-call state of their own, the logger's state
// is atomic, and smart buffers and pipes lock for themselves, so threads
// that share nothing but the process need no lock of their own.
#include <atomic>
#include <cstdio>
#include <thread>

#include "UnarchiverTesting.h"
#include "filetype/FileTypeIdent.h"
#include "io/ContinuousMemBufferBase.h"
#include "io/PipeBufferBase.h"
#include "io/SmartBufferBase.h"
#include "plugin/HostDoubles.h"
#include "unarchiver/FileTypeProcessor.h"

using namespace unarchiver_test;

namespace {

const int kThreads = 8;
const long kBarrier = 4096;  // small, so that every thread's smart buffer moves to a file

std::atomic<long> logPieces{0};
void countLog(const char*) { ++logPieces; }

// What one thread made of its archive.
struct Unpacked {
    int result = -1;
    std::string bytes;  // the entries, one after the other
    int type = 0, action = 0;
};

Unpacked unpackAndIdentify(const std::string& archive) {
    Unpacked u;
    tuskel_test::MemoryHostBuffer input(archive, 4093);
    tuskel_test::RecordingEntryProcessor entries;
    u.result = CommonDecompressor().decompress(&input, &entries);
    for (const std::string& entry : entries.contents()) u.bytes += entry;
    auto held = tuskel_test::memoryBuffer(u.bytes);
    u.type = FileTypeIdent::checkFileType(held.get(), "entry", "");
    FileTypeProcessor types;
    types.init();
    ChunkedInputStream in(u.bytes, 100);
    u.action = types.check(&in);
    return u;
}

// The bytes through a smart buffer (written piece by piece, so that it moves
// past the barrier) and back; false when it stayed in memory.
bool throughSmartBuffer(const std::string& bytes, std::string& back) {
    SmartBufferBase smart(POLICY_MEM_SMART);
    for (size_t at = 0; at < bytes.size(); at += 1000) {
        smart.write(static_cast<long>(at), bytes.data() + at, static_cast<int>(std::min<size_t>(1000, bytes.size() - at)));
    }
    back = tuskel_test::contentOf(smart);
    return smart.getFileDescriptor() >= 0;
}

// Everything the pipe hands out, read in pieces of 777 bytes until writing has ended.
std::string drain(PipeBufferBase& pipe) {
    std::string got;
    char buf[777];
    for (int n; (n = pipe.read(static_cast<long>(got.size()), buf, sizeof buf)) > 0;) got.append(buf, n);
    return got;
}

}  // namespace

TEST(ConcurrentUse, ThreadsDecompressIdentifyMoveToFilesAndPipeAtOnce) {
    // GZIP from zlib, ZIP from zip, of text, images and noise.
    std::vector<std::string> archives;
    tuskel_test::TempDir dir;
    for (int t = 0; t < kThreads; ++t) {
        std::string content = tuskel_test::patternBytes(20000 + 3000 * t, t);
        if (t % 4 == 1) content.replace(0, 8, "\x89PNG\r\n\x1a\n");
        if (t % 4 == 2) content = std::string(30000, 'T') + "\n";
        if (t % 2 == 0) {
            archives.push_back(zlibDeflate(content, 31));
            continue;
        }
        tuskel_test::writeFile(dir.file("e.bin"), content);
        ASSERT_EQ(tuskel_test::runCommand("cd " + tuskel_test::shellQuote(dir.path()) + " && zip -qm a.zip e.bin"), 0);
        archives.push_back(tuskel_test::readFile(dir.file("a.zip")));
        std::remove(dir.file("a.zip").c_str());
    }
    std::vector<Unpacked> alone;  // each archive on its own thread, one after the other
    for (const std::string& archive : archives) alone.push_back(unpackAndIdentify(archive));

    // Process-wide settings go before the threads.
    CommonDecompressor().setLogger(CommonDecompressor::LOG_DEBUG, countLog);
    const long barrier = SmartBufferBase::_barrier;
    SmartBufferBase::_barrier = kBarrier;
    std::vector<std::unique_ptr<BufferBase>> stores;
    std::vector<std::unique_ptr<PipeBufferBase>> pipes;
    for (int t = 0; t < kThreads; ++t) {
        stores.push_back(tuskel_test::memoryBuffer());
        pipes.emplace_back(new PipeBufferBase(stores.back().get()));
    }
    std::vector<Unpacked> together(kThreads);
    std::vector<std::string> backFromFile(kThreads), received(kThreads);
    std::vector<char> moved(kThreads);
    std::vector<std::thread> threads;
    std::atomic<int> started{0};
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (++started; started < kThreads;) std::this_thread::yield();  // all at once
            together[t] = unpackAndIdentify(archives[t]);
            moved[t] = throughSmartBuffer(together[t].bytes, backFromFile[t]);
            OutputStream* producer = pipes[t]->getProducerOutputStream();
            const std::string& bytes = together[t].bytes;
            for (size_t at = 0; at < bytes.size(); at += 5000) {
                producer->write(bytes.data() + at, static_cast<int>(std::min<size_t>(5000, bytes.size() - at)));
            }
            producer->close();
            received[t] = drain(*pipes[(t + 1) % kThreads]);  // from the neighbour, perhaps while it writes
        });
    }
    for (std::thread& th : threads) th.join();
    SmartBufferBase::_barrier = barrier;
    CommonDecompressor().setLogger(0, nullptr);

    EXPECT_GT(logPieces, 0);
    for (int t = 0; t < kThreads; ++t) {
        SCOPED_TRACE(t);
        EXPECT_EQ(join(together[t].result, together[t].type, together[t].action),
                  join(alone[t].result, alone[t].type, alone[t].action));
        EXPECT_TRUE(together[t].bytes == alone[t].bytes && !alone[t].bytes.empty());
        EXPECT_TRUE(moved[t] && backFromFile[t] == alone[t].bytes);
        EXPECT_TRUE(received[t] == alone[(t + 1) % kThreads].bytes);
    }
    // The kinds of content do differ.
    EXPECT_EQ(join(alone[1].type, alone[2].type), join(+FileTypeIdent::TYPE_PNG, +FileTypeIdent::TYPE_TXT));
}
