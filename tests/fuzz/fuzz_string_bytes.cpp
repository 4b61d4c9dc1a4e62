// Fuzzes decoding bytes into strings in every encoding (with and without
// the external-representation flag) and encoding them back, and checks the
// promises that hold whatever the input:
// - a dry run of CFStringGetBytes measures exactly what the real run writes;
// - the lossless encodings give the same string back when everything
//   could be converted.
#include <CoreFoundation/CoreFoundation.h>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <vector>

namespace {

constexpr CFStringEncoding kEncodings[] = {kCFStringEncodingMacRoman,      kCFStringEncodingWindowsLatin1,
                                           kCFStringEncodingISOLatin1,     kCFStringEncodingNextStepLatin,
                                           kCFStringEncodingASCII,         kCFStringEncodingUTF8,
                                           kCFStringEncodingUTF16,         kCFStringEncodingUTF16BE,
                                           kCFStringEncodingUTF16LE,       kCFStringEncodingUTF32,
                                           kCFStringEncodingUTF32BE,       kCFStringEncodingUTF32LE,
                                           kCFStringEncodingNonLossyASCII, 0x12345 /* unknown */};

constexpr UInt8 kLossBytes[] = {0, '?', 0xFF};

void check(bool condition) {
    if (!condition) __builtin_trap();
}

bool isLossless(CFStringEncoding encoding) {
    switch (encoding) {
        case kCFStringEncodingUTF8:
        case kCFStringEncodingUTF16:
        case kCFStringEncodingUTF16BE:
        case kCFStringEncodingUTF16LE:
        case kCFStringEncodingUTF32:
        case kCFStringEncodingUTF32BE:
        case kCFStringEncodingUTF32LE:
        case kCFStringEncodingNonLossyASCII:
            return true;
        default:
            return false;
    }
}

// Whether reading back what was written gives the same text. Known
// exceptions: UTF-8 input always loses a leading U+FEFF (read as a
// byte-order mark), and plain UTF-32 is written in host order but read
// back as big-endian without a byte-order mark.
bool roundTrips(CFStringRef s, CFStringEncoding encoding, bool external) {
    if (!isLossless(encoding)) return false;
    if (encoding == kCFStringEncodingUTF8 && CFStringGetLength(s) > 0 && CFStringGetCharacterAtIndex(s, 0) == 0xFEFF) {
        return false;
    }
    return encoding != kCFStringEncodingUTF32 || external;
}

void encodeBack(CFStringRef s, CFStringEncoding encoding, UInt8 lossByte, bool external) {
    CFIndex length = CFStringGetLength(s);
    CFIndex measured = -1;
    CFIndex measuredUnits =
        CFStringGetBytes(s, CFRangeMake(0, length), encoding, lossByte, external, nullptr, 0, &measured);
    check(measured >= 0 && measuredUnits >= 0 && measuredUnits <= length);
    std::vector<UInt8> buffer(static_cast<size_t>(measured) + 1);
    CFIndex used = -1;
    CFIndex units =
        CFStringGetBytes(s, CFRangeMake(0, length), encoding, lossByte, external, buffer.data(), measured, &used);
    check(units == measuredUnits && used == measured);

    // A buffer one byte short never overflows and converts no more (never
    // empty: a NULL buffer would mean "measure only").
    if (measured > 0) {
        std::vector<UInt8> shorter(static_cast<size_t>(measured));
        CFIndex shortUsed = -1;
        CFIndex shortUnits = CFStringGetBytes(s, CFRangeMake(0, length), encoding, lossByte, external, shorter.data(),
                                              measured - 1, &shortUsed);
        check(shortUsed <= measured - 1 && shortUnits <= units);
    }

    if (units == length && lossByte == 0 && roundTrips(s, encoding, external)) {
        CFStringRef back = CFStringCreateWithBytes(nullptr, buffer.data(), used, encoding, external);
        check(back != nullptr && CFEqual(back, s));
        CFRelease(back);
    }
    CFDataRef representation = CFStringCreateExternalRepresentation(nullptr, s, encoding, lossByte);
    if (representation != nullptr) CFRelease(representation);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1 || size > 4096) return 0;
    UInt8 lossByte = kLossBytes[data[0] % std::size(kLossBytes)];
    bool externalOut = (data[0] & 4) != 0;
    const UInt8* bytes = data + 1;
    CFIndex length = CFIndex(size - 1);
    for (CFStringEncoding from : kEncodings) {
        for (bool externalIn : {false, true}) {
            CFStringRef s = CFStringCreateWithBytes(nullptr, bytes, length, from, externalIn);
            if (s == nullptr) continue;
            for (CFStringEncoding to : kEncodings) encodeBack(s, to, lossByte, externalOut);
            CFRelease(s);
        }
    }
    return 0;
}
