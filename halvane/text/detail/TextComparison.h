// The comparisons behind HVString's compare family and the string
// comparators: code-unit order, case folding, digit runs by value, and
// collation for the current locale.
#ifndef HALVANE_TEXT_DETAIL_TEXTCOMPARISON_H
#define HALVANE_TEXT_DETAIL_TEXTCOMPARISON_H

#include <halvane/text/HVCompare.h>

#include <unicode/unistr.h>

namespace halvane::detail {

// -1, 0 or 1. HVCaseInsensitiveSearch compares the default case foldings,
// HVNumericSearch compares runs of ASCII digits by value; no other option
// counts.
int compareTexts(const icu::UnicodeString& first, const icu::UnicodeString& second, HVStringCompareOptions options);

// -1, 0 or 1 by a collator for the current locale made for this one
// comparison: tertiary strength, secondary with HVCaseInsensitiveSearch,
// numeric ordering with HVNumericSearch. Without a collator (no collation
// data), as compareTexts.
int collateTexts(const icu::UnicodeString& first, const icu::UnicodeString& second, HVStringCompareOptions options);

}  // namespace halvane::detail

#endif  // HALVANE_TEXT_DETAIL_TEXTCOMPARISON_H
