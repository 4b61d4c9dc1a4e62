// HVScanner: runs of characters in and out of sets, and the scan location.
#include <halvane/errors/HVException.h>
#include <halvane/text/HVCharacterSet.h>
#include <halvane/text/HVScanner.h>
#include <halvane/text/HVString.h>

#include <gtest/gtest.h>

#include "TextTestSupport.h"

using hvtest::unitsOf;

TEST(Scanner, DefaultScannerHoldsTheEmptyString) {
    HVScanner scanner;
    EXPECT_EQ(HVScanner::ClassType(), HVScannerClassType);
    EXPECT_EQ(scanner.ObjectsClassType(), HVScannerClassType);
    EXPECT_EQ(scanner.Ref(), HVString::SharedEmptyObject());
    EXPECT_EQ(HVScanner::SharedEmptyObject(), HVString::SharedEmptyObject());
    EXPECT_EQ(scanner.ScanLocation(), 0u);
    EXPECT_TRUE(scanner.IsAtEnd());
    HVString result("untouched");
    EXPECT_FALSE(scanner.ScanCharactersFromSetIntoString(HVCharacterSet::LetterCharacterSet(), &result));
    EXPECT_EQ(unitsOf(result), u"untouched");
}

TEST(Scanner, ConsumesRunsInAndOutOfSets) {
    HVScanner scanner = HVScanner::ScannerWithString("   42abc");
    HVString result;
    EXPECT_TRUE(scanner.ScanCharactersFromSetIntoString(HVCharacterSet::WhitespaceCharacterSet(), &result));
    EXPECT_EQ(unitsOf(result), u"   ");
    EXPECT_EQ(scanner.ScanLocation(), 3u);
    EXPECT_TRUE(scanner.ScanCharactersFromSetIntoString(HVCharacterSet::DecimalDigitCharacterSet(), &result));
    EXPECT_EQ(unitsOf(result), u"42");
    EXPECT_EQ(scanner.ScanLocation(), 5u);
    EXPECT_FALSE(scanner.IsAtEnd());
    // A first unit that does not qualify: false, nothing moves.
    EXPECT_FALSE(scanner.ScanCharactersFromSetIntoString(HVCharacterSet::DecimalDigitCharacterSet(), &result));
    EXPECT_EQ(unitsOf(result), u"42");
    EXPECT_EQ(scanner.ScanLocation(), 5u);
    EXPECT_TRUE(scanner.ScanCharactersFromSet(HVCharacterSet::LetterCharacterSet(), result));
    EXPECT_EQ(unitsOf(result), u"abc");
    EXPECT_TRUE(scanner.IsAtEnd());
}

TEST(Scanner, ARunOverTheWholeTextIsTheTextItself) {
    HVString year("2021");
    HVScanner scanner = HVScanner::ScannerWithString(year);
    HVString result;
    EXPECT_TRUE(scanner.ScanCharactersFromSetIntoString(HVCharacterSet::DecimalDigitCharacterSet(), &result));
    EXPECT_EQ(result.Ref(), year.Ref());
    EXPECT_EQ(scanner.ScanLocation(), 4u);
    EXPECT_TRUE(scanner.IsAtEnd());
}

TEST(Scanner, WithoutAResultTheRunIsSkippedButFalseIsAnswered) {
    HVScanner scanner = HVScanner::ScannerWithString("123");
    EXPECT_FALSE(scanner.ScanCharactersFromSetIntoString(HVCharacterSet::DecimalDigitCharacterSet(), nullptr));
    EXPECT_EQ(scanner.ScanLocation(), 3u);
    EXPECT_TRUE(scanner.IsAtEnd());
}

TEST(Scanner, ScanningUpToASet) {
    HVScanner scanner = HVScanner::ScannerWithString("abc,def");
    HVCharacterSet comma = HVCharacterSet::CharacterSetWithCharactersInString(",");
    HVString result;
    EXPECT_TRUE(scanner.ScanUpToCharactersFromSetIntoString(comma, &result));
    EXPECT_EQ(unitsOf(result), u"abc");
    EXPECT_EQ(scanner.ScanLocation(), 3u);
    // Standing on a member: nothing to consume.
    EXPECT_FALSE(scanner.ScanUpToCharactersFromSetIntoString(comma, &result));
    EXPECT_EQ(scanner.ScanLocation(), 3u);
    scanner.SetScanLocation(4);
    EXPECT_TRUE(scanner.ScanUpToCharactersFromSetIntoString(comma, &result));
    EXPECT_EQ(unitsOf(result), u"def");
    EXPECT_TRUE(scanner.IsAtEnd());
}

TEST(Scanner, LocationsAndReinitialising) {
    HVScanner scanner = HVScanner::ScannerWithString("abc");
    scanner.SetScanLocation(10);
    EXPECT_TRUE(scanner.IsAtEnd());
    HVString result;
    EXPECT_FALSE(scanner.ScanUpToCharactersFromSetIntoString(HVCharacterSet::DecimalDigitCharacterSet(), &result));
    EXPECT_EQ(scanner.ScanLocation(), 10u);
    scanner.InitWithString("xyz9");
    EXPECT_EQ(scanner.ScanLocation(), 0u);
    EXPECT_TRUE(scanner.ScanUpToCharactersFromSetIntoString(HVCharacterSet::DecimalDigitCharacterSet(), &result));
    EXPECT_EQ(unitsOf(result), u"xyz");

    // Copies take the location with them and then go their own way.
    HVScanner copy(scanner);
    EXPECT_EQ(copy.ScanLocation(), 3u);
    EXPECT_EQ(copy.Ref(), scanner.Ref());
    copy.SetScanLocation(0);
    EXPECT_EQ(scanner.ScanLocation(), 3u);
    HVScanner assigned;
    assigned = scanner;
    EXPECT_EQ(assigned.ScanLocation(), 3u);
    EXPECT_EQ(assigned.Ref(), scanner.Ref());
    HVScanner nullText = HVScanner::ScannerWithString(HVString::SharedNullString());
    EXPECT_TRUE(nullText.IsAtEnd());
    EXPECT_FALSE(nullText.ScanUpToCharactersFromSetIntoString(HVCharacterSet::LetterCharacterSet(), &result));
}
