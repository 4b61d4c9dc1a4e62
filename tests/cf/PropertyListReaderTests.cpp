// Reading property lists: the accepted forms of the XML text, encodings,
// mutability options, the OpenStep fallback, the team's files and the
// interoperability corpus.
#include "PropertyListTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>

using namespace cftest;
using namespace cftest::plist;
using namespace std::string_literals;

namespace {

// The one object a document holds, read with the default option.
Owned<CFPropertyListRef> object(std::string_view text) {
    Read result = read(text);
    EXPECT_TRUE(result.plist) << text << "\n" << messageOf(result.error);
    return std::move(result.plist);
}

std::u16string unitsOf(CFTypeRef s) { return units(static_cast<CFStringRef>(s)); }

int64_t integerOf(CFTypeRef n) {
    int64_t value = 0;
    CFNumberGetValue(static_cast<CFNumberRef>(n), kCFNumberSInt64Type, &value);
    return value;
}

double realOf(CFTypeRef n) {
    double value = 0;
    CFNumberGetValue(static_cast<CFNumberRef>(n), kCFNumberFloat64Type, &value);
    return value;
}

std::string sharedCorpus(const char* name) {
    const char* shared = std::getenv("HALVANE_SHARED_DIR");
    if (shared == nullptr) return {};
    std::ifstream file(std::string(shared) + "/corpus/plist/" + name, std::ios::binary);
    std::stringstream contents;
    contents << file.rdbuf();
    return contents.str();
}

}  // namespace

TEST(PropertyListReader, DocumentLevel) {
    // Declaration, DOCTYPE and <plist> are optional; whitespace, comments and
    // processing instructions come in any order; what follows the first
    // element is ignored.
    EXPECT_TRUE(CFEqual(object("<string>x</string>"), CFSTR("x")));
    EXPECT_TRUE(CFEqual(object(" \r\n\t<!-- a --><?pi x?><!DOCTYPE plist><?xml version=\"1.0\"?>\n"
                               "<plist version=\"9\" extra='1'> <!-- b --> <integer>5</integer> <?c?> </plist>"
                               "trailing <garbage"),
                        number(kCFNumberSInt32Type, 5)));
    EXPECT_TRUE(CFEqual(object("<dict>\n<key>a</key><true/></dict>junk"), object("<dict><key>a</key><true /></dict>")));
    Read plain = read("<array/>");
    EXPECT_EQ(plain.format, kCFPropertyListXMLFormat_v1_0);
    EXPECT_EQ(countOf(plain.plist), 0);
    // A DOCTYPE naming an external DTD is skipped, never fetched.
    EXPECT_TRUE(CFEqual(object("<!DOCTYPE plist SYSTEM \"file:///nonexistent/x.dtd\"><false/>"), kCFBooleanFalse));
    // <key> outside a dictionary, or in value position, is a string.
    EXPECT_TRUE(CFEqual(object("<key>k</key>"), CFSTR("k")));
    auto mixed = object("<array><key>k</key><key/></array>");
    EXPECT_TRUE(CFEqual(at(mixed, 0), CFSTR("k")));
    EXPECT_TRUE(CFEqual(at(mixed, 1), CFSTR("")));
    auto keyValue = object("<dict><key>a</key><key>b</key></dict>");
    EXPECT_EQ(stringFor(keyValue, "a"), "b");
    // A repeated key keeps its last value, whatever the option.
    for (CFOptionFlags option : {0ul, 1ul, 2ul}) {
        Read repeated = read("<dict><key>a</key><string>1</string><key>b</key><string>2</string>"
                             "<key>a</key><string>3</string></dict>",
                             option);
        EXPECT_EQ(countOf(repeated.plist), 2);
        EXPECT_EQ(stringFor(repeated.plist, "a"), "3");
    }
}

TEST(PropertyListReader, StringsKeepTheirText) {
    auto texts = object("<array>"
                        "<string>a\r\nb\rc\nd</string>"
                        "<string>&lt;&gt;&amp;&apos;&quot;&#65;&#x42;&#x1F600;&#233;</string>"
                        "<string><![CDATA[<b>&amp;]]>&amp;<![CDATA[\r\n]]></string>"
                        "<string>  spaced\t</string>"
                        "<string/>"
                        "<string>\xC3\xA9\xE2\x82\xAC</string>"
                        "<string>ctl\x01\x1F\x7F</string>"
                        "<string>\xEF\xBF\xBE\xEF\xBF\xBF</string>"
                        "</array>");
    ASSERT_EQ(countOf(texts), 8);
    EXPECT_EQ(unitsOf(at(texts, 0)), u"a\r\nb\rc\nd");
    EXPECT_EQ(unitsOf(at(texts, 1)), u"<>&'\"AB\U0001F600\u00E9");
    EXPECT_EQ(unitsOf(at(texts, 2)), u"<b>&amp;&\r\n");
    EXPECT_EQ(unitsOf(at(texts, 3)), u"  spaced\t");
    EXPECT_EQ(unitsOf(at(texts, 4)), u"");
    EXPECT_EQ(unitsOf(at(texts, 5)), u"\u00E9\u20AC");
    // Control characters and U+FFFE/U+FFFF, which XML itself forbids, are
    // read as written, so that what the writer writes reads back.
    EXPECT_EQ(unitsOf(at(texts, 6)), u"ctl\u0001\u001F\u007F");
    EXPECT_EQ(unitsOf(at(texts, 7)), u"\uFFFE\uFFFF");
    const UniChar nul[] = {'a', 0, 0x1B, 'b'};
    auto withNul = own(CFStringCreateWithCharacters(nullptr, nul, 4));
    EXPECT_TRUE(CFEqual(object(xml(withNul)), withNul));
}

TEST(PropertyListReader, Integers) {
    auto integers = object("<array><integer>0x1F</integer><integer>-0XfF</integer><integer> + 007</integer>"
                           "<integer>\n- 5</integer><integer>9223372036854775807</integer>"
                           "<integer>-9223372036854775808</integer><integer>-0x8000000000000000</integer>"
                           "<integer>18446744073709551615</integer><integer>0xFFFFFFFFFFFFFFFF</integer>"
                           "<integer>000</integer><integer>-0</integer></array>");
    ASSERT_EQ(countOf(integers), 11);
    const int64_t expected[] = {31, -255, 7, -5, INT64_MAX, INT64_MIN, INT64_MIN};
    for (int i = 0; i < 7; ++i) {
        EXPECT_EQ(integerOf(at(integers, i)), expected[i]) << i;
        EXPECT_EQ(CFNumberGetType(static_cast<CFNumberRef>(at(integers, i))), kCFNumberSInt64Type) << i;
    }
    // Above INT64_MAX: an unsigned 64-bit number; zero: a 32-bit one.
    for (int i : {7, 8}) {
        auto n = static_cast<CFNumberRef>(at(integers, i));
        uint64_t value = 0;
        EXPECT_TRUE(CFNumberGetValue(n, kCFNumberUInt64Type, &value));
        EXPECT_EQ(value, UINT64_MAX);
        EXPECT_EQ(CFNumberGetType(n), kCFNumberUInt64Type);
    }
    for (int i : {9, 10}) {
        EXPECT_EQ(integerOf(at(integers, i)), 0);
        EXPECT_EQ(CFNumberGetType(static_cast<CFNumberRef>(at(integers, i))), kCFNumberSInt32Type);
    }
}

TEST(PropertyListReader, RealsDatesDataAndBooleans) {
    auto reals = object("<array><real>1.5</real><real> \t-2.5e3</real><real>+.5</real><real>7.</real>"
                        "<real>1E-2</real><real>1e999</real><real>NaN</real><real>-INF</real><real>Infinity</real>"
                        "<real>+inf</real><real>-0</real><real>&#49;&#46;25</real><real>3</real></array>");
    ASSERT_EQ(countOf(reals), 13);
    const double expected[] = {1.5, -2500, 0.5, 7, 0.01, HUGE_VAL, NAN, -HUGE_VAL, HUGE_VAL, HUGE_VAL, -0.0, 1.25, 3};
    for (CFIndex i = 0; i < 13; ++i) {
        auto n = static_cast<CFNumberRef>(at(reals, i));
        EXPECT_EQ(CFNumberGetType(n), kCFNumberFloat64Type) << i;
        double value = realOf(n);
        if (std::isnan(expected[i])) {
            EXPECT_TRUE(std::isnan(value));
        } else {
            EXPECT_EQ(value, expected[i]) << i;
            EXPECT_EQ(std::signbit(value), std::signbit(expected[i])) << i;
        }
    }
    auto dates = object("<array><date>2001-01-01T00:00:00Z</date><date>1969-07-20T20:17:40Z</date>"
                        "<date>12345-06-07T08:09:10Z</date><date>-001-01-01T00:00:00Z</date>"
                        "<date>2001-02-30T00:00:00Z</date><date>02001-01-01T00:00:01Z</date></array>");
    const double times[] = {0, -992490140, 326438669350, -63177062400, 5184000, 1};
    for (CFIndex i = 0; i < 6; ++i) {
        EXPECT_EQ(CFDateGetAbsoluteTime(static_cast<CFDateRef>(at(dates, i))), times[i]) << i;
    }
    // Base64 is read leniently: anything outside the alphabet is skipped and
    // an incomplete last group is dropped.
    auto data = object("<array><data>AQID</data><data>\n\tA Q\r\nI D !*</data><data>AQ==</data><data>AQI=</data>"
                       "<data>AQIDBA</data><data></data><data>====</data></array>");
    EXPECT_EQ(bytesOf(at(data, 0)), (std::vector<UInt8>{1, 2, 3}));
    EXPECT_EQ(bytesOf(at(data, 1)), (std::vector<UInt8>{1, 2, 3}));
    EXPECT_EQ(bytesOf(at(data, 2)), (std::vector<UInt8>{1}));
    EXPECT_EQ(bytesOf(at(data, 3)), (std::vector<UInt8>{1, 2}));
    EXPECT_EQ(bytesOf(at(data, 4)), (std::vector<UInt8>{1, 2, 3}));
    EXPECT_TRUE(bytesOf(at(data, 5)).empty());
    EXPECT_TRUE(bytesOf(at(data, 6)).empty());
    auto booleans = object("<array><true/><false /><true></true><false></false></array>");
    for (CFIndex i = 0; i < 4; ++i) EXPECT_EQ(at(booleans, i), i % 2 == 0 ? kCFBooleanTrue : kCFBooleanFalse);
}

TEST(PropertyListReader, Encodings) {
    const std::string body = "<string>Gr\xC3\xBC\xC3\x9F" "e \xF0\x9F\x98\x80</string>";
    const std::u16string expected = u"Gr\u00FC\u00DFe \U0001F600";
    auto utf16 = [](const std::u16string& text, bool bigEndian) {
        std::string out;
        for (char16_t c : text) {
            char high = char(c >> 8), low = char(c & 0xFF);
            out += bigEndian ? std::string{high, low} : std::string{low, high};
        }
        return out;
    };
    const std::u16string body16 = u"<string>Gr\u00FC\u00DFe \U0001F600</string>";
    EXPECT_EQ(unitsOf(object("\xEF\xBB\xBF" + body)), expected);
    EXPECT_EQ(unitsOf(object("\xFF\xFE" + utf16(body16, false))), expected);
    EXPECT_EQ(unitsOf(object("\xFE\xFF" + utf16(body16, true))), expected);
    EXPECT_EQ(unitsOf(object(utf16(body16, false))), expected);  // a NUL in the first two bytes
    EXPECT_EQ(unitsOf(object(utf16(body16, true))), expected);
    std::string utf32le = "\xFF\xFE\0\0"s;
    for (char32_t c : U"<string>A\u00E9\U0001F600</string>") {
        if (c == 0) break;
        for (int shift = 0; shift < 32; shift += 8) utf32le += char((c >> shift) & 0xFF);
    }
    EXPECT_EQ(unitsOf(object(utf32le)), u"A\u00E9\U0001F600");
    // The declaration names the encoding of 8-bit text.
    EXPECT_EQ(unitsOf(object("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><string>\xE9\xFC</string>")),
              u"\u00E9\u00FC");
    EXPECT_EQ(unitsOf(object("<?xml version='1.0' encoding='macintosh'?><string>\x8E</string>")), u"\u00E9");
    EXPECT_EQ(unitsOf(object("<?xml version='1.0' encoding='utf-8'?><string>\xC3\xA9</string>")), u"\u00E9");
    // A 16-bit name on 8-bit text: the text is what it is.
    EXPECT_EQ(unitsOf(object("<?xml version='1.0' encoding='UTF-16'?><string>\xC3\xA9</string>")), u"\u00E9");
}

TEST(PropertyListReader, MutabilityOptions) {
    const std::string text = "<dict><key>list</key><array><string>same</string><string>same</string>"
                             "<data>AQ==</data><integer>1</integer><date>2001-01-01T00:00:00Z</date><true/>"
                             "<dict/><array/></array><key>same</key><string>same</string></dict>";
    for (CFOptionFlags option : {0ul, 1ul, 2ul}) {
        Read result = read(text, option);
        ASSERT_TRUE(result.plist);
        auto top = static_cast<CFDictionaryRef>(result.plist.get());
        CFTypeRef list = valueFor(top, "list");
        // Containers are mutable with options 1 and 2; with 0 they are truly
        // immutable, even when they hold something.
        EXPECT_EQ(_CFDictionaryIsMutable(top), option != 0);
        EXPECT_EQ(_CFArrayIsMutable(static_cast<CFArrayRef>(list)), option != 0);
        EXPECT_EQ(_CFDictionaryIsMutable(static_cast<CFDictionaryRef>(at(list, 6))), option != 0);
        EXPECT_EQ(_CFArrayIsMutable(static_cast<CFArrayRef>(at(list, 7))), option != 0);
        // Strings and data are mutable with option 2 only; keys never are.
        EXPECT_EQ(_CFDataIsMutable(static_cast<CFDataRef>(at(list, 2))), option == 2);
        EXPECT_EQ(isMutableString(at(list, 0)), option == 2);
        const void* keys[2];
        CFDictionaryGetKeysAndValues(top, keys, nullptr);
        EXPECT_FALSE(isMutableString(keys[0]));
        EXPECT_FALSE(isMutableString(keys[1]));
        // Identical immutable strings of one document are one object.
        CFTypeRef sameKey = CFEqual(keys[0], CFSTR("same")) ? keys[0] : keys[1];
        EXPECT_EQ(at(list, 0) == at(list, 1), option != 2);
        EXPECT_EQ(valueFor(top, "same") == sameKey, option != 2);
        EXPECT_EQ(at(list, 5), kCFBooleanTrue);
        EXPECT_EQ(CFGetRetainCount(at(list, 3)), 1);
    }
    // Empty mutable strings (no buffer yet) compare equal.
    Read empties = read("<array><string/><string></string></array>", kCFPropertyListMutableContainersAndLeaves);
    EXPECT_TRUE(isMutableString(at(empties.plist, 0)));
    EXPECT_TRUE(CFEqual(own(CFStringCreateMutable(nullptr, 0)), at(empties.plist, 1)));
}

TEST(PropertyListReader, NestingLimit) {
    auto nested = [](int levels) {
        std::string text;
        for (int i = 0; i < levels; ++i) text += i % 2 == 0 ? "<array>" : "<dict><key>k</key>";
        text += "<string>deep</string>";
        for (int i = levels - 1; i >= 0; --i) text += i % 2 == 0 ? "</array>" : "</dict>";
        return text;
    };
    Read deepest = read(nested(512));
    ASSERT_TRUE(deepest.plist);
    EXPECT_TRUE(CFEqual(object(xml(deepest.plist)), deepest.plist));
    EXPECT_EQ(readError(nested(513)), "Too many nested arrays or dictionaries, failing on line 1");
    EXPECT_EQ(readError("<plist>\n" + nested(100000)), "Too many nested arrays or dictionaries, failing on line 2");
}

TEST(PropertyListReader, OpenStepFallback) {
    Read blank = read(" \n\t ");
    ASSERT_TRUE(blank.plist);
    EXPECT_EQ(blank.format, kCFPropertyListOpenStepFormat);
    EXPECT_EQ(CFGetTypeID(blank.plist), CFDictionaryGetTypeID());
    EXPECT_EQ(countOf(blank.plist), 0);
    EXPECT_TRUE(_CFDictionaryIsMutable(static_cast<CFDictionaryRef>(blank.plist.get())));
    Read word = read("abc_1.2");
    EXPECT_EQ(word.format, kCFPropertyListOpenStepFormat);
    EXPECT_TRUE(CFEqual(word.plist, CFSTR("abc_1.2")));
    EXPECT_EQ(unitsOf(object("\"a\\n\\t\\\"\\101\\U00e9\\q\\335\" // comment")), u"a\n\t\"A\u00E9q\u00E9");
    EXPECT_TRUE(CFEqual(object("'single'"), CFSTR("single")));
    auto strings = object("/* a strings file */\n\"greeting\" = \"Hello\";\nfarewell = Bye;\nsolo;\n");
    EXPECT_EQ(countOf(strings), 3);
    EXPECT_EQ(stringFor(strings, "greeting"), "Hello");
    EXPECT_EQ(stringFor(strings, "farewell"), "Bye");
    EXPECT_EQ(stringFor(strings, "solo"), "solo");
    Read structured = read("{ a = 1; b = (x, \"y z\",); c = <0102 0A>; d = {}; }", kCFPropertyListMutableContainers);
    ASSERT_TRUE(structured.plist);
    EXPECT_EQ(structured.format, kCFPropertyListOpenStepFormat);
    EXPECT_EQ(stringFor(structured.plist, "a"), "1");  // OpenStep has only strings
    CFTypeRef b = valueFor(structured.plist, "b");
    EXPECT_EQ(countOf(b), 2);
    EXPECT_TRUE(CFEqual(at(b, 1), CFSTR("y z")));
    EXPECT_TRUE(_CFArrayIsMutable(static_cast<CFArrayRef>(b)));
    EXPECT_EQ(bytesOf(valueFor(structured.plist, "c")), (std::vector<UInt8>{1, 2, 10}));
    EXPECT_EQ(countOf(valueFor(structured.plist, "d")), 0);
    // When both readers fail, the XML reader's error is returned, the
    // OpenStep reader's attached.
    const std::pair<const char*, const char*> failures[] = {
        {"\"open", "Unterminated quoted string starting on line 1"},
        {"{ a = b }", "Missing ';' on line 1"},
        {"(a, b", "Expected terminating ')' for array at line 1"},
        {"{\na = b;", "Expected terminating '}' for dictionary at line 1"},
        {"(a) b", "Junk after plist at line 1"},
        {"{ a = ^; }", "Unexpected character '0x5e' at line 1"},
        {"a = b; c", "Missing ';' on line 1"},
    };
    for (const auto& [text, openStepMessage] : failures) {
        Read failed = read(text);
        ASSERT_FALSE(failed.plist) << text;
        auto userInfo = own(CFErrorCopyUserInfo(failed.error));
        auto oldStyle = static_cast<CFErrorRef>(
            const_cast<void*>(CFDictionaryGetValue(userInfo, CFSTR("kCFPropertyListOldStyleParsingError"))));
        ASSERT_NE(oldStyle, nullptr) << text;
        EXPECT_EQ(messageOf(oldStyle), openStepMessage) << text;
        EXPECT_EQ(CFErrorGetCode(oldStyle), 3840);
        EXPECT_EQ(messageOf(failed.error).substr(0, 21), "Unexpected character ") << text;
    }
}

TEST(PropertyListReader, TeamFiles) {
    // Written in the writer's own layout: reading and writing gives the
    // same bytes back.
    std::string settings = testDataFile("plist/settings.plist");
    ASSERT_FALSE(settings.empty());
    auto plist = object(settings);
    EXPECT_EQ(xml(plist), settings);
    CFTypeRef account = at(valueFor(plist, "Accounts"), 0);
    EXPECT_EQ(stringFor(account, "Name"), "Zo\xC3\xAB M\xC3\xBCller & Co. <main>");
    EXPECT_EQ(integerOf(valueFor(account, "Quota")), 10737418240);
    EXPECT_EQ(realOf(valueFor(account, "Ratio")), 0.75);
    EXPECT_EQ(CFDateGetAbsoluteTime(static_cast<CFDateRef>(valueFor(account, "Created"))), 573368767);
    EXPECT_EQ(bytesOf(valueFor(account, "Avatar")).size(), 86u);
    EXPECT_EQ(realOf(valueFor(valueFor(plist, "Limits"), "Unbounded")), HUGE_VAL);

    Read utf16 = read(testDataFile("plist/utf16le-bom.plist"));
    ASSERT_TRUE(utf16.plist) << messageOf(utf16.error);
    EXPECT_EQ(unitsOf(valueFor(utf16.plist, "Greeting")), u"Gr\u00FC\u00DFe, \u4E16\u754C \U0001F600");
    EXPECT_EQ(integerOf(valueFor(utf16.plist, "Count")), 7);

    auto bare = object(testDataFile("plist/bare-dict.plist"));
    EXPECT_EQ(stringFor(bare, "Host"), "example.org");
    EXPECT_EQ(integerOf(valueFor(bare, "Port")), 8080);

    auto annotated = object(testDataFile("plist/comments-entities.plist"));
    EXPECT_EQ(countOf(annotated), 2);
    EXPECT_EQ(unitsOf(valueFor(annotated, "Quote")), u"<\"Fish & Chips\"> 'n' \u00E9\u00E9\U0001F600");
    EXPECT_EQ(realOf(valueFor(annotated, "ABC")), 1.5);

    auto cdata = object(testDataFile("plist/cdata.plist"));
    EXPECT_EQ(utf8(static_cast<CFStringRef>(at(cdata, 0))), "<script>if (a && b) { x = \"]]\" + \">\"; }</script>");
    EXPECT_EQ(utf8(static_cast<CFStringRef>(at(cdata, 1))), "before &amp; stays after & decoded");
    EXPECT_EQ(utf8(static_cast<CFStringRef>(at(cdata, 2))), "");
}

TEST(PropertyListReader, InteroperabilityCorpus) {
    std::string info = sharedCorpus("Info.plist");
    if (info.empty()) GTEST_SKIP() << "HALVANE_SHARED_DIR/corpus/plist is not available";
    Read infoRead = read(info);
    ASSERT_TRUE(infoRead.plist);
    EXPECT_EQ(infoRead.format, kCFPropertyListXMLFormat_v1_0);
    EXPECT_EQ(countOf(infoRead.plist), 11);
    EXPECT_EQ(stringFor(infoRead.plist, "CFBundleIdentifier"), "org.swift.TestFoundation");
    EXPECT_EQ(stringFor(infoRead.plist, "CFBundleSignature"), "????");
    EXPECT_EQ(stringFor(infoRead.plist, "NSPrincipalClass"), "");
    // Its keys were sorted by the same rule: the writer gives the file back.
    EXPECT_EQ(xml(infoRead.plist), info);

    auto test = object(sharedCorpus("Test.plist"));
    EXPECT_EQ(stringFor(test, "Foo"), "Bar");
    EXPECT_EQ(stringFor(test, "emptyValue"), "");
    CFTypeRef baz = valueFor(test, "Baz");
    ASSERT_EQ(countOf(baz), 3);
    EXPECT_TRUE(CFEqual(at(baz, 2), CFSTR("lists")));

    auto urls = object(sharedCorpus("NSURLTestData.plist"));
    ASSERT_EQ(countOf(urls), 1);
    CFTypeRef tests = valueFor(urls, "ParsingTests");
    ASSERT_EQ(countOf(tests), 1981);
    CFTypeRef first = at(tests, 0);
    EXPECT_EQ(stringFor(first, "In-Title"), "NSURLWithString-parse-absolute-file-001");
    EXPECT_EQ(stringFor(first, "In-Url"), "file:///usr/local/bin");
    CFTypeRef results = valueFor(first, "Out-NSResults");
    EXPECT_EQ(stringFor(results, "baseURLString"), "<null>");
    EXPECT_EQ(countOf(valueFor(results, "pathComponents")), 4);
    for (CFIndex i = 0; i < 1981; ++i) {
        ASSERT_EQ(CFGetTypeID(at(tests, i)), CFDictionaryGetTypeID()) << i;
        ASSERT_NE(valueFor(at(tests, i), "In-Title"), nullptr) << i;
    }
    // Written and read again, the whole list is unchanged.
    EXPECT_TRUE(CFEqual(object(xml(urls)), urls));
}
