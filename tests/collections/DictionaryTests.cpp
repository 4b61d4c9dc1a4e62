// HVDictionary: the two lookup families and their reports, lenient
// conversions, property-list parsing, files, enumerators and key lists.
#include <halvane/collections/HVDictionary.h>
#include <halvane/core/HVNull.h>
#include <halvane/errors/HVError.h>
#include <halvane/errors/HVException.h>

#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>

#include "CollectionTestSupport.h"
#include "support/LogCapture.h"

using hvtest::arrayOf;
using hvtest::text;

namespace {

HVDictionary sample() {
    HVMutableDictionary entries;
    entries.SetStringForKey("text", "string");
    entries.SetNumberForKey(42, "number");
    entries.SetBoolForKey(true, "flag");
    entries.SetStringForKey("YES", "yes");
    entries.SetDataForKey(hvtest::bytes(std::string("bytes\0tail", 10)), "data");
    entries.SetObjectForKey(HVNull(), "null");
    return entries.Copy();
}

std::string sortedKeys(const HVArray& keys) {
    HVArray sorted = keys.SortedArrayUsingFunctionAndContext(
        [](const void* a, const void* b, void*) {
            return CFStringCompare(static_cast<CFStringRef>(a), static_cast<CFStringRef>(b), 0);
        },
        nullptr);
    return text(sorted.ComponentsJoinedByString(","));
}

// A scratch directory removed with its files at the end of the test.
class TemporaryDirectory {
public:
    TemporaryDirectory() {
        char pattern[] = "/tmp/hvdictionary-XXXXXX";
        path_ = mkdtemp(pattern);
    }
    ~TemporaryDirectory() {
        for (const std::string& file : files_) std::remove(file.c_str());
        rmdir(path_.c_str());
    }
    std::string file(const std::string& name) {
        files_.push_back(path_ + "/" + name);
        return files_.back();
    }

private:
    std::string path_;
    std::vector<std::string> files_;
};

}  // namespace

TEST(Dictionary, MissingKeysInBothFamilies) {
    HVDictionary dictionary = sample();
    hvtest::LogCapture log;
    HVError error;
    HVString required = dictionary.StringForExistingKey("absent", error);
    EXPECT_TRUE(required.IsNull());
    EXPECT_EQ(error.Code(), HVNotFoundError);
    EXPECT_EQ(text(error.Domain()), "HalvaneDomain");
    EXPECT_EQ(text(error.LocalizedDescription()), "Key not contained in dictionary.");

    HVError optionalError;
    HVString optional = dictionary.StringForKey("absent", optionalError);
    EXPECT_EQ(optional.Ref(), HVString::SharedEmptyObject());
    EXPECT_EQ(optionalError.Code(), HVNotFoundError);

    EXPECT_TRUE(dictionary.StringForExistingKey("absent").IsNull());
    EXPECT_EQ(dictionary.StringForKey("absent").Ref(), HVString::SharedEmptyObject());
    EXPECT_EQ(dictionary.ArrayForKey("absent").Ref(), HVArray::SharedEmptyObject());
    EXPECT_EQ(dictionary.MutableDictionaryForKey("absent").Ref(), HVMutableDictionary::SharedEmptyObject());
    EXPECT_TRUE(dictionary.NumberForExistingKey("absent").IsNull());
    EXPECT_EQ(HVDictionary().NumberForKey("absent").Ref(), HVNumber::SharedEmptyObject());
    EXPECT_EQ(dictionary.ObjectForKey("absent").Ref(), nullptr);
    EXPECT_EQ(dictionary.ObjectForExistingKey("absent").Ref(), nullptr);
    EXPECT_EQ(dictionary.ClassTypeOfObjectForKey("absent"), HVObjectClassType);
    EXPECT_TRUE(log.messages().empty());
}

TEST(Dictionary, NullValuesCountAsMissingWithoutAnError) {
    HVDictionary dictionary = sample();
    HVError error;
    EXPECT_TRUE(dictionary.StringForExistingKey("null", error).IsNull());
    EXPECT_TRUE(dictionary.ArrayForExistingKey("null", error).IsNull());
    EXPECT_EQ(dictionary.DataForKey("null", error).Ref(), HVData::SharedEmptyObject());
    EXPECT_FALSE(error.IsError());
    EXPECT_TRUE(dictionary.IsMatchingClassTypeOfObjectForKey(HVNullClassType, "null"));
}

TEST(Dictionary, WrongTypesAreReportedByTheRequiredFormOnly) {
    HVDictionary dictionary = sample();
    hvtest::LogCapture log;
    HVError error;
    EXPECT_TRUE(dictionary.StringForExistingKey("number", error).IsNull());
    EXPECT_EQ(error.Code(), HVTypeMismatchError);
    EXPECT_EQ(text(error.LocalizedDescription()), "Object type does not match the object type requested.");
    EXPECT_EQ(hvtest::failureReason(error), "Object type with key number is a HVNumber.");

    HVError bool_;
    EXPECT_TRUE(dictionary.NumberForExistingKey("flag", bool_).IsNull());
    EXPECT_EQ(hvtest::failureReason(bool_), "Object type with key flag is a HVBool.");

    EXPECT_TRUE(dictionary.StringForKey("number").IsEmpty());
    EXPECT_TRUE(log.messages().empty());

    EXPECT_TRUE(dictionary.StringForExistingKey("number").IsNull());
    EXPECT_TRUE(dictionary.ArrayForExistingKey("string").IsNull());
    EXPECT_TRUE(dictionary.MutableDataForExistingKey("number").IsNull());
    EXPECT_TRUE(dictionary.NumberForExistingKey("flag").IsNull());
    std::vector<std::string> messages = log.messages();
    ASSERT_EQ(messages.size(), 4u);
    const std::string condition = "(! error.IsError()) || (error.Code() == HVHalvaneErrors::HVNotFoundError)";
    hvtest::expectAssertionLine(messages[0], condition, "Object type with key number is a HVNumber.",
                                "HVDictionary::StringForExistingKey", "HVDictionary", 1229);
    hvtest::expectAssertionLine(messages[1], condition, "Object type with key string is a HVString.",
                                "HVDictionary::ArrayForExistingKey", "HVDictionary", 551);
    hvtest::expectAssertionLine(messages[2], condition, "Object type with key number is a HVNumber.",
                                "HVDictionary::MutableDataForExistingKey", "HVDictionary", 782);
    hvtest::expectAssertionLine(messages[3], condition, "Object type with key flag is a HVBool.",
                                "HVDictionary::NumberForExistingKey", "HVDictionary", 1039);
}

TEST(Dictionary, DatesValuesGeometryAndRetainedObjectsForKeys) {
    HVDate date = HVDate::DateWithTimeIntervalSinceReferenceDate(727012800.0);
    auto* object = new hvtest::Carried;
    HVMutableDictionary dictionary(sample());
    dictionary.SetDateForKey(date, "date");
    dictionary.SetStringForKey("{1,2}", "point");
    dictionary.SetDataForKey(hvtest::bytes("{3,4}"), "bytes");
    dictionary.SetRetainedObjectForKey(object, "object");
    HVRetainedObject::Release(object);

    HVError error;
    EXPECT_EQ(dictionary.DateForExistingKey("date", error).Ref(), date.Ref());
    EXPECT_TRUE(dictionary.PointForExistingKey("point", error) == HVPoint(1, 2));
    EXPECT_TRUE(dictionary.SizeForKey("bytes", error) == HVSize(3, 4));  // data is read as text first
    EXPECT_EQ(dictionary.RetainedObjectForKey("object", error), object);
    EXPECT_TRUE(dictionary.ValueForExistingKey("null", error).IsNull());
    EXPECT_FALSE(error.IsError());

    EXPECT_TRUE(dictionary.DateForExistingKey("absent", error).IsNull());
    EXPECT_EQ(error.Code(), HVNotFoundError);
    EXPECT_EQ(dictionary.ValueForKey("absent").Ref(), HVValue::SharedEmptyObject());
    // A missing key is a type mismatch for geometry, naming the string class.
    EXPECT_TRUE(dictionary.RectForKey("absent", error).IsEmpty());
    EXPECT_EQ(error.Code(), HVTypeMismatchError);
    EXPECT_EQ(hvtest::failureReason(error), "Object type with key absent is a HVString.");
    EXPECT_TRUE(dictionary.PointForExistingKey("number", error).IsEmpty());
    EXPECT_EQ(hvtest::failureReason(error), "Object type with key number is a HVString.");
    EXPECT_EQ(dictionary.RetainedObjectForKey("number", error), nullptr);
    EXPECT_EQ(hvtest::failureReason(error), "Object type with key number is a HVNumber.");

    hvtest::LogCapture log;
    EXPECT_TRUE(dictionary.DateForKey("number").IsEmpty());
    EXPECT_TRUE(dictionary.PointForKey("absent").IsEmpty());
    EXPECT_EQ(dictionary.RetainedObjectForKey("number"), nullptr);
    EXPECT_TRUE(dictionary.DateForExistingKey("absent").IsNull());
    EXPECT_TRUE(dictionary.ValueForExistingKey("date").IsNull());
    EXPECT_TRUE(dictionary.PointForExistingKey("absent").IsEmpty());
    EXPECT_TRUE(dictionary.RectForExistingKey("null").IsEmpty());
    std::vector<std::string> messages = log.messages();
    ASSERT_EQ(messages.size(), 3u);
    const char* const condition = "(! error.IsError()) || (error.Code() == HVHalvaneErrors::HVNotFoundError)";
    hvtest::expectAssertionLine(messages[0], condition, "Object type with key date is a HVDate.",
                                "HVDictionary::ValueForExistingKey", "HVDictionary", 1287);
    EXPECT_EQ(messages[1],
              "Failed Assert! ((! error.IsError()) || (error.Code() == HVHalvaneErrors::HVNotFoundError)) - Error "
              "Domain=HalvaneDomain Code=20004 \"Object type does not match the object type requested.\" "
              "UserInfo={NSLocalizedFailureReason=Object type with key absent is a HVString., "
              "NSLocalizedDescription=Object type does not match the object type requested.}    "
              "Function:HVDictionary::PointForExistingKey File:HVDictionary Line:1085");
    hvtest::expectAssertionLine(messages[2], condition, "Object type with key null is a HVString.",
                                "HVDictionary::RectForExistingKey", "HVDictionary", 1121);
}

TEST(Dictionary, LenientConversions) {
    HVDictionary dictionary = sample();
    HVError error;
    EXPECT_EQ(dictionary.BoolForExistingKey("yes", error).Ref(), kCFBooleanTrue);
    EXPECT_EQ(dictionary.BoolForExistingKey("string", error).Ref(), kCFBooleanFalse);
    EXPECT_EQ(dictionary.BoolForExistingKey("number", error).Ref(), kCFBooleanTrue);
    // Data read as a zero-terminated text: the text ends at the zero.
    EXPECT_EQ(text(dictionary.StringForExistingKey("data", error)), "bytes");
    EXPECT_EQ(text(HVString(dictionary.DataForExistingKey("string", error))), "text");
    HVMutableData mutableText = dictionary.MutableDataForExistingKey("string", error);
    EXPECT_TRUE(mutableText.IsMutable());
    EXPECT_EQ(mutableText.Length(), 4u);
    EXPECT_FALSE(error.IsError());

    HVDictionary inner = HVDictionary::DictionaryWithObjectForKey(HVString("v"), "k");
    HVMutableData plist = HVDictionary::DictionaryWithObjectForKey(inner, "inner").MutableDataForExistingKey("inner", error);
    EXPECT_TRUE(plist.IsMutable());
    EXPECT_NE(text(HVString(plist)).find("<dict>\n\t<key>k</key>\n\t<string>v</string>\n</dict>"), std::string::npos);
    EXPECT_FALSE(error.IsError());
}

TEST(Dictionary, DictionariesFromDataAndTextValues) {
    HVMutableDictionary inner;
    inner.SetStringForKey("b", "a");
    HVData xml = HVData::DataWithDictionary(inner);
    HVMutableDictionary holder;
    holder.SetDataForKey(xml, "data");
    holder.SetStringForKey(HVString(xml), "text");
    holder.SetDictionaryForKey(inner, "mutable");

    HVError error;
    EXPECT_EQ(text(holder.DictionaryForExistingKey("data", error).StringForKey("a")), "b");
    EXPECT_EQ(text(holder.DictionaryForExistingKey("text", error).StringForKey("a")), "b");
    HVMutableDictionary parsed = holder.MutableDictionaryForExistingKey("data", error);
    EXPECT_TRUE(parsed.IsMutable());
    parsed.SetStringForKey("d", "c");
    EXPECT_EQ(parsed.Count(), 2u);
    EXPECT_FALSE(error.IsError());

    HVDictionary frozen = holder.DictionaryForKey("mutable");
    EXPECT_NE(frozen.Ref(), inner.Ref());
    EXPECT_FALSE(frozen.IsMutable());
    EXPECT_EQ(holder.MutableDictionaryForKey("mutable").Ref(), inner.Ref());
}

TEST(Dictionary, ParsingDataAndFramelessText) {
    hvtest::LogCapture log;
    HVDictionary dictionary(hvtest::bytes("<key>a</key><string>b</string>"));
    EXPECT_EQ(dictionary.Count(), 1u);
    EXPECT_EQ(text(dictionary.StringForKey("a")), "b");
    EXPECT_FALSE(dictionary.IsMutable());
    EXPECT_TRUE(log.messages().empty());

    HVDictionary fromText = HVString("<dict><key>k</key><integer>3</integer></dict>");
    EXPECT_EQ(fromText.NumberForKey("k").IntValue(), 3);

    HVDictionary kept = dictionary;
    kept = hvtest::bytes("<string>x</string>");
    EXPECT_EQ(kept.Ref(), dictionary.Ref());
    std::vector<std::string> messages = log.messages();
    ASSERT_FALSE(messages.empty());
    EXPECT_EQ(messages.back(), "HVDictionary::operator=(const HVData&) The data is not a dictionary");

    log.clear();
    kept = hvtest::bytes("<dict><key>unterminated");
    EXPECT_EQ(kept.Ref(), dictionary.Ref());
    messages = log.messages();
    ASSERT_FALSE(messages.empty());
    EXPECT_EQ(messages.front().rfind("HVDictionary::operator=(const HVData&) had an error, it was ", 0), 0u)
        << messages.front();
}

TEST(Dictionary, ConstructionFromObjects) {
    HVMutableDictionary source;
    source.SetStringForKey("v", "k");
    HVDictionary copy(source);
    EXPECT_NE(copy.Ref(), source.Ref());
    source.SetStringForKey("w", "k2");
    EXPECT_EQ(copy.Count(), 1u);
    EXPECT_EQ(HVDictionary::DictionaryFromObject(HVObject::Create(copy.Ref())).Ref(), copy.Ref());
    EXPECT_EQ(HVDictionary(HVObject{}).Ref(), nullptr);

    hvtest::LogCapture log;
    HVDictionary refused(static_cast<const HVObject&>(HVNumber(1)));
    EXPECT_EQ(refused.Ref(), HVDictionary::SharedEmptyObject());
    ASSERT_EQ(log.messages().size(), 1u);
    EXPECT_EQ(log.messages()[0],
              "Failed Assert! (0) - HVDictionary::HVDictionary(const HVObject& Object) parameter type unhandled.    "
              "Function:HVDictionary::HVDictionary File:HVDictionary Line:215");
}

TEST(Dictionary, ObjectsForKeys) {
    HVDictionary first = HVDictionary::DictionaryWithObjectsForKeys(arrayOf({HVNumber(1), HVNumber(2)}),
                                                                    arrayOf({HVString("k"), HVString("k")}));
    EXPECT_EQ(first.Count(), 1u);
    EXPECT_EQ(first.NumberForKey("k").IntValue(), 1);
    EXPECT_THROW(HVDictionary::DictionaryWithObjectsForKeys(arrayOf({HVNumber(1)}),
                                                            arrayOf({HVString("a"), HVString("b")})),
                 HVException);
    HVDictionary one = HVDictionary::DictionaryWithObjectForKey(HVString("v"), "k");
    EXPECT_EQ(text(one.StringForKey("k")), "v");
}

TEST(Dictionary, EnumeratorsAndKeyLists) {
    HVMutableDictionary dictionary;
    dictionary.SetStringForKey("1", "one");
    dictionary.SetStringForKey("2", "two");
    dictionary.SetNumberForKey(3, "three");
    HVEnumerator keys = dictionary.KeyEnumerator();
    dictionary.SetStringForKey("4", "four");  // not in the snapshot
    EXPECT_EQ(keys.AllObjects().Count(), 3u);

    EXPECT_EQ(sortedKeys(dictionary.AllKeys()), "four,one,three,two");
    hvtest::LogCapture log;
    HVArray values = dictionary.AllValues();
    EXPECT_EQ(values.Count(), 4u);
    // The number comes back as an empty string, and is reported.
    EXPECT_EQ(sortedKeys(values), ",1,2,4");
    EXPECT_EQ(log.messages().size(), 1u);

    dictionary.SetStringForKey("1", "uno");
    EXPECT_EQ(sortedKeys(dictionary.AllKeysForObject(HVString("1"))), "one,uno");
    EXPECT_TRUE(dictionary.AllKeysForObject(HVString("none")).IsEmpty());
    EXPECT_TRUE(HVDictionary().AllKeys().IsEmpty());
    EXPECT_TRUE(HVDictionary().ObjectEnumerator().NextObject().Ref() == nullptr);
}

TEST(Dictionary, NullsBecomeEmptyStringsAllTheWayDown) {
    HVMutableDictionary inner;
    inner.SetObjectForKey(HVNull(), "n");
    HVMutableDictionary outer;
    outer.SetObjectForKey(HVNull(), "n");
    outer.SetDictionaryForKey(inner, "inner");
    outer.SetArrayForKey(arrayOf({HVNull()}), "list");
    outer.SetNumberForKey(5, "five");
    HVDictionary replaced = HVDictionary::ReplaceNullWithEmptyString(outer);
    EXPECT_FALSE(replaced.IsMutable());
    EXPECT_EQ(replaced.ClassTypeOfObjectForKey("n"), HVStringClassType);
    EXPECT_EQ(replaced.DictionaryForKey("inner").ClassTypeOfObjectForKey("n"), HVStringClassType);
    EXPECT_EQ(replaced.ArrayForKey("list").ClassTypeOfObjectAtIndex(0), HVStringClassType);
    EXPECT_EQ(replaced.NumberForKey("five").IntValue(), 5);
    EXPECT_EQ(inner.ClassTypeOfObjectForKey("n"), HVNullClassType);
}

TEST(Dictionary, PropertyListFiles) {
    TemporaryDirectory directory;
    HVMutableDictionary dictionary;
    dictionary.SetStringForKey("value", "key");
    dictionary.SetArrayForKey(arrayOf({HVNumber(1), HVBool(false)}), "list");
    std::string path = directory.file("settings.plist");
    EXPECT_TRUE(dictionary.WriteToFile(path));
    std::ifstream written(path);
    std::stringstream contents;
    contents << written.rdbuf();
    EXPECT_EQ(contents.str().rfind("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n", 0), 0u);
    EXPECT_NE(contents.str().find("<key>key</key>\n\t<string>value</string>"), std::string::npos);

    HVDictionary read = HVDictionary::DictionaryWithContentsOfFile(path);
    EXPECT_TRUE(read == dictionary);
    EXPECT_EQ(read.ArrayForKey("list").Count(), 2u);

    // A file written elsewhere with a bare inner text is read too.
    std::string frameless = directory.file("frameless.plist");
    std::ofstream(frameless) << "<key>a</key><integer>1</integer>";
    EXPECT_EQ(HVDictionary::DictionaryWithContentsOfFile(frameless).NumberForKey("a").IntValue(), 1);

    EXPECT_TRUE(HVDictionary::DictionaryWithContentsOfFile(directory.file("missing.plist")).IsEmpty());
    EXPECT_TRUE(HVDictionary::DictionaryWithContentsOfFile("").IsEmpty());
    EXPECT_FALSE(dictionary.WriteToFile(""));
    EXPECT_TRUE(dictionary.WriteToFileAtomically(directory.file("again.plist")));

    // A dictionary that is no property list leaves the file as it was.
    HVMutableDictionary withNull;
    withNull.SetObjectForKey(HVNull(), "n");
    EXPECT_FALSE(withNull.WriteToFile(path));
    EXPECT_TRUE(HVDictionary::DictionaryWithContentsOfFile(path) == dictionary);
}

// Property-list files written by other software: read through the
// dictionary's file reader, written back by ours, and read again equal.
TEST(Dictionary, PropertyListFilesWrittenElsewhere) {
    const char* shared = std::getenv("HALVANE_SHARED_DIR");
    std::string corpus = shared != nullptr ? std::string(shared) + "/corpus/plist/" : std::string();
    if (corpus.empty() || !std::ifstream(corpus + "Info.plist")) {
        GTEST_SKIP() << "HALVANE_SHARED_DIR/corpus/plist is not available";
    }
    TemporaryDirectory directory;

    HVDictionary info = HVDictionary::DictionaryWithContentsOfFile(corpus + "Info.plist");
    EXPECT_EQ(info.Count(), 11u);
    EXPECT_EQ(text(info.StringForKey("CFBundleIdentifier")), "org.swift.TestFoundation");
    EXPECT_EQ(text(info.StringForKey("CFBundleSignature")), "????");
    // An empty string value is present, and differs from a missing key.
    HVError error;
    EXPECT_TRUE(info.StringForExistingKey("NSPrincipalClass", error).IsEmpty());
    EXPECT_FALSE(info.StringForExistingKey("NSPrincipalClass", error).IsNull());
    EXPECT_FALSE(error.IsError());

    HVDictionary test = HVDictionary::DictionaryWithContentsOfFile(corpus + "Test.plist");
    HVArray words = test.ArrayForKey("Baz");
    ASSERT_EQ(words.Count(), 3u);
    EXPECT_EQ(text(words.StringAtIndex(2)), "lists");

    HVDictionary urls = HVDictionary::DictionaryWithContentsOfFile(corpus + "NSURLTestData.plist");
    HVArray parsing = urls.ArrayForKey("ParsingTests");
    ASSERT_GT(parsing.Count(), 100u);
    EXPECT_EQ(text(parsing.DictionaryAtIndex(0).StringForKey("In-Title")), "NSURLWithString-parse-absolute-file-001");

    for (const HVDictionary& original : {info, test, urls}) {
        std::string copy = directory.file("copy.plist");
        ASSERT_TRUE(original.WriteToFile(copy));
        EXPECT_TRUE(HVDictionary::DictionaryWithContentsOfFile(copy) == original);
    }
}
