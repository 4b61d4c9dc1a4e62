// CFNull: the single immortal object that stands for "no value" inside
// collections. Equality is identity and the hash is the address (the
// runtime's defaults); the debug description is the runtime's generic
// "<CFNull 0x... [0x...]>".
#include "CFInternal.h"

#include <CoreFoundation/CFString.h>

struct __CFNull {
    CFRuntimeBase base;
};

namespace halvane::detail {

namespace {

constinit __CFNull nullSingleton = {immortalHeader(kCFNullTypeID)};

CFStringRef copyNullFormattingDescription(CFTypeRef, CFDictionaryRef) {
    return CFSTR("null");
}

}  // namespace

constinit const CFRuntimeClass kNullClass = {0,       "CFNull", nullptr, nullptr,
                                             nullptr, nullptr,  nullptr, copyNullFormattingDescription,
                                             nullptr, nullptr,  nullptr, 0};

}  // namespace halvane::detail

using namespace halvane::detail;

const CFNullRef kCFNull = &nullSingleton;

CFTypeID CFNullGetTypeID(void) {
    return kCFNullTypeID;
}
