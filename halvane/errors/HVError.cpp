#include <halvane/errors/HVError.h>

#include <halvane/core/detail/ClassRegistry.h>
#include <halvane/errors/HVException.h>
#include <halvane/errors/detail/HalvaneDomain.h>

#include <CoreFoundation/CoreFoundation.h>

#include <string>

HV_REGISTER_CLASS(HVError);

namespace halvane::detail {

const HVString& HalvaneDomain() {
    static const HVString domain("HalvaneDomain");
    return domain;
}

}  // namespace halvane::detail

namespace {

CFErrorRef asError(const void* ref) { return static_cast<CFErrorRef>(const_cast<void*>(ref)); }

CFMutableDictionaryRef newMutableDictionary() {
    return CFDictionaryCreateMutable(kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks,
                                     &kCFTypeDictionaryValueCallBacks);
}

HVDictionary adoptDictionary(CFDictionaryRef dictionary) {
    HVDictionary result;
    if (dictionary != nullptr) {
        result.AssignAndTakeOwnership(CFDictionaryCreateCopy(kCFAllocatorDefault, dictionary));
        CFRelease(dictionary);
    }
    return result;
}

HVString adoptString(CFStringRef string) {
    HVString result;
    if (string != nullptr && static_cast<CFTypeRef>(string) != kCFNull) {
        result.AssignAndTakeOwnership(string);
    } else if (string != nullptr) {
        CFRelease(string);
    }
    return result;
}

// Codes reach the platform as their low 32 bits, zero-extended.
CFIndex storedCode(long long code) { return CFIndex(uint32_t(code)); }

}  // namespace

HVError::HVError() : HVObject(SharedEmptyObject(), HVErrorClassType) {}

HVError::HVError(const HVError& other) : HVObject(other, HVErrorClassType) {}

HVError::HVError(const void* const& ref) : HVObject(ref, HVErrorClassType) {}

HVError::HVError(__CFError* ref) : HVObject(static_cast<const void*>(ref), HVErrorClassType) {}

HVClassType HVError::ClassType() { return HVErrorClassType; }

const void* const& HVError::SharedEmptyObject() {
    static const void* const empty = CFErrorCreate(kCFAllocatorDefault, CFSTR(""), 0, nullptr);
    return empty;
}

const HVString& HVError::LocalizedDescriptionKey() {
    static const HVString key(kCFErrorLocalizedDescriptionKey);
    return key;
}

const HVString& HVError::LocalizedFailureReasonKey() {
    static const HVString key(kCFErrorLocalizedFailureReasonKey);
    return key;
}

const HVString& HVError::LocalizedRecoverySuggestionKey() {
    static const HVString key(kCFErrorLocalizedRecoverySuggestionKey);
    return key;
}

const HVString& HVError::UnderlyingErrorKey() {
    static const HVString key(kCFErrorUnderlyingErrorKey);
    return key;
}

const HVString& HVError::LocalizedRecoveryOptionsKey() {
    static const HVString key("LocalizedRecoveryOptionsErrorKey");
    return key;
}

HVError HVError::ErrorWithDomainCodeAndUserInfo(const HVString& domain, long long code, const HVDictionary& userInfo) {
    HVError error;
    if (storedCode(code) == 0) return error;
    CFErrorRef created = CFErrorCreate(kCFAllocatorDefault, static_cast<CFStringRef>(domain.Ref()), storedCode(code),
                                       static_cast<CFDictionaryRef>(userInfo.Ref()));
    if (created != nullptr) error.AssignAndTakeOwnership(created);
    return error;
}

HVError HVError::ErrorWithCodeDescriptionAndDomain(long long code, const HVString& description,
                                                   const HVString& domain) {
    return ErrorWithDomainCodeAndUserInfo(domain, code, DictionaryWithErrorDescription(description));
}

HVError HVError::ErrorWithException(const HVException& exception) {
    static const std::pair<const HVString& (*)(), long long> codes[] = {
        {&HVExceptionName::MemoryException, HVMemoryError},
        {&HVExceptionName::EndOfFileException, HVEndOfFileError},
        {&HVExceptionName::DiskFullException, HVDiskFullError},
        {&HVExceptionName::LockViolationException, HVLockViolationError},
        {&HVExceptionName::SharingViolationException, HVSharingViolationError},
        {&HVExceptionName::FileNotFoundException, HVFileNotFoundError},
    };
    HVString name = exception.Name();
    for (const auto& [exceptionName, code] : codes) {
        const HVString& known = exceptionName();
        bool equal = name.IsEmpty() ? known.IsEmpty()
                                    : !known.IsEmpty() && CFStringCompare(static_cast<CFStringRef>(name.Ref()),
                                                                          static_cast<CFStringRef>(known.Ref()),
                                                                          0) == kCFCompareEqualTo;
        if (equal) return ErrorWithDomainCodeAndUserInfo(halvane::detail::HalvaneDomain(), code, HVDictionary());
    }
    return HVError();
}

void HVError::InitWithDomainCodeAndDescription(const HVString& domain, long long code, const HVString& description) {
    *this = ErrorWithDomainCodeAndUserInfo(domain, code, DictionaryWithErrorDescription(description));
}

void HVError::InitWithDomainCodeDescriptionAndFailureReason(const HVString& domain, long long code,
                                                            const HVString& description,
                                                            const HVString& failureReason) {
    *this = ErrorWithDomainCodeAndUserInfo(domain, code,
                                           DictionaryWithErrorDescriptionAndFailureReason(description, failureReason));
}

void HVError::InitWithDomainCodeAndUserInfo(const HVString& domain, long long code, const HVDictionary& userInfo) {
    if (code == 0) return;
    // The full code goes to the platform here, unlike every other maker.
    CFErrorRef created = CFErrorCreate(kCFAllocatorDefault, static_cast<CFStringRef>(domain.Ref()), CFIndex(code),
                                       static_cast<CFDictionaryRef>(userInfo.Ref()));
    if (created != nullptr) {
        m_ClassType = HVErrorClassType;
        AssignAndTakeOwnership(created);
    }
}

HVDictionary HVError::DictionaryWithErrorDescription(const HVString& description) {
    return DictionaryWithErrorDescriptionFailureReasonRecoverySuggestionRecoveryOptionsAndAdditionalInfo(
        description, HVString(), HVString(), HVArray(), HVDictionary());
}

HVDictionary HVError::DictionaryWithErrorDescriptionAndFailureReason(const HVString& description,
                                                                     const HVString& failureReason) {
    return DictionaryWithErrorDescriptionFailureReasonRecoverySuggestionRecoveryOptionsAndAdditionalInfo(
        description, failureReason, HVString(), HVArray(), HVDictionary());
}

HVDictionary HVError::DictionaryWithErrorDescriptionFailureReasonAndRecoverySuggestion(
    const HVString& description, const HVString& failureReason, const HVString& recoverySuggestion) {
    return DictionaryWithErrorDescriptionFailureReasonRecoverySuggestionRecoveryOptionsAndAdditionalInfo(
        description, failureReason, recoverySuggestion, HVArray(), HVDictionary());
}

HVDictionary HVError::DictionaryWithErrorDescriptionFailureReasonRecoverySuggestionAndRecoveryOptions(
    const HVString& description, const HVString& failureReason, const HVString& recoverySuggestion,
    const HVArray& recoveryOptions) {
    return DictionaryWithErrorDescriptionFailureReasonRecoverySuggestionRecoveryOptionsAndAdditionalInfo(
        description, failureReason, recoverySuggestion, recoveryOptions, HVDictionary());
}

HVDictionary HVError::DictionaryWithErrorDescriptionFailureReasonRecoverySuggestionAndAdditionalInfo(
    const HVString& description, const HVString& failureReason, const HVString& recoverySuggestion,
    const HVDictionary& additionalInfo) {
    return DictionaryWithErrorDescriptionFailureReasonRecoverySuggestionRecoveryOptionsAndAdditionalInfo(
        description, failureReason, recoverySuggestion, HVArray(), additionalInfo);
}

HVDictionary HVError::DictionaryWithErrorDescriptionFailureReasonRecoverySuggestionRecoveryOptionsAndAdditionalInfo(
    const HVString& description, const HVString& failureReason, const HVString& recoverySuggestion,
    const HVArray& recoveryOptions, const HVDictionary& additionalInfo) {
    CFMutableDictionaryRef entries = newMutableDictionary();
    auto put = [entries](const HVString& key, const HVObject& value) {
        if (!value.IsEmpty()) CFDictionarySetValue(entries, key.Ref(), value.Ref());
    };
    put(LocalizedDescriptionKey(), description);
    put(LocalizedFailureReasonKey(), failureReason);
    put(LocalizedRecoverySuggestionKey(), recoverySuggestion);
    put(LocalizedRecoveryOptionsKey(), recoveryOptions);
    if (!additionalInfo.IsEmpty()) {
        CFDictionaryApplyFunction(
            static_cast<CFDictionaryRef>(additionalInfo.Ref()),
            [](const void* key, const void* value, void* target) {
                CFDictionarySetValue(static_cast<CFMutableDictionaryRef>(target), key, value);
            },
            entries);
    }
    return adoptDictionary(entries);
}

bool HVError::IsError() const { return !IsEmpty(); }

bool HVError::IsErrorWithCodeAndDomain(int code, const HVString& domain) const {
    if (IsEmpty()) return false;
    CFIndex stored = CFErrorGetCode(asError(m_Ref));
    return stored != 0 && int32_t(stored) == code && Domain().IsEqualToString(domain);
}

long long HVError::Code() const {
    if (IsEmpty()) return 0;
    return static_cast<long long>(int32_t(CFErrorGetCode(asError(m_Ref))));
}

HVString HVError::Domain() const {
    if (IsEmpty()) return HVString();
    return HVString(static_cast<const void*>(CFErrorGetDomain(asError(m_Ref))));
}

HVDictionary HVError::UserInfo() const {
    if (IsEmpty()) return HVDictionary();
    HVDictionary info;
    info.AssignAndTakeOwnership(CFErrorCopyUserInfo(asError(m_Ref)));
    return info;
}

HVString HVError::LocalizedDescription() const {
    return IsEmpty() ? HVString() : adoptString(CFErrorCopyDescription(asError(m_Ref)));
}

HVString HVError::LocalizedFailureReason() const {
    return IsEmpty() ? HVString() : adoptString(CFErrorCopyFailureReason(asError(m_Ref)));
}

HVString HVError::LocalizedRecoverySuggestion() const {
    return IsEmpty() ? HVString() : adoptString(CFErrorCopyRecoverySuggestion(asError(m_Ref)));
}

HVArray HVError::LocalizedRecoveryOptions() const {
    HVObject value = ObjectForKey(LocalizedRecoveryOptionsKey());
    if (value.Ref() == nullptr || CFGetTypeID(value.Ref()) != CFArrayGetTypeID()) return HVArray();
    return HVArray(value.Ref());
}

HVObject HVError::ObjectForKey(const HVString& key) const {
    HVDictionary info = UserInfo();
    if (info.IsEmpty() || key.Ref() == nullptr) return HVObject();
    return HVObject::Create(CFDictionaryGetValue(static_cast<CFDictionaryRef>(info.Ref()), key.Ref()));
}

void HVError::SetObjectForKey(const HVObject& object, const HVString& key) {
    HVDictionary info = UserInfo();
    CFMutableDictionaryRef entries =
        info.IsEmpty() ? newMutableDictionary()
                       : CFDictionaryCreateMutableCopy(kCFAllocatorDefault, 0, static_cast<CFDictionaryRef>(info.Ref()));
    if (object.Ref() != nullptr) {
        CFDictionarySetValue(entries, key.Ref(), object.Ref());
    } else {
        CFDictionaryRemoveValue(entries, key.Ref());
    }
    *this = MakeHVError(Code(), Domain(), adoptDictionary(entries));
}

bool HVError::IsEmpty() const { return m_Ref == nullptr || m_Ref == kCFNull || m_Ref == SharedEmptyObject(); }

HVString HVError::Description() {
    HVDictionary info = UserInfo();
    return HVString::StringWithFormat("code = %d Domain = %@ UserInfo = %@", int(Code()), Domain().Ref(),
                                      info.Description().Ref());
}

HVString HVError::Serialize() {
    HVDictionary info = UserInfo();
    return HVString::StringWithFormat("%d;%@;%@", int(Code()), Domain().Ref(), info.Serialize().Ref());
}

void HVError::Deserialize(const HVString& text) {
    Empty();
    if (text.Ref() == nullptr) return;
    CFArrayRef parts =
        CFStringCreateArrayBySeparatingStrings(kCFAllocatorDefault, static_cast<CFStringRef>(text.Ref()), CFSTR(";"));
    if (parts == nullptr) return;
    if (CFArrayGetCount(parts) == 3) {
        HVString code(CFArrayGetValueAtIndex(parts, 0));
        HVString domain(CFArrayGetValueAtIndex(parts, 1));
        HVDictionary info;
        info.Deserialize(HVString(CFArrayGetValueAtIndex(parts, 2)));
        long long value = CFStringGetIntValue(static_cast<CFStringRef>(code.Ref()));
        if (value != 0) *this = ErrorWithDomainCodeAndUserInfo(domain, value, info);
    }
    CFRelease(parts);
}

HVError& HVError::operator=(const HVError& other) {
    HVObject::operator=(other);
    return *this;
}

HVError::operator __CFError*() const { return asError(m_Ref); }

HVString FilePathToDomain(const HVString& path) {
    // The last component of a path with either separator, without its
    // extension.
    std::string text = path;
    size_t separator = text.find_last_of("/\\");
    if (separator != std::string::npos) text.erase(0, separator + 1);
    size_t dot = text.find_last_of('.');
    if (dot != std::string::npos && dot > 0) text.erase(dot);
    return HVString(text) + "Domain";
}

HVError MakeHVError(long long code, const HVString& domain, const HVDictionary& userInfo) {
    return HVError::ErrorWithDomainCodeAndUserInfo(domain, code, userInfo);
}

namespace {

HVDictionary descriptionAndSuggestion(const HVString& description, const HVString& recoverySuggestion,
                                      const HVArray& recoveryOptions, const HVDictionary& additionalInfo) {
    return HVError::DictionaryWithErrorDescriptionFailureReasonRecoverySuggestionRecoveryOptionsAndAdditionalInfo(
        description, HVString(), recoverySuggestion, recoveryOptions, additionalInfo);
}

}  // namespace

HVError MakeHVError(long long code, const HVString& description, const HVString& recoverySuggestion,
                    const HVArray& recoveryOptions, const HVString& domain) {
    return MakeHVError(code, domain,
                       descriptionAndSuggestion(description, recoverySuggestion, recoveryOptions, HVDictionary()));
}

HVError MakeHVError(long long code, const HVString& description, const HVString& recoverySuggestion,
                    const HVDictionary& additionalInfo, const HVString& domain) {
    return MakeHVError(code, domain,
                       descriptionAndSuggestion(description, recoverySuggestion, HVArray(), additionalInfo));
}

HVError MakeHVError(long long code, const HVString& description, const HVString& recoverySuggestion,
                    const HVString& domain) {
    return MakeHVError(code, description, recoverySuggestion, HVDictionary(), domain);
}
