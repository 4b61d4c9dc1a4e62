/* CFPropertyList.h: property lists (strings, data, numbers, booleans, dates,
 * arrays and dictionaries) to and from their XML text, validity checks and
 * deep copies. */
#ifndef HALVANE_CF_CFPROPERTYLIST_H
#define HALVANE_CF_CFPROPERTYLIST_H

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFError.h>
#include <CoreFoundation/CFString.h>

CF_EXTERN_C_BEGIN

typedef CFOptionFlags CFPropertyListMutabilityOptions;
enum {
    kCFPropertyListImmutable = 0,
    kCFPropertyListMutableContainers = 1,
    kCFPropertyListMutableContainersAndLeaves = 2
};

typedef CFIndex CFPropertyListFormat;
enum {
    kCFPropertyListOpenStepFormat = 1,
    kCFPropertyListXMLFormat_v1_0 = 100,
    kCFPropertyListBinaryFormat_v1_0 = 200
};

/* Codes of the errors (domain kCFErrorDomainCocoa) that reading and writing
 * return; the message is under kCFErrorDebugDescriptionKey. */
enum {
    kCFPropertyListReadCorruptError = 3840,
    kCFPropertyListWriteStreamError = 3851
};

/* True when plist, and everything it contains, can be written in format. */
CF_EXPORT Boolean CFPropertyListIsValid(CFPropertyListRef plist, CFPropertyListFormat format);

/* The XML text of plist (UTF-8). Only kCFPropertyListXMLFormat_v1_0 is
 * written on this platform: the other formats give NULL and an error.
 * options must be 0. *error (when error is not NULL) receives a new error
 * on failure and NULL on success. */
CF_EXPORT CFDataRef CFPropertyListCreateData(CFAllocatorRef allocator, CFPropertyListRef propertyList,
                                             CFPropertyListFormat format, CFOptionFlags options, CFErrorRef *error);
/* Deprecated: CFPropertyListCreateData in the XML format, without the error. */
CF_EXPORT CFDataRef CFPropertyListCreateXMLData(CFAllocatorRef allocator, CFPropertyListRef propertyList);

/* Reads an XML property list, or an old-style (OpenStep) one when the text
 * is not XML. options is one of the mutability options. *format receives
 * the format read; *error a new error on failure (NULL on success). */
CF_EXPORT CFPropertyListRef CFPropertyListCreateWithData(CFAllocatorRef allocator, CFDataRef data,
                                                         CFOptionFlags options, CFPropertyListFormat *format,
                                                         CFErrorRef *error);
/* Deprecated: as CFPropertyListCreateWithData; *errorString receives the
 * message of the error (+1) on failure and NULL on success. */
CF_EXPORT CFPropertyListRef CFPropertyListCreateFromXMLData(CFAllocatorRef allocator, CFDataRef xmlData,
                                                            CFOptionFlags mutabilityOption, CFStringRef *errorString);

/* A copy of plist with new containers (mutable as mutabilityOption says);
 * NULL when plist is not a valid property list. */
CF_EXPORT CFPropertyListRef CFPropertyListCreateDeepCopy(CFAllocatorRef allocator, CFPropertyListRef propertyList,
                                                         CFOptionFlags mutabilityOption);

CF_EXTERN_C_END

#endif /* HALVANE_CF_CFPROPERTYLIST_H */
