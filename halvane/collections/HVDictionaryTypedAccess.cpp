// HVDictionary's typed lookups: each value type is its rule of
// TypedAccessRules.h applied by the templates of TypedAccess.h.
#include <halvane/collections/HVDictionary.h>

#include <halvane/collections/detail/TypedAccessRules.h>

using halvane::detail::ConvertedValue;
using halvane::detail::ErrorSlot;
using halvane::detail::GeometryFromText;
using halvane::detail::WhenMissing;

// The required lookup without an error argument logs a wrong type (not a
// missing key) with its rule's function name and line.
#define HV_DICTIONARY_LOGGED(Rule)                                                                       \
    ErrorSlot {                                                                                          \
        nullptr, halvane::detail::ReportDictionaryMismatchUnlessMissing, halvane::detail::Rule.function, \
            halvane::detail::Rule.line                                                                   \
    }

// The optional lookups hand back the empty object of the type for a
// missing value and never log; the error form keeps the not-found error.
#define HV_DICTIONARY_OPTIONAL_LOOKUPS(Result, Name, Rule)                                                     \
    Result HVDictionary::Name##ForKey(const HVString& key, HVError& error) const {                             \
        return ConvertedValue(HVIdForKeyIfPresent(key, error), key, ErrorSlot{&error}, halvane::detail::Rule,  \
                              WhenMissing::Empty);                                                              \
    }                                                                                                            \
    Result HVDictionary::Name##ForKey(const HVString& key) const {                                             \
        return ConvertedValue(HVIdForKeyIfPresent(key), key, ErrorSlot{}, halvane::detail::Rule,                \
                              WhenMissing::Empty);                                                              \
    }

// Four members per value type: the required lookup with and without an
// error, and the optional lookups above.
#define HV_DICTIONARY_TYPED_LOOKUPS(Result, Name, Rule)                                                       \
    Result HVDictionary::Name##ForExistingKey(const HVString& key, HVError& error) const {                    \
        return ConvertedValue(HVIdForKeyIfPresent(key, error), key, ErrorSlot{&error}, halvane::detail::Rule, \
                              WhenMissing::Null);                                                              \
    }                                                                                                           \
    Result HVDictionary::Name##ForExistingKey(const HVString& key) const {                                    \
        return ConvertedValue(HVIdForKeyIfPresent(key), key, HV_DICTIONARY_LOGGED(Rule), halvane::detail::Rule, \
                              WhenMissing::Null);                                                              \
    }                                                                                                           \
    HV_DICTIONARY_OPTIONAL_LOOKUPS(Result, Name, Rule)

// Points, sizes and rectangles are read from the string that the optional
// string lookup gives; a missing, mistyped or empty string is a type
// mismatch, so the reporting form logs a missing key too.
#define HV_DICTIONARY_GEOMETRY_LOOKUPS(Result, Name, Rule)                                                     \
    Result HVDictionary::Name##ForExistingKey(const HVString& key, HVError& error) const {                    \
        return GeometryFromText(StringForKey(key, error), key, ErrorSlot{&error}, halvane::detail::Rule);      \
    }                                                                                                           \
    Result HVDictionary::Name##ForExistingKey(const HVString& key) const {                                    \
        return GeometryFromText(StringForKey(key), key, HV_DICTIONARY_LOGGED(Rule), halvane::detail::Rule);    \
    }                                                                                                           \
    Result HVDictionary::Name##ForKey(const HVString& key, HVError& error) const {                            \
        return Name##ForExistingKey(key, error);                                                               \
    }                                                                                                           \
    Result HVDictionary::Name##ForKey(const HVString& key) const {                                            \
        return GeometryFromText(StringForKey(key), key, ErrorSlot{}, halvane::detail::Rule);                   \
    }

HV_DICTIONARY_TYPED_LOOKUPS(HVArray, Array, kArrayForExistingKey)
HV_DICTIONARY_TYPED_LOOKUPS(HVMutableArray, MutableArray, kMutableArrayForExistingKey)
HV_DICTIONARY_TYPED_LOOKUPS(HVBool, Bool, kBoolForExistingKey)
HV_DICTIONARY_TYPED_LOOKUPS(HVData, Data, kDataForExistingKey)
HV_DICTIONARY_TYPED_LOOKUPS(HVMutableData, MutableData, kMutableDataForExistingKey)
HV_DICTIONARY_TYPED_LOOKUPS(HVDate, Date, kDateForExistingKey)
HV_DICTIONARY_TYPED_LOOKUPS(HVDictionary, Dictionary, kDictionaryForExistingKey)
HV_DICTIONARY_TYPED_LOOKUPS(HVMutableDictionary, MutableDictionary, kMutableDictionaryForExistingKey)
HV_DICTIONARY_TYPED_LOOKUPS(HVNumber, Number, kNumberForExistingKey)
HV_DICTIONARY_TYPED_LOOKUPS(HVString, String, kStringForExistingKey)
HV_DICTIONARY_TYPED_LOOKUPS(HVValue, Value, kValueForExistingKey)
HV_DICTIONARY_GEOMETRY_LOOKUPS(HVPoint, Point, kPointForExistingKey)
HV_DICTIONARY_GEOMETRY_LOOKUPS(HVRect, Rect, kRectForExistingKey)
HV_DICTIONARY_GEOMETRY_LOOKUPS(HVSize, Size, kSizeForExistingKey)
// Only the optional forms: a pointer, null when the value carries no
// retained object.
HV_DICTIONARY_OPTIONAL_LOOKUPS(HVRetainedObject*, RetainedObject, kRetainedObjectForKey)

#undef HV_DICTIONARY_GEOMETRY_LOOKUPS
#undef HV_DICTIONARY_LOGGED
#undef HV_DICTIONARY_TYPED_LOOKUPS
#undef HV_DICTIONARY_OPTIONAL_LOOKUPS
