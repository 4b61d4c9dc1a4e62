// HVDictionary's typed lookups: each value type is its rule of
// TypedAccessRules.h applied by the templates of TypedAccess.h.
#include <halvane/collections/HVDictionary.h>

#include <halvane/collections/detail/TypedAccessRules.h>

using halvane::detail::ErrorSlot;
using halvane::detail::ConvertedValue;
using halvane::detail::WhenMissing;

// Four members per value type: the required lookup with and without an
// error (the latter logs a wrong type, not a missing key), and the optional
// lookup, which hands back the empty object for a missing value and never
// logs.
#define HV_DICTIONARY_TYPED_LOOKUPS(Result, Name, Rule)                                                         \
    Result HVDictionary::Name##ForExistingKey(const HVString& key, HVError& error) const {                     \
        return ConvertedValue(HVIdForKeyIfPresent(key, error), key, ErrorSlot{&error}, halvane::detail::Rule,  \
                              WhenMissing::Null);                                                               \
    }                                                                                                            \
    Result HVDictionary::Name##ForExistingKey(const HVString& key) const {                                     \
        const ErrorSlot logged{nullptr, halvane::detail::ReportDictionaryMismatchUnlessMissing,                 \
                               halvane::detail::Rule.function, halvane::detail::Rule.line};                     \
        return ConvertedValue(HVIdForKeyIfPresent(key), key, logged, halvane::detail::Rule, WhenMissing::Null); \
    }                                                                                                            \
    Result HVDictionary::Name##ForKey(const HVString& key, HVError& error) const {                             \
        return ConvertedValue(HVIdForKeyIfPresent(key, error), key, ErrorSlot{&error}, halvane::detail::Rule,  \
                              WhenMissing::Empty);                                                              \
    }                                                                                                            \
    Result HVDictionary::Name##ForKey(const HVString& key) const {                                             \
        return ConvertedValue(HVIdForKeyIfPresent(key), key, ErrorSlot{}, halvane::detail::Rule,                \
                              WhenMissing::Empty);                                                              \
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
