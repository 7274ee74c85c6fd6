#include <gtest/gtest.h>

#include "support/LogCapture.h"
#include "util/Log.h"

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

TEST(Log, EachMessageIsPrefixTextLineFeedTheLevelPicksKindsAndTextIsCut) {
    {
        tuskel_test::LogCapture capture(3);
        logAll();
        EXPECT_EQ(capture.pieces(), (std::vector<std::string>{"[ERR][CommonBufferBase:19] ", "seek fail\n", "\n",
                                                              "[DBG][EntryProcessor:26] ", "find entry[a.txt], usize[5]",
                                                              "\n", "[INF][CommonDecompressor:66] ", "info 1", "\n"}));
    }
    const std::string err = "[ERR][CommonBufferBase:19] seek fail\n\n", inf = "[INF][CommonDecompressor:66] info 1\n";
    for (auto [level, want] : {std::pair{0, inf}, {1, err + inf}, {2, err + inf}}) {  // info ignores the level
        tuskel_test::LogCapture at(level);
        logAll();
        EXPECT_EQ(at.text(), want) << level;
    }
    for (size_t n : {1021, 1022, 1023}) {
        tuskel_test::LogCapture cut(3);
        Utils::errMsg("%s", std::string(n, 'x').c_str());
        EXPECT_EQ(cut.pieces().at(1), std::string(std::min<size_t>(n, 1022), 'x'));
    }
    logAll();  // without a callback nothing is called at all
}
