// HVString: substrings, splitting, replacing and trimming.
#include <halvane/collections/HVArray.h>
#include <halvane/errors/HVException.h>
#include <halvane/text/HVCharacterSet.h>
#include <halvane/text/HVString.h>

#include <gtest/gtest.h>

#include <limits>

#include "TextTestSupport.h"

using hvtest::piecesOf;
using hvtest::unitsOf;
using Pieces = std::vector<std::u16string>;

namespace {

// The reason of the range exception that the substring of range throws,
// or "none".
std::string substringFailure(const HVString& text, const HVRange& range) {
    try {
        text.SubstringWithRange(range);
    } catch (const HVException& exception) {
        EXPECT_EQ(std::string(exception.Name()), "RangeException");
        return std::string(exception.Reason());
    }
    return "none";
}

const char kOutOfRange[] =
    "Exception - Range Out of Range - Range requested for substring was not within the range of the string";

}  // namespace

TEST(StringSubstrings, RangesInsideTheText) {
    HVString text("hello");
    EXPECT_EQ(unitsOf(text.SubstringWithRange(HVRange(1, 3))), u"ell");
    EXPECT_EQ(unitsOf(text.SubstringWithRange(HVRange(0, 5))), u"hello");
    EXPECT_EQ(unitsOf(text.SubstringToIndex(3)), u"hel");
    EXPECT_EQ(unitsOf(text.SubstringFromIndex(2)), u"llo");
    // Nothing requested, nothing given, wherever the range starts.
    EXPECT_EQ(text.SubstringWithRange(HVRange(2, 0)).Ref(), HVString::SharedEmptyObject());
    EXPECT_EQ(text.SubstringWithRange(HVRange(9, 0)).Ref(), HVString::SharedEmptyObject());
    EXPECT_EQ(text.SubstringWithRange(HVRange()).Ref(), HVString::SharedEmptyObject());
    EXPECT_EQ(text.SubstringToIndex(0).Length(), 0u);
    EXPECT_EQ(text.SubstringFromIndex(5).Length(), 0u);
}

TEST(StringSubstrings, RangesOutsideTheTextThrow) {
    HVString text("hello");
    EXPECT_EQ(substringFailure(text, HVRange(2, 10)), kOutOfRange);
    EXPECT_EQ(substringFailure(text, HVRange(5, 1)), kOutOfRange);
    EXPECT_EQ(substringFailure(text, HVRange(4, 2)), kOutOfRange);
    // A length that wraps the end around is still outside.
    EXPECT_EQ(substringFailure(text, HVRange(2, std::numeric_limits<unsigned long long>::max())), kOutOfRange);
    EXPECT_EQ(substringFailure(text, HVRange(4, 1)), "none");
    EXPECT_THROW(text.SubstringToIndex(6), HVException);
    EXPECT_THROW(text.SubstringFromIndex(6), HVException);
    // An empty text gives the empty string for any range.
    EXPECT_EQ(substringFailure(HVString(""), HVRange(3, 4)), "none");
    EXPECT_EQ(HVString::SharedNullString().SubstringFromIndex(3).Ref(), HVString::SharedEmptyObject());
}

TEST(StringSubstrings, SeparatingByString) {
    EXPECT_EQ(piecesOf(HVString("a,b,c").ComponentsSeparatedByString(",")), (Pieces{u"a", u"b", u"c"}));
    EXPECT_EQ(piecesOf(HVString("a,,b").ComponentsSeparatedByString(",")), (Pieces{u"a", u"", u"b"}));
    EXPECT_EQ(piecesOf(HVString(",a,").ComponentsSeparatedByString(",")), (Pieces{u"", u"a", u""}));
    EXPECT_EQ(piecesOf(HVString("a::b").ComponentsSeparatedByString("::")), (Pieces{u"a", u"b"}));
    // Without the separator: one element, the text itself.
    HVString whole("abc");
    HVArray single = whole.ComponentsSeparatedByString(";");
    ASSERT_EQ(single.Count(), 1u);
    EXPECT_EQ(CFArrayGetValueAtIndex(static_cast<CFArrayRef>(single.Ref()), 0), whole.Ref());
    EXPECT_EQ(piecesOf(HVString("").ComponentsSeparatedByString(",")), (Pieces{u""}));
    EXPECT_EQ(piecesOf(HVString::SharedNullString().ComponentsSeparatedByString(",")), (Pieces{u""}));
    EXPECT_EQ(piecesOf(whole.ComponentsSeparatedByString("")), (Pieces{u"abc"}));
    EXPECT_EQ(single.ObjectsClassType(), HVArrayClassType);
}

TEST(StringSubstrings, SeparatingByCharacterSet) {
    const HVCharacterSet& blanks = HVCharacterSet::WhitespaceCharacterSet();
    EXPECT_EQ(piecesOf(HVString("a b\tc").ComponentsSeparatedByCharactersInSet(blanks)), (Pieces{u"a", u"b", u"c"}));
    EXPECT_EQ(piecesOf(HVString("a  b").ComponentsSeparatedByCharactersInSet(blanks)), (Pieces{u"a", u"", u"b"}));
    HVCharacterSet punctuation = HVCharacterSet::CharacterSetWithCharactersInString(",;");
    EXPECT_EQ(piecesOf(HVString(",x;").ComponentsSeparatedByCharactersInSet(punctuation)), (Pieces{u"", u"x", u""}));
    EXPECT_EQ(piecesOf(HVString(";").ComponentsSeparatedByCharactersInSet(punctuation)), (Pieces{u"", u""}));
    EXPECT_EQ(piecesOf(HVString(u"1😀2").ComponentsSeparatedByCharactersInSet(
                  HVCharacterSet::CharacterSetWithCharactersInString(u"😀"))),
              (Pieces{u"1", u"2"}));
    HVString whole("no separators");
    HVArray single = whole.ComponentsSeparatedByCharactersInSet(punctuation);
    ASSERT_EQ(single.Count(), 1u);
    EXPECT_EQ(CFArrayGetValueAtIndex(static_cast<CFArrayRef>(single.Ref()), 0), whole.Ref());
    EXPECT_EQ(piecesOf(whole.ComponentsSeparatedByCharactersInSet(HVCharacterSet())), (Pieces{u"no separators"}));
    EXPECT_EQ(piecesOf(HVString("").ComponentsSeparatedByCharactersInSet(punctuation)), (Pieces{u""}));
}

TEST(StringSubstrings, ReplacingEveryOccurrence) {
    HVString text("aXbXc");
    EXPECT_EQ(unitsOf(text.StringByReplacingOccurrencesOfStringWithString("X", "--")), u"a--b--c");
    EXPECT_EQ(unitsOf(text.StringByReplacingOccurrencesOfStringWithString("X", "")), u"abc");
    EXPECT_EQ(unitsOf(HVString("aaa").StringByReplacingOccurrencesOfStringWithString("aa", "b")), u"ba");
    // The replacement is not searched again.
    EXPECT_EQ(unitsOf(HVString("aba").StringByReplacingOccurrencesOfStringWithString("a", "aa")), u"aabaa");
    EXPECT_EQ(unitsOf(text.StringByReplacingOccurrencesOfStringWithString("x", "y")), u"aXbXc");
    EXPECT_EQ(text.StringByReplacingOccurrencesOfStringWithString("", "y").Ref(), text.Ref());
    EXPECT_EQ(HVString("").StringByReplacingOccurrencesOfStringWithString("a", "b").Length(), 0u);
}

TEST(StringSubstrings, TrimmingBySet) {
    // The whitespace set trims the way the platform does: line ends and
    // other spaces too.
    EXPECT_EQ(unitsOf(HVString(u"\n\t hi there \u00A0\r\n")
                          .StringByTrimmingCharactersInSet(HVCharacterSet::WhitespaceCharacterSet())),
              u"hi there");
    // Every other set trims its own members only.
    EXPECT_EQ(unitsOf(HVString(u" \u00A0hi\n\v")
                          .StringByTrimmingCharactersInSet(HVCharacterSet::WhitespaceAndNewlineCharacterSet())),
              u"\u00A0hi");
    HVCharacterSet xy = HVCharacterSet::CharacterSetWithCharactersInString("xy");
    EXPECT_EQ(unitsOf(HVString("xyxhixyy").StringByTrimmingCharactersInSet(xy)), u"hi");
    EXPECT_EQ(unitsOf(HVString("xhxiy").StringByTrimmingCharactersInSet(xy)), u"hxi");
    EXPECT_EQ(HVString("xyyx").StringByTrimmingCharactersInSet(xy).Length(), 0u);
    HVString untouched("hi");
    EXPECT_EQ(untouched.StringByTrimmingCharactersInSet(xy).Ref(), untouched.Ref());
    EXPECT_EQ(untouched.StringByTrimmingCharactersInSet(HVCharacterSet()).Ref(), untouched.Ref());
}
