// Fuzzes CFStringCreateWithFormat with formats built from the input over a
// fixed list of arguments.
//
// The input is never used as a format directly: a '%' in it starts a
// directive whose parts (conversion, length modifier, flags, width,
// precision) are chosen by the bytes after it, and the directive is
// written out with an explicit position that names an argument of exactly
// the type the conversion reads. Every other byte is literal text. A
// trailer names every argument once more with its own type, so no argument
// is ever left to be read as "some integer". The formatter therefore never
// reads an argument of the wrong type, whatever the input.
#include <CoreFoundation/CoreFoundation.h>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>

namespace {

// The fixed arguments, by 1-based position.
enum Slot : int {
    kIntSlot = 1,          // int 42
    kNegativeIntSlot = 2,  // int -5 (a negative width left-justifies)
    kLongSlot = 3,         // long
    kDoubleSlot = 4,       // double
    kLargeDoubleSlot = 5,  // double
    kLongDoubleSlot = 6,   // long double
    kCStringSlot = 7,      // const char* (UTF-8)
    kUnitsSlot = 8,        // const UniChar* (NUL-terminated)
    kObjectSlot = 9,       // CFTypeRef
    kPointerSlot = 10,     // int* (for %p and %n)
    kNullObjectSlot = 11,  // CFTypeRef NULL
    kNullCStringSlot = 12  // const char* NULL
};
constexpr const char* kTrailer = "|%1$d%2$d%3$ld%4$g%5$e%6$Lf%7$s%8$S%9$@%10$p%11$@%12$s";

enum class Reads { Integer, Floating, Char, Unit, CString, Units, Object, Pointer, Nothing };

struct Conversion {
    char letter;
    Reads reads;
};
constexpr Conversion kConversions[] = {
    {'d', Reads::Integer},  {'i', Reads::Integer},  {'u', Reads::Integer},  {'o', Reads::Integer},
    {'x', Reads::Integer},  {'X', Reads::Integer},  {'D', Reads::Integer},  {'U', Reads::Integer},
    {'O', Reads::Integer},  {'f', Reads::Floating}, {'F', Reads::Floating}, {'e', Reads::Floating},
    {'E', Reads::Floating}, {'g', Reads::Floating}, {'G', Reads::Floating}, {'a', Reads::Floating},
    {'A', Reads::Floating}, {'c', Reads::Char},     {'C', Reads::Unit},     {'s', Reads::CString},
    {'S', Reads::Units},    {'@', Reads::Object},   {'p', Reads::Pointer},  {'n', Reads::Pointer},
    {'%', Reads::Nothing},  {'k', Reads::Nothing},  {'y', Reads::Nothing},  {'!', Reads::Nothing},
};
constexpr const char* kSizes[] = {"", "hh", "h", "l", "ll", "q", "j", "z", "t", "L"};
constexpr char kFlags[] = {'-', '+', ' ', '0', '#'};

// Reads the input byte by byte; zero once it is used up.
class Input {
public:
    Input(const uint8_t* data, size_t size) : data_(data), size_(size) {}
    bool done() const { return at_ >= size_; }
    uint8_t next() { return at_ < size_ ? data_[at_++] : 0; }

private:
    const uint8_t* data_;
    size_t size_;
    size_t at_ = 0;
};

struct Built {
    std::string format;
    bool overflows = false;  // the format asks for a width or position too large: NULL is expected
};

void appendNumberOrArgument(Built& built, uint8_t mode, uint8_t value) {
    switch (mode % 4) {
        case 0:
            break;
        case 1:
            built.format += std::to_string(value);
            break;
        case 2:
            built.format += "*" + std::to_string(value % 2 == 0 ? int(kIntSlot) : int(kNegativeIntSlot)) + "$";
            break;
        default:
            if (value == 255) {
                built.format += "99999999999";  // beyond INT32_MAX
                built.overflows = true;
            } else {
                built.format += std::to_string(value % 40);
            }
            break;
    }
}

// The argument a conversion with this length modifier reads.
int slotFor(Reads reads, const char* size, uint8_t choice) {
    std::string modifier = size;
    bool wide = !modifier.empty() && modifier != "h" && modifier != "hh";
    switch (reads) {
        case Reads::Integer:
            return wide ? kLongSlot : (choice % 2 == 0 ? kIntSlot : kNegativeIntSlot);
        case Reads::Floating:
            return modifier == "L" ? kLongDoubleSlot : (choice % 2 == 0 ? kDoubleSlot : kLargeDoubleSlot);
        case Reads::Char:
        case Reads::Unit:
            return choice % 2 == 0 ? kIntSlot : kNegativeIntSlot;
        case Reads::CString:
            return choice % 2 == 0 ? kCStringSlot : kNullCStringSlot;
        case Reads::Units:
            return kUnitsSlot;
        case Reads::Object:
            return choice % 2 == 0 ? kObjectSlot : kNullObjectSlot;
        case Reads::Pointer:
            return kPointerSlot;
        case Reads::Nothing:
            break;
    }
    return 0;
}

void appendDirective(Built& built, Input& input) {
    const Conversion& conversion = kConversions[input.next() % std::size(kConversions)];
    uint8_t sizeChoice = input.next(), flagBits = input.next(), widthMode = input.next(), width = input.next();
    uint8_t precisionMode = input.next(), precision = input.next(), slotChoice = input.next();
    built.format += '%';
    if (conversion.reads == Reads::Nothing) {
        // No position, no '*' and no '$': nothing here may name an argument.
        if (flagBits & 0x80) built.format += std::to_string(width % 40);
        built.format += conversion.letter;
        return;
    }
    if (slotChoice == 255) {
        built.format += "200$";  // a position beyond 127: the whole format fails before reading anything
        built.overflows = true;
    } else {
        const char* size = kSizes[sizeChoice % std::size(kSizes)];
        built.format += std::to_string(slotFor(conversion.reads, size, slotChoice)) + "$";
        for (size_t k = 0; k < std::size(kFlags); ++k) {
            if (flagBits & (1u << k)) built.format += kFlags[k];
        }
        appendNumberOrArgument(built, widthMode, width);
        if (precisionMode % 4 != 0) {
            built.format += '.';
            appendNumberOrArgument(built, precisionMode, precision);
        }
        built.format += size;
    }
    built.format += conversion.letter;
}

Built buildFormat(const uint8_t* data, size_t size) {
    Built built;
    Input input(data, size);
    while (!input.done()) {
        uint8_t byte = input.next();
        if (byte == '%') {
            appendDirective(built, input);
        } else {
            built.format += char(byte);
        }
    }
    built.format += kTrailer;
    return built;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1 || size > 2048) return 0;
    uint8_t mode = data[0];
    Built built = buildFormat(data + 1, size - 1);
    // Latin-1 takes every byte, so the format always exists; the mode byte
    // picks between immutable and mutable formats and the options.
    CFStringRef format = CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>(built.format.data()),
                                                 CFIndex(built.format.size()), kCFStringEncodingISOLatin1, false);
    if (format == nullptr) __builtin_trap();
    if (mode & 1) {
        CFMutableStringRef copy = CFStringCreateMutableCopy(nullptr, 0, format);
        CFRelease(format);
        format = copy;
    }
    CFDictionaryRef options = nullptr;
    if (mode & 2) {
        const void* key = CFSTR("NSDecimalSeparator");
        const void* value = CFSTR(",");
        options = CFDictionaryCreate(nullptr, &key, &value, 1, &kCFTypeDictionaryKeyCallBacks,
                                     &kCFTypeDictionaryValueCallBacks);
    }
    int sink = 0;
    const UniChar wide[] = {u'w', u'i', u'd', u'e', 0};
    CFStringRef result = CFStringCreateWithFormat(nullptr, options, format, 42, -5, -1234567890123L, 3.25, 6.02e23,
                                                  1.5L, "h\xC3\xA9llo", wide, CFSTR("object"), &sink,
                                                  static_cast<CFTypeRef>(nullptr), static_cast<const char*>(nullptr));
    // Only a width, precision or position that is too large makes it fail.
    if ((result == nullptr) != built.overflows) __builtin_trap();
    if (result != nullptr) CFRelease(result);
    if (options != nullptr) CFRelease(options);
    CFRelease(format);
    return 0;
}
