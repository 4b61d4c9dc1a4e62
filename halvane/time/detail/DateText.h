// The one date text that the date class itself needs: the pattern
// "MM-dd-yyyy HH:mm:ss.SSS" that the library's GMT and current-locale
// formatters print, written and read the way those formatters do it, and
// the calendar arithmetic behind it.
//
// Dates are split into fields, and fields made into dates, by a Gregorian
// calendar of the time library (ICU) on one of two zones: its GMT zone when
// the given zone answers SecondsFromGMT() with 0.0, the machine's zone
// otherwise (see HVTimeZone for why there are only these two).
#ifndef HALVANE_TIME_DETAIL_DATETEXT_H
#define HALVANE_TIME_DETAIL_DATETEXT_H

#include <halvane/text/HVString.h>
#include <halvane/time/HVDate.h>

class HVTimeZone;

namespace halvane::detail {

// "MM-dd-yyyy HH:mm:ss.SSS" of the date in the zone; the empty string for
// an empty date. The fraction is written as the formatters write it: the
// nanoseconds (milliseconds x 1000000) printed in full, padded on the right
// with zeros and cut to three digits.
HVString DateTimeText(const HVDate& date, const HVTimeZone& zone);

// Reads the text that DateTimeText writes, the time part (or its seconds,
// or their fraction) being optional: "01-15-2024" is midnight. Leading and
// trailing white space is ignored; any other text gives the empty date.
HVDate DateFromDateTimeText(const HVString& text, const HVTimeZone& zone);

// Midnight at the start of the date's day in the zone.
HVDate StartOfDay(const HVDate& date, const HVTimeZone& zone);

}  // namespace halvane::detail

#endif  // HALVANE_TIME_DETAIL_DATETEXT_H
