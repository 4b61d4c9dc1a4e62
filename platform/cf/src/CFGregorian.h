// Proleptic Gregorian calendar arithmetic in UTC, shared by dates, the XML
// property-list reader and writer, and time zones.
//
// Days are counted from the reference date 2001-01-01 (day 0), negative
// before it. Years are astronomical: year 0 is 1 BC, year -1 is 2 BC. All
// divisions floor, so times before the reference date split into fields
// the same way as times after it.
#ifndef HALVANE_CF_GREGORIAN_H
#define HALVANE_CF_GREGORIAN_H

#include <CoreFoundation/CFDate.h>

#include <cstdint>

namespace halvane::detail {

inline constexpr int64_t kSecondsPerDay = 86400;

bool isLeapYear(int64_t year);

// 28 to 31; 0 for a month outside 1...12.
int daysInMonth(int64_t year, int month);

// Days from 2001-01-01 to January 1 of year (|year| below 2^40).
int64_t daysBeforeYear(int64_t year);

// Days from January 1 to the first day of month; 0 for a month outside
// 1...12, which then contributes nothing.
int daysBeforeMonth(int64_t year, int month);

// Days from 2001-01-01 to the date. The day is not range-checked: day 0 is
// the last day of the month before, day 32 runs into the next month.
int64_t daysFromCivil(int64_t year, int month, int day);

struct CivilDate {
    int64_t year;
    int month;  // 1...12
    int day;    // 1...31
};

CivilDate civilFromDays(int64_t days);

// 1 (Monday) to 7 (Sunday).
int dayOfWeek(int64_t days);

// 1 to 366.
int dayOfYear(int64_t days);

struct DateTimeFields {
    int64_t year;
    int month;      // 1...12
    int day;        // 1...31
    int hour;       // 0...23
    int minute;     // 0...59
    double second;  // [0, 60), with the fraction
};

// The UTC fields of an absolute time. false (fields untouched) for NaN, an
// infinity, or a time more than 2^62 seconds from the reference date.
bool dateTimeFromAbsoluteTime(CFAbsoluteTime time, DateTimeFields& fields);

// The absolute time of UTC fields. Nothing is range-checked: hour 25 or
// second -5 simply add up; a month outside 1...12 contributes nothing.
CFAbsoluteTime absoluteTimeFromDateTime(const DateTimeFields& fields);

}  // namespace halvane::detail

#endif  // HALVANE_CF_GREGORIAN_H
