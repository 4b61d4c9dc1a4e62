// HVString: searching for strings and characters, prefixes and suffixes.
#include <halvane/text/HVCharacterSet.h>
#include <halvane/text/HVString.h>

#include <gtest/gtest.h>

#include "TextTestSupport.h"

namespace {

const HVRange kNotFound(HVNotFound, 0);

}  // namespace

TEST(StringSearch, FindsTextWithAndWithoutOptions) {
    HVString text("abcabc");
    EXPECT_EQ(text.RangeOfString("bc"), HVRange(1, 2));
    EXPECT_EQ(text.RangeOfStringWithOptions("bc", HVBackwardsSearch), HVRange(4, 2));
    EXPECT_EQ(text.RangeOfStringWithOptions("b", HVAnchoredSearch), kNotFound);
    EXPECT_EQ(text.RangeOfStringWithOptions("ab", HVAnchoredSearch), HVRange(0, 2));
    // The literal flag has no meaning for the platform and changes nothing.
    EXPECT_EQ(text.RangeOfStringWithOptions("ca", HVLiteralSearch), HVRange(2, 2));
    EXPECT_EQ(text.RangeOfStringInRange("abc", HVRange(1, 5)), HVRange(3, 3));
    EXPECT_EQ(text.RangeOfStringInRange("abc", HVRange(1, 4)), kNotFound);
    EXPECT_EQ(text.RangeOfString("x"), kNotFound);
    EXPECT_EQ(text.RangeOfString("x").Location(), HVNotFound);
}

TEST(StringSearch, EmptyTextsAreNeverFound) {
    EXPECT_EQ(HVString("abc").RangeOfString(""), kNotFound);
    EXPECT_EQ(HVString("abc").RangeOfString(HVString::SharedNullString()), kNotFound);
    EXPECT_EQ(HVString("").RangeOfString("a"), kNotFound);
    EXPECT_EQ(HVString::SharedNullString().RangeOfStringWithOptions("a", HVCaseInsensitiveSearch), kNotFound);
    EXPECT_EQ(HVString("").RangeOfCharacterFromSet(HVCharacterSet::LetterCharacterSet()), kNotFound);
}

TEST(StringSearch, RangesReachThePlatformCutTo32Bits) {
    // Location 2^32 + 3 arrives as 3.
    EXPECT_EQ(HVString("abcabc").RangeOfStringInRange("abc", HVRange(0x100000003ull, 3)), HVRange(3, 3));
}

TEST(StringSearch, CaseInsensitiveSearchComparesUpperCasedTexts) {
    EXPECT_EQ(HVString("xabcx").RangeOfStringWithOptions("ABC", HVCaseInsensitiveSearch), HVRange(1, 3));
    EXPECT_EQ(HVString("ABCabc").RangeOfStringWithOptions("bC", HVCaseInsensitiveSearch | HVBackwardsSearch),
              HVRange(4, 2));
    EXPECT_EQ(HVString("xABCx").RangeOfStringWithOptionsInRange("abc", HVCaseInsensitiveSearch, HVRange(2, 3)),
              kNotFound);
    EXPECT_EQ(HVString(u"Ünïcode").RangeOfStringWithOptions(u"üNÏ", HVCaseInsensitiveSearch), HVRange(0, 3));
    // Upper-casing keeps "ß" as it is, so it does not meet "SS"; the match
    // always has the length of what was sought.
    EXPECT_EQ(HVString(u"STRASSE").RangeOfStringWithOptions(u"ß", HVCaseInsensitiveSearch), kNotFound);
    EXPECT_EQ(HVString(u"straße").RangeOfStringWithOptions(u"SS", HVCaseInsensitiveSearch), kNotFound);
    EXPECT_EQ(HVString(u"STRAßE").RangeOfStringWithOptions(u"aße", HVCaseInsensitiveSearch), HVRange(3, 3));
    // Final and medial sigma both upper-case to capital sigma.
    EXPECT_EQ(HVString(u"λόγος").RangeOfStringWithOptions(u"οσ", HVCaseInsensitiveSearch), HVRange(3, 2));
}

TEST(StringSearch, CaseInsensitiveSearchFollowsTheUsersLocale) {
    hvtest::ScopedLocale turkish("tr_TR.UTF-8");
    // In Turkish "i" upper-cases to a dotted capital, so it meets "İ" and
    // not "I".
    EXPECT_EQ(HVString(u"İstanbul").RangeOfStringWithOptions(u"i", HVCaseInsensitiveSearch), HVRange(0, 1));
    EXPECT_EQ(HVString(u"Istanbul").RangeOfStringWithOptions(u"i", HVCaseInsensitiveSearch), kNotFound);
}

TEST(StringSearch, FindsCharactersFromSets) {
    HVString text("hello world, again");
    const HVCharacterSet& space = HVCharacterSet::WhitespaceCharacterSet();
    EXPECT_EQ(text.RangeOfCharacterFromSet(space), HVRange(5, 1));
    EXPECT_EQ(text.RangeOfCharacterFromSetWithOptions(space, HVBackwardsSearch), HVRange(12, 1));
    EXPECT_EQ(text.RangeOfCharacterFromSetInRange(space, HVRange(6, 6)), kNotFound);
    EXPECT_EQ(text.RangeOfCharacterFromSetWithOptionsInRange(HVCharacterSet::CharacterSetWithCharactersInString(",o"),
                                                             HVBackwardsSearch, HVRange(0, 11)),
              HVRange(7, 1));
    // A supplementary character is found as its two units.
    EXPECT_EQ(HVString(u"a😀b").RangeOfCharacterFromSet(HVCharacterSet::CharacterSetWithCharactersInString(u"😀")),
              HVRange(1, 2));
    // An empty set finds nothing, and is not handed to the platform.
    EXPECT_EQ(text.RangeOfCharacterFromSet(HVCharacterSet()), kNotFound);
}

TEST(StringSearch, PrefixesAndSuffixes) {
    HVString text("prefix-body-suffix");
    EXPECT_TRUE(text.HasPrefix("prefix"));
    EXPECT_FALSE(text.HasPrefix("body"));
    EXPECT_TRUE(text.HasSuffix("-suffix"));
    EXPECT_FALSE(text.HasSuffix("Suffix"));
    EXPECT_TRUE(text.HasPrefix(text));
    EXPECT_FALSE(text.HasPrefix("prefix-body-suffix!"));
    // Empty arguments match nothing, like every search.
    EXPECT_FALSE(text.HasPrefix(""));
    EXPECT_FALSE(text.HasSuffix(HVString::SharedNullString()));
    EXPECT_FALSE(HVString("").HasPrefix("a"));
    EXPECT_FALSE(HVString::SharedNullString().HasSuffix("a"));
}
