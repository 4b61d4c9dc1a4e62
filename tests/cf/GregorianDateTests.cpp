// Gregorian dates of absolute times in time zones: both directions, the
// changes of offset, days of the week and year, adding Gregorian units,
// and a wrong-type zone.
#include "CFTestSupport.h"
#include "MisuseReports.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <ostream>
#include <string>

using namespace cftest;

namespace {

// 2024-03-31 01:00 UTC and 2024-10-27 01:00 UTC: Paris starts and ends
// summer time.
constexpr CFAbsoluteTime kSpringForward = 733539600;
constexpr CFAbsoluteTime kFallBack = 751683600;
constexpr CFAbsoluteTime kJanuary = 727012800;  // 2024-01-15 12:00 UTC
constexpr CFAbsoluteTime kJuly = 742737600;     // 2024-07-15 12:00 UTC

Owned<CFTimeZoneRef> zone(const char* name) {
    std::string n = name;
    return own(CFTimeZoneCreateWithName(nullptr, string(std::u16string(n.begin(), n.end())), false));
}

CFGregorianDate gregorian(SInt32 year, int month, int day, int hour = 0, int minute = 0, double second = 0) {
    return CFGregorianDate{year, SInt8(month), SInt8(day), SInt8(hour), SInt8(minute), second};
}

CFGregorianUnits units(SInt32 years, SInt32 months, SInt32 days, SInt32 hours = 0, SInt32 minutes = 0,
                       double seconds = 0) {
    return CFGregorianUnits{years, months, days, hours, minutes, seconds};
}

}  // namespace

bool operator==(const CFGregorianDate& a, const CFGregorianDate& b) {
    return a.year == b.year && a.month == b.month && a.day == b.day && a.hour == b.hour && a.minute == b.minute &&
           a.second == b.second && std::signbit(a.second) == std::signbit(b.second);
}

std::ostream& operator<<(std::ostream& out, const CFGregorianDate& d) {
    return out << d.year << "-" << int(d.month) << "-" << int(d.day) << " " << int(d.hour) << ":" << int(d.minute)
               << ":" << d.second;
}

TEST(GregorianDateInZone, FromAbsoluteTime) {
    EXPECT_EQ(CFAbsoluteTimeGetGregorianDate(0, nullptr), gregorian(2001, 1, 1));
    EXPECT_EQ(CFAbsoluteTimeGetGregorianDate(-1, nullptr), gregorian(2000, 12, 31, 23, 59, 59));
    EXPECT_EQ(CFAbsoluteTimeGetGregorianDate(-0.0, nullptr), gregorian(2001, 1, 1, 0, 0, 0.0));
    EXPECT_EQ(CFAbsoluteTimeGetGregorianDate(0.5, nullptr), gregorian(2001, 1, 1, 0, 0, 0.5));
    EXPECT_EQ(CFAbsoluteTimeGetGregorianDate(-0.25, nullptr), gregorian(2000, 12, 31, 23, 59, 59.75));
    EXPECT_EQ(CFAbsoluteTimeGetGregorianDate(kJuly, nullptr), gregorian(2024, 7, 15, 12));

    auto paris = zone("Europe/Paris");
    EXPECT_EQ(CFAbsoluteTimeGetGregorianDate(kJanuary, paris), gregorian(2024, 1, 15, 13));
    EXPECT_EQ(CFAbsoluteTimeGetGregorianDate(kJuly, paris), gregorian(2024, 7, 15, 14));
    EXPECT_EQ(CFAbsoluteTimeGetGregorianDate(kSpringForward - 0.5, paris), gregorian(2024, 3, 31, 1, 59, 59.5));
    EXPECT_EQ(CFAbsoluteTimeGetGregorianDate(kSpringForward, paris), gregorian(2024, 3, 31, 3));
    EXPECT_EQ(CFAbsoluteTimeGetGregorianDate(kFallBack - 1, paris), gregorian(2024, 10, 27, 2, 59, 59));
    EXPECT_EQ(CFAbsoluteTimeGetGregorianDate(kFallBack, paris), gregorian(2024, 10, 27, 2));
    EXPECT_EQ(CFAbsoluteTimeGetGregorianDate(kJanuary, zone("America/New_York")), gregorian(2024, 1, 15, 7));
    EXPECT_EQ(CFAbsoluteTimeGetGregorianDate(kJanuary, own(CFTimeZoneCreateWithTimeIntervalFromGMT(nullptr, -34200))),
              gregorian(2024, 1, 15, 2, 30));

    // Proleptic Gregorian, astronomical years: no Julian days before 1582.
    CFAbsoluteTime october1582 = CFGregorianDateGetAbsoluteTime(gregorian(1582, 10, 10, 12), nullptr);
    EXPECT_EQ(CFAbsoluteTimeGetGregorianDate(october1582, nullptr), gregorian(1582, 10, 10, 12));
    EXPECT_EQ(CFAbsoluteTimeGetGregorianDate(october1582 - 86400 * 4, nullptr), gregorian(1582, 10, 6, 12));
    CFAbsoluteTime yearZero = CFGregorianDateGetAbsoluteTime(gregorian(0, 2, 29), nullptr);
    EXPECT_EQ(CFAbsoluteTimeGetGregorianDate(yearZero, nullptr), gregorian(0, 2, 29));
    EXPECT_EQ(CFAbsoluteTimeGetGregorianDate(yearZero - 86400 * 60, nullptr), gregorian(-1, 12, 31));

    // No date holds these.
    for (double t : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(), 1e300}) {
        EXPECT_EQ(CFAbsoluteTimeGetGregorianDate(t, paris), gregorian(0, 0, 0)) << t;
    }
}

TEST(GregorianDateInZone, ToAbsoluteTime) {
    EXPECT_EQ(CFGregorianDateGetAbsoluteTime(gregorian(2001, 1, 1), nullptr), 0.0);
    EXPECT_EQ(CFGregorianDateGetAbsoluteTime(gregorian(2024, 7, 15, 12), nullptr), kJuly);
    // Fields are not range-checked: they simply add up.
    EXPECT_EQ(CFGregorianDateGetAbsoluteTime(gregorian(2001, 1, 0), nullptr), -86400.0);
    EXPECT_EQ(CFGregorianDateGetAbsoluteTime(gregorian(2001, 1, 1, 25), nullptr), 90000.0);
    EXPECT_EQ(CFGregorianDateGetAbsoluteTime(gregorian(2001, 1, 1, 0, -1, -5), nullptr), -65.0);
    EXPECT_EQ(CFGregorianDateGetAbsoluteTime(gregorian(2001, 1, 1, 0, 0, 0.125), nullptr), 0.125);
    // A month outside 1...12 contributes nothing.
    EXPECT_EQ(CFGregorianDateGetAbsoluteTime(gregorian(2001, 13, 2), nullptr), 86400.0);
    EXPECT_EQ(CFGregorianDateGetAbsoluteTime(gregorian(2001, 0, 2), nullptr), 86400.0);

    auto paris = zone("Europe/Paris");
    EXPECT_EQ(CFGregorianDateGetAbsoluteTime(gregorian(2001, 1, 1), paris), -3600.0);
    EXPECT_EQ(CFGregorianDateGetAbsoluteTime(gregorian(2024, 7, 15, 14), paris), kJuly);
    EXPECT_EQ(CFGregorianDateGetAbsoluteTime(gregorian(2024, 3, 31, 1, 59, 59), paris), kSpringForward - 1);
    EXPECT_EQ(CFGregorianDateGetAbsoluteTime(gregorian(2024, 3, 31, 3), paris), kSpringForward);
    // 02:30 that night never happened: it is read with the winter offset,
    // which makes it 03:30 summer time.
    EXPECT_EQ(CFGregorianDateGetAbsoluteTime(gregorian(2024, 3, 31, 2, 30), paris), kSpringForward + 1800);
    // 02:30 in October happened twice: the second one, in winter time.
    EXPECT_EQ(CFGregorianDateGetAbsoluteTime(gregorian(2024, 10, 27, 2, 30), paris), kFallBack + 1800);
    auto newYork = zone("America/New_York");
    // 2024-11-03 06:00 UTC: New York goes back from 02:00 EDT to 01:00 EST.
    EXPECT_EQ(CFGregorianDateGetAbsoluteTime(gregorian(2024, 11, 3, 1, 30), newYork), 752306400.0 + 1800);

    // Every time around the spring change comes back unchanged; in the
    // repeated hour of the autumn change, the summer-time instants come
    // back as the winter-time ones an hour later.
    for (double t = kSpringForward - 7200; t <= kSpringForward + 7200; t += 450) {
        EXPECT_EQ(CFGregorianDateGetAbsoluteTime(CFAbsoluteTimeGetGregorianDate(t, paris), paris), t) << t;
    }
    for (double t = kFallBack - 7200; t <= kFallBack + 7200; t += 450) {
        bool repeated = t >= kFallBack - 3600 && t < kFallBack;
        EXPECT_EQ(CFGregorianDateGetAbsoluteTime(CFAbsoluteTimeGetGregorianDate(t, paris), paris),
                  repeated ? t + 3600 : t)
            << t;
    }
}

TEST(GregorianDateInZone, DayOfWeekAndDayOfYear) {
    EXPECT_EQ(CFAbsoluteTimeGetDayOfWeek(0, nullptr), 1);   // Monday 2001-01-01
    EXPECT_EQ(CFAbsoluteTimeGetDayOfWeek(-1, nullptr), 7);  // Sunday 2000-12-31
    EXPECT_EQ(CFAbsoluteTimeGetDayOfWeek(kJuly, nullptr), 1);
    EXPECT_EQ(CFAbsoluteTimeGetDayOfYear(0, nullptr), 1);
    EXPECT_EQ(CFAbsoluteTimeGetDayOfYear(-1, nullptr), 366);
    EXPECT_EQ(CFAbsoluteTimeGetDayOfYear(kJuly, nullptr), 197);
    // The day is the zone's: an hour before 2001 in UTC is already 2001 in
    // Tokyo, and still 2000 in New York.
    auto tokyo = zone("Asia/Tokyo");
    EXPECT_EQ(CFAbsoluteTimeGetDayOfWeek(-3600, tokyo), 1);
    EXPECT_EQ(CFAbsoluteTimeGetDayOfYear(-3600, tokyo), 1);
    EXPECT_EQ(CFAbsoluteTimeGetDayOfWeek(3600, zone("America/New_York")), 7);
    EXPECT_EQ(CFAbsoluteTimeGetDayOfYear(3600, zone("America/New_York")), 366);
    EXPECT_EQ(CFAbsoluteTimeGetDayOfWeek(std::numeric_limits<double>::quiet_NaN(), nullptr), 0);
    EXPECT_EQ(CFAbsoluteTimeGetDayOfYear(std::numeric_limits<double>::infinity(), nullptr), 0);
}

TEST(GregorianDateInZone, AddingUnits) {
    auto at = [](SInt32 y, int m, int d, int h = 0, CFTimeZoneRef tz = nullptr) {
        return CFGregorianDateGetAbsoluteTime(gregorian(y, m, d, h), tz);
    };
    auto dateOf = [](CFAbsoluteTime t, CFTimeZoneRef tz = nullptr) { return CFAbsoluteTimeGetGregorianDate(t, tz); };
    // A day the new month lacks becomes its last day.
    EXPECT_EQ(dateOf(CFAbsoluteTimeAddGregorianUnits(at(2024, 1, 31), nullptr, units(0, 1, 0))),
              gregorian(2024, 2, 29));
    EXPECT_EQ(dateOf(CFAbsoluteTimeAddGregorianUnits(at(2024, 1, 31), nullptr, units(0, 13, 0))),
              gregorian(2025, 2, 28));
    EXPECT_EQ(dateOf(CFAbsoluteTimeAddGregorianUnits(at(2024, 3, 31), nullptr, units(0, -1, 0))),
              gregorian(2024, 2, 29));
    EXPECT_EQ(dateOf(CFAbsoluteTimeAddGregorianUnits(at(2024, 1, 15), nullptr, units(0, -13, 0))),
              gregorian(2022, 12, 15));
    EXPECT_EQ(dateOf(CFAbsoluteTimeAddGregorianUnits(at(2024, 2, 29), nullptr, units(1, 0, 0))),
              gregorian(2025, 2, 28));
    EXPECT_EQ(dateOf(CFAbsoluteTimeAddGregorianUnits(at(2024, 2, 29), nullptr, units(4, 0, 0))),
              gregorian(2028, 2, 29));
    // Years and months first, then days.
    EXPECT_EQ(dateOf(CFAbsoluteTimeAddGregorianUnits(at(2024, 1, 31), nullptr, units(0, 1, 1))), gregorian(2024, 3, 1));
    EXPECT_EQ(dateOf(CFAbsoluteTimeAddGregorianUnits(at(2024, 12, 31), nullptr, units(0, 0, -366))),
              gregorian(2023, 12, 31));
    EXPECT_EQ(CFAbsoluteTimeAddGregorianUnits(0.25, nullptr, units(0, 0, 0, 1, 2, 3.5)), 3723.75);
    EXPECT_EQ(CFAbsoluteTimeAddGregorianUnits(0, nullptr, units(0, 0, 0, 0, -1, 0)), -60.0);

    // Days keep the wall-clock time across a change of offset; hours are
    // elapsed time.
    auto paris = zone("Europe/Paris");
    CFAbsoluteTime noon = at(2024, 3, 30, 12, paris);
    EXPECT_EQ(CFAbsoluteTimeAddGregorianUnits(noon, paris, units(0, 0, 1)), noon + 23 * 3600);
    EXPECT_EQ(dateOf(CFAbsoluteTimeAddGregorianUnits(noon, paris, units(0, 0, 0, 24)), paris),
              gregorian(2024, 3, 31, 13));
    EXPECT_EQ(dateOf(CFAbsoluteTimeAddGregorianUnits(noon, paris, units(0, 1, 0)), paris), gregorian(2024, 4, 30, 12));
    EXPECT_EQ(CFAbsoluteTimeAddGregorianUnits(noon, nullptr, units(0, 0, 1)), noon + 24 * 3600);
    EXPECT_TRUE(
        std::isnan(CFAbsoluteTimeAddGregorianUnits(std::numeric_limits<double>::quiet_NaN(), paris, units(0, 0, 1))));
}

TEST(GregorianDateInZone, WrongTypeZoneIsReportedAndReadAsUTC) {
    auto notAZone = string(u"Europe/Paris");
    auto wrong = reinterpret_cast<CFTimeZoneRef>(notAZone.get());
    std::string reports = reportsOf([&] {
        EXPECT_EQ(CFAbsoluteTimeGetGregorianDate(kJuly, wrong), gregorian(2024, 7, 15, 12));
        EXPECT_EQ(CFGregorianDateGetAbsoluteTime(gregorian(2024, 7, 15, 12), wrong), kJuly);
        EXPECT_EQ(CFAbsoluteTimeGetDayOfWeek(kJuly, wrong), 1);
        EXPECT_EQ(CFAbsoluteTimeGetDayOfYear(kJuly, wrong), 197);
        EXPECT_EQ(CFAbsoluteTimeAddGregorianUnits(kJuly, wrong, units(0, 0, 1)), kJuly + 86400);
    });
    EXPECT_EQ(lineCount(reports), 5);
    EXPECT_EQ(occurrences(reports, "CFDate: CFAbsoluteTimeGetGregorianDate(): not a time zone\n"), 1);
    EXPECT_EQ(occurrences(reports, "CFDate: CFAbsoluteTimeAddGregorianUnits(): not a time zone\n"), 1);
    EXPECT_EQ(CFGetRetainCount(notAZone), 1);
}
