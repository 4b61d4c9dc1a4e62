// Upper- and lower-casing that keeps the length of the text, as the case
// operations of HVString and its case-insensitive search need it.
#ifndef HALVANE_TEXT_DETAIL_LETTERCASE_H
#define HALVANE_TEXT_DETAIL_LETTERCASE_H

#include <string>
#include <string_view>

namespace halvane::detail {

enum class LetterCase { kUpper, kLower };

// Maps every code point by its simple (one-to-one) case mapping, so the
// text keeps its length and every index into it its meaning: "ß" stays
// "ß". In Turkish and Azeri (a locale identifier whose language is tr or
// az) "i" and "I" map to their dotted and dotless partners.
void mapLetterCase(std::u16string& units, LetterCase letterCase, std::string_view localeIdentifier);

// The language part of a locale identifier: "tr" for "tr_TR".
std::string_view languageOf(std::string_view localeIdentifier);

}  // namespace halvane::detail

#endif  // HALVANE_TEXT_DETAIL_LETTERCASE_H
