#include <gtest/gtest.h>

#include <cstring>

#include "lang/Exception.h"
#include "util/StringHelper.h"
#include "util/Utils.h"

using QRN_SPACE::Exception;
using QRN_SPACE::Utils;

namespace {

int parse(const char* s, int base) { return Utils::parseInt(s, static_cast<unsigned>(std::strlen(s)), base); }

// "d" stands for any decimal digit, every other character for itself.
bool hasShape(const std::string& text, const std::string& shape) {
    if (text.size() != shape.size()) return false;
    for (size_t i = 0; i < text.size(); ++i) {
        bool digit = text[i] >= '0' && text[i] <= '9';
        if (shape[i] == 'd' ? !digit : text[i] != shape[i]) return false;
    }
    return true;
}

std::string parseError(const char* s, int base) {
    try {
        parse(s, base);
    } catch (Exception& e) {
        return e.getMessage() + " @ " + e.getErrorLocation();
    }
    return "no error";
}

}  // namespace

TEST(Utils, ParseIntKeepsItsBlanksEarlyStopAndLetterArithmetic) {
    struct Case {
        const char* text;
        int base;
        int value;
    } cases[] = {
        {"  42", 10, 42}, {"42 7", 10, 42}, {"4x", 10, 4},  {"17", 8, 15},
        {"1F", 16, 21},   {"ff", 16, 629},  {"A", 16, 0},      {"", 10, 0},
        {"0009", 10, 9},  {"9", 99, 9},     {"1 2", 16, 1},
    };
    for (const Case& c : cases) EXPECT_EQ(parse(c.text, c.base), c.value) << c.text << " base " << c.base;
    EXPECT_EQ(Utils::parseInt("\0" "12", 3, 10), 12);  // a leading NUL is skipped like a blank
    EXPECT_EQ(Utils::parseInt("12\0" "3", 4, 10), 12);  // ...but a NUL after a digit ends the number
    EXPECT_EQ(Utils::parseInt("123", 0, 10), 0);
}

TEST(Utils, ParseIntRejectsDigitsOutsideItsBase) {
    EXPECT_EQ(parseError("4a", 10), "invalid dec number @ Utils, line124");
    EXPECT_EQ(parseError("19", 8), "invalid oct number @ Utils, line109");
    EXPECT_EQ(parseError("1G", 16), "no error");  // stops before 'G'
    EXPECT_EQ(parseError("-1", 16), "invalid hex number @ Utils, line114");
}

TEST(Utils, TokenizerTrimsAfterTheEmptinessTest) {
    std::vector<std::string> out{"kept"};
    Utils::stringTokenizer(" zip , ,gz ", out, ",", Utils::trimString, " ");
    EXPECT_EQ(out, (std::vector<std::string>{"kept", "zip", "", "gz"}));

    std::vector<std::string> untrimmed;
    Utils::stringTokenizer(";a;;b;", untrimmed, ";", nullptr, " ");
    EXPECT_EQ(untrimmed, (std::vector<std::string>{"a", "b"}));

    std::vector<std::string> none;
    Utils::stringTokenizer("", none, ",", Utils::trimString, " ");
    EXPECT_TRUE(none.empty());

    std::string padded = "\t x \r\n";
    Utils::trimString(padded, nullptr);
    EXPECT_EQ(padded, "x");
}

TEST(Utils, DateAndTimeStampsHaveTheirShape) {
    EXPECT_TRUE(hasShape(Utils::getLocalDate(), "dddd-dd-dd")) << Utils::getLocalDate();
    EXPECT_TRUE(hasShape(Utils::getLocalTime(), "dd:dd:dd")) << Utils::getLocalTime();
}

TEST(Utils, ByteAndHexHelpers) {
    EXPECT_TRUE(Utils::isdigits("0123", nullptr));
    EXPECT_TRUE(Utils::isdigits("1.5", "."));
    EXPECT_FALSE(Utils::isdigits("1.5", nullptr));
    EXPECT_FALSE(Utils::isdigits("", "."));
    EXPECT_FALSE(Utils::isdigits(nullptr, "."));

    const unsigned char a[] = {1, 2, 3}, b[] = {1, 2, 4};
    EXPECT_TRUE(Utils::compareBytes(a, b, 2));
    EXPECT_FALSE(Utils::compareBytes(a, b, 3));
    EXPECT_TRUE(Utils::compareBytes(a, b, 0));

    EXPECT_EQ(Utils::CHAR_TO_HEX(0x3A), 'A');
    EXPECT_EQ(Utils::CHAR_TO_HEX(9), '9');
    EXPECT_EQ(static_cast<unsigned char>(Utils::HEX_TO_CHAR('F', '0')), 0xF0);
    EXPECT_EQ(Utils::HEX_TO_CHAR('4', '1'), 'A');

    EXPECT_EQ(Utils::formatString("%s-%03d", "x", 7), "x-007");
    EXPECT_EQ(Utils::formatString("%5000d", 1).size(), 4095u);
}

TEST(Utils, MemoryAndTokenSearch) {
    const char hay[] = {'a', 0, 'P', 'K', 5, 6, 'z'};
    EXPECT_EQ(Utils::memstr(hay, 7, "PK\5\6", 4), hay + 2);
    EXPECT_EQ(Utils::memstr(hay, 5, "PK\5\6", 4), nullptr);
    EXPECT_EQ(Utils::memstr(hay, 2, "abc", 3), nullptr);

    const char* text = ",,one,,two three";
    EXPECT_STREQ(Utils::strToK(text, 0, ", "), "one,,two three");
    EXPECT_STREQ(Utils::strToK(text, 2, ", "), "three");
    EXPECT_EQ(Utils::strToK(text, 3, ", "), nullptr);
}
