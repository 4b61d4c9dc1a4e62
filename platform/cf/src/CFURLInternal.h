// What the URL implementation files share: the object, the parsed form of a
// URL string, and percent escaping.
//
// Every URL string is ASCII made of legal URL characters only: strings from
// CFURLCreateWithString are validated, every other way in escapes what is
// not legal. The text can therefore be read as bytes.
#ifndef HALVANE_CF_URL_INTERNAL_H
#define HALVANE_CF_URL_INTERNAL_H

#include "CFInternal.h"
#include "CFStringInternal.h"

#include <CoreFoundation/CFURL.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace halvane::detail {

// A part of a URL string: offsets in bytes (= UTF-16 units, the text being
// ASCII).
struct Span {
    size_t start = 0;
    size_t length = 0;

    size_t end() const { return start + length; }
    std::string_view in(std::string_view text) const { return text.substr(start, length); }
};

// The components of a URL string. Delimiters are not part of the spans:
// scheme excludes ':', netLocation excludes "//", query '?', fragment '#'.
struct URLParts {
    bool hasScheme = false;
    // False for "scheme:" followed by anything but '/' ("mailto:a@b"): such
    // a URL has only a scheme and an opaque resource specifier.
    bool decomposable = true;
    bool hasNetLocation = false;
    bool hasQuery = false;
    bool hasFragment = false;
    Span scheme;
    Span netLocation;
    // For a URL that cannot be decomposed, path and query still describe the
    // opaque part (resolution treats it as a path), but no accessor shows them.
    Span path;
    Span query;
    Span fragment;
    Span specifier;  // after "scheme:" (URLs that cannot be decomposed)
};

URLParts parseURL(std::string_view text);

// Ends with '/', or is ".", "..", or ends with "/." or "/..".
bool isDirectoryPath(std::string_view path);

}  // namespace halvane::detail

struct __CFURL {
    CFRuntimeBase base;
    CFStringRef string;  // ASCII storage, see above
    CFURLRef baseURL;    // absolute; NULL for URLs with a scheme
    halvane::detail::URLParts parts;
};

namespace halvane::detail {

// Class bits of a URL (fixed at creation).
enum URLBits : uintptr_t {
    kURLDirectory = 1,  // what CFURLHasDirectoryPath answers
};

inline std::string_view textOf(CFURLRef url) {
    return std::string_view(reinterpret_cast<const char*>(url->string->contents.ascii), size_t(url->string->length));
}

// True for a URL; otherwise reports the misuse, naming the caller.
bool checkURL(CFURLRef url, const char* caller);

// What the directory flag of a new URL follows.
enum class DirectoryFlag { kFromPath, kYes, kNo };

// A new URL (+1) for text, which must consist of legal URL characters (with
// well-formed escapes and at most one '#'). absoluteBase must be absolute or
// NULL; it is dropped when the text has a scheme.
CFURLRef createURLFromText(CFAllocatorRef allocator, std::string_view text, CFURLRef absoluteBase,
                           DirectoryFlag directory = DirectoryFlag::kFromPath);

// The scheme of the URL, or of its base when it has none; empty if neither.
std::string_view effectiveScheme(CFURLRef url);
// Schemes compare without regard to ASCII case.
bool schemeIs(std::string_view scheme, const char* name);

// A new URL for the current working directory, as a directory; NULL when the
// directory cannot be determined.
CFURLRef createCurrentDirectoryURL();

// Resolves a relative URL string against an absolute base URL string.
std::string resolveURLText(std::string_view relative, const URLParts& relativeParts, std::string_view base,
                           const URLParts& baseParts);

// ASCII characters as a set, for the escaping rules.
class CharacterClass {
public:
    consteval CharacterClass(std::string_view members, bool alphanumerics = true) {
        if (alphanumerics) {
            for (char c = 'A'; c <= 'Z'; ++c) add(c);
            for (char c = 'a'; c <= 'z'; ++c) add(c);
            for (char c = '0'; c <= '9'; ++c) add(c);
        }
        for (char c : members) add(c);
    }
    constexpr bool contains(uint32_t c) const { return c < 128 && (bits_[c >> 6] >> (c & 63) & 1) != 0; }

private:
    constexpr void add(char c) { bits_[uint8_t(c) >> 6] |= uint64_t(1) << (uint8_t(c) & 63); }
    uint64_t bits_[2] = {0, 0};
};

// Characters a URL may contain unescaped (besides '%' in escapes and one
// '#'), and the smaller set left unescaped by default when escaping text.
inline constexpr CharacterClass kURLValidCharacters("!$&'()*+,-./:;=?@_~[]");
inline constexpr CharacterClass kURLLegalCharacters("!$&'()*+,-./:;=?@_~");
// What stays unescaped in a path made from file-system text or a path
// component: the legal set without ';' and '?'.
inline constexpr CharacterClass kPathCharacters("!$&'()*+,-./:=@_~");

inline bool isHexDigit(uint32_t c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}
inline int hexValue(uint32_t c) {
    if (c >= '0' && c <= '9') return int(c - '0');
    if (c >= 'A' && c <= 'F') return int(c - 'A' + 10);
    return int(c - 'a' + 10);
}

// Appends bytes with every byte outside keep written as "%XX" (uppercase).
void appendEscapedBytes(std::string& out, std::string_view bytes, const CharacterClass& keep);
// UTF-8 of UTF-16 text; false (out unspecified) for a lone surrogate.
bool strictUTF8(std::u16string_view units, std::string& out);
// Decodes every "%XX" to its byte; false for a malformed escape.
bool decodePercentBytes(std::string_view text, std::string& out);
// CFURLCreateStringByReplacingPercentEscapes on UTF-16 or ASCII text: false
// for a malformed escape or escaped bytes that are not UTF-8.
bool replacePercentEscapesUTF8(std::u16string_view text, std::u16string_view leaveEscaped, std::u16string& out);
bool replacePercentEscapesUTF8(std::string_view text, std::u16string_view leaveEscaped, std::u16string& out);
// A component with its escapes replaced (UTF-8); the text as it is when the
// escapes do not decode, so that the component is shown rather than lost.
CFStringRef createUnescapedString(std::string_view text);
// Legal URL text for arbitrary text: illegal characters, a '%' that starts
// no escape and every '#' after the first are escaped (UTF-8).
std::string escapeIllegalURLCharacters(std::u16string_view text);
// True when text may be a URL string as it is.
bool isValidURLText(std::u16string_view text);

// A new immutable string for ASCII text.
inline CFStringRef createASCIIString(CFAllocatorRef allocator, std::string_view text) {
    return createStringFromASCII(allocator, text.data(), CFIndex(text.size()));
}
// A new immutable string for UTF-16 text.
inline CFStringRef createUnitsString(CFAllocatorRef allocator, std::u16string_view text) {
    return createStringFromUnits(allocator, text.data(), CFIndex(text.size()));
}

}  // namespace halvane::detail

#endif  // HALVANE_CF_URL_INTERNAL_H
