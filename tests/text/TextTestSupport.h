// Reading strings and arrays of strings back as UTF-16 units, and setting
// the locale environment for one test.
#ifndef HALVANE_TESTS_TEXT_TEXTTESTSUPPORT_H
#define HALVANE_TESTS_TEXT_TEXTTESTSUPPORT_H

#include <halvane/collections/HVArray.h>
#include <halvane/text/HVString.h>

#include <CoreFoundation/CoreFoundation.h>

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace hvtest {

inline std::u16string unitsOf(CFStringRef string) {
    if (string == nullptr) return u"<null>";
    std::u16string units(size_t(CFStringGetLength(string)), u'\0');
    CFStringGetCharacters(string, CFRangeMake(0, CFIndex(units.size())), reinterpret_cast<UniChar*>(units.data()));
    return units;
}

inline std::u16string unitsOf(const HVString& text) {
    return unitsOf(static_cast<CFStringRef>(text.Ref()));
}

// The strings of an array, in order.
inline std::vector<std::u16string> piecesOf(const HVArray& array) {
    auto platform = static_cast<CFArrayRef>(array.Ref());
    std::vector<std::u16string> pieces;
    for (CFIndex i = 0; i < CFArrayGetCount(platform); ++i) {
        pieces.push_back(unitsOf(static_cast<CFStringRef>(CFArrayGetValueAtIndex(platform, i))));
    }
    return pieces;
}

// Sets environment variables (nullptr: unset) for the life of the object.
class ScopedEnvironment {
public:
    ScopedEnvironment(std::initializer_list<std::pair<const char*, const char*>> values) {
        for (auto [name, value] : values) {
            const char* old = std::getenv(name);
            saved_.emplace_back(name, old != nullptr ? std::optional<std::string>(old) : std::nullopt);
            set(name, value);
        }
    }
    ~ScopedEnvironment() {
        for (auto& [name, value] : saved_) set(name.c_str(), value ? value->c_str() : nullptr);
    }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    static void set(const char* name, const char* value) {
        if (value != nullptr) {
            setenv(name, value, 1);
        } else {
            unsetenv(name);
        }
    }
    std::vector<std::pair<std::string, std::optional<std::string>>> saved_;
};

// The user's locale for one test: LANG set, the variables that would
// override it unset.
class ScopedLocale {
public:
    explicit ScopedLocale(const char* lang)
        : environment_({{"LC_ALL", nullptr}, {"LC_MESSAGES", nullptr}, {"LC_COLLATE", nullptr}, {"LANG", lang}}) {}

private:
    ScopedEnvironment environment_;
};

}  // namespace hvtest

#endif  // HALVANE_TESTS_TEXT_TEXTTESTSUPPORT_H
