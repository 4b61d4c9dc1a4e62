// HVArray: the immutable ordered collection, over a CoreFoundation array
// whose elements are retained. Elements are read through typed, checked
// accessors: a wrongly typed element is reported (through an HVError, or a
// logged assertion in the forms without one) and never handed out as the
// wrong class; an index past the end throws HVException.
#ifndef HALVANE_COLLECTIONS_HVARRAY_H
#define HALVANE_COLLECTIONS_HVARRAY_H

#include <halvane/collections/HVData.h>
#include <halvane/core/HVObject.h>
#include <halvane/core/detail/ClassTypeTable.h>
#include <halvane/text/HVRange.h>
#include <halvane/text/HVString.h>
#include <halvane/values/HVBool.h>
#include <halvane/values/HVNumber.h>

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFBase.h>

#include <memory>

struct __CFArray;

class HVDate;
class HVDictionary;
class HVEnumerator;
class HVError;
class HVMutableArray;
class HVMutableDictionary;
class HVPoint;
class HVRect;
class HVRetainedObject;
class HVSize;
class HVValue;

class HV_EXPORT HVArray : public HVObject {
public:
    HVArray();
    // A mutable source is copied: an HVArray never shares a mutable array
    // it was copied from.
    HVArray(const HVArray& other);
    HVArray(const HVObject& object);
    HVArray(const void* const& ref);
    HVArray(const __CFArray* ref);

    static HVClassType ClassType();
    static const void* const& SharedEmptyObject();

    static HVArray ArrayFromObject(const HVObject& object);
    static HVArray ArrayFromId(const void* const& ref);
    // A one-element array holding the object.
    static HVArray ArrayWithObject(const HVObject& object);
    void InitWithObject(const HVObject& object);

    HVArray& operator=(const HVArray& other);
    // As the constructor from HVObject; an object of another kind is
    // reported and leaves the receiver as it was.
    HVArray& operator=(const HVObject& object);
    HVArray& operator=(const __CFArray* ref);
    operator const __CFArray*() const;

    unsigned long long Count() const;
    HVClassType ClassTypeOfObjectAtIndex(unsigned long long index) const;
    bool IsMatchingClassTypeOfObjectAtIndex(HVClassType type, unsigned long long index) const;
    // Every element access throws HVException (RangeException) when the
    // index is not below the count.
    HVObject ObjectAtIndex(unsigned long long index) const;
    // A wrapper of the element's own class; empty for elements of a kind
    // that has no wrapper class.
    std::shared_ptr<HVObject> CreateObjectAtIndex(unsigned long long index) const;

    // HVNotFound when nothing matches.
    unsigned long long IndexOfObject(const HVObject& object) const;
    unsigned long long IndexOfObjectIdenticalTo(const HVObject& object) const;
    bool Contains(const HVObject& object) const;

    // Walks this array; over a mutable array it sees later changes.
    HVEnumerator ObjectEnumerator() const;
    // Walks a reversed copy taken now.
    HVEnumerator ReverseObjectEnumerator() const;
    HVArray SortedArrayUsingFunctionAndContext(CFComparatorFunction comparator, void* context) const;
    // The elements are expected to be strings.
    HVString ComponentsJoinedByString(const HVString& separator) const;
    // A copy in which every null element is an empty string, nested arrays
    // and dictionaries included.
    static HVArray ReplaceNullWithEmptyString(const HVArray& array);

    // Typed accessors. A mismatch fills error (domain "HalvaneDomain", code
    // 20004) and returns the empty value; the forms without an error log an
    // assertion instead. A successful call leaves error as it was.
    HVString StringAtIndex(unsigned long long index, HVError& error) const;
    HVString StringAtIndex(unsigned long long index) const;
    // A boolean element is a mismatch here.
    HVNumber NumberAtIndex(unsigned long long index, HVError& error) const;
    HVNumber NumberAtIndex(unsigned long long index) const;
    // Booleans and numbers, read as true or false.
    HVBool BoolAtIndex(unsigned long long index, HVError& error) const;
    HVBool BoolAtIndex(unsigned long long index) const;
    // Mutable data comes back as an immutable copy.
    HVData DataAtIndex(unsigned long long index, HVError& error) const;
    HVData DataAtIndex(unsigned long long index) const;
    // Immutable data comes back as a mutable copy; mutable data is shared.
    HVMutableData MutableDataAtIndex(unsigned long long index, HVError& error) const;
    HVMutableData MutableDataAtIndex(unsigned long long index) const;
    HVDate DateAtIndex(unsigned long long index, HVError& error) const;
    HVDate DateAtIndex(unsigned long long index) const;
    HVDictionary DictionaryAtIndex(unsigned long long index, HVError& error) const;
    HVDictionary DictionaryAtIndex(unsigned long long index) const;
    HVMutableDictionary MutableDictionaryAtIndex(unsigned long long index, HVError& error) const;
    HVMutableDictionary MutableDictionaryAtIndex(unsigned long long index) const;
    HVArray ArrayAtIndex(unsigned long long index, HVError& error) const;
    HVArray ArrayAtIndex(unsigned long long index) const;
    HVMutableArray MutableArrayAtIndex(unsigned long long index, HVError& error) const;
    HVMutableArray MutableArrayAtIndex(unsigned long long index) const;
    HVValue ValueAtIndex(unsigned long long index, HVError& error) const;
    HVValue ValueAtIndex(unsigned long long index) const;
    // Points, sizes and rectangles are stored as their text.
    HVPoint PointAtIndex(unsigned long long index, HVError& error) const;
    HVPoint PointAtIndex(unsigned long long index) const;
    HVSize SizeAtIndex(unsigned long long index, HVError& error) const;
    HVSize SizeAtIndex(unsigned long long index) const;
    HVRect RectAtIndex(unsigned long long index, HVError& error) const;
    HVRect RectAtIndex(unsigned long long index) const;
    // The object the element carries; null on a mismatch.
    HVRetainedObject* RetainedObjectAtIndex(unsigned long long index, HVError& error) const;
    HVRetainedObject* RetainedObjectAtIndex(unsigned long long index) const;

    bool IsEmpty() const override;
    // Back to the shared empty array of the wrapper's own class.
    void Empty() override;
    // The XML property-list text; elements a property list cannot hold are
    // written as strings of their tagged text ("HVNull:<null>").
    HVString Serialize() override;
    // Reads that text back; string elements that begin with "HV" are
    // rebuilt as the objects they name.
    void Deserialize(const HVString& text) override;
    bool IsNativelyAllowedInPropertyList() const override;

protected:
    HVArray(const void* const& ref, HVClassType type);
    HVArray(const HVObject& object, HVClassType type);

    // The raw element, not retained; throws HVException when out of range.
    const void* InternalObjectAtIndex(unsigned long long index) const;
    const void* CheckedObjectAtIndex(unsigned long long index) const;
    // A platform count as Count() reports it: narrowed to 32 bits.
    static unsigned long long NarrowedCount(CFIndex count);
    // StringAtIndex(index) for an element that is not a string: the
    // conversion and the assertion line of the accessor.
    HVString ConvertedStringAtIndex(const void* element, unsigned long long index) const;
    void AssignUnderlyingArray(const void* ref);
    void AssignUnderlyingArrayAndTakeOwnership(const void* ref);
};

inline unsigned long long HVArray::NarrowedCount(CFIndex count) {
    return static_cast<unsigned long long>(static_cast<long long>(int32_t(count)));
}

// Every accessor passes through here: inline, and reading the platform
// array in place, it costs about what the raw platform call does. Anything
// but an array with the index in range (null, the null object, an index
// past the 32-bit count that Count() reports) goes the checked way.
inline const void* HVArray::InternalObjectAtIndex(unsigned long long index) const {
    auto array = static_cast<CFArrayRef>(m_Ref);
    if (_CFRuntimeGetTypeID(array) == _kCFArrayTypeID && index < NarrowedCount(_CFArrayGetCountInPlace(array))) {
        return _CFArrayGetValueAtIndexInPlace(array, CFIndex(index));
    }
    return CheckedObjectAtIndex(index);
}

// Plain objects and strings are what arrays hand out most: an element
// whose type ID names its class is wrapped here, inline; anything else is
// left to the library.
inline HVObject HVArray::ObjectAtIndex(unsigned long long index) const {
    const void* element = InternalObjectAtIndex(index);
    HVClassType type = halvane::detail::SettledClassTypeOf(element);
    return type != HVUnknownClassType ? HoldingWithClassType(element, type) : Create(element);
}

inline HVString HVArray::StringAtIndex(unsigned long long index) const {
    const void* element = InternalObjectAtIndex(index);
    if (halvane::detail::SettledClassTypeOf(element) == HVStringClassType) return HVString(element);
    return ConvertedStringAtIndex(element, index);
}

// The rest of the collection family and the values it hands out, so that
// one include gives every type this interface returns.
#include <halvane/collections/HVDictionary.h>
#include <halvane/collections/HVEnumerator.h>
#include <halvane/collections/HVMutableArray.h>
#include <halvane/core/HVRetainedObject.h>
#include <halvane/time/HVDate.h>
#include <halvane/values/HVPoint.h>
#include <halvane/values/HVRect.h>
#include <halvane/values/HVSize.h>
#include <halvane/values/HVValue.h>

#endif  // HALVANE_COLLECTIONS_HVARRAY_H
