// HVMutableArray: the growable ordered collection. Copies of one mutable
// array share its platform array, so a change made through one is seen
// through the other; the shared empty array is never written: the first
// change gives the object an array of its own.
#ifndef HALVANE_COLLECTIONS_HVMUTABLEARRAY_H
#define HALVANE_COLLECTIONS_HVMUTABLEARRAY_H

#include <halvane/collections/HVArray.h>

class HV_EXPORT HVMutableArray : public HVArray {
public:
    HVMutableArray();
    // A non-zero capacity is a fixed maximum number of elements.
    explicit HVMutableArray(unsigned long long capacity);
    HVMutableArray(const HVMutableArray& other);
    // Copies the elements into an array of the receiver's own.
    HVMutableArray(const HVArray& array);
    // A mutable array is shared; an immutable one is held as it is (not
    // copied): kept so, callers rely on it.
    HVMutableArray(const HVObject& object);
    // Data is not an array: reported, and the receiver stays empty.
    HVMutableArray(const HVData& data);
    HVMutableArray(const void* const& ref);
    HVMutableArray(__CFArray* ref);
    // Copies the elements of the immutable platform array.
    HVMutableArray(const __CFArray* ref);

    static HVClassType ClassType();
    static const void* const& SharedEmptyObject();

    static HVMutableArray MutableArrayWithCapacity(unsigned long long capacity);
    static HVMutableArray MutableArrayFromObject(const HVObject& object);
    static HVMutableArray MutableArrayFromId(const void* const& ref);

    HVMutableArray& operator=(const HVMutableArray& other);
    HVMutableArray& operator=(const HVArray& array);
    HVMutableArray& operator=(const HVData& data);
    HVMutableArray& operator=(const __CFArray* ref);
    HVMutableArray& operator+=(const HVArray& array);
    HVMutableArray& operator+=(const __CFArray* ref);
    operator __CFArray*() const;

    // An immutable copy; the shared empty array when there is nothing.
    HVArray Copy() const;

    void InitByAddingObject(const HVObject& object);
    // A source without elements leaves the receiver as it is.
    void SetArray(const HVArray& array);
    // Nothing is added when the source equals the receiver (itself or an
    // array with equal contents).
    void AddObjectsFromArray(const HVArray& array);

    void AddObject(const HVObject& object);
    void AddArray(const HVArray& array);
    void AddBool(const HVBool& value);
    void AddData(const HVData& data);
    void AddDate(const HVDate& date);
    void AddDictionary(const HVDictionary& dictionary);
    void AddNumber(const HVNumber& number);
    void AddString(const HVString& string);
    void AddValue(const HVValue& value);
    // Geometry is stored as its text.
    void AddPoint(const HVPoint& point);
    void AddRect(const HVRect& rect);
    void AddSize(const HVSize& size);
    // A null pointer adds nothing.
    void AddRetainedObject(const HVRetainedObject* object);

    // Indices go to the platform unchecked.
    void InsertObjectAtIndex(const HVObject& object, unsigned long long index);
    void InsertArrayAtIndex(const HVArray& array, unsigned long long index);
    void InsertBoolAtIndex(const HVBool& value, unsigned long long index);
    void InsertDataAtIndex(const HVData& data, unsigned long long index);
    void InsertDateAtIndex(const HVDate& date, unsigned long long index);
    void InsertDictionaryAtIndex(const HVDictionary& dictionary, unsigned long long index);
    void InsertNumberAtIndex(const HVNumber& number, unsigned long long index);
    void InsertStringAtIndex(const HVString& string, unsigned long long index);
    void InsertValueAtIndex(const HVValue& value, unsigned long long index);
    void InsertRetainedObjectAtIndex(const HVRetainedObject* object, unsigned long long index);

    // Replaces the element at index, or appends when index is the count.
    void SetObjectAtIndex(const HVObject& object, unsigned long long index);
    void SetArrayAtIndex(const HVArray& array, unsigned long long index);
    void SetBoolAtIndex(const HVBool& value, unsigned long long index);
    void SetDataAtIndex(const HVData& data, unsigned long long index);
    void SetDateAtIndex(const HVDate& date, unsigned long long index);
    void SetDictionaryAtIndex(const HVDictionary& dictionary, unsigned long long index);
    void SetNumberAtIndex(const HVNumber& number, unsigned long long index);
    void SetStringAtIndex(const HVString& string, unsigned long long index);
    void SetValueAtIndex(const HVValue& value, unsigned long long index);
    void SetRetainedObjectAtIndex(const HVRetainedObject* object, unsigned long long index);
    void SetPointAtIndex(const HVPoint& point, unsigned long long index);
    void SetRectAtIndex(const HVRect& rect, unsigned long long index);
    void SetSizeAtIndex(const HVSize& size, unsigned long long index);

    void RemoveAllObjects();
    // Not checked for emptiness: on an empty array the platform reports
    // the bad index.
    void RemoveLastObject();
    void RemoveObjectAtIndex(unsigned long long index);
    // Removes the first element that is this very object.
    void RemoveObjectIdenticalTo(const HVObject& object);
    void ExchangeObjectAtIndexWithObjectAtIndex(unsigned long long index, unsigned long long otherIndex);

private:
    void EnsureUnderlyingArrayExistance();
    void AddInternalObject(const void* ref);
    void InsertInternalObjectAtIndex(const void* ref, unsigned long long index);
    void SetInternalObjectAtIndex(const void* ref, unsigned long long index);
    void CopyElementsOf(const void* array);
};

#endif  // HALVANE_COLLECTIONS_HVMUTABLEARRAY_H
