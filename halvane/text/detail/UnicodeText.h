// The text of a string as ICU and as plain UTF-16 units, for the
// operations that work on the units themselves.
#ifndef HALVANE_TEXT_DETAIL_UNICODETEXT_H
#define HALVANE_TEXT_DETAIL_UNICODETEXT_H

#include <CoreFoundation/CFString.h>
#include <unicode/unistr.h>

#include <string>

class HVString;

namespace halvane::detail {

// Empty for a null string.
icu::UnicodeString unicodeOf(const HVString& text);
std::u16string unitsOf(CFStringRef string);

// A new string with the units; NULL when the platform refuses them.
CFStringRef createStringWithUnits(const char16_t* units, size_t length);

}  // namespace halvane::detail

#endif  // HALVANE_TEXT_DETAIL_UNICODETEXT_H
