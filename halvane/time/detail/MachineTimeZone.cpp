#include <halvane/time/detail/MachineTimeZone.h>

#include <halvane/time/HVDate.h>

#include <CoreFoundation/CoreFoundation.h>

#include <unicode/calendar.h>
#include <unicode/locid.h>
#include <unicode/timezone.h>

#include <memory>

namespace halvane::detail {

namespace {

// The machine zone and a calendar on it set to the time; the calendar is
// null when the time library cannot make or set one.
struct MachineCalendar {
    std::unique_ptr<icu::TimeZone> zone{icu::TimeZone::createDefault()};
    std::unique_ptr<icu::Calendar> calendar;

    explicit MachineCalendar(double icuTime) {
        if (!zone) return;
        UErrorCode status = U_ZERO_ERROR;
        calendar.reset(icu::Calendar::createInstance(*zone, status));
        if (U_SUCCESS(status) && calendar) calendar->setTime(icuTime, status);
        if (U_FAILURE(status)) calendar.reset();
    }

    bool inDaylightTime() const {
        if (!calendar) return false;
        UErrorCode status = U_ZERO_ERROR;
        bool daylight = calendar->inDaylightTime(status);
        return U_SUCCESS(status) && daylight;
    }
};

}  // namespace

double IcuTimeOfDate(const HVDate& date) {
    return (date.TimeIntervalSinceReferenceDate() + kCFAbsoluteTimeIntervalSince1970) * 1000.0;
}

double MachineSecondsFromGMT(double icuTime) {
    MachineCalendar machine(icuTime);
    if (!machine.zone) return 0.0;
    double seconds = machine.zone->getRawOffset() / 1000.0;
    if (machine.inDaylightTime()) seconds += machine.zone->getDSTSavings() / 1000.0;
    return seconds;
}

bool MachineIsInDaylightTime(double icuTime) {
    return MachineCalendar(icuTime).inDaylightTime();
}

HVString MachineZoneName(bool daylight, bool shortName) {
    std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createDefault());
    if (!zone) return HVString();
    icu::UnicodeString name;
    zone->getDisplayName(daylight, shortName ? icu::TimeZone::SHORT : icu::TimeZone::LONG, icu::Locale::getEnglish(),
                         name);
    return HVString(reinterpret_cast<const char16_t*>(name.getTerminatedBuffer()));
}

}  // namespace halvane::detail
