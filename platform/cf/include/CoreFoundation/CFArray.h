/* CFArray.h: immutable and mutable ordered collections. */
#ifndef HALVANE_CF_CFARRAY_H
#define HALVANE_CF_CFARRAY_H

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFRuntime.h>

CF_EXTERN_C_BEGIN

typedef const void *(*CFArrayRetainCallBack)(CFAllocatorRef allocator, const void *value);
typedef void (*CFArrayReleaseCallBack)(CFAllocatorRef allocator, const void *value);
typedef CFStringRef (*CFArrayCopyDescriptionCallBack)(const void *value);
typedef Boolean (*CFArrayEqualCallBack)(const void *value1, const void *value2);

typedef struct {
    CFIndex version;
    CFArrayRetainCallBack retain;
    CFArrayReleaseCallBack release;
    CFArrayCopyDescriptionCallBack copyDescription;
    CFArrayEqualCallBack equal;
} CFArrayCallBacks;

CF_EXPORT const CFArrayCallBacks kCFTypeArrayCallBacks;

typedef void (*CFArrayApplierFunction)(const void *value, void *context);

typedef const struct __CFArray *CFArrayRef;
typedef struct __CFArray *CFMutableArrayRef;

CF_EXPORT CFTypeID CFArrayGetTypeID(void);

CF_EXPORT CFArrayRef CFArrayCreate(CFAllocatorRef allocator, const void **values, CFIndex numValues,
                                   const CFArrayCallBacks *callBacks);
CF_EXPORT CFArrayRef CFArrayCreateCopy(CFAllocatorRef allocator, CFArrayRef theArray);
/* A non-zero capacity is the most elements the array can ever hold; an
 * insertion beyond it is refused with a message on standard error. 0 means
 * unbounded. */
CF_EXPORT CFMutableArrayRef CFArrayCreateMutable(CFAllocatorRef allocator, CFIndex capacity,
                                                 const CFArrayCallBacks *callBacks);
CF_EXPORT CFMutableArrayRef CFArrayCreateMutableCopy(CFAllocatorRef allocator, CFIndex capacity,
                                                     CFArrayRef theArray);

CF_EXPORT CFIndex CFArrayGetCount(CFArrayRef theArray);
CF_EXPORT CFIndex CFArrayGetCountOfValue(CFArrayRef theArray, CFRange range, const void *value);
CF_EXPORT Boolean CFArrayContainsValue(CFArrayRef theArray, CFRange range, const void *value);
CF_EXPORT const void *CFArrayGetValueAtIndex(CFArrayRef theArray, CFIndex idx);
CF_EXPORT void CFArrayGetValues(CFArrayRef theArray, CFRange range, const void **values);
CF_EXPORT void CFArrayApplyFunction(CFArrayRef theArray, CFRange range, CFArrayApplierFunction applier,
                                    void *context);
CF_EXPORT CFIndex CFArrayGetFirstIndexOfValue(CFArrayRef theArray, CFRange range, const void *value);
CF_EXPORT CFIndex CFArrayGetLastIndexOfValue(CFArrayRef theArray, CFRange range, const void *value);
CF_EXPORT CFIndex CFArrayBSearchValues(CFArrayRef theArray, CFRange range, const void *value,
                                       CFComparatorFunction comparator, void *context);

CF_EXPORT void CFArrayAppendValue(CFMutableArrayRef theArray, const void *value);
CF_EXPORT void CFArrayInsertValueAtIndex(CFMutableArrayRef theArray, CFIndex idx, const void *value);
/* idx == count appends. */
CF_EXPORT void CFArraySetValueAtIndex(CFMutableArrayRef theArray, CFIndex idx, const void *value);
CF_EXPORT void CFArrayRemoveValueAtIndex(CFMutableArrayRef theArray, CFIndex idx);
CF_EXPORT void CFArrayRemoveAllValues(CFMutableArrayRef theArray);
CF_EXPORT void CFArrayReplaceValues(CFMutableArrayRef theArray, CFRange range, const void **newValues,
                                    CFIndex newCount);
CF_EXPORT void CFArrayExchangeValuesAtIndices(CFMutableArrayRef theArray, CFIndex idx1, CFIndex idx2);
/* Stable: equal elements keep their order. */
CF_EXPORT void CFArraySortValues(CFMutableArrayRef theArray, CFRange range, CFComparatorFunction comparator,
                                 void *context);
CF_EXPORT void CFArrayAppendArray(CFMutableArrayRef theArray, CFArrayRef otherArray, CFRange otherRange);

/* True for arrays made by the CreateMutable functions. */
CF_EXPORT Boolean _CFArrayIsMutable(CFArrayRef theArray);

/* Reading an array in place, for callers that index arrays on every access
 * (the library's typed accessors): an array object starts with these
 * fields, and CFArray.cpp checks that its own layout agrees. */
#define _kCFArrayTypeID ((CFTypeID)19)
typedef struct __CFArrayPrefix {
    CFRuntimeBase _base;
    CFIndex _count;
    CFIndex _allocated;
    CFIndex _maxCount;
    const void **_values;
} _CFArrayPrefix;

/* CFArrayGetCount, in place for an array; anything else goes to the
 * function, which reports the misuse and answers 0. */
CF_INLINE CFIndex _CFArrayGetCountInPlace(CFArrayRef theArray) {
    if (_CFRuntimeGetTypeID(theArray) != _kCFArrayTypeID) return CFArrayGetCount(theArray);
    return ((const _CFArrayPrefix *)(const void *)theArray)->_count;
}

/* The value at idx of an array whose count the caller has just read with
 * _CFArrayGetCountInPlace and checked idx against. */
CF_INLINE const void *_CFArrayGetValueAtIndexInPlace(CFArrayRef theArray, CFIndex idx) {
    return ((const _CFArrayPrefix *)(const void *)theArray)->_values[idx];
}

CF_EXTERN_C_END

#endif /* HALVANE_CF_CFARRAY_H */
