// HVJSONSerialization: the mapping in both directions, its errors and
// assertion lines, nesting limits, and a corpus of documents.
#include <halvane/serialization/HVJSONSerialization.h>

#include <halvane/collections/HVMutableArray.h>
#include <halvane/collections/HVMutableDictionary.h>
#include <halvane/core/HVNull.h>
#include <halvane/errors/HVError.h>
#include <halvane/time/HVDate.h>
#include <halvane/values/HVNumber.h>

#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "support/LogCapture.h"

namespace {

HVData bytes(const std::string& text) { return HVData::DataWithBytesOfLength(text.data(), text.size()); }

std::string textOf(const HVData& data) {
    return std::string(static_cast<const char*>(data.Bytes()), size_t(data.Length()));
}

std::string text(const HVString& string) { return std::string(string); }

// Equality of the objects held (the platform's), whatever the wrappers.
bool same(const HVObject& a, const HVObject& b) { return a == b; }

// A string of exactly these units (NUL and unpaired surrogates included).
HVString units(const std::u16string& text) {
    HVString string;
    string.AssignAndTakeOwnership(CFStringCreateWithCharacters(nullptr, reinterpret_cast<const UniChar*>(text.data()),
                                                               CFIndex(text.size())));
    return string;
}

HVObject decode(const std::string& json, HVError& error) { return HVJSONSerialization::ObjectWithJSONData(bytes(json), error); }

void expectCodingError(const HVError& error, const char* description, const std::string& reason) {
    EXPECT_EQ(error.Code(), 20002);
    EXPECT_EQ(text(error.Domain()), "HalvaneDomain");
    EXPECT_EQ(text(error.LocalizedDescription()), description);
    EXPECT_EQ(text(error.LocalizedFailureReason()), reason);
}

// An array holding `levels` arrays nested in one another, the innermost
// holding `innermost`.
HVArray nestedArrays(unsigned levels, const HVObject& innermost) {
    HVMutableArray inner;
    inner.AddObject(innermost);
    HVArray array = inner.Copy();
    for (unsigned i = 1; i < levels; ++i) {
        HVMutableArray outer;
        outer.AddArray(array);
        array = outer.Copy();
    }
    return array;
}

}  // namespace

TEST(JSONSerialization, DecodesEachKindOfValue) {
    HVError error = HVError::ErrorWithCodeDescriptionAndDomain(7, "earlier", "D");
    HVObject object = decode(R"({"a": 1, "b": 2.5, "c": true, "d": null, "e": "\u00e9t\u00e9", "f": [1, [2, 3]]})", error);
    EXPECT_EQ(error.Code(), 7);  // written only on a failure
    EXPECT_EQ(object.ObjectsActualClassType(), HVDictionaryClassType);
    EXPECT_EQ(object.ObjectsClassType(), HVDictionaryClassType);
    HVDictionary dictionary(object);
    EXPECT_EQ(dictionary.Count(), 6u);
    HVNumber a(dictionary.ObjectForKey("a"));
    EXPECT_EQ(CFNumberGetType(a), CFNumberGetType(HVNumber(int(0))));
    EXPECT_EQ(a.IntValue(), 1);
    HVNumber b(dictionary.ObjectForKey("b"));
    EXPECT_TRUE(b.IsFloatType());
    EXPECT_EQ(b.DoubleValue(), 2.5);
    EXPECT_EQ(dictionary.ObjectForKey("c").Ref(), kCFBooleanTrue);
    EXPECT_EQ(dictionary.ObjectForKey("d").Ref(), kCFNull);
    EXPECT_TRUE(same(dictionary.ObjectForKey("e"), units(u"\u00e9t\u00e9")));
    HVArray f(dictionary.ObjectForKey("f"));
    ASSERT_EQ(f.Count(), 2u);
    EXPECT_EQ(f.ClassTypeOfObjectAtIndex(1), HVArrayClassType);
    EXPECT_EQ(HVArray(f.ObjectAtIndex(1)).Count(), 2u);
}

TEST(JSONSerialization, IntegersAreThirtyTwoBits) {
    HVError error;
    HVArray numbers(decode("[2147483647, -2147483648, 3000000000, 5000000000, -5000000000, 18446744073709551615, "
                           "1e3, 123456789012345678901234567890]",
                           error));
    ASSERT_FALSE(error.IsError());
    ASSERT_EQ(numbers.Count(), 8u);
    auto number = [&](unsigned i) { return HVNumber(numbers.ObjectAtIndex(i)); };
    EXPECT_EQ(number(0).IntValue(), 2147483647);
    EXPECT_EQ(number(1).IntValue(), -2147483647 - 1);
    // Above the signed range: unsigned 32-bit numbers, cut to 32 bits.
    EXPECT_EQ(CFNumberGetType(number(2)), CFNumberGetType(HVNumber(0u)));
    EXPECT_EQ(number(2).UnsignedLongLongValue(), 3000000000u);
    EXPECT_EQ(number(3).UnsignedLongLongValue(), 705032704u);
    EXPECT_EQ(CFNumberGetType(number(4)), CFNumberGetType(HVNumber(int(0))));
    EXPECT_EQ(number(4).LongLongValue(), -705032704);
    EXPECT_EQ(number(5).UnsignedLongLongValue(), 4294967295u);
    EXPECT_TRUE(number(6).IsFloatType());
    EXPECT_EQ(number(6).DoubleValue(), 1000.0);
    EXPECT_EQ(number(7).DoubleValue(), 1.2345678901234568e29);

    // Written back: integers as signed 32-bit values, floating numbers as reals.
    HVMutableArray written;
    written.AddObject(HVNumber(5000000000LL));
    written.AddObject(HVNumber(3000000000u));
    written.AddObject(HVNumber(1.0));
    written.AddObject(HVNumber(-0.25f));
    EXPECT_EQ(textOf(HVJSONSerialization::JSONDataWithArray(written)), "[ 705032704, -1294967296, 1.0, -0.25 ]\n");
}

TEST(JSONSerialization, WritesStyledText) {
    HVMutableDictionary inner;
    inner.SetObjectForKey(HVNull(), "none");
    HVMutableArray list;
    list.AddObject(HVNumber(1));
    list.AddObject(HVNumber(2.5));
    list.AddBool(HVBool(true));
    list.AddDictionary(inner.Copy());
    HVMutableDictionary root;
    root.SetArrayForKey(list.Copy(), "list");
    root.SetStringForKey(units(u"caf\u00e9 \U0001F600 \"q\"\n"), "name");
    root.SetDictionaryForKey(HVDictionary(), "empty");
    HVError error;
    HVData data = HVJSONSerialization::JSONDataWithDictionary(root, error);
    EXPECT_FALSE(error.IsError());
    EXPECT_EQ(textOf(data), "{\n"
                            "   \"empty\" : {},\n"
                            "   \"list\" : [\n"
                            "      1,\n"
                            "      2.5,\n"
                            "      true,\n"
                            "      {\n"
                            "         \"none\" : null\n"
                            "      }\n"
                            "   ],\n"
                            "   \"name\" : \"caf\\u00e9 \\ud83d\\ude00 \\\"q\\\"\\n\"\n"
                            "}\n");
    EXPECT_EQ(textOf(HVJSONSerialization::JSONDataWithObject(HVString("x"))), "\"x\"\n");
    EXPECT_EQ(textOf(HVJSONSerialization::JSONDataWithObject(HVNull())), "null\n");
    // Wrappers holding nothing write their class's empty value.
    HVArray nullArray;
    nullArray.Nullify();
    EXPECT_EQ(textOf(HVJSONSerialization::JSONDataWithArray(nullArray)), "[]\n");
}

TEST(JSONSerialization, NestedCollectionsRoundTrip) {
    HVMutableDictionary point;
    point.SetNumberForKey(HVNumber(1.5), "x");
    point.SetNumberForKey(HVNumber(-2), "y");
    HVMutableArray points;
    points.AddDictionary(point.Copy());
    points.AddDictionary(HVDictionary());
    points.AddArray(HVArray());
    points.AddString(units(u"\u00fc\u0000\U0001F30D"));
    HVMutableDictionary root;  // mutable wrappers are written like the others
    root.SetArrayForKey(points, "points");
    root.SetBoolForKey(HVBool(false), "closed");
    root.SetStringForKey(units(u"\u00c6r\u00f8"), units(u"\u00d8-key"));

    HVError error;
    HVData data = HVJSONSerialization::JSONDataWithObject(root, error);
    HVDictionary back = HVJSONSerialization::DictionaryWithJSONData(data, error);
    EXPECT_FALSE(error.IsError());
    EXPECT_TRUE(same(back, root));
    EXPECT_FALSE(back.IsMutable());

    HVMutableDictionary small;
    small.SetStringForKey("v", "k");
    EXPECT_TRUE(same(HVJSONSerialization::DictionaryWithJSONData(HVJSONSerialization::JSONDataWithDictionary(small)), small));
    EXPECT_TRUE(same(HVJSONSerialization::ArrayWithJSONData(HVJSONSerialization::JSONDataWithArray(points)), points));
}

TEST(JSONSerialization, StringsKeepTheirUnits) {
    HVError error;
    HVArray strings(decode(R"(["a\u0000b", "\udc00", "\ufeffx", "\ud83d\ude00", "tab\there"])", error));
    ASSERT_FALSE(error.IsError());
    EXPECT_TRUE(same(strings.ObjectAtIndex(0), units(std::u16string(u"a\0b", 3))));
    // An unpaired surrogate and a leading byte-order mark stay as they are.
    EXPECT_TRUE(same(strings.ObjectAtIndex(1), units(std::u16string(1, char16_t(0xDC00)))));
    EXPECT_TRUE(same(strings.ObjectAtIndex(2), units(u"\ufeffx")));
    EXPECT_TRUE(same(strings.ObjectAtIndex(3), units(u"\U0001F600")));
    EXPECT_TRUE(same(strings.ObjectAtIndex(4), HVString("tab\there")));
    // Text that is not well-formed UTF-8 reads as the platform reads it: a
    // stray 0xA9 byte is taken as U+FFFD.
    EXPECT_TRUE(same(HVArray(decode("[\"a\xA9" "\"]", error)).ObjectAtIndex(0), units(u"a\ufffd")));
    EXPECT_FALSE(error.IsError());

    // An unpaired surrogate is written as U+FFFD; a NUL unit is kept.
    HVMutableArray written;
    written.AddString(units(std::u16string{u'a', char16_t(0xD800), u'b'}));
    written.AddObject(strings.ObjectAtIndex(0));
    EXPECT_EQ(textOf(HVJSONSerialization::JSONDataWithArray(written)), "[ \"a\\ufffdb\", \"a\\u0000b\" ]\n");
}

TEST(JSONSerialization, EncodingRefusesOtherClasses) {
    hvtest::LogCapture log;
    HVError error;
    HVMutableArray array;
    array.AddString("s");
    array.AddData(bytes("\x01\x02"));
    HVData data = HVJSONSerialization::JSONDataWithArray(array, error);
    EXPECT_EQ(data.Ref(), HVData::SharedEmptyObject());
    expectCodingError(error, "Object failed to be encoded.", "Unable to encode an object of type HVData into JSON.");

    // The walk goes on past a refused member: the error names the last one.
    HVMutableDictionary dictionary;
    dictionary.SetObjectForKey(HVDate::Now(), "when");
    HVMutableArray both;
    both.AddData(bytes("x"));
    both.AddDictionary(dictionary);
    HVJSONSerialization::JSONDataWithObject(both, error);
    EXPECT_EQ(text(error.LocalizedFailureReason()), "Unable to encode an object of type HVDate into JSON.");

    HVJSONSerialization::JSONDataWithObject(HVObject(), error);
    EXPECT_EQ(text(error.LocalizedFailureReason()), "Unable to encode an object of type  into JSON.");
    EXPECT_TRUE(log.messages().empty());
}

TEST(JSONSerialization, DictionaryKeyWalkEndsAtAnEmptyKey) {
    HVMutableDictionary dictionary;
    for (const char* key : {"a", "b", "", "c", "d", "e"}) dictionary.SetNumberForKey(HVNumber(1), key);
    // Expected: the keys that the key enumerator hands out before "".
    HVMutableDictionary expected;
    HVEnumerator keys = dictionary.KeyEnumerator();
    for (HVString key = keys.NextStringObject(); key.Length() != 0; key = keys.NextStringObject()) {
        expected.SetNumberForKey(HVNumber(1), key);
    }
    HVDictionary written = HVJSONSerialization::DictionaryWithJSONData(HVJSONSerialization::JSONDataWithObject(dictionary));
    EXPECT_TRUE(same(written, expected));
    EXPECT_LT(written.Count(), 6u);

    // A key that is not a string is reported by the enumerator's accessor
    // and ends the walk as well.
    hvtest::LogCapture log;
    HVNumber five(5);
    const void* key = five.Ref();
    const void* value = CFSTR("v");
    CFDictionaryRef numeric = CFDictionaryCreate(nullptr, &key, &value, 1, &kCFTypeDictionaryKeyCallBacks,
                                                 &kCFTypeDictionaryValueCallBacks);
    HVError error;
    EXPECT_EQ(textOf(HVJSONSerialization::JSONDataWithObject(HVObject::Create(numeric), error)), "{}\n");
    CFRelease(numeric);
    EXPECT_FALSE(error.IsError());
    ASSERT_EQ(log.messages().size(), 1u);
    EXPECT_NE(log.messages()[0].find("Function:HVArray::StringAtIndex File:HVArray Line:617"), std::string::npos);
}

TEST(JSONSerialization, TextThatIsNotJSON) {
    const std::string huge(100000, '[');
    for (const std::string& input : {std::string(), std::string("   "), std::string("{\"a\": [1, 2"),
                                     std::string("@@@"), std::string("[1,]"), std::string("[\"\xff\"]"),
                                     std::string("\xef\xbb\xbf[1]"), std::string("{\"a\" 1}"), huge,
                                     huge + std::string(100000, ']')}) {
        SCOPED_TRACE(input.substr(0, 20));
        HVError error;
        HVObject object = decode(input, error);
        EXPECT_EQ(object.Ref(), nullptr);
        EXPECT_EQ(object.ObjectsClassType(), HVObjectClassType);
        expectCodingError(error, "Object failed to be decoded.", "Json::Reader failed to parse the supplied JSON data.");
    }
    // Trailing NUL bytes are dropped with the text, as for any string.
    HVError error;
    EXPECT_EQ(HVNumber(decode(std::string("42\0\0", 4), error)).IntValue(), 42);
    EXPECT_FALSE(error.IsError());
}

TEST(JSONSerialization, NestingLimit) {
    auto nested = [](unsigned levels, const char* open, const char* close) {
        std::string text;
        for (unsigned i = 0; i < levels; ++i) text += open;
        text += "0";
        for (unsigned i = 0; i < levels; ++i) text += close;
        return text;
    };
    HVError error;
    HVObject deepest = decode(nested(512, "[", "]"), error);
    EXPECT_FALSE(error.IsError());
    // (Too deep for the platform's equality: walked down by hand.)
    const void* level = deepest.Ref();
    for (unsigned i = 0; i < 512; ++i) {
        ASSERT_EQ(HVObject::ClassTypeNeededForObject(level), HVArrayClassType);
        ASSERT_EQ(CFArrayGetCount(static_cast<CFArrayRef>(level)), 1);
        level = CFArrayGetValueAtIndex(static_cast<CFArrayRef>(level), 0);
    }
    EXPECT_TRUE(same(HVObject::Create(level), HVNumber(0)));

    // One level more: the containers around it keep the members before it.
    HVArray partial(decode("[1, \"a\", " + nested(512, "[", "]") + ", 4]", error));
    expectCodingError(error, "Object failed to be decoded.", "The JSON data is nested more than 512 levels deep.");
    EXPECT_EQ(partial.Count(), 2u);
    EXPECT_TRUE(same(partial.ObjectAtIndex(1), HVString("a")));
    HVError objectError;
    HVDictionary members(decode("{\"c\": 3, \"a\": 1, \"b\": " + nested(512, "{\"k\":", "}") + "}", objectError));
    expectCodingError(objectError, "Object failed to be decoded.", "The JSON data is nested more than 512 levels deep.");
    EXPECT_EQ(members.Count(), 1u);  // members go by name: "a" only
    EXPECT_TRUE(same(members.ObjectForKey("a"), HVNumber(1)));

    EXPECT_EQ(HVJSONSerialization::JSONDataWithArray(nestedArrays(512, HVNull())).Length() > 0, true);
    HVError encodeError;
    HVData refused = HVJSONSerialization::JSONDataWithArray(nestedArrays(513, HVNull()), encodeError);
    EXPECT_EQ(refused.Length(), 0u);
    expectCodingError(encodeError, "Object failed to be encoded.",
                      "Unable to encode an object nested more than 512 levels deep into JSON.");
}

TEST(JSONSerialization, AssertionLines) {
    hvtest::LogCapture log;
    HVError error;
    HVJSONSerialization::ObjectWithJSONData(bytes("nope"), error);
    auto failed = [](const HVError& error) {
        return "Failed Assert! (! error.IsError()) - " + text(HVString::StringWithFormat("%@", error.Ref()));
    };
    const std::string described = failed(error);
    EXPECT_EQ(log.messages().size(), 0u);

    EXPECT_EQ(HVJSONSerialization::ObjectWithJSONData(bytes("nope")).Ref(), nullptr);
    EXPECT_TRUE(HVJSONSerialization::ArrayWithJSONData(bytes("nope")).IsNull());
    EXPECT_TRUE(HVJSONSerialization::DictionaryWithJSONData(bytes("nope")).IsNull());
    HVMutableArray withData;
    withData.AddData(bytes("x"));
    HVError encodeError;
    HVJSONSerialization::JSONDataWithObject(withData, encodeError);
    const std::string encodeDescribed = failed(encodeError);
    HVJSONSerialization::JSONDataWithObject(withData);
    HVJSONSerialization::JSONDataWithArray(withData);
    HVMutableDictionary dictionaryWithData;
    dictionaryWithData.SetDataForKey(bytes("x"), "k");
    HVJSONSerialization::JSONDataWithDictionary(dictionaryWithData, encodeError);
    const std::string dictionaryDescribed = failed(encodeError);
    HVJSONSerialization::JSONDataWithDictionary(dictionaryWithData);

    const std::vector<std::string> expected = {
        described + "    Function:HVJSONSerialization::ObjectWithJSONData File:HVJSONSerialization Line:197",
        described + "    Function:HVJSONSerialization::ArrayWithJSONData File:HVJSONSerialization Line:222",
        "Failed Assert! (decodedObject.ObjectsClassType() == HVDictionaryClassType)  "
        "Function:HVJSONSerialization::DictionaryWithJSONData File:HVJSONSerialization Line:244",
        described + "    Function:HVJSONSerialization::DictionaryWithJSONData File:HVJSONSerialization Line:237",
        encodeDescribed + "    Function:HVJSONSerialization::JSONDataWithObject File:HVJSONSerialization Line:252",
        encodeDescribed + "    Function:HVJSONSerialization::JSONDataWithArray File:HVJSONSerialization Line:279",
        dictionaryDescribed + "    Function:HVJSONSerialization::JSONDataWithDictionary File:HVJSONSerialization Line:292",
    };
    EXPECT_EQ(log.messages(), expected);

    // Decoded, but of the other kind: the class-type line, then the
    // collection's own report of the conversion.
    log.clear();
    EXPECT_EQ(HVJSONSerialization::ArrayWithJSONData(bytes("{}"), error).Count(), 0u);
    EXPECT_EQ(HVJSONSerialization::DictionaryWithJSONData(bytes("[1]")).Count(), 0u);
    const std::vector<std::string> mismatches = {
        "Failed Assert! (object.ObjectsClassType() == HVArrayClassType)  "
        "Function:HVJSONSerialization::ArrayWithJSONData File:HVJSONSerialization Line:229",
        "Failed Assert! (0) - HVArray::HVArray(const HVObject& Object) parameter type unhandled. The object type is: 10"
        "    Function:HVArray::HVArray File:HVArray Line:123",
        "Failed Assert! (decodedObject.ObjectsClassType() == HVDictionaryClassType)  "
        "Function:HVJSONSerialization::DictionaryWithJSONData File:HVJSONSerialization Line:244",
        "Failed Assert! (0) - HVDictionary::HVDictionary(const HVObject& Object) parameter type unhandled."
        "    Function:HVDictionary::HVDictionary File:HVDictionary Line:215",
    };
    EXPECT_EQ(log.messages(), mismatches);
}

TEST(JSONSerialization, CorpusDocumentsRoundTrip) {
    unsigned documents = 0;
    for (const auto& entry : std::filesystem::directory_iterator(HALVANE_JSON_CORPUS_DIR)) {
        if (entry.path().extension() != ".json") continue;
        SCOPED_TRACE(entry.path().filename().string());
        std::ifstream file(entry.path(), std::ios::binary);
        std::stringstream content;
        content << file.rdbuf();
        HVError error;
        HVObject decoded = decode(content.str(), error);
        ASSERT_FALSE(error.IsError()) << text(error.Description());
        ASSERT_EQ(decoded.ObjectsClassType(), HVDictionaryClassType);
        HVData written = HVJSONSerialization::JSONDataWithObject(decoded, error);
        ASSERT_FALSE(error.IsError()) << text(error.Description());
        EXPECT_TRUE(same(HVJSONSerialization::ObjectWithJSONData(written, error), decoded));
        EXPECT_FALSE(error.IsError());
        ++documents;
    }
    EXPECT_EQ(documents, 4u);

    // A few values, to be sure that the documents decode as written.
    HVError error;
    auto document = [&](const char* name) {
        std::ifstream file(std::filesystem::path(HALVANE_JSON_CORPUS_DIR) / name, std::ios::binary);
        std::stringstream content;
        content << file.rdbuf();
        return HVDictionary(decode(content.str(), error));
    };
    HVDictionary manifest = document("package-manifest.json");
    EXPECT_TRUE(same(HVArray(manifest.ObjectForKey("contributors")).ObjectAtIndex(0),
                     HVJSONSerialization::ObjectWithJSONData(
                         bytes(R"({"name": "Maren \u00d8stby", "email": "maren@example.org", "commits": 412})"))));
    HVDictionary settings = document("settings.json");  // comments are allowed
    EXPECT_EQ(HVNumber(HVDictionary(settings.ObjectForKey("editor")).ObjectForKey("fontSize")).DoubleValue(), 13.5);
    HVDictionary response = document("api-response.json");
    HVDictionary first(HVArray(response.ObjectForKey("data")).ObjectAtIndex(0));
    EXPECT_TRUE(same(first.ObjectForKey("title"), units(u"Caf\u00e9 Bl\u00e5b\u00e6r \u2014 \"Smaken av sommer\"")));
    EXPECT_TRUE(same(HVDictionary(first.ObjectForKey("reactions")).ObjectForKey(units(u"\U0001F44D")), HVNumber(17)));
    HVDictionary collection = document("feature-collection.json");
    EXPECT_EQ(HVArray(collection.ObjectForKey("features")).Count(), 3u);
    EXPECT_FALSE(error.IsError());
}
