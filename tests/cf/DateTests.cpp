// CFDate, the clock, CFGregorianDateIsValid, and the calendar arithmetic
// the date, property-list and time-zone code share.
#include "CFGregorian.h"
#include "CFTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <ctime>
#include <limits>
#include <string>

using namespace cftest;
using halvane::detail::DateTimeFields;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

Owned<CFDateRef> date(CFAbsoluteTime t) {
    return own(CFDateCreate(nullptr, t));
}

std::string address(const void* p) {
    char text[32];
    std::snprintf(text, sizeof text, "0x%lx", static_cast<unsigned long>(reinterpret_cast<uintptr_t>(p)));
    return text;
}

std::string expectedDescription(CFDateRef d, const char* time) {
    return "<CFDate " + address(d) + " [" + address(kCFAllocatorSystemDefault) + "]>{time = " + time + "}";
}

CFGregorianDate gregorian(SInt32 year, int month, int day, int hour = 0, int minute = 0, double second = 0) {
    return CFGregorianDate{year, SInt8(month), SInt8(day), SInt8(hour), SInt8(minute), second};
}

DateTimeFields fieldsOf(CFAbsoluteTime t) {
    DateTimeFields fields{};
    EXPECT_TRUE(halvane::detail::dateTimeFromAbsoluteTime(t, fields)) << t;
    return fields;
}

::testing::AssertionResult hasFields(const DateTimeFields& f, int64_t year, int month, int day, int hour, int minute,
                                     double second) {
    if (f.year == year && f.month == month && f.day == day && f.hour == hour && f.minute == minute &&
        f.second == second && !std::signbit(f.second)) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << f.year << "-" << f.month << "-" << f.day << " " << f.hour << ":" << f.minute
                                         << ":" << f.second;
}

}  // namespace

TEST(Date, CreationKeepsTheTimeExactly) {
    EXPECT_EQ(CFDateGetTypeID(), 42u);
    EXPECT_EQ(ascii(own(CFCopyTypeIDDescription(CFDateGetTypeID()))), "CFDate");
    for (double t : {0.0, 0.1, -1e-300, 1e300, 123456789.123456789, -978307200.0}) {
        auto d = date(t);
        ASSERT_TRUE(d);
        EXPECT_EQ(CFGetTypeID(d), CFDateGetTypeID());
        EXPECT_EQ(CFGetRetainCount(d), 1);
        EXPECT_EQ(CFDateGetAbsoluteTime(d), t);
    }
    EXPECT_TRUE(std::isnan(CFDateGetAbsoluteTime(date(kNaN))));
    EXPECT_TRUE(std::signbit(CFDateGetAbsoluteTime(date(-0.0))));
    EXPECT_EQ(CFDateCreate(kCFAllocatorNull, 0), nullptr);

    EXPECT_EQ(kCFAbsoluteTimeIntervalSince1970, 978307200.0);
    EXPECT_EQ(kCFAbsoluteTimeIntervalSince1904, 3061152000.0);
}

TEST(Date, CurrentTimeIsTheWallClockSinceTheReferenceDate) {
    double before = double(std::time(nullptr)) - 978307200.0;
    CFAbsoluteTime now = CFAbsoluteTimeGetCurrent();
    double after = double(std::time(nullptr)) - 978307200.0;
    EXPECT_GE(now, before);
    EXPECT_LT(now, after + 1);
    // Read to the microsecond.
    double micros = (now - std::floor(now)) * 1e6;
    EXPECT_NEAR(micros, std::round(micros), 0.2);
}

TEST(Date, IntervalsAndComparison) {
    auto early = date(-10.25), late = date(5.5), same = date(5.5), undefined = date(kNaN);
    EXPECT_EQ(CFDateGetTimeIntervalSinceDate(late, early), 15.75);
    EXPECT_EQ(CFDateGetTimeIntervalSinceDate(early, late), -15.75);
    EXPECT_EQ(CFDateCompare(early, late, nullptr), kCFCompareLessThan);
    EXPECT_EQ(CFDateCompare(late, early, nullptr), kCFCompareGreaterThan);
    EXPECT_EQ(CFDateCompare(late, same, reinterpret_cast<void*>(1)), kCFCompareEqualTo);
    // A NaN time is neither before nor after anything.
    EXPECT_EQ(CFDateCompare(undefined, early, nullptr), kCFCompareEqualTo);
    EXPECT_EQ(CFDateCompare(late, undefined, nullptr), kCFCompareEqualTo);
    EXPECT_TRUE(std::isnan(CFDateGetTimeIntervalSinceDate(undefined, early)));
}

TEST(Date, EqualityAndHash) {
    EXPECT_TRUE(CFEqual(date(5.5), date(5.5)));
    EXPECT_FALSE(CFEqual(date(5.5), date(std::nextafter(5.5, 6.0))));
    EXPECT_TRUE(CFEqual(date(0.0), date(-0.0)));
    EXPECT_EQ(CFHash(date(0.0)), CFHash(date(-0.0)));
    auto undefined = date(kNaN);
    EXPECT_TRUE(CFEqual(undefined, undefined));
    EXPECT_FALSE(CFEqual(undefined, date(kNaN)));
    int zero = 0;
    EXPECT_FALSE(CFEqual(date(0), own(CFNumberCreate(nullptr, kCFNumberIntType, &zero))));

    // floor(time), narrowed to float, as an integer.
    EXPECT_EQ(CFHash(date(1.5)), 1u);
    EXPECT_EQ(CFHash(date(-1.5)), CFHashCode(-2L));
    EXPECT_EQ(CFHash(date(16777217.5)), 16777216u);
    EXPECT_EQ(CFHash(date(kNaN)), 0u);
    EXPECT_EQ(CFHash(date(1e300)), CFHashCode(INT64_MAX));
    EXPECT_EQ(CFHash(date(-1e300)), CFHashCode(INT64_MIN));
    EXPECT_EQ(CFHash(date(-std::numeric_limits<double>::infinity())), CFHashCode(INT64_MIN));
}

TEST(Date, Descriptions) {
    const struct {
        double time;
        const char* text;
    } rows[] = {{0, "0"},
                {1.5, "1.5"},
                {-1, "-1"},
                {0.1, "0.1"},
                {123456789.123, "123456789"},
                {1234567890.5, "1.23456789e+09"},
                {kNaN, "nan"}};
    for (const auto& row : rows) {
        auto d = date(row.time);
        EXPECT_EQ(ascii(own(CFCopyDescription(d))), expectedDescription(d, row.text));
    }
    // "%@" falls back to the same text: dates have no formatting description.
    EXPECT_EQ(_CFRuntimeGetClassWithTypeID(CFDateGetTypeID())->copyFormattingDesc, nullptr);
}

TEST(Date, NullOrWrongTypeGivesNeutralResults) {
    auto d = date(3);
    int one = 1;
    auto number = own(CFNumberCreate(nullptr, kCFNumberIntType, &one));
    for (CFDateRef wrong : {CFDateRef(nullptr), reinterpret_cast<CFDateRef>(number.get())}) {
        EXPECT_EQ(CFDateGetAbsoluteTime(wrong), 0.0);
        EXPECT_EQ(CFDateGetTimeIntervalSinceDate(wrong, d), 0.0);
        EXPECT_EQ(CFDateGetTimeIntervalSinceDate(d, wrong), 0.0);
        EXPECT_EQ(CFDateCompare(wrong, d, nullptr), kCFCompareEqualTo);
        EXPECT_EQ(CFDateCompare(d, wrong, nullptr), kCFCompareEqualTo);
    }
    EXPECT_EQ(CFGetRetainCount(d), 1);
    EXPECT_EQ(CFGetRetainCount(number), 1);
}

TEST(GregorianDate, ValidityChecksOnlyTheUnitsAskedFor) {
    CFGregorianDate garbage = gregorian(-5, 13, 40, 24, 60, 60);
    EXPECT_TRUE(CFGregorianDateIsValid(garbage, 0));
    EXPECT_FALSE(CFGregorianDateIsValid(garbage, kCFGregorianAllUnits));

    // Years: above 0.
    EXPECT_FALSE(CFGregorianDateIsValid(gregorian(0, 1, 1), kCFGregorianUnitsYears));
    EXPECT_TRUE(CFGregorianDateIsValid(gregorian(1, 1, 1), kCFGregorianUnitsYears));
    EXPECT_TRUE(CFGregorianDateIsValid(gregorian(0, 1, 1), kCFGregorianUnitsMonths | kCFGregorianUnitsDays));
    // Months: 1...12.
    EXPECT_FALSE(CFGregorianDateIsValid(gregorian(2001, 0, 1), kCFGregorianUnitsMonths));
    EXPECT_FALSE(CFGregorianDateIsValid(gregorian(2001, 13, 1), kCFGregorianUnitsMonths));
    EXPECT_TRUE(CFGregorianDateIsValid(gregorian(2001, 12, 1), kCFGregorianUnitsMonths));
    // Days: 1...31, and the month's length only with years and months.
    EXPECT_FALSE(CFGregorianDateIsValid(gregorian(2001, 1, 0), kCFGregorianUnitsDays));
    EXPECT_FALSE(CFGregorianDateIsValid(gregorian(2001, 1, 32), kCFGregorianUnitsDays));
    EXPECT_TRUE(CFGregorianDateIsValid(gregorian(2001, 4, 31), kCFGregorianUnitsDays));
    EXPECT_TRUE(CFGregorianDateIsValid(gregorian(2001, 4, 31), kCFGregorianUnitsDays | kCFGregorianUnitsMonths));
    EXPECT_FALSE(CFGregorianDateIsValid(gregorian(2001, 4, 31), kCFGregorianAllUnits));
    EXPECT_TRUE(CFGregorianDateIsValid(gregorian(2001, 4, 30), kCFGregorianAllUnits));
    // Hours 0...23, minutes 0...59, seconds in [0, 60).
    EXPECT_FALSE(CFGregorianDateIsValid(gregorian(2001, 1, 1, 24), kCFGregorianUnitsHours));
    EXPECT_FALSE(CFGregorianDateIsValid(gregorian(2001, 1, 1, -1), kCFGregorianUnitsHours));
    EXPECT_TRUE(CFGregorianDateIsValid(gregorian(2001, 1, 1, 23), kCFGregorianUnitsHours));
    EXPECT_FALSE(CFGregorianDateIsValid(gregorian(2001, 1, 1, 0, 60), kCFGregorianUnitsMinutes));
    EXPECT_TRUE(CFGregorianDateIsValid(gregorian(2001, 1, 1, 0, 59), kCFGregorianUnitsMinutes));
    EXPECT_TRUE(CFGregorianDateIsValid(gregorian(2001, 1, 1, 0, 0, 59.999), kCFGregorianUnitsSeconds));
    EXPECT_TRUE(CFGregorianDateIsValid(gregorian(2001, 1, 1, 0, 0, -0.0), kCFGregorianUnitsSeconds));
    EXPECT_FALSE(CFGregorianDateIsValid(gregorian(2001, 1, 1, 0, 0, 60), kCFGregorianUnitsSeconds));
    EXPECT_FALSE(CFGregorianDateIsValid(gregorian(2001, 1, 1, 0, 0, -0.5), kCFGregorianUnitsSeconds));
    EXPECT_FALSE(CFGregorianDateIsValid(gregorian(2001, 1, 1, 0, 0, kNaN), kCFGregorianUnitsSeconds));
    EXPECT_TRUE(CFGregorianDateIsValid(gregorian(2001, 1, 1, 0, 0, 60), kCFGregorianAllUnits & ~0x20ul));
}

TEST(GregorianDate, LeapYears) {
    auto validFeb29 = [](SInt32 year) { return CFGregorianDateIsValid(gregorian(year, 2, 29), kCFGregorianAllUnits); };
    EXPECT_TRUE(validFeb29(2000));
    EXPECT_TRUE(validFeb29(2004));
    EXPECT_TRUE(validFeb29(2400));
    EXPECT_FALSE(validFeb29(1900));
    EXPECT_FALSE(validFeb29(2001));
    EXPECT_FALSE(validFeb29(2100));
    EXPECT_FALSE(CFGregorianDateIsValid(gregorian(2000, 2, 30), kCFGregorianAllUnits));

    using namespace halvane::detail;
    EXPECT_TRUE(isLeapYear(0));
    EXPECT_TRUE(isLeapYear(-4));
    EXPECT_FALSE(isLeapYear(-1));
    EXPECT_FALSE(isLeapYear(-100));
    EXPECT_TRUE(isLeapYear(-400));
    EXPECT_EQ(daysInMonth(2000, 2), 29);
    EXPECT_EQ(daysInMonth(1900, 2), 28);
    EXPECT_EQ(daysInMonth(2001, 11), 30);
    EXPECT_EQ(daysInMonth(2001, 13), 0);
    // The day after February 28 is March 1 except in leap years.
    EXPECT_EQ(daysFromCivil(2100, 3, 1) - daysFromCivil(2100, 2, 28), 1);
    EXPECT_EQ(daysFromCivil(2000, 3, 1) - daysFromCivil(2000, 2, 28), 2);
    EXPECT_EQ(daysFromCivil(2001, 1, 1) - daysFromCivil(2000, 1, 1), 366);
    EXPECT_EQ(daysFromCivil(1901, 1, 1) - daysFromCivil(1900, 1, 1), 365);
    EXPECT_EQ(daysFromCivil(2001, 1, 1) - daysFromCivil(1601, 1, 1), 146097);
}

TEST(GregorianArithmetic, DaysAndCivilDates) {
    using namespace halvane::detail;
    EXPECT_EQ(daysFromCivil(2001, 1, 1), 0);
    EXPECT_EQ(daysFromCivil(1970, 1, 1), -11323);
    EXPECT_EQ(daysFromCivil(1904, 1, 1), -35430);
    EXPECT_EQ(daysFromCivil(0, 1, 1), -730851);
    EXPECT_EQ(daysFromCivil(2001, 1, 0), -1);  // day 0 is the day before
    EXPECT_EQ(daysFromCivil(2001, 1, 32), daysFromCivil(2001, 2, 1));
    EXPECT_EQ(daysBeforeMonth(2001, 13), 0);

    CivilDate yearZeroStart = civilFromDays(-730851);
    EXPECT_EQ(yearZeroStart.year, 0);
    EXPECT_EQ(yearZeroStart.month, 1);
    EXPECT_EQ(yearZeroStart.day, 1);
    CivilDate dayBefore = civilFromDays(-730852);
    EXPECT_EQ(dayBefore.year, -1);
    EXPECT_EQ(dayBefore.month, 12);
    EXPECT_EQ(dayBefore.day, 31);

    // Every day over ±2,000 years follows the one before it.
    CivilDate previous = civilFromDays(-730485 - 1);
    for (int64_t day = -730485; day <= 730485; ++day) {
        CivilDate current = civilFromDays(day);
        bool nextDay =
            current.year == previous.year && current.month == previous.month && current.day == previous.day + 1;
        bool nextMonth = current.year == previous.year && current.month == previous.month + 1 && current.day == 1 &&
                         previous.day == daysInMonth(previous.year, previous.month);
        bool nextYear = current.year == previous.year + 1 && current.month == 1 && current.day == 1 &&
                        previous.month == 12 && previous.day == 31;
        ASSERT_TRUE(nextDay || nextMonth || nextYear) << day;
        ASSERT_EQ(daysFromCivil(current.year, current.month, current.day), day);
        previous = current;
    }

    EXPECT_EQ(dayOfWeek(0), 1);                           // 2001-01-01, a Monday
    EXPECT_EQ(dayOfWeek(daysFromCivil(1970, 1, 1)), 4);   // a Thursday
    EXPECT_EQ(dayOfWeek(daysFromCivil(2000, 2, 29)), 2);  // a Tuesday
    EXPECT_EQ(dayOfWeek(daysFromCivil(2024, 12, 25)), 3);
    EXPECT_EQ(dayOfWeek(-1), 7);
    EXPECT_EQ(dayOfYear(-1), 366);
    EXPECT_EQ(dayOfYear(daysFromCivil(2001, 12, 31)), 365);
    EXPECT_EQ(dayOfYear(daysFromCivil(2004, 3, 1)), 61);
}

TEST(GregorianArithmetic, AbsoluteTimeToFieldsFloors) {
    EXPECT_TRUE(hasFields(fieldsOf(0), 2001, 1, 1, 0, 0, 0));
    EXPECT_TRUE(hasFields(fieldsOf(-1), 2000, 12, 31, 23, 59, 59));
    EXPECT_TRUE(hasFields(fieldsOf(-0.5), 2000, 12, 31, 23, 59, 59.5));
    EXPECT_TRUE(hasFields(fieldsOf(-0.0), 2001, 1, 1, 0, 0, 0));
    EXPECT_TRUE(hasFields(fieldsOf(-kCFAbsoluteTimeIntervalSince1970), 1970, 1, 1, 0, 0, 0));
    EXPECT_TRUE(hasFields(fieldsOf(-kCFAbsoluteTimeIntervalSince1904), 1904, 1, 1, 0, 0, 0));
    EXPECT_TRUE(hasFields(fieldsOf(3723.25), 2001, 1, 1, 1, 2, 3.25));
    EXPECT_TRUE(hasFields(fieldsOf(-63113904000.0), 1, 1, 1, 0, 0, 0));
    EXPECT_TRUE(hasFields(fieldsOf(-63113904000.0 - 86400), 0, 12, 31, 0, 0, 0));
    // 2000-02-29 12:00:00.
    EXPECT_TRUE(hasFields(fieldsOf(-(306 * 86400.0) - 43200), 2000, 2, 29, 12, 0, 0));

    // Just below a whole minute stays inside it.
    DateTimeFields tiny = fieldsOf(-1e-20);
    EXPECT_EQ(tiny.minute, 59);
    EXPECT_LT(tiny.second, 60.0);
    EXPECT_GT(tiny.second, 59.999);

    DateTimeFields untouched{7, 7, 7, 7, 7, 7};
    for (double t : {kNaN, std::numeric_limits<double>::infinity(), 1e30, -1e30}) {
        EXPECT_FALSE(halvane::detail::dateTimeFromAbsoluteTime(t, untouched)) << t;
    }
    EXPECT_EQ(untouched.year, 7);
}

TEST(GregorianArithmetic, FieldsToAbsoluteTimeAddUpWithoutChecks) {
    using halvane::detail::absoluteTimeFromDateTime;
    EXPECT_EQ(absoluteTimeFromDateTime({2000, 12, 31, 23, 59, 59}), -1.0);
    EXPECT_EQ(absoluteTimeFromDateTime({2001, 3, 1, 0, 0, 0}), 59 * 86400.0);
    EXPECT_EQ(absoluteTimeFromDateTime({1970, 1, 1, 0, 0, 0}), -kCFAbsoluteTimeIntervalSince1970);
    EXPECT_EQ(absoluteTimeFromDateTime({2001, 1, 1, 0, 0, 0.125}), 0.125);
    EXPECT_EQ(absoluteTimeFromDateTime({2001, 1, 0, 0, 0, 0}), -86400.0);
    EXPECT_EQ(absoluteTimeFromDateTime({2001, 1, 1, 25, 0, 0}), 90000.0);
    EXPECT_EQ(absoluteTimeFromDateTime({2001, 1, 1, 0, 0, -5}), -5.0);
    EXPECT_EQ(absoluteTimeFromDateTime({2001, 13, 1, 0, 0, 0}), 0.0);
    EXPECT_EQ(absoluteTimeFromDateTime({2001, 0, 2, 0, 0, 0}), 86400.0);

    for (double t : {0.0, -1.0, 1e9 + 0.5, -1e15, -63113904000.0, 4e12 + 0.25}) {
        EXPECT_EQ(absoluteTimeFromDateTime(fieldsOf(t)), t) << t;
    }
}
