#include <halvane/text/detail/LetterCase.h>

#include <unicode/uchar.h>
#include <unicode/utf16.h>

#include <algorithm>

namespace halvane::detail {

namespace {

constexpr char16_t kCapitalDottedI = 0x0130;
constexpr char16_t kSmallDotlessI = 0x0131;

bool isTurkic(std::string_view localeIdentifier) {
    std::string_view language = languageOf(localeIdentifier);
    return language == "tr" || language == "az";
}

UChar32 mapped(UChar32 c, LetterCase letterCase) {
    return letterCase == LetterCase::kUpper ? u_toupper(c) : u_tolower(c);
}

// The ASCII mapping of a unit, without a branch so that the loops over it
// vectorize; units outside the ASCII letters come back unchanged.
template <typename Unit>
Unit mappedASCII(Unit unit, unsigned first) {
    return Unit(unit ^ (unsigned(unit - first) < 26u ? 0x20 : 0));
}

// The simple mapping of every unit of the Basic Multilingual Plane, made on
// first use and kept for the life of the process: one load per unit instead
// of a property lookup. Surrogates, and the few units whose mapping would
// change the text's length, map to themselves.
const char16_t* unitTable(LetterCase letterCase) {
    auto build = [](LetterCase mapping) {
        auto* table = new char16_t[0x10000];
        for (UChar32 c = 0; c <= 0xFFFF; ++c) {
            UChar32 target = U16_IS_SURROGATE(c) ? c : mapped(c, mapping);
            table[c] = char16_t(U16_LENGTH(target) == 1 ? target : c);
        }
        return table;
    };
    static const char16_t* const upper = build(LetterCase::kUpper);
    static const char16_t* const lower = build(LetterCase::kLower);
    return letterCase == LetterCase::kUpper ? upper : lower;
}

// Surrogate pairs as the code point they make.
void mapSupplementary(char16_t* units, size_t length, LetterCase letterCase) {
    for (size_t i = 0; i + 1 < length; ++i) {
        if (!U16_IS_LEAD(units[i]) || !U16_IS_TRAIL(units[i + 1])) continue;
        UChar32 c = mapped(U16_GET_SUPPLEMENTARY(units[i], units[i + 1]), letterCase);
        if (U16_LENGTH(c) == 2) {
            units[i] = U16_LEAD(c);
            units[i + 1] = U16_TRAIL(c);
        }
        ++i;
    }
}

}  // namespace

std::string_view languageOf(std::string_view localeIdentifier) {
    return localeIdentifier.substr(0, localeIdentifier.find_first_of("_-@."));
}

void mapLetterCase(const char16_t* from, char16_t* to, size_t length, LetterCase letterCase,
                   std::string_view localeIdentifier) {
    const bool upper = letterCase == LetterCase::kUpper;
    char16_t highest = 0;
    for (size_t i = 0; i < length; ++i) highest = std::max(highest, from[i]);
    if (highest < 0x80 && !isTurkic(localeIdentifier)) {
        // ASCII only: one pass without a branch or a lookup.
        const unsigned first = upper ? u'a' : u'A';
        for (size_t i = 0; i < length; ++i) to[i] = mappedASCII(from[i], first);
        return;
    }
    const char16_t* table = unitTable(letterCase);
    if (isTurkic(localeIdentifier)) {
        // The dotted and dotless i, where the default mapping keeps within
        // ASCII.
        const char16_t turkic = upper ? u'i' : u'I', partner = upper ? kCapitalDottedI : kSmallDotlessI;
        for (size_t i = 0; i < length; ++i) {
            char16_t unit = from[i];
            to[i] = unit == turkic ? partner : table[unit];
        }
    } else {
        for (size_t i = 0; i < length; ++i) to[i] = table[from[i]];
    }
    if (highest >= 0xD800) mapSupplementary(to, length, letterCase);
}

bool mapASCIILetterCase(const char* from, char* to, size_t length, LetterCase letterCase,
                        std::string_view localeIdentifier) {
    if (isTurkic(localeIdentifier)) return false;
    const unsigned first = letterCase == LetterCase::kUpper ? 'a' : 'A';
    for (size_t i = 0; i < length; ++i) to[i] = mappedASCII(from[i], first);
    return true;
}

}  // namespace halvane::detail
