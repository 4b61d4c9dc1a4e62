// HVString: numbers and booleans read from text.
#include <halvane/text/HVString.h>

#include <gtest/gtest.h>

#include <limits>

TEST(StringNumbers, IntegersAre32BitReadings) {
    EXPECT_EQ(HVString("42abc").IntValue(), 42);
    EXPECT_EQ(HVString("  -17").IntValue(), -17);
    EXPECT_EQ(HVString("3.9").IntValue(), 3);
    EXPECT_EQ(HVString("abc").IntValue(), 0);
    EXPECT_EQ(HVString("").IntValue(), 0);
    EXPECT_EQ(HVString::SharedNullString().IntegerValue(), 0);
    EXPECT_EQ(HVString("-1").UnsignedIntValue(), 0xFFFFFFFFu);
    EXPECT_EQ(HVString("-1").UIntegerValue(), 0xFFFFFFFFFFFFFFFFull);
    // Above the 32-bit range the integer forms stop at its limit, also the
    // 64-bit ones; LongLongValue reads the number whole.
    HVString large("3000000000");
    EXPECT_EQ(large.IntValue(), 2147483647);
    EXPECT_EQ(large.IntegerValue(), 2147483647);
    EXPECT_EQ(large.UIntegerValue(), 2147483647u);
    EXPECT_EQ(large.LongLongValue(), 3000000000ll);
    EXPECT_EQ(HVString("-3000000000").IntegerValue(), -2147483647 - 1);
}

TEST(StringNumbers, FloatingPointAndTruncatedReadings) {
    EXPECT_EQ(HVString("  3.5e2xyz").DoubleValue(), 350.0);
    EXPECT_EQ(HVString("-.5").DoubleValue(), -0.5);
    EXPECT_EQ(HVString("0.1").FloatValue(), 0.1f);
    EXPECT_EQ(HVString("").DoubleValue(), 0.0);
    EXPECT_EQ(HVString::SharedNullString().FloatValue(), 0.0f);
    EXPECT_EQ(HVString("-2.9").LongLongValue(), -2);
    EXPECT_EQ(HVString("2.9").ULongLongValue(), 2u);
    EXPECT_EQ(HVString("9007199254740993").LongLongValue(), 9007199254740992ll);  // through a double
    // At and above 2^63 the unsigned reading stays exact.
    EXPECT_EQ(HVString("9223372036854775808").ULongLongValue(), 9223372036854775808ull);
    EXPECT_EQ(HVString("18446744073709549568").ULongLongValue(), 18446744073709549568ull);
    // Out of range: saturation, never an undefined conversion.
    EXPECT_EQ(HVString("1e30").LongLongValue(), std::numeric_limits<long long>::max());
    EXPECT_EQ(HVString("-1e30").LongLongValue(), std::numeric_limits<long long>::min());
    EXPECT_EQ(HVString("1e30").ULongLongValue(), std::numeric_limits<unsigned long long>::max());
    EXPECT_EQ(HVString("-1").ULongLongValue(), std::numeric_limits<unsigned long long>::max());
}

TEST(StringNumbers, Booleans) {
    for (const char* text : {"yes", "Y", "true", "T", "tomato", "2", "-1", "  7"}) {
        EXPECT_TRUE(HVString(text).BoolValue()) << text;
    }
    for (const char* text : {"no", "0", "false", "", " yes", "N", "0.9"}) {
        EXPECT_FALSE(HVString(text).BoolValue()) << text;
    }
    EXPECT_FALSE(HVString::SharedNullString().BoolValue());
}
