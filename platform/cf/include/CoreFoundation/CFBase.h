/* CFBase.h: basic types, allocators and the polymorphic functions of every
 * CoreFoundation object. */
#ifndef HALVANE_CF_CFBASE_H
#define HALVANE_CF_CFBASE_H

#include <stdarg.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#if !defined(__cplusplus)
#include <uchar.h>
#endif

#if defined(__cplusplus)
#define CF_EXTERN_C_BEGIN extern "C" {
#define CF_EXTERN_C_END }
#else
#define CF_EXTERN_C_BEGIN
#define CF_EXTERN_C_END
#endif

#define CF_EXPORT extern __attribute__((visibility("default")))
#define CF_INLINE static inline __attribute__((always_inline))
#define CF_RETURNS_RETAINED
#define CF_RETURNS_NOT_RETAINED
#define CF_CONSUMED

#if !defined(TRUE)
#define TRUE 1
#endif
#if !defined(FALSE)
#define FALSE 0
#endif

CF_EXTERN_C_BEGIN

typedef unsigned char Boolean;
typedef uint8_t UInt8;
typedef int8_t SInt8;
typedef uint16_t UInt16;
typedef int16_t SInt16;
typedef uint32_t UInt32;
typedef int32_t SInt32;
typedef uint64_t UInt64;
typedef int64_t SInt64;
typedef float Float32;
typedef double Float64;

/* One UTF-16 code unit. */
typedef char16_t UniChar;
typedef char16_t UTF16Char;
typedef uint32_t UTF32Char;
typedef uint8_t UTF8Char;

typedef unsigned long CFTypeID;
typedef unsigned long CFOptionFlags;
typedef unsigned long CFHashCode;
typedef long CFIndex;

typedef const void *CFTypeRef;
typedef const struct __CFString *CFStringRef;
typedef struct __CFString *CFMutableStringRef;
typedef CFTypeRef CFPropertyListRef;
typedef const struct __CFAllocator *CFAllocatorRef;
typedef const struct __CFDictionary *CFDictionaryRef;
typedef const struct __CFNull *CFNullRef;

typedef CFIndex CFComparisonResult;
enum {
    kCFCompareLessThan = -1,
    kCFCompareEqualTo = 0,
    kCFCompareGreaterThan = 1
};

typedef CFComparisonResult (*CFComparatorFunction)(const void *val1, const void *val2, void *context);

enum { kCFNotFound = -1 };

typedef struct {
    CFIndex location;
    CFIndex length;
} CFRange;

CF_INLINE CFRange CFRangeMake(CFIndex location, CFIndex length) {
    CFRange range;
    range.location = location;
    range.length = length;
    return range;
}

/* Null */
CF_EXPORT const CFNullRef kCFNull;
CF_EXPORT CFTypeID CFNullGetTypeID(void);

/* Allocators. Every built-in allocator allocates from the C heap, except
 * kCFAllocatorNull, which never allocates and never frees. */
CF_EXPORT const CFAllocatorRef kCFAllocatorDefault; /* NULL: the current default */
CF_EXPORT const CFAllocatorRef kCFAllocatorSystemDefault;
CF_EXPORT const CFAllocatorRef kCFAllocatorMalloc;
CF_EXPORT const CFAllocatorRef kCFAllocatorNull;

CF_EXPORT CFTypeID CFAllocatorGetTypeID(void);
CF_EXPORT CFAllocatorRef CFAllocatorGetDefault(void);
CF_EXPORT void *CFAllocatorAllocate(CFAllocatorRef allocator, CFIndex size, CFOptionFlags hint);
CF_EXPORT void *CFAllocatorReallocate(CFAllocatorRef allocator, void *ptr, CFIndex newsize, CFOptionFlags hint);
CF_EXPORT void CFAllocatorDeallocate(CFAllocatorRef allocator, void *ptr);

/* Polymorphic functions. A NULL object gives a neutral result (0, NULL,
 * false) or does nothing. */
CF_EXPORT CFTypeID CFTypeGetTypeID(void);
CF_EXPORT CFTypeID CFGetTypeID(CFTypeRef cf);
CF_EXPORT CFStringRef CFCopyTypeIDDescription(CFTypeID type_id);
CF_EXPORT CFTypeRef CFRetain(CFTypeRef cf);
CF_EXPORT void CFRelease(CFTypeRef cf);
CF_EXPORT CFIndex CFGetRetainCount(CFTypeRef cf);
CF_EXPORT Boolean CFEqual(CFTypeRef cf1, CFTypeRef cf2);
CF_EXPORT CFHashCode CFHash(CFTypeRef cf);
CF_EXPORT CFStringRef CFCopyDescription(CFTypeRef cf);
CF_EXPORT CFAllocatorRef CFGetAllocator(CFTypeRef cf);
/* Writes the description of cf and a newline to standard error. */
CF_EXPORT void CFShow(CFTypeRef obj);

CF_EXTERN_C_END

#endif /* HALVANE_CF_CFBASE_H */
