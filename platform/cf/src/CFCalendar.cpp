// CFCalendar: creation, identity and settings (locale, time zone, week
// rules). The field arithmetic is in CFCalendarComponents.cpp.
#include "CFCalendarInternal.h"
#include "CFLocaleInternal.h"
#include "CFStringInternal.h"
#include "CFTimeZoneInternal.h"

#include <unicode/locid.h>

#include <memory>
#include <utility>

namespace halvane::detail {

namespace {

const __CFCalendar* calendarOf(CFTypeRef cf) {
    return static_cast<const __CFCalendar*>(cf);
}

void finalizeCalendar(CFTypeRef cf) {
    const __CFCalendar* calendar = calendarOf(cf);
    CFRelease(calendar->locale);
    CFRelease(calendar->zone);
    delete calendar->calendar;
    delete calendar->mutex;
}

Boolean equalCalendars(CFTypeRef a, CFTypeRef b) {
    return CFEqual(calendarOf(a)->identifier, calendarOf(b)->identifier);
}

CFHashCode hashCalendar(CFTypeRef cf) {
    return CFHash(calendarOf(cf)->identifier);
}

CFStringRef copyCalendarDescription(CFTypeRef cf) {
    return TextBuilder()
        .ascii("<CFCalendar ")
        .pointer(cf)
        .ascii(" [")
        .pointer(descriptionAllocatorAddress(cf))
        .ascii("]>{identifier = '")
        .string(calendarOf(cf)->identifier)
        .ascii("'}")
        .create();
}

// An ICU calendar of the kind, locale, zone and week rules of calendar; NULL
// when ICU cannot make one.
icu::Calendar* createICUCalendar(const __CFCalendar* calendar) {
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale locale(icuLocaleID(calendar->locale).c_str());
    std::string kind = utf8Of(calendar->identifier);
    locale.setKeywordValue("calendar", kind.c_str(), status);
    if (U_FAILURE(status)) return nullptr;
    std::unique_ptr<icu::Calendar> created(
        icu::Calendar::createInstance(calendar->zone->zone->clone(), locale, status));
    if (U_FAILURE(status) || created == nullptr) return nullptr;
    created->setLenient(true);
    if (calendar->firstWeekday != 0) created->setFirstDayOfWeek(UCalendarDaysOfWeek(calendar->firstWeekday));
    if (calendar->minimumDaysInFirstWeek != 0) {
        created->setMinimalDaysInFirstWeek(uint8_t(calendar->minimumDaysInFirstWeek));
    }
    return created.release();
}

// Takes over the references to locale and zone.
CFCalendarRef newCalendar(CFCalendarIdentifier identifier, CFLocaleRef locale, CFTimeZoneRef zone) {
    auto* calendar = createInstance<__CFCalendar>(kCFAllocatorSystemDefault, kCFCalendarTypeID);
    if (calendar == nullptr || zone == nullptr || locale == nullptr) {
        CFRelease(locale);
        CFRelease(zone);
        std::free(calendar);
        return nullptr;
    }
    calendar->identifier = identifier;
    calendar->locale = locale;
    calendar->zone = zone;
    calendar->mutex = new std::mutex;
    calendar->calendar = createICUCalendar(calendar);
    if (calendar->calendar == nullptr) {
        CFRelease(calendar);
        return nullptr;
    }
    return calendar;
}

// Rebuilds the ICU calendar after the locale or week rules changed,
// keeping the old one if ICU fails.
void rebuildICUCalendar(__CFCalendar* calendar) {
    if (icu::Calendar* rebuilt = createICUCalendar(calendar)) {
        delete std::exchange(calendar->calendar, rebuilt);
    }
}

bool isWeekdayNumber(CFIndex value) {
    return value >= 1 && value <= 7;
}

}  // namespace

constinit const CFRuntimeClass kCalendarClass = {0,
                                                 "CFCalendar",
                                                 nullptr,
                                                 nullptr,
                                                 finalizeCalendar,
                                                 equalCalendars,
                                                 hashCalendar,
                                                 nullptr,
                                                 copyCalendarDescription,
                                                 nullptr,
                                                 nullptr,
                                                 0};

}  // namespace halvane::detail

using namespace halvane::detail;

CFTypeID CFCalendarGetTypeID(void) {
    return kCFCalendarTypeID;
}

CFCalendarRef CFCalendarCopyCurrent(void) {
    CFLocaleRef locale = CFLocaleCopyCurrent();
    return newCalendar(calendarIdentifierOf(locale), locale, CFTimeZoneCopyDefault());
}

CFCalendarRef CFCalendarCreateWithIdentifier(CFAllocatorRef allocator, CFCalendarIdentifier identifier) {
    if (!isA(identifier, kCFStringTypeID)) {
        reportMisuse("CFCalendar: CFCalendarCreateWithIdentifier(): the identifier is not a string");
        return nullptr;
    }
    if (allocator == kCFAllocatorNull) return nullptr;
    CFCalendarIdentifier known = knownCalendarIdentifier(utf8Of(identifier));
    if (known == nullptr) return nullptr;
    CFLocaleRef system = CFLocaleGetSystem();
    return newCalendar(known, static_cast<CFLocaleRef>(CFRetain(system)), CFTimeZoneCopyDefault());
}

CFCalendarIdentifier CFCalendarGetIdentifier(CFCalendarRef calendar) {
    if (!isCalendar(calendar, "CFCalendarGetIdentifier")) return nullptr;
    return calendar->identifier;
}

CFLocaleRef CFCalendarCopyLocale(CFCalendarRef calendar) {
    if (!isCalendar(calendar, "CFCalendarCopyLocale")) return nullptr;
    std::lock_guard lock(*calendar->mutex);
    return static_cast<CFLocaleRef>(CFRetain(calendar->locale));
}

void CFCalendarSetLocale(CFCalendarRef calendar, CFLocaleRef locale) {
    if (!isCalendar(calendar, "CFCalendarSetLocale") || locale == nullptr) return;
    if (!isA(locale, kCFLocaleTypeID)) {
        reportMisuse("CFCalendar: CFCalendarSetLocale(): not a locale");
        return;
    }
    CFRetain(locale);
    CFLocaleRef old = nullptr;
    {
        std::lock_guard lock(*calendar->mutex);
        old = std::exchange(calendar->locale, locale);
        rebuildICUCalendar(calendar);
    }
    CFRelease(old);
}

CFTimeZoneRef CFCalendarCopyTimeZone(CFCalendarRef calendar) {
    if (!isCalendar(calendar, "CFCalendarCopyTimeZone")) return nullptr;
    std::lock_guard lock(*calendar->mutex);
    return static_cast<CFTimeZoneRef>(CFRetain(calendar->zone));
}

void CFCalendarSetTimeZone(CFCalendarRef calendar, CFTimeZoneRef tz) {
    if (!isCalendar(calendar, "CFCalendarSetTimeZone")) return;
    if (tz != nullptr && !isA(tz, kCFTimeZoneTypeID)) {
        reportMisuse("CFCalendar: CFCalendarSetTimeZone(): not a time zone");
        return;
    }
    CFTimeZoneRef zone = tz != nullptr ? static_cast<CFTimeZoneRef>(CFRetain(tz)) : CFTimeZoneCopyDefault();
    CFTimeZoneRef old = nullptr;
    {
        std::lock_guard lock(*calendar->mutex);
        old = std::exchange(calendar->zone, zone);
        calendar->calendar->setTimeZone(*zone->zone);
    }
    CFRelease(old);
}

CFIndex CFCalendarGetFirstWeekday(CFCalendarRef calendar) {
    if (!isCalendar(calendar, "CFCalendarGetFirstWeekday")) return 0;
    std::lock_guard lock(*calendar->mutex);
    return calendar->calendar->getFirstDayOfWeek();
}

void CFCalendarSetFirstWeekday(CFCalendarRef calendar, CFIndex wkdy) {
    if (!isCalendar(calendar, "CFCalendarSetFirstWeekday")) return;
    if (!isWeekdayNumber(wkdy)) {
        reportMisuse("CFCalendar: CFCalendarSetFirstWeekday(): weekday %ld is outside 1...7", wkdy);
        return;
    }
    std::lock_guard lock(*calendar->mutex);
    calendar->firstWeekday = wkdy;
    calendar->calendar->setFirstDayOfWeek(UCalendarDaysOfWeek(wkdy));
}

CFIndex CFCalendarGetMinimumDaysInFirstWeek(CFCalendarRef calendar) {
    if (!isCalendar(calendar, "CFCalendarGetMinimumDaysInFirstWeek")) return 0;
    std::lock_guard lock(*calendar->mutex);
    return calendar->calendar->getMinimalDaysInFirstWeek();
}

void CFCalendarSetMinimumDaysInFirstWeek(CFCalendarRef calendar, CFIndex mwd) {
    if (!isCalendar(calendar, "CFCalendarSetMinimumDaysInFirstWeek")) return;
    if (!isWeekdayNumber(mwd)) {
        reportMisuse("CFCalendar: CFCalendarSetMinimumDaysInFirstWeek(): %ld days is outside 1...7", mwd);
        return;
    }
    std::lock_guard lock(*calendar->mutex);
    calendar->minimumDaysInFirstWeek = mwd;
    calendar->calendar->setMinimalDaysInFirstWeek(uint8_t(mwd));
}
