#include <halvane/collections/HVArray.h>

#include <halvane/core/detail/ClassRegistry.h>

#include <CoreFoundation/CoreFoundation.h>

HV_REGISTER_CLASS(HVArray);

namespace {

CFArrayRef asArray(const void* ref) { return static_cast<CFArrayRef>(ref); }

}  // namespace

HVArray::HVArray() : HVObject(SharedEmptyObject(), HVArrayClassType) {}

HVArray::HVArray(const HVArray& other) : HVArray() {
    // An immutable wrapper never shares a mutable array: it keeps a copy.
    if (other.IsMutable()) {
        AssignUnderlyingArrayAndTakeOwnership(CFArrayCreateCopy(kCFAllocatorDefault, asArray(other.m_Ref)));
    } else {
        AssignUnderlyingArray(other.m_Ref);
    }
}

HVArray::HVArray(const void* const& ref) : HVObject(ref, HVArrayClassType) {}

HVArray::HVArray(const __CFArray* ref) : HVObject(static_cast<const void*>(ref), HVArrayClassType) {}

HVArray::HVArray(const void* const& ref, HVClassType type) : HVObject(ref, type) {}

HVClassType HVArray::ClassType() { return HVArrayClassType; }

unsigned long long HVArray::Count() const {
    if (m_Ref == nullptr || m_Ref == kCFNull || m_Ref == SharedEmptyObject()) return 0;
    return static_cast<unsigned long long>(static_cast<long long>(int32_t(CFArrayGetCount(asArray(m_Ref)))));
}

bool HVArray::IsEmpty() const { return Count() == 0; }

void HVArray::AssignUnderlyingArray(const void* ref) {
    if (ref == m_Ref) return;
    Nullify();
    m_Ref = ref;
    m_ClassType = m_ActualClassType;
    Retain();
}

void HVArray::AssignUnderlyingArrayAndTakeOwnership(const void* ref) {
    if (ref == m_Ref) {
        if (ref != nullptr) CFRelease(ref);
        return;
    }
    Nullify();
    m_Ref = ref;
    m_ClassType = m_ActualClassType;
}

const void* const& HVArray::SharedEmptyObject() {
    static const void* const empty = CFArrayCreate(kCFAllocatorDefault, nullptr, 0, &kCFTypeArrayCallBacks);
    return empty;
}
