// Time-zone abbreviations in both directions: the zone an abbreviation
// stands for, and the abbreviation a zone uses at a given time.
#include "CFTimeZoneInternal.h"

#include <unicode/locid.h>
#include <unicode/tznames.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <memory>
#include <mutex>
#include <string_view>

namespace halvane::detail {

namespace {

struct AbbreviationEntry {
    std::string_view abbreviation;
    const char* zoneName;
};

// The zones abbreviations stand for when a name is looked up with
// tryAbbrev, sorted by abbreviation. Where an abbreviation is ambiguous
// ("CST", "IST") the zone is the one programs have long expected.
constexpr AbbreviationEntry kAbbreviations[] = {
    {"ADT", "America/Halifax"},
    {"AKDT", "America/Juneau"},
    {"AKST", "America/Juneau"},
    {"ART", "America/Argentina/Buenos_Aires"},
    {"AST", "America/Halifax"},
    {"BDT", "Asia/Dhaka"},
    {"BRST", "America/Sao_Paulo"},
    {"BRT", "America/Sao_Paulo"},
    {"BST", "Europe/London"},
    {"CAT", "Africa/Harare"},
    {"CDT", "America/Chicago"},
    {"CEST", "Europe/Paris"},
    {"CET", "Europe/Paris"},
    {"CLST", "America/Santiago"},
    {"CLT", "America/Santiago"},
    {"COT", "America/Bogota"},
    {"CST", "America/Chicago"},
    {"EAT", "Africa/Addis_Ababa"},
    {"EDT", "America/New_York"},
    {"EEST", "Europe/Athens"},
    {"EET", "Europe/Athens"},
    {"EST", "America/New_York"},
    {"GMT", "GMT"},
    {"GST", "Asia/Dubai"},
    {"HKT", "Asia/Hong_Kong"},
    {"HST", "Pacific/Honolulu"},
    {"ICT", "Asia/Bangkok"},
    {"IRST", "Asia/Tehran"},
    {"IST", "Asia/Kolkata"},
    {"JST", "Asia/Tokyo"},
    {"KST", "Asia/Seoul"},
    {"MDT", "America/Denver"},
    {"MSD", "Europe/Moscow"},
    {"MSK", "Europe/Moscow"},
    {"MST", "America/Denver"},
    {"NZDT", "Pacific/Auckland"},
    {"NZST", "Pacific/Auckland"},
    {"PDT", "America/Los_Angeles"},
    {"PET", "America/Lima"},
    {"PHT", "Asia/Manila"},
    {"PKT", "Asia/Karachi"},
    {"PST", "America/Los_Angeles"},
    {"SGT", "Asia/Singapore"},
    {"UTC", "UTC"},
    {"WAT", "Africa/Lagos"},
    {"WEST", "Europe/Lisbon"},
    {"WET", "Europe/Lisbon"},
    {"WIT", "Asia/Jakarta"},
};

static_assert(std::is_sorted(std::begin(kAbbreviations), std::end(kAbbreviations),
                             [](const AbbreviationEntry& a, const AbbreviationEntry& b) {
                                 return a.abbreviation < b.abbreviation;
                             }));

// Short names of zones, tried in this order: the tz database's own
// abbreviations, then the English names (British English first, which has
// the European summer names).
class ShortNames {
public:
    ShortNames() {
        UErrorCode status = U_ZERO_ERROR;
        sources_[0].reset(icu::TimeZoneNames::createTZDBInstance(icu::Locale("en_US"), status));
        status = U_ZERO_ERROR;
        sources_[1].reset(icu::TimeZoneNames::createInstance(icu::Locale("en_GB"), status));
        status = U_ZERO_ERROR;
        sources_[2].reset(icu::TimeZoneNames::createInstance(icu::Locale("en"), status));
    }

    icu::UnicodeString find(const icu::UnicodeString& canonicalID, bool daylight, double millis) {
        UTimeZoneNameType type = daylight ? UTZNM_SHORT_DAYLIGHT : UTZNM_SHORT_STANDARD;
        icu::UnicodeString name;
        // The name objects cache lazily; one caller at a time.
        std::lock_guard lock(mutex_);
        for (auto& source : sources_) {
            if (source == nullptr) continue;
            source->getDisplayName(canonicalID, type, millis, name);
            if (!name.isEmpty()) break;
        }
        return name;
    }

private:
    std::mutex mutex_;
    std::unique_ptr<icu::TimeZoneNames> sources_[3];
};

ShortNames& shortNames() {
    // Never destroyed: zones may be described during exit.
    static auto* names = new ShortNames;
    return *names;
}

bool isUppercaseWord(const icu::UnicodeString& text) {
    if (text.length() < 3 || text.length() > 5) return false;
    for (int32_t i = 0; i < text.length(); ++i) {
        if (text[i] < u'A' || text[i] > u'Z') return false;
    }
    return true;
}

// The tz database's form for zones without a letter abbreviation: "+04",
// "-0330", "+0545".
std::u16string numericAbbreviation(int32_t offsetMillis) {
    int32_t seconds = offsetMillis / 1000;
    int32_t magnitude = std::abs(seconds);
    char text[16];
    if (magnitude % 3600 == 0) {
        std::snprintf(text, sizeof text, "%c%02d", seconds < 0 ? '-' : '+', magnitude / 3600);
    } else {
        std::snprintf(text, sizeof text, "%c%02d%02d", seconds < 0 ? '-' : '+', magnitude / 3600, magnitude / 60 % 60);
    }
    return std::u16string(text, text + std::char_traits<char>::length(text));
}

}  // namespace

const char* zoneNameForAbbreviation(std::string_view abbreviation) {
    auto entry =
        std::lower_bound(std::begin(kAbbreviations), std::end(kAbbreviations), abbreviation,
                         [](const AbbreviationEntry& e, std::string_view wanted) { return e.abbreviation < wanted; });
    if (entry == std::end(kAbbreviations) || entry->abbreviation != abbreviation) return nullptr;
    return entry->zoneName;
}

std::u16string abbreviationOf(const icu::TimeZone& zone, double millis) {
    UErrorCode status = U_ZERO_ERROR;
    int32_t rawOffset = 0, dstOffset = 0;
    zone.getOffset(millis, false, rawOffset, dstOffset, status);
    if (U_FAILURE(status)) rawOffset = dstOffset = 0;

    icu::UnicodeString id, canonicalID;
    zone.getID(id);
    UBool isSystemID = false;
    status = U_ZERO_ERROR;
    icu::TimeZone::getCanonicalID(id, canonicalID, isSystemID, status);
    if (U_FAILURE(status)) canonicalID = id;

    icu::UnicodeString name = shortNames().find(canonicalID, dstOffset != 0, millis);
    if (name.isEmpty()) {
        if (canonicalID == u"Etc/UTC") {
            name = u"UTC";
        } else if (isUppercaseWord(id)) {
            // Zones such as "EST" or "MST" are named by their abbreviation.
            name = id;
        } else {
            return numericAbbreviation(rawOffset + dstOffset);
        }
    }
    return std::u16string(name.getBuffer(), size_t(name.length()));
}

}  // namespace halvane::detail
