// Locale identifiers and the parts of CFLocale that calendars build on.
#ifndef HALVANE_CF_LOCALE_INTERNAL_H
#define HALVANE_CF_LOCALE_INTERNAL_H

#include "CFInternal.h"

#include <CoreFoundation/CFLocale.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace halvane::detail {

// A locale identifier taken apart: "zh-Hant_TW_POSIX@calendar=roc" has
// language "zh", script "Hant", region "TW", variant "POSIX" and one
// keyword. Each subtag remembers the separator written before it.
struct LocaleIdentifierParts {
    std::string language;
    char scriptSeparator = '_';
    std::string script;
    char regionSeparator = '_';
    std::string region;
    std::vector<std::pair<char, std::string>> variants;
    std::vector<std::pair<std::string, std::string>> keywords;
};

LocaleIdentifierParts splitLocaleIdentifier(std::string_view identifier);

// The canonical form of an identifier (see
// CFLocaleCreateCanonicalLocaleIdentifierFromString); nothing for text that
// is not printable ASCII.
std::optional<std::string> canonicalLocaleIdentifier(std::string_view identifier);

// The identifier as ICU reads it ("zh-Hant_TW" -> "zh_Hant_TW").
std::string icuLocaleID(CFLocaleRef locale);

// The calendar identifier constant whose text is name, or NULL.
CFCalendarIdentifier knownCalendarIdentifier(std::string_view name);

// The calendar a locale uses: its "calendar" keyword, else the one ICU
// prefers for it, else Gregorian.
CFCalendarIdentifier calendarIdentifierOf(CFLocaleRef locale);

}  // namespace halvane::detail

#endif  // HALVANE_CF_LOCALE_INTERNAL_H
