#include <gtest/gtest.h>

#include <string>

#include "support/LogCapture.h"
#include "util/Log.h"

using tuskel_test::LogCapture;

namespace {

void logAll() {
    logAt("CommonBufferBase", 19);
    Utils::errMsg("seek fail%s", "\n");
    logAt("EntryProcessor", 26);
    Utils::dbgMsg("find entry[%s], usize[%ld]", "a.txt", 5L);
    logAt("CommonDecompressor", 66);
    Utils::infoMsg("info %d", 1);
}

}  // namespace

TEST(Log, EachMessageIsThreeCallsPrefixTextLineFeed) {
    LogCapture capture(3);
    logAll();
    std::vector<std::string> expected = {
        "[ERR][CommonBufferBase:19] ", "seek fail\n", "\n",
        "[DBG][EntryProcessor:26] ", "find entry[a.txt], usize[5]", "\n",
        "[INF][CommonDecompressor:66] ", "info 1", "\n",
    };
    EXPECT_EQ(capture.pieces(), expected);
}

TEST(Log, LevelSelectsKindsAndInfoIgnoresIt) {
    struct Case {
        int level;
        const char* expected;
    } cases[] = {
        {0, "[INF]"}, {1, "[ERR][INF]"}, {2, "[ERR][INF]"}, {3, "[ERR][DBG][INF]"}, {9, "[ERR][DBG][INF]"},
    };
    for (const Case& c : cases) {
        LogCapture capture(c.level);
        logAll();
        std::string tags;
        for (const std::string& piece : capture.pieces()) {
            if (piece.size() > 5 && piece[0] == '[') tags += piece.substr(0, 5);
        }
        EXPECT_EQ(tags, c.expected) << "level " << c.level;
    }
}

TEST(Log, LongTextIsCutAt1022Characters) {
    LogCapture capture(3);
    std::string longText(3000, 'x');
    logAt("F", 1);
    Utils::errMsg("%s", longText.c_str());
    ASSERT_EQ(capture.pieces().size(), 3u);
    EXPECT_EQ(capture.pieces()[1], std::string(1022, 'x'));
}

TEST(Log, NothingIsCalledWithoutACallback) {
    {
        LogCapture capture(3);
    }  // removes the callback again
    ops.level = 3;
    logAll();  // would crash on a null callback
    ops.level = 0;
    LogCapture after(3);
    EXPECT_TRUE(after.pieces().empty());
}
