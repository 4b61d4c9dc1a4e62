#include <halvane/collections/detail/TypedAccess.h>

#include <halvane/collections/HVDictionary.h>
#include <halvane/errors/HVAssert.h>
#include <halvane/errors/detail/HalvaneDomain.h>

namespace halvane::detail {

namespace {

HVError typeMismatch(const HVString& failureReason) {
    return HVError::ErrorWithDomainCodeAndUserInfo(
        HalvaneDomain(), HVTypeMismatchError,
        HVError::DictionaryWithErrorDescriptionAndFailureReason("Object type does not match the object type requested.",
                                                                failureReason));
}

}  // namespace

HVError TypeMismatchAtIndex(unsigned long long index, HVClassType type) {
    return typeMismatch(HVString::StringWithFormat("Object type at index %d is a %@.", int(index),
                                                   HVObject::ClassNameOfClassType(type).Ref()));
}

HVError TypeMismatchForKey(const HVString& key, HVClassType type) {
    return typeMismatch(HVString::StringWithFormat("Object type with key %@ is a %@.", key.Ref(),
                                                   HVObject::ClassNameOfClassType(type).Ref()));
}

HVError KeyNotFound() {
    return HVError::ErrorWithCodeDescriptionAndDomain(HVNotFoundError, "Key not contained in dictionary.",
                                                      HalvaneDomain());
}

void ReportArrayMismatch(const HVError& error, const char* function, int line) {
    if (error.IsError()) HVAssertionFailed("! error.IsError()", error, function, "HVArray", line);
}

void ReportDictionaryMismatchUnlessMissing(const HVError& error, const char* function, int line) {
    if (error.IsError() && error.Code() != HVNotFoundError) {
        HVAssertionFailed("(! error.IsError()) || (error.Code() == HVHalvaneErrors::HVNotFoundError)", error,
                          function, "HVDictionary", line);
    }
}

}  // namespace halvane::detail
