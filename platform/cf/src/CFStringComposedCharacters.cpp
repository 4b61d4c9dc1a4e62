// Grapheme clusters: CFStringGetRangeOfComposedCharactersAtIndex and the
// boundary test that nonliteral searching applies to its matches.
//
// Text below U+0300 (ASCII, Latin-1, Latin Extended) never combines except
// CR LF, so it is answered directly; anything else asks ICU's character
// break iterator.
#include "CFStringSearchInternal.h"

#include <unicode/ubrk.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <climits>

using namespace halvane::detail;

namespace {

// Below this no unit extends, prepends to or otherwise joins a cluster.
constexpr UniChar kFirstCombiningUnit = 0x300;

// One character break iterator per thread, opened on first use.
class CharacterBreaks {
public:
    ~CharacterBreaks() {
        if (iterator_ != nullptr) ubrk_close(iterator_);
    }

    // Calls f(iterator, offset) with the iterator on the text around index
    // of s (all of it unless it is too long for ICU); offset is where that
    // text starts in s. Returns f's result, or fallback when ICU fails.
    template <typename F, typename R>
    R around(CFStringRef s, CFIndex index, R fallback, F f) {
        if (iterator_ == nullptr) {
            UErrorCode status = U_ZERO_ERROR;
            iterator_ = ubrk_open(UBRK_CHARACTER, "", nullptr, 0, &status);
            if (U_FAILURE(status)) {
                iterator_ = nullptr;
                return fallback;
            }
        }
        CFIndex begin = 0, end = s->length;
        if (end > INT32_MAX) {
            // Clusters are short; a window this wide only matters for text
            // ICU could not take whole.
            constexpr CFIndex kWindow = 4096;
            begin = std::max<CFIndex>(0, index - kWindow);
            end = std::min(s->length, index + kWindow);
        }
        UErrorCode status = U_ZERO_ERROR;
        ubrk_setText(iterator_, s->contents.units + begin, int32_t(end - begin), &status);
        if (U_FAILURE(status)) return fallback;
        return f(iterator_, begin);
    }

private:
    UBreakIterator* iterator_ = nullptr;
};

CharacterBreaks& characterBreaks() {
    thread_local CharacterBreaks breaks;
    return breaks;
}

}  // namespace

namespace halvane::detail {

bool isGraphemeBoundary(CFStringRef s, CFIndex index) {
    if (index <= 0 || index >= s->length) return true;
    UniChar before = unitAt(s, index - 1), after = unitAt(s, index);
    if (before < kFirstCombiningUnit && after < kFirstCombiningUnit) return !(before == '\r' && after == '\n');
    if (U16_IS_LEAD(before) && U16_IS_TRAIL(after)) return false;
    return characterBreaks().around(s, index, true, [index](UBreakIterator* iterator, CFIndex offset) {
        return ubrk_isBoundary(iterator, int32_t(index - offset)) != 0;
    });
}

CFRange composedCharacterRange(CFStringRef s, CFIndex index) {
    UniChar unit = unitAt(s, index);
    UniChar before = index > 0 ? unitAt(s, index - 1) : 0;
    UniChar after = index + 1 < s->length ? unitAt(s, index + 1) : 0;
    if (unit < kFirstCombiningUnit && before < kFirstCombiningUnit && after < kFirstCombiningUnit) {
        if (unit == '\r' && after == '\n') return CFRange{index, 2};
        if (unit == '\n' && before == '\r') return CFRange{index - 1, 2};
        return CFRange{index, 1};
    }
    return characterBreaks().around(s, index, CFRange{index, 1}, [index](UBreakIterator* iterator, CFIndex offset) {
        // From the end: ICU moves an offset inside a surrogate pair to
        // the pair's start, which "preceding" would then step over.
        int32_t end = ubrk_following(iterator, int32_t(index - offset));
        if (end == UBRK_DONE) end = int32_t(index - offset + 1);
        int32_t start = ubrk_preceding(iterator, end);
        if (start == UBRK_DONE) start = 0;
        return CFRange{offset + start, end - start};
    });
}

}  // namespace halvane::detail

CFRange CFStringGetRangeOfComposedCharactersAtIndex(CFStringRef theString, CFIndex theIndex) {
    if (!isA(theString, kCFStringTypeID)) {
        reportMisuse("CFString: CFStringGetRangeOfComposedCharactersAtIndex(): not a string");
        return CFRange{kCFNotFound, 0};
    }
    if (theIndex < 0 || theIndex >= theString->length) {
        reportMisuse("CFString: CFStringGetRangeOfComposedCharactersAtIndex(): index %ld out of bounds (length %ld)",
                     theIndex, theString->length);
        return CFRange{kCFNotFound, 0};
    }
    return composedCharacterRange(theString, theIndex);
}
