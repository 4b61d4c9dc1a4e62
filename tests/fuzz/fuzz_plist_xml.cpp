// Reads arbitrary bytes as a property list with each mutability option.
// Whatever is read must be writable as XML, and the XML must read back as
// an equal list. A failure must come with an error and a message.
#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>
#include <cstdlib>
#include <initializer_list>

namespace {

bool isZero(CFTypeRef cf) {
    if (CFGetTypeID(cf) != CFNumberGetTypeID() || !CFNumberIsFloatType(static_cast<CFNumberRef>(cf))) return false;
    double value = 1;
    CFNumberGetValue(static_cast<CFNumberRef>(cf), kCFNumberFloat64Type, &value);
    return value == 0;
}

// CFEqual, except that -0.0 reads back as 0.0: the text form has one zero.
// Lists read from text are at most 512 levels deep.
bool sameAfterRoundTrip(CFTypeRef a, CFTypeRef b) {
    if (CFGetTypeID(a) != CFGetTypeID(b)) return false;
    if (CFGetTypeID(a) == CFArrayGetTypeID()) {
        auto x = static_cast<CFArrayRef>(a), y = static_cast<CFArrayRef>(b);
        CFIndex count = CFArrayGetCount(x);
        if (count != CFArrayGetCount(y)) return false;
        for (CFIndex i = 0; i < count; ++i) {
            if (!sameAfterRoundTrip(CFArrayGetValueAtIndex(x, i), CFArrayGetValueAtIndex(y, i))) return false;
        }
        return true;
    }
    if (CFGetTypeID(a) == CFDictionaryGetTypeID()) {
        auto x = static_cast<CFDictionaryRef>(a), y = static_cast<CFDictionaryRef>(b);
        CFIndex count = CFDictionaryGetCount(x);
        if (count != CFDictionaryGetCount(y)) return false;
        const void** keys = static_cast<const void**>(std::malloc(sizeof(void*) * size_t(count) + 1));
        CFDictionaryGetKeysAndValues(x, keys, nullptr);
        bool same = true;
        for (CFIndex i = 0; i < count && same; ++i) {
            const void* other = nullptr;
            same = CFDictionaryGetValueIfPresent(y, keys[i], &other) &&
                   sameAfterRoundTrip(CFDictionaryGetValue(x, keys[i]), other);
        }
        std::free(keys);
        return same;
    }
    return CFEqual(a, b) || (isZero(a) && isZero(b));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    CFDataRef input = CFDataCreateWithBytesNoCopy(nullptr, data, CFIndex(size), kCFAllocatorNull);
    for (CFOptionFlags option : {kCFPropertyListImmutable, kCFPropertyListMutableContainers,
                                 kCFPropertyListMutableContainersAndLeaves}) {
        CFErrorRef error = nullptr;
        CFPropertyListFormat format = 0;
        CFPropertyListRef plist = CFPropertyListCreateWithData(nullptr, input, option, &format, &error);
        if (plist == nullptr) {
            if (error == nullptr) std::abort();
            CFDictionaryRef userInfo = CFErrorCopyUserInfo(error);
            auto message = static_cast<CFStringRef>(CFDictionaryGetValue(userInfo, kCFErrorDebugDescriptionKey));
            if (message == nullptr || CFStringGetLength(message) == 0) std::abort();
            CFRelease(userInfo);
            CFRelease(error);
            continue;
        }
        if (error != nullptr) std::abort();
        if (format != kCFPropertyListXMLFormat_v1_0 && format != kCFPropertyListOpenStepFormat) std::abort();
        CFDataRef xml = CFPropertyListCreateData(nullptr, plist, kCFPropertyListXMLFormat_v1_0, 0, &error);
        if (xml == nullptr) std::abort();
        CFPropertyListFormat againFormat = 0;
        CFPropertyListRef again = CFPropertyListCreateWithData(nullptr, xml, option, &againFormat, &error);
        if (again == nullptr || againFormat != kCFPropertyListXMLFormat_v1_0) std::abort();
        if (!sameAfterRoundTrip(plist, again)) std::abort();
        CFRelease(again);
        CFRelease(xml);
        CFRelease(plist);
    }
    CFRelease(input);
    return 0;
}
