#include <gtest/gtest.h>

#include <string>

#include "support/TestFiles.h"

using namespace tuskel_test;

// Entries go to standard output, or with -d into numbered files with the
// result line on standard output; -v adds the log. Every failure has an
// exit status of its own and says why on standard error.
TEST(TuskelDecompress, UnpacksWhatGzipPackedAndTellsWhatHappened) {
    TempDir dir;
    ASSERT_EQ(runCommand("cd " + shellQuote(dir.path()) + " && seq 20000 >data && gzip -k data && " +
                         "echo neither GZIP nor ZIP, nor a directory >blocker"), 0);
    const std::string data = readFile(dir.file("data"));
    struct Case { const char* arguments; int status; std::string out, err; };
    const Case cases[] = {
        {"decompress data.gz", 0, data, "tuskel: result 0: ok; 1 entry\n"},
        {"decompress -v -d out data.gz", 0, "tuskel: result 0: ok; 1 entry\n",
         "[DBG][EntryProcessor:26] find entry[data], usize[108894]\n"},
        {"decompress blocker", 3, "", "tuskel: result 3: not supported"},
        {"decompress missing.gz", 74, "", "tuskel: "},
        {"decompress -d blocker/out data.gz", 74, "", "tuskel: "},
        {"decompress data.gz >/dev/full", 74, "", "tuskel: standard output"},
        {"", 64, "", "A subcommand is required"},
        {"decompress -x data.gz", 64, "", ""},
        {"decompress data.gz data.gz", 64, "", "The following argument was not expected: data.gz"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.arguments);
        // Redirections in the arguments come last and win.
        EXPECT_EQ(runCommand("cd " + shellQuote(dir.path()) + " && " + shellQuote(TUSKEL_TOOL) + " >stdout 2>stderr " +
                             c.arguments), c.status);
        EXPECT_TRUE(readFile(dir.file("stdout")) == c.out);
        EXPECT_EQ(readFile(dir.file("stderr")).find(c.err), 0u) << readFile(dir.file("stderr"));
    }
    EXPECT_TRUE(readFile(dir.file("out/1")) == data);
}
