#include <halvane/time/HVDate.h>

#include <halvane/core/detail/ClassRegistry.h>
#include <halvane/text/HVString.h>
#include <halvane/time/HVTimeZone.h>
#include <halvane/time/detail/DateText.h>

#include <CoreFoundation/CoreFoundation.h>

#include <string>

HV_REGISTER_CLASS(HVDate);

namespace {

CFDateRef asDate(const void* ref) {
    return static_cast<CFDateRef>(ref);
}

// A date that lives until the process ends, like the shared empty objects:
// nothing at exit may find it already released.
const HVDate& fixedDate(CFAbsoluteTime time) {
    CFDateRef date = CFDateCreate(kCFAllocatorDefault, time);
    const HVDate* fixed = new HVDate(date);
    if (date != nullptr) CFRelease(date);
    return *fixed;
}

}  // namespace

HVDate::HVDate() : HVObject(SharedEmptyObject(), HVDateClassType) {}

HVDate::HVDate(const HVDate& other) : HVObject(other, HVDateClassType) {}

HVDate::HVDate(const HVObject& object) : HVDate() {
    HVClassType held = object.ObjectsClassType();
    if (held == HVDateClassType) {
        AssignUnderlyingDate(object.Ref());
    } else if (object.IsNull()) {
        Nullify();
    } else if (object.IsEmpty()) {
        // Stays the empty date.
    } else if (held == HVObjectClassType) {
        HVObject::operator=(object);
    }
    // Any other kind of object is not a date: the empty date stays.
}

HVDate::HVDate(const void* const& ref) : HVObject(ref, HVDateClassType) {}

HVDate::HVDate(const __CFDate* ref) : HVObject(static_cast<const void*>(ref), HVDateClassType) {}

HVClassType HVDate::ClassType() {
    return HVDateClassType;
}

const void* const& HVDate::SharedEmptyObject() {
    static const void* const empty = CFDateCreate(kCFAllocatorDefault, 0.0);
    return empty;
}

HVDate HVDate::Now() {
    return DateWithTimeIntervalSinceReferenceDate(CFAbsoluteTimeGetCurrent());
}

HVDate HVDate::Today() {
    return halvane::detail::StartOfDay(Now(), HVTimeZone::CurrentTimeZone());
}

HVDate HVDate::DateWithTimeIntervalSinceReferenceDate(double seconds) {
    HVDate date;
    date.AssignUnderlyingDateAndTakeOwnership(CFDateCreate(kCFAllocatorDefault, seconds));
    return date;
}

HVDate HVDate::DateWithTimeIntervalSinceNow(double seconds) {
    return DateWithTimeIntervalSinceReferenceDate(CFAbsoluteTimeGetCurrent() + seconds);
}

HVDate HVDate::DateWithTimeIntervalSince1970(double seconds) {
    return DateWithTimeIntervalSinceReferenceDate(seconds - kCFAbsoluteTimeIntervalSince1970);
}

HVDate HVDate::DateFromObject(const HVObject& object) {
    return HVDate(object);
}

HVDate HVDate::DateFromId(const void* const& ref) {
    HVDate date;
    if (ref == nullptr) {
        date.Nullify();
    } else if (CFGetTypeID(ref) == CFDateGetTypeID()) {
        date.AssignUnderlyingDate(ref);
    }
    return date;
}

const HVDate& HVDate::ReferenceDate() {
    static const HVDate& date = fixedDate(0.0);
    return date;
}

const HVDate& HVDate::DistantPast() {
    static const HVDate& date = fixedDate(-63114076800.0);
    return date;
}

const HVDate& HVDate::DistantFuture() {
    static const HVDate& date = fixedDate(63113904000.0);
    return date;
}

HVDate& HVDate::operator=(const HVDate& other) {
    HVObject::operator=(other);
    return *this;
}

HVDate& HVDate::operator=(const __CFDate* ref) {
    AssignUnderlyingDate(ref);
    return *this;
}

HVDate::operator const __CFDate*() const {
    return asDate(m_Ref);
}

HVComparisonResult HVDate::Compare(const HVDate& other) const {
    if (HoldsDate() && other.HoldsDate()) return CFDateCompare(asDate(m_Ref), asDate(other.m_Ref), nullptr);
    double mine = AbsoluteTime();
    double theirs = other.AbsoluteTime();
    if (mine < theirs) return HVOrderedAscending;
    if (mine > theirs) return HVOrderedDescending;
    return HVOrderedSame;
}

bool HVDate::IsEqualToDate(const HVDate& other) const {
    return Compare(other) == HVOrderedSame;
}
bool HVDate::operator==(const HVDate& other) const {
    return Compare(other) == HVOrderedSame;
}
bool HVDate::operator!=(const HVDate& other) const {
    return Compare(other) != HVOrderedSame;
}
bool HVDate::operator<(const HVDate& other) const {
    return Compare(other) == HVOrderedAscending;
}
bool HVDate::operator>(const HVDate& other) const {
    return Compare(other) == HVOrderedDescending;
}
bool HVDate::operator<=(const HVDate& other) const {
    return Compare(other) != HVOrderedDescending;
}
bool HVDate::operator>=(const HVDate& other) const {
    return Compare(other) != HVOrderedAscending;
}

HVDate HVDate::EarlierDate(const HVDate& other) const {
    return other < *this ? other : *this;
}

HVDate HVDate::LaterDate(const HVDate& other) const {
    return other > *this ? other : *this;
}

double HVDate::TimeIntervalSinceReferenceDate() const {
    return IsEmpty() ? 0.0 : AbsoluteTime();
}

double HVDate::TimeIntervalSince1970() const {
    return AbsoluteTime() + kCFAbsoluteTimeIntervalSince1970;
}

double HVDate::TimeIntervalSinceNow() const {
    if (IsEmpty() || !HoldsDate()) return 0.0;
    CFDateRef now = CFDateCreate(kCFAllocatorDefault, CFAbsoluteTimeGetCurrent());
    double interval = CFDateGetTimeIntervalSinceDate(asDate(m_Ref), now);
    CFRelease(now);
    return interval;
}

double HVDate::TimeIntervalSinceDate(HVDate other) const {
    if (IsEmpty() || !HoldsDate()) return 0.0;
    if (!other.HoldsDate()) return AbsoluteTime();
    return CFDateGetTimeIntervalSinceDate(asDate(m_Ref), asDate(other.m_Ref));
}

bool HVDate::IsEmpty() const {
    return IsNull() || m_Ref == SharedEmptyObject();
}

HVString HVDate::Description() {
    return halvane::detail::DateTimeText(*this, HVTimeZone::GMTTimeZone());
}

HVString HVDate::Serialize() {
    std::string text = halvane::detail::DateTimeText(*this, HVTimeZone::CurrentTimeZone());
    const std::string midnight = " 00:00:00.000";
    for (size_t at = text.find(midnight); at != std::string::npos; at = text.find(midnight, at)) {
        text.erase(at, midnight.size());
    }
    return HVString(text.c_str());
}

void HVDate::Deserialize(const HVString& text) {
    HVDate read = halvane::detail::DateFromDateTimeText(text, HVTimeZone::CurrentTimeZone());
    AssignUnderlyingDate(read.m_Ref);
}

bool HVDate::IsNativelyAllowedInPropertyList() const {
    return true;
}

void HVDate::AssignUnderlyingDate(const void* ref) { ReplaceReference(ref, HVDateClassType); }

void HVDate::AssignUnderlyingDateAndTakeOwnership(const void* ref) {
    ReplaceReferenceTakingOwnership(ref, HVDateClassType);
}

double HVDate::AbsoluteTime() const {
    return HoldsDate() ? CFDateGetAbsoluteTime(asDate(m_Ref)) : 0.0;
}

bool HVDate::HoldsDate() const {
    return m_Ref != nullptr && CFGetTypeID(m_Ref) == CFDateGetTypeID();
}
