// HVDictionary's typed lookups: each value type is its rule of
// TypedAccessRules.h applied by the templates of TypedAccess.h.
#include <halvane/collections/HVDictionary.h>

#include <halvane/collections/detail/TypedAccessRules.h>

using halvane::detail::ErrorSlot;
using halvane::detail::OrEmpty;
using halvane::detail::ConvertedValue;

// Four members per value type: the required lookup with and without an
// error (the latter logs a wrong type, not a missing key), and the optional
// lookup, which hands back the empty object for a missing value and never
// logs.
#define HV_DICTIONARY_TYPED_LOOKUPS(Result, Name, Rule)                                                          \
    Result HVDictionary::Name##ForExistingKey(const HVString& key, HVError& error) const {                      \
        return ConvertedValue(HVIdForKeyIfPresent(key, error), key, ErrorSlot{&error}, halvane::detail::Rule); \
    }                                                                                                             \
    Result HVDictionary::Name##ForExistingKey(const HVString& key) const {                                      \
        HVError error = halvane::detail::NoError();                                                              \
        Result result = Name##ForExistingKey(key, error);                                                        \
        halvane::detail::ReportDictionaryMismatchUnlessMissing(error, halvane::detail::Rule.function,             \
                                                               halvane::detail::Rule.line);                       \
        return result;                                                                                            \
    }                                                                                                             \
    Result HVDictionary::Name##ForKey(const HVString& key, HVError& error) const {                              \
        return OrEmpty(Name##ForExistingKey(key, error));                                                        \
    }                                                                                                             \
    Result HVDictionary::Name##ForKey(const HVString& key) const {                                              \
        return OrEmpty(ConvertedValue(HVIdForKeyIfPresent(key), key, ErrorSlot{nullptr}, halvane::detail::Rule)); \
    }

HV_DICTIONARY_TYPED_LOOKUPS(HVArray, Array, kArrayForExistingKey)
HV_DICTIONARY_TYPED_LOOKUPS(HVMutableArray, MutableArray, kMutableArrayForExistingKey)
HV_DICTIONARY_TYPED_LOOKUPS(HVBool, Bool, kBoolForExistingKey)
HV_DICTIONARY_TYPED_LOOKUPS(HVData, Data, kDataForExistingKey)
HV_DICTIONARY_TYPED_LOOKUPS(HVMutableData, MutableData, kMutableDataForExistingKey)
HV_DICTIONARY_TYPED_LOOKUPS(HVDictionary, Dictionary, kDictionaryForExistingKey)
HV_DICTIONARY_TYPED_LOOKUPS(HVMutableDictionary, MutableDictionary, kMutableDictionaryForExistingKey)
HV_DICTIONARY_TYPED_LOOKUPS(HVNumber, Number, kNumberForExistingKey)
HV_DICTIONARY_TYPED_LOOKUPS(HVString, String, kStringForExistingKey)

#undef HV_DICTIONARY_TYPED_LOOKUPS
