#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "HostDoubles.h"
#include "support/LogCapture.h"
#include "support/TestStreams.h"
#include "tuskel/CommonDecompressor.h"

using tuskel_test::MemoryHostBuffer;
using tuskel_test::RecordingEntryProcessor;

namespace {

struct Outcome {
    int result = -1;
    std::vector<std::string> contents;
    std::vector<int> sizes;
};

Outcome decompress(const std::string& input) {
    CommonDecompressor decompressor;
    MemoryHostBuffer buffer(input);
    RecordingEntryProcessor host;
    Outcome outcome;
    outcome.result = decompressor.decompress(&buffer, &host);
    outcome.contents = host.contents();
    for (const EntryRecord& record : host.records) outcome.sizes.push_back(record.usize);
    return outcome;
}

bool same(const Outcome& a, const Outcome& b) {
    return a.result == b.result && a.contents == b.contents && a.sizes == b.sizes;
}

}  // namespace

// Calls on different inputs share only the format registry and the logger:
// several threads at once get exactly what one thread gets.
TEST(DecompressConcurrency, ThreadsGetWhatOneThreadGets) {
    std::vector<std::string> inputs = {
        tuskel_test::gzipWithTool(tuskel_test::patternBytes(150000, 1), "-n"),
        tuskel_test::gzipWithTool(std::string(120000, 'a'), "-9", "a.txt"),
        tuskel_test::gzipWithTool(tuskel_test::patternBytes(51201, 2), "-1"),
        "not an archive",
    };
    std::string broken = inputs[0].substr(0, inputs[0].size() / 2);
    inputs.push_back(broken + inputs[0].substr(inputs[0].size() - 4));

    tuskel_test::LogCapture log(3);  // the shared logger runs too
    std::vector<Outcome> expected;
    for (const std::string& input : inputs) expected.push_back(decompress(input));
    EXPECT_EQ(expected[0].result, 0);
    EXPECT_EQ(expected[3].result, 3);
    EXPECT_EQ(expected[4].result, 1);

    const int kThreads = 6;
    const int kRounds = 3;
    std::vector<int> mismatches(kThreads, 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (int round = 0; round < kRounds; ++round) {
                size_t which = (t + round) % inputs.size();
                if (!same(decompress(inputs[which]), expected[which])) ++mismatches[t];
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(mismatches, std::vector<int>(kThreads, 0));
}
