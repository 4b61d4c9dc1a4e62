// HVString: upper- and lower-casing in the user's locale.
#include <halvane/text/HVString.h>

#include <halvane/text/detail/CurrentLocale.h>
#include <halvane/text/detail/LetterCase.h>
#include <halvane/text/detail/UnicodeText.h>

#include <CoreFoundation/CoreFoundation.h>

using namespace halvane::detail;

namespace {

// The receiver's units mapped in place, then read back as UTF-16 text the
// way data in that encoding is read: trailing zero units count as
// terminators and are dropped.
HVString mappedText(const HVString& text, LetterCase letterCase, std::string_view localeIdentifier) {
    std::u16string units = unitsOf(static_cast<CFStringRef>(text.Ref()));
    mapLetterCase(units, letterCase, localeIdentifier);
    while (!units.empty() && units.back() == 0) units.pop_back();
    HVString result;
    if (units.empty()) return result;
    if (CFStringRef created = createStringWithUnits(units.data(), units.size())) result.AssignAndTakeOwnership(created);
    return result;
}

}  // namespace

HVString HVString::UppercaseString() const {
    return mappedText(*this, LetterCase::kUpper, currentLocaleIdentifier());
}

HVString HVString::LowercaseString() const {
    return mappedText(*this, LetterCase::kLower, currentLocaleIdentifier());
}
