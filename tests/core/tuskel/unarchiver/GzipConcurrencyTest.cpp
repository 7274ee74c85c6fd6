#include <gtest/gtest.h>
#include <zlib.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "support/TestStreams.h"
#include "unarchiver/ArchiveId.h"

using namespace QRN_SPACE;

namespace {

std::string gzipOf(const std::string& data) {
    uLongf size = compressBound(data.size()) + 32;
    std::string out(size, '\0');
    z_stream z{};
    deflateInit2(&z, 6, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);  // gzip wrapper
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data()));
    z.avail_in = static_cast<uInt>(data.size());
    z.next_out = reinterpret_cast<Bytef*>(&out[0]);
    z.avail_out = static_cast<uInt>(size);
    EXPECT_EQ(deflate(&z, Z_FINISH), Z_STREAM_END);
    out.resize(z.total_out);
    deflateEnd(&z);
    return out;
}

struct Keeper : ArchiveEntryProcessor {
    OutputStream* processEntry(ArchiveEntryInfo* info, int& action) override {
        entry.reset(info);
        action = ArchiveConstants::ACTION_DECOMPRESS;
        return &out;
    }
    std::unique_ptr<ArchiveEntryInfo> entry;
    tuskel_test::CollectingOutputStream out;
};

}  // namespace

// The registry and the codecs keep no per-call state of their own, so
// callers on several threads need no lock.
TEST(GzipConcurrency, ThreadsIdentifyAndUnpackIndependently) {
    std::vector<std::string> plain, packed;
    for (unsigned t = 0; t < 4; ++t) {
        plain.push_back(tuskel_test::patternBytes(60000 + t * 5000, t));
        packed.push_back(gzipOf(plain.back()));
    }
    std::vector<std::string> results(4);
    std::vector<std::thread> threads;
    for (size_t t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int round = 0; round < 5; ++round) {
                tuskel_test::StringBuffer buffer(packed[t]);
                tuskel_test::ChunkedInputStream probe(packed[t]);
                Keeper keeper;
                std::unique_ptr<Unarchiver> u(ArchiveFactory::identify(probe)->unarchiver(&buffer, keeper, nullptr));
                if (u) u->start();
                results[t] = keeper.out.data;
            }
        });
    }
    for (std::thread& th : threads) th.join();
    for (size_t t = 0; t < 4; ++t) EXPECT_TRUE(results[t] == plain[t]) << t;
}
