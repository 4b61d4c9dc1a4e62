// Where each value class tells the object core how to build a wrapper of
// itself from a CoreFoundation reference and which shared object stands for
// its empty value. Every class registers itself in its own source file with
// HV_REGISTER_CLASS, so the core never lists the classes that build on it.
#ifndef HALVANE_CORE_DETAIL_CLASSREGISTRY_H
#define HALVANE_CORE_DETAIL_CLASSREGISTRY_H

#include <halvane/core/HVObject.h>

#include <memory>

namespace halvane::detail {

struct ClassEntry {
    // A new wrapper of the concrete class, constructed from the reference.
    std::shared_ptr<HVObject> (*create)(const void* const& ref);
    // The object that IsEmpty, Empty and Release use for this held type;
    // nullptr when the type has none.
    const void* (*sharedEmptyObject)();
};

// Called during static initialisation only (one registration per type).
bool RegisterClass(HVClassType type, ClassEntry entry);
// nullptr for a type without a registered class.
const ClassEntry* FindClass(HVClassType type);

// Classes whose constructor from a reference is not public befriend this.
template <typename T>
struct WrapperFactory {
    static std::shared_ptr<HVObject> Create(const void* const& ref) { return std::shared_ptr<HVObject>(new T(ref)); }
};

template <typename T>
const void* SharedEmptyObjectOf() {
    return T::SharedEmptyObject();
}

}  // namespace halvane::detail

// Registers Class (its ClassType(), its constructor from a reference and
// its SharedEmptyObject()).
#define HV_REGISTER_CLASS(Class)                                                                             \
    [[maybe_unused]] static const bool Class##IsRegistered = ::halvane::detail::RegisterClass(              \
        Class::ClassType(),                                                                                   \
        {&::halvane::detail::WrapperFactory<Class>::Create, &::halvane::detail::SharedEmptyObjectOf<Class>})

// For the classes whose held type counts as empty only when null, whatever
// their own SharedEmptyObject() is.
#define HV_REGISTER_CLASS_EMPTY_WHEN_NULL(Class)                                              \
    [[maybe_unused]] static const bool Class##IsRegistered = ::halvane::detail::RegisterClass( \
        Class::ClassType(), {&::halvane::detail::WrapperFactory<Class>::Create, nullptr})

#endif  // HALVANE_CORE_DETAIL_CLASSREGISTRY_H
