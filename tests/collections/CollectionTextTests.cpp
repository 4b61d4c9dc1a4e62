// The text forms of arrays and dictionaries: XML property-list text, tagged
// text for what a property list cannot hold, and round trips of nested
// collections, dates, boxed values, geometry and retained objects.
#include <halvane/collections/HVDictionary.h>
#include <halvane/core/HVNull.h>
#include <halvane/errors/HVError.h>

#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

#include "CollectionTestSupport.h"
#include "support/LogCapture.h"

using hvtest::arrayOf;
using hvtest::text;

TEST(CollectionText, PropertyListTypesGiveThePlainDocument) {
    HVArray array = arrayOf({HVString("a<b"), HVNumber(2), HVBool(true)});
    EXPECT_EQ(text(array.Serialize()),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
              "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
              "<plist version=\"1.0\">\n"
              "<array>\n"
              "\t<string>a&lt;b</string>\n"
              "\t<integer>2</integer>\n"
              "\t<true/>\n"
              "</array>\n"
              "</plist>\n");
    HVArray read;
    read.Deserialize(array.Serialize());
    EXPECT_TRUE(read == array);
    EXPECT_FALSE(read.IsMutable());
}

TEST(CollectionText, ForeignElementsTravelAsTaggedText) {
    hvtest::LogCapture log;
    HVArray array = arrayOf({HVString("s"), HVNull()});
    std::string written = text(array.Serialize());
    EXPECT_NE(written.find("\t<string>s</string>\n"), std::string::npos) << written;
    EXPECT_NE(written.find("\t<string>HVNull:&lt;null&gt;</string>\n"), std::string::npos) << written;
    // The first attempt, refused by the writer, is what is logged.
    ASSERT_EQ(log.messages().size(), 1u);
    EXPECT_EQ(log.messages()[0],
              "HVPropertyListSerialization::DataWithPropertyListUsingFormat - CFPropertyListCreateXMLData return NULL");

    HVArray read;
    read.Deserialize(HVString(written));
    ASSERT_EQ(read.Count(), 2u);
    EXPECT_EQ(text(read.StringAtIndex(0)), "s");
    EXPECT_EQ(read.ObjectAtIndex(1).Ref(), kCFNull);
}

TEST(CollectionText, NestedCollectionsRoundTrip) {
    hvtest::LogCapture log;
    HVMutableDictionary inner;
    inner.SetObjectForKey(HVNull(), "nothing");
    inner.SetStringForKey("text", "string");
    HVMutableDictionary outer;
    outer.SetDictionaryForKey(inner, "inner");
    outer.SetArrayForKey(arrayOf({HVNumber(1), arrayOf({HVNull(), HVString("deep")})}), "list");
    outer.SetDataForKey(hvtest::bytes("\x01\x02"), "data");

    HVDictionary read;
    read.Deserialize(outer.Serialize());
    EXPECT_EQ(read.Count(), 3u);
    HVDictionary readInner = read.DictionaryForKey("inner");
    EXPECT_EQ(readInner.ObjectForKey("nothing").Ref(), kCFNull);
    EXPECT_EQ(text(readInner.StringForKey("string")), "text");
    HVArray list = read.ArrayForKey("list");
    ASSERT_EQ(list.Count(), 2u);
    EXPECT_EQ(list.NumberAtIndex(0).IntValue(), 1);
    HVArray deep = list.ArrayAtIndex(1);
    ASSERT_EQ(deep.Count(), 2u);
    EXPECT_EQ(deep.ObjectAtIndex(0).Ref(), kCFNull);
    EXPECT_EQ(text(deep.StringAtIndex(1)), "deep");
    EXPECT_EQ(read.DataForKey("data").Length(), 2u);
    EXPECT_TRUE(read == outer);
}

TEST(CollectionText, StringsThatBeginWithTheTagPrefix) {
    // Plain strings that read as tagged text are rebuilt too (kept so);
    // those that name no object stay strings.
    HVArray array = arrayOf({HVString("HVNumber:12"), HVString("HVAC unit"), HVString("HVString:\"q\"")});
    HVArray read;
    read.Deserialize(array.Serialize());
    ASSERT_EQ(read.Count(), 3u);
    EXPECT_EQ(read.ClassTypeOfObjectAtIndex(0), HVNumberClassType);
    EXPECT_EQ(read.NumberAtIndex(0).DoubleValue(), 12.0);
    EXPECT_EQ(text(read.StringAtIndex(1)), "HVAC unit");
    EXPECT_EQ(text(read.StringAtIndex(2)), "q");

    // A date is made whatever its text: unreadable text is the empty date.
    HVArray dated;
    dated.Deserialize(arrayOf({HVString("HVDate rush")}).Serialize());
    EXPECT_EQ(dated.DateAtIndex(0).Ref(), HVDate::SharedEmptyObject());

    HVMutableDictionary dictionary;
    dictionary.SetStringForKey("HVBool:YES", "flag");
    HVDictionary readDictionary;
    readDictionary.Deserialize(dictionary.Serialize());
    EXPECT_EQ(readDictionary.ObjectForKey("flag").Ref(), kCFBooleanTrue);
}

TEST(CollectionText, EmptyAndUnreadableTexts) {
    HVArray array = arrayOf({HVString("kept")});
    array.Deserialize(HVString());
    EXPECT_EQ(array.Ref(), HVArray::SharedEmptyObject());

    HVMutableDictionary dictionary;
    dictionary.SetStringForKey("v", "k");
    dictionary.Deserialize(HVString());
    EXPECT_EQ(dictionary.Ref(), HVMutableDictionary::SharedEmptyObject());
    EXPECT_TRUE(dictionary.IsMutable());

    EXPECT_EQ(text(HVDictionary().Serialize()),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
              "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
              "<plist version=\"1.0\">\n<dict/>\n</plist>\n");

    hvtest::LogCapture log;
    HVArray fromDictionaryText;
    fromDictionaryText.Deserialize(HVDictionary::DictionaryWithObjectForKey(HVString("v"), "k").Serialize());
    EXPECT_TRUE(fromDictionaryText.IsEmpty());
    EXPECT_FALSE(log.messages().empty());
}

namespace {

const double kJanuary15Noon = 727012800.0;  // 2024-01-15 12:00:00 GMT

HVValue boxed(double number) { return HVValue::ValueWithBytesOfCType(&number, "double"); }

}  // namespace

TEST(CollectionText, DatesValuesAndGeometryInAPlainDocument) {
    // A value's container is an array a property list holds as it is.
    HVMutableArray array;
    array.AddDate(HVDate::DateWithTimeIntervalSinceReferenceDate(kJanuary15Noon));
    array.AddValue(boxed(2.5));
    array.AddPoint(HVPoint(1, 2));
    array.AddRect(HVRect(1, 2, 3, 4));
    std::string written = text(array.Serialize());
    EXPECT_NE(written.find("<array>\n"
                           "\t<date>2024-01-15T12:00:00Z</date>\n"
                           "\t<array>\n"
                           "\t\t<string>HVValue_Container_AX7</string>\n"
                           "\t\t<string>double</string>\n"
                           "\t\t<real>2.5</real>\n"
                           "\t</array>\n"
                           "\t<string>{1,2}</string>\n"
                           "\t<string>{{1,2},{3,4}}</string>\n"
                           "</array>\n"),
              std::string::npos)
        << written;

    HVArray read;
    read.Deserialize(HVString(written));
    EXPECT_TRUE(read == array);
    EXPECT_EQ(read.DateAtIndex(0).TimeIntervalSinceReferenceDate(), kJanuary15Noon);
    EXPECT_TRUE(read.ValueAtIndex(1) == boxed(2.5));
    EXPECT_TRUE(read.PointAtIndex(2) == HVPoint(1, 2));
    EXPECT_TRUE(read.RectAtIndex(3) == HVRect(1, 2, 3, 4));
}

TEST(CollectionText, ValuesTravelAsTaggedTextBesideForeignElements) {
    hvtest::LogCapture log;
    HVMutableArray array;
    array.AddValue(boxed(2.5));
    array.AddObject(HVNull());
    array.AddDate(HVDate::DateWithTimeIntervalSinceReferenceDate(kJanuary15Noon));
    array.AddSize(HVSize(3, 4));
    std::string written = text(array.Serialize());
    EXPECT_NE(written.find("<array>\n"
                           "\t<string>HVValue:&lt;array&gt;\n"
                           "\t&lt;string&gt;HVValue_Container_AX7&lt;/string&gt;\n"
                           "\t&lt;string&gt;double&lt;/string&gt;\n"
                           "\t&lt;real&gt;2.5&lt;/real&gt;\n"
                           "&lt;/array&gt;</string>\n"
                           "\t<string>HVNull:&lt;null&gt;</string>\n"
                           "\t<date>2024-01-15T12:00:00Z</date>\n"
                           "\t<string>{3,4}</string>\n"
                           "</array>\n"),
              std::string::npos)
        << written;

    HVArray read;
    read.Deserialize(HVString(written));
    ASSERT_EQ(read.Count(), 4u);
    EXPECT_EQ(read.ClassTypeOfObjectAtIndex(0), HVValueClassType);
    EXPECT_EQ(std::string(read.ValueAtIndex(0).CType()), "double");
    EXPECT_EQ(read.ObjectAtIndex(1).Ref(), kCFNull);
    EXPECT_TRUE(read == array);
}

TEST(CollectionText, DictionariesOfDatesValuesGeometryAndRetainedObjects) {
    hvtest::LogCapture log;
    auto* object = new hvtest::Carried;
    HVMutableDictionary dictionary;
    dictionary.SetDateForKey(HVDate::DateWithTimeIntervalSinceReferenceDate(kJanuary15Noon), "date");
    dictionary.SetValueForKey(boxed(-1), "value");
    dictionary.SetPointForKey(HVPoint(5, 6), "point");
    dictionary.SetRectForKey(HVRect(1, 2, 3, 4), "rect");
    dictionary.SetObjectForKey(HVNull(), "null");

    HVDictionary read;
    read.Deserialize(dictionary.Serialize());
    EXPECT_TRUE(read == dictionary);
    EXPECT_EQ(read.DateForKey("date").TimeIntervalSinceReferenceDate(), kJanuary15Noon);
    EXPECT_TRUE(read.ValueForKey("value") == boxed(-1));
    EXPECT_TRUE(read.PointForKey("point") == HVPoint(5, 6));
    EXPECT_TRUE(read.RectForKey("rect") == HVRect(1, 2, 3, 4));

    // A retained object is written as its description and, naming a class
    // without a wrapper, comes back as that string.
    dictionary.SetRetainedObjectForKey(object, "object");
    HVRetainedObject::Release(object);
    HVDictionary withObject;
    withObject.Deserialize(dictionary.Serialize());
    EXPECT_EQ(withObject.Count(), 6u);
    EXPECT_EQ(text(withObject.StringForKey("object")).rfind("HVRetainedObject:<HVRetainedObject 0x", 0), 0u)
        << text(withObject.StringForKey("object"));
    EXPECT_TRUE(withObject.ValueForKey("value") == boxed(-1));
}
