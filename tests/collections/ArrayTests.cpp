// HVArray: conversions and copies, range faults, the typed accessors and
// their reports, searching, sorting, joining and the enumerators.
#include <halvane/collections/HVArray.h>
#include <halvane/core/HVNull.h>
#include <halvane/errors/HVError.h>
#include <halvane/errors/HVException.h>

#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

#include "CollectionTestSupport.h"
#include "support/LogCapture.h"

using hvtest::arrayOf;
using hvtest::text;

TEST(Array, EmptyNullAndSharedObjects) {
    HVArray empty;
    EXPECT_EQ(empty.Ref(), HVArray::SharedEmptyObject());
    EXPECT_TRUE(empty.IsEmpty());
    EXPECT_EQ(empty.Count(), 0u);
    EXPECT_NE(HVMutableArray::SharedEmptyObject(), HVArray::SharedEmptyObject());

    HVArray null(HVObject{});
    EXPECT_EQ(null.Ref(), nullptr);
    EXPECT_TRUE(null.IsEmpty());
    EXPECT_EQ(null.Count(), 0u);

    HVArray one = HVArray::ArrayWithObject(HVString("a"));
    EXPECT_EQ(one.Count(), 1u);
    EXPECT_EQ(text(one.StringAtIndex(0)), "a");
}

TEST(Array, ImmutableWrappersCopyMutableArrays) {
    HVMutableArray source;
    source.AddString("a");
    HVArray copy(source);
    EXPECT_NE(copy.Ref(), source.Ref());
    EXPECT_FALSE(copy.IsMutable());
    source.AddString("b");
    EXPECT_EQ(copy.Count(), 1u);

    HVArray shared(copy);
    EXPECT_EQ(shared.Ref(), copy.Ref());
    EXPECT_EQ(copy.RetainCount(), 2u);

    // Assignment: an immutable receiver copies a mutable source and shares
    // an immutable one; every branch leaves the immutable class.
    HVArray assigned;
    assigned = source;
    EXPECT_NE(assigned.Ref(), source.Ref());
    EXPECT_EQ(assigned.Count(), 2u);
    assigned = copy;
    EXPECT_EQ(assigned.Ref(), copy.Ref());
    EXPECT_EQ(assigned.ObjectsActualClassType(), HVArrayClassType);
}

TEST(Array, MutableReceiverOfTheBaseAssignmentRefillsItsOwnArray) {
    HVMutableArray receiver;
    receiver.AddString("old");
    const void* own = receiver.Ref();
    HVArray& asBase = receiver;
    asBase = arrayOf({HVString("x"), HVString("y")});
    EXPECT_EQ(receiver.Ref(), own);
    EXPECT_EQ(receiver.Count(), 2u);
    EXPECT_EQ(text(receiver.StringAtIndex(1)), "y");
    EXPECT_EQ(receiver.ObjectsActualClassType(), HVArrayClassType);

    HVMutableArray fresh;
    HVArray& freshBase = fresh;
    freshBase = arrayOf({HVString("z")});
    EXPECT_NE(fresh.Ref(), HVMutableArray::SharedEmptyObject());
    EXPECT_EQ(CFArrayGetCount(static_cast<CFArrayRef>(HVMutableArray::SharedEmptyObject())), 0);
}

TEST(Array, ConversionFromObjects) {
    HVArray source = arrayOf({HVString("a")});
    EXPECT_EQ(HVArray::ArrayFromObject(HVObject::Create(source.Ref())).Ref(), source.Ref());

    hvtest::LogCapture log;
    HVArray refused(HVString("text"));
    EXPECT_EQ(refused.Ref(), HVArray::SharedEmptyObject());
    HVArray assigned = source;
    assigned = static_cast<const HVObject&>(HVNumber(3));
    EXPECT_EQ(assigned.Ref(), source.Ref());
    std::vector<std::string> messages = log.messages();
    ASSERT_EQ(messages.size(), 2u);
    EXPECT_EQ(messages[0],
              "Failed Assert! (0) - HVArray::HVArray(const HVObject& Object) parameter type unhandled. The object "
              "type is: 25    Function:HVArray::HVArray File:HVArray Line:123");
    EXPECT_EQ(messages[1],
              "Failed Assert! (0) - HVArray::operator=(const HVObject& Object) parameter type unhandled.    "
              "Function:HVArray::operator = File:HVArray Line:173");
}

TEST(Array, IndexPastTheEndThrowsTheRangeException) {
    hvtest::LogCapture log;
    HVError error;
    for (const HVArray& array : {HVArray(), HVArray(HVObject{}), arrayOf({HVString("a")})}) {
        try {
            array.StringAtIndex(array.Count(), error);
            ADD_FAILURE() << "no exception";
        } catch (const HVException& exception) {
            EXPECT_EQ(text(exception.Name()), "RangeException");
            EXPECT_EQ(text(exception.Reason()), "Attempted to index past the end of the array.");
        }
    }
    HVArray one = arrayOf({HVString("a")});
    EXPECT_THROW(one.ObjectAtIndex(1), HVException);
    EXPECT_THROW(one.CreateObjectAtIndex(5), HVException);
    EXPECT_THROW(one.ClassTypeOfObjectAtIndex(1), HVException);
    EXPECT_THROW(one.NumberAtIndex(1), HVException);
    EXPECT_FALSE(error.IsError());
    EXPECT_TRUE(log.messages().empty());
}

TEST(Array, TypedAccessorsConvertBetweenMutableAndImmutable) {
    HVMutableData buffer;
    buffer.AppendBytesOfLength("ab", 2);
    HVMutableDictionary table;
    table.SetStringForKey("v", "k");
    HVMutableArray inner;
    inner.AddString("i");
    HVArray array = arrayOf({buffer, table, inner, HVData(hvtest::bytes("xy"))});

    HVData frozen = array.DataAtIndex(0);
    EXPECT_NE(frozen.Ref(), buffer.Ref());
    EXPECT_FALSE(frozen.IsMutable());
    HVMutableData live = array.MutableDataAtIndex(0);
    EXPECT_EQ(live.Ref(), buffer.Ref());
    buffer.AppendBytesOfLength("c", 1);
    EXPECT_EQ(frozen.Length(), 2u);
    EXPECT_EQ(live.Length(), 3u);

    EXPECT_NE(array.DictionaryAtIndex(1).Ref(), table.Ref());
    EXPECT_EQ(array.MutableDictionaryAtIndex(1).Ref(), table.Ref());
    EXPECT_NE(array.ArrayAtIndex(2).Ref(), inner.Ref());
    EXPECT_EQ(array.MutableArrayAtIndex(2).Ref(), inner.Ref());
    EXPECT_EQ(text(array.ArrayAtIndex(2).StringAtIndex(0)), "i");

    HVMutableData copied = array.MutableDataAtIndex(3);
    EXPECT_TRUE(copied.IsMutable());
    EXPECT_NE(copied.Ref(), array.DataAtIndex(3).Ref());
    copied.AppendBytesOfLength("z", 1);
    EXPECT_EQ(array.DataAtIndex(3).Length(), 2u);
}

TEST(Array, BooleansAndNumbersReadAcross) {
    HVArray array = arrayOf({HVBool(true), HVNumber(0), HVNumber(2.5)});
    HVError error;
    EXPECT_EQ(array.BoolAtIndex(0, error).Ref(), kCFBooleanTrue);
    EXPECT_EQ(array.BoolAtIndex(1, error).Ref(), kCFBooleanFalse);
    EXPECT_EQ(array.BoolAtIndex(2, error).Ref(), kCFBooleanTrue);
    EXPECT_FALSE(error.IsError());

    HVNumber number = array.NumberAtIndex(0, error);
    EXPECT_TRUE(number.IsEmpty());
    EXPECT_EQ(number.Ref(), HVNumber::SharedEmptyObject());
    EXPECT_EQ(error.Code(), HVTypeMismatchError);
    EXPECT_EQ(text(error.Domain()), "HalvaneDomain");
    EXPECT_EQ(text(error.LocalizedDescription()), "Object type does not match the object type requested.");
    EXPECT_EQ(hvtest::failureReason(error), "Object type at index 0 is a HVBool.");
}

TEST(Array, MismatchesAreReportedNeverThrown) {
    HVArray array = arrayOf({HVString("s"), HVNumber(1)});
    HVError earlier = HVError::ErrorWithCodeDescriptionAndDomain(5, "kept", "D");
    HVError error = earlier;
    // A successful call leaves the caller's error alone.
    EXPECT_EQ(text(array.StringAtIndex(0, error)), "s");
    EXPECT_EQ(error.Ref(), earlier.Ref());

    EXPECT_EQ(array.StringAtIndex(1, error).Ref(), HVString::SharedEmptyObject());
    EXPECT_EQ(hvtest::failureReason(error), "Object type at index 1 is a HVNumber.");

    hvtest::LogCapture log;
    EXPECT_TRUE(array.StringAtIndex(1).IsEmpty());
    EXPECT_TRUE(array.ArrayAtIndex(0).IsEmpty());
    EXPECT_TRUE(array.MutableDictionaryAtIndex(1).IsEmpty());
    EXPECT_TRUE(array.DataAtIndex(1).IsEmpty());
    std::vector<std::string> messages = log.messages();
    ASSERT_EQ(messages.size(), 4u);
    hvtest::expectAssertionLine(messages[0], "! error.IsError()", "Object type at index 1 is a HVNumber.",
                                "HVArray::StringAtIndex", "HVArray", 617);
    hvtest::expectAssertionLine(messages[1], "! error.IsError()", "Object type at index 0 is a HVString.",
                                "HVArray::ArrayAtIndex", "HVArray", 221);
    hvtest::expectAssertionLine(messages[2], "! error.IsError()", "Object type at index 1 is a HVNumber.",
                                "HVArray::MutableDictionaryAtIndex", "HVArray", 441);
    hvtest::expectAssertionLine(messages[3], "! error.IsError()", "Object type at index 1 is a HVNumber.",
                                "HVArray::DataAtIndex", "HVArray", 311);
}

TEST(Array, DatesValuesGeometryAndRetainedObjectsAtIndex) {
    HVDate date = HVDate::DateWithTimeIntervalSinceReferenceDate(727012800.0);
    HVValue value = HVValue::ValueWithPointer(&date);
    auto* object = new hvtest::Carried;
    HVMutableArray array(arrayOf({date, value, HVString("{{1.5,2},{3,4}}"), HVNumber(7)}));
    array.AddRetainedObject(object);
    HVRetainedObject::Release(object);
    HVError error;
    EXPECT_EQ(array.DateAtIndex(0, error).Ref(), date.Ref());
    EXPECT_EQ(array.ValueAtIndex(1).Ref(), value.Ref());
    EXPECT_TRUE(array.RectAtIndex(2, error) == HVRect(1.5, 2, 3, 4));
    EXPECT_TRUE(array.PointAtIndex(2) == HVPoint(1.5, 2));  // every brace dropped: the first two numbers
    EXPECT_EQ(array.RetainedObjectAtIndex(4), object);
    EXPECT_FALSE(error.IsError());

    EXPECT_EQ(array.ValueAtIndex(0, error).Ref(), HVValue::SharedEmptyObject());
    EXPECT_EQ(hvtest::failureReason(error), "Object type at index 0 is a HVDate.");
    EXPECT_EQ(array.RetainedObjectAtIndex(2, error), nullptr);
    EXPECT_EQ(hvtest::failureReason(error), "Object type at index 2 is a HVString.");

    hvtest::LogCapture log;
    EXPECT_EQ(array.DateAtIndex(3).Ref(), HVDate::SharedEmptyObject());
    EXPECT_TRUE(array.SizeAtIndex(1).IsEmpty());
    EXPECT_EQ(array.RetainedObjectAtIndex(3), nullptr);
    std::vector<std::string> messages = log.messages();
    ASSERT_EQ(messages.size(), 3u);
    EXPECT_EQ(messages[0],
              "Failed Assert! (! error.IsError()) - Error Domain=HalvaneDomain Code=20004 \"Object type does not "
              "match the object type requested.\" UserInfo={NSLocalizedFailureReason=Object type at index 3 is a "
              "HVNumber., NSLocalizedDescription=Object type does not match the object type requested.}    "
              "Function:HVArray::DateAtIndex File:HVArray Line:379");
    hvtest::expectAssertionLine(messages[1], "! error.IsError()", "Object type at index 1 is a HVValue.",
                                "HVArray::SizeAtIndex", "HVArray", 587);
    hvtest::expectAssertionLine(messages[2], "! error.IsError()", "Object type at index 3 is a HVNumber.",
                                "HVArray::RetainedObjectAtIndex", "HVArray", 563);
}

TEST(Array, ClassTypesAndGenericObjects) {
    HVArray array = arrayOf({HVString("s"), HVMutableArray(), HVNull()});
    EXPECT_EQ(array.ClassTypeOfObjectAtIndex(0), HVStringClassType);
    EXPECT_TRUE(array.IsMatchingClassTypeOfObjectAtIndex(HVMutableArrayClassType, 1));
    EXPECT_EQ(array.ClassTypeOfObjectAtIndex(2), HVNullClassType);
    HVObject generic = array.ObjectAtIndex(0);
    EXPECT_EQ(generic.ObjectsClassType(), HVStringClassType);
    std::shared_ptr<HVObject> made = array.CreateObjectAtIndex(1);
    ASSERT_NE(dynamic_cast<HVMutableArray*>(made.get()), nullptr);
    EXPECT_EQ(made->Ref(), array.ObjectAtIndex(1).Ref());

    // Elements whose type names their class are wrapped in the caller; the
    // others by the library. Both give what Create gives, and hold a
    // reference of their own.
    HVDate date = HVDate::DateWithTimeIntervalSinceReferenceDate(1.0);
    HVArray mixed = arrayOf({HVString("t"), HVNumber(2), HVBool(true), date, HVNull(), HVArray(), HVMutableArray(),
                             HVMutableData(), HVValue::ValueWithPointer(&date), HVMutableDictionary()});
    for (unsigned long long i = 0; i < mixed.Count(); ++i) {
        HVObject element = mixed.ObjectAtIndex(i);
        EXPECT_EQ(element.ObjectsClassType(), mixed.ClassTypeOfObjectAtIndex(i)) << i;
        EXPECT_EQ(element.ObjectsClassType(), HVObject::Create(element.Ref()).ObjectsClassType()) << i;
    }
    EXPECT_EQ(mixed.ObjectAtIndex(6).ObjectsClassType(), HVMutableArrayClassType);
    EXPECT_EQ(mixed.ObjectAtIndex(8).ObjectsClassType(), HVValueClassType);
    const void* string = mixed.ObjectAtIndex(0).Ref();
    CFIndex held = CFGetRetainCount(string);
    HVObject first = mixed.ObjectAtIndex(0);
    HVString firstString = mixed.StringAtIndex(0);
    EXPECT_EQ(CFGetRetainCount(string), held + 2);
    EXPECT_EQ(firstString.ObjectsClassType(), HVStringClassType);
}

TEST(Array, SearchingByEqualityAndIdentity) {
    HVString a("a");
    CFMutableStringRef distinct = CFStringCreateMutableCopy(nullptr, 0, CFSTR("a"));
    HVString equal(static_cast<const void*>(distinct));
    CFRelease(distinct);
    HVArray array = arrayOf({HVString("x"), a});
    EXPECT_EQ(array.IndexOfObject(equal), 1u);
    EXPECT_EQ(array.IndexOfObjectIdenticalTo(a), 1u);
    EXPECT_EQ(array.IndexOfObjectIdenticalTo(equal), HVNotFound);
    EXPECT_TRUE(array.Contains(equal));
    EXPECT_FALSE(array.Contains(HVString("b")));
    EXPECT_EQ(HVArray().IndexOfObject(a), HVNotFound);
    EXPECT_FALSE(HVArray().Contains(a));
    EXPECT_EQ(array.IndexOfObject(HVObject()), HVNotFound);
}

namespace {

CFComparisonResult byLength(const void* left, const void* right, void* context) {
    ++*static_cast<int*>(context);
    CFIndex a = CFStringGetLength(static_cast<CFStringRef>(left));
    CFIndex b = CFStringGetLength(static_cast<CFStringRef>(right));
    return a < b ? kCFCompareLessThan : a > b ? kCFCompareGreaterThan : kCFCompareEqualTo;
}

}  // namespace

TEST(Array, SortingAndJoining) {
    HVArray array = arrayOf({HVString("ccc"), HVString("a"), HVString("bb")});
    int calls = 0;
    HVArray sorted = array.SortedArrayUsingFunctionAndContext(byLength, &calls);
    EXPECT_GT(calls, 0);
    EXPECT_FALSE(sorted.IsMutable());
    EXPECT_EQ(text(sorted.ComponentsJoinedByString(", ")), "a, bb, ccc");
    EXPECT_EQ(text(array.ComponentsJoinedByString("-")), "ccc-a-bb");
    EXPECT_TRUE(HVArray().SortedArrayUsingFunctionAndContext(byLength, &calls).IsEmpty());
    EXPECT_TRUE(HVArray().ComponentsJoinedByString("-").IsEmpty());
}

TEST(Array, EnumeratorsWalkFrontToBackAndInReverse) {
    HVMutableArray array;
    array.AddString("a");
    array.AddString("b");
    HVEnumerator forward = array.ObjectEnumerator();
    HVEnumerator backward = array.ReverseObjectEnumerator();
    array.AddString("c");  // seen by the forward walk, not by the snapshot

    std::string walked;
    for (HVObject item = forward.NextObject(); item.Ref() != nullptr; item = forward.NextObject()) {
        walked += text(HVString(item));
    }
    EXPECT_EQ(walked, "abc");
    EXPECT_EQ(forward.NextObject().Ref(), nullptr);
    EXPECT_EQ(forward.AllObjects().Count(), 3u);

    EXPECT_EQ(text(backward.NextStringObject()), "b");
    EXPECT_EQ(text(backward.NextStringObject()), "a");
    EXPECT_TRUE(backward.NextStringObject().IsNull());
    EXPECT_TRUE(backward.NextStringObject().IsNull());

    HVEnumerator single = arrayOf({HVString("only")}).ReverseObjectEnumerator();
    EXPECT_EQ(text(single.NextStringObject()), "only");
}

TEST(Array, EnumeratorStateAndOwnership) {
    HVArray array = arrayOf({HVString("a"), HVString("b")});
    EXPECT_EQ(array.RetainCount(), 1u);
    HVEnumerator walker = array.ObjectEnumerator();
    EXPECT_EQ(array.RetainCount(), 2u);
    walker.NextObject();
    HVEnumerator copy(walker);
    EXPECT_EQ(text(HVString(copy.NextObject())), "b");
    EXPECT_EQ(text(HVString(walker.NextObject())), "b");
    EXPECT_EQ(walker.AllObjects().Count(), 2u);
    EXPECT_FALSE(walker.IsEmpty());

    walker.Empty();
    EXPECT_EQ(walker.Ref(), nullptr);
    EXPECT_TRUE(walker.IsEmpty());
    EXPECT_EQ(walker.NextObject().Ref(), nullptr);
    EXPECT_EQ(array.RetainCount(), 2u);  // the copy still holds it

    HVEnumerator none;
    EXPECT_TRUE(none.IsEmpty());
    EXPECT_TRUE(none.NextStringObject().IsNull());

    // A non-string element comes back empty, is reported, and the walk
    // goes on.
    hvtest::LogCapture log;
    HVEnumerator mixed = arrayOf({HVNumber(1), HVString("s")}).ObjectEnumerator();
    HVString first = mixed.NextStringObject();
    EXPECT_FALSE(first.IsNull());
    EXPECT_TRUE(first.IsEmpty());
    EXPECT_EQ(text(mixed.NextStringObject()), "s");
    EXPECT_EQ(log.messages().size(), 1u);
}

TEST(Array, NullsBecomeEmptyStringsAllTheWayDown) {
    HVMutableDictionary nested;
    nested.SetObjectForKey(HVNull(), "n");
    HVArray array = arrayOf({HVNull(), arrayOf({HVNull(), HVNumber(4)}), nested, HVString("s")});
    HVArray replaced = HVArray::ReplaceNullWithEmptyString(array);
    EXPECT_FALSE(replaced.IsMutable());
    EXPECT_EQ(replaced.ClassTypeOfObjectAtIndex(0), HVStringClassType);
    EXPECT_TRUE(replaced.StringAtIndex(0).IsEmpty());
    EXPECT_TRUE(replaced.ArrayAtIndex(1).StringAtIndex(0).IsEmpty());
    EXPECT_EQ(replaced.ArrayAtIndex(1).NumberAtIndex(1).IntValue(), 4);
    EXPECT_EQ(replaced.DictionaryAtIndex(2).ClassTypeOfObjectForKey("n"), HVStringClassType);
    EXPECT_EQ(text(replaced.StringAtIndex(3)), "s");
    EXPECT_EQ(array.ClassTypeOfObjectAtIndex(0), HVNullClassType);
}

TEST(Array, NativePropertyListContents) {
    EXPECT_TRUE(HVArray().IsNativelyAllowedInPropertyList());
    EXPECT_TRUE(arrayOf({HVString("s"), HVNumber(1), HVBool(false), hvtest::bytes("d")}).IsNativelyAllowedInPropertyList());
    EXPECT_FALSE(arrayOf({HVString("s"), HVNull()}).IsNativelyAllowedInPropertyList());
    EXPECT_FALSE(arrayOf({arrayOf({HVNull()})}).IsNativelyAllowedInPropertyList());
}
