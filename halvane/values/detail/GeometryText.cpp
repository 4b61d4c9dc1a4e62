#include <halvane/values/detail/GeometryText.h>

#include <CoreFoundation/CoreFoundation.h>

namespace halvane::detail {

namespace {

CFStringRef asString(const HVString& text) {
    return static_cast<CFStringRef>(text.Ref());
}

HVString withoutBraces(const HVString& text) {
    if (text.IsNull()) return HVString();
    CFMutableStringRef copy = CFStringCreateMutableCopy(kCFAllocatorDefault, 0, asString(text));
    if (copy == nullptr) return HVString();
    for (CFStringRef brace : {CFSTR("}"), CFSTR("{")}) {
        CFStringFindAndReplace(copy, brace, CFSTR(""), CFRangeMake(0, CFStringGetLength(copy)), 0);
    }
    HVString result;
    result.AssignAndTakeOwnership(copy);
    return result;
}

double numberAt(const std::vector<HVString>& parts, size_t index) {
    if (index >= parts.size()) return 0.0;
    return CFStringGetDoubleValue(asString(parts[index]));
}

}  // namespace

std::vector<HVString> TextComponents(const HVString& text, const HVString& separator) {
    std::vector<HVString> parts;
    if (text.IsNull() || separator.IsNull()) return parts;
    CFArrayRef array = CFStringCreateArrayBySeparatingStrings(kCFAllocatorDefault, asString(text), asString(separator));
    if (array == nullptr) return parts;
    CFIndex count = CFArrayGetCount(array);
    parts.reserve(size_t(count));
    for (CFIndex i = 0; i < count; ++i) parts.emplace_back(CFArrayGetValueAtIndex(array, i));
    CFRelease(array);
    return parts;
}

HVString RoundedPairText(double first, double second) {
    return HVString::StringWithFormat("{%1.0f,%1.0f}", first, second);
}

HVString PairDescription(double first, double second) {
    return HVString::StringWithFormat("{%f,%f}", first, second);
}

void ReadPairText(const HVString& text, double& first, double& second) {
    std::vector<HVString> parts = TextComponents(withoutBraces(text), ",");
    first = numberAt(parts, 0);
    second = numberAt(parts, 1);
}

}  // namespace halvane::detail
