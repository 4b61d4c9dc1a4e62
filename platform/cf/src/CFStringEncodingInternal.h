// What the conversions between strings and bytes share: the encodings this
// library knows and how each maps characters to bytes.
#ifndef HALVANE_CF_STRING_ENCODING_INTERNAL_H
#define HALVANE_CF_STRING_ENCODING_INTERNAL_H

#include "CFStringEncodingTables.h"

#include <CoreFoundation/CFString.h>

#include <bit>
#include <cstdint>

namespace halvane::detail {

// How an encoding maps characters to bytes.
enum class EncodingScheme { kUnsupported, kASCII, kLatin1, kTable, kUTF8, kUTF16, kUTF32, kNonLossyASCII };

// Byte order of the 16- and 32-bit encodings. kExternal: a leading
// byte-order mark decides, big-endian without one.
enum class UnitByteOrder { kHost, kBig, kLittle, kExternal };

struct EncodingInfo {
    EncodingScheme scheme = EncodingScheme::kUnsupported;
    const EightBitTable* table = nullptr;        // kTable only
    UnitByteOrder order = UnitByteOrder::kHost;  // kUTF16 and kUTF32 only
};

inline constexpr UnitByteOrder kHostOrder =
    std::endian::native == std::endian::little ? UnitByteOrder::kLittle : UnitByteOrder::kBig;

inline EncodingInfo encodingOf(CFStringEncoding encoding) {
    switch (encoding) {
        case kCFStringEncodingMacRoman:
            return {EncodingScheme::kTable, &kMacRomanTable};
        case kCFStringEncodingWindowsLatin1:
            return {EncodingScheme::kTable, &kWindowsLatin1Table};
        case kCFStringEncodingNextStepLatin:
            return {EncodingScheme::kTable, &kNextStepLatinTable};
        case kCFStringEncodingISOLatin1:
            return {EncodingScheme::kLatin1};
        case kCFStringEncodingASCII:
            return {EncodingScheme::kASCII};
        case kCFStringEncodingUTF8:
            return {EncodingScheme::kUTF8};
        case kCFStringEncodingNonLossyASCII:
            return {EncodingScheme::kNonLossyASCII};
        case kCFStringEncodingUTF16:
            return {EncodingScheme::kUTF16, nullptr, UnitByteOrder::kHost};
        case kCFStringEncodingUTF16BE:
            return {EncodingScheme::kUTF16, nullptr, UnitByteOrder::kBig};
        case kCFStringEncodingUTF16LE:
            return {EncodingScheme::kUTF16, nullptr, UnitByteOrder::kLittle};
        case kCFStringEncodingUTF32:
            return {EncodingScheme::kUTF32, nullptr, UnitByteOrder::kHost};
        case kCFStringEncodingUTF32BE:
            return {EncodingScheme::kUTF32, nullptr, UnitByteOrder::kBig};
        case kCFStringEncodingUTF32LE:
            return {EncodingScheme::kUTF32, nullptr, UnitByteOrder::kLittle};
        default:
            return {};
    }
}

// Encodings in which ASCII text is its own bytes, so that ASCII strings
// convert by copying. NonLossyASCII is not one: it escapes the backslash.
inline bool asciiIsIdentity(EncodingScheme scheme) {
    return scheme == EncodingScheme::kASCII || scheme == EncodingScheme::kLatin1 || scheme == EncodingScheme::kTable ||
           scheme == EncodingScheme::kUTF8;
}

// Encodings that C strings may use: one NUL byte ends the text.
inline bool isASCIISuperset(EncodingScheme scheme) {
    return asciiIsIdentity(scheme) || scheme == EncodingScheme::kNonLossyASCII;
}

inline bool isHighSurrogate(uint32_t u) {
    return u >= 0xD800 && u <= 0xDBFF;
}
inline bool isLowSurrogate(uint32_t u) {
    return u >= 0xDC00 && u <= 0xDFFF;
}
inline bool isSurrogate(uint32_t u) {
    return u >= 0xD800 && u <= 0xDFFF;
}

}  // namespace halvane::detail

#endif  // HALVANE_CF_STRING_ENCODING_INTERNAL_H
