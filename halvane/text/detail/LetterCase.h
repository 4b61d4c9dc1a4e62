// Upper- and lower-casing that keeps the length of the text, as the case
// operations of HVString and its case-insensitive search need it.
#ifndef HALVANE_TEXT_DETAIL_LETTERCASE_H
#define HALVANE_TEXT_DETAIL_LETTERCASE_H

#include <cstddef>
#include <string_view>

namespace halvane::detail {

enum class LetterCase { kUpper, kLower };

// Maps every code point by its simple (one-to-one) case mapping, so the
// text keeps its length and every index into it its meaning: "ß" stays
// "ß". In Turkish and Azeri (a locale identifier whose language is tr or
// az) "i" and "I" map to their dotted and dotless partners.
// from and to may be the same buffer.
void mapLetterCase(const char16_t* from, char16_t* to, size_t length, LetterCase letterCase,
                   std::string_view localeIdentifier);

// The same for ASCII text, from one buffer into another. False, with
// nothing written, for a locale that maps some ASCII letter outside ASCII.
bool mapASCIILetterCase(const char* from, char* to, size_t length, LetterCase letterCase,
                        std::string_view localeIdentifier);

// The language part of a locale identifier: "tr" for "tr_TR".
std::string_view languageOf(std::string_view localeIdentifier);

}  // namespace halvane::detail

#endif  // HALVANE_TEXT_DETAIL_LETTERCASE_H
