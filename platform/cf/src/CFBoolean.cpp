// CFBoolean: exactly two immortal objects. Equality is identity (the
// runtime's default, since no other instances exist).
#include "CFInternal.h"
#include "CFStringInternal.h"

#include <CoreFoundation/CFNumber.h>

struct __CFBoolean {
    CFRuntimeBase base;
    bool value;
};

namespace halvane::detail {

namespace {

constinit __CFBoolean trueSingleton = {immortalHeader(kCFBooleanTypeID), true};
constinit __CFBoolean falseSingleton = {immortalHeader(kCFBooleanTypeID), false};

bool valueOf(CFTypeRef cf) {
    return static_cast<const __CFBoolean*>(cf)->value;
}

// The same values as the hashes of the numbers 1 and 0.
CFHashCode hashBoolean(CFTypeRef cf) {
    return valueOf(cf) ? 2654435761u : 0u;
}

CFStringRef copyBooleanFormattingDescription(CFTypeRef cf, CFDictionaryRef) {
    return valueOf(cf) ? CFSTR("true") : CFSTR("false");
}

CFStringRef copyBooleanDebugDescription(CFTypeRef cf) {
    return TextBuilder()
        .ascii("<CFBoolean ")
        .pointer(cf)
        .ascii(" [")
        .pointer(descriptionAllocatorAddress(cf))
        .ascii("]>{value = ")
        .ascii(valueOf(cf) ? "true" : "false")
        .ascii("}")
        .create();
}

}  // namespace

constinit const CFRuntimeClass kBooleanClass = {0,
                                                "CFBoolean",
                                                nullptr,
                                                nullptr,
                                                nullptr,
                                                nullptr,
                                                hashBoolean,
                                                copyBooleanFormattingDescription,
                                                copyBooleanDebugDescription,
                                                nullptr,
                                                nullptr,
                                                0};

}  // namespace halvane::detail

using namespace halvane::detail;

const CFBooleanRef kCFBooleanTrue = &trueSingleton;
const CFBooleanRef kCFBooleanFalse = &falseSingleton;

CFTypeID CFBooleanGetTypeID(void) {
    return kCFBooleanTypeID;
}

Boolean CFBooleanGetValue(CFBooleanRef boolean) {
    if (!isA(boolean, kCFBooleanTypeID)) {
        reportMisuse("CFBoolean: CFBooleanGetValue(): not a boolean");
        return false;
    }
    return boolean->value;
}
