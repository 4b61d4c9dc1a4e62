// Numbers at the start of a string: CFStringGetIntValue and
// CFStringGetDoubleValue.
#include "CFStringInternal.h"

#include <cstdlib>
#include <string>

using namespace halvane::detail;

namespace {

// What the scanners skip before a number: controls, spaces and the other
// blank characters of the Latin-1, general punctuation and CJK blocks.
bool isSkippedSpace(uint32_t u) {
    return u < 0x21 || (u >= 0x7F && u <= 0xA0) || (u >= 0x2000 && u <= 0x200B) || u == 0x3000;
}

bool isDigit(uint32_t u) {
    return u >= '0' && u <= '9';
}

bool isFloatCharacter(uint32_t u) {
    return isDigit(u) || u == '+' || u == '-' || u == '.' || u == 'e' || u == 'E';
}

template <typename Unit>
CFIndex skipSpaces(const Unit* units, CFIndex length, CFIndex i) {
    while (i < length && isSkippedSpace(units[i])) ++i;
    return i;
}

template <typename Unit>
SInt32 intValue(const Unit* units, CFIndex length) {
    CFIndex i = skipSpaces(units, length, 0);
    bool negative = false;
    if (i < length && (units[i] == '+' || units[i] == '-')) {
        negative = units[i] == '-';
        i = skipSpaces(units, length, i + 1);
    }
    // Accumulated as a negative number, whose range includes INT32_MIN.
    constexpr int64_t kLimit = -int64_t(INT32_MIN);
    int64_t magnitude = 0;
    for (; i < length && isDigit(units[i]); ++i) {
        magnitude = magnitude * 10 + (units[i] - '0');
        if (magnitude > kLimit) break;  // saturated; later digits cannot matter
    }
    if (negative) return magnitude >= kLimit ? INT32_MIN : SInt32(-magnitude);
    return magnitude > INT32_MAX ? INT32_MAX : SInt32(magnitude);
}

template <typename Unit>
double doubleValue(const Unit* units, CFIndex length) {
    CFIndex start = skipSpaces(units, length, 0);
    CFIndex end = start;
    while (end < length && isFloatCharacter(units[end])) ++end;
    if (end == start) return 0.0;
    // The candidate characters, then the longest prefix strtod accepts, in
    // the C locale whatever setlocale says.
    char small[64];
    std::string large;
    char* text = small;
    if (size_t(end - start) >= sizeof small) {
        large.resize(size_t(end - start) + 1);
        text = large.data();
    }
    for (CFIndex k = start; k < end; ++k) text[k - start] = char(units[k]);
    text[end - start] = '\0';
    return strtod_l(text, nullptr, cLocale());
}

}  // namespace

SInt32 CFStringGetIntValue(CFStringRef str) {
    if (!isA(str, kCFStringTypeID)) {
        reportMisuse("CFString: CFStringGetIntValue(): not a string");
        return 0;
    }
    return withUnits(str, [](auto* units, CFIndex length) { return intValue(units, length); });
}

double CFStringGetDoubleValue(CFStringRef str) {
    if (!isA(str, kCFStringTypeID)) {
        reportMisuse("CFString: CFStringGetDoubleValue(): not a string");
        return 0.0;
    }
    return withUnits(str, [](auto* units, CFIndex length) { return doubleValue(units, length); });
}
