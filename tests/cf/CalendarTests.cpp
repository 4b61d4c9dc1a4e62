// CFCalendar: identifiers, the current calendar, locale, time zone and week
// settings, composing and decomposing times (across changes of offset),
// adding fields, differences, ranges and ordinality, other calendars,
// equality, descriptions and refused misuse.
#include "CFTestSupport.h"
#include "MisuseReports.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <thread>
#include <vector>

using namespace cftest;

namespace {

// 2024-03-31 01:00 UTC: Paris moves from 02:00 CET to 03:00 CEST.
constexpr CFAbsoluteTime kSpringForward = 733539600;
// 2024-10-27 01:00 UTC: Paris moves from 03:00 CEST back to 02:00 CET.
constexpr CFAbsoluteTime kFallBack = 751683600;

Owned<CFStringRef> text(const std::string& ascii) {
    return string(std::u16string(ascii.begin(), ascii.end()));
}

Owned<CFTimeZoneRef> zone(const char* name) {
    return own(CFTimeZoneCreateWithName(nullptr, text(name), false));
}

Owned<CFCalendarRef> calendar(CFStringRef identifier, const char* zoneName = "Europe/Paris") {
    auto cal = own(CFCalendarCreateWithIdentifier(nullptr, identifier));
    if (cal) CFCalendarSetTimeZone(cal, zone(zoneName));
    return cal;
}

Owned<CFLocaleRef> locale(const char* identifier) {
    return own(CFLocaleCreate(nullptr, text(identifier)));
}

struct Fields {
    int year = -1, month = -1, day = -1, hour = -1, minute = -1, second = -1;
    bool operator==(const Fields&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Fields& f) {
    return out << f.year << "-" << f.month << "-" << f.day << " " << f.hour << ":" << f.minute << ":" << f.second;
}

Fields decompose(CFCalendarRef cal, CFAbsoluteTime at) {
    Fields f;
    EXPECT_TRUE(
        CFCalendarDecomposeAbsoluteTime(cal, at, "yMdHms", &f.year, &f.month, &f.day, &f.hour, &f.minute, &f.second));
    return f;
}

std::optional<CFAbsoluteTime> compose(CFCalendarRef cal, int y, int mo, int d, int h, int mi, int s) {
    CFAbsoluteTime at = -1;
    if (!CFCalendarComposeAbsoluteTime(cal, &at, "yMdHms", y, mo, d, h, mi, s)) return std::nullopt;
    return at;
}

std::string pointerText(const void* p) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "0x%lx", static_cast<unsigned long>(reinterpret_cast<uintptr_t>(p)));
    return buffer;
}

class ScopedLang {
public:
    explicit ScopedLang(const char* value) {
        for (const char* name : {"LC_ALL", "LC_MESSAGES"}) unsetenv(name);
        if (const char* old = std::getenv("LANG")) old_ = old;
        setenv("LANG", value, 1);
    }
    ~ScopedLang() {
        if (old_) {
            setenv("LANG", old_->c_str(), 1);
        } else {
            unsetenv("LANG");
        }
    }

private:
    std::optional<std::string> old_;
};

}  // namespace

TEST(Calendar, CreationByIdentifier) {
    EXPECT_EQ(CFCalendarGetTypeID(), 49u);
    EXPECT_EQ(ascii(own(CFCopyTypeIDDescription(CFCalendarGetTypeID()))), "CFCalendar");
    CFTimeZoneSetDefault(zone("Asia/Tokyo"));

    auto gregorian = own(CFCalendarCreateWithIdentifier(nullptr, kCFGregorianCalendar));
    ASSERT_TRUE(gregorian);
    EXPECT_EQ(CFGetTypeID(gregorian), CFCalendarGetTypeID());
    EXPECT_EQ(CFGetRetainCount(gregorian), 1);
    // The identifier comes back as the constant, whatever string named it.
    EXPECT_EQ(CFCalendarGetIdentifier(gregorian), kCFCalendarIdentifierGregorian);
    EXPECT_EQ(CFCalendarGetIdentifier(own(CFCalendarCreateWithIdentifier(nullptr, text("gregorian")))),
              kCFCalendarIdentifierGregorian);
    EXPECT_EQ(own(CFCalendarCopyLocale(gregorian)).get(), CFLocaleGetSystem());
    EXPECT_EQ(ascii(CFTimeZoneGetName(own(CFCalendarCopyTimeZone(gregorian)))), "Asia/Tokyo");

    for (CFStringRef identifier :
         {kCFCalendarIdentifierBuddhist, kCFCalendarIdentifierJapanese, kCFCalendarIdentifierIslamic,
          kCFCalendarIdentifierIslamicCivil, kCFCalendarIdentifierIslamicUmmAlQura, kCFCalendarIdentifierIslamicTabular,
          kCFCalendarIdentifierHebrew, kCFCalendarIdentifierChinese, kCFCalendarIdentifierRepublicOfChina,
          kCFCalendarIdentifierPersian, kCFCalendarIdentifierIndian, kCFCalendarIdentifierISO8601,
          kCFCalendarIdentifierCoptic, kCFCalendarIdentifierEthiopicAmeteMihret,
          kCFCalendarIdentifierEthiopicAmeteAlem}) {
        auto cal = own(CFCalendarCreateWithIdentifier(nullptr, identifier));
        ASSERT_TRUE(cal) << ascii(identifier);
        EXPECT_EQ(CFCalendarGetIdentifier(cal), identifier);
    }
    for (const char* other : {"Gregorian", "julian", "", "gregorian "}) {
        EXPECT_EQ(CFCalendarCreateWithIdentifier(nullptr, text(other)), nullptr) << other;
    }
    EXPECT_EQ(CFCalendarCreateWithIdentifier(kCFAllocatorNull, kCFGregorianCalendar), nullptr);
}

TEST(Calendar, EqualityHashAndDescription) {
    auto paris = calendar(kCFGregorianCalendar, "Europe/Paris");
    auto tokyo = calendar(kCFGregorianCalendar, "Asia/Tokyo");
    CFCalendarSetLocale(tokyo, locale("de_DE"));
    EXPECT_TRUE(CFEqual(paris, tokyo));  // identifiers only
    EXPECT_FALSE(CFEqual(paris, calendar(kCFBuddhistCalendar)));
    EXPECT_FALSE(CFEqual(paris, kCFGregorianCalendar));
    EXPECT_EQ(CFHash(paris), CFHash(text("gregorian")));
    EXPECT_EQ(ascii(own(CFCopyDescription(paris))), "<CFCalendar " + pointerText(paris) + " [" +
                                                        pointerText(kCFAllocatorSystemDefault) +
                                                        "]>{identifier = 'gregorian'}");
}

TEST(Calendar, CurrentCalendarFollowsTheCurrentLocale) {
    CFTimeZoneSetDefault(zone("America/New_York"));
    {
        ScopedLang lang("th_TH.UTF-8");
        auto current = own(CFCalendarCopyCurrent());
        ASSERT_TRUE(current);
        EXPECT_EQ(CFCalendarGetIdentifier(current), kCFCalendarIdentifierBuddhist);
        EXPECT_EQ(own(CFCalendarCopyLocale(current)).get(), own(CFLocaleCopyCurrent()).get());
        EXPECT_EQ(ascii(CFTimeZoneGetName(own(CFCalendarCopyTimeZone(current)))), "America/New_York");
        int year = 0;
        EXPECT_TRUE(CFCalendarDecomposeAbsoluteTime(current, 727012800, "y", &year));
        EXPECT_EQ(year, 2567);  // 2024
    }
    ScopedLang lang("de_DE.UTF-8");
    auto current = own(CFCalendarCopyCurrent());
    EXPECT_NE(own(CFCalendarCopyCurrent()).get(), current.get());  // a new calendar each time
    EXPECT_EQ(CFCalendarGetIdentifier(current), kCFCalendarIdentifierGregorian);
    EXPECT_EQ(CFCalendarGetFirstWeekday(current), 2);
    EXPECT_EQ(CFCalendarGetMinimumDaysInFirstWeek(current), 4);
}

TEST(Calendar, TimeZoneLocaleAndWeekSettings) {
    CFTimeZoneSetDefault(zone("Asia/Tokyo"));
    auto cal = calendar(kCFGregorianCalendar, "Europe/Paris");
    auto paris = own(CFCalendarCopyTimeZone(cal));
    EXPECT_EQ(ascii(CFTimeZoneGetName(paris)), "Europe/Paris");
    CFIndex count = CFGetRetainCount(paris);
    CFCalendarSetTimeZone(cal, nullptr);  // the default zone
    EXPECT_EQ(CFGetRetainCount(paris), count - 1);
    EXPECT_EQ(ascii(CFTimeZoneGetName(own(CFCalendarCopyTimeZone(cal)))), "Asia/Tokyo");
    EXPECT_EQ(decompose(cal, 0), (Fields{2001, 1, 1, 9, 0, 0}));

    CFCalendarSetLocale(cal, locale("en_US"));
    EXPECT_EQ(ascii(CFLocaleGetIdentifier(own(CFCalendarCopyLocale(cal)))), "en_US");
    EXPECT_EQ(CFCalendarGetFirstWeekday(cal), 1);
    EXPECT_EQ(CFCalendarGetMinimumDaysInFirstWeek(cal), 1);
    CFCalendarSetLocale(cal, locale("de_DE"));
    EXPECT_EQ(CFCalendarGetFirstWeekday(cal), 2);
    EXPECT_EQ(CFCalendarGetMinimumDaysInFirstWeek(cal), 4);
    // What was set explicitly survives a change of locale; the rest follows it.
    CFCalendarSetFirstWeekday(cal, 7);
    CFCalendarSetLocale(cal, locale("en_US"));
    EXPECT_EQ(CFCalendarGetFirstWeekday(cal), 7);
    EXPECT_EQ(CFCalendarGetMinimumDaysInFirstWeek(cal), 1);
    CFCalendarSetMinimumDaysInFirstWeek(cal, 3);
    CFCalendarSetLocale(cal, nullptr);  // ignored
    EXPECT_EQ(ascii(CFLocaleGetIdentifier(own(CFCalendarCopyLocale(cal)))), "en_US");
    EXPECT_EQ(CFCalendarGetMinimumDaysInFirstWeek(cal), 3);
    // The week settings decide the weeks of the year: 2021-01-01 was a Friday.
    CFCalendarSetTimeZone(cal, zone("UTC"));
    int week = 0, yearForWeek = 0;
    CFAbsoluteTime newYear2021 = 631152000;
    CFCalendarSetFirstWeekday(cal, 2);
    CFCalendarSetMinimumDaysInFirstWeek(cal, 4);
    EXPECT_TRUE(CFCalendarDecomposeAbsoluteTime(cal, newYear2021, "wY", &week, &yearForWeek));
    EXPECT_EQ(week, 53);
    EXPECT_EQ(yearForWeek, 2020);
    CFCalendarSetMinimumDaysInFirstWeek(cal, 1);
    EXPECT_TRUE(CFCalendarDecomposeAbsoluteTime(cal, newYear2021, "wY", &week, &yearForWeek));
    EXPECT_EQ(week, 1);
    EXPECT_EQ(yearForWeek, 2021);

    auto iso = calendar(kCFCalendarIdentifierISO8601);
    EXPECT_EQ(CFCalendarGetFirstWeekday(iso), 2);
    EXPECT_EQ(CFCalendarGetMinimumDaysInFirstWeek(iso), 4);
}

TEST(Calendar, ComposeAndDecomposeAcrossChangesOfOffset) {
    auto utc = calendar(kCFGregorianCalendar, "UTC");
    EXPECT_EQ(compose(utc, 2001, 1, 1, 0, 0, 0), 0.0);
    EXPECT_EQ(decompose(utc, 0), (Fields{2001, 1, 1, 0, 0, 0}));
    EXPECT_EQ(decompose(utc, -1), (Fields{2000, 12, 31, 23, 59, 59}));
    EXPECT_EQ(compose(utc, 2024, 2, 29, 0, 0, 0), 730857600.0);
    // Lenient: day 0 is the last of the month before, month 13 the next
    // January, hour 24 the next day.
    EXPECT_EQ(compose(utc, 2024, 3, 0, 0, 0, 0), 730857600.0);
    EXPECT_EQ(compose(utc, 2023, 14, 29, 0, 0, 0), 730857600.0);
    EXPECT_EQ(compose(utc, 2024, 2, 28, 24, 0, 0), 730857600.0);
    // Fields not given: January 1 of year 1 at midnight.
    CFAbsoluteTime at = 0;
    EXPECT_TRUE(CFCalendarComposeAbsoluteTime(utc, &at, "y", 2001));
    EXPECT_EQ(at, 0.0);
    EXPECT_TRUE(CFCalendarComposeAbsoluteTime(utc, &at, "Md", 2, 3));
    int year = 0, month = 0, day = 0, weekday = 0, dayOfYear = 0;
    EXPECT_TRUE(CFCalendarDecomposeAbsoluteTime(utc, at, "yMdED", &year, &month, &day, &weekday, &dayOfYear));
    EXPECT_EQ(year, 1);
    EXPECT_EQ(month, 2);
    EXPECT_EQ(day, 3);
    EXPECT_EQ(dayOfYear, 34);
    EXPECT_TRUE(CFCalendarDecomposeAbsoluteTime(utc, 0, "E", &weekday));
    EXPECT_EQ(weekday, 2);  // 2001-01-01 was a Monday; Sunday is 1
    // Fractions of a second are dropped by decomposing.
    EXPECT_EQ(decompose(utc, 59.999), (Fields{2001, 1, 1, 0, 0, 59}));

    auto paris = calendar(kCFGregorianCalendar, "Europe/Paris");
    EXPECT_EQ(decompose(paris, kSpringForward - 1), (Fields{2024, 3, 31, 1, 59, 59}));
    EXPECT_EQ(decompose(paris, kSpringForward), (Fields{2024, 3, 31, 3, 0, 0}));
    EXPECT_EQ(compose(paris, 2024, 3, 31, 1, 59, 59), kSpringForward - 1);
    EXPECT_EQ(compose(paris, 2024, 3, 31, 3, 0, 0), kSpringForward);
    // 02:30 never happened that night: read with the offset before the
    // change, it is 03:30 summer time.
    EXPECT_EQ(compose(paris, 2024, 3, 31, 2, 30, 0), 733541400.0);
    // 02:30 happened twice in October: the later one, in winter time.
    EXPECT_EQ(decompose(paris, kFallBack - 1800), (Fields{2024, 10, 27, 2, 30, 0}));
    EXPECT_EQ(decompose(paris, kFallBack + 1800), (Fields{2024, 10, 27, 2, 30, 0}));
    EXPECT_EQ(compose(paris, 2024, 10, 27, 2, 30, 0), kFallBack + 1800);

    int unused = 7;
    EXPECT_FALSE(CFCalendarDecomposeAbsoluteTime(paris, 0, "yx", &unused, &unused));
    EXPECT_EQ(unused, 7);
    at = 5;
    EXPECT_FALSE(CFCalendarComposeAbsoluteTime(paris, &at, "yQ", 2024, 1));
    EXPECT_EQ(at, 5.0);
}

TEST(Calendar, AddingAndDifferences) {
    auto paris = calendar(kCFGregorianCalendar, "Europe/Paris");
    // Noon the day before summer time starts, plus one day, is noon again:
    // 23 hours later.
    CFAbsoluteTime noon = 733489200;
    CFAbsoluteTime at = noon;
    EXPECT_TRUE(CFCalendarAddComponents(paris, &at, 0, "d", 1));
    EXPECT_EQ(at, 733572000.0);
    EXPECT_EQ(decompose(paris, at), (Fields{2024, 3, 31, 12, 0, 0}));
    at = noon;
    EXPECT_TRUE(CFCalendarAddComponents(paris, &at, 0, "H", 24));
    EXPECT_EQ(decompose(paris, at), (Fields{2024, 3, 31, 13, 0, 0}));
    // The fraction of a second is kept.
    at = noon + 0.25;
    EXPECT_TRUE(CFCalendarAddComponents(paris, &at, 0, "ds", 1, 30));
    EXPECT_EQ(at, 733572030.25);
    // January 31 plus one month is the last day of February.
    at = *compose(paris, 2024, 1, 31, 0, 0, 0);
    EXPECT_TRUE(CFCalendarAddComponents(paris, &at, 0, "M", 1));
    EXPECT_EQ(decompose(paris, at), (Fields{2024, 2, 29, 0, 0, 0}));
    // Fields are added one after the other: minus one year is 2023-02-28
    // already, and two months before that the 28th again.
    EXPECT_TRUE(CFCalendarAddComponents(paris, &at, 0, "yM", -1, -2));
    EXPECT_EQ(decompose(paris, at), (Fields{2022, 12, 28, 0, 0, 0}));
    // Wrapping rolls a field within the next larger one.
    EXPECT_TRUE(CFCalendarAddComponents(paris, &at, kCFCalendarComponentsWrap, "M", 1));
    EXPECT_EQ(decompose(paris, at), (Fields{2022, 1, 28, 0, 0, 0}));
    EXPECT_TRUE(CFCalendarAddComponents(paris, &at, kCFCalendarComponentsWrap, "H", -1));
    EXPECT_EQ(decompose(paris, at), (Fields{2022, 1, 28, 23, 0, 0}));
    CFAbsoluteTime before = at;
    EXPECT_FALSE(CFCalendarAddComponents(paris, &at, 0, "dz", 1, 1));
    EXPECT_EQ(at, before);

    int months = 0, days = 0, hours = 0, years = 0;
    CFAbsoluteTime january31 = *compose(paris, 2024, 1, 31, 0, 0, 0);
    CFAbsoluteTime march1 = *compose(paris, 2024, 3, 1, 0, 0, 0);
    EXPECT_TRUE(CFCalendarGetComponentDifference(paris, january31, march1, 0, "Md", &months, &days));
    EXPECT_EQ(months, 1);
    EXPECT_EQ(days, 1);
    EXPECT_TRUE(CFCalendarGetComponentDifference(paris, march1, january31, 0, "Md", &months, &days));
    EXPECT_EQ(months, -1);
    EXPECT_EQ(days, -1);
    // Across the change: one calendar day, but only 23 hours.
    EXPECT_TRUE(CFCalendarGetComponentDifference(paris, noon, 733572000, 0, "d", &days));
    EXPECT_EQ(days, 1);
    EXPECT_TRUE(CFCalendarGetComponentDifference(paris, noon, 733572000, 0, "H", &hours));
    EXPECT_EQ(hours, 23);
    EXPECT_TRUE(CFCalendarGetComponentDifference(paris, *compose(paris, 2024, 6, 1, 0, 0, 0),
                                                 *compose(paris, 2020, 7, 1, 0, 0, 0), 0, "y", &years));
    EXPECT_EQ(years, -3);
    // Whole units only: 0.75 s after a start at .5 is not a second yet.
    int seconds = -1;
    EXPECT_TRUE(CFCalendarGetComponentDifference(paris, 10.5, 11.25, 0, "s", &seconds));
    EXPECT_EQ(seconds, 0);
    EXPECT_TRUE(CFCalendarGetComponentDifference(paris, 10.5, 11.5, 0, "s", &seconds));
    EXPECT_EQ(seconds, 1);
}

TEST(Calendar, RangesAndOrdinality) {
    auto utc = calendar(kCFGregorianCalendar, "UTC");
    CFAbsoluteTime leapDay = 730857600;  // Thursday 2024-02-29
    auto range = [&](CFCalendarUnit smaller, CFCalendarUnit bigger, CFAbsoluteTime at) {
        CFRange r = CFCalendarGetRangeOfUnit(utc, smaller, bigger, at);
        return std::make_pair(r.location, r.length);
    };
    using Pair = std::pair<CFIndex, CFIndex>;
    EXPECT_EQ(range(kCFCalendarUnitDay, kCFCalendarUnitMonth, leapDay), Pair(1, 29));
    EXPECT_EQ(range(kCFCalendarUnitDay, kCFCalendarUnitMonth, 0), Pair(1, 31));
    EXPECT_EQ(range(kCFCalendarUnitDay, kCFCalendarUnitYear, leapDay), Pair(1, 366));
    EXPECT_EQ(range(kCFCalendarUnitDay, kCFCalendarUnitYear, 0), Pair(1, 365));
    EXPECT_EQ(range(kCFCalendarUnitMonth, kCFCalendarUnitYear, leapDay), Pair(1, 12));
    EXPECT_EQ(range(kCFCalendarUnitHour, kCFCalendarUnitDay, leapDay), Pair(0, 24));
    EXPECT_EQ(range(kCFCalendarUnitMinute, kCFCalendarUnitHour, leapDay), Pair(0, 60));
    EXPECT_EQ(range(kCFCalendarUnitWeekday, kCFCalendarUnitWeekOfMonth, leapDay), Pair(1, 7));
    EXPECT_EQ(range(kCFCalendarUnitWeekdayOrdinal, kCFCalendarUnitMonth, leapDay), Pair(1, 5));
    EXPECT_EQ(range(kCFCalendarUnitWeekdayOrdinal, kCFCalendarUnitMonth, 634608000), Pair(1, 4));  // February 2021
    EXPECT_EQ(range(kCFCalendarUnitHour, kCFCalendarUnitMonth, leapDay), Pair(kCFNotFound, kCFNotFound));
    EXPECT_EQ(range(kCFCalendarUnitYear, kCFCalendarUnitDay, leapDay), Pair(kCFNotFound, kCFNotFound));

    auto ordinality = [&](CFCalendarUnit smaller, CFCalendarUnit bigger, CFAbsoluteTime at) {
        return CFCalendarGetOrdinalityOfUnit(utc, smaller, bigger, at);
    };
    EXPECT_EQ(ordinality(kCFCalendarUnitDay, kCFCalendarUnitYear, leapDay), 60);
    EXPECT_EQ(ordinality(kCFCalendarUnitDay, kCFCalendarUnitMonth, leapDay), 29);
    EXPECT_EQ(ordinality(kCFCalendarUnitMonth, kCFCalendarUnitYear, leapDay), 2);
    EXPECT_EQ(ordinality(kCFCalendarUnitHour, kCFCalendarUnitDay, leapDay + 3600 * 5 + 59), 6);
    EXPECT_EQ(ordinality(kCFCalendarUnitWeekdayOrdinal, kCFCalendarUnitMonth, leapDay), 5);
    EXPECT_EQ(ordinality(kCFCalendarUnitYear, kCFCalendarUnitEra, leapDay), 2024);
    // A Thursday, counted from the first weekday.
    CFCalendarSetFirstWeekday(utc, 1);
    EXPECT_EQ(ordinality(kCFCalendarUnitWeekday, kCFCalendarUnitWeekOfYear, leapDay), 5);
    CFCalendarSetFirstWeekday(utc, 2);
    EXPECT_EQ(ordinality(kCFCalendarUnitWeekday, kCFCalendarUnitWeekOfYear, leapDay), 4);
    CFCalendarSetFirstWeekday(utc, 5);
    EXPECT_EQ(ordinality(kCFCalendarUnitWeekday, kCFCalendarUnitWeekOfYear, leapDay), 1);
    EXPECT_EQ(ordinality(kCFCalendarUnitMinute, kCFCalendarUnitYear, leapDay), kCFNotFound);
}

TEST(Calendar, OtherCalendars) {
    CFAbsoluteTime january15 = 726969600;  // 2024-01-15 00:00 UTC
    auto fieldsIn = [&](CFStringRef identifier) { return decompose(calendar(identifier, "UTC"), january15); };
    EXPECT_EQ(fieldsIn(kCFBuddhistCalendar), (Fields{2567, 1, 15, 0, 0, 0}));
    EXPECT_EQ(fieldsIn(kCFRepublicOfChinaCalendar), (Fields{113, 1, 15, 0, 0, 0}));
    EXPECT_EQ(fieldsIn(kCFPersianCalendar), (Fields{1402, 10, 25, 0, 0, 0}));
    EXPECT_EQ(fieldsIn(kCFHebrewCalendar).year, 5784);
    auto japanese = calendar(kCFJapaneseCalendar, "UTC");
    int era = 0, year = 0;
    EXPECT_TRUE(CFCalendarDecomposeAbsoluteTime(japanese, january15, "Gy", &era, &year));
    EXPECT_EQ(year, 6);  // Reiwa 6
    CFAbsoluteTime back = 0;
    EXPECT_TRUE(CFCalendarComposeAbsoluteTime(japanese, &back, "GyMd", era, 6, 1, 15));
    EXPECT_EQ(back, january15);
    // Gregorian dates before October 1582 are Julian ones.
    auto gregorian = calendar(kCFGregorianCalendar, "UTC");
    CFAbsoluteTime firstGregorianDay = 0;
    EXPECT_TRUE(CFCalendarComposeAbsoluteTime(gregorian, &firstGregorianDay, "yMd", 1582, 10, 15));
    EXPECT_EQ(decompose(gregorian, firstGregorianDay - 86400), (Fields{1582, 10, 4, 0, 0, 0}));
}

TEST(Calendar, OneCalendarServesSeveralThreads) {
    auto shared = calendar(kCFGregorianCalendar, "Europe/Paris");
    std::vector<std::thread> threads;
    std::vector<int> mismatches(4, 0);
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            // Each thread works on its own days of 2024, so the fields it
            // reads back are known.
            for (int day = 1 + t; day <= 360; day += 4) {
                CFAbsoluteTime at = 0;
                int y = 0, m = 0, d = 0, h = 0;
                if (!CFCalendarComposeAbsoluteTime(shared, &at, "yDH", 2024, day, 12) ||
                    !CFCalendarDecomposeAbsoluteTime(shared, at, "yDH", &y, &d, &h) ||
                    !CFCalendarDecomposeAbsoluteTime(shared, at, "M", &m) || y != 2024 || d != day || h != 12 ||
                    m < 1 || m > 12) {
                    ++mismatches[size_t(t)];
                }
                auto tz = zone("Asia/Tokyo");
                if (CFTimeZoneGetSecondsFromGMT(tz, at) != 32400) ++mismatches[size_t(t)];
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(mismatches, std::vector<int>(4, 0));
}

TEST(Calendar, MisuseIsReportedAndRefused) {
    auto notACalendar = text("gregorian");
    auto wrong = static_cast<CFCalendarRef>(const_cast<void*>(static_cast<const void*>(notACalendar.get())));
    auto cal = calendar(kCFGregorianCalendar);
    CFAbsoluteTime at = 0;
    int value = 0;
    std::string reports = reportsOf([&] {
        for (CFCalendarRef bad : {CFCalendarRef(nullptr), wrong}) {
            EXPECT_EQ(CFCalendarGetIdentifier(bad), nullptr);
            EXPECT_EQ(CFCalendarCopyLocale(bad), nullptr);
            EXPECT_EQ(CFCalendarCopyTimeZone(bad), nullptr);
            CFCalendarSetTimeZone(bad, nullptr);
            CFCalendarSetLocale(bad, CFLocaleGetSystem());
            EXPECT_EQ(CFCalendarGetFirstWeekday(bad), 0);
            CFCalendarSetFirstWeekday(bad, 1);
            EXPECT_EQ(CFCalendarGetMinimumDaysInFirstWeek(bad), 0);
            CFCalendarSetMinimumDaysInFirstWeek(bad, 1);
            EXPECT_FALSE(CFCalendarComposeAbsoluteTime(bad, &at, "y", 2000));
            EXPECT_FALSE(CFCalendarDecomposeAbsoluteTime(bad, 0, "y", &value));
            EXPECT_FALSE(CFCalendarAddComponents(bad, &at, 0, "y", 1));
            EXPECT_FALSE(CFCalendarGetComponentDifference(bad, 0, 1, 0, "y", &value));
            EXPECT_EQ(CFCalendarGetRangeOfUnit(bad, kCFCalendarUnitDay, kCFCalendarUnitMonth, 0).location, kCFNotFound);
            EXPECT_EQ(CFCalendarGetOrdinalityOfUnit(bad, kCFCalendarUnitDay, kCFCalendarUnitMonth, 0), kCFNotFound);
        }
    });
    EXPECT_EQ(lineCount(reports), 30);
    EXPECT_EQ(occurrences(reports, "CFCalendar: CFCalendarGetIdentifier(): not a calendar\n"), 2);

    reports = reportsOf([&] {
        CFCalendarSetFirstWeekday(cal, 0);
        CFCalendarSetFirstWeekday(cal, 8);
        CFCalendarSetMinimumDaysInFirstWeek(cal, 0);
        CFCalendarSetTimeZone(cal, reinterpret_cast<CFTimeZoneRef>(notACalendar.get()));
        CFCalendarSetLocale(cal, reinterpret_cast<CFLocaleRef>(notACalendar.get()));
        EXPECT_FALSE(CFCalendarComposeAbsoluteTime(cal, nullptr, "y", 2000));
        EXPECT_FALSE(CFCalendarDecomposeAbsoluteTime(cal, 0, nullptr));
        EXPECT_EQ(CFCalendarCreateWithIdentifier(nullptr, nullptr), nullptr);
    });
    EXPECT_EQ(lineCount(reports), 8);
    EXPECT_EQ(occurrences(reports, "CFCalendarSetFirstWeekday(): weekday 8 is outside 1...7"), 1);
    EXPECT_EQ(CFCalendarGetFirstWeekday(cal), 1);
    EXPECT_EQ(ascii(CFTimeZoneGetName(own(CFCalendarCopyTimeZone(cal)))), "Europe/Paris");
    EXPECT_EQ(CFGetRetainCount(notACalendar), 1);
}
