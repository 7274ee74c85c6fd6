#include <gtest/gtest.h>

#include "util/StringHelper.h"

using QRN_SPACE::StringHelper;

TEST(StringHelper, ComparisonsTreatNullAsTheDescriptionSays) {
    EXPECT_TRUE(StringHelper::equals(nullptr, nullptr));
    EXPECT_FALSE(StringHelper::equals("a", nullptr));
    EXPECT_FALSE(StringHelper::equalsIgnoreCase(nullptr, "a"));
    EXPECT_TRUE(StringHelper::equalsIgnoreCase("GzIp", "gzip"));

    EXPECT_TRUE(StringHelper::startsWith("abc", ""));
    EXPECT_TRUE(StringHelper::startsWith("abc", "ab"));
    EXPECT_FALSE(StringHelper::startsWith("ab", "abc"));
    EXPECT_FALSE(StringHelper::startsWith(nullptr, ""));
    EXPECT_TRUE(StringHelper::startsWithIgnoreCase("ABC", "ab"));

    EXPECT_TRUE(StringHelper::endsWith("file.zip", ".zip"));
    EXPECT_FALSE(StringHelper::endsWith("zip", "a.zip"));
    EXPECT_TRUE(StringHelper::endsWithIgnoreCase("FILE.ZIP", ".zip"));
    EXPECT_FALSE(StringHelper::endsWithIgnoreCase("x", nullptr));
}

TEST(StringHelper, SearchesIgnoringCase) {
    EXPECT_EQ(StringHelper::indexOfIgnoreCase("aXbxC", "X", 0), 1);
    EXPECT_EQ(StringHelper::indexOfIgnoreCase("aXbxC", "X", 2), 3);
    EXPECT_EQ(StringHelper::indexOfIgnoreCase("aXbxC", "x", -4), 1);
    EXPECT_EQ(StringHelper::indexOfIgnoreCase("abc", "d", 0), -1);
    EXPECT_EQ(StringHelper::indexOfIgnoreCase("abc", "a", 10), -1);
    EXPECT_EQ(StringHelper::lastIndexOfIgnoreCase("aXbxC", "X"), 3);
    EXPECT_EQ(StringHelper::lastIndexOfIgnoreCase("abc", "z"), -1);
}

TEST(StringHelper, EditsInPlace) {
    std::string s = "  --ab c--  ";
    EXPECT_EQ(StringHelper::trim(s, " -"), "ab c");
    std::string all = "----";
    EXPECT_EQ(StringHelper::trim(all, "-"), "");
    EXPECT_EQ(StringHelper::trimToLength(s, 2), "ab");

    std::string path = "a/b/c";
    EXPECT_EQ(StringHelper::replaceChar(path, '/', '\\'), "a\\b\\c");
    std::string text = "aaa.bbb.aaa";
    EXPECT_EQ(StringHelper::replace(text, "aaa", "x"), "x.bbb.x");
    // Each search restarts at 0, so a replacement can create a new match.
    std::string cascade = "aab";
    EXPECT_EQ(StringHelper::replace(cascade, "ab", "b"), "b");

    std::string mixed = "MiXeD";
    EXPECT_EQ(StringHelper::toupper(mixed), "MIXED");
    EXPECT_EQ(StringHelper::tolower(mixed), "mixed");
}

TEST(StringHelper, NumberAndBooleanText) {
    EXPECT_EQ(StringHelper::ntoa(-42), "-42");
    EXPECT_EQ(StringHelper::ltoa(2147483647L), "2147483647");
    EXPECT_EQ(StringHelper::ftoa(1.5f), "1.500000");
    EXPECT_EQ(StringHelper::ftoa(1e30f).substr(0, 7), "1000000");
    EXPECT_EQ(StringHelper::dtoa(0.25), "0.25");
    EXPECT_EQ(StringHelper::btoa(StringHelper::atob("TRUE")), "true");
    EXPECT_FALSE(StringHelper::atob("yes"));
    EXPECT_FALSE(StringHelper::atob(nullptr));
}
