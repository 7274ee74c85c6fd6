#include <thread>

#include "UnarchiverTesting.h"
#include "unarchiver/ArchiveId.h"

using namespace unarchiver_test;

// The registry and the codecs keep no per-call state of their own, so
// callers on several threads need no lock.
TEST(GzipConcurrency, ThreadsIdentifyAndUnpackIndependently) {
    std::vector<std::string> plain, packed, results(8);
    for (unsigned t = 0; t < 8; ++t) plain.push_back(tuskel_test::patternBytes(60000 + t * 5000, t));
    for (const std::string& p : plain) packed.push_back(zlibDeflate(p, 31));
    std::vector<std::thread> threads;
    for (size_t t = 0; t < 8; ++t) {
        threads.emplace_back([&, t] {
            auto buffer = tuskel_test::memoryBuffer(packed[t]);
            ChunkedInputStream probe(packed[t]);
            Recorder r;
            std::unique_ptr<Unarchiver>(ArchiveFactory::identify(probe)->unarchiver(buffer.get(), r, nullptr))->start();
            results[t] = r.outs.at(0)->data;
        });
    }
    for (std::thread& th : threads) th.join();
    EXPECT_TRUE(results == plain);
}
