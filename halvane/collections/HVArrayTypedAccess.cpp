// HVArray's typed accessors: each is its rule of TypedAccessRules.h applied
// by the one template of TypedAccess.h.
#include <halvane/collections/HVArray.h>

#include <halvane/collections/detail/TypedAccessRules.h>

using halvane::detail::ConvertedElement;
using halvane::detail::ConvertedElementSlowly;
using halvane::detail::ErrorSlot;

// The form without an error reports a mismatch as an assertion line.
#define HV_ARRAY_LOGGED(Rule)                                                                                     \
    ErrorSlot {                                                                                                   \
        nullptr, halvane::detail::ReportArrayMismatch, halvane::detail::Rule.function, halvane::detail::Rule.line \
    }

// The form with an error converts the (range-checked) element by the rule;
// the form without one logs.
#define HV_ARRAY_TYPED_ACCESSOR_WITH_ERROR(Result, Accessor, Rule)                                              \
    Result HVArray::Accessor(unsigned long long index, HVError& error) const {                                  \
        return ConvertedElement(InternalObjectAtIndex(index), index, ErrorSlot{&error}, halvane::detail::Rule); \
    }
#define HV_ARRAY_TYPED_ACCESSOR(Result, Accessor, Rule)                                                             \
    HV_ARRAY_TYPED_ACCESSOR_WITH_ERROR(Result, Accessor, Rule)                                                      \
    Result HVArray::Accessor(unsigned long long index) const {                                                      \
        return ConvertedElement(InternalObjectAtIndex(index), index, HV_ARRAY_LOGGED(Rule), halvane::detail::Rule); \
    }

HV_ARRAY_TYPED_ACCESSOR(HVArray, ArrayAtIndex, kArrayAtIndex)
HV_ARRAY_TYPED_ACCESSOR(HVMutableArray, MutableArrayAtIndex, kMutableArrayAtIndex)
HV_ARRAY_TYPED_ACCESSOR(HVBool, BoolAtIndex, kBoolAtIndex)
HV_ARRAY_TYPED_ACCESSOR(HVData, DataAtIndex, kDataAtIndex)
HV_ARRAY_TYPED_ACCESSOR(HVMutableData, MutableDataAtIndex, kMutableDataAtIndex)
HV_ARRAY_TYPED_ACCESSOR(HVDate, DateAtIndex, kDateAtIndex)
HV_ARRAY_TYPED_ACCESSOR(HVDictionary, DictionaryAtIndex, kDictionaryAtIndex)
HV_ARRAY_TYPED_ACCESSOR(HVMutableDictionary, MutableDictionaryAtIndex, kMutableDictionaryAtIndex)
HV_ARRAY_TYPED_ACCESSOR(HVNumber, NumberAtIndex, kNumberAtIndex)
HV_ARRAY_TYPED_ACCESSOR(HVPoint, PointAtIndex, kPointAtIndex)
HV_ARRAY_TYPED_ACCESSOR(HVRect, RectAtIndex, kRectAtIndex)
// A pointer: null for an element that carries no retained object.
HV_ARRAY_TYPED_ACCESSOR(HVRetainedObject*, RetainedObjectAtIndex, kRetainedObjectAtIndex)
HV_ARRAY_TYPED_ACCESSOR(HVSize, SizeAtIndex, kSizeAtIndex)
// StringAtIndex(index) shares a string element inline (HVArray.h).
HV_ARRAY_TYPED_ACCESSOR_WITH_ERROR(HVString, StringAtIndex, kStringAtIndex)
HVString HVArray::ConvertedStringAtIndex(const void* element, unsigned long long index) const {
    return ConvertedElementSlowly(element, index, HV_ARRAY_LOGGED(kStringAtIndex), halvane::detail::kStringAtIndex);
}
HV_ARRAY_TYPED_ACCESSOR(HVValue, ValueAtIndex, kValueAtIndex)

#undef HV_ARRAY_TYPED_ACCESSOR
#undef HV_ARRAY_TYPED_ACCESSOR_WITH_ERROR
#undef HV_ARRAY_LOGGED
