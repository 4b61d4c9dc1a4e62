// CFNumber: creation and stored types, the shared float instances, every
// conversion of CFNumberGetValue with its exactness flag, unsigned values at
// their extremes, re-creation from type and value, comparison, equality,
// hashing and both descriptions.
#include "CFTestSupport.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

using namespace cftest;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr uint64_t kFactor = 2654435761u;

template <typename T>
Owned<CFNumberRef> number(CFNumberType type, T value) {
    return own(CFNumberCreate(nullptr, type, &value));
}

template <typename T>
bool sameValue(T a, T b) {
    if constexpr (std::is_floating_point_v<T>) {
        if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
        return std::signbit(a) == std::signbit(b) && a == b;
    } else {
        return a == b;
    }
}

// Reads n as type into a 16-byte buffer and checks the value, the flag and
// that exactly sizeof(T) bytes were written.
template <typename T>
::testing::AssertionResult reads(CFNumberRef n, CFNumberType type, T expected, bool exact) {
    unsigned char buffer[16];
    std::memset(buffer, 0xA5, sizeof buffer);
    bool flag = CFNumberGetValue(n, type, buffer);
    T value;
    std::memcpy(&value, buffer, sizeof value);
    for (size_t i = sizeof(T); i < sizeof buffer; ++i) {
        if (buffer[i] != 0xA5) return ::testing::AssertionFailure() << "byte " << i << " was written";
    }
    if (sameValue(value, expected) && flag == exact) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "read " << +value << (flag ? " (exact)" : " (lossy)") << ", expected "
                                         << +expected << (exact ? " (exact)" : " (lossy)");
}

std::string address(const void* p) {
    char text[32];
    std::snprintf(text, sizeof text, "0x%lx", static_cast<unsigned long>(reinterpret_cast<uintptr_t>(p)));
    return text;
}

std::string debugDescription(CFNumberRef n) {
    return ascii(own(CFCopyDescription(n)));
}

// What "%@" prints, through the class record.
std::string formattingDescription(CFNumberRef n) {
    const CFRuntimeClass* cls = _CFRuntimeGetClassWithTypeID(CFNumberGetTypeID());
    return ascii(own(cls->copyFormattingDesc(n, nullptr)));
}

std::string debugFor(CFNumberRef n, const std::string& body) {
    return "<CFNumber " + address(n) + " [" + address(kCFAllocatorSystemDefault) + "]>{" + body + "}";
}

}  // namespace

TEST(NumberCreation, StoredTypesSizesAndFloatness) {
    struct Row {
        CFNumberType created, reported;
        CFIndex size;
        bool isFloat;
    };
    const Row rows[] = {
        {kCFNumberSInt8Type, kCFNumberSInt8Type, 1, false},      {kCFNumberSInt16Type, kCFNumberSInt16Type, 2, false},
        {kCFNumberSInt32Type, kCFNumberSInt32Type, 4, false},    {kCFNumberSInt64Type, kCFNumberSInt64Type, 8, false},
        {kCFNumberFloat32Type, kCFNumberFloat32Type, 4, true},   {kCFNumberFloat64Type, kCFNumberFloat64Type, 8, true},
        {kCFNumberCharType, kCFNumberSInt8Type, 1, false},       {kCFNumberShortType, kCFNumberSInt16Type, 2, false},
        {kCFNumberIntType, kCFNumberSInt32Type, 4, false},       {kCFNumberLongType, kCFNumberSInt64Type, 8, false},
        {kCFNumberLongLongType, kCFNumberSInt64Type, 8, false},  {kCFNumberFloatType, kCFNumberFloat32Type, 4, true},
        {kCFNumberDoubleType, kCFNumberFloat64Type, 8, true},    {kCFNumberCFIndexType, kCFNumberSInt64Type, 8, false},
        {kCFNumberNSIntegerType, kCFNumberSInt64Type, 8, false}, {kCFNumberCGFloatType, kCFNumberFloat64Type, 8, true},
        {kCFNumberUInt8Type, kCFNumberUInt8Type, 1, false},      {kCFNumberUInt16Type, kCFNumberUInt16Type, 2, false},
        {kCFNumberUInt32Type, kCFNumberUInt32Type, 4, false},    {kCFNumberULongType, kCFNumberULongType, 8, false},
        {kCFNumberUInt64Type, kCFNumberUInt64Type, 8, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.created);
        // 0.25 in a float or double, 7 in any integer: both cover every width.
        unsigned char value[16] = {};
        if (row.reported == kCFNumberFloat32Type) {
            float f = 0.25f;
            std::memcpy(value, &f, sizeof f);
        } else if (row.reported == kCFNumberFloat64Type) {
            double d = 0.25;
            std::memcpy(value, &d, sizeof d);
        } else {
            value[0] = 7;  // little-endian
        }
        auto n = own(CFNumberCreate(nullptr, row.created, value));
        ASSERT_TRUE(n);
        EXPECT_EQ(CFGetTypeID(n), CFNumberGetTypeID());
        EXPECT_EQ(CFNumberGetType(n), row.reported);
        EXPECT_EQ(CFNumberGetByteSize(n), row.size);
        EXPECT_EQ(CFNumberIsFloatType(n), row.isFloat);
        EXPECT_EQ(CFGetRetainCount(n), 1);
        EXPECT_TRUE(reads(n, kCFNumberFloat64Type, row.isFloat ? 0.25 : 7.0, true));
    }
    EXPECT_EQ(CFNumberGetTypeID(), 22u);
    EXPECT_EQ(ascii(own(CFCopyTypeIDDescription(CFNumberGetTypeID()))), "CFNumber");

    // Float32 keeps float precision.
    auto tenth = number(kCFNumberFloatType, 0.1f);
    EXPECT_TRUE(reads(tenth, kCFNumberFloat64Type, double(0.1f), true));
    EXPECT_NE(double(0.1f), 0.1);
}

TEST(NumberCreation, UnknownTypesNullValuesAndTheNullAllocator) {
    int value = 1;
    for (CFNumberType type :
         {CFNumberType(0), CFNumberType(17), CFNumberType(38), CFNumberType(44), CFNumberType(-1)}) {
        EXPECT_EQ(CFNumberCreate(nullptr, type, &value), nullptr) << type;
    }
    EXPECT_EQ(CFNumberCreate(nullptr, kCFNumberIntType, nullptr), nullptr);
    EXPECT_EQ(CFNumberCreate(kCFAllocatorNull, kCFNumberIntType, &value), nullptr);
    double half = 0.5;
    EXPECT_EQ(CFNumberCreate(kCFAllocatorNull, kCFNumberDoubleType, &half), nullptr);
    // Shared values need no allocation, so every allocator gets them.
    double one = 1.0;
    EXPECT_NE(CFNumberCreate(kCFAllocatorNull, kCFNumberDoubleType, &one), nullptr);
}

TEST(NumberCreation, SharedFloatInstancesAreImmortal) {
    for (CFNumberRef constant : {kCFNumberNaN, kCFNumberPositiveInfinity, kCFNumberNegativeInfinity}) {
        EXPECT_EQ(CFGetRetainCount(constant), kImmortal);
        EXPECT_EQ(CFNumberGetType(constant), kCFNumberFloat64Type);
        CFRetain(constant);
        CFRelease(constant);
        CFRelease(constant);
        EXPECT_EQ(CFGetRetainCount(constant), kImmortal);
    }
    EXPECT_TRUE(reads(kCFNumberPositiveInfinity, kCFNumberFloat64Type, kInf, true));
    EXPECT_TRUE(reads(kCFNumberNegativeInfinity, kCFNumberFloat64Type, -kInf, true));
    EXPECT_TRUE(reads(kCFNumberNaN, kCFNumberFloat64Type, kNaN, true));

    // NaN and the infinities are the Float64 constants whatever the width.
    EXPECT_EQ(number(kCFNumberFloat32Type, std::numeric_limits<float>::quiet_NaN()).get(), kCFNumberNaN);
    EXPECT_EQ(number(kCFNumberDoubleType, -kNaN).get(), kCFNumberNaN);
    EXPECT_EQ(number(kCFNumberFloatType, std::numeric_limits<float>::infinity()).get(), kCFNumberPositiveInfinity);
    EXPECT_EQ(number(kCFNumberCGFloatType, -kInf).get(), kCFNumberNegativeInfinity);

    // 0.0 and 1.0 have one instance per width.
    auto zero32 = number(kCFNumberFloat32Type, 0.0f);
    auto one32 = number(kCFNumberFloatType, 1.0f);
    auto zero64 = number(kCFNumberFloat64Type, 0.0);
    auto one64 = number(kCFNumberDoubleType, 1.0);
    EXPECT_EQ(number(kCFNumberFloatType, 0.0f).get(), zero32.get());
    EXPECT_EQ(number(kCFNumberFloat32Type, 1.0f).get(), one32.get());
    EXPECT_EQ(number(kCFNumberCGFloatType, 0.0).get(), zero64.get());
    EXPECT_EQ(number(kCFNumberFloat64Type, 1.0).get(), one64.get());
    EXPECT_NE(zero32.get(), zero64.get());
    EXPECT_NE(one32.get(), one64.get());
    for (CFNumberRef shared : {zero32.get(), one32.get(), zero64.get(), one64.get()}) {
        EXPECT_EQ(CFGetRetainCount(shared), kImmortal);
    }
    EXPECT_EQ(CFNumberGetType(zero32), kCFNumberFloat32Type);
    EXPECT_EQ(CFNumberGetType(one64), kCFNumberFloat64Type);

    // -0.0 is an ordinary number.
    auto negativeZero = number(kCFNumberFloat64Type, -0.0);
    EXPECT_NE(negativeZero.get(), zero64.get());
    EXPECT_EQ(CFGetRetainCount(negativeZero), 1);
    EXPECT_TRUE(reads(negativeZero, kCFNumberFloat64Type, -0.0, true));
    // Integers are never shared.
    auto a = number(kCFNumberIntType, 5);
    auto b = number(kCFNumberIntType, 5);
    EXPECT_NE(a.get(), b.get());
    EXPECT_EQ(CFGetRetainCount(a), 1);
}

TEST(NumberConversion, IntegerToInteger) {
    // Same or wider: exact.
    auto small = number(kCFNumberSInt8Type, int8_t(-5));
    EXPECT_TRUE(reads(small, kCFNumberSInt8Type, int8_t(-5), true));
    EXPECT_TRUE(reads(small, kCFNumberShortType, int16_t(-5), true));
    EXPECT_TRUE(reads(small, kCFNumberSInt32Type, int32_t(-5), true));
    EXPECT_TRUE(reads(small, kCFNumberLongType, -5L, true));
    EXPECT_TRUE(reads(number(kCFNumberSInt64Type, INT64_MIN), kCFNumberSInt64Type, INT64_MIN, true));

    // To SInt32: low 32 bits, exact only when the value fits.
    EXPECT_TRUE(reads(number(kCFNumberSInt64Type, int64_t(4294967295)), kCFNumberSInt32Type, -1, false));
    EXPECT_TRUE(reads(number(kCFNumberSInt64Type, int64_t(2147483648)), kCFNumberIntType, INT32_MIN, false));
    EXPECT_TRUE(reads(number(kCFNumberSInt64Type, int64_t(INT32_MAX)), kCFNumberSInt32Type, INT32_MAX, true));
    EXPECT_TRUE(reads(number(kCFNumberSInt64Type, int64_t(INT32_MIN)), kCFNumberSInt32Type, INT32_MIN, true));
    EXPECT_TRUE(reads(number(kCFNumberSInt64Type, int64_t(-2147483649)), kCFNumberSInt32Type, INT32_MAX, false));

    // To SInt8/SInt16: low bits, exact when the value fits the signed or the
    // unsigned type of that width.
    EXPECT_TRUE(reads(number(kCFNumberSInt16Type, int16_t(200)), kCFNumberSInt8Type, int8_t(-56), true));
    EXPECT_TRUE(reads(number(kCFNumberSInt16Type, int16_t(255)), kCFNumberCharType, int8_t(-1), true));
    EXPECT_TRUE(reads(number(kCFNumberSInt16Type, int16_t(256)), kCFNumberSInt8Type, int8_t(0), false));
    EXPECT_TRUE(reads(number(kCFNumberSInt16Type, int16_t(-128)), kCFNumberSInt8Type, int8_t(-128), true));
    EXPECT_TRUE(reads(number(kCFNumberSInt16Type, int16_t(-129)), kCFNumberSInt8Type, int8_t(127), false));
    EXPECT_TRUE(reads(number(kCFNumberSInt32Type, 40000), kCFNumberSInt16Type, int16_t(-25536), true));
    EXPECT_TRUE(reads(number(kCFNumberSInt32Type, 65535), kCFNumberShortType, int16_t(-1), true));
    EXPECT_TRUE(reads(number(kCFNumberSInt32Type, 65536), kCFNumberSInt16Type, int16_t(0), false));
    EXPECT_TRUE(reads(number(kCFNumberSInt32Type, -32769), kCFNumberSInt16Type, int16_t(32767), false));
}

TEST(NumberConversion, IntegerToFloat) {
    EXPECT_TRUE(reads(number(kCFNumberSInt32Type, 16777216), kCFNumberFloat32Type, 16777216.0f, true));
    EXPECT_TRUE(reads(number(kCFNumberSInt32Type, 16777217), kCFNumberFloatType, 16777216.0f, false));
    EXPECT_TRUE(reads(number(kCFNumberSInt32Type, -16777217), kCFNumberFloat32Type, -16777216.0f, false));
    EXPECT_TRUE(reads(number(kCFNumberSInt64Type, int64_t(1) << 53), kCFNumberFloat64Type, 9007199254740992.0, true));
    EXPECT_TRUE(
        reads(number(kCFNumberSInt64Type, (int64_t(1) << 53) + 1), kCFNumberDoubleType, 9007199254740992.0, false));
    EXPECT_TRUE(reads(number(kCFNumberSInt64Type, INT64_MAX), kCFNumberFloat64Type, 9223372036854775808.0, false));
    EXPECT_TRUE(reads(number(kCFNumberSInt64Type, INT64_MIN), kCFNumberFloat64Type, -9223372036854775808.0, true));
    EXPECT_TRUE(reads(number(kCFNumberSInt8Type, int8_t(-7)), kCFNumberFloat32Type, -7.0f, true));
}

TEST(NumberConversion, FloatToIntegerTruncatesAndSaturates) {
    EXPECT_TRUE(reads(number(kCFNumberFloat64Type, 3.9), kCFNumberSInt32Type, 3, false));
    EXPECT_TRUE(reads(number(kCFNumberFloat64Type, -3.9), kCFNumberSInt32Type, -3, false));
    EXPECT_TRUE(reads(number(kCFNumberFloat64Type, 3.0), kCFNumberIntType, 3, true));
    EXPECT_TRUE(reads(number(kCFNumberFloat32Type, -2.5f), kCFNumberSInt64Type, int64_t(-2), false));
    EXPECT_TRUE(reads(number(kCFNumberFloat64Type, -0.0), kCFNumberSInt32Type, 0, true));
    EXPECT_TRUE(reads(number(kCFNumberFloat64Type, 2147483647.5), kCFNumberSInt32Type, INT32_MAX, false));
    // Out of range: the nearest limit, reported as a loss.
    EXPECT_TRUE(reads(number(kCFNumberFloat64Type, 1e20), kCFNumberSInt64Type, INT64_MAX, false));
    EXPECT_TRUE(reads(number(kCFNumberFloat64Type, -1e20), kCFNumberSInt64Type, INT64_MIN, false));
    EXPECT_TRUE(reads(number(kCFNumberFloat64Type, 9223372036854775808.0), kCFNumberSInt64Type, INT64_MAX, false));
    EXPECT_TRUE(reads(number(kCFNumberFloat64Type, -9223372036854775808.0), kCFNumberSInt64Type, INT64_MIN, true));
    EXPECT_TRUE(reads(number(kCFNumberFloat64Type, 2147483648.0), kCFNumberSInt32Type, INT32_MAX, false));
    EXPECT_TRUE(reads(number(kCFNumberFloat64Type, 300.0), kCFNumberSInt8Type, int8_t(127), false));
    EXPECT_TRUE(reads(number(kCFNumberFloat64Type, 200.0), kCFNumberSInt8Type, int8_t(127), false));
    EXPECT_TRUE(reads(number(kCFNumberFloat64Type, -300.0), kCFNumberSInt8Type, int8_t(-128), false));
    EXPECT_TRUE(reads(kCFNumberPositiveInfinity, kCFNumberSInt32Type, INT32_MAX, false));
    EXPECT_TRUE(reads(kCFNumberNegativeInfinity, kCFNumberSInt16Type, int16_t(-32768), false));
    // NaN reads as 0.
    EXPECT_TRUE(reads(kCFNumberNaN, kCFNumberSInt32Type, 0, false));
    EXPECT_TRUE(reads(kCFNumberNaN, kCFNumberSInt64Type, int64_t(0), false));
}

TEST(NumberConversion, FloatToFloat) {
    auto tenth = number(kCFNumberFloat64Type, 0.1);
    EXPECT_TRUE(reads(tenth, kCFNumberFloat32Type, 0.1f, false));
    EXPECT_TRUE(reads(tenth, kCFNumberFloat64Type, 0.1, true));
    EXPECT_TRUE(reads(number(kCFNumberFloat64Type, 0.5), kCFNumberFloatType, 0.5f, true));
    EXPECT_TRUE(reads(number(kCFNumberFloat64Type, 1e300), kCFNumberFloat32Type, std::numeric_limits<float>::infinity(),
                      false));
    EXPECT_TRUE(reads(number(kCFNumberFloat64Type, 1e-50), kCFNumberFloat32Type, 0.0f, false));
    EXPECT_TRUE(reads(number(kCFNumberFloat64Type, -0.0), kCFNumberFloat32Type, -0.0f, true));
    // Infinities survive; a narrowed NaN is reported as a loss, a NaN read at
    // its own width is not.
    EXPECT_TRUE(reads(kCFNumberPositiveInfinity, kCFNumberFloat32Type, std::numeric_limits<float>::infinity(), true));
    EXPECT_TRUE(reads(kCFNumberNaN, kCFNumberFloat32Type, std::numeric_limits<float>::quiet_NaN(), false));
    EXPECT_TRUE(reads(kCFNumberNaN, kCFNumberDoubleType, kNaN, true));
    // Float32 widens exactly.
    auto narrow = number(kCFNumberFloat32Type, 0.1f);
    EXPECT_TRUE(reads(narrow, kCFNumberFloat64Type, double(0.1f), true));
    EXPECT_TRUE(reads(narrow, kCFNumberFloat32Type, 0.1f, true));
    EXPECT_TRUE(reads(number(kCFNumberFloat32Type, FLT_MAX), kCFNumberCGFloatType, double(FLT_MAX), true));
}

TEST(NumberConversion, UnsignedValuesAsSourceAndTarget) {
    auto max64 = number(kCFNumberUInt64Type, UINT64_MAX);
    EXPECT_TRUE(reads(max64, kCFNumberUInt64Type, UINT64_MAX, true));
    EXPECT_TRUE(reads(max64, kCFNumberSInt64Type, int64_t(-1), false));
    EXPECT_TRUE(reads(max64, kCFNumberSInt32Type, -1, false));
    EXPECT_TRUE(reads(max64, kCFNumberSInt8Type, int8_t(-1), false));
    EXPECT_TRUE(reads(max64, kCFNumberUInt32Type, UINT32_MAX, false));
    EXPECT_TRUE(reads(max64, kCFNumberFloat64Type, 18446744073709551616.0, false));
    EXPECT_TRUE(reads(max64, kCFNumberFloat32Type, 18446744073709551616.0f, false));

    auto twoTo63 = number(kCFNumberUInt64Type, uint64_t(INT64_MAX) + 1);
    EXPECT_TRUE(reads(twoTo63, kCFNumberUInt64Type, uint64_t(INT64_MAX) + 1, true));
    EXPECT_TRUE(reads(twoTo63, kCFNumberSInt64Type, INT64_MIN, false));
    EXPECT_TRUE(reads(twoTo63, kCFNumberFloat64Type, 9223372036854775808.0, true));
    EXPECT_TRUE(reads(number(kCFNumberUInt64Type, uint64_t(INT64_MAX)), kCFNumberLongLongType, INT64_MAX, true));
    EXPECT_TRUE(reads(number(kCFNumberUInt64Type, uint64_t(0)), kCFNumberSInt8Type, int8_t(0), true));
    EXPECT_TRUE(reads(number(kCFNumberULongType, ULONG_MAX), kCFNumberULongType, ULONG_MAX, true));
    EXPECT_TRUE(reads(number(kCFNumberULongType, ULONG_MAX), kCFNumberLongType, -1L, false));

    // Negative values never fit an unsigned target.
    auto minusOne = number(kCFNumberSInt64Type, int64_t(-1));
    EXPECT_TRUE(reads(minusOne, kCFNumberUInt64Type, UINT64_MAX, false));
    EXPECT_TRUE(reads(minusOne, kCFNumberUInt32Type, UINT32_MAX, false));
    EXPECT_TRUE(reads(minusOne, kCFNumberUInt16Type, uint16_t(65535), false));
    EXPECT_TRUE(reads(minusOne, kCFNumberUInt8Type, uint8_t(255), false));
    EXPECT_TRUE(reads(number(kCFNumberSInt32Type, 256), kCFNumberUInt8Type, uint8_t(0), false));
    EXPECT_TRUE(reads(number(kCFNumberSInt32Type, 65535), kCFNumberUInt16Type, uint16_t(65535), true));

    auto max8 = number(kCFNumberUInt8Type, uint8_t(255));
    EXPECT_TRUE(reads(max8, kCFNumberUInt8Type, uint8_t(255), true));
    EXPECT_TRUE(reads(max8, kCFNumberSInt8Type, int8_t(-1), true));
    EXPECT_TRUE(reads(max8, kCFNumberSInt32Type, 255, true));
    EXPECT_TRUE(reads(max8, kCFNumberUInt16Type, uint16_t(255), true));
    EXPECT_TRUE(reads(max8, kCFNumberFloat32Type, 255.0f, true));
    auto max16 = number(kCFNumberUInt16Type, uint16_t(65535));
    EXPECT_TRUE(reads(max16, kCFNumberSInt16Type, int16_t(-1), true));
    EXPECT_TRUE(reads(max16, kCFNumberUInt8Type, uint8_t(255), false));
    auto max32 = number(kCFNumberUInt32Type, UINT32_MAX);
    EXPECT_TRUE(reads(max32, kCFNumberSInt32Type, -1, false));
    EXPECT_TRUE(reads(max32, kCFNumberSInt64Type, int64_t(UINT32_MAX), true));
    EXPECT_TRUE(reads(max32, kCFNumberFloat32Type, 4294967296.0f, false));
    EXPECT_TRUE(reads(max32, kCFNumberFloat64Type, 4294967295.0, true));

    // Floats into unsigned targets: truncation toward zero, saturation at 0
    // and at the maximum.
    EXPECT_TRUE(reads(number(kCFNumberFloat64Type, 1e20), kCFNumberUInt64Type, UINT64_MAX, false));
    EXPECT_TRUE(reads(number(kCFNumberFloat64Type, 18446744073709551616.0), kCFNumberUInt64Type, UINT64_MAX, false));
    EXPECT_TRUE(reads(number(kCFNumberFloat64Type, 18446744073709549568.0), kCFNumberUInt64Type,
                      uint64_t(18446744073709549568u), true));
    EXPECT_TRUE(reads(number(kCFNumberFloat64Type, -1.0), kCFNumberUInt32Type, uint32_t(0), false));
    EXPECT_TRUE(reads(number(kCFNumberFloat64Type, -0.5), kCFNumberUInt32Type, uint32_t(0), false));
    EXPECT_TRUE(reads(number(kCFNumberFloat64Type, 255.0), kCFNumberUInt8Type, uint8_t(255), true));
    EXPECT_TRUE(reads(number(kCFNumberFloat64Type, 256.0), kCFNumberUInt8Type, uint8_t(255), false));
    EXPECT_TRUE(reads(kCFNumberNaN, kCFNumberUInt64Type, uint64_t(0), false));
    EXPECT_TRUE(reads(kCFNumberNegativeInfinity, kCFNumberUInt8Type, uint8_t(0), false));
}

namespace {

// Re-creates n the way the value classes copy numbers: its own type and a
// 16-byte buffer filled by CFNumberGetValue.
Owned<CFNumberRef> recreated(CFNumberRef n) {
    CFNumberType type = CFNumberGetType(n);
    unsigned char buffer[16] = {};
    CFNumberGetValue(n, type, buffer);
    return own(CFNumberCreate(nullptr, type, buffer));
}

template <typename T>
void expectRecreatedExactly(CFNumberType type, std::initializer_list<T> values) {
    for (T value : values) {
        SCOPED_TRACE(::testing::Message() << "type " << type << ", value " << +value);
        auto original = number(type, value);
        auto copy = recreated(original);
        ASSERT_TRUE(copy);
        EXPECT_TRUE(CFEqual(original, copy));
        EXPECT_EQ(CFHash(original), CFHash(copy));
        EXPECT_EQ(CFNumberGetType(copy), CFNumberGetType(original));
        // Only a NaN read back as Float32 counts as narrowed (it is stored
        // as the Float64 constant).
        bool exact = true;
        if constexpr (std::is_same_v<T, float>) exact = !std::isnan(value);
        EXPECT_TRUE(reads(copy, type, value, exact));
    }
}

}  // namespace

TEST(NumberConversion, RecreatingFromTypeAndValueKeepsEveryValue) {
    for (CFNumberType type : {kCFNumberSInt8Type, kCFNumberCharType}) {
        expectRecreatedExactly<int8_t>(type, {0, -1, INT8_MIN, INT8_MAX});
    }
    for (CFNumberType type : {kCFNumberSInt16Type, kCFNumberShortType}) {
        expectRecreatedExactly<int16_t>(type, {0, -300, INT16_MIN, INT16_MAX});
    }
    for (CFNumberType type : {kCFNumberSInt32Type, kCFNumberIntType}) {
        expectRecreatedExactly<int32_t>(type, {0, 12, -70000, INT32_MIN, INT32_MAX});
    }
    for (CFNumberType type : {kCFNumberSInt64Type, kCFNumberLongType, kCFNumberLongLongType, kCFNumberCFIndexType,
                              kCFNumberNSIntegerType}) {
        expectRecreatedExactly<int64_t>(type, {0, -1, INT64_MIN, INT64_MAX, int64_t(1) << 53});
    }
    for (CFNumberType type : {kCFNumberFloat32Type, kCFNumberFloatType}) {
        expectRecreatedExactly<float>(
            type, {0.0f, -0.0f, 1.0f, 0.1f, -3.5f, FLT_MAX, FLT_MIN / 4, std::numeric_limits<float>::infinity(),
                   std::numeric_limits<float>::quiet_NaN()});
    }
    for (CFNumberType type : {kCFNumberFloat64Type, kCFNumberDoubleType, kCFNumberCGFloatType}) {
        expectRecreatedExactly<double>(type, {0.0, -0.0, 1.0, 0.1, -1e300, DBL_MAX, DBL_MIN / 8, -kInf, kNaN});
    }
    expectRecreatedExactly<uint8_t>(kCFNumberUInt8Type, {0, 128, 255});
    expectRecreatedExactly<uint16_t>(kCFNumberUInt16Type, {0, 32768, 65535});
    expectRecreatedExactly<uint32_t>(kCFNumberUInt32Type, {0, 2147483648u, UINT32_MAX});
    expectRecreatedExactly<unsigned long>(kCFNumberULongType, {0, 1ul << 63, ULONG_MAX});
    expectRecreatedExactly<uint64_t>(kCFNumberUInt64Type,
                                     {0, uint64_t(INT64_MAX), uint64_t(INT64_MAX) + 1, UINT64_MAX});
}

TEST(NumberComparison, OrderEqualityAndHashAgree) {
    // Numbers listed in increasing order; equal ranks are equal values.
    struct Entry {
        Owned<CFNumberRef> n;
        int rank;
        const char* label;
    };
    std::vector<Entry> entries;
    auto add = [&entries](Owned<CFNumberRef> n, int rank, const char* label) {
        entries.push_back(Entry{std::move(n), rank, label});
    };
    add(own(kCFNumberNegativeInfinity), 0, "-inf");
    add(number(kCFNumberFloat64Type, -1e300), 1, "-1e300");
    add(number(kCFNumberFloat64Type, -9223372036854777856.0), 2, "double below -2^63");
    add(number(kCFNumberSInt64Type, INT64_MIN), 3, "INT64_MIN");
    add(number(kCFNumberFloat64Type, -9223372036854775808.0), 3, "-2^63 double");
    add(number(kCFNumberSInt64Type, INT64_MIN + 1), 4, "INT64_MIN + 1");
    add(number(kCFNumberFloat64Type, -1.5), 5, "-1.5");
    add(number(kCFNumberSInt8Type, int8_t(-1)), 6, "SInt8 -1");
    add(number(kCFNumberSInt64Type, int64_t(-1)), 6, "SInt64 -1");
    add(number(kCFNumberFloat64Type, -1.0), 6, "-1.0");
    add(number(kCFNumberFloat32Type, -1.0f), 6, "-1.0f");
    add(number(kCFNumberFloat64Type, -0.5), 7, "-0.5");
    add(number(kCFNumberFloat64Type, -0.0), 8, "-0.0");
    add(number(kCFNumberFloat32Type, -0.0f), 8, "-0.0f");
    add(own(kCFNumberNaN), 9, "NaN");
    add(number(kCFNumberSInt32Type, 0), 10, "SInt32 0");
    add(number(kCFNumberFloat64Type, 0.0), 10, "0.0");
    add(number(kCFNumberFloat32Type, 0.0f), 10, "0.0f");
    add(number(kCFNumberUInt8Type, uint8_t(0)), 10, "UInt8 0");
    add(number(kCFNumberUInt64Type, uint64_t(0)), 10, "UInt64 0");
    add(number(kCFNumberFloat64Type, 1e-300), 11, "1e-300");
    add(number(kCFNumberSInt32Type, 1), 12, "SInt32 1");
    add(number(kCFNumberLongLongType, 1LL), 12, "1LL");
    add(number(kCFNumberFloat64Type, 1.0), 12, "1.0");
    add(number(kCFNumberFloat32Type, 1.0f), 12, "1.0f");
    add(number(kCFNumberUInt64Type, uint64_t(1)), 12, "UInt64 1");
    add(number(kCFNumberUInt8Type, uint8_t(1)), 12, "UInt8 1");
    add(number(kCFNumberSInt16Type, int16_t(2)), 13, "2");
    add(number(kCFNumberFloat64Type, 2.5), 14, "2.5");
    add(number(kCFNumberFloat32Type, 2.5f), 14, "2.5f");
    add(number(kCFNumberSInt64Type, int64_t(1) << 53), 15, "2^53");
    add(number(kCFNumberFloat64Type, 9007199254740992.0), 15, "2^53 double");
    add(number(kCFNumberSInt64Type, (int64_t(1) << 53) + 1), 16, "2^53 + 1");
    add(number(kCFNumberSInt64Type, INT64_MAX), 17, "INT64_MAX");
    add(number(kCFNumberUInt64Type, uint64_t(INT64_MAX)), 17, "UInt64 INT64_MAX");
    add(number(kCFNumberUInt64Type, uint64_t(INT64_MAX) + 1), 18, "UInt64 2^63");
    add(number(kCFNumberFloat64Type, 9.2233720368547758e18), 18, "9.2233720368547758e18");
    add(number(kCFNumberUInt64Type, UINT64_MAX), 19, "UINT64_MAX");
    add(number(kCFNumberULongType, ULONG_MAX), 19, "ULONG_MAX");
    add(number(kCFNumberFloat64Type, 18446744073709551616.0), 20, "2^64 double");
    add(number(kCFNumberFloat64Type, 1e300), 21, "1e300");
    add(own(kCFNumberPositiveInfinity), 22, "+inf");

    for (const Entry& a : entries) {
        for (const Entry& b : entries) {
            SCOPED_TRACE(::testing::Message() << a.label << " vs " << b.label);
            CFComparisonResult expected =
                a.rank < b.rank ? kCFCompareLessThan : (a.rank > b.rank ? kCFCompareGreaterThan : kCFCompareEqualTo);
            ASSERT_EQ(CFNumberCompare(a.n, b.n, nullptr), expected);
            ASSERT_EQ(CFEqual(a.n, b.n), a.rank == b.rank);
            if (a.rank == b.rank) {
                ASSERT_EQ(CFHash(a.n), CFHash(b.n));
            }
        }
    }
}

TEST(NumberComparison, HashValues) {
    EXPECT_EQ(CFHash(number(kCFNumberSInt32Type, 1)), kFactor);
    EXPECT_EQ(CFHash(number(kCFNumberSInt32Type, -7)), 7 * kFactor);
    EXPECT_EQ(CFHash(number(kCFNumberFloat64Type, -7.0)), 7 * kFactor);
    EXPECT_EQ(CFHash(number(kCFNumberSInt64Type, int64_t(0))), 0u);
    EXPECT_EQ(CFHash(number(kCFNumberUInt64Type, UINT64_MAX)), UINT64_MAX * kFactor);
    EXPECT_EQ(CFHash(number(kCFNumberSInt64Type, INT64_MIN)), (uint64_t(1) << 63) * kFactor);
    EXPECT_EQ(CFHash(number(kCFNumberFloat64Type, 9.2233720368547758e18)), (uint64_t(1) << 63) * kFactor);
    // Different fractions of the same whole number hash differently.
    EXPECT_NE(CFHash(number(kCFNumberFloat64Type, 2.5)), CFHash(number(kCFNumberFloat64Type, 2.25)));
    EXPECT_NE(CFHash(number(kCFNumberFloat64Type, 2.5)), CFHash(number(kCFNumberSInt32Type, 2)));
    // Booleans are not numbers, whatever their hash.
    EXPECT_EQ(CFHash(kCFBooleanTrue), CFHash(number(kCFNumberSInt32Type, 1)));
    EXPECT_FALSE(CFEqual(kCFBooleanTrue, number(kCFNumberSInt32Type, 1)));
    EXPECT_FALSE(CFEqual(number(kCFNumberSInt32Type, 0), kCFBooleanFalse));
}

TEST(NumberDescription, FormattingDescriptions) {
    EXPECT_EQ(formattingDescription(number(kCFNumberSInt32Type, 42)), "42");
    EXPECT_EQ(formattingDescription(number(kCFNumberSInt8Type, int8_t(-7))), "-7");
    EXPECT_EQ(formattingDescription(number(kCFNumberSInt64Type, INT64_MIN)), "-9223372036854775808");
    EXPECT_EQ(formattingDescription(number(kCFNumberSInt64Type, int64_t(0))), "0");
    EXPECT_EQ(formattingDescription(number(kCFNumberUInt64Type, UINT64_MAX)), "18446744073709551615");
    EXPECT_EQ(formattingDescription(number(kCFNumberUInt8Type, uint8_t(255))), "255");
    EXPECT_EQ(formattingDescription(number(kCFNumberFloat64Type, 0.5)), "0.5");
    EXPECT_EQ(formattingDescription(number(kCFNumberFloat64Type, 1.0)), "1");
    EXPECT_EQ(formattingDescription(number(kCFNumberFloat64Type, 3.14)), "3.1400000000000001");
    EXPECT_EQ(formattingDescription(number(kCFNumberFloat64Type, 1e20)), "1e+20");
    EXPECT_EQ(formattingDescription(number(kCFNumberFloat64Type, -2.5)), "-2.5");
    EXPECT_EQ(formattingDescription(number(kCFNumberFloat32Type, 0.1f)), "0.10000000149011612");
    EXPECT_EQ(formattingDescription(number(kCFNumberFloat64Type, 0.0)), "0.0");
    EXPECT_EQ(formattingDescription(number(kCFNumberFloat64Type, -0.0)), "0.0");
    EXPECT_EQ(formattingDescription(number(kCFNumberFloat32Type, -0.0f)), "0.0");
    EXPECT_EQ(formattingDescription(kCFNumberNaN), "nan");
    EXPECT_EQ(formattingDescription(kCFNumberPositiveInfinity), "+infinity");
    EXPECT_EQ(formattingDescription(kCFNumberNegativeInfinity), "-infinity");
}

TEST(NumberDescription, DebugDescriptions) {
    auto check = [](Owned<CFNumberRef> n, const std::string& body) {
        EXPECT_EQ(debugDescription(n), debugFor(n, body));
    };
    check(number(kCFNumberSInt32Type, 42), "value = +42, type = kCFNumberSInt32Type");
    check(number(kCFNumberIntType, 0), "value = +0, type = kCFNumberSInt32Type");
    check(number(kCFNumberSInt8Type, int8_t(-7)), "value = -7, type = kCFNumberSInt8Type");
    check(number(kCFNumberShortType, int16_t(300)), "value = +300, type = kCFNumberSInt16Type");
    check(number(kCFNumberLongType, INT64_MIN), "value = -9223372036854775808, type = kCFNumberSInt64Type");
    check(number(kCFNumberUInt8Type, uint8_t(255)), "value = +255, type = kCFNumberUInt8Type");
    check(number(kCFNumberUInt16Type, uint16_t(65535)), "value = +65535, type = kCFNumberUInt16Type");
    check(number(kCFNumberUInt32Type, UINT32_MAX), "value = +4294967295, type = kCFNumberUInt32Type");
    check(number(kCFNumberULongType, 5ul), "value = +5, type = kCFNumberULongType");
    check(number(kCFNumberUInt64Type, UINT64_MAX), "value = +18446744073709551615, type = kCFNumberUInt64Type");
    check(number(kCFNumberFloat64Type, 3.14), "value = +3.14000000000000012434, type = kCFNumberFloat64Type");
    check(number(kCFNumberFloat32Type, 3.14f), "value = +3.1400001049, type = kCFNumberFloat32Type");
    check(number(kCFNumberDoubleType, -0.5), "value = -0.50000000000000000000, type = kCFNumberFloat64Type");
    check(number(kCFNumberFloat64Type, 0.0), "value = +0.0, type = kCFNumberFloat64Type");
    check(number(kCFNumberFloat32Type, 0.0f), "value = +0.0, type = kCFNumberFloat32Type");
    check(number(kCFNumberFloat64Type, -0.0), "value = -0.0, type = kCFNumberFloat64Type");
    check(number(kCFNumberFloat32Type, 1.0f), "value = +1.0000000000, type = kCFNumberFloat32Type");
    check(own(kCFNumberNaN), "value = nan, type = kCFNumberFloat64Type");
    check(own(kCFNumberPositiveInfinity), "value = +infinity, type = kCFNumberFloat64Type");
    check(own(kCFNumberNegativeInfinity), "value = -infinity, type = kCFNumberFloat64Type");
}

TEST(NumberMisuse, NullAndWrongTypesGiveNeutralResults) {
    for (CFTypeRef wrong : {CFTypeRef(nullptr), CFTypeRef(CFSTR("1")), CFTypeRef(kCFBooleanTrue)}) {
        auto n = static_cast<CFNumberRef>(wrong);
        EXPECT_EQ(CFNumberGetType(n), 0);
        EXPECT_EQ(CFNumberGetByteSize(n), 0);
        EXPECT_FALSE(CFNumberIsFloatType(n));
        // Zero of the requested width, nothing beyond it.
        EXPECT_TRUE(reads(n, kCFNumberSInt32Type, 0, false));
        EXPECT_TRUE(reads(n, kCFNumberUInt8Type, uint8_t(0), false));
        EXPECT_TRUE(reads(n, kCFNumberDoubleType, 0.0, false));
        auto one = number(kCFNumberSInt32Type, 1);
        EXPECT_EQ(CFNumberCompare(n, one, nullptr), kCFCompareEqualTo);
        EXPECT_EQ(CFNumberCompare(one, n, nullptr), kCFCompareEqualTo);
    }
    auto n = number(kCFNumberSInt32Type, 9);
    EXPECT_FALSE(CFNumberGetValue(n, kCFNumberSInt32Type, nullptr));
    // An unknown target type writes nothing.
    unsigned char buffer[8];
    std::memset(buffer, 0xA5, sizeof buffer);
    EXPECT_FALSE(CFNumberGetValue(n, 17, buffer));
    EXPECT_FALSE(CFNumberGetValue(n, 0, buffer));
    for (unsigned char byte : buffer) EXPECT_EQ(byte, 0xA5);
    // The number itself is untouched by all of this.
    EXPECT_TRUE(reads(n, kCFNumberSInt32Type, 9, true));
    EXPECT_EQ(CFGetRetainCount(n), 1);
}
