// CFLocale: the system, current and ordinary locales with their kinds and
// shared objects, canonical identifiers, values and display names,
// equality, descriptions, the calendar identifier constants and refused
// misuse.
#include "CFTestSupport.h"
#include "MisuseReports.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

using namespace cftest;

namespace {

Owned<CFStringRef> text(const std::string& ascii) {
    return string(std::u16string(ascii.begin(), ascii.end()));
}

Owned<CFLocaleRef> locale(const char* identifier) {
    return own(CFLocaleCreate(nullptr, text(identifier)));
}

std::string identifierOf(CFLocaleRef l) {
    return ascii(CFLocaleGetIdentifier(l));
}

std::optional<std::string> canonical(const std::u16string& identifier) {
    auto result = own(CFLocaleCreateCanonicalLocaleIdentifierFromString(nullptr, string(identifier)));
    if (!result) return std::nullopt;
    return ascii(result);
}

// The value of a key as text, "(none)" when the locale has none.
std::string value(CFLocaleRef l, CFLocaleKey key) {
    auto v = static_cast<CFStringRef>(CFLocaleGetValue(l, key));
    return v == nullptr ? "(none)" : ascii(v);
}

// The name of a code in a display locale; empty when there is none.
std::u16string displayName(const char* displayLocale, CFLocaleKey key, const std::u16string& code) {
    auto name = own(CFLocaleCopyDisplayNameForPropertyValue(locale(displayLocale), key, string(code)));
    return name ? units(name) : std::u16string();
}

std::string pointerText(const void* p) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "0x%lx", static_cast<unsigned long>(reinterpret_cast<uintptr_t>(p)));
    return buffer;
}

std::string expectedDescription(CFLocaleRef l, const char* kind, const char* identifier) {
    return "<CFLocale " + pointerText(l) + " [" + pointerText(kCFAllocatorSystemDefault) + "]>{type = " + kind +
           ", identifier = '" + identifier + "'}";
}

// Sets (or, with NULL, removes) the locale variables for the life of the
// object, then puts the old values back.
class ScopedLocaleEnvironment {
public:
    ScopedLocaleEnvironment(const char* all, const char* messages, const char* lang) {
        const char* values[] = {all, messages, lang};
        for (int i = 0; i < 3; ++i) {
            if (const char* old = std::getenv(kNames[i])) old_[i] = old;
            set(kNames[i], values[i]);
        }
    }
    ~ScopedLocaleEnvironment() {
        for (int i = 0; i < 3; ++i) set(kNames[i], old_[i] ? old_[i]->c_str() : nullptr);
    }

private:
    static void set(const char* name, const char* value) {
        if (value != nullptr) {
            setenv(name, value, 1);
        } else {
            unsetenv(name);
        }
    }
    static constexpr const char* kNames[] = {"LC_ALL", "LC_MESSAGES", "LANG"};
    std::optional<std::string> old_[3];
};

}  // namespace

TEST(Locale, SystemLocaleIsTheSharedRootLocale) {
    EXPECT_EQ(CFLocaleGetTypeID(), 55u);
    EXPECT_EQ(ascii(own(CFCopyTypeIDDescription(CFLocaleGetTypeID()))), "CFLocale");
    CFLocaleRef system = CFLocaleGetSystem();
    ASSERT_NE(system, nullptr);
    EXPECT_EQ(CFLocaleGetSystem(), system);
    EXPECT_EQ(CFGetTypeID(system), CFLocaleGetTypeID());
    EXPECT_EQ(identifierOf(system), "");
    // Shared but not a constant: it counts references like any object.
    CFIndex count = CFGetRetainCount(system);
    EXPECT_GE(count, 1);
    EXPECT_LT(count, kImmortal);
    CFRetain(system);
    EXPECT_EQ(CFGetRetainCount(system), count + 1);
    CFRelease(system);
    EXPECT_EQ(ascii(own(CFCopyDescription(system))), expectedDescription(system, "system", ""));
    EXPECT_EQ(value(system, kCFLocaleLanguageCode), "(none)");
    EXPECT_EQ(value(system, kCFLocaleCalendarIdentifier), "gregorian");
    // An ordinary locale of the same identifier is another kind of locale.
    auto root = locale("");
    EXPECT_EQ(identifierOf(root), "");
    EXPECT_FALSE(CFEqual(root, system));
}

TEST(Locale, CurrentLocaleComesFromTheEnvironment) {
    {
        ScopedLocaleEnvironment environment(nullptr, nullptr, "de_DE.UTF-8");
        auto current = own(CFLocaleCopyCurrent());
        EXPECT_EQ(identifierOf(current), "de_DE");
        EXPECT_EQ(ascii(own(CFCopyDescription(current))), expectedDescription(current, "user", "de_DE"));
        EXPECT_EQ(own(CFLocaleCopyCurrent()).get(), current.get());
        EXPECT_TRUE(CFEqual(current, own(CFLocaleCopyCurrent())));
        // Same identifier, other kind: not equal, though the hashes agree.
        auto ordinary = locale("de_DE");
        EXPECT_FALSE(CFEqual(current, ordinary));
        EXPECT_FALSE(CFEqual(ordinary, current));
        EXPECT_EQ(CFHash(current), CFHash(ordinary));
    }
    const struct {
        const char* all;
        const char* messages;
        const char* lang;
        const char* identifier;
    } rows[] = {
        {nullptr, nullptr, nullptr, "en_US"},
        {nullptr, nullptr, "C", "en_US"},
        {nullptr, nullptr, "POSIX", "en_US"},
        {nullptr, nullptr, "C.UTF-8", "en_US"},
        {nullptr, "fr_CA.UTF-8", "de_DE.UTF-8", "fr_CA"},
        {"pt_BR.ISO-8859-1@euro", "fr_CA.UTF-8", "de_DE.UTF-8", "pt_BR"},
        {nullptr, nullptr, "iw_IL.UTF-8", "he_IL"},
        {nullptr, nullptr, "sr_RS@latin", "sr_RS"},
    };
    for (const auto& row : rows) {
        ScopedLocaleEnvironment environment(row.all, row.messages, row.lang);
        EXPECT_EQ(identifierOf(own(CFLocaleCopyCurrent())), row.identifier) << (row.lang ? row.lang : "(unset)");
    }
    ScopedLocaleEnvironment english(nullptr, nullptr, "en_US.UTF-8");
    EXPECT_FALSE(CFEqual(locale("en_US"), own(CFLocaleCopyCurrent())));
}

TEST(Locale, CanonicalIdentifiers) {
    const std::pair<const char*, const char*> rows[] = {
        {"en_US", "en_US"},
        {"en_us", "en_US"},
        {"EN_gb", "en_GB"},
        {"en-US", "en-US"},
        {"en-us", "en-US"},
        {"zh-hans", "zh-Hans"},
        {"zh_HANS", "zh_Hans"},
        {"zh-Hans_CN", "zh_CN"},
        {"zh-Hant_TW", "zh_TW"},
        {"zh-Hant-TW", "zh-TW"},
        {"zh-Hant_CN", "zh-Hant_CN"},
        {"sr_Latn_RS", "sr_Latn_RS"},
        {"sr_Cyrl_RS", "sr_RS"},
        {"English", "en"},
        {"French", "fr"},
        {"Japanese", "ja"},
        {"Norwegian", "nb"},
        {"TradChinese", "zh-Hant"},
        {"SimpChinese_CN", "zh_CN"},
        {"German@calendar=buddhist", "de@calendar=buddhist"},
        {"GERMAN", "german"},
        {"eng", "en"},
        {"fra", "fr"},
        {"fre_CA", "fr_CA"},
        {"ger_DE", "de_DE"},
        {"jpn_JP", "ja_JP"},
        {"iw", "he"},
        {"iw_IL", "he_IL"},
        {"in_ID", "id_ID"},
        {"no", "nb"},
        {"no_NO", "nb_NO"},
        {"nor", "nb"},
        {"es_419", "es_419"},
        {"en_US_POSIX", "en_US_POSIX"},
        {"ca_es_preeuro", "ca_ES_PREEURO"},
        {"en_US@calendar=japanese", "en_US@calendar=japanese"},
        {"en_US@CALENDAR=japanese", "en_US@calendar=japanese"},
        {"de@currency=EUR;calendar=gregorian", "de@calendar=gregorian;currency=EUR"},
        {"de_DE@calendar=", "de_DE"},
        {"xx_YY", "xx_YY"},
        {"", ""},
    };
    for (const auto& [input, expected] : rows) {
        EXPECT_EQ(canonical(std::u16string(input, input + std::char_traits<char>::length(input))), expected) << input;
        auto created = locale(input);
        ASSERT_TRUE(created) << input;
        EXPECT_EQ(identifierOf(created), expected);
    }
    EXPECT_EQ(canonical(u"fr_FR\u00E9"), std::nullopt);
    EXPECT_EQ(canonical(u"en US"), std::nullopt);
    EXPECT_FALSE(own(CFLocaleCreate(nullptr, string(u"\u65E5\u672C"))));
    EXPECT_EQ(CFLocaleCreate(kCFAllocatorNull, text("en_US")), nullptr);
}

TEST(Locale, OneSharedLocalePerCanonicalIdentifier) {
    auto a = locale("en_US");
    CFIndex count = CFGetRetainCount(a);
    auto b = locale("en_us");
    auto c = locale("English_US");
    EXPECT_EQ(a.get(), b.get());
    EXPECT_EQ(a.get(), c.get());
    EXPECT_EQ(CFGetRetainCount(a), count + 2);
    EXPECT_NE(locale("en-US").get(), a.get());
    EXPECT_FALSE(CFEqual(locale("en-US"), a));

    EXPECT_TRUE(CFEqual(a, b));
    EXPECT_FALSE(CFEqual(a, locale("en_GB")));
    EXPECT_FALSE(CFEqual(a, text("en_US")));
    EXPECT_EQ(CFHash(a), CFHash(text("en_US")));
    EXPECT_EQ(ascii(own(CFCopyDescription(a))), expectedDescription(a, "ordinary", "en_US"));
    EXPECT_EQ(_CFRuntimeGetClassWithTypeID(CFLocaleGetTypeID())->copyFormattingDesc, nullptr);
}

TEST(Locale, ValuesOfTheIdentifier) {
    auto taiwan = locale("zh-Hant_TW@calendar=roc");
    EXPECT_EQ(identifierOf(taiwan), "zh_TW@calendar=roc");
    EXPECT_EQ(CFLocaleGetValue(taiwan, kCFLocaleIdentifier), CFLocaleGetIdentifier(taiwan));
    EXPECT_EQ(value(taiwan, kCFLocaleLanguageCode), "zh");
    EXPECT_EQ(value(taiwan, kCFLocaleCountryCode), "TW");
    EXPECT_EQ(value(taiwan, kCFLocaleScriptCode), "(none)");
    EXPECT_EQ(value(taiwan, kCFLocaleVariantCode), "(none)");
    EXPECT_EQ(CFLocaleGetValue(taiwan, kCFLocaleCalendarIdentifier), kCFCalendarIdentifierRepublicOfChina);

    auto serbian = locale("sr_Latn_RS_REVISED");
    EXPECT_EQ(value(serbian, kCFLocaleLanguageCode), "sr");
    EXPECT_EQ(value(serbian, kCFLocaleScriptCode), "Latn");
    EXPECT_EQ(value(serbian, kCFLocaleCountryCode), "RS");
    EXPECT_EQ(value(serbian, kCFLocaleVariantCode), "REVISED");
    EXPECT_EQ(value(locale("en_US_POSIX"), kCFLocaleVariantCode), "POSIX");
    EXPECT_EQ(value(locale("fr"), kCFLocaleCountryCode), "(none)");
    // Without a keyword, the calendar the region uses.
    EXPECT_EQ(CFLocaleGetValue(locale("en_US"), kCFLocaleCalendarIdentifier), kCFGregorianCalendar);
    EXPECT_EQ(CFLocaleGetValue(locale("th_TH"), kCFLocaleCalendarIdentifier), kCFBuddhistCalendar);
    EXPECT_EQ(CFLocaleGetValue(locale("fa_IR"), kCFLocaleCalendarIdentifier), kCFPersianCalendar);
    EXPECT_EQ(CFLocaleGetValue(locale("th_TH@calendar=gregorian"), kCFLocaleCalendarIdentifier), kCFGregorianCalendar);
    EXPECT_EQ(CFLocaleGetValue(locale("en_US"), text("locale:unknown key")), nullptr);
}

TEST(Locale, DisplayNames) {
    EXPECT_EQ(displayName("fr", kCFLocaleIdentifier, u"en_US"), u"anglais (\u00C9tats-Unis)");
    EXPECT_EQ(displayName("en_US", kCFLocaleIdentifier, u"zh-Hans_CN"), u"Chinese (China)");
    EXPECT_EQ(displayName("en_US", kCFLocaleLanguageCode, u"de"), u"German");
    EXPECT_EQ(displayName("de", kCFLocaleLanguageCode, u"de"), u"Deutsch");
    EXPECT_EQ(displayName("en_US", kCFLocaleCountryCode, u"FR"), u"France");
    EXPECT_EQ(displayName("en_US", kCFLocaleScriptCode, u"Cyrl"), u"Cyrillic");
    EXPECT_EQ(displayName("en_US", kCFLocaleCalendarIdentifier, u"japanese"), u"Japanese Calendar");
    for (auto [key, code] : {std::pair(kCFLocaleLanguageCode, u"qq"), std::pair(kCFLocaleCountryCode, u"QQ"),
                             std::pair(kCFLocaleLanguageCode, u""), std::pair(kCFLocaleVariantCode, u"POSIX")}) {
        EXPECT_EQ(displayName("en_US", key, code), u"");
    }
}

TEST(Locale, CalendarIdentifierConstants) {
    const std::pair<CFStringRef, const char*> identifiers[] = {
        {kCFCalendarIdentifierGregorian, "gregorian"},
        {kCFCalendarIdentifierBuddhist, "buddhist"},
        {kCFCalendarIdentifierJapanese, "japanese"},
        {kCFCalendarIdentifierIslamic, "islamic"},
        {kCFCalendarIdentifierIslamicCivil, "islamic-civil"},
        {kCFCalendarIdentifierIslamicUmmAlQura, "islamic-umalqura"},
        {kCFCalendarIdentifierIslamicTabular, "islamic-tbla"},
        {kCFCalendarIdentifierHebrew, "hebrew"},
        {kCFCalendarIdentifierChinese, "chinese"},
        {kCFCalendarIdentifierRepublicOfChina, "roc"},
        {kCFCalendarIdentifierPersian, "persian"},
        {kCFCalendarIdentifierIndian, "indian"},
        {kCFCalendarIdentifierISO8601, "iso8601"},
        {kCFCalendarIdentifierCoptic, "coptic"},
        {kCFCalendarIdentifierEthiopicAmeteMihret, "ethiopic"},
        {kCFCalendarIdentifierEthiopicAmeteAlem, "ethiopic-amete-alem"},
    };
    for (const auto& [constant, name] : identifiers) {
        EXPECT_EQ(ascii(constant), name);
        EXPECT_EQ(CFGetRetainCount(constant), kImmortal);
    }
    const std::pair<CFStringRef, CFStringRef> aliases[] = {
        {kCFGregorianCalendar, kCFCalendarIdentifierGregorian},
        {kCFBuddhistCalendar, kCFCalendarIdentifierBuddhist},
        {kCFJapaneseCalendar, kCFCalendarIdentifierJapanese},
        {kCFIslamicCalendar, kCFCalendarIdentifierIslamic},
        {kCFIslamicCivilCalendar, kCFCalendarIdentifierIslamicCivil},
        {kCFHebrewCalendar, kCFCalendarIdentifierHebrew},
        {kCFChineseCalendar, kCFCalendarIdentifierChinese},
        {kCFPersianCalendar, kCFCalendarIdentifierPersian},
        {kCFRepublicOfChinaCalendar, kCFCalendarIdentifierRepublicOfChina},
        {kCFIndianCalendar, kCFCalendarIdentifierIndian},
        {kCFISO8601Calendar, kCFCalendarIdentifierISO8601}};
    for (const auto& [alias, constant] : aliases) EXPECT_EQ(alias, constant) << ascii(constant);
    EXPECT_EQ(ascii(kCFLocaleIdentifier), "locale:id");
    EXPECT_EQ(ascii(kCFLocaleCalendarIdentifier), "calendar");
}

TEST(Locale, MisuseIsReportedAndRefused) {
    auto notALocale = text("en_US");
    std::string reports = reportsOf([&] {
        for (CFLocaleRef wrong : {CFLocaleRef(nullptr), reinterpret_cast<CFLocaleRef>(notALocale.get())}) {
            EXPECT_EQ(CFLocaleGetIdentifier(wrong), nullptr);
            EXPECT_EQ(CFLocaleGetValue(wrong, kCFLocaleIdentifier), nullptr);
            EXPECT_EQ(CFLocaleCopyDisplayNameForPropertyValue(wrong, kCFLocaleLanguageCode, notALocale), nullptr);
        }
        EXPECT_EQ(CFLocaleCreate(nullptr, nullptr), nullptr);
        EXPECT_EQ(CFLocaleCreateCanonicalLocaleIdentifierFromString(nullptr, nullptr), nullptr);
        EXPECT_EQ(CFLocaleGetValue(CFLocaleGetSystem(), nullptr), nullptr);
    });
    EXPECT_EQ(lineCount(reports), 9);
    EXPECT_EQ(occurrences(reports, "CFLocale: CFLocaleGetIdentifier(): not a locale\n"), 2);
    EXPECT_EQ(occurrences(reports, "CFLocale: CFLocaleCreate(): the identifier is not a string\n"), 1);
    EXPECT_EQ(CFGetRetainCount(notALocale), 1);
}
