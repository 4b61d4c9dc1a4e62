// The tagged text form of objects and the property-list document put round
// a fragment.
#include <halvane/collections/HVArray.h>
#include <halvane/core/HVNull.h>
#include <halvane/core/HVObject.h>
#include <halvane/text/HVString.h>
#include <halvane/values/HVBool.h>
#include <halvane/values/HVNumber.h>
#include <halvane/values/HVValue.h>

#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

#include "support/LogCapture.h"

namespace {

class TextProbe : public HVObject {
public:
    using HVObject::AddPropertyListFileText;
    using HVObject::RemovePropertyListFileText;
};

std::string text(const HVString& string) { return std::string(string); }

const char* const kDocumentHead =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?><!DOCTYPE plist PUBLIC \"-//Apple Computer//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\"><plist version=\"1.0\">";

}  // namespace

TEST(ObjectText, StringsBetweenQuotes) {
    HVString quoted(std::string("a\"b"));
    EXPECT_EQ(text(quoted.Serialize()), "\"a\"b\"");
    HVString read("old");
    read.Deserialize(quoted.Serialize());
    EXPECT_EQ(text(read), "a\"b");

    for (const char* malformed : {"abc", "\"abc", "abc\"", "\"", ""}) {
        HVString value("old");
        value.Deserialize(malformed);
        EXPECT_EQ(value.Ref(), HVString::SharedEmptyObject()) << malformed;
    }
    HVString empty("x");
    empty.Deserialize("\"\"");
    EXPECT_TRUE(empty.IsEmpty());
    EXPECT_TRUE(HVString("s").IsNativelyAllowedInPropertyList());
}

TEST(ObjectText, ObjectsFromTheirTaggedText) {
    HVObject string = HVObject::CreateObjectFromString("HVString:\"abc\"");
    EXPECT_EQ(string.ObjectsClassType(), HVStringClassType);
    EXPECT_EQ(text(HVString(string)), "abc");

    HVObject number = HVObject::CreateObjectFromString("HVNumber:12");
    EXPECT_EQ(number.ObjectsClassType(), HVNumberClassType);
    EXPECT_EQ(CFNumberGetType(static_cast<CFNumberRef>(number.Ref())), kCFNumberFloat64Type);
    EXPECT_EQ(HVNumber(number).DoubleValue(), 12.0);

    EXPECT_EQ(HVObject::CreateObjectFromString("HVBool:YES").Ref(), kCFBooleanTrue);
    EXPECT_EQ(HVObject::CreateObjectFromString("HVBool:no").Ref(), kCFBooleanFalse);
    EXPECT_EQ(HVObject::CreateObjectFromString("HVNull:<null>").Ref(), kCFNull);
    HVObject data = HVObject::CreateObjectFromString("HVData:<0aff>");
    EXPECT_EQ(data.ObjectsClassType(), HVDataClassType);
    EXPECT_EQ(CFDataGetLength(static_cast<CFDataRef>(data.Ref())), 2);

    // The payload is everything after the first colon.
    EXPECT_EQ(text(HVString(HVObject::CreateObjectFromString("HVString:\"a:b\""))), "a:b");
    // No colon: an empty payload.
    HVObject bare = HVObject::CreateObjectFromString("HVString");
    EXPECT_EQ(bare.ObjectsClassType(), HVStringClassType);
    EXPECT_TRUE(HVString(bare).IsEmpty());
}

TEST(ObjectText, TextsThatNameNoObject) {
    for (const char* unknown : {"String:\"abc\"", "hvString:\"a\"", "HVSomething:1", "HV", "", "HVObject:x"}) {
        HVObject object = HVObject::CreateObjectFromString(unknown);
        EXPECT_EQ(object.Ref(), nullptr) << unknown;
        EXPECT_EQ(object.ObjectsClassType(), HVObjectClassType) << unknown;
    }
    EXPECT_EQ(HVObject::CreateObjectFromString(HVString::SharedNullString()).Ref(), nullptr);
}

TEST(ObjectText, NullPayloadOtherThanItsTextIsReported) {
    hvtest::LogCapture log;
    EXPECT_EQ(HVObject::CreateObjectFromString("HVNull:nothing").Ref(), kCFNull);
    ASSERT_EQ(log.messages().size(), 1u);
    EXPECT_EQ(log.messages()[0],
              "Failed Assert! (SerializedObject.IsEqualToString(STR(\"<null>\")))    Function:HVNull::Deserialize "
              "File:HVNull Line:69");
}

TEST(ObjectText, PropertyListDocumentRoundTrip) {
    HVString wrapped = TextProbe::AddPropertyListFileText("<string>x</string>");
    EXPECT_EQ(text(wrapped), std::string(kDocumentHead) + "<string>x</string></plist>");
    EXPECT_EQ(text(TextProbe::AddPropertyListFileText(wrapped)), text(wrapped));
    EXPECT_EQ(text(TextProbe::RemovePropertyListFileText(wrapped)), "<string>x</string>");

    EXPECT_EQ(text(TextProbe::RemovePropertyListFileText("  \n<array/>\t\n")), "<array/>");
    EXPECT_EQ(text(TextProbe::RemovePropertyListFileText("<plist version=\"1.0\">\n\t<true/>\n</plist>\n")),
              "<true/>");
    // An empty plist element leaves the whole text (trimmed).
    EXPECT_EQ(text(TextProbe::RemovePropertyListFileText(" <plist></plist> ")), "<plist></plist>");
    // The documents the platform writes strip to their top element.
    HVString document = HVArray::ArrayWithObject(HVNumber(1)).Serialize();
    EXPECT_EQ(text(TextProbe::RemovePropertyListFileText(document)), "<array>\n\t<integer>1</integer>\n</array>");
}

TEST(ObjectText, ValuesAndRetainedObjectsFromTheirTaggedText) {
    int five = 5;
    HVValue value = HVValue::ValueWithBytesOfCType(&five, "int");
    HVObject read = HVObject::CreateObjectFromString(HVString("HVValue:") +
                                                     TextProbe::RemovePropertyListFileText(value.Serialize()));
    EXPECT_EQ(read.ObjectsClassType(), HVValueClassType);
    EXPECT_TRUE(read == value);
    // Retained objects have no wrapper to rebuild.
    EXPECT_EQ(HVObject::CreateObjectFromString("HVRetainedObject:<HVRetainedObject 0x1>").Ref(), nullptr);
}
