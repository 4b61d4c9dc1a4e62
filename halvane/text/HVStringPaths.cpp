// HVString: path arithmetic. Paths are text here on every platform: "/" and
// "\" both separate components and drive roots ("C:\") are kept whole, so
// Windows paths handed to the library keep their meaning.
#include <halvane/text/HVString.h>

#include <halvane/os/Paths.h>
#include <halvane/text/detail/UnicodeText.h>

#include <CoreFoundation/CoreFoundation.h>

#include <string>

using halvane::detail::unitsOf;

namespace {

constexpr size_t kNone = std::u16string::npos;

CFStringRef textOf(const HVString& text) {
    return text.Ref() != nullptr ? static_cast<CFStringRef>(text.Ref()) : CFSTR("");
}

// The last separator before end: the last "/" if there is one, and only
// otherwise the last "\". Callers rely on this order even where a "\"
// stands after the last "/".
size_t lastSeparator(const std::u16string& units, size_t end) {
    if (end == 0) return kNone;
    size_t slash = units.rfind(u'/', end - 1);
    return slash != kNone ? slash : units.rfind(u'\\', end - 1);
}

// The last "." after the last separator.
size_t extensionDot(const std::u16string& units) {
    size_t separator = lastSeparator(units, units.size());
    size_t dot = units.rfind(u'.');
    if (dot == kNone || (separator != kNone && dot < separator)) return kNone;
    return dot;
}

bool isASCIILetter(char16_t unit) {
    return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z');
}

HVString prefix(const HVString& text, size_t length) {
    return text.SubstringWithRange(HVRange(0, length));
}

HVString suffixAfter(const HVString& text, size_t index) {
    return text.SubstringFromIndex(index + 1);
}

}  // namespace

HVString HVString::StringByAppendingPathComponent(const HVString& component) const {
    if (component.IsEmpty()) return *this;
    if (IsEmpty()) return component;
    std::u16string units = unitsOf(textOf(*this));
    size_t separator = lastSeparator(units, units.size());
    if (separator == units.size() - 1) return StringWithFormat("%@%@", textOf(*this), textOf(component));
    CFStringRef written = separator != kNone && units[separator] == u'\\' ? CFSTR("\\") : CFSTR("/");
    return StringWithFormat("%@%@%@", textOf(*this), written, textOf(component));
}

HVString HVString::StringByAppendingPathExtension(const HVString& extension) const {
    return StringWithFormat("%@.%@", textOf(*this), textOf(extension));
}

HVString HVString::StringByDeletingLastPathComponent() const {
    if (IsEmpty()) return HVString();
    std::u16string units = unitsOf(textOf(*this));
    size_t separator = lastSeparator(units, units.size());
    if (separator == kNone) return HVString();
    bool trailingDropped = false;
    if (separator == units.size() - 1) {
        // A trailing separator is passed over once.
        trailingDropped = true;
        separator = lastSeparator(units, separator);
        if (separator == kNone) return HVString();
    }
    if (!trailingDropped) {
        // Roots keep their separator: "/" and a drive root such as "C:\".
        if (separator == 0) return prefix(*this, 1);
        if (separator == 2 && units[1] == u':' && isASCIILetter(units[0])) return prefix(*this, 3);
    }
    return prefix(*this, separator);
}

HVString HVString::StringByDeletingPathExtension() const {
    if (IsEmpty()) return *this;
    size_t dot = extensionDot(unitsOf(textOf(*this)));
    return dot == kNone ? *this : prefix(*this, dot);
}

HVString HVString::LastPathComponent() const {
    if (IsEmpty()) return *this;
    std::u16string units = unitsOf(textOf(*this));
    size_t separator = lastSeparator(units, units.size());
    return separator == kNone ? *this : suffixAfter(*this, separator);
}

HVString HVString::PathExtension() const {
    if (IsEmpty()) return HVString();
    size_t dot = extensionDot(unitsOf(textOf(*this)));
    return dot == kNone ? HVString() : suffixAfter(*this, dot);
}

HVString HVString::StringByExpandingTildeInPath() const {
    if (!HasPrefix("~")) return *this;
    std::string home = halvane::os::HomeDirectoryPath();
    if (home.empty()) return *this;
    // "~/docs" is the home directory joined with "docs": the separator after
    // the tilde is the one the join writes.
    HVString rest = SubstringFromIndex(1);
    if (rest.HasPrefix("/") || rest.HasPrefix("\\")) rest = rest.SubstringFromIndex(1);
    return HVString(home).StringByAppendingPathComponent(rest);
}
