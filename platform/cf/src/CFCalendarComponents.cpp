// CFCalendar field arithmetic: composing and decomposing absolute times,
// adding fields, differences, and where a unit lies within a larger one.
#include "CFCalendarInternal.h"
#include "CFTimeZoneInternal.h"

#include <cmath>
#include <cstdarg>
#include <cstring>
#include <optional>

namespace halvane::detail {

namespace {

// The ICU field a character of a component description stands for.
std::optional<UCalendarDateFields> fieldOf(char c) {
    switch (c) {
        case 'G':
            return UCAL_ERA;
        case 'y':
            return UCAL_YEAR;
        case 'M':
            return UCAL_MONTH;
        case 'l':
            return UCAL_IS_LEAP_MONTH;
        case 'd':
            return UCAL_DATE;
        case 'D':
            return UCAL_DAY_OF_YEAR;
        case 'E':
            return UCAL_DAY_OF_WEEK;
        case 'F':
            return UCAL_DAY_OF_WEEK_IN_MONTH;
        case 'w':
            return UCAL_WEEK_OF_YEAR;
        case 'W':
            return UCAL_WEEK_OF_MONTH;
        case 'Y':
            return UCAL_YEAR_WOY;
        case 'a':
            return UCAL_AM_PM;
        case 'h':
            return UCAL_HOUR;
        case 'H':
            return UCAL_HOUR_OF_DAY;
        case 'm':
            return UCAL_MINUTE;
        case 's':
            return UCAL_SECOND;
        default:
            return std::nullopt;
    }
}

// True when the calendar and description can be used; every character
// must name a field, or nothing is read.
bool isUsable(CFCalendarRef calendar, const char* componentDesc, const char* caller) {
    if (!isCalendar(calendar, caller)) return false;
    if (componentDesc == nullptr) {
        reportMisuse("CFCalendar: %s(): no component description", caller);
        return false;
    }
    for (const char* c = componentDesc; *c != '\0'; ++c) {
        if (!fieldOf(*c)) return false;
    }
    return true;
}

// Months count from 1 here and from 0 in ICU.
int32_t monthAdjustment(UCalendarDateFields field) {
    return field == UCAL_MONTH ? 1 : 0;
}

struct UnitNesting {
    CFCalendarUnit smaller;
    CFCalendarUnit bigger;
    UCalendarDateFields field;
};

// The pairs of units whose nesting the calendar answers for, and the field
// that counts the smaller unit within the bigger one.
constexpr UnitNesting kNestings[] = {
    {kCFCalendarUnitYear, kCFCalendarUnitEra, UCAL_YEAR},
    {kCFCalendarUnitMonth, kCFCalendarUnitYear, UCAL_MONTH},
    {kCFCalendarUnitDay, kCFCalendarUnitMonth, UCAL_DATE},
    {kCFCalendarUnitDay, kCFCalendarUnitYear, UCAL_DAY_OF_YEAR},
    {kCFCalendarUnitWeekday, kCFCalendarUnitWeekOfMonth, UCAL_DAY_OF_WEEK},
    {kCFCalendarUnitWeekday, kCFCalendarUnitWeekOfYear, UCAL_DAY_OF_WEEK},
    {kCFCalendarUnitWeekdayOrdinal, kCFCalendarUnitMonth, UCAL_DAY_OF_WEEK_IN_MONTH},
    {kCFCalendarUnitWeekOfMonth, kCFCalendarUnitMonth, UCAL_WEEK_OF_MONTH},
    {kCFCalendarUnitWeekOfYear, kCFCalendarUnitYear, UCAL_WEEK_OF_YEAR},
    {kCFCalendarUnitWeekOfYear, kCFCalendarUnitYearForWeekOfYear, UCAL_WEEK_OF_YEAR},
    {kCFCalendarUnitHour, kCFCalendarUnitDay, UCAL_HOUR_OF_DAY},
    {kCFCalendarUnitMinute, kCFCalendarUnitHour, UCAL_MINUTE},
    {kCFCalendarUnitSecond, kCFCalendarUnitMinute, UCAL_SECOND},
};

const UnitNesting* nestingOf(CFCalendarUnit smaller, CFCalendarUnit bigger) {
    for (const UnitNesting& nesting : kNestings) {
        if (nesting.smaller == smaller && nesting.bigger == bigger) return &nesting;
    }
    return nullptr;
}

}  // namespace

}  // namespace halvane::detail

using namespace halvane::detail;

Boolean CFCalendarComposeAbsoluteTime(CFCalendarRef calendar, CFAbsoluteTime* at, const char* componentDesc, ...) {
    if (!isUsable(calendar, componentDesc, "CFCalendarComposeAbsoluteTime")) return false;
    if (at == nullptr) {
        reportMisuse("CFCalendar: CFCalendarComposeAbsoluteTime(): no place for the result");
        return false;
    }
    std::lock_guard lock(*calendar->mutex);
    icu::Calendar& cal = *calendar->calendar;
    cal.clear();
    // What is not given is the start of year 1.
    cal.set(UCAL_YEAR, 1);
    cal.set(UCAL_MONTH, 0);
    cal.set(UCAL_IS_LEAP_MONTH, 0);
    cal.set(UCAL_DATE, 1);
    cal.set(UCAL_HOUR_OF_DAY, 0);
    cal.set(UCAL_MINUTE, 0);
    cal.set(UCAL_SECOND, 0);
    cal.set(UCAL_MILLISECOND, 0);
    std::va_list arguments;
    va_start(arguments, componentDesc);
    for (const char* c = componentDesc; *c != '\0'; ++c) {
        UCalendarDateFields field = *fieldOf(*c);
        cal.set(field, va_arg(arguments, int) - monthAdjustment(field));
    }
    va_end(arguments);
    UErrorCode status = U_ZERO_ERROR;
    UDate millis = cal.getTime(status);
    if (U_FAILURE(status)) return false;
    *at = absoluteTimeFromICUMillis(millis);
    return true;
}

Boolean CFCalendarDecomposeAbsoluteTime(CFCalendarRef calendar, CFAbsoluteTime at, const char* componentDesc, ...) {
    if (!isUsable(calendar, componentDesc, "CFCalendarDecomposeAbsoluteTime")) return false;
    std::lock_guard lock(*calendar->mutex);
    icu::Calendar& cal = *calendar->calendar;
    UErrorCode status = U_ZERO_ERROR;
    cal.setTime(icuMillisFromAbsoluteTime(at), status);
    std::va_list arguments;
    va_start(arguments, componentDesc);
    for (const char* c = componentDesc; *c != '\0' && U_SUCCESS(status); ++c) {
        UCalendarDateFields field = *fieldOf(*c);
        int* out = va_arg(arguments, int*);
        int32_t value = cal.get(field, status) + monthAdjustment(field);
        if (out != nullptr) *out = value;
    }
    va_end(arguments);
    return U_SUCCESS(status);
}

Boolean CFCalendarAddComponents(CFCalendarRef calendar, CFAbsoluteTime* at, CFOptionFlags options,
                                const char* componentDesc, ...) {
    if (!isUsable(calendar, componentDesc, "CFCalendarAddComponents")) return false;
    if (at == nullptr) {
        reportMisuse("CFCalendar: CFCalendarAddComponents(): no time to add to");
        return false;
    }
    // ICU keeps milliseconds; the rest of the fraction is put back after.
    double whole = 0;
    double fraction = std::isfinite(*at) ? std::modf(*at, &whole) : 0;
    std::lock_guard lock(*calendar->mutex);
    icu::Calendar& cal = *calendar->calendar;
    UErrorCode status = U_ZERO_ERROR;
    cal.setTime(icuMillisFromAbsoluteTime(whole), status);
    std::va_list arguments;
    va_start(arguments, componentDesc);
    for (const char* c = componentDesc; *c != '\0' && U_SUCCESS(status); ++c) {
        UCalendarDateFields field = *fieldOf(*c);
        int amount = va_arg(arguments, int);
        if (options & kCFCalendarComponentsWrap) {
            cal.roll(field, amount, status);
        } else {
            cal.add(field, amount, status);
        }
    }
    va_end(arguments);
    UDate millis = cal.getTime(status);
    if (U_FAILURE(status)) return false;
    *at = absoluteTimeFromICUMillis(millis) + fraction;
    return true;
}

Boolean CFCalendarGetComponentDifference(CFCalendarRef calendar, CFAbsoluteTime startingAT, CFAbsoluteTime resultAT,
                                         CFOptionFlags, const char* componentDesc, ...) {
    if (!isUsable(calendar, componentDesc, "CFCalendarGetComponentDifference")) return false;
    double whole = 0;
    double fraction = std::isfinite(startingAT) ? std::modf(startingAT, &whole) : 0;
    std::lock_guard lock(*calendar->mutex);
    icu::Calendar& cal = *calendar->calendar;
    UErrorCode status = U_ZERO_ERROR;
    cal.setTime(icuMillisFromAbsoluteTime(whole), status);
    // The start's fraction of a second is taken off the end as well.
    UDate goal = icuMillisFromAbsoluteTime(resultAT - fraction);
    std::va_list arguments;
    va_start(arguments, componentDesc);
    for (const char* c = componentDesc; *c != '\0' && U_SUCCESS(status); ++c) {
        UCalendarDateFields field = *fieldOf(*c);
        int* out = va_arg(arguments, int*);
        int32_t difference = cal.fieldDifference(goal, field, status);
        if (out != nullptr) *out = difference;
    }
    va_end(arguments);
    return U_SUCCESS(status);
}

CFRange CFCalendarGetRangeOfUnit(CFCalendarRef calendar, CFCalendarUnit smallerUnit, CFCalendarUnit biggerUnit,
                                 CFAbsoluteTime at) {
    const CFRange notFound = CFRangeMake(kCFNotFound, kCFNotFound);
    if (!isCalendar(calendar, "CFCalendarGetRangeOfUnit")) return notFound;
    const UnitNesting* nesting = nestingOf(smallerUnit, biggerUnit);
    if (nesting == nullptr) return notFound;
    std::lock_guard lock(*calendar->mutex);
    icu::Calendar& cal = *calendar->calendar;
    UErrorCode status = U_ZERO_ERROR;
    cal.setTime(icuMillisFromAbsoluteTime(at), status);
    int32_t minimum = cal.getActualMinimum(nesting->field, status);
    int32_t maximum = cal.getActualMaximum(nesting->field, status);
    if (U_FAILURE(status)) return notFound;
    // ICU also counts weekdays from the end of the month (-1 is the last);
    // ordinals here count from its start.
    if (nesting->field == UCAL_DAY_OF_WEEK_IN_MONTH) minimum = 1;
    return CFRangeMake(minimum + monthAdjustment(nesting->field), CFIndex(maximum) - minimum + 1);
}

CFIndex CFCalendarGetOrdinalityOfUnit(CFCalendarRef calendar, CFCalendarUnit smallerUnit, CFCalendarUnit biggerUnit,
                                      CFAbsoluteTime at) {
    if (!isCalendar(calendar, "CFCalendarGetOrdinalityOfUnit")) return kCFNotFound;
    const UnitNesting* nesting = nestingOf(smallerUnit, biggerUnit);
    if (nesting == nullptr) return kCFNotFound;
    std::lock_guard lock(*calendar->mutex);
    icu::Calendar& cal = *calendar->calendar;
    UErrorCode status = U_ZERO_ERROR;
    cal.setTime(icuMillisFromAbsoluteTime(at), status);
    int32_t value = cal.get(nesting->field, status);
    if (U_FAILURE(status)) return kCFNotFound;
    switch (nesting->field) {
        case UCAL_DAY_OF_WEEK:
            // Counted from the calendar's first weekday.
            return (value - cal.getFirstDayOfWeek() + 7) % 7 + 1;
        case UCAL_MONTH:
        case UCAL_HOUR_OF_DAY:
        case UCAL_MINUTE:
        case UCAL_SECOND:
            return value + 1;
        default:
            return value;
    }
}
