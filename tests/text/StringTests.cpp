// HVString: construction from every kind of text, formats, conversion out,
// length and characters, equality and the inverted order operators.
#include <halvane/collections/HVData.h>
#include <halvane/errors/HVException.h>
#include <halvane/text/HVString.h>

#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

#include <cstring>
#include <regex>

#include "support/LogCapture.h"

namespace {

std::u16string unitsOf(const HVString& text) {
    CFStringRef string = static_cast<CFStringRef>(text.Ref());
    std::u16string units(size_t(CFStringGetLength(string)), u'\0');
    CFStringGetCharacters(string, CFRangeMake(0, CFIndex(units.size())), reinterpret_cast<UniChar*>(units.data()));
    return units;
}

std::string bytesOf(const HVData& data) {
    return std::string(static_cast<const char*>(data.Bytes()), size_t(data.Length()));
}

}  // namespace

TEST(String, NullEmptyAndSharedStrings) {
    HVString null(static_cast<const char*>(nullptr));
    EXPECT_TRUE(null.IsNull());
    EXPECT_TRUE(null.IsEmpty());
    EXPECT_EQ(null.Ref(), nullptr);
    EXPECT_EQ(null.ObjectsClassType(), HVStringClassType);

    HVString empty("");
    EXPECT_FALSE(empty.IsNull());
    EXPECT_TRUE(empty.IsEmpty());
    EXPECT_EQ(empty.Ref(), HVString::SharedEmptyObject());
    EXPECT_EQ(HVString().Ref(), HVString::SharedEmptyObject());
    EXPECT_EQ(HVString::SharedEmptyString().Ref(), HVString::SharedEmptyObject());
    EXPECT_EQ(HVString::SharedNullString().Ref(), nullptr);
    // The shared empty object is a constant: retain and release leave it.
    EXPECT_EQ(CFGetRetainCount(HVString::SharedEmptyObject()), 0x0FFFFFFFFFFFFFFFL);

    // Two empty strings are equal, and an empty string equals a null one.
    EXPECT_TRUE(empty == HVString());
    EXPECT_TRUE(empty == null);
    EXPECT_TRUE(null == empty);
    EXPECT_FALSE(null == HVString("x"));
    EXPECT_TRUE(HVString(static_cast<const wchar_t*>(nullptr)).IsNull());
    EXPECT_TRUE(HVString(static_cast<const char16_t*>(nullptr)).IsNull());
    EXPECT_TRUE(HVString(std::string()).Ref() == HVString::SharedEmptyObject());
}

TEST(String, ConstructionFromEachKindOfText) {
    EXPECT_EQ(unitsOf(HVString("Gr\xC3\xBC\xC3\x9F" "e")), u"Grüße");
    EXPECT_EQ(unitsOf(HVString(reinterpret_cast<const unsigned char*>("abc"))), u"abc");
    EXPECT_EQ(unitsOf(HVString(L"wide \U0001F600")), u"wide \U0001F600");
    EXPECT_EQ(unitsOf(HVString(u"utf-16 €")), u"utf-16 €");
    EXPECT_EQ(unitsOf(HVString(std::string("std text"))), u"std text");
    // A byte-order mark at the start of UTF-8 text is dropped.
    EXPECT_EQ(unitsOf(HVString("\xEF\xBB\xBFmarked")), u"marked");
    // Bytes that are not UTF-8 give the empty string.
    HVString broken("\xC3(");
    EXPECT_FALSE(broken.IsNull());
    EXPECT_EQ(broken.Length(), 0u);

    // The 32-bit text form is never read.
    const unsigned int text32[] = {'a', 'b', 0};
    EXPECT_EQ(HVString(text32).Ref(), HVString::SharedEmptyObject());
    EXPECT_TRUE(HVString(static_cast<const unsigned int*>(nullptr)).IsNull());

    CFStringRef platform = CFSTR("platform");
    HVString wrapped(platform);
    EXPECT_EQ(wrapped.Ref(), platform);
}

TEST(String, AssignmentAndConcatenation) {
    HVString text("start");
    text = "changed";
    EXPECT_EQ(unitsOf(text), u"changed");
    text = L"wide";
    EXPECT_EQ(unitsOf(text), u"wide");
    text = static_cast<const char*>(nullptr);
    EXPECT_TRUE(text.IsNull());
    text = std::string();
    EXPECT_EQ(text.Ref(), HVString::SharedEmptyObject());

    HVString left("ab");
    left += "cd";
    left += HVString(L"ef");
    left += std::string("gh");
    EXPECT_EQ(unitsOf(left), u"abcdefgh");
    EXPECT_EQ(unitsOf("x" + HVString("y") + L"z"), u"xyz");
    EXPECT_EQ(unitsOf(std::string("1") + HVString("2")), u"12");
    EXPECT_EQ(unitsOf(CFSTR("3") + HVString("4")), u"34");
    HVString null(static_cast<const char*>(nullptr));
    EXPECT_EQ(unitsOf(null + "tail"), u"tail");
}

TEST(String, Formatting) {
    EXPECT_EQ(unitsOf(HVString::StringWithFormat("%d items for %@", 3, HVString("you").Ref())), u"3 items for you");
    EXPECT_EQ(HVString::StringWithFormat("").Ref(), HVString::SharedEmptyObject());
    HVString target("old");
    target.InitWithFormat("%s-%x", "hex", 255);
    EXPECT_EQ(unitsOf(target), u"hex-ff");
    HVString null(static_cast<const char*>(nullptr));
    target.InitWithFormat(null, 1);
    EXPECT_EQ(target.Ref(), HVString::SharedEmptyObject());
}

TEST(String, BytesDataAndEncodings) {
    const char latin[] = "caf\xE9";
    EXPECT_EQ(unitsOf(HVString::StringWithCStringUsingEncoding(latin, HVISOLatin1StringEncoding)), u"café");
    EXPECT_EQ(unitsOf(HVString::StringWithCStringUsingEncoding("\x80", HVWindowsLatin1StringEncoding)), u"€");
    EXPECT_EQ(unitsOf(HVString::StringWithCStringUsingEncoding("\xA5", HVMacOSRomanStringEncoding)), u"•");
    const char utf16[] = {'h', 0, 'i', 0, 0, 0};
    EXPECT_EQ(unitsOf(HVString::StringWithCStringUsingEncoding(utf16, HVUTF16StringEncoding)), u"hi");
    EXPECT_EQ(HVString::StringWithCStringUsingEncoding(static_cast<const char*>(nullptr), HVASCIIStringEncoding).Ref(),
              HVString::SharedEmptyObject());

    // Explicit lengths keep a byte-order mark as text.
    const char marked[] = "\xEF\xBB\xBFx";
    EXPECT_EQ(unitsOf(HVString::StringWithBytesOfLengthUsingEncoding(marked, 4, HVUTF8StringEncoding)), u"\uFEFFx");
    EXPECT_EQ(HVString::StringWithBytesOfLengthUsingEncoding(marked, 0, HVUTF8StringEncoding).Length(), 0u);

    // Trailing terminators are dropped from data; for UTF-16 only whole
    // zero units.
    HVData abc = HVData::DataWithBytesOfLength("abc\0\0", 5);
    EXPECT_EQ(unitsOf(HVString::StringWithDataUsingEncoding(abc, HVUTF8StringEncoding)), u"abc");
    const char unitAndZero[] = {'a', 0, 0, 0};
    HVData wide = HVData::DataWithBytesOfLength(unitAndZero, 4);
    EXPECT_EQ(unitsOf(HVString::StringWithDataUsingEncoding(wide, HVUTF16StringEncoding)), u"a");
    // A zero byte alone is the high byte of the last unit, not a terminator.
    const char lastUnit[] = {'a', 0, 'b', 0};
    HVString kept =
        HVString::StringWithDataUsingEncoding(HVData::DataWithBytesOfLength(lastUnit, 4), HVUTF16StringEncoding);
    EXPECT_EQ(unitsOf(kept), u"ab");
    EXPECT_EQ(unitsOf(HVString(HVData::DataWithBytesOfLength("from data", 9))), u"from data");

    // An unknown encoding is logged and taken as UTF-8.
    hvtest::LogCapture log;
    EXPECT_EQ(HVStringEncodingUtilites::ConvertToUnderlyingStringEncoding(HVStringEncoding(42)),
              unsigned(kCFStringEncodingUTF8));
    ASSERT_EQ(log.messages().size(), 1u);
    EXPECT_EQ(log.messages()[0], "Unhandled string encoding");
}

TEST(String, ConversionOut) {
    HVString text("h\xC3\xA9llo");
    std::unique_ptr<const char[]> utf8 = text.UTF8CString();
    ASSERT_NE(utf8, nullptr);
    EXPECT_STREQ(utf8.get(), "h\xC3\xA9llo");
    EXPECT_EQ(std::string(text), "h\xC3\xA9llo");
    std::unique_ptr<const char[]> latin = text.DefaultOSSingleByteCString();
    EXPECT_STREQ(latin.get(), "h\xE9llo");
    std::unique_ptr<const char16_t[]> utf16 = text.UTF16CString();
    ASSERT_NE(utf16, nullptr);
    EXPECT_EQ(std::u16string(utf16.get()), u"héllo");
    EXPECT_EQ(HVString(static_cast<const char*>(nullptr)).UTF8CString(), nullptr);
    EXPECT_EQ(std::string(HVString(static_cast<const char*>(nullptr))), "");

    EXPECT_EQ(bytesOf(text.DataContainingUTF8String()), "h\xC3\xA9llo");
    EXPECT_EQ(bytesOf(text.DataContainingCStringUsingEncoding(HVUTF8StringEncoding)), std::string("h\xC3\xA9llo\0", 7));
    // UTF-16 little-endian: the explicit byte order takes no byte-order mark.
    EXPECT_EQ(bytesOf(HVString("ab").DataContainingUTF16String()), std::string("a\0b\0", 4));
    EXPECT_EQ(bytesOf(HVString("ab").DataContainingUTF16CString()), std::string("a\0b\0\0\0", 6));
    EXPECT_EQ(bytesOf(text.DataContainingWindowsLatin1String()), "h\xE9llo");
    EXPECT_EQ(bytesOf(HVString("\xE2\x80\xA2").DataContainingMacOSRomanString()), "\xA5");

    EXPECT_TRUE(text.CanBeConvertedToEncoding(HVISOLatin1StringEncoding));
    EXPECT_FALSE(text.CanBeConvertedToEncoding(HVASCIIStringEncoding));
    // Loss byte 0 drops what the encoding cannot hold; another byte stands in.
    EXPECT_EQ(bytesOf(text.DataContainingStringUsingEncodingAndLossByte(HVASCIIStringEncoding, 0)), "hllo");
    EXPECT_EQ(bytesOf(text.DataContainingStringUsingEncodingAndLossByte(HVASCIIStringEncoding, '?')), "h?llo");
    EXPECT_EQ(bytesOf(HVString("plain").DataContainingStringUsingEncodingAndLossByte(HVASCIIStringEncoding, 0)),
              "plain");
}

TEST(String, CharactersAndTheirRangeCheck) {
    HVString text("abc");
    EXPECT_EQ(text.Length(), 3u);
    EXPECT_EQ(text.CharacterAtIndex(1), L'b');
    EXPECT_EQ(text[2], L'c');
    EXPECT_EQ(text[0ull], L'a');
    try {
        text.CharacterAtIndex(text.Length());
        FAIL() << "no exception";
    } catch (const HVException& exception) {
        EXPECT_EQ(std::string(exception.Name()), "RangeException");
        EXPECT_EQ(std::string(exception.Reason()), "HVString::CharacterAtIndex Index is out of range.");
        EXPECT_EQ(exception.ObjectsClassType(), HVExceptionClassType);
    }
    EXPECT_THROW(HVString(static_cast<const char*>(nullptr)).CharacterAtIndex(0), HVException);
}

TEST(String, UnicodeCharactersAndEscapes) {
    EXPECT_EQ(unitsOf(HVString::StringWithUnicodeCharacter(wchar_t(0xE9))), u"é");
    EXPECT_EQ(HVString::StringWithUnicodeCharacter(0xE9u).Ref(), HVString::SharedEmptyObject());
    EXPECT_EQ(HVString::UnicodeEscapeSequenceToUniChar("\\u00e9"), wchar_t(0x00E9));
    EXPECT_EQ(HVString::UnicodeEscapeSequenceToUniChar("u00e9"), wchar_t(0));
    EXPECT_EQ(HVString::UnicodeEscapeSequenceToUniChar("\\u4F"), wchar_t(0x4F));
    // Digits are not checked: "ZZ" counts as 35 and 35.
    EXPECT_EQ(HVString::UnicodeEscapeSequenceToUniChar("\\uZZ"), wchar_t(35 * 16 + 35));
    EXPECT_EQ(unitsOf(HVString::StringWithUnicodeEscapeSequence("\\u20AC")), u"€");
    EXPECT_EQ(unitsOf(HVString::StringWithUnicodeEscapeSequence(L"\\u20AC")), u"\\u20AC");

    static const char constant[] = "constant \x80";
    HVString wrapped;
    wrapped.InitWithDefaultSingleByteConstantString(constant);
    EXPECT_EQ(unitsOf(wrapped), u"constant €");
}

TEST(String, EqualityAndTheInvertedOrder) {
    EXPECT_TRUE(HVString("b") < HVString("a"));
    EXPECT_FALSE(HVString("a") < HVString("b"));
    EXPECT_TRUE(HVString("a") > HVString("b"));
    EXPECT_FALSE(HVString("a") < HVString("a"));
    EXPECT_FALSE(HVString("a") > HVString("a"));

    HVString text("same");
    EXPECT_TRUE(text == "same");
    EXPECT_TRUE(text == L"same");
    EXPECT_TRUE(text == std::string("same"));
    EXPECT_TRUE(text == CFSTR("same"));
    EXPECT_TRUE(text != "Same");
    EXPECT_TRUE(text.IsEqualToString(reinterpret_cast<const unsigned char*>("same")));
    const unsigned int text32[] = {0};
    EXPECT_FALSE(text == text32);
    EXPECT_TRUE(HVString() == text32);
}

TEST(String, ConversionFromObjects) {
    HVObject holder = HVObject::Create(CFSTR("held"));
    EXPECT_EQ(HVString(holder).Ref(), CFSTR("held"));
    EXPECT_TRUE(HVString(HVObject()).IsNull());
    HVData data = HVData::DataWithBytesOfLength("bytes", 5);
    EXPECT_EQ(unitsOf(HVString(static_cast<const HVObject&>(data))), u"bytes");

    // Anything else is reported and replaced by its description.
    int seven = 7;
    CFNumberRef number = CFNumberCreate(nullptr, kCFNumberIntType, &seven);
    HVObject numberHolder = HVObject::Create(number);
    hvtest::LogCapture log;
    HVString described(numberHolder);
    ASSERT_EQ(log.messages().size(), 1u);
    EXPECT_EQ(log.messages()[0],
              "Failed Assert! (0) - This string assignment is going away so fix this assignment. Cant convert 21.    "
              "Function:HVString::HVString File:HVString Line:551");
    EXPECT_TRUE(std::regex_match(std::string(described), std::regex("<CFNumber 0x[0-9a-f]+ \\[0x[0-9a-f]+\\]>\\{value "
                                                                     "= \\+7, type = kCFNumberSInt32Type\\}")));
    CFRelease(number);
}

TEST(String, UUIDs) {
    HVString first = HVUtilities::CreateUUID();
    HVString second = HVUtilities::CreateUUID();
    std::string text = first;
    EXPECT_TRUE(std::regex_match(text, std::regex("[0-9a-f]{8}-[0-9a-f]{4}-1[0-9a-f]{3}-[0-9a-f]{4}-[0-9a-f]{12}")))
        << text;
    EXPECT_FALSE(first == second);
}
