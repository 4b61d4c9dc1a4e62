/* CFURLAccess.h: reading and writing the resource a URL names (file: URLs,
 * and data: URLs for reading). */
#ifndef HALVANE_CF_CFURLACCESS_H
#define HALVANE_CF_CFURLACCESS_H

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFURL.h>

CF_EXTERN_C_BEGIN

typedef CFIndex CFURLError;
enum {
    kCFURLUnknownError = -10,
    kCFURLUnknownSchemeError = -11,
    kCFURLResourceNotFoundError = -12,
    kCFURLResourceAccessViolationError = -13,
    kCFURLRemoteHostUnavailableError = -14,
    kCFURLImproperArgumentsError = -15,
    kCFURLUnknownPropertyKeyError = -16,
    kCFURLPropertyKeyUnavailableError = -17,
    kCFURLTimeoutError = -18
};

/* Property keys; each string equals its own name. */
CF_EXPORT const CFStringRef kCFURLFileExists;              /* CFBoolean */
CF_EXPORT const CFStringRef kCFURLFileDirectoryContents;   /* CFArray of URLs, directories only */
CF_EXPORT const CFStringRef kCFURLFileLength;              /* CFNumber, SInt64 */
CF_EXPORT const CFStringRef kCFURLFileLastModificationTime; /* CFDate */
CF_EXPORT const CFStringRef kCFURLFilePOSIXMode;           /* CFNumber, SInt32 */
CF_EXPORT const CFStringRef kCFURLFileOwnerID;             /* CFNumber, SInt32 */

/* Reads the whole resource into *resourceData and the properties named in
 * desiredProperties (NULL: all of them) into *properties. Returns false
 * when the data could not be read; *errorCode (0 on success) tells why. */
CF_EXPORT Boolean CFURLCreateDataAndPropertiesFromResource(CFAllocatorRef alloc, CFURLRef url,
                                                           CFDataRef *resourceData, CFDictionaryRef *properties,
                                                           CFArrayRef desiredProperties, SInt32 *errorCode);
/* Writes dataToWrite to a file: URL (a directory URL with data creates the
 * directory), then applies kCFURLFilePOSIXMode from propertiesToWrite. An
 * existing file is replaced atomically: readers see the old or the new
 * contents, never a mixture, and a failed write leaves the old file. */
CF_EXPORT Boolean CFURLWriteDataAndPropertiesToResource(CFURLRef url, CFDataRef dataToWrite,
                                                        CFDictionaryRef propertiesToWrite, SInt32 *errorCode);

CF_EXTERN_C_END

#endif /* HALVANE_CF_CFURLACCESS_H */
