// Strings and bytes: decoding every supported encoding, encoding with loss
// bytes, byte-order marks and short buffers, C strings, the no-copy forms
// and the encoding queries.
#include "CFTestSupport.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>

using namespace cftest;

namespace {

std::string bytesOf(std::initializer_list<int> values) {
    std::string out;
    for (int v : values) out.push_back(char(v));
    return out;
}

Owned<CFStringRef> decode(const std::string& bytes, CFStringEncoding encoding, bool external = false) {
    return own(CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>(bytes.data()), CFIndex(bytes.size()),
                                       encoding, external));
}

struct Encoded {
    CFIndex converted;
    std::string bytes;
};

// CFStringGetBytes of the whole string into a buffer of the given size.
Encoded encode(CFStringRef s, CFStringEncoding encoding, UInt8 lossByte = 0, bool external = false,
               CFIndex bufferSize = 256) {
    std::string buffer(size_t(bufferSize) + 8, '\x55');
    CFIndex used = -1;
    CFIndex converted = CFStringGetBytes(s, CFRangeMake(0, CFStringGetLength(s)), encoding, lossByte, external,
                                         reinterpret_cast<UInt8*>(buffer.data()), bufferSize, &used);
    // Nothing is written past what is reported.
    for (size_t i = size_t(used); i < buffer.size(); ++i) EXPECT_EQ(buffer[i], '\x55') << "byte " << i;
    return {converted, buffer.substr(0, size_t(used))};
}

// The bytes needed, measured without a buffer.
CFIndex measured(CFStringRef s, CFStringEncoding encoding, UInt8 lossByte = 0, bool external = false) {
    CFIndex used = -1;
    CFStringGetBytes(s, CFRangeMake(0, CFStringGetLength(s)), encoding, lossByte, external, nullptr, 0, &used);
    return used;
}

}  // namespace

TEST(StringFromUTF8, AsciiIsStoredAsBytesAndDecodesExactly) {
    auto ascii = decode("plain text", kCFStringEncodingUTF8);
    EXPECT_EQ(units(ascii), u"plain text");
    EXPECT_EQ(CFGetRetainCount(ascii), 1);
    ASSERT_NE(CFStringGetCStringPtr(ascii, kCFStringEncodingUTF8), nullptr);
    EXPECT_STREQ(CFStringGetCStringPtr(ascii, kCFStringEncodingUTF8), "plain text");

    auto mixed = decode(
        "Gr\xC3\xBC\xC3\x9F"
        "e \xE2\x82\xAC \xF0\x9F\x98\x80",
        kCFStringEncodingUTF8);
    EXPECT_EQ(units(mixed), u"Grüße € \U0001F600");
    EXPECT_EQ(CFStringGetLength(mixed), 10);
    // Both ends of each sequence length.
    EXPECT_EQ(units(decode("\xC2\x80\xDF\xBF\xE0\xA0\x80\xE1\x80\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBD"
                           "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF",
                           kCFStringEncodingUTF8)),
              u"\u0080\u07FF\u0800\u1000\uD7FF\uE000\uFFFD\U00010000\U0010FFFF");
    EXPECT_EQ(units(decode("東京、晴れ。", kCFStringEncodingUTF8)), u"東京、晴れ。");
    // Noncharacters are characters like any other.
    EXPECT_EQ(units(decode("\xEF\xBF\xBE\xEF\xBF\xBF", kCFStringEncodingUTF8)), u"\uFFFE\uFFFF");
    EXPECT_EQ(decode("", kCFStringEncodingUTF8).get(), CFSTR(""));
}

TEST(StringFromUTF8, LeadingByteOrderMarkIsAlwaysRemoved) {
    for (bool external : {false, true}) {
        EXPECT_EQ(units(decode("\xEF\xBB\xBF"
                               "abc",
                               kCFStringEncodingUTF8, external)),
                  u"abc");
        EXPECT_EQ(units(decode("\xEF\xBB\xBF"
                               "\xEF\xBB\xBF"
                               "a",
                               kCFStringEncodingUTF8, external)),
                  u"\uFEFFa");
        EXPECT_EQ(units(decode("a\xEF\xBB\xBF", kCFStringEncodingUTF8, external)), u"a\uFEFF");
    }
    EXPECT_EQ(decode("\xEF\xBB\xBF", kCFStringEncodingUTF8).get(), CFSTR(""));
}

TEST(StringFromUTF8, MalformedSequencesFail) {
    const char* invalid[] = {
        "\xC3",        // truncated two-byte sequence
        "ab\xE2\x82",  // truncated three-byte sequence
        "\x80",        // continuation without a lead byte
        "a\xBF"
        "b",                 // another stray continuation byte
        "\xC0\xAF",          // overlong
        "\xC1\xBF",          // overlong
        "\xE0\x80\xAF",      // overlong three-byte form
        "\xF0\x80\x80\xAF",  // overlong four-byte form
        "\xED\xA0\x80",      // encoded surrogate
        "\xED\xBF\xBF",      // encoded surrogate
        "\xF4\x90\x80\x80",  // above U+10FFFF
        "\xF5\x80\x80\x80",  // above U+10FFFF
        "\xF8\x88\x80\x80\x80",
        "\xFC\x84\x80\x80\x80\x80",
        "\xFF",
        "\xC3\x41",  // lead byte followed by ASCII
        "\xE4\xB8",  // CJK character cut short
        "\xE4\xB8\x41",
        "\xE4\x41\xAD",
    };
    for (const char* bytes : invalid) {
        EXPECT_EQ(decode(bytes, kCFStringEncodingUTF8).get(), nullptr) << bytes;
    }
}

TEST(StringFromUTF8, StrayA9ReadsAsReplacementCharacter) {
    EXPECT_EQ(units(decode("a\xA9"
                           "b",
                           kCFStringEncodingUTF8)),
              u"a\uFFFDb");
    EXPECT_EQ(units(decode("\xA9\xA9", kCFStringEncodingUTF8)), u"\uFFFD\uFFFD");
    EXPECT_EQ(units(decode("\xC3\xA9\xA9", kCFStringEncodingUTF8)), u"é\uFFFD");
    // Only in lead position: as a broken continuation it still fails.
    EXPECT_EQ(decode("\xE2\xA9", kCFStringEncodingUTF8).get(), nullptr);
    EXPECT_EQ(decode("\xA9\x80", kCFStringEncodingUTF8).get(), nullptr);
    // A byte-order mark before it is removed as usual.
    EXPECT_EQ(units(decode("\xEF\xBB\xBF\xEF\xBB\xBF\xA9", kCFStringEncodingUTF8)), u"\uFEFF\uFFFD");
}

TEST(StringFromUTF16, InternalRepresentationIsHostOrderVerbatim) {
    std::u16string text = u"\uFEFFa\U0001F600";
    std::string bytes(reinterpret_cast<const char*>(text.data()), text.size() * 2);
    EXPECT_EQ(units(decode(bytes, kCFStringEncodingUTF16)), text);           // the mark stays
    EXPECT_EQ(units(decode(bytes + "\x41", kCFStringEncodingUTF16)), text);  // odd byte ignored
    EXPECT_EQ(decode("\x41", kCFStringEncodingUTF16).get(), CFSTR(""));
    // Unpaired surrogates are taken as they are.
    std::u16string lone = {0xDC00, u'x', 0xD800};
    EXPECT_EQ(units(decode(std::string(reinterpret_cast<const char*>(lone.data()), 6), kCFStringEncodingUTF16)), lone);
}

TEST(StringFromUTF16, ExternalRepresentationFollowsTheByteOrderMark) {
    EXPECT_EQ(units(decode(bytesOf({0xFF, 0xFE, 0x41, 0x00, 0xAC, 0x20}), kCFStringEncodingUTF16, true)), u"A€");
    EXPECT_EQ(units(decode(bytesOf({0xFE, 0xFF, 0x00, 0x41, 0x20, 0xAC}), kCFStringEncodingUTF16, true)), u"A€");
    // Without a mark the bytes are big-endian.
    EXPECT_EQ(units(decode(bytesOf({0x00, 0x41, 0x20, 0xAC, 0x7A}), kCFStringEncodingUTF16, true)), u"A€");
    EXPECT_EQ(units(decode(bytesOf({0xFF, 0xFE, 0x41}), kCFStringEncodingUTF16, true)), u"");
    EXPECT_EQ(decode("\x41", kCFStringEncodingUTF16, true).get(), nullptr);
    // Only the first mark is consumed.
    EXPECT_EQ(units(decode(bytesOf({0xFE, 0xFF, 0xFE, 0xFF}), kCFStringEncodingUTF16, true)), u"\uFEFF");
}

TEST(StringFromUTF16, FixedOrderKeepsTheMarkAsACharacter) {
    for (bool external : {false, true}) {
        EXPECT_EQ(units(decode(bytesOf({0xFE, 0xFF, 0x00, 0xE9}), kCFStringEncodingUTF16BE, external)), u"\uFEFFé");
        EXPECT_EQ(units(decode(bytesOf({0xFF, 0xFE, 0xE9, 0x00}), kCFStringEncodingUTF16LE, external)), u"\uFEFFé");
        // A mark of the other order is just U+FFFE.
        EXPECT_EQ(units(decode(bytesOf({0xFF, 0xFE, 0x00, 0xE9}), kCFStringEncodingUTF16BE, external)), u"\uFFFEé");
    }
    EXPECT_EQ(units(decode(bytesOf({0xD8, 0x3D, 0xDE, 0x00}), kCFStringEncodingUTF16BE)), u"\U0001F600");
}

TEST(StringFromUTF32, ByteOrderMarkOrBigEndian) {
    for (bool external : {false, true}) {
        EXPECT_EQ(units(decode(bytesOf({0xFF, 0xFE, 0, 0, 0x00, 0xF6, 0x01, 0x00}), kCFStringEncodingUTF32, external)),
                  u"\U0001F600");
        EXPECT_EQ(units(decode(bytesOf({0, 0, 0xFE, 0xFF, 0, 0x01, 0xF6, 0x00}), kCFStringEncodingUTF32, external)),
                  u"\U0001F600");
        EXPECT_EQ(units(decode(bytesOf({0, 0, 0, 0x41, 0, 0, 0x20, 0xAC, 0x99}), kCFStringEncodingUTF32, external)),
                  u"A€");
    }
    EXPECT_EQ(units(decode(bytesOf({0xFF, 0xFE, 0, 0, 0x41, 0, 0, 0}), kCFStringEncodingUTF32LE)), u"\uFEFFA");
    EXPECT_EQ(units(decode(bytesOf({0, 0, 0xFE, 0xFF, 0, 0, 0, 0x41}), kCFStringEncodingUTF32BE)), u"\uFEFFA");

    EXPECT_EQ(decode(bytesOf({0, 0x11, 0, 0}), kCFStringEncodingUTF32BE).get(), nullptr);
    EXPECT_EQ(decode(bytesOf({0, 0, 0x11, 0}), kCFStringEncodingUTF32LE).get(), nullptr);
    EXPECT_EQ(decode(bytesOf({0xFF, 0xFF, 0xFF, 0xFF}), kCFStringEncodingUTF32).get(), nullptr);
    EXPECT_EQ(decode(bytesOf({0, 0, 0}), kCFStringEncodingUTF32).get(), nullptr);
    EXPECT_EQ(decode(bytesOf({0x41}), kCFStringEncodingUTF32LE).get(), nullptr);
    EXPECT_EQ(units(decode(bytesOf({0, 0x10, 0xFF, 0xFF}), kCFStringEncodingUTF32BE)), u"\U0010FFFF");
}

TEST(StringFromEightBit, MacRoman) {
    EXPECT_EQ(units(decode("\x80\x8E\xA7\xDB\xF0\xFF\xCA", kCFStringEncodingMacRoman)), u"Äéß€\uF8FF\u02C7\u00A0");
    // Every byte decodes, and every character encodes back to its byte.
    std::string all;
    for (int b = 0; b < 256; ++b) all.push_back(char(b));
    auto s = decode(all, kCFStringEncodingMacRoman);
    ASSERT_TRUE(s);
    EXPECT_EQ(CFStringGetLength(s), 256);
    Encoded back = encode(s, kCFStringEncodingMacRoman);
    EXPECT_EQ(back.converted, 256);
    EXPECT_EQ(back.bytes, all);
}

TEST(StringFromEightBit, WindowsLatin1) {
    EXPECT_EQ(units(decode("\x80\x8A\x9F\xA0\xE9\xFF", kCFStringEncodingWindowsLatin1)), u"€ŠŸ\u00A0éÿ");
    for (int undefined : {0x81, 0x8D, 0x8F, 0x90, 0x9D}) {
        EXPECT_EQ(decode(std::string("ok") + char(undefined), kCFStringEncodingWindowsLatin1).get(), nullptr)
            << undefined;
    }
    std::string defined;
    for (int b = 0; b < 256; ++b) {
        if (b != 0x81 && b != 0x8D && b != 0x8F && b != 0x90 && b != 0x9D) defined.push_back(char(b));
    }
    auto s = decode(defined, kCFStringEncodingWindowsLatin1);
    ASSERT_TRUE(s);
    EXPECT_EQ(encode(s, kCFStringEncodingWindowsLatin1).bytes, defined);
    // The C1 controls have no byte here.
    EXPECT_EQ(encode(string(u"\u0081"), kCFStringEncodingWindowsLatin1, '?').bytes, "?");
}

TEST(StringFromEightBit, ISOLatin1AndASCII) {
    std::string high = "\x41\x80\xA0\xE9\xFF";
    EXPECT_EQ(units(decode(high, kCFStringEncodingISOLatin1)), u"A\u0080\u00A0éÿ");
    // ASCII never fails: bytes from 0x80 up read as ISO Latin 1.
    EXPECT_EQ(units(decode(high, kCFStringEncodingASCII)), u"A\u0080\u00A0éÿ");
    EXPECT_EQ(encode(string(u"Aéÿ"), kCFStringEncodingISOLatin1).bytes, "A\xE9\xFF");
}

TEST(StringFromEightBit, NextStepLatin) {
    EXPECT_EQ(units(decode("\x80\x85\xA4\xB1\xD5\xE1\xFB\xFE", kCFStringEncodingNextStepLatin)), u"\u00A0Ä⁄–àÆß\uFFFD");
    EXPECT_EQ(encode(string(u"Äàß–ﬁ"), kCFStringEncodingNextStepLatin).bytes, "\x85\xD5\xFB\xB1\xAE");
    // The upper half round-trips except the two bytes that read as ASCII
    // characters and the two bytes without a character.
    std::string upper;
    for (int b = 0x80; b < 0xFE; ++b) {
        if (b != 0xA9 && b != 0xC1) upper.push_back(char(b));
    }
    EXPECT_EQ(encode(decode(upper, kCFStringEncodingNextStepLatin), kCFStringEncodingNextStepLatin).bytes, upper);
    EXPECT_EQ(units(decode("\xA9\xC1", kCFStringEncodingNextStepLatin)), u"'`");
    EXPECT_EQ(encode(string(u"'`"), kCFStringEncodingNextStepLatin).bytes, "'`");
}

TEST(StringFromNonLossyASCII, EscapesBothWays) {
    EXPECT_EQ(units(decode("a\\u00e9\\u20AC\\351\\\\z", kCFStringEncodingNonLossyASCII)), u"aé€é\\z");
    // A backslash that starts no escape stands for itself.
    EXPECT_EQ(units(decode("\\x \\u12 \\9", kCFStringEncodingNonLossyASCII)), u"\\x \\u12 \\9");
    EXPECT_EQ(units(decode("end\\", kCFStringEncodingNonLossyASCII)), u"end\\");
    EXPECT_EQ(decode("caf\xC3\xA9", kCFStringEncodingNonLossyASCII).get(), nullptr);

    auto s = string(u"a\\é€\U0001F600");
    EXPECT_EQ(encode(s, kCFStringEncodingNonLossyASCII).bytes, "a\\\\\\351\\u20ac\\ud83d\\ude00");
    EXPECT_EQ(units(decode(encode(s, kCFStringEncodingNonLossyASCII).bytes, kCFStringEncodingNonLossyASCII)), units(s));
    // An escape is never cut in half.
    Encoded cut = encode(s, kCFStringEncodingNonLossyASCII, 0, false, 6);
    EXPECT_EQ(cut.converted, 2);
    EXPECT_EQ(cut.bytes, "a\\\\");
}

TEST(StringCreation, BadArgumentsAndUnknownEncodings) {
    EXPECT_EQ(CFStringCreateWithBytes(nullptr, nullptr, 3, kCFStringEncodingUTF8, false), nullptr);
    const UInt8 bytes[] = {'a', 'b'};
    EXPECT_EQ(CFStringCreateWithBytes(nullptr, bytes, -1, kCFStringEncodingUTF8, false), nullptr);
    EXPECT_EQ(CFStringCreateWithBytes(nullptr, bytes, 2, 0x7777, false), nullptr);
    EXPECT_EQ(CFStringCreateWithBytes(kCFAllocatorNull, bytes, 2, kCFStringEncodingUTF8, false), nullptr);
    EXPECT_EQ(CFStringCreateWithBytes(nullptr, nullptr, 0, kCFStringEncodingUTF8, false), CFSTR(""));
    // A non-default allocator gets an empty string of its own.
    auto empty = own(CFStringCreateWithBytes(kCFAllocatorMalloc, bytes, 0, kCFStringEncodingUTF8, false));
    ASSERT_TRUE(empty);
    EXPECT_NE(empty.get(), CFSTR(""));
    EXPECT_EQ(CFGetRetainCount(empty), 1);
    EXPECT_EQ(CFStringGetLength(empty), 0);
}

TEST(StringGetBytes, LossBytesAndStops) {
    auto s = string(u"a€b");
    Encoded stopped = encode(s, kCFStringEncodingISOLatin1);
    EXPECT_EQ(stopped.converted, 1);
    EXPECT_EQ(stopped.bytes, "a");
    Encoded lossy = encode(s, kCFStringEncodingISOLatin1, '?');
    EXPECT_EQ(lossy.converted, 3);
    EXPECT_EQ(lossy.bytes, "a?b");
    EXPECT_EQ(encode(s, kCFStringEncodingMacRoman).bytes,
              "a\xDB"
              "b");
    EXPECT_EQ(encode(s, kCFStringEncodingWindowsLatin1).bytes,
              "a\x80"
              "b");

    // A supplementary character is two units, so two loss bytes.
    auto emoji = string(u"x\U0001F600y");
    Encoded twoLoss = encode(emoji, kCFStringEncodingMacRoman, '*');
    EXPECT_EQ(twoLoss.converted, 4);
    EXPECT_EQ(twoLoss.bytes, "x**y");
    EXPECT_EQ(encode(emoji, kCFStringEncodingASCII, '?').bytes, "x??y");

    // Ranges convert only what they cover.
    char buffer[8];
    CFIndex used = 0;
    EXPECT_EQ(CFStringGetBytes(emoji, CFRangeMake(3, 1), kCFStringEncodingUTF8, 0, false,
                               reinterpret_cast<UInt8*>(buffer), 8, &used),
              1);
    EXPECT_EQ(std::string(buffer, size_t(used)), "y");
}

TEST(StringGetBytes, AsciiTransliteratingFallback) {
    auto s = string(u"é…\u2028\u00A0\u0085ß\u2003Å\U0001D400.");
    Encoded out = encode(s, kCFStringEncodingASCII, 0xFF);
    EXPECT_EQ(out.converted, CFStringGetLength(s));
    EXPECT_EQ(out.bytes, "e...\n \x05? A?.");
    // Other encodings use 0xFF as an ordinary loss byte.
    EXPECT_EQ(encode(string(u"€"), kCFStringEncodingISOLatin1, 0xFF).bytes, "\xFF");
    // The three dots never get cut.
    Encoded cut = encode(string(u"a…"), kCFStringEncodingASCII, 0xFF, false, 3);
    EXPECT_EQ(cut.converted, 1);
    EXPECT_EQ(cut.bytes, "a");
}

TEST(StringGetBytes, PrecomposesForEightBitEncodings) {
    auto decomposed = string(u"e\u0301te\u0301 A\u030A");
    EXPECT_EQ(encode(decomposed, kCFStringEncodingISOLatin1).bytes, "\xE9t\xE9 \xC5");
    EXPECT_EQ(encode(decomposed, kCFStringEncodingWindowsLatin1).bytes, "\xE9t\xE9 \xC5");
    EXPECT_EQ(encode(decomposed, kCFStringEncodingMacRoman).bytes, "\x8Et\x8E \x81");
    EXPECT_EQ(encode(decomposed, kCFStringEncodingMacRoman).converted, CFStringGetLength(decomposed));
    // No precomposed form: the mark alone is lost.
    Encoded q = encode(string(u"q\u0301!"), kCFStringEncodingISOLatin1, '?');
    EXPECT_EQ(q.bytes, "q?!");
    EXPECT_EQ(encode(string(u"q\u0301!"), kCFStringEncodingISOLatin1).converted, 1);
    // UTF-8 keeps the text as it is.
    EXPECT_EQ(encode(string(u"e\u0301"), kCFStringEncodingUTF8).bytes, "e\xCC\x81");
}

TEST(StringGetBytes, DryRunsMeasureWithoutWriting) {
    auto s = string(u"aé€\U0001F600");
    EXPECT_EQ(measured(s, kCFStringEncodingUTF8), 1 + 2 + 3 + 4);
    EXPECT_EQ(measured(s, kCFStringEncodingUTF16), 10);
    EXPECT_EQ(measured(s, kCFStringEncodingUTF16, 0, true), 12);
    EXPECT_EQ(measured(s, kCFStringEncodingUTF32BE), 16);
    EXPECT_EQ(measured(s, kCFStringEncodingUTF32, 0, true), 20);
    EXPECT_EQ(measured(s, kCFStringEncodingNonLossyASCII), 1 + 4 + 6 + 12);
    EXPECT_EQ(measured(s, kCFStringEncodingISOLatin1), 2);  // stops at €
    EXPECT_EQ(measured(s, kCFStringEncodingISOLatin1, '?'), 5);
    EXPECT_EQ(measured(string(u"é"), kCFStringEncodingASCII), 0);
    // The return value counts units, whatever the size of the buffer.
    EXPECT_EQ(CFStringGetBytes(s, CFRangeMake(0, 5), kCFStringEncodingUTF8, 0, false, nullptr, 1, nullptr), 5);
    auto ascii = decode("four", kCFStringEncodingUTF8);
    EXPECT_EQ(measured(ascii, kCFStringEncodingUTF8), 4);
    EXPECT_EQ(measured(ascii, kCFStringEncodingUTF16LE), 8);
}

TEST(StringGetBytes, ShortBuffersNeverSplitACharacter) {
    auto s = string(u"aé\U0001F600");
    Encoded utf8 = encode(s, kCFStringEncodingUTF8, 0, false, 2);
    EXPECT_EQ(utf8.converted, 1);
    EXPECT_EQ(utf8.bytes, "a");
    utf8 = encode(s, kCFStringEncodingUTF8, 0, false, 6);
    EXPECT_EQ(utf8.converted, 2);
    EXPECT_EQ(utf8.bytes, "a\xC3\xA9");
    EXPECT_EQ(encode(s, kCFStringEncodingUTF8, 0, false, 7).converted, 4);

    Encoded utf16 = encode(s, kCFStringEncodingUTF16BE, 0, false, 7);
    EXPECT_EQ(utf16.converted, 2);
    EXPECT_EQ(utf16.bytes, bytesOf({0, 'a', 0, 0xE9}));
    // The host-order copy stops before a pair as well.
    EXPECT_EQ(encode(s, kCFStringEncodingUTF16, 0, false, 7).converted, 2);
    EXPECT_EQ(encode(s, kCFStringEncodingUTF16, 0, false, 8).converted, 4);
    EXPECT_EQ(encode(s, kCFStringEncodingUTF32LE, 0, false, 11).converted, 2);

    // No room even for the byte-order mark: nothing.
    Encoded none = encode(s, kCFStringEncodingUTF16, 0, true, 1);
    EXPECT_EQ(none.converted, 0);
    EXPECT_EQ(none.bytes, "");
    auto ascii = decode("abcdef", kCFStringEncodingUTF8);
    Encoded copied = encode(ascii, kCFStringEncodingISOLatin1, 0, false, 4);
    EXPECT_EQ(copied.converted, 4);
    EXPECT_EQ(copied.bytes, "abcd");
    EXPECT_EQ(encode(ascii, kCFStringEncodingUTF8, 0, false, 0).converted, 0);
}

TEST(StringGetBytes, ByteOrderMarksOnlyForExternalUTF16AndUTF32) {
    auto s = string(u"ab");
    EXPECT_EQ(encode(s, kCFStringEncodingUTF16, 0, true).bytes, bytesOf({0xFF, 0xFE, 'a', 0, 'b', 0}));
    EXPECT_EQ(encode(s, kCFStringEncodingUTF16, 0, false).bytes, bytesOf({'a', 0, 'b', 0}));
    EXPECT_EQ(encode(s, kCFStringEncodingUTF16BE, 0, true).bytes, bytesOf({0, 'a', 0, 'b'}));
    EXPECT_EQ(encode(s, kCFStringEncodingUTF16LE, 0, true).bytes, bytesOf({'a', 0, 'b', 0}));
    EXPECT_EQ(encode(s, kCFStringEncodingUTF32, 0, true).bytes,
              bytesOf({0xFF, 0xFE, 0, 0, 'a', 0, 0, 0, 'b', 0, 0, 0}));
    EXPECT_EQ(encode(s, kCFStringEncodingUTF32BE, 0, true).bytes, bytesOf({0, 0, 0, 'a', 0, 0, 0, 'b'}));
    EXPECT_EQ(encode(s, kCFStringEncodingUTF8, 0, true).bytes, "ab");
    // The external form decodes back.
    EXPECT_EQ(units(decode(encode(s, kCFStringEncodingUTF16, 0, true).bytes, kCFStringEncodingUTF16, true)), u"ab");
    EXPECT_EQ(units(decode(encode(s, kCFStringEncodingUTF32, 0, true).bytes, kCFStringEncodingUTF32)), u"ab");
}

TEST(StringGetBytes, LoneSurrogates) {
    std::u16string lone = {u'a', 0xD800, u'b'};
    auto s = string(lone);
    // UTF-8 stops there whatever the loss byte.
    for (UInt8 loss : {UInt8(0), UInt8('?')}) {
        Encoded utf8 = encode(s, kCFStringEncodingUTF8, loss);
        EXPECT_EQ(utf8.converted, 1);
        EXPECT_EQ(utf8.bytes, "a");
    }
    // UTF-32 loses it: stop, or the loss byte as a character.
    EXPECT_EQ(encode(s, kCFStringEncodingUTF32BE).converted, 1);
    EXPECT_EQ(encode(s, kCFStringEncodingUTF32BE, '?').bytes, bytesOf({0, 0, 0, 'a', 0, 0, 0, '?', 0, 0, 0, 'b'}));
    // UTF-16 carries it over.
    EXPECT_EQ(encode(s, kCFStringEncodingUTF16BE).bytes, bytesOf({0, 'a', 0xD8, 0, 0, 'b'}));
}

TEST(StringGetBytes, Misuse) {
    char buffer[4];
    CFIndex used = 99;
    EXPECT_EQ(CFStringGetBytes(nullptr, CFRangeMake(0, 1), kCFStringEncodingUTF8, 0, false,
                               reinterpret_cast<UInt8*>(buffer), 4, &used),
              0);
    EXPECT_EQ(used, 0);
    auto s = string(u"abc");
    used = 99;
    EXPECT_EQ(CFStringGetBytes(s, CFRangeMake(2, 2), kCFStringEncodingUTF8, 0, false, reinterpret_cast<UInt8*>(buffer),
                               4, &used),
              0);
    EXPECT_EQ(used, 0);
    EXPECT_EQ(CFStringGetBytes(s, CFRangeMake(-1, 1), kCFStringEncodingUTF8, 0, false, nullptr, 0, nullptr), 0);
    EXPECT_EQ(CFStringGetBytes(s, CFRangeMake(0, 3), 0x7777, 0, false, nullptr, 0, &used), 0);
    EXPECT_EQ(used, 0);
}

TEST(StringCString, GetCString) {
    auto s = string(u"Grüße");
    char buffer[16];
    ASSERT_TRUE(CFStringGetCString(s, buffer, 16, kCFStringEncodingUTF8));
    EXPECT_STREQ(buffer,
                 "Gr\xC3\xBC\xC3\x9F"
                 "e");
    ASSERT_TRUE(CFStringGetCString(s, buffer, 6, kCFStringEncodingISOLatin1));
    EXPECT_STREQ(buffer,
                 "Gr\xFC\xDF"
                 "e");
    // One byte short of the terminating NUL: refused, buffer left empty.
    EXPECT_FALSE(CFStringGetCString(s, buffer, 5, kCFStringEncodingISOLatin1));
    EXPECT_STREQ(buffer, "");
    EXPECT_FALSE(CFStringGetCString(s, buffer, 16, kCFStringEncodingASCII));
    EXPECT_STREQ(buffer, "");
    ASSERT_TRUE(CFStringGetCString(CFSTR(""), buffer, 1, kCFStringEncodingUTF8));
    EXPECT_STREQ(buffer, "");
    EXPECT_FALSE(CFStringGetCString(s, buffer, 0, kCFStringEncodingUTF8));
    EXPECT_FALSE(CFStringGetCString(nullptr, buffer, 16, kCFStringEncodingUTF8));
}

TEST(StringCString, GetCStringPtrOnlyForStoredAsciiText) {
    CFStringRef literal = CFSTR("constant");
    for (CFStringEncoding encoding :
         {kCFStringEncodingASCII, kCFStringEncodingUTF8, kCFStringEncodingMacRoman, kCFStringEncodingISOLatin1,
          kCFStringEncodingWindowsLatin1, kCFStringEncodingNextStepLatin}) {
        const char* p = CFStringGetCStringPtr(literal, encoding);
        ASSERT_NE(p, nullptr) << encoding;
        EXPECT_STREQ(p, "constant");
    }
    EXPECT_EQ(CFStringGetCStringPtr(literal, kCFStringEncodingUTF16), nullptr);
    EXPECT_EQ(CFStringGetCStringPtr(literal, kCFStringEncodingNonLossyASCII), nullptr);
    EXPECT_EQ(CFStringGetCStringPtr(string(u"café"), kCFStringEncodingUTF8), nullptr);
    EXPECT_EQ(CFStringGetCStringPtr(nullptr, kCFStringEncodingUTF8), nullptr);
    auto mutableString = own(CFStringCreateMutableCopy(nullptr, 0, literal));
    EXPECT_EQ(CFStringGetCStringPtr(mutableString, kCFStringEncodingUTF8), nullptr);
    // Referenced bytes without a known terminator are not handed out.
    const char text[] = {'a', 'b', 'c'};
    auto referenced = own(CFStringCreateWithBytesNoCopy(nullptr, reinterpret_cast<const UInt8*>(text), 3,
                                                        kCFStringEncodingUTF8, false, kCFAllocatorNull));
    EXPECT_EQ(units(referenced), u"abc");
    EXPECT_EQ(CFStringGetCStringPtr(referenced, kCFStringEncodingUTF8), nullptr);
    EXPECT_STREQ(CFStringGetCStringPtr(CFSTR(""), kCFStringEncodingUTF8), "");
}

TEST(StringCString, CreateWithCString) {
    auto s = own(CFStringCreateWithCString(nullptr, "caf\xC3\xA9", kCFStringEncodingUTF8));
    EXPECT_EQ(units(s), u"café");
    EXPECT_EQ(units(own(CFStringCreateWithCString(nullptr, "caf\xE9", kCFStringEncodingISOLatin1))), u"café");
    EXPECT_EQ(units(own(CFStringCreateWithCString(nullptr, "caf\x8E", kCFStringEncodingMacRoman))), u"café");
    EXPECT_EQ(CFStringCreateWithCString(nullptr, "caf\xE9", kCFStringEncodingUTF8), nullptr);
    EXPECT_EQ(CFStringCreateWithCString(nullptr, "", kCFStringEncodingUTF8), CFSTR(""));
    EXPECT_EQ(CFStringCreateWithCString(nullptr, nullptr, kCFStringEncodingUTF8), nullptr);
    // Wide encodings cannot be C strings.
    EXPECT_EQ(CFStringCreateWithCString(nullptr, "ab", kCFStringEncodingUTF16), nullptr);
    EXPECT_EQ(CFStringCreateWithCString(nullptr, "ab", kCFStringEncodingUTF32LE), nullptr);
}

TEST(StringNoCopy, AsciiCStringIsReferencedAndFreedWithTheString) {
    char* heap = static_cast<char*>(std::malloc(6));
    std::memcpy(heap, "hello", 6);
    CFStringRef s = CFStringCreateWithCStringNoCopy(nullptr, heap, kCFStringEncodingUTF8, kCFAllocatorMalloc);
    ASSERT_NE(s, nullptr);
    EXPECT_EQ(CFGetRetainCount(s), 1);
    EXPECT_EQ(CFStringGetCStringPtr(s, kCFStringEncodingUTF8), heap);
    CFRetain(s);
    EXPECT_EQ(CFGetRetainCount(s), 2);
    CFRelease(s);
    EXPECT_EQ(units(s), u"hello");  // still alive, buffer still there
    CFRelease(s);                   // frees the buffer; the leak checker fails the run if not

    // kCFAllocatorNull: the caller's buffer, never freed.
    char stack[] = "stack";
    {
        auto referenced =
            own(CFStringCreateWithCStringNoCopy(nullptr, stack, kCFStringEncodingASCII, kCFAllocatorNull));
        EXPECT_EQ(CFStringGetCStringPtr(referenced, kCFStringEncodingASCII), stack);
    }
    EXPECT_STREQ(stack, "stack");
}

TEST(StringNoCopy, DecodedTextGetsAPrivateCopyAndTheBufferGoesAtOnce) {
    char* heap = static_cast<char*>(std::malloc(6));
    std::memcpy(heap, "caf\xC3\xA9", 6);
    auto s = own(CFStringCreateWithCStringNoCopy(nullptr, heap, kCFStringEncodingUTF8, kCFAllocatorMalloc));
    // The buffer is freed already: reading the string would trip the
    // address checker if it still pointed there.
    EXPECT_EQ(units(s), u"café");
    EXPECT_EQ(CFGetRetainCount(s), 1);

    char stack[] = "caf\xE9";
    auto copied = own(CFStringCreateWithCStringNoCopy(nullptr, stack, kCFStringEncodingISOLatin1, kCFAllocatorNull));
    stack[0] = 'X';
    EXPECT_EQ(units(copied), u"café");

    // Invalid text: no string, and the buffer stays the caller's.
    char* invalid = static_cast<char*>(std::malloc(3));
    std::memcpy(invalid, "\xC3(", 3);
    EXPECT_EQ(CFStringCreateWithCStringNoCopy(nullptr, invalid, kCFStringEncodingUTF8, kCFAllocatorMalloc), nullptr);
    std::free(invalid);

    // An empty string is the shared one, and the buffer goes at once.
    char* empty = static_cast<char*>(std::malloc(1));
    empty[0] = '\0';
    EXPECT_EQ(CFStringCreateWithCStringNoCopy(nullptr, empty, kCFStringEncodingUTF8, nullptr), CFSTR(""));
}

TEST(StringNoCopy, BytesNoCopy) {
    // ASCII bytes are referenced until the string goes.
    auto* ascii = static_cast<UInt8*>(std::malloc(4));
    std::memcpy(ascii, "data", 4);
    CFStringRef s = CFStringCreateWithBytesNoCopy(nullptr, ascii, 4, kCFStringEncodingMacRoman, false, nullptr);
    EXPECT_EQ(units(s), u"data");
    EXPECT_EQ(CFGetRetainCount(s), 1);
    CFRelease(s);

    // Host-order UTF-16 is referenced as units.
    auto* wide = static_cast<UniChar*>(std::malloc(3 * sizeof(UniChar)));
    wide[0] = u'é';
    wide[1] = u'x';
    wide[2] = 0xD800;
    s = CFStringCreateWithBytesNoCopy(nullptr, reinterpret_cast<UInt8*>(wide), 6, kCFStringEncodingUTF16, false,
                                      kCFAllocatorMalloc);
    EXPECT_EQ(CFStringGetCharactersPtr(s), wide);
    EXPECT_EQ(units(s), std::u16string(wide, wide + 3));
    CFRelease(s);

    // Bytes that need decoding are copied; the buffer is freed right away.
    auto* latin = static_cast<UInt8*>(std::malloc(3));
    std::memcpy(latin, "\xE9t\xE9", 3);
    auto decoded = own(CFStringCreateWithBytesNoCopy(nullptr, latin, 3, kCFStringEncodingISOLatin1, false, nullptr));
    EXPECT_EQ(units(decoded), u"été");
    auto* marked = static_cast<UInt8*>(std::malloc(5));
    std::memcpy(marked, "\xEF\xBB\xBFok", 5);
    auto withoutMark = own(CFStringCreateWithBytesNoCopy(nullptr, marked, 5, kCFStringEncodingUTF8, false, nullptr));
    EXPECT_EQ(units(withoutMark), u"ok");

    // Failure leaves the buffer with the caller.
    UInt8 bad[] = {0x81};
    EXPECT_EQ(CFStringCreateWithBytesNoCopy(nullptr, bad, 1, kCFStringEncodingWindowsLatin1, false, kCFAllocatorNull),
              nullptr);
    auto* empty = static_cast<UInt8*>(std::malloc(1));
    EXPECT_EQ(CFStringCreateWithBytesNoCopy(nullptr, empty, 0, kCFStringEncodingUTF8, false, kCFAllocatorMalloc),
              CFSTR(""));
    UInt8 stack[] = {'o', 'k'};
    EXPECT_EQ(CFStringCreateWithBytesNoCopy(kCFAllocatorNull, stack, 2, kCFStringEncodingUTF8, false, kCFAllocatorNull),
              nullptr);
}

TEST(StringAppendCString, DecodesAndAppends) {
    auto s = own(CFStringCreateMutable(nullptr, 0));
    CFStringAppendCString(s, "abc", kCFStringEncodingASCII);
    CFStringAppendCString(s, " caf\xC3\xA9", kCFStringEncodingUTF8);
    CFStringAppendCString(s, " \xDB", kCFStringEncodingMacRoman);
    EXPECT_EQ(units(s), u"abc café €");
    // Invalid bytes, wide encodings and NULL change nothing.
    CFStringAppendCString(s, "\xC3", kCFStringEncodingUTF8);
    CFStringAppendCString(s, "x", kCFStringEncodingUTF16);
    CFStringAppendCString(s, nullptr, kCFStringEncodingUTF8);
    EXPECT_EQ(units(s), u"abc café €");
    // Immutable strings stay as they are.
    auto immutable = string(u"fixed");
    CFStringAppendCString(const_cast<CFMutableStringRef>(immutable.get()), "!", kCFStringEncodingUTF8);
    EXPECT_EQ(units(immutable), u"fixed");
}

TEST(StringEncodings, Queries) {
    EXPECT_EQ(CFStringGetSystemEncoding(), kCFStringEncodingUTF8);
    for (CFStringEncoding encoding :
         {kCFStringEncodingMacRoman, kCFStringEncodingWindowsLatin1, kCFStringEncodingISOLatin1,
          kCFStringEncodingNextStepLatin, kCFStringEncodingASCII, kCFStringEncodingUTF8, kCFStringEncodingUTF16,
          kCFStringEncodingUTF16BE, kCFStringEncodingUTF16LE, kCFStringEncodingUTF32, kCFStringEncodingUTF32BE,
          kCFStringEncodingUTF32LE, kCFStringEncodingNonLossyASCII}) {
        EXPECT_TRUE(CFStringIsEncodingAvailable(encoding)) << encoding;
    }
    EXPECT_FALSE(CFStringIsEncodingAvailable(0x0A02));
    EXPECT_FALSE(CFStringIsEncodingAvailable(kCFStringEncodingInvalidId));

    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(10, kCFStringEncodingUTF8), 30);
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(10, kCFStringEncodingUTF16LE), 20);
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(10, kCFStringEncodingUTF32), 40);
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(10, kCFStringEncodingNonLossyASCII), 60);
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(10, kCFStringEncodingMacRoman), 10);
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(10, kCFStringEncodingASCII), 10);
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(LONG_MAX / 3 + 1, kCFStringEncodingUTF8), kCFNotFound);
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(LONG_MAX, kCFStringEncodingISOLatin1), LONG_MAX);
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(-1, kCFStringEncodingUTF8), kCFNotFound);
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(1, 0x7777), kCFNotFound);
}
