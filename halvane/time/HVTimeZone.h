// HVTimeZone: a time-zone value over a CoreFoundation time zone. The zone
// arithmetic does not come from the held zone: the GMT zone object has
// offset 0, and every other zone behaves as the machine's local zone (the
// default zone of the time library), whatever offset it was made with.
#ifndef HALVANE_TIME_HVTIMEZONE_H
#define HALVANE_TIME_HVTIMEZONE_H

#include <halvane/core/HVObject.h>
#include <halvane/text/HVString.h>

class HVDate;
class HVLocale;
struct __CFTimeZone;

class HV_EXPORT HVTimeZone : public HVObject {
public:
    // Which name LocalizedNameForLocale gives: the short forms are 1, 3 and
    // 5, the daylight-saving forms 2 and 3.
    typedef int HVTimeZoneNameStyle;
    enum : HVTimeZoneNameStyle {
        HVTimeZoneNameStyleStandard = 0,
        HVTimeZoneNameStyleShortStandard = 1,
        HVTimeZoneNameStyleDaylightSaving = 2,
        HVTimeZoneNameStyleShortDaylightSaving = 3,
        HVTimeZoneNameStyleGeneric = 4,
        HVTimeZoneNameStyleShortGeneric = 5,
    };

    HVTimeZone();
    HVTimeZone(const HVTimeZone& other);
    // Shares a time zone; a null object gives a null zone, anything else
    // leaves the empty zone.
    HVTimeZone(const HVObject& object);
    HVTimeZone(const void* const& ref);
    HVTimeZone(const __CFTimeZone* ref);

    static HVClassType ClassType();
    // A zone of offset 0, made once; not the GMT zone object.
    static const void* const& SharedEmptyObject();

    // The zone of offset 0 that answers every query as GMT.
    static const HVTimeZone& GMTTimeZone();
    // A zone made once, at first use, with the machine's offset of that
    // moment; it is not updated afterwards.
    static const HVTimeZone& CurrentTimeZone();

    HVTimeZone& operator=(const HVTimeZone& other);
    HVTimeZone& operator=(const __CFTimeZone* ref);
    operator const __CFTimeZone*() const;

    // 0.0 for the GMT zone object, the machine's offset for any other.
    double SecondsFromGMT() const;
    double SecondsFromGMTOnDate(const HVDate& date) const;
    bool IsGMT() const;
    bool IsDaylightSavingTimeForDate(const HVDate& date) const;

    // "Greenwich Mean Time" at offset 0, else the machine zone's long name.
    HVString Name() const;
    HVString NameForDate(const HVDate& date) const;
    // "GMT" at offset 0, else the machine zone's short name for now.
    HVString Abbreviation() const;
    HVString AbbreviationForDate(const HVDate& date) const;
    // The machine zone's name in the style, in English whatever the locale.
    HVString LocalizedNameForLocale(HVTimeZoneNameStyle style, const HVLocale& locale) const;

private:
    bool IsGMTZoneObject() const;
};

#endif  // HALVANE_TIME_HVTIMEZONE_H
