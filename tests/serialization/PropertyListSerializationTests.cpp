// HVPropertyListSerialization: writing and reading XML property lists, the
// formats it does not handle, and its errors.
#include <halvane/serialization/HVPropertyListSerialization.h>

#include <halvane/core/HVNull.h>
#include <halvane/errors/HVError.h>

#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

#include <string>

#include "support/LogCapture.h"

namespace {

std::string text(const HVString& string) { return std::string(string); }

std::string textOf(const HVData& data) {
    return std::string(static_cast<const char*>(data.Bytes()), size_t(data.Length()));
}

HVData bytes(const std::string& text) { return HVData::DataWithBytesOfLength(text.data(), text.size()); }

HVArray numbers() {
    HVMutableArray array;
    array.AddNumber(1);
    array.AddNumber(2);
    return array.Copy();
}

const char* const kNotHandled =
    "HVPropertyListSerialization::DataWithPropertyListUsingFormat - Format not handled; defaulting to XML";

}  // namespace

TEST(PropertyListSerialization, WritingXML) {
    hvtest::LogCapture log;
    HVError error = HVError::ErrorWithCodeDescriptionAndDomain(9, "earlier", "D");
    HVData data = HVPropertyListSerialization::DataWithArrayPropertyListUsingFormat(numbers(),
                                                                                    HVPropertyListXMLFormat_v1_0, error);
    EXPECT_FALSE(error.IsError());  // cleared on every call
    EXPECT_EQ(error.Ref(), nullptr);
    EXPECT_EQ(textOf(data),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
              "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
              "<plist version=\"1.0\">\n<array>\n\t<integer>1</integer>\n\t<integer>2</integer>\n</array>\n</plist>\n");
    EXPECT_TRUE(log.messages().empty());

    // Another format is logged and written as XML all the same.
    HVData binary = HVPropertyListSerialization::DataWithPropertyListUsingFormat(numbers(),
                                                                                 HVPropertyListBinaryFormat_v1_0);
    EXPECT_EQ(textOf(binary), textOf(data));
    ASSERT_EQ(log.messages().size(), 1u);
    EXPECT_EQ(log.messages()[0], kNotHandled);
}

TEST(PropertyListSerialization, ObjectsAPropertyListCannotHold) {
    hvtest::LogCapture log;
    HVMutableArray array;
    array.AddString("s");
    array.AddObject(HVNull());
    HVError error;
    HVData data = HVPropertyListSerialization::DataWithArrayPropertyListUsingFormat(array, HVPropertyListXMLFormat_v1_0,
                                                                                    error);
    EXPECT_TRUE(data.IsEmpty());
    EXPECT_EQ(data.Ref(), HVData::SharedEmptyObject());
    EXPECT_EQ(error.Code(), 1);
    EXPECT_EQ(text(error.Domain()), "HVPropertyListSerializationDomain");
    EXPECT_EQ(text(error.LocalizedDescription()),
              "Property list invalid for format: 100 (property lists cannot contain some objects contained within)");
    ASSERT_EQ(log.messages().size(), 1u);
    EXPECT_EQ(log.messages()[0],
              "HVPropertyListSerialization::DataWithPropertyListUsingFormat - CFPropertyListCreateXMLData return NULL");

    EXPECT_FALSE(HVPropertyListSerialization::PropertyListIsValidForFormat(array, HVPropertyListXMLFormat_v1_0));
    EXPECT_TRUE(HVPropertyListSerialization::PropertyListIsValidForFormat(numbers(), HVPropertyListXMLFormat_v1_0));
    EXPECT_FALSE(HVPropertyListSerialization::PropertyListIsValidForFormat(HVObject(), HVPropertyListXMLFormat_v1_0));
}

TEST(PropertyListSerialization, ReadingData) {
    HVData data = HVPropertyListSerialization::DataWithArrayPropertyListUsingFormat(numbers(),
                                                                                    HVPropertyListXMLFormat_v1_0);
    HVError error = HVError::ErrorWithCodeDescriptionAndDomain(9, "earlier", "D");
    HVObject object = HVPropertyListSerialization::PropertyListWithData(data, error);
    EXPECT_FALSE(error.IsError());
    EXPECT_EQ(object.ObjectsActualClassType(), object.ObjectsClassType());
    EXPECT_TRUE(object.IsTypeOfClass(HVArrayClassType));
    EXPECT_TRUE(HVPropertyListSerialization::ArrayPropertyListWithData(data) == numbers());

    HVPropertyListFormat format = HVPropertyListOpenStepFormat;
    hvtest::LogCapture log;
    HVArray read = HVPropertyListSerialization::ArrayPropertyListWithDataAndFormatIdentifiedAs(data, format);
    EXPECT_EQ(read.Count(), 2u);
    EXPECT_EQ(format, HVPropertyListOpenStepFormat);  // only read, never set
    ASSERT_EQ(log.messages().size(), 1u);
    EXPECT_EQ(log.messages()[0], kNotHandled);
}

TEST(PropertyListSerialization, UnreadableData) {
    HVError error;
    HVObject object = HVPropertyListSerialization::PropertyListWithData(bytes("<array><integer>1</array>"), error);
    EXPECT_EQ(object.Ref(), nullptr);
    EXPECT_EQ(error.Code(), -1234);
    EXPECT_EQ(text(error.Domain()), "HVPropertyListSerializationDomain");
    EXPECT_FALSE(error.LocalizedDescription().IsEmpty());

    HVError emptyError;
    HVPropertyListSerialization::PropertyListWithData(HVData(), emptyError);
    EXPECT_EQ(emptyError.Code(), -1234);
}

TEST(PropertyListSerialization, TypedReadersConvertWhatTheyRead) {
    HVMutableDictionary dictionary;
    dictionary.SetStringForKey("v", "k");
    HVData xml = HVPropertyListSerialization::DataWithDictionaryPropertyListUsingFormat(dictionary,
                                                                                        HVPropertyListXMLFormat_v1_0);
    HVError error;
    HVDictionary read = HVPropertyListSerialization::DictionaryPropertyListWithData(xml, error);
    EXPECT_TRUE(read == dictionary);
    EXPECT_FALSE(read.IsMutable());

    hvtest::LogCapture log;
    HVArray array = HVPropertyListSerialization::ArrayPropertyListWithData(xml, error);
    EXPECT_EQ(array.Ref(), HVArray::SharedEmptyObject());
    ASSERT_EQ(log.messages().size(), 1u);
    EXPECT_EQ(log.messages()[0],
              "Failed Assert! (0) - HVArray::HVArray(const HVObject& Object) parameter type unhandled. The object "
              "type is: 10    Function:HVArray::HVArray File:HVArray Line:123");

    log.clear();
    HVDictionary fromArray = HVPropertyListSerialization::DictionaryPropertyListWithData(
        HVPropertyListSerialization::DataWithArrayPropertyListUsingFormat(numbers(), HVPropertyListXMLFormat_v1_0));
    EXPECT_EQ(fromArray.Ref(), HVDictionary::SharedEmptyObject());
    EXPECT_EQ(log.messages().size(), 1u);
}

TEST(PropertyListSerialization, DataOfDictionaries) {
    HVMutableDictionary dictionary;
    dictionary.SetNumberForKey(5, "n");
    HVData data = HVData::DataWithDictionary(dictionary);
    EXPECT_NE(textOf(data).find("<key>n</key>\n\t<integer>5</integer>"), std::string::npos);
    EXPECT_EQ(textOf(HVData(dictionary)), textOf(data));
    HVData assigned;
    assigned = dictionary;
    EXPECT_EQ(textOf(assigned), textOf(data));

    HVMutableData buffer;
    buffer.InitWithDictionary(dictionary);
    EXPECT_TRUE(buffer.IsMutable());
    EXPECT_EQ(textOf(buffer), textOf(data));
    HVMutableData fromObject(static_cast<const HVObject&>(dictionary));
    EXPECT_EQ(textOf(fromObject), textOf(data));

    hvtest::LogCapture log;
    HVMutableDictionary withNull;
    withNull.SetObjectForKey(HVNull(), "n");
    EXPECT_TRUE(HVData::DataWithDictionary(withNull).IsEmpty());
}
