// CFString storage: creation from units, access, mutation, equality, hashing,
// descriptions and the constant strings behind CFSTR.
#include "CFStringInternal.h"

#include <algorithm>
#include <bit>
#include <clocale>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <locale.h>
#include <mutex>
#include <unordered_map>

using namespace halvane::detail;

namespace halvane::detail {

namespace {

// An array rather than a cast literal: clang accepts no reinterpret_cast in a
// constant initializer.
constexpr uint8_t kNoBytes[1] = {0};
constinit __CFString sharedEmptyString = {immortalHeader(kCFStringTypeID, kStringASCII | kStringNulTerminated), 0,
                                          {.ascii = kNoBytes}, 0, nullptr};

bool usesDefaultAllocator(CFAllocatorRef allocator) {
    return allocator == nullptr || allocator == kCFAllocatorSystemDefault;
}

// One block holding the object and its text. The header is set here; the
// caller fills the storage.
__CFString* allocateInlineString(CFAllocatorRef allocator, size_t storageBytes, uintptr_t bits, bool immortal) {
    if (allocator == kCFAllocatorNull) return nullptr;
    auto* s = static_cast<__CFString*>(std::malloc(sizeof(__CFString) + storageBytes));
    if (s == nullptr) return nullptr;
    if (immortal) {
        s->base = immortalHeader(kCFStringTypeID, bits | kStringInline);
    } else {
        initHeader(&s->base, kCFStringTypeID, bits | kStringInline);
    }
    s->capacity = 0;
    s->contentsDeallocator = nullptr;
    return s;
}

CFStringRef newASCIIString(CFAllocatorRef allocator, const uint8_t* bytes, CFIndex length, bool immortal = false) {
    __CFString* s = allocateInlineString(allocator, size_t(length) + 1, kStringASCII | kStringNulTerminated, immortal);
    if (s == nullptr) return nullptr;
    auto* storage = reinterpret_cast<uint8_t*>(s + 1);
    if (length > 0) std::memcpy(storage, bytes, size_t(length));
    storage[length] = 0;
    s->length = length;
    s->contents.ascii = storage;
    return s;
}

CFStringRef newUnitString(CFAllocatorRef allocator, const UniChar* units, CFIndex length, bool immortal = false) {
    __CFString* s = allocateInlineString(allocator, (size_t(length) + 1) * sizeof(UniChar), 0, immortal);
    if (s == nullptr) return nullptr;
    auto* storage = reinterpret_cast<UniChar*>(s + 1);
    if (length > 0) std::memcpy(storage, units, size_t(length) * sizeof(UniChar));
    storage[length] = 0;
    s->length = length;
    s->contents.units = storage;
    return s;
}

// Units to the ASCII form when they allow it (every unit below 0x80).
CFStringRef newStringFromUnits(CFAllocatorRef allocator, const UniChar* units, CFIndex length, bool immortal) {
    if (!allASCII(units, length)) return newUnitString(allocator, units, length, immortal);
    __CFString* s = allocateInlineString(allocator, size_t(length) + 1, kStringASCII | kStringNulTerminated, immortal);
    if (s == nullptr) return nullptr;
    auto* storage = reinterpret_cast<uint8_t*>(s + 1);
    for (CFIndex i = 0; i < length; ++i) storage[i] = uint8_t(units[i]);
    storage[length] = 0;
    s->length = length;
    s->contents.ascii = storage;
    return s;
}

template <typename Unit>
CFHashCode hashOf(const Unit* p, CFIndex length) {
    uint64_t h = uint64_t(length);
    auto consumeFour = [&h](const Unit* q) {
        h = h * 67503105u + (((uint64_t(q[0]) * 257 + q[1]) * 257 + q[2]) * 257 + q[3]);
    };
    if (length <= 96) {
        CFIndex i = 0;
        for (; i + 4 <= length; i += 4) consumeFour(p + i);
        for (; i < length; ++i) h = h * 257 + p[i];
    } else {
        // Long strings hash three 32-unit windows: start, middle and end.
        const Unit* windows[3] = {p, p + length / 2 - 16, p + length - 32};
        for (const Unit* window : windows) {
            for (int i = 0; i < 32; i += 4) consumeFour(window + i);
        }
    }
    return h + (h << (length & 31));
}

template <typename A, typename B>
bool sameUnits(const A* a, const B* b, CFIndex length) {
    if constexpr (std::is_same_v<A, B>) {
        // An empty mutable string has no buffer: memcmp must not see NULL.
        return length == 0 || std::memcmp(a, b, size_t(length) * sizeof(A)) == 0;
    } else {
        for (CFIndex i = 0; i < length; ++i) {
            if (UniChar(a[i]) != UniChar(b[i])) return false;
        }
        return true;
    }
}

void finalizeString(CFTypeRef cf) {
    auto* s = static_cast<__CFString*>(const_cast<void*>(cf));
    uintptr_t bits = classBits(s);
    if (bits & kStringMutable) {
        std::free(s->contents.mutableUnits);
    } else if ((bits & kStringExternal) && s->contentsDeallocator != kCFAllocatorNull) {
        CFAllocatorDeallocate(s->contentsDeallocator, const_cast<uint8_t*>(s->contents.ascii));
    }
}

Boolean equalStrings(CFTypeRef cf1, CFTypeRef cf2) {
    auto a = static_cast<CFStringRef>(cf1);
    auto b = static_cast<CFStringRef>(cf2);
    if (a->length != b->length) return false;
    return withUnits(a, [b](auto* pa, CFIndex length) {
        return withUnits(b, [pa, length](auto* pb, CFIndex) { return sameUnits(pa, pb, length); });
    });
}

CFHashCode hashString(CFTypeRef cf) {
    return withUnits(static_cast<CFStringRef>(cf), [](auto* p, CFIndex length) { return hashOf(p, length); });
}

CFStringRef copyStringFormattingDescription(CFTypeRef cf, CFDictionaryRef) {
    return CFStringCreateCopy(nullptr, static_cast<CFStringRef>(cf));
}

CFStringRef copyStringDebugDescription(CFTypeRef cf) {
    return TextBuilder()
        .ascii("<CFString ")
        .pointer(cf)
        .ascii(" [")
        .pointer(descriptionAllocatorAddress(cf))
        .ascii("]>{contents = \"")
        .string(static_cast<CFStringRef>(cf))
        .ascii("\"}")
        .create();
}

// The sequence at the start of bytes in full: its length (0 when it is not
// well-formed) and, in value, its code point. Kept out of line so that the
// decoding loop stays small enough for the compiler to keep in registers.
[[gnu::noinline]] size_t decodeSequence(const uint8_t* bytes, size_t available, uint32_t& value) {
    uint32_t lead = bytes[0];
    size_t need = 0;
    uint32_t low = 0x80, high = 0xBF;  // range of the first continuation byte
    if (lead >= 0xC2 && lead <= 0xDF) {
        need = 1;
        value = lead & 0x1F;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        need = 2;
        value = lead & 0x0F;
        if (lead == 0xE0) low = 0xA0;   // overlong
        if (lead == 0xED) high = 0x9F;  // surrogates
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        need = 3;
        value = lead & 0x07;
        if (lead == 0xF0) low = 0x90;   // overlong
        if (lead == 0xF4) high = 0x8F;  // above U+10FFFF
    }
    if (need == 0 || need >= available) return 0;
    for (size_t k = 1; k <= need; ++k) {
        uint32_t c = bytes[k];
        if (c < (k == 1 ? low : 0x80) || c > (k == 1 ? high : 0xBF)) return 0;
        value = (value << 6) | (c & 0x3F);
    }
    return need + 1;
}

// Decodes UTF-8 one sequence at a time into dst, which must have room for
// one unit per byte (no byte yields more), and returns the end of what was
// written, or nullptr when onError gives up. For each byte that does not
// start a well-formed sequence, onError(byte) returns the unit that stands
// for it, or a negative value to give up. Writing through a pointer into
// storage sized once keeps capacity checks out of the loop.
template <typename OnError>
char16_t* decodeUTF8Into(const uint8_t* bytes, size_t length, char16_t* dst, OnError onError) {
    size_t i = 0;
    while (i < length) {
        uint8_t lead = bytes[i];
        if (lead < 0x80) {
            // ASCII one byte at a time while runs are short (text with
            // accents); a run that reaches eight bytes switches to eight at
            // a time.
            *dst++ = char16_t(lead);
            ++i;
            size_t run = 1;
            while (i < length && bytes[i] < 0x80 && run < 8) {
                *dst++ = char16_t(bytes[i++]);
                ++run;
            }
            if (run == 8) {
                while (i + 8 <= length) {
                    uint64_t word;
                    std::memcpy(&word, bytes + i, 8);
                    if (word & 0x8080808080808080ull) break;
                    for (int k = 0; k < 8; ++k) dst[k] = char16_t(bytes[i + k]);
                    dst += 8;
                    i += 8;
                }
                while (i < length && bytes[i] < 0x80) *dst++ = char16_t(bytes[i++]);
            }
            continue;
        }
        // The common well-formed two- and three-byte forms (Latin, Greek,
        // Cyrillic, CJK...) without the general checks of decodeSequence.
        if (lead >= 0xC2 && lead <= 0xDF && i + 1 < length) {
            uint32_t c1 = bytes[i + 1];
            if ((c1 & 0xC0) == 0x80) {
                *dst++ = char16_t((uint32_t(lead) & 0x1F) << 6 | (c1 & 0x3F));
                i += 2;
                continue;
            }
        } else if (lead >= 0xE1 && lead <= 0xEF && lead != 0xED && i + 2 < length) {
            uint32_t c1 = bytes[i + 1], c2 = bytes[i + 2];
            if ((c1 & 0xC0) == 0x80 && (c2 & 0xC0) == 0x80) {
                *dst++ = char16_t((uint32_t(lead) & 0x0F) << 12 | (c1 & 0x3F) << 6 | (c2 & 0x3F));
                i += 3;
                continue;
            }
        }
        uint32_t value = 0;
        size_t consumed = decodeSequence(bytes + i, length - i, value);
        if (consumed == 0) {
            int replacement = onError(lead);
            if (replacement < 0) return nullptr;
            *dst++ = char16_t(replacement);
            ++i;
            continue;
        }
        if (value >= 0x10000) {
            value -= 0x10000;
            *dst++ = char16_t(0xD800 + (value >> 10));
            *dst++ = char16_t(0xDC00 + (value & 0x3FF));
        } else {
            *dst++ = char16_t(value);
        }
        i += consumed;
    }
    return dst;
}

template <typename OnError>
bool decodeUTF8With(const uint8_t* bytes, size_t length, std::u16string& out, OnError onError) {
    size_t start = out.size();
    out.resize(start + length);
    char16_t* end = decodeUTF8Into(bytes, length, out.data() + start, onError);
    if (end == nullptr) {
        out.resize(start);
        return false;
    }
    out.resize(size_t(end - out.data()));
    return true;
}

}  // namespace

locale_t cLocale() {
    static locale_t locale = newlocale(LC_ALL_MASK, "C", locale_t(0));
    return locale;
}

constinit const CFRuntimeClass kStringClass = {
    0,       "CFString", nullptr, nullptr, finalizeString, equalStrings, hashString, copyStringFormattingDescription,
    copyStringDebugDescription, nullptr, nullptr, 0};

CFStringRef emptyString() { return &sharedEmptyString; }

bool allASCII(const uint8_t* bytes, CFIndex length) {
    CFIndex i = 0;
    // Thirty-two bytes per test keeps the branch out of the inner work.
    for (; i + 32 <= length; i += 32) {
        uint64_t words[4];
        std::memcpy(words, bytes + i, 32);
        if ((words[0] | words[1] | words[2] | words[3]) & 0x8080808080808080ull) return false;
    }
    for (; i + 8 <= length; i += 8) {
        uint64_t word;
        std::memcpy(&word, bytes + i, 8);
        if (word & 0x8080808080808080ull) return false;
    }
    for (; i < length; ++i) {
        if (bytes[i] >= 0x80) return false;
    }
    return true;
}

bool allASCII(const UniChar* units, CFIndex length) {
    UniChar any = 0;
    for (CFIndex i = 0; i < length; ++i) any |= units[i];
    return any < 0x80;
}

void copyUnits(CFStringRef s, CFIndex location, CFIndex length, UniChar* buffer) {
    if (isASCIIString(s)) {
        const uint8_t* p = s->contents.ascii + location;
        for (CFIndex i = 0; i < length; ++i) buffer[i] = p[i];
    } else if (length > 0) {
        std::memcpy(buffer, s->contents.units + location, size_t(length) * sizeof(UniChar));
    }
}

CFStringRef createStringFromUnits(CFAllocatorRef allocator, const UniChar* units, CFIndex length) {
    if (length <= 0 && usesDefaultAllocator(allocator)) return emptyString();
    return newStringFromUnits(allocator, units, std::max<CFIndex>(length, 0), false);
}

CFStringRef createStringFromASCII(CFAllocatorRef allocator, const char* bytes, CFIndex length) {
    if (length <= 0 && usesDefaultAllocator(allocator)) return emptyString();
    return newASCIIString(allocator, reinterpret_cast<const uint8_t*>(bytes), std::max<CFIndex>(length, 0));
}

CFStringRef createStringFromUTF8(CFAllocatorRef allocator, const uint8_t* bytes, CFIndex length) {
    if (length <= 0) return createStringFromASCII(allocator, nullptr, 0);
    if (allASCII(bytes, length)) return newASCIIString(allocator, bytes, length);
    // Decoded straight into the string's own storage, sized for the worst
    // case (one unit per byte) and trimmed when that wasted much.
    __CFString* s = allocateInlineString(allocator, (size_t(length) + 1) * sizeof(UniChar), 0, false);
    if (s == nullptr) return nullptr;
    auto* storage = reinterpret_cast<UniChar*>(s + 1);
    char16_t* end = decodeUTF8Into(bytes, size_t(length), storage, [](uint8_t) { return -1; });
    if (end == nullptr) {
        std::free(s);
        return nullptr;
    }
    CFIndex units = CFIndex(end - storage);
    *end = 0;
    if (units < length - length / 4) {
        if (auto* trimmed = static_cast<__CFString*>(
                std::realloc(s, sizeof(__CFString) + (size_t(units) + 1) * sizeof(UniChar)))) {
            s = trimmed;
            storage = reinterpret_cast<UniChar*>(s + 1);
        }
    }
    s->length = units;
    s->contents.units = storage;
    return s;
}

CFStringRef createStringReferencingASCII(CFAllocatorRef allocator, const char* bytes, CFIndex length,
                                         bool nulTerminated, CFAllocatorRef contentsDeallocator) {
    uintptr_t bits = kStringASCII | kStringExternal | (nulTerminated ? uintptr_t(kStringNulTerminated) : 0);
    auto* s = createInstance<__CFString>(allocator, kCFStringTypeID, 0, bits);
    if (s == nullptr) return nullptr;
    s->length = length;
    s->contents.ascii = reinterpret_cast<const uint8_t*>(bytes);
    s->contentsDeallocator = contentsDeallocator;
    return s;
}

CFStringRef createStringReferencingUnits(CFAllocatorRef allocator, const UniChar* units, CFIndex length,
                                         CFAllocatorRef contentsDeallocator) {
    auto* s = createInstance<__CFString>(allocator, kCFStringTypeID, 0, kStringExternal);
    if (s == nullptr) return nullptr;
    s->length = length;
    s->contents.units = units;
    s->contentsDeallocator = contentsDeallocator;
    return s;
}

bool decodeUTF8(const uint8_t* bytes, size_t length, std::u16string& out) {
    return decodeUTF8With(bytes, length, out, [](uint8_t) { return -1; });
}

bool decodeUTF8AllowingStrayA9(const uint8_t* bytes, size_t length, std::u16string& out) {
    return decodeUTF8With(bytes, length, out, [](uint8_t lead) { return lead == 0xA9 ? 0xFFFD : -1; });
}

void appendUTF8(std::string& out, const UniChar* units, size_t length) {
    out.reserve(out.size() + length);
    for (size_t i = 0; i < length; ++i) {
        uint32_t c = units[i];
        if (c < 0x80) {
            out.push_back(char(c));
            continue;
        }
        if (c >= 0xD800 && c <= 0xDBFF && i + 1 < length && units[i + 1] >= 0xDC00 && units[i + 1] <= 0xDFFF) {
            c = 0x10000 + ((c - 0xD800) << 10) + (units[i + 1] - 0xDC00);
            ++i;
        } else if (c >= 0xD800 && c <= 0xDFFF) {
            c = 0xFFFD;
        }
        if (c < 0x800) {
            out.push_back(char(0xC0 | (c >> 6)));
        } else if (c < 0x10000) {
            out.push_back(char(0xE0 | (c >> 12)));
            out.push_back(char(0x80 | ((c >> 6) & 0x3F)));
        } else {
            out.push_back(char(0xF0 | (c >> 18)));
            out.push_back(char(0x80 | ((c >> 12) & 0x3F)));
            out.push_back(char(0x80 | ((c >> 6) & 0x3F)));
        }
        out.push_back(char(0x80 | (c & 0x3F)));
    }
}

std::string utf8Of(CFStringRef s) {
    std::string out;
    if (!isA(s, kCFStringTypeID)) return out;
    if (isASCIIString(s)) return std::string(reinterpret_cast<const char*>(s->contents.ascii), size_t(s->length));
    appendUTF8(out, s->contents.units, size_t(s->length));
    return out;
}

std::u16string unitsOf(CFStringRef s) {
    std::u16string out;
    if (!isA(s, kCFStringTypeID)) return out;
    out.resize(size_t(s->length));
    copyUnits(s, 0, s->length, out.data());
    return out;
}

CFHashCode hashUnits(const UniChar* units, CFIndex length) { return hashOf(units, length); }

bool replaceUnits(CFMutableStringRef s, CFRange range, const UniChar* units, CFIndex length, const char* caller) {
    if (!isA(s, kCFStringTypeID)) {
        reportMisuse("CFString: %s(): not a string", caller);
        return false;
    }
    if (!isMutableString(s)) {
        reportMisuse("CFString: %s(): Expect mutable string", caller);
        return false;
    }
    if (range.location < 0 || range.length < 0 || range.location > s->length ||
        range.length > s->length - range.location || length < 0 || (units == nullptr && length > 0)) {
        reportMisuse("CFString: %s(): range {%ld, %ld} out of bounds (length %ld)", caller, range.location,
                     range.length, s->length);
        return false;
    }
    // The new units may live in this very buffer (appending a string to
    // itself); take them out before the buffer moves.
    std::u16string ownCopy;
    auto address = reinterpret_cast<uintptr_t>(units);
    auto bufferStart = reinterpret_cast<uintptr_t>(s->contents.units);
    if (units != nullptr && address >= bufferStart && address < bufferStart + size_t(s->capacity) * sizeof(UniChar)) {
        ownCopy.assign(units, size_t(length));
        units = ownCopy.data();
    }
    CFIndex newLength = s->length - range.length + length;
    if (newLength > s->capacity) {
        CFIndex capacity = std::max<CFIndex>(newLength, s->capacity + s->capacity / 2 + 16);
        auto* grown = static_cast<UniChar*>(std::realloc(s->contents.mutableUnits, size_t(capacity) * sizeof(UniChar)));
        if (grown == nullptr) {
            reportMisuse("CFString: %s(): out of memory", caller);
            return false;
        }
        s->contents.mutableUnits = grown;
        s->capacity = capacity;
    }
    UniChar* buffer = s->contents.mutableUnits;
    CFIndex tail = s->length - range.location - range.length;
    if (tail > 0 && length != range.length) {
        std::memmove(buffer + range.location + length, buffer + range.location + range.length,
                     size_t(tail) * sizeof(UniChar));
    }
    if (length > 0) std::memcpy(buffer + range.location, units, size_t(length) * sizeof(UniChar));
    s->length = newLength;
    return true;
}

TextBuilder& TextBuilder::ascii(std::string_view text) {
    size_t start = text_.size();
    text_.resize(start + text.size());
    for (size_t i = 0; i < text.size(); ++i) text_[start + i] = char16_t(uint8_t(text[i]));
    return *this;
}

TextBuilder& TextBuilder::utf8(std::string_view text) {
    decodeUTF8With(reinterpret_cast<const uint8_t*>(text.data()), text.size(), text_, [](uint8_t) { return 0xFFFD; });
    return *this;
}

TextBuilder& TextBuilder::units(const UniChar* units, size_t length) {
    text_.append(units, length);
    return *this;
}

TextBuilder& TextBuilder::unit(UniChar unit) {
    text_.push_back(unit);
    return *this;
}

TextBuilder& TextBuilder::string(CFStringRef s) {
    if (!isA(s, kCFStringTypeID)) return ascii("(null)");
    size_t start = text_.size();
    text_.resize(start + size_t(s->length));
    copyUnits(s, 0, s->length, text_.data() + start);
    return *this;
}

TextBuilder& TextBuilder::pointer(const void* p) { return format("0x%lx", static_cast<unsigned long>(reinterpret_cast<uintptr_t>(p))); }

TextBuilder& TextBuilder::format(const char* fmt, ...) {
    char small[128];
    std::va_list arguments;
    va_start(arguments, fmt);
    locale_t previous = uselocale(cLocale());
    std::va_list copy;
    va_copy(copy, arguments);
    int needed = std::vsnprintf(small, sizeof small, fmt, copy);
    va_end(copy);
    if (needed >= 0 && size_t(needed) < sizeof small) {
        utf8(std::string_view(small, size_t(needed)));
    } else if (needed >= 0) {
        std::string large(size_t(needed) + 1, '\0');
        std::vsnprintf(large.data(), large.size(), fmt, arguments);
        utf8(std::string_view(large.data(), size_t(needed)));
    }
    uselocale(previous);
    va_end(arguments);
    return *this;
}

TextBuilder& TextBuilder::description(CFTypeRef cf) {
    if (cf == nullptr) return ascii("(null)");
    CFStringRef text = CFCopyDescription(cf);
    string(text);
    CFRelease(text);
    return *this;
}

TextBuilder& TextBuilder::formattingDescription(CFTypeRef cf, CFDictionaryRef formatOptions) {
    CFStringRef text = copyFormattingDescription(cf, formatOptions);
    string(text);
    CFRelease(text);
    return *this;
}

CFStringRef TextBuilder::create(CFAllocatorRef allocator) const {
    return createStringFromUnits(allocator, text_.data(), CFIndex(text_.size()));
}

}  // namespace halvane::detail

CFTypeID CFStringGetTypeID(void) { return kCFStringTypeID; }

CFStringRef __CFStringMakeConstantString(const char* cStr, CFIndex length) {
    if (cStr == nullptr || length <= 0) return emptyString();
    // Interned for the life of the process; the table is never destroyed so
    // that constants stay usable while other static objects are torn down.
    static std::mutex* tableMutex = new std::mutex;
    static auto* table = new std::unordered_map<std::string, CFStringRef>;
    std::string key(cStr, size_t(length));
    std::lock_guard lock(*tableMutex);
    auto found = table->find(key);
    if (found != table->end()) return found->second;

    auto bytes = reinterpret_cast<const uint8_t*>(cStr);
    CFStringRef string = nullptr;
    if (allASCII(bytes, length)) {
        string = newASCIIString(kCFAllocatorSystemDefault, bytes, length, true);
    } else {
        std::u16string units;
        if (!decodeUTF8(bytes, size_t(length), units)) {
            // Not UTF-8: keep every byte as the character of the same value.
            units.clear();
            for (CFIndex i = 0; i < length; ++i) units.push_back(char16_t(bytes[i]));
        }
        string = newUnitString(kCFAllocatorSystemDefault, units.data(), CFIndex(units.size()), true);
    }
    if (string == nullptr) return emptyString();
    table->emplace(std::move(key), string);
    return string;
}

CFStringRef CFStringCreateWithCharacters(CFAllocatorRef alloc, const UniChar* chars, CFIndex numChars) {
    if (numChars < 0 || (chars == nullptr && numChars > 0)) return nullptr;
    return createStringFromUnits(alloc, chars, numChars);
}

CFStringRef CFStringCreateWithCharactersNoCopy(CFAllocatorRef alloc, const UniChar* chars, CFIndex numChars,
                                               CFAllocatorRef contentsDeallocator) {
    if (numChars < 0 || (chars == nullptr && numChars > 0)) return nullptr;
    if (numChars == 0 && usesDefaultAllocator(alloc)) {
        // Nothing to reference: the buffer is not kept, so it goes now.
        if (chars != nullptr && contentsDeallocator != kCFAllocatorNull) {
            CFAllocatorDeallocate(contentsDeallocator, const_cast<UniChar*>(chars));
        }
        return emptyString();
    }
    return createStringReferencingUnits(alloc, chars, numChars, contentsDeallocator);
}

CFStringRef CFStringCreateCopy(CFAllocatorRef alloc, CFStringRef theString) {
    if (!isA(theString, kCFStringTypeID)) return nullptr;
    if (!isMutableString(theString) && usesDefaultAllocator(alloc)) return static_cast<CFStringRef>(CFRetain(theString));
    if (isASCIIString(theString)) {
        return createStringFromASCII(alloc, reinterpret_cast<const char*>(theString->contents.ascii), theString->length);
    }
    return createStringFromUnits(alloc, theString->contents.units, theString->length);
}

CFMutableStringRef CFStringCreateMutable(CFAllocatorRef alloc, CFIndex maxLength) {
    auto* s = createInstance<__CFString>(alloc, kCFStringTypeID, 0, kStringMutable);
    if (s == nullptr) return nullptr;
    if (maxLength > 0 && maxLength < (CFIndex(1) << 30)) {
        s->contents.mutableUnits = static_cast<UniChar*>(std::malloc(size_t(maxLength) * sizeof(UniChar)));
        if (s->contents.mutableUnits != nullptr) s->capacity = maxLength;
    }
    return s;
}

CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef alloc, CFIndex maxLength, CFStringRef theString) {
    if (!isA(theString, kCFStringTypeID)) return nullptr;
    CFMutableStringRef copy = CFStringCreateMutable(alloc, std::max(maxLength, theString->length));
    if (copy == nullptr) return nullptr;
    if (theString->length > 0) {
        if (copy->capacity < theString->length) {
            CFRelease(copy);
            return nullptr;
        }
        copyUnits(theString, 0, theString->length, copy->contents.mutableUnits);
        copy->length = theString->length;
    }
    return copy;
}

CFIndex CFStringGetLength(CFStringRef theString) {
    return isA(theString, kCFStringTypeID) ? theString->length : 0;
}

UniChar CFStringGetCharacterAtIndex(CFStringRef theString, CFIndex idx) {
    if (!isA(theString, kCFStringTypeID)) return 0;
    if (idx < 0 || idx >= theString->length) {
        reportMisuse("CFString: CFStringGetCharacterAtIndex(): index %ld out of bounds (length %ld)", idx,
                     theString->length);
        return 0;
    }
    return unitAt(theString, idx);
}

void CFStringGetCharacters(CFStringRef theString, CFRange range, UniChar* buffer) {
    if (!isA(theString, kCFStringTypeID) || buffer == nullptr) return;
    if (range.location < 0 || range.length < 0 || range.location > theString->length ||
        range.length > theString->length - range.location) {
        reportMisuse("CFString: CFStringGetCharacters(): range {%ld, %ld} out of bounds (length %ld)", range.location,
                     range.length, theString->length);
        return;
    }
    copyUnits(theString, range.location, range.length, buffer);
}

const UniChar* CFStringGetCharactersPtr(CFStringRef theString) {
    if (!isA(theString, kCFStringTypeID) || isASCIIString(theString)) return nullptr;
    return theString->contents.units;
}

void CFStringAppend(CFMutableStringRef theString, CFStringRef appendedString) {
    if (!isA(appendedString, kCFStringTypeID)) return;
    CFIndex end = CFStringGetLength(theString);
    if (isASCIIString(appendedString)) {
        std::u16string widened = unitsOf(appendedString);
        replaceUnits(theString, CFRangeMake(end, 0), widened.data(), CFIndex(widened.size()), "CFStringAppend");
    } else {
        replaceUnits(theString, CFRangeMake(end, 0), appendedString->contents.units, appendedString->length,
                     "CFStringAppend");
    }
}

void CFStringAppendCharacters(CFMutableStringRef theString, const UniChar* chars, CFIndex numChars) {
    replaceUnits(theString, CFRangeMake(CFStringGetLength(theString), 0), chars, numChars, "CFStringAppendCharacters");
}
