// CFError: a domain, a code and an immutable user-information dictionary,
// with the derived texts (localized description, failure reason, recovery
// suggestion) and the one-line description that both CFCopyDescription and
// "%@" print.
#include "CFConstantString.h"
#include "CFDictionaryInternal.h"
#include "CFInternal.h"
#include "CFStringInternal.h"

#include <CoreFoundation/CFError.h>

#include <locale.h>
#include <climits>
#include <cstring>
#include <vector>

struct __CFError {
    CFRuntimeBase base;
    CFStringRef domain;
    CFIndex code;
    CFDictionaryRef userInfo;  // never NULL
};

using namespace halvane::detail;

const CFErrorDomain kCFErrorDomainPOSIX = &constantString<"NSPOSIXErrorDomain">;
const CFErrorDomain kCFErrorDomainOSStatus = &constantString<"NSOSStatusErrorDomain">;
const CFErrorDomain kCFErrorDomainMach = &constantString<"NSMachErrorDomain">;
const CFErrorDomain kCFErrorDomainCocoa = &constantString<"NSCocoaErrorDomain">;

const CFStringRef kCFErrorLocalizedDescriptionKey = &constantString<"NSLocalizedDescription">;
const CFStringRef kCFErrorLocalizedFailureKey = &constantString<"NSLocalizedFailure">;
const CFStringRef kCFErrorLocalizedFailureReasonKey = &constantString<"NSLocalizedFailureReason">;
const CFStringRef kCFErrorLocalizedRecoverySuggestionKey = &constantString<"NSLocalizedRecoverySuggestion">;
const CFStringRef kCFErrorDescriptionKey = &constantString<"NSDescription">;
const CFStringRef kCFErrorDebugDescriptionKey = &constantString<"NSDebugDescription">;
const CFStringRef kCFErrorUnderlyingErrorKey = &constantString<"NSUnderlyingError">;
const CFStringRef kCFErrorURLKey = &constantString<"NSURL">;
const CFStringRef kCFErrorFilePathKey = &constantString<"NSFilePath">;

namespace halvane::detail {
namespace {

// CFErrorRef is a pointer to a mutable object, but errors never change
// once made: the implementation reads them through this.
using Error = const __CFError*;

inline Error errorOf(CFTypeRef cf) {
    return static_cast<Error>(cf);
}

// User info is shown in full for the error described and for nested errors
// down to three levels below it; deeper ones print only its address.
constexpr unsigned kLevelsWithUserInfo = 4;
// Beyond this many error descriptions in progress on one thread (only an
// error reachable from its own user info gets there), a short form is used.
constexpr unsigned kMaximumErrorNesting = 64;

thread_local unsigned errorsBeingDescribed = 0;

class DescriptionLevel {
public:
    DescriptionLevel() : level_(errorsBeingDescribed++) {}
    ~DescriptionLevel() { --errorsBeingDescribed; }
    DescriptionLevel(const DescriptionLevel&) = delete;
    DescriptionLevel& operator=(const DescriptionLevel&) = delete;
    unsigned level() const { return level_; }

private:
    unsigned level_;
};

locale_t cLocale() {
    static locale_t locale = newlocale(LC_ALL_MASK, "C", locale_t(0));
    return locale;
}

// The system's English message for a POSIX error number.
CFStringRef copyPOSIXMessage(CFIndex code) {
    locale_t locale = cLocale();
    if (code < INT_MIN || code > INT_MAX || locale == locale_t(0)) {
        return TextBuilder().format("Unknown error %ld", code).create();
    }
    return TextBuilder().utf8(strerror_l(int(code), locale)).create();
}

// Entries the error's domain supplies when the user info lacks them (+1,
// or NULL): the POSIX domain describes its codes with the system's text.
CFTypeRef copyDomainValue(Error err, CFStringRef key) {
    if (CFEqual(err->domain, kCFErrorDomainPOSIX) &&
        (CFEqual(key, kCFErrorDescriptionKey) || CFEqual(key, kCFErrorLocalizedFailureReasonKey))) {
        return copyPOSIXMessage(err->code);
    }
    return nullptr;
}

// The user-info value for key, unless the dictionary holds raw pointers
// rather than objects (+0, or NULL).
CFTypeRef userInfoValue(Error err, CFStringRef key) {
    if (valueDescriptionCallBack(err->userInfo) != CFCopyDescription) return nullptr;
    return CFDictionaryGetValue(err->userInfo, key);
}

// The value for key from the user info, else from the domain (+1, or NULL).
CFTypeRef copyValue(Error err, CFStringRef key) {
    if (CFTypeRef value = userInfoValue(err, key)) return CFRetain(value);
    return copyDomainValue(err, key);
}

// value (+1) when it is a string; otherwise released, and NULL. The keys
// whose value is handed out as text ignore values of other types.
CFStringRef keepIfString(CFTypeRef value) {
    if (value == nullptr || isA(value, kCFStringTypeID)) return static_cast<CFStringRef>(value);
    CFRelease(value);
    return nullptr;
}

CFStringRef copyString(Error err, CFStringRef key) {
    return keepIfString(copyValue(err, key));
}

TextBuilder& couldNotComplete(TextBuilder& text) {
    return text.ascii("The operation couldn").unit(0x2019).ascii("t be completed. ");
}

// The domain as the sentences of the localized description name it.
TextBuilder& appendDomainName(TextBuilder& text, CFStringRef domain) {
    static const struct {
        const char* domain;
        const char* name;
    } names[] = {{"NSPOSIXErrorDomain", "POSIX"},
                 {"NSOSStatusErrorDomain", "OSStatus"},
                 {"NSMachErrorDomain", "Mach"},
                 {"NSCocoaErrorDomain", "Cocoa"},
                 {"NSCoreFoundationErrorDomain", "Core Foundation"}};
    if (isASCIIString(domain)) {
        std::string_view text8(reinterpret_cast<const char*>(domain->contents.ascii), size_t(domain->length));
        for (const auto& entry : names) {
            if (text8 == entry.domain) return text.ascii(entry.name);
        }
    }
    return text.string(domain);
}

// The localized description, in the order of precedence callers rely on:
// a description given outright, a failure (with its reason), a reason, the
// domain's own description, and last a sentence built from domain and code.
CFStringRef copyLocalizedDescription(Error err) {
    for (bool fromUserInfo : {true, false}) {
        auto lookUp = [err, fromUserInfo](CFStringRef key) {
            return keepIfString(fromUserInfo ? CFRetain(userInfoValue(err, key)) : copyDomainValue(err, key));
        };
        if (CFStringRef description = lookUp(kCFErrorLocalizedDescriptionKey)) return description;
        if (CFStringRef failure = lookUp(kCFErrorLocalizedFailureKey)) {
            CFStringRef reason = copyString(err, kCFErrorLocalizedFailureReasonKey);
            if (reason == nullptr) return failure;
            CFStringRef combined = TextBuilder().string(failure).ascii(" ").string(reason).create();
            CFRelease(failure);
            CFRelease(reason);
            return combined;
        }
    }
    TextBuilder text;
    couldNotComplete(text);
    if (CFStringRef reason = copyString(err, kCFErrorLocalizedFailureReasonKey)) {
        text.string(reason);
        CFRelease(reason);
        return text.create();
    }
    text.ascii("(");
    appendDomainName(text, err->domain).format(" error %ld", err->code);
    if (CFStringRef description = copyString(err, kCFErrorDescriptionKey)) {
        text.ascii(" - ").string(description).ascii(")");
        CFRelease(description);
    } else {
        text.ascii(".)");
    }
    return text.create();
}

bool isNonEmpty(CFTypeRef value) {
    return !isA(value, kCFStringTypeID) || static_cast<CFStringRef>(value)->length > 0;
}

void appendErrorDescription(TextBuilder& text, Error err);

// A key or value of the user info as "%@" prints it; raw pointers as the
// dictionary itself describes them.
void appendUserInfoElement(TextBuilder& text, CFDictionaryCopyDescriptionCallBack describe, const void* element) {
    if (describe == CFCopyDescription) {
        text.formattingDescription(element);
    } else {
        appendElementDescription(text, describe, element);
    }
}

void appendUserInfo(TextBuilder& text, CFDictionaryRef userInfo) {
    CFIndex count = CFDictionaryGetCount(userInfo);
    std::vector<const void*> keys(static_cast<size_t>(count)), values(static_cast<size_t>(count));
    CFDictionaryGetKeysAndValues(userInfo, keys.data(), values.data());
    CFDictionaryCopyDescriptionCallBack describeKey = keyDescriptionCallBack(userInfo);
    CFDictionaryCopyDescriptionCallBack describeValue = valueDescriptionCallBack(userInfo);
    text.ascii(" UserInfo={");
    for (CFIndex i = 0; i < count; ++i) {
        if (i > 0) text.ascii(", ");
        appendUserInfoElement(text, describeKey, keys[i]);
        text.ascii("=");
        bool underlyingError = describeKey == CFCopyDescription && describeValue == CFCopyDescription &&
                               isA(values[i], kCFErrorTypeID) && CFEqual(keys[i], kCFErrorUnderlyingErrorKey);
        if (underlyingError) {
            text.pointer(values[i]).ascii(" {");
            appendErrorDescription(text, errorOf(values[i]));
            text.ascii("}");
        } else {
            appendUserInfoElement(text, describeValue, values[i]);
        }
    }
    text.ascii("}");
}

// Error Domain=D Code=C "DESC"[ (DEBUG)][ UserInfo={K=V, ...}]
void appendErrorDescription(TextBuilder& text, Error err) {
    DescriptionLevel level;
    if (level.level() >= kMaximumErrorNesting) {
        reportMisuse("CFError: description: errors nested too deeply (one reaches itself?)");
        text.ascii("Error Domain=").string(err->domain).format(" Code=%ld", err->code);
        return;
    }
    text.ascii("Error Domain=").string(err->domain).format(" Code=%ld \"", err->code);
    static const CFStringRef* const descriptionKeys[] = {&kCFErrorDescriptionKey, &kCFErrorDebugDescriptionKey,
                                                         &kCFErrorLocalizedDescriptionKey,
                                                         &kCFErrorLocalizedFailureReasonKey};
    CFTypeRef description = nullptr;
    bool fromDescriptionKey = false;
    for (const CFStringRef* key : descriptionKeys) {
        description = copyValue(err, *key);
        if (description != nullptr) {
            fromDescriptionKey = key == &kCFErrorDescriptionKey;
            break;
        }
    }
    text.formattingDescription(description).ascii("\"");
    if (fromDescriptionKey) {
        CFTypeRef debug = copyValue(err, kCFErrorDebugDescriptionKey);
        if (debug != nullptr && isNonEmpty(debug) && !CFEqual(debug, description)) {
            text.ascii(" (").formattingDescription(debug).ascii(")");
        }
        if (debug != nullptr) CFRelease(debug);
    }
    if (description != nullptr) CFRelease(description);

    if (CFDictionaryGetCount(err->userInfo) > 0) {
        if (level.level() < kLevelsWithUserInfo) {
            appendUserInfo(text, err->userInfo);
        } else {
            text.ascii(" UserInfo=").pointer(err->userInfo).ascii(" (not displayed)");
        }
    }
}

CFStringRef copyErrorDescription(CFTypeRef cf) {
    TextBuilder text;
    appendErrorDescription(text, errorOf(cf));
    return text.create();
}

CFStringRef copyErrorFormattingDescription(CFTypeRef cf, CFDictionaryRef) {
    return copyErrorDescription(cf);
}

void finalizeError(CFTypeRef cf) {
    auto err = errorOf(cf);
    CFRelease(err->domain);
    CFRelease(err->userInfo);
}

Boolean equalErrors(CFTypeRef cf1, CFTypeRef cf2) {
    auto a = errorOf(cf1);
    auto b = errorOf(cf2);
    return a->code == b->code && CFEqual(a->domain, b->domain) && CFEqual(a->userInfo, b->userInfo);
}

CFHashCode hashError(CFTypeRef cf) {
    auto err = errorOf(cf);
    return CFHash(err->domain) + CFHashCode(err->code);
}

bool checkError(Error err, const char* caller) {
    if (isA(err, kCFErrorTypeID)) return true;
    if (err == nullptr) {
        reportMisuse("CFError: %s(): NULL error", caller);
    } else {
        reportMisuse("CFError: %s(): %p is not an error", caller, static_cast<const void*>(err));
    }
    return false;
}

// Takes ownership of userInfo (+1).
CFErrorRef newError(CFAllocatorRef allocator, CFStringRef domain, CFIndex code, CFDictionaryRef userInfo) {
    if (userInfo == nullptr) return nullptr;
    auto* err = createInstance<__CFError>(allocator, kCFErrorTypeID);
    CFStringRef domainCopy = err != nullptr ? CFStringCreateCopy(nullptr, domain) : nullptr;
    if (domainCopy == nullptr) {
        std::free(err);
        CFRelease(userInfo);
        return nullptr;
    }
    err->domain = domainCopy;
    err->code = code;
    err->userInfo = userInfo;
    return err;
}

bool checkDomain(CFStringRef domain, const char* caller) {
    if (isA(domain, kCFStringTypeID)) return true;
    if (domain == nullptr) {
        reportMisuse("CFError: %s(): NULL domain", caller);
    } else {
        reportMisuse("CFError: %s(): the domain %p is not a string", caller, static_cast<const void*>(domain));
    }
    return false;
}

}  // namespace

constinit const CFRuntimeClass kErrorClass = {.version = 0,
                                              .className = "CFError",
                                              .init = nullptr,
                                              .copy = nullptr,
                                              .finalize = finalizeError,
                                              .equal = equalErrors,
                                              .hash = hashError,
                                              .copyFormattingDesc = copyErrorFormattingDescription,
                                              .copyDebugDesc = copyErrorDescription,
                                              .reclaim = nullptr,
                                              .refcount = nullptr,
                                              .requiredAlignment = 0};

}  // namespace halvane::detail

CFTypeID CFErrorGetTypeID(void) {
    return kCFErrorTypeID;
}

CFErrorRef CFErrorCreate(CFAllocatorRef allocator, CFErrorDomain domain, CFIndex code, CFDictionaryRef userInfo) {
    if (!checkDomain(domain, "CFErrorCreate")) return nullptr;
    if (userInfo != nullptr && !isA(userInfo, kCFDictionaryTypeID)) {
        reportMisuse("CFError: CFErrorCreate(): the user info %p is not a dictionary",
                     static_cast<const void*>(userInfo));
        return nullptr;
    }
    // A copy, so that later changes to the caller's dictionary stay out.
    CFDictionaryRef ownUserInfo = userInfo != nullptr
                                      ? CFDictionaryCreateCopy(nullptr, userInfo)
                                      : CFDictionaryCreate(nullptr, nullptr, nullptr, 0, &kCFTypeDictionaryKeyCallBacks,
                                                           &kCFTypeDictionaryValueCallBacks);
    return newError(allocator, domain, code, ownUserInfo);
}

CFErrorRef CFErrorCreateWithUserInfoKeysAndValues(CFAllocatorRef allocator, CFErrorDomain domain, CFIndex code,
                                                  const void* const* userInfoKeys, const void* const* userInfoValues,
                                                  CFIndex numUserInfoValues) {
    if (!checkDomain(domain, "CFErrorCreateWithUserInfoKeysAndValues")) return nullptr;
    if (numUserInfoValues < 0 || (numUserInfoValues > 0 && (userInfoKeys == nullptr || userInfoValues == nullptr))) {
        reportMisuse("CFError: CFErrorCreateWithUserInfoKeysAndValues(): %ld entries without keys or values",
                     numUserInfoValues);
        return nullptr;
    }
    CFDictionaryRef userInfo =
        CFDictionaryCreate(nullptr, const_cast<const void**>(userInfoKeys), const_cast<const void**>(userInfoValues),
                           numUserInfoValues, &kCFCopyStringDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
    return newError(allocator, domain, code, userInfo);
}

CFErrorDomain CFErrorGetDomain(CFErrorRef err) {
    return checkError(err, "CFErrorGetDomain") ? err->domain : nullptr;
}

CFIndex CFErrorGetCode(CFErrorRef err) {
    return checkError(err, "CFErrorGetCode") ? err->code : 0;
}

CFDictionaryRef CFErrorCopyUserInfo(CFErrorRef err) {
    if (!checkError(err, "CFErrorCopyUserInfo")) return nullptr;
    return static_cast<CFDictionaryRef>(CFRetain(err->userInfo));
}

CFStringRef CFErrorCopyDescription(CFErrorRef err) {
    if (!checkError(err, "CFErrorCopyDescription")) return nullptr;
    return copyLocalizedDescription(err);
}

CFStringRef CFErrorCopyFailureReason(CFErrorRef err) {
    if (!checkError(err, "CFErrorCopyFailureReason")) return nullptr;
    return copyString(err, kCFErrorLocalizedFailureReasonKey);
}

CFStringRef CFErrorCopyRecoverySuggestion(CFErrorRef err) {
    if (!checkError(err, "CFErrorCopyRecoverySuggestion")) return nullptr;
    return copyString(err, kCFErrorLocalizedRecoverySuggestionKey);
}
