// HVError: the library's error value, over an immutable CoreFoundation
// error (domain, code, user information). The shared empty error means "no
// error"; a code of 0 never makes an error.
#ifndef HALVANE_ERRORS_HVERROR_H
#define HALVANE_ERRORS_HVERROR_H

#include <halvane/collections/HVArray.h>
#include <halvane/collections/HVDictionary.h>
#include <halvane/core/HVObject.h>
#include <halvane/text/HVString.h>

struct __CFError;
class HVException;

// The codes of the library's own domain, "HalvaneDomain".
enum HVHalvaneErrors : long long {
    HVFileNotFoundError = 4,
    HVLockViolationError = 255,
    HVSharingViolationError = 257,
    HVDiskFullError = 540,
    HVMemoryError = 20000,
    HVEndOfFileError = 20001,
    HVCodingError = 20002,
    HVTypeMismatchError = 20004,
    HVNotFoundError = 20006,
};

class HV_EXPORT HVError : public HVObject {
public:
    HVError();
    HVError(const HVError& other);
    HVError(const void* const& ref);
    HVError(__CFError* ref);

    static HVClassType ClassType();
    static const void* const& SharedEmptyObject();

    // User-information keys.
    static const HVString& LocalizedDescriptionKey();
    static const HVString& LocalizedFailureReasonKey();
    static const HVString& LocalizedRecoverySuggestionKey();
    static const HVString& UnderlyingErrorKey();
    // "LocalizedRecoveryOptionsErrorKey": an array of strings.
    static const HVString& LocalizedRecoveryOptionsKey();

    static HVError ErrorWithDomainCodeAndUserInfo(const HVString& domain, long long code, const HVDictionary& userInfo);
    static HVError ErrorWithCodeDescriptionAndDomain(long long code, const HVString& description,
                                                     const HVString& domain);
    // The library's error for an exception of one of its names; the empty
    // error for any other name.
    static HVError ErrorWithException(const HVException& exception);

    void InitWithDomainCodeAndDescription(const HVString& domain, long long code, const HVString& description);
    void InitWithDomainCodeDescriptionAndFailureReason(const HVString& domain, long long code,
                                                       const HVString& description, const HVString& failureReason);
    void InitWithDomainCodeAndUserInfo(const HVString& domain, long long code, const HVDictionary& userInfo);

    // User-information builders: empty arguments are left out.
    static HVDictionary DictionaryWithErrorDescription(const HVString& description);
    static HVDictionary DictionaryWithErrorDescriptionAndFailureReason(const HVString& description,
                                                                       const HVString& failureReason);
    static HVDictionary DictionaryWithErrorDescriptionFailureReasonAndRecoverySuggestion(
        const HVString& description, const HVString& failureReason, const HVString& recoverySuggestion);
    static HVDictionary DictionaryWithErrorDescriptionFailureReasonRecoverySuggestionAndRecoveryOptions(
        const HVString& description, const HVString& failureReason, const HVString& recoverySuggestion,
        const HVArray& recoveryOptions);
    static HVDictionary DictionaryWithErrorDescriptionFailureReasonRecoverySuggestionAndAdditionalInfo(
        const HVString& description, const HVString& failureReason, const HVString& recoverySuggestion,
        const HVDictionary& additionalInfo);
    static HVDictionary DictionaryWithErrorDescriptionFailureReasonRecoverySuggestionRecoveryOptionsAndAdditionalInfo(
        const HVString& description, const HVString& failureReason, const HVString& recoverySuggestion,
        const HVArray& recoveryOptions, const HVDictionary& additionalInfo);

    bool IsError() const;
    bool IsErrorWithCodeAndDomain(int code, const HVString& domain) const;
    // The stored code's low 32 bits, sign-extended.
    long long Code() const;
    HVString Domain() const;
    HVDictionary UserInfo() const;
    HVString LocalizedDescription() const;
    HVString LocalizedFailureReason() const;
    HVString LocalizedRecoverySuggestion() const;
    HVArray LocalizedRecoveryOptions() const;
    HVObject ObjectForKey(const HVString& key) const;
    // Rebuilds the error with the entry set (or removed when object holds no
    // reference); an empty error stays empty.
    void SetObjectForKey(const HVObject& object, const HVString& key);

    bool IsEmpty() const override;
    // "code = %d Domain = %@ UserInfo = %@"
    HVString Description() override;
    // "%d;%@;%@": code, domain and the user information's text form.
    HVString Serialize() override;
    void Deserialize(const HVString& text) override;

    HVError& operator=(const HVError& other);
    operator __CFError*() const;
};

// The domain named after a source file: "Widget.txt" gives "WidgetDomain".
HV_EXPORT HVString FilePathToDomain(const HVString& path);

HV_EXPORT HVError MakeHVError(long long code, const HVString& domain, const HVDictionary& userInfo);
// The second string goes under the recovery-suggestion key.
HV_EXPORT HVError MakeHVError(long long code, const HVString& description, const HVString& recoverySuggestion,
                              const HVArray& recoveryOptions, const HVString& domain);
HV_EXPORT HVError MakeHVError(long long code, const HVString& description, const HVString& recoverySuggestion,
                              const HVDictionary& additionalInfo, const HVString& domain);
HV_EXPORT HVError MakeHVError(long long code, const HVString& description, const HVString& recoverySuggestion,
                              const HVString& domain);

#endif  // HALVANE_ERRORS_HVERROR_H
