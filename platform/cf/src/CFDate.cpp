// CFDate: an immutable absolute time, and the clock and calendar checks
// declared beside it.
#include "CFGregorian.h"
#include "CFInternal.h"
#include "CFStringInternal.h"

#include <CoreFoundation/CFDate.h>

#include <cmath>
#include <ctime>

struct __CFDate {
    CFRuntimeBase base;
    CFAbsoluteTime time;
};

namespace halvane::detail {

namespace {

CFAbsoluteTime timeOf(CFTypeRef cf) {
    return static_cast<const __CFDate*>(cf)->time;
}

Boolean equalDates(CFTypeRef a, CFTypeRef b) {
    return timeOf(a) == timeOf(b);
}

// The whole seconds, narrowed to float precision. NaN hashes as 0 and
// times beyond the 64-bit range saturate, where a plain cast would be
// undefined.
CFHashCode hashDate(CFTypeRef cf) {
    constexpr double kTwoTo63 = 9223372036854775808.0;
    double whole = std::floor(timeOf(cf));
    if (std::isnan(whole)) return 0;
    float narrowed = float(std::fmax(-kTwoTo63, std::fmin(whole, kTwoTo63)));
    if (narrowed >= float(kTwoTo63)) return CFHashCode(INT64_MAX);
    return CFHashCode(int64_t(narrowed));
}

CFStringRef copyDateDebugDescription(CFTypeRef cf) {
    return TextBuilder()
        .ascii("<CFDate ")
        .pointer(cf)
        .ascii(" [")
        .pointer(descriptionAllocatorAddress(cf))
        .ascii("]>{time = ")
        .format("%0.09g", timeOf(cf))
        .ascii("}")
        .create();
}

bool isDate(CFDateRef date, const char* caller) {
    if (isA(date, kCFDateTypeID)) return true;
    reportMisuse("CFDate: %s(): not a date", caller);
    return false;
}

}  // namespace

constinit const CFRuntimeClass kDateClass = {
    0,       "CFDate", nullptr, nullptr, nullptr, equalDates, hashDate, nullptr, copyDateDebugDescription,
    nullptr, nullptr,  0};

}  // namespace halvane::detail

using namespace halvane::detail;

const CFTimeInterval kCFAbsoluteTimeIntervalSince1970 = 978307200.0;
const CFTimeInterval kCFAbsoluteTimeIntervalSince1904 = 3061152000.0;

CFAbsoluteTime CFAbsoluteTimeGetCurrent(void) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    // Whole seconds are rebased before the conversion to keep every bit for
    // the fraction; the clock is read to the microsecond.
    return double(int64_t(now.tv_sec) - 978307200) + double(now.tv_nsec / 1000) * 1e-6;
}

CFTypeID CFDateGetTypeID(void) {
    return kCFDateTypeID;
}

CFDateRef CFDateCreate(CFAllocatorRef allocator, CFAbsoluteTime at) {
    auto* date = createInstance<__CFDate>(allocator, kCFDateTypeID);
    if (date == nullptr) return nullptr;
    date->time = at;
    return date;
}

CFAbsoluteTime CFDateGetAbsoluteTime(CFDateRef theDate) {
    if (!isDate(theDate, "CFDateGetAbsoluteTime")) return 0;
    return theDate->time;
}

CFTimeInterval CFDateGetTimeIntervalSinceDate(CFDateRef theDate, CFDateRef otherDate) {
    if (!isDate(theDate, "CFDateGetTimeIntervalSinceDate") || !isDate(otherDate, "CFDateGetTimeIntervalSinceDate")) {
        return 0;
    }
    return theDate->time - otherDate->time;
}

CFComparisonResult CFDateCompare(CFDateRef theDate, CFDateRef otherDate, void*) {
    if (!isDate(theDate, "CFDateCompare") || !isDate(otherDate, "CFDateCompare")) return kCFCompareEqualTo;
    if (theDate->time < otherDate->time) return kCFCompareLessThan;
    if (theDate->time > otherDate->time) return kCFCompareGreaterThan;
    return kCFCompareEqualTo;
}

Boolean CFGregorianDateIsValid(CFGregorianDate gdate, CFOptionFlags unitFlags) {
    if ((unitFlags & kCFGregorianUnitsYears) && gdate.year <= 0) return false;
    if ((unitFlags & kCFGregorianUnitsMonths) && (gdate.month < 1 || gdate.month > 12)) return false;
    if (unitFlags & kCFGregorianUnitsDays) {
        if (gdate.day < 1 || gdate.day > 31) return false;
        constexpr CFOptionFlags kYearAndMonth = kCFGregorianUnitsYears | kCFGregorianUnitsMonths;
        if ((unitFlags & kYearAndMonth) == kYearAndMonth && gdate.day > daysInMonth(gdate.year, gdate.month)) {
            return false;
        }
    }
    if ((unitFlags & kCFGregorianUnitsHours) && (gdate.hour < 0 || gdate.hour > 23)) return false;
    if ((unitFlags & kCFGregorianUnitsMinutes) && (gdate.minute < 0 || gdate.minute > 59)) return false;
    if ((unitFlags & kCFGregorianUnitsSeconds) && !(gdate.second >= 0 && gdate.second < 60)) return false;
    return true;
}
