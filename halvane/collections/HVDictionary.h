// HVDictionary: the immutable keyed collection, over a CoreFoundation
// dictionary with string keys; keys and values are retained.
//
// Two families of typed lookups differ in how a missing key is treated:
// XForExistingKey treats the key as required and hands back an object that
// holds no reference, XForKey hands back the empty object of the type. A
// wrongly typed value is an error (code 20004) in both; the forms without an
// error argument of XForExistingKey log it, those of XForKey never log.
#ifndef HALVANE_COLLECTIONS_HVDICTIONARY_H
#define HALVANE_COLLECTIONS_HVDICTIONARY_H

#include <halvane/collections/HVData.h>
#include <halvane/core/HVObject.h>
#include <halvane/text/HVString.h>
#include <halvane/values/HVBool.h>
#include <halvane/values/HVNumber.h>

#include <CoreFoundation/CFDictionary.h>

#include <memory>

struct __CFDictionary;

class HVArray;
class HVDate;
class HVEnumerator;
class HVError;
class HVMutableArray;
class HVMutableDictionary;
class HVPoint;
class HVRect;
class HVRetainedObject;
class HVSize;
class HVValue;

class HV_EXPORT HVDictionary : public HVObject {
public:
    HVDictionary();
    // A mutable source is copied: an HVDictionary never shares a mutable
    // dictionary it was copied from.
    HVDictionary(const HVDictionary& other);
    HVDictionary(const HVObject& object);
    // XML property-list data of a dictionary, or a dictionary's inner text
    // without its frame.
    HVDictionary(const HVData& data);
    HVDictionary(const HVString& text);
    HVDictionary(const void* const& ref);
    HVDictionary(const __CFDictionary* ref);

    static HVClassType ClassType();
    static const void* const& SharedEmptyObject();

    static HVDictionary DictionaryFromObject(const HVObject& object);
    static HVDictionary DictionaryFromId(const void* const& ref);
    static HVDictionary DictionaryWithData(const HVData& data);
    // The empty dictionary when the path is empty or the file cannot be
    // read.
    static HVDictionary DictionaryWithContentsOfFile(const HVString& path);
    static HVDictionary DictionaryWithObjectForKey(const HVObject& value, const HVString& key);
    // Keys are read as strings; for a repeated key the first value wins.
    static HVDictionary DictionaryWithObjectsForKeys(const HVArray& objects, const HVArray& keys);

    HVDictionary& operator=(const HVDictionary& other);
    // Unreadable data is logged and leaves the receiver as it was.
    HVDictionary& operator=(const HVData& data);
    HVDictionary& operator=(const HVString& text);
    // As the constructor from HVObject.
    HVDictionary& operator=(const HVObject& object);
    HVDictionary& operator=(const __CFDictionary* ref);
    operator const __CFDictionary*() const;

    unsigned long long Count() const;
    HVClassType ClassTypeOfObjectForKey(HVString key) const;
    bool IsMatchingClassTypeOfObjectForKey(HVClassType type, HVString key) const;
    // The value as a generic object; one holding no reference for a
    // missing key. Neither reports anything.
    HVObject ObjectForKey(const HVString& key) const;
    HVObject ObjectForExistingKey(const HVString& key) const;
    std::shared_ptr<HVObject> CreateObjectForKey(const HVString& key) const;

    // Snapshots: they do not follow later changes.
    HVEnumerator ObjectEnumerator() const;
    HVEnumerator KeyEnumerator() const;
    HVArray AllKeys() const;
    // Values that are not strings come back as empty strings (and are
    // reported): kept so, callers rely on it.
    HVArray AllValues() const;
    HVArray AllKeysForObject(const HVObject& object) const;

    // Writes the XML property-list text; false when the path is empty, the
    // dictionary cannot be written as a property list or the file cannot
    // be written. The atomic form is the same operation.
    bool WriteToFile(const HVString& path) const;
    bool WriteToFileAtomically(const HVString& path) const;

    // A copy in which every null value is an empty string, nested
    // dictionaries and arrays included.
    static HVDictionary ReplaceNullWithEmptyString(const HVDictionary& dictionary);

    HVString StringForExistingKey(const HVString& key, HVError& error) const;
    HVString StringForExistingKey(const HVString& key) const;
    HVString StringForKey(const HVString& key, HVError& error) const;
    HVString StringForKey(const HVString& key) const;
    HVNumber NumberForExistingKey(const HVString& key, HVError& error) const;
    HVNumber NumberForExistingKey(const HVString& key) const;
    HVNumber NumberForKey(const HVString& key, HVError& error) const;
    HVNumber NumberForKey(const HVString& key) const;
    // Booleans, numbers and strings ("true" or "YES" in any letter case).
    HVBool BoolForExistingKey(const HVString& key, HVError& error) const;
    HVBool BoolForExistingKey(const HVString& key) const;
    HVBool BoolForKey(const HVString& key, HVError& error) const;
    HVBool BoolForKey(const HVString& key) const;
    HVData DataForExistingKey(const HVString& key, HVError& error) const;
    HVData DataForExistingKey(const HVString& key) const;
    HVData DataForKey(const HVString& key, HVError& error) const;
    HVData DataForKey(const HVString& key) const;
    HVMutableData MutableDataForExistingKey(const HVString& key, HVError& error) const;
    HVMutableData MutableDataForExistingKey(const HVString& key) const;
    HVMutableData MutableDataForKey(const HVString& key, HVError& error) const;
    HVMutableData MutableDataForKey(const HVString& key) const;
    HVDate DateForExistingKey(const HVString& key, HVError& error) const;
    HVDate DateForExistingKey(const HVString& key) const;
    HVDate DateForKey(const HVString& key, HVError& error) const;
    HVDate DateForKey(const HVString& key) const;
    // Also parses data and strings holding XML property-list text.
    HVDictionary DictionaryForExistingKey(const HVString& key, HVError& error) const;
    HVDictionary DictionaryForExistingKey(const HVString& key) const;
    HVDictionary DictionaryForKey(const HVString& key, HVError& error) const;
    HVDictionary DictionaryForKey(const HVString& key) const;
    HVMutableDictionary MutableDictionaryForExistingKey(const HVString& key, HVError& error) const;
    HVMutableDictionary MutableDictionaryForExistingKey(const HVString& key) const;
    HVMutableDictionary MutableDictionaryForKey(const HVString& key, HVError& error) const;
    HVMutableDictionary MutableDictionaryForKey(const HVString& key) const;
    HVArray ArrayForExistingKey(const HVString& key, HVError& error) const;
    HVArray ArrayForExistingKey(const HVString& key) const;
    HVArray ArrayForKey(const HVString& key, HVError& error) const;
    HVArray ArrayForKey(const HVString& key) const;
    HVMutableArray MutableArrayForExistingKey(const HVString& key, HVError& error) const;
    HVMutableArray MutableArrayForExistingKey(const HVString& key) const;
    HVMutableArray MutableArrayForKey(const HVString& key, HVError& error) const;
    HVMutableArray MutableArrayForKey(const HVString& key) const;
    HVValue ValueForExistingKey(const HVString& key, HVError& error) const;
    HVValue ValueForExistingKey(const HVString& key) const;
    HVValue ValueForKey(const HVString& key, HVError& error) const;
    HVValue ValueForKey(const HVString& key) const;
    // Read from a string value; a missing or empty string is reported as a
    // type mismatch (code 20004) and gives the zero value.
    HVPoint PointForExistingKey(const HVString& key, HVError& error) const;
    HVPoint PointForExistingKey(const HVString& key) const;
    HVPoint PointForKey(const HVString& key, HVError& error) const;
    HVPoint PointForKey(const HVString& key) const;
    HVSize SizeForExistingKey(const HVString& key, HVError& error) const;
    HVSize SizeForExistingKey(const HVString& key) const;
    HVSize SizeForKey(const HVString& key, HVError& error) const;
    HVSize SizeForKey(const HVString& key) const;
    HVRect RectForExistingKey(const HVString& key, HVError& error) const;
    HVRect RectForExistingKey(const HVString& key) const;
    HVRect RectForKey(const HVString& key, HVError& error) const;
    HVRect RectForKey(const HVString& key) const;
    // The object the value carries; null when it carries none.
    HVRetainedObject* RetainedObjectForKey(const HVString& key, HVError& error) const;
    HVRetainedObject* RetainedObjectForKey(const HVString& key) const;

    bool IsEmpty() const override;
    // Back to the shared empty dictionary of the wrapper's own class.
    void Empty() override;
    // The XML property-list text; values a property list cannot hold are
    // written as strings of their tagged text.
    HVString Serialize() override;
    void Deserialize(const HVString& text) override;
    bool IsNativelyAllowedInPropertyList() const override;

protected:
    HVDictionary(const void* const& ref, HVClassType type);

    // The raw value, not retained; null for a missing key (the form with an
    // error reports it, code 20006).
    const void* HVIdForKeyIfPresent(const HVString& key) const;
    const void* HVIdForKeyIfPresent(const HVString& key, HVError& error) const;
    void AssignUnderlyingDictionary(const void* ref);
    void AssignUnderlyingDictionaryAndTakeOwnership(const void* ref);

private:
    void AssignPropertyListData(const HVData& data, bool& parsingFramedText);
};

// Every lookup passes through here: inline, it is the platform call alone.
inline const void* HVDictionary::HVIdForKeyIfPresent(const HVString& key) const {
    const void* value = nullptr;
    if (m_Ref == nullptr || m_Ref == kCFNull || key.Ref() == nullptr) return nullptr;
    if (!CFDictionaryGetValueIfPresent(static_cast<CFDictionaryRef>(m_Ref), key.Ref(), &value)) return nullptr;
    return value;
}

// The rest of the collection family and the values it hands out, so that
// one include gives every type this interface returns.
#include <halvane/collections/HVArray.h>
#include <halvane/collections/HVMutableDictionary.h>
#include <halvane/core/HVRetainedObject.h>
#include <halvane/time/HVDate.h>
#include <halvane/values/HVPoint.h>
#include <halvane/values/HVRect.h>
#include <halvane/values/HVSize.h>
#include <halvane/values/HVValue.h>

#endif  // HALVANE_COLLECTIONS_HVDICTIONARY_H
