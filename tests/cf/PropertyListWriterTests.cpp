// Writing XML property lists: the exact layout of every kind of object, key
// order, the refusals and their messages, validity per format, deep copies.
#include "PropertyListTestSupport.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

using namespace cftest;
using namespace cftest::plist;
using namespace std::string_literals;

namespace {

// plist nested in `levels` arrays.
Owned<CFTypeRef> wrapped(CFTypeRef plist, int levels) {
    CFRetain(plist);
    for (int i = 0; i < levels; ++i) {
        CFArrayRef outer = CFArrayCreate(nullptr, &plist, 1, &kCFTypeArrayCallBacks);
        CFRelease(plist);
        plist = outer;
    }
    return own(plist);
}

std::string realText(double value) {
    return xml(number(kCFNumberFloat64Type, value));
}

std::string realDocument(const char* text) { return document(std::string("<real>") + text + "</real>\n"); }

}  // namespace

TEST(PropertyListWriter, ExampleDocumentByteForByte) {
    auto d = mutableDictionary();
    CFDictionarySetValue(d, CFSTR("name"), CFSTR("A&B"));
    CFDictionarySetValue(d, CFSTR("n"), number(kCFNumberSInt32Type, 5));
    CFDictionarySetValue(d, CFSTR("pi"), number(kCFNumberFloat64Type, 3.14));
    CFDictionarySetValue(d, CFSTR("ok"), kCFBooleanTrue);
    CFDictionarySetValue(d, CFSTR("list"), mutableArray());
    const UInt8 three[] = {1, 2, 3};
    CFDictionarySetValue(d, CFSTR("d"), own(CFDataCreate(nullptr, three, 3)));
    CFDictionarySetValue(d, CFSTR("when"), own(CFDateCreate(nullptr, 0)));
    auto sub = mutableArray();
    CFArrayAppendValue(sub, CFSTR("x"));
    CFArrayAppendValue(sub, number(kCFNumberFloat64Type, 2.0));
    CFDictionarySetValue(d, CFSTR("sub"), sub);
    const std::string expected =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
        "<plist version=\"1.0\">\n"
        "<dict>\n"
        "\t<key>d</key>\n\t<data>\n\tAQID\n\t</data>\n"
        "\t<key>list</key>\n\t<array/>\n"
        "\t<key>n</key>\n\t<integer>5</integer>\n"
        "\t<key>name</key>\n\t<string>A&amp;B</string>\n"
        "\t<key>ok</key>\n\t<true/>\n"
        "\t<key>pi</key>\n\t<real>3.1400000000000001</real>\n"
        "\t<key>sub</key>\n\t<array>\n\t\t<string>x</string>\n\t\t<real>2</real>\n\t</array>\n"
        "\t<key>when</key>\n\t<date>2001-01-01T00:00:00Z</date>\n"
        "</dict>\n"
        "</plist>\n";
    EXPECT_EQ(xml(d), expected);
    // The deprecated call writes the same bytes.
    EXPECT_EQ(textOf(own(CFPropertyListCreateXMLData(nullptr, d))), expected);
    // And reading them back gives an equal dictionary.
    Read back = read(expected);
    ASSERT_TRUE(back.plist);
    EXPECT_TRUE(CFEqual(back.plist, d));
}

TEST(PropertyListWriter, TopLevelScalarsStringsAndEscaping) {
    EXPECT_EQ(xml(CFSTR("hi")), document("<string>hi</string>\n"));
    EXPECT_EQ(xml(CFSTR("")), document("<string></string>\n"));
    EXPECT_EQ(xml(kCFBooleanFalse), document("<false/>\n"));
    EXPECT_EQ(xml(own(CFDataCreate(nullptr, nullptr, 0))), document("<data>\n</data>\n"));
    EXPECT_EQ(xml(mutableArray()), document("<array/>\n"));
    EXPECT_EQ(xml(mutableDictionary()), document("<dict/>\n"));
    // Only &, < and > are escaped; quotes, apostrophes, control characters
    // (NUL too) and non-ASCII text are written as they are, in UTF-8.
    const UniChar units[] = {'<', 'a', '>', '&', '"', '\'', 0x01, 0x00, 0x0D, 0xE9, 0xD83D, 0xDE00, '&'};
    auto mixed = own(CFStringCreateWithCharacters(nullptr, units, 13));
    EXPECT_EQ(xml(mixed), document("<string>&lt;a&gt;&amp;\"'\x01\0\r\xC3\xA9\xF0\x9F\x98\x80&amp;</string>\n"s));
    // Keys are escaped the same way.
    auto d = mutableDictionary();
    CFDictionarySetValue(d, CFSTR("a<b"), CFSTR("c>d"));
    EXPECT_EQ(xml(d), document("<dict>\n\t<key>a&lt;b</key>\n\t<string>c&gt;d</string>\n</dict>\n"));
}

TEST(PropertyListWriter, KeysInUTF16CodeUnitOrder) {
    auto d = mutableDictionary();
    for (const char* key : {"name", "a", "B", "n", "\xEF\xAC\x81", "\xF0\x9F\x98\x80", "_", "Z"}) {
        CFDictionarySetValue(d, str(key), kCFBooleanTrue);
    }
    // Case-sensitive, shorter prefix first; U+1F600 is stored as the
    // surrogates D83D DE00 and so sorts before U+FB01.
    std::string expected = "<dict>\n";
    for (const char* key : {"B", "Z", "_", "a", "n", "name", "\xF0\x9F\x98\x80", "\xEF\xAC\x81"}) {
        expected += std::string("\t<key>") + key + "</key>\n\t<true/>\n";
    }
    EXPECT_EQ(xml(d), document(expected + "</dict>\n"));
}

TEST(PropertyListWriter, Integers) {
    auto integerDocument = [](const char* text) { return document(std::string("<integer>") + text + "</integer>\n"); };
    EXPECT_EQ(xml(number(kCFNumberSInt8Type, int8_t(-128))), integerDocument("-128"));
    EXPECT_EQ(xml(number(kCFNumberSInt16Type, int16_t(0))), integerDocument("0"));
    EXPECT_EQ(xml(number(kCFNumberSInt64Type, std::numeric_limits<int64_t>::min())),
              integerDocument("-9223372036854775808"));
    // Unsigned values above INT64_MAX are written in full.
    EXPECT_EQ(xml(number(kCFNumberUInt64Type, std::numeric_limits<uint64_t>::max())),
              integerDocument("18446744073709551615"));
    EXPECT_EQ(xml(number(kCFNumberUInt32Type, uint32_t(4294967295u))), integerDocument("4294967295"));
}

TEST(PropertyListWriter, RealsInTheCLocaleWhateverTheProcessLocale) {
    // A locale whose decimal separator is a comma, where one is installed.
    const char* german = std::setlocale(LC_ALL, "de_DE.UTF-8");
    if (german == nullptr) std::setlocale(LC_ALL, "de_DE.utf8");
    EXPECT_EQ(realText(1.0), realDocument("1"));
    EXPECT_EQ(realText(2.5), realDocument("2.5"));
    EXPECT_EQ(realText(0.1), realDocument("0.10000000000000001"));
    EXPECT_EQ(realText(3.14), realDocument("3.1400000000000001"));
    EXPECT_EQ(realText(1e20), realDocument("1e+20"));
    EXPECT_EQ(realText(1e-5), realDocument("1.0000000000000001e-05"));
    EXPECT_EQ(realText(-123456789.125), realDocument("-123456789.125"));
    EXPECT_EQ(xml(number(kCFNumberFloat32Type, 0.1f)), realDocument("0.10000000149011612"));
    EXPECT_EQ(realText(std::nan("")), realDocument("nan"));
    EXPECT_EQ(realText(HUGE_VAL), realDocument("+infinity"));
    EXPECT_EQ(realText(-HUGE_VAL), realDocument("-infinity"));
    EXPECT_EQ(realText(0.0), realDocument("0.0"));
    EXPECT_EQ(realText(-0.0), realDocument("0.0"));
    EXPECT_EQ(realText(5e-324), realDocument("4.9406564584124654e-324"));
    EXPECT_EQ(realText(1.7976931348623157e308), realDocument("1.7976931348623157e+308"));
    std::setlocale(LC_ALL, "C");
    // Any other double: exactly what printf's %.17g gives in the C locale.
    std::mt19937_64 random(7);
    for (int i = 0; i < 2000; ++i) {
        uint64_t bits = random();
        double value;
        std::memcpy(&value, &bits, sizeof value);
        if (!std::isfinite(value) || value == 0) continue;
        char expected[64];
        std::snprintf(expected, sizeof expected, "%.17g", value);
        ASSERT_EQ(realText(value), realDocument(expected)) << expected;
    }
}

TEST(PropertyListWriter, DatesInUTCWithTheFractionCutOff) {
    auto dateText = [](CFAbsoluteTime time) { return xml(own(CFDateCreate(nullptr, time))); };
    auto dateDocument = [](const char* text) { return document(std::string("<date>") + text + "</date>\n"); };
    EXPECT_EQ(dateText(0), dateDocument("2001-01-01T00:00:00Z"));
    EXPECT_EQ(dateText(0.999), dateDocument("2001-01-01T00:00:00Z"));
    EXPECT_EQ(dateText(-0.5), dateDocument("2000-12-31T23:59:59Z"));
    EXPECT_EQ(dateText(-992490140), dateDocument("1969-07-20T20:17:40Z"));
    EXPECT_EQ(dateText(730900800.75), dateDocument("2024-02-29T12:00:00Z"));
    // Years beyond 9999 get more digits; years before 1 print with a sign.
    EXPECT_EQ(dateText(326438669350), dateDocument("12345-06-07T08:09:10Z"));
    EXPECT_EQ(dateText(-63177062400), dateDocument("-001-01-01T00:00:00Z"));
    EXPECT_EQ(dateText(-63113904001), dateDocument("0000-12-31T23:59:59Z"));
    // A time no calendar date stands for cannot be written.
    EXPECT_EQ(dateText(std::nan("")),
              "Property list invalid for format: 100 (property list dates must be finite and within 2^62 seconds of "
              "2001-01-01)");
}

TEST(PropertyListWriter, DataLinesNarrowWithDepth) {
    std::vector<UInt8> hundred(100);
    for (int i = 0; i < 100; ++i) hundred[size_t(i)] = UInt8(i);
    auto data = own(CFDataCreate(nullptr, hundred.data(), 100));
    const std::string encoded =
        "AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8gISIjJCUmJygpKissLS4vMDEyMzQ1Njc4OTo7PD0+P0BBQkNERUZHSElKS0xNTk9QUV"
        "JTVFVWV1hZWltcXV5fYGFiYw==";
    EXPECT_EQ(xml(data), document("<data>\n" + encoded.substr(0, 76) + "\n" + encoded.substr(76) + "\n</data>\n"));
    // Full lines: 76 - 8 * depth characters, 12 from depth 8 on; every line
    // has the indentation of the <data> tag.
    for (int depth : {1, 2, 5, 8, 9, 12}) {
        std::string text = xml(wrapped(data, depth));
        std::string indent(size_t(depth), '\t');
        size_t width = size_t(76 - 8 * std::min(depth, 8));
        std::string expected = indent + "<data>\n";
        for (size_t at = 0; at < encoded.size(); at += width) expected += indent + encoded.substr(at, width) + "\n";
        expected += indent + "</data>\n";
        EXPECT_NE(text.find(expected), std::string::npos) << "depth " << depth << "\n" << text;
    }
    const UInt8 one[] = {0xFF, 0xFE};
    EXPECT_EQ(xml(wrapped(own(CFDataCreate(nullptr, one, 2)), 1)),
              document("<array>\n\t<data>\n\t//4=\n\t</data>\n</array>\n"));
    EXPECT_EQ(xml(wrapped(own(CFDataCreate(nullptr, nullptr, 0)), 2)),
              document("<array>\n\t<array>\n\t\t<data>\n\t\t</data>\n\t</array>\n</array>\n"));
}

TEST(PropertyListWriter, RefusalsAndTheirMessages) {
    auto expectRefused = [](CFPropertyListRef plist, const std::string& reason) {
        CFErrorRef error = nullptr;
        auto data = own(CFPropertyListCreateData(nullptr, plist, kCFPropertyListXMLFormat_v1_0, 0, &error));
        auto owned = own(error);
        EXPECT_FALSE(data);
        ASSERT_NE(error, nullptr) << reason;
        EXPECT_EQ(utf8(CFErrorGetDomain(error)), "NSCocoaErrorDomain");
        EXPECT_EQ(CFErrorGetCode(error), 3851);
        EXPECT_EQ(messageOf(error), "Property list invalid for format: 100 (" + reason + ")");
        EXPECT_EQ(CFPropertyListCreateXMLData(nullptr, plist), nullptr);
    };
    expectRefused(wrapped(kCFNull, 1), "property lists cannot contain objects of type 'CFNull'");
    auto numericKey = mutableDictionary();
    CFDictionarySetValue(numericKey, number(kCFNumberSInt32Type, 1), CFSTR("x"));
    expectRefused(numericKey, "property list dictionaries may only have keys which are CFStrings, not 'CFNumber'");
    auto rawArray = own(CFArrayCreateMutable(nullptr, 0, nullptr));
    CFArrayAppendValue(rawArray, nullptr);
    expectRefused(rawArray, "property list arrays cannot contain NULL");
    CFDictionaryKeyCallBacks rawKeys = {};
    CFDictionaryValueCallBacks rawValues = {};
    auto nullValue = own(CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &rawValues));
    CFDictionarySetValue(nullValue, CFSTR("k"), nullptr);
    expectRefused(nullValue, "property list dictionaries cannot contain NULL values");
    auto nullKey = own(CFDictionaryCreateMutable(nullptr, 0, &rawKeys, &kCFTypeDictionaryValueCallBacks));
    CFDictionarySetValue(nullKey, nullptr, CFSTR("v"));
    expectRefused(nullKey, "property list dictionaries cannot contain NULL keys");
    auto loop = mutableArray();
    auto middle = mutableDictionary();
    CFDictionarySetValue(middle, CFSTR("back"), loop);
    CFArrayAppendValue(loop, middle);
    expectRefused(loop, "property lists cannot contain recursive container references");
    CFDictionaryRemoveAllValues(middle);  // breaks the cycle for the release
    const std::string tooMany =
        "Too many nested arrays or dictionaries please use kCFPropertyListBinaryFormat_v1_0 instead which supports "
        "references";
    // The same non-empty container reached 1537 times; 1536 are fine.
    auto shared = wrapped(CFSTR("s"), 1);
    auto many = mutableArray();
    for (int i = 0; i < 1536; ++i) CFArrayAppendValue(many, shared);
    EXPECT_NE(xml(many).find("<plist"), std::string::npos);
    CFArrayAppendValue(many, shared);
    expectRefused(many, tooMany);
    // Empty containers may be shared any number of times.
    auto empties = mutableArray();
    for (int i = 0; i < 2000; ++i) CFArrayAppendValue(empties, mutableArray().get());
    auto emptyShared = mutableArray();
    for (int i = 0; i < 2000; ++i) CFArrayAppendValue(emptyShared, CFArrayGetValueAtIndex(empties, 0));
    EXPECT_NE(xml(emptyShared).find("\t<array/>\n"), std::string::npos);
    // 512 nested containers are written, 513 are not (they could not be
    // read back).
    EXPECT_NE(xml(wrapped(mutableArray(), 511)).find(std::string(511, '\t') + "<array/>"), std::string::npos);
    expectRefused(wrapped(mutableArray(), 512), tooMany);
}

TEST(PropertyListWriter, OtherFormatsAndMisuse) {
    CFErrorRef error = nullptr;
    EXPECT_EQ(CFPropertyListCreateData(nullptr, CFSTR("x"), kCFPropertyListBinaryFormat_v1_0, 0, &error), nullptr);
    EXPECT_EQ(messageOf(error),
              "Property list format kCFPropertyListBinaryFormat_v1_0 is not supported for writing on this platform");
    EXPECT_EQ(CFErrorGetCode(error), 3851);
    CFRelease(error);
    EXPECT_EQ(CFPropertyListCreateData(nullptr, CFSTR("x"), kCFPropertyListOpenStepFormat, 0, &error), nullptr);
    EXPECT_EQ(messageOf(error), "Property list format kCFPropertyListOpenStepFormat not supported for writing");
    CFRelease(error);
    EXPECT_EQ(CFPropertyListCreateData(nullptr, CFSTR("x"), 7, 0, &error), nullptr);
    EXPECT_EQ(messageOf(error), "Unknown format option");
    CFRelease(error);
    // Success clears the error; no error argument is fine.
    error = reinterpret_cast<CFErrorRef>(1);
    EXPECT_TRUE(own(CFPropertyListCreateData(nullptr, CFSTR("x"), kCFPropertyListXMLFormat_v1_0, 0, &error)));
    EXPECT_EQ(error, nullptr);
    EXPECT_EQ(CFPropertyListCreateData(nullptr, kCFNull, kCFPropertyListXMLFormat_v1_0, 0, nullptr), nullptr);
    std::string reports = reportsOf([] {
        EXPECT_EQ(CFPropertyListCreateXMLData(nullptr, nullptr), nullptr);
        EXPECT_FALSE(CFPropertyListIsValid(nullptr, kCFPropertyListXMLFormat_v1_0));
        EXPECT_EQ(CFPropertyListCreateDeepCopy(nullptr, nullptr, 0), nullptr);
    });
    EXPECT_EQ(lineCount(reports), 3) << reports;
    EXPECT_EQ(occurrences(reports, "NULL property list"), 3) << reports;
}

TEST(PropertyListValidity, PerFormat) {
    constexpr CFPropertyListFormat kOpenStep = kCFPropertyListOpenStepFormat, kXML = kCFPropertyListXMLFormat_v1_0,
                                   kBinary = kCFPropertyListBinaryFormat_v1_0;
    auto date = own(CFDateCreate(nullptr, 0));
    auto data = own(CFDataCreate(nullptr, nullptr, 0));
    auto integer = number(kCFNumberSInt32Type, 1);
    for (CFPropertyListFormat format : {kOpenStep, kXML, kBinary}) {
        EXPECT_TRUE(CFPropertyListIsValid(wrapped(CFSTR("s"), 3), format));
        EXPECT_TRUE(CFPropertyListIsValid(data, format));
    }
    for (CFTypeRef scalar : {CFTypeRef(date.get()), CFTypeRef(integer.get()), CFTypeRef(kCFBooleanTrue)}) {
        EXPECT_TRUE(CFPropertyListIsValid(scalar, kXML));
        EXPECT_TRUE(CFPropertyListIsValid(scalar, kBinary));
        EXPECT_FALSE(CFPropertyListIsValid(scalar, kOpenStep));
        EXPECT_FALSE(CFPropertyListIsValid(wrapped(scalar, 1), kOpenStep));
    }
    auto error = own(CFErrorCreate(nullptr, CFSTR("D"), 1, nullptr));
    for (CFPropertyListFormat format : {kOpenStep, kXML, kBinary}) {
        EXPECT_FALSE(CFPropertyListIsValid(kCFNull, format));
        EXPECT_FALSE(CFPropertyListIsValid(wrapped(error, 2), format));
    }
    EXPECT_FALSE(CFPropertyListIsValid(CFSTR("s"), 300));
    // A container inside itself is never valid; one reached 1537 times only
    // for the binary format, which writes references.
    auto loop = mutableArray();
    CFArrayAppendValue(loop, loop);
    for (CFPropertyListFormat format : {kOpenStep, kXML, kBinary}) EXPECT_FALSE(CFPropertyListIsValid(loop, format));
    CFArrayRemoveAllValues(loop);
    auto shared = wrapped(CFSTR("s"), 1);
    auto many = mutableArray();
    for (int i = 0; i < 1537; ++i) CFArrayAppendValue(many, shared);
    EXPECT_FALSE(CFPropertyListIsValid(many, kXML));
    EXPECT_FALSE(CFPropertyListIsValid(many, kOpenStep));
    EXPECT_TRUE(CFPropertyListIsValid(many, kBinary));
    EXPECT_TRUE(CFPropertyListIsValid(wrapped(CFSTR("deep"), 512), kXML));
    EXPECT_FALSE(CFPropertyListIsValid(wrapped(CFSTR("deep"), 513), kXML));
    EXPECT_TRUE(CFPropertyListIsValid(wrapped(CFSTR("deep"), 5000), kBinary));
}

TEST(PropertyListDeepCopy, CopiesWithTheMutabilityAsked) {
    auto source = mutableDictionary();
    auto list = mutableArray();
    CFArrayAppendValue(list, CFSTR("text"));
    const UInt8 raw[] = {9, 8};
    CFArrayAppendValue(list, own(CFDataCreate(nullptr, raw, 2)));
    CFArrayAppendValue(list, number(kCFNumberUInt64Type, std::numeric_limits<uint64_t>::max()));
    CFArrayAppendValue(list, number(kCFNumberFloat32Type, 1.5f));
    CFArrayAppendValue(list, own(CFDateCreate(nullptr, 12.5)));
    CFArrayAppendValue(list, kCFBooleanTrue);
    auto mutableKey = own(CFStringCreateMutableCopy(nullptr, 0, CFSTR("key")));
    CFDictionarySetValue(source, mutableKey, list);
    CFDictionarySetValue(source, CFSTR("again"), list);
    for (CFOptionFlags option : {0ul, 1ul, 2ul}) {
        auto copy = own(CFPropertyListCreateDeepCopy(nullptr, source, option));
        ASSERT_TRUE(copy);
        EXPECT_TRUE(CFEqual(copy, source));
        EXPECT_NE(copy.get(), static_cast<CFTypeRef>(source.get()));
        EXPECT_EQ(_CFDictionaryIsMutable(static_cast<CFDictionaryRef>(copy.get())), option != 0);
        auto copiedList = static_cast<CFArrayRef>(valueFor(copy, "key"));
        EXPECT_NE(copiedList, list.get());
        // A container reached twice is copied twice.
        EXPECT_NE(copiedList, valueFor(copy, "again"));
        EXPECT_EQ(_CFArrayIsMutable(copiedList), option != 0);
        EXPECT_EQ(_CFDataIsMutable(static_cast<CFDataRef>(at(copiedList, 1))), option == 2);
        EXPECT_EQ(CFNumberGetType(static_cast<CFNumberRef>(at(copiedList, 2))), kCFNumberUInt64Type);
        EXPECT_EQ(CFNumberGetType(static_cast<CFNumberRef>(at(copiedList, 3))), kCFNumberFloat32Type);
        EXPECT_EQ(at(copiedList, 5), kCFBooleanTrue);
        // Keys are immutable copies; strings are mutable with option 2.
        const void* keys[2];
        CFDictionaryGetKeysAndValues(static_cast<CFDictionaryRef>(copy.get()), keys, nullptr);
        for (const void* key : keys) {
            EXPECT_NE(key, static_cast<const void*>(mutableKey.get()));
            EXPECT_FALSE(isMutableString(key));
        }
        EXPECT_EQ(isMutableString(at(copiedList, 0)), option == 2);
    }
    // Copies follow the binary rules: CFNull and non-string keys are refused.
    EXPECT_EQ(CFPropertyListCreateDeepCopy(nullptr, wrapped(kCFNull, 1), 0), nullptr);
    auto numericKey = mutableDictionary();
    CFDictionarySetValue(numericKey, number(kCFNumberSInt32Type, 1), CFSTR("x"));
    EXPECT_EQ(CFPropertyListCreateDeepCopy(nullptr, numericKey, 1), nullptr);
    // Deep lists are copied without recursion.
    auto deep = wrapped(CFSTR("deep"), 3000);
    auto deepCopy = own(CFPropertyListCreateDeepCopy(nullptr, deep, 0));
    CFTypeRef innermost = deepCopy;
    for (int level = 0; level < 3000 && CFGetTypeID(innermost) == CFArrayGetTypeID(); ++level) innermost = at(innermost, 0);
    EXPECT_TRUE(CFEqual(innermost, CFSTR("deep")));
}
