// The transformations behind the comparison flags (case folding, canonical
// decomposition, removal of diacritics, width folding), shared by
// comparison and searching so that both agree on what "equal" means.
#ifndef HALVANE_CF_STRING_FOLDING_H
#define HALVANE_CF_STRING_FOLDING_H

#include "CFStringInternal.h"

#include <unicode/unorm2.h>

#include <string>

namespace halvane::detail {

// The flags that need Unicode data beyond case folding.
inline constexpr CFStringCompareFlags kUnicodeCompareFlags =
    kCFCompareNonliteral | kCFCompareLocalized | kCFCompareDiacriticInsensitive | kCFCompareWidthInsensitive;

inline UniChar lowercasedASCII(UniChar u) {
    return UniChar(u - 'A') < 26 ? UniChar(u + ('a' - 'A')) : u;
}

const UNormalizer2* nfd();
const UNormalizer2* nfc();

// Full default case folding (not the Turkic variant).
std::u16string caseFolded(const std::u16string& text);
std::u16string normalized(const std::u16string& text, const UNormalizer2* normalizer);
// Full-width and half-width forms become their ordinary counterparts
// (compatibility mappings of U+3000 and U+FF00 to U+FFEF); half-width kana
// with separate sound marks are recomposed.
std::u16string widthFolded(const std::u16string& text);
// Drops nonspacing marks (general category Mn).
std::u16string withoutNonspacingMarks(const std::u16string& text);

// The text as the case, nonliteral, diacritic and width flags see it:
// equal under those flags exactly when the results have equal units.
std::u16string comparableText(std::u16string text, CFStringCompareFlags options);

// The full default case folding of every BMP code point (65536 entries),
// 0 where a code point folds to more than one unit (ß, ligatures, ...);
// surrogates map to themselves. Built on first use.
const UniChar* singleUnitCaseFoldings();
// The full default case folding of c into out (room for
// kMaximumCaseFoldingLength units); returns the number of units.
inline constexpr size_t kMaximumCaseFoldingLength = 4;
size_t caseFoldCodePoint(UChar32 c, UniChar* out);

// The same transformation, piece by piece, for searching: a text is cut
// into segments, each starting at a code point for which
// startsComparableSegment is true, and the comparable form of the text is
// the concatenation of appendComparable over its segments. A match must
// start and end on segment boundaries, which is what lets a found range be
// mapped back onto the original text.
bool startsComparableSegment(UChar32 c, CFStringCompareFlags options);
void appendComparable(const UniChar* units, size_t length, CFStringCompareFlags options, std::u16string& out);

}  // namespace halvane::detail

#endif  // HALVANE_CF_STRING_FOLDING_H
