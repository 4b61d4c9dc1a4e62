#include <halvane/collections/HVDictionary.h>

#include <halvane/collections/HVArray.h>
#include <halvane/collections/HVEnumerator.h>
#include <halvane/collections/HVMutableArray.h>
#include <halvane/collections/HVMutableDictionary.h>
#include <halvane/collections/detail/TypedAccess.h>
#include <halvane/core/detail/ClassRegistry.h>
#include <halvane/errors/HVAssert.h>

#include <CoreFoundation/CoreFoundation.h>

#include <vector>

HV_REGISTER_CLASS(HVDictionary);

namespace {

CFDictionaryRef asDictionary(const void* ref) { return static_cast<CFDictionaryRef>(ref); }

// An immutable copy of a mutable dictionary, as HVMutableDictionary::Copy
// makes it.
const void* createImmutableCopy(const void* ref) {
    if (ref == nullptr || ref == kCFNull || CFDictionaryGetCount(asDictionary(ref)) == 0) {
        return CFRetain(HVDictionary::SharedEmptyObject());
    }
    return CFDictionaryCreateCopy(kCFAllocatorDefault, asDictionary(ref));
}

// An enumerator over a snapshot of the keys or of the values.
HVEnumerator enumeratorOver(const HVDictionary& dictionary, bool keys) {
    CFIndex count = CFIndex(dictionary.Count());
    std::vector<const void*> entries(size_t(count > 0 ? count : 0));
    if (count > 0) {
        CFDictionaryGetKeysAndValues(asDictionary(dictionary.Ref()), keys ? entries.data() : nullptr,
                                     keys ? nullptr : entries.data());
    }
    CFArrayRef snapshot = CFArrayCreate(kCFAllocatorDefault, entries.data(), count, &kCFTypeArrayCallBacks);
    HVEnumerator enumerator(static_cast<const void*>(snapshot));
    CFRelease(snapshot);
    return enumerator;
}

// Every string an enumerator hands out, up to its end.
HVArray allStrings(HVEnumerator enumerator) {
    HVMutableArray strings;
    for (HVString item = enumerator.NextStringObject(); !item.IsNull(); item = enumerator.NextStringObject()) {
        strings.AddString(item);
    }
    return strings.Copy();
}

}  // namespace

HVDictionary::HVDictionary() : HVObject(SharedEmptyObject(), HVDictionaryClassType) {}

HVDictionary::HVDictionary(const HVDictionary& other) : HVObject(other, HVDictionaryClassType) {
    // An immutable wrapper never shares a mutable dictionary: it keeps a
    // copy.
    if (other.IsMutable() && !other.IsNull()) AssignUnderlyingDictionaryAndTakeOwnership(createImmutableCopy(other.m_Ref));
}

HVDictionary::HVDictionary(const HVObject& object) : HVDictionary() {
    HVClassType type = object.ObjectsActualClassType();
    if (type == HVDictionaryClassType) {
        AssignUnderlyingDictionary(object.Ref());
    } else if (type == HVMutableDictionaryClassType) {
        AssignUnderlyingDictionaryAndTakeOwnership(createImmutableCopy(object.Ref()));
    } else if (object.IsNull()) {
        Nullify();
    } else if (type == HVObjectClassType) {
        // The object-model assignment: a dictionary is taken, anything else
        // refused.
        HVObject::operator=(object);
    } else {
        HVAssertionFailed("0", "HVDictionary::HVDictionary(const HVObject& Object) parameter type unhandled.",
                          "HVDictionary::HVDictionary", "HVDictionary", 215);
    }
}

HVDictionary::HVDictionary(const HVData& data) : HVDictionary() { operator=(data); }

HVDictionary::HVDictionary(const HVString& text) : HVDictionary() { operator=(text); }

HVDictionary::HVDictionary(const void* const& ref) : HVObject(ref, HVDictionaryClassType) {}

HVDictionary::HVDictionary(const __CFDictionary* ref) : HVObject(static_cast<const void*>(ref), HVDictionaryClassType) {}

HVDictionary::HVDictionary(const void* const& ref, HVClassType type) : HVObject(ref, type) {}

HVClassType HVDictionary::ClassType() { return HVDictionaryClassType; }

const void* const& HVDictionary::SharedEmptyObject() {
    static const void* const empty = CFDictionaryCreate(kCFAllocatorDefault, nullptr, nullptr, 0,
                                                        &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
    return empty;
}

HVDictionary HVDictionary::DictionaryFromObject(const HVObject& object) { return HVDictionary(object); }

HVDictionary HVDictionary::DictionaryFromId(const void* const& ref) { return HVDictionary(ref); }

HVDictionary HVDictionary::DictionaryWithData(const HVData& data) { return HVDictionary(data); }

HVDictionary HVDictionary::DictionaryWithObjectForKey(const HVObject& value, const HVString& key) {
    const void* keys[] = {key.Ref()};
    const void* values[] = {value.Ref()};
    HVDictionary dictionary;
    dictionary.AssignUnderlyingDictionaryAndTakeOwnership(CFDictionaryCreate(
        kCFAllocatorDefault, keys, values, 1, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    return dictionary;
}

HVDictionary HVDictionary::DictionaryWithObjectsForKeys(const HVArray& objects, const HVArray& keys) {
    CFMutableDictionaryRef entries = CFDictionaryCreateMutable(kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks,
                                                               &kCFTypeDictionaryValueCallBacks);
    try {
        unsigned long long count = keys.Count();
        for (unsigned long long i = 0; i < count; ++i) {
            // The first value of a repeated key stays.
            HVString key = keys.StringAtIndex(i);
            HVObject value = objects.ObjectAtIndex(i);
            if (key.Ref() != nullptr) CFDictionaryAddValue(entries, key.Ref(), value.Ref());
        }
    } catch (...) {
        CFRelease(entries);
        throw;
    }
    HVDictionary dictionary;
    dictionary.AssignUnderlyingDictionaryAndTakeOwnership(createImmutableCopy(entries));
    CFRelease(entries);
    return dictionary;
}

HVDictionary& HVDictionary::operator=(const HVDictionary& other) {
    if (this == &other) return *this;
    if (!IsMutable()) {
        if (other.IsMutable() && !other.IsNull()) {
            AssignUnderlyingDictionaryAndTakeOwnership(createImmutableCopy(other.m_Ref));
        } else {
            AssignUnderlyingDictionary(other.m_Ref);
        }
    } else if (other.IsMutable()) {
        Assign(other.m_Ref);
    } else if (other.m_Ref != m_Ref) {
        // A mutable receiver keeps a mutable dictionary of its own.
        CFMutableDictionaryRef copy =
            other.IsNull() ? CFDictionaryCreateMutable(kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks,
                                                       &kCFTypeDictionaryValueCallBacks)
                           : CFDictionaryCreateMutableCopy(kCFAllocatorDefault, 0, asDictionary(other.m_Ref));
        AssignAndTakeOwnership(copy);
    }
    return *this;
}

HVDictionary& HVDictionary::operator=(const HVObject& object) {
    HVClassType type = object.ObjectsActualClassType();
    bool handled = type == HVDictionaryClassType || type == HVMutableDictionaryClassType || object.IsNull() ||
                   type == HVObjectClassType;
    HVDictionary converted(object);
    if (handled) operator=(converted);
    return *this;
}

HVDictionary& HVDictionary::operator=(const __CFDictionary* ref) {
    AssignUnderlyingDictionary(ref);
    return *this;
}

HVDictionary::operator const __CFDictionary*() const { return asDictionary(m_Ref); }

unsigned long long HVDictionary::Count() const {
    // The shared empty object is a platform collection with no elements,
    // so only holding nothing needs a test of its own.
    if (m_Ref == nullptr || m_Ref == kCFNull) return 0;
    return static_cast<unsigned long long>(static_cast<long long>(int32_t(CFDictionaryGetCount(asDictionary(m_Ref)))));
}

bool HVDictionary::IsEmpty() const { return Count() == 0; }

void HVDictionary::Empty() {
    const void* shared = m_ActualClassType == HVMutableDictionaryClassType ? HVMutableDictionary::SharedEmptyObject()
                                                                           : SharedEmptyObject();
    m_ClassType = m_ActualClassType;
    Assign(shared);
}

const void* HVDictionary::HVIdForKeyIfPresent(const HVString& key, HVError& error) const {
    const void* value = HVIdForKeyIfPresent(key);
    if (value == nullptr) error = halvane::detail::KeyNotFound();
    return value;
}

HVClassType HVDictionary::ClassTypeOfObjectForKey(HVString key) const {
    return ClassTypeNeededForObject(HVIdForKeyIfPresent(key));
}

bool HVDictionary::IsMatchingClassTypeOfObjectForKey(HVClassType type, HVString key) const {
    return ClassTypeOfObjectForKey(key) == type;
}

HVObject HVDictionary::ObjectForKey(const HVString& key) const { return Create(HVIdForKeyIfPresent(key)); }

HVObject HVDictionary::ObjectForExistingKey(const HVString& key) const { return Create(HVIdForKeyIfPresent(key)); }

std::shared_ptr<HVObject> HVDictionary::CreateObjectForKey(const HVString& key) const {
    const void* value = HVIdForKeyIfPresent(key);
    return CreateObjectOfClassType(value, ClassTypeNeededForObject(value));
}

HVEnumerator HVDictionary::ObjectEnumerator() const { return enumeratorOver(*this, false); }

HVEnumerator HVDictionary::KeyEnumerator() const { return enumeratorOver(*this, true); }

HVArray HVDictionary::AllKeys() const { return allStrings(KeyEnumerator()); }

HVArray HVDictionary::AllValues() const { return allStrings(ObjectEnumerator()); }

HVArray HVDictionary::AllKeysForObject(const HVObject& object) const {
    HVMutableArray keys;
    if (IsEmpty() || object.Ref() == nullptr) return keys.Copy();
    if (CFDictionaryGetCountOfValue(asDictionary(m_Ref), object.Ref()) == 0) return keys.Copy();
    HVEnumerator enumerator = KeyEnumerator();
    for (HVString key = enumerator.NextStringObject(); !key.IsNull(); key = enumerator.NextStringObject()) {
        const void* value = HVIdForKeyIfPresent(key);
        if (value != nullptr && CFEqual(value, object.Ref())) keys.AddString(key);
    }
    return keys.Copy();
}

HVDictionary HVDictionary::ReplaceNullWithEmptyString(const HVDictionary& dictionary) {
    HVMutableDictionary built;
    HVEnumerator enumerator = dictionary.KeyEnumerator();
    for (HVString key = enumerator.NextStringObject(); !key.IsNull(); key = enumerator.NextStringObject()) {
        const void* value = dictionary.HVIdForKeyIfPresent(key);
        switch (ClassTypeNeededForObject(value)) {
            case HVNullClassType: built.SetStringForKey(HVString(), key); break;
            case HVDictionaryClassType:
            case HVMutableDictionaryClassType:
                built.SetDictionaryForKey(ReplaceNullWithEmptyString(HVDictionary(value)), key);
                break;
            case HVArrayClassType:
            case HVMutableArrayClassType:
                built.SetArrayForKey(HVArray::ReplaceNullWithEmptyString(HVArray(value)), key);
                break;
            default: built.SetObjectForKey(HVObject::Create(value), key); break;
        }
    }
    return built.Copy();
}

bool HVDictionary::IsNativelyAllowedInPropertyList() const {
    HVEnumerator enumerator = KeyEnumerator();
    for (HVString key = enumerator.NextStringObject(); !key.IsNull(); key = enumerator.NextStringObject()) {
        std::shared_ptr<HVObject> value = CreateObjectForKey(key);
        if (value == nullptr || !value->IsNativelyAllowedInPropertyList()) return false;
    }
    return true;
}

void HVDictionary::AssignUnderlyingDictionary(const void* ref) { ReplaceReference(ref, m_ActualClassType); }

void HVDictionary::AssignUnderlyingDictionaryAndTakeOwnership(const void* ref) {
    ReplaceReferenceTakingOwnership(ref, m_ActualClassType);
}
