// Percent escapes in strings: adding them (legal set, the two character
// lists, encodings) and replacing them (NULL versus "" lists, malformed
// escapes, UTF-8 validity, other encodings).
#include "MisuseReports.h"
#include "URLTestSupport.h"

#include <gtest/gtest.h>

#include <string>

using namespace cftest;

namespace {

std::string adding(const std::string& text, const char* leave = nullptr, const char* escape = nullptr,
                   CFStringEncoding encoding = kCFStringEncodingUTF8) {
    Owned<CFStringRef> leaveList = leave ? str(leave) : Owned<CFStringRef>();
    Owned<CFStringRef> escapeList = escape ? str(escape) : Owned<CFStringRef>();
    return take(CFURLCreateStringByAddingPercentEscapes(nullptr, str(text), leaveList, escapeList, encoding));
}

std::string replacing(const std::string& text, const char* leave) {
    Owned<CFStringRef> leaveList = leave ? str(leave) : Owned<CFStringRef>();
    return take(CFURLCreateStringByReplacingPercentEscapes(nullptr, str(text), leaveList));
}

std::string replacingIn(CFStringEncoding encoding, const std::string& text, const char* leave) {
    Owned<CFStringRef> leaveList = leave ? str(leave) : Owned<CFStringRef>();
    return take(CFURLCreateStringByReplacingPercentEscapesUsingEncoding(nullptr, str(text), leaveList, encoding));
}

}  // namespace

TEST(URLEscapeAdding, LegalCharactersStayEverythingElseBecomesUppercaseHex) {
    EXPECT_EQ(adding("a b"), "a%20b");
    EXPECT_EQ(adding("100%"), "100%25");
    EXPECT_EQ(adding("é"), "%C3%A9");
    EXPECT_EQ(adding("a/b?c=d&e"), "a/b?c=d&e");
    EXPECT_EQ(adding("a/b?c=d&e", nullptr, "/?&="), "a%2Fb%3Fc%3Dd%26e");
    EXPECT_EQ(adding(" !\"#$%&'()*+,-./09:;<=>?@AZ[\\]^_`az{|}~"),
              "%20!%22%23$%25&'()*+,-./09:;%3C=%3E?@AZ%5B%5C%5D%5E_%60az%7B%7C%7D~");
    EXPECT_EQ(adding(std::string("\0\x01\x1f\x7f", 4)), "%00%01%1F%7F");
    EXPECT_EQ(adding("\xF0\x9F\x98\x80"), "%F0%9F%98%80");  // U+1F600: one four-byte sequence
    EXPECT_EQ(adding("\xEF\xBF\xBF"), "%EF%BF%BF");
    EXPECT_EQ(adding(""), "");

    // The lists work per character: leaving only affects characters escaped by
    // default, forcing only affects legal ones.
    EXPECT_EQ(adding("a bé#", " é"), "a bé%23");
    EXPECT_EQ(adding("a/b", "/", "/"), "a%2Fb");
    EXPECT_EQ(adding("a b", "", ""), "a%20b");

    EXPECT_EQ(adding("é ", nullptr, nullptr, kCFStringEncodingISOLatin1), "%E9%20");
    EXPECT_EQ(adding("a b", nullptr, nullptr, kCFStringEncodingUTF16BE), "a%00%20b");
    EXPECT_EQ(adding("é", nullptr, nullptr, kCFStringEncodingASCII), "<NULL>");
    EXPECT_EQ(adding("\xE2\x82\xAC", nullptr, nullptr, kCFStringEncodingISOLatin1), "<NULL>");
    EXPECT_EQ(adding("a b", nullptr, nullptr, 0x7777), "<NULL>");
    const UniChar loneSurrogate[] = {'a', 0xD83D, ' '};
    auto lone = own(CFStringCreateWithCharacters(nullptr, loneSurrogate, 3));
    EXPECT_EQ(CFURLCreateStringByAddingPercentEscapes(nullptr, lone, nullptr, nullptr, kCFStringEncodingUTF8), nullptr);
}

TEST(URLEscapeAdding, UnchangedTextIsTheSameStringRetained) {
    CFStringRef constant = CFSTR("a/b");
    auto copy =
        own(CFURLCreateStringByAddingPercentEscapes(nullptr, constant, nullptr, nullptr, kCFStringEncodingUTF8));
    EXPECT_EQ(copy.get(), constant);
    auto text = str("plain");
    auto same = own(CFURLCreateStringByAddingPercentEscapes(nullptr, text, nullptr, nullptr, kCFStringEncodingUTF8));
    EXPECT_EQ(same.get(), text.get());
    EXPECT_EQ(CFGetRetainCount(text), 2);
    auto escaped =
        own(CFURLCreateStringByAddingPercentEscapes(nullptr, str("a b"), nullptr, nullptr, kCFStringEncodingUTF8));
    EXPECT_EQ(CFGetRetainCount(escaped), 1);

    std::string reports = reportsOf([] {
        EXPECT_EQ(CFURLCreateStringByAddingPercentEscapes(nullptr, nullptr, nullptr, nullptr, kCFStringEncodingUTF8),
                  nullptr);
        EXPECT_EQ(CFURLCreateStringByAddingPercentEscapes(nullptr, CFSTR("a"), (CFStringRef)kCFBooleanTrue, nullptr,
                                                          kCFStringEncodingUTF8),
                  nullptr);
    });
    EXPECT_EQ(lineCount(reports), 2);
}

TEST(URLEscapeReplacing, NullListReplacesNothingEmptyListEverything) {
    auto text = str("a%20b");
    auto unchanged = own(CFURLCreateStringByReplacingPercentEscapes(nullptr, text, nullptr));
    EXPECT_EQ(unchanged.get(), text.get());
    EXPECT_EQ(CFGetRetainCount(text), 2);
    EXPECT_EQ(replacing("a%20b%2Fc", nullptr), "a%20b%2Fc");
    EXPECT_EQ(replacing("a%20b%2Fc", ""), "a b/c");
    EXPECT_EQ(replacing("%c3%a9%C3%A9", ""), "éé");
    EXPECT_EQ(replacing("%F0%9F%98%80", ""), "\xF0\x9F\x98\x80");
    EXPECT_EQ(replacing("é%21", ""), "é!");
    EXPECT_EQ(units(own(CFURLCreateStringByReplacingPercentEscapes(nullptr, str("a%00b"), CFSTR("")))),
              std::u16string(u"a\0b", 3));

    // Characters in the list keep their escape exactly as written.
    EXPECT_EQ(replacing("a%20b%2Fc%2f", "/"), "a b%2Fc%2f");
    EXPECT_EQ(replacing("%C3%A9%41", "é"), "%C3%A9A");
    EXPECT_EQ(replacing("%F0%9F%98%80%25", "\xF0\x9F\x98\x80"), "%F0%9F%98%80%");
    EXPECT_EQ(replacing("no escapes", "x"), "no escapes");
}

TEST(URLEscapeReplacing, MalformedEscapesAndInvalidUTF8GiveNull) {
    for (const char* malformed : {"%", "a%", "%2", "a%2", "%zz", "%2g", "%C3", "%C3x", "%C3%", "%C3%4", "%C3%41", "%FF",
                                  "%80", "%C0%80", "%ED%A0%80", "%F4%90%80%80", "%E2%82"}) {
        EXPECT_EQ(replacing(malformed, ""), "<NULL>") << malformed;
        EXPECT_EQ(replacing(malformed, "x"), "<NULL>") << malformed;
        EXPECT_EQ(replacing(malformed, nullptr), malformed) << malformed;
    }
    std::string reports = reportsOf([] {
        EXPECT_EQ(CFURLCreateStringByReplacingPercentEscapes(nullptr, nullptr, CFSTR("")), nullptr);
        EXPECT_EQ(CFURLCreateStringByReplacingPercentEscapesUsingEncoding(nullptr, (CFStringRef)kCFNull, CFSTR(""),
                                                                          kCFStringEncodingISOLatin1),
                  nullptr);
    });
    EXPECT_EQ(lineCount(reports), 2);
}

TEST(URLEscapeReplacing, OtherEncodingsDecodeRunsAndReEscapeInUppercase) {
    EXPECT_EQ(replacingIn(kCFStringEncodingUTF8, "%c3%a9%2f", "/"), "é%2f");
    EXPECT_EQ(replacingIn(kCFStringEncodingUTF8, "%FF", ""), "<NULL>");
    EXPECT_EQ(replacingIn(kCFStringEncodingISOLatin1, "%e9%41%FF", ""), "éAÿ");
    EXPECT_EQ(replacingIn(kCFStringEncodingISOLatin1, "%e9%41", "é"), "%E9A");
    EXPECT_EQ(replacingIn(kCFStringEncodingISOLatin1, "a%20b", nullptr), "a%20b");
    EXPECT_EQ(replacingIn(kCFStringEncodingISOLatin1, "%zz", ""), "<NULL>");
    EXPECT_EQ(replacingIn(kCFStringEncodingISOLatin1, "%4", ""), "<NULL>");
    EXPECT_EQ(replacingIn(kCFStringEncodingUTF32BE, "%00%11%00%00", ""), "<NULL>");
    EXPECT_EQ(replacingIn(kCFStringEncodingUTF16BE, "%00%41x%00%42", ""), "AxB");
    EXPECT_EQ(replacingIn(kCFStringEncodingUTF16BE, "%00%41%00%42", "B"), "A%00%42");
    EXPECT_EQ(replacingIn(0x7777, "%41", ""), "<NULL>");
}
