// String storage: constant strings, creation from UTF-16 units, the
// no-copy forms, copies, mutation, equality, hashing and descriptions.
#include "CFTestSupport.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <regex>

using namespace cftest;

TEST(StringConstants, OneImmortalObjectPerLiteral) {
    CFStringRef a = CFSTR("interned");
    CFStringRef b = CFSTR("interned");
    EXPECT_EQ(a, b);
    // The same text reached through the C entry point is the same object.
    EXPECT_EQ(__CFStringMakeConstantString("interned", 8), a);
    EXPECT_EQ(CFGetRetainCount(a), kImmortal);
    CFRelease(a);
    CFRelease(a);
    EXPECT_EQ(CFStringGetLength(a), 8);
    EXPECT_EQ(CFGetTypeID(a), CFStringGetTypeID());
}

TEST(StringConstants, TextIsUTF8AndKeepsEmbeddedNuls) {
    CFStringRef accented = CFSTR("caf\xC3\xA9 \xE2\x82\xAC");
    EXPECT_EQ(units(accented), u"café €");
    CFStringRef withNul = CFSTR("a\0b");
    EXPECT_EQ(CFStringGetLength(withNul), 3);
    EXPECT_EQ(units(withNul), std::u16string(u"a\0b", 3));
    CFStringRef supplementary = CFSTR("\xF0\x9F\x98\x80");
    EXPECT_EQ(units(supplementary), u"\U0001F600");
    // Bytes that are not UTF-8 stand for the characters of the same value.
    EXPECT_EQ(units(__CFStringMakeConstantString("\xE9t\xE9", 3)), u"été");
}

TEST(StringConstants, EmptyLiteralIsTheSharedEmptyString) {
    CFStringRef empty = CFSTR("");
    EXPECT_EQ(CFStringGetLength(empty), 0);
    EXPECT_EQ(CFGetRetainCount(empty), kImmortal);
    EXPECT_EQ(__CFStringMakeConstantString("", 0), empty);
    EXPECT_EQ(CFStringCreateWithCharacters(nullptr, nullptr, 0), empty);
}

TEST(StringCreation, CharactersAreCopied) {
    std::u16string text = u"Grüße, 世界 \U0001F600";
    auto s = string(text);
    ASSERT_TRUE(s);
    EXPECT_EQ(CFGetRetainCount(s), 1);
    text[0] = u'X';  // the string has its own copy
    EXPECT_EQ(units(s), u"Grüße, 世界 \U0001F600");
    EXPECT_EQ(CFStringGetLength(s), 12);
    EXPECT_EQ(CFStringGetCharacterAtIndex(s, 2), u'ü');
    // A supplementary character is two units.
    EXPECT_EQ(CFStringGetCharacterAtIndex(s, 10), 0xD83D);
    EXPECT_EQ(CFStringGetCharacterAtIndex(s, 11), 0xDE00);
    ASSERT_NE(CFStringGetCharactersPtr(s), nullptr);
    EXPECT_EQ(CFStringGetCharactersPtr(s)[0], u'G');

    // Unpaired surrogates are not validated.
    UniChar lone[] = {u'a', 0xD800, u'b'};
    auto loneString = own(CFStringCreateWithCharacters(nullptr, lone, 3));
    EXPECT_EQ(units(loneString), std::u16string(lone, lone + 3));

    EXPECT_EQ(CFStringCreateWithCharacters(nullptr, nullptr, 3), nullptr);
    EXPECT_EQ(CFStringCreateWithCharacters(nullptr, lone, -1), nullptr);
    EXPECT_EQ(CFStringCreateWithCharacters(kCFAllocatorNull, lone, 3), nullptr);
}

TEST(StringCreation, AsciiAndWideStoragesBehaveAlike) {
    auto ascii = string(u"hello world");
    UniChar wideUnits[] = {u'h', u'e', u'l', u'l', u'o', u' ', u'w', u'o', u'r', u'l', u'd'};
    // The no-copy form keeps UTF-16 storage even for ASCII text.
    auto wide = own(CFStringCreateWithCharactersNoCopy(nullptr, wideUnits, 11, kCFAllocatorNull));
    EXPECT_EQ(CFStringGetCharactersPtr(ascii), nullptr);
    EXPECT_EQ(CFStringGetCharactersPtr(wide), wideUnits);
    EXPECT_TRUE(CFEqual(ascii, wide));
    EXPECT_TRUE(CFEqual(wide, ascii));
    EXPECT_EQ(CFHash(ascii), CFHash(wide));
    EXPECT_EQ(units(ascii), units(wide));
}

TEST(StringCreation, NoCopyHonoursTheDeallocator) {
    // kCFAllocatorNull: the buffer stays the caller's.
    UniChar stackUnits[] = {u'x', u'y'};
    {
        auto s = own(CFStringCreateWithCharactersNoCopy(nullptr, stackUnits, 2, kCFAllocatorNull));
        EXPECT_EQ(units(s), u"xy");
    }
    EXPECT_EQ(stackUnits[0], u'x');

    // The default deallocator frees a malloc'ed buffer with the string; the
    // leak checker of the test build fails the run if it does not.
    auto* heapUnits = static_cast<UniChar*>(std::malloc(3 * sizeof(UniChar)));
    heapUnits[0] = u'é';
    heapUnits[1] = u'a';
    heapUnits[2] = u'b';
    CFStringRef s = CFStringCreateWithCharactersNoCopy(nullptr, heapUnits, 3, nullptr);
    EXPECT_EQ(units(s), u"éab");
    CFRelease(s);

    // An empty no-copy string is the shared empty one; the buffer goes at once.
    auto* emptyUnits = static_cast<UniChar*>(std::malloc(sizeof(UniChar)));
    EXPECT_EQ(CFStringCreateWithCharactersNoCopy(nullptr, emptyUnits, 0, kCFAllocatorDefault), CFSTR(""));
}

TEST(StringCopies, ImmutableCopiesShareMutableCopiesDoNot) {
    auto original = string(u"copy me");
    auto copy = own(CFStringCreateCopy(nullptr, original));
    EXPECT_EQ(copy.get(), original.get());
    EXPECT_EQ(CFGetRetainCount(original), 2);

    auto mutableCopy = own(CFStringCreateMutableCopy(nullptr, 0, original));
    ASSERT_NE(mutableCopy.get(), nullptr);
    EXPECT_NE(static_cast<CFStringRef>(mutableCopy.get()), original.get());
    EXPECT_TRUE(CFEqual(mutableCopy, original));
    CFStringAppend(mutableCopy, CFSTR("!"));
    EXPECT_EQ(units(original), u"copy me");
    EXPECT_EQ(units(mutableCopy), u"copy me!");

    // Copying a mutable string gives an independent immutable one.
    auto frozen = own(CFStringCreateCopy(nullptr, mutableCopy));
    EXPECT_NE(frozen.get(), static_cast<CFStringRef>(mutableCopy.get()));
    CFStringAppend(mutableCopy, CFSTR("?"));
    EXPECT_EQ(units(frozen), u"copy me!");
    CFStringAppend(const_cast<CFMutableStringRef>(frozen.get()), CFSTR("x"));  // refused
    EXPECT_EQ(units(frozen), u"copy me!");

    EXPECT_EQ(CFStringCreateCopy(nullptr, nullptr), nullptr);
    EXPECT_EQ(CFStringCreateMutableCopy(nullptr, 0, nullptr), nullptr);
}

TEST(StringMutation, AppendGrowsAndAcceptsItself) {
    auto s = own(CFStringCreateMutable(nullptr, 2));
    EXPECT_EQ(CFStringGetLength(s), 0);
    EXPECT_EQ(units(s), u"");
    std::u16string expected;
    for (int i = 0; i < 200; ++i) {
        CFStringAppend(s, CFSTR("ab"));
        UniChar wide[] = {u'€'};
        CFStringAppendCharacters(s, wide, 1);
        expected += u"ab€";
    }
    EXPECT_EQ(units(s), expected);
    CFStringAppend(s, s);
    EXPECT_EQ(units(s), expected + expected);
    // A mutable string never hands out its buffer: it can move.
    EXPECT_EQ(CFGetTypeID(s), CFStringGetTypeID());

    CFStringAppend(s, nullptr);
    CFStringAppendCharacters(s, nullptr, 0);
    EXPECT_EQ(CFStringGetLength(s), CFIndex(2 * expected.size()));
}

TEST(StringMutation, ImmutableReceiverIsLeftAlone) {
    CFStringRef constant = CFSTR("fixed");
    CFStringAppend(reinterpret_cast<CFMutableStringRef>(const_cast<__CFString*>(constant)), CFSTR("more"));
    EXPECT_EQ(units(constant), u"fixed");
}

TEST(StringAccess, OutOfRangeGivesNeutralResults) {
    auto s = string(u"abc");
    EXPECT_EQ(CFStringGetCharacterAtIndex(s, 3), 0);
    EXPECT_EQ(CFStringGetCharacterAtIndex(s, -1), 0);
    UniChar buffer[4] = {u'-', u'-', u'-', u'-'};
    CFStringGetCharacters(s, CFRangeMake(2, 2), buffer);
    EXPECT_EQ(buffer[0], u'-');
    CFStringGetCharacters(s, CFRangeMake(1, 2), buffer);
    EXPECT_EQ(std::u16string(buffer, buffer + 2), u"bc");
    EXPECT_EQ(CFStringGetLength(nullptr), 0);
    EXPECT_EQ(CFStringGetCharacterAtIndex(nullptr, 0), 0);
    // A non-string argument is refused too.
    EXPECT_EQ(CFStringGetLength(reinterpret_cast<CFStringRef>(kCFAllocatorMalloc)), 0);
}

TEST(StringEquality, UnitsDecideNotCaseOrNormalisation) {
    auto precomposed = string(u"\u00E9");
    auto decomposed = string(u"e\u0301");
    EXPECT_FALSE(CFEqual(precomposed, decomposed));
    EXPECT_FALSE(CFEqual(CFSTR("abc"), CFSTR("ABC")));
    EXPECT_TRUE(CFEqual(CFSTR("abc"), string(u"abc")));
    auto mutableABC = own(CFStringCreateMutable(nullptr, 0));
    CFStringAppend(mutableABC, CFSTR("abc"));
    EXPECT_TRUE(CFEqual(mutableABC, CFSTR("abc")));
    EXPECT_EQ(CFHash(mutableABC), CFHash(CFSTR("abc")));
}

TEST(StringHash, FollowsTheUnicodeHashOfTheUnits) {
    EXPECT_EQ(CFHash(CFSTR("")), 0u);
    EXPECT_EQ(CFHash(CFSTR("a")), 1062u);
    EXPECT_EQ(CFHash(CFSTR("abcde")), 16881849388404u);
    EXPECT_EQ(CFHash(string(u"\u00E9\u20AC")), 1001715u);
    // Above 96 units only three 32-unit windows count.
    std::u16string longText = std::u16string(50, u'x') + std::u16string(50, u'y');
    EXPECT_EQ(CFHash(string(longText)), 8816175900481351380u);
    std::u16string outsideWindows = longText;
    outsideWindows[33] = u'z';
    EXPECT_EQ(CFHash(string(outsideWindows)), CFHash(string(longText)));
    outsideWindows[3] = u'z';
    EXPECT_NE(CFHash(string(outsideWindows)), CFHash(string(longText)));
}

TEST(StringDescription, DebugAndFormattingForms) {
    auto s = string(u"say \"hi\"");
    auto description = own(CFCopyDescription(s));
    char expected[128];
    std::snprintf(expected, sizeof expected, "<CFString 0x%lx [0x%lx]>{contents = \"say \"hi\"\"}",
                  (unsigned long)s.get(), (unsigned long)kCFAllocatorSystemDefault);
    EXPECT_EQ(ascii(description), expected);
}
