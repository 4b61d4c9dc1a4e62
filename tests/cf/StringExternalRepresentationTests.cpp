// CFStringCreateExternalRepresentation and
// CFStringCreateFromExternalRepresentation.
#include "CFTestSupport.h"

#include <gtest/gtest.h>

#include <string>

using namespace cftest;

namespace {

std::string bytesOf(CFDataRef data) {
    return std::string(reinterpret_cast<const char*>(CFDataGetBytePtr(data)), size_t(CFDataGetLength(data)));
}

Owned<CFDataRef> data(const std::string& bytes) {
    return own(CFDataCreate(nullptr, reinterpret_cast<const UInt8*>(bytes.data()), CFIndex(bytes.size())));
}

}  // namespace

TEST(StringExternalRepresentation, BytesWithByteOrderMarksWhereTheyBelong) {
    auto ab = string(u"ab");
    auto utf16 = own(CFStringCreateExternalRepresentation(nullptr, ab, kCFStringEncodingUTF16, 0));
    ASSERT_TRUE(utf16);
    EXPECT_EQ(CFGetRetainCount(utf16), 1);
    EXPECT_EQ(bytesOf(utf16), std::string("\xFF\xFE"
                                          "a\0b\0",
                                          6));
    auto utf32 = own(CFStringCreateExternalRepresentation(nullptr, ab, kCFStringEncodingUTF32, 0));
    EXPECT_EQ(bytesOf(utf32), std::string("\xFF\xFE\0\0a\0\0\0b\0\0\0", 12));
    auto utf16be = own(CFStringCreateExternalRepresentation(nullptr, ab, kCFStringEncodingUTF16BE, 0));
    EXPECT_EQ(bytesOf(utf16be), std::string("\0a\0b", 4));
    auto utf8 = own(CFStringCreateExternalRepresentation(nullptr, string(u"é"), kCFStringEncodingUTF8, 0));
    EXPECT_EQ(bytesOf(utf8), "\xC3\xA9");

    // Empty text: empty bytes, or just the mark.
    auto empty = own(CFStringCreateExternalRepresentation(nullptr, CFSTR(""), kCFStringEncodingUTF8, 0));
    ASSERT_TRUE(empty);
    EXPECT_EQ(CFDataGetLength(empty), 0);
    auto emptyUTF16 = own(CFStringCreateExternalRepresentation(nullptr, CFSTR(""), kCFStringEncodingUTF16, 0));
    EXPECT_EQ(bytesOf(emptyUTF16), "\xFF\xFE");
}

TEST(StringExternalRepresentation, NullUnlessEverythingOrSomethingWithALossByteConverts) {
    auto euro = string(u"a€");
    EXPECT_EQ(CFStringCreateExternalRepresentation(nullptr, euro, kCFStringEncodingISOLatin1, 0), nullptr);
    auto lossy = own(CFStringCreateExternalRepresentation(nullptr, euro, kCFStringEncodingISOLatin1, '?'));
    EXPECT_EQ(bytesOf(lossy), "a?");
    auto twoLoss =
        own(CFStringCreateExternalRepresentation(nullptr, string(u"\U0001F600"), kCFStringEncodingASCII, '?'));
    EXPECT_EQ(bytesOf(twoLoss), "??");

    // UTF-8 stops at a lone surrogate: a partial result with a loss byte.
    std::u16string lone = {u'a', 0xD800, u'b'};
    EXPECT_EQ(CFStringCreateExternalRepresentation(nullptr, string(lone), kCFStringEncodingUTF8, 0), nullptr);
    auto partial = own(CFStringCreateExternalRepresentation(nullptr, string(lone), kCFStringEncodingUTF8, '?'));
    EXPECT_EQ(bytesOf(partial), "a");
    std::u16string leading = {0xDC00, u'b'};
    EXPECT_EQ(CFStringCreateExternalRepresentation(nullptr, string(leading), kCFStringEncodingUTF8, '?'), nullptr);

    EXPECT_EQ(CFStringCreateExternalRepresentation(nullptr, euro, 0x7777, '?'), nullptr);
    EXPECT_EQ(CFStringCreateExternalRepresentation(nullptr, nullptr, kCFStringEncodingUTF8, 0), nullptr);
}

TEST(StringExternalRepresentation, FromExternalRepresentation) {
    EXPECT_EQ(units(own(CFStringCreateFromExternalRepresentation(nullptr,
                                                                 data(std::string("\xFF\xFE"
                                                                                  "A\0",
                                                                                  4)),
                                                                 kCFStringEncodingUTF16))),
              u"A");
    // No mark: big-endian.
    EXPECT_EQ(units(own(CFStringCreateFromExternalRepresentation(nullptr, data(std::string("\0A\x20\xAC", 4)),
                                                                 kCFStringEncodingUTF16))),
              u"A€");
    EXPECT_EQ(
        units(own(CFStringCreateFromExternalRepresentation(nullptr, data("\xEF\xBB\xBFok"), kCFStringEncodingUTF8))),
        u"ok");
    EXPECT_EQ(CFStringCreateFromExternalRepresentation(nullptr, data("\xC3"), kCFStringEncodingUTF8), nullptr);
    EXPECT_EQ(CFStringCreateFromExternalRepresentation(nullptr, data(""), kCFStringEncodingUTF8), CFSTR(""));
    EXPECT_EQ(CFStringCreateFromExternalRepresentation(nullptr, nullptr, kCFStringEncodingUTF8), nullptr);
    EXPECT_EQ(CFStringCreateFromExternalRepresentation(nullptr, reinterpret_cast<CFDataRef>(CFSTR("not data")),
                                                       kCFStringEncodingUTF8),
              nullptr);

    // Round trips through every encoding that can hold the text.
    auto text = string(u"Grüße \U0001F600");
    for (CFStringEncoding encoding :
         {kCFStringEncodingUTF8, kCFStringEncodingUTF16, kCFStringEncodingUTF16LE, kCFStringEncodingUTF32,
          kCFStringEncodingUTF32BE, kCFStringEncodingNonLossyASCII}) {
        auto bytes = own(CFStringCreateExternalRepresentation(nullptr, text, encoding, 0));
        ASSERT_TRUE(bytes) << encoding;
        auto back = own(CFStringCreateFromExternalRepresentation(nullptr, bytes, encoding));
        EXPECT_TRUE(CFEqual(back, text)) << encoding;
        EXPECT_EQ(CFGetRetainCount(bytes), 1);
    }
}
