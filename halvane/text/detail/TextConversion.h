// Conversion of the platform's wide characters. wchar_t is UTF-32 on this
// platform; the library's text is UTF-16.
#ifndef HALVANE_TEXT_DETAIL_TEXTCONVERSION_H
#define HALVANE_TEXT_DETAIL_TEXTCONVERSION_H

#include <string>

namespace halvane::detail {

// Appends a Unicode scalar value as one unit or a surrogate pair.
inline void appendUTF16(std::u16string& units, char32_t c) {
    if (c >= 0x10000) {
        c -= 0x10000;
        units.push_back(char16_t(0xD800 + (c >> 10)));
        units.push_back(char16_t(0xDC00 + (c & 0x3FF)));
    } else {
        units.push_back(char16_t(c));
    }
}

// The units of a zero-terminated wide text; values that are not Unicode
// scalar values become U+FFFD.
inline std::u16string wideToUTF16(const wchar_t* text) {
    std::u16string units;
    for (; *text != 0; ++text) {
        auto c = static_cast<char32_t>(*text);
        if (c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) c = 0xFFFD;
        appendUTF16(units, c);
    }
    return units;
}

}  // namespace halvane::detail

#endif  // HALVANE_TEXT_DETAIL_TEXTCONVERSION_H
