// Substrings, splitting and joining, and the changes of mutable strings:
// insertion, deletion, replacement, find-and-replace, trimming.
#include "CFTestSupport.h"
#include "MisuseReports.h"

#include <gtest/gtest.h>

#include <vector>

using namespace cftest;

namespace {

Owned<CFMutableStringRef> mutableString(std::u16string_view text) {
    auto s = own(CFStringCreateMutable(nullptr, 0));
    CFStringAppendCharacters(s, reinterpret_cast<const UniChar*>(text.data()), CFIndex(text.size()));
    return s;
}

// The texts of an array of strings.
std::vector<std::u16string> texts(CFArrayRef array) {
    std::vector<std::u16string> out;
    for (CFIndex i = 0; i < CFArrayGetCount(array); ++i) {
        out.push_back(units(static_cast<CFStringRef>(CFArrayGetValueAtIndex(array, i))));
    }
    return out;
}

std::vector<std::u16string> split(std::u16string_view text, std::u16string_view separator) {
    auto array = own(CFStringCreateArrayBySeparatingStrings(nullptr, string(text), string(separator)));
    return texts(array);
}

using Pieces = std::vector<std::u16string>;

}  // namespace

TEST(StringSubstring, CopiesOrSharesTheReceiver) {
    auto s = string(u"Grüße, world");
    auto sub = own(CFStringCreateWithSubstring(nullptr, s, CFRangeMake(7, 5)));
    EXPECT_EQ(units(sub), u"world");
    EXPECT_EQ(CFGetRetainCount(sub), 1);
    // ASCII text of a wider string stays readable as a C string.
    EXPECT_STREQ(CFStringGetCStringPtr(sub, kCFStringEncodingASCII), "world");
    EXPECT_EQ(units(own(CFStringCreateWithSubstring(nullptr, s, CFRangeMake(2, 2)))), u"üß");
    EXPECT_EQ(CFStringCreateWithSubstring(nullptr, s, CFRangeMake(3, 0)), CFSTR(""));

    // The whole range of an immutable string is the string itself.
    auto whole = own(CFStringCreateWithSubstring(nullptr, s, CFRangeMake(0, 12)));
    EXPECT_EQ(whole.get(), s.get());
    EXPECT_EQ(CFGetRetainCount(s), 2);
    auto changing = own(CFStringCreateMutableCopy(nullptr, 0, s));
    auto snapshot = own(CFStringCreateWithSubstring(nullptr, changing, CFRangeMake(0, 12)));
    EXPECT_NE(snapshot.get(), static_cast<CFStringRef>(changing.get()));
    CFStringAppend(changing, CFSTR("!"));
    EXPECT_EQ(units(snapshot), u"Grüße, world");

    std::string reports = reportsOf([&] {
        EXPECT_EQ(CFStringCreateWithSubstring(nullptr, s, CFRangeMake(10, 3)), nullptr);
        EXPECT_EQ(CFStringCreateWithSubstring(nullptr, nullptr, CFRangeMake(0, 0)), nullptr);
    });
    EXPECT_EQ(lineCount(reports), 2);
    EXPECT_EQ(occurrences(reports, "CFStringCreateWithSubstring(): range {10, 3} out of bounds (length 12)"), 1);
}

TEST(StringSeparating, KeepsEmptyPiecesAndReturnsTheReceiverWhenNotSplit) {
    EXPECT_EQ(split(u"a,,b", u","), (Pieces{u"a", u"", u"b"}));
    EXPECT_EQ(split(u",a,", u","), (Pieces{u"", u"a", u""}));
    EXPECT_EQ(split(u"a,", u","), (Pieces{u"a", u""}));
    EXPECT_EQ(split(u",", u","), (Pieces{u"", u""}));
    EXPECT_EQ(split(u"one, two, three", u", "), (Pieces{u"one", u"two", u"three"}));
    EXPECT_EQ(split(u"aaa", u"aa"), (Pieces{u"", u"a"}));  // left to right, never overlapping
    EXPECT_EQ(split(u"x→y→→z", u"→"), (Pieces{u"x", u"y", u"", u"z"}));
    // Splitting is literal.
    EXPECT_EQ(split(u"aXbxc", u"x"), (Pieces{u"aXb", u"c"}));

    auto s = string(u"a,b");
    {
        auto array = own(CFStringCreateArrayBySeparatingStrings(nullptr, s, CFSTR(",")));
        ASSERT_EQ(CFArrayGetCount(array), 2);
        EXPECT_EQ(CFGetRetainCount(CFArrayGetValueAtIndex(array, 0)), 1);  // held by the array only
        EXPECT_EQ(CFGetRetainCount(s), 1);
    }
    for (std::u16string_view separator : {u";", u"", u"a,b,"}) {
        auto array = own(CFStringCreateArrayBySeparatingStrings(nullptr, s, string(separator)));
        ASSERT_EQ(CFArrayGetCount(array), 1);
        EXPECT_EQ(CFArrayGetValueAtIndex(array, 0), s.get());
        EXPECT_EQ(CFGetRetainCount(s), 2);
    }
    EXPECT_EQ(CFGetRetainCount(s), 1);
    auto empty = string(u"");
    auto ofEmpty = own(CFStringCreateArrayBySeparatingStrings(nullptr, empty, CFSTR(",")));
    ASSERT_EQ(CFArrayGetCount(ofEmpty), 1);
    EXPECT_EQ(CFArrayGetValueAtIndex(ofEmpty, 0), empty.get());

    std::string reports = reportsOf([&] {
        EXPECT_EQ(CFStringCreateArrayBySeparatingStrings(nullptr, s, nullptr), nullptr);
        EXPECT_EQ(CFStringCreateArrayBySeparatingStrings(nullptr, nullptr, CFSTR(",")), nullptr);
    });
    EXPECT_EQ(occurrences(reports, "CFString: CFStringCreateArrayBySeparatingStrings(): not a string"), 2);
}

TEST(StringCombining, JoinsWithTheSeparator) {
    auto a = string(u"a");
    auto b = string(u"bé");
    auto c = string(u"");
    const void* three[] = {a.get(), b.get(), c.get()};
    auto array = own(CFArrayCreate(nullptr, three, 3, &kCFTypeArrayCallBacks));
    EXPECT_EQ(units(own(CFStringCreateByCombiningStrings(nullptr, array, CFSTR(", ")))), u"a, bé, ");
    EXPECT_EQ(units(own(CFStringCreateByCombiningStrings(nullptr, array, CFSTR("")))), u"abé");

    auto none = own(CFArrayCreate(nullptr, nullptr, 0, &kCFTypeArrayCallBacks));
    auto joinedNone = own(CFStringCreateByCombiningStrings(nullptr, none, CFSTR(",")));
    EXPECT_EQ(CFStringGetLength(joinedNone), 0);

    // One element: a copy of it, which for an immutable string is itself.
    const void* one[] = {b.get()};
    auto single = own(CFArrayCreate(nullptr, one, 1, &kCFTypeArrayCallBacks));
    EXPECT_EQ(CFGetRetainCount(b), 3);  // ours, and two arrays'
    {
        auto joined = own(CFStringCreateByCombiningStrings(nullptr, single, CFSTR(",")));
        EXPECT_EQ(joined.get(), b.get());
        EXPECT_EQ(CFGetRetainCount(b), 4);
    }
    auto changing = mutableString(u"m");
    const void* oneMutable[] = {changing.get()};
    auto singleMutable = own(CFArrayCreate(nullptr, oneMutable, 1, &kCFTypeArrayCallBacks));
    auto joined = own(CFStringCreateByCombiningStrings(nullptr, singleMutable, CFSTR(",")));
    EXPECT_NE(joined.get(), static_cast<CFStringRef>(changing.get()));
    CFStringAppend(changing, CFSTR("!"));
    EXPECT_EQ(units(joined), u"m");

    // Splitting and joining are inverses.
    auto parts = own(CFStringCreateArrayBySeparatingStrings(nullptr, CFSTR("x--y----z"), CFSTR("--")));
    EXPECT_EQ(ascii(own(CFStringCreateByCombiningStrings(nullptr, parts, CFSTR("--")))), "x--y----z");

    const void* mixed[] = {a.get(), kCFNull};
    auto withNull = own(CFArrayCreate(nullptr, mixed, 2, &kCFTypeArrayCallBacks));
    std::string reports = reportsOf([&] {
        EXPECT_EQ(CFStringCreateByCombiningStrings(nullptr, withNull, CFSTR(",")), nullptr);
        EXPECT_EQ(CFStringCreateByCombiningStrings(nullptr, nullptr, CFSTR(",")), nullptr);
    });
    EXPECT_EQ(lineCount(reports), 2);
    EXPECT_EQ(occurrences(reports, "is not a string"), 1);
    EXPECT_EQ(occurrences(reports, "not an array"), 1);
}

TEST(StringChanges, InsertDeleteReplace) {
    auto s = mutableString(u"hello");
    CFStringInsert(s, 0, CFSTR(">> "));
    CFStringInsert(s, 8, string(u" wörld"));
    EXPECT_EQ(units(s), u">> hello wörld");
    CFStringDelete(s, CFRangeMake(0, 3));
    EXPECT_EQ(units(s), u"hello wörld");
    CFStringReplace(s, CFRangeMake(6, 5), CFSTR("there"));
    EXPECT_EQ(units(s), u"hello there");
    CFStringReplace(s, CFRangeMake(5, 0), CFSTR(","));
    CFStringReplace(s, CFRangeMake(0, 1), CFSTR(""));
    EXPECT_EQ(units(s), u"ello, there");
    CFStringReplaceAll(s, string(u"\U0001F600"));
    EXPECT_EQ(units(s), u"\U0001F600");
    // The receiver may be its own argument.
    auto self = mutableString(u"abc");
    CFStringReplace(self, CFRangeMake(1, 1), self);
    EXPECT_EQ(units(self), u"aabcc");
    CFStringInsert(self, 5, self);
    EXPECT_EQ(units(self), u"aabccaabcc");
    CFStringReplaceAll(self, self);
    EXPECT_EQ(units(self), u"aabccaabcc");

    auto fixed = string(u"fixed");
    std::string reports = reportsOf([&] {
        CFStringInsert(s, 3, CFSTR("x"));
        CFStringDelete(s, CFRangeMake(1, 2));
        CFStringReplace(s, CFRangeMake(-1, 1), CFSTR("x"));
        CFStringReplace((CFMutableStringRef)fixed.get(), CFRangeMake(0, 1), CFSTR("x"));
        CFStringReplaceAll(s, nullptr);
        CFStringDelete(nullptr, CFRangeMake(0, 0));
    });
    EXPECT_EQ(lineCount(reports), 6);
    EXPECT_EQ(occurrences(reports, "CFString: CFStringInsert(): range {3, 0} out of bounds (length 2)"), 1);
    EXPECT_EQ(occurrences(reports, "CFString: CFStringDelete(): range {1, 2} out of bounds (length 2)"), 1);
    EXPECT_EQ(occurrences(reports, "CFString: CFStringReplace(): Expect mutable string"), 1);
    EXPECT_EQ(units(s), u"\U0001F600");
    EXPECT_EQ(units(fixed), u"fixed");
}

TEST(StringChanges, FindAndReplace) {
    auto s = mutableString(u"a-b-c-");
    EXPECT_EQ(CFStringFindAndReplace(s, CFSTR("-"), CFSTR("+="), CFRangeMake(0, 6), 0), 3);
    EXPECT_EQ(units(s), u"a+=b+=c+=");
    EXPECT_EQ(CFStringFindAndReplace(s, CFSTR("+="), CFSTR(""), CFRangeMake(1, 5), 0), 2);
    EXPECT_EQ(units(s), u"abc+=");
    EXPECT_EQ(CFStringFindAndReplace(s, CFSTR("x"), CFSTR("y"), CFRangeMake(0, 5), 0), 0);
    EXPECT_EQ(CFStringFindAndReplace(s, CFSTR(""), CFSTR("y"), CFRangeMake(0, 5), 0), 0);
    EXPECT_EQ(units(s), u"abc+=");

    auto greeting = mutableString(u"Hello hello HELLO");
    EXPECT_EQ(
        CFStringFindAndReplace(greeting, CFSTR("hello"), CFSTR("bye"), CFRangeMake(0, 17), kCFCompareCaseInsensitive),
        3);
    EXPECT_EQ(units(greeting), u"bye bye bye");
    EXPECT_EQ(CFStringFindAndReplace(greeting, CFSTR("bye"), CFSTR("hi"), CFRangeMake(0, 11), kCFCompareAnchored), 1);
    EXPECT_EQ(CFStringFindAndReplace(greeting, CFSTR("bye"), CFSTR("ho"), CFRangeMake(0, 9),
                                     kCFCompareAnchored | kCFCompareBackwards),
              0);
    EXPECT_EQ(CFStringFindAndReplace(greeting, CFSTR("bye"), CFSTR("ho"), CFRangeMake(0, 10), kCFCompareBackwards), 2);
    EXPECT_EQ(units(greeting), u"hi ho ho");

    // Matches of other lengths than the needle are replaced whole.
    auto street = mutableString(u"Straße STRASSE");
    EXPECT_EQ(CFStringFindAndReplace(street, CFSTR("ss"), CFSTR("_"), CFRangeMake(0, 14), kCFCompareCaseInsensitive),
              2);
    EXPECT_EQ(units(street), u"Stra_e STRA_E");
    // The replacement may be the receiver, read before any change.
    auto echo = mutableString(u"x.x");
    EXPECT_EQ(CFStringFindAndReplace(echo, CFSTR("x"), echo, CFRangeMake(0, 3), 0), 2);
    EXPECT_EQ(units(echo), u"x.x.x.x");

    auto fixed = string(u"fixed");
    std::string reports = reportsOf([&] {
        EXPECT_EQ(CFStringFindAndReplace((CFMutableStringRef)fixed.get(), CFSTR("f"), CFSTR("F"), CFRangeMake(0, 5), 0),
                  0);
        EXPECT_EQ(CFStringFindAndReplace(echo, CFSTR("x"), CFSTR("y"), CFRangeMake(0, 8), 0), 0);
        EXPECT_EQ(CFStringFindAndReplace(echo, nullptr, CFSTR("y"), CFRangeMake(0, 1), 0), 0);
    });
    EXPECT_EQ(lineCount(reports), 3);
    EXPECT_EQ(occurrences(reports, "CFString: CFStringFindAndReplace(): Expect mutable string"), 1);
    EXPECT_EQ(occurrences(reports, "CFString: CFStringFindAndReplace(): range {0, 8} out of bounds (length 7)"), 1);
    EXPECT_EQ(units(echo), u"x.x.x.x");
}

TEST(StringChanges, TrimRepeatedOccurrencesAtBothEnds) {
    struct Case {
        std::u16string_view text, trim, expected;
    };
    const Case cases[] = {
        {u"xxaxx", u"x", u"a"},    {u"abab", u"ab", u""}, {u"aaa", u"aa", u"a"},
        {u"abcab", u"ab", u"c"},   {u"abc", u"", u"abc"}, {u"", u"x", u""},
        {u"xyx", u"xyxy", u"xyx"}, {u"éaé", u"é", u"a"},  {u"--a--b--", u"--", u"a--b"},
    };
    for (const Case& c : cases) {
        auto s = mutableString(c.text);
        CFStringTrim(s, string(c.trim));
        EXPECT_EQ(units(s), c.expected) << std::string(c.text.begin(), c.text.end());
    }
}

TEST(StringChanges, TrimWhitespaceUsesTheWhitespaceAndNewlineSet) {
    auto s = mutableString(u" \t\n\r\v\f\u0085\u00A0\u1680\u2000\u200Bhello world\u3000\u2028\u2029\u202F\u205F ");
    CFStringTrimWhitespace(s);
    EXPECT_EQ(units(s), u"hello world");
    // U+FEFF is not whitespace.
    auto bom = mutableString(u"\uFEFF x \uFEFF");
    CFStringTrimWhitespace(bom);
    EXPECT_EQ(units(bom), u"\uFEFF x \uFEFF");
    auto blank = mutableString(u" \u3000\n");
    CFStringTrimWhitespace(blank);
    EXPECT_EQ(CFStringGetLength(blank), 0);
    CFStringTrimWhitespace(blank);
    EXPECT_EQ(CFStringGetLength(blank), 0);

    auto fixed = string(u" x ");
    std::string reports = reportsOf([&] {
        CFStringTrimWhitespace((CFMutableStringRef)fixed.get());
        CFStringTrim((CFMutableStringRef)fixed.get(), CFSTR(" "));
        CFStringTrim(s, nullptr);
    });
    EXPECT_EQ(lineCount(reports), 3);
    EXPECT_EQ(occurrences(reports, "CFString: CFStringTrimWhitespace(): Expect mutable string"), 1);
    EXPECT_EQ(occurrences(reports, "CFString: CFStringTrim(): Expect mutable string"), 1);
    EXPECT_EQ(units(fixed), u" x ");
}
