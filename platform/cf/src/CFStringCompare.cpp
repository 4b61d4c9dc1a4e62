// CFStringCompare and CFStringCompareWithOptions.
//
// Literal comparison, ASCII case-insensitivity and numeric digit runs work
// on the stored units directly, without ICU and without allocating. Only
// non-ASCII text under case-insensitivity, and the flags that need Unicode
// data (nonliteral, diacritic- and width-insensitive, localized), transform
// copies of the text through ICU first.
#include "CFStringFolding.h"

#include <unicode/ucol.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <cstring>
#include <type_traits>

using namespace halvane::detail;

namespace {

CFComparisonResult resultOf(long difference) {
    return difference < 0 ? kCFCompareLessThan : difference > 0 ? kCFCompareGreaterThan : kCFCompareEqualTo;
}

bool isDigit(uint32_t u) {
    return u >= '0' && u <= '9';
}

// Outcome of comparing two unit sequences.
struct Scan {
    CFComparisonResult result = kCFCompareEqualTo;
    // Case-insensitive comparison met two different units not both ASCII:
    // the rest, from a[i] and b[j] on, needs Unicode case folding.
    bool needsFolding = false;
    CFIndex i = 0, j = 0;
    // First pair of digit runs of equal value but different lengths (the
    // longer one is greater), for forced ordering.
    CFComparisonResult digitRunOrder = kCFCompareEqualTo;
};

// Length of the common prefix of identical units, eight bytes at a time
// where both sides have the same storage.
template <typename A, typename B>
CFIndex commonPrefix(const A* a, const B* b, CFIndex length) {
    CFIndex i = 0;
    if constexpr (std::is_same_v<A, B>) {
        constexpr CFIndex kStep = CFIndex(8 / sizeof(A));
        for (; i + kStep <= length; i += kStep) {
            uint64_t x, y;
            std::memcpy(&x, a + i, 8);
            std::memcpy(&y, b + i, 8);
            if (x != y) break;
        }
    }
    while (i < length && UniChar(a[i]) == UniChar(b[i])) ++i;
    return i;
}

// Code-unit order; with foldASCII, ASCII letters compare lowercased (so "_"
// sorts before letters); with numeric, runs of ASCII digits compare by
// value, as unsigned 64-bit numbers that wrap on overflow.
template <bool foldASCII, bool numeric, typename A, typename B>
Scan scan(const A* a, CFIndex aLength, const B* b, CFIndex bLength) {
    Scan outcome;
    CFIndex i = 0, j = 0;
    if constexpr (!numeric) {
        // Identical units are equal under every option here; a digit run
        // must be read whole, so numeric comparison cannot skip them.
        i = j = commonPrefix(a, b, std::min(aLength, bLength));
    }
    while (i < aLength && j < bLength) {
        uint32_t ca = a[i], cb = b[j];
        if (numeric && isDigit(ca) && isDigit(cb)) {
            uint64_t va = 0, vb = 0;
            CFIndex aStart = i, bStart = j;
            for (; i < aLength && isDigit(a[i]); ++i) va = va * 10 + (a[i] - '0');
            for (; j < bLength && isDigit(b[j]); ++j) vb = vb * 10 + (b[j] - '0');
            if (va != vb) {
                outcome.result = va < vb ? kCFCompareLessThan : kCFCompareGreaterThan;
                return outcome;
            }
            if (outcome.digitRunOrder == kCFCompareEqualTo)
                outcome.digitRunOrder = resultOf((i - aStart) - (j - bStart));
            continue;
        }
        if (ca != cb) {
            if constexpr (foldASCII) {
                if (ca >= 0x80 || cb >= 0x80) {
                    // Folding maps whole characters: restart at the high
                    // surrogate both sides share.
                    if (i > 0 && j > 0 && U16_IS_LEAD(a[i - 1]) && a[i - 1] == b[j - 1]) {
                        --i;
                        --j;
                    }
                    outcome.needsFolding = true;
                    outcome.i = i;
                    outcome.j = j;
                    return outcome;
                }
                ca = lowercasedASCII(UniChar(ca));
                cb = lowercasedASCII(UniChar(cb));
            }
            if (ca != cb) {
                outcome.result = ca < cb ? kCFCompareLessThan : kCFCompareGreaterThan;
                return outcome;
            }
        }
        ++i;
        ++j;
    }
    outcome.result = resultOf(long(aLength - i) - long(bLength - j));
    return outcome;
}

template <typename A, typename B>
Scan scan(const A* a, CFIndex aLength, const B* b, CFIndex bLength, bool foldASCII, bool numeric) {
    if (foldASCII) {
        return numeric ? scan<true, true>(a, aLength, b, bLength) : scan<true, false>(a, aLength, b, bLength);
    }
    return numeric ? scan<false, true>(a, aLength, b, bLength) : scan<false, false>(a, aLength, b, bLength);
}

// The units of a range, in a buffer of their own.
std::u16string unitsInRange(CFStringRef s, CFIndex location, CFIndex length) {
    std::u16string units(size_t(length), u'\0');
    copyUnits(s, location, length, units.data());
    return units;
}

// One collator per thread, reopened when the current locale changes.
class CollatorCache {
public:
    ~CollatorCache() {
        if (collator_ != nullptr) ucol_close(collator_);
    }
    UCollator* collatorFor(const std::string& locale) {
        if (collator_ == nullptr || locale != locale_) {
            if (collator_ != nullptr) ucol_close(collator_);
            UErrorCode status = U_ZERO_ERROR;
            collator_ = ucol_open(locale.c_str(), &status);
            if (U_FAILURE(status)) collator_ = nullptr;
            locale_ = locale;
        }
        return collator_;
    }

private:
    UCollator* collator_ = nullptr;
    std::string locale_;
};

CFComparisonResult collate(const std::u16string& a, const std::u16string& b, CFStringCompareFlags options) {
    thread_local CollatorCache cache;
    UCollator* collator = cache.collatorFor(currentLocaleIdentifier(LocaleCategory::kCollation));
    if (collator == nullptr) return scan(a.data(), CFIndex(a.size()), b.data(), CFIndex(b.size()), false, false).result;
    bool caseInsensitive = options & kCFCompareCaseInsensitive;
    bool diacriticInsensitive = options & kCFCompareDiacriticInsensitive;
    UCollationStrength strength = UCOL_TERTIARY;
    if (diacriticInsensitive) {
        strength = UCOL_PRIMARY;
    } else if (caseInsensitive) {
        strength = UCOL_SECONDARY;
    }
    UErrorCode status = U_ZERO_ERROR;
    ucol_setStrength(collator, strength);
    // Accents alone are ignored at primary strength; case is kept apart by
    // the case level unless case-insensitivity was asked for too.
    ucol_setAttribute(collator, UCOL_CASE_LEVEL, diacriticInsensitive && !caseInsensitive ? UCOL_ON : UCOL_OFF,
                      &status);
    ucol_setAttribute(collator, UCOL_NUMERIC_COLLATION, (options & kCFCompareNumerically) ? UCOL_ON : UCOL_OFF,
                      &status);
    ucol_setAttribute(collator, UCOL_NORMALIZATION_MODE, (options & kCFCompareNonliteral) ? UCOL_ON : UCOL_OFF,
                      &status);
    switch (ucol_strcoll(collator, a.data(), int32_t(a.size()), b.data(), int32_t(b.size()))) {
        case UCOL_LESS:
            return kCFCompareLessThan;
        case UCOL_GREATER:
            return kCFCompareGreaterThan;
        default:
            return kCFCompareEqualTo;
    }
}

template <typename A, typename B>
CFComparisonResult literalOrder(const A* a, CFIndex aLength, const B* b, CFIndex bLength) {
    return scan(a, aLength, b, bLength, false, false).result;
}

CFComparisonResult compareRange(CFStringRef s1, CFRange range, CFStringRef s2, CFStringCompareFlags options) {
    bool caseInsensitive = options & kCFCompareCaseInsensitive;
    bool numeric = options & kCFCompareNumerically;
    CFComparisonResult result = kCFCompareEqualTo;
    CFComparisonResult digitRunOrder = kCFCompareEqualTo;
    if ((options & kUnicodeCompareFlags) == 0) {
        Scan outcome = withUnits(s1, [&](auto* a, CFIndex) {
            return withUnits(s2, [&](auto* b, CFIndex bLength) {
                return scan(a + range.location, range.length, b, bLength, caseInsensitive, numeric);
            });
        });
        result = outcome.result;
        digitRunOrder = outcome.digitRunOrder;
        if (outcome.needsFolding) {
            std::u16string a = caseFolded(unitsInRange(s1, range.location + outcome.i, range.length - outcome.i));
            std::u16string b = caseFolded(unitsInRange(s2, outcome.j, s2->length - outcome.j));
            Scan rest = scan(a.data(), CFIndex(a.size()), b.data(), CFIndex(b.size()), false, numeric);
            result = rest.result;
            if (digitRunOrder == kCFCompareEqualTo) digitRunOrder = rest.digitRunOrder;
        }
    } else {
        std::u16string a = unitsInRange(s1, range.location, range.length);
        std::u16string b = unitsInRange(s2, 0, s2->length);
        if (options & kCFCompareWidthInsensitive) {
            a = widthFolded(a);
            b = widthFolded(b);
        }
        if (options & kCFCompareLocalized) {
            result = collate(a, b, options);
        } else {
            a = comparableText(std::move(a), options & ~kCFCompareWidthInsensitive);
            b = comparableText(std::move(b), options & ~kCFCompareWidthInsensitive);
            Scan outcome = scan(a.data(), CFIndex(a.size()), b.data(), CFIndex(b.size()), false, numeric);
            result = outcome.result;
            digitRunOrder = outcome.digitRunOrder;
        }
    }
    if (result != kCFCompareEqualTo || !(options & kCFCompareForcedOrdering)) return result;
    // Equal only under the options: a longer digit run, else the literal
    // order, decides, so that sorting is deterministic.
    if (digitRunOrder != kCFCompareEqualTo) return digitRunOrder;
    return withUnits(s1, [&](auto* a, CFIndex) {
        return withUnits(
            s2, [&](auto* b, CFIndex bLength) { return literalOrder(a + range.location, range.length, b, bLength); });
    });
}

}  // namespace

CFComparisonResult CFStringCompareWithOptions(CFStringRef theString1, CFStringRef theString2, CFRange rangeToCompare,
                                              CFStringCompareFlags compareOptions) {
    if (!isA(theString1, kCFStringTypeID) || !isA(theString2, kCFStringTypeID)) {
        reportMisuse("CFString: CFStringCompareWithOptions(): not a string");
        return kCFCompareEqualTo;
    }
    if (rangeToCompare.location < 0 || rangeToCompare.length < 0 || rangeToCompare.location > theString1->length ||
        rangeToCompare.length > theString1->length - rangeToCompare.location) {
        reportMisuse("CFString: CFStringCompareWithOptions(): range {%ld, %ld} out of bounds (length %ld)",
                     rangeToCompare.location, rangeToCompare.length, theString1->length);
        return kCFCompareEqualTo;
    }
    return compareRange(theString1, rangeToCompare, theString2, compareOptions);
}

CFComparisonResult CFStringCompare(CFStringRef theString1, CFStringRef theString2,
                                   CFStringCompareFlags compareOptions) {
    if (!isA(theString1, kCFStringTypeID) || !isA(theString2, kCFStringTypeID)) {
        reportMisuse("CFString: CFStringCompare(): not a string");
        return kCFCompareEqualTo;
    }
    return compareRange(theString1, CFRangeMake(0, theString1->length), theString2, compareOptions);
}
