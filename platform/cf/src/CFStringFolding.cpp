// The transformations behind the comparison flags, for whole texts
// (comparison) and segment by segment (searching).
#include "CFStringFolding.h"

#include <unicode/uchar.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <iterator>

namespace halvane::detail {

namespace {

// Runs an ICU string transformation into a new buffer, growing it when
// the first guess is short.
template <typename Transform>
std::u16string transformed(const std::u16string& text, Transform transform) {
    std::u16string out(text.size() * 2 + 8, u'\0');
    UErrorCode status = U_ZERO_ERROR;
    int32_t length = transform(text.data(), int32_t(text.size()), out.data(), int32_t(out.size()), &status);
    if (status == U_BUFFER_OVERFLOW_ERROR) {
        out.assign(size_t(length), u'\0');
        status = U_ZERO_ERROR;
        length = transform(text.data(), int32_t(text.size()), out.data(), int32_t(out.size()), &status);
    }
    if (U_FAILURE(status)) return text;
    out.resize(size_t(length));
    return out;
}

bool isWidthForm(UChar32 c) {
    return c == 0x3000 || (c >= 0xFF00 && c <= 0xFFEF);
}

}  // namespace

const UniChar* singleUnitCaseFoldings() {
    // Never freed, so that searches running while the process exits still
    // find it.
    static const UniChar* const table = [] {
        auto* folding = new UniChar[0x10000];
        for (UChar32 c = 0; c < 0x10000; ++c) {
            if (U16_IS_SURROGATE(c)) {
                folding[c] = UniChar(c);
                continue;
            }
            UChar source = UChar(c), folded[4];
            UErrorCode status = U_ZERO_ERROR;
            int32_t length = u_strFoldCase(folded, 4, &source, 1, U_FOLD_CASE_DEFAULT, &status);
            folding[c] = (U_SUCCESS(status) && length == 1) ? UniChar(folded[0]) : UniChar(0);
        }
        return folding;
    }();
    return table;
}

size_t caseFoldCodePoint(UChar32 c, UniChar* out) {
    if (c <= 0xFFFF) {
        UniChar folded = singleUnitCaseFoldings()[c];
        if (folded != 0 || c == 0) {
            out[0] = folded;
            return 1;
        }
    }
    UChar source[2];
    int32_t sourceLength = 0;
    U16_APPEND_UNSAFE(source, sourceLength, c);
    UErrorCode status = U_ZERO_ERROR;
    int32_t length = u_strFoldCase(out, kMaximumCaseFoldingLength, source, sourceLength, U_FOLD_CASE_DEFAULT, &status);
    if (U_SUCCESS(status) && length > 0) return size_t(length);
    std::copy(source, source + sourceLength, out);
    return size_t(sourceLength);
}

namespace {

bool hasCanonicalDecomposition(UChar32 c) {
    UChar mapping[8];
    UErrorCode status = U_ZERO_ERROR;
    return unorm2_getRawDecomposition(nfd(), c, mapping, 8, &status) >= 0;
}

// comparableText of one code point (not a width form) with a decomposition
// into a local buffer and the folding table instead of ICU's string
// functions. Returns false, having appended nothing, for the rare cases
// that need the general path: foldings into several units, and foldings
// that change combining classes or produce decomposable characters (the
// text would have to be reordered or decomposed again).
bool appendComparableCodePoint(UChar32 c, CFStringCompareFlags options, std::u16string& out) {
    bool caseInsensitive = (options & kCFCompareCaseInsensitive) != 0;
    bool decomposes = (options & (kCFCompareNonliteral | kCFCompareDiacriticInsensitive)) != 0;
    bool withoutMarks = (options & kCFCompareDiacriticInsensitive) != 0;
    UChar32 sequence[8];
    int count = 0;
    UChar decomposition[16];
    UErrorCode status = U_ZERO_ERROR;
    int32_t length = decomposes ? unorm2_getDecomposition(nfd(), c, decomposition, 16, &status) : -1;
    if (U_FAILURE(status)) return false;
    if (length < 0) {
        sequence[count++] = c;
    } else {
        for (int32_t i = 0; i < length;) {
            if (count == int(std::size(sequence))) return false;
            U16_NEXT(decomposition, i, length, sequence[count]);
            ++count;
        }
    }
    size_t start = out.size();
    for (int k = 0; k < count; ++k) {
        UChar32 d = sequence[k];
        UniChar folded[kMaximumCaseFoldingLength];
        int32_t foldedLength = 0;
        if (caseInsensitive) {
            foldedLength = int32_t(caseFoldCodePoint(d, folded));
            bool unchanged = foldedLength == 1 && folded[0] == d;
            if (decomposes && !unchanged) {
                bool fallBack = u_getCombiningClass(d) != 0;
                for (int32_t f = 0; f < foldedLength && !fallBack; ++f) {
                    fallBack = U16_IS_SURROGATE(folded[f]) || u_getCombiningClass(folded[f]) != 0 ||
                               hasCanonicalDecomposition(folded[f]);
                }
                if (fallBack) {
                    out.resize(start);
                    return false;
                }
            }
        } else {
            U16_APPEND_UNSAFE(folded, foldedLength, d);
        }
        // Marks go after folding, as in comparableText: a mark may fold
        // into something that is not one.
        for (int32_t f = 0; f < foldedLength;) {
            int32_t from = f;
            UChar32 e;
            U16_NEXT(folded, f, foldedLength, e);
            if (!(withoutMarks && u_charType(e) == U_NON_SPACING_MARK)) out.append(folded + from, size_t(f - from));
        }
    }
    return true;
}

}  // namespace

const UNormalizer2* nfd() {
    UErrorCode status = U_ZERO_ERROR;
    return unorm2_getNFDInstance(&status);
}

const UNormalizer2* nfc() {
    UErrorCode status = U_ZERO_ERROR;
    return unorm2_getNFCInstance(&status);
}

std::u16string caseFolded(const std::u16string& text) {
    return transformed(text,
                       [](const UChar* src, int32_t srcLength, UChar* dest, int32_t capacity, UErrorCode* status) {
                           return u_strFoldCase(dest, capacity, src, srcLength, U_FOLD_CASE_DEFAULT, status);
                       });
}

std::u16string normalized(const std::u16string& text, const UNormalizer2* normalizer) {
    return transformed(
        text, [normalizer](const UChar* src, int32_t srcLength, UChar* dest, int32_t capacity, UErrorCode* status) {
            return unorm2_normalize(normalizer, src, srcLength, dest, capacity, status);
        });
}

std::u16string widthFolded(const std::u16string& text) {
    UErrorCode status = U_ZERO_ERROR;
    const UNormalizer2* nfkc = unorm2_getNFKCInstance(&status);
    std::u16string out;
    out.reserve(text.size());
    bool producedMarks = false;
    for (char16_t c : text) {
        if (isWidthForm(c)) {
            UChar mapping[8];
            status = U_ZERO_ERROR;
            int32_t length = unorm2_getDecomposition(nfkc, c, mapping, 8, &status);
            if (U_SUCCESS(status) && length > 0) {
                for (int32_t k = 0; k < length; ++k) producedMarks |= u_getCombiningClass(mapping[k]) != 0;
                out.append(mapping, size_t(length));
                continue;
            }
        }
        out.push_back(c);
    }
    return producedMarks ? normalized(out, nfc()) : out;
}

std::u16string withoutNonspacingMarks(const std::u16string& text) {
    std::u16string out;
    out.reserve(text.size());
    for (int32_t i = 0, length = int32_t(text.size()); i < length;) {
        int32_t start = i;
        UChar32 c;
        U16_NEXT(text.data(), i, length, c);
        if (u_charType(c) != U_NON_SPACING_MARK) out.append(text, size_t(start), size_t(i - start));
    }
    return out;
}

std::u16string comparableText(std::u16string text, CFStringCompareFlags options) {
    bool decomposes = (options & (kCFCompareNonliteral | kCFCompareDiacriticInsensitive)) != 0;
    if (options & kCFCompareWidthInsensitive) text = widthFolded(text);
    if (options & kCFCompareCaseInsensitive) {
        // Canonical caseless matching: decompose, fold, decompose again.
        if (decomposes) text = normalized(text, nfd());
        text = caseFolded(text);
    }
    if (decomposes) text = normalized(text, nfd());
    if (options & kCFCompareDiacriticInsensitive) text = withoutNonspacingMarks(text);
    return text;
}

bool startsComparableSegment(UChar32 c, CFStringCompareFlags options) {
    bool decomposes = (options & (kCFCompareNonliteral | kCFCompareDiacriticInsensitive)) != 0;
    bool width = (options & kCFCompareWidthInsensitive) != 0;
    // Below U+0300 nothing combines with what precedes it.
    if ((!decomposes && !width) || c < 0x300) return true;
    if (width && isWidthForm(c)) {
        // A half-width sound mark becomes a combining mark: it belongs to
        // the kana before it.
        UErrorCode status = U_ZERO_ERROR;
        UChar mapping[8];
        int32_t length = unorm2_getDecomposition(unorm2_getNFKCInstance(&status), c, mapping, 8, &status);
        if (U_SUCCESS(status) && length > 0) {
            int32_t i = 0;
            U16_NEXT(mapping, i, length, c);
        }
    } else if (!decomposes) {
        return true;
    }
    return unorm2_hasBoundaryBefore(nfd(), c);
}

namespace {

// The comparable form of one BMP code point (not a surrogate), remembered
// per thread: text repeats its few accented letters over and over, and
// each costs several ICU calls otherwise.
void appendComparableUnit(UniChar unit, CFStringCompareFlags options, std::u16string& out) {
    constexpr CFStringCompareFlags kRelevant =
        kCFCompareCaseInsensitive | kCFCompareNonliteral | kCFCompareDiacriticInsensitive | kCFCompareWidthInsensitive;
    struct Entry {
        UniChar unit = 0;
        uint16_t options = 0xFFFF;  // matches no real options: the entry is empty
        uint8_t length = 0;
        UniChar result[7];
    };
    constexpr size_t kEntries = 512;
    thread_local Entry cache[kEntries];
    options &= kRelevant;
    Entry& entry = cache[(unit ^ (unit >> 9) ^ (options << 3)) % kEntries];
    if (entry.unit == unit && entry.options == options) {
        out.append(entry.result, entry.length);
        return;
    }
    size_t start = out.size();
    bool widthForm = (options & kCFCompareWidthInsensitive) && isWidthForm(unit);
    if (widthForm || !appendComparableCodePoint(unit, options, out)) {
        out += comparableText(std::u16string(1, unit), options);
    }
    size_t length = out.size() - start;
    if (length <= std::size(entry.result)) {
        entry.unit = unit;
        entry.options = uint16_t(options);
        entry.length = uint8_t(length);
        std::copy(out.begin() + ptrdiff_t(start), out.end(), entry.result);
    }
}

}  // namespace

void appendComparable(const UniChar* units, size_t length, CFStringCompareFlags options, std::u16string& out) {
    bool caseInsensitive = (options & kCFCompareCaseInsensitive) != 0;
    if (length == 1 && units[0] < 0x80) {
        out.push_back(caseInsensitive ? lowercasedASCII(units[0]) : units[0]);
        return;
    }
    if (length == 1 && !U16_IS_SURROGATE(units[0])) {
        appendComparableUnit(units[0], options, out);
        return;
    }
    bool single = length == 2 && U16_IS_LEAD(units[0]) && U16_IS_TRAIL(units[1]);
    if (single) {
        UChar32 c = U16_GET_SUPPLEMENTARY(units[0], units[1]);
        bool widthForm = (options & kCFCompareWidthInsensitive) && isWidthForm(c);
        if (!widthForm && appendComparableCodePoint(c, options, out)) return;
    }
    out += comparableText(std::u16string(units, length), options);
}

}  // namespace halvane::detail
