#include <halvane/text/detail/LetterCase.h>

#include <unicode/uchar.h>
#include <unicode/utf16.h>

namespace halvane::detail {

namespace {

constexpr char16_t kCapitalDottedI = 0x0130;
constexpr char16_t kSmallDotlessI = 0x0131;

UChar32 mapped(UChar32 c, LetterCase letterCase) {
    return letterCase == LetterCase::kUpper ? u_toupper(c) : u_tolower(c);
}

}  // namespace

std::string_view languageOf(std::string_view localeIdentifier) {
    return localeIdentifier.substr(0, localeIdentifier.find_first_of("_-@."));
}

void mapLetterCase(std::u16string& units, LetterCase letterCase, std::string_view localeIdentifier) {
    std::string_view language = languageOf(localeIdentifier);
    const bool turkic = language == "tr" || language == "az";
    const bool upper = letterCase == LetterCase::kUpper;
    const size_t length = units.size();
    for (size_t i = 0; i < length; ++i) {
        char16_t unit = units[i];
        if (unit < 0x80) {
            // ASCII first: it is most of the text most of the time.
            if (upper && unit >= u'a' && unit <= u'z') {
                units[i] = turkic && unit == u'i' ? kCapitalDottedI : char16_t(unit - 0x20);
            } else if (!upper && unit >= u'A' && unit <= u'Z') {
                units[i] = turkic && unit == u'I' ? kSmallDotlessI : char16_t(unit + 0x20);
            }
        } else if (U16_IS_LEAD(unit) && i + 1 < length && U16_IS_TRAIL(units[i + 1])) {
            UChar32 c = mapped(U16_GET_SUPPLEMENTARY(unit, units[i + 1]), letterCase);
            if (U16_LENGTH(c) == 2) {
                units[i] = U16_LEAD(c);
                units[i + 1] = U16_TRAIL(c);
            }
            ++i;
        } else if (!U16_IS_SURROGATE(unit)) {
            UChar32 c = mapped(unit, letterCase);
            if (U16_LENGTH(c) == 1) units[i] = char16_t(c);
        }
    }
}

}  // namespace halvane::detail
