// The parts of CFTimeZone that calendars and Gregorian dates build on.
#ifndef HALVANE_CF_TIME_ZONE_INTERNAL_H
#define HALVANE_CF_TIME_ZONE_INTERNAL_H

#include "CFInternal.h"

#include <CoreFoundation/CFTimeZone.h>

#include <unicode/timezone.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct __CFTimeZone {
    CFRuntimeBase base;
    CFStringRef name;
    icu::TimeZone* zone;  // owned; never NULL
    bool fixed;           // a fixed offset from GMT: the abbreviation is the name
};

namespace halvane::detail {

// ICU's milliseconds since 1970 for an absolute time. NaN counts as the
// reference date, and times are kept within the years ICU can compute
// (some five million years either way).
double icuMillisFromAbsoluteTime(CFAbsoluteTime at);
CFAbsoluteTime absoluteTimeFromICUMillis(double millis);

// The zone's offset at at, in seconds.
CFTimeInterval secondsFromGMT(CFTimeZoneRef tz, CFAbsoluteTime at);

// The zone's offset at a wall-clock time (an absolute time read in the
// zone instead of in UTC), the way calendars read one: a time skipped by a
// change of offset takes the offset before the change (02:30 on the night
// summer time starts in Paris is 03:30 summer time), a time that happens
// twice takes the offset after it (the second 02:30).
CFTimeInterval secondsFromGMTAtLocalTime(CFTimeZoneRef tz, CFAbsoluteTime local);

// The zone an abbreviation stands for ("PST" -> "America/Los_Angeles"),
// or NULL.
const char* zoneNameForAbbreviation(std::string_view abbreviation);

// The abbreviation a zone uses at a time, in the tz database's style:
// "CET", "EDT", and "+04" where there is no letter abbreviation.
std::u16string abbreviationOf(const icu::TimeZone& zone, double millis);

// Names the system zone may have, in the order they are to be tried: from
// TZFILE, from TZ, from the /etc/localtime link, and the C library's
// abbreviation of the local zone.
struct ZoneNameCandidate {
    std::string name;
    bool tryAbbreviation;
};
std::vector<ZoneNameCandidate> systemZoneNameCandidates();

// The zone name in a path into the zoneinfo directory
// ("/usr/share/zoneinfo/Europe/Paris" -> "Europe/Paris"), or nothing.
std::optional<std::string> zoneNameFromZoneinfoPath(const std::string& path);
// The zone name of the link at linkPath (/etc/localtime), or nothing when
// it is not a link into a zoneinfo directory.
std::optional<std::string> zoneNameFromLocaltimeLink(const char* linkPath);

}  // namespace halvane::detail

#endif  // HALVANE_CF_TIME_ZONE_INTERNAL_H
