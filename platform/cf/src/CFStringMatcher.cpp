// Finding one string in another under the comparison flags.
//
// Literal searches, and case-insensitive searches where both texts are
// ASCII, run Boyer-Moore-Horspool over the stored units: no ICU, no
// allocation. Every other search compares comparable forms (see
// CFStringFolding.h): the needle and the searched range are cut into
// segments and transformed, the transformed needle is searched in the
// transformed range, and a hit counts only when it starts and ends on
// segment boundaries, whose positions in the original text give the range
// found. That is how "ß" finds the two units "SS", and how a decomposed
// "é" finds a precomposed one.
#include "CFStringFolding.h"
#include "CFStringSearchInternal.h"

#include <unicode/utf16.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <iterator>
#include <memory>
#include <vector>

namespace halvane::detail {

namespace {

struct Identity {
    template <typename Unit>
    UniChar operator()(Unit u) const {
        return UniChar(u);
    }
};

struct LowercasedASCII {
    template <typename Unit>
    UniChar operator()(Unit u) const {
        return lowercasedASCII(UniChar(u));
    }
};

template <typename H, typename N, typename Map>
bool equalUnits(const H* h, const N* n, CFIndex length, Map map) {
    for (CFIndex i = 0; i < length; ++i) {
        if (map(h[i]) != map(n[i])) return false;
    }
    return true;
}

// Boyer-Moore-Horspool over units, either way. The bad-character table is
// indexed by the low byte of a unit: units that share it share the smaller
// shift, which keeps every shift safe. Short texts are scanned one unit at
// a time instead: filling the table would cost more than it saves.
template <typename N, typename Map>
class Horspool {
public:
    Horspool(const N* needle, CFIndex length, CFIndex textLength, bool backwards, Map map)
        : needle_(needle), length_(length), map_(map), usesTable_(length > 1 && textLength >= kShortText) {
        if (!usesTable_) return;
        for (CFIndex& shift : shift_) shift = length;
        if (backwards) {
            for (CFIndex i = length - 1; i >= 1; --i) shift_[map(needle[i]) & 0xFF] = i;
        } else {
            for (CFIndex i = 0; i + 1 < length; ++i) shift_[map(needle[i]) & 0xFF] = length - 1 - i;
        }
    }

    // The first p in [from, to - length] where the needle occurs, or -1.
    template <typename H>
    CFIndex next(const H* h, CFIndex from, CFIndex to) const {
        const CFIndex last = length_ - 1;
        const UniChar lastUnit = map_(needle_[last]);
        if constexpr (sizeof(H) == 1 && std::is_same_v<Map, Identity>) {
            if (length_ == 1) {
                if (lastUnit >= 0x100 || from >= to) return -1;
                const void* found = std::memchr(h + from, lastUnit, size_t(to - from));
                return found == nullptr ? -1 : CFIndex(static_cast<const H*>(found) - h);
            }
        }
        for (CFIndex p = from; p + length_ <= to;) {
            UniChar u = map_(h[p + last]);
            if (u == lastUnit && equalUnits(h + p, needle_, last, map_)) return p;
            p += usesTable_ ? shift_[u & 0xFF] : 1;
        }
        return -1;
    }

    // The last p in [from, to - length] where the needle occurs, or -1.
    template <typename H>
    CFIndex previous(const H* h, CFIndex from, CFIndex to) const {
        const UniChar firstUnit = map_(needle_[0]);
        for (CFIndex p = to - length_; p >= from;) {
            UniChar u = map_(h[p]);
            if (u == firstUnit && equalUnits(h + p + 1, needle_ + 1, length_ - 1, map_)) return p;
            p -= usesTable_ ? shift_[u & 0xFF] : 1;
        }
        return -1;
    }

private:
    static constexpr CFIndex kShortText = 64;
    const N* needle_;
    CFIndex length_;
    Map map_;
    bool usesTable_;
    CFIndex shift_[256];
};

// Matches of the same units (under map) in [start, end) of h; the hit and
// the needle always have the same length.
template <typename H, typename N, typename Map>
void visitUnitMatches(const H* h, CFIndex start, CFIndex end, const N* n, CFIndex length, CFStringCompareFlags options,
                      Map map, FunctionRef<bool(CFRange)> visit) {
    if (length > end - start) return;
    bool backwards = (options & kCFCompareBackwards) != 0;
    if (options & kCFCompareAnchored) {
        CFIndex p = backwards ? end - length : start;
        if (equalUnits(h + p, n, length, map)) visit(CFRange{p, length});
        return;
    }
    Horspool<N, Map> searcher(n, length, end - start, backwards, map);
    if (!backwards) {
        for (CFIndex from = start;;) {
            CFIndex p = searcher.next(h, from, end);
            if (p < 0 || !visit(CFRange{p, length})) return;
            from = p + length;
        }
    }
    for (CFIndex to = end;;) {
        CFIndex p = searcher.previous(h, start, to);
        if (p < 0 || !visit(CFRange{p, length})) return;
        to = p;
    }
}

bool isASCIIText(CFStringRef s, CFIndex location, CFIndex length) {
    return isASCIIString(s) || allASCII(s->contents.units + location, length);
}

// The comparable form of a text, and where its segments start. The buffers
// only grow (they are reused from search to search); length says how much
// of them is in use. Origin is int32_t for every text of everyday size (it
// halves the memory written per unit) and CFIndex beyond.
template <typename Origin>
struct ComparableText {
    std::vector<UniChar> units;
    // For each position 0 to length: the offset in the original text, from
    // the start of what was transformed, of the segment boundary that falls
    // there (the first, when segments that vanish put several there), or -1
    // inside a segment.
    std::vector<Origin> origins;
    size_t length = 0;

    // Room for at least count units (and count + 1 origins).
    void reserveTotal(size_t count) {
        if (units.size() >= count) return;
        count = std::max(count, units.size() * 2);
        units.resize(count);
        origins.resize(count + 1);
    }
};

template <typename Unit, typename Origin>
void makeComparable(const Unit* text, CFIndex begin, CFIndex end, CFStringCompareFlags options,
                    ComparableText<Origin>& out) {
    out.reserveTotal(size_t(end - begin) + 16);
    UniChar* units = out.units.data();
    Origin* origins = out.origins.data();
    size_t capacity = out.units.size();
    auto reserve = [&](size_t count) {
        out.reserveTotal(count);
        units = out.units.data();
        origins = out.origins.data();
        capacity = out.units.size();
    };
    size_t n = 0;
    CFIndex pending = -1;  // the start of a segment that vanished: the boundary at n
    std::u16string comparable;
    UniChar segment[64];
    const bool caseInsensitive = (options & kCFCompareCaseInsensitive) != 0;
    const bool perCodePoint =
        (options & (kCFCompareNonliteral | kCFCompareDiacriticInsensitive | kCFCompareWidthInsensitive)) == 0;
    const UniChar* folding = caseInsensitive && perCodePoint ? singleUnitCaseFoldings() : nullptr;
    for (CFIndex i = begin; i < end;) {
        // The common cases in a tight loop: ASCII not followed by anything
        // that could combine with it, and units that fold to one unit.
        size_t first = n;
        while (i < end) {
            if (n == capacity) reserve(n + 1);
            UniChar unit = UniChar(text[i]), value;
            if (unit < 0x80) {
                if (!perCodePoint && i + 1 < end && UniChar(text[i + 1]) >= 0x300) break;
                value = caseInsensitive ? lowercasedASCII(unit) : unit;
            } else if (folding != nullptr && !U16_IS_SURROGATE(unit)) {
                value = folding[unit];
                if (value == 0) {
                    // Folds into several units (ß, ligatures): one segment.
                    UniChar folded[kMaximumCaseFoldingLength];
                    size_t count = caseFoldCodePoint(unit, folded);
                    if (n + count > capacity) reserve(n + count);
                    for (size_t k = 0; k < count; ++k) {
                        origins[n + k] = k == 0 ? Origin(i - begin) : Origin(-1);
                        units[n + k] = folded[k];
                    }
                    n += count;
                    ++i;
                    continue;
                }
            } else {
                break;
            }
            origins[n] = Origin(i - begin);
            units[n++] = value;
            ++i;
        }
        if (n > first && pending >= 0) {
            origins[first] = Origin(pending - begin);
            pending = -1;
        }
        if (i >= end) break;

        CFIndex segmentStart = i;
        // A segment is one code point and whatever may not be separated
        // from it; a lone surrogate is a code point of its own.
        do {
            if (U16_IS_LEAD(text[i]) && i + 1 < end && U16_IS_TRAIL(text[i + 1])) {
                i += 2;
            } else {
                ++i;
            }
        } while (i < end && !startsComparableSegment(U16_IS_LEAD(text[i]) && i + 1 < end && U16_IS_TRAIL(text[i + 1])
                                                         ? U16_GET_SUPPLEMENTARY(text[i], text[i + 1])
                                                         : UChar32(text[i]),
                                                     options));
        comparable.clear();
        CFIndex segmentLength = i - segmentStart;
        if (segmentLength <= CFIndex(std::size(segment))) {
            for (CFIndex k = 0; k < segmentLength; ++k) segment[k] = UniChar(text[segmentStart + k]);
            appendComparable(segment, size_t(segmentLength), options, comparable);
        } else {
            std::u16string longSegment(text + segmentStart, text + i);
            appendComparable(longSegment.data(), longSegment.size(), options, comparable);
        }
        CFIndex origin = pending >= 0 ? pending : segmentStart;
        if (comparable.empty()) {
            pending = origin;
            continue;
        }
        reserve(n + comparable.size());
        for (size_t k = 0; k < comparable.size(); ++k) {
            units[n + k] = comparable[k];
            origins[n + k] = k == 0 ? Origin(origin - begin) : Origin(-1);
        }
        n += comparable.size();
        pending = -1;
    }
    origins[n] = Origin((pending >= 0 ? pending : end) - begin);
    out.length = n;
}

// Per-thread buffers for the comparable forms, so that repeated searches
// do not allocate. A search made while another is running on the same
// thread (from a visitor) gets buffers of its own.
struct Scratch {
    ComparableText<int32_t> haystack;
    ComparableText<int32_t> needle;
    bool inUse = false;
};

class ScratchLease {
public:
    ScratchLease() {
        thread_local Scratch shared;
        if (!shared.inUse) {
            scratch_ = &shared;
        } else {
            own_ = std::make_unique<Scratch>();
            scratch_ = own_.get();
        }
        scratch_->inUse = true;
    }
    ~ScratchLease() {
        scratch_->inUse = false;
        // Do not keep the memory of a huge search for the life of the thread.
        constexpr size_t kKeptUnits = size_t(1) << 20;
        if (scratch_->haystack.units.size() > kKeptUnits) scratch_->haystack = ComparableText<int32_t>();
    }
    Scratch& operator*() const { return *scratch_; }

private:
    Scratch* scratch_;
    std::unique_ptr<Scratch> own_;
};

template <typename Origin>
void visitComparableMatches(CFStringRef s, CFRange range, CFStringRef needle, CFStringCompareFlags options,
                            ComparableText<Origin>& needleText, ComparableText<Origin>& haystackText,
                            FunctionRef<bool(CFRange)> visit) {
    withUnits(needle, [&](auto* units, CFIndex length) { makeComparable(units, 0, length, options, needleText); });
    withUnits(s, [&](auto* units, CFIndex) {
        makeComparable(units, range.location, range.location + range.length, options, haystackText);
    });
    const UniChar* n = needleText.units.data();
    const UniChar* h = haystackText.units.data();
    const Origin* origins = haystackText.origins.data();
    const CFIndex length = CFIndex(needleText.length);
    const CFIndex end = CFIndex(haystackText.length);
    if (length == 0 || length > end) return;
    bool checksClusters = (options & (kCFCompareNonliteral | kCFCompareDiacriticInsensitive)) != 0;
    // A hit at p: its range in the original text, or {kCFNotFound, 0} when
    // it cuts a segment or (with the flags that look through marks) a
    // grapheme cluster.
    auto rangeOfHit = [&](CFIndex p) {
        Origin first = origins[p], last = origins[p + length];
        if (first < 0 || last < 0 || (checksClusters && !isGraphemeBoundary(s, range.location + last))) {
            return CFRange{kCFNotFound, 0};
        }
        return CFRange{range.location + first, CFIndex(last) - CFIndex(first)};
    };
    bool backwards = (options & kCFCompareBackwards) != 0;
    if (options & kCFCompareAnchored) {
        CFIndex p = backwards ? end - length : 0;
        if (!std::equal(n, n + length, h + p)) return;
        CFRange found = rangeOfHit(p);
        if (found.location != kCFNotFound) visit(found);
        return;
    }
    Horspool<UniChar, Identity> searcher(n, length, end, backwards, Identity());
    if (!backwards) {
        for (CFIndex from = 0;;) {
            CFIndex p = searcher.next(h, from, end);
            if (p < 0) return;
            CFRange found = rangeOfHit(p);
            if (found.location == kCFNotFound) {
                from = p + 1;
                continue;
            }
            if (!visit(found)) return;
            from = p + length;
        }
    }
    for (CFIndex to = end;;) {
        CFIndex p = searcher.previous(h, 0, to);
        if (p < 0) return;
        CFRange found = rangeOfHit(p);
        if (found.location == kCFNotFound) {
            to = p + length - 1;
            continue;
        }
        if (!visit(found)) return;
        to = p;
    }
}

void visitComparableMatches(CFStringRef s, CFRange range, CFStringRef needle, CFStringCompareFlags options,
                            FunctionRef<bool(CFRange)> visit) {
    if (range.length < INT32_MAX && needle->length < INT32_MAX) {
        ScratchLease lease;
        visitComparableMatches(s, range, needle, options, (*lease).needle, (*lease).haystack, visit);
    } else {
        ComparableText<CFIndex> needleText, haystackText;
        visitComparableMatches(s, range, needle, options, needleText, haystackText, visit);
    }
}

}  // namespace

void forEachMatch(CFStringRef s, CFRange range, CFStringRef needle, CFStringCompareFlags options,
                  FunctionRef<bool(CFRange)> visit) {
    if (needle->length == 0 || range.length == 0) return;
    // Numeric ordering means nothing to a search, and no locale tailors
    // one here: both flags are ignored.
    bool caseInsensitive = (options & kCFCompareCaseInsensitive) != 0;
    bool unicode = (options & (kUnicodeCompareFlags & ~kCFCompareLocalized)) != 0;
    if (!unicode && caseInsensitive &&
        !(isASCIIText(needle, 0, needle->length) && isASCIIText(s, range.location, range.length))) {
        unicode = true;
    }
    if (unicode) {
        visitComparableMatches(s, range, needle, options, visit);
        return;
    }
    CFIndex start = range.location, end = range.location + range.length;
    withUnits(s, [&](auto* h, CFIndex) {
        withUnits(needle, [&](auto* n, CFIndex length) {
            if (caseInsensitive) {
                visitUnitMatches(h, start, end, n, length, options, LowercasedASCII(), visit);
            } else {
                visitUnitMatches(h, start, end, n, length, options, Identity(), visit);
            }
        });
    });
}

}  // namespace halvane::detail
