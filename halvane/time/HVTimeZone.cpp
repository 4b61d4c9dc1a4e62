#include <halvane/time/HVTimeZone.h>

#include <halvane/core/detail/ClassRegistry.h>
#include <halvane/time/HVDate.h>
#include <halvane/time/detail/MachineTimeZone.h>

#include <CoreFoundation/CoreFoundation.h>

HV_REGISTER_CLASS(HVTimeZone);

using halvane::detail::IcuTimeOfDate;
using halvane::detail::MachineIsInDaylightTime;
using halvane::detail::MachineSecondsFromGMT;
using halvane::detail::MachineZoneName;

namespace {

// A zone that lives until the process ends, like the shared empty objects.
const HVTimeZone& fixedZone(CFTimeInterval secondsFromGMT) {
    CFTimeZoneRef zone = CFTimeZoneCreateWithTimeIntervalFromGMT(kCFAllocatorDefault, secondsFromGMT);
    const HVTimeZone* fixed = new HVTimeZone(zone);
    if (zone != nullptr) CFRelease(zone);
    return *fixed;
}

double icuTimeNow() {
    return IcuTimeOfDate(HVDate::Now());
}

bool isShortStyle(HVTimeZone::HVTimeZoneNameStyle style) {
    return style == 1 || style == 3 || style == 5;
}

bool isDaylightStyle(HVTimeZone::HVTimeZoneNameStyle style) {
    return style == 2 || style == 3;
}

}  // namespace

HVTimeZone::HVTimeZone() : HVObject(SharedEmptyObject(), HVTimeZoneClassType) {}

HVTimeZone::HVTimeZone(const HVTimeZone& other) : HVObject(other, HVTimeZoneClassType) {}

HVTimeZone::HVTimeZone(const HVObject& object) : HVTimeZone() {
    const void* ref = object.Ref();
    if (object.IsNull()) {
        Nullify();
    } else if (object.ObjectsClassType() == HVTimeZoneClassType || CFGetTypeID(ref) == CFTimeZoneGetTypeID()) {
        // The object core does not identify time zones by platform type: a
        // generic object holding one is recognised here.
        AssignUsingClassType(ref, HVTimeZoneClassType);
    }
    // Anything else is not a time zone: the empty zone stays.
}

HVTimeZone::HVTimeZone(const void* const& ref) : HVObject(ref, HVTimeZoneClassType) {}

HVTimeZone::HVTimeZone(const __CFTimeZone* ref) : HVObject(static_cast<const void*>(ref), HVTimeZoneClassType) {}

HVClassType HVTimeZone::ClassType() {
    return HVTimeZoneClassType;
}

const void* const& HVTimeZone::SharedEmptyObject() {
    static const void* const empty = CFTimeZoneCreateWithTimeIntervalFromGMT(kCFAllocatorDefault, 0.0);
    return empty;
}

const HVTimeZone& HVTimeZone::GMTTimeZone() {
    static const HVTimeZone& zone = fixedZone(0.0);
    return zone;
}

const HVTimeZone& HVTimeZone::CurrentTimeZone() {
    static const HVTimeZone& zone = fixedZone(MachineSecondsFromGMT(icuTimeNow()));
    return zone;
}

HVTimeZone& HVTimeZone::operator=(const HVTimeZone& other) {
    HVObject::operator=(other);
    return *this;
}

HVTimeZone& HVTimeZone::operator=(const __CFTimeZone* ref) {
    AssignUsingClassType(ref, HVTimeZoneClassType);
    return *this;
}

HVTimeZone::operator const __CFTimeZone*() const {
    return static_cast<const __CFTimeZone*>(m_Ref);
}

double HVTimeZone::SecondsFromGMT() const {
    return IsGMTZoneObject() ? 0.0 : MachineSecondsFromGMT(icuTimeNow());
}

double HVTimeZone::SecondsFromGMTOnDate(const HVDate& date) const {
    return IsGMTZoneObject() ? 0.0 : MachineSecondsFromGMT(IcuTimeOfDate(date));
}

bool HVTimeZone::IsGMT() const {
    return SecondsFromGMT() == 0.0;
}

bool HVTimeZone::IsDaylightSavingTimeForDate(const HVDate& date) const {
    return !IsGMTZoneObject() && MachineIsInDaylightTime(IcuTimeOfDate(date));
}

HVString HVTimeZone::Name() const {
    if (SecondsFromGMT() == 0.0) return "Greenwich Mean Time";
    return MachineZoneName(false, false);
}

HVString HVTimeZone::NameForDate(const HVDate& date) const {
    bool daylight = IsDaylightSavingTimeForDate(date);
    return MachineZoneName(daylight, false);
}

HVString HVTimeZone::Abbreviation() const {
    if (SecondsFromGMT() == 0.0) return "GMT";
    return MachineZoneName(MachineIsInDaylightTime(icuTimeNow()), true);
}

HVString HVTimeZone::AbbreviationForDate(const HVDate& date) const {
    bool daylight = IsDaylightSavingTimeForDate(date);
    return MachineZoneName(daylight, true);
}

HVString HVTimeZone::LocalizedNameForLocale(HVTimeZoneNameStyle style, const HVLocale&) const {
    return MachineZoneName(isDaylightStyle(style), isShortStyle(style));
}

bool HVTimeZone::IsGMTZoneObject() const {
    return m_Ref != nullptr && m_Ref == GMTTimeZone().Ref();
}
