// CFStringGetIntValue and CFStringGetDoubleValue.
#include "CFTestSupport.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <string>

using namespace cftest;

namespace {

SInt32 intValue(std::u16string_view text) {
    return CFStringGetIntValue(string(text));
}
double doubleValue(std::u16string_view text) {
    return CFStringGetDoubleValue(string(text));
}

}  // namespace

TEST(StringIntValue, SpacesSignAndDigits) {
    EXPECT_EQ(intValue(u"42"), 42);
    EXPECT_EQ(intValue(u"  \t\r\n42"), 42);
    EXPECT_EQ(intValue(std::u16string(u"\0\x01\x1F 7", 5)), 7);  // NUL and controls are spaces too
    EXPECT_EQ(intValue(u"\x7F\u0085\u00A0 8"), 8);
    EXPECT_EQ(intValue(u"\u2000\u2009\u200B9"), 9);
    EXPECT_EQ(intValue(u"\u300010"), 10);
    EXPECT_EQ(intValue(u"\u200C5"), 0);  // U+200C is not skipped
    EXPECT_EQ(intValue(u"\u20285"), 0);
    EXPECT_EQ(intValue(u"- 12"), -12);  // spaces after the sign
    EXPECT_EQ(intValue(u"+\u3000 5"), 5);
    EXPECT_EQ(intValue(u"-0"), 0);
    EXPECT_EQ(intValue(u"+-1"), 0);
    EXPECT_EQ(intValue(u"--1"), 0);
    EXPECT_EQ(intValue(u"12abc"), 12);
    EXPECT_EQ(intValue(u"3.9"), 3);
    EXPECT_EQ(intValue(u"1e5"), 1);
    EXPECT_EQ(intValue(u"0x1A"), 0);
    EXPECT_EQ(intValue(u"007"), 7);
    EXPECT_EQ(intValue(u"１２"), 0);  // full-width digits are not digits here
    EXPECT_EQ(intValue(u"abc"), 0);
    EXPECT_EQ(intValue(u""), 0);
    EXPECT_EQ(intValue(u"-"), 0);
    EXPECT_EQ(intValue(u"é12"), 0);
    EXPECT_EQ(intValue(u"12é"), 12);                    // read from UTF-16 storage
    EXPECT_EQ(CFStringGetIntValue(CFSTR(" 64 ")), 64);  // and from byte storage
    EXPECT_EQ(CFStringGetIntValue(nullptr), 0);
}

TEST(StringIntValue, SaturatesOnOverflow) {
    EXPECT_EQ(intValue(u"2147483647"), 2147483647);
    EXPECT_EQ(intValue(u"2147483648"), 2147483647);
    EXPECT_EQ(intValue(u"99999999999999999999999999"), 2147483647);
    EXPECT_EQ(intValue(u"-2147483648"), -2147483647 - 1);
    EXPECT_EQ(intValue(u"-2147483649"), -2147483647 - 1);
    EXPECT_EQ(intValue(u"-99999999999999999999999999"), -2147483647 - 1);
    EXPECT_EQ(intValue(u"00000000000000000000000012"), 12);
    EXPECT_EQ(intValue(u"3000000000abc"), 2147483647);
}

TEST(StringDoubleValue, LongestValidPrefix) {
    EXPECT_EQ(doubleValue(u"  3.5e2xyz"), 350.0);
    EXPECT_EQ(doubleValue(u".5"), 0.5);
    EXPECT_EQ(doubleValue(u"-.5"), -0.5);
    EXPECT_EQ(doubleValue(u"+1"), 1.0);
    EXPECT_EQ(doubleValue(u"1e"), 1.0);
    EXPECT_EQ(doubleValue(u"1e+3"), 1000.0);
    EXPECT_EQ(doubleValue(u"2E-2"), 0.02);
    EXPECT_EQ(doubleValue(u"1.2.3"), 1.2);
    EXPECT_EQ(doubleValue(u"1,5"), 1.0);
    EXPECT_EQ(doubleValue(u"1e400"), HUGE_VAL);
    EXPECT_EQ(doubleValue(u"-1e400"), -HUGE_VAL);
    EXPECT_EQ(doubleValue(u"1e-400"), 0.0);
    EXPECT_EQ(doubleValue(u"\u3000\u00A0-2.25"), -2.25);
    EXPECT_EQ(doubleValue(u"12é"), 12.0);
    EXPECT_EQ(CFStringGetDoubleValue(CFSTR("6.5 apples")), 6.5);
    // A run longer than any short buffer.
    std::u16string longRun = u"1" + std::u16string(80, u'0') + u"e-78";
    EXPECT_DOUBLE_EQ(doubleValue(longRun), 100.0);
}

TEST(StringDoubleValue, NothingParsesGivesZero) {
    for (std::u16string_view text :
         {u"inf", u"nan", u"INF", u"infinity", u"- 1", u"", u"  ", u"e5", u"+", u".", u"--1", u"abc", u"１"}) {
        EXPECT_EQ(doubleValue(text), 0.0) << std::string(text.begin(), text.end());
    }
    EXPECT_EQ(doubleValue(u"0x1A"), 0.0);  // only "0" is collected
    EXPECT_EQ(CFStringGetDoubleValue(nullptr), 0.0);
}

TEST(StringNumbers, IndependentOfTheProcessLocale) {
    if (std::setlocale(LC_ALL, "de_DE.UTF-8") == nullptr && std::setlocale(LC_ALL, "de_DE.utf8") == nullptr) {
        GTEST_SKIP() << "no de_DE locale installed";
    }
    EXPECT_EQ(doubleValue(u"1.5"), 1.5);
    EXPECT_EQ(doubleValue(u"1,5"), 1.0);
    EXPECT_EQ(intValue(u"1.500"), 1);
    std::setlocale(LC_ALL, "C");
}
