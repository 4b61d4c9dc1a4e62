// The machine's local zone as the time classes see it: the default zone of
// the time library (ICU), asked afresh on every call.
#ifndef HALVANE_TIME_DETAIL_MACHINETIMEZONE_H
#define HALVANE_TIME_DETAIL_MACHINETIMEZONE_H

#include <halvane/text/HVString.h>

class HVDate;

namespace halvane::detail {

// Milliseconds since 1970 of a date, an empty or null date counting as the
// reference date.
double IcuTimeOfDate(const HVDate& date);

// The machine's offset from GMT at an ICU time, in seconds: the raw offset,
// plus the daylight-saving amount when daylight time is in force.
double MachineSecondsFromGMT(double icuTime);
bool MachineIsInDaylightTime(double icuTime);
// The machine zone's display name in English.
HVString MachineZoneName(bool daylight, bool shortName);

}  // namespace halvane::detail

#endif  // HALVANE_TIME_DETAIL_MACHINETIMEZONE_H
