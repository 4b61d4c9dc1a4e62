// Changing mutable strings: insertion, deletion, replacement, finding and
// replacing, trimming. Every change is one call of replaceUnits.
#include "CFCharacterSetInternal.h"
#include "CFStringSearchInternal.h"

#include <algorithm>
#include <string>
#include <vector>

using namespace halvane::detail;

namespace {

// The receiver of a change, checked before anything is computed for it.
bool isMutableStringArgument(CFMutableStringRef s, const char* caller) {
    if (!isA(s, kCFStringTypeID)) {
        reportMisuse("CFString: %s(): not a string", caller);
        return false;
    }
    if (!isMutableString(s)) {
        reportMisuse("CFString: %s(): Expect mutable string", caller);
        return false;
    }
    return true;
}

bool isStringArgument(CFStringRef s, const char* caller) {
    if (isA(s, kCFStringTypeID)) return true;
    reportMisuse("CFString: %s(): not a string", caller);
    return false;
}

// Replaces range of s with the units of replacement. replaceUnits copes
// with a replacement that is s itself; the ASCII form is widened first.
void replaceWithString(CFMutableStringRef s, CFRange range, CFStringRef replacement, const char* caller) {
    if (isASCIIString(replacement)) {
        std::u16string widened = unitsOf(replacement);
        replaceUnits(s, range, widened.data(), CFIndex(widened.size()), caller);
    } else {
        replaceUnits(s, range, replacement->contents.units, replacement->length, caller);
    }
}

bool hasUnitsAt(CFStringRef s, CFIndex location, const std::u16string& units) {
    const UniChar* text = s->contents.units + location;  // mutable strings hold UTF-16
    return std::equal(units.begin(), units.end(), text);
}

}  // namespace

void CFStringInsert(CFMutableStringRef str, CFIndex idx, CFStringRef insertedStr) {
    if (!isMutableStringArgument(str, "CFStringInsert") || !isStringArgument(insertedStr, "CFStringInsert")) return;
    replaceWithString(str, CFRange{idx, 0}, insertedStr, "CFStringInsert");
}

void CFStringDelete(CFMutableStringRef theString, CFRange range) {
    replaceUnits(theString, range, nullptr, 0, "CFStringDelete");
}

void CFStringReplace(CFMutableStringRef theString, CFRange range, CFStringRef replacement) {
    if (!isMutableStringArgument(theString, "CFStringReplace") || !isStringArgument(replacement, "CFStringReplace")) {
        return;
    }
    replaceWithString(theString, range, replacement, "CFStringReplace");
}

void CFStringReplaceAll(CFMutableStringRef theString, CFStringRef replacement) {
    if (!isMutableStringArgument(theString, "CFStringReplaceAll") ||
        !isStringArgument(replacement, "CFStringReplaceAll")) {
        return;
    }
    replaceWithString(theString, CFRange{0, theString->length}, replacement, "CFStringReplaceAll");
}

CFIndex CFStringFindAndReplace(CFMutableStringRef theString, CFStringRef stringToFind, CFStringRef replacementString,
                               CFRange rangeToSearch, CFStringCompareFlags compareOptions) {
    constexpr const char* kCaller = "CFStringFindAndReplace";
    if (!isMutableStringArgument(theString, kCaller) || !isStringArgument(stringToFind, kCaller) ||
        !isStringArgument(replacementString, kCaller)) {
        return 0;
    }
    if (rangeToSearch.location < 0 || rangeToSearch.length < 0 || rangeToSearch.location > theString->length ||
        rangeToSearch.length > theString->length - rangeToSearch.location) {
        reportMisuse("CFString: %s(): range {%ld, %ld} out of bounds (length %ld)", kCaller, rangeToSearch.location,
                     rangeToSearch.length, theString->length);
        return 0;
    }
    std::vector<CFRange> matches;
    forEachMatch(theString, rangeToSearch, stringToFind, compareOptions, [&matches](CFRange match) {
        matches.push_back(match);
        return true;
    });
    if (matches.empty()) return 0;
    if (compareOptions & kCFCompareBackwards) std::reverse(matches.begin(), matches.end());
    // The whole searched range is rebuilt once, so that many replacements
    // cost one splice instead of one each.
    std::u16string replacement = unitsOf(replacementString);
    std::u16string rebuilt;
    CFIndex at = matches.front().location;
    CFIndex end = matches.back().location + matches.back().length;
    rebuilt.reserve(size_t(end - at) + matches.size() * replacement.size());
    for (const CFRange& match : matches) {
        rebuilt.append(theString->contents.units + at, size_t(match.location - at));
        rebuilt += replacement;
        at = match.location + match.length;
    }
    replaceUnits(theString, CFRange{matches.front().location, end - matches.front().location}, rebuilt.data(),
                 CFIndex(rebuilt.size()), kCaller);
    return CFIndex(matches.size());
}

void CFStringTrim(CFMutableStringRef theString, CFStringRef trimString) {
    if (!isMutableStringArgument(theString, "CFStringTrim") || !isStringArgument(trimString, "CFStringTrim")) return;
    std::u16string trim = unitsOf(trimString);
    CFIndex size = CFIndex(trim.size());
    if (size == 0) return;
    CFIndex start = 0, end = theString->length;
    while (end - start >= size && hasUnitsAt(theString, start, trim)) start += size;
    while (end - start >= size && hasUnitsAt(theString, end - size, trim)) end -= size;
    if (end < theString->length)
        replaceUnits(theString, CFRange{end, theString->length - end}, nullptr, 0, "CFStringTrim");
    if (start > 0) replaceUnits(theString, CFRange{0, start}, nullptr, 0, "CFStringTrim");
}

void CFStringTrimWhitespace(CFMutableStringRef theString) {
    if (!isMutableStringArgument(theString, "CFStringTrimWhitespace")) return;
    const CodePointSet& whitespace = predefinedCharacterSet(kCFCharacterSetWhitespaceAndNewline)->members;
    const UniChar* units = theString->contents.units;
    CFIndex start = 0, end = theString->length;
    while (start < end && whitespace.containsUnit(units[start])) ++start;
    while (end > start && whitespace.containsUnit(units[end - 1])) --end;
    if (end < theString->length) {
        replaceUnits(theString, CFRange{end, theString->length - end}, nullptr, 0, "CFStringTrimWhitespace");
    }
    if (start > 0) replaceUnits(theString, CFRange{0, start}, nullptr, 0, "CFStringTrimWhitespace");
}
