#include <halvane/collections/HVDictionary.h>

#include <halvane/core/detail/ClassRegistry.h>

#include <CoreFoundation/CoreFoundation.h>

HV_REGISTER_CLASS(HVDictionary);

namespace {

CFDictionaryRef asDictionary(const void* ref) { return static_cast<CFDictionaryRef>(ref); }

}  // namespace

HVDictionary::HVDictionary() : HVObject(SharedEmptyObject(), HVDictionaryClassType) {}

HVDictionary::HVDictionary(const HVDictionary& other) : HVDictionary() {
    // An immutable wrapper never shares a mutable dictionary: it keeps a copy.
    if (other.IsMutable()) {
        AssignUnderlyingDictionaryAndTakeOwnership(CFDictionaryCreateCopy(kCFAllocatorDefault, asDictionary(other.m_Ref)));
    } else {
        AssignUnderlyingDictionary(other.m_Ref);
    }
}

HVDictionary::HVDictionary(const void* const& ref) : HVObject(ref, HVDictionaryClassType) {}

HVDictionary::HVDictionary(const __CFDictionary* ref) : HVObject(static_cast<const void*>(ref), HVDictionaryClassType) {}

HVDictionary::HVDictionary(const void* const& ref, HVClassType type) : HVObject(ref, type) {}

HVClassType HVDictionary::ClassType() { return HVDictionaryClassType; }

unsigned long long HVDictionary::Count() const {
    if (m_Ref == nullptr || m_Ref == kCFNull || m_Ref == SharedEmptyObject()) return 0;
    return static_cast<unsigned long long>(static_cast<long long>(int32_t(CFDictionaryGetCount(asDictionary(m_Ref)))));
}

bool HVDictionary::IsEmpty() const { return Count() == 0; }

void HVDictionary::AssignUnderlyingDictionary(const void* ref) {
    if (ref == m_Ref) return;
    Nullify();
    m_Ref = ref;
    m_ClassType = m_ActualClassType;
    Retain();
}

void HVDictionary::AssignUnderlyingDictionaryAndTakeOwnership(const void* ref) {
    if (ref == m_Ref) {
        if (ref != nullptr) CFRelease(ref);
        return;
    }
    Nullify();
    m_Ref = ref;
    m_ClassType = m_ActualClassType;
}

const void* const& HVDictionary::SharedEmptyObject() {
    static const void* const empty = CFDictionaryCreate(kCFAllocatorDefault, nullptr, nullptr, 0,
                                                        &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
    return empty;
}
