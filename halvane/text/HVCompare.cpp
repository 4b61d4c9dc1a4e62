#include <halvane/text/HVCompare.h>

#include <halvane/text/HVString.h>
#include <halvane/text/detail/TextComparison.h>
#include <halvane/text/detail/UnicodeText.h>
#include <halvane/values/HVNumber.h>

using namespace halvane::detail;

namespace {

HVStringCompareOptions stringOptions(const void* context) {
    return context != nullptr ? *static_cast<const HVStringCompareOptions*>(context)
                              : HVStringCompareOptions(HVLiteralSearch);
}

template <typename T>
CFComparisonResult orderOf(T first, T second) {
    if (first < second) return kCFCompareLessThan;
    if (second < first) return kCFCompareGreaterThan;
    return kCFCompareEqualTo;
}

}  // namespace

CFComparisonResult HVCompare::HVCompareStrings(const void* first, const void* second, void* context) {
    // Both strings are held while they are compared.
    const HVString a(first), b(second);
    return CFComparisonResult(compareTexts(unicodeOf(a), unicodeOf(b), stringOptions(context)));
}

CFComparisonResult HVCompare::HVLocalizedCompareStrings(const void* first, const void* second, void* context) {
    const HVString a(first), b(second);
    return CFComparisonResult(collateTexts(unicodeOf(a), unicodeOf(b), stringOptions(context)));
}

CFComparisonResult HVCompare::HVCompareNumbers(const void* first, const void* second, void* context) {
    const HVNumber a(first), b(second);
    long long selector = context != nullptr ? *static_cast<const long long*>(context) : 16;
    switch (selector) {
        case 1:
        case 2:
        case 4:
        case 8:
            return orderOf(a.IntegerValue(), b.IntegerValue());
        default:
            return orderOf(a.DoubleValue(), b.DoubleValue());
    }
}
