// The class type of a platform object read from its type ID in place: the
// step every typed accessor takes, so it costs a load and no call. Objects
// whose ID does not settle their class (collections, which may be mutable
// or box a value, and unknown types) go to ClassTypeNeededForObject.
#ifndef HALVANE_CORE_DETAIL_CLASSTYPETABLE_H
#define HALVANE_CORE_DETAIL_CLASSTYPETABLE_H

#include <halvane/core/HVClassType.h>
#include <halvane/core/HVObject.h>

#include <CoreFoundation/CFRuntime.h>

#include <array>
#include <atomic>

namespace halvane::detail {

// Indexed by platform type ID, up to the retained-object class (the first
// client ID); filled on first use by ClassTypeNeededForObject.
inline constexpr CFTypeID kClassTypeTableSize = 257;
HV_EXPORT extern std::array<HVClassType, kClassTypeTableSize> classTypeTable;
HV_EXPORT extern std::atomic<bool> classTypeTableFilled;

// The table's entry; unknown beyond the table.
inline HVClassType ClassTypeOfTypeID(CFTypeID typeID) {
    return typeID < kClassTypeTableSize ? classTypeTable[typeID] : HVUnknownClassType;
}

// Whether the type ID alone names the class of its objects.
inline bool IsSettledByTypeID(HVClassType type) {
    return type != HVUnknownClassType && type != HVArrayClassType && type != HVDataClassType &&
           type != HVDictionaryClassType;
}

// The class type that ref's type ID alone names; unknown when it takes
// more than the ID, for null, and before the table is filled.
inline HVClassType SettledClassTypeOf(const void* ref) {
    if (ref == nullptr || !classTypeTableFilled.load(std::memory_order_acquire)) return HVUnknownClassType;
    HVClassType type = ClassTypeOfTypeID(_CFRuntimeGetTypeID(ref));
    return IsSettledByTypeID(type) ? type : HVUnknownClassType;
}

// HVObject::ClassTypeNeededForObject, with its common case in place.
inline HVClassType ClassTypeOfReference(const void* ref) {
    HVClassType type = SettledClassTypeOf(ref);
    return type != HVUnknownClassType ? type : HVObject::ClassTypeNeededForObject(ref);
}

}  // namespace halvane::detail

#endif  // HALVANE_CORE_DETAIL_CLASSTYPETABLE_H
