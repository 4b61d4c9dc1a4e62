// Searching strings: literal and anchored searches in both storage forms,
// every comparison flag, prefixes and suffixes, characters from sets, and
// grapheme clusters.
#include "CFTestSupport.h"
#include "MisuseReports.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

using namespace cftest;

namespace {

constexpr CFIndex kNotFound = kCFNotFound;
constexpr CFStringCompareFlags kCI = kCFCompareCaseInsensitive;
constexpr CFStringCompareFlags kBack = kCFCompareBackwards;
constexpr CFStringCompareFlags kAnchored = kCFCompareAnchored;

// The same text stored as bytes (ASCII from UTF-8) and as UTF-16 units
// (no-copy characters are never reduced to bytes).
Owned<CFStringRef> asciiStored(const char* text) {
    return own(CFStringCreateWithCString(nullptr, text, kCFStringEncodingUTF8));
}

Owned<CFStringRef> unitStored(std::u16string_view text) {
    auto* buffer = static_cast<UniChar*>(std::malloc(std::max<size_t>(text.size(), 1) * sizeof(UniChar)));
    std::copy(text.begin(), text.end(), buffer);
    return own(CFStringCreateWithCharactersNoCopy(nullptr, buffer, CFIndex(text.size()), kCFAllocatorMalloc));
}

// {location, length} of the first match, {kCFNotFound, 0} when none.
std::pair<CFIndex, CFIndex> find(CFStringRef s, std::u16string_view needle, CFStringCompareFlags options = 0) {
    CFRange r = CFStringFind(s, string(needle), options);
    return {r.location, r.length};
}

std::pair<CFIndex, CFIndex> find(std::u16string_view s, std::u16string_view needle, CFStringCompareFlags options = 0) {
    return find(string(s), needle, options);
}

std::pair<CFIndex, CFIndex> findIn(std::u16string_view s, std::u16string_view needle, CFRange range,
                                   CFStringCompareFlags options = 0) {
    CFRange result = {-7, -7};
    if (!CFStringFindWithOptions(string(s), string(needle), range, options, &result)) {
        EXPECT_EQ(result.location, -7);  // untouched when nothing is found
        return {kNotFound, 0};
    }
    return {result.location, result.length};
}

std::pair<CFIndex, CFIndex> at(CFIndex location, CFIndex length) {
    return {location, length};
}
const std::pair<CFIndex, CFIndex> kNone = {kNotFound, 0};

std::pair<CFIndex, CFIndex> findFromSet(CFStringRef s, CFCharacterSetRef set, CFRange range,
                                        CFStringCompareFlags options = 0) {
    CFRange result = {-7, -7};
    if (!CFStringFindCharacterFromSet(s, set, range, options, &result)) return kNone;
    return {result.location, result.length};
}

std::pair<CFIndex, CFIndex> composed(CFStringRef s, CFIndex index) {
    CFRange r = CFStringGetRangeOfComposedCharactersAtIndex(s, index);
    return {r.location, r.length};
}

}  // namespace

TEST(StringFindLiteral, FirstAndLastOccurrenceInBothStorageForms) {
    for (const auto& s : {asciiStored("hello world, hello"), unitStored(u"hello world, hello")}) {
        EXPECT_EQ(find(s, u"o"), at(4, 1));
        EXPECT_EQ(find(s, u"o", kBack), at(17, 1));
        EXPECT_EQ(find(s, u"hello"), at(0, 5));
        EXPECT_EQ(find(s, u"hello", kBack), at(13, 5));
        EXPECT_EQ(find(s, u"world"), at(6, 5));
        EXPECT_EQ(find(s, u"lo w"), at(3, 4));
        EXPECT_EQ(find(s, u"hello world, hello"), at(0, 18));
        EXPECT_EQ(find(s, u"hello world, hello!"), kNone);
        EXPECT_EQ(find(s, u"Hello"), kNone);
        EXPECT_EQ(find(s, u"é"), kNone);
        EXPECT_EQ(find(s, u"x"), kNone);
        // An empty needle is never found.
        EXPECT_EQ(find(s, u""), kNone);
        EXPECT_EQ(find(s, u"", kAnchored), kNone);
    }
    EXPECT_EQ(find(u"", u"a"), kNone);
    EXPECT_EQ(find(u"", u""), kNone);
    // Needles stored either way find text stored either way.
    EXPECT_EQ(CFStringFind(unitStored(u"xxabcxx"), asciiStored("abc"), 0).location, 2);
    EXPECT_EQ(CFStringFind(asciiStored("xxabcxx"), unitStored(u"abc"), 0).location, 2);
    // Units are matched exactly, surrogate halves included.
    EXPECT_EQ(find(u"a\U0001F600b\U0001F600", u"\U0001F600", kBack), at(4, 2));
    EXPECT_EQ(find(u"a\U0001F600b", u"\xDE00"), at(2, 1));
    EXPECT_EQ(find(u"e\u0301", u"e"), at(0, 1));
    // Overlapping candidates.
    EXPECT_EQ(find(u"aaab", u"aab"), at(1, 3));
    EXPECT_EQ(find(u"abababc", u"ababc"), at(2, 5));
    EXPECT_EQ(find(u"abaabab", u"aba", kBack), at(3, 3));
}

TEST(StringFindLiteral, LongTexts) {
    // Units that share their low byte (U+0161 and 'a', U+0162 and 'b') must
    // not make the skip table jump over a match.
    std::u16string text;
    for (int k = 0; k < 300; ++k) text += u"ab\u0161\u0162 ";
    std::u16string withNeedles = u"xa\u0161b" + text + u"a\u0161b" + text + u"A\u0160B!";
    auto s = string(withNeedles);
    EXPECT_EQ(find(s, u"a\u0161b"), at(1, 3));
    EXPECT_EQ(find(s, u"a\u0161b", kBack), at(1504, 3));
    EXPECT_EQ(find(s, u"a\u0161b", kCI | kBack), at(3007, 3));
    EXPECT_EQ(find(s, u"\u0160B!", kCI), at(3008, 3));
    EXPECT_EQ(find(s, u"\u0161\u0162 ab"), at(6, 5));
    EXPECT_EQ(find(s, u"b\u0161"), at(5, 2));
    EXPECT_EQ(find(s, u"\u0162a"), kNone);
    std::string ascii(4000, 'a');
    ascii += "needle";
    auto bytes = asciiStored((ascii + "aaa").c_str());
    EXPECT_EQ(find(bytes, u"NEEDLE", kCI), at(4000, 6));
    EXPECT_EQ(find(bytes, u"aaaa", kBack), at(3996, 4));
    EXPECT_EQ(find(bytes, u"aaaa"), at(0, 4));
    EXPECT_EQ(find(bytes, u"needle\u00E9"), kNone);
}

TEST(StringFindLiteral, RangesAndAnchoring) {
    std::u16string_view text = u"abcabcabc";
    EXPECT_EQ(findIn(text, u"abc", CFRangeMake(1, 8)), at(3, 3));
    EXPECT_EQ(findIn(text, u"abc", CFRangeMake(1, 7), kBack), at(3, 3));
    EXPECT_EQ(findIn(text, u"abc", CFRangeMake(1, 4)), kNone);
    EXPECT_EQ(findIn(text, u"abc", CFRangeMake(3, 0)), kNone);
    EXPECT_EQ(findIn(text, u"abc", CFRangeMake(0, 9), kAnchored), at(0, 3));
    EXPECT_EQ(findIn(text, u"bc", CFRangeMake(0, 9), kAnchored), kNone);
    EXPECT_EQ(findIn(text, u"abc", CFRangeMake(3, 6), kAnchored), at(3, 3));
    EXPECT_EQ(findIn(text, u"abc", CFRangeMake(0, 9), kAnchored | kBack), at(6, 3));
    EXPECT_EQ(findIn(text, u"ab", CFRangeMake(0, 9), kAnchored | kBack), kNone);
    EXPECT_EQ(findIn(text, u"ab", CFRangeMake(0, 8), kAnchored | kBack), at(6, 2));
    EXPECT_EQ(findIn(text, u"abcabcabcabc", CFRangeMake(0, 9), kAnchored), kNone);
    // The result may be omitted.
    EXPECT_TRUE(CFStringFindWithOptions(CFSTR("abc"), CFSTR("c"), CFRangeMake(0, 3), 0, nullptr));
    EXPECT_TRUE(CFStringFindWithOptionsAndLocale(CFSTR("abc"), CFSTR("B"), CFRangeMake(0, 3), kCI, nullptr, nullptr));
    // Numeric and localized comparison mean nothing to a search.
    EXPECT_EQ(find(u"a007", u"7", kCFCompareNumerically), at(3, 1));
    EXPECT_EQ(find(u"a007", u"a7", kCFCompareNumerically), kNone);
    EXPECT_EQ(find(u"xABx", u"AB", kCFCompareLocalized), at(1, 2));
}

TEST(StringFindLiteral, PrefixAndSuffix) {
    auto s = asciiStored("prefix-suffix");
    EXPECT_TRUE(CFStringHasPrefix(s, CFSTR("pre")));
    EXPECT_TRUE(CFStringHasPrefix(s, s));
    EXPECT_FALSE(CFStringHasPrefix(s, CFSTR("fix")));
    EXPECT_FALSE(CFStringHasPrefix(s, CFSTR("Pre")));
    EXPECT_FALSE(CFStringHasPrefix(s, CFSTR("prefix-suffix-")));
    EXPECT_TRUE(CFStringHasSuffix(s, CFSTR("suffix")));
    EXPECT_TRUE(CFStringHasSuffix(unitStored(u"prefix-suffix"), CFSTR("-suffix")));
    EXPECT_FALSE(CFStringHasSuffix(s, CFSTR("pre")));
    // The empty prefix and suffix are not found, not even in "".
    EXPECT_FALSE(CFStringHasPrefix(s, CFSTR("")));
    EXPECT_FALSE(CFStringHasSuffix(s, CFSTR("")));
    EXPECT_FALSE(CFStringHasPrefix(CFSTR(""), CFSTR("")));
    EXPECT_TRUE(CFStringHasSuffix(string(u"\U0001F600"), string(u"\xDE00")));
}

TEST(StringFindCaseInsensitive, AsciiAndFullCaseFolding) {
    EXPECT_EQ(find(u"xabcx", u"ABC", kCI), at(1, 3));
    EXPECT_EQ(find(asciiStored("xabcx"), u"ABC", kCI), at(1, 3));
    EXPECT_EQ(find(u"AbA", u"a", kCI | kBack), at(2, 1));
    EXPECT_EQ(find(u"Hello", u"hELLO", kCI | kAnchored), at(0, 5));
    EXPECT_EQ(find(u"Hello", u"LO", kCI | kAnchored | kBack), at(3, 2));
    EXPECT_EQ(find(u"a_b", u"_B", kCI), at(1, 2));
    EXPECT_EQ(find(u"[@]", u"`", kCI), kNone);  // only letters fold
    // Matches whose length differs from the needle.
    EXPECT_EQ(find(u"STRASSE", u"ß", kCI), at(4, 2));
    EXPECT_EQ(find(asciiStored("STRASSE"), u"ß", kCI), at(4, 2));
    EXPECT_EQ(find(u"straße", u"STRASSE", kCI), at(0, 6));
    EXPECT_EQ(find(u"straße", u"SS", kCI), at(4, 1));
    EXPECT_EQ(find(u"Maßstab", u"ss", kCI), at(2, 1));
    // Half of a character's folding is not a match.
    EXPECT_EQ(find(u"ß", u"s", kCI), kNone);
    EXPECT_EQ(find(u"ﬁx", u"f", kCI), kNone);
    EXPECT_EQ(find(u"ﬁx", u"FIX", kCI), at(0, 2));
    // Non-ASCII folding, both directions.
    EXPECT_EQ(find(u"ΣΊΣΥΦΟΣ", u"σίσυφος", kCI), at(0, 7));
    EXPECT_EQ(find(u"Grüße aus KÖLN", u"köln", kCI), at(10, 4));
    EXPECT_EQ(find(u"köln KÖLN", u"KÖLN", kCI | kBack), at(5, 4));
    EXPECT_EQ(find(u"temperature 5\u212A", u"5k", kCI), at(12, 2));
    EXPECT_EQ(find(u"\U00010400x", u"\U00010428", kCI), at(0, 2));
    // Without the flag nothing folds.
    EXPECT_EQ(find(u"STRASSE", u"ß"), kNone);
    // Case-insensitivity alone does not equate composed and decomposed forms.
    EXPECT_EQ(find(u"CAFÉ", u"e\u0301", kCI), kNone);
}

TEST(StringFindNonliteral, CanonicalEquivalenceAndGraphemeRule) {
    constexpr CFStringCompareFlags kNonliteral = kCFCompareNonliteral;
    EXPECT_EQ(find(u"cafe\u0301!", u"é", kNonliteral), at(3, 2));
    EXPECT_EQ(find(u"café!", u"e\u0301", kNonliteral), at(3, 1));
    EXPECT_EQ(find(u"cafe\u0301", u"cafe\u0301", kNonliteral), at(0, 5));
    EXPECT_EQ(find(u"x\u1E69", u"s\u0307\u0323", kNonliteral), at(1, 1));      // marks reordered
    EXPECT_EQ(find(u"\uAC01", u"\u1100\u1161\u11A8", kNonliteral), at(0, 1));  // Hangul syllable
    // A match may not end inside a cluster: the "e" of a decomposed "é" is
    // found literally, not with the flag.
    EXPECT_EQ(find(u"cafe\u0301", u"cafe"), at(0, 4));
    EXPECT_EQ(find(u"cafe\u0301", u"cafe", kNonliteral), kNone);
    EXPECT_EQ(find(u"cafe\u0301", u"e", kNonliteral), kNone);
    EXPECT_EQ(find(u"cafe\u0301 e", u"e", kNonliteral), at(6, 1));
    EXPECT_EQ(find(u"cafe\u0301", u"caf", kNonliteral), at(0, 3));
    EXPECT_EQ(find(u"\uAC01", u"\uAC00", kNonliteral), kNone);
    EXPECT_EQ(find(u"\U0001F469\u200D\U0001F4BB", u"\U0001F469", kNonliteral), kNone);
    EXPECT_EQ(find(u"\U0001F469\u200D\U0001F4BB", u"\U0001F469"), at(0, 2));
    // With case-insensitivity: canonical caseless matching.
    EXPECT_EQ(find(u"CAFE\u0301", u"café", kNonliteral | kCI), at(0, 5));
    EXPECT_EQ(find(u"\u212B", u"å", kNonliteral | kCI), at(0, 1));
    EXPECT_EQ(find(u"abc\u0301abc", u"ABC", kNonliteral | kCI | kBack), at(4, 3));
    EXPECT_EQ(find(u"abc\u0301", u"ABC", kNonliteral | kCI | kAnchored), kNone);
}

TEST(StringFindNonliteral, DiacriticAndWidthInsensitive) {
    constexpr CFStringCompareFlags kDiacritics = kCFCompareDiacriticInsensitive;
    constexpr CFStringCompareFlags kWidth = kCFCompareWidthInsensitive;
    EXPECT_EQ(find(u"café", u"e", kDiacritics), at(3, 1));
    EXPECT_EQ(find(u"cafe\u0301", u"e", kDiacritics), at(3, 2));
    EXPECT_EQ(find(u"résumé", u"resume", kDiacritics), at(0, 6));
    EXPECT_EQ(find(u"re\u0301sume\u0301", u"résumé", kDiacritics), at(0, 8));
    EXPECT_EQ(find(u"RÉSUMÉ", u"resume", kDiacritics | kCI), at(0, 6));
    EXPECT_EQ(find(u"naïve", u"NAIVE", kDiacritics), kNone);
    // A needle of marks alone has nothing left to find.
    EXPECT_EQ(find(u"e\u0301", u"\u0301", kDiacritics), kNone);
    // Marks the range starts with belong to a match at its start.
    EXPECT_EQ(findIn(u"e\u0301x", u"x", CFRangeMake(1, 2), kDiacritics), at(1, 2));
    EXPECT_EQ(findIn(u"e\u0301x", u"x", CFRangeMake(1, 2), kDiacritics | kAnchored), at(1, 2));
    // Marks are dropped after case folding: U+0345 folds to a letter (iota).
    EXPECT_EQ(find(u"\u0345EE", u"ee", kDiacritics | kCI), at(1, 2));
    EXPECT_EQ(find(u"\u0345EE", u"ee", kDiacritics), kNone);
    EXPECT_EQ(find(u"\u0345ee", u"ee", kDiacritics), at(0, 3));
    // The same letter under different flags, one after the other.
    EXPECT_EQ(find(u"café", u"cafe", kDiacritics), at(0, 4));
    EXPECT_EQ(find(u"café", u"cafe", kCFCompareNonliteral), kNone);
    EXPECT_EQ(find(u"café", u"CAFÉ", kCI), at(0, 4));
    EXPECT_EQ(find(u"café", u"CAFE", kCI | kDiacritics), at(0, 4));
    EXPECT_EQ(find(u"café", u"cafe", kDiacritics), at(0, 4));

    EXPECT_EQ(find(u"ＡＢＣ", u"ABC", kWidth), at(0, 3));
    EXPECT_EQ(find(u"xABCx", u"ＡＢＣ", kWidth), at(1, 3));
    EXPECT_EQ(find(u"ＡＢＣ", u"abc", kWidth | kCI), at(0, 3));
    EXPECT_EQ(find(u"ＡＢＣ", u"abc", kWidth), kNone);
    // A half-width kana and its separate sound mark match one full-width kana.
    EXPECT_EQ(find(u"x\uFF76\uFF9Ex", u"\u30AC", kWidth), at(1, 2));
    EXPECT_EQ(find(u"\u30AC", u"\uFF76\uFF9E", kWidth), at(0, 1));
    EXPECT_EQ(find(u"x\uFF76\uFF9Ex", u"\u30AB", kWidth), kNone);
}

TEST(StringFindCharacterFromSet, UnitsSurrogatePairsAndOptions) {
    auto vowels = own(CFCharacterSetCreateWithCharactersInString(nullptr, CFSTR("aeiou")));
    for (const auto& s : {asciiStored("rhythm and blues"), unitStored(u"rhythm and blues")}) {
        EXPECT_EQ(findFromSet(s, vowels, CFRangeMake(0, 16)), at(7, 1));
        EXPECT_EQ(findFromSet(s, vowels, CFRangeMake(0, 16), kBack), at(14, 1));
        EXPECT_EQ(findFromSet(s, vowels, CFRangeMake(8, 6)), at(13, 1));
        EXPECT_EQ(findFromSet(s, vowels, CFRangeMake(8, 5)), kNone);
        EXPECT_EQ(findFromSet(s, vowels, CFRangeMake(0, 6)), kNone);
        EXPECT_EQ(findFromSet(s, vowels, CFRangeMake(0, 16), kAnchored), kNone);
        EXPECT_EQ(findFromSet(s, vowels, CFRangeMake(7, 9), kAnchored), at(7, 1));
        EXPECT_EQ(findFromSet(s, vowels, CFRangeMake(0, 15), kAnchored | kBack), at(14, 1));
        EXPECT_EQ(findFromSet(s, vowels, CFRangeMake(0, 16), kAnchored | kBack), kNone);
        EXPECT_EQ(findFromSet(s, CFCharacterSetGetPredefined(kCFCharacterSetWhitespace), CFRangeMake(0, 16)), at(6, 1));
        // An empty range, or one past the end, finds nothing.
        EXPECT_EQ(findFromSet(s, vowels, CFRangeMake(7, 0)), kNone);
        EXPECT_EQ(findFromSet(s, vowels, CFRangeMake(10, 10)), kNone);
        EXPECT_EQ(findFromSet(s, vowels, CFRangeMake(40, 1)), kNone);
    }
    // A pair is tested as its code point and found as two units.
    auto smiley = own(CFCharacterSetCreateWithCharactersInString(nullptr, string(u"\U0001F600")));
    auto text = string(u"a\U0001F601\U0001F600b\U0001F600");
    EXPECT_EQ(findFromSet(text, smiley, CFRangeMake(0, 8)), at(3, 2));
    EXPECT_EQ(findFromSet(text, smiley, CFRangeMake(0, 8), kBack), at(6, 2));
    EXPECT_EQ(findFromSet(text, smiley, CFRangeMake(3, 2), kAnchored), at(3, 2));
    EXPECT_EQ(findFromSet(text, smiley, CFRangeMake(3, 2), kAnchored | kBack), at(3, 2));
    // Its halves are not tested on their own, unless the range or the
    // string leaves them unpaired.
    auto highHalves = own(CFCharacterSetCreateWithCharactersInRange(nullptr, CFRangeMake(0xD800, 0x400)));
    EXPECT_EQ(findFromSet(text, highHalves, CFRangeMake(0, 8)), kNone);
    EXPECT_EQ(findFromSet(text, highHalves, CFRangeMake(0, 2)), at(1, 1));
    EXPECT_EQ(findFromSet(string(u"ab\xD83D"), highHalves, CFRangeMake(0, 3)), at(2, 1));
    auto lowHalves = own(CFCharacterSetCreateWithCharactersInRange(nullptr, CFRangeMake(0xDC00, 0x400)));
    EXPECT_EQ(findFromSet(text, lowHalves, CFRangeMake(3, 5), kBack), kNone);
    EXPECT_EQ(findFromSet(text, lowHalves, CFRangeMake(2, 6), kBack), at(2, 1));
}

TEST(StringComposedCharacters, GraphemeClusters) {
    auto text = string(u"a\U0001F600e\u0301\u0302\r\n\u1100\u1161\u11A8\U0001F1EB\U0001F1F7x");
    EXPECT_EQ(composed(text, 0), at(0, 1));
    EXPECT_EQ(composed(text, 1), at(1, 2));
    EXPECT_EQ(composed(text, 2), at(1, 2));
    for (CFIndex i = 3; i <= 5; ++i) EXPECT_EQ(composed(text, i), at(3, 3));
    EXPECT_EQ(composed(text, 6), at(6, 2));
    EXPECT_EQ(composed(text, 7), at(6, 2));
    EXPECT_EQ(composed(text, 9), at(8, 3));
    EXPECT_EQ(composed(text, 13), at(11, 4));
    EXPECT_EQ(composed(text, 15), at(15, 1));
    auto bytes = asciiStored("ab\r\n\n");
    EXPECT_EQ(composed(bytes, 1), at(1, 1));
    EXPECT_EQ(composed(bytes, 2), at(2, 2));
    EXPECT_EQ(composed(bytes, 3), at(2, 2));
    EXPECT_EQ(composed(bytes, 4), at(4, 1));
    EXPECT_EQ(composed(string(u"\xDC00\xD800"), 1), at(1, 1));  // unpaired halves stand alone

    std::string reports = reportsOf([&] {
        EXPECT_EQ(composed(bytes, 5), kNone);
        EXPECT_EQ(composed(bytes, -1), kNone);
        EXPECT_EQ(composed(nullptr, 0), kNone);
    });
    EXPECT_EQ(lineCount(reports), 3);
    EXPECT_EQ(occurrences(reports, "CFStringGetRangeOfComposedCharactersAtIndex(): index 5 out of bounds (length 5)"),
              1);
}

TEST(StringSearchMisuse, ReportedWithNeutralResults) {
    auto s = asciiStored("abc");
    auto vowels = own(CFCharacterSetCreateWithCharactersInString(nullptr, CFSTR("a")));
    CFRange result = {-7, -7};
    std::string reports = reportsOf([&] {
        EXPECT_EQ(CFStringFind(nullptr, CFSTR("a"), 0).location, kNotFound);
        EXPECT_FALSE(CFStringFindWithOptions(s, nullptr, CFRangeMake(0, 3), 0, &result));
        EXPECT_FALSE(CFStringFindWithOptions(s, CFSTR("a"), CFRangeMake(1, 3), 0, &result));
        EXPECT_FALSE(CFStringFindWithOptions(s, CFSTR("a"), CFRangeMake(-1, 1), 0, &result));
        EXPECT_FALSE(CFStringHasPrefix((CFStringRef)vowels.get(), CFSTR("a")));
        EXPECT_FALSE(CFStringHasSuffix(s, nullptr));
        EXPECT_FALSE(CFStringFindCharacterFromSet(s, nullptr, CFRangeMake(0, 3), 0, &result));
        EXPECT_FALSE(CFStringFindCharacterFromSet(s, vowels, CFRangeMake(-1, 3), 0, &result));
    });
    EXPECT_EQ(lineCount(reports), 8);
    EXPECT_EQ(occurrences(reports, "CFString: CFStringFindWithOptions(): range {1, 3} out of bounds (length 3)"), 1);
    EXPECT_EQ(occurrences(reports, "CFString: CFStringFindCharacterFromSet(): not a character set"), 1);
    EXPECT_EQ(result.location, -7);
}
