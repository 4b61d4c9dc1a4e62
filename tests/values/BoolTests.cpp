// HVBool: the two booleans and the distinct empty value, construction from
// integers, comparison, and the conversion rule from other objects.
#include <halvane/core/HVNull.h>
#include <halvane/text/HVString.h>
#include <halvane/values/HVBool.h>
#include <halvane/values/HVNumber.h>

#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

#include <string>

#include "ValuesTestSupport.h"

namespace {

const void* const kTrue = kCFBooleanTrue;
const void* const kFalse = kCFBooleanFalse;

// The HVBool that an object holding text converts to.
HVBool boolFromText(const char16_t* text) {
    HVBool result = HVBool::No();
    result = static_cast<const HVObject&>(HVString(text));
    return result;
}

}  // namespace

TEST(Bool, NamedValuesHoldThePlatformBooleans) {
    EXPECT_EQ(HVBool::True().Ref(), kTrue);
    EXPECT_EQ(HVBool::Yes().Ref(), kTrue);
    EXPECT_EQ(HVBool::False().Ref(), kFalse);
    EXPECT_EQ(HVBool::No().Ref(), kFalse);
    EXPECT_EQ(HVBool::ClassType(), HVBoolClassType);
    EXPECT_EQ(HVBool::Yes().ObjectsClassType(), HVBoolClassType);
    EXPECT_EQ(static_cast<CFBooleanRef>(HVBool::Yes()), kCFBooleanTrue);
}

TEST(Bool, EmptyIsDistinctFromFalseButReadsFalse) {
    HVBool empty;
    EXPECT_EQ(empty.Ref(), HVBool::SharedEmptyObject());
    EXPECT_NE(empty.Ref(), kFalse);
    EXPECT_EQ(hvtest::numberTypeOf(empty), kCFNumberSInt8Type);
    EXPECT_EQ(HVNumber(HVBool::SharedEmptyObject()).IntValue(), 0);
    EXPECT_TRUE(empty.IsEmpty());
    EXPECT_FALSE(empty.IsNull());
    EXPECT_FALSE(empty);
    EXPECT_TRUE(!empty);
    // Equality is by value: the empty value and false compare equal.
    EXPECT_TRUE(empty == HVBool::False());
    EXPECT_FALSE(HVBool::False().IsEmpty());
    EXPECT_FALSE(HVBool::True().IsEmpty());

    HVBool released(true);
    released.Release();
    EXPECT_EQ(released.Ref(), HVBool::SharedEmptyObject());
}

TEST(Bool, ConstructionAndAssignmentFromScalars) {
    EXPECT_EQ(HVBool(true).Ref(), kTrue);
    EXPECT_EQ(HVBool(false).Ref(), kFalse);
    EXPECT_EQ(HVBool(char(1)).Ref(), kTrue);
    EXPECT_EQ(HVBool((unsigned char)0).Ref(), kFalse);
    EXPECT_EQ(HVBool(short(-1)).Ref(), kTrue);
    EXPECT_EQ(HVBool((unsigned short)0).Ref(), kFalse);
    EXPECT_EQ(HVBool(2).Ref(), kTrue);
    EXPECT_EQ(HVBool(0u).Ref(), kFalse);
    EXPECT_EQ(HVBool(-5L).Ref(), kTrue);
    EXPECT_EQ(HVBool(0ul).Ref(), kFalse);

    HVBool value;
    value = 7;
    EXPECT_EQ(value.Ref(), kTrue);
    value = 0L;
    EXPECT_EQ(value.Ref(), kFalse);
    value = (unsigned char)3;
    EXPECT_EQ(value.Ref(), kTrue);
    value = false;
    EXPECT_EQ(value.Ref(), kFalse);
    value = HVBool::Yes();
    EXPECT_EQ(value.Ref(), kTrue);
    value = kCFBooleanFalse;
    EXPECT_EQ(value.Ref(), kFalse);
    EXPECT_EQ(value.ObjectsClassType(), HVBoolClassType);
}

TEST(Bool, ComparesAsTruthValues) {
    HVBool yes = HVBool::Yes();
    HVBool no = HVBool::No();
    EXPECT_TRUE(yes);
    EXPECT_FALSE(!yes);
    EXPECT_TRUE(yes == true);
    EXPECT_TRUE(yes != false);
    EXPECT_TRUE(yes == 5);
    EXPECT_TRUE(yes != 0);
    EXPECT_TRUE(yes == -1L);
    EXPECT_TRUE(yes == 2u);
    EXPECT_TRUE(yes == char(1));
    EXPECT_TRUE(yes == (unsigned short)9);
    EXPECT_TRUE(no == 0);
    EXPECT_TRUE(no == false);
    EXPECT_TRUE(no != 1ul);
    EXPECT_TRUE(no != short(3));
    EXPECT_TRUE(yes != no);
    EXPECT_TRUE(yes == HVBool(1));
    // A null HVBool reads false.
    HVBool null = HVBool::BoolFromObject(HVObject());
    EXPECT_TRUE(null.IsNull());
    EXPECT_FALSE(bool(null));
    EXPECT_TRUE(null == no);
}

TEST(Bool, TextConvertsByCaseFoldedComparison) {
    for (const char16_t* text : {u"yes", u"TRUE", u"Yes", u"true", u"tRuE", u"YES", u"YE\u017F"}) {
        SCOPED_TRACE(std::u16string(text).size());
        HVBool value = boolFromText(text);
        EXPECT_EQ(value.Ref(), kTrue);
        EXPECT_EQ(value.ObjectsClassType(), HVBoolClassType);
    }
    for (const char16_t* text : {u"1", u"no", u"", u"false", u"yes ", u" true", u"truex", u"y", u"\uFF59es"}) {
        SCOPED_TRACE(std::u16string(text).size());
        EXPECT_EQ(boolFromText(text).Ref(), kFalse);
    }
    // A null string is no "true": false, not null.
    HVBool fromNullText = HVBool::Yes();
    fromNullText = static_cast<const HVObject&>(HVString::SharedNullString());
    EXPECT_EQ(fromNullText.Ref(), kFalse);
}

TEST(Bool, OtherObjectsConvertByTheirKind) {
    HVBool value;
    value = HVObject::Create(kCFBooleanTrue);
    EXPECT_EQ(value.Ref(), kTrue);

    // Numbers go through BoolValue, so through IntValue.
    value = static_cast<const HVObject&>(HVNumber(2));
    EXPECT_EQ(value.Ref(), kTrue);
    value = HVObject::Create(HVNumber(0.5).Ref());
    EXPECT_EQ(value.Ref(), kFalse);
    value = static_cast<const HVObject&>(HVNumber());
    EXPECT_EQ(value.Ref(), HVBool::SharedEmptyObject());

    // Null objects make it null; anything else is false.
    value = HVBool::Yes();
    value = HVObject();
    EXPECT_TRUE(value.IsNull());
    EXPECT_EQ(value.Ref(), nullptr);
    value = HVBool::Yes();
    value = static_cast<const HVObject&>(HVNull());
    EXPECT_TRUE(value.IsNull());
    value = HVBool::Yes();
    CFDateRef date = CFDateCreate(kCFAllocatorDefault, 0);
    value = HVObject::Create(date);
    EXPECT_EQ(value.Ref(), kFalse);
    CFRelease(date);
}

TEST(Bool, FromIdAndFromObjectConvert) {
    EXPECT_EQ(HVBool::BoolFromId(kCFBooleanTrue).Ref(), kTrue);
    EXPECT_EQ(HVBool::BoolFromId(CFSTR("Yes")).Ref(), kTrue);
    EXPECT_EQ(HVBool::BoolFromId(CFSTR("nope")).Ref(), kFalse);
    EXPECT_TRUE(HVBool::BoolFromId(nullptr).IsNull());
    EXPECT_EQ(HVBool::BoolFromObject(HVString("TRUE")).Ref(), kTrue);
    EXPECT_EQ(HVBool::BoolFromObject(HVNumber(0)).Ref(), kFalse);
    EXPECT_EQ(HVBool::BoolFromObject(HVBool()).Ref(), HVBool::SharedEmptyObject());
}

TEST(Bool, TextForm) {
    EXPECT_EQ(std::string(HVBool::Yes().Serialize()), "YES");
    EXPECT_EQ(std::string(HVBool::No().Serialize()), "NO");
    EXPECT_EQ(std::string(HVBool().Serialize()), "NO");
    EXPECT_TRUE(HVBool().IsNativelyAllowedInPropertyList());

    HVBool value;
    value.Deserialize("yes");
    EXPECT_EQ(value.Ref(), kTrue);
    value.Deserialize("NO");
    EXPECT_EQ(value.Ref(), kFalse);
    value.Deserialize("True");
    EXPECT_EQ(value.Ref(), kTrue);

    // Rebuilt from a null reference, as the tagged-text reader does.
    std::shared_ptr<HVObject> object = hvtest::rebuilt(HVBoolClassType, "YES");
    ASSERT_NE(dynamic_cast<HVBool*>(object.get()), nullptr);
    EXPECT_EQ(object->ObjectsClassType(), HVBoolClassType);
    EXPECT_EQ(object->Ref(), kTrue);
    EXPECT_EQ(hvtest::rebuilt(HVBoolClassType, "maybe")->Ref(), kFalse);
}

TEST(Bool, RegisteredWithTheObjectCore) {
    std::shared_ptr<HVObject> made = hvtest::ObjectProbe::CreateObjectOfClassType(kCFBooleanTrue, HVBoolClassType);
    auto* value = dynamic_cast<HVBool*>(made.get());
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(value->Ref(), kTrue);
    EXPECT_EQ(value->ObjectsActualClassType(), HVBoolClassType);

    // The empty value of the held type is HVBool's own.
    HVObject plain = HVObject::Create(kCFBooleanFalse);
    plain.Empty();
    EXPECT_EQ(plain.Ref(), HVBool::SharedEmptyObject());
}
