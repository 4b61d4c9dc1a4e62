// Searching: CFStringFind and its variants, prefixes and suffixes, and
// searching for characters of a set.
//
// Searches take no locale into account: CFStringFindWithOptionsAndLocale
// accepts one (NULL included) and searches exactly as
// CFStringFindWithOptions does; kCFCompareLocalized and
// kCFCompareNumerically are ignored.
#include "CFCharacterSetInternal.h"
#include "CFStringSearchInternal.h"

#include <unicode/utf16.h>

using namespace halvane::detail;

namespace {

bool areStrings(CFStringRef a, CFStringRef b, const char* caller) {
    if (isA(a, kCFStringTypeID) && isA(b, kCFStringTypeID)) return true;
    reportMisuse("CFString: %s(): not a string", caller);
    return false;
}

bool isRangeInside(CFStringRef s, CFRange range, const char* caller) {
    if (range.location >= 0 && range.length >= 0 && range.location <= s->length &&
        range.length <= s->length - range.location) {
        return true;
    }
    reportMisuse("CFString: %s(): range {%ld, %ld} out of bounds (length %ld)", caller, range.location, range.length,
                 s->length);
    return false;
}

bool findFirst(CFStringRef s, CFRange range, CFStringRef needle, CFStringCompareFlags options, CFRange* result) {
    bool found = false;
    forEachMatch(s, range, needle, options, [&](CFRange match) {
        found = true;
        if (result != nullptr) *result = match;
        return false;
    });
    return found;
}

// The first (last) member of set among the code points of [start, end) of
// units; a surrogate pair inside the range is one code point.
template <typename Unit>
bool findMember(const Unit* units, CFIndex start, CFIndex end, const CodePointSet& set, bool backwards, bool anchored,
                CFRange* result) {
    auto found = [result](CFIndex location, CFIndex length) {
        if (result != nullptr) *result = CFRange{location, length};
        return true;
    };
    if (!backwards) {
        for (CFIndex i = start; i < end;) {
            UniChar unit = units[i];
            if (U16_IS_LEAD(unit) && i + 1 < end && U16_IS_TRAIL(units[i + 1])) {
                if (set.contains(U16_GET_SUPPLEMENTARY(unit, units[i + 1]))) return found(i, 2);
                i += 2;
            } else {
                if (set.containsUnit(unit)) return found(i, 1);
                ++i;
            }
            if (anchored) return false;
        }
        return false;
    }
    for (CFIndex i = end; i > start;) {
        UniChar unit = units[i - 1];
        if (U16_IS_TRAIL(unit) && i - 1 > start && U16_IS_LEAD(units[i - 2])) {
            if (set.contains(U16_GET_SUPPLEMENTARY(units[i - 2], unit))) return found(i - 2, 2);
            i -= 2;
        } else {
            if (set.containsUnit(unit)) return found(i - 1, 1);
            --i;
        }
        if (anchored) return false;
    }
    return false;
}

}  // namespace

Boolean CFStringFindWithOptionsAndLocale(CFStringRef theString, CFStringRef stringToFind, CFRange rangeToSearch,
                                         CFStringCompareFlags searchOptions, CFLocaleRef, CFRange* result) {
    if (!areStrings(theString, stringToFind, "CFStringFindWithOptionsAndLocale") ||
        !isRangeInside(theString, rangeToSearch, "CFStringFindWithOptionsAndLocale")) {
        return false;
    }
    return findFirst(theString, rangeToSearch, stringToFind, searchOptions, result);
}

Boolean CFStringFindWithOptions(CFStringRef theString, CFStringRef stringToFind, CFRange rangeToSearch,
                                CFStringCompareFlags searchOptions, CFRange* result) {
    if (!areStrings(theString, stringToFind, "CFStringFindWithOptions") ||
        !isRangeInside(theString, rangeToSearch, "CFStringFindWithOptions")) {
        return false;
    }
    return findFirst(theString, rangeToSearch, stringToFind, searchOptions, result);
}

CFRange CFStringFind(CFStringRef theString, CFStringRef stringToFind, CFStringCompareFlags compareOptions) {
    CFRange result = {kCFNotFound, 0};
    if (areStrings(theString, stringToFind, "CFStringFind")) {
        findFirst(theString, CFRange{0, theString->length}, stringToFind, compareOptions, &result);
    }
    return result;
}

Boolean CFStringHasPrefix(CFStringRef theString, CFStringRef prefix) {
    if (!areStrings(theString, prefix, "CFStringHasPrefix")) return false;
    return findFirst(theString, CFRange{0, theString->length}, prefix, kCFCompareAnchored, nullptr);
}

Boolean CFStringHasSuffix(CFStringRef theString, CFStringRef suffix) {
    if (!areStrings(theString, suffix, "CFStringHasSuffix")) return false;
    return findFirst(theString, CFRange{0, theString->length}, suffix, kCFCompareAnchored | kCFCompareBackwards,
                     nullptr);
}

Boolean CFStringFindCharacterFromSet(CFStringRef theString, CFCharacterSetRef theSet, CFRange rangeToSearch,
                                     CFStringCompareFlags searchOptions, CFRange* result) {
    if (!isA(theString, kCFStringTypeID) || !isA(theSet, kCFCharacterSetTypeID)) {
        reportMisuse("CFString: CFStringFindCharacterFromSet(): %s",
                     isA(theString, kCFStringTypeID) ? "not a character set" : "not a string");
        return false;
    }
    if (rangeToSearch.location < 0 || rangeToSearch.length < 0) {
        isRangeInside(theString, rangeToSearch, "CFStringFindCharacterFromSet");
        return false;
    }
    // A range reaching past the end finds nothing, as it always has.
    if (rangeToSearch.length == 0 || rangeToSearch.location > theString->length ||
        rangeToSearch.length > theString->length - rangeToSearch.location) {
        return false;
    }
    bool backwards = (searchOptions & kCFCompareBackwards) != 0;
    bool anchored = (searchOptions & kCFCompareAnchored) != 0;
    CFIndex start = rangeToSearch.location, end = rangeToSearch.location + rangeToSearch.length;
    return withUnits(theString, [&](auto* units, CFIndex) {
        return findMember(units, start, end, theSet->members, backwards, anchored, result);
    });
}
