// Helpers shared by the CFURL tests.
#ifndef HALVANE_TESTS_CF_URL_SUPPORT_H
#define HALVANE_TESTS_CF_URL_SUPPORT_H

#include "CFTestSupport.h"

#include <string>

namespace cftest {

// A string from UTF-8 text.
inline Owned<CFStringRef> str(const std::string& text) {
    return own(CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>(text.data()), CFIndex(text.size()),
                                       kCFStringEncodingUTF8, false));
}

// The text of a string as UTF-8; "<NULL>" for NULL, so that a missing
// result reads clearly in a failed assertion.
inline std::string utf8(CFStringRef s) {
    if (s == nullptr) return "<NULL>";
    CFIndex length = CFStringGetLength(s), used = 0;
    std::string out(size_t(length) * 3, '\0');
    CFStringGetBytes(s, CFRangeMake(0, length), kCFStringEncodingUTF8, 0, false, reinterpret_cast<UInt8*>(out.data()),
                     CFIndex(out.size()), &used);
    out.resize(size_t(used));
    return out;
}

// The text of a string the caller owns, which is released.
inline std::string take(CFStringRef s) {
    std::string text = utf8(s);
    if (s != nullptr) CFRelease(s);
    return text;
}

inline Owned<CFURLRef> url(const std::string& text, CFURLRef base = nullptr) {
    return own(CFURLCreateWithString(nullptr, str(text), base));
}

// The string of a URL; "<NULL>" for NULL.
inline std::string urlText(CFURLRef u) {
    return u == nullptr ? "<NULL>" : utf8(CFURLGetString(u));
}

// The string of the absolute form of a URL.
inline std::string absoluteText(CFURLRef u) {
    if (u == nullptr) return "<NULL>";
    Owned<CFURLRef> absolute = own(CFURLCopyAbsoluteURL(u));
    return urlText(absolute);
}

}  // namespace cftest

#endif  // HALVANE_TESTS_CF_URL_SUPPORT_H
