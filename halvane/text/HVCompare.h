// Comparison results, the options of searches and comparisons, and the
// comparators that sorting hands to CoreFoundation.
#ifndef HALVANE_TEXT_HVCOMPARE_H
#define HALVANE_TEXT_HVCOMPARE_H

#include <halvane/core/HVExport.h>
#include <halvane/text/HVComparisonResult.h>

#include <CoreFoundation/CFBase.h>

// Flags of the searches and comparisons. Bit 1 folds case, bit 4 searches
// backwards, bit 64 compares runs of digits by value; the other bits are
// handed to CoreFoundation as its compare flags. A plain integer type, so
// that flags combine with "|".
typedef unsigned long long HVStringCompareOptions;
enum : HVStringCompareOptions {
    HVCaseInsensitiveSearch = 1,
    HVLiteralSearch = 2,
    HVBackwardsSearch = 4,
    HVAnchoredSearch = 8,
    HVNumericSearch = 64,
    HVDiacriticInsensitiveSearch = 128,
    HVWidthInsensitiveSearch = 256,
    HVForcedOrderingSearch = 512,
};

// Comparators with the platform's shape, for CFArraySortValues and the
// sorting of arrays. Each answers -1, 0 or 1.
class HV_EXPORT HVCompare {
public:
    // Two strings; the context, if not NULL, points to HVStringCompareOptions
    // (HVLiteralSearch without one). HVCaseInsensitiveSearch folds case,
    // HVNumericSearch compares runs of ASCII digits by value.
    static CFComparisonResult HVCompareStrings(const void* first, const void* second, void* context);
    // The same through a collator for the current locale.
    static CFComparisonResult HVLocalizedCompareStrings(const void* first, const void* second, void* context);
    // Two numbers; the context, if not NULL, points to a signed 64-bit
    // selector (16 without one): 1, 2, 4 and 8 compare IntegerValue(), any
    // other selector DoubleValue().
    static CFComparisonResult HVCompareNumbers(const void* first, const void* second, void* context);
};

#endif  // HALVANE_TEXT_HVCOMPARE_H
