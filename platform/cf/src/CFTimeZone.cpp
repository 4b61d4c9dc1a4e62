// CFTimeZone: zones of the tz database (through ICU's copy of it) and fixed
// offsets from GMT, one shared object per name; the system and default
// zones.
#include "CFStringInternal.h"
#include "CFTimeZoneInternal.h"

#include <unicode/basictz.h>
#include <unicode/simpletz.h>

#include <cmath>
#include <cstdio>
#include <ctime>
#include <mutex>
#include <unordered_map>
#include <utility>

namespace halvane::detail {

namespace {

constexpr double kMaximumOffset = 18 * 3600;
// ICU computes fields for about five million years either way of 1970.
constexpr double kICUMillisLimit = 1.8e17;

// Zone IDs that ICU accepts for compatibility with other platforms but that
// the tz database has never had: they are abbreviations, not names.
constexpr std::string_view kForeignLegacyIDs[] = {"ACT", "AET", "AGT", "ART", "AST", "BET", "BST", "CAT", "CNT",
                                                  "CST", "CTT", "EAT", "ECT", "IET", "IST", "JST", "MIT", "NET",
                                                  "NST", "PLT", "PNT", "PRT", "PST", "SST", "VST"};

// Every zone handed out by name, and the system and default zones. Never
// destroyed, so that the zones stay valid during exit.
struct ZoneRegistry {
    std::mutex mutex;
    std::unordered_map<std::string, CFTimeZoneRef> byName;
    CFTimeZoneRef system = nullptr;
    CFTimeZoneRef preferred = nullptr;  // set with CFTimeZoneSetDefault
};

ZoneRegistry& registry() {
    static auto* zones = new ZoneRegistry;
    return *zones;
}

const __CFTimeZone* zoneOf(CFTypeRef cf) {
    return static_cast<const __CFTimeZone*>(cf);
}

bool isZone(CFTypeRef cf, const char* caller) {
    if (isA(cf, kCFTimeZoneTypeID)) return true;
    reportMisuse("CFTimeZone: %s(): not a time zone", caller);
    return false;
}

void finalizeZone(CFTypeRef cf) {
    CFRelease(zoneOf(cf)->name);
    delete zoneOf(cf)->zone;
}

Boolean equalZones(CFTypeRef a, CFTypeRef b) {
    return CFEqual(zoneOf(a)->name, zoneOf(b)->name) && zoneOf(a)->zone->hasSameRules(*zoneOf(b)->zone);
}

CFHashCode hashZone(CFTypeRef cf) {
    return CFHash(zoneOf(cf)->name);
}

CFStringRef copyZoneDescription(CFTypeRef cf) {
    auto zone = static_cast<CFTimeZoneRef>(cf);
    CFAbsoluteTime now = CFAbsoluteTimeGetCurrent();
    CFStringRef abbreviation = CFTimeZoneCopyAbbreviation(zone, now);
    CFStringRef text = TextBuilder()
                           .ascii("<CFTimeZone ")
                           .pointer(cf)
                           .ascii(" [")
                           .pointer(descriptionAllocatorAddress(cf))
                           .ascii("]>{name = ")
                           .string(zone->name)
                           .ascii("; abbreviation = ")
                           .string(abbreviation)
                           .ascii("; GMT offset = ")
                           .format("%g", CFTimeZoneGetSecondsFromGMT(zone, now))
                           .ascii("; is DST = ")
                           .ascii(CFTimeZoneIsDaylightSavingTime(zone, now) ? "true" : "false")
                           .ascii("}")
                           .create();
    CFRelease(abbreviation);
    return text;
}

// "GMT", "GMT+0100", "GMT-0530": the names of fixed zones.
std::string fixedZoneName(long minutes) {
    if (minutes == 0) return "GMT";
    // Offsets stay within 18 hours, so the hours take two digits.
    auto magnitude = int(std::labs(minutes) % (100 * 60));
    char name[16];
    std::snprintf(name, sizeof name, "GMT%c%02d%02d", minutes < 0 ? '-' : '+', magnitude / 60, magnitude % 60);
    return name;
}

// The offset in minutes of a fixed-zone name: "GMT", or "GMT" with a sign
// and hours, and optionally minutes ("GMT+1", "GMT-0530", "GMT+05:30").
std::optional<long> fixedZoneMinutes(std::string_view name) {
    if (!name.starts_with("GMT")) return std::nullopt;
    name.remove_prefix(3);
    if (name.empty()) return 0;
    long sign = name.front() == '+' ? 1 : name.front() == '-' ? -1 : 0;
    if (sign == 0) return std::nullopt;
    name.remove_prefix(1);
    auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    std::string digits;
    for (size_t i = 0; i < name.size(); ++i) {
        if (isDigit(name[i])) {
            digits += name[i];
        } else if (!(name[i] == ':' && i == 2 && name.size() == 5)) {
            return std::nullopt;
        }
    }
    long hours = 0, minutes = 0;
    if (digits.size() == 1 || digits.size() == 2) {
        hours = std::stol(digits);
    } else if (digits.size() == 4) {
        hours = std::stol(digits.substr(0, 2));
        minutes = std::stol(digits.substr(2));
    } else {
        return std::nullopt;
    }
    if (minutes >= 60 || hours * 60 + minutes > 18 * 60) return std::nullopt;
    return sign * (hours * 60 + minutes);
}

CFTimeZoneRef newZone(const std::string& name, icu::TimeZone* icuZone, bool fixed) {
    auto* zone = createInstance<__CFTimeZone>(kCFAllocatorSystemDefault, kCFTimeZoneTypeID);
    if (zone == nullptr) {
        delete icuZone;
        return nullptr;
    }
    zone->name = createStringFromASCII(kCFAllocatorSystemDefault, name.data(), CFIndex(name.size()));
    zone->zone = icuZone;
    zone->fixed = fixed;
    return zone;
}

// A new zone (+1) with a fixed offset in minutes.
CFTimeZoneRef newFixedZone(long minutes) {
    std::string name = fixedZoneName(minutes);
    return newZone(name, new icu::SimpleTimeZone(int32_t(minutes * 60000), icu::UnicodeString::fromUTF8(name)), true);
}

// The ICU zone of a tz database name, or NULL.
icu::TimeZone* icuZoneNamed(const std::string& name) {
    for (std::string_view legacy : kForeignLegacyIDs) {
        if (name == legacy) return nullptr;
    }
    if (name.starts_with("SystemV/")) return nullptr;
    icu::UnicodeString id = icu::UnicodeString::fromUTF8(name);
    icu::UnicodeString canonical;
    UBool isSystemID = false;
    UErrorCode status = U_ZERO_ERROR;
    icu::TimeZone::getCanonicalID(id, canonical, isSystemID, status);
    if (U_FAILURE(status) || !isSystemID) return nullptr;
    return icu::TimeZone::createTimeZone(id);
}

// The shared zone of a name (+1), created on first use; NULL when the name
// names no zone.
CFTimeZoneRef copyZoneNamed(const std::string& name) {
    ZoneRegistry& zones = registry();
    std::lock_guard lock(zones.mutex);
    if (auto found = zones.byName.find(name); found != zones.byName.end()) {
        return static_cast<CFTimeZoneRef>(CFRetain(found->second));
    }
    CFTimeZoneRef zone = nullptr;
    if (auto minutes = fixedZoneMinutes(name)) {
        std::string fixedName = fixedZoneName(*minutes);
        if (fixedName != name) {
            // "GMT+1" is the zone "GMT+0100".
            if (auto found = zones.byName.find(fixedName); found != zones.byName.end()) {
                return static_cast<CFTimeZoneRef>(CFRetain(found->second));
            }
        }
        zone = newFixedZone(*minutes);
        if (zone != nullptr) zones.byName.emplace(fixedName, zone);
    } else if (icu::TimeZone* icuZone = icuZoneNamed(name)) {
        zone = newZone(name, icuZone, false);
        if (zone != nullptr) zones.byName.emplace(name, zone);
    }
    return zone != nullptr ? static_cast<CFTimeZoneRef>(CFRetain(zone)) : nullptr;
}

bool isPrintableASCII(const std::u16string& text) {
    for (char16_t c : text) {
        if (c <= 0x20 || c >= 0x7F) return false;
    }
    return true;
}

CFTimeZoneRef copyZoneNamedOrAbbreviated(const std::string& name, bool tryAbbreviation) {
    if (tryAbbreviation) {
        if (const char* zoneName = zoneNameForAbbreviation(name)) return copyZoneNamed(std::string(zoneName));
    }
    return copyZoneNamed(name);
}

// A new object on every call, unlike zones by name: callers keep zones made
// this way apart by identity (a library's "empty" zone and its GMT zone are
// two such objects).
CFTimeZoneRef createFixedZone(CFTimeInterval seconds) {
    if (!(std::fabs(seconds) <= kMaximumOffset)) return nullptr;
    return newFixedZone(std::lround(seconds / 60));
}

CFTimeZoneRef createSystemZone() {
    for (const ZoneNameCandidate& candidate : systemZoneNameCandidates()) {
        if (CFTimeZoneRef zone = copyZoneNamedOrAbbreviated(candidate.name, candidate.tryAbbreviation)) return zone;
    }
    // The C library knows the offset of a zone it cannot name.
    tzset();
    if (CFTimeZoneRef zone = createFixedZone(double(-timezone))) return zone;
    return createFixedZone(0);
}

}  // namespace

constinit const CFRuntimeClass kTimeZoneClass = {
    0,       "CFTimeZone", nullptr, nullptr, finalizeZone, equalZones, hashZone, nullptr, copyZoneDescription,
    nullptr, nullptr,      0};

double icuMillisFromAbsoluteTime(CFAbsoluteTime at) {
    if (std::isnan(at)) at = 0;
    double millis = (at + kCFAbsoluteTimeIntervalSince1970) * 1000.0;
    return std::fmax(-kICUMillisLimit, std::fmin(millis, kICUMillisLimit));
}

CFAbsoluteTime absoluteTimeFromICUMillis(double millis) {
    return millis / 1000.0 - kCFAbsoluteTimeIntervalSince1970;
}

CFTimeInterval secondsFromGMT(CFTimeZoneRef tz, CFAbsoluteTime at) {
    UErrorCode status = U_ZERO_ERROR;
    int32_t rawOffset = 0, dstOffset = 0;
    tz->zone->getOffset(icuMillisFromAbsoluteTime(at), false, rawOffset, dstOffset, status);
    if (U_FAILURE(status)) return 0;
    return double(rawOffset + dstOffset) / 1000.0;
}

CFTimeInterval secondsFromGMTAtLocalTime(CFTimeZoneRef tz, CFAbsoluteTime local) {
    UErrorCode status = U_ZERO_ERROR;
    int32_t rawOffset = 0, dstOffset = 0;
    double millis = icuMillisFromAbsoluteTime(local);
    if (auto* rules = dynamic_cast<const icu::BasicTimeZone*>(tz->zone)) {
        rules->getOffsetFromLocal(millis, UCAL_TZ_LOCAL_FORMER, UCAL_TZ_LOCAL_LATTER, rawOffset, dstOffset, status);
    } else {
        tz->zone->getOffset(millis, true, rawOffset, dstOffset, status);
    }
    if (U_FAILURE(status)) return 0;
    return double(rawOffset + dstOffset) / 1000.0;
}

}  // namespace halvane::detail

using namespace halvane::detail;

CFTypeID CFTimeZoneGetTypeID(void) {
    return kCFTimeZoneTypeID;
}

CFTimeZoneRef CFTimeZoneCreateWithTimeIntervalFromGMT(CFAllocatorRef allocator, CFTimeInterval ti) {
    if (allocator == kCFAllocatorNull) return nullptr;
    return createFixedZone(ti);
}

CFTimeZoneRef CFTimeZoneCreateWithName(CFAllocatorRef allocator, CFStringRef name, Boolean tryAbbrev) {
    if (!isA(name, kCFStringTypeID)) {
        reportMisuse("CFTimeZone: CFTimeZoneCreateWithName(): the name is not a string");
        return nullptr;
    }
    if (allocator == kCFAllocatorNull) return nullptr;
    std::u16string units = unitsOf(name);
    if (units.empty() || !isPrintableASCII(units)) return nullptr;
    return copyZoneNamedOrAbbreviated(std::string(units.begin(), units.end()), tryAbbrev);
}

CFTimeZoneRef CFTimeZoneCopySystem(void) {
    ZoneRegistry& zones = registry();
    {
        std::lock_guard lock(zones.mutex);
        if (zones.system != nullptr) return static_cast<CFTimeZoneRef>(CFRetain(zones.system));
    }
    // Worked out without the lock, which creating zones takes.
    CFTimeZoneRef system = createSystemZone();
    std::lock_guard lock(zones.mutex);
    if (zones.system == nullptr) {
        zones.system = system;
    } else {
        CFRelease(system);  // another thread was first
    }
    return static_cast<CFTimeZoneRef>(CFRetain(zones.system));
}

void CFTimeZoneResetSystem(void) {
    ZoneRegistry& zones = registry();
    CFTimeZoneRef old = nullptr;
    {
        std::lock_guard lock(zones.mutex);
        old = std::exchange(zones.system, nullptr);
    }
    CFRelease(old);
}

CFTimeZoneRef CFTimeZoneCopyDefault(void) {
    {
        ZoneRegistry& zones = registry();
        std::lock_guard lock(zones.mutex);
        if (zones.preferred != nullptr) return static_cast<CFTimeZoneRef>(CFRetain(zones.preferred));
    }
    return CFTimeZoneCopySystem();
}

void CFTimeZoneSetDefault(CFTimeZoneRef tz) {
    if (!isZone(tz, "CFTimeZoneSetDefault")) return;
    CFRetain(tz);
    ZoneRegistry& zones = registry();
    CFTimeZoneRef old = nullptr;
    {
        std::lock_guard lock(zones.mutex);
        old = std::exchange(zones.preferred, tz);
    }
    CFRelease(old);
}

CFStringRef CFTimeZoneGetName(CFTimeZoneRef tz) {
    if (!isZone(tz, "CFTimeZoneGetName")) return nullptr;
    return tz->name;
}

CFTimeInterval CFTimeZoneGetSecondsFromGMT(CFTimeZoneRef tz, CFAbsoluteTime at) {
    if (!isZone(tz, "CFTimeZoneGetSecondsFromGMT")) return 0;
    return secondsFromGMT(tz, at);
}

CFStringRef CFTimeZoneCopyAbbreviation(CFTimeZoneRef tz, CFAbsoluteTime at) {
    if (!isZone(tz, "CFTimeZoneCopyAbbreviation")) return nullptr;
    if (tz->fixed) return static_cast<CFStringRef>(CFRetain(tz->name));
    std::u16string abbreviation = abbreviationOf(*tz->zone, icuMillisFromAbsoluteTime(at));
    return createStringFromUnits(kCFAllocatorSystemDefault, reinterpret_cast<const UniChar*>(abbreviation.data()),
                                 CFIndex(abbreviation.size()));
}

Boolean CFTimeZoneIsDaylightSavingTime(CFTimeZoneRef tz, CFAbsoluteTime at) {
    return CFTimeZoneGetDaylightSavingTimeOffset(tz, at) != 0;
}

CFTimeInterval CFTimeZoneGetDaylightSavingTimeOffset(CFTimeZoneRef tz, CFAbsoluteTime at) {
    if (!isZone(tz, "CFTimeZoneGetDaylightSavingTimeOffset")) return 0;
    UErrorCode status = U_ZERO_ERROR;
    int32_t rawOffset = 0, dstOffset = 0;
    tz->zone->getOffset(icuMillisFromAbsoluteTime(at), false, rawOffset, dstOffset, status);
    return U_SUCCESS(status) ? double(dstOffset) / 1000.0 : 0;
}

CFAbsoluteTime CFTimeZoneGetNextDaylightSavingTimeTransition(CFTimeZoneRef tz, CFAbsoluteTime at) {
    if (!isZone(tz, "CFTimeZoneGetNextDaylightSavingTimeTransition")) return 0;
    auto* rules = dynamic_cast<const icu::BasicTimeZone*>(tz->zone);
    icu::TimeZoneTransition transition;
    if (rules == nullptr || !rules->getNextTransition(icuMillisFromAbsoluteTime(at), false, transition)) return 0;
    return absoluteTimeFromICUMillis(transition.getTime());
}
