#include <halvane/collections/HVMutableArray.h>

#include <halvane/core/HVRetainedObject.h>
#include <halvane/core/detail/ClassRegistry.h>
#include <halvane/errors/HVAssert.h>
#include <halvane/time/HVDate.h>
#include <halvane/values/HVPoint.h>
#include <halvane/values/HVRect.h>
#include <halvane/values/HVSize.h>
#include <halvane/values/HVValue.h>

#include <CoreFoundation/CoreFoundation.h>

HV_REGISTER_CLASS(HVMutableArray);

namespace {

CFArrayRef asArray(const void* ref) { return static_cast<CFArrayRef>(ref); }

// Indices and capacities reach the platform cut to 32 bits.
CFIndex toPlatform(unsigned long long value) { return CFIndex(int32_t(uint32_t(value))); }

// The container that a retained object carries, through its own (virtual)
// conversion, so that a subclass that hands out another reference is
// honoured.
const void* carriedReference(const HVRetainedObject* object) { return static_cast<const void*>(*object); }

CFMutableArrayRef newMutableArray(CFIndex capacity) {
    return CFArrayCreateMutable(kCFAllocatorDefault, capacity, &kCFTypeArrayCallBacks);
}

}  // namespace

HVMutableArray::HVMutableArray() : HVArray(SharedEmptyObject(), HVMutableArrayClassType) {}

HVMutableArray::HVMutableArray(unsigned long long capacity) : HVMutableArray() {
    AssignUnderlyingArrayAndTakeOwnership(newMutableArray(toPlatform(capacity)));
}

HVMutableArray::HVMutableArray(const HVMutableArray& other)
    : HVArray(static_cast<const HVObject&>(other), HVMutableArrayClassType) {}

HVMutableArray::HVMutableArray(const HVArray& array) : HVMutableArray() { SetArray(array); }

HVMutableArray::HVMutableArray(const HVObject& object) : HVMutableArray() {
    HVClassType type = object.ObjectsActualClassType();
    if (type == HVObjectClassType) type = object.ObjectsClassType();
    if (type == HVMutableArrayClassType) {
        AssignUnderlyingArray(object.Ref());
    } else if (type == HVArrayClassType) {
        // The immutable array itself, as HVArray's conversion yields it.
        AssignUnderlyingArray(HVArray(object).Ref());
    } else if (object.IsNull()) {
        Nullify();
    } else {
        HVAssertionFailed("0", "HVMutableArray::HVMutableArray(const HVObject& Object) parameter type unhandled.",
                          "HVMutableArray::HVMutableArray", "HVMutableArray", 109);
    }
}

HVMutableArray::HVMutableArray(const HVData& data) : HVMutableArray() { operator=(data); }

HVMutableArray::HVMutableArray(const void* const& ref) : HVArray(ref, HVMutableArrayClassType) {}

HVMutableArray::HVMutableArray(__CFArray* ref) : HVArray(static_cast<const void*>(ref), HVMutableArrayClassType) {}

HVMutableArray::HVMutableArray(const __CFArray* ref) : HVMutableArray() { operator=(ref); }

HVClassType HVMutableArray::ClassType() { return HVMutableArrayClassType; }

const void* const& HVMutableArray::SharedEmptyObject() {
    static const void* const empty = newMutableArray(0);
    return empty;
}

HVMutableArray HVMutableArray::MutableArrayWithCapacity(unsigned long long capacity) {
    return HVMutableArray(capacity);
}

HVMutableArray HVMutableArray::MutableArrayFromObject(const HVObject& object) { return HVMutableArray(object); }

HVMutableArray HVMutableArray::MutableArrayFromId(const void* const& ref) { return HVMutableArray(ref); }

HVMutableArray& HVMutableArray::operator=(const HVMutableArray& other) {
    if (this != &other) AssignUnderlyingArray(other.m_Ref);
    return *this;
}

HVMutableArray& HVMutableArray::operator=(const HVArray& array) {
    SetArray(array);
    return *this;
}

HVMutableArray& HVMutableArray::operator=(const HVData& data) {
    // Data goes through the array conversion, which does not take it: that
    // reports the type, and the receiver keeps what it holds.
    static_cast<void>(ArrayFromObject(data));
    return *this;
}

HVMutableArray& HVMutableArray::operator=(const __CFArray* ref) {
    if (ref != m_Ref) CopyElementsOf(ref);
    return *this;
}

HVMutableArray& HVMutableArray::operator+=(const HVArray& array) {
    AddObjectsFromArray(array);
    return *this;
}

HVMutableArray& HVMutableArray::operator+=(const __CFArray* ref) {
    AddObjectsFromArray(HVArray(ref));
    return *this;
}

HVMutableArray::operator __CFArray*() const { return static_cast<CFMutableArrayRef>(const_cast<void*>(m_Ref)); }

HVArray HVMutableArray::Copy() const {
    HVArray copy;
    if (!IsEmpty()) copy.AssignAndTakeOwnership(CFArrayCreateCopy(kCFAllocatorDefault, asArray(m_Ref)));
    return copy;
}

void HVMutableArray::EnsureUnderlyingArrayExistance() {
    // The shared empty arrays are never written.
    if (IsNull() || m_Ref == SharedEmptyObject() || m_Ref == HVArray::SharedEmptyObject()) {
        AssignUnderlyingArrayAndTakeOwnership(newMutableArray(0));
    }
}

void HVMutableArray::CopyElementsOf(const void* array) {
    EnsureUnderlyingArrayExistance();
    auto target = static_cast<CFMutableArrayRef>(const_cast<void*>(m_Ref));
    if (CFArrayGetCount(target) > 0) CFArrayRemoveAllValues(target);
    if (array == nullptr || array == kCFNull) return;
    CFIndex count = CFArrayGetCount(asArray(array));
    for (CFIndex i = 0; i < count; ++i) CFArrayAppendValue(target, CFArrayGetValueAtIndex(asArray(array), i));
}

void HVMutableArray::AddInternalObject(const void* ref) {
    EnsureUnderlyingArrayExistance();
    CFArrayAppendValue(static_cast<CFMutableArrayRef>(const_cast<void*>(m_Ref)), ref);
}

void HVMutableArray::InsertInternalObjectAtIndex(const void* ref, unsigned long long index) {
    EnsureUnderlyingArrayExistance();
    CFArrayInsertValueAtIndex(static_cast<CFMutableArrayRef>(const_cast<void*>(m_Ref)), toPlatform(index), ref);
}

void HVMutableArray::SetInternalObjectAtIndex(const void* ref, unsigned long long index) {
    EnsureUnderlyingArrayExistance();
    CFArraySetValueAtIndex(static_cast<CFMutableArrayRef>(const_cast<void*>(m_Ref)), toPlatform(index), ref);
}

void HVMutableArray::InitByAddingObject(const HVObject& object) {
    Empty();
    AddObject(object);
}

void HVMutableArray::SetArray(const HVArray& array) {
    // A source without elements leaves the receiver as it is (kept so:
    // callers rely on it); nor is an array set to itself.
    if (array.IsEmpty() || array.Ref() == m_Ref) return;
    if (IsEmpty()) {
        EnsureUnderlyingArrayExistance();
    } else {
        CFArrayRemoveAllValues(static_cast<CFMutableArrayRef>(const_cast<void*>(m_Ref)));
    }
    AddObjectsFromArray(array);
}

void HVMutableArray::AddObjectsFromArray(const HVArray& array) {
    if (array.IsEmpty()) return;
    // Guards against adding an array to itself; an array with equal
    // contents is skipped too, deliberately.
    if (array == *this) return;
    unsigned long long count = array.Count();
    for (unsigned long long i = 0; i < count; ++i) {
        AddInternalObject(CFArrayGetValueAtIndex(asArray(array.Ref()), toPlatform(i)));
    }
}

void HVMutableArray::AddObject(const HVObject& object) { AddInternalObject(object.Ref()); }
void HVMutableArray::AddArray(const HVArray& array) { AddInternalObject(array.Ref()); }
void HVMutableArray::AddBool(const HVBool& value) { AddInternalObject(value.Ref()); }
void HVMutableArray::AddData(const HVData& data) { AddInternalObject(data.Ref()); }
void HVMutableArray::AddDate(const HVDate& date) { AddInternalObject(date.Ref()); }
void HVMutableArray::AddDictionary(const HVDictionary& dictionary) { AddInternalObject(dictionary.Ref()); }
void HVMutableArray::AddNumber(const HVNumber& number) { AddInternalObject(number.Ref()); }
void HVMutableArray::AddString(const HVString& string) { AddInternalObject(string.Ref()); }
void HVMutableArray::AddValue(const HVValue& value) { AddInternalObject(value.Ref()); }
void HVMutableArray::AddPoint(const HVPoint& point) { AddString(point.Serialize()); }
void HVMutableArray::AddRect(const HVRect& rect) { AddString(rect.Serialize()); }
void HVMutableArray::AddSize(const HVSize& size) { AddString(size.Serialize()); }

void HVMutableArray::AddRetainedObject(const HVRetainedObject* object) {
    if (object != nullptr) AddInternalObject(carriedReference(object));
}

void HVMutableArray::InsertObjectAtIndex(const HVObject& object, unsigned long long index) {
    InsertInternalObjectAtIndex(object.Ref(), index);
}
void HVMutableArray::InsertArrayAtIndex(const HVArray& array, unsigned long long index) {
    InsertInternalObjectAtIndex(array.Ref(), index);
}
void HVMutableArray::InsertBoolAtIndex(const HVBool& value, unsigned long long index) {
    InsertInternalObjectAtIndex(value.Ref(), index);
}
void HVMutableArray::InsertDataAtIndex(const HVData& data, unsigned long long index) {
    InsertInternalObjectAtIndex(data.Ref(), index);
}
void HVMutableArray::InsertDateAtIndex(const HVDate& date, unsigned long long index) {
    InsertInternalObjectAtIndex(date.Ref(), index);
}
void HVMutableArray::InsertDictionaryAtIndex(const HVDictionary& dictionary, unsigned long long index) {
    InsertInternalObjectAtIndex(dictionary.Ref(), index);
}
void HVMutableArray::InsertNumberAtIndex(const HVNumber& number, unsigned long long index) {
    InsertInternalObjectAtIndex(number.Ref(), index);
}
void HVMutableArray::InsertStringAtIndex(const HVString& string, unsigned long long index) {
    InsertInternalObjectAtIndex(string.Ref(), index);
}
void HVMutableArray::InsertValueAtIndex(const HVValue& value, unsigned long long index) {
    InsertInternalObjectAtIndex(value.Ref(), index);
}
// A null pointer inserts nothing, as it adds nothing.
void HVMutableArray::InsertRetainedObjectAtIndex(const HVRetainedObject* object, unsigned long long index) {
    if (object != nullptr) InsertInternalObjectAtIndex(carriedReference(object), index);
}

void HVMutableArray::SetObjectAtIndex(const HVObject& object, unsigned long long index) {
    SetInternalObjectAtIndex(object.Ref(), index);
}
void HVMutableArray::SetArrayAtIndex(const HVArray& array, unsigned long long index) {
    SetInternalObjectAtIndex(array.Ref(), index);
}
void HVMutableArray::SetBoolAtIndex(const HVBool& value, unsigned long long index) {
    SetInternalObjectAtIndex(value.Ref(), index);
}
void HVMutableArray::SetDataAtIndex(const HVData& data, unsigned long long index) {
    SetInternalObjectAtIndex(data.Ref(), index);
}
void HVMutableArray::SetDateAtIndex(const HVDate& date, unsigned long long index) {
    SetInternalObjectAtIndex(date.Ref(), index);
}
void HVMutableArray::SetDictionaryAtIndex(const HVDictionary& dictionary, unsigned long long index) {
    SetInternalObjectAtIndex(dictionary.Ref(), index);
}
void HVMutableArray::SetNumberAtIndex(const HVNumber& number, unsigned long long index) {
    SetInternalObjectAtIndex(number.Ref(), index);
}
void HVMutableArray::SetStringAtIndex(const HVString& string, unsigned long long index) {
    SetInternalObjectAtIndex(string.Ref(), index);
}
void HVMutableArray::SetValueAtIndex(const HVValue& value, unsigned long long index) {
    SetInternalObjectAtIndex(value.Ref(), index);
}
// A null pointer leaves the element as it is.
void HVMutableArray::SetRetainedObjectAtIndex(const HVRetainedObject* object, unsigned long long index) {
    if (object != nullptr) SetInternalObjectAtIndex(carriedReference(object), index);
}
void HVMutableArray::SetPointAtIndex(const HVPoint& point, unsigned long long index) {
    SetStringAtIndex(point.Serialize(), index);
}
void HVMutableArray::SetRectAtIndex(const HVRect& rect, unsigned long long index) {
    SetStringAtIndex(rect.Serialize(), index);
}
void HVMutableArray::SetSizeAtIndex(const HVSize& size, unsigned long long index) {
    SetStringAtIndex(size.Serialize(), index);
}

void HVMutableArray::RemoveAllObjects() {
    if (IsEmpty()) return;
    CFArrayRemoveAllValues(static_cast<CFMutableArrayRef>(const_cast<void*>(m_Ref)));
}

void HVMutableArray::RemoveLastObject() { RemoveObjectAtIndex(Count() - 1); }

void HVMutableArray::RemoveObjectAtIndex(unsigned long long index) {
    EnsureUnderlyingArrayExistance();
    CFArrayRemoveValueAtIndex(static_cast<CFMutableArrayRef>(const_cast<void*>(m_Ref)), toPlatform(index));
}

void HVMutableArray::RemoveObjectIdenticalTo(const HVObject& object) {
    unsigned long long index = IndexOfObjectIdenticalTo(object);
    if (index != HVNotFound) RemoveObjectAtIndex(index);
}

void HVMutableArray::ExchangeObjectAtIndexWithObjectAtIndex(unsigned long long index, unsigned long long otherIndex) {
    EnsureUnderlyingArrayExistance();
    CFArrayExchangeValuesAtIndices(static_cast<CFMutableArrayRef>(const_cast<void*>(m_Ref)), toPlatform(index),
                                   toPlatform(otherIndex));
}
