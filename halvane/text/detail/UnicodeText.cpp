#include <halvane/text/detail/UnicodeText.h>

#include <halvane/text/HVString.h>

namespace halvane::detail {

icu::UnicodeString unicodeOf(const HVString& text) {
    auto string = static_cast<CFStringRef>(text.Ref());
    icu::UnicodeString result;
    if (string == nullptr) return result;
    CFIndex length = CFStringGetLength(string);
    if (length <= 0) return result;
    if (const UniChar* units = CFStringGetCharactersPtr(string)) return icu::UnicodeString(units, int32_t(length));
    UChar* buffer = result.getBuffer(int32_t(length));
    CFStringGetCharacters(string, CFRangeMake(0, length), reinterpret_cast<UniChar*>(buffer));
    result.releaseBuffer(int32_t(length));
    return result;
}

std::u16string unitsOf(CFStringRef string) {
    if (string == nullptr) return std::u16string();
    std::u16string units(size_t(CFStringGetLength(string)), u'\0');
    CFStringGetCharacters(string, CFRangeMake(0, CFIndex(units.size())), reinterpret_cast<UniChar*>(units.data()));
    return units;
}

CFStringRef createStringWithUnits(const char16_t* units, size_t length) {
    return CFStringCreateWithCharacters(kCFAllocatorDefault, reinterpret_cast<const UniChar*>(units), CFIndex(length));
}

}  // namespace halvane::detail
