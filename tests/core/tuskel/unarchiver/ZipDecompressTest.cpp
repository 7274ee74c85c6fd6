#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "plugin/HostDoubles.h"
#include "support/LogCapture.h"
#include "support/TestFiles.h"
#include "ZipTestSupport.h"

using tuskel_test::MemoryHostBuffer;
using tuskel_test::readFile;
using tuskel_test::RecordingEntryProcessor;
using ziptest::ZipArchives;

namespace {

// Entries as the host adapter offers them: those whose size the local
// header states and is not 0, in archive order, with unzip's bytes.
std::vector<std::string> offeredByUnzip(const std::string& archive) {
    std::vector<std::string> contents;
    for (const auto& e : ziptest::listEntries(archive)) {
        if (e.size > 0 && (e.flags & 8) == 0) contents.push_back(ziptest::unzipEntry(archive, e.name));
    }
    return contents;
}

}  // namespace

TEST_F(ZipArchives, DecompressHandsTheHostEveryEntryOfKnownSize) {
    struct Case {
        std::string archive;
        std::set<int> refuse;  // offered entries the host answers with no buffer
    } cases[] = {
        {"zip.zip", {}}, {"zip0.zip", {}}, {"py_deflated.zip", {}}, {"py_stored.zip", {}},
        {"zip.zip", {0}},     // the first is refused; its data is passed over
        {"zip0.zip", {1, 2}},
    };
    for (const auto& c : cases) {
        std::vector<std::string> expected = offeredByUnzip(path(c.archive));
        size_t listed = ziptest::listEntries(path(c.archive)).size();
        for (int maxRead : {1 << 30, 7, 33791}) {
            SCOPED_TRACE(c.archive + " read " + std::to_string(maxRead) + " refused " + std::to_string(c.refuse.size()));
            MemoryHostBuffer input(readFile(path(c.archive)));
            input.maxRead = maxRead;
            RecordingEntryProcessor host;
            host.refuse = c.refuse;
            CommonDecompressor decompressor;
            EXPECT_EQ(decompressor.decompress(&input, &host), 0);
            ASSERT_EQ(host.records.size(), expected.size());
            std::vector<std::string> got = host.contents();
            std::vector<std::string> want;
            for (size_t i = 0; i < expected.size(); ++i) {
                if (!c.refuse.count(static_cast<int>(i))) want.push_back(expected[i]);
            }
            EXPECT_EQ(got, want);
            // finish() after every entry and after the final one.
            EXPECT_EQ(host.finished, static_cast<int>(listed) + 1);
        }
    }
}

TEST_F(ZipArchives, DecompressOverAStreamEndsQuietlyBehindAFailedEntry) {
    // a, b (bzip2), c, d: b reaches the host and stays empty; the walk ends
    // there, since the entry point reads a stream and cannot restart.
    MemoryHostBuffer input(readFile(path("bzip2.zip")));
    RecordingEntryProcessor host;
    tuskel_test::LogCapture log(3);
    CommonDecompressor decompressor;
    EXPECT_EQ(decompressor.decompress(&input, &host), 0);
    std::vector<std::string> contents = host.contents();
    ASSERT_EQ(contents.size(), 2u);
    EXPECT_EQ(contents[0], offeredByUnzip(path("good.zip"))[0]);
    EXPECT_EQ(contents[1], "");
    EXPECT_EQ(log.text().find("Exception["), std::string::npos);

    // Descriptor entries are never offered (their size is unknown); the
    // walk loses its way behind the first one and still answers 0.
    MemoryHostBuffer piped(readFile(path("pipe.zip")));
    RecordingEntryProcessor none;
    EXPECT_EQ(decompressor.decompress(&piped, &none), 0);
    EXPECT_TRUE(none.records.empty());

    // Deflate data cut short is not contained: result 1.
    std::string cut = readFile(path("good.zip"));
    auto listed = ziptest::listEntries(path("good.zip"));
    cut.resize(listed[3].headerOffset + 30 + listed[3].name.size() + listed[3].compressedSize / 2);
    MemoryHostBuffer truncated(cut);
    RecordingEntryProcessor partial;
    log.clear();
    EXPECT_EQ(decompressor.decompress(&truncated, &partial), 1);
    EXPECT_NE(log.text().find("Exception[inflate: error -5"), std::string::npos) << log.text();
    EXPECT_EQ(partial.contents().size(), 4u);  // those before stay handed over
}
