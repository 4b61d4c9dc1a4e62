/* CFError.h: an error domain, a code and a user-information dictionary. */
#ifndef HALVANE_CF_CFERROR_H
#define HALVANE_CF_CFERROR_H

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFDictionary.h>

CF_EXTERN_C_BEGIN

typedef struct __CFError *CFErrorRef;
typedef CFStringRef CFErrorDomain;

CF_EXPORT const CFErrorDomain kCFErrorDomainPOSIX;    /* "NSPOSIXErrorDomain" */
CF_EXPORT const CFErrorDomain kCFErrorDomainOSStatus; /* "NSOSStatusErrorDomain" */
CF_EXPORT const CFErrorDomain kCFErrorDomainMach;     /* "NSMachErrorDomain" */
CF_EXPORT const CFErrorDomain kCFErrorDomainCocoa;    /* "NSCocoaErrorDomain" */

CF_EXPORT const CFStringRef kCFErrorLocalizedDescriptionKey;        /* "NSLocalizedDescription" */
CF_EXPORT const CFStringRef kCFErrorLocalizedFailureKey;            /* "NSLocalizedFailure" */
CF_EXPORT const CFStringRef kCFErrorLocalizedFailureReasonKey;      /* "NSLocalizedFailureReason" */
CF_EXPORT const CFStringRef kCFErrorLocalizedRecoverySuggestionKey; /* "NSLocalizedRecoverySuggestion" */
CF_EXPORT const CFStringRef kCFErrorDescriptionKey;                 /* "NSDescription" */
CF_EXPORT const CFStringRef kCFErrorDebugDescriptionKey;            /* "NSDebugDescription" */
CF_EXPORT const CFStringRef kCFErrorUnderlyingErrorKey;             /* "NSUnderlyingError" */
CF_EXPORT const CFStringRef kCFErrorURLKey;                         /* "NSURL" */
CF_EXPORT const CFStringRef kCFErrorFilePathKey;                    /* "NSFilePath" */

CF_EXPORT CFTypeID CFErrorGetTypeID(void);
/* NULL when domain is NULL. userInfo is copied; NULL gives an empty one. */
CF_EXPORT CFErrorRef CFErrorCreate(CFAllocatorRef allocator, CFErrorDomain domain, CFIndex code,
                                   CFDictionaryRef userInfo);
CF_EXPORT CFErrorRef CFErrorCreateWithUserInfoKeysAndValues(CFAllocatorRef allocator, CFErrorDomain domain,
                                                            CFIndex code, const void *const *userInfoKeys,
                                                            const void *const *userInfoValues,
                                                            CFIndex numUserInfoValues);
CF_EXPORT CFErrorDomain CFErrorGetDomain(CFErrorRef err);
CF_EXPORT CFIndex CFErrorGetCode(CFErrorRef err);
/* Never NULL for a valid error: an empty dictionary when none was given. */
CF_EXPORT CFDictionaryRef CFErrorCopyUserInfo(CFErrorRef err);
CF_EXPORT CFStringRef CFErrorCopyDescription(CFErrorRef err);
CF_EXPORT CFStringRef CFErrorCopyFailureReason(CFErrorRef err);
CF_EXPORT CFStringRef CFErrorCopyRecoverySuggestion(CFErrorRef err);

CF_EXTERN_C_END

#endif /* HALVANE_CF_CFERROR_H */
