#include <gtest/gtest.h>

#include "support/Thrown.h"
#include "util/StringHelper.h"
#include "util/Utils.h"

using namespace QRN_SPACE;

TEST(Utils, ParseIntKeepsItsBlanksEarlyStopLetterArithmeticAndMessages) {
    // Hex letters count from 'A' (intended); the number ends before any
    // character that is no hex digit, whatever the base.
    const std::tuple<std::string, int, const char*> cases[] = {
        {"  42", 10, "42"}, {"42 7", 10, "42"}, {"4x", 10, "4"}, {"", 10, "0"}, {"9", 99, "9"}, {"17", 8, "15"},
        {std::string("\0" "12", 3), 10, "12"}, {std::string("12\0" "3", 4), 10, "12"},
        {"1F", 16, "21"}, {"ff", 16, "629"}, {"A", 16, "0"}, {"1 2", 16, "1"}, {"1G", 16, "1"},
        {"4a", 10, "invalid dec number @ Utils, line124"}, {"19", 8, "invalid oct number @ Utils, line109"},
        {"-1", 16, "invalid hex number @ Utils, line114"}};
    for (const auto& [text, base, want] : cases) {
        std::string got;
        const std::string error = tuskel_test::thrown(  // C++17 lambdas cannot capture bindings: copy them in
            [&got, &t = text, b = base] { got = std::to_string(Utils::parseInt(t.data(), t.size(), b)); });
        EXPECT_EQ(error == "no error" ? got : error, want) << text << " base " << base;
    }
}

TEST(Utils, TokenizerTrimsAfterTheEmptinessTestAndReplaceRestartsItsSearch) {
    std::vector<std::string> out{"kept"};
    Utils::stringTokenizer(" zip , ,gz ", out, ",", Utils::trimString, " ");
    EXPECT_EQ(out, (std::vector<std::string>{"kept", "zip", "", "gz"}));
    std::string cascade = "aab";
    EXPECT_EQ(StringHelper::replace(cascade, "ab", "b"), "b");  // intended: each search starts again at 0
}
