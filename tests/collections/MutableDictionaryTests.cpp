// HVMutableDictionary: storing and removing, the non-empty setters, bulk
// operations, sharing and conversions.
#include <halvane/collections/HVMutableDictionary.h>
#include <halvane/core/HVNull.h>
#include <halvane/errors/HVError.h>

#include <CoreFoundation/CoreFoundation.h>

#include <cmath>
#include <gtest/gtest.h>

#include "CollectionTestSupport.h"
#include "support/LogCapture.h"

using hvtest::arrayOf;
using hvtest::text;

TEST(MutableDictionary, StoringIntoAnEmptyReceiverMakesAFreshDictionary) {
    HVMutableDictionary dictionary;
    EXPECT_EQ(dictionary.Ref(), HVMutableDictionary::SharedEmptyObject());
    dictionary.SetStringForKey("v", "k");
    EXPECT_NE(dictionary.Ref(), HVMutableDictionary::SharedEmptyObject());
    EXPECT_EQ(CFDictionaryGetCount(static_cast<CFDictionaryRef>(HVMutableDictionary::SharedEmptyObject())), 0);

    // An empty dictionary shared by two wrappers stops being shared at the
    // first store.
    HVMutableDictionary emptied;
    emptied.SetStringForKey("v", "k");
    emptied.RemoveObjectForKey("k");
    HVMutableDictionary sharer(emptied);
    EXPECT_EQ(sharer.Ref(), emptied.Ref());
    emptied.SetStringForKey("w", "k");
    EXPECT_NE(sharer.Ref(), emptied.Ref());
    EXPECT_TRUE(sharer.IsEmpty());
}

TEST(MutableDictionary, CopiesShareOneDictionary) {
    HVMutableDictionary first;
    first.SetNumberForKey(1, "a");
    HVMutableDictionary second(first);
    second.SetNumberForKey(2, "b");
    EXPECT_EQ(first.Count(), 2u);
    EXPECT_EQ(first.RetainCount(), 2u);
    HVDictionary frozen = first.Copy();
    first.SetNumberForKey(3, "c");
    EXPECT_EQ(frozen.Count(), 2u);
    EXPECT_EQ(HVMutableDictionary().Copy().Ref(), HVDictionary::SharedEmptyObject());

    HVMutableDictionary independent(frozen);
    EXPECT_NE(independent.Ref(), frozen.Ref());
    independent.SetNumberForKey(4, "d");
    EXPECT_EQ(frozen.Count(), 2u);
}

TEST(MutableDictionary, ValuesWithoutReferenceRemoveTheKey) {
    HVMutableDictionary dictionary;
    dictionary.SetStringForKey("v", "k");
    dictionary.SetObjectForKey(HVObject(), "k");
    EXPECT_EQ(dictionary.Count(), 0u);
    dictionary.SetNumberForKey(0, "zero");
    EXPECT_EQ(dictionary.NumberForKey("zero").IntValue(), 0);
    EXPECT_TRUE(dictionary.IsMatchingClassTypeOfObjectForKey(HVNumberClassType, "zero"));
}

TEST(MutableDictionary, NonEmptySettersRemoveBlankValues) {
    HVMutableDictionary dictionary;
    auto stored = [&](const char* key) { return dictionary.ObjectForKey(key).Ref() != nullptr; };
    dictionary.SetNumberForKey(9, "n");
    dictionary.SetNonEmptyNumberForKey(0, "n");
    EXPECT_FALSE(stored("n"));
    dictionary.SetNonEmptyNumberForKey(-0.0, "n");
    EXPECT_FALSE(stored("n"));
    dictionary.SetNonEmptyNumberForKey(std::nan(""), "n");
    EXPECT_TRUE(stored("n"));

    dictionary.SetNonEmptyBoolForKey(true, "b");
    EXPECT_TRUE(stored("b"));
    dictionary.SetNonEmptyBoolForKey(false, "b");
    EXPECT_FALSE(stored("b"));

    dictionary.SetNonEmptyStringForKey("x", "s");
    dictionary.SetNonEmptyStringForKey("", "s");
    EXPECT_FALSE(stored("s"));
    dictionary.SetNonEmptyStringForKey("x", "s");
    dictionary.SetNonEmptyStringForKey(HVString::SharedNullString(), "s");
    EXPECT_FALSE(stored("s"));

    dictionary.SetNonEmptyDataForKey(hvtest::bytes("d"), "d");
    EXPECT_TRUE(stored("d"));
    dictionary.SetNonEmptyDataForKey(HVData(), "d");
    EXPECT_FALSE(stored("d"));

    dictionary.SetNonEmptyArrayForKey(arrayOf({HVString("e")}), "a");
    EXPECT_TRUE(stored("a"));
    dictionary.SetNonEmptyArrayForKey(HVMutableArray(), "a");
    EXPECT_FALSE(stored("a"));

    dictionary.SetNonEmptyDictionaryForKey(HVDictionary::DictionaryWithObjectForKey(HVString("v"), "k"), "t");
    EXPECT_TRUE(stored("t"));
    dictionary.SetNonEmptyDictionaryForKey(HVDictionary(), "t");
    EXPECT_FALSE(stored("t"));
}

TEST(MutableDictionary, DatesValuesGeometryAndRetainedObjects) {
    HVMutableDictionary dictionary;
    auto stored = [&](const char* key) { return dictionary.ObjectForKey(key).Ref() != nullptr; };
    for (const HVDate& blank : {HVDate(), HVDate(kCFNull)}) {
        dictionary.SetDateForKey(HVDate::Now(), "date");
        dictionary.SetNonEmptyDateForKey(blank, "date");
        EXPECT_FALSE(stored("date"));
    }
    // The empty date's time in another object is not empty.
    dictionary.SetNonEmptyDateForKey(HVDate::ReferenceDate(), "date");
    EXPECT_EQ(dictionary.ObjectForKey("date").Ref(), HVDate::ReferenceDate().Ref());

    int zero = 0;
    HVValue fresh = HVValue::ValueWithBytesOfCType(&zero, "int");
    dictionary.SetValueForKey(fresh, "value");
    dictionary.SetNonEmptyValueForKey(HVValue(), "value");
    EXPECT_FALSE(stored("value"));
    dictionary.SetNonEmptyValueForKey(fresh, "value");
    EXPECT_TRUE(stored("value"));

    dictionary.SetPointForKey(HVPoint(1, 2), "point");
    dictionary.SetNonEmptyPointForKey(HVPoint(-0.0, 0), "point");
    EXPECT_FALSE(stored("point"));
    dictionary.SetNonEmptyPointForKey(HVPoint(std::nan(""), 0), "point");
    EXPECT_EQ(text(dictionary.StringForKey("point")), "{nan,0}");
    dictionary.SetNonEmptyRectForKey(HVRect(0, 0, 5, 0), "rect");
    EXPECT_EQ(text(dictionary.StringForKey("rect")), "{{0,0},{5,0}}");
    dictionary.SetNonEmptyRectForKey(HVRect(), "rect");
    EXPECT_FALSE(stored("rect"));

    bool deleted = false;
    auto* object = new hvtest::Carried(&deleted);
    dictionary.SetRetainedObjectForKey(object, "object");
    HVRetainedObject::Release(object);
    EXPECT_FALSE(deleted);
    dictionary.SetRetainedObjectForKey(nullptr, "object");
    EXPECT_TRUE(deleted);
}

TEST(MutableDictionary, StoringItselfIsReportedAndDone) {
    HVMutableDictionary dictionary;
    dictionary.SetStringForKey("v", "k");
    hvtest::LogCapture log;
    dictionary.SetDictionaryForKey(dictionary, "self");
    ASSERT_EQ(log.messages().size(), 1u);
    EXPECT_EQ(log.messages()[0], "HVMutableDictionary::SetDictionaryForKey invalid to add yourself to yourself.");
    EXPECT_EQ(dictionary.ObjectForKey("self").Ref(), dictionary.Ref());
    // Break the cycle so that the dictionary can be freed.
    dictionary.RemoveObjectForKey("self");
    EXPECT_EQ(dictionary.RetainCount(), 1u);
}

TEST(MutableDictionary, RemovingKeys) {
    HVMutableDictionary dictionary;
    dictionary.SetStringForKey("1", "a");
    dictionary.SetStringForKey("2", "b");
    dictionary.SetStringForKey("3", "c");
    dictionary.RemoveObjectsForKeys(arrayOf({HVString("x"), HVString("y")}));
    EXPECT_EQ(dictionary.Count(), 3u);
    dictionary.RemoveObjectsForKeys(arrayOf({HVString("a"), HVString("c")}));
    EXPECT_EQ(dictionary.Count(), 1u);
    EXPECT_EQ(text(dictionary.StringForKey("b")), "2");
    dictionary.RemoveAllObjects();
    EXPECT_TRUE(dictionary.IsEmpty());

    HVMutableDictionary empty;
    empty.RemoveObjectForKey("a");
    empty.RemoveAllObjects();
    EXPECT_EQ(empty.Ref(), HVMutableDictionary::SharedEmptyObject());
}

TEST(MutableDictionary, AddingDictionaries) {
    HVMutableDictionary receiver;
    HVDictionary source = HVDictionary::DictionaryWithObjectForKey(HVString("v"), "k");
    receiver.AddDictionary(source);
    EXPECT_NE(receiver.Ref(), source.Ref());
    EXPECT_TRUE(receiver.IsMutable());
    EXPECT_EQ(text(receiver.StringForKey("k")), "v");

    receiver.SetStringForKey("old", "o");
    HVMutableDictionary more;
    more.SetStringForKey("new", "o");
    more.SetNumberForKey(1, "n");
    receiver += more;
    EXPECT_EQ(receiver.Count(), 3u);
    EXPECT_EQ(text(receiver.StringForKey("o")), "new");

    HVDictionary before = receiver.Copy();
    receiver.AddDictionary(before);  // equal contents: nothing changes
    EXPECT_TRUE(receiver == before);
    receiver.AddDictionary(HVDictionary());
    EXPECT_EQ(receiver.Count(), 3u);
}

TEST(MutableDictionary, ConversionsAndParsing) {
    HVMutableDictionary parsed(hvtest::bytes("<key>a</key><string>b</string>"));
    EXPECT_TRUE(parsed.IsMutable());
    parsed.SetStringForKey("d", "c");
    EXPECT_EQ(parsed.Count(), 2u);

    hvtest::LogCapture log;
    parsed = hvtest::bytes("<string>not a dictionary</string>");
    EXPECT_EQ(parsed.Count(), 2u);

    HVMutableDictionary fromObject = HVMutableDictionary::MutableDictionaryFromObject(HVObject::Create(parsed.Ref()));
    EXPECT_EQ(fromObject.Ref(), parsed.Ref());
    HVDictionary immutable = parsed.Copy();
    HVMutableDictionary copied(static_cast<const HVObject&>(immutable));
    EXPECT_NE(copied.Ref(), immutable.Ref());
    EXPECT_TRUE(copied.IsMutable());

    log.clear();
    HVMutableDictionary refused(static_cast<const HVObject&>(HVString("s")));
    EXPECT_EQ(refused.Ref(), HVMutableDictionary::SharedEmptyObject());
    ASSERT_EQ(log.messages().size(), 1u);
    EXPECT_EQ(log.messages()[0],
              "Failed Assert! (0) - HVMutableDictionary::HVMutableDictionary(const HVObject& Object) parameter type "
              "unhandled.    Function:HVMutableDictionary::HVMutableDictionary File:HVMutableDictionary Line:109");

    HVMutableDictionary fromPlatform(static_cast<CFDictionaryRef>(immutable.Ref()));
    EXPECT_NE(fromPlatform.Ref(), immutable.Ref());
    EXPECT_TRUE(fromPlatform == immutable);
}
