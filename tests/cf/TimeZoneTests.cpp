// CFTimeZone: fixed offsets and their names, zones of the tz database with
// their offsets, daylight saving time and abbreviations, the shared object
// per name, the system zone from the environment, the default zone,
// descriptions and refused misuse.
#include "CFTestSupport.h"
#include "CFTimeZoneInternal.h"
#include "MisuseReports.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <optional>
#include <string>

using namespace cftest;

namespace {

// 2024-01-15 and 2024-07-15, 12:00 UTC.
constexpr CFAbsoluteTime kJanuary = 727012800;
constexpr CFAbsoluteTime kJuly = 742737600;

Owned<CFStringRef> text(const std::string& ascii) {
    return string(std::u16string(ascii.begin(), ascii.end()));
}

Owned<CFTimeZoneRef> named(const char* name, bool tryAbbreviation = false) {
    return own(CFTimeZoneCreateWithName(nullptr, text(name), tryAbbreviation));
}

Owned<CFTimeZoneRef> fixed(double seconds) {
    return own(CFTimeZoneCreateWithTimeIntervalFromGMT(nullptr, seconds));
}

std::string nameOf(CFTimeZoneRef tz) {
    return ascii(CFTimeZoneGetName(tz));
}

std::string abbreviation(CFTimeZoneRef tz, CFAbsoluteTime at) {
    return ascii(own(CFTimeZoneCopyAbbreviation(tz, at)));
}

std::string pointerText(const void* p) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "0x%lx", static_cast<unsigned long>(reinterpret_cast<uintptr_t>(p)));
    return buffer;
}

// Sets an environment variable for the life of the object, then puts the
// old value back and lets the system zone be worked out again.
class ScopedVariable {
public:
    ScopedVariable(const char* name, const char* value) : name_(name) {
        if (const char* old = std::getenv(name)) old_ = old;
        set(value);
    }
    ~ScopedVariable() {
        set(old_ ? old_->c_str() : nullptr);
        CFTimeZoneResetSystem();
    }
    void set(const char* value) {
        if (value != nullptr) {
            setenv(name_, value, 1);
        } else {
            unsetenv(name_);
        }
        CFTimeZoneResetSystem();
    }

private:
    const char* name_;
    std::optional<std::string> old_;
};

std::string systemZoneName() {
    return nameOf(own(CFTimeZoneCopySystem()));
}

}  // namespace

TEST(TimeZone, FixedOffsetsAreRoundedToMinutesAndNamedByThem) {
    EXPECT_EQ(CFTimeZoneGetTypeID(), 48u);
    EXPECT_EQ(ascii(own(CFCopyTypeIDDescription(CFTimeZoneGetTypeID()))), "CFTimeZone");

    const struct {
        double seconds;
        const char* name;
        double offset;
    } rows[] = {
        {3600, "GMT+0100", 3600},
        {-18000, "GMT-0500", -18000},
        {19800, "GMT+0530", 19800},
        {30, "GMT+0001", 60},
        {29, "GMT", 0},
        {-30, "GMT-0001", -60},
        {-29.9, "GMT", 0},
        {0, "GMT", 0},
        {64800, "GMT+1800", 64800},
        {-64800, "GMT-1800", -64800},
        {5429.5, "GMT+0130", 5400},
        {-12630, "GMT-0331", -12660},
    };
    for (const auto& row : rows) {
        auto tz = fixed(row.seconds);
        ASSERT_TRUE(tz) << row.seconds;
        EXPECT_EQ(CFGetTypeID(tz), CFTimeZoneGetTypeID());
        EXPECT_EQ(nameOf(tz), row.name);
        EXPECT_EQ(abbreviation(tz, kJanuary), row.name);
        EXPECT_EQ(abbreviation(tz, kJuly), row.name);
        EXPECT_EQ(CFTimeZoneGetSecondsFromGMT(tz, kJanuary), row.offset);
        EXPECT_EQ(CFTimeZoneGetSecondsFromGMT(tz, kJuly), row.offset);
        EXPECT_FALSE(CFTimeZoneIsDaylightSavingTime(tz, kJuly));
        EXPECT_EQ(CFTimeZoneGetDaylightSavingTimeOffset(tz, kJuly), 0.0);
        EXPECT_EQ(CFTimeZoneGetNextDaylightSavingTimeTransition(tz, kJanuary), 0.0);
    }
    // Beyond 18 hours, before any rounding.
    for (double seconds :
         {64800.5, -64801.0, 1e9, std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        EXPECT_EQ(CFTimeZoneCreateWithTimeIntervalFromGMT(nullptr, seconds), nullptr) << seconds;
    }
    EXPECT_EQ(CFTimeZoneCreateWithTimeIntervalFromGMT(kCFAllocatorNull, 3600), nullptr);
}

TEST(TimeZone, OneSharedObjectPerName) {
    // Zones made from offsets are new objects, equal to each other and to
    // the shared zone of their name.
    auto a = fixed(3600);
    auto b = fixed(3599.9);
    EXPECT_NE(a.get(), b.get());
    EXPECT_EQ(CFGetRetainCount(a), 1);
    EXPECT_TRUE(CFEqual(a, b));
    EXPECT_EQ(CFHash(a), CFHash(b));
    EXPECT_NE(fixed(0).get(), fixed(0).get());
    EXPECT_TRUE(CFEqual(fixed(0), fixed(0)));

    // The names of fixed zones, written in any of the usual ways, lead to
    // one shared zone.
    auto byName = named("GMT+0100");
    CFIndex count = CFGetRetainCount(byName);
    EXPECT_GE(count, 2);  // the caller's and the one kept per name
    for (const char* name : {"GMT+0100", "GMT+1", "GMT+01", "GMT+01:00"}) {
        auto again = named(name);
        EXPECT_EQ(again.get(), byName.get()) << name;
        EXPECT_EQ(CFGetRetainCount(byName), count + 1);
    }
    EXPECT_TRUE(CFEqual(byName, a));
    EXPECT_EQ(named("GMT").get(), named("GMT").get());
    EXPECT_TRUE(CFEqual(named("GMT"), fixed(0)));
    EXPECT_TRUE(CFEqual(named("GMT-0530"), fixed(-19800)));
    EXPECT_FALSE(named("GMT+1900"));
    EXPECT_FALSE(named("GMT+0160"));
    EXPECT_FALSE(named("GMT+123"));
    EXPECT_FALSE(named("GMT0100"));

    auto paris = named("Europe/Paris");
    EXPECT_EQ(named("Europe/Paris").get(), paris.get());
    // An abbreviation leads to the zone's own object.
    auto losAngeles = named("America/Los_Angeles");
    EXPECT_EQ(named("PST", true).get(), losAngeles.get());
    EXPECT_EQ(named("PDT", true).get(), losAngeles.get());
    EXPECT_EQ(nameOf(named("PST", true)), "America/Los_Angeles");
}

TEST(TimeZone, NamesOfTheTzDatabase) {
    auto paris = named("Europe/Paris");
    ASSERT_TRUE(paris);
    EXPECT_EQ(nameOf(paris), "Europe/Paris");
    EXPECT_EQ(CFTimeZoneGetSecondsFromGMT(paris, kJanuary), 3600.0);
    EXPECT_EQ(CFTimeZoneGetSecondsFromGMT(paris, kJuly), 7200.0);
    EXPECT_FALSE(CFTimeZoneIsDaylightSavingTime(paris, kJanuary));
    EXPECT_TRUE(CFTimeZoneIsDaylightSavingTime(paris, kJuly));
    EXPECT_EQ(CFTimeZoneGetDaylightSavingTimeOffset(paris, kJanuary), 0.0);
    EXPECT_EQ(CFTimeZoneGetDaylightSavingTimeOffset(paris, kJuly), 3600.0);
    EXPECT_EQ(abbreviation(paris, kJanuary), "CET");
    EXPECT_EQ(abbreviation(paris, kJuly), "CEST");
    // Summer time starts on 2024-03-31 at 01:00 UTC and ends on 2024-10-27
    // at 01:00 UTC; the change itself is not "after" it.
    EXPECT_EQ(CFTimeZoneGetNextDaylightSavingTimeTransition(paris, kJanuary), 733539600.0);
    EXPECT_EQ(CFTimeZoneGetNextDaylightSavingTimeTransition(paris, 733539600.0), 751683600.0);
    EXPECT_EQ(CFTimeZoneGetSecondsFromGMT(paris, 733539600.0 - 0.001), 3600.0);
    EXPECT_EQ(CFTimeZoneGetSecondsFromGMT(paris, 733539600.0), 7200.0);

    auto newYork = named("America/New_York");
    EXPECT_EQ(CFTimeZoneGetSecondsFromGMT(newYork, kJanuary), -18000.0);
    EXPECT_EQ(CFTimeZoneGetSecondsFromGMT(newYork, kJuly), -14400.0);
    EXPECT_EQ(abbreviation(newYork, kJanuary), "EST");
    EXPECT_EQ(abbreviation(newYork, kJuly), "EDT");

    auto tokyo = named("Asia/Tokyo");
    EXPECT_EQ(CFTimeZoneGetSecondsFromGMT(tokyo, kJuly), 32400.0);
    EXPECT_EQ(abbreviation(tokyo, kJuly), "JST");
    EXPECT_FALSE(CFTimeZoneIsDaylightSavingTime(tokyo, kJuly));

    EXPECT_EQ(abbreviation(named("UTC"), kJuly), "UTC");
    EXPECT_EQ(abbreviation(named("Europe/London"), kJanuary), "GMT");
    EXPECT_EQ(abbreviation(named("Europe/London"), kJuly), "BST");
    // Zones named by their abbreviation, and zones without one.
    auto est = named("EST");
    EXPECT_EQ(nameOf(est), "EST");
    EXPECT_EQ(CFTimeZoneGetSecondsFromGMT(est, kJuly), -18000.0);
    EXPECT_EQ(abbreviation(est, kJuly), "EST");
    EXPECT_EQ(abbreviation(named("Etc/GMT+5"), kJuly), "-05");
    EXPECT_EQ(abbreviation(named("Etc/GMT-14"), kJuly), "+14");
    EXPECT_EQ(abbreviation(named("Asia/Kathmandu"), kJuly), "NPT");
    // With tryAbbrev, an abbreviation wins over a zone of the same name.
    EXPECT_EQ(nameOf(named("EST", true)), "America/New_York");
    EXPECT_EQ(nameOf(named("Europe/Paris", true)), "Europe/Paris");

    // Unknown, empty, miscased and abbreviation-only names.
    for (const char* name : {"", "Foo/Bar", "europe/paris", "Europe/Paris ", "PST", "JST", "Etc/Unknown"}) {
        EXPECT_FALSE(named(name)) << name;
    }
    EXPECT_FALSE(named("XYZ", true));
    EXPECT_FALSE(own(CFTimeZoneCreateWithName(nullptr, string(u"Europe/Pa\u0155is"), false)));
    EXPECT_EQ(CFTimeZoneCreateWithName(kCFAllocatorNull, text("Europe/Paris"), false), nullptr);
}

TEST(TimeZone, EqualityHashAndDescription) {
    auto paris = named("Europe/Paris");
    auto gmtPlusOne = fixed(3600);
    auto etcMinusOne = named("Etc/GMT-1");  // the same offset under another name
    EXPECT_TRUE(CFEqual(paris, named("Europe/Paris")));
    EXPECT_FALSE(CFEqual(gmtPlusOne, etcMinusOne));
    EXPECT_FALSE(CFEqual(paris, named("Europe/Berlin")));
    EXPECT_FALSE(CFEqual(paris, text("Europe/Paris")));
    EXPECT_EQ(CFHash(paris), CFHash(text("Europe/Paris")));
    EXPECT_EQ(CFHash(gmtPlusOne), CFHash(text("GMT+0100")));

    const std::string allocator = " [" + pointerText(kCFAllocatorSystemDefault) + "]>";
    auto india = fixed(19800);
    EXPECT_EQ(ascii(own(CFCopyDescription(india))),
              "<CFTimeZone " + pointerText(india) + allocator +
                  "{name = GMT+0530; abbreviation = GMT+0530; GMT offset = 19800; is DST = false}");
    auto newfoundland = fixed(-12600);
    EXPECT_EQ(ascii(own(CFCopyDescription(newfoundland))),
              "<CFTimeZone " + pointerText(newfoundland) + allocator +
                  "{name = GMT-0330; abbreviation = GMT-0330; GMT offset = -12600; is DST = false}");
    auto tokyo = named("Asia/Tokyo");
    EXPECT_EQ(ascii(own(CFCopyDescription(tokyo))),
              "<CFTimeZone " + pointerText(tokyo) + allocator +
                  "{name = Asia/Tokyo; abbreviation = JST; GMT offset = 32400; is DST = false}");
    EXPECT_EQ(_CFRuntimeGetClassWithTypeID(CFTimeZoneGetTypeID())->copyFormattingDesc, nullptr);
}

TEST(TimeZone, SystemZoneFollowsTheEnvironmentUntilReset) {
    ScopedVariable tzfile("TZFILE", nullptr);
    ScopedVariable tz("TZ", "Asia/Tokyo");
    EXPECT_EQ(systemZoneName(), "Asia/Tokyo");
    auto system = own(CFTimeZoneCopySystem());
    EXPECT_EQ(own(CFTimeZoneCopySystem()).get(), system.get());
    // Kept until reset, whatever the environment says meanwhile.
    setenv("TZ", "Europe/Paris", 1);
    EXPECT_EQ(systemZoneName(), "Asia/Tokyo");
    CFTimeZoneResetSystem();
    EXPECT_EQ(systemZoneName(), "Europe/Paris");

    const std::pair<const char*, const char*> settings[] = {
        {":America/Chicago", "America/Chicago"},
        {"/usr/share/zoneinfo/Australia/Sydney", "Australia/Sydney"},
        {":/usr/share/zoneinfo/posix/Asia/Seoul", "Asia/Seoul"},
        {"PST", "America/Los_Angeles"},
        {"GMT+0200", "GMT+0200"},
        {"", "UTC"},
    };
    for (const auto& [setting, name] : settings) {
        tz.set(setting);
        EXPECT_EQ(systemZoneName(), name) << setting;
    }
    // TZFILE comes before TZ.
    tz.set("Asia/Tokyo");
    tzfile.set("/usr/share/zoneinfo/Asia/Kolkata");
    EXPECT_EQ(systemZoneName(), "Asia/Kolkata");
    tzfile.set(nullptr);
    EXPECT_EQ(systemZoneName(), "Asia/Tokyo");
    // A TZ that names no zone leaves the other sources, which always give a
    // zone.
    tz.set("Nowhere/Atlantis");
    EXPECT_TRUE(own(CFTimeZoneCopySystem()));
}

TEST(TimeZone, DefaultZoneIsTheSystemZoneUntilSet) {
    ScopedVariable tzfile("TZFILE", nullptr);
    ScopedVariable tz("TZ", "Europe/Paris");
    // No default zone can be unset again, so the first rule is checked in a
    // freshly started copy of this program, where none has been set yet.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            CFTimeZoneRef defaultZone = CFTimeZoneCopyDefault();
            CFTimeZoneRef systemZone = CFTimeZoneCopySystem();
            std::exit(defaultZone == systemZone ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
    // A zone no other test uses, so that its count is this test's alone when
    // the whole program runs in one process.
    auto chatham = named("Pacific/Chatham");
    CFIndex count = CFGetRetainCount(chatham);
    CFTimeZoneSetDefault(chatham);
    EXPECT_EQ(CFGetRetainCount(chatham), count + 1);
    EXPECT_EQ(own(CFTimeZoneCopyDefault()).get(), chatham.get());
    EXPECT_EQ(systemZoneName(), "Europe/Paris");
    // Resetting the system zone leaves the default alone.
    tz.set("America/Chicago");
    EXPECT_EQ(own(CFTimeZoneCopyDefault()).get(), chatham.get());
    CFTimeZoneSetDefault(named("UTC"));
    EXPECT_EQ(CFGetRetainCount(chatham), count);
    EXPECT_EQ(nameOf(own(CFTimeZoneCopyDefault())), "UTC");
}

TEST(TimeZone, ZoneNamesFromZoneinfoPathsAndLinks) {
    using halvane::detail::zoneNameFromLocaltimeLink;
    using halvane::detail::zoneNameFromZoneinfoPath;
    EXPECT_EQ(zoneNameFromZoneinfoPath("/usr/share/zoneinfo/Europe/Paris"), "Europe/Paris");
    EXPECT_EQ(zoneNameFromZoneinfoPath("../usr/share/zoneinfo/America/Argentina/Salta"), "America/Argentina/Salta");
    EXPECT_EQ(zoneNameFromZoneinfoPath("/usr/share/zoneinfo/posix/Asia/Tokyo"), "Asia/Tokyo");
    EXPECT_EQ(zoneNameFromZoneinfoPath("/usr/share/zoneinfo/right/UTC"), "UTC");
    EXPECT_EQ(zoneNameFromZoneinfoPath("/var/db/timezone/zoneinfo/Europe/Berlin"), "Europe/Berlin");
    EXPECT_EQ(zoneNameFromZoneinfoPath("/usr/share/zoneinfo/"), std::nullopt);
    EXPECT_EQ(zoneNameFromZoneinfoPath("/usr/share/zoneinfo/Europe/"), std::nullopt);
    EXPECT_EQ(zoneNameFromZoneinfoPath("/etc/myzoneinfo/Europe/Paris"), std::nullopt);
    EXPECT_EQ(zoneNameFromZoneinfoPath("/etc/localtime"), std::nullopt);

    namespace fs = std::filesystem;
    fs::path directory = fs::temp_directory_path() / ("cf-timezone-test-" + std::to_string(getpid()));
    fs::create_directories(directory);
    fs::create_symlink("/usr/share/zoneinfo/America/Chicago", directory / "absolute");
    fs::create_symlink("../../usr/share/zoneinfo/Pacific/Auckland", directory / "relative");
    fs::create_symlink("/nowhere/Europe/Paris", directory / "elsewhere");
    std::fclose(std::fopen((directory / "plain").c_str(), "w"));
    EXPECT_EQ(zoneNameFromLocaltimeLink((directory / "absolute").c_str()), "America/Chicago");
    EXPECT_EQ(zoneNameFromLocaltimeLink((directory / "relative").c_str()), "Pacific/Auckland");
    EXPECT_EQ(zoneNameFromLocaltimeLink((directory / "elsewhere").c_str()), std::nullopt);
    EXPECT_EQ(zoneNameFromLocaltimeLink((directory / "plain").c_str()), std::nullopt);
    EXPECT_EQ(zoneNameFromLocaltimeLink((directory / "missing").c_str()), std::nullopt);
    fs::remove_all(directory);
}

TEST(TimeZone, MisuseIsReportedAndRefused) {
    auto paris = named("Europe/Paris");
    auto notAZone = text("Europe/Paris");
    CFTimeZoneSetDefault(paris);
    for (CFTimeZoneRef wrong : {CFTimeZoneRef(nullptr), reinterpret_cast<CFTimeZoneRef>(notAZone.get())}) {
        std::string reports = reportsOf([&] {
            EXPECT_EQ(CFTimeZoneGetName(wrong), nullptr);
            EXPECT_EQ(CFTimeZoneGetSecondsFromGMT(wrong, kJuly), 0.0);
            EXPECT_EQ(CFTimeZoneCopyAbbreviation(wrong, kJuly), nullptr);
            EXPECT_FALSE(CFTimeZoneIsDaylightSavingTime(wrong, kJuly));
            EXPECT_EQ(CFTimeZoneGetDaylightSavingTimeOffset(wrong, kJuly), 0.0);
            EXPECT_EQ(CFTimeZoneGetNextDaylightSavingTimeTransition(wrong, kJuly), 0.0);
            CFTimeZoneSetDefault(wrong);
        });
        EXPECT_EQ(lineCount(reports), 7);
        EXPECT_EQ(occurrences(reports, "CFTimeZone: CFTimeZoneGetName(): not a time zone"), 1);
        EXPECT_EQ(occurrences(reports, "CFTimeZoneSetDefault(): not a time zone"), 1);
    }
    EXPECT_EQ(own(CFTimeZoneCopyDefault()).get(), paris.get());
    std::string reports = reportsOf([] {
        EXPECT_EQ(CFTimeZoneCreateWithName(nullptr, nullptr, true), nullptr);
        EXPECT_EQ(CFTimeZoneCreateWithName(nullptr, reinterpret_cast<CFStringRef>(kCFNull), false), nullptr);
    });
    EXPECT_EQ(occurrences(reports, "CFTimeZoneCreateWithName(): the name is not a string\n"), 2);
    EXPECT_EQ(CFGetRetainCount(notAZone), 1);
}
