// CFStringUppercase, CFStringLowercase and CFStringCapitalize: full
// mappings that change lengths, the languages with rules of their own, the
// words of capitalization, and refused misuse.
#include "CFTestSupport.h"
#include "MisuseReports.h"

#include <gtest/gtest.h>

#include <string>

using namespace cftest;

namespace {

using Change = void (*)(CFMutableStringRef, CFLocaleRef);

Owned<CFLocaleRef> locale(const char* identifier) {
    std::string id = identifier;
    return own(CFLocaleCreate(nullptr, string(std::u16string(id.begin(), id.end()))));
}

// The text after change, done on a mutable copy in the given locale (NULL
// for none).
std::u16string changed(Change change, const std::u16string& text, const char* localeIdentifier = nullptr) {
    auto mutableString = own(CFStringCreateMutableCopy(nullptr, 0, string(text)));
    Owned<CFLocaleRef> l = localeIdentifier != nullptr ? locale(localeIdentifier) : Owned<CFLocaleRef>();
    change(mutableString, l);
    return units(mutableString);
}

std::u16string upper(const std::u16string& text, const char* l = nullptr) {
    return changed(CFStringUppercase, text, l);
}
std::u16string lower(const std::u16string& text, const char* l = nullptr) {
    return changed(CFStringLowercase, text, l);
}
std::u16string capitalized(const std::u16string& text, const char* l = nullptr) {
    return changed(CFStringCapitalize, text, l);
}

}  // namespace

TEST(StringCase, UppercaseWithFullMappings) {
    EXPECT_EQ(upper(u"hello, World 42"), u"HELLO, WORLD 42");
    EXPECT_EQ(upper(u""), u"");
    EXPECT_EQ(upper(u"stra\u00DFe"), u"STRASSE");  // one unit becomes two
    EXPECT_EQ(upper(u"\uFB01n"), u"FIN");          // the fi ligature
    EXPECT_EQ(upper(u"\u0149"), u"\u02BCN");       // n preceded by apostrophe
    EXPECT_EQ(upper(u"\u00E9t\u00E9"), u"\u00C9T\u00C9");
    EXPECT_EQ(upper(u"\U00010428x"), u"\U00010400X");  // outside the BMP
    // Dotted and dotless i: Turkish and Azeri only.
    EXPECT_EQ(upper(u"istanbul"), u"ISTANBUL");
    EXPECT_EQ(upper(u"istanbul", "en_US"), u"ISTANBUL");
    EXPECT_EQ(upper(u"istanbul", "tr"), u"\u0130STANBUL");
    EXPECT_EQ(upper(u"istanbul", "tr_TR"), u"\u0130STANBUL");
    EXPECT_EQ(upper(u"\u0131s\u0131k", "az"), u"ISIK");
    // Greek capitals drop their accents.
    EXPECT_EQ(upper(u"\u03AC\u03BB\u03C6\u03B1"), u"\u0386\u039B\u03A6\u0391");
    EXPECT_EQ(upper(u"\u03AC\u03BB\u03C6\u03B1", "el_GR"), u"\u0391\u039B\u03A6\u0391");
}

TEST(StringCase, LowercaseWithFullMappings) {
    EXPECT_EQ(lower(u"HELLO, World 42"), u"hello, world 42");
    EXPECT_EQ(lower(u"\u00C9T\u00C9"), u"\u00E9t\u00E9");
    EXPECT_EQ(lower(u"\U00010400X"), u"\U00010428x");
    // Capital I with dot: i and a combining dot, except in Turkish.
    EXPECT_EQ(lower(u"\u0130"), u"i\u0307");
    EXPECT_EQ(lower(u"\u0130STANBUL I\u015EIK", "tr"), u"istanbul \u0131\u015F\u0131k");
    EXPECT_EQ(lower(u"I", "de_DE"), u"i");
    EXPECT_EQ(lower(u"I", "az_AZ"), u"\u0131");
    // Final sigma, in every language.
    EXPECT_EQ(lower(u"\u039F\u0394\u039F\u03A3 \u039F\u0394\u039F\u03A3"),
              u"\u03BF\u03B4\u03BF\u03C2 \u03BF\u03B4\u03BF\u03C2");
    // Lithuanian keeps the dot of an i under an accent.
    EXPECT_EQ(lower(u"\u00CC"), u"\u00EC");
    EXPECT_EQ(lower(u"\u00CC", "lt"), u"i\u0307\u0300");
}

TEST(StringCase, CapitalizeTitlecasesTheFirstCasedLetterOfEachWord) {
    const std::pair<std::u16string, std::u16string> rows[] = {
        {u"hello world", u"Hello World"},
        {u"HELLO", u"Hello"},
        {u"don't", u"Don't"},
        {u"3rd", u"3Rd"},
        {u"a-b", u"A-B"},
        {u"hello_world", u"Hello_World"},
        {u"hello.world", u"Hello.World"},
        {u"a:b", u"A:B"},
        {u"mcDONALD", u"Mcdonald"},
        {u"  two  spaces ", u"  Two  Spaces "},
        {u"", u""},
        // Case-ignorable characters neither end nor start a word.
        {u"a^b a`b", u"A^b A`b"},
        {u"x\u00ADy x\u00B4y x\u00A8y", u"X\u00ADy X\u00B4y X\u00A8y"},
        {u"e\u0301COLE", u"E\u0301cole"},
        {u"'twas", u"'Twas"},
        // Other punctuation does end a word.
        {u"don\u2019t", u"Don\u2019T"},
        // Full mappings: the sharp s titlecases to two letters; dz has a
        // titlecase letter of its own.
        {u"\u00DF", u"Ss"},
        {u"\u00DFa \u00DF", u"Ssa Ss"},
        {u"\u01C6emal", u"\u01C5emal"},
        {u"\u039F\u0394\u039F\u03A3 \u039F\u0394\u039F\u03A3", u"\u039F\u03B4\u03BF\u03C2 \u039F\u03B4\u03BF\u03C2"},
        {u"\U00010428\U00010400 \U00010400", u"\U00010400\U00010428 \U00010400"},
        // A lone surrogate is no letter: it ends a word.
        {u"a\xD800"
         u"b",
         u"A\xD800"
         u"B"},
    };
    for (const auto& [input, expected] : rows) {
        EXPECT_EQ(capitalized(input), expected);
        EXPECT_EQ(capitalized(input, "en_US"), expected);
    }
    // Dutch "ij" is one letter at the start of a word.
    EXPECT_EQ(capitalized(u"ijssel ijs", "nl"), u"IJssel IJs");
    EXPECT_EQ(capitalized(u"IJSSEL", "nl_NL"), u"IJssel");
    EXPECT_EQ(capitalized(u"ijssel"), u"Ijssel");
    EXPECT_EQ(capitalized(u"ijssel", "de"), u"Ijssel");
    // Turkish dotted i.
    EXPECT_EQ(capitalized(u"istanbul ISPARTA", "tr"), u"\u0130stanbul Isparta");
    EXPECT_EQ(capitalized(u"istanbul ISPARTA"), u"Istanbul Isparta");
}

TEST(StringCase, ChangesGoThroughTheMutableString) {
    auto s = own(CFStringCreateMutableCopy(nullptr, 0, string(u"stra\u00DFe")));
    CFStringUppercase(s, nullptr);
    EXPECT_EQ(CFStringGetLength(s), 7);
    EXPECT_EQ(units(s), u"STRASSE");
    CFStringLowercase(s, nullptr);
    EXPECT_EQ(units(s), u"strasse");
    CFStringCapitalize(s, nullptr);
    EXPECT_EQ(units(s), u"Strasse");
    CFStringAppendCharacters(s, reinterpret_cast<const UniChar*>(u" \u00DF"), 2);
    CFStringCapitalize(s, nullptr);
    EXPECT_EQ(units(s), u"Strasse Ss");
    EXPECT_EQ(CFGetRetainCount(s), 1);
}

TEST(StringCase, MisuseIsReportedAndRefused) {
    auto immutable = string(u"hello");
    auto mutableString = own(CFStringCreateMutableCopy(nullptr, 0, string(u"hello")));
    std::string reports = reportsOf([&] {
        for (Change change : {CFStringUppercase, CFStringLowercase, CFStringCapitalize}) {
            change(nullptr, nullptr);
            change(reinterpret_cast<CFMutableStringRef>(const_cast<void*>(static_cast<const void*>(kCFNull))), nullptr);
            change(reinterpret_cast<CFMutableStringRef>(const_cast<void*>(static_cast<const void*>(immutable.get()))),
                   nullptr);
            change(mutableString, reinterpret_cast<CFLocaleRef>(immutable.get()));
        }
    });
    EXPECT_EQ(lineCount(reports), 12);
    EXPECT_EQ(occurrences(reports, "CFString: CFStringUppercase(): not a string\n"), 2);
    EXPECT_EQ(occurrences(reports, "CFString: CFStringCapitalize(): Expect mutable string\n"), 1);
    EXPECT_EQ(occurrences(reports, "CFString: CFStringLowercase(): not a locale\n"), 1);
    EXPECT_EQ(units(immutable), u"hello");
    EXPECT_EQ(units(mutableString), u"hello");
}
