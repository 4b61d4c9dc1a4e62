#include <halvane/core/HVRetainedObject.h>

#include <halvane/core/detail/RetainedObjectClass.h>
#include <halvane/text/HVString.h>

#include <CoreFoundation/CFRuntime.h>
#include <CoreFoundation/CoreFoundation.h>

namespace {

// The container: the runtime header followed by the back pointer.
struct Container {
    CFRuntimeBase base;
    HVRetainedObject* owner;
};

HVRetainedObject* ownerOf(CFTypeRef container) {
    return static_cast<const Container*>(container)->owner;
}

void finalizeContainer(CFTypeRef container) {
    HVRetainedObject* owner = ownerOf(container);
    // The object's destructor lets go of the container without releasing it.
    if (owner != nullptr) delete owner;
}

Boolean containersAreEqual(CFTypeRef first, CFTypeRef second) {
    HVRetainedObject* firstOwner = ownerOf(first);
    HVRetainedObject* secondOwner = ownerOf(second);
    if (firstOwner == secondOwner) return firstOwner != nullptr || first == second;
    if (firstOwner == nullptr || secondOwner == nullptr) return false;
    // The default IsEqual is identity, which the test above has answered
    // already for objects that keep it.
    return firstOwner->IsEqual(secondOwner);
}

CFHashCode hashOfContainer(CFTypeRef container) {
    HVRetainedObject* owner = ownerOf(container);
    if (owner == nullptr) return CFHashCode(reinterpret_cast<uintptr_t>(container));
    return CFHashCode(owner->Hash());
}

CFStringRef copyOwnerDescription(CFTypeRef container) {
    HVRetainedObject* owner = ownerOf(container);
    if (owner == nullptr) return nullptr;
    HVString description = owner->Description();
    return CFStringCreateCopy(CFGetAllocator(container), static_cast<CFStringRef>(description.Ref()));
}

CFStringRef copyFormattingDescription(CFTypeRef container, CFDictionaryRef) {
    return copyOwnerDescription(container);
}

constinit const CFRuntimeClass retainedObjectClass = {
    0,                          // version
    "HVRetainedObject",         // class name
    nullptr,                    // init
    nullptr,                    // copy
    finalizeContainer,          // finalize
    containersAreEqual,         // equal
    hashOfContainer,            // hash
    copyFormattingDescription,  // copy formatting description
    copyOwnerDescription,       // copy debug description
    nullptr,                    // reclaim
    nullptr,                    // refcount
    0,                          // required alignment
};

// The class is registered while the library loads, before any other use,
// so that it is the first class registered by a client of the platform.
[[maybe_unused]] const CFTypeID registeredAtLoad = halvane::detail::RetainedObjectTypeID();

const void* newContainer(const HVRetainedObject* owner) {
    CFTypeRef container = _CFRuntimeCreateInstance(kCFAllocatorDefault, halvane::detail::RetainedObjectTypeID(),
                                                   sizeof(HVRetainedObject*), nullptr);
    if (container != nullptr) {
        static_cast<Container*>(const_cast<void*>(container))->owner = const_cast<HVRetainedObject*>(owner);
    }
    return container;
}

bool isContainer(const void* ref) {
    return ref != nullptr && CFGetTypeID(ref) == halvane::detail::RetainedObjectTypeID();
}

}  // namespace

namespace halvane::detail {

CFTypeID RetainedObjectTypeID() {
    static const CFTypeID typeID = _CFRuntimeRegisterClass(&retainedObjectClass);
    return typeID;
}

}  // namespace halvane::detail

HVRetainedObject::HVRetainedObject() : HVObject(nullptr, HVRetainedObjectClassType) {
    m_Ref = newContainer(this);
}

HVRetainedObject::HVRetainedObject(const HVRetainedObject&) : HVRetainedObject() {}

HVRetainedObject& HVRetainedObject::operator=(const HVRetainedObject&) {
    return *this;
}

HVRetainedObject::~HVRetainedObject() {
    m_Ref = nullptr;
}

HVClassType HVRetainedObject::ClassType() {
    return HVRetainedObjectClassType;
}

const void* const& HVRetainedObject::SharedEmptyObject() {
    return HVObject::SharedEmptyObject();
}

HVRetainedObject* HVRetainedObject::RetainedObject(const void* container) {
    if (!isContainer(container)) return nullptr;
    return ownerOf(container);
}

HVRetainedObject* HVRetainedObject::Retain(HVRetainedObject* object) {
    if (object != nullptr) object->Retain();
    return object;
}

HVRetainedObject* HVRetainedObject::Release(HVRetainedObject* object) {
    if (object != nullptr) object->Release();
    return nullptr;
}

const void* HVRetainedObject::CreateContainer(const HVRetainedObject* object) {
    if (object == nullptr) return nullptr;
    auto* target = const_cast<HVRetainedObject*>(object);
    const void* previous = target->m_Ref;
    target->m_Ref = newContainer(object);
    if (isContainer(previous) && ownerOf(previous) == object) {
        // Detached first, so that its last release does not delete the object.
        static_cast<Container*>(const_cast<void*>(previous))->owner = nullptr;
        CFRelease(previous);
    }
    return target->m_Ref;
}

void HVRetainedObject::Empty() {}

void HVRetainedObject::Nullify() {}

HVString HVRetainedObject::Description() {
    unsigned int count = m_Ref != nullptr ? static_cast<unsigned int>(CFGetRetainCount(m_Ref)) : 0u;
    return HVString::StringWithFormat("<HVRetainedObject %p [m_Ref = %p retainCount = %u>", static_cast<void*>(this),
                                      m_Ref, count);
}

void HVRetainedObject::Release() {
    if (IsNull()) return;
    const void* container = m_Ref;
    CFIndex countBefore = CFGetRetainCount(container);
    m_Ref = nullptr;
    CFRelease(container);
    // Otherwise the release was the last one: finalize has deleted this
    // object, and it must not be touched.
    if (countBefore > 1) m_Ref = container;
}

bool HVRetainedObject::IsEqual(const HVRetainedObject* other) const {
    return other == this;
}

unsigned long long HVRetainedObject::Hash() const {
    return static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(this));
}

HVRetainedObject::operator const void*() const {
    return m_Ref;
}
