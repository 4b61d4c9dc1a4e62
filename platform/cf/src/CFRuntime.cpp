// The class table, reference counting and the polymorphic functions that
// dispatch through a class record.
#include "CFInternal.h"
#include "CFStringInternal.h"

#include <CoreFoundation/CFString.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstddef>
#include <cstring>
#include <mutex>

namespace halvane::detail {

namespace {

// Built-in classes are fixed at compile time, so no static-initialisation
// order can observe a half-filled table.
constinit const std::array<const CFRuntimeClass*, kFirstClientTypeID> builtinClasses = [] {
    std::array<const CFRuntimeClass*, kFirstClientTypeID> table{};
    table[kCFTypeTypeID] = &kTypeClass;
    table[kCFAllocatorTypeID] = &kAllocatorClass;
    table[kCFStringTypeID] = &kStringClass;
    table[kCFArrayTypeID] = &kArrayClass;
    table[kCFDataTypeID] = &kDataClass;
    table[kCFNullTypeID] = &kNullClass;
    table[kCFBooleanTypeID] = &kBooleanClass;
    table[kCFNumberTypeID] = &kNumberClass;
    table[kCFDateTypeID] = &kDateClass;
    table[kCFDictionaryTypeID] = &kDictionaryClass;
    table[kCFErrorTypeID] = &kErrorClass;
    table[kCFReadStreamTypeID] = &kReadStreamClass;
    table[kCFWriteStreamTypeID] = &kWriteStreamClass;
    table[kCFSocketTypeID] = &kSocketClass;
    table[kCFURLTypeID] = &kURLClass;
    table[kCFCharacterSetTypeID] = &kCharacterSetClass;
    table[kCFTimeZoneTypeID] = &kTimeZoneClass;
    table[kCFCalendarTypeID] = &kCalendarClass;
    table[kCFLocaleTypeID] = &kLocaleClass;
    return table;
}();

constinit std::array<std::atomic<const CFRuntimeClass*>, kClassTableSize - kFirstClientTypeID> clientClasses{};
constinit CFTypeID nextClientTypeID = kFirstClientTypeID;
std::mutex registrationMutex;

void deallocateInstance(CFTypeRef cf) {
    const CFRuntimeClass* cls = classOf(typeIDOf(cf));
    if (cls != nullptr) {
        if ((cls->version & _kCFRuntimeResourcefulObject) && cls->reclaim != nullptr) cls->reclaim(cf);
        if (cls->finalize != nullptr) cls->finalize(cf);
    }
    std::free(const_cast<void*>(cf));
}

uint64_t& retainCountOf(CFTypeRef cf) { return const_cast<CFRuntimeBase*>(runtimeBase(cf))->_cfinfoa; }

// Immortal objects keep no count; a class with its own count is asked to
// change it.
[[gnu::noinline]] CFTypeRef adjustUncountedRetainCount(CFTypeRef cf, uintptr_t isa, int change) {
    if ((isa & kImmortalFlag) == 0) classOf(isa & kTypeIDMask)->refcount(change, cf);
    return cf;
}

// A count needs locked updates only once a second thread could hold the
// object; before that a plain update spares retain and release a locked
// instruction, which also stops the processor from overlapping the work
// around them.
void incrementRetainCount(CFTypeRef cf) {
    uint64_t& count = retainCountOf(cf);
    if (_CFRuntimeIsSingleThreaded()) {
        ++count;
    } else {
        std::atomic_ref<uint64_t>(count).fetch_add(1, std::memory_order_relaxed);
    }
}

// True when the count reached zero.
bool decrementRetainCount(CFTypeRef cf) {
    uint64_t& count = retainCountOf(cf);
    if (_CFRuntimeIsSingleThreaded()) return --count == 0;
    return std::atomic_ref<uint64_t>(count).fetch_sub(1, std::memory_order_acq_rel) == 1;
}

}  // namespace

const CFRuntimeClass* classOf(CFTypeID typeID) {
    if (typeID < kFirstClientTypeID) return builtinClasses[typeID];
    if (typeID < kClassTableSize) return clientClasses[typeID - kFirstClientTypeID].load(std::memory_order_acquire);
    return nullptr;
}

void reportMisuse(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    std::vfprintf(stderr, format, arguments);
    std::fputc('\n', stderr);
    va_end(arguments);
}

const void* descriptionAllocatorAddress(CFTypeRef) { return kCFAllocatorSystemDefault; }

CFStringRef copyFormattingDescription(CFTypeRef cf, CFDictionaryRef formatOptions) {
    if (cf == nullptr) return CFSTR("(null)");
    const CFRuntimeClass* cls = classOf(typeIDOf(cf));
    if (cls != nullptr && cls->copyFormattingDesc != nullptr) {
        if (CFStringRef text = cls->copyFormattingDesc(cf, formatOptions)) return text;
    }
    if (CFStringRef text = CFCopyDescription(cf)) return text;
    return CFSTR("(null description)");
}

// CFType itself: the class of ID 1, never instantiated.
constinit const CFRuntimeClass kTypeClass = {0, "CFType", nullptr, nullptr, nullptr, nullptr,
                                             nullptr, nullptr, nullptr, nullptr, nullptr, 0};

}  // namespace halvane::detail

using namespace halvane::detail;

CFTypeID _CFRuntimeRegisterClass(const CFRuntimeClass* const cls) {
    if (cls == nullptr || cls->className == nullptr) {
        reportMisuse("CFRuntime: _CFRuntimeRegisterClass(): a class needs a record and a name");
        return _kCFRuntimeNotATypeID;
    }
    if ((cls->version & _kCFRuntimeCustomRefCount) && cls->refcount == nullptr) {
        reportMisuse("CFRuntime: _CFRuntimeRegisterClass(): class '%s' asks for custom reference counting without a "
                     "refcount callback",
                     cls->className);
        return _kCFRuntimeNotATypeID;
    }
    std::lock_guard lock(registrationMutex);
    CFTypeID typeID = _kCFRuntimeNotATypeID;
    if (nextClientTypeID < kClassTableSize) {
        typeID = nextClientTypeID++;
    } else {
        // Sequential IDs are used up: reuse a slot that was unregistered.
        for (CFTypeID candidate = kFirstClientTypeID; candidate < kClassTableSize; ++candidate) {
            if (clientClasses[candidate - kFirstClientTypeID].load(std::memory_order_relaxed) == nullptr) {
                typeID = candidate;
                break;
            }
        }
    }
    if (typeID == _kCFRuntimeNotATypeID) {
        reportMisuse("CFRuntime: _CFRuntimeRegisterClass(): class table full; class '%s' not registered", cls->className);
        return _kCFRuntimeNotATypeID;
    }
    clientClasses[typeID - kFirstClientTypeID].store(cls, std::memory_order_release);
    return typeID;
}

const CFRuntimeClass* _CFRuntimeGetClassWithTypeID(CFTypeID typeID) { return classOf(typeID); }

void _CFRuntimeUnregisterClassWithTypeID(CFTypeID typeID) {
    if (typeID < kFirstClientTypeID || typeID >= kClassTableSize) return;
    std::lock_guard lock(registrationMutex);
    clientClasses[typeID - kFirstClientTypeID].store(nullptr, std::memory_order_release);
}

CFTypeRef _CFRuntimeCreateInstance(CFAllocatorRef allocator, CFTypeID typeID, CFIndex extraBytes,
                                   unsigned char* category) {
    if (category != nullptr || extraBytes < 0 || allocator == kCFAllocatorNull) return nullptr;
    const CFRuntimeClass* cls = classOf(typeID);
    if (cls == nullptr) return nullptr;

    size_t size = (sizeof(CFRuntimeBase) + size_t(extraBytes) + 15) & ~size_t(15);
    void* memory = nullptr;
    if ((cls->version & _kCFRuntimeRequiresAlignment) && cls->requiredAlignment > alignof(std::max_align_t)) {
        size_t alignment = cls->requiredAlignment;
        if ((alignment & (alignment - 1)) != 0) return nullptr;
        size = (size + alignment - 1) & ~(alignment - 1);
        memory = std::aligned_alloc(alignment, size);
        if (memory != nullptr) std::memset(memory, 0, size);
    } else {
        memory = std::calloc(1, size);
    }
    if (memory == nullptr) return nullptr;

    auto* base = static_cast<CFRuntimeBase*>(memory);
    base->_cfisa = typeID | ((cls->version & _kCFRuntimeCustomRefCount) ? kCustomRefCountFlag : 0);
    base->_cfinfoa = 1;
    if (cls->init != nullptr) cls->init(memory);
    return memory;
}

void _CFRuntimeInitStaticInstance(void* memory, CFTypeID typeID) {
    if (memory == nullptr) return;
    *static_cast<CFRuntimeBase*>(memory) = immortalHeader(typeID);
}

CFTypeID CFTypeGetTypeID(void) { return kCFTypeTypeID; }

CFTypeID CFGetTypeID(CFTypeRef cf) { return cf == nullptr ? CFTypeID(_kCFRuntimeNotATypeID) : typeIDOf(cf); }

CFStringRef CFCopyTypeIDDescription(CFTypeID typeID) {
    const CFRuntimeClass* cls = classOf(typeID);
    if (cls == nullptr) return nullptr;
    return createStringFromASCII(kCFAllocatorSystemDefault, cls->className, CFIndex(std::strlen(cls->className)));
}

// Retain and release keep their common path free of calls and of a stack
// frame; immortal objects and custom counts are the rare cases.
CFTypeRef CFRetain(CFTypeRef cf) {
    if (cf == nullptr) return nullptr;
    uintptr_t isa = runtimeBase(cf)->_cfisa;
    if ((isa & (kImmortalFlag | kCustomRefCountFlag)) != 0) return adjustUncountedRetainCount(cf, isa, +1);
    incrementRetainCount(cf);
    return cf;
}

void CFRelease(CFTypeRef cf) {
    if (cf == nullptr) return;
    uintptr_t isa = runtimeBase(cf)->_cfisa;
    if ((isa & (kImmortalFlag | kCustomRefCountFlag)) != 0) {
        adjustUncountedRetainCount(cf, isa, -1);
    } else if (decrementRetainCount(cf)) {
        deallocateInstance(cf);
    }
}

CFIndex CFGetRetainCount(CFTypeRef cf) {
    if (cf == nullptr) return 0;
    uintptr_t isa = runtimeBase(cf)->_cfisa;
    if (isa & kImmortalFlag) return kImmortalRetainCount;
    if (isa & kCustomRefCountFlag) return classOf(isa & kTypeIDMask)->refcount(0, cf);
    return CFIndex(std::atomic_ref<uint64_t>(retainCountOf(cf)).load(std::memory_order_relaxed));
}

Boolean CFEqual(CFTypeRef cf1, CFTypeRef cf2) {
    if (cf1 == cf2) return cf1 != nullptr;
    if (cf1 == nullptr || cf2 == nullptr) return false;
    CFTypeID typeID = typeIDOf(cf1);
    if (typeID != typeIDOf(cf2)) return false;
    const CFRuntimeClass* cls = classOf(typeID);
    if (cls == nullptr || cls->equal == nullptr) return false;
    return cls->equal(cf1, cf2) ? true : false;
}

CFHashCode CFHash(CFTypeRef cf) {
    if (cf == nullptr) return 0;
    const CFRuntimeClass* cls = classOf(typeIDOf(cf));
    if (cls == nullptr || cls->hash == nullptr) return CFHashCode(reinterpret_cast<uintptr_t>(cf));
    return cls->hash(cf);
}

CFStringRef CFCopyDescription(CFTypeRef cf) {
    if (cf == nullptr) return nullptr;
    const CFRuntimeClass* cls = classOf(typeIDOf(cf));
    if (cls != nullptr && cls->copyDebugDesc != nullptr) {
        if (CFStringRef text = cls->copyDebugDesc(cf)) return text;
    }
    return TextBuilder()
        .ascii("<")
        .ascii(cls != nullptr ? cls->className : "CFType")
        .ascii(" ")
        .pointer(cf)
        .ascii(" [")
        .pointer(descriptionAllocatorAddress(cf))
        .ascii("]>")
        .create();
}

CFAllocatorRef CFGetAllocator(CFTypeRef) { return kCFAllocatorSystemDefault; }

void CFShow(CFTypeRef obj) {
    CFStringRef text = obj != nullptr ? CFCopyDescription(obj) : CFSTR("(null)");
    std::string utf8 = utf8Of(text);
    std::fprintf(stderr, "%s\n", utf8.c_str());
    CFRelease(text);
}
