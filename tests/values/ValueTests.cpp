// Boxed values: the container's structure, each C type's number code and
// the value read back, and the object-model rules.
#include <halvane/core/HVObject.h>
#include <halvane/text/HVString.h>
#include <halvane/values/HVNumber.h>
#include <halvane/values/HVValue.h>

#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <string>

#include "ValuesTestSupport.h"
#include "support/LogCapture.h"

namespace {

CFTypeRef elementOf(const HVValue& value, CFIndex index) {
    return CFArrayGetValueAtIndex(static_cast<CFArrayRef>(value.Ref()), index);
}

std::string stringElementOf(const HVValue& value, CFIndex index) {
    return std::string(HVString(elementOf(value, index)));
}

CFNumberType numberTypeOf(const HVValue& value) {
    return CFNumberGetType(static_cast<CFNumberRef>(elementOf(value, 2)));
}

template <typename T>
T roundTrip(T input, const char* cType) {
    HVValue value = HVValue::ValueWithBytesOfCType(&input, cType);
    T output{};
    value.GetValue(&output);
    return output;
}

}  // namespace

TEST(Value, ContainerHoldsMarkerTypeNameAndNumber) {
    int five = 5;
    HVValue value = HVValue::ValueWithBytesOfCType(&five, "int");
    ASSERT_EQ(CFGetTypeID(value.Ref()), CFArrayGetTypeID());
    ASSERT_EQ(CFArrayGetCount(static_cast<CFArrayRef>(value.Ref())), 3);
    EXPECT_EQ(stringElementOf(value, 0), "HVValue_Container_AX7");
    EXPECT_EQ(stringElementOf(value, 1), "int");
    EXPECT_EQ(HVNumber(elementOf(value, 2)).IntValue(), 5);
    EXPECT_EQ(numberTypeOf(value), kCFNumberSInt32Type);
    EXPECT_EQ(HVObject::ClassTypeNeededForObject(value.Ref()), HVValueClassType);
    EXPECT_EQ(HVObject::Create(value.Ref()).ObjectsClassType(), HVValueClassType);
    EXPECT_FALSE(_CFArrayIsMutable(static_cast<CFArrayRef>(value.Ref())));
    EXPECT_EQ(std::string(value.CType()), "int");
}

TEST(Value, EachCTypeHasItsNumberCode) {
    // The platform reports the stored width (its canonical type), not the
    // C-name code the number was made with.
    const struct {
        const char* name;
        CFNumberType stored;
    } table[] = {
        {"int", kCFNumberSInt32Type},         {"unsigned int", kCFNumberSInt32Type},
        {"const void*", kCFNumberSInt64Type}, {"void*", kCFNumberSInt64Type},
        {"long", kCFNumberSInt64Type},        {"unsigned long", kCFNumberSInt64Type},
        {"long long", kCFNumberSInt64Type},   {"unsigned long long", kCFNumberSInt64Type},
        {"short", kCFNumberSInt16Type},       {"unsigned short", kCFNumberSInt16Type},
        {"char", kCFNumberSInt8Type},         {"unsigned char", kCFNumberSInt8Type},
        {"double", kCFNumberFloat64Type},     {"float", kCFNumberFloat32Type},
        {"bool", kCFNumberSInt8Type},
    };
    alignas(16) unsigned char zeros[16] = {};
    for (const auto& entry : table) {
        HVValue value = HVValue::ValueWithBytesOfCType(zeros, entry.name);
        EXPECT_EQ(numberTypeOf(value), entry.stored) << entry.name;
        EXPECT_EQ(std::string(value.CType()), entry.name);
        EXPECT_FALSE(value.IsEmpty()) << entry.name;
    }
}

TEST(Value, ValuesReadBackExactlyAsTheirCType) {
    EXPECT_EQ(roundTrip<int>(INT_MIN, "int"), INT_MIN);
    EXPECT_EQ(roundTrip<unsigned int>(UINT_MAX, "unsigned int"), UINT_MAX);
    EXPECT_EQ(roundTrip<long>(LONG_MIN, "long"), LONG_MIN);
    EXPECT_EQ(roundTrip<unsigned long>(ULONG_MAX, "unsigned long"), ULONG_MAX);
    EXPECT_EQ(roundTrip<long long>(-1234567890123LL, "long long"), -1234567890123LL);
    EXPECT_EQ(roundTrip<unsigned long long>(0xFEDCBA9876543210ULL, "unsigned long long"), 0xFEDCBA9876543210ULL);
    EXPECT_EQ(roundTrip<short>(-32768, "short"), -32768);
    EXPECT_EQ(roundTrip<unsigned short>(65535, "unsigned short"), 65535);
    EXPECT_EQ(roundTrip<char>('z', "char"), 'z');
    EXPECT_EQ(roundTrip<unsigned char>(255, "unsigned char"), 255);
    EXPECT_EQ(roundTrip<double>(-2.5e-300, "double"), -2.5e-300);
    EXPECT_EQ(roundTrip<float>(3.25f, "float"), 3.25f);
    EXPECT_EQ(roundTrip<bool>(true, "bool"), true);
    EXPECT_EQ(roundTrip<bool>(false, "bool"), false);
}

TEST(Value, PointersAreStoredAsSixtyFourBitIntegers) {
    int target = 0;
    HVValue value = HVValue::ValueWithPointer(&target);
    EXPECT_EQ(std::string(value.CType()), "const void*");
    EXPECT_EQ(numberTypeOf(value), kCFNumberSInt64Type);
    EXPECT_EQ(value.PointerValue(), &target);
    EXPECT_EQ(HVNumber(elementOf(value, 2)).LongLongValue(),
              static_cast<long long>(reinterpret_cast<intptr_t>(&target)));
    const void* read = nullptr;
    value.GetValue(&read);
    EXPECT_EQ(read, &target);

    HVValue null;
    null.InitWithPointer(nullptr);
    EXPECT_EQ(null.PointerValue(), nullptr);
    EXPECT_FALSE(null.IsEmpty());
}

TEST(Value, UnknownTypeNamesLeaveTheSharedEmptyContainer) {
    int five = 5;
    for (const char* name : {"int32_t", "Int", "int ", "unsigned", "void *", ""}) {
        HVValue value = HVValue::ValueWithBytesOfCType(&five, name);
        EXPECT_EQ(value.Ref(), HVValue::SharedEmptyObject()) << name;
        EXPECT_TRUE(value.IsEmpty()) << name;
    }
    HVValue value = HVValue::ValueWithBytesOfCType(&five, "int");
    value.InitWithBytesOfCType(nullptr, "int");
    EXPECT_TRUE(value.IsEmpty());
    value.InitWithBytesOfCType(&five, HVString::SharedNullString());
    EXPECT_TRUE(value.IsEmpty());
}

TEST(Value, SharedEmptyObjectIsAnIntZeroContainer) {
    HVValue empty;
    EXPECT_EQ(empty.Ref(), HVValue::SharedEmptyObject());
    EXPECT_TRUE(empty.IsEmpty());
    EXPECT_FALSE(empty.IsNull());
    EXPECT_EQ(empty.ObjectsClassType(), HVValueClassType);
    EXPECT_EQ(empty.ObjectsActualClassType(), HVValueClassType);
    EXPECT_EQ(HVValue::ClassType(), HVValueClassType);
    EXPECT_EQ(stringElementOf(empty, 0), "HVValue_Container_AX7");
    EXPECT_EQ(std::string(empty.CType()), "int");
    int read = -1;
    empty.GetValue(&read);
    EXPECT_EQ(read, 0);
    // An int 0 made elsewhere is not empty: emptiness is identity.
    int zero = 0;
    EXPECT_FALSE(HVValue::ValueWithBytesOfCType(&zero, "int").IsEmpty());
    EXPECT_TRUE(HVValue::ValueWithBytesOfCType(&zero, "int") == empty);
}

TEST(Value, CopiesAndConversionsShareTheContainer) {
    double pi = 3.25;
    HVValue value = HVValue::ValueWithBytesOfCType(&pi, "double");
    unsigned long long before = value.RetainCount();
    HVValue copy(value);
    HVValue fromObject = HVValue::ValueFromObject(HVObject::Create(value.Ref()));
    EXPECT_EQ(copy.Ref(), value.Ref());
    EXPECT_EQ(fromObject.Ref(), value.Ref());
    EXPECT_EQ(value.RetainCount(), before + 2);
    EXPECT_EQ(static_cast<CFArrayRef>(value), value.Ref());
    // Shared without a check, whatever is held.
    HVValue string(HVObject(HVString("text")));
    EXPECT_EQ(CFGetTypeID(string.Ref()), CFStringGetTypeID());
    EXPECT_EQ(string.ObjectsClassType(), HVValueClassType);
    // Reading a value that holds no container writes nothing.
    double untouched = 7;
    string.GetValue(&untouched);
    EXPECT_EQ(untouched, 7);
    EXPECT_EQ(string.PointerValue(), nullptr);
    EXPECT_TRUE(string.CType().IsNull());
}

TEST(Value, RebuiltByClassTypeFromANullReference) {
    std::shared_ptr<HVObject> made = hvtest::ObjectProbe::CreateObjectOfClassType(nullptr, HVValueClassType);
    ASSERT_TRUE(made);
    EXPECT_EQ(made->ObjectsActualClassType(), HVValueClassType);
    EXPECT_TRUE(made->IsNull());
    // The held type 27 counts as empty at the shared container.
    made->Empty();
    EXPECT_EQ(made->Ref(), HVValue::SharedEmptyObject());
}

TEST(Value, ReadBackFromItsText) {
    unsigned long long high = 0xFEDCBA9876543210ULL;
    float quarter = 0.25f;
    for (const HVValue& value : {HVValue::ValueWithBytesOfCType(&high, "unsigned long long"),
                                 HVValue::ValueWithBytesOfCType(&quarter, "float"), HVValue::ValueWithPointer(&high)}) {
        HVValue read;
        read.Deserialize(HVValue(value).Serialize());
        EXPECT_TRUE(read == value) << std::string(read.CType());
        // Stored again with the C type's code, not the reader's.
        EXPECT_EQ(numberTypeOf(read), numberTypeOf(value)) << std::string(read.CType());
    }
    // The fragment that tagged text carries, without its document.
    HVValue fragment;
    fragment.Deserialize("<array><string>HVValue_Container_AX7</string><string>short</string><integer>-7</integer>"
                         "</array>");
    short seven = 0;
    fragment.GetValue(&seven);
    EXPECT_EQ(seven, -7);

    // Text without a value leaves the value as it was.
    hvtest::LogCapture log;
    for (const char* text : {"", "<string>x</string>",
                             "<array><string>HVValue_Container_AX7</string><string>int32_t</string><integer>5</integer>"
                             "</array>"}) {
        fragment.Deserialize(text);
        EXPECT_EQ(numberTypeOf(fragment), kCFNumberSInt16Type) << text;
    }
    EXPECT_EQ(hvtest::rebuilt(HVValueClassType, "nothing")->Ref(), nullptr);
}
