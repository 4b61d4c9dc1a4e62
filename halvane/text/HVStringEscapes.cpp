// HVString: percent escapes, as URLs write them.
#include <halvane/text/HVString.h>

#include <CoreFoundation/CoreFoundation.h>

namespace {

CFStringRef textOf(const HVString& text) {
    return text.Ref() != nullptr ? static_cast<CFStringRef>(text.Ref()) : CFSTR("");
}

// The platform's result, or the empty string when it made none (a
// character the encoding cannot hold, a malformed escape).
HVString adopted(CFStringRef created) {
    HVString text;
    if (created != nullptr) text.AssignAndTakeOwnership(created);
    return text;
}

}  // namespace

HVString HVString::StringByAddingPercentEscapes() const {
    return StringByAddingPercentEscapesSpecifyingEscapeCharacters(":?=,!$&'()*+;[]@#");
}

HVString HVString::StringByAddingPercentEscapesSpecifyingEscapeCharacters(const HVString& characters) const {
    return adopted(CFURLCreateStringByAddingPercentEscapes(kCFAllocatorDefault, textOf(*this), nullptr,
                                                           textOf(characters), kCFStringEncodingUTF8));
}

HVString HVString::StringByReplacingPercentEscapes() const {
    return StringByReplacingPercentEscapesUsingEncoding(HVUTF8StringEncoding);
}

HVString HVString::StringByReplacingPercentEscapesUsingEncoding(HVStringEncoding encoding) const {
    // No list of characters to leave escaped is given; what the platform
    // makes of that is its affair.
    return adopted(CFURLCreateStringByReplacingPercentEscapesUsingEncoding(
        kCFAllocatorDefault, textOf(*this), nullptr,
        HVStringEncodingUtilites::ConvertToUnderlyingStringEncoding(encoding)));
}
