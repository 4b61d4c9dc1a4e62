// The text of a property-list document before any parser sees it: its
// encoding (byte-order marks, the XML declaration) converted to UTF-8, the
// prolog of an XML document, the characters Expat refuses, and how lines
// are counted and characters shown in messages.
#include "CFPropertyListInternal.h"
#include "CFStringInternal.h"

#include <CoreFoundation/CFString.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <string_view>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

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

[[gnu::format(printf, 1, 2)]] std::string formatted(const char* format, ...) {
    char small[256];
    std::va_list arguments;
    va_start(arguments, format);
    std::va_list copy;
    va_copy(copy, arguments);
    int needed = std::vsnprintf(small, sizeof small, format, copy);
    va_end(copy);
    std::string text;
    if (needed >= 0 && size_t(needed) < sizeof small) {
        text.assign(small, size_t(needed));
    } else if (needed >= 0) {
        text.resize(size_t(needed) + 1);
        std::vsnprintf(text.data(), text.size(), format, arguments);
        text.resize(size_t(needed));
    }
    va_end(arguments);
    return text;
}

// --- Characters Expat refuses ----------------------------------------------

// U+FDD0 + c stands for the control character c; U+FDD9 and U+FDDA (the
// places of TAB and LF, which need no stand-in) for U+FFFE and U+FFFF.
constexpr uint8_t kStandInLead0 = 0xEF;
constexpr uint8_t kStandInLead1 = 0xB7;
constexpr uint8_t kStandInFirst = 0x90;
constexpr uint8_t kStandInLast = 0xAF;
constexpr uint8_t kStandInFFFE = kStandInFirst + 0x09;
constexpr uint8_t kStandInFFFF = kStandInFirst + 0x0A;

inline bool isRefusedControl(uint8_t b) { return b < 0x20 && b != '\t' && b != '\n' && b != '\r'; }

inline bool isStandIn(const char* p, size_t available) {
    return available >= 3 && uint8_t(p[0]) == kStandInLead0 && uint8_t(p[1]) == kStandInLead1 &&
           uint8_t(p[2]) >= kStandInFirst && uint8_t(p[2]) <= kStandInLast;
}

}  // namespace

int refusedCharacters(const char* text, size_t length) {
    bool refused = false, standIns = false;
    auto examine = [&](size_t i) {
        uint8_t b = uint8_t(text[i]);
        if (b == kStandInLead0) {
            if (i + 2 < length && uint8_t(text[i + 1]) == 0xBF && uint8_t(text[i + 2]) >= 0xBE) refused = true;
            if (isStandIn(text + i, length - i)) standIns = true;
        } else if (isRefusedControl(b)) {
            refused = true;
        }
    };
    size_t i = 0;
#if defined(__SSE2__)
    // Every document goes through here: sixteen bytes at a time, looking
    // closer only at blocks with a control character other than TAB, LF and
    // CR, or an 0xEF byte.
    const __m128i highestControl = _mm_set1_epi8(0x1F);
    const __m128i tab = _mm_set1_epi8('\t'), lineFeed = _mm_set1_epi8('\n'), carriageReturn = _mm_set1_epi8('\r');
    const __m128i lead = _mm_set1_epi8(char(kStandInLead0));
    for (; i + 16 <= length; i += 16) {
        __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text + i));
        __m128i control = _mm_cmpeq_epi8(_mm_min_epu8(block, highestControl), block);
        __m128i allowed = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(block, tab), _mm_cmpeq_epi8(block, lineFeed)),
                                       _mm_cmpeq_epi8(block, carriageReturn));
        __m128i notable = _mm_or_si128(_mm_andnot_si128(allowed, control), _mm_cmpeq_epi8(block, lead));
        if (_mm_movemask_epi8(notable) == 0) continue;
        for (size_t k = i; k < i + 16; ++k) examine(k);
    }
#endif
    for (; i < length; ++i) examine(i);
    if (!refused) return 0;
    return standIns ? -1 : 1;
}

std::string withStandIns(const char* text, size_t length) {
    std::string out;
    out.reserve(length + length / 8);
    for (size_t i = 0; i < length; ++i) {
        uint8_t b = uint8_t(text[i]);
        if (isRefusedControl(b)) {
            out.append({char(kStandInLead0), char(kStandInLead1), char(kStandInFirst + b)});
        } else if (b == 0xEF && i + 2 < length && uint8_t(text[i + 1]) == 0xBF && uint8_t(text[i + 2]) >= 0xBE) {
            uint8_t standIn = uint8_t(text[i + 2]) == 0xBE ? kStandInFFFE : kStandInFFFF;
            out.append({char(kStandInLead0), char(kStandInLead1), char(standIn)});
            i += 2;
        } else {
            out.push_back(char(b));
        }
    }
    return out;
}

void restoreRefused(std::string& text) {
    size_t to = 0;
    for (size_t from = 0; from < text.size();) {
        if (!isStandIn(text.data() + from, text.size() - from)) {
            text[to++] = text[from++];
            continue;
        }
        uint8_t standIn = uint8_t(text[from + 2]);
        if (standIn == kStandInFFFE || standIn == kStandInFFFF) {
            text[to++] = char(0xEF);
            text[to++] = char(0xBF);
            text[to++] = char(standIn == kStandInFFFE ? 0xBE : 0xBF);
        } else {
            text[to++] = char(standIn - kStandInFirst);
        }
        from += 3;
    }
    text.resize(to);
}

std::string characterAt(const char* p, size_t available) {
    if (available == 0) return {};
    if (isStandIn(p, available)) {
        std::string restored(p, 3);
        restoreRefused(restored);
        return restored;
    }
    uint8_t lead = uint8_t(*p);
    size_t length = lead < 0x80 ? 1 : lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 0;
    std::u16string units;
    if (length == 0 || length > available || !decodeUTF8(reinterpret_cast<const uint8_t*>(p), length, units)) {
        return "\xEF\xBF\xBD";
    }
    return std::string(p, length);
}

uint32_t codePointOf(const std::string& character) {
    std::u16string units;
    decodeUTF8(reinterpret_cast<const uint8_t*>(character.data()), character.size(), units);
    if (units.size() == 2) return 0x10000 + ((uint32_t(units[0]) - 0xD800) << 10) + (uint32_t(units[1]) - 0xDC00);
    return units.empty() ? 0 : units[0];
}

// --- The prolog --------------------------------------------------------------

bool skipProlog(const char* text, size_t length, size_t& offset, size_t& line, ParseError& error) {
    size_t i = 0;
    line = 1;
    auto advanceTo = [&](size_t to) {
        line += countLineBreaks(text + i, text + to);
        i = to;
    };
    auto find = [&](std::string_view what, size_t from) -> size_t {
        std::string_view rest(text + from, length - from);
        size_t at = rest.find(what);
        return at == std::string_view::npos ? std::string_view::npos : from + at;
    };
    auto startsWith = [&](std::string_view what) { return std::string_view(text + i, length - i).starts_with(what); };
    for (;;) {
        size_t next = i;
        while (next < length && isXMLSpace(text[next])) ++next;
        advanceTo(next);
        if (i == length) {
            error.message = "No XML content found";
            return false;
        }
        if (text[i] != '<') {
            error.message = formatted("Unexpected character %s at line %zu", characterAt(text + i, length - i).c_str(),
                                      line);
            return false;
        }
        if (startsWith("<?")) {
            size_t end = find("?>", i + 2);
            if (end == std::string_view::npos) {
                error.message =
                    formatted("Encountered unexpected EOF while parsing the processing instruction begun on line %zu",
                              line);
                return false;
            }
            advanceTo(end + 2);
        } else if (startsWith("<!--")) {
            size_t end = find("-->", i + 4);
            if (end == std::string_view::npos) {
                error.message = formatted("Unterminated comment started on line %zu", line);
                return false;
            }
            advanceTo(end + 3);
        } else if (startsWith("<!DOCTYPE")) {
            // Quoted identifiers may hold anything; an internal subset is
            // refused, so no declaration of the document reaches the parser.
            size_t j = i + 9;
            char quote = 0;
            for (; j < length; ++j) {
                char c = text[j];
                if (quote != 0) {
                    if (c == quote) quote = 0;
                } else if (c == '"' || c == '\'') {
                    quote = c;
                } else if (c == '[') {
                    advanceTo(j);
                    error.message = formatted("Encountered unexpected character [ on line %zu while parsing DTD", line);
                    return false;
                } else if (c == '>') {
                    break;
                }
            }
            if (j == length) {
                error.message = "Encountered unexpected EOF while parsing DTD";
                return false;
            }
            advanceTo(j + 1);
        } else if (startsWith("<!")) {
            error.message = formatted("Malformed DTD on line %zu", line);
            return false;
        } else {
            offset = i;
            return true;
        }
    }
}

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
