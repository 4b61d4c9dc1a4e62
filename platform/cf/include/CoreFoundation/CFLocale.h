/* CFLocale.h: locales by identifier, and the calendar identifiers. */
#ifndef HALVANE_CF_CFLOCALE_H
#define HALVANE_CF_CFLOCALE_H

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

/* Also declared, identically, in CFString.h. */
typedef const struct __CFLocale *CFLocaleRef;

CF_EXPORT CFTypeID CFLocaleGetTypeID(void);

/* The root locale, identifier "". Shared; the caller does not own it. */
CF_EXPORT CFLocaleRef CFLocaleGetSystem(void);
/* The user's locale, from LC_ALL, LC_MESSAGES or LANG ("en_US" for C,
 * POSIX or nothing set). */
CF_EXPORT CFLocaleRef CFLocaleCopyCurrent(void);
/* The locale of the canonical form of the identifier; one object per
 * canonical identifier. NULL when the identifier has characters outside
 * printable ASCII. */
CF_EXPORT CFLocaleRef CFLocaleCreate(CFAllocatorRef allocator, CFStringRef localeIdentifier);
CF_EXPORT CFStringRef CFLocaleGetIdentifier(CFLocaleRef locale);

/* Language lowercase, script titlecase, region uppercase; "_" and "-"
 * kept as written; obsolete and three-letter language codes and legacy
 * language names replaced; a script the region implies dropped; keywords
 * after "@" sorted with lowercase keys. */
CF_EXPORT CFStringRef CFLocaleCreateCanonicalLocaleIdentifierFromString(CFAllocatorRef allocator,
                                                                        CFStringRef localeIdentifier);

typedef CFStringRef CFLocaleKey;
CF_EXPORT const CFLocaleKey kCFLocaleIdentifier;
CF_EXPORT const CFLocaleKey kCFLocaleLanguageCode;
CF_EXPORT const CFLocaleKey kCFLocaleCountryCode;
CF_EXPORT const CFLocaleKey kCFLocaleScriptCode;
CF_EXPORT const CFLocaleKey kCFLocaleVariantCode;
CF_EXPORT const CFLocaleKey kCFLocaleCalendarIdentifier;

/* The value of one of the keys above (NULL when the identifier has no such
 * part, and for other keys). Owned by the locale. */
CF_EXPORT CFTypeRef CFLocaleGetValue(CFLocaleRef locale, CFLocaleKey key);
/* The name of an identifier, language, country, script or calendar
 * identifier in the language of displayLocale; NULL when none is known. */
CF_EXPORT CFStringRef CFLocaleCopyDisplayNameForPropertyValue(CFLocaleRef displayLocale, CFLocaleKey key,
                                                              CFStringRef value);

typedef CFStringRef CFCalendarIdentifier;
CF_EXPORT const CFCalendarIdentifier kCFCalendarIdentifierGregorian;
CF_EXPORT const CFCalendarIdentifier kCFCalendarIdentifierBuddhist;
CF_EXPORT const CFCalendarIdentifier kCFCalendarIdentifierJapanese;
CF_EXPORT const CFCalendarIdentifier kCFCalendarIdentifierIslamic;
CF_EXPORT const CFCalendarIdentifier kCFCalendarIdentifierIslamicCivil;
CF_EXPORT const CFCalendarIdentifier kCFCalendarIdentifierIslamicUmmAlQura;
CF_EXPORT const CFCalendarIdentifier kCFCalendarIdentifierIslamicTabular;
CF_EXPORT const CFCalendarIdentifier kCFCalendarIdentifierHebrew;
CF_EXPORT const CFCalendarIdentifier kCFCalendarIdentifierChinese;
CF_EXPORT const CFCalendarIdentifier kCFCalendarIdentifierRepublicOfChina;
CF_EXPORT const CFCalendarIdentifier kCFCalendarIdentifierPersian;
CF_EXPORT const CFCalendarIdentifier kCFCalendarIdentifierIndian;
CF_EXPORT const CFCalendarIdentifier kCFCalendarIdentifierISO8601;
CF_EXPORT const CFCalendarIdentifier kCFCalendarIdentifierCoptic;
CF_EXPORT const CFCalendarIdentifier kCFCalendarIdentifierEthiopicAmeteMihret;
CF_EXPORT const CFCalendarIdentifier kCFCalendarIdentifierEthiopicAmeteAlem;

/* Older names of the same constants (the very same objects). */
CF_EXPORT const CFCalendarIdentifier kCFGregorianCalendar;
CF_EXPORT const CFCalendarIdentifier kCFBuddhistCalendar;
CF_EXPORT const CFCalendarIdentifier kCFJapaneseCalendar;
CF_EXPORT const CFCalendarIdentifier kCFIslamicCalendar;
CF_EXPORT const CFCalendarIdentifier kCFIslamicCivilCalendar;
CF_EXPORT const CFCalendarIdentifier kCFHebrewCalendar;
CF_EXPORT const CFCalendarIdentifier kCFChineseCalendar;
CF_EXPORT const CFCalendarIdentifier kCFRepublicOfChinaCalendar;
CF_EXPORT const CFCalendarIdentifier kCFPersianCalendar;
CF_EXPORT const CFCalendarIdentifier kCFIndianCalendar;
CF_EXPORT const CFCalendarIdentifier kCFISO8601Calendar;

CF_EXTERN_C_END

#endif /* HALVANE_CF_CFLOCALE_H */
