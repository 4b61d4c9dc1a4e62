// External representations: the whole text of a string as encoded bytes in
// a CFData (with a byte-order mark where the encoding has one), and back.
#include "CFStringInternal.h"

#include <CoreFoundation/CFData.h>

#include <memory>

using namespace halvane::detail;

CFDataRef CFStringCreateExternalRepresentation(CFAllocatorRef alloc, CFStringRef theString, CFStringEncoding encoding,
                                               UInt8 lossByte) {
    if (!isA(theString, kCFStringTypeID)) {
        reportMisuse("CFString: CFStringCreateExternalRepresentation(): not a string");
        return nullptr;
    }
    if (!CFStringIsEncodingAvailable(encoding)) return nullptr;
    CFRange all = CFRangeMake(0, CFStringGetLength(theString));
    CFIndex needed = 0;
    CFIndex converted = CFStringGetBytes(theString, all, encoding, lossByte, true, nullptr, 0, &needed);
    // Without a loss byte everything must convert; with one, a partial
    // result (UTF-8 stops at a lone surrogate) is still a result, but an
    // empty one is not.
    if (converted < all.length && (lossByte == 0 || converted == 0)) return nullptr;
    auto bytes = std::make_unique<UInt8[]>(size_t(needed) + 1);
    CFIndex used = 0;
    CFStringGetBytes(theString, CFRangeMake(0, converted), encoding, lossByte, true, bytes.get(), needed, &used);
    return CFDataCreate(alloc, bytes.get(), used);
}

CFStringRef CFStringCreateFromExternalRepresentation(CFAllocatorRef alloc, CFDataRef data, CFStringEncoding encoding) {
    if (!isA(data, kCFDataTypeID)) {
        reportMisuse("CFString: CFStringCreateFromExternalRepresentation(): not a data object");
        return nullptr;
    }
    return CFStringCreateWithBytes(alloc, CFDataGetBytePtr(data), CFDataGetLength(data), encoding, true);
}
