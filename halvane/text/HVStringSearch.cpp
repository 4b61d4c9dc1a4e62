// HVString: searching for strings and characters.
#include <halvane/text/HVString.h>

#include <halvane/text/HVCharacterSet.h>

#include <CoreFoundation/CoreFoundation.h>

namespace {

CFStringRef asString(const HVString& text) {
    return static_cast<CFStringRef>(text.Ref());
}

}  // namespace

HVRange HVString::RangeOfString(const HVString& target) const {
    return RangeOfStringWithOptionsInRange(target, 0, HVRange(0, Length()));
}

HVRange HVString::RangeOfStringWithOptions(const HVString& target, HVStringCompareOptions options) const {
    return RangeOfStringWithOptionsInRange(target, options, HVRange(0, Length()));
}

HVRange HVString::RangeOfStringInRange(const HVString& target, const HVRange& range) const {
    return RangeOfStringWithOptionsInRange(target, 0, range);
}

HVRange HVString::RangeOfStringWithOptionsInRange(const HVString& target, HVStringCompareOptions options,
                                                  const HVRange& range) const {
    if (IsEmpty() || target.IsEmpty()) return HVRange();
    CFRange found;
    bool isFound;
    if ((options & HVCaseInsensitiveSearch) != 0) {
        // Letter case is folded by upper-casing both texts, not by the
        // platform's case-insensitive search: upper-casing keeps every
        // index, so the match found is where it is in the receiver.
        HVString text = UppercaseString();
        HVString sought = target.UppercaseString();
        isFound = CFStringFindWithOptions(
            asString(text), asString(sought), CFRange(range),
            CFStringCompareFlags(options & ~HVStringCompareOptions(HVCaseInsensitiveSearch)), &found);
    } else {
        isFound = CFStringFindWithOptions(asString(*this), asString(target), CFRange(range),
                                          CFStringCompareFlags(options), &found);
    }
    return isFound ? HVRange(found) : HVRange();
}

HVRange HVString::RangeOfCharacterFromSet(const HVCharacterSet& set) const {
    return RangeOfCharacterFromSetWithOptionsInRange(set, 0, HVRange(0, Length()));
}

HVRange HVString::RangeOfCharacterFromSetWithOptions(const HVCharacterSet& set, HVStringCompareOptions options) const {
    return RangeOfCharacterFromSetWithOptionsInRange(set, options, HVRange(0, Length()));
}

HVRange HVString::RangeOfCharacterFromSetInRange(const HVCharacterSet& set, const HVRange& range) const {
    return RangeOfCharacterFromSetWithOptionsInRange(set, 0, range);
}

HVRange HVString::RangeOfCharacterFromSetWithOptionsInRange(const HVCharacterSet& set, HVStringCompareOptions options,
                                                            const HVRange& range) const {
    if (IsEmpty() || set.IsEmpty()) return HVRange();
    CFRange found;
    if (!CFStringFindCharacterFromSet(asString(*this), static_cast<CFCharacterSetRef>(set.Ref()), CFRange(range),
                                      CFStringCompareFlags(options), &found)) {
        return HVRange();
    }
    return HVRange(found);
}

bool HVString::HasPrefix(const HVString& prefix) const {
    if (IsEmpty() || prefix.IsEmpty()) return false;
    return CFStringHasPrefix(asString(*this), asString(prefix));
}

bool HVString::HasSuffix(const HVString& suffix) const {
    if (IsEmpty() || suffix.IsEmpty()) return false;
    return CFStringHasSuffix(asString(*this), asString(suffix));
}
