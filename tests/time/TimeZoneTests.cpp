// Time zones: the GMT zone object answers as GMT, every other zone as the
// machine's zone. The machine's zone is fixed here to New York (standard
// offset -5 h, daylight time -4 h) through the time library's default.
#include <halvane/core/HVObject.h>
#include <halvane/text/HVString.h>
#include <halvane/time/HVDate.h>
#include <halvane/time/HVTimeZone.h>

#include <CoreFoundation/CoreFoundation.h>

#include <unicode/timezone.h>

#include <gtest/gtest.h>

#include <string>

class HVLocale;

namespace {

// 2024-01-15 12:00:00 GMT and 2024-07-14 12:00:00 GMT.
const double kWinter = 727012800.0;
const double kSummer = 742651200.0;

HVDate at(double seconds) {
    return HVDate::DateWithTimeIntervalSinceReferenceDate(seconds);
}

std::string text(const HVString& string) {
    return std::string(string);
}

// The locale argument is never read (names are always English), so these
// tests do without a locale object: a stand-in of no particular content.
const HVLocale& anyLocale() {
    alignas(16) static const unsigned char standIn[64] = {};
    return *reinterpret_cast<const HVLocale*>(standIn);
}

HVTimeZone zoneWithOffset(double seconds) {
    CFTimeZoneRef platform = CFTimeZoneCreateWithTimeIntervalFromGMT(kCFAllocatorDefault, seconds);
    HVTimeZone zone(platform);
    CFRelease(platform);
    return zone;
}

class Zone : public ::testing::Test {
protected:
    void SetUp() override { icu::TimeZone::adoptDefault(icu::TimeZone::createTimeZone("America/New_York")); }
};

}  // namespace

TEST_F(Zone, GMTZoneObjectAnswersAsGMT) {
    const HVTimeZone& gmt = HVTimeZone::GMTTimeZone();
    EXPECT_EQ(gmt.SecondsFromGMT(), 0.0);
    EXPECT_EQ(gmt.SecondsFromGMTOnDate(at(kSummer)), 0.0);
    EXPECT_TRUE(gmt.IsGMT());
    EXPECT_FALSE(gmt.IsDaylightSavingTimeForDate(at(kSummer)));
    EXPECT_EQ(text(gmt.Name()), "Greenwich Mean Time");
    EXPECT_EQ(text(gmt.Abbreviation()), "GMT");
    EXPECT_EQ(&HVTimeZone::GMTTimeZone(), &gmt);
    EXPECT_EQ(CFTimeZoneGetSecondsFromGMT(gmt, 0), 0.0);
    // The names for a date are the machine zone's, never in daylight time.
    EXPECT_EQ(text(gmt.NameForDate(at(kSummer))), "Eastern Standard Time");
    EXPECT_EQ(text(gmt.AbbreviationForDate(at(kSummer))), "EST");
}

TEST_F(Zone, AnyOtherZoneBehavesAsTheMachineZone) {
    HVTimeZone fiveHoursAhead = zoneWithOffset(5 * 3600);
    EXPECT_EQ(CFTimeZoneGetSecondsFromGMT(fiveHoursAhead, 0), 18000.0);
    EXPECT_EQ(fiveHoursAhead.SecondsFromGMTOnDate(at(kWinter)), -18000.0);
    EXPECT_EQ(fiveHoursAhead.SecondsFromGMTOnDate(at(kSummer)), -14400.0);
    EXPECT_FALSE(fiveHoursAhead.IsDaylightSavingTimeForDate(at(kWinter)));
    EXPECT_TRUE(fiveHoursAhead.IsDaylightSavingTimeForDate(at(kSummer)));
    EXPECT_FALSE(fiveHoursAhead.IsGMT());
    EXPECT_EQ(text(fiveHoursAhead.Name()), "Eastern Standard Time");
    EXPECT_EQ(text(fiveHoursAhead.NameForDate(at(kWinter))), "Eastern Standard Time");
    EXPECT_EQ(text(fiveHoursAhead.NameForDate(at(kSummer))), "Eastern Daylight Time");
    EXPECT_EQ(text(fiveHoursAhead.AbbreviationForDate(at(kWinter))), "EST");
    EXPECT_EQ(text(fiveHoursAhead.AbbreviationForDate(at(kSummer))), "EDT");
    double now = fiveHoursAhead.SecondsFromGMT();
    EXPECT_TRUE(now == -18000.0 || now == -14400.0) << now;
    EXPECT_EQ(text(fiveHoursAhead.Abbreviation()), now == -14400.0 ? "EDT" : "EST");

    // A zone of offset 0 that is not the GMT zone object is no exception,
    // nor is the empty zone.
    EXPECT_EQ(zoneWithOffset(0).SecondsFromGMTOnDate(at(kSummer)), -14400.0);
    EXPECT_EQ(HVTimeZone().SecondsFromGMTOnDate(at(kWinter)), -18000.0);
    EXPECT_NE(HVTimeZone::SharedEmptyObject(), HVTimeZone::GMTTimeZone().Ref());
}

TEST_F(Zone, NamesByStyleAreEnglish) {
    HVTimeZone zone;
    EXPECT_EQ(text(zone.LocalizedNameForLocale(0, anyLocale())), "Eastern Standard Time");
    EXPECT_EQ(text(zone.LocalizedNameForLocale(1, anyLocale())), "EST");
    EXPECT_EQ(text(zone.LocalizedNameForLocale(2, anyLocale())), "Eastern Daylight Time");
    EXPECT_EQ(text(zone.LocalizedNameForLocale(HVTimeZone::HVTimeZoneNameStyleShortDaylightSaving, anyLocale())),
              "EDT");
    EXPECT_EQ(text(zone.LocalizedNameForLocale(4, anyLocale())), "Eastern Standard Time");
    EXPECT_EQ(text(zone.LocalizedNameForLocale(5, anyLocale())), "EST");
    EXPECT_EQ(text(zone.LocalizedNameForLocale(99, anyLocale())), "Eastern Standard Time");
    // Answers follow the time library's default zone as it is now.
    icu::TimeZone::adoptDefault(icu::TimeZone::createTimeZone("Europe/Paris"));
    EXPECT_EQ(text(zone.LocalizedNameForLocale(0, anyLocale())), "Central European Standard Time");
    EXPECT_EQ(zone.SecondsFromGMTOnDate(at(kSummer)), 7200.0);
}

TEST_F(Zone, MachineZoneKeepingGMTIsGMT) {
    icu::TimeZone::adoptDefault(icu::TimeZone::createTimeZone("Etc/GMT"));
    HVTimeZone zone = zoneWithOffset(3600);
    EXPECT_TRUE(zone.IsGMT());
    EXPECT_EQ(text(zone.Name()), "Greenwich Mean Time");
    EXPECT_EQ(text(zone.Abbreviation()), "GMT");
}

TEST_F(Zone, CurrentZoneIsMadeOnceWithTheOffsetOfThatMoment) {
    const HVTimeZone& current = HVTimeZone::CurrentTimeZone();
    double offset = CFTimeZoneGetSecondsFromGMT(current, 0);
    bool daylightNow = HVTimeZone().IsDaylightSavingTimeForDate(HVDate::Now());
    EXPECT_EQ(offset, daylightNow ? -14400.0 : -18000.0);
    EXPECT_EQ(text(HVString(CFTimeZoneGetName(current))), daylightNow ? "GMT-0400" : "GMT-0500");
    // Not updated when the machine's zone changes.
    icu::TimeZone::adoptDefault(icu::TimeZone::createTimeZone("Asia/Tokyo"));
    EXPECT_EQ(&HVTimeZone::CurrentTimeZone(), &current);
    EXPECT_EQ(CFTimeZoneGetSecondsFromGMT(HVTimeZone::CurrentTimeZone(), 0), offset);
    // Its queries are the machine's, like any zone that is not the GMT object.
    EXPECT_EQ(current.SecondsFromGMT(), 32400.0);
}

TEST_F(Zone, WrapperPattern) {
    HVTimeZone empty;
    EXPECT_EQ(empty.Ref(), HVTimeZone::SharedEmptyObject());
    EXPECT_TRUE(empty.IsEmpty());
    EXPECT_EQ(CFGetTypeID(empty.Ref()), CFTimeZoneGetTypeID());
    EXPECT_EQ(CFTimeZoneGetSecondsFromGMT(static_cast<CFTimeZoneRef>(empty.Ref()), 0), 0.0);
    EXPECT_EQ(empty.ObjectsClassType(), HVTimeZoneClassType);
    EXPECT_EQ(HVTimeZone::ClassType(), HVTimeZoneClassType);
    EXPECT_FALSE(HVTimeZone::GMTTimeZone().IsEmpty());

    HVTimeZone zone = zoneWithOffset(-3600);
    HVTimeZone copy(zone);
    EXPECT_EQ(copy.Ref(), zone.Ref());
    EXPECT_EQ(static_cast<CFTimeZoneRef>(copy), zone.Ref());
    // A generic object holding a zone is recognised by its platform type.
    HVTimeZone fromObject{HVObject(HVTimeZone(zone))};
    EXPECT_EQ(fromObject.Ref(), zone.Ref());
    EXPECT_TRUE(HVTimeZone(HVObject()).IsNull());
    EXPECT_EQ(HVTimeZone(HVString("GMT")).Ref(), HVTimeZone::SharedEmptyObject());

    HVTimeZone assigned;
    assigned = HVTimeZone::GMTTimeZone();
    EXPECT_EQ(assigned.SecondsFromGMTOnDate(at(kSummer)), 0.0);
    assigned = static_cast<CFTimeZoneRef>(zone);
    EXPECT_EQ(assigned.Ref(), zone.Ref());

    class Probe : public HVObject {
    public:
        using HVObject::CreateObjectOfClassType;
    };
    std::shared_ptr<HVObject> made = Probe::CreateObjectOfClassType(zone.Ref(), HVTimeZoneClassType);
    ASSERT_TRUE(made);
    EXPECT_EQ(made->ObjectsActualClassType(), HVTimeZoneClassType);
    EXPECT_EQ(made->Ref(), zone.Ref());
}
