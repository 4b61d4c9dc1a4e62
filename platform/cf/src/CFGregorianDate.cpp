// Gregorian dates of absolute times in a time zone: the older date API
// beside CFCalendar, kept because callers still use it.
#include "CFGregorian.h"
#include "CFInternal.h"
#include "CFTimeZoneInternal.h"

#include <CoreFoundation/CFTimeZone.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>

namespace halvane::detail {

namespace {

// Checks the zone argument: NULL is UTC, anything but a zone is reported
// and read as UTC too.
CFTimeZoneRef zoneOrUTC(CFTimeZoneRef tz, const char* caller) {
    if (tz == nullptr || isA(tz, kCFTimeZoneTypeID)) return tz;
    reportMisuse("CFDate: %s(): not a time zone", caller);
    return nullptr;
}

// The local wall-clock time of at, read as if it were UTC.
CFAbsoluteTime localTime(CFAbsoluteTime at, CFTimeZoneRef tz) {
    return tz == nullptr ? at : at + secondsFromGMT(tz, at);
}

// The absolute time of a local wall-clock time read as UTC; times skipped
// or repeated by a change of offset are read as calendars read them.
CFAbsoluteTime universalTime(CFAbsoluteTime local, CFTimeZoneRef tz) {
    return tz == nullptr ? local : local - secondsFromGMTAtLocalTime(tz, local);
}

bool fitsGregorianDate(const DateTimeFields& fields) {
    return fields.year >= INT32_MIN && fields.year <= INT32_MAX;
}

CFGregorianDate gregorianDateOf(const DateTimeFields& fields) {
    return CFGregorianDate{SInt32(fields.year), SInt8(fields.month),  SInt8(fields.day),
                           SInt8(fields.hour),  SInt8(fields.minute), fields.second};
}

DateTimeFields fieldsOf(const CFGregorianDate& date) {
    return DateTimeFields{date.year, date.month, date.day, date.hour, date.minute, date.second};
}

// The days from the reference date of the local day containing at, or
// nothing for a time no date can hold.
std::optional<int64_t> localDay(CFAbsoluteTime at, CFTimeZoneRef tz, const char* caller) {
    DateTimeFields fields{};
    if (!dateTimeFromAbsoluteTime(localTime(at, zoneOrUTC(tz, caller)), fields)) return std::nullopt;
    return daysFromCivil(fields.year, fields.month, fields.day);
}

}  // namespace

}  // namespace halvane::detail

using namespace halvane::detail;

CFAbsoluteTime CFGregorianDateGetAbsoluteTime(CFGregorianDate gdate, CFTimeZoneRef tz) {
    return universalTime(absoluteTimeFromDateTime(fieldsOf(gdate)), zoneOrUTC(tz, "CFGregorianDateGetAbsoluteTime"));
}

CFGregorianDate CFAbsoluteTimeGetGregorianDate(CFAbsoluteTime at, CFTimeZoneRef tz) {
    DateTimeFields fields{};
    if (!dateTimeFromAbsoluteTime(localTime(at, zoneOrUTC(tz, "CFAbsoluteTimeGetGregorianDate")), fields) ||
        !fitsGregorianDate(fields)) {
        return CFGregorianDate{0, 0, 0, 0, 0, 0};
    }
    return gregorianDateOf(fields);
}

CFAbsoluteTime CFAbsoluteTimeAddGregorianUnits(CFAbsoluteTime at, CFTimeZoneRef tz, CFGregorianUnits units) {
    tz = zoneOrUTC(tz, "CFAbsoluteTimeAddGregorianUnits");
    DateTimeFields fields{};
    if (!dateTimeFromAbsoluteTime(localTime(at, tz), fields)) return at;
    // Months move on the calendar; a day the new month lacks becomes its
    // last day (January 31 plus one month is February 28 or 29).
    int64_t months = fields.month - 1 + int64_t(units.months);
    int64_t yearCarry = months >= 0 ? months / 12 : -((11 - months) / 12);
    fields.year += int64_t(units.years) + yearCarry;
    fields.month = int(months - yearCarry * 12) + 1;
    fields.day = std::min(fields.day, daysInMonth(fields.year, fields.month));
    // Days keep the wall-clock time across a change of offset.
    int64_t day = daysFromCivil(fields.year, fields.month, fields.day) + units.days;
    CivilDate date = civilFromDays(day);
    fields.year = date.year;
    fields.month = date.month;
    fields.day = date.day;
    CFAbsoluteTime moved = universalTime(absoluteTimeFromDateTime(fields), tz);
    // Hours, minutes and seconds are elapsed time.
    return moved + double(units.hours) * 3600 + double(units.minutes) * 60 + units.seconds;
}

SInt32 CFAbsoluteTimeGetDayOfWeek(CFAbsoluteTime at, CFTimeZoneRef tz) {
    auto day = localDay(at, tz, "CFAbsoluteTimeGetDayOfWeek");
    return day ? dayOfWeek(*day) : 0;
}

SInt32 CFAbsoluteTimeGetDayOfYear(CFAbsoluteTime at, CFTimeZoneRef tz) {
    auto day = localDay(at, tz, "CFAbsoluteTimeGetDayOfYear");
    return day ? dayOfYear(*day) : 0;
}
