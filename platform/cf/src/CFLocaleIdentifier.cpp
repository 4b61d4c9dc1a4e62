// Locale identifiers: taking them apart and their canonical form.
#include "CFLocaleInternal.h"

#include <unicode/uloc.h>

#include <algorithm>
#include <unordered_map>

namespace halvane::detail {

namespace {

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool isDigit(char c) {
    return c >= '0' && c <= '9';
}
char lower(char c) {
    return c >= 'A' && c <= 'Z' ? char(c + ('a' - 'A')) : c;
}
char upper(char c) {
    return c >= 'a' && c <= 'z' ? char(c - ('a' - 'A')) : c;
}
std::string lowercased(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), lower);
    return text;
}
std::string uppercased(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), upper);
    return text;
}
bool allOf(std::string_view text, bool (*predicate)(char)) {
    return std::all_of(text.begin(), text.end(), predicate);
}
bool isScriptSubtag(std::string_view text) {
    return text.size() == 4 && allOf(text, isLetter);
}
bool isRegionSubtag(std::string_view text) {
    return (text.size() == 2 && allOf(text, isLetter)) || (text.size() == 3 && allOf(text, isDigit));
}

struct Replacement {
    std::string_view from;
    const char* to;
};

// Language names that older systems stored instead of codes.
constexpr Replacement kLegacyLanguageNames[] = {
    {"Afrikaans", "af"},
    {"Albanian", "sq"},
    {"Arabic", "ar"},
    {"Armenian", "hy"},
    {"Basque", "eu"},
    {"Bulgarian", "bg"},
    {"Catalan", "ca"},
    {"Chinese", "zh"},
    {"Croatian", "hr"},
    {"Czech", "cs"},
    {"Danish", "da"},
    {"Dutch", "nl"},
    {"English", "en"},
    {"Estonian", "et"},
    {"Faroese", "fo"},
    {"Finnish", "fi"},
    {"French", "fr"},
    {"Georgian", "ka"},
    {"German", "de"},
    {"Greek", "el"},
    {"Hebrew", "he"},
    {"Hindi", "hi"},
    {"Hungarian", "hu"},
    {"Icelandic", "is"},
    {"Indonesian", "id"},
    {"Irish", "ga"},
    {"Italian", "it"},
    {"Japanese", "ja"},
    {"Korean", "ko"},
    {"Latvian", "lv"},
    {"Lithuanian", "lt"},
    {"Malay", "ms"},
    {"Maltese", "mt"},
    {"Norwegian", "nb"},
    {"Persian", "fa"},
    {"Polish", "pl"},
    {"Portuguese", "pt"},
    {"Romanian", "ro"},
    {"Russian", "ru"},
    {"Serbian", "sr"},
    {"SimpChinese", "zh-Hans"},
    {"Slovak", "sk"},
    {"Slovenian", "sl"},
    {"Spanish", "es"},
    {"Swedish", "sv"},
    {"Thai", "th"},
    {"TradChinese", "zh-Hant"},
    {"Turkish", "tr"},
    {"Ukrainian", "uk"},
    {"Vietnamese", "vi"},
    {"Welsh", "cy"},
};

// Language codes withdrawn in favour of others, and the bibliographic
// three-letter codes that differ from the terminological ones ICU knows.
constexpr Replacement kLanguageCodeReplacements[] = {
    {"in", "id"},  {"iw", "he"},  {"ji", "yi"},  {"jw", "jv"},  {"mo", "ro"},  {"no", "nb"},  {"alb", "sq"},
    {"arm", "hy"}, {"baq", "eu"}, {"bur", "my"}, {"chi", "zh"}, {"cze", "cs"}, {"dut", "nl"}, {"fre", "fr"},
    {"geo", "ka"}, {"ger", "de"}, {"gre", "el"}, {"ice", "is"}, {"mac", "mk"}, {"mao", "mi"}, {"may", "ms"},
    {"per", "fa"}, {"rum", "ro"}, {"slo", "sk"}, {"tib", "bo"}, {"wel", "cy"},
};

const char* replacementFor(std::string_view text, const Replacement* begin, const Replacement* end) {
    auto found = std::find_if(begin, end, [text](const Replacement& r) { return r.from == text; });
    return found == end ? nullptr : found->to;
}

// The two-letter code of each three-letter language code ICU knows ("eng"
// -> "en"), built once.
const std::unordered_map<std::string, std::string>& twoLetterCodes() {
    static const auto* codes = [] {
        auto* table = new std::unordered_map<std::string, std::string>;
        for (const char* const* code = uloc_getISOLanguages(); *code != nullptr; ++code) {
            std::string threeLetters = uloc_getISO3Language(*code);
            if (threeLetters.size() == 3) table->emplace(threeLetters, *code);
        }
        return table;
    }();
    return *codes;
}

std::string canonicalLanguage(std::string language) {
    language = lowercased(std::move(language));
    if (language.size() == 3) {
        const auto& codes = twoLetterCodes();
        if (auto found = codes.find(language); found != codes.end()) language = found->second;
    }
    if (const char* replacement =
            replacementFor(language, std::begin(kLanguageCodeReplacements), std::end(kLanguageCodeReplacements))) {
        language = replacement;
    }
    return language;
}

// The script ICU expects for a language in a region ("Hans" for zh_CN).
std::string likelyScript(const std::string& language, const std::string& region) {
    std::string minimal = language + "_" + region;
    char maximal[ULOC_FULLNAME_CAPACITY];
    UErrorCode status = U_ZERO_ERROR;
    uloc_addLikelySubtags(minimal.c_str(), maximal, sizeof maximal, &status);
    if (U_FAILURE(status) || status == U_STRING_NOT_TERMINATED_WARNING) return {};
    char script[ULOC_SCRIPT_CAPACITY];
    status = U_ZERO_ERROR;
    uloc_getScript(maximal, script, sizeof script, &status);
    if (U_FAILURE(status) || status == U_STRING_NOT_TERMINATED_WARNING) return {};
    return script;
}

std::string joined(const LocaleIdentifierParts& parts) {
    std::string out = parts.language;
    if (!parts.script.empty()) out += parts.scriptSeparator + parts.script;
    if (!parts.region.empty()) out += parts.regionSeparator + parts.region;
    for (const auto& [separator, variant] : parts.variants) out += separator + variant;
    for (size_t i = 0; i < parts.keywords.size(); ++i) {
        out += i == 0 ? '@' : ';';
        out += parts.keywords[i].first + "=" + parts.keywords[i].second;
    }
    return out;
}

}  // namespace

LocaleIdentifierParts splitLocaleIdentifier(std::string_view identifier) {
    LocaleIdentifierParts parts;
    std::string_view base = identifier.substr(0, identifier.find('@'));
    if (base.size() < identifier.size()) {
        std::string_view keywords = identifier.substr(base.size() + 1);
        while (!keywords.empty()) {
            std::string_view keyword = keywords.substr(0, keywords.find(';'));
            keywords.remove_prefix(std::min(keywords.size(), keyword.size() + 1));
            size_t equals = keyword.find('=');
            if (equals == 0 || equals == std::string_view::npos || equals + 1 == keyword.size()) continue;
            parts.keywords.emplace_back(keyword.substr(0, equals), keyword.substr(equals + 1));
        }
    }

    std::vector<std::pair<char, std::string>> subtags;
    size_t start = 0;
    char separator = '_';
    for (size_t i = 0; i <= base.size(); ++i) {
        if (i == base.size() || base[i] == '_' || base[i] == '-') {
            subtags.emplace_back(separator, std::string(base.substr(start, i - start)));
            if (i < base.size()) separator = base[i];
            start = i + 1;
        }
    }
    size_t next = 0;
    parts.language = subtags[next++].second;
    if (next < subtags.size() && isScriptSubtag(subtags[next].second)) {
        parts.scriptSeparator = subtags[next].first;
        parts.script = subtags[next++].second;
    }
    if (next < subtags.size() && isRegionSubtag(subtags[next].second)) {
        parts.regionSeparator = subtags[next].first;
        parts.region = subtags[next++].second;
    }
    parts.variants.assign(subtags.begin() + long(next), subtags.end());
    return parts;
}

std::optional<std::string> canonicalLocaleIdentifier(std::string_view identifier) {
    if (!std::all_of(identifier.begin(), identifier.end(), [](char c) { return c > 0x20 && c < 0x7F; })) {
        return std::nullopt;
    }
    // A legacy name stands for the language ("English_US" is "en_US").
    std::string text(identifier);
    size_t nameLength = std::min(text.find_first_of("_-@"), text.size());
    if (const char* code = replacementFor(std::string_view(text).substr(0, nameLength),
                                          std::begin(kLegacyLanguageNames), std::end(kLegacyLanguageNames))) {
        text.replace(0, nameLength, code);
    }

    LocaleIdentifierParts parts = splitLocaleIdentifier(text);
    parts.language = canonicalLanguage(std::move(parts.language));
    if (!parts.script.empty()) {
        parts.script = lowercased(std::move(parts.script));
        parts.script[0] = upper(parts.script[0]);
    }
    parts.region = uppercased(std::move(parts.region));
    for (auto& variant : parts.variants) variant.second = uppercased(std::move(variant.second));
    // "zh-Hans_CN" says no more than "zh_CN".
    if (!parts.script.empty() && !parts.region.empty() && likelyScript(parts.language, parts.region) == parts.script) {
        parts.script.clear();
    }
    for (auto& keyword : parts.keywords) keyword.first = lowercased(std::move(keyword.first));
    std::stable_sort(parts.keywords.begin(), parts.keywords.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    // A key given twice keeps its first value.
    parts.keywords.erase(std::unique(parts.keywords.begin(), parts.keywords.end(),
                                     [](const auto& a, const auto& b) { return a.first == b.first; }),
                         parts.keywords.end());
    return joined(parts);
}

}  // namespace halvane::detail
