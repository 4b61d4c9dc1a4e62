#include <halvane/text/detail/TextComparison.h>

#include <halvane/text/detail/CurrentLocale.h>

#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/uchar.h>

#include <memory>

namespace halvane::detail {

namespace {

int signOf(int value) {
    return (value > 0) - (value < 0);
}

bool isDigit(char16_t unit) {
    return unit >= u'0' && unit <= u'9';
}

// Compares the runs of digits starting at i and j by value and moves both
// indices past them. Leading zeros do not count: "007" equals "7".
int compareDigitRuns(const icu::UnicodeString& first, int32_t& i, const icu::UnicodeString& second, int32_t& j) {
    auto skipZeros = [](const icu::UnicodeString& text, int32_t& index) {
        while (index < text.length() && text.charAt(index) == u'0') ++index;
    };
    auto runEnd = [](const icu::UnicodeString& text, int32_t index) {
        while (index < text.length() && isDigit(text.charAt(index))) ++index;
        return index;
    };
    skipZeros(first, i);
    skipZeros(second, j);
    int32_t firstEnd = runEnd(first, i), secondEnd = runEnd(second, j);
    int result = signOf((firstEnd - i) - (secondEnd - j));
    for (; result == 0 && i < firstEnd; ++i, ++j) result = signOf(int(first.charAt(i)) - int(second.charAt(j)));
    i = firstEnd;
    j = secondEnd;
    return result;
}

// Code-unit order, except that two runs of digits meet as numbers.
int compareNumerically(const icu::UnicodeString& first, const icu::UnicodeString& second) {
    int32_t i = 0, j = 0;
    while (i < first.length() && j < second.length()) {
        char16_t a = first.charAt(i), b = second.charAt(j);
        if (isDigit(a) && isDigit(b)) {
            if (int result = compareDigitRuns(first, i, second, j)) return result;
            continue;
        }
        if (a != b) return a < b ? -1 : 1;
        ++i;
        ++j;
    }
    return signOf(int(first.length() - i) - int(second.length() - j));
}

}  // namespace

int compareTexts(const icu::UnicodeString& first, const icu::UnicodeString& second, HVStringCompareOptions options) {
    bool caseInsensitive = (options & HVCaseInsensitiveSearch) != 0;
    if ((options & HVNumericSearch) != 0) {
        if (!caseInsensitive) return compareNumerically(first, second);
        icu::UnicodeString firstFolded(first), secondFolded(second);
        return compareNumerically(firstFolded.foldCase(U_FOLD_CASE_DEFAULT),
                                  secondFolded.foldCase(U_FOLD_CASE_DEFAULT));
    }
    if (caseInsensitive) return signOf(first.caseCompare(second, U_FOLD_CASE_DEFAULT));
    return signOf(first.compare(second));
}

int collateTexts(const icu::UnicodeString& first, const icu::UnicodeString& second, HVStringCompareOptions options) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Collator> collator(
        icu::Collator::createInstance(icu::Locale(currentLocaleIdentifier().c_str()), status));
    if (U_FAILURE(status) || collator == nullptr) return compareTexts(first, second, options);
    collator->setStrength((options & HVCaseInsensitiveSearch) != 0 ? icu::Collator::SECONDARY
                                                                   : icu::Collator::TERTIARY);
    if ((options & HVNumericSearch) != 0) collator->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
    UCollationResult result = collator->compare(first, second, status);
    if (U_FAILURE(status)) return compareTexts(first, second, options);
    return result == UCOL_LESS ? -1 : result == UCOL_GREATER ? 1 : 0;
}

}  // namespace halvane::detail
