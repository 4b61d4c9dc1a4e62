// Minima and maxima: signed and unsigned integer rules, widening of mixed
// arguments, and which argument wins on NaN or equality.
#include <halvane/values/HVNumericUtilities.h>

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();

}  // namespace

TEST(NumericUtilities, SignedIntegers) {
    EXPECT_EQ(HVIntegerUtilites::Min(-5, 3), -5);
    EXPECT_EQ(HVIntegerUtilites::Max(-5, 3), 3);
    EXPECT_EQ(HVIntegerUtilites::Min(LLONG_MIN, LLONG_MAX), LLONG_MIN);
    EXPECT_EQ(HVIntegerUtilites::Max(LLONG_MIN, LLONG_MAX), LLONG_MAX);
}

TEST(NumericUtilities, UnsignedIntegersTakeANegativeIntAsHuge) {
    const unsigned long long all = 0xFFFFFFFFFFFFFFFFull;
    EXPECT_EQ(HVUIntegerUtilites::Min(-1, 5ull), 5u);
    EXPECT_EQ(HVUIntegerUtilites::Max(-1, 5ull), all);
    EXPECT_EQ(HVUIntegerUtilites::Min(5ull, -1), 5u);
    EXPECT_EQ(HVUIntegerUtilites::Max(5ull, -2), all - 1);
    EXPECT_EQ(HVUIntegerUtilites::Min(3ull, all), 3u);
    EXPECT_EQ(HVUIntegerUtilites::Max(3ull, all), all);
    // Plain ints widen the same way.
    EXPECT_EQ(HVUIntegerUtilites::Min(-1, 5), 5u);
    EXPECT_EQ(HVUIntegerUtilites::Max(-1, 5), all);
    EXPECT_EQ(HVUIntegerUtilites::Min(4, 9), 4u);

    EXPECT_EQ(HVULongLongUtilites::Min(-1, 5ull), 5u);
    EXPECT_EQ(HVULongLongUtilites::Max(-1, 5ull), all);
    EXPECT_EQ(HVULongLongUtilites::Min(5ull, -1), 5u);
    EXPECT_EQ(HVULongLongUtilites::Max(7ull, 2ull), 7u);
    EXPECT_EQ(HVULongLongUtilites::Min(-1, 5), 5u);
}

TEST(NumericUtilities, DoublesReturnTheSecondOnNaNOrEquality) {
    EXPECT_EQ(HVDoubleUtilites::Min(kNaN, 1.0), 1.0);
    EXPECT_TRUE(std::isnan(HVDoubleUtilites::Min(1.0, kNaN)));
    EXPECT_EQ(HVDoubleUtilites::Max(kNaN, 1.0), 1.0);
    EXPECT_TRUE(std::isnan(HVDoubleUtilites::Max(1.0, kNaN)));
    EXPECT_TRUE(std::signbit(HVDoubleUtilites::Min(0.0, -0.0)));
    EXPECT_FALSE(std::signbit(HVDoubleUtilites::Max(-0.0, 0.0)));
    EXPECT_EQ(HVDoubleUtilites::Min(-2.5, 1.0), -2.5);
    EXPECT_EQ(HVDoubleUtilites::Max(-2.5, 1.0), 1.0);

    EXPECT_TRUE(std::isnan(HVCoordinateUtilites::Min(1.0, kNaN)));
    EXPECT_EQ(HVCoordinateUtilites::Min(kNaN, 1.0), 1.0);
    EXPECT_EQ(HVCoordinateUtilites::Max(3.0, 4.0), 4.0);
    EXPECT_TRUE(std::isnan(HVFloatUtilites::Max(2.0, kNaN)));
    EXPECT_EQ(HVFloatUtilites::Min(kNaN, 2.0), 2.0);
}

TEST(NumericUtilities, MixedArgumentsAreWidened) {
    // The float is widened, not the double narrowed.
    EXPECT_EQ(HVDoubleUtilites::Min(0.1f, 0.1), 0.1);
    EXPECT_EQ(HVDoubleUtilites::Max(0.1, 0.1f), double(0.1f));
    EXPECT_EQ(HVDoubleUtilites::Min(1.5f, 2.0), 1.5);
    EXPECT_EQ(HVDoubleUtilites::Max(2.0, 2.5f), 2.5);
    EXPECT_EQ(HVDoubleUtilites::Min(1.5f, 0.5f), 0.5);

    EXPECT_EQ(HVFloatUtilites::Min(2, 1.5), 1.5);
    EXPECT_EQ(HVFloatUtilites::Max(2, 1.5), 2.0);
    EXPECT_EQ(HVFloatUtilites::Min(1.5, 2), 1.5);
    EXPECT_EQ(HVFloatUtilites::Max(1.5, 2), 2.0);
    EXPECT_EQ(HVFloatUtilites::Max(3, 2), 3.0);
}
