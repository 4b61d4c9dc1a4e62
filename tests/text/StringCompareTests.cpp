// HVString: case mapping, comparison by units, by case folding and by
// collation, and the comparators for sorting.
#include <halvane/text/HVCompare.h>
#include <halvane/text/HVString.h>
#include <halvane/values/HVNumber.h>

#include <gtest/gtest.h>

#include <cmath>

#include "TextTestSupport.h"

using hvtest::unitsOf;

namespace {

// Sorts the texts with a comparator and returns them in their new order.
std::vector<std::u16string> sorted(std::initializer_list<const char16_t*> texts, CFComparatorFunction comparator,
                                   void* context) {
    CFMutableArrayRef array = CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks);
    for (const char16_t* text : texts) CFArrayAppendValue(array, HVString(text).Ref());
    CFArraySortValues(array, CFRangeMake(0, CFArrayGetCount(array)), comparator, context);
    std::vector<std::u16string> result;
    for (CFIndex i = 0; i < CFArrayGetCount(array); ++i) {
        result.push_back(unitsOf(static_cast<CFStringRef>(CFArrayGetValueAtIndex(array, i))));
    }
    CFRelease(array);
    return result;
}

using Texts = std::vector<std::u16string>;

}  // namespace

TEST(StringCase, UpperAndLowerCaseKeepTheLength) {
    hvtest::ScopedLocale english("en_US.UTF-8");
    EXPECT_EQ(unitsOf(HVString(u"Grüße, straße 1").UppercaseString()), u"GRÜßE, STRAßE 1");
    EXPECT_EQ(unitsOf(HVString(u"ÀÉÎ ABC ǅ").LowercaseString()), u"àéî abc ǆ");
    EXPECT_EQ(unitsOf(HVString(u"ǆ ŉ ﬁ").UppercaseString()), u"Ǆ ŉ ﬁ");
    // Supplementary letters map as whole characters.
    EXPECT_EQ(unitsOf(HVString(u"\U00010400x").LowercaseString()), u"\U00010428x");
    EXPECT_EQ(unitsOf(HVString(u"\U00010428").UppercaseString()), u"\U00010400");
    EXPECT_EQ(unitsOf(HVString(u"İ").LowercaseString()), u"i");
    EXPECT_EQ(HVString("").UppercaseString().Length(), 0u);
    // A null text gives the empty string, not a null one.
    HVString fromNull = HVString::SharedNullString().LowercaseString();
    EXPECT_FALSE(fromNull.IsNull());
    EXPECT_EQ(fromNull.Length(), 0u);
}

TEST(StringCase, EveryStorageOfTheTextMapsAlike) {
    hvtest::ScopedLocale english("en_US.UTF-8");
    // A mutable string keeps UTF-16 units even for ASCII text.
    CFMutableStringRef mutableText = CFStringCreateMutable(kCFAllocatorDefault, 0);
    CFStringAppend(mutableText, CFSTR("Mixed Case 42"));
    HVString units(static_cast<const void*>(mutableText));
    EXPECT_EQ(unitsOf(units.UppercaseString()), u"MIXED CASE 42");
    EXPECT_EQ(unitsOf(units.LowercaseString()), u"mixed case 42");
    CFRelease(mutableText);
    // The mapped text is read back as UTF-16 data: trailing zero units are
    // taken for terminators.
    const UniChar withZeros[] = {u'a', 0, u'b', 0, 0};
    CFStringRef zeros = CFStringCreateWithCharacters(kCFAllocatorDefault, withZeros, 5);
    EXPECT_EQ(unitsOf(HVString(static_cast<const void*>(zeros)).UppercaseString()), std::u16string(u"A\0B", 3));
    CFRelease(zeros);
    const UniChar accentedWithZero[] = {0xE9, 0};
    zeros = CFStringCreateWithCharacters(kCFAllocatorDefault, accentedWithZero, 2);
    EXPECT_EQ(unitsOf(HVString(static_cast<const void*>(zeros)).UppercaseString()), u"\u00C9");
    CFRelease(zeros);
}

TEST(StringCase, TurkishAndAzeriDottedAndDotlessI) {
    {
        hvtest::ScopedLocale turkish("tr_TR.UTF-8");
        EXPECT_EQ(unitsOf(HVString(u"istanbul").UppercaseString()), u"İSTANBUL");
        EXPECT_EQ(unitsOf(HVString(u"IŞIK").LowercaseString()), u"ışık");
    }
    {
        hvtest::ScopedLocale azeri("az_AZ");
        EXPECT_EQ(unitsOf(HVString(u"i").UppercaseString()), u"İ");
    }
    hvtest::ScopedLocale german("de_DE.UTF-8@euro");
    EXPECT_EQ(unitsOf(HVString(u"istanbul").UppercaseString()), u"ISTANBUL");
}

TEST(StringCase, CapitalizingWordsThatBeginWithLowercaseASCII) {
    hvtest::ScopedLocale english("en_US.UTF-8");
    EXPECT_EQ(unitsOf(HVString("hello world").CapitalizedString()), u"Hello World");
    EXPECT_EQ(unitsOf(HVString("hELLO wORLD").CapitalizedString()), u"Hello World");
    EXPECT_EQ(unitsOf(HVString("don't stop, a-b 3rd hello.world").CapitalizedString()),
              u"Don't Stop, A-B 3Rd Hello.World");
    EXPECT_EQ(unitsOf(HVString(u"straße")).size(), 6u);
    EXPECT_EQ(unitsOf(HVString(u"straße").CapitalizedString()), u"Straße");
    // Words that begin otherwise are left as they are written.
    EXPECT_EQ(unitsOf(HVString("HELLO wORLD").CapitalizedString()), u"HELLO World");
    EXPECT_EQ(unitsOf(HVString(u"élan vital").CapitalizedString()), u"élan Vital");
    EXPECT_EQ(unitsOf(HVString(u"  ünd ünd").CapitalizedString()), u"  ünd ünd");
    HVString empty("");
    EXPECT_EQ(empty.CapitalizedString().Length(), 0u);
    hvtest::ScopedLocale turkish("tr_TR.UTF-8");
    EXPECT_EQ(unitsOf(HVString("istanbul").CapitalizedString()), u"İstanbul");
}

TEST(StringCompare, ByUnitsAndByCaseFolding) {
    EXPECT_EQ(HVString("a").Compare("b"), HVOrderedAscending);
    EXPECT_EQ(HVString("b").Compare("a"), HVOrderedDescending);
    EXPECT_EQ(HVString("a").Compare("a"), HVOrderedSame);
    EXPECT_EQ(HVString("B").Compare("a"), -1);
    EXPECT_EQ(HVString("ab").Compare("a"), 1);
    EXPECT_EQ(HVString(u"é").Compare("f"), 1);
    EXPECT_EQ(HVString("").Compare(HVString::SharedNullString()), 0);

    EXPECT_EQ(HVString("HeLLo").CaseInsensitiveCompare("hello"), HVOrderedSame);
    EXPECT_EQ(HVString(u"Straße").CaseInsensitiveCompare(u"STRASSE"), HVOrderedSame);
    // Folding lower-cases: "_" sorts before every letter.
    EXPECT_EQ(HVString("_").CaseInsensitiveCompare("A"), HVOrderedAscending);
    EXPECT_EQ(HVString("b").CaseInsensitiveCompare("A"), HVOrderedDescending);
    EXPECT_TRUE(HVString(u"ΣΊΣΥΦΟΣ").IsEqualToStringIgnoringCase(u"σίσυφος"));
    EXPECT_FALSE(HVString("a").IsEqualToStringIgnoringCase("b"));
}

TEST(StringCompare, WithOptions) {
    EXPECT_EQ(HVString("A").CompareWithOptions("a", HVCaseInsensitiveSearch), 0);
    EXPECT_EQ(HVString("A").CompareWithOptions("a", 0), -1);
    EXPECT_EQ(HVString("file2").CompareWithOptions("file10", HVNumericSearch), -1);
    EXPECT_EQ(HVString("file2").CompareWithOptions("file10", 0), 1);
    EXPECT_EQ(HVString("File2").CompareWithOptions("file10", HVNumericSearch | HVCaseInsensitiveSearch), -1);
    EXPECT_EQ(HVString("a007b").CompareWithOptions("a7b", HVNumericSearch), 0);
    EXPECT_EQ(HVString("a7").CompareWithOptions("a7b", HVNumericSearch), -1);
    EXPECT_EQ(HVString("a10").CompareWithOptions("a9z", HVNumericSearch), 1);
    // A digit meets a non-digit as a unit: "!" (0x21) is below "1" (0x31).
    EXPECT_EQ(HVString("a!").CompareWithOptions("a1", HVNumericSearch), -1);
    // No other option counts.
    EXPECT_EQ(HVString(u"é").CompareWithOptions(u"e", HVDiacriticInsensitiveSearch | HVWidthInsensitiveSearch), 1);
}

TEST(StringCompare, LocalizedForTheUsersLocale) {
    {
        hvtest::ScopedLocale english("en_US.UTF-8");
        EXPECT_EQ(HVString("a").LocalizedCompare("B"), HVOrderedAscending);
        EXPECT_EQ(HVString("a").LocalizedCompare("A"), HVOrderedAscending);
        EXPECT_EQ(HVString(u"é").LocalizedCompare("f"), HVOrderedAscending);
        EXPECT_EQ(HVString("a").LocalizedCaseInsensitiveCompare("A"), HVOrderedSame);
        EXPECT_EQ(HVString(u"é").LocalizedCaseInsensitiveCompare(u"E"), HVOrderedDescending);
        EXPECT_EQ(HVString(u"ö").LocalizedCompare("z"), HVOrderedAscending);
    }
    hvtest::ScopedLocale swedish("sv_SE.UTF-8");
    EXPECT_EQ(HVString(u"ö").LocalizedCompare("z"), HVOrderedDescending);
}

TEST(StringComparators, StringsForSorting) {
    // Without a context the comparison is literal.
    EXPECT_EQ(sorted({u"b", u"a", u"B"}, HVCompare::HVCompareStrings, nullptr), (Texts{u"B", u"a", u"b"}));
    HVStringCompareOptions caseInsensitive = HVCaseInsensitiveSearch;
    EXPECT_EQ(sorted({u"c", u"B", u"a"}, HVCompare::HVCompareStrings, &caseInsensitive), (Texts{u"a", u"B", u"c"}));
    HVStringCompareOptions numeric = HVNumericSearch;
    EXPECT_EQ(sorted({u"file10", u"file2", u"file1"}, HVCompare::HVCompareStrings, &numeric),
              (Texts{u"file1", u"file2", u"file10"}));
    EXPECT_EQ(HVCompare::HVCompareStrings(CFSTR("x"), CFSTR("x"), nullptr), kCFCompareEqualTo);
    EXPECT_EQ(HVCompare::HVCompareStrings(CFSTR("b"), CFSTR("a"), nullptr), kCFCompareGreaterThan);
    EXPECT_EQ(HVCompare::HVCompareStrings(nullptr, CFSTR("a"), nullptr), kCFCompareLessThan);

    hvtest::ScopedLocale english("en_US.UTF-8");
    EXPECT_EQ(sorted({u"b", u"B", u"a", u"é"}, HVCompare::HVLocalizedCompareStrings, nullptr),
              (Texts{u"a", u"b", u"B", u"é"}));
    EXPECT_EQ(sorted({u"x10", u"x9"}, HVCompare::HVLocalizedCompareStrings, &numeric), (Texts{u"x9", u"x10"}));
    EXPECT_EQ(HVCompare::HVLocalizedCompareStrings(CFSTR("A"), CFSTR("a"), &caseInsensitive), kCFCompareEqualTo);
}

TEST(StringComparators, NumbersBySelector) {
    HVNumber twoPointSeven(2.7), twoPointTwo(2.2), big(9007199254740993ll), bigger(9007199254740992ll);
    // Doubles without a context (selector 16) and for any selector but 1, 2, 4, 8.
    EXPECT_EQ(HVCompare::HVCompareNumbers(twoPointSeven.Ref(), twoPointTwo.Ref(), nullptr), kCFCompareGreaterThan);
    EXPECT_EQ(HVCompare::HVCompareNumbers(twoPointTwo.Ref(), twoPointSeven.Ref(), nullptr), kCFCompareLessThan);
    for (long long selector : {1ll, 2ll, 4ll, 8ll}) {
        EXPECT_EQ(HVCompare::HVCompareNumbers(twoPointSeven.Ref(), twoPointTwo.Ref(), &selector), kCFCompareEqualTo);
        EXPECT_EQ(HVCompare::HVCompareNumbers(big.Ref(), bigger.Ref(), &selector), kCFCompareGreaterThan);
    }
    for (long long selector : {0ll, 3ll, 16ll, 32ll}) {
        EXPECT_EQ(HVCompare::HVCompareNumbers(twoPointSeven.Ref(), twoPointTwo.Ref(), &selector),
                  kCFCompareGreaterThan);
        // Both round to the same double.
        EXPECT_EQ(HVCompare::HVCompareNumbers(big.Ref(), bigger.Ref(), &selector), kCFCompareEqualTo);
    }
    HVNumber notANumber(std::nan(""));
    EXPECT_EQ(HVCompare::HVCompareNumbers(notANumber.Ref(), twoPointTwo.Ref(), nullptr), kCFCompareEqualTo);

    CFMutableArrayRef numbers = CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks);
    for (double value : {3.0, -1.5, 2.0}) CFArrayAppendValue(numbers, HVNumber(value).Ref());
    CFArraySortValues(numbers, CFRangeMake(0, 3), HVCompare::HVCompareNumbers, nullptr);
    EXPECT_EQ(HVNumber(CFArrayGetValueAtIndex(numbers, 0)).DoubleValue(), -1.5);
    EXPECT_EQ(HVNumber(CFArrayGetValueAtIndex(numbers, 2)).DoubleValue(), 3.0);
    CFRelease(numbers);
}
