/* CFURL.h: URLs (an escaped URL string plus an optional base URL), their
 * components, path arithmetic, file-system paths, and the percent-escape
 * functions that work on strings. */
#ifndef HALVANE_CF_CFURL_H
#define HALVANE_CF_CFURL_H

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFString.h>

CF_EXTERN_C_BEGIN

typedef const struct __CFURL *CFURLRef;

typedef CFIndex CFURLPathStyle;
enum {
    kCFURLPOSIXPathStyle = 0,
    kCFURLHFSPathStyle = 1, /* not supported: creation with it returns NULL */
    kCFURLWindowsPathStyle = 2
};

CF_EXPORT CFTypeID CFURLGetTypeID(void);

/* Creation. CFURLCreateWithString returns NULL for a string that is not a
 * legal URL (illegal characters, a malformed percent escape, a second '#').
 * The other creation functions percent-escape illegal characters instead.
 * A relative URL keeps the absolute form of baseURL; a URL with a scheme
 * ignores it. */
CF_EXPORT CFURLRef CFURLCreateWithString(CFAllocatorRef allocator, CFStringRef URLString, CFURLRef baseURL);
CF_EXPORT CFURLRef CFURLCreateWithBytes(CFAllocatorRef allocator, const UInt8 *URLBytes, CFIndex length,
                                        CFStringEncoding encoding, CFURLRef baseURL);
CF_EXPORT CFURLRef CFURLCreateAbsoluteURLWithBytes(CFAllocatorRef alloc, const UInt8 *relativeURLBytes,
                                                   CFIndex length, CFStringEncoding encoding, CFURLRef baseURL,
                                                   Boolean useCompatibilityMode);
/* A file URL for a path: "file://" + the escaped path when it is absolute;
 * otherwise the escaped relative path with the current directory (or
 * baseURL) as its base. NULL for an empty path. */
CF_EXPORT CFURLRef CFURLCreateWithFileSystemPath(CFAllocatorRef allocator, CFStringRef filePath,
                                                 CFURLPathStyle pathStyle, Boolean isDirectory);
CF_EXPORT CFURLRef CFURLCreateWithFileSystemPathRelativeToBase(CFAllocatorRef allocator, CFStringRef filePath,
                                                               CFURLPathStyle pathStyle, Boolean isDirectory,
                                                               CFURLRef baseURL);

/* The URL itself: its string as given (relative part only) and its base. */
CF_EXPORT CFStringRef CFURLGetString(CFURLRef anURL);
CF_EXPORT CFURLRef CFURLGetBaseURL(CFURLRef anURL);
/* The URL resolved against its base (the URL itself, retained, without). */
CF_EXPORT CFURLRef CFURLCopyAbsoluteURL(CFURLRef relativeURL);
CF_EXPORT Boolean CFURLCanBeDecomposed(CFURLRef anURL);

/* Components. The scheme, the net location and its parts come from the base
 * when a relative URL has neither a scheme nor a net location of its own;
 * everything else is read from the URL's own string. */
CF_EXPORT CFStringRef CFURLCopyScheme(CFURLRef anURL);
CF_EXPORT CFStringRef CFURLCopyNetLocation(CFURLRef anURL);
CF_EXPORT CFStringRef CFURLCopyHostName(CFURLRef anURL);
CF_EXPORT SInt32 CFURLGetPortNumber(CFURLRef anURL); /* -1 when there is none */
CF_EXPORT CFStringRef CFURLCopyUserName(CFURLRef anURL);
CF_EXPORT CFStringRef CFURLCopyPassword(CFURLRef anURL);
/* Still percent-escaped; NULL for a URL that cannot be decomposed. */
CF_EXPORT CFStringRef CFURLCopyPath(CFURLRef anURL);
CF_EXPORT Boolean CFURLHasDirectoryPath(CFURLRef anURL);
/* charactersToLeaveEscaped as for CFURLCreateStringByReplacingPercentEscapes
 * (NULL: the text as it is in the URL). */
CF_EXPORT CFStringRef CFURLCopyQueryString(CFURLRef anURL, CFStringRef charactersToLeaveEscaped);
CF_EXPORT CFStringRef CFURLCopyFragment(CFURLRef anURL, CFStringRef charactersToLeaveEscaped);
CF_EXPORT CFStringRef CFURLCopyResourceSpecifier(CFURLRef anURL);
CF_EXPORT CFStringRef CFURLCopyLastPathComponent(CFURLRef url);
CF_EXPORT CFStringRef CFURLCopyPathExtension(CFURLRef url);
/* The path of the URL (not resolved against its base), unescaped. */
CF_EXPORT CFStringRef CFURLCopyFileSystemPath(CFURLRef anURL, CFURLPathStyle pathStyle);

/* Path arithmetic: new URLs sharing the base; NULL when the URL has no
 * path (it cannot be decomposed). */
CF_EXPORT CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef allocator, CFURLRef url,
                                                         CFStringRef pathComponent, Boolean isDirectory);
CF_EXPORT CFURLRef CFURLCreateCopyDeletingLastPathComponent(CFAllocatorRef allocator, CFURLRef url);
CF_EXPORT CFURLRef CFURLCreateCopyAppendingPathExtension(CFAllocatorRef allocator, CFURLRef url,
                                                         CFStringRef extension);
CF_EXPORT CFURLRef CFURLCreateCopyDeletingPathExtension(CFAllocatorRef allocator, CFURLRef url);

/* Percent escapes in strings. Escapes are written with uppercase hex digits.
 * Replacing: charactersToLeaveEscaped NULL replaces nothing, "" replaces
 * every escape; NULL is returned for a malformed escape or bytes that are
 * not valid in the encoding. Adding: NULL when a character to escape cannot
 * be represented in the encoding. */
CF_EXPORT CFStringRef CFURLCreateStringByReplacingPercentEscapes(CFAllocatorRef allocator, CFStringRef originalString,
                                                                 CFStringRef charactersToLeaveEscaped);
CF_EXPORT CFStringRef CFURLCreateStringByReplacingPercentEscapesUsingEncoding(CFAllocatorRef allocator,
                                                                              CFStringRef origString,
                                                                              CFStringRef charsToLeaveEscaped,
                                                                              CFStringEncoding encoding);
CF_EXPORT CFStringRef CFURLCreateStringByAddingPercentEscapes(CFAllocatorRef allocator, CFStringRef originalString,
                                                              CFStringRef charactersToLeaveUnescaped,
                                                              CFStringRef legalURLCharactersToBeEscaped,
                                                              CFStringEncoding encoding);

CF_EXTERN_C_END

#endif /* HALVANE_CF_CFURL_H */
