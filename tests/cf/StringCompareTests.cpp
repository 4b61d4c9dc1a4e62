// CFStringCompare and CFStringCompareWithOptions: literal order, every
// comparison flag, forced ordering, ranges and the current locale taken
// from the environment.
#include "CFTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

using namespace cftest;

namespace {

constexpr CFComparisonResult kLess = kCFCompareLessThan;
constexpr CFComparisonResult kEqual = kCFCompareEqualTo;
constexpr CFComparisonResult kGreater = kCFCompareGreaterThan;

CFComparisonResult compare(std::u16string_view a, std::u16string_view b, CFStringCompareFlags options = 0) {
    return CFStringCompare(string(a), string(b), options);
}

// The same text stored as bytes (from UTF-8) and as UTF-16 units (no-copy
// characters are never reduced to bytes).
Owned<CFStringRef> asciiStored(const char* text) {
    return own(CFStringCreateWithCString(nullptr, text, kCFStringEncodingUTF8));
}

Owned<CFStringRef> unitStored(std::u16string_view text) {
    auto* buffer = static_cast<UniChar*>(std::malloc(text.size() * sizeof(UniChar)));
    std::copy(text.begin(), text.end(), buffer);
    return own(CFStringCreateWithCharactersNoCopy(nullptr, buffer, CFIndex(text.size()), kCFAllocatorMalloc));
}

// Sets LC_ALL for one test; each test runs in a process of its own.
void useLocale(const char* identifier) {
    setenv("LC_ALL", identifier, 1);
}

}  // namespace

TEST(StringCompareLiteral, CodeUnitOrder) {
    EXPECT_EQ(compare(u"B", u"a"), kLess);
    EXPECT_EQ(compare(u"Z", u"a"), kLess);
    EXPECT_EQ(compare(u"a", u"B"), kGreater);
    EXPECT_EQ(compare(u"abc", u"abc"), kEqual);
    EXPECT_EQ(compare(u"ab", u"abc"), kLess);
    EXPECT_EQ(compare(u"abc", u"ab"), kGreater);
    EXPECT_EQ(compare(u"", u""), kEqual);
    EXPECT_EQ(compare(u"", u"a"), kLess);
    // Units compare unsigned; surrogates sort below U+E000 to U+FFFF.
    EXPECT_EQ(compare(u"\U0001F600", u"\uE000"), kLess);
    EXPECT_EQ(compare(u"\uFFFF", u"\U0010FFFF"), kGreater);
    EXPECT_EQ(compare(u"é", u"f"), kGreater);
    // Precomposed and decomposed forms differ literally.
    EXPECT_EQ(compare(u"é", u"e\u0301"), kGreater);
    EXPECT_EQ(CFStringCompare(nullptr, CFSTR("a"), 0), kEqual);
}

TEST(StringCompareLiteral, StorageFormsCompareAlike) {
    auto bytesHello = asciiStored("hello");
    auto unitsHello = unitStored(u"hello");
    auto unitsHelp = unitStored(u"help");
    EXPECT_EQ(CFStringCompare(bytesHello, unitsHello, 0), kEqual);
    EXPECT_EQ(CFStringCompare(unitsHello, bytesHello, 0), kEqual);
    EXPECT_EQ(CFStringCompare(bytesHello, unitsHelp, 0), kLess);
    EXPECT_EQ(CFStringCompare(unitsHelp, bytesHello, 0), kGreater);
    EXPECT_EQ(CFStringCompare(asciiStored("HELLO"), unitsHello, kCFCompareCaseInsensitive), kEqual);
    EXPECT_EQ(CFStringCompare(asciiStored("x10"), unitStored(u"x9"), kCFCompareNumerically), kGreater);
}

TEST(StringCompareCaseInsensitive, AsciiLowercasedUnicodeFolded) {
    constexpr CFStringCompareFlags ci = kCFCompareCaseInsensitive;
    EXPECT_EQ(compare(u"HELLO", u"hello", ci), kEqual);
    EXPECT_EQ(compare(u"Banana", u"berry", ci), kLess);
    // Letters compare lowercased, so "_" (0x5F) sorts before them...
    EXPECT_EQ(compare(u"_", u"A", ci), kLess);
    EXPECT_EQ(compare(u"_", u"a", ci), kLess);
    // ...where literally it sorts between the cases.
    EXPECT_EQ(compare(u"_", u"A"), kGreater);
    EXPECT_EQ(compare(u"[", u"a", ci), kLess);
    // Full Unicode case folding beyond ASCII.
    EXPECT_EQ(compare(u"straße", u"STRASSE", ci), kEqual);
    EXPECT_EQ(compare(u"ß", u"ss", ci), kEqual);
    EXPECT_EQ(compare(u"ÉTÉ", u"été", ci), kEqual);
    EXPECT_EQ(compare(u"abcÄ", u"ABCä", ci), kEqual);
    EXPECT_EQ(compare(u"ΣΑΣ", u"σας", ci), kEqual);
    EXPECT_EQ(compare(u"x\U00010400", u"X\U00010428", ci), kEqual);  // Deseret capital and small
    EXPECT_EQ(compare(u"ä", u"b", ci), kGreater);
    EXPECT_EQ(compare(u"ÄB", u"äc", ci), kLess);
    // Case-insensitivity alone does not equate canonical equivalents.
    EXPECT_NE(compare(u"É", u"e\u0301", ci), kEqual);
    EXPECT_EQ(compare(u"É", u"e\u0301", ci | kCFCompareNonliteral), kEqual);
}

TEST(StringCompareUnicodeFlags, NonliteralDiacriticAndWidth) {
    EXPECT_EQ(compare(u"é", u"e\u0301", kCFCompareNonliteral), kEqual);
    EXPECT_EQ(compare(u"Å", u"A\u030A", kCFCompareNonliteral), kEqual);
    EXPECT_EQ(compare(u"\u1E69", u"s\u0323\u0307", kCFCompareNonliteral), kEqual);
    EXPECT_EQ(compare(u"é", u"e", kCFCompareNonliteral), kGreater);

    constexpr CFStringCompareFlags di = kCFCompareDiacriticInsensitive;
    EXPECT_EQ(compare(u"é", u"e", di), kEqual);
    EXPECT_EQ(compare(u"résumé", u"resume", di), kEqual);
    EXPECT_EQ(compare(u"e\u0301", u"e", di), kEqual);
    EXPECT_EQ(compare(u"naïve", u"naive", di), kEqual);
    EXPECT_NE(compare(u"Résumé", u"resume", di), kEqual);
    EXPECT_EQ(compare(u"Résumé", u"resume", di | kCFCompareCaseInsensitive), kEqual);
    EXPECT_EQ(compare(u"résumé", u"resumes", di), kLess);

    constexpr CFStringCompareFlags wi = kCFCompareWidthInsensitive;
    EXPECT_EQ(compare(u"ＡＢＣ１２３", u"ABC123", wi), kEqual);
    EXPECT_EQ(compare(u"a\u3000b", u"a b", wi), kEqual);
    EXPECT_EQ(compare(u"ｶﾀｶﾅ", u"カタカナ", wi), kEqual);
    EXPECT_EQ(compare(u"ｶﾞ", u"ガ", wi), kEqual);
    EXPECT_NE(compare(u"ＡＢＣ", u"ABC"), kEqual);
    EXPECT_EQ(compare(u"ＡＢＣ", u"abc", wi | kCFCompareCaseInsensitive), kEqual);
}

TEST(StringCompareNumerically, DigitRunsByValue) {
    constexpr CFStringCompareFlags num = kCFCompareNumerically;
    EXPECT_EQ(compare(u"file2", u"file10", num), kLess);
    EXPECT_EQ(compare(u"file2", u"file10"), kGreater);
    EXPECT_EQ(compare(u"a007", u"a7", num), kEqual);
    EXPECT_EQ(compare(u"a7b", u"a07c", num), kLess);
    EXPECT_EQ(compare(u"v1.10.0", u"v1.9.3", num), kGreater);
    EXPECT_EQ(compare(u"10", u"9a", num), kGreater);
    EXPECT_EQ(compare(u"x", u"1", num), kGreater);  // digit against letter: unit order
    // Values are unsigned 64-bit and wrap: 2^64 reads as 0.
    EXPECT_EQ(compare(u"n18446744073709551616", u"n0", num), kEqual);
    EXPECT_EQ(compare(u"n18446744073709551615", u"n1", num), kGreater);
    // Only ASCII digits form runs.
    EXPECT_EQ(compare(u"x２", u"x10", num), kGreater);
    EXPECT_EQ(compare(u"File2", u"file10", num | kCFCompareCaseInsensitive), kLess);
    EXPECT_EQ(compare(u"Ä2", u"ä10", num | kCFCompareCaseInsensitive), kLess);
}

TEST(StringCompareForcedOrdering, EqualUnderOptionsStillOrdered) {
    constexpr CFStringCompareFlags ci = kCFCompareCaseInsensitive;
    EXPECT_EQ(compare(u"aaa", u"AAA", ci), kEqual);
    EXPECT_EQ(compare(u"aaa", u"AAA", ci | kCFCompareForcedOrdering), kGreater);
    EXPECT_EQ(compare(u"AAA", u"aaa", ci | kCFCompareForcedOrdering), kLess);
    // A longer digit run is greater.
    EXPECT_EQ(compare(u"a007", u"a7", kCFCompareNumerically | kCFCompareForcedOrdering), kGreater);
    EXPECT_EQ(compare(u"a7", u"a007", kCFCompareNumerically | kCFCompareForcedOrdering), kLess);
    EXPECT_EQ(compare(u"é", u"e\u0301", kCFCompareNonliteral | kCFCompareForcedOrdering), kGreater);
    // Identical strings stay equal.
    EXPECT_EQ(compare(u"same", u"same", ci | kCFCompareForcedOrdering), kEqual);
}

TEST(StringCompareOptions, BackwardsAndAnchoredAreIgnored) {
    for (CFStringCompareFlags ignored : {kCFCompareBackwards, kCFCompareAnchored}) {
        EXPECT_EQ(compare(u"ab", u"abc", ignored), kLess);
        EXPECT_EQ(compare(u"ba", u"ab", ignored), kGreater);
        EXPECT_EQ(compare(u"ABC", u"abc", ignored | kCFCompareCaseInsensitive), kEqual);
    }
}

TEST(StringCompareOptions, RangeOfTheFirstStringAgainstAllOfTheSecond) {
    auto s = string(u"xxAbcyy");
    EXPECT_EQ(CFStringCompareWithOptions(s, CFSTR("Abc"), CFRangeMake(2, 3), 0), kEqual);
    EXPECT_EQ(CFStringCompareWithOptions(s, CFSTR("abc"), CFRangeMake(2, 3), kCFCompareCaseInsensitive), kEqual);
    EXPECT_EQ(CFStringCompareWithOptions(s, CFSTR("Abcy"), CFRangeMake(2, 3), 0), kLess);
    EXPECT_EQ(CFStringCompareWithOptions(s, CFSTR(""), CFRangeMake(7, 0), 0), kEqual);
    auto wide = string(u"«É»");
    EXPECT_EQ(CFStringCompareWithOptions(wide, CFSTR("e"), CFRangeMake(1, 1),
                                         kCFCompareDiacriticInsensitive | kCFCompareCaseInsensitive),
              kEqual);
    // Out of range: reported, neutral result.
    EXPECT_EQ(CFStringCompareWithOptions(s, CFSTR("yy"), CFRangeMake(5, 3), 0), kEqual);
    EXPECT_EQ(CFStringCompareWithOptions(s, CFSTR("x"), CFRangeMake(-1, 1), 0), kEqual);
    EXPECT_EQ(CFStringCompareWithOptions(s, nullptr, CFRangeMake(0, 1), 0), kEqual);
}

TEST(StringCompareLocalized, CollatesForTheEnvironmentLocale) {
    useLocale("en_US.UTF-8");
    constexpr CFStringCompareFlags loc = kCFCompareLocalized;
    EXPECT_EQ(compare(u"a", u"B", loc), kLess);  // literally greater
    EXPECT_EQ(compare(u"é", u"f", loc), kLess);  // literally greater
    EXPECT_EQ(compare(u"a", u"A", loc), kLess);  // tertiary: lowercase first
    EXPECT_EQ(compare(u"a", u"A", loc | kCFCompareCaseInsensitive), kEqual);
    EXPECT_EQ(compare(u"é", u"e", loc | kCFCompareCaseInsensitive), kGreater);  // secondary keeps accents
    EXPECT_EQ(compare(u"É", u"e", loc | kCFCompareCaseInsensitive | kCFCompareDiacriticInsensitive), kEqual);
    // Diacritic-insensitive alone still tells the cases apart.
    EXPECT_EQ(compare(u"é", u"e", loc | kCFCompareDiacriticInsensitive), kEqual);
    EXPECT_NE(compare(u"É", u"e", loc | kCFCompareDiacriticInsensitive), kEqual);
    EXPECT_EQ(compare(u"file2", u"file10", loc), kGreater);
    EXPECT_EQ(compare(u"file2", u"file10", loc | kCFCompareNumerically), kLess);
    EXPECT_EQ(compare(u"ＡＢＣ", u"ABC", loc | kCFCompareWidthInsensitive), kEqual);
    EXPECT_EQ(compare(u"aaa", u"AAA", loc | kCFCompareCaseInsensitive | kCFCompareForcedOrdering), kGreater);
}

TEST(StringCompareLocalized, LocaleComesFromLcAllThenLcCollateThenLang) {
    // Swedish sorts ä after z; German sorts it with a.
    unsetenv("LC_ALL");
    unsetenv("LC_COLLATE");
    setenv("LANG", "sv_SE.UTF-8", 1);
    EXPECT_EQ(compare(u"ä", u"z", kCFCompareLocalized), kGreater);
    setenv("LC_COLLATE", "de_DE.UTF-8", 1);
    EXPECT_EQ(compare(u"ä", u"z", kCFCompareLocalized), kLess);
    setenv("LC_ALL", "sv_SE.ISO-8859-1@euro", 1);
    EXPECT_EQ(compare(u"ä", u"z", kCFCompareLocalized), kGreater);
    // C, POSIX and nothing at all mean en_US.
    for (const char* neutral : {"C", "POSIX", "C.UTF-8", ""}) {
        setenv("LC_ALL", neutral, 1);
        setenv("LC_COLLATE", neutral, 1);
        setenv("LANG", neutral, 1);
        EXPECT_EQ(compare(u"ä", u"z", kCFCompareLocalized), kLess) << neutral;
    }
}
