/* CFTimeZone.h: time zones of the tz database and fixed offsets from GMT. */
#ifndef HALVANE_CF_CFTIMEZONE_H
#define HALVANE_CF_CFTIMEZONE_H

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFDate.h>

CF_EXTERN_C_BEGIN

/* CFTimeZoneRef is declared in CFDate.h. */

CF_EXPORT CFTypeID CFTimeZoneGetTypeID(void);

/* The zone of the machine: TZFILE, else TZ, else the zone /etc/localtime
 * links to, else what the C library reports, else GMT. Worked out once and
 * kept until CFTimeZoneResetSystem. */
CF_EXPORT CFTimeZoneRef CFTimeZoneCopySystem(void);
CF_EXPORT void CFTimeZoneResetSystem(void);
/* The zone given to CFTimeZoneSetDefault, else the system zone. */
CF_EXPORT CFTimeZoneRef CFTimeZoneCopyDefault(void);
CF_EXPORT void CFTimeZoneSetDefault(CFTimeZoneRef tz);

/* A fixed offset, rounded to the minute, named "GMT" or "GMT+HHMM" /
 * "GMT-HHMM"; NULL beyond 18 hours either way. A new object each time
 * (equal to the zone of the same name). */
CF_EXPORT CFTimeZoneRef CFTimeZoneCreateWithTimeIntervalFromGMT(CFAllocatorRef allocator, CFTimeInterval ti);
/* A zone of the tz database by name ("Europe/Paris"), or a "GMT+HHMM"
 * name; with tryAbbrev, abbreviations such as "PST" are looked up first.
 * NULL for an empty or unknown name. One object per name. */
CF_EXPORT CFTimeZoneRef CFTimeZoneCreateWithName(CFAllocatorRef allocator, CFStringRef name, Boolean tryAbbrev);

CF_EXPORT CFStringRef CFTimeZoneGetName(CFTimeZoneRef tz);
CF_EXPORT CFTimeInterval CFTimeZoneGetSecondsFromGMT(CFTimeZoneRef tz, CFAbsoluteTime at);
CF_EXPORT CFStringRef CFTimeZoneCopyAbbreviation(CFTimeZoneRef tz, CFAbsoluteTime at);
CF_EXPORT Boolean CFTimeZoneIsDaylightSavingTime(CFTimeZoneRef tz, CFAbsoluteTime at);
CF_EXPORT CFTimeInterval CFTimeZoneGetDaylightSavingTimeOffset(CFTimeZoneRef tz, CFAbsoluteTime at);
/* The first change of offset or abbreviation after at; 0 when there is
 * none. */
CF_EXPORT CFAbsoluteTime CFTimeZoneGetNextDaylightSavingTimeTransition(CFTimeZoneRef tz, CFAbsoluteTime at);

CF_EXTERN_C_END

#endif /* HALVANE_CF_CFTIMEZONE_H */
