// Dates: construction from absolute times and intervals, the fixed dates,
// emptiness by identity, comparisons and intervals.
#include <halvane/core/HVObject.h>
#include <halvane/text/HVString.h>
#include <halvane/time/HVDate.h>
#include <halvane/values/HVNumber.h>

#include <CoreFoundation/CoreFoundation.h>

#include <unicode/timezone.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace {

HVDate at(double seconds) {
    return HVDate::DateWithTimeIntervalSinceReferenceDate(seconds);
}

HVDate nullDate() {
    HVDate date;
    date.Nullify();
    return date;
}

}  // namespace

TEST(Date, EmptinessIsIdentityWithTheSharedDate) {
    HVDate empty;
    EXPECT_EQ(empty.Ref(), HVDate::SharedEmptyObject());
    EXPECT_TRUE(empty.IsEmpty());
    EXPECT_FALSE(empty.IsNull());
    EXPECT_EQ(CFDateGetAbsoluteTime(static_cast<CFDateRef>(empty.Ref())), 0.0);
    EXPECT_EQ(empty.ObjectsClassType(), HVDateClassType);
    EXPECT_EQ(empty.ObjectsActualClassType(), HVDateClassType);
    EXPECT_EQ(HVDate::ClassType(), HVDateClassType);

    // Same time, another object: not empty.
    EXPECT_FALSE(HVDate::ReferenceDate().IsEmpty());
    EXPECT_FALSE(at(0).IsEmpty());
    EXPECT_EQ(HVDate::ReferenceDate(), empty);

    EXPECT_TRUE(nullDate().IsEmpty());
    EXPECT_TRUE(nullDate().IsNull());
    EXPECT_TRUE(HVDate(kCFNull).IsEmpty());
    EXPECT_TRUE(empty.IsNativelyAllowedInPropertyList());
}

TEST(Date, FixedDatesAreMadeOnce) {
    EXPECT_EQ(HVDate::ReferenceDate().TimeIntervalSinceReferenceDate(), 0.0);
    EXPECT_EQ(HVDate::DistantPast().TimeIntervalSinceReferenceDate(), -63114076800.0);
    EXPECT_EQ(HVDate::DistantFuture().TimeIntervalSinceReferenceDate(), 63113904000.0);
    EXPECT_EQ(&HVDate::DistantPast(), &HVDate::DistantPast());
    EXPECT_EQ(HVDate::DistantFuture().Ref(), HVDate::DistantFuture().Ref());
    EXPECT_NE(HVDate::ReferenceDate().Ref(), HVDate::SharedEmptyObject());
}

TEST(Date, CreationFromIntervals) {
    EXPECT_EQ(at(123.456).TimeIntervalSinceReferenceDate(), 123.456);
    EXPECT_EQ(at(-1e9).TimeIntervalSinceReferenceDate(), -1e9);
    EXPECT_EQ(HVDate::DateWithTimeIntervalSince1970(0).TimeIntervalSinceReferenceDate(), -978307200.0);
    EXPECT_EQ(HVDate::DateWithTimeIntervalSince1970(978307200.5).TimeIntervalSinceReferenceDate(), 0.5);
    EXPECT_EQ(at(-978307200.0).TimeIntervalSince1970(), 0.0);
    EXPECT_EQ(at(1.25).TimeIntervalSince1970(), 978307201.25);
    EXPECT_EQ(CFGetTypeID(at(5).Ref()), CFDateGetTypeID());
    EXPECT_EQ(at(5).RetainCount(), 1u);
}

TEST(Date, NowAndIntervalsFromNow) {
    CFAbsoluteTime before = CFAbsoluteTimeGetCurrent();
    HVDate now = HVDate::Now();
    HVDate inAnHour = HVDate::DateWithTimeIntervalSinceNow(3600);
    HVDate anHourAgo = HVDate::DateWithTimeIntervalSinceNow(-3600);
    CFAbsoluteTime after = CFAbsoluteTimeGetCurrent();

    EXPECT_GE(now.TimeIntervalSinceReferenceDate(), before);
    EXPECT_LE(now.TimeIntervalSinceReferenceDate(), after);
    EXPECT_GE(inAnHour.TimeIntervalSinceReferenceDate(), before + 3600);
    EXPECT_LE(anHourAgo.TimeIntervalSinceReferenceDate(), after - 3600);
    // Measured against a later now: a little less than an hour ahead.
    EXPECT_LE(inAnHour.TimeIntervalSinceNow(), 3600.0);
    EXPECT_GT(inAnHour.TimeIntervalSinceNow(), 3590.0);
    EXPECT_LT(anHourAgo.TimeIntervalSinceNow(), -3600.0 + 1e-9);
    EXPECT_GT(anHourAgo.TimeIntervalSinceNow(), -3610.0);
}

TEST(Date, IntervalsBetweenDates) {
    EXPECT_EQ(at(100.5).TimeIntervalSinceDate(at(40.25)), 60.25);
    EXPECT_EQ(at(40.25).TimeIntervalSinceDate(at(100.5)), -60.25);
    EXPECT_EQ(HVDate::DistantFuture().TimeIntervalSinceDate(HVDate::DistantPast()), 126227980800.0);
    // The empty date answers 0.0 whatever it is measured against.
    EXPECT_EQ(HVDate().TimeIntervalSinceDate(at(500)), 0.0);
    EXPECT_EQ(HVDate().TimeIntervalSinceNow(), 0.0);
    EXPECT_EQ(nullDate().TimeIntervalSinceDate(at(500)), 0.0);
    EXPECT_EQ(nullDate().TimeIntervalSinceReferenceDate(), 0.0);
    // Measured against the empty or a null date: the time itself.
    EXPECT_EQ(at(75).TimeIntervalSinceDate(HVDate()), 75.0);
    EXPECT_EQ(at(75).TimeIntervalSinceDate(nullDate()), 75.0);
}

TEST(Date, ComparisonsByTime) {
    HVDate early = at(-5);
    HVDate late = at(7.5);
    HVDate lateToo = at(7.5);

    EXPECT_EQ(early.Compare(late), HVOrderedAscending);
    EXPECT_EQ(late.Compare(early), HVOrderedDescending);
    EXPECT_EQ(late.Compare(lateToo), HVOrderedSame);
    EXPECT_EQ(early.Compare(late), kCFCompareLessThan);

    EXPECT_TRUE(late.IsEqualToDate(lateToo));
    EXPECT_TRUE(late == lateToo);
    EXPECT_FALSE(late != lateToo);
    EXPECT_TRUE(early != late);
    EXPECT_TRUE(early < late);
    EXPECT_FALSE(late < early);
    EXPECT_TRUE(late > early);
    EXPECT_FALSE(late > lateToo);
    EXPECT_TRUE(late <= lateToo);
    EXPECT_TRUE(early <= late);
    EXPECT_FALSE(late <= early);
    EXPECT_TRUE(late >= lateToo);
    EXPECT_TRUE(late >= early);
    EXPECT_FALSE(early >= late);

    // The empty and a null date stand at the reference date.
    EXPECT_TRUE(HVDate() == HVDate::ReferenceDate());
    EXPECT_TRUE(nullDate() == HVDate::ReferenceDate());
    EXPECT_TRUE(nullDate() < late);
    EXPECT_TRUE(early < nullDate());
}

TEST(Date, NotANumberIsNeitherEarlierNorLater) {
    HVDate undefined = at(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(undefined.Compare(at(1)), HVOrderedSame);
    EXPECT_TRUE(undefined <= at(1));
    EXPECT_TRUE(undefined >= at(1));
    EXPECT_TRUE(std::isnan(undefined.TimeIntervalSinceDate(at(1))));
}

TEST(Date, EarlierAndLaterDates) {
    HVDate early = at(1);
    HVDate late = at(2);
    EXPECT_EQ(early.EarlierDate(late).Ref(), early.Ref());
    EXPECT_EQ(late.EarlierDate(early).Ref(), early.Ref());
    EXPECT_EQ(early.LaterDate(late).Ref(), late.Ref());
    EXPECT_EQ(late.LaterDate(early).Ref(), late.Ref());
    // Of two equal dates, the receiver.
    HVDate same = at(1);
    EXPECT_EQ(early.EarlierDate(same).Ref(), early.Ref());
    EXPECT_EQ(early.LaterDate(same).Ref(), early.Ref());
}

TEST(Date, ConversionsAcceptDatesOnly) {
    HVDate date = at(42);
    HVObject generic = HVObject::Create(date.Ref());
    EXPECT_EQ(generic.ObjectsClassType(), HVDateClassType);
    EXPECT_EQ(HVDate(generic).Ref(), date.Ref());
    EXPECT_EQ(HVDate::DateFromObject(generic).Ref(), date.Ref());
    EXPECT_EQ(HVDate::DateFromId(date.Ref()).Ref(), date.Ref());

    // Null stays null, anything but a date leaves the empty date.
    EXPECT_TRUE(HVDate(HVObject()).IsNull());
    EXPECT_TRUE(HVDate::DateFromId(nullptr).IsNull());
    HVDate fromString = HVDate::DateFromObject(HVString("2001-01-01"));
    EXPECT_EQ(fromString.Ref(), HVDate::SharedEmptyObject());
    EXPECT_EQ(HVDate::DateFromId(CFSTR("2001-01-01")).Ref(), HVDate::SharedEmptyObject());
    EXPECT_EQ(HVDate(HVNumber(5)).Ref(), HVDate::SharedEmptyObject());

    // The platform type in and out.
    CFDateRef platform = CFDateCreate(kCFAllocatorDefault, 9.0);
    HVDate wrapped(platform);
    EXPECT_EQ(static_cast<CFDateRef>(wrapped), platform);
    EXPECT_EQ(CFGetRetainCount(platform), 2);
    HVDate assigned;
    assigned = platform;
    EXPECT_EQ(assigned.Ref(), platform);
    assigned = date;
    EXPECT_EQ(assigned.Ref(), date.Ref());
    CFRelease(platform);
}

TEST(Date, RegisteredWithTheObjectCore) {
    class Probe : public HVObject {
    public:
        using HVObject::CreateObjectOfClassType;
    };
    std::shared_ptr<HVObject> made = Probe::CreateObjectOfClassType(at(3).Ref(), HVDateClassType);
    ASSERT_TRUE(made);
    EXPECT_EQ(made->ObjectsActualClassType(), HVDateClassType);
    EXPECT_EQ(CFDateGetAbsoluteTime(static_cast<CFDateRef>(made->Ref())), 3.0);
    // Release and Empty fall back to the shared empty date of type 8.
    made->Release();
    EXPECT_EQ(made->Ref(), HVDate::SharedEmptyObject());
}

namespace {

// 2024-01-15 12:00:00 GMT, 07:00 in New York; midnight there is 05:00 GMT.
const double kWinterNoon = 727012800.0;
const double kNewYorkMidnight = 726987600.0;

std::string textOf(HVDate date) {
    return std::string(date.Serialize());
}

double readBack(const char* text) {
    HVDate date;
    date.Deserialize(text);
    return date.Ref() == HVDate::SharedEmptyObject() ? std::nan("") : date.TimeIntervalSinceReferenceDate();
}

}  // namespace

TEST(DateText, InTheMachineZoneAndDescribedInGMT) {
    icu::TimeZone::adoptDefault(icu::TimeZone::createTimeZone("America/New_York"));
    EXPECT_EQ(textOf(at(kWinterNoon)), "01-15-2024 07:00:00.000");
    EXPECT_EQ(std::string(at(kWinterNoon).Description()), "01-15-2024 12:00:00.000");
    EXPECT_EQ(textOf(at(742651200.0)), "07-14-2024 08:00:00.000");  // daylight time
    EXPECT_EQ(textOf(at(kNewYorkMidnight)), "01-15-2024");
    EXPECT_EQ(textOf(HVDate()), "");
    // The nanoseconds written out and cut to three digits: 62 ms is ".620".
    EXPECT_EQ(textOf(at(kWinterNoon + 0.0625)), "01-15-2024 07:00:00.620");

    for (double time : {kWinterNoon + 0.25, kNewYorkMidnight, -1e9}) {
        EXPECT_EQ(readBack(textOf(at(time)).c_str()), time);
    }
    EXPECT_EQ(readBack("1/15/24 7:00"), kWinterNoon);
    EXPECT_EQ(readBack(" 01-15-2024 07:00:00.5\n"), kWinterNoon + 0.5);
    for (const char* unreadable : {"2024-01-15T07:00:00", "01-15", "01-15-2024 07:00:00.5.5", "January 15", ""}) {
        EXPECT_TRUE(std::isnan(readBack(unreadable))) << unreadable;
    }
    EXPECT_EQ(HVDate(HVObject::CreateObjectFromString("HVDateFormatter:01-15-2024")).TimeIntervalSinceReferenceDate(),
              kNewYorkMidnight);

    HVDate today = HVDate::Today();
    EXPECT_EQ(textOf(today).size(), 10u) << textOf(today);
    EXPECT_LT(HVDate::Now().TimeIntervalSinceDate(today), 25 * 3600.0);
}

TEST(DateText, MidnightInGMTWhenTheMachineKeepsGMT) {
    icu::TimeZone::adoptDefault(icu::TimeZone::createTimeZone("Etc/GMT"));
    EXPECT_EQ(textOf(HVDate::ReferenceDate()), "01-01-2001");
    EXPECT_EQ(std::string(HVDate(HVDate::DistantFuture()).Description()), "01-01-4001 00:00:00.000");
    HVDate read;
    read.Deserialize("01-01-2001");
    EXPECT_EQ(read.TimeIntervalSinceReferenceDate(), 0.0);
    EXPECT_FALSE(read.IsEmpty());
}
