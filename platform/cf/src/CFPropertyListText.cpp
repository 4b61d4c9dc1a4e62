// The text of a property-list document before any parser sees it: its
// encoding (byte-order marks, the XML declaration) converted to UTF-8, and
// how lines are counted in messages.
#include "CFPropertyListInternal.h"
#include "CFStringInternal.h"

#include <CoreFoundation/CFString.h>

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <string_view>

namespace halvane::detail {

namespace {

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        char x = a[i], y = b[i];
        if (x >= 'A' && x <= 'Z') x = char(x - 'A' + 'a');
        if (y >= 'A' && y <= 'Z') y = char(y - 'A' + 'a');
        if (x != y) return false;
    }
    return true;
}

// The encodings an XML declaration may name, by their IANA names and common
// aliases. The 16- and 32-bit ones stand for UTF-8 here: text without a
// byte-order mark and without a NUL in its first two bytes is 8-bit,
// whatever its declaration claims.
bool encodingNamed(std::string_view name, CFStringEncoding& encoding) {
    struct Alias {
        const char* name;
        CFStringEncoding encoding;
    };
    static constexpr Alias kAliases[] = {
        {"UTF-8", kCFStringEncodingUTF8},
        {"UTF8", kCFStringEncodingUTF8},
        {"UTF-16", kCFStringEncodingUTF8},
        {"UTF-16BE", kCFStringEncodingUTF8},
        {"UTF-16LE", kCFStringEncodingUTF8},
        {"UTF-32", kCFStringEncodingUTF8},
        {"UTF-32BE", kCFStringEncodingUTF8},
        {"UTF-32LE", kCFStringEncodingUTF8},
        {"US-ASCII", kCFStringEncodingASCII},
        {"ASCII", kCFStringEncodingASCII},
        {"ISO-8859-1", kCFStringEncodingISOLatin1},
        {"ISO_8859-1", kCFStringEncodingISOLatin1},
        {"ISO-LATIN-1", kCFStringEncodingISOLatin1},
        {"LATIN1", kCFStringEncodingISOLatin1},
        {"L1", kCFStringEncodingISOLatin1},
        {"MACINTOSH", kCFStringEncodingMacRoman},
        {"MACROMAN", kCFStringEncodingMacRoman},
        {"X-MAC-ROMAN", kCFStringEncodingMacRoman},
        {"WINDOWS-1252", kCFStringEncodingWindowsLatin1},
        {"CP1252", kCFStringEncodingWindowsLatin1},
        {"X-NEXTSTEP", kCFStringEncodingNextStepLatin},
    };
    for (const Alias& alias : kAliases) {
        if (equalsIgnoringCase(name, alias.name)) {
            encoding = alias.encoding;
            return true;
        }
    }
    return false;
}

// The encoding named by the XML declaration at the start of text
// ("<?xml ... encoding='NAME' ...?>"); UTF-8 when there is none.
bool declaredEncoding(const char* text, size_t length, CFStringEncoding& encoding, ParseError& error) {
    encoding = kCFStringEncodingUTF8;
    constexpr std::string_view kAttribute = "encoding";
    for (size_t i = 5; i < length && text[i] != '>'; ++i) {
        if (text[i] != 'e' || std::string_view(text + i, std::min(length - i, kAttribute.size())) != kAttribute) {
            continue;
        }
        size_t j = i + kAttribute.size();
        while (j < length && (text[j] == ' ' || text[j] == '\t' || text[j] == '\r' || text[j] == '\n')) ++j;
        if (j < length && text[j] == '=') ++j;
        while (j < length && (text[j] == ' ' || text[j] == '\t' || text[j] == '\r' || text[j] == '\n')) ++j;
        if (j >= length) break;
        char quote = text[j];
        if (quote != '"' && quote != '\'') return true;
        const void* close = std::memchr(text + j + 1, quote, length - j - 1);
        if (close == nullptr) break;
        std::string_view name(text + j + 1, size_t(static_cast<const char*>(close) - (text + j + 1)));
        if (encodingNamed(name, encoding)) return true;
        error.message = "Encountered unknown encoding (" + std::string(name) + ")";
        return false;
    }
    if (std::memchr(text, '>', length) != nullptr) return true;
    error.message = "End of buffer while looking for encoding name";
    return false;
}

}  // namespace

size_t countLineBreaks(const char* begin, const char* end) {
    size_t breaks = 0;
    for (const char* p = begin; p < end; ++p) {
        if (*p == '\n') {
            ++breaks;
        } else if (*p == '\r' && (p + 1 == end || p[1] != '\n')) {
            ++breaks;
        }
    }
    return breaks;
}

bool propertyListTextAsUTF8(const uint8_t* bytes, size_t length, std::string& storage, const char*& text,
                            size_t& textLength, ParseError& error) {
    CFStringEncoding encoding = kCFStringEncodingUTF8;
    size_t skip = 0;
    auto startsWith = [bytes, length](std::initializer_list<uint8_t> prefix) {
        return length >= prefix.size() && std::equal(prefix.begin(), prefix.end(), bytes);
    };
    if (startsWith({0x00, 0x00, 0xFE, 0xFF})) {
        encoding = kCFStringEncodingUTF32BE;
        skip = 4;
    } else if (startsWith({0xFF, 0xFE, 0x00, 0x00})) {
        encoding = kCFStringEncodingUTF32LE;
        skip = 4;
    } else if (startsWith({0xEF, 0xBB, 0xBF})) {
        skip = 3;
    } else if (startsWith({0xFE, 0xFF})) {
        encoding = kCFStringEncodingUTF16BE;
        skip = 2;
    } else if (startsWith({0xFF, 0xFE})) {
        encoding = kCFStringEncodingUTF16LE;
        skip = 2;
    } else if (length >= 2 && bytes[0] == 0) {
        encoding = kCFStringEncodingUTF16BE;
    } else if (length >= 2 && bytes[1] == 0) {
        encoding = kCFStringEncodingUTF16LE;
    } else if (startsWith({'<', '?', 'x', 'm', 'l'})) {
        if (!declaredEncoding(reinterpret_cast<const char*>(bytes), length, encoding, error)) return false;
    }
    if (encoding == kCFStringEncodingUTF8) {
        text = reinterpret_cast<const char*>(bytes + skip);
        textLength = length - skip;
        return true;
    }
    CFStringRef decoded = CFStringCreateWithBytes(kCFAllocatorSystemDefault, bytes + skip, CFIndex(length - skip),
                                                  encoding, false);
    if (decoded == nullptr) {
        error.message = "Unable to convert string to correct encoding";
        return false;
    }
    storage = utf8Of(decoded);
    CFRelease(decoded);
    text = storage.data();
    textLength = storage.size();
    return true;
}

}  // namespace halvane::detail
