// The text forms of arrays and dictionaries: XML property-list text, tagged
// text for what a property list cannot hold, and round trips of nested
// collections.
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

TEST(CollectionText, DatesValuesAndGeometryRoundTrip) {
    double half = 2.5;
    HVValue value = HVValue::ValueWithBytesOfCType(&half, "double");
    HVMutableArray array;
    array.AddDate(HVDate::DateWithTimeIntervalSinceReferenceDate(727012800.0));
    array.AddValue(value);
    array.AddPoint(HVPoint(1, 2));
    array.AddRect(HVRect(1, 2, 3, 4));
    HVArray read;
    read.Deserialize(array.Serialize());
    EXPECT_TRUE(read == array);
    EXPECT_EQ(read.ClassTypeOfObjectAtIndex(1), HVValueClassType);
    EXPECT_TRUE(read.RectAtIndex(3) == HVRect(1, 2, 3, 4));

    // Beside an element the writer refuses, a value travels as tagged text.
    hvtest::LogCapture log;
    array.AddObject(HVNull());
    std::string written = text(array.Serialize());
    EXPECT_NE(written.find("\t<date>2024-01-15T12:00:00Z</date>\n\t<string>HVValue:&lt;array&gt;\n"
                           "\t&lt;string&gt;HVValue_Container_AX7&lt;/string&gt;\n"
                           "\t&lt;string&gt;double&lt;/string&gt;\n\t&lt;real&gt;2.5&lt;/real&gt;\n"
                           "&lt;/array&gt;</string>\n"),
              std::string::npos)
        << written;
    read.Deserialize(HVString(written));
    EXPECT_TRUE(read == array);

    HVMutableDictionary dictionary;
    dictionary.SetValueForKey(value, "value");
    dictionary.SetDateForKey(HVDate::DateWithTimeIntervalSinceReferenceDate(-1e9), "date");
    dictionary.SetSizeForKey(HVSize(5, 6), "size");
    dictionary.SetObjectForKey(HVNull(), "null");
    HVDictionary readDictionary;
    readDictionary.Deserialize(dictionary.Serialize());
    EXPECT_TRUE(readDictionary == dictionary);

    // A retained object is written as its description and, naming a class
    // without a wrapper, comes back as that string.
    auto* object = new hvtest::Carried;
    dictionary.SetRetainedObjectForKey(object, "object");
    HVRetainedObject::Release(object);
    readDictionary.Deserialize(dictionary.Serialize());
    EXPECT_EQ(text(readDictionary.StringForKey("object")).rfind("HVRetainedObject:<HVRetainedObject 0x", 0), 0u);
    EXPECT_TRUE(readDictionary.ValueForKey("value") == value);
}
