#include <gtest/gtest.h>

#include <string>

#include "HostDoubles.h"
#include "support/LogCapture.h"
#include "tuskel/EntryProcessor.h"

using QRN_SPACE::ArchiveEntryInfo;
using QRN_SPACE::OutputStream;
using tuskel_test::LogCapture;
using tuskel_test::RecordingEntryProcessor;

namespace {

ArchiveEntryInfo* entry(const std::string& name, int size, int usize) {
    ArchiveEntryInfo* info = new ArchiveEntryInfo();
    info->name = name;
    info->size = size;
    info->usize = usize;
    return info;
}

// Offers one entry and writes `data` into whatever stream comes back.
OutputStream* offer(EntryProcessor& processor, ArchiveEntryInfo* info, const std::string& data, int& action) {
    OutputStream* out = processor.processEntry(info, action);
    if (out != nullptr && !data.empty()) out->write(data.data(), static_cast<int>(data.size()));
    return out;
}

}  // namespace

TEST(EntryProcessor, NullInfoLeavesTheActionAlone) {
    LogCapture log(3);
    RecordingEntryProcessor host;
    EntryProcessor processor(&host);
    int action = 7;
    EXPECT_EQ(processor.processEntry(nullptr, action), nullptr);
    EXPECT_EQ(action, 7);
    EXPECT_EQ(log.text(), "[ERR][EntryProcessor:13] entryInfo is NULL\n");
    EXPECT_TRUE(host.records.empty());
}

TEST(EntryProcessor, OffersTheDeclaredOrTrailerSize) {
    struct Case {
        int usize, gzipSize;
        int offered;  // 0: never offered
    } cases[] = {
        {5, 0, 5}, {0, 7, 7}, {5, 7, 5}, {0, 0, 0}, {0, -3, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE("usize " + std::to_string(c.usize) + " gzipSize " + std::to_string(c.gzipSize));
        LogCapture log(3);
        RecordingEntryProcessor host;
        EntryProcessor processor(&host);
        processor.gzipSize = c.gzipSize;
        int action = 0;
        OutputStream* out = processor.processEntry(entry("a.txt", 3, c.usize), action);
        EXPECT_EQ(action, 2);
        std::string found = "[DBG][EntryProcessor:26] find entry[a.txt], usize[" + std::to_string(c.offered) + "]\n";
        if (c.offered == 0) {
            EXPECT_EQ(out, nullptr);
            EXPECT_TRUE(host.records.empty());
            EXPECT_EQ(processor.count, 0);
            EXPECT_EQ(log.text(), found + "[DBG][EntryProcessor:33] tmp_info.usize == 0\n");
        } else {
            ASSERT_NE(out, nullptr);
            ASSERT_EQ(host.records.size(), 1u);
            EXPECT_EQ(host.records[0].size, 3);
            EXPECT_EQ(host.records[0].usize, c.offered);
            EXPECT_EQ(processor.count, 1);
            EXPECT_EQ(log.text(), found);
        }
    }
}

TEST(EntryProcessor, StreamWritesIntoTheHostBufferUpToTheEntrySize) {
    LogCapture log(3);
    RecordingEntryProcessor host;
    EntryProcessor processor(&host);
    int action = 0;
    OutputStream* out = offer(processor, entry("a", 4, 6), "abcd", action);
    ASSERT_NE(out, nullptr);
    log.clear();
    EXPECT_EQ(out->write("efg", 3), -1);  // 7 bytes would pass the declared 6
    EXPECT_EQ(out->write("ef", 2), -1);   // the stream advanced all the same
    EXPECT_EQ(host.contents(), std::vector<std::string>{"abcd"});
    EXPECT_EQ(log.text(), "[ERR][CommonBufferBase:61] off bigger than the buffer size\n\n"
                          "[ERR][CommonBufferBase:61] off bigger than the buffer size\n\n");
}

TEST(EntryProcessor, HostRefusalSkipsOnlyThatEntry) {
    LogCapture log(1);
    RecordingEntryProcessor host;
    host.refuse = {0};
    EntryProcessor processor(&host);
    int action = 0;
    EXPECT_EQ(offer(processor, entry("first", 1, 3), "one", action), nullptr);
    EXPECT_EQ(action, 2);
    EXPECT_EQ(log.text(), "[ERR][EntryProcessor:40] out_buffer == NULL\n");
    EXPECT_NE(offer(processor, entry("second", 1, 3), "two", action), nullptr);
    EXPECT_EQ(processor.count, 2);
    EXPECT_EQ(host.contents(), std::vector<std::string>{"two"});
}

TEST(EntryProcessor, WithoutAHostProcessorNothingIsOffered) {
    LogCapture log(3);
    EntryProcessor processor(nullptr);
    int action = 0;
    EXPECT_EQ(processor.processEntry(entry("a", 1, 3), action), nullptr);
    EXPECT_EQ(action, 2);
    EXPECT_EQ(processor.count, 0);
    EXPECT_EQ(log.text(), "[DBG][EntryProcessor:26] find entry[a], usize[3]\n");
    processor.endUnarchiving();  // no host to tell
}

// Every entry's info, adapter and stream are released exactly once, whether
// the unarchiver reports the end after each entry, only at the end, or
// offers an entry again while recovering; the sanitizer build checks it.
TEST(EntryProcessor, EveryEntryIsReleasedOnceOnEveryPath) {
    RecordingEntryProcessor host;
    {
        EntryProcessor processor(&host);
        int action = 0;
        offer(processor, entry("a", 1, 2), "ab", action);
        processor.endUnarchiving();
        offer(processor, entry("b", 1, 2), "cd", action);
        offer(processor, entry("b", 1, 2), "CD", action);  // recovery: offered again
        offer(processor, entry("c", 1, 2), "", action);
        processor.endUnarchiving();
        processor.endUnarchiving();  // nothing left to release
        offer(processor, entry("d", 1, 2), "ef", action);
        offer(processor, entry("e", 1, 0), "", action);  // kept without a stream
    }  // the last entry goes with the processor, which does not tell the host
    EXPECT_EQ(host.finished, 3);
    EXPECT_EQ(host.contents(), (std::vector<std::string>{"ab", "cd", "CD", "", "ef"}));
}
