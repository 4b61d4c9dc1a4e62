#include <halvane/collections/HVMutableDictionary.h>

#include <halvane/collections/HVArray.h>
#include <halvane/collections/HVEnumerator.h>
#include <halvane/core/HVRetainedObject.h>
#include <halvane/core/detail/ClassRegistry.h>
#include <halvane/errors/HVAssert.h>
#include <halvane/errors/HVLog.h>
#include <halvane/time/HVDate.h>
#include <halvane/values/HVPoint.h>
#include <halvane/values/HVRect.h>
#include <halvane/values/HVSize.h>
#include <halvane/values/HVValue.h>

#include <CoreFoundation/CoreFoundation.h>

HV_REGISTER_CLASS(HVMutableDictionary);

namespace {

CFDictionaryRef asDictionary(const void* ref) { return static_cast<CFDictionaryRef>(ref); }

CFMutableDictionaryRef newMutableDictionary() {
    return CFDictionaryCreateMutable(kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks,
                                     &kCFTypeDictionaryValueCallBacks);
}

}  // namespace

HVMutableDictionary::HVMutableDictionary() : HVDictionary(SharedEmptyObject(), HVMutableDictionaryClassType) {}

HVMutableDictionary::HVMutableDictionary(const HVMutableDictionary& other)
    : HVDictionary(other.m_Ref, HVMutableDictionaryClassType) {}

HVMutableDictionary::HVMutableDictionary(const HVDictionary& dictionary) : HVMutableDictionary() {
    SetDictionary(dictionary);
}

HVMutableDictionary::HVMutableDictionary(const HVData& data) : HVMutableDictionary() { operator=(data); }

HVMutableDictionary::HVMutableDictionary(const HVObject& object) : HVMutableDictionary() {
    HVClassType type = object.ObjectsActualClassType();
    if (type == HVMutableDictionaryClassType) {
        AssignUnderlyingDictionary(object.Ref());
    } else if (type == HVDictionaryClassType) {
        SetDictionary(HVDictionary(object));
    } else if (object.IsNull()) {
        Nullify();
    } else if (type == HVObjectClassType) {
        HVDictionary converted(object);
        if (converted.IsMutable()) {
            AssignUnderlyingDictionary(converted.Ref());
        } else {
            SetDictionary(converted);
        }
    } else {
        HVAssertionFailed("0",
                          "HVMutableDictionary::HVMutableDictionary(const HVObject& Object) parameter type unhandled.",
                          "HVMutableDictionary::HVMutableDictionary", "HVMutableDictionary", 109);
    }
}

HVMutableDictionary::HVMutableDictionary(const void* const& ref) : HVDictionary(ref, HVMutableDictionaryClassType) {}

HVMutableDictionary::HVMutableDictionary(__CFDictionary* ref)
    : HVDictionary(static_cast<const void*>(ref), HVMutableDictionaryClassType) {}

HVMutableDictionary::HVMutableDictionary(const __CFDictionary* ref) : HVMutableDictionary() { operator=(ref); }

HVClassType HVMutableDictionary::ClassType() { return HVMutableDictionaryClassType; }

const void* const& HVMutableDictionary::SharedEmptyObject() {
    static const void* const empty = newMutableDictionary();
    return empty;
}

HVMutableDictionary HVMutableDictionary::MutableDictionaryFromObject(const HVObject& object) {
    return HVMutableDictionary(object);
}

HVMutableDictionary HVMutableDictionary::MutableDictionaryFromId(const void* const& ref) {
    return HVMutableDictionary(ref);
}

HVMutableDictionary& HVMutableDictionary::operator=(const HVMutableDictionary& other) {
    if (this != &other) AssignUnderlyingDictionary(other.m_Ref);
    return *this;
}

HVMutableDictionary& HVMutableDictionary::operator=(const HVDictionary& dictionary) {
    SetDictionary(dictionary);
    return *this;
}

HVMutableDictionary& HVMutableDictionary::operator=(const HVData& data) {
    // Parsed as an immutable dictionary first; unreadable data leaves the
    // receiver as it was.
    const void* none = nullptr;
    HVDictionary parsed(none);
    parsed = data;
    if (!parsed.IsNull()) SetDictionary(parsed);
    return *this;
}

HVMutableDictionary& HVMutableDictionary::operator=(const HVString& text) {
    return operator=(text.DataContainingUTF8String());
}

HVMutableDictionary& HVMutableDictionary::operator=(const HVObject& object) {
    HVClassType type = object.ObjectsActualClassType();
    bool handled = type == HVDictionaryClassType || type == HVMutableDictionaryClassType || object.IsNull() ||
                   type == HVObjectClassType;
    HVMutableDictionary converted(object);
    if (handled) AssignUnderlyingDictionary(converted.m_Ref);
    return *this;
}

HVMutableDictionary& HVMutableDictionary::operator=(__CFDictionary* ref) {
    AssignUnderlyingDictionary(ref);
    return *this;
}

HVMutableDictionary& HVMutableDictionary::operator=(const __CFDictionary* ref) {
    SetDictionary(HVDictionary(ref));
    return *this;
}

HVMutableDictionary& HVMutableDictionary::operator+=(const HVDictionary& dictionary) {
    AddDictionary(dictionary);
    return *this;
}

HVMutableDictionary& HVMutableDictionary::operator+=(const __CFDictionary* ref) {
    AddDictionary(HVDictionary(ref));
    return *this;
}

HVMutableDictionary::operator __CFDictionary*() const {
    return static_cast<CFMutableDictionaryRef>(const_cast<void*>(m_Ref));
}

HVDictionary HVMutableDictionary::Copy() const {
    HVDictionary copy;
    if (!IsEmpty()) copy.AssignAndTakeOwnership(CFDictionaryCreateCopy(kCFAllocatorDefault, asDictionary(m_Ref)));
    return copy;
}

void HVMutableDictionary::EnsureUnderlyingDictionaryExistance() {
    // Also when the receiver shares an empty dictionary with another
    // wrapper: the sharing ends there (kept so).
    if (IsEmpty()) AssignUnderlyingDictionaryAndTakeOwnership(newMutableDictionary());
}

void HVMutableDictionary::SetInternalObjectForKey(const void* const& ref, const HVString& key) {
    if (key.Ref() == nullptr) return;
    if (ref == nullptr) {
        RemoveObjectForKey(key);
        return;
    }
    EnsureUnderlyingDictionaryExistance();
    CFDictionarySetValue(static_cast<CFMutableDictionaryRef>(const_cast<void*>(m_Ref)), key.Ref(), ref);
}

void HVMutableDictionary::SetObjectForKey(const HVObject& object, const HVString& key) {
    SetInternalObjectForKey(object.Ref(), key);
}
void HVMutableDictionary::SetArrayForKey(const HVArray& array, const HVString& key) {
    SetInternalObjectForKey(array.Ref(), key);
}
void HVMutableDictionary::SetBoolForKey(const HVBool& value, const HVString& key) {
    SetInternalObjectForKey(value.Ref(), key);
}
void HVMutableDictionary::SetDataForKey(const HVData& data, const HVString& key) {
    SetInternalObjectForKey(data.Ref(), key);
}
void HVMutableDictionary::SetNumberForKey(const HVNumber& number, const HVString& key) {
    SetInternalObjectForKey(number.Ref(), key);
}
void HVMutableDictionary::SetStringForKey(const HVString& string, const HVString& key) {
    SetInternalObjectForKey(string.Ref(), key);
}

void HVMutableDictionary::SetDateForKey(const HVDate& date, const HVString& key) {
    SetInternalObjectForKey(date.Ref(), key);
}
void HVMutableDictionary::SetValueForKey(const HVValue& value, const HVString& key) {
    SetInternalObjectForKey(value.Ref(), key);
}
void HVMutableDictionary::SetPointForKey(const HVPoint& point, const HVString& key) {
    SetStringForKey(point.Serialize(), key);
}
void HVMutableDictionary::SetSizeForKey(const HVSize& size, const HVString& key) {
    SetStringForKey(size.Serialize(), key);
}
void HVMutableDictionary::SetRectForKey(const HVRect& rect, const HVString& key) {
    SetStringForKey(rect.Serialize(), key);
}

void HVMutableDictionary::SetRetainedObjectForKey(const HVRetainedObject* object, const HVString& key) {
    // The container, through the object's own (virtual) conversion.
    const void* container = object != nullptr ? static_cast<const void*>(*object) : nullptr;
    SetInternalObjectForKey(container, key);
}

void HVMutableDictionary::SetDictionaryForKey(const HVDictionary& dictionary, const HVString& key) {
    if (dictionary.Ref() != nullptr && dictionary.Ref() == m_Ref) {
        HVLog("HVMutableDictionary::SetDictionaryForKey invalid to add yourself to yourself.");
    }
    SetInternalObjectForKey(dictionary.Ref(), key);
}

void HVMutableDictionary::SetNonEmptyArrayForKey(const HVArray& array, const HVString& key) {
    if (array.IsEmpty()) {
        RemoveObjectForKey(key);
    } else {
        SetArrayForKey(array, key);
    }
}

void HVMutableDictionary::SetNonEmptyDictionaryForKey(const HVDictionary& dictionary, const HVString& key) {
    if (dictionary.IsEmpty()) {
        RemoveObjectForKey(key);
    } else {
        SetDictionaryForKey(dictionary, key);
    }
}

void HVMutableDictionary::SetNonEmptyStringForKey(const HVString& string, const HVString& key) {
    if (string.IsEmpty() || string.IsNull()) {
        RemoveObjectForKey(key);
    } else {
        SetStringForKey(string, key);
    }
}

void HVMutableDictionary::SetNonEmptyDataForKey(const HVData& data, const HVString& key) {
    if (data.IsEmpty() || data.Ref() == nullptr) {
        RemoveObjectForKey(key);
    } else {
        SetDataForKey(data, key);
    }
}

void HVMutableDictionary::SetNonEmptyBoolForKey(const HVBool& value, const HVString& key) {
    if (!bool(value)) {
        RemoveObjectForKey(key);
    } else {
        SetBoolForKey(value, key);
    }
}

void HVMutableDictionary::SetNonEmptyNumberForKey(const HVNumber& number, const HVString& key) {
    if (number.DoubleValue() == 0.0) {
        RemoveObjectForKey(key);
    } else {
        SetNumberForKey(number, key);
    }
}

void HVMutableDictionary::SetNonEmptyDateForKey(const HVDate& date, const HVString& key) {
    // Null, the platform's null object or the shared empty date.
    if (date.IsEmpty()) {
        RemoveObjectForKey(key);
    } else {
        SetDateForKey(date, key);
    }
}

void HVMutableDictionary::SetNonEmptyValueForKey(const HVValue& value, const HVString& key) {
    if (value.IsNull() || value.Ref() == HVValue::SharedEmptyObject()) {
        RemoveObjectForKey(key);
    } else {
        SetValueForKey(value, key);
    }
}

// Both components equal to 0.0; a NaN component is stored.
void HVMutableDictionary::SetNonEmptyPointForKey(const HVPoint& point, const HVString& key) {
    if (point.IsEmpty()) {
        RemoveObjectForKey(key);
    } else {
        SetPointForKey(point, key);
    }
}

void HVMutableDictionary::SetNonEmptySizeForKey(const HVSize& size, const HVString& key) {
    if (size.IsEmpty()) {
        RemoveObjectForKey(key);
    } else {
        SetSizeForKey(size, key);
    }
}

void HVMutableDictionary::SetNonEmptyRectForKey(const HVRect& rect, const HVString& key) {
    if (rect.IsEmpty()) {
        RemoveObjectForKey(key);
    } else {
        SetRectForKey(rect, key);
    }
}

void HVMutableDictionary::RemoveObjectForKey(const HVString& key) {
    if (IsEmpty() || key.Ref() == nullptr) return;
    CFDictionaryRemoveValue(static_cast<CFMutableDictionaryRef>(const_cast<void*>(m_Ref)), key.Ref());
}

void HVMutableDictionary::RemoveObjectsForKeys(const HVArray& keys) {
    if (IsEmpty()) return;
    unsigned long long count = keys.Count();
    for (unsigned long long i = 0; i < count; ++i) RemoveObjectForKey(keys.StringAtIndex(i));
}

void HVMutableDictionary::RemoveAllObjects() {
    if (IsEmpty()) return;
    CFDictionaryRemoveAllValues(static_cast<CFMutableDictionaryRef>(const_cast<void*>(m_Ref)));
}

void HVMutableDictionary::AddDictionary(const HVDictionary& dictionary) {
    if (IsEmpty()) {
        SetDictionary(dictionary);
        return;
    }
    if (dictionary.IsEmpty() || dictionary == *this) return;
    HVEnumerator keys = dictionary.KeyEnumerator();
    // The walk ends at the first empty key, which is also what its end
    // yields.
    for (HVString key = keys.NextStringObject(); !key.IsEmpty(); key = keys.NextStringObject()) {
        SetObjectForKey(dictionary.ObjectForKey(key), key);
    }
}

void HVMutableDictionary::SetDictionary(const HVDictionary& dictionary) {
    CFMutableDictionaryRef copy = dictionary.IsNull()
                                      ? newMutableDictionary()
                                      : CFDictionaryCreateMutableCopy(kCFAllocatorDefault, 0,
                                                                      asDictionary(dictionary.Ref()));
    AssignUnderlyingDictionaryAndTakeOwnership(copy);
}
