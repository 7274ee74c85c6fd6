#include <gtest/gtest.h>

#include <string>

#include "support/TestFiles.h"
#include "support/TestStreams.h"

using tuskel_test::readFile;
using tuskel_test::shellQuote;
using tuskel_test::TempDir;
using tuskel_test::writeFile;

namespace {

struct ToolRun {
    int status;
    std::string out, err;
};

// Runs the tool in `dir` with the given arguments (already quoted).
ToolRun tuskel(const TempDir& dir, const std::string& arguments, const std::string& stdoutTarget = "") {
    std::string out = stdoutTarget.empty() ? dir.file("stdout") : stdoutTarget;
    ToolRun run;
    run.status = tuskel_test::runCommand(shellQuote(TUSKEL_TOOL) + " " + arguments + " >" + shellQuote(out) +
                                         " 2>" + shellQuote(dir.file("stderr")));
    run.out = stdoutTarget.empty() ? readFile(out) : "";
    run.err = readFile(dir.file("stderr"));
    return run;
}

// Writes `data` to dir/name and gzips it there; answers the .gz path.
std::string gzipped(const TempDir& dir, const std::string& name, const std::string& data) {
    writeFile(dir.file(name), data);
    EXPECT_EQ(tuskel_test::runCommand("gzip -k -f " + shellQuote(dir.file(name))), 0);
    return dir.file(name + ".gz");
}

}  // namespace

TEST(TuskelTool, UnpacksToStandardOutput) {
    for (size_t size : {size_t(0), size_t(1), size_t(51200), size_t(51201)}) {
        SCOPED_TRACE(size);
        TempDir dir;
        std::string data = tuskel_test::patternBytes(size, 5);
        ToolRun run = tuskel(dir, "decompress " + shellQuote(gzipped(dir, "data", data)));
        EXPECT_EQ(run.status, 0);
        EXPECT_TRUE(run.out == data);
        EXPECT_EQ(run.err, size == 0 ? "tuskel: result 0: ok; 0 entries\n" : "tuskel: result 0: ok; 1 entry\n");
    }
}

// With -d the result line moves to standard output; -v adds the log.
TEST(TuskelTool, WritesNumberedFilesUnderADirectory) {
    TempDir dir;
    std::string data = tuskel_test::patternBytes(70000, 6);
    std::string gz = gzipped(dir, "data", data);
    ToolRun run = tuskel(dir, "decompress -d " + shellQuote(dir.file("out")) + " " + shellQuote(gz));
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, "tuskel: result 0: ok; 1 entry\n");
    EXPECT_EQ(run.err, "");
    EXPECT_TRUE(readFile(dir.file("out/1")) == data);
    run = tuskel(dir, "decompress -v -d " + shellQuote(dir.file("out")) + " " + shellQuote(gz));
    EXPECT_EQ(run.err, "[DBG][EntryProcessor:26] find entry[data], usize[70000]\n");
}

TEST(TuskelTool, ExitStatusTellsWhatHappened) {
    TempDir dir;
    std::string gz = gzipped(dir, "data", tuskel_test::patternBytes(100000, 7));
    std::string whole = readFile(gz);
    writeFile(dir.file("cut.gz"), whole.substr(0, whole.size() / 2) + whole.substr(whole.size() - 4));
    writeFile(dir.file("text"), "neither GZIP nor ZIP");
    writeFile(dir.file("blocker"), "a file where a directory should be");
    struct Case {
        std::string arguments;
        int status;
        const char* err;  // the start of standard error
    } cases[] = {
        {"decompress " + shellQuote(dir.file("text")), 3, "tuskel: result 3: not supported"},
        {"decompress " + shellQuote(dir.file("cut.gz")), 1, "tuskel: result 1: failed"},
        {"decompress " + shellQuote(dir.file("missing.gz")), 66, "tuskel: "},
        {"decompress " + shellQuote(dir.path()), 66, "tuskel: "},
        {"decompress -d " + shellQuote(dir.file("blocker/out")) + " " + shellQuote(gz), 73, "tuskel: "},
        {"", 64, "usage: tuskel decompress"},
        {"unpack " + shellQuote(gz), 64, "usage: tuskel decompress"},
        {"decompress", 64, "usage: tuskel decompress"},
        {"decompress -x " + shellQuote(gz), 64, ""},
        {"decompress " + shellQuote(gz) + " " + shellQuote(gz), 64, "usage: tuskel decompress"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.arguments);
        ToolRun run = tuskel(dir, c.arguments);
        EXPECT_EQ(run.status, c.status);
        EXPECT_NE(run.err.find(c.err), std::string::npos) << run.err;
    }
}

TEST(TuskelTool, AFailedWriteIsAnError) {
    TempDir dir;
    std::string gz = gzipped(dir, "data", tuskel_test::patternBytes(1000, 8));
    ToolRun run = tuskel(dir, "decompress " + shellQuote(gz), "/dev/full");
    EXPECT_EQ(run.status, 74);
    EXPECT_NE(run.err.find("standard output"), std::string::npos) << run.err;
}
