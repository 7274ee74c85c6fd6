#include <thread>

#include "UnarchiverTesting.h"
#include "unarchiver/ArchiveId.h"

using namespace unarchiver_test;

// The registry and the codecs keep no per-call state of their own, so
// callers on several threads need no lock.
TEST(GzipConcurrency, ThreadsIdentifyAndUnpackIndependently) {
    std::vector<std::string> plain, packed, results(4);
    for (unsigned t = 0; t < 4; ++t) {
        plain.push_back(tuskel_test::patternBytes(60000 + t * 5000, t));
        packed.push_back(zlibDeflate(plain.back(), 31));
    }
    std::vector<std::thread> threads;
    for (size_t t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int round = 0; round < 5; ++round) {
                tuskel_test::StringBuffer buffer(packed[t]);
                tuskel_test::ChunkedInputStream probe(packed[t]);
                Recorder r;
                std::unique_ptr<Unarchiver> u(ArchiveFactory::identify(probe)->unarchiver(&buffer, r, nullptr));
                if (u) u->start();
                results[t] = r.outs.empty() ? "" : r.outs[0]->data;
            }
        });
    }
    for (std::thread& th : threads) th.join();
    for (size_t t = 0; t < 4; ++t) EXPECT_TRUE(results[t] == plain[t]) << t;
}
