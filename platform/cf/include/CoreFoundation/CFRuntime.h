/* CFRuntime.h: registration of object classes and creation of instances.
 *
 * An object of a registered class starts with a CFRuntimeBase; the class
 * record supplies its life-cycle, equality, hashing and description
 * callbacks. Built-in classes have type IDs below 256; the first class
 * registered by a client receives 256, the next 257, and so on. */
#ifndef HALVANE_CF_CFRUNTIME_H
#define HALVANE_CF_CFRUNTIME_H

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFDictionary.h>

#if defined(__has_include)
#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#define HALVANE_CF_KNOWS_SINGLE_THREADED 1
#endif
#endif

CF_EXTERN_C_BEGIN

enum {
    _kCFRuntimeNotATypeID = 0
};

/* Bits of CFRuntimeClass.version. */
enum {
    _kCFRuntimeScannedObject = (1UL << 0),    /* accepted and ignored */
    _kCFRuntimeResourcefulObject = (1UL << 2), /* reclaim is called before finalize */
    _kCFRuntimeCustomRefCount = (1UL << 3),   /* refcount does the counting */
    _kCFRuntimeRequiresAlignment = (1UL << 4) /* requiredAlignment is honoured */
};

typedef struct __CFRuntimeClass {
    CFIndex version;
    const char *className; /* non-NULL, ASCII */
    void (*init)(CFTypeRef cf);
    CFTypeRef (*copy)(CFAllocatorRef allocator, CFTypeRef cf); /* must be NULL */
    void (*finalize)(CFTypeRef cf);
    Boolean (*equal)(CFTypeRef cf1, CFTypeRef cf2);
    CFHashCode (*hash)(CFTypeRef cf);
    CFStringRef (*copyFormattingDesc)(CFTypeRef cf, CFDictionaryRef formatOptions); /* +1 or NULL */
    CFStringRef (*copyDebugDesc)(CFTypeRef cf);                                     /* +1 or NULL */
    void (*reclaim)(CFTypeRef cf);
    /* op: +1 retain (returns 0), 0 query (returns the count), -1 release
     * (frees at zero, returns 0). */
    uint32_t (*refcount)(intptr_t op, CFTypeRef cf);
    uintptr_t requiredAlignment;
} CFRuntimeClass;

/* The header at the start of every object: two words on 64-bit systems.
 * _cfisa holds the type ID and creation flags, _cfinfoa the reference
 * count (updated atomically once the process has a second thread). */
typedef struct __CFRuntimeBase {
    uintptr_t _cfisa;
    uint64_t _cfinfoa;
} CFRuntimeBase;

/* Layout of CFRuntimeBase._cfisa: the type ID in the low 32 bits, then
 * the flags of objects whose count the runtime does not keep (objects that
 * are never freed, and classes that count for themselves). */
#define _kCFRuntimeTypeIDMask ((uintptr_t)0xFFFFFFFFu)
#define _kCFRuntimeImmortalFlag ((uintptr_t)1 << 32)
#define _kCFRuntimeCustomRefCountFlag ((uintptr_t)1 << 33)

/* True while the process has never started a second thread. A count then
 * needs no locked update: the flag turns false before a new thread runs,
 * so that thread sees every count written before it. */
CF_INLINE Boolean _CFRuntimeIsSingleThreaded(void) {
#if defined(HALVANE_CF_KNOWS_SINGLE_THREADED)
    return __libc_single_threaded != 0;
#else
    return 0;
#endif
}

/* CFGetTypeID, CFRetain and CFRelease for the callers that make them on
 * every access: the common case is done in place, without a call into the
 * library; everything else goes to the library's functions. */
CF_INLINE CFTypeID _CFRuntimeGetTypeID(CFTypeRef cf) {
    return cf != NULL ? (CFTypeID)(((const CFRuntimeBase *)cf)->_cfisa & _kCFRuntimeTypeIDMask)
                      : (CFTypeID)_kCFRuntimeNotATypeID;
}

CF_INLINE Boolean _CFRuntimeKeepsPlainCount(CFTypeRef cf) {
    const uintptr_t uncounted = _kCFRuntimeImmortalFlag | _kCFRuntimeCustomRefCountFlag;
    return (((const CFRuntimeBase *)cf)->_cfisa & uncounted) == 0 && _CFRuntimeIsSingleThreaded();
}

CF_INLINE CFTypeRef _CFRuntimeRetain(CFTypeRef cf) {
    if (cf == NULL || !_CFRuntimeKeepsPlainCount(cf)) return CFRetain(cf);
    ((CFRuntimeBase *)(uintptr_t)cf)->_cfinfoa += 1;
    return cf;
}

/* The last release goes to CFRelease, which frees the object. */
CF_INLINE void _CFRuntimeRelease(CFTypeRef cf) {
    if (cf == NULL || !_CFRuntimeKeepsPlainCount(cf) || ((const CFRuntimeBase *)cf)->_cfinfoa == 1) {
        CFRelease(cf);
        return;
    }
    ((CFRuntimeBase *)(uintptr_t)cf)->_cfinfoa -= 1;
}

/* Registers cls (the record is referenced, not copied, and must outlive
 * its use). Returns the new type ID, or _kCFRuntimeNotATypeID when the
 * table is full or the record is unusable. */
CF_EXPORT CFTypeID _CFRuntimeRegisterClass(const CFRuntimeClass *const cls);
CF_EXPORT const CFRuntimeClass *_CFRuntimeGetClassWithTypeID(CFTypeID typeID);
CF_EXPORT void _CFRuntimeUnregisterClassWithTypeID(CFTypeID typeID);

/* Allocates sizeof(CFRuntimeBase) + extraBytes (zero-filled after the
 * header), sets the reference count to 1 and calls the class's init.
 * Returns NULL for an unregistered type ID, for kCFAllocatorNull, or when
 * memory runs out. category must be NULL. */
CF_EXPORT CFTypeRef _CFRuntimeCreateInstance(CFAllocatorRef allocator, CFTypeID typeID, CFIndex extraBytes,
                                             unsigned char *category);

/* Prepares caller-owned static memory as an object that retain and
 * release leave alone and that is never freed. */
CF_EXPORT void _CFRuntimeInitStaticInstance(void *memory, CFTypeID typeID);

CF_EXTERN_C_END

#endif /* HALVANE_CF_CFRUNTIME_H */
