// HVMutableDictionary: the changeable keyed collection. Copies of one
// mutable dictionary share its platform dictionary. Storing into an empty
// receiver first gives it a fresh dictionary of its own (which also ends
// sharing an empty dictionary with another wrapper).
//
// Setters take the value first and the key second. SetNonEmptyXForKey
// removes the key instead of storing an "empty" value, which keeps settings
// free of blank entries.
#ifndef HALVANE_COLLECTIONS_HVMUTABLEDICTIONARY_H
#define HALVANE_COLLECTIONS_HVMUTABLEDICTIONARY_H

#include <halvane/collections/HVDictionary.h>

class HV_EXPORT HVMutableDictionary : public HVDictionary {
public:
    HVMutableDictionary();
    HVMutableDictionary(const HVMutableDictionary& other);
    // A mutable copy of the source.
    HVMutableDictionary(const HVDictionary& dictionary);
    // XML property-list data, parsed as HVDictionary does, then copied.
    HVMutableDictionary(const HVData& data);
    HVMutableDictionary(const HVObject& object);
    HVMutableDictionary(const void* const& ref);
    HVMutableDictionary(__CFDictionary* ref);
    // A mutable copy of the immutable platform dictionary.
    HVMutableDictionary(const __CFDictionary* ref);

    static HVClassType ClassType();
    static const void* const& SharedEmptyObject();

    static HVMutableDictionary MutableDictionaryFromObject(const HVObject& object);
    static HVMutableDictionary MutableDictionaryFromId(const void* const& ref);

    HVMutableDictionary& operator=(const HVMutableDictionary& other);
    HVMutableDictionary& operator=(const HVDictionary& dictionary);
    HVMutableDictionary& operator=(const HVData& data);
    HVMutableDictionary& operator=(const HVString& text);
    HVMutableDictionary& operator=(const HVObject& object);
    HVMutableDictionary& operator=(__CFDictionary* ref);
    HVMutableDictionary& operator=(const __CFDictionary* ref);
    HVMutableDictionary& operator+=(const HVDictionary& dictionary);
    HVMutableDictionary& operator+=(const __CFDictionary* ref);
    operator __CFDictionary*() const;

    // An immutable copy; the shared empty dictionary when there is nothing.
    HVDictionary Copy() const;

    // A value that holds no reference removes the key.
    void SetObjectForKey(const HVObject& object, const HVString& key);
    void SetArrayForKey(const HVArray& array, const HVString& key);
    void SetBoolForKey(const HVBool& value, const HVString& key);
    void SetDataForKey(const HVData& data, const HVString& key);
    void SetDateForKey(const HVDate& date, const HVString& key);
    // Storing the receiver's own dictionary into itself is reported, and
    // done all the same.
    void SetDictionaryForKey(const HVDictionary& dictionary, const HVString& key);
    void SetNumberForKey(const HVNumber& number, const HVString& key);
    void SetStringForKey(const HVString& string, const HVString& key);
    void SetValueForKey(const HVValue& value, const HVString& key);
    // Geometry is stored as its text.
    void SetPointForKey(const HVPoint& point, const HVString& key);
    void SetSizeForKey(const HVSize& size, const HVString& key);
    void SetRectForKey(const HVRect& rect, const HVString& key);
    // A null pointer removes the key.
    void SetRetainedObjectForKey(const HVRetainedObject* object, const HVString& key);

    void SetNonEmptyArrayForKey(const HVArray& array, const HVString& key);
    void SetNonEmptyDictionaryForKey(const HVDictionary& dictionary, const HVString& key);
    void SetNonEmptyStringForKey(const HVString& string, const HVString& key);
    void SetNonEmptyDataForKey(const HVData& data, const HVString& key);
    void SetNonEmptyDateForKey(const HVDate& date, const HVString& key);
    void SetNonEmptyValueForKey(const HVValue& value, const HVString& key);
    // False removes the key.
    void SetNonEmptyBoolForKey(const HVBool& value, const HVString& key);
    // A value equal to 0.0 (0, 0.0 and -0.0) removes the key; NaN is stored.
    void SetNonEmptyNumberForKey(const HVNumber& number, const HVString& key);
    void SetNonEmptyPointForKey(const HVPoint& point, const HVString& key);
    void SetNonEmptySizeForKey(const HVSize& size, const HVString& key);
    void SetNonEmptyRectForKey(const HVRect& rect, const HVString& key);

    void RemoveObjectForKey(const HVString& key);
    void RemoveObjectsForKeys(const HVArray& keys);
    void RemoveAllObjects();
    // Stores every entry of the source, replacing the receiver's values for
    // the same keys; nothing happens when the source equals the receiver.
    void AddDictionary(const HVDictionary& dictionary);
    // The receiver becomes an independent mutable copy of the source.
    void SetDictionary(const HVDictionary& dictionary);

private:
    // A null reference removes the key.
    void SetInternalObjectForKey(const void* const& ref, const HVString& key);
    void EnsureUnderlyingDictionaryExistance();
};

#endif  // HALVANE_COLLECTIONS_HVMUTABLEDICTIONARY_H
