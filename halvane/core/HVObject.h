// HVObject: the base of every value class. It owns one CoreFoundation
// reference, records the class type of the wrapper and of the object it
// holds, and can build the right wrapper for any CoreFoundation object.
#ifndef HALVANE_CORE_HVOBJECT_H
#define HALVANE_CORE_HVOBJECT_H

#include <halvane/core/HVClassType.h>
#include <halvane/core/HVExport.h>

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFRuntime.h>

#include <memory>

class HVString;

namespace halvane::detail {
template <typename T>
struct WrapperFactory;
}

class HV_EXPORT HVObject {
public:
    HVObject();
    HVObject(const HVObject& other);

    // Virtual operations, in this order in every class of the library.
    virtual ~HVObject();
    virtual bool IsEmpty() const;
    virtual void Empty();
    virtual bool IsNull() const;
    virtual void Nullify();
    virtual HVString Description();
    virtual void Retain();
    virtual void Release();
    virtual HVString Serialize();
    virtual void Deserialize(const HVString& text);
    virtual bool IsNativelyAllowedInPropertyList() const;

    static HVClassType ClassType();
    // HVObject's shared empty object is a null reference.
    static const void* const& SharedEmptyObject();
    // The class type that fits a CoreFoundation object (22 for NULL).
    static HVClassType ClassTypeNeededForObject(const void* const& ref);
    // The class name text of a class type; empty for types without one.
    static HVString ClassNameOfClassType(HVClassType type);
    // A plain HVObject holding ref (retained), typed by ClassTypeNeededForObject.
    static HVObject Create(const void* const& ref);
    // Rebuilds an object from its tagged text form ("HVString:\"abc\"").
    static HVObject CreateObjectFromString(const HVString& text);

    // The central conversion rule: shares other's reference when this wrapper
    // can hold it; a typed wrapper silently refuses a foreign object.
    HVObject& operator=(const HVObject& other);
    void Assign(const void* const& ref);
    // Stores ref without retaining it: the caller's reference passes over.
    void AssignAndTakeOwnership(const void* const& ref);
    void AssignUsingClassType(const void* const& ref, HVClassType type);
    void AssignTakeOwnershipAndSetType(const void* const& ref);

    const void* Ref() const;
    const void* RefAutorelease() const;
    // A copy of the held object (or the object itself where no copy is
    // made), retained once more: see the implementation for the ownership.
    const void* RefCopy() const;
    // The platform count cut to 32 bits and sign-extended; 0 for null.
    unsigned long long RetainCount() const;
    // CFHash with the high 32 bits cleared. The reference must not be null.
    unsigned long long Hash() const;

    HVClassType ObjectsActualClassType() const;
    HVClassType ObjectsClassType() const;
    bool IsSameClassTypeAs(const HVObject& other) const;
    bool IsTypeOfClass(HVClassType type) const;
    bool IsMutable() const;

    bool operator==(const HVObject& other) const;
    bool operator!=(const HVObject& other) const;

    operator const void*() const;

protected:
    HVObject(const void* const& ref);
    HVObject(const void* const& ref, HVClassType type);
    HVObject(const HVObject& other, HVClassType type);
    // What Create gives when the caller already knows ref's class type.
    static HVObject HoldingWithClassType(const void* const& ref, HVClassType type);

    HVObject& operator=(const void* const& ref);
    // What every class's AssignUnderlyingX does: nothing when ref is already
    // held; otherwise release the old reference, store ref with the given
    // class type and retain it.
    void ReplaceReference(const void* ref, HVClassType type);
    // The same for a reference the caller owns, which passes over; when ref
    // is already held, that surplus reference is dropped.
    void ReplaceReferenceTakingOwnership(const void* ref, HVClassType type);
    bool operator==(const void* const& ref) const;
    bool operator!=(const void* const& ref) const;

    static HVClassType ClassTypeOfClassName(const HVString& name);
    // A new wrapper of the concrete class for type, built from ref; empty
    // for types without a concrete class.
    static std::shared_ptr<HVObject> CreateObjectOfClassType(const void* const& ref, HVClassType type);
    static HVString AddPropertyListFileText(const HVString& fragment);
    static HVString RemovePropertyListFileText(const HVString& document);

    // The shared empty object that stands for an empty value of a held
    // class type (null for types without one).
    static const void* SharedEmptyObjectOfClassType(HVClassType type);

    const void* m_Ref;
    HVClassType m_ActualClassType;
    HVClassType m_ClassType;

    template <typename T>
    friend struct halvane::detail::WrapperFactory;
};

// Copying a wrapper and destroying one are the library's most frequent
// operations: inline, they cost one retain or release each, done in place
// in the common case.
inline HVObject::HVObject(const HVObject& other, HVClassType type)
    : m_Ref(other.m_Ref), m_ActualClassType(type), m_ClassType(type) {
    if (m_Ref != nullptr) _CFRuntimeRetain(m_Ref);
}

inline HVObject::HVObject(const void* const& ref, HVClassType type)
    : m_Ref(ref), m_ActualClassType(type), m_ClassType(type) {
    if (m_Ref != nullptr) _CFRuntimeRetain(m_Ref);
}

inline HVObject HVObject::HoldingWithClassType(const void* const& ref, HVClassType type) {
    return HVObject(ref, type);
}

inline HVObject::~HVObject() {
    if (m_Ref != nullptr) _CFRuntimeRelease(m_Ref);
}

inline const void* HVObject::Ref() const { return m_Ref; }
inline HVClassType HVObject::ObjectsActualClassType() const { return m_ActualClassType; }
inline HVClassType HVObject::ObjectsClassType() const { return m_ClassType; }

// A plain holder of one untyped reference; never retains or releases.
class HV_EXPORT id {
public:
    id();
    id(const id& other);
    id(const void* pointer);
    id& operator=(const id& other);
    id& operator=(const void* pointer);
    ~id();

    bool operator==(const id& other) const;
    bool operator!=(const id& other) const;
    bool operator==(const void* pointer) const;
    bool operator!=(const void* pointer) const;
    operator const void*() const;

private:
    const void* m_Pointer;
};

// Kept so that code written in the pool-scoped style compiles; no pool is
// kept and nothing is released when it ends.
class HV_EXPORT HVAutoreleasePool {
public:
    HVAutoreleasePool();
    HVAutoreleasePool& operator=(const HVAutoreleasePool& other);
    ~HVAutoreleasePool();

private:
    [[maybe_unused]] void* m_Unused;
};

#endif  // HALVANE_CORE_HVOBJECT_H
