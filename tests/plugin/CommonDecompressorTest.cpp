#include <gtest/gtest.h>

#include <new>
#include <string>

#include "HostDoubles.h"
#include "support/LogCapture.h"
#include "support/TestStreams.h"
#include "tuskel/CommonDecompressor.h"

using tuskel_test::gzipWithTool;
using tuskel_test::LogCapture;
using tuskel_test::MemoryHostBuffer;
using tuskel_test::patternBytes;
using tuskel_test::RecordingEntryProcessor;

namespace {

const std::string kNotSupported = "[DBG][CommonDecompressor:66] Not find the archiver, not support\n";

}  // namespace

TEST(CommonDecompressor, NullArgumentsTouchNothing) {
    LogCapture log(1);
    CommonDecompressor decompressor;
    MemoryHostBuffer input("anything");
    RecordingEntryProcessor host;
    EXPECT_EQ(decompressor.decompress(nullptr, &host), 2);
    EXPECT_EQ(decompressor.decompress(&input, nullptr), 2);
    EXPECT_EQ(decompressor.decompress(nullptr, nullptr), 2);
    EXPECT_EQ(input.calls, 0);
    EXPECT_TRUE(host.records.empty());
    EXPECT_EQ(host.finished, 0);
    std::string line = "[ERR][CommonDecompressor:19] hb == NULL || processor == NULL\n";
    EXPECT_EQ(log.text(), line + line + line);
}

TEST(CommonDecompressor, UnknownInputIsNotSupported) {
    const std::string cases[] = {
        "",
        "plain text, neither GZIP nor ZIP",
        tuskel_test::bytes({0x1F, 0x8B, 0x08}),                       // GZIP magic, header cut short
        tuskel_test::bytes({0x1F, 0x8B, 0x09, 0, 0, 0, 0, 0, 0, 3}),  // unknown method
        "MZ" + std::string(200, '\0'),                                // an executable
    };
    for (const std::string& input : cases) {
        SCOPED_TRACE(testing::PrintToString(input));
        LogCapture log(3);
        CommonDecompressor decompressor;
        MemoryHostBuffer hostBuffer(input);
        RecordingEntryProcessor host;
        EXPECT_EQ(decompressor.decompress(&hostBuffer, &host), 3);
        EXPECT_TRUE(host.records.empty());
        EXPECT_EQ(host.finished, 0);
        EXPECT_EQ(log.text(), kNotSupported);
    }
}

// Sizes around the inflate driver's output block, fed by hosts that answer
// every read whole or in awkward pieces; gzip stores no size in the header,
// so the size the host is offered is the trailer's. An empty entry is
// never offered.
TEST(CommonDecompressor, GzipReachesTheHostWhole) {
    struct Case {
        size_t size;
        const char* options;
        int maxRead;
    } cases[] = {
        {0, "-n", 1 << 30},       {1, "-n", 1 << 30},       {51199, "", 7},       {51200, "-n -1", 33791},
        {51201, "-9", 1 << 30},   {300000, "-n", 4096}, {300000, "", 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(c.size) + " gzip " + c.options + " read " + std::to_string(c.maxRead));
        std::string data = patternBytes(c.size, static_cast<unsigned>(c.size));
        LogCapture log(3);
        CommonDecompressor decompressor;
        decompressor.setOptions(-1, &decompressor);  // ignored
        MemoryHostBuffer input(gzipWithTool(data, c.options, "name.txt"));
        input.maxRead = c.maxRead;
        RecordingEntryProcessor host;
        ASSERT_EQ(decompressor.decompress(&input, &host), 0) << log.text();
        EXPECT_EQ(host.finished, 1);
        bool named = std::string(c.options).find("-n") == std::string::npos;
        std::string found = "[DBG][EntryProcessor:26] find entry[" + std::string(named ? "name.txt" : "") +
                            "], usize[" + std::to_string(c.size) + "]\n";
        if (c.size == 0) {
            EXPECT_TRUE(host.records.empty());
            EXPECT_EQ(log.text(), found + "[DBG][EntryProcessor:33] tmp_info.usize == 0\n");
            continue;
        }
        ASSERT_EQ(host.records.size(), 1u);
        EXPECT_EQ(host.records[0].usize, static_cast<int>(c.size));
        EXPECT_TRUE(host.contents()[0] == data);
        EXPECT_EQ(log.text(), found);
    }
}

// A body cut short fails while the entry is being written: the host keeps
// what it got. The cut input still ends in the original ISIZE so that the
// entry is offered.
TEST(CommonDecompressor, BrokenArchiveAnswers1AfterHandingOutTheEntry) {
    std::string data = patternBytes(200000, 3);
    std::string gz = gzipWithTool(data, "-n");
    std::string cut = gz.substr(0, gz.size() / 2) + gz.substr(gz.size() - 4);
    LogCapture log(1);
    CommonDecompressor decompressor;
    MemoryHostBuffer input(cut);
    RecordingEntryProcessor host;
    EXPECT_EQ(decompressor.decompress(&input, &host), 1);
    ASSERT_EQ(host.records.size(), 1u);
    std::string got = host.contents()[0];
    EXPECT_LT(got.size(), data.size());
    EXPECT_TRUE(data.compare(0, got.size(), got) == 0);
    EXPECT_EQ(log.text().rfind("[ERR][CommonDecompressor:52] Exception[", 0), 0u) << log.text();
    EXPECT_EQ(log.text().substr(log.text().size() - 2), "]\n");
}

// Nothing thrown inside, by the library or by the host's own code, reaches
// the host: it becomes result 1 and one error line, from the handler around
// the run (52) or around the set-up (63).
TEST(CommonDecompressor, EveryFailureBecomesResult1AndOneLine) {
    std::string gz = gzipWithTool(patternBytes(1000), "-n");
    struct Case {
        const char* what;
        bool throwOnGetBuffer, throwOnRead;
        long tellBias;
        const char* line;
    } cases[] = {
        {"getBuffer throws", true, false, 0, "[ERR][CommonDecompressor:52] Exception[host refuses]\n"},
        {"read throws", false, true, 0, "[ERR][CommonDecompressor:63] Exception[std::bad_alloc]\n"},
        // The trailer is looked for past the real end.
        {"size overstated", false, false, 100, "[ERR][CommonDecompressor:63] Exception[unexpected EOF]\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        LogCapture log(1);
        CommonDecompressor decompressor;
        MemoryHostBuffer input(gz);
        input.throwOnRead = c.throwOnRead;
        input.tellBias = c.tellBias;
        RecordingEntryProcessor host;
        host.throwOnGetBuffer = c.throwOnGetBuffer;
        EXPECT_EQ(decompressor.decompress(&input, &host), 1);
        EXPECT_EQ(log.text(), c.line);
        EXPECT_EQ(host.finished, 0);
    }
}
