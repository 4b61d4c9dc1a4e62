// The layout of CFCalendar, shared by its settings and its field
// arithmetic.
#ifndef HALVANE_CF_CALENDAR_INTERNAL_H
#define HALVANE_CF_CALENDAR_INTERNAL_H

#include "CFInternal.h"

#include <CoreFoundation/CFCalendar.h>

#include <unicode/calendar.h>

#include <mutex>

struct __CFCalendar {
    CFRuntimeBase base;
    CFCalendarIdentifier identifier;  // a constant
    CFLocaleRef locale;
    CFTimeZoneRef zone;
    CFIndex firstWeekday;            // 0: the locale's
    CFIndex minimumDaysInFirstWeek;  // 0: the locale's
    // The ICU calendar keeps the time last set on it, so even reading
    // fields changes it: every use holds the mutex.
    std::mutex* mutex;
    icu::Calendar* calendar;
};

namespace halvane::detail {

inline bool isCalendar(CFTypeRef cf, const char* caller) {
    if (isA(cf, kCFCalendarTypeID)) return true;
    reportMisuse("CFCalendar: %s(): not a calendar", caller);
    return false;
}

}  // namespace halvane::detail

#endif  // HALVANE_CF_CALENDAR_INTERNAL_H
