// The order of two values, as the platform's comparators give it: negative
// when the first comes first, zero when neither does, positive otherwise.
#ifndef HALVANE_TEXT_HVCOMPARISONRESULT_H
#define HALVANE_TEXT_HVCOMPARISONRESULT_H

#include <CoreFoundation/CFBase.h>

typedef CFComparisonResult HVComparisonResult;

enum : CFComparisonResult {
    HVOrderedAscending = kCFCompareLessThan,
    HVOrderedSame = kCFCompareEqualTo,
    HVOrderedDescending = kCFCompareGreaterThan,
};

#endif  // HALVANE_TEXT_HVCOMPARISONRESULT_H
