// HVString: ordering by UTF-16 units, by case folding and by collation.
#include <halvane/text/HVString.h>

#include <halvane/text/detail/TextComparison.h>
#include <halvane/text/detail/UnicodeText.h>

using namespace halvane::detail;

namespace {

HVComparisonResult resultOf(int order) {
    return HVComparisonResult(order);
}

}  // namespace

HVComparisonResult HVString::Compare(const HVString& other) const {
    return resultOf(compareTexts(unicodeOf(*this), unicodeOf(other), 0));
}

HVComparisonResult HVString::CompareWithOptions(const HVString& other, HVStringCompareOptions options) const {
    // Only case folding and numeric ordering count here.
    return resultOf(
        compareTexts(unicodeOf(*this), unicodeOf(other), options & (HVCaseInsensitiveSearch | HVNumericSearch)));
}

HVComparisonResult HVString::CaseInsensitiveCompare(const HVString& other) const {
    return resultOf(compareTexts(unicodeOf(*this), unicodeOf(other), HVCaseInsensitiveSearch));
}

bool HVString::IsEqualToStringIgnoringCase(const HVString& other) const {
    return CaseInsensitiveCompare(other) == HVOrderedSame;
}

HVComparisonResult HVString::LocalizedCompare(const HVString& other) const {
    return resultOf(collateTexts(unicodeOf(*this), unicodeOf(other), 0));
}

HVComparisonResult HVString::LocalizedCaseInsensitiveCompare(const HVString& other) const {
    return resultOf(collateTexts(unicodeOf(*this), unicodeOf(other), HVCaseInsensitiveSearch));
}
