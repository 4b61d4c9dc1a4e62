// HVNumber: type codes per source type, emptiness by identity, getters and
// their conversions, comparisons, copies and the text form.
#include <halvane/text/HVString.h>
#include <halvane/values/HVBool.h>
#include <halvane/values/HVNumber.h>

#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <vector>

#include "ValuesTestSupport.h"

using hvtest::numberTypeOf;

namespace {

// The raw bytes of a number read in its own type.
std::vector<unsigned char> storedBytes(CFNumberRef number) {
    std::vector<unsigned char> bytes(16, 0);
    CFNumberGetValue(number, CFNumberGetType(number), bytes.data());
    return bytes;
}

// A value of one source type made three ways (constructor, maker, and
// assignment over a number of another type) must store the given platform
// type, and RefCopy must keep type and value exactly.
template <typename T, typename Maker>
void expectStoredAs(T value, Maker maker, CFNumberType stored) {
    HVNumber assigned(1.5);
    assigned = value;
    for (const HVNumber& number : {HVNumber(value), maker(value), assigned}) {
        EXPECT_EQ(numberTypeOf(number), stored);
        EXPECT_EQ(number.ObjectsClassType(), HVNumberClassType);
        EXPECT_FALSE(number.IsEmpty());

        auto copy = static_cast<CFNumberRef>(number.RefCopy());
        ASSERT_NE(copy, nullptr);
        EXPECT_NE(copy, number.Ref());
        EXPECT_EQ(CFNumberGetType(copy), stored);
        EXPECT_EQ(storedBytes(copy), storedBytes(number));
        // A fresh copy comes with two references, both the caller's.
        EXPECT_EQ(CFGetRetainCount(copy), 2);
        CFRelease(copy);
        CFRelease(copy);
    }
    EXPECT_EQ(HVNumber(value).RetainCount(), 1u);
}

}  // namespace

TEST(Number, EveryTypeStoresItsCodeAndCopiesExactly) {
    expectStoredAs(char(-7), HVNumber::NumberWithChar, kCFNumberSInt8Type);
    expectStoredAs((unsigned char)200, HVNumber::NumberWithUnsignedChar, CFNumberType(39));
    expectStoredAs(short(-300), HVNumber::NumberWithShort, kCFNumberSInt16Type);
    expectStoredAs((unsigned short)65535, HVNumber::NumberWithUnsignedShort, CFNumberType(40));
    expectStoredAs(-70000, HVNumber::NumberWithInt, kCFNumberSInt32Type);
    expectStoredAs(4294967295u, HVNumber::NumberWithUnsignedInt, CFNumberType(41));
    expectStoredAs(-5000000000L, HVNumber::NumberWithLong, kCFNumberSInt64Type);
    expectStoredAs(ULONG_MAX, HVNumber::NumberWithUnsignedLong, CFNumberType(42));
    expectStoredAs(LLONG_MIN, HVNumber::NumberWithLongLong, kCFNumberSInt64Type);
    expectStoredAs(0xFFFFFFFFFFFFFFF0ull, HVNumber::NumberWithUnsignedLongLong, CFNumberType(43));
    expectStoredAs(0.1f, HVNumber::NumberWithFloat, kCFNumberFloat32Type);
    expectStoredAs(0.1, HVNumber::NumberWithDouble, kCFNumberFloat64Type);
    expectStoredAs(true, HVNumber::NumberWithBool, kCFNumberSInt8Type);
    expectStoredAs(
        HVBool::Yes(), [](const HVBool& value) { return HVNumber(value); }, kCFNumberSInt8Type);
}

TEST(Number, EmptyIsTheSharedZeroNotAnyZero) {
    HVNumber empty;
    HVNumber zero(0);
    EXPECT_TRUE(empty.IsEmpty());
    EXPECT_FALSE(empty.IsNull());
    EXPECT_EQ(empty.Ref(), HVNumber::SharedEmptyObject());
    EXPECT_EQ(numberTypeOf(empty), kCFNumberSInt32Type);
    EXPECT_FALSE(zero.IsEmpty());
    EXPECT_NE(zero.Ref(), empty.Ref());
    EXPECT_EQ(empty.IntValue(), 0);
    EXPECT_EQ(zero.IntValue(), 0);
    EXPECT_FALSE(empty == zero);
    EXPECT_TRUE(empty != zero);
    EXPECT_TRUE(empty == HVNumber());
    EXPECT_EQ(HVNumber::ClassType(), HVNumberClassType);

    // After a release a number holds the shared empty object again.
    HVNumber released(12);
    released.Release();
    EXPECT_EQ(released.Ref(), HVNumber::SharedEmptyObject());
    EXPECT_TRUE(released.IsEmpty());
}

TEST(Number, EmptyAndNullNumbersReadZeroEverywhere) {
    HVNumber null(HVObject{});
    EXPECT_TRUE(null.IsNull());
    EXPECT_EQ(null.ObjectsClassType(), HVNumberClassType);
    HVNumber platformNull(static_cast<const void*>(kCFNull));
    for (const HVNumber& number : {HVNumber(), null, platformNull}) {
        EXPECT_EQ(number.CharValue(), 0);
        EXPECT_EQ(number.UnsignedCharValue(), 0);
        EXPECT_EQ(number.ShortValue(), 0);
        EXPECT_EQ(number.UnsignedShortValue(), 0);
        EXPECT_EQ(number.IntValue(), 0);
        EXPECT_EQ(number.UnsignedIntValue(), 0u);
        EXPECT_EQ(number.LongValue(), 0);
        EXPECT_EQ(number.UnsignedLongValue(), 0u);
        EXPECT_EQ(number.IntegerValue(), 0);
        EXPECT_EQ(number.LongLongValue(), 0);
        EXPECT_EQ(number.UIntegerValue(), 0u);
        EXPECT_EQ(number.UnsignedLongLongValue(), 0u);
        EXPECT_EQ(number.FloatValue(), 0.0f);
        EXPECT_EQ(number.DoubleValue(), 0.0);
        EXPECT_FALSE(number.IsFloatType());
        EXPECT_FALSE(number.boolValue());
        // An empty number gives the empty HVBool, not false.
        EXPECT_EQ(number.BoolValue().Ref(), HVBool::SharedEmptyObject());
    }
    EXPECT_TRUE(null == HVNumber());
    EXPECT_TRUE(platformNull == null);
}

TEST(Number, UnsignedValuesReadBackExactly) {
    EXPECT_EQ(HVNumber((unsigned char)200).UnsignedCharValue(), 200);
    EXPECT_EQ(HVNumber((unsigned short)65535).UnsignedShortValue(), 65535);
    EXPECT_EQ(HVNumber(4294967295u).UnsignedIntValue(), 4294967295u);
    EXPECT_EQ(HVNumber(ULONG_MAX).UnsignedLongValue(), ULONG_MAX);
    EXPECT_EQ(HVNumber(0xFFFFFFFFFFFFFFF0ull).UnsignedLongLongValue(), 0xFFFFFFFFFFFFFFF0ull);
    EXPECT_EQ(HVNumber(0x8000000000000001ull).UIntegerValue(), 0x8000000000000001ull);
    // The signed getter of the same width sees the same bits.
    EXPECT_EQ(HVNumber((unsigned char)200).CharValue(), char(-56));
    EXPECT_EQ(HVNumber(0xFFFFFFFFFFFFFFF0ull).LongLongValue(), -16);
    // Read in a wider type an unsigned number keeps its value.
    EXPECT_EQ(HVNumber(4294967295u).LongLongValue(), 4294967295LL);
    EXPECT_EQ(HVNumber((unsigned short)65535).IntValue(), 65535);
}

TEST(Number, GettersConvertAcrossTypes) {
    HVNumber fraction(3.7);
    EXPECT_EQ(fraction.IntValue(), 3);
    EXPECT_EQ(fraction.CharValue(), 3);
    EXPECT_EQ(fraction.LongLongValue(), 3);
    EXPECT_EQ(HVNumber(-3.7).IntValue(), -3);
    EXPECT_FLOAT_EQ(fraction.FloatValue(), 3.7f);
    EXPECT_EQ(fraction.DoubleValue(), 3.7);
    EXPECT_EQ(HVNumber(0.1f).DoubleValue(), double(0.1f));
    // Integers narrow to their low bits.
    EXPECT_EQ(HVNumber(300).CharValue(), 44);
    EXPECT_EQ(HVNumber(70000).ShortValue(), 4464);
    EXPECT_EQ(HVNumber(-1).UnsignedIntValue(), 0xFFFFFFFFu);
    EXPECT_EQ(HVNumber(-1).UnsignedLongLongValue(), 0xFFFFFFFFFFFFFFFFull);
    EXPECT_EQ(HVNumber(5000000000LL).IntValue(), 705032704);
    EXPECT_EQ(HVNumber(char(65)).DoubleValue(), 65.0);
    EXPECT_EQ(HVNumber(-5000000000L).LongValue(), -5000000000L);
    EXPECT_EQ(HVNumber(-5000000000L).IntegerValue(), -5000000000LL);
}

TEST(Number, FloatTypeFollowsTheStoredType) {
    EXPECT_TRUE(HVNumber(2.0).IsFloatType());
    EXPECT_TRUE(HVNumber(2.0f).IsFloatType());
    EXPECT_FALSE(HVNumber(2).IsFloatType());
    EXPECT_FALSE(HVNumber(2ull).IsFloatType());
}

TEST(Number, BooleansBecomeCharNumbers) {
    HVNumber yes(true);
    EXPECT_EQ(CFGetTypeID(yes.Ref()), CFNumberGetTypeID());
    EXPECT_EQ(yes.CharValue(), 1);
    EXPECT_EQ(HVNumber(false).CharValue(), 0);
    EXPECT_EQ(HVNumber(HVBool::No()).CharValue(), 0);
    // An empty HVBool reads false, so it gives a char 0.
    EXPECT_EQ(HVNumber(HVBool()).CharValue(), 0);
    EXPECT_FALSE(HVNumber(HVBool()).IsEmpty());

    EXPECT_EQ(yes.BoolValue().Ref(), static_cast<const void*>(kCFBooleanTrue));
    EXPECT_EQ(HVNumber(false).BoolValue().Ref(), static_cast<const void*>(kCFBooleanFalse));
    EXPECT_EQ(HVNumber(-2).BoolValue().Ref(), static_cast<const void*>(kCFBooleanTrue));
    // BoolValue goes through IntValue, so a fraction below one is false.
    EXPECT_FALSE(HVNumber(0.5).boolValue());
    EXPECT_TRUE(HVNumber(1.5).boolValue());
    // Only the low 32 bits count.
    EXPECT_FALSE(HVNumber(0x100000000LL).boolValue());
}

TEST(Number, ComparesWithNumbersAndScalars) {
    EXPECT_TRUE(HVNumber(1) == HVNumber(1.0));
    EXPECT_TRUE(HVNumber(2) != HVNumber(2.5));
    EXPECT_TRUE(HVNumber(4294967295u) == HVNumber(4294967295LL));
    EXPECT_FALSE(HVNumber(4294967295u) == HVNumber(-1));

    HVNumber fraction(3.7);
    EXPECT_TRUE(fraction == 3);
    EXPECT_TRUE(fraction == 3L);
    EXPECT_TRUE(fraction == 3LL);
    EXPECT_TRUE(fraction == char(3));
    EXPECT_TRUE(fraction == short(3));
    EXPECT_TRUE(fraction == 3.7);
    EXPECT_TRUE(fraction == 3.7f);
    EXPECT_TRUE(fraction != 4);
    EXPECT_TRUE(fraction != 3.70001);

    HVNumber minusOne(-1);
    EXPECT_TRUE(minusOne == 0xFFFFFFFFu);
    EXPECT_TRUE(minusOne == 0xFFFFFFFFFFFFFFFFull);
    EXPECT_TRUE(minusOne == (unsigned short)0xFFFF);
    EXPECT_TRUE(minusOne == (unsigned char)0xFF);
    EXPECT_TRUE(minusOne == 0xFFFFFFFFFFFFFFFFul);
    EXPECT_TRUE(minusOne != 1u);

    EXPECT_TRUE(HVNumber(7) == true);
    EXPECT_TRUE(HVNumber(0) == false);
    EXPECT_TRUE(HVNumber(7) == HVBool::Yes());
    EXPECT_TRUE(HVNumber(0) != HVBool::Yes());
    EXPECT_TRUE(HVNumber() == HVBool());
    EXPECT_TRUE(HVNumber() == 0);
}

TEST(Number, ObjectConstructionSharesWhateverIsHeld) {
    HVString text("12");
    HVNumber number(static_cast<const HVObject&>(text));
    EXPECT_EQ(number.Ref(), text.Ref());
    EXPECT_EQ(number.ObjectsClassType(), HVNumberClassType);
    EXPECT_EQ(number.ObjectsActualClassType(), HVNumberClassType);
    EXPECT_EQ(HVNumber::NumberFromObject(text).Ref(), text.Ref());

    CFNumberRef platform = static_cast<CFNumberRef>(HVNumber(9).RefCopy());
    HVNumber fromId = HVNumber::NumberFromId(platform);
    HVNumber fromRef(platform);
    EXPECT_EQ(fromId.Ref(), platform);
    EXPECT_EQ(fromRef.Ref(), platform);
    EXPECT_EQ(CFGetRetainCount(platform), 4);
    CFRelease(platform);
    CFRelease(platform);
}

TEST(Number, AssignmentFromObjectsFollowsTheObjectRule) {
    HVNumber number(5);
    number = static_cast<const HVObject&>(HVString("text"));
    EXPECT_EQ(number.IntValue(), 5);

    HVNumber other(6.5);
    number = static_cast<const HVObject&>(other);
    EXPECT_EQ(number.Ref(), other.Ref());
    EXPECT_EQ(number.RetainCount(), 2u);

    number = HVNumber(8);
    EXPECT_EQ(number.IntValue(), 8);
    EXPECT_EQ(number.RetainCount(), 1u);

    CFNumberRef platform = static_cast<CFNumberRef>(HVNumber(9).RefCopy());
    number = platform;
    EXPECT_EQ(number.Ref(), platform);
    CFRelease(platform);
    CFRelease(platform);
    EXPECT_EQ(number.RetainCount(), 1u);
}

TEST(Number, SerializesAsAWholeNumber) {
    EXPECT_EQ(std::string(HVNumber(7.6).Serialize()), "8");
    EXPECT_EQ(std::string(HVNumber(-0.4).Serialize()), "-0");
    EXPECT_EQ(std::string(HVNumber(3.7).Serialize()), "4");
    EXPECT_EQ(std::string(HVNumber(-12).Serialize()), "-12");
    EXPECT_EQ(std::string(HVNumber(0xFFFFFFFFFFFFFFF0ull).Serialize()), "18446744073709551616");
    EXPECT_EQ(std::string(HVNumber().Serialize()), "0");
    EXPECT_TRUE(HVNumber().IsNativelyAllowedInPropertyList());
}

TEST(Number, DeserializesAsADoubleNumber) {
    HVNumber number(5);
    number.Deserialize("12.75");
    EXPECT_EQ(numberTypeOf(number), kCFNumberFloat64Type);
    EXPECT_EQ(number.DoubleValue(), 12.75);

    number.Deserialize("");
    EXPECT_EQ(numberTypeOf(number), kCFNumberFloat64Type);
    EXPECT_EQ(number.DoubleValue(), 0.0);
    EXPECT_FALSE(number.IsEmpty());

    number.Deserialize("not a number");
    EXPECT_EQ(number.DoubleValue(), 0.0);

    number.Deserialize(HVString::SharedNullString());
    EXPECT_EQ(number.DoubleValue(), 0.0);

    std::shared_ptr<HVObject> object = hvtest::rebuilt(HVNumberClassType, "12");
    ASSERT_NE(dynamic_cast<HVNumber*>(object.get()), nullptr);
    EXPECT_EQ(object->ObjectsClassType(), HVNumberClassType);
    EXPECT_EQ(numberTypeOf(*object), kCFNumberFloat64Type);
    EXPECT_EQ(HVNumber(*object).DoubleValue(), 12.0);
}

TEST(Number, RegisteredWithTheObjectCore) {
    HVNumber source(42);
    std::shared_ptr<HVObject> made = hvtest::ObjectProbe::CreateObjectOfClassType(source.Ref(), HVNumberClassType);
    auto* number = dynamic_cast<HVNumber*>(made.get());
    ASSERT_NE(number, nullptr);
    EXPECT_EQ(number->Ref(), source.Ref());
    EXPECT_EQ(number->IntValue(), 42);
    EXPECT_EQ(source.RetainCount(), 2u);

    // A plain object holding the shared empty number is empty by identity.
    EXPECT_TRUE(HVObject::Create(HVNumber::SharedEmptyObject()).IsEmpty());
    EXPECT_FALSE(HVObject::Create(HVNumber(0).Ref()).IsEmpty());
    HVObject plain = HVObject::Create(HVNumber(3).Ref());
    plain.Empty();
    EXPECT_EQ(plain.Ref(), HVNumber::SharedEmptyObject());
}
