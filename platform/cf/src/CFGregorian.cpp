// Proleptic Gregorian calendar arithmetic in UTC.
#include "CFGregorian.h"

#include <cmath>

namespace halvane::detail {

namespace {

// A 400-year cycle always has the same number of days.
constexpr int64_t kDaysPer400Years = 146097;
constexpr int64_t kDaysPer100Years = 36524;  // without the leap day of a year divisible by 400
constexpr int64_t kDaysPer4Years = 1461;
// Days from 0001-01-01 to 2001-01-01.
constexpr int64_t kDaysFromYearOneToReference = 730485;

constexpr int kDaysBeforeMonth[13] = {0, 0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};

constexpr double kTimeLimit = 4611686018427387904.0;  // 2^62 seconds

int64_t floorDiv(int64_t a, int64_t b) {
    int64_t q = a / b;
    return (a % b != 0 && (a < 0) != (b < 0)) ? q - 1 : q;
}

bool isValidMonth(int month) {
    return month >= 1 && month <= 12;
}

}  // namespace

bool isLeapYear(int64_t year) {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

int daysInMonth(int64_t year, int month) {
    if (!isValidMonth(month)) return 0;
    if (month == 2) return isLeapYear(year) ? 29 : 28;
    return month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31;
}

int64_t daysBeforeYear(int64_t year) {
    // Leap years among 1 ... year-1 (a negative count below year 1).
    int64_t completed = year - 1;
    int64_t days = 365 * completed + floorDiv(completed, 4) - floorDiv(completed, 100) + floorDiv(completed, 400);
    return days - kDaysFromYearOneToReference;
}

int daysBeforeMonth(int64_t year, int month) {
    if (!isValidMonth(month)) return 0;
    return kDaysBeforeMonth[month] + (month > 2 && isLeapYear(year) ? 1 : 0);
}

int64_t daysFromCivil(int64_t year, int month, int day) {
    return daysBeforeYear(year) + daysBeforeMonth(year, month) + (day - 1);
}

CivilDate civilFromDays(int64_t days) {
    int64_t sinceYearOne = days + kDaysFromYearOneToReference;
    int64_t cycles = floorDiv(sinceYearOne, kDaysPer400Years);
    int64_t rest = sinceYearOne - cycles * kDaysPer400Years;
    // The last century, four-year block and year of a cycle are one day
    // longer than the others, hence the caps.
    int64_t centuries = rest / kDaysPer100Years < 3 ? rest / kDaysPer100Years : 3;
    rest -= centuries * kDaysPer100Years;
    int64_t quadrennia = rest / kDaysPer4Years;
    rest -= quadrennia * kDaysPer4Years;
    int64_t years = rest / 365 < 3 ? rest / 365 : 3;
    rest -= years * 365;

    CivilDate date;
    date.year = 1 + 400 * cycles + 100 * centuries + 4 * quadrennia + years;
    int dayInYear = int(rest);
    int month = 12;
    while (month > 1 && daysBeforeMonth(date.year, month) > dayInYear) --month;
    date.month = month;
    date.day = dayInYear - daysBeforeMonth(date.year, month) + 1;
    return date;
}

int dayOfWeek(int64_t days) {
    // The reference date was a Monday.
    return int(days - floorDiv(days, 7) * 7) + 1;
}

int dayOfYear(int64_t days) {
    CivilDate date = civilFromDays(days);
    return int(days - daysBeforeYear(date.year)) + 1;
}

bool dateTimeFromAbsoluteTime(CFAbsoluteTime time, DateTimeFields& fields) {
    if (!(std::fabs(time) <= kTimeLimit)) return false;
    double whole = std::floor(time);
    double fraction = time - whole;
    auto seconds = int64_t(whole);
    int64_t days = floorDiv(seconds, kSecondsPerDay);
    int64_t secondOfDay = seconds - days * kSecondsPerDay;

    CivilDate date = civilFromDays(days);
    fields.year = date.year;
    fields.month = date.month;
    fields.day = date.day;
    fields.hour = int(secondOfDay / 3600);
    fields.minute = int(secondOfDay / 60 % 60);
    // time - floor(time) is never -0.0, so neither is the second. For a
    // time just below a whole second the fraction can round up to 1: keep
    // the second inside its minute.
    double second = double(secondOfDay % 60) + fraction;
    fields.second = second < 60 ? second : std::nextafter(60.0, 0.0);
    return true;
}

CFAbsoluteTime absoluteTimeFromDateTime(const DateTimeFields& fields) {
    int64_t seconds = daysFromCivil(fields.year, fields.month, fields.day) * kSecondsPerDay +
                      int64_t(fields.hour) * 3600 + int64_t(fields.minute) * 60;
    return double(seconds) + fields.second;
}

}  // namespace halvane::detail
