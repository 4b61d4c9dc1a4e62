// Internal runtime helpers shared by the implementation of every CF type.
#ifndef HALVANE_CF_INTERNAL_H
#define HALVANE_CF_INTERNAL_H

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFRuntime.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <string>

namespace halvane::detail {

// Type IDs of the built-in classes. The numbers follow the long-standing
// values of other CoreFoundation implementations; nothing should depend on
// them, but matching them costs nothing.
enum BuiltinTypeID : CFTypeID {
    kCFTypeTypeID = 1,
    kCFAllocatorTypeID = 2,
    kCFStringTypeID = 7,
    kCFNullTypeID = 16,
    kCFSetTypeID = 17,
    kCFDictionaryTypeID = 18,
    kCFArrayTypeID = 19,
    kCFDataTypeID = 20,
    kCFBooleanTypeID = 21,
    kCFNumberTypeID = 22,
    kCFCharacterSetTypeID = 25,
    kCFErrorTypeID = 27,
    kCFURLTypeID = 29,
    kCFReadStreamTypeID = 38,
    kCFWriteStreamTypeID = 39,
    kCFDateTypeID = 42,
    kCFTimeZoneTypeID = 48,
    kCFCalendarTypeID = 49,
    kCFLocaleTypeID = 55,
    kCFSocketTypeID = 61,
};

// First type ID handed to clients, and the size of the class table.
inline constexpr CFTypeID kFirstClientTypeID = 256;
inline constexpr CFTypeID kClassTableSize = 1024;

// What CFGetRetainCount reports for objects that are never freed.
inline constexpr CFIndex kImmortalRetainCount = 0x0FFFFFFFFFFFFFFFL;

// Layout of CFRuntimeBase::_cfisa: the type ID in the low 32 bits, runtime
// flags above it, and bits the owning class may use (fixed at creation,
// because retain and release read the word without synchronisation).
inline constexpr uintptr_t kTypeIDMask = _kCFRuntimeTypeIDMask;
inline constexpr uintptr_t kImmortalFlag = _kCFRuntimeImmortalFlag;
inline constexpr uintptr_t kCustomRefCountFlag = _kCFRuntimeCustomRefCountFlag;
inline constexpr unsigned kClassBitsShift = 40;

inline const CFRuntimeBase* runtimeBase(CFTypeRef cf) { return static_cast<const CFRuntimeBase*>(cf); }

inline CFTypeID typeIDOf(CFTypeRef cf) { return runtimeBase(cf)->_cfisa & kTypeIDMask; }

// True when cf is a non-NULL object of the given type: the guard every
// public function uses before touching an argument.
inline bool isA(CFTypeRef cf, CFTypeID typeID) { return cf != nullptr && typeIDOf(cf) == typeID; }

inline bool isImmortal(CFTypeRef cf) { return (runtimeBase(cf)->_cfisa & kImmortalFlag) != 0; }

inline uintptr_t classBits(CFTypeRef cf) { return runtimeBase(cf)->_cfisa >> kClassBitsShift; }

// Class records of the built-in types, one per implementation file.
extern const CFRuntimeClass kTypeClass;
extern const CFRuntimeClass kAllocatorClass;
extern const CFRuntimeClass kStringClass;
extern const CFRuntimeClass kArrayClass;
extern const CFRuntimeClass kDataClass;
extern const CFRuntimeClass kNullClass;
extern const CFRuntimeClass kBooleanClass;
extern const CFRuntimeClass kNumberClass;
extern const CFRuntimeClass kDateClass;
extern const CFRuntimeClass kDictionaryClass;
extern const CFRuntimeClass kErrorClass;
extern const CFRuntimeClass kReadStreamClass;
extern const CFRuntimeClass kWriteStreamClass;
extern const CFRuntimeClass kSocketClass;
extern const CFRuntimeClass kURLClass;
extern const CFRuntimeClass kCharacterSetClass;
extern const CFRuntimeClass kTimeZoneClass;
extern const CFRuntimeClass kCalendarClass;
extern const CFRuntimeClass kLocaleClass;

// The class record of a type ID, or nullptr.
const CFRuntimeClass* classOf(CFTypeID typeID);

// Header for an object about to be handed out: count 1, no flags but the
// given class bits.
inline void initHeader(CFRuntimeBase* base, CFTypeID typeID, uintptr_t bits = 0) {
    base->_cfisa = typeID | (bits << kClassBitsShift);
    base->_cfinfoa = 1;
}

// Header for an object that lives for the whole process (constants,
// singletons, interned strings): retain and release leave it alone.
inline constexpr CFRuntimeBase immortalHeader(CFTypeID typeID, uintptr_t bits = 0) {
    return CFRuntimeBase{typeID | kImmortalFlag | (bits << kClassBitsShift), 1};
}

// Allocates a built-in object of type T (which starts with a CFRuntimeBase)
// with extraBytes after it, zero-filled, header set. nullptr for
// kCFAllocatorNull or when memory runs out.
template <typename T>
T* createInstance(CFAllocatorRef allocator, CFTypeID typeID, size_t extraBytes = 0, uintptr_t bits = 0) {
    if (allocator == ::kCFAllocatorNull) return nullptr;
    void* memory = std::calloc(1, sizeof(T) + extraBytes);
    if (memory == nullptr) return nullptr;
    T* object = static_cast<T*>(memory);
    initHeader(reinterpret_cast<CFRuntimeBase*>(object), typeID, bits);
    return object;
}

// Reports a misuse of the API (a NULL where an object was required, an
// index out of range, a change to an immutable object, ...) on standard
// error, as one line with the text given. The call then does nothing or
// returns a neutral result: this library never halts the process.
[[gnu::format(printf, 1, 2)]] void reportMisuse(const char* format, ...);

// The text that "%@" inserts for cf: its formatting description, else its
// debug description, else "(null description)"; "(null)" for NULL.
CFStringRef copyFormattingDescription(CFTypeRef cf, CFDictionaryRef formatOptions);

// The address of the allocator object that descriptions print in brackets.
const void* descriptionAllocatorAddress(CFTypeRef cf);

// The locale the POSIX environment asks for, as a locale identifier
// ("de_DE"): LC_ALL, else the category's own variable, else LANG, without
// codeset or modifier; "en_US" for C, POSIX or nothing set.
enum class LocaleCategory { kCollation, kMessages };
std::string currentLocaleIdentifier(LocaleCategory category);

}  // namespace halvane::detail

#endif  // HALVANE_CF_INTERNAL_H
