// Percent escapes: the public functions that add and replace them in
// strings, and the escaping rules the URL functions share.
#include "CFStringEncodingInternal.h"
#include "CFURLInternal.h"

#include <CoreFoundation/CFURL.h>

using namespace halvane::detail;

namespace halvane::detail {

namespace {

constexpr char kUppercaseHex[] = "0123456789ABCDEF";

template <typename Text>
void appendEscape(Text& out, uint8_t byte) {
    out.push_back('%');
    out.push_back(kUppercaseHex[byte >> 4]);
    out.push_back(kUppercaseHex[byte & 0xF]);
}

// Reads the escape "%XX" at text[at]; false when there is none.
template <typename Unit>
bool readEscape(const Unit* text, size_t length, size_t at, uint8_t& byte) {
    if (at >= length || length - at < 3 || text[at] != '%') return false;
    uint32_t high = text[at + 1], low = text[at + 2];
    if (!isHexDigit(high) || !isHexDigit(low)) return false;
    byte = uint8_t(hexValue(high) << 4 | hexValue(low));
    return true;
}

// Bytes in the UTF-8 sequence a lead byte starts; 0 when it starts none.
size_t utf8SequenceLength(uint8_t lead) {
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead <= 0xDF) return 2;
    if (lead >= 0xE0 && lead <= 0xEF) return 3;
    if (lead >= 0xF0 && lead <= 0xF4) return 4;
    return 0;
}

template <typename Unit>
bool replaceEscapesUTF8(const Unit* text, size_t length, std::u16string_view leaveEscaped, std::u16string& out) {
    out.clear();
    out.reserve(length);
    size_t i = 0;
    while (i < length) {
        if (text[i] != '%') {
            out.push_back(char16_t(text[i++]));
            continue;
        }
        // One character: a complete UTF-8 sequence written as escapes.
        uint8_t bytes[4];
        if (!readEscape(text, length, i, bytes[0])) return false;
        size_t count = utf8SequenceLength(bytes[0]);
        if (count == 0) return false;
        for (size_t k = 1; k < count; ++k) {
            if (!readEscape(text, length, i + 3 * k, bytes[k])) return false;
        }
        size_t mark = out.size();
        if (!decodeUTF8(bytes, count, out)) return false;
        std::u16string_view decoded(out.data() + mark, out.size() - mark);
        if (!leaveEscaped.empty() && leaveEscaped.find(decoded) != std::u16string_view::npos) {
            out.resize(mark);
            for (size_t k = 0; k < 3 * count; ++k) out.push_back(char16_t(text[i + k]));
        }
        i += 3 * count;
    }
    return true;
}

bool checkString(CFStringRef s, const char* caller, const char* role) {
    if (isA(s, kCFStringTypeID)) return true;
    reportMisuse("CFURL: %s(): %s is %s", caller, role, s == nullptr ? "NULL" : "not a string");
    return false;
}

// The units of an optional character list; false (reported) when the
// argument is something other than NULL or a string.
bool optionalCharacters(CFStringRef s, const char* caller, std::u16string& out) {
    if (s == nullptr) return true;
    if (!checkString(s, caller, "the character list")) return false;
    out = unitsOf(s);
    return true;
}

// Decoding in another encoding: a run of consecutive escapes is one byte
// sequence; characters to leave escaped are escaped again from their bytes.
CFStringRef replaceEscapesInEncoding(CFAllocatorRef allocator, CFStringRef s, std::u16string_view leaveEscaped,
                                     CFStringEncoding encoding) {
    std::u16string text = unitsOf(s);
    std::u16string out;
    std::string bytes;
    size_t i = 0;
    while (i < text.size()) {
        if (text[i] != '%') {
            out.push_back(text[i++]);
            continue;
        }
        bytes.clear();
        while (i < text.size() && text[i] == '%') {
            uint8_t byte;
            if (!readEscape(text.data(), text.size(), i, byte)) return nullptr;
            bytes.push_back(char(byte));
            i += 3;
        }
        CFStringRef decoded = CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>(bytes.data()),
                                                      CFIndex(bytes.size()), encoding, false);
        if (decoded == nullptr) return nullptr;
        std::u16string units = unitsOf(decoded);
        for (size_t k = 0; k < units.size();) {
            size_t count = isHighSurrogate(units[k]) && k + 1 < units.size() && isLowSurrogate(units[k + 1]) ? 2 : 1;
            std::u16string_view character(units.data() + k, count);
            if (!leaveEscaped.empty() && leaveEscaped.find(character) != std::u16string_view::npos) {
                UInt8 encoded[16];
                CFIndex used = 0;
                CFStringGetBytes(decoded, CFRangeMake(CFIndex(k), CFIndex(count)), encoding, 0, false, encoded,
                                 sizeof encoded, &used);
                for (CFIndex b = 0; b < used; ++b) appendEscape(out, encoded[b]);
            } else {
                out.append(character);
            }
            k += count;
        }
        CFRelease(decoded);
    }
    if (out == text) return CFStringCreateCopy(allocator, s);
    return createUnitsString(allocator, out);
}

}  // namespace

void appendEscapedBytes(std::string& out, std::string_view bytes, const CharacterClass& keep) {
    for (char c : bytes) {
        if (keep.contains(uint8_t(c))) {
            out.push_back(c);
        } else {
            appendEscape(out, uint8_t(c));
        }
    }
}

bool strictUTF8(std::u16string_view units, std::string& out) {
    for (size_t i = 0; i < units.size(); ++i) {
        if (!isSurrogate(units[i])) continue;
        if (!isHighSurrogate(units[i]) || i + 1 == units.size() || !isLowSurrogate(units[i + 1])) return false;
        ++i;
    }
    appendUTF8(out, units.data(), units.size());
    return true;
}

bool decodePercentBytes(std::string_view text, std::string& out) {
    for (size_t i = 0; i < text.size();) {
        if (text[i] != '%') {
            out.push_back(text[i++]);
            continue;
        }
        uint8_t byte;
        if (!readEscape(text.data(), text.size(), i, byte)) return false;
        out.push_back(char(byte));
        i += 3;
    }
    return true;
}

bool replacePercentEscapesUTF8(std::u16string_view text, std::u16string_view leaveEscaped, std::u16string& out) {
    return replaceEscapesUTF8(text.data(), text.size(), leaveEscaped, out);
}

bool replacePercentEscapesUTF8(std::string_view text, std::u16string_view leaveEscaped, std::u16string& out) {
    return replaceEscapesUTF8(reinterpret_cast<const uint8_t*>(text.data()), text.size(), leaveEscaped, out);
}

CFStringRef createUnescapedString(std::string_view text) {
    std::u16string decoded;
    if (!replacePercentEscapesUTF8(text, u"", decoded)) return createASCIIString(nullptr, text);
    return createUnitsString(nullptr, decoded);
}

std::string escapeIllegalURLCharacters(std::u16string_view text) {
    std::string out;
    out.reserve(text.size());
    bool seenFragment = false;
    for (size_t i = 0; i < text.size();) {
        char16_t c = text[i];
        if (c == '%') {
            uint8_t byte;
            if (readEscape(text.data(), text.size(), i, byte)) {
                for (size_t k = 0; k < 3; ++k) out.push_back(char(text[i + k]));
                i += 3;
            } else {
                appendEscape(out, '%');
                ++i;
            }
        } else if (c == '#') {
            if (seenFragment) {
                appendEscape(out, '#');
            } else {
                out.push_back('#');
                seenFragment = true;
            }
            ++i;
        } else if (c < 0x80) {
            if (kURLValidCharacters.contains(c)) {
                out.push_back(char(c));
            } else {
                appendEscape(out, uint8_t(c));
            }
            ++i;
        } else {
            size_t end = i;
            while (end < text.size() && text[end] >= 0x80) ++end;
            std::string utf8;
            appendUTF8(utf8, text.data() + i, end - i);  // a lone surrogate becomes U+FFFD
            appendEscapedBytes(out, utf8, kURLValidCharacters);
            i = end;
        }
    }
    return out;
}

bool isValidURLText(std::u16string_view text) {
    bool seenFragment = false;
    for (size_t i = 0; i < text.size();) {
        char16_t c = text[i];
        uint8_t byte;
        if (c == '%') {
            if (!readEscape(text.data(), text.size(), i, byte)) return false;
            i += 3;
            continue;
        }
        if (c == '#') {
            if (seenFragment) return false;
            seenFragment = true;
        } else if (!kURLValidCharacters.contains(c)) {
            return false;
        }
        ++i;
    }
    return true;
}

}  // namespace halvane::detail

CFStringRef CFURLCreateStringByReplacingPercentEscapes(CFAllocatorRef allocator, CFStringRef originalString,
                                                       CFStringRef charactersToLeaveEscaped) {
    static constexpr const char* kCaller = "CFURLCreateStringByReplacingPercentEscapes";
    if (!checkString(originalString, kCaller, "the string")) return nullptr;
    if (charactersToLeaveEscaped == nullptr) return CFStringCreateCopy(allocator, originalString);
    std::u16string leave;
    if (!optionalCharacters(charactersToLeaveEscaped, kCaller, leave)) return nullptr;
    std::u16string out;
    bool valid = withUnits(originalString, [&](auto* units, CFIndex length) {
        return replaceEscapesUTF8(units, size_t(length), leave, out);
    });
    if (!valid) return nullptr;
    // Replacing an escape always shortens the text.
    if (CFIndex(out.size()) == originalString->length) return CFStringCreateCopy(allocator, originalString);
    return createUnitsString(allocator, out);
}

CFStringRef CFURLCreateStringByReplacingPercentEscapesUsingEncoding(CFAllocatorRef allocator, CFStringRef origString,
                                                                    CFStringRef charsToLeaveEscaped,
                                                                    CFStringEncoding encoding) {
    static constexpr const char* kCaller = "CFURLCreateStringByReplacingPercentEscapesUsingEncoding";
    if (encoding == kCFStringEncodingUTF8) {
        return CFURLCreateStringByReplacingPercentEscapes(allocator, origString, charsToLeaveEscaped);
    }
    if (!checkString(origString, kCaller, "the string")) return nullptr;
    if (!CFStringIsEncodingAvailable(encoding)) return nullptr;
    if (charsToLeaveEscaped == nullptr) return CFStringCreateCopy(allocator, origString);
    std::u16string leave;
    if (!optionalCharacters(charsToLeaveEscaped, kCaller, leave)) return nullptr;
    return replaceEscapesInEncoding(allocator, origString, leave, encoding);
}

CFStringRef CFURLCreateStringByAddingPercentEscapes(CFAllocatorRef allocator, CFStringRef originalString,
                                                    CFStringRef charactersToLeaveUnescaped,
                                                    CFStringRef legalURLCharactersToBeEscaped,
                                                    CFStringEncoding encoding) {
    static constexpr const char* kCaller = "CFURLCreateStringByAddingPercentEscapes";
    if (!checkString(originalString, kCaller, "the string")) return nullptr;
    std::u16string leave, escapeAnyway;
    if (!optionalCharacters(charactersToLeaveUnescaped, kCaller, leave) ||
        !optionalCharacters(legalURLCharactersToBeEscaped, kCaller, escapeAnyway)) {
        return nullptr;
    }
    if (!CFStringIsEncodingAvailable(encoding)) return nullptr;
    auto mustEscape = [&](char16_t c) {
        if (kURLLegalCharacters.contains(c)) return escapeAnyway.find(c) != std::u16string::npos;
        return leave.find(c) == std::u16string::npos;
    };
    std::u16string text = unitsOf(originalString);
    std::u16string out;
    std::string bytes;
    bool escapedAny = false;
    for (size_t i = 0; i < text.size();) {
        if (!mustEscape(text[i])) {
            out.push_back(text[i++]);
            continue;
        }
        // A run is converted at once, so that a surrogate pair becomes one
        // sequence and encodings with shift states or combining see context.
        size_t end = i;
        while (end < text.size() && mustEscape(text[end])) ++end;
        CFRange run = CFRangeMake(CFIndex(i), CFIndex(end - i));
        CFIndex needed = 0;
        if (CFStringGetBytes(originalString, run, encoding, 0, false, nullptr, 0, &needed) != run.length) {
            return nullptr;
        }
        bytes.assign(size_t(needed), '\0');
        CFStringGetBytes(originalString, run, encoding, 0, false, reinterpret_cast<UInt8*>(bytes.data()), needed,
                         &needed);
        for (char b : bytes) appendEscape(out, uint8_t(b));
        escapedAny = true;
        i = end;
    }
    if (!escapedAny) return CFStringCreateCopy(allocator, originalString);
    return createUnitsString(allocator, out);
}
