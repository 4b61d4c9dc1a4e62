// HVRetainedObject: lets an ordinary object of the application live inside
// CoreFoundation collections. The object owns a small CoreFoundation
// instance (its container) whose callbacks lead back to it: collections
// retain and release the container, compare and hash it through the
// object, and the container's last release deletes the object.
//
// Objects of this class are made with new and ended only through Release:
//     Item* item = new Item;              // count 1
//     HVRetainedObject::Retain(item);     // count 2
//     item = HVRetainedObject::Release(item) ... // the last Release deletes it
#ifndef HALVANE_CORE_HVRETAINEDOBJECT_H
#define HALVANE_CORE_HVRETAINEDOBJECT_H

#include <halvane/core/HVObject.h>

class HV_EXPORT HVRetainedObject : public HVObject {
public:
    static HVClassType ClassType();
    // Retained objects have no empty value: a null reference.
    static const void* const& SharedEmptyObject();

    // The object that a container leads back to; null for a container whose
    // object has gone or for a reference that is not a container.
    static HVRetainedObject* RetainedObject(const void* container);
    // Adds a reference to the object's container; returns the object.
    static HVRetainedObject* Retain(HVRetainedObject* object);
    using HVObject::Retain;
    // Drops one reference (the last deletes the object); always returns null,
    // so that callers write object = HVRetainedObject::Release(object).
    static HVRetainedObject* Release(HVRetainedObject* object);

    // Clears the container without releasing it: the container's final
    // release is what deletes the object, never the other way round.
    ~HVRetainedObject() override;
    // A retained object is never emptied nor nullified by the object core.
    void Empty() override;
    void Nullify() override;
    // "<HVRetainedObject %p [m_Ref = %p retainCount = %u>" (the closing
    // bracket missing is part of the text).
    HVString Description() override;
    // Drops one reference to the container. When it was the last, the
    // object has been deleted on return and must not be touched again.
    void Release() override;

    // Reserved for subclasses: the library never calls it. Every concrete
    // subclass gives it a body, which may do nothing.
    virtual void SubclassSlot() = 0;
    // Equality of two containers in collections; by default identity.
    virtual bool IsEqual(const HVRetainedObject* other) const;
    // Hash of the container in collections; by default the object's address.
    virtual unsigned long long Hash() const;
    // The container.
    virtual operator const void*() const;

protected:
    // Creates the container; the creation's one reference is the object's.
    HVRetainedObject();
    // A copy is another object: it gets a container of its own.
    HVRetainedObject(const HVRetainedObject& other);
    // Assignment copies a subclass's fields only; each object keeps its own
    // container.
    HVRetainedObject& operator=(const HVRetainedObject& other);

    // Makes a new container leading to object and gives it to object as its
    // reference. A previous container of the object no longer leads to it
    // and loses the object's reference. Null when no container can be made.
    static const void* CreateContainer(const HVRetainedObject* object);
};

#endif  // HALVANE_CORE_HVRETAINEDOBJECT_H
