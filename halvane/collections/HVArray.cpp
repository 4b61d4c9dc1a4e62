#include <halvane/collections/HVArray.h>

#include <halvane/collections/HVDictionary.h>
#include <halvane/collections/HVEnumerator.h>
#include <halvane/collections/HVMutableArray.h>
#include <halvane/core/detail/ClassRegistry.h>
#include <halvane/errors/HVAssert.h>
#include <halvane/errors/HVException.h>

#include <CoreFoundation/CoreFoundation.h>

HV_REGISTER_CLASS(HVArray);

namespace {

CFArrayRef asArray(const void* ref) { return static_cast<CFArrayRef>(ref); }

// Indices reach the platform cut to 32 bits.
CFIndex toPlatform(unsigned long long index) { return CFIndex(int32_t(uint32_t(index))); }

// An immutable copy of a mutable array, as HVMutableArray::Copy makes it.
const void* createImmutableCopy(const void* ref) {
    if (ref == nullptr || ref == kCFNull || CFArrayGetCount(asArray(ref)) == 0) {
        return CFRetain(HVArray::SharedEmptyObject());
    }
    return CFArrayCreateCopy(kCFAllocatorDefault, asArray(ref));
}

CFMutableArrayRef createMutableCopy(const HVArray& array) {
    if (array.IsEmpty()) return CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks);
    return CFArrayCreateMutableCopy(kCFAllocatorDefault, 0, asArray(array.Ref()));
}

}  // namespace

HVArray::HVArray() : HVObject(SharedEmptyObject(), HVArrayClassType) {}

HVArray::HVArray(const HVArray& other) : HVObject(other, HVArrayClassType) {
    // An immutable wrapper never shares a mutable array: it keeps a copy.
    if (other.IsMutable() && !other.IsNull()) AssignUnderlyingArrayAndTakeOwnership(createImmutableCopy(other.m_Ref));
}

HVArray::HVArray(const HVObject& object) : HVArray() {
    // By the wrapper's class; a plain object is taken by what it holds.
    HVClassType type = object.ObjectsActualClassType();
    if (type == HVObjectClassType) type = object.ObjectsClassType();
    if (type == HVArrayClassType) {
        AssignUnderlyingArray(object.Ref());
    } else if (type == HVMutableArrayClassType) {
        AssignUnderlyingArrayAndTakeOwnership(createImmutableCopy(object.Ref()));
    } else if (object.IsNull()) {
        Nullify();
    } else {
        HVAssertionFailed("0",
                          HVString::StringWithFormat("HVArray::HVArray(const HVObject& Object) parameter type "
                                                     "unhandled. The object type is: %d",
                                                     int(object.ObjectsActualClassType())),
                          "HVArray::HVArray", "HVArray", 123);
    }
}

HVArray::HVArray(const void* const& ref) : HVObject(ref, HVArrayClassType) {}

HVArray::HVArray(const __CFArray* ref) : HVObject(static_cast<const void*>(ref), HVArrayClassType) {}

HVArray::HVArray(const void* const& ref, HVClassType type) : HVObject(ref, type) {}

HVArray::HVArray(const HVObject& object, HVClassType type) : HVObject(object, type) {}

HVClassType HVArray::ClassType() { return HVArrayClassType; }

const void* const& HVArray::SharedEmptyObject() {
    static const void* const empty = CFArrayCreate(kCFAllocatorDefault, nullptr, 0, &kCFTypeArrayCallBacks);
    return empty;
}

HVArray HVArray::ArrayFromObject(const HVObject& object) { return HVArray(object); }

HVArray HVArray::ArrayFromId(const void* const& ref) { return HVArray(ref); }

HVArray HVArray::ArrayWithObject(const HVObject& object) {
    HVArray array;
    array.InitWithObject(object);
    return array;
}

void HVArray::InitWithObject(const HVObject& object) {
    const void* element = object.Ref();
    AssignUnderlyingArrayAndTakeOwnership(CFArrayCreate(kCFAllocatorDefault, &element, 1, &kCFTypeArrayCallBacks));
}

HVArray& HVArray::operator=(const HVArray& other) {
    if (this == &other) return *this;
    if (!IsMutable()) {
        if (other.IsMutable() && !other.IsNull()) {
            AssignUnderlyingArrayAndTakeOwnership(createImmutableCopy(other.m_Ref));
        } else {
            AssignUnderlyingArray(other.m_Ref);
        }
    } else if (other.IsMutable()) {
        Assign(other.m_Ref);
    } else if (other.m_Ref != m_Ref) {
        // A mutable receiver keeps a mutable array: a fresh one in place of
        // the shared empty one, else its own, emptied and refilled.
        bool fresh = m_Ref == nullptr || m_Ref == kCFNull || m_Ref == HVMutableArray::SharedEmptyObject();
        CFMutableArrayRef target = fresh ? CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks)
                                         : static_cast<CFMutableArrayRef>(const_cast<void*>(m_Ref));
        if (!fresh) CFArrayRemoveAllValues(target);
        CFIndex count = CFIndex(other.Count());
        for (CFIndex i = 0; i < count; ++i) CFArrayAppendValue(target, CFArrayGetValueAtIndex(asArray(other.m_Ref), i));
        if (fresh) AssignAndTakeOwnership(target);
    }
    // Deliberately the immutable class after every branch, also where the
    // array held is mutable.
    m_ActualClassType = HVArrayClassType;
    return *this;
}

HVArray& HVArray::operator=(const HVObject& object) {
    HVClassType type = object.ObjectsActualClassType();
    if (type == HVObjectClassType) type = object.ObjectsClassType();
    if (type == HVArrayClassType || type == HVMutableArrayClassType || object.IsNull()) {
        HVArray converted(object);
        AssignUnderlyingArray(converted.m_Ref);
    } else {
        HVAssertionFailed("0", "HVArray::operator=(const HVObject& Object) parameter type unhandled.",
                          "HVArray::operator =", "HVArray", 173);
    }
    return *this;
}

HVArray& HVArray::operator=(const __CFArray* ref) {
    AssignUnderlyingArray(ref);
    return *this;
}

HVArray::operator const __CFArray*() const { return asArray(m_Ref); }

unsigned long long HVArray::Count() const {
    // The shared empty object is a platform collection with no elements,
    // so only holding nothing needs a test of its own.
    if (m_Ref == nullptr || m_Ref == kCFNull) return 0;
    return NarrowedCount(CFArrayGetCount(asArray(m_Ref)));
}

bool HVArray::IsEmpty() const { return Count() == 0; }

void HVArray::Empty() {
    const void* shared = m_ActualClassType == HVMutableArrayClassType ? HVMutableArray::SharedEmptyObject()
                                                                      : SharedEmptyObject();
    m_ClassType = m_ActualClassType;
    Assign(shared);
}

const void* HVArray::CheckedObjectAtIndex(unsigned long long index) const {
    if (index >= Count()) {
        throw HVException::ExceptionWithNameAndReason(HVExceptionName::RangeException(),
                                                      "Attempted to index past the end of the array.");
    }
    return CFArrayGetValueAtIndex(asArray(m_Ref), toPlatform(index));
}

HVClassType HVArray::ClassTypeOfObjectAtIndex(unsigned long long index) const {
    return ClassTypeNeededForObject(InternalObjectAtIndex(index));
}

bool HVArray::IsMatchingClassTypeOfObjectAtIndex(HVClassType type, unsigned long long index) const {
    return ClassTypeOfObjectAtIndex(index) == type;
}


std::shared_ptr<HVObject> HVArray::CreateObjectAtIndex(unsigned long long index) const {
    const void* element = InternalObjectAtIndex(index);
    return CreateObjectOfClassType(element, ClassTypeNeededForObject(element));
}

unsigned long long HVArray::IndexOfObject(const HVObject& object) const {
    unsigned long long count = Count();
    const void* wanted = object.Ref();
    for (unsigned long long i = 0; i < count; ++i) {
        const void* element = CFArrayGetValueAtIndex(asArray(m_Ref), toPlatform(i));
        bool equal = element != nullptr && wanted != nullptr ? CFEqual(element, wanted) : element == wanted;
        if (equal) return i;
    }
    return HVNotFound;
}

unsigned long long HVArray::IndexOfObjectIdenticalTo(const HVObject& object) const {
    unsigned long long count = Count();
    for (unsigned long long i = 0; i < count; ++i) {
        if (CFArrayGetValueAtIndex(asArray(m_Ref), toPlatform(i)) == object.Ref()) return i;
    }
    return HVNotFound;
}

bool HVArray::Contains(const HVObject& object) const { return IndexOfObject(object) != HVNotFound; }

HVEnumerator HVArray::ObjectEnumerator() const { return HVEnumerator(*this); }

HVEnumerator HVArray::ReverseObjectEnumerator() const {
    CFMutableArrayRef reversed = createMutableCopy(*this);
    CFIndex count = CFArrayGetCount(reversed);
    for (CFIndex i = 0; i < count / 2; ++i) CFArrayExchangeValuesAtIndices(reversed, i, count - 1 - i);
    HVEnumerator enumerator(static_cast<const void*>(reversed));
    CFRelease(reversed);
    return enumerator;
}

HVArray HVArray::SortedArrayUsingFunctionAndContext(CFComparatorFunction comparator, void* context) const {
    CFMutableArrayRef sorted = createMutableCopy(*this);
    if (comparator != nullptr) {
        CFArraySortValues(sorted, CFRangeMake(0, CFArrayGetCount(sorted)), comparator, context);
    }
    HVArray result;
    result.AssignUnderlyingArrayAndTakeOwnership(createImmutableCopy(sorted));
    CFRelease(sorted);
    return result;
}

HVString HVArray::ComponentsJoinedByString(const HVString& separator) const {
    HVString joined;
    if (IsEmpty()) return joined;
    CFStringRef text = CFStringCreateByCombiningStrings(kCFAllocatorDefault, asArray(m_Ref),
                                                        static_cast<CFStringRef>(separator.Ref()));
    if (text != nullptr) joined.AssignAndTakeOwnership(text);
    return joined;
}

HVArray HVArray::ReplaceNullWithEmptyString(const HVArray& array) {
    HVMutableArray built;
    unsigned long long count = array.Count();
    for (unsigned long long i = 0; i < count; ++i) {
        const void* element = array.InternalObjectAtIndex(i);
        switch (ClassTypeNeededForObject(element)) {
            case HVNullClassType: built.AddString(HVString()); break;
            case HVArrayClassType:
            case HVMutableArrayClassType: built.AddArray(ReplaceNullWithEmptyString(HVArray(element))); break;
            case HVDictionaryClassType:
            case HVMutableDictionaryClassType:
                built.AddDictionary(HVDictionary::ReplaceNullWithEmptyString(HVDictionary(element)));
                break;
            default: built.AddObject(HVObject::Create(element)); break;
        }
    }
    return built.Copy();
}

bool HVArray::IsNativelyAllowedInPropertyList() const {
    unsigned long long count = Count();
    for (unsigned long long i = 0; i < count; ++i) {
        std::shared_ptr<HVObject> element = CreateObjectAtIndex(i);
        if (element == nullptr || !element->IsNativelyAllowedInPropertyList()) return false;
    }
    return true;
}

void HVArray::AssignUnderlyingArray(const void* ref) { ReplaceReference(ref, m_ActualClassType); }

void HVArray::AssignUnderlyingArrayAndTakeOwnership(const void* ref) {
    ReplaceReferenceTakingOwnership(ref, m_ActualClassType);
}
