// The text forms of arrays and dictionaries: XML property-list text, in
// which an element that a property list cannot hold travels as a string of
// its tagged text ("HVNull:<null>") and is rebuilt from it when read.
#include <halvane/collections/HVArray.h>
#include <halvane/collections/HVDictionary.h>
#include <halvane/collections/HVEnumerator.h>
#include <halvane/collections/HVMutableArray.h>
#include <halvane/collections/HVMutableDictionary.h>
#include <halvane/errors/HVError.h>
#include <halvane/serialization/HVPropertyListSerialization.h>

#include <CoreFoundation/CoreFoundation.h>

#include <memory>

// Kept as a class so that it may use the protected helpers of HVObject.
class HVCollectionText : public HVObject {
public:
    // The text stored for an element that a property list cannot hold: its
    // class name, ":" and its own text without any property-list frame.
    static HVString TaggedTextOf(const void* element) {
        std::shared_ptr<HVObject> object = CreateObjectOfClassType(element, ClassTypeNeededForObject(element));
        HVObject generic = Create(element);
        HVObject& source = object != nullptr ? *object : generic;
        return HVString::StringWithFormat("%@:%@", ClassNameOfClassType(source.ObjectsClassType()).Ref(),
                                          RemovePropertyListFileText(source.Serialize()).Ref());
    }

    static bool IsNativelyAllowed(const void* element) {
        std::shared_ptr<HVObject> object = CreateObjectOfClassType(element, ClassTypeNeededForObject(element));
        return object != nullptr && object->IsNativelyAllowedInPropertyList();
    }

    // The object a string element names when it begins with "HV"; nothing
    // (null) for other elements, and for names that make no object, so that
    // a plain string such as "HVAC" stays as it is.
    static const void* CreateObjectNamedBy(const void* element, HVObject& made) {
        if (element == nullptr || CFGetTypeID(element) != CFStringGetTypeID()) return nullptr;
        if (!CFStringHasPrefix(static_cast<CFStringRef>(element), CFSTR("HV"))) return nullptr;
        made = CreateObjectFromString(HVString(element));
        return made.Ref();
    }
};

namespace {

// The collection writers signal with code 1 that the property list holds
// something it cannot write.
bool holdsForeignObjects(const HVError& error) { return error.IsError() && error.Code() == 1; }

}  // namespace

HVString HVArray::Serialize() {
    HVError error;
    HVData data = HVPropertyListSerialization::DataWithArrayPropertyListUsingFormat(*this, HVPropertyListXMLFormat_v1_0,
                                                                                    error);
    if (holdsForeignObjects(error)) {
        HVMutableArray substitute;
        unsigned long long count = Count();
        for (unsigned long long i = 0; i < count; ++i) {
            const void* element = InternalObjectAtIndex(i);
            if (HVCollectionText::IsNativelyAllowed(element)) {
                substitute.AddObject(Create(element));
            } else {
                substitute.AddString(HVCollectionText::TaggedTextOf(element));
            }
        }
        data = HVPropertyListSerialization::DataWithPropertyListUsingFormat(substitute, HVPropertyListXMLFormat_v1_0);
    }
    return HVString::StringWithDataUsingEncoding(data, HVUTF8StringEncoding);
}

void HVArray::Deserialize(const HVString& text) {
    Empty();
    if (text.IsEmpty()) return;
    HVObject read = HVPropertyListSerialization::PropertyListWithData(text.DataContainingUTF8String());
    // A boxed value's container is a platform array too, which the array
    // conversion refuses by its class type: it is taken as the array it
    // is, so that such an array's text reads back and HVValue can read its
    // own text here.
    HVArray parsed =
        read.ObjectsClassType() == HVValueClassType ? HVArray(read.Ref()) : HVArray::ArrayFromObject(read);
    HVMutableArray elements;
    elements.AddObjectsFromArray(parsed);
    unsigned long long count = elements.Count();
    for (unsigned long long i = 0; i < count; ++i) {
        HVObject made;
        const void* object = HVCollectionText::CreateObjectNamedBy(elements.InternalObjectAtIndex(i), made);
        if (object != nullptr) elements.SetObjectAtIndex(made, i);
    }
    HVArray::operator=(elements);
}

HVString HVDictionary::Serialize() {
    HVError error;
    HVData data = HVPropertyListSerialization::DataWithDictionaryPropertyListUsingFormat(
        *this, HVPropertyListXMLFormat_v1_0, error);
    if (holdsForeignObjects(error)) {
        HVMutableDictionary substitute;
        HVEnumerator keys = KeyEnumerator();
        for (HVString key = keys.NextStringObject(); !key.IsNull(); key = keys.NextStringObject()) {
            const void* value = HVIdForKeyIfPresent(key);
            if (HVCollectionText::IsNativelyAllowed(value)) {
                substitute.SetObjectForKey(Create(value), key);
            } else {
                substitute.SetStringForKey(HVCollectionText::TaggedTextOf(value), key);
            }
        }
        data = HVPropertyListSerialization::DataWithPropertyListUsingFormat(substitute, HVPropertyListXMLFormat_v1_0);
    }
    return HVString::StringWithDataUsingEncoding(data, HVUTF8StringEncoding);
}

void HVDictionary::Deserialize(const HVString& text) {
    Empty();
    if (text.IsEmpty()) return;
    HVDictionary::operator=(HVPropertyListSerialization::DictionaryPropertyListWithData(text.DataContainingUTF8String()));
    HVMutableDictionary entries(*this);
    HVEnumerator keys = KeyEnumerator();
    for (HVString key = keys.NextStringObject(); !key.IsNull(); key = keys.NextStringObject()) {
        HVObject made;
        const void* object = HVCollectionText::CreateObjectNamedBy(HVIdForKeyIfPresent(key), made);
        if (object != nullptr) entries.SetObjectForKey(made, key);
    }
    HVDictionary::operator=(entries);
}
