// HVCharacterSet: the ASCII predefined sets, sets from strings and ranges,
// inversion and edits.
#include <halvane/text/HVCharacterSet.h>
#include <halvane/text/HVRange.h>
#include <halvane/text/HVScanner.h>
#include <halvane/text/HVString.h>

#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

bool contains(const HVCharacterSet& set, char16_t unit) {
    return CFCharacterSetIsCharacterMember(static_cast<CFCharacterSetRef>(set), unit);
}

// The members among all UTF-16 units, in order.
std::u16string membersOf(const HVCharacterSet& set) {
    std::u16string members;
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        if (contains(set, char16_t(unit))) members.push_back(char16_t(unit));
    }
    return members;
}

}  // namespace

TEST(CharacterSet, DefaultSetIsTheSharedEmptyDataObject) {
    HVCharacterSet set;
    EXPECT_EQ(HVCharacterSet::ClassType(), HVCharacterSetClassType);
    EXPECT_EQ(set.ObjectsClassType(), HVCharacterSetClassType);
    EXPECT_EQ(set.ObjectsActualClassType(), HVCharacterSetClassType);
    EXPECT_EQ(set.Ref(), HVCharacterSet::SharedEmptyObject());
    EXPECT_EQ(CFGetTypeID(set.Ref()), CFDataGetTypeID());
    EXPECT_EQ(CFDataGetLength(static_cast<CFDataRef>(set.Ref())), 0);
    EXPECT_TRUE(set.IsEmpty());
    EXPECT_FALSE(set.IsNull());
    // A set without members that is not the shared object is not empty.
    EXPECT_FALSE(HVCharacterSet::CharacterSetWithCharactersInString("").IsEmpty());
    EXPECT_EQ(HVObject::ClassNameOfClassType(HVCharacterSetClassType).Length(), 0u);
}

TEST(CharacterSet, PredefinedSetsAreExactlyTheirASCIICharacters) {
    EXPECT_EQ(membersOf(HVCharacterSet::WhitespaceCharacterSet()), u"\t ");
    EXPECT_EQ(membersOf(HVCharacterSet::WhitespaceAndNewlineCharacterSet()), u"\t\n\v\f\r ");
    EXPECT_EQ(membersOf(HVCharacterSet::DecimalDigitCharacterSet()), u"0123456789");
    EXPECT_EQ(membersOf(HVCharacterSet::LetterCharacterSet()), u"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz");
    EXPECT_EQ(membersOf(HVCharacterSet::AlphaNumericCharacterSet()),
              u"0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz");
    auto letters = static_cast<CFCharacterSetRef>(HVCharacterSet::LetterCharacterSet());
    EXPECT_FALSE(CFCharacterSetIsLongCharacterMember(letters, 0x1D400));  // mathematical bold A
    // Each is made once and handed out by reference.
    EXPECT_EQ(&HVCharacterSet::DecimalDigitCharacterSet(), &HVCharacterSet::DecimalDigitCharacterSet());
    EXPECT_EQ(HVCharacterSet::DecimalDigitCharacterSet().ObjectsClassType(), HVCharacterSetClassType);
}

TEST(CharacterSet, FromStringsAndRanges) {
    HVCharacterSet abc = HVCharacterSet::CharacterSetWithCharactersInString("cab");
    EXPECT_EQ(membersOf(abc), u"abc");
    EXPECT_EQ(abc.RetainCount(), 1u);
    HVCharacterSet range = HVCharacterSet::CharacterSetWithRange(HVRange(0x41, 3));
    EXPECT_EQ(membersOf(range), u"ABC");
    EXPECT_TRUE(range == abc ? false : true);
    EXPECT_TRUE(HVCharacterSet::CharacterSetWithRange(HVRange(0x61, 3)) == abc);
    // The range reaches the platform cut to 32 bits.
    EXPECT_EQ(membersOf(HVCharacterSet::CharacterSetWithRange(HVRange(0x100000030ull, 2))), u"01");
    // A supplementary character in the text is one member.
    HVCharacterSet emoji = HVCharacterSet::CharacterSetWithCharactersInString(u"😀");
    EXPECT_TRUE(CFCharacterSetIsLongCharacterMember(static_cast<CFCharacterSetRef>(emoji), 0x1F600));
    EXPECT_EQ(membersOf(emoji), u"");
}

TEST(CharacterSet, Inversion) {
    HVCharacterSet notDigits = HVCharacterSet::InvertedCharacterSet(HVCharacterSet::DecimalDigitCharacterSet());
    EXPECT_TRUE(contains(notDigits, u'a'));
    EXPECT_FALSE(contains(notDigits, u'7'));
    EXPECT_EQ(membersOf(notDigits).size(), 0x10000u - 10);
    HVCharacterSet letters = HVCharacterSet::LetterCharacterSet();
    HVCharacterSet notLetters = letters.InvertedSet();
    EXPECT_TRUE(contains(notLetters, u'1'));
    EXPECT_FALSE(contains(notLetters, u'q'));
    EXPECT_TRUE(notLetters.InvertedSet() == letters);
    EXPECT_EQ(notLetters.ObjectsClassType(), HVCharacterSetClassType);
}

TEST(CharacterSet, AddingAndRemovingCharactersReplacesTheSet) {
    HVCharacterSet set = HVCharacterSet::CharacterSetWithCharactersInString("abc");
    HVCharacterSet before = set;
    set.AddCharactersInString("xyz");
    EXPECT_EQ(membersOf(set), u"abcxyz");
    set.RemoveCharactersInString("b");
    EXPECT_EQ(membersOf(set), u"acxyz");
    // The original set is untouched: the edit made a new one.
    EXPECT_EQ(membersOf(before), u"abc");
    EXPECT_NE(set.Ref(), before.Ref());
    EXPECT_EQ(CFGetTypeID(set.Ref()), CFCharacterSetGetTypeID());

    // A predefined set handed out by value can be edited without changing
    // the shared one.
    HVCharacterSet digitsAndDot = HVCharacterSet::DecimalDigitCharacterSet();
    digitsAndDot.AddCharactersInString(".");
    EXPECT_EQ(membersOf(digitsAndDot), u".0123456789");
    EXPECT_EQ(membersOf(HVCharacterSet::DecimalDigitCharacterSet()), u"0123456789");
}

TEST(CharacterSet, DefaultSetsAndRefusedRangesAreHandedOnUnchecked) {
    // The platform ignores the empty data object of a default set, with a
    // report on standard error.
    HVCharacterSet set;
    set.AddCharactersInString("ba");
    EXPECT_EQ(membersOf(set), u"ab");
    EXPECT_EQ(CFGetTypeID(set.Ref()), CFCharacterSetGetTypeID());
    // A range beyond Unicode makes no set.
    HVCharacterSet refused = HVCharacterSet::CharacterSetWithRange(HVRange(0x110000, 1));
    EXPECT_TRUE(refused.IsNull());
    EXPECT_TRUE(refused.IsEmpty());
}

TEST(CharacterSet, CopiesAndAssignmentsShareTheSet) {
    HVCharacterSet set = HVCharacterSet::CharacterSetWithCharactersInString("q");
    HVCharacterSet copy(set);
    EXPECT_EQ(copy.Ref(), set.Ref());
    EXPECT_EQ(set.RetainCount(), 2u);
    HVCharacterSet assigned;
    assigned = set;
    EXPECT_EQ(assigned.Ref(), set.Ref());
    CFCharacterSetRef platform = CFCharacterSetCreateWithCharactersInString(kCFAllocatorDefault, CFSTR("p"));
    assigned = platform;
    EXPECT_EQ(static_cast<CFCharacterSetRef>(assigned), platform);
    HVCharacterSet wrapped(platform);
    EXPECT_EQ(CFGetRetainCount(platform), 3);
    CFRelease(platform);
}

namespace {

class ObjectProbe : public HVObject {
public:
    using HVObject::CreateObjectOfClassType;
};

}  // namespace

TEST(CharacterSet, RegisteredWithTheObjectCore) {
    HVCharacterSet set = HVCharacterSet::CharacterSetWithCharactersInString("a");
    std::shared_ptr<HVObject> made = ObjectProbe::CreateObjectOfClassType(set.Ref(), HVCharacterSetClassType);
    ASSERT_NE(dynamic_cast<HVCharacterSet*>(made.get()), nullptr);
    EXPECT_EQ(made->Ref(), set.Ref());
    std::shared_ptr<HVObject> scanner = ObjectProbe::CreateObjectOfClassType(CFSTR("text"), HVScannerClassType);
    ASSERT_NE(dynamic_cast<HVScanner*>(scanner.get()), nullptr);
    EXPECT_EQ(static_cast<HVScanner*>(scanner.get())->ScanLocation(), 0u);
    // Emptying and releasing go back to each class's shared empty object.
    set.Release();
    EXPECT_EQ(set.Ref(), HVCharacterSet::SharedEmptyObject());
    HVScanner text = HVScanner::ScannerWithString("abc");
    text.Empty();
    EXPECT_EQ(text.Ref(), HVString::SharedEmptyObject());
}
