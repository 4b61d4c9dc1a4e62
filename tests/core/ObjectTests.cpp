// The object model: class types, the assignment rule, copies, emptiness,
// retain counts and descriptions.
#include <halvane/collections/HVData.h>
#include <halvane/core/HVObject.h>
#include <halvane/text/HVString.h>

#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

#include "support/LogCapture.h"

namespace {

// Exposes the protected parts of HVObject that the rules are stated in.
class ObjectProbe : public HVObject {
public:
    using HVObject::ClassTypeOfClassName;
    using HVObject::CreateObjectOfClassType;
};

CFMutableArrayRef newMutableArray(std::initializer_list<CFTypeRef> values) {
    CFMutableArrayRef array = CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks);
    for (CFTypeRef value : values) CFArrayAppendValue(array, value);
    return array;
}

}  // namespace

TEST(Object, DefaultObjectIsNullAndEmpty) {
    HVObject object;
    EXPECT_EQ(object.Ref(), nullptr);
    EXPECT_TRUE(object.IsNull());
    EXPECT_TRUE(object.IsEmpty());
    EXPECT_EQ(object.ObjectsClassType(), HVObjectClassType);
    EXPECT_EQ(object.ObjectsActualClassType(), HVObjectClassType);
    EXPECT_EQ(object.Description().Length(), 0u);
    EXPECT_EQ(object.RetainCount(), 0u);
    EXPECT_EQ(HVObject::ClassType(), HVObjectClassType);
    EXPECT_EQ(HVObject::SharedEmptyObject(), nullptr);
}

TEST(Object, ClassTypesOfPlatformObjects) {
    int one = 1;
    CFNumberRef number = CFNumberCreate(nullptr, kCFNumberIntType, &one);
    CFDataRef data = CFDataCreate(nullptr, nullptr, 0);
    CFMutableDataRef mutableData = CFDataCreateMutable(nullptr, 0);
    CFDateRef date = CFDateCreate(nullptr, 0);
    CFErrorRef error = CFErrorCreate(nullptr, CFSTR("D"), 1, nullptr);
    CFDictionaryRef dictionary = CFDictionaryCreate(nullptr, nullptr, nullptr, 0, &kCFTypeDictionaryKeyCallBacks,
                                                    &kCFTypeDictionaryValueCallBacks);
    CFMutableDictionaryRef mutableDictionary = CFDictionaryCreateMutable(nullptr, 0, nullptr, nullptr);
    CFArrayRef array = CFArrayCreate(nullptr, nullptr, 0, &kCFTypeArrayCallBacks);
    CFMutableArrayRef mutableArray = newMutableArray({});

    EXPECT_EQ(HVObject::ClassTypeNeededForObject(nullptr), HVObjectClassType);
    EXPECT_EQ(HVObject::ClassTypeNeededForObject(CFSTR("x")), HVStringClassType);
    EXPECT_EQ(HVObject::ClassTypeNeededForObject(number), HVNumberClassType);
    EXPECT_EQ(HVObject::ClassTypeNeededForObject(kCFBooleanTrue), HVBoolClassType);
    EXPECT_EQ(HVObject::ClassTypeNeededForObject(kCFNull), HVNullClassType);
    EXPECT_EQ(HVObject::ClassTypeNeededForObject(data), HVDataClassType);
    EXPECT_EQ(HVObject::ClassTypeNeededForObject(mutableData), HVMutableDataClassType);
    EXPECT_EQ(HVObject::ClassTypeNeededForObject(date), HVDateClassType);
    EXPECT_EQ(HVObject::ClassTypeNeededForObject(error), HVErrorClassType);
    EXPECT_EQ(HVObject::ClassTypeNeededForObject(dictionary), HVDictionaryClassType);
    EXPECT_EQ(HVObject::ClassTypeNeededForObject(mutableDictionary), HVMutableDictionaryClassType);
    EXPECT_EQ(HVObject::ClassTypeNeededForObject(array), HVArrayClassType);
    EXPECT_EQ(HVObject::ClassTypeNeededForObject(mutableArray), HVMutableArrayClassType);

    // An unidentifiable object: a log line and the plain object type.
    hvtest::LogCapture log;
    EXPECT_EQ(HVObject::ClassTypeNeededForObject(kCFAllocatorMalloc), HVObjectClassType);
    ASSERT_EQ(log.messages().size(), 1u);
    EXPECT_EQ(log.messages()[0],
              "HVObject::ClassTypeNeededForObject does not have the ability to identify the class with an internal "
              "object of type 2");

    for (CFTypeRef object : {CFTypeRef(number), CFTypeRef(data), CFTypeRef(mutableData), CFTypeRef(date),
                             CFTypeRef(error), CFTypeRef(dictionary), CFTypeRef(mutableDictionary), CFTypeRef(array),
                             CFTypeRef(mutableArray)}) {
        CFRelease(object);
    }
}

TEST(Object, ValueContainersAreRecognisedByTheirMarker) {
    CFMutableArrayRef container = newMutableArray({CFSTR("HVValue_Container_AX7"), CFSTR("int"), CFSTR("data")});
    EXPECT_EQ(HVObject::ClassTypeNeededForObject(container), HVValueClassType);
    CFArrayRemoveValueAtIndex(container, 2);
    EXPECT_EQ(HVObject::ClassTypeNeededForObject(container), HVMutableArrayClassType);
    CFRelease(container);
}

TEST(Object, ClassNamesAndTheirPrefixOrder) {
    EXPECT_EQ(std::string(HVObject::ClassNameOfClassType(HVCharacterSetClassType)), "");
    EXPECT_EQ(std::string(HVObject::ClassNameOfClassType(HVRetainedObjectClassType)), "HVRetainedObject");
    EXPECT_EQ(std::string(HVObject::ClassNameOfClassType(HVMutableDictionaryClassType)), "HVMutableDictionary");
    EXPECT_EQ(std::string(HVObject::ClassNameOfClassType(HVObjectClassType)), "");
    EXPECT_EQ(std::string(HVObject::ClassNameOfClassType(HVClassType(28))), "");
    EXPECT_EQ(std::string(HVObject::ClassNameOfClassType(HVClassType(99))), "");

    EXPECT_EQ(ObjectProbe::ClassTypeOfClassName("HVDateComponents"), HVDateClassType);
    EXPECT_EQ(ObjectProbe::ClassTypeOfClassName("HVMutableDictionary:<dict/>"), HVMutableDictionaryClassType);
    EXPECT_EQ(ObjectProbe::ClassTypeOfClassName("HVMutableArray"), HVMutableArrayClassType);
    EXPECT_EQ(ObjectProbe::ClassTypeOfClassName("HVDataX"), HVDataClassType);
    EXPECT_EQ(ObjectProbe::ClassTypeOfClassName("HVMutableData"), HVMutableDataClassType);
    EXPECT_EQ(ObjectProbe::ClassTypeOfClassName("Something"), HVUnknownClassType);
    EXPECT_EQ(ObjectProbe::ClassTypeOfClassName(""), HVUnknownClassType);
}

TEST(Object, CopiesShareOneReference) {
    HVString text("shared text");
    EXPECT_EQ(text.RetainCount(), 1u);
    {
        HVObject copy(text);
        EXPECT_EQ(copy.Ref(), text.Ref());
        EXPECT_EQ(copy.ObjectsClassType(), HVStringClassType);
        EXPECT_EQ(copy.ObjectsActualClassType(), HVObjectClassType);
        EXPECT_EQ(text.RetainCount(), 2u);
    }
    EXPECT_EQ(text.RetainCount(), 1u);

    HVObject created = HVObject::Create(text.Ref());
    EXPECT_EQ(created.ObjectsClassType(), HVStringClassType);
    EXPECT_EQ(created.ObjectsActualClassType(), HVStringClassType);
    EXPECT_EQ(text.RetainCount(), 2u);
}

TEST(Object, ImmutableWrapperHoldsAMutableObjectOfItsFamily) {
    CFMutableDataRef buffer = CFDataCreateMutable(nullptr, 0);
    CFDataAppendBytes(buffer, reinterpret_cast<const UInt8*>("ab"), 2);
    HVObject holder = HVObject::Create(buffer);
    EXPECT_EQ(holder.ObjectsClassType(), HVMutableDataClassType);

    HVObject target(HVData::DataWithBytesOfLength("zz", 2));
    // Through the base class's rule, as every typed wrapper assigns.
    HVData data;
    static_cast<HVObject&>(data) = holder;
    EXPECT_EQ(data.Ref(), buffer);
    EXPECT_TRUE(data.IsMutable());
    EXPECT_EQ(data.ObjectsClassType(), HVMutableDataClassType);
    EXPECT_EQ(data.ObjectsActualClassType(), HVDataClassType);
    CFRelease(buffer);
}

TEST(Object, MutableWrapperCopiesAnImmutableObjectOfItsFamily) {
    HVData source = HVData::DataWithBytesOfLength("abc", 3);
    HVMutableData target;
    static_cast<HVObject&>(target) = static_cast<const HVObject&>(source);
    EXPECT_NE(target.Ref(), source.Ref());
    EXPECT_EQ(target.Length(), 3u);
    EXPECT_TRUE(_CFDataIsMutable(static_cast<CFDataRef>(target.Ref())));
    target.AppendBytesOfLength("d", 1);
    EXPECT_EQ(source.Length(), 3u);
    EXPECT_EQ(target.Length(), 4u);
}

TEST(Object, ForeignObjectsAreRefusedSilently) {
    HVString text("unchanged");
    const void* before = text.Ref();
    int seven = 7;
    CFNumberRef number = CFNumberCreate(nullptr, kCFNumberIntType, &seven);
    HVObject holder = HVObject::Create(number);
    hvtest::LogCapture log;
    static_cast<HVObject&>(text) = holder;
    EXPECT_EQ(text.Ref(), before);
    EXPECT_EQ(text.ObjectsClassType(), HVStringClassType);
    EXPECT_TRUE(log.text().empty());
    CFRelease(number);

    // A plain object accepts anything.
    HVObject plain;
    plain = holder;
    EXPECT_EQ(plain.Ref(), holder.Ref());
    EXPECT_EQ(plain.ObjectsClassType(), HVNumberClassType);
}

TEST(Object, TypeTestsAndMutability) {
    CFMutableArrayRef mutableArray = newMutableArray({CFSTR("a")});
    CFArrayRef array = CFArrayCreateCopy(nullptr, mutableArray);
    HVObject mutableHolder = HVObject::Create(mutableArray);
    HVObject immutableHolder = HVObject::Create(array);
    EXPECT_TRUE(mutableHolder.IsTypeOfClass(HVArrayClassType));
    EXPECT_TRUE(mutableHolder.IsTypeOfClass(HVMutableArrayClassType));
    EXPECT_FALSE(immutableHolder.IsTypeOfClass(HVMutableArrayClassType));
    EXPECT_TRUE(mutableHolder.IsMutable());
    EXPECT_FALSE(immutableHolder.IsMutable());
    EXPECT_FALSE(mutableHolder.IsSameClassTypeAs(immutableHolder));
    EXPECT_TRUE(mutableHolder == immutableHolder);  // CFEqual
    CFRelease(mutableArray);
    CFRelease(array);
}

TEST(Object, EqualityOfNullAndNonNull) {
    HVObject a;
    HVObject b;
    EXPECT_TRUE(a == b);
    HVString text("x");
    EXPECT_FALSE(a == static_cast<const HVObject&>(text));
    EXPECT_TRUE(a != static_cast<const HVObject&>(text));
}

TEST(Object, HashAndRetainCountAreNarrowedTo32Bits) {
    HVString text("a long enough text to have a large hash value");
    EXPECT_EQ(text.Hash(), CFHash(text.Ref()) & 0xFFFFFFFFull);
    EXPECT_LE(text.Hash(), 0xFFFFFFFFull);
    // Immortal constants report a count far above 32 bits; only the low 32
    // bits survive, sign-extended.
    HVObject constant = HVObject::Create(CFSTR("constant"));
    EXPECT_EQ(constant.RetainCount(), 0xFFFFFFFFFFFFFFFFull);
}

TEST(Object, AssignmentForms) {
    HVObject object;
    UniChar ownedUnits[] = {u'o', u'w', u'n'};
    CFStringRef owned = CFStringCreateWithCharacters(nullptr, ownedUnits, 3);
    CFMutableStringRef fresh = CFStringCreateMutable(nullptr, 0);
    object.AssignAndTakeOwnership(fresh);
    EXPECT_EQ(CFGetRetainCount(fresh), 1);
    EXPECT_EQ(object.ObjectsClassType(), HVObjectClassType);

    object.AssignUsingClassType(owned, HVStringClassType);
    EXPECT_EQ(object.ObjectsClassType(), HVStringClassType);
    EXPECT_EQ(object.Ref(), owned);
    EXPECT_EQ(CFGetRetainCount(owned), 2);
    CFRelease(owned);

    CFMutableArrayRef array = newMutableArray({});
    object.AssignTakeOwnershipAndSetType(array);
    EXPECT_EQ(object.ObjectsClassType(), HVMutableArrayClassType);
    EXPECT_EQ(CFGetRetainCount(array), 1);
}

TEST(Object, RefCopyAddsOneRetainToAFreshCopy) {
    HVData data = HVData::DataWithBytesOfLength("xyz", 3);
    const void* copy = data.RefCopy();
    ASSERT_NE(copy, nullptr);
    // A CFData copy of an immutable data is the same object retained, and
    // then retained once more.
    EXPECT_EQ(copy, data.Ref());
    EXPECT_EQ(CFGetRetainCount(copy), 3);
    CFRelease(copy);
    CFRelease(copy);

    HVMutableData buffer = HVMutableData::DataWithLength(2);
    const void* frozen = buffer.RefCopy();
    EXPECT_NE(frozen, buffer.Ref());
    EXPECT_FALSE(_CFDataIsMutable(static_cast<CFDataRef>(frozen)));
    EXPECT_EQ(CFGetRetainCount(frozen), 2);
    CFRelease(frozen);
    CFRelease(frozen);

    int value = 5;
    CFNumberRef number = CFNumberCreate(nullptr, kCFNumberIntType, &value);
    HVObject holder = HVObject::Create(number);
    const void* numberCopy = holder.RefCopy();
    EXPECT_NE(numberCopy, number);
    EXPECT_TRUE(CFEqual(numberCopy, number));
    EXPECT_EQ(CFGetRetainCount(numberCopy), 2);
    CFRelease(numberCopy);
    CFRelease(numberCopy);
    CFRelease(number);

    EXPECT_EQ(HVObject().RefCopy(), nullptr);
}

TEST(Object, EmptyReleaseAndNullify) {
    HVData data = HVData::DataWithBytesOfLength("abc", 3);
    EXPECT_FALSE(data.IsEmpty());
    data.Empty();
    EXPECT_EQ(data.Ref(), HVData::SharedEmptyObject());

    HVData other = HVData::DataWithBytesOfLength("abc", 3);
    other.Release();
    // After a release the wrapper holds its class's empty value, not null.
    EXPECT_EQ(other.Ref(), HVData::SharedEmptyObject());
    other.Nullify();
    EXPECT_EQ(other.Ref(), nullptr);
    EXPECT_TRUE(other.IsNull());
}

TEST(Object, ConcreteWrappersAreBuiltByClassType) {
    CFDataRef bytes = CFDataCreate(nullptr, reinterpret_cast<const UInt8*>("ab"), 2);
    std::shared_ptr<HVObject> made = ObjectProbe::CreateObjectOfClassType(bytes, HVDataClassType);
    ASSERT_NE(made, nullptr);
    EXPECT_NE(dynamic_cast<HVData*>(made.get()), nullptr);
    EXPECT_EQ(made->Ref(), bytes);
    EXPECT_EQ(CFGetRetainCount(bytes), 2);
    made.reset();
    EXPECT_EQ(CFGetRetainCount(bytes), 1);

    std::shared_ptr<HVObject> text = ObjectProbe::CreateObjectOfClassType(CFSTR("t"), HVStringClassType);
    ASSERT_NE(dynamic_cast<HVString*>(text.get()), nullptr);

    for (int type : {0, 16, 17, 18, 22, 23, 31, 35, -1}) {
        EXPECT_EQ(ObjectProbe::CreateObjectOfClassType(bytes, HVClassType(type)), nullptr) << type;
    }
    CFRelease(bytes);
}

TEST(Object, IdAndPoolHoldNothing) {
    CFStringRef text = CFStringCreateCopy(nullptr, CFSTR("held"));
    CFIndex before = CFGetRetainCount(text);
    {
        id a(text);
        id b = a;
        id c;
        EXPECT_TRUE(a == b);
        EXPECT_TRUE(a == text);
        EXPECT_TRUE(c == static_cast<const void*>(nullptr));
        EXPECT_TRUE(c != a);
        c = text;
        EXPECT_EQ(static_cast<const void*>(c), text);
        HVAutoreleasePool pool;
        HVAutoreleasePool other;
        other = pool;
    }
    EXPECT_EQ(CFGetRetainCount(text), before);
    CFRelease(text);
}
