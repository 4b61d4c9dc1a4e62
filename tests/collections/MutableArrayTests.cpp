// HVMutableArray: sharing between copies, the shared empty array that is
// never written, the guarded bulk operations, removal and conversions.
#include <halvane/collections/HVMutableArray.h>
#include <halvane/errors/HVError.h>

#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

#include "CollectionTestSupport.h"
#include "support/LogCapture.h"

using hvtest::arrayOf;
using hvtest::text;

namespace {

std::string joined(const HVArray& array) { return text(array.ComponentsJoinedByString(",")); }

}  // namespace

TEST(MutableArray, FirstChangeMakesAnArrayOfItsOwn) {
    HVMutableArray array;
    EXPECT_EQ(array.Ref(), HVMutableArray::SharedEmptyObject());
    array.AddString("a");
    EXPECT_NE(array.Ref(), HVMutableArray::SharedEmptyObject());
    EXPECT_EQ(CFArrayGetCount(static_cast<CFArrayRef>(HVMutableArray::SharedEmptyObject())), 0);
    EXPECT_EQ(array.RetainCount(), 1u);

    HVMutableArray inserted;
    inserted.InsertStringAtIndex("x", 0);
    inserted.SetStringAtIndex("y", 1);  // the count: appends
    inserted.SetStringAtIndex("z", 0);
    EXPECT_EQ(joined(inserted), "z,y");
}

TEST(MutableArray, CopiesShareOneArray) {
    HVMutableArray first;
    first.AddString("a");
    HVMutableArray second(first);
    EXPECT_EQ(second.Ref(), first.Ref());
    EXPECT_EQ(first.RetainCount(), 2u);
    HVArray frozen = first.Copy();
    second.AddString("b");
    EXPECT_EQ(joined(first), "a,b");
    EXPECT_EQ(joined(frozen), "a");
    EXPECT_FALSE(frozen.IsMutable());

    HVMutableArray third;
    third = first;
    EXPECT_EQ(third.Ref(), first.Ref());
    EXPECT_EQ(first.RetainCount(), 3u);

    EXPECT_EQ(HVMutableArray().Copy().Ref(), HVArray::SharedEmptyObject());
    EXPECT_EQ(HVMutableArray(HVObject{}).Copy().Ref(), HVArray::SharedEmptyObject());
}

TEST(MutableArray, FromImmutableSources) {
    HVArray source = arrayOf({HVString("a"), HVString("b")});
    HVMutableArray copied(source);
    EXPECT_NE(copied.Ref(), source.Ref());
    EXPECT_TRUE(copied.IsMutable());
    copied.AddString("c");
    EXPECT_EQ(source.Count(), 2u);

    // The conversion from a plain object holds the immutable array itself.
    HVMutableArray converted = HVMutableArray::MutableArrayFromObject(HVObject::Create(source.Ref()));
    EXPECT_EQ(converted.Ref(), source.Ref());

    HVMutableArray fromPlatform(static_cast<CFArrayRef>(source.Ref()));
    EXPECT_NE(fromPlatform.Ref(), source.Ref());
    EXPECT_EQ(joined(fromPlatform), "a,b");
    fromPlatform = static_cast<CFArrayRef>(arrayOf({HVString("z")}).Ref());
    EXPECT_EQ(joined(fromPlatform), "z");
}

TEST(MutableArray, UnhandledConversionsAreReported) {
    hvtest::LogCapture log;
    HVMutableArray fromString(static_cast<const HVObject&>(HVString("s")));
    EXPECT_EQ(fromString.Ref(), HVMutableArray::SharedEmptyObject());
    HVMutableArray receiver;
    receiver.AddString("kept");
    receiver = hvtest::bytes("<array/>");
    EXPECT_EQ(joined(receiver), "kept");
    std::vector<std::string> messages = log.messages();
    ASSERT_EQ(messages.size(), 2u);
    EXPECT_EQ(messages[0],
              "Failed Assert! (0) - HVMutableArray::HVMutableArray(const HVObject& Object) parameter type unhandled."
              "    Function:HVMutableArray::HVMutableArray File:HVMutableArray Line:109");
    EXPECT_EQ(messages[1],
              "Failed Assert! (0) - HVArray::HVArray(const HVObject& Object) parameter type unhandled. The object "
              "type is: 6    Function:HVArray::HVArray File:HVArray Line:123");
}

TEST(MutableArray, BulkOperationsGuardAgainstThemselves) {
    HVMutableArray array;
    array.AddString("a");
    array.AddObjectsFromArray(array);
    EXPECT_EQ(array.Count(), 1u);
    array.AddObjectsFromArray(arrayOf({HVString("a")}));  // equal contents: skipped
    EXPECT_EQ(array.Count(), 1u);
    array += arrayOf({HVString("b"), HVString("c")});
    EXPECT_EQ(joined(array), "a,b,c");

    array.SetArray(HVArray());
    EXPECT_EQ(joined(array), "a,b,c");
    array.SetArray(array);
    EXPECT_EQ(joined(array), "a,b,c");
    array.SetArray(arrayOf({HVString("x")}));
    EXPECT_EQ(joined(array), "x");

    array.InitByAddingObject(HVString("fresh"));
    EXPECT_EQ(joined(array), "fresh");
}

TEST(MutableArray, Removing) {
    HVString shared("b");
    HVMutableArray array;
    array.AddString("a");
    array.AddString(shared);
    array.AddString("c");
    array.AddString(shared);
    array.RemoveObjectIdenticalTo(shared);
    EXPECT_EQ(joined(array), "a,c,b");
    array.RemoveObjectIdenticalTo(HVString("zzz"));
    EXPECT_EQ(array.Count(), 3u);
    array.ExchangeObjectAtIndexWithObjectAtIndex(0, 2);
    EXPECT_EQ(joined(array), "b,c,a");
    array.RemoveLastObject();
    array.RemoveObjectAtIndex(0);
    EXPECT_EQ(joined(array), "c");
    array.RemoveAllObjects();
    EXPECT_TRUE(array.IsEmpty());

    HVMutableArray empty;
    empty.RemoveAllObjects();
    EXPECT_EQ(empty.Ref(), HVMutableArray::SharedEmptyObject());
}

TEST(MutableArray, FixedCapacity) {
    HVMutableArray bounded = HVMutableArray::MutableArrayWithCapacity(2);
    bounded.AddNumber(1);
    bounded.AddNumber(2);
    bounded.AddNumber(3);  // refused by the platform: the capacity is a maximum
    EXPECT_EQ(bounded.Count(), 2u);
}

TEST(MutableArray, TypedAdditionsHoldTheValues) {
    HVMutableArray array;
    HVMutableDictionary dictionary;  // an entry gives it a platform dictionary of its own
    dictionary.SetStringForKey("v", "k");
    array.AddBool(true);
    array.AddNumber(7);
    array.AddData(hvtest::bytes("d"));
    array.AddDictionary(dictionary);
    array.AddArray(arrayOf({HVString("n")}));
    array.InsertNumberAtIndex(0, 0);
    EXPECT_EQ(array.Count(), 6u);
    EXPECT_EQ(array.NumberAtIndex(0).IntValue(), 0);
    EXPECT_TRUE(bool(array.BoolAtIndex(1)));
    EXPECT_EQ(array.NumberAtIndex(2).IntValue(), 7);
    EXPECT_EQ(array.DataAtIndex(3).Length(), 1u);
    EXPECT_EQ(array.MutableDictionaryAtIndex(4).Ref(), dictionary.Ref());
    EXPECT_EQ(text(array.ArrayAtIndex(5).StringAtIndex(0)), "n");
    EXPECT_EQ(dictionary.RetainCount(), 2u);
    array.RemoveAllObjects();
    EXPECT_EQ(dictionary.RetainCount(), 1u);
}

TEST(MutableArray, DatesValuesGeometryAndRetainedObjects) {
    HVDate date = HVDate::Now();
    HVValue value = HVValue::ValueWithPointer(&date);
    HVMutableArray array;
    array.AddDate(date);
    array.AddPoint(HVPoint(1.4, 2.6));
    array.AddRect(HVRect(1, 2, 3, 4));
    array.InsertValueAtIndex(value, 0);
    EXPECT_EQ(array.ValueAtIndex(0).Ref(), value.Ref());
    EXPECT_EQ(array.DateAtIndex(1).Ref(), date.Ref());
    // Geometry is its rounded text, read back from it.
    EXPECT_EQ(text(array.StringAtIndex(2)), "{1,3}");
    EXPECT_TRUE(array.PointAtIndex(2) == HVPoint(1, 3));
    EXPECT_EQ(text(array.StringAtIndex(3)), "{{1,2},{3,4}}");

    bool deleted = false;
    auto* object = new hvtest::Carried(&deleted);
    array.AddRetainedObject(nullptr);
    array.InsertRetainedObjectAtIndex(nullptr, 0);
    array.SetRetainedObjectAtIndex(nullptr, 0);
    EXPECT_EQ(array.ValueAtIndex(0).Ref(), value.Ref());
    array.AddRetainedObject(object);
    array.InsertRetainedObjectAtIndex(object, 0);
    EXPECT_EQ(array.Count(), 6u);
    EXPECT_EQ(object->RetainCount(), 3u);
    HVRetainedObject::Release(object);
    array.RemoveObjectAtIndex(0);
    EXPECT_FALSE(deleted);
    array.RemoveLastObject();
    EXPECT_TRUE(deleted);
}
