/* CFString.h: immutable and mutable Unicode text, stored as UTF-16 units.
 * Lengths, indices and ranges count UTF-16 units. */
#ifndef HALVANE_CF_CFSTRING_H
#define HALVANE_CF_CFSTRING_H

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFCharacterSet.h>
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFDictionary.h>

CF_EXTERN_C_BEGIN

/* Declared here as well as with the locale functions: a repeated typedef of
 * the same type is valid C11 and C++, so either header may come first. */
typedef const struct __CFLocale *CFLocaleRef;

typedef UInt32 CFStringEncoding;

/* Also declared, identically, in CFLocale.h. */
typedef const struct __CFLocale *CFLocaleRef;

enum {
    kCFStringEncodingMacRoman = 0,
    kCFStringEncodingWindowsLatin1 = 0x0500,
    kCFStringEncodingISOLatin1 = 0x0201,
    kCFStringEncodingNextStepLatin = 0x0B01,
    kCFStringEncodingASCII = 0x0600,
    kCFStringEncodingUnicode = 0x0100,
    kCFStringEncodingUTF8 = 0x08000100,
    kCFStringEncodingNonLossyASCII = 0x0BFF,
    kCFStringEncodingUTF16 = 0x0100,
    kCFStringEncodingUTF16BE = 0x10000100,
    kCFStringEncodingUTF16LE = 0x14000100,
    kCFStringEncodingUTF32 = 0x0c000100,
    kCFStringEncodingUTF32BE = 0x18000100,
    kCFStringEncodingUTF32LE = 0x1c000100
};
#define kCFStringEncodingInvalidId (0xffffffffU)

typedef CFOptionFlags CFStringCompareFlags;
enum {
    kCFCompareCaseInsensitive = 1,
    kCFCompareBackwards = 4,
    kCFCompareAnchored = 8,
    kCFCompareNonliteral = 16,
    kCFCompareLocalized = 32,
    kCFCompareNumerically = 64,
    kCFCompareDiacriticInsensitive = 128,
    kCFCompareWidthInsensitive = 256,
    kCFCompareForcedOrdering = 512
};

CF_EXPORT CFTypeID CFStringGetTypeID(void);

/* Constant strings. CFSTR("text") gives one immortal string per distinct
 * literal for the life of the process; the bytes are read as UTF-8 and the
 * length comes from the literal (embedded NULs are kept). */
CF_EXPORT CFStringRef __CFStringMakeConstantString(const char *cStr, CFIndex length);

#if defined(__cplusplus) && __cplusplus >= 202002L
} /* extern "C" */
namespace halvane_cfstr_detail {
template <unsigned long N>
struct Literal {
    char bytes[N];
    constexpr Literal(const char (&text)[N]) {
        for (unsigned long i = 0; i < N; ++i) bytes[i] = text[i];
    }
};
/* One interned object per literal; after the first call a use costs one
 * check of a function-local static. */
template <Literal L>
inline CFStringRef constant() {
    static const CFStringRef string = __CFStringMakeConstantString(L.bytes, (CFIndex)sizeof(L.bytes) - 1);
    return string;
}
} /* namespace halvane_cfstr_detail */
#define CFSTR(cStr) (::halvane_cfstr_detail::constant<cStr>())
extern "C" {
#else
#define CFSTR(cStr) __CFStringMakeConstantString("" cStr "", (CFIndex)sizeof(cStr) - 1)
#endif

/* Creation. With the default allocator an empty result may be a shared,
 * immortal empty string. */
CF_EXPORT CFStringRef CFStringCreateWithBytes(CFAllocatorRef alloc, const UInt8 *bytes, CFIndex numBytes,
                                              CFStringEncoding encoding, Boolean isExternalRepresentation);
CF_EXPORT CFStringRef CFStringCreateWithBytesNoCopy(CFAllocatorRef alloc, const UInt8 *bytes, CFIndex numBytes,
                                                    CFStringEncoding encoding, Boolean isExternalRepresentation,
                                                    CFAllocatorRef contentsDeallocator);
CF_EXPORT CFStringRef CFStringCreateWithCString(CFAllocatorRef alloc, const char *cStr, CFStringEncoding encoding);
/* Pure ASCII text is referenced, not copied; contentsDeallocator frees it
 * when the string goes away (NULL: the default allocator,
 * kCFAllocatorNull: never). Other text is decoded into a private copy. */
CF_EXPORT CFStringRef CFStringCreateWithCStringNoCopy(CFAllocatorRef alloc, const char *cStr,
                                                      CFStringEncoding encoding, CFAllocatorRef contentsDeallocator);
CF_EXPORT CFStringRef CFStringCreateWithCharacters(CFAllocatorRef alloc, const UniChar *chars, CFIndex numChars);
CF_EXPORT CFStringRef CFStringCreateWithCharactersNoCopy(CFAllocatorRef alloc, const UniChar *chars,
                                                         CFIndex numChars, CFAllocatorRef contentsDeallocator);
CF_EXPORT CFStringRef CFStringCreateCopy(CFAllocatorRef alloc, CFStringRef theString);
/* maxLength is a capacity hint, not a limit. */
CF_EXPORT CFMutableStringRef CFStringCreateMutable(CFAllocatorRef alloc, CFIndex maxLength);
CF_EXPORT CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef alloc, CFIndex maxLength,
                                                       CFStringRef theString);
CF_EXPORT CFStringRef CFStringCreateFromExternalRepresentation(CFAllocatorRef alloc, CFDataRef data,
                                                               CFStringEncoding encoding);

/* Formatting: printf conversions plus %@ for objects. */
CF_EXPORT CFStringRef CFStringCreateWithFormat(CFAllocatorRef alloc, CFDictionaryRef formatOptions,
                                               CFStringRef format, ...);
CF_EXPORT CFStringRef CFStringCreateWithFormatAndArguments(CFAllocatorRef alloc, CFDictionaryRef formatOptions,
                                                           CFStringRef format, va_list arguments);

/* Access */
CF_EXPORT CFIndex CFStringGetLength(CFStringRef theString);
CF_EXPORT UniChar CFStringGetCharacterAtIndex(CFStringRef theString, CFIndex idx);
CF_EXPORT void CFStringGetCharacters(CFStringRef theString, CFRange range, UniChar *buffer);
/* A pointer to the UTF-16 units when the string stores them so, else NULL. */
CF_EXPORT const UniChar *CFStringGetCharactersPtr(CFStringRef theString);
/* A pointer to NUL-terminated text in encoding when the string can hand
 * one out without conversion, else NULL. */
CF_EXPORT const char *CFStringGetCStringPtr(CFStringRef theString, CFStringEncoding encoding);
/* Writes the text and a NUL; false when it does not fit or cannot be
 * converted. */
CF_EXPORT Boolean CFStringGetCString(CFStringRef theString, char *buffer, CFIndex bufferSize,
                                     CFStringEncoding encoding);
/* Converts range into buffer (NULL: measure only). Returns the number of
 * UTF-16 units converted; *usedBufLen receives the bytes written. lossByte
 * 0 stops at the first character the encoding cannot hold. */
CF_EXPORT CFIndex CFStringGetBytes(CFStringRef theString, CFRange range, CFStringEncoding encoding, UInt8 lossByte,
                                   Boolean isExternalRepresentation, UInt8 *buffer, CFIndex maxBufLen,
                                   CFIndex *usedBufLen);
/* The whole text in encoding, with a byte-order mark for UTF-16 and UTF-32;
 * NULL when something could not be converted and lossByte is 0. */
CF_EXPORT CFDataRef CFStringCreateExternalRepresentation(CFAllocatorRef alloc, CFStringRef theString,
                                                         CFStringEncoding encoding, UInt8 lossByte);

/* Comparison. Without options: UTF-16 code-unit order. */
CF_EXPORT CFComparisonResult CFStringCompare(CFStringRef theString1, CFStringRef theString2,
                                             CFStringCompareFlags compareOptions);
CF_EXPORT CFComparisonResult CFStringCompareWithOptions(CFStringRef theString1, CFStringRef theString2,
                                                        CFRange rangeToCompare, CFStringCompareFlags compareOptions);

/* Searching. An empty string to find, or an empty range, is never found.
 * Case-insensitive, nonliteral, diacritic- and width-insensitive matches
 * may differ in length from the string to find ("ss" is found for "\u00DF").
 * With kCFCompareAnchored the match must start at the start of the range
 * (end at its end with kCFCompareBackwards). kCFCompareNumerically and
 * kCFCompareLocalized are ignored: no search here depends on a locale, and
 * the locale argument (NULL allowed) changes nothing. */
CF_EXPORT CFRange CFStringFind(CFStringRef theString, CFStringRef stringToFind, CFStringCompareFlags compareOptions);
CF_EXPORT Boolean CFStringFindWithOptions(CFStringRef theString, CFStringRef stringToFind, CFRange rangeToSearch,
                                          CFStringCompareFlags searchOptions, CFRange *result);
CF_EXPORT Boolean CFStringFindWithOptionsAndLocale(CFStringRef theString, CFStringRef stringToFind,
                                                   CFRange rangeToSearch, CFStringCompareFlags searchOptions,
                                                   CFLocaleRef locale, CFRange *result);
/* The first (last, with kCFCompareBackwards) character of the range that is
 * in theSet; a surrogate pair counts as its code point and is found as a
 * range of two units. Only kCFCompareBackwards and kCFCompareAnchored apply. */
CF_EXPORT Boolean CFStringFindCharacterFromSet(CFStringRef theString, CFCharacterSetRef theSet, CFRange rangeToSearch,
                                               CFStringCompareFlags searchOptions, CFRange *result);
/* False for an empty prefix or suffix. */
CF_EXPORT Boolean CFStringHasPrefix(CFStringRef theString, CFStringRef prefix);
CF_EXPORT Boolean CFStringHasSuffix(CFStringRef theString, CFStringRef suffix);
/* The grapheme cluster (a surrogate pair, a base with its combining marks,
 * ...) that contains the unit at theIndex. */
CF_EXPORT CFRange CFStringGetRangeOfComposedCharactersAtIndex(CFStringRef theString, CFIndex theIndex);

/* Substrings, splitting and joining. Splitting keeps empty pieces; when the
 * separator does not occur the array holds theString itself. */
CF_EXPORT CFStringRef CFStringCreateWithSubstring(CFAllocatorRef alloc, CFStringRef str, CFRange range);
CF_EXPORT CFArrayRef CFStringCreateArrayBySeparatingStrings(CFAllocatorRef alloc, CFStringRef theString,
                                                            CFStringRef separatorString);
CF_EXPORT CFStringRef CFStringCreateByCombiningStrings(CFAllocatorRef alloc, CFArrayRef theArray,
                                                       CFStringRef separatorString);

/* Mutation (mutable strings only; an immutable receiver is reported on
 * standard error and left unchanged). */
CF_EXPORT void CFStringAppend(CFMutableStringRef theString, CFStringRef appendedString);
CF_EXPORT void CFStringAppendCharacters(CFMutableStringRef theString, const UniChar *chars, CFIndex numChars);
CF_EXPORT void CFStringAppendCString(CFMutableStringRef theString, const char *cStr, CFStringEncoding encoding);
CF_EXPORT void CFStringAppendFormat(CFMutableStringRef theString, CFDictionaryRef formatOptions, CFStringRef format,
                                   ...);
CF_EXPORT void CFStringAppendFormatAndArguments(CFMutableStringRef theString, CFDictionaryRef formatOptions,
                                                CFStringRef format, va_list arguments);
CF_EXPORT void CFStringInsert(CFMutableStringRef str, CFIndex idx, CFStringRef insertedStr);
CF_EXPORT void CFStringDelete(CFMutableStringRef theString, CFRange range);
CF_EXPORT void CFStringReplace(CFMutableStringRef theString, CFRange range, CFStringRef replacement);
CF_EXPORT void CFStringReplaceAll(CFMutableStringRef theString, CFStringRef replacement);
/* Replaces every match (as CFStringFindWithOptions finds them) in the range;
 * returns how many were replaced. */
CF_EXPORT CFIndex CFStringFindAndReplace(CFMutableStringRef theString, CFStringRef stringToFind,
                                         CFStringRef replacementString, CFRange rangeToSearch,
                                         CFStringCompareFlags compareOptions);
/* Removes every occurrence of trimString repeated at the start and the end. */
CF_EXPORT void CFStringTrim(CFMutableStringRef theString, CFStringRef trimString);
/* Removes whitespace and newlines (kCFCharacterSetWhitespaceAndNewline) at
 * both ends. */
CF_EXPORT void CFStringTrimWhitespace(CFMutableStringRef theString);

/* Case mapping with the full Unicode mappings (the length may change: the
 * German sharp s uppercases to "SS"). A locale whose language is az, lt, tr, nl or
 * el brings its language's rules; any other locale, or NULL, none.
 * Capitalizing titlecases the first letter of each word and lowercases the
 * rest; apostrophes and other case-ignorable characters do not end a
 * word. */
CF_EXPORT void CFStringUppercase(CFMutableStringRef theString, CFLocaleRef locale);
CF_EXPORT void CFStringLowercase(CFMutableStringRef theString, CFLocaleRef locale);
CF_EXPORT void CFStringCapitalize(CFMutableStringRef theString, CFLocaleRef locale);

/* Numbers in text: leading spaces skipped, ASCII digits only. */
CF_EXPORT SInt32 CFStringGetIntValue(CFStringRef str);
CF_EXPORT double CFStringGetDoubleValue(CFStringRef str);

/* Encodings */
CF_EXPORT CFStringEncoding CFStringGetSystemEncoding(void);
CF_EXPORT Boolean CFStringIsEncodingAvailable(CFStringEncoding encoding);
CF_EXPORT CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding);

CF_EXTERN_C_END

#endif /* HALVANE_CF_CFSTRING_H */
