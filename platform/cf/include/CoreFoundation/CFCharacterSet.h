/* CFCharacterSet.h: sets of Unicode code points (U+0000 to U+10FFFF), used to
 * classify characters when searching and trimming text. */
#ifndef HALVANE_CF_CFCHARACTERSET_H
#define HALVANE_CF_CFCHARACTERSET_H

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

typedef const struct __CFCharacterSet *CFCharacterSetRef;
typedef struct __CFCharacterSet *CFMutableCharacterSetRef;

typedef CFIndex CFCharacterSetPredefinedSet;
enum {
    kCFCharacterSetControl = 1,              /* general categories Cc and Cf */
    kCFCharacterSetWhitespace = 2,           /* U+0009, U+0020, U+00A0, U+1680, U+2000-U+200B, U+202F, U+205F, U+3000 */
    kCFCharacterSetWhitespaceAndNewline = 3, /* the above plus the newline set */
    kCFCharacterSetDecimalDigit = 4,         /* Nd */
    kCFCharacterSetLetter = 5,               /* L* and M* */
    kCFCharacterSetLowercaseLetter = 6,      /* Ll */
    kCFCharacterSetUppercaseLetter = 7,      /* Lu and Lt */
    kCFCharacterSetNonBase = 8,              /* M* */
    kCFCharacterSetDecomposable = 9,         /* characters with a canonical decomposition */
    kCFCharacterSetAlphaNumeric = 10,        /* L*, M* and N* */
    kCFCharacterSetPunctuation = 11,         /* P* */
    kCFCharacterSetIllegal = 12,             /* unassigned code points and noncharacters */
    kCFCharacterSetCapitalizedLetter = 13,   /* Lt */
    kCFCharacterSetSymbol = 14,              /* S* */
    kCFCharacterSetNewline = 15              /* U+000A-U+000D, U+0085, U+2028, U+2029 */
};

CF_EXPORT CFTypeID CFCharacterSetGetTypeID(void);

/* A shared set that is never freed (do not release it); NULL for an unknown
 * identifier. */
CF_EXPORT CFCharacterSetRef CFCharacterSetGetPredefined(CFCharacterSetPredefinedSet theSetIdentifier);

/* Creation. A surrogate pair in a string stands for its supplementary code
 * point; unpaired surrogates are ignored. A range outside U+0000 to U+10FFFF
 * is refused (NULL). */
CF_EXPORT CFCharacterSetRef CFCharacterSetCreateWithCharactersInString(CFAllocatorRef alloc, CFStringRef theString);
CF_EXPORT CFCharacterSetRef CFCharacterSetCreateWithCharactersInRange(CFAllocatorRef alloc, CFRange theRange);
/* The complement within U+0000 to U+10FFFF. */
CF_EXPORT CFCharacterSetRef CFCharacterSetCreateInvertedSet(CFAllocatorRef alloc, CFCharacterSetRef theSet);
CF_EXPORT CFCharacterSetRef CFCharacterSetCreateCopy(CFAllocatorRef alloc, CFCharacterSetRef theSet);
CF_EXPORT CFMutableCharacterSetRef CFCharacterSetCreateMutable(CFAllocatorRef alloc);
CF_EXPORT CFMutableCharacterSetRef CFCharacterSetCreateMutableCopy(CFAllocatorRef alloc, CFCharacterSetRef theSet);

/* Membership: one UTF-16 unit, or any code point. */
CF_EXPORT Boolean CFCharacterSetIsCharacterMember(CFCharacterSetRef theSet, UniChar theChar);
CF_EXPORT Boolean CFCharacterSetIsLongCharacterMember(CFCharacterSetRef theSet, UTF32Char theChar);

/* Changes (mutable sets only; other sets are reported on standard error and
 * left unchanged). */
CF_EXPORT void CFCharacterSetAddCharactersInRange(CFMutableCharacterSetRef theSet, CFRange theRange);
CF_EXPORT void CFCharacterSetRemoveCharactersInRange(CFMutableCharacterSetRef theSet, CFRange theRange);
CF_EXPORT void CFCharacterSetAddCharactersInString(CFMutableCharacterSetRef theSet, CFStringRef theString);
CF_EXPORT void CFCharacterSetRemoveCharactersInString(CFMutableCharacterSetRef theSet, CFStringRef theString);
CF_EXPORT void CFCharacterSetUnion(CFMutableCharacterSetRef theSet, CFCharacterSetRef theOtherSet);
CF_EXPORT void CFCharacterSetIntersect(CFMutableCharacterSetRef theSet, CFCharacterSetRef theOtherSet);
CF_EXPORT void CFCharacterSetInvert(CFMutableCharacterSetRef theSet);

CF_EXTERN_C_END

#endif /* HALVANE_CF_CFCHARACTERSET_H */
