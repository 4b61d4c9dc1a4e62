// The table of the typed accessors of HVArray and HVDictionary: for each, the
// element class types it accepts (first match wins), how an element of each
// becomes the result, and the function name and line that its assertion
// line reports. The names and lines are part of the interface: log readers
// match on them.
#ifndef HALVANE_COLLECTIONS_DETAIL_TYPEDACCESSRULES_H
#define HALVANE_COLLECTIONS_DETAIL_TYPEDACCESSRULES_H

#include <halvane/collections/HVArray.h>
#include <halvane/collections/HVData.h>
#include <halvane/collections/HVDictionary.h>
#include <halvane/collections/HVMutableArray.h>
#include <halvane/collections/HVMutableDictionary.h>
#include <halvane/collections/detail/TypedAccess.h>
#include <halvane/core/HVRetainedObject.h>
#include <halvane/text/HVString.h>
#include <halvane/time/HVDate.h>
#include <halvane/values/HVBool.h>
#include <halvane/values/HVNumber.h>
#include <halvane/values/HVPoint.h>
#include <halvane/values/HVRect.h>
#include <halvane/values/HVSize.h>
#include <halvane/values/HVValue.h>

#include <CoreFoundation/CoreFoundation.h>

#include <cstring>
#include <string>

namespace halvane::detail {

namespace conversions {

// The result takes over a new copy of the element.
template <typename Result, CFTypeRef (*Copy)(CFTypeRef)>
void AdoptCopy(const void* element, HVClassType, Result& result) {
    result.AssignTakeOwnershipAndSetType(Copy(element));
}

// Immutable copies of an empty mutable collection are the shared empty
// object, as the mutable classes' Copy() gives.
inline CFTypeRef ImmutableArrayCopy(CFTypeRef array) {
    auto source = static_cast<CFArrayRef>(array);
    if (CFArrayGetCount(source) == 0) return CFRetain(HVArray::SharedEmptyObject());
    return CFArrayCreateCopy(kCFAllocatorDefault, source);
}
inline CFTypeRef MutableArrayCopy(CFTypeRef array) {
    return CFArrayCreateMutableCopy(kCFAllocatorDefault, 0, static_cast<CFArrayRef>(array));
}
inline CFTypeRef ImmutableDictionaryCopy(CFTypeRef dictionary) {
    auto source = static_cast<CFDictionaryRef>(dictionary);
    if (CFDictionaryGetCount(source) == 0) return CFRetain(HVDictionary::SharedEmptyObject());
    return CFDictionaryCreateCopy(kCFAllocatorDefault, source);
}
inline CFTypeRef MutableDictionaryCopy(CFTypeRef dictionary) {
    return CFDictionaryCreateMutableCopy(kCFAllocatorDefault, 0, static_cast<CFDictionaryRef>(dictionary));
}
inline CFTypeRef ImmutableDataCopy(CFTypeRef data) {
    return CFDataCreateCopy(kCFAllocatorDefault, static_cast<CFDataRef>(data));
}
inline CFTypeRef MutableDataCopy(CFTypeRef data) {
    return CFDataCreateMutableCopy(kCFAllocatorDefault, 0, static_cast<CFDataRef>(data));
}

// Booleans, numbers and strings read as true or false; the result is the
// platform's shared true or false object.
inline void ReadBool(const void* element, HVClassType, HVBool& result) {
    result = bool(HVBool::BoolFromId(element)) ? HVBool::True() : HVBool::False();
}

// A value of a kind the library cannot name goes through the result
// class's own conversion from HVObject.
template <typename Result>
void ConvertObject(const void* element, HVClassType, Result& result) {
    result = Result(HVObject::Create(element));
}

// The bytes read as a zero-terminated text; the end of the buffer ends the
// text too, so bytes without a terminating zero are never read past.
inline void TextOfBytes(const void* element, HVClassType, HVString& result) {
    auto data = static_cast<CFDataRef>(element);
    auto bytes = reinterpret_cast<const char*>(CFDataGetBytePtr(data));
    size_t length = bytes != nullptr ? strnlen(bytes, size_t(CFDataGetLength(data))) : 0;
    result = std::string(bytes != nullptr ? bytes : "", length).c_str();
}

template <typename Result>
void UTF8BytesOfText(const void* element, HVClassType, Result& result) {
    result.InitWithString(HVString(element));
}

inline void PropertyListBytesOfDictionary(const void* element, HVClassType, HVMutableData& result) {
    result.InitWithDictionary(HVDictionary(element));
}

// XML property-list data or text parsed as a dictionary; unreadable input
// leaves the result as it was.
template <typename Result>
void ParsePropertyListData(const void* element, HVClassType, Result& result) {
    result = HVData(element);
}
inline void ParsePropertyListText(const void* element, HVClassType, HVDictionary& result) {
    result = HVString(element);
}

// Points, sizes and rectangles are stored as their text ("{1,2}").
template <typename Geometry>
void ReadGeometry(const void* element, HVClassType, Geometry& result) {
    result.Deserialize(HVString(element));
}

// The object that a retained object's container leads back to; null for
// anything else (a value of a kind the library cannot name, say).
inline void CarriedObject(const void* element, HVClassType, HVRetainedObject*& result) {
    result = HVRetainedObject::RetainedObject(element);
}

}  // namespace conversions

using namespace conversions;

// HVArray::XAtIndex

inline constexpr auto kArrayAtIndex =
    Rule("HVArray::ArrayAtIndex", 221, Accept(HVArrayClassType, Share<HVArray>),
         Accept(HVMutableArrayClassType, AdoptCopy<HVArray, ImmutableArrayCopy>));
inline constexpr auto kMutableArrayAtIndex =
    Rule("HVArray::MutableArrayAtIndex", 254, Accept(HVMutableArrayClassType, Share<HVMutableArray>),
         Accept(HVArrayClassType, AdoptCopy<HVMutableArray, MutableArrayCopy>));
inline constexpr auto kBoolAtIndex =
    Rule("HVArray::BoolAtIndex", 287, Accept(HVBoolClassType, ReadBool), Accept(HVNumberClassType, ReadBool));
inline constexpr auto kDateAtIndex = Rule("HVArray::DateAtIndex", 379, Accept(HVDateClassType, Share<HVDate>));
inline constexpr auto kDataAtIndex =
    Rule("HVArray::DataAtIndex", 311, Accept(HVDataClassType, Share<HVData>),
         Accept(HVMutableDataClassType, AdoptCopy<HVData, ImmutableDataCopy>));
inline constexpr auto kMutableDataAtIndex =
    Rule("HVArray::MutableDataAtIndex", 345, Accept(HVMutableDataClassType, Share<HVMutableData>),
         Accept(HVDataClassType, AdoptCopy<HVMutableData, MutableDataCopy>));
inline constexpr auto kDictionaryAtIndex =
    Rule("HVArray::DictionaryAtIndex", 407, Accept(HVDictionaryClassType, Share<HVDictionary>),
         Accept(HVMutableDictionaryClassType, AdoptCopy<HVDictionary, ImmutableDictionaryCopy>));
inline constexpr auto kMutableDictionaryAtIndex =
    Rule("HVArray::MutableDictionaryAtIndex", 441, Accept(HVMutableDictionaryClassType, Share<HVMutableDictionary>),
         Accept(HVDictionaryClassType, AdoptCopy<HVMutableDictionary, MutableDictionaryCopy>));
inline constexpr auto kNumberAtIndex = Rule("HVArray::NumberAtIndex", 475, Accept(HVNumberClassType, Share<HVNumber>));
inline constexpr auto kPointAtIndex =
    Rule("HVArray::PointAtIndex", 503, Accept(HVStringClassType, ReadGeometry<HVPoint>));
inline constexpr auto kRectAtIndex = Rule("HVArray::RectAtIndex", 533, Accept(HVStringClassType, ReadGeometry<HVRect>));
inline constexpr auto kRetainedObjectAtIndex =
    Rule("HVArray::RetainedObjectAtIndex", 563, Accept(HVObjectClassType, CarriedObject),
         Accept(HVRetainedObjectClassType, CarriedObject));
inline constexpr auto kSizeAtIndex = Rule("HVArray::SizeAtIndex", 587, Accept(HVStringClassType, ReadGeometry<HVSize>));
inline constexpr auto kStringAtIndex = Rule("HVArray::StringAtIndex", 617, Accept(HVStringClassType, Share<HVString>));
inline constexpr auto kValueAtIndex = Rule("HVArray::ValueAtIndex", 645, Accept(HVValueClassType, Share<HVValue>));

// HVDictionary::XForExistingKey (and the XForKey forms built on them)

inline constexpr auto kArrayForExistingKey =
    Rule("HVDictionary::ArrayForExistingKey", 551, Accept(HVArrayClassType, Share<HVArray>),
         Accept(HVMutableArrayClassType, AdoptCopy<HVArray, ImmutableArrayCopy>),
         Accept(HVObjectClassType, ConvertObject<HVArray>));
inline constexpr auto kMutableArrayForExistingKey =
    Rule("HVDictionary::MutableArrayForExistingKey", 609, Accept(HVMutableArrayClassType, Share<HVMutableArray>),
         Accept(HVArrayClassType, AdoptCopy<HVMutableArray, MutableArrayCopy>),
         Accept(HVObjectClassType, ConvertObject<HVMutableArray>));
inline constexpr auto kBoolForExistingKey =
    Rule("HVDictionary::BoolForExistingKey", 673, Accept(HVBoolClassType, ReadBool),
         Accept(HVNumberClassType, ReadBool), Accept(HVStringClassType, ReadBool));
inline constexpr auto kDataForExistingKey =
    Rule("HVDictionary::DataForExistingKey", 718, Accept(HVDataClassType, Share<HVData>),
         Accept(HVMutableDataClassType, AdoptCopy<HVData, ImmutableDataCopy>),
         Accept(HVStringClassType, UTF8BytesOfText<HVData>), Accept(HVObjectClassType, ConvertObject<HVData>));
inline constexpr auto kMutableDataForExistingKey =
    Rule("HVDictionary::MutableDataForExistingKey", 782, Accept(HVMutableDataClassType, Share<HVMutableData>),
         Accept(HVDataClassType, AdoptCopy<HVMutableData, MutableDataCopy>),
         Accept(HVDictionaryClassType, PropertyListBytesOfDictionary),
         Accept(HVMutableDictionaryClassType, PropertyListBytesOfDictionary),
         Accept(HVStringClassType, UTF8BytesOfText<HVMutableData>),
         Accept(HVObjectClassType, ConvertObject<HVMutableData>));
inline constexpr auto kDateForExistingKey =
    Rule("HVDictionary::DateForExistingKey", 853, Accept(HVDateClassType, Share<HVDate>),
         Accept(HVObjectClassType, ConvertObject<HVDate>));
inline constexpr auto kDictionaryForExistingKey =
    Rule("HVDictionary::DictionaryForExistingKey", 905, Accept(HVDictionaryClassType, Share<HVDictionary>),
         Accept(HVMutableDictionaryClassType, AdoptCopy<HVDictionary, ImmutableDictionaryCopy>),
         Accept(HVDataClassType, ParsePropertyListData<HVDictionary>),
         Accept(HVMutableDataClassType, ParsePropertyListData<HVDictionary>),
         Accept(HVStringClassType, ParsePropertyListText), Accept(HVObjectClassType, ConvertObject<HVDictionary>));
inline constexpr auto kMutableDictionaryForExistingKey =
    Rule("HVDictionary::MutableDictionaryForExistingKey", 975,
         Accept(HVMutableDictionaryClassType, Share<HVMutableDictionary>),
         Accept(HVDictionaryClassType, AdoptCopy<HVMutableDictionary, MutableDictionaryCopy>),
         Accept(HVDataClassType, ParsePropertyListData<HVMutableDictionary>),
         Accept(HVMutableDataClassType, ParsePropertyListData<HVMutableDictionary>),
         Accept(HVObjectClassType, ConvertObject<HVMutableDictionary>));
inline constexpr auto kNumberForExistingKey =
    Rule("HVDictionary::NumberForExistingKey", 1039, Accept(HVNumberClassType, Share<HVNumber>),
         Accept(HVObjectClassType, ConvertObject<HVNumber>));
// Geometry is read from the text that StringForKey gives (see
// GeometryFromText): what reaches the rule is always a string.
inline constexpr auto kPointForExistingKey =
    Rule("HVDictionary::PointForExistingKey", 1085, Accept(HVStringClassType, ReadGeometry<HVPoint>));
inline constexpr auto kRectForExistingKey =
    Rule("HVDictionary::RectForExistingKey", 1121, Accept(HVStringClassType, ReadGeometry<HVRect>));
inline constexpr auto kSizeForExistingKey =
    Rule("HVDictionary::SizeForExistingKey", 1188, Accept(HVStringClassType, ReadGeometry<HVSize>));
inline constexpr auto kStringForExistingKey =
    Rule("HVDictionary::StringForExistingKey", 1229, Accept(HVStringClassType, Share<HVString>),
         Accept(HVDataClassType, TextOfBytes), Accept(HVMutableDataClassType, TextOfBytes),
         Accept(HVObjectClassType, ConvertObject<HVString>));
inline constexpr auto kValueForExistingKey =
    Rule("HVDictionary::ValueForExistingKey", 1287, Accept(HVValueClassType, Share<HVValue>),
         Accept(HVObjectClassType, ConvertObject<HVValue>));
// Retained objects are looked up by the XForKey forms only, which never log.
inline constexpr auto kRetainedObjectForKey =
    QuietRule(Accept(HVObjectClassType, CarriedObject), Accept(HVRetainedObjectClassType, CarriedObject));

}  // namespace halvane::detail

#endif  // HALVANE_COLLECTIONS_DETAIL_TYPEDACCESSRULES_H
