// Documents the reader refuses: the message of each situation (line numbers
// included), the error objects, the deprecated error string, and input
// meant to exhaust memory or reach the network.
#include "MisuseReports.h"
#include "PropertyListTestSupport.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <utility>

using namespace cftest;
using namespace cftest::plist;
using namespace std::string_literals;

TEST(PropertyListErrors, MessagesOfTheXMLReader) {
    const std::pair<std::string, std::string> cases[] = {
        {"<plist>\n<dict>\n<key>a</key>\n<string>b</string>\n", "Encountered unexpected EOF"},
        {"<?xml version=\"1.0\"?>\n<!-- nothing else -->\n", "No XML content found"},
        {"\n\n  x<plist/>", "Unexpected character x at line 3"},
        {"<array>\n\n  <true/> x</array>", "Encountered unexpected character x on line 3 while looking for open tag"},
        {"<array>&amp;</array>", "Encountered unexpected character & on line 1 while looking for open tag"},
        {"<dict>\n<string>a</string></dict>", "Found non-key inside <dict> at line 2"},
        {"<dict><key>a</key>\n\n</dict>", "Value missing for key inside <dict> at line 3"},
        {"<dict><key>a</key>", "Value missing for key inside <dict> at line 1"},
        {"<array>\n<string>a</string>\n</dict>", "Close tag on line 3 does not match open tag array"},
        {"<string>a</string junk>", "Encountered unexpected character j on line 1 while looking for close tag"},
        {"<string>a<b/></string>", "Encountered unexpected character b on line 1 while looking for close tag"},
        {"<array>\n<foo/></array>", "Encountered unknown tag foo on line 2"},
        {"<array><plist/></array>", "Encountered unknown tag plist on line 1"},
        {"<array>\n\n<></array>", "Malformed tag on line 3"},
        {"<plist/>", "Encountered empty plist tag"},
        {"<plist><true/>\n<false/></plist>", "Encountered unexpected element at line 2 (plist can only include one object)"},
        {"<integer/>", "Encountered empty <integer> on line 1"},
        {"<array>\n<integer></integer></array>", "Encountered empty <integer> on line 2"},
        {"<integer>-</integer>", "Incomplete <integer> on line 1"},
        {"<integer>0x</integer>", "Incomplete <integer> on line 1"},
        {"<integer>12 </integer>", "Unknown character ' ' (0x20) in <integer> on line 1"},
        {"<integer>&#53;</integer>", "Unknown character '&' (0x26) in <integer> on line 1"},
        {"<integer>\n\n7g</integer>", "Unknown character 'g' (0x67) in <integer> on line 3"},
        {"<integer>12f</integer>", "Hex digit in non-hex <integer> on line 1"},
        {"<integer>18446744073709551616</integer>", "Integer overflow in <integer> on line 1"},
        {"<integer>-9223372036854775809</integer>", "Integer underflow in <integer> on line 1"},
        {"<array>\n<integer>5", "Premature end of file after <integer> on line 2"},
        {"<real/>", "Encountered empty <real> on line 1"},
        {"<real></real>", "Encountered misformatted real on line 1"},
        {"<real>1.5 </real>", "Encountered misformatted real on line 1"},
        {"<real>0x1p3</real>", "Encountered misformatted real on line 1"},
        {"<array>\n<real>nan?</real></array>", "Encountered misformatted real on line 2"},
        {"<date/>", "Encountered empty <date> on line 1"},
        {"<date></date>", "Could not interpret <date> at line 1"},
        {"<date>2001-01-01</date>", "Could not interpret <date> at line 1"},
        {"<date> 2001-01-01T00:00:00Z</date>", "Could not interpret <date> at line 1"},
        {"<date>2001-01-01T00:00:00.5Z</date>", "Could not interpret <date> at line 1"},
        {"<date>9999999999999-01-01T00:00:00Z</date>", "Could not interpret <date> at line 1"},
        {"<data/>", "Encountered empty <data> on line 1"},
        {"<data>\nAQ\xC3\xA9</data>", "Could not interpret <data> on line 2 (invalid character 0xC3)"},
        {"<true>x</true>", "Encountered non-empty <true> on line 1"},
        {"<false> </false>", "Encountered non-empty <false> on line 1"},
        {"<string>\n&bogus;</string>", "Encountered unknown ampersand-escape sequence at line 2"},
        {"<string>a & b</string>", "Encountered unknown ampersand-escape sequence at line 1"},
        {"<string>&#12a;</string>", "Encountered unexpected character a at line 1 while parsing data"},
        {"<string>&#X41;</string>", "Encountered unexpected character X at line 1 while parsing data"},
        {"<string>&#000000065;</string>",
         "Encountered unparseable unicode sequence at line 1 while parsing data (too large of a value for a Unicode "
         "sequence)"},
        {"<string>&#x110000;</string>",
         "Encountered unparseable Unicode sequence at line 1 while parsing data (input did not result in a real string)"},
        {"<plist>\n<string><![CDATA[abc</string></plist>", "Could not find end of CDATA started on line 2"},
        {"<string>a<!-- no --></string>", "Encountered improper CDATA opening at line 1"},
        {"<array><!x></array>", "Encountered unexpected EOF"},
        {"<string>a\xC3(</string>", "Unable to convert string to correct encoding"},
        {"\n<!-- never closed", "Unterminated comment started on line 2"},
        {"<array>\n\n<!-- never closed </array>", "Unterminated comment started on line 3"},
        {"<?xml version=\"1.0\"?>\n<?pi", "Encountered unexpected EOF while parsing the processing instruction begun on line 2"},
        {"\n<!doctype plist>\n<true/>", "Malformed DTD on line 2"},
        {"<!DOCTYPE plist PUBLIC \"x\"", "Encountered unexpected EOF while parsing DTD"},
        {"<!DOCTYPE plist\n[ <!ENTITY a \"b\"> ]><string>&a;</string>",
         "Encountered unexpected character [ on line 2 while parsing DTD"},
        {"<?xml version=\"1.0\" encoding=\"UTF", "End of buffer while looking for encoding name"},
        {"<?xml version=\"1.0\" encoding=\"KOI8-R\"?><true/>", "Encountered unknown encoding (KOI8-R)"},
        // Lines count LF, CR and CRLF alike.
        {"<array>\r\n\r<true/>\n\r\n<foo/></array>", "Encountered unknown tag foo on line 5"},
    };
    for (const auto& [text, message] : cases) {
        Read result = read(text);
        EXPECT_FALSE(result.plist) << text;
        EXPECT_EQ(messageOf(result.error), message) << text;
    }
}

TEST(PropertyListErrors, ErrorObjectsAndTheDeprecatedErrorString) {
    Read result = read("<dict>");
    ASSERT_NE(result.error.get(), nullptr);
    EXPECT_EQ(utf8(CFErrorGetDomain(result.error)), "NSCocoaErrorDomain");
    EXPECT_EQ(CFErrorGetCode(result.error), kCFPropertyListReadCorruptError);
    auto userInfo = own(CFErrorCopyUserInfo(result.error));
    EXPECT_EQ(CFDictionaryGetCount(userInfo), 2);
    auto description = own(CFCopyDescription(result.error));
    const std::string head = "Error Domain=NSCocoaErrorDomain Code=3840 \"Encountered unexpected EOF\" UserInfo={";
    EXPECT_EQ(utf8(description).substr(0, head.size()), head);
    // Format and error are only written when asked for; the format is left
    // alone on failure.
    CFPropertyListFormat format = 77;
    EXPECT_EQ(CFPropertyListCreateWithData(nullptr, bytes("<dict>"), 0, &format, nullptr), nullptr);
    EXPECT_EQ(format, 77);

    CFStringRef errorString = reinterpret_cast<CFStringRef>(1);
    EXPECT_EQ(CFPropertyListCreateFromXMLData(nullptr, bytes("<array>\n<integer/></array>"), 0, &errorString),
              nullptr);
    ASSERT_NE(errorString, nullptr);
    EXPECT_EQ(utf8(errorString), "Encountered empty <integer> on line 2");
    CFRelease(errorString);
    auto read = own(CFPropertyListCreateFromXMLData(nullptr, bytes("<integer>3</integer>"), 2, &errorString));
    EXPECT_EQ(errorString, nullptr);
    EXPECT_TRUE(CFEqual(read, number(kCFNumberSInt64Type, int64_t(3))));
    EXPECT_EQ(CFPropertyListCreateFromXMLData(nullptr, bytes("<foo/>"), 0, nullptr), nullptr);

    // No data, empty data, binary data.
    auto empty = bytes("");
    for (CFDataRef data : {static_cast<CFDataRef>(nullptr), empty.get()}) {
        CFErrorRef error = nullptr;
        EXPECT_EQ(CFPropertyListCreateWithData(nullptr, data, 0, nullptr, &error), nullptr);
        EXPECT_EQ(messageOf(error), "Cannot parse a NULL or zero-length data");
        CFRelease(error);
    }
    EXPECT_EQ(readError("bplist00\xD1\x01\x02"),
              "Cannot parse a binary property list: the binary format is not supported on this platform");
    std::string reports = reportsOf([] {
        CFErrorRef error = nullptr;
        EXPECT_EQ(CFPropertyListCreateWithData(nullptr, reinterpret_cast<CFDataRef>(CFSTR("<true/>")), 0, nullptr,
                                               &error),
                  nullptr);
        EXPECT_EQ(messageOf(error), "Cannot parse a NULL or zero-length data");
        CFRelease(error);
    });
    EXPECT_EQ(lineCount(reports), 1);
    EXPECT_EQ(occurrences(reports, "is not a CFData"), 1);
}

TEST(PropertyListErrors, HostileInput) {
    // Entity expansion: the internal subset that would declare the entities
    // is refused before anything is expanded.
    std::string laughs = "<?xml version=\"1.0\"?>\n<!DOCTYPE plist [\n <!ENTITY a0 \"ha\">\n";
    for (int i = 1; i < 30; ++i) {
        laughs += " <!ENTITY a" + std::to_string(i) + " \"";
        for (int k = 0; k < 10; ++k) laughs += "&a" + std::to_string(i - 1) + ";";
        laughs += "\">\n";
    }
    laughs += "]>\n<string>&a29;</string>\n";
    auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(readError(laughs), "Encountered unexpected character [ on line 2 while parsing DTD");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
    // Entities cannot be declared anywhere else either.
    EXPECT_EQ(readError("<plist><!DOCTYPE x [<!ENTITY a \"b\">]><string>&a;</string></plist>"),
              "Encountered unexpected EOF");

    // A DOCTYPE naming a DTD on a server: the server is never contacted.
    int listener = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
    ASSERT_GE(listener, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(listen(listener, 4), 0);
    socklen_t length = sizeof address;
    ASSERT_EQ(getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length), 0);
    std::string url = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/PropertyList-1.0.dtd";
    Read fetched = read("<?xml version=\"1.0\"?>\n<!DOCTYPE plist SYSTEM \"" + url +
                        "\">\n<plist version=\"1.0\"><string>local</string></plist>");
    EXPECT_TRUE(CFEqual(fetched.plist, CFSTR("local")));
    EXPECT_LT(accept(listener, nullptr, nullptr), 0);
    EXPECT_TRUE(errno == EAGAIN || errno == EWOULDBLOCK);
    close(listener);

    // Documents above 256 MiB are refused before a byte is read.
    size_t huge = (size_t(256) << 20) + 1;
    void* pages = mmap(nullptr, huge, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(pages, MAP_FAILED);
    auto data = own(CFDataCreateWithBytesNoCopy(nullptr, static_cast<const UInt8*>(pages), CFIndex(huge),
                                                kCFAllocatorNull));
    CFErrorRef error = nullptr;
    EXPECT_EQ(CFPropertyListCreateWithData(nullptr, data, 0, nullptr, &error), nullptr);
    EXPECT_EQ(messageOf(error), "Cannot parse property list data of more than 268435456 bytes");
    CFRelease(error);
    munmap(pages, huge);

    // Text holding the stand-ins the reader uses for control characters
    // together with control characters cannot be read without loss.
    EXPECT_EQ(readError("<string>\x01\xEF\xB7\x90</string>"), "Unable to convert string to correct encoding");
    EXPECT_TRUE(CFEqual(read("<string>\xEF\xB7\x90</string>").plist, str("\xEF\xB7\x90")));
}
