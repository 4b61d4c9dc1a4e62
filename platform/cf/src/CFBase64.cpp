// Base64 for property-list data.
#include "CFBase64.h"

#include <array>

namespace halvane::detail {

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr uint8_t kSkip = 0xFF;
constexpr uint8_t kPad = 0xFE;

// The 6-bit value of each byte below 0x80; kPad for '=', kSkip for the rest.
constexpr std::array<uint8_t, 128> kValues = [] {
    std::array<uint8_t, 128> values{};
    values.fill(kSkip);
    for (uint8_t i = 0; i < 64; ++i) values[uint8_t(kAlphabet[i])] = i;
    values['='] = kPad;
    return values;
}();

inline char* encodeGroup(char* out, uint32_t triple) {
    out[0] = kAlphabet[(triple >> 18) & 0x3F];
    out[1] = kAlphabet[(triple >> 12) & 0x3F];
    out[2] = kAlphabet[(triple >> 6) & 0x3F];
    out[3] = kAlphabet[triple & 0x3F];
    return out + 4;
}

}  // namespace

void appendBase64Lines(std::string& out, const uint8_t* bytes, size_t length, size_t lineWidth, size_t indent) {
    if (length == 0) return;
    size_t encoded = (length + 2) / 3 * 4;
    size_t lines = (encoded + lineWidth - 1) / lineWidth;
    size_t start = out.size();
    out.resize(start + encoded + lines * (indent + 1));
    char* p = out.data() + start;
    size_t groupsPerLine = lineWidth / 4;
    size_t i = 0;
    while (i < length) {
        for (size_t t = 0; t < indent; ++t) *p++ = '\t';
        for (size_t g = 0; g < groupsPerLine && i < length; ++g) {
            if (length - i >= 3) {
                p = encodeGroup(p, uint32_t(bytes[i]) << 16 | uint32_t(bytes[i + 1]) << 8 | bytes[i + 2]);
                i += 3;
            } else {
                uint32_t triple = uint32_t(bytes[i]) << 16;
                if (length - i == 2) triple |= uint32_t(bytes[i + 1]) << 8;
                char* group = p;
                p = encodeGroup(p, triple);
                group[3] = '=';
                if (length - i == 1) group[2] = '=';
                i = length;
            }
        }
        *p++ = '\n';
    }
}

ptrdiff_t decodeBase64Leniently(const char* text, size_t length, std::vector<uint8_t>& out) {
    // At most three bytes per four characters: written through a pointer,
    // trimmed at the end.
    size_t start = out.size();
    out.resize(start + length / 4 * 3);
    uint8_t* p = out.data() + start;
    uint32_t bits = 0;
    unsigned members = 0;
    unsigned padding = 0;
    for (size_t i = 0; i < length; ++i) {
        uint8_t c = uint8_t(text[i]);
        if (c >= 0x80) {
            out.resize(start);
            return ptrdiff_t(i);
        }
        uint8_t value = kValues[c];
        if (value == kSkip) continue;
        if (value == kPad) {
            ++padding;
            value = 0;
        }
        bits = bits << 6 | value;
        if (++members < 4) continue;
        // A group with padding holds fewer bytes: "AQ==" one, "AQI=" two.
        unsigned count = padding >= 3 ? 0 : 3 - padding;
        if (count > 0) *p++ = uint8_t(bits >> 16);
        if (count > 1) *p++ = uint8_t(bits >> 8);
        if (count > 2) *p++ = uint8_t(bits);
        bits = 0;
        members = 0;
        padding = 0;
    }
    out.resize(size_t(p - out.data()));
    return -1;
}

}  // namespace halvane::detail
