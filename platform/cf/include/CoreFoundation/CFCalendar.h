/* CFCalendar.h: calendars that split absolute times into fields and build
 * them back, in a time zone. */
#ifndef HALVANE_CF_CFCALENDAR_H
#define HALVANE_CF_CFCALENDAR_H

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFLocale.h>
#include <CoreFoundation/CFTimeZone.h>

CF_EXTERN_C_BEGIN

typedef struct __CFCalendar *CFCalendarRef;

typedef CFOptionFlags CFCalendarUnit;
enum {
    kCFCalendarUnitEra = (1UL << 1),
    kCFCalendarUnitYear = (1UL << 2),
    kCFCalendarUnitMonth = (1UL << 3),
    kCFCalendarUnitDay = (1UL << 4),
    kCFCalendarUnitHour = (1UL << 5),
    kCFCalendarUnitMinute = (1UL << 6),
    kCFCalendarUnitSecond = (1UL << 7),
    kCFCalendarUnitWeekday = (1UL << 9),
    kCFCalendarUnitWeekdayOrdinal = (1UL << 10),
    kCFCalendarUnitQuarter = (1UL << 11),
    kCFCalendarUnitWeekOfMonth = (1UL << 12),
    kCFCalendarUnitWeekOfYear = (1UL << 13),
    kCFCalendarUnitYearForWeekOfYear = (1UL << 14)
};

/* CFCalendarAddComponents: roll each field within its larger unit instead
 * of carrying into it. */
enum { kCFCalendarComponentsWrap = (1UL << 0) };

CF_EXPORT CFTypeID CFCalendarGetTypeID(void);

/* A new calendar of the locale's preferred kind, in the current locale and
 * the default time zone. */
CF_EXPORT CFCalendarRef CFCalendarCopyCurrent(void);
/* A calendar of one of the identifiers of CFLocale.h (NULL for others), in
 * the system locale and the default time zone. */
CF_EXPORT CFCalendarRef CFCalendarCreateWithIdentifier(CFAllocatorRef allocator, CFCalendarIdentifier identifier);
CF_EXPORT CFCalendarIdentifier CFCalendarGetIdentifier(CFCalendarRef calendar);

CF_EXPORT CFLocaleRef CFCalendarCopyLocale(CFCalendarRef calendar);
/* NULL is ignored. Week settings not set explicitly follow the new
 * locale. */
CF_EXPORT void CFCalendarSetLocale(CFCalendarRef calendar, CFLocaleRef locale);
CF_EXPORT CFTimeZoneRef CFCalendarCopyTimeZone(CFCalendarRef calendar);
/* NULL sets the default time zone. */
CF_EXPORT void CFCalendarSetTimeZone(CFCalendarRef calendar, CFTimeZoneRef tz);
/* 1 (Sunday) to 7 (Saturday). */
CF_EXPORT CFIndex CFCalendarGetFirstWeekday(CFCalendarRef calendar);
CF_EXPORT void CFCalendarSetFirstWeekday(CFCalendarRef calendar, CFIndex wkdy);
CF_EXPORT CFIndex CFCalendarGetMinimumDaysInFirstWeek(CFCalendarRef calendar);
CF_EXPORT void CFCalendarSetMinimumDaysInFirstWeek(CFCalendarRef calendar, CFIndex mwd);

/* The range a smaller unit takes within the larger unit containing at
 * (days of a month: {1, 28...31}); {kCFNotFound, kCFNotFound} for pairs
 * that do not nest. */
CF_EXPORT CFRange CFCalendarGetRangeOfUnit(CFCalendarRef calendar, CFCalendarUnit smallerUnit,
                                           CFCalendarUnit biggerUnit, CFAbsoluteTime at);
/* The position, from 1, of the smaller unit containing at within the
 * larger one; kCFNotFound for pairs that do not nest. */
CF_EXPORT CFIndex CFCalendarGetOrdinalityOfUnit(CFCalendarRef calendar, CFCalendarUnit smallerUnit,
                                                CFCalendarUnit biggerUnit, CFAbsoluteTime at);

/* The component functions take one character per field, followed by one
 * argument per character: 'G' era, 'y' year, 'M' month (1-based), 'l' leap
 * month flag, 'd' day, 'D' day of year, 'E' weekday (1 = Sunday), 'F'
 * weekday ordinal, 'w' week of year, 'W' week of month, 'Y' year for week
 * of year, 'a' AM/PM, 'h' hour (0...11), 'H' hour (0...23), 'm' minute, 's'
 * second. An unknown character makes the call fail (false).
 *
 * Compose: int values; fields not given default to year 1, January 1,
 * 00:00:00, and out-of-range values carry over. */
CF_EXPORT Boolean CFCalendarComposeAbsoluteTime(CFCalendarRef calendar, CFAbsoluteTime *at,
                                                const char *componentDesc, ...);
/* Decompose: int * outputs. */
CF_EXPORT Boolean CFCalendarDecomposeAbsoluteTime(CFCalendarRef calendar, CFAbsoluteTime at,
                                                  const char *componentDesc, ...);
/* Add: int amounts, applied in the order given; the fraction of a second
 * of *at is kept. */
CF_EXPORT Boolean CFCalendarAddComponents(CFCalendarRef calendar, CFAbsoluteTime *at, CFOptionFlags options,
                                          const char *componentDesc, ...);
/* Difference: int * outputs, each the whole number of its units left after
 * the larger ones listed before it. */
CF_EXPORT Boolean CFCalendarGetComponentDifference(CFCalendarRef calendar, CFAbsoluteTime startingAT,
                                                   CFAbsoluteTime resultAT, CFOptionFlags options,
                                                   const char *componentDesc, ...);

CF_EXTERN_C_END

#endif /* HALVANE_CF_CFCALENDAR_H */
