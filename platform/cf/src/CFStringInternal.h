// The storage of CFString and the internal interface the rest of the layer
// uses to read and build strings.
//
// A string holds UTF-16 units, or, when every unit is below 0x80, the same
// text as one byte per unit ("ASCII form"): that form makes ASCII text from
// UTF-8 a copy, halves its memory and lets CFStringGetCStringPtr hand out a
// pointer. Mutable strings always hold UTF-16 in a growable heap buffer.
#ifndef HALVANE_CF_STRING_INTERNAL_H
#define HALVANE_CF_STRING_INTERNAL_H

#include "CFInternal.h"

#include <CoreFoundation/CFString.h>

#include <locale.h>

#include <string>
#include <string_view>

struct __CFString {
    CFRuntimeBase base;
    CFIndex length;  // in UTF-16 units (bytes in the ASCII form)
    union {
        const uint8_t* ascii;
        const UniChar* units;
        UniChar* mutableUnits;
    } contents;
    CFIndex capacity;                   // mutable strings: units allocated
    CFAllocatorRef contentsDeallocator;  // external buffers: who frees them
};

namespace halvane::detail {

// Class bits of a string (fixed at creation).
enum StringBits : uintptr_t {
    kStringMutable = 1,
    kStringASCII = 2,          // contents.ascii, every byte < 0x80
    kStringInline = 4,         // contents follow the object in the same block
    kStringExternal = 8,       // contents belong to the caller; freed with contentsDeallocator
    kStringNulTerminated = 16  // ASCII form with a 0 byte after the text
};

inline bool isMutableString(CFStringRef s) { return (classBits(s) & kStringMutable) != 0; }
inline bool isASCIIString(CFStringRef s) { return (classBits(s) & kStringASCII) != 0; }

// Calls f(pointer, length) with the string's storage: a const uint8_t* for
// the ASCII form, a const UniChar* otherwise. Lets hot loops branch on the
// representation once instead of per unit.
template <typename F>
decltype(auto) withUnits(CFStringRef s, F&& f) {
    if (isASCIIString(s)) return f(s->contents.ascii, s->length);
    return f(s->contents.units, s->length);
}

inline UniChar unitAt(CFStringRef s, CFIndex index) {
    return isASCIIString(s) ? UniChar(s->contents.ascii[index]) : s->contents.units[index];
}

// Copies units [location, location + length) into buffer.
void copyUnits(CFStringRef s, CFIndex location, CFIndex length, UniChar* buffer);

// True when every unit is below 0x80.
bool allASCII(const UniChar* units, CFIndex length);
bool allASCII(const uint8_t* bytes, CFIndex length);

// New immutable strings (+1). With the default allocator an empty result is
// the shared empty string. nullptr only for kCFAllocatorNull or when memory
// runs out.
CFStringRef createStringFromUnits(CFAllocatorRef allocator, const UniChar* units, CFIndex length);
// bytes must all be below 0x80.
CFStringRef createStringFromASCII(CFAllocatorRef allocator, const char* bytes, CFIndex length);
// nullptr when the bytes are not well-formed UTF-8 (no byte-order mark
// handling: callers strip one first if they want).
CFStringRef createStringFromUTF8(CFAllocatorRef allocator, const uint8_t* bytes, CFIndex length);
// Wraps caller-owned storage without copying (the NoCopy creation
// functions). bytes must all be below 0x80 in the ASCII case.
CFStringRef createStringReferencingASCII(CFAllocatorRef allocator, const char* bytes, CFIndex length,
                                         bool nulTerminated, CFAllocatorRef contentsDeallocator);
CFStringRef createStringReferencingUnits(CFAllocatorRef allocator, const UniChar* units, CFIndex length,
                                         CFAllocatorRef contentsDeallocator);

// Strict UTF-8 to UTF-16: false on a truncated or overlong sequence, an
// encoded surrogate, a value above U+10FFFF or a stray continuation byte.
bool decodeUTF8(const uint8_t* bytes, size_t length, std::u16string& out);
// The same, except that a 0xA9 byte where a sequence should start reads as
// U+FFFD instead of failing: creation from UTF-8 bytes has always accepted
// that one stray byte, and callers rely on it.
bool decodeUTF8AllowingStrayA9(const uint8_t* bytes, size_t length, std::u16string& out);
// UTF-16 to UTF-8; a lone surrogate becomes U+FFFD.
void appendUTF8(std::string& out, const UniChar* units, size_t length);

// The text as UTF-8 (lone surrogates as U+FFFD) and as UTF-16 units; empty
// for NULL.
std::string utf8Of(CFStringRef s);
std::u16string unitsOf(CFStringRef s);

// Replaces the units in range of a mutable string with the given ones; the
// single splice that every mutation goes through. Returns false (after
// reporting) when s is not a mutable string or the range is outside it.
bool replaceUnits(CFMutableStringRef s, CFRange range, const UniChar* units, CFIndex length, const char* caller);

// The Unicode hash of the text, the same for both storage forms.
CFHashCode hashUnits(const UniChar* units, CFIndex length);

// Builds text for descriptions and formatted output, then makes one string.
class TextBuilder {
public:
    TextBuilder& ascii(std::string_view text);  // bytes taken as Latin-1
    TextBuilder& utf8(std::string_view text);   // invalid sequences as U+FFFD
    TextBuilder& units(const UniChar* units, size_t length);
    TextBuilder& unit(UniChar unit);
    TextBuilder& string(CFStringRef s);  // "(null)" for NULL
    TextBuilder& pointer(const void* p);  // 0x + lowercase hex, 0x0 for NULL
    // printf-style conversion in the C locale, whatever the process locale.
    [[gnu::format(printf, 2, 3)]] TextBuilder& format(const char* fmt, ...);
    TextBuilder& description(CFTypeRef cf);  // CFCopyDescription, "(null)" for NULL
    TextBuilder& formattingDescription(CFTypeRef cf, CFDictionaryRef formatOptions = nullptr);

    std::u16string& text() { return text_; }
    size_t length() const { return text_.size(); }
    // A new immutable string (+1) with the text built so far.
    CFStringRef create(CFAllocatorRef allocator = nullptr) const;

private:
    std::u16string text_;
};

// The "C" locale, for number conversions that must not follow setlocale.
locale_t cLocale();

// The shared immortal empty string.
CFStringRef emptyString();

// The bytes of an ASCII literal, usable as the storage of a constant string.
template <size_t N>
struct AsciiLiteral {
    uint8_t bytes[N];
    consteval AsciiLiteral(const char (&text)[N]) {
        for (size_t i = 0; i < N; ++i) bytes[i] = uint8_t(text[i]);
    }
};

// One immortal string per literal, laid out at compile time so that the
// exported constants are valid before any code runs. Every use of the same
// literal, in any file, is the same object.
template <AsciiLiteral L>
constinit __CFString constantString = {immortalHeader(kCFStringTypeID, kStringASCII | kStringNulTerminated),
                                       CFIndex(sizeof(L.bytes) - 1),
                                       {.ascii = L.bytes},
                                       0,
                                       nullptr};

}  // namespace halvane::detail

#endif  // HALVANE_CF_STRING_INTERNAL_H
