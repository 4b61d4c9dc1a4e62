// CFStringUppercase, CFStringLowercase and CFStringCapitalize: full Unicode
// case mappings through ICU, with the rules of a few languages.
#include "CFStringInternal.h"

#include <CoreFoundation/CFLocale.h>

#include <unicode/ucasemap.h>
#include <unicode/uchar.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

using namespace halvane::detail;

namespace {

enum class Mapping { kUppercase, kLowercase, kCapitalize };

// The languages whose own case rules are applied: Azeri and Turkish dotted
// and dotless i, Lithuanian dots over i, Dutch "IJ" at the start of a word,
// Greek accents in capitals. Any other locale maps with the default rules.
constexpr std::string_view kLanguagesWithCaseRules[] = {"az", "el", "lt", "nl", "tr"};

// The language whose rules apply for locale ("" for none), or nothing when
// locale is not a locale.
std::optional<std::string> caseLanguage(CFLocaleRef locale, const char* caller) {
    if (locale == nullptr) return std::string();
    if (!isA(locale, kCFLocaleTypeID)) {
        reportMisuse("CFString: %s(): not a locale", caller);
        return std::nullopt;
    }
    std::string identifier = utf8Of(CFLocaleGetIdentifier(locale));
    std::string language = identifier.substr(0, identifier.find_first_of("_-@"));
    for (std::string_view withRules : kLanguagesWithCaseRules) {
        if (language == withRules) return language;
    }
    return std::string();
}

// Only the dotted and dotless i of Azeri and Turkish change ASCII letters.
bool mapsASCIIAsDefault(const std::string& language) {
    return language != "tr" && language != "az";
}

std::u16string mappedASCII(std::u16string text, Mapping mapping) {
    for (char16_t& c : text) {
        if (mapping == Mapping::kUppercase && c >= u'a' && c <= u'z') c = char16_t(c - 0x20);
        if (mapping == Mapping::kLowercase && c >= u'A' && c <= u'Z') c = char16_t(c + 0x20);
    }
    return text;
}

// Runs an ICU mapping into a buffer, growing it when the first guess is
// short (full mappings can triple the length).
template <typename Transform>
bool appendTransformed(std::u16string& out, const char16_t* text, size_t length, Transform transform) {
    size_t start = out.size();
    out.resize(start + length + length / 2 + 8);
    UErrorCode status = U_ZERO_ERROR;
    int32_t written = transform(out.data() + start, int32_t(out.size() - start), text, int32_t(length), &status);
    if (status == U_BUFFER_OVERFLOW_ERROR) {
        out.resize(start + size_t(written));
        status = U_ZERO_ERROR;
        written = transform(out.data() + start, written, text, int32_t(length), &status);
    }
    if (U_FAILURE(status)) {
        out.resize(start);
        return false;
    }
    out.resize(start + size_t(written));
    return true;
}

std::optional<std::u16string> mappedText(const std::u16string& text, Mapping mapping, const std::string& language) {
    std::u16string out;
    const char* locale = language.c_str();
    auto transform = [mapping, locale](UChar* dest, int32_t capacity, const UChar* src, int32_t length,
                                       UErrorCode* status) {
        return mapping == Mapping::kUppercase ? u_strToUpper(dest, capacity, src, length, locale, status)
                                              : u_strToLower(dest, capacity, src, length, locale, status);
    };
    if (!appendTransformed(out, text.data(), text.size(), transform)) return std::nullopt;
    return out;
}

bool isCased(UChar32 c) {
    int8_t type = u_charType(c);
    return type == U_UPPERCASE_LETTER || type == U_LOWERCASE_LETTER || type == U_TITLECASE_LETTER;
}

// Characters that neither start nor end a word: marks, format controls,
// modifier letters and symbols, and the apostrophe (so "don't" is one
// word). The period and the colon are not among them.
bool isCaseIgnorable(UChar32 c) {
    if (c == u'\'') return true;
    int8_t type = u_charType(c);
    return type == U_NON_SPACING_MARK || type == U_ENCLOSING_MARK || type == U_FORMAT_CHAR ||
           type == U_MODIFIER_LETTER || type == U_MODIFIER_SYMBOL;
}

struct CaseMapCloser {
    void operator()(UCaseMap* map) const { ucasemap_close(map); }
};

// Each word is a character titlecased, then everything up to the next word
// lowercased: the character after a non-cased, non-ignorable character
// starts a word. ICU titlecases one word at a time, which keeps the
// context rules (final sigma, Dutch "IJ") inside it.
std::optional<std::u16string> capitalizedText(const std::u16string& text, const std::string& language) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<UCaseMap, CaseMapCloser> map(
        ucasemap_open(language.c_str(), U_TITLECASE_WHOLE_STRING | U_TITLECASE_NO_BREAK_ADJUSTMENT, &status));
    if (U_FAILURE(status)) return std::nullopt;
    auto titlecase = [&map](UChar* dest, int32_t capacity, const UChar* src, int32_t length, UErrorCode* status) {
        return ucasemap_toTitle(map.get(), dest, capacity, src, length, status);
    };

    std::u16string out;
    out.reserve(text.size());
    bool previousCased = false;
    int32_t wordStart = 0;
    const int32_t length = int32_t(text.size());
    for (int32_t i = 0; i < length;) {
        int32_t start = i;
        UChar32 c;
        U16_NEXT(text.data(), i, length, c);
        if (!previousCased && start > wordStart) {
            if (!appendTransformed(out, text.data() + wordStart, size_t(start - wordStart), titlecase)) {
                return std::nullopt;
            }
            wordStart = start;
        }
        if (isCased(c)) {
            previousCased = true;
        } else if (!isCaseIgnorable(c)) {
            previousCased = false;
        }
    }
    if (length > wordStart && !appendTransformed(out, text.data() + wordStart, size_t(length - wordStart), titlecase)) {
        return std::nullopt;
    }
    return out;
}

void changeCase(CFMutableStringRef theString, CFLocaleRef locale, Mapping mapping, const char* caller) {
    if (!isA(theString, kCFStringTypeID)) {
        reportMisuse("CFString: %s(): not a string", caller);
        return;
    }
    if (!isMutableString(theString)) {
        reportMisuse("CFString: %s(): Expect mutable string", caller);
        return;
    }
    std::optional<std::string> language = caseLanguage(locale, caller);
    if (!language) return;
    std::u16string text = unitsOf(theString);
    std::optional<std::u16string> result;
    if (mapping == Mapping::kCapitalize) {
        result = capitalizedText(text, *language);
    } else if (mapsASCIIAsDefault(*language) &&
               allASCII(reinterpret_cast<const UniChar*>(text.data()), CFIndex(text.size()))) {
        result = mappedASCII(text, mapping);
    } else {
        result = mappedText(text, mapping, *language);
    }
    if (!result || *result == text) return;
    replaceUnits(theString, CFRangeMake(0, CFIndex(text.size())), reinterpret_cast<const UniChar*>(result->data()),
                 CFIndex(result->size()), caller);
}

}  // namespace

void CFStringUppercase(CFMutableStringRef theString, CFLocaleRef locale) {
    changeCase(theString, locale, Mapping::kUppercase, "CFStringUppercase");
}

void CFStringLowercase(CFMutableStringRef theString, CFLocaleRef locale) {
    changeCase(theString, locale, Mapping::kLowercase, "CFStringLowercase");
}

void CFStringCapitalize(CFMutableStringRef theString, CFLocaleRef locale) {
    changeCase(theString, locale, Mapping::kCapitalize, "CFStringCapitalize");
}
