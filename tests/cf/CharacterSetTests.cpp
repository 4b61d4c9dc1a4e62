// CFCharacterSet: predefined sets, creation, surrogates, changes, equality,
// descriptions and misuse.
#include "CFTestSupport.h"
#include "MisuseReports.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

using namespace cftest;

namespace {

CFCharacterSetRef predefined(CFCharacterSetPredefinedSet identifier) {
    return CFCharacterSetGetPredefined(identifier);
}

std::string description(CFTypeRef cf) {
    auto text = own(CFCopyDescription(cf));
    return ascii(text);
}

// Every code point of the set, found by testing them all.
std::vector<UTF32Char> membersOf(CFCharacterSetRef set) {
    std::vector<UTF32Char> members;
    for (UTF32Char c = 0; c <= 0x10FFFF; ++c) {
        if (CFCharacterSetIsLongCharacterMember(set, c)) members.push_back(c);
    }
    return members;
}

// The printable ASCII characters that are members.
std::string asciiMembers(CFCharacterSetRef set) {
    std::string members;
    for (UniChar c = 0x20; c < 0x7F; ++c) {
        if (CFCharacterSetIsCharacterMember(set, c)) members.push_back(char(c));
    }
    return members;
}

Owned<CFCharacterSetRef> setOf(std::u16string_view text) {
    return own(CFCharacterSetCreateWithCharactersInString(nullptr, string(text)));
}

}  // namespace

TEST(CharacterSetPredefined, WhitespaceAndNewlineSetsAreTheFixedLists) {
    std::vector<UTF32Char> whitespace = {0x09, 0x20, 0xA0, 0x1680};
    for (UTF32Char c = 0x2000; c <= 0x200B; ++c) whitespace.push_back(c);
    whitespace.insert(whitespace.end(), {0x202F, 0x205F, 0x3000});
    EXPECT_EQ(membersOf(predefined(kCFCharacterSetWhitespace)), whitespace);

    std::vector<UTF32Char> newline = {0x0A, 0x0B, 0x0C, 0x0D, 0x85, 0x2028, 0x2029};
    EXPECT_EQ(membersOf(predefined(kCFCharacterSetNewline)), newline);

    std::vector<UTF32Char> both = {0x09, 0x0A, 0x0B, 0x0C, 0x0D, 0x20, 0x85, 0xA0, 0x1680};
    for (UTF32Char c = 0x2000; c <= 0x200B; ++c) both.push_back(c);
    both.insert(both.end(), {0x2028, 0x2029, 0x202F, 0x205F, 0x3000});
    EXPECT_EQ(membersOf(predefined(kCFCharacterSetWhitespaceAndNewline)), both);
    // U+200B is whitespace although it is not a space separator; U+FEFF is not.
    EXPECT_TRUE(CFCharacterSetIsCharacterMember(predefined(kCFCharacterSetWhitespace), 0x200B));
    EXPECT_FALSE(CFCharacterSetIsCharacterMember(predefined(kCFCharacterSetWhitespaceAndNewline), 0xFEFF));
}

TEST(CharacterSetPredefined, CategorySetsFollowUnicode) {
    struct Case {
        CFCharacterSetPredefinedSet set;
        std::vector<UTF32Char> members, nonMembers;
    };
    const Case cases[] = {
        {kCFCharacterSetControl, {0x00, 0x1F, 0x7F, 0x9F, 0xAD, 0x200B, 0x200F, 0xFEFF}, {'A', ' ', 0xA0}},
        {kCFCharacterSetDecimalDigit, {'0', '9', 0x0660, 0x0966, 0xFF10, 0x1D7CE}, {'a', 0xB2, 0xBD, 0x2160}},
        {kCFCharacterSetLetter, {'a', 'Z', 0xE9, 0x0301, 0x0903, 0x4E00, 0x1D400}, {'1', 0xB2, ' ', '_'}},
        {kCFCharacterSetLowercaseLetter, {'a', 0xDF, 0x03C3}, {'A', 0x01C5, '1'}},
        {kCFCharacterSetUppercaseLetter, {'A', 0x01C5, 0x0130}, {'a', '1'}},
        {kCFCharacterSetNonBase, {0x0301, 0x0903, 0x20DD}, {'a', 0xE9}},
        {kCFCharacterSetDecomposable, {0xE9, 0xC5, 0x212B, 0xAC00, 0xD7A3}, {'e', 0xB2, 0xFB01}},
        {kCFCharacterSetAlphaNumeric, {'a', '1', 0xB2, 0xB3, 0xB9, 0xBC, 0xBD, 0xBE, 0x0301, 0x0660}, {' ', '_', '-'}},
        {kCFCharacterSetIllegal, {0x0378, 0xFDD0, 0xFFFE, 0xFFFF, 0x1FFFE, 0x10FFFF}, {'a', 0xE000, 0x1F600}},
        {kCFCharacterSetCapitalizedLetter, {0x01C5, 0x01C8, 0x1F88}, {'A', 'a'}},
    };
    for (const Case& c : cases) {
        for (UTF32Char member : c.members) {
            EXPECT_TRUE(CFCharacterSetIsLongCharacterMember(predefined(c.set), member)) << c.set << " " << member;
        }
        for (UTF32Char other : c.nonMembers) {
            EXPECT_FALSE(CFCharacterSetIsLongCharacterMember(predefined(c.set), other)) << c.set << " " << other;
        }
    }
    EXPECT_EQ(asciiMembers(predefined(kCFCharacterSetPunctuation)), "!\"#%&'()*,-./:;?@[\\]_{}");
    EXPECT_EQ(asciiMembers(predefined(kCFCharacterSetSymbol)), "$+<=>^`|~");
    EXPECT_EQ(asciiMembers(predefined(kCFCharacterSetDecimalDigit)), "0123456789");
    EXPECT_EQ(asciiMembers(predefined(kCFCharacterSetAlphaNumeric)),
              "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz");
}

TEST(CharacterSetPredefined, SharedImmortalAndDescribedByName) {
    const char* names[] = {"Control",           "Whitespace",  "WhitespaceAndNewline",
                           "DecimalDigit",      "Letter",      "LowercaseLetter",
                           "UppercaseLetter",   "NonBase",     "Decomposable",
                           "AlphaNumeric",      "Punctuation", "Illegal",
                           "CapitalizedLetter", "Symbol",      "Newline"};
    for (CFCharacterSetPredefinedSet id = 1; id <= 15; ++id) {
        CFCharacterSetRef set = predefined(id);
        ASSERT_NE(set, nullptr);
        EXPECT_EQ(predefined(id), set);
        EXPECT_EQ(CFGetTypeID(set), CFCharacterSetGetTypeID());
        EXPECT_EQ(description(set), std::string("<CFCharacterSet Predefined ") + names[id - 1] + " Set>");
    }
    CFCharacterSetRef letters = predefined(kCFCharacterSetLetter);
    EXPECT_EQ(CFGetRetainCount(letters), kImmortal);
    CFRelease(letters);
    CFRelease(letters);
    EXPECT_TRUE(CFCharacterSetIsCharacterMember(letters, 'q'));
    EXPECT_EQ(CFCharacterSetGetTypeID(), 25u);

    std::string reports = reportsOf([] {
        EXPECT_EQ(predefined(0), nullptr);
        EXPECT_EQ(predefined(16), nullptr);
    });
    EXPECT_EQ(lineCount(reports), 2);
    EXPECT_EQ(occurrences(reports, "unknown predefined set 16"), 1);
}

TEST(CharacterSetPredefined, BuiltOnceAcrossThreads) {
    std::vector<CFCharacterSetRef> seen(8);
    std::vector<std::thread> threads;
    for (size_t k = 0; k < seen.size(); ++k) {
        threads.emplace_back([&seen, k] { seen[k] = predefined(kCFCharacterSetSymbol); });
    }
    for (std::thread& t : threads) t.join();
    for (CFCharacterSetRef set : seen) EXPECT_EQ(set, seen[0]);
    EXPECT_TRUE(CFCharacterSetIsCharacterMember(seen[0], '+'));
}

TEST(CharacterSetCreation, FromStringWithSurrogates) {
    auto abc = setOf(u"cabba");
    EXPECT_EQ(asciiMembers(abc), "abc");
    EXPECT_EQ(description(abc), "<CFCharacterSet Items(U+0061 U+0062 U+0063)>");
    EXPECT_EQ(CFGetRetainCount(abc), 1);

    // A pair is its code point, never its halves; unpaired halves count
    // for nothing.
    auto mixed = setOf(u"x\U0001F600\xD800y\xDC00");
    EXPECT_EQ(membersOf(mixed), (std::vector<UTF32Char>{'x', 'y', 0x1F600}));
    EXPECT_FALSE(CFCharacterSetIsCharacterMember(mixed, 0xD83D));
    EXPECT_FALSE(CFCharacterSetIsCharacterMember(mixed, 0xDE00));
    EXPECT_EQ(description(mixed), "<CFCharacterSet Items(U+0078 U+0079 U+1F600)>");

    EXPECT_EQ(description(setOf(u"")), "<CFCharacterSet Empty>");
    EXPECT_EQ(membersOf(setOf(u"")).size(), 0u);

    std::u16string sixtyFour, sixtyFive;
    for (UniChar c = 0x100; c < 0x140; ++c) sixtyFour.push_back(c);
    sixtyFive = sixtyFour + u"!";
    EXPECT_EQ(description(setOf(sixtyFour)).substr(0, 37), "<CFCharacterSet Items(U+0100 U+0101 U");
    EXPECT_EQ(description(setOf(sixtyFive)), "<CFCharacterSet Bitmap>");
}

TEST(CharacterSetCreation, FromRange) {
    auto lower = own(CFCharacterSetCreateWithCharactersInRange(nullptr, CFRangeMake(97, 26)));
    EXPECT_EQ(description(lower), "<CFCharacterSet Range(97, 26)>");
    EXPECT_EQ(asciiMembers(lower), "abcdefghijklmnopqrstuvwxyz");
    EXPECT_TRUE(CFEqual(lower, setOf(u"zyxwvutsrqponmlkjihgfedcba")));

    auto crossing = own(CFCharacterSetCreateWithCharactersInRange(nullptr, CFRangeMake(0xFFF0, 0x20)));
    EXPECT_EQ(membersOf(crossing).size(), 0x20u);
    EXPECT_TRUE(CFCharacterSetIsLongCharacterMember(crossing, 0xFFFF));
    EXPECT_TRUE(CFCharacterSetIsLongCharacterMember(crossing, 0x1000F));
    EXPECT_FALSE(CFCharacterSetIsLongCharacterMember(crossing, 0x10010));

    auto empty = own(CFCharacterSetCreateWithCharactersInRange(nullptr, CFRangeMake(500, 0)));
    EXPECT_EQ(description(empty), "<CFCharacterSet Empty>");
    auto everything = own(CFCharacterSetCreateWithCharactersInRange(nullptr, CFRangeMake(0, 0x110000)));
    EXPECT_EQ(description(everything), "<CFCharacterSet All>");
    EXPECT_FALSE(CFCharacterSetIsLongCharacterMember(everything, 0x110000));

    std::string reports = reportsOf([] {
        EXPECT_EQ(CFCharacterSetCreateWithCharactersInRange(nullptr, CFRangeMake(-1, 2)), nullptr);
        EXPECT_EQ(CFCharacterSetCreateWithCharactersInRange(nullptr, CFRangeMake(0x10FFFF, 2)), nullptr);
        EXPECT_EQ(CFCharacterSetCreateWithCharactersInRange(nullptr, CFRangeMake(0, -1)), nullptr);
    });
    EXPECT_EQ(lineCount(reports), 3);
    EXPECT_EQ(occurrences(reports, "Range (location: -1, length: 2) outside of valid Unicode range (0x0 - 0x10FFFF)"),
              1);
    EXPECT_EQ(occurrences(reports, "Range (location: 1114111, length: 2) outside of valid Unicode range"), 1);
}

TEST(CharacterSetCreation, InvertedAndCopies) {
    auto abc = setOf(u"abc");
    auto inverted = own(CFCharacterSetCreateInvertedSet(nullptr, abc));
    EXPECT_FALSE(CFCharacterSetIsCharacterMember(inverted, 'a'));
    EXPECT_TRUE(CFCharacterSetIsCharacterMember(inverted, 'd'));
    // The complement holds surrogate and unassigned code points too.
    EXPECT_TRUE(CFCharacterSetIsCharacterMember(inverted, 0xD800));
    EXPECT_TRUE(CFCharacterSetIsLongCharacterMember(inverted, 0x10FFFF));
    EXPECT_EQ(membersOf(inverted).size(), 0x110000u - 3);
    EXPECT_EQ(description(inverted), "<CFCharacterSet Bitmap>");
    EXPECT_TRUE(CFEqual(own(CFCharacterSetCreateInvertedSet(nullptr, inverted)), abc));
    EXPECT_EQ(description(own(CFCharacterSetCreateInvertedSet(nullptr, setOf(u"")))), "<CFCharacterSet All>");

    auto range = own(CFCharacterSetCreateWithCharactersInRange(nullptr, CFRangeMake(0x10000, 5)));
    auto copy = own(CFCharacterSetCreateCopy(nullptr, range));
    EXPECT_NE(copy.get(), range.get());
    EXPECT_EQ(description(copy), "<CFCharacterSet Range(65536, 5)>");
    EXPECT_TRUE(CFEqual(copy, range));
    EXPECT_EQ(CFHash(copy), CFHash(range));

    auto digits = own(CFCharacterSetCreateMutableCopy(nullptr, predefined(kCFCharacterSetDecimalDigit)));
    EXPECT_EQ(description(digits), "<CFCharacterSet Predefined DecimalDigit Set>");
    CFCharacterSetAddCharactersInString(digits, CFSTR("x"));
    EXPECT_EQ(description(digits), "<CFCharacterSet Bitmap>");
    EXPECT_TRUE(CFCharacterSetIsCharacterMember(digits, 'x'));
    EXPECT_TRUE(CFCharacterSetIsCharacterMember(digits, 0x0660));
    EXPECT_FALSE(CFCharacterSetIsCharacterMember(predefined(kCFCharacterSetDecimalDigit), 'x'));
}

TEST(CharacterSetMutation, AddRemoveUnionIntersectInvert) {
    auto set = own(CFCharacterSetCreateMutable(nullptr));
    EXPECT_EQ(description(set), "<CFCharacterSet Empty>");
    CFCharacterSetAddCharactersInString(set, CFSTR("hello"));
    EXPECT_EQ(asciiMembers(set), "ehlo");
    EXPECT_EQ(description(set), "<CFCharacterSet Bitmap>");
    CFCharacterSetRemoveCharactersInString(set, CFSTR("lx"));
    EXPECT_EQ(asciiMembers(set), "eho");

    CFCharacterSetAddCharactersInRange(set, CFRangeMake(0x10000, 0x100));
    CFCharacterSetRemoveCharactersInRange(set, CFRangeMake(0x10010, 0x10));
    EXPECT_TRUE(CFCharacterSetIsLongCharacterMember(set, 0x1000F));
    EXPECT_FALSE(CFCharacterSetIsLongCharacterMember(set, 0x10010));
    EXPECT_FALSE(CFCharacterSetIsLongCharacterMember(set, 0x1001F));
    EXPECT_TRUE(CFCharacterSetIsLongCharacterMember(set, 0x10020));
    EXPECT_EQ(membersOf(set).size(), 3u + 0x100 - 0x10);
    CFCharacterSetRemoveCharactersInString(set, string(u"\U00010000\U000100FF"));
    EXPECT_EQ(membersOf(set).size(), 3u + 0x100 - 0x12);

    CFCharacterSetUnion(set, setOf(u"xyz\U0001F600"));
    EXPECT_EQ(asciiMembers(set), "ehoxyz");
    EXPECT_TRUE(CFCharacterSetIsLongCharacterMember(set, 0x1F600));
    CFCharacterSetIntersect(set, setOf(u"oxq\U0001F600\U00010001"));
    EXPECT_EQ(membersOf(set), (std::vector<UTF32Char>{'o', 'x', 0x10001, 0x1F600}));
    CFCharacterSetUnion(set, set);
    CFCharacterSetIntersect(set, set);
    EXPECT_EQ(membersOf(set).size(), 4u);

    CFCharacterSetInvert(set);
    EXPECT_FALSE(CFCharacterSetIsCharacterMember(set, 'o'));
    EXPECT_TRUE(CFCharacterSetIsCharacterMember(set, 'p'));
    EXPECT_FALSE(CFCharacterSetIsLongCharacterMember(set, 0x1F600));
    EXPECT_TRUE(CFCharacterSetIsLongCharacterMember(set, 0x1F601));
    CFCharacterSetInvert(set);
    EXPECT_EQ(membersOf(set), (std::vector<UTF32Char>{'o', 'x', 0x10001, 0x1F600}));
    CFCharacterSetRemoveCharactersInRange(set, CFRangeMake(0, 0x110000));
    EXPECT_EQ(description(set), "<CFCharacterSet Empty>");
    CFCharacterSetInvert(set);
    EXPECT_EQ(description(set), "<CFCharacterSet All>");
}

TEST(CharacterSetMutation, ImmutableAndPredefinedSetsAreRefused) {
    auto abc = setOf(u"abc");
    CFCharacterSetRef whitespace = predefined(kCFCharacterSetWhitespace);
    std::string reports = reportsOf([&] {
        CFCharacterSetAddCharactersInString((CFMutableCharacterSetRef)abc.get(), CFSTR("d"));
        CFCharacterSetInvert((CFMutableCharacterSetRef)abc.get());
        CFCharacterSetAddCharactersInRange((CFMutableCharacterSetRef)whitespace, CFRangeMake('a', 1));
        CFCharacterSetUnion((CFMutableCharacterSetRef)whitespace, abc);
    });
    EXPECT_EQ(lineCount(reports), 4);
    EXPECT_EQ(
        occurrences(reports, "CFCharacterSet: CFCharacterSetAddCharactersInString(): Expect mutable character set"), 1);
    EXPECT_EQ(occurrences(reports, "predefined sets never change"), 2);
    EXPECT_EQ(asciiMembers(abc), "abc");
    EXPECT_EQ(description(abc), "<CFCharacterSet Items(U+0061 U+0062 U+0063)>");
    EXPECT_FALSE(CFCharacterSetIsCharacterMember(whitespace, 'a'));
    EXPECT_FALSE(CFCharacterSetIsCharacterMember(whitespace, 'b'));

    auto mutableSet = own(CFCharacterSetCreateMutable(nullptr));
    reports = reportsOf([&] { CFCharacterSetAddCharactersInRange(mutableSet, CFRangeMake(0x10FFFF, 5)); });
    EXPECT_EQ(occurrences(reports, "CFCharacterSetAddCharactersInRange(): Range (location: 1114111, length: 5)"), 1);
    EXPECT_EQ(membersOf(mutableSet).size(), 0u);
}

TEST(CharacterSetEquality, ByMembershipWithMatchingHashes) {
    std::u16string whitespaceText =
        u"\t \u00A0\u1680\u2000\u2001\u2002\u2003\u2004\u2005\u2006\u2007\u2008\u2009"
        u"\u200A\u200B\u202F\u205F\u3000";
    auto built = setOf(whitespaceText);
    CFCharacterSetRef whitespace = predefined(kCFCharacterSetWhitespace);
    EXPECT_TRUE(CFEqual(built, whitespace));
    EXPECT_EQ(CFHash(built), CFHash(whitespace));

    auto growing = own(CFCharacterSetCreateMutable(nullptr));
    CFCharacterSetAddCharactersInRange(growing, CFRangeMake('a', 3));
    CFCharacterSetAddCharactersInRange(growing, CFRangeMake(0x1F600, 1));
    auto fromString = setOf(u"\U0001F600cab");
    EXPECT_TRUE(CFEqual(growing, fromString));
    EXPECT_EQ(CFHash(growing), CFHash(fromString));
    // A bitmap that once held members and is empty again equals a set
    // that never had any.
    CFCharacterSetRemoveCharactersInString(growing, CFSTR("abc"));
    CFCharacterSetRemoveCharactersInRange(growing, CFRangeMake(0x1F600, 1));
    EXPECT_TRUE(CFEqual(growing, setOf(u"")));
    EXPECT_EQ(CFHash(growing), CFHash(setOf(u"")));

    EXPECT_FALSE(CFEqual(setOf(u"ab"), setOf(u"abc")));
    EXPECT_FALSE(CFEqual(setOf(u"\U0001F600"), setOf(u"\U0001F601")));
    EXPECT_FALSE(CFEqual(setOf(u"a"), CFSTR("a")));
}

TEST(CharacterSetMisuse, NullAndWrongTypesAreReported) {
    CFTypeRef notASet = CFSTR("abc");
    auto mutableSet = own(CFCharacterSetCreateMutable(nullptr));
    std::string reports = reportsOf([&] {
        EXPECT_FALSE(CFCharacterSetIsCharacterMember(nullptr, 'a'));
        EXPECT_FALSE(CFCharacterSetIsLongCharacterMember((CFCharacterSetRef)notASet, 'a'));
        EXPECT_EQ(CFCharacterSetCreateWithCharactersInString(nullptr, nullptr), nullptr);
        EXPECT_EQ(CFCharacterSetCreateInvertedSet(nullptr, nullptr), nullptr);
        EXPECT_EQ(CFCharacterSetCreateCopy(nullptr, (CFCharacterSetRef)notASet), nullptr);
        EXPECT_EQ(CFCharacterSetCreateMutableCopy(nullptr, nullptr), nullptr);
        CFCharacterSetUnion(mutableSet, (CFCharacterSetRef)notASet);
        CFCharacterSetAddCharactersInString(mutableSet, nullptr);
        CFCharacterSetInvert(nullptr);
    });
    EXPECT_EQ(lineCount(reports), 9);
    EXPECT_EQ(occurrences(reports, "not a character set"), 7);
    EXPECT_EQ(occurrences(reports, "not a string"), 2);
    EXPECT_EQ(membersOf(mutableSet).size(), 0u);
    EXPECT_EQ(CFCharacterSetCreateWithCharactersInString(kCFAllocatorNull, CFSTR("a")), nullptr);
}
