// CFLocale: the system locale, the user's locale from the environment, and
// one shared locale per canonical identifier; the locale and calendar
// identifier constants.
#include "CFLocaleInternal.h"
#include "CFConstantString.h"
#include "CFStringInternal.h"

#include <unicode/ucal.h>
#include <unicode/uenum.h>
#include <unicode/uloc.h>

#include <algorithm>
#include <iterator>
#include <mutex>
#include <unordered_map>

namespace halvane::detail {

// What CFLocaleGetSystem, CFLocaleCopyCurrent and CFLocaleCreate hand out;
// locales of different kinds are never equal.
enum class LocaleKind : uint8_t { kSystem, kUser, kOrdinary };

}  // namespace halvane::detail

struct __CFLocale {
    CFRuntimeBase base;
    CFStringRef identifier;
    halvane::detail::LocaleKind kind;
    // The parts of the identifier; NULL where it has none.
    CFStringRef languageCode;
    CFStringRef countryCode;
    CFStringRef scriptCode;
    CFStringRef variantCode;
    CFCalendarIdentifier calendarIdentifier;  // a constant
};

using namespace halvane::detail;

const CFLocaleKey kCFLocaleIdentifier = &constantString<"locale:id">;
const CFLocaleKey kCFLocaleLanguageCode = &constantString<"locale:language code">;
const CFLocaleKey kCFLocaleCountryCode = &constantString<"locale:country code">;
const CFLocaleKey kCFLocaleScriptCode = &constantString<"locale:script code">;
const CFLocaleKey kCFLocaleVariantCode = &constantString<"locale:variant code">;
const CFLocaleKey kCFLocaleCalendarIdentifier = &constantString<"calendar">;

const CFCalendarIdentifier kCFCalendarIdentifierGregorian = &constantString<"gregorian">;
const CFCalendarIdentifier kCFCalendarIdentifierBuddhist = &constantString<"buddhist">;
const CFCalendarIdentifier kCFCalendarIdentifierJapanese = &constantString<"japanese">;
const CFCalendarIdentifier kCFCalendarIdentifierIslamic = &constantString<"islamic">;
const CFCalendarIdentifier kCFCalendarIdentifierIslamicCivil = &constantString<"islamic-civil">;
const CFCalendarIdentifier kCFCalendarIdentifierIslamicUmmAlQura = &constantString<"islamic-umalqura">;
const CFCalendarIdentifier kCFCalendarIdentifierIslamicTabular = &constantString<"islamic-tbla">;
const CFCalendarIdentifier kCFCalendarIdentifierHebrew = &constantString<"hebrew">;
const CFCalendarIdentifier kCFCalendarIdentifierChinese = &constantString<"chinese">;
const CFCalendarIdentifier kCFCalendarIdentifierRepublicOfChina = &constantString<"roc">;
const CFCalendarIdentifier kCFCalendarIdentifierPersian = &constantString<"persian">;
const CFCalendarIdentifier kCFCalendarIdentifierIndian = &constantString<"indian">;
const CFCalendarIdentifier kCFCalendarIdentifierISO8601 = &constantString<"iso8601">;
const CFCalendarIdentifier kCFCalendarIdentifierCoptic = &constantString<"coptic">;
const CFCalendarIdentifier kCFCalendarIdentifierEthiopicAmeteMihret = &constantString<"ethiopic">;
const CFCalendarIdentifier kCFCalendarIdentifierEthiopicAmeteAlem = &constantString<"ethiopic-amete-alem">;

const CFCalendarIdentifier kCFGregorianCalendar = &constantString<"gregorian">;
const CFCalendarIdentifier kCFBuddhistCalendar = &constantString<"buddhist">;
const CFCalendarIdentifier kCFJapaneseCalendar = &constantString<"japanese">;
const CFCalendarIdentifier kCFIslamicCalendar = &constantString<"islamic">;
const CFCalendarIdentifier kCFIslamicCivilCalendar = &constantString<"islamic-civil">;
const CFCalendarIdentifier kCFHebrewCalendar = &constantString<"hebrew">;
const CFCalendarIdentifier kCFChineseCalendar = &constantString<"chinese">;
const CFCalendarIdentifier kCFRepublicOfChinaCalendar = &constantString<"roc">;
const CFCalendarIdentifier kCFPersianCalendar = &constantString<"persian">;
const CFCalendarIdentifier kCFIndianCalendar = &constantString<"indian">;
const CFCalendarIdentifier kCFISO8601Calendar = &constantString<"iso8601">;

namespace halvane::detail {

namespace {

const CFCalendarIdentifier* const kCalendarIdentifiers[] = {
    &kCFCalendarIdentifierGregorian,
    &kCFCalendarIdentifierBuddhist,
    &kCFCalendarIdentifierJapanese,
    &kCFCalendarIdentifierIslamic,
    &kCFCalendarIdentifierIslamicCivil,
    &kCFCalendarIdentifierIslamicUmmAlQura,
    &kCFCalendarIdentifierIslamicTabular,
    &kCFCalendarIdentifierHebrew,
    &kCFCalendarIdentifierChinese,
    &kCFCalendarIdentifierRepublicOfChina,
    &kCFCalendarIdentifierPersian,
    &kCFCalendarIdentifierIndian,
    &kCFCalendarIdentifierISO8601,
    &kCFCalendarIdentifierCoptic,
    &kCFCalendarIdentifierEthiopicAmeteMihret,
    &kCFCalendarIdentifierEthiopicAmeteAlem,
};

// The shared locales. Never destroyed, so that they stay valid during
// exit.
struct LocaleRegistry {
    std::mutex mutex;
    CFLocaleRef system = nullptr;
    std::unordered_map<std::string, CFLocaleRef> users;     // by identifier
    std::unordered_map<std::string, CFLocaleRef> ordinary;  // by canonical identifier
};

LocaleRegistry& registry() {
    static auto* locales = new LocaleRegistry;
    return *locales;
}

const __CFLocale* localeOf(CFTypeRef cf) {
    return static_cast<const __CFLocale*>(cf);
}

bool isLocale(CFTypeRef cf, const char* caller) {
    if (isA(cf, kCFLocaleTypeID)) return true;
    reportMisuse("CFLocale: %s(): not a locale", caller);
    return false;
}

void finalizeLocale(CFTypeRef cf) {
    const __CFLocale* locale = localeOf(cf);
    for (CFStringRef s :
         {locale->identifier, locale->languageCode, locale->countryCode, locale->scriptCode, locale->variantCode}) {
        if (s != nullptr) CFRelease(s);
    }
}

Boolean equalLocales(CFTypeRef a, CFTypeRef b) {
    return localeOf(a)->kind == localeOf(b)->kind && CFEqual(localeOf(a)->identifier, localeOf(b)->identifier);
}

CFHashCode hashLocale(CFTypeRef cf) {
    return CFHash(localeOf(cf)->identifier);
}

const char* kindName(LocaleKind kind) {
    switch (kind) {
        case LocaleKind::kSystem:
            return "system";
        case LocaleKind::kUser:
            return "user";
        case LocaleKind::kOrdinary:
            break;
    }
    return "ordinary";
}

CFStringRef copyLocaleDescription(CFTypeRef cf) {
    return TextBuilder()
        .ascii("<CFLocale ")
        .pointer(cf)
        .ascii(" [")
        .pointer(descriptionAllocatorAddress(cf))
        .ascii("]>{type = ")
        .ascii(kindName(localeOf(cf)->kind))
        .ascii(", identifier = '")
        .string(localeOf(cf)->identifier)
        .ascii("'}")
        .create();
}

CFStringRef createASCII(const std::string& text) {
    return createStringFromASCII(kCFAllocatorSystemDefault, text.data(), CFIndex(text.size()));
}

CFStringRef createPartOrNull(const std::string& part) {
    return part.empty() ? nullptr : createASCII(part);
}

// The calendar ICU prefers in a locale, as one of the known identifiers.
CFCalendarIdentifier preferredCalendar(const std::string& icuID) {
    UErrorCode status = U_ZERO_ERROR;
    UEnumeration* preferences = ucal_getKeywordValuesForLocale("calendar", icuID.c_str(), true, &status);
    CFCalendarIdentifier identifier = nullptr;
    if (U_SUCCESS(status)) {
        if (const char* first = uenum_next(preferences, nullptr, &status)) identifier = knownCalendarIdentifier(first);
    }
    uenum_close(preferences);
    return identifier != nullptr ? identifier : kCFCalendarIdentifierGregorian;
}

// identifier is canonical (and ASCII).
CFLocaleRef newLocale(const std::string& identifier, LocaleKind kind) {
    auto* locale = createInstance<__CFLocale>(kCFAllocatorSystemDefault, kCFLocaleTypeID);
    if (locale == nullptr) return nullptr;
    locale->identifier = createASCII(identifier);
    locale->kind = kind;
    LocaleIdentifierParts parts = splitLocaleIdentifier(identifier);
    locale->languageCode = createPartOrNull(parts.language);
    locale->countryCode = createPartOrNull(parts.region);
    locale->scriptCode = createPartOrNull(parts.script);
    std::string variant;
    for (const auto& part : parts.variants) variant += (variant.empty() ? "" : "_") + part.second;
    locale->variantCode = createPartOrNull(variant);
    for (const auto& [key, value] : parts.keywords) {
        if (key == "calendar") locale->calendarIdentifier = knownCalendarIdentifier(value);
    }
    if (locale->calendarIdentifier == nullptr) locale->calendarIdentifier = preferredCalendar(icuLocaleID(locale));
    return locale;
}

// The shared locale of an identifier in a table (+1), created on first
// use.
CFLocaleRef copyShared(std::unordered_map<std::string, CFLocaleRef>& table, const std::string& identifier,
                       LocaleKind kind) {
    LocaleRegistry& locales = registry();
    std::lock_guard lock(locales.mutex);
    auto found = table.find(identifier);
    if (found == table.end()) {
        CFLocaleRef locale = newLocale(identifier, kind);
        if (locale == nullptr) return nullptr;
        found = table.emplace(identifier, locale).first;
    }
    return static_cast<CFLocaleRef>(CFRetain(found->second));
}

std::string asciiOf(CFStringRef s) {
    std::u16string units = unitsOf(s);
    std::string text;
    for (char16_t c : units) {
        if (c >= 0x80) return {};
        text += char(c);
    }
    return text;
}

template <typename DisplayFunction>
CFStringRef copyDisplayName(DisplayFunction display, const std::string& item, const std::string& displayID) {
    UChar name[256];
    UErrorCode status = U_ZERO_ERROR;
    int32_t length = display(item.c_str(), displayID.c_str(), name, int32_t(std::size(name)), &status);
    // ICU falls back to the code itself when it knows no name.
    if (U_FAILURE(status) || status == U_USING_DEFAULT_WARNING || status == U_STRING_NOT_TERMINATED_WARNING ||
        length <= 0) {
        return nullptr;
    }
    return createStringFromUnits(kCFAllocatorSystemDefault, reinterpret_cast<const UniChar*>(name), length);
}

}  // namespace

constinit const CFRuntimeClass kLocaleClass = {
    0,       "CFLocale", nullptr, nullptr, finalizeLocale, equalLocales, hashLocale, nullptr, copyLocaleDescription,
    nullptr, nullptr,    0};

std::string icuLocaleID(CFLocaleRef locale) {
    std::string id = asciiOf(locale->identifier);
    size_t keywords = std::min(id.find('@'), id.size());
    std::replace(id.begin(), id.begin() + long(keywords), '-', '_');
    return id;
}

CFCalendarIdentifier knownCalendarIdentifier(std::string_view name) {
    for (const CFCalendarIdentifier* identifier : kCalendarIdentifiers) {
        if (asciiOf(*identifier) == name) return *identifier;
    }
    return nullptr;
}

CFCalendarIdentifier calendarIdentifierOf(CFLocaleRef locale) {
    return locale->calendarIdentifier;
}

}  // namespace halvane::detail

CFTypeID CFLocaleGetTypeID(void) {
    return kCFLocaleTypeID;
}

CFLocaleRef CFLocaleGetSystem(void) {
    LocaleRegistry& locales = registry();
    std::lock_guard lock(locales.mutex);
    if (locales.system == nullptr) locales.system = newLocale("", LocaleKind::kSystem);
    return locales.system;
}

CFLocaleRef CFLocaleCopyCurrent(void) {
    std::string identifier = currentLocaleIdentifier(LocaleCategory::kMessages);
    std::string canonical = canonicalLocaleIdentifier(identifier).value_or("en_US");
    return copyShared(registry().users, canonical, LocaleKind::kUser);
}

CFLocaleRef CFLocaleCreate(CFAllocatorRef allocator, CFStringRef localeIdentifier) {
    if (!isA(localeIdentifier, kCFStringTypeID)) {
        reportMisuse("CFLocale: CFLocaleCreate(): the identifier is not a string");
        return nullptr;
    }
    if (allocator == kCFAllocatorNull) return nullptr;
    std::u16string units = unitsOf(localeIdentifier);
    if (!allASCII(reinterpret_cast<const UniChar*>(units.data()), CFIndex(units.size()))) return nullptr;
    auto canonical = canonicalLocaleIdentifier(std::string(units.begin(), units.end()));
    if (!canonical) return nullptr;
    return copyShared(registry().ordinary, *canonical, LocaleKind::kOrdinary);
}

CFStringRef CFLocaleGetIdentifier(CFLocaleRef locale) {
    if (!isLocale(locale, "CFLocaleGetIdentifier")) return nullptr;
    return locale->identifier;
}

CFStringRef CFLocaleCreateCanonicalLocaleIdentifierFromString(CFAllocatorRef allocator, CFStringRef localeIdentifier) {
    if (!isA(localeIdentifier, kCFStringTypeID)) {
        reportMisuse("CFLocale: CFLocaleCreateCanonicalLocaleIdentifierFromString(): not a string");
        return nullptr;
    }
    std::u16string units = unitsOf(localeIdentifier);
    if (!allASCII(reinterpret_cast<const UniChar*>(units.data()), CFIndex(units.size()))) return nullptr;
    auto canonical = canonicalLocaleIdentifier(std::string(units.begin(), units.end()));
    if (!canonical) return nullptr;
    return createStringFromASCII(allocator, canonical->data(), CFIndex(canonical->size()));
}

CFTypeRef CFLocaleGetValue(CFLocaleRef locale, CFLocaleKey key) {
    if (!isLocale(locale, "CFLocaleGetValue")) return nullptr;
    if (!isA(key, kCFStringTypeID)) {
        reportMisuse("CFLocale: CFLocaleGetValue(): the key is not a string");
        return nullptr;
    }
    if (CFEqual(key, kCFLocaleIdentifier)) return locale->identifier;
    if (CFEqual(key, kCFLocaleLanguageCode)) return locale->languageCode;
    if (CFEqual(key, kCFLocaleCountryCode)) return locale->countryCode;
    if (CFEqual(key, kCFLocaleScriptCode)) return locale->scriptCode;
    if (CFEqual(key, kCFLocaleVariantCode)) return locale->variantCode;
    if (CFEqual(key, kCFLocaleCalendarIdentifier)) return locale->calendarIdentifier;
    return nullptr;
}

CFStringRef CFLocaleCopyDisplayNameForPropertyValue(CFLocaleRef displayLocale, CFLocaleKey key, CFStringRef value) {
    if (!isLocale(displayLocale, "CFLocaleCopyDisplayNameForPropertyValue")) return nullptr;
    if (!isA(key, kCFStringTypeID) || !isA(value, kCFStringTypeID)) {
        reportMisuse("CFLocale: CFLocaleCopyDisplayNameForPropertyValue(): the key or value is not a string");
        return nullptr;
    }
    std::string code = asciiOf(value);
    if (code.empty()) return nullptr;
    std::string displayID = icuLocaleID(displayLocale);
    if (CFEqual(key, kCFLocaleIdentifier)) {
        auto canonical = canonicalLocaleIdentifier(code);
        if (!canonical) return nullptr;
        std::replace(canonical->begin(), canonical->begin() + long(std::min(canonical->find('@'), canonical->size())),
                     '-', '_');
        return copyDisplayName(uloc_getDisplayName, *canonical, displayID);
    }
    if (CFEqual(key, kCFLocaleLanguageCode)) return copyDisplayName(uloc_getDisplayLanguage, code, displayID);
    if (CFEqual(key, kCFLocaleCountryCode)) return copyDisplayName(uloc_getDisplayCountry, "und_" + code, displayID);
    if (CFEqual(key, kCFLocaleScriptCode)) return copyDisplayName(uloc_getDisplayScript, "und_" + code, displayID);
    if (CFEqual(key, kCFLocaleCalendarIdentifier)) {
        auto keywordValue = [](const char* locale, const char* display, UChar* dest, int32_t capacity,
                               UErrorCode* status) {
            return uloc_getDisplayKeywordValue(locale, "calendar", display, dest, capacity, status);
        };
        return copyDisplayName(keywordValue, "@calendar=" + code, displayID);
    }
    return nullptr;
}
