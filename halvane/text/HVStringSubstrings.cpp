// HVString: substrings, splitting, replacing and trimming.
#include <halvane/text/HVString.h>

#include <halvane/collections/HVArray.h>
#include <halvane/errors/HVException.h>
#include <halvane/text/HVCharacterSet.h>

#include <CoreFoundation/CoreFoundation.h>

namespace {

// The platform string of a text; a null text reads as the empty string.
CFStringRef textOf(const HVString& text) {
    return text.Ref() != nullptr ? static_cast<CFStringRef>(text.Ref()) : CFSTR("");
}

HVString adoptedString(CFStringRef created) {
    HVString text;
    if (created != nullptr) text.AssignAndTakeOwnership(created);
    return text;
}

HVArray adoptedArray(CFArrayRef created) {
    HVArray array;
    if (created != nullptr) array.AssignAndTakeOwnership(created);
    return array;
}

[[noreturn]] void throwSubstringOutOfRange() {
    throw HVException::ExceptionWithNameAndReason(
        HVExceptionName::RangeException(),
        "Exception - Range Out of Range - Range requested for substring was not within the range of the string");
}

}  // namespace

HVString HVString::SubstringWithRange(HVRange range) const {
    if (IsEmpty() || range.Length() == 0 || range.Location() == HVNotFound) return HVString();
    // The range must lie inside the text: one that starts at or reaches past
    // the end is refused, never clamped.
    unsigned long long length = Length();
    if (range.Location() >= length || range.Length() > length - range.Location()) throwSubstringOutOfRange();
    return adoptedString(CFStringCreateWithSubstring(kCFAllocatorDefault, textOf(*this), CFRange(range)));
}

HVString HVString::SubstringToIndex(unsigned long long index) const {
    return SubstringWithRange(HVRange(0, index));
}

HVString HVString::SubstringFromIndex(unsigned long long index) const {
    unsigned long long length = Length();
    if (!IsEmpty() && index > length) throwSubstringOutOfRange();
    return SubstringWithRange(HVRange(index, length - index));
}

HVArray HVString::ComponentsSeparatedByString(const HVString& separator) const {
    return adoptedArray(CFStringCreateArrayBySeparatingStrings(kCFAllocatorDefault, textOf(*this), textOf(separator)));
}

HVArray HVString::ComponentsSeparatedByCharactersInSet(const HVCharacterSet& set) const {
    CFStringRef text = textOf(*this);
    CFMutableArrayRef pieces = CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks);
    const CFIndex length = CFStringGetLength(text);
    auto separators = static_cast<CFCharacterSetRef>(set.Ref());
    CFIndex start = 0;
    CFRange found;
    while (!set.IsEmpty() && start < length &&
           CFStringFindCharacterFromSet(text, separators, CFRangeMake(start, length - start), 0, &found)) {
        CFStringRef piece =
            CFStringCreateWithSubstring(kCFAllocatorDefault, text, CFRangeMake(start, found.location - start));
        CFArrayAppendValue(pieces, piece);
        CFRelease(piece);
        start = found.location + found.length;
    }
    if (start == 0) {
        // No separator: the text itself is the only piece.
        CFArrayAppendValue(pieces, text);
    } else {
        CFStringRef piece = CFStringCreateWithSubstring(kCFAllocatorDefault, text, CFRangeMake(start, length - start));
        CFArrayAppendValue(pieces, piece);
        CFRelease(piece);
    }
    return adoptedArray(pieces);
}

HVString HVString::StringByReplacingOccurrencesOfStringWithString(const HVString& target,
                                                                  const HVString& replacement) const {
    if (IsEmpty() || target.IsEmpty()) return *this;
    CFMutableStringRef edited = CFStringCreateMutableCopy(kCFAllocatorDefault, 0, textOf(*this));
    CFIndex replaced = CFStringFindAndReplace(edited, textOf(target), textOf(replacement),
                                              CFRangeMake(0, CFStringGetLength(edited)), 0);
    HVString result = replaced == 0 ? *this : adoptedString(CFStringCreateCopy(kCFAllocatorDefault, edited));
    CFRelease(edited);
    return result;
}

HVString HVString::StringByTrimmingCharactersInSet(const HVCharacterSet& set) const {
    if (IsEmpty() || set.IsEmpty()) return *this;
    CFStringRef text = textOf(*this);
    if (set == HVCharacterSet::WhitespaceCharacterSet()) {
        // The platform's trimming, which takes every kind of space and line
        // end, not only the set's two characters. Kept so: callers trim
        // line ends with this set.
        CFMutableStringRef trimmed = CFStringCreateMutableCopy(kCFAllocatorDefault, 0, text);
        CFStringTrimWhitespace(trimmed);
        HVString result = adoptedString(CFStringCreateCopy(kCFAllocatorDefault, trimmed));
        CFRelease(trimmed);
        return result;
    }
    auto members = static_cast<CFCharacterSetRef>(set.Ref());
    CFIndex start = 0, end = CFStringGetLength(text);
    while (start < end && CFCharacterSetIsCharacterMember(members, CFStringGetCharacterAtIndex(text, start))) ++start;
    while (end > start && CFCharacterSetIsCharacterMember(members, CFStringGetCharacterAtIndex(text, end - 1))) --end;
    if (start == 0 && end == CFStringGetLength(text)) return *this;
    return adoptedString(CFStringCreateWithSubstring(kCFAllocatorDefault, text, CFRangeMake(start, end - start)));
}
