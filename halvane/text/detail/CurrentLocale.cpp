#include <halvane/text/detail/CurrentLocale.h>

#include <CoreFoundation/CoreFoundation.h>

namespace halvane::detail {

std::string currentLocaleIdentifier() {
    CFLocaleRef locale = CFLocaleCopyCurrent();
    if (locale == nullptr) return std::string();
    CFStringRef identifier = CFLocaleGetIdentifier(locale);
    // Identifiers are ASCII; one that is not reads as the root locale.
    char buffer[256];
    std::string result;
    if (identifier != nullptr && CFStringGetCString(identifier, buffer, sizeof(buffer), kCFStringEncodingASCII)) {
        result = buffer;
    }
    CFRelease(locale);
    return result;
}

}  // namespace halvane::detail
