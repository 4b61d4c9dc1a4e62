/* CFDate.h: absolute time (seconds since 2001-01-01 00:00:00 UTC) and dates. */
#ifndef HALVANE_CF_CFDATE_H
#define HALVANE_CF_CFDATE_H

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

typedef double CFTimeInterval;
typedef CFTimeInterval CFAbsoluteTime;

CF_EXPORT const CFTimeInterval kCFAbsoluteTimeIntervalSince1970; /* 978307200.0 */
CF_EXPORT const CFTimeInterval kCFAbsoluteTimeIntervalSince1904; /* 3061152000.0 */

CF_EXPORT CFAbsoluteTime CFAbsoluteTimeGetCurrent(void);

typedef const struct __CFDate *CFDateRef;
typedef const struct __CFTimeZone *CFTimeZoneRef;

CF_EXPORT CFTypeID CFDateGetTypeID(void);
CF_EXPORT CFDateRef CFDateCreate(CFAllocatorRef allocator, CFAbsoluteTime at);
CF_EXPORT CFAbsoluteTime CFDateGetAbsoluteTime(CFDateRef theDate);
CF_EXPORT CFTimeInterval CFDateGetTimeIntervalSinceDate(CFDateRef theDate, CFDateRef otherDate);
CF_EXPORT CFComparisonResult CFDateCompare(CFDateRef theDate, CFDateRef otherDate, void *context);

/* Proleptic Gregorian calendar, astronomical year numbering. */
typedef struct {
    SInt32 year;
    SInt8 month;
    SInt8 day;
    SInt8 hour;
    SInt8 minute;
    double second;
} CFGregorianDate;

typedef struct {
    SInt32 years;
    SInt32 months;
    SInt32 days;
    SInt32 hours;
    SInt32 minutes;
    double seconds;
} CFGregorianUnits;

typedef CFOptionFlags CFGregorianUnitFlags;
enum {
    kCFGregorianUnitsYears = (1UL << 0),
    kCFGregorianUnitsMonths = (1UL << 1),
    kCFGregorianUnitsDays = (1UL << 2),
    kCFGregorianUnitsHours = (1UL << 3),
    kCFGregorianUnitsMinutes = (1UL << 4),
    kCFGregorianUnitsSeconds = (1UL << 5),
    kCFGregorianAllUnits = 0x00FFFFFF
};

/* Checks only the units asked for. */
CF_EXPORT Boolean CFGregorianDateIsValid(CFGregorianDate gdate, CFOptionFlags unitFlags);

/* Conversions between absolute times and Gregorian dates in a time zone
 * (NULL: UTC). Fields are not range-checked: day 0 or hour 25 simply add
 * up. */
CF_EXPORT CFAbsoluteTime CFGregorianDateGetAbsoluteTime(CFGregorianDate gdate, CFTimeZoneRef tz);
CF_EXPORT CFGregorianDate CFAbsoluteTimeGetGregorianDate(CFAbsoluteTime at, CFTimeZoneRef tz);
/* Years, months and days move the date on the calendar, keeping the time
 * of day; hours, minutes and seconds are then added as elapsed time. */
CF_EXPORT CFAbsoluteTime CFAbsoluteTimeAddGregorianUnits(CFAbsoluteTime at, CFTimeZoneRef tz, CFGregorianUnits units);
/* 1 (Monday) to 7 (Sunday). */
CF_EXPORT SInt32 CFAbsoluteTimeGetDayOfWeek(CFAbsoluteTime at, CFTimeZoneRef tz);
/* 1 to 366. */
CF_EXPORT SInt32 CFAbsoluteTimeGetDayOfYear(CFAbsoluteTime at, CFTimeZoneRef tz);

CF_EXTERN_C_END

#endif /* HALVANE_CF_CFDATE_H */
