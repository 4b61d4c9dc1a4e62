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
// shift, which keeps every shift safe.
template <typename N, typename Map>
class Horspool {
public:
    Horspool(const N* needle, CFIndex length, bool backwards, Map map) : needle_(needle), length_(length), map_(map) {
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
            p += shift_[u & 0xFF];
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
            p -= shift_[u & 0xFF];
        }
        return -1;
    }

private:
    const N* needle_;
    CFIndex length_;
    Map map_;
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
    Horspool<N, Map> searcher(n, length, backwards, map);
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

// The comparable form of a text, and where its segments start.
struct ComparableText {
    std::u16string units;
    // For each position 0 to units.size(): the index in the original text
    // of the segment boundary that falls there (the first, when segments
    // that vanish put several there), or -1 inside a segment.
    std::vector<CFIndex> origins;

    void clear() {
        units.clear();
        origins.clear();
    }
};

template <typename Unit>
void makeComparable(const Unit* text, CFIndex begin, CFIndex end, CFStringCompareFlags options, ComparableText& out) {
    out.clear();
    out.units.reserve(size_t(end - begin));
    out.origins.reserve(size_t(end - begin) + 1);
    UniChar segment[64];
    for (CFIndex i = begin; i < end;) {
        CFIndex segmentStart = i;
        // A segment is one code point and whatever may not be separated
        // from it; a lone surrogate is a code point of its own.
        do {
            if (U16_IS_LEAD(text[i]) && i + 1 < end && U16_IS_TRAIL(text[i + 1])) {
                i += 2;
            } else {
                ++i;
            }
        } while (i < end && !startsComparableSegment(
                                U16_IS_LEAD(text[i]) && i + 1 < end && U16_IS_TRAIL(text[i + 1])
                                    ? U16_GET_SUPPLEMENTARY(text[i], text[i + 1])
                                    : UChar32(text[i]),
                                options));
        if (out.origins.size() == out.units.size()) out.origins.push_back(segmentStart);
        CFIndex segmentLength = i - segmentStart;
        if (segmentLength <= CFIndex(std::size(segment))) {
            for (CFIndex k = 0; k < segmentLength; ++k) segment[k] = UniChar(text[segmentStart + k]);
            appendComparable(segment, size_t(segmentLength), options, out.units);
        } else {
            std::u16string longSegment(text + segmentStart, text + i);
            appendComparable(longSegment.data(), longSegment.size(), options, out.units);
        }
        out.origins.resize(std::max(out.origins.size(), out.units.size()), -1);
    }
    if (out.origins.size() == out.units.size()) out.origins.push_back(end);
}

// Per-thread buffers for the comparable forms, so that repeated searches
// do not allocate. A search made while another is running on the same
// thread (from a visitor) gets buffers of its own.
struct Scratch {
    ComparableText haystack;
    ComparableText needle;
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
        if (scratch_->haystack.units.capacity() > kKeptUnits) scratch_->haystack = ComparableText();
    }
    Scratch& operator*() const { return *scratch_; }

private:
    Scratch* scratch_;
    std::unique_ptr<Scratch> own_;
};

void visitComparableMatches(CFStringRef s, CFRange range, CFStringRef needle, CFStringCompareFlags options,
                            FunctionRef<bool(CFRange)> visit) {
    ScratchLease lease;
    Scratch& scratch = *lease;
    withUnits(needle, [&](auto* units, CFIndex length) {
        makeComparable(units, 0, length, options, scratch.needle);
    });
    withUnits(s, [&](auto* units, CFIndex) {
        makeComparable(units, range.location, range.location + range.length, options, scratch.haystack);
    });
    const std::u16string& n = scratch.needle.units;
    const std::u16string& h = scratch.haystack.units;
    const std::vector<CFIndex>& origins = scratch.haystack.origins;
    const CFIndex length = CFIndex(n.size());
    const CFIndex end = CFIndex(h.size());
    if (length == 0 || length > end) return;
    bool checksClusters = (options & (kCFCompareNonliteral | kCFCompareDiacriticInsensitive)) != 0;
    // A hit at p: its range in the original text, or {kCFNotFound, 0} when
    // it cuts a segment or (with the flags that look through marks) a
    // grapheme cluster.
    auto rangeOfHit = [&](CFIndex p) {
        CFIndex first = origins[size_t(p)], last = origins[size_t(p + length)];
        if (first < 0 || last < 0 || (checksClusters && !isGraphemeBoundary(s, last))) return CFRange{kCFNotFound, 0};
        return CFRange{first, last - first};
    };
    bool backwards = (options & kCFCompareBackwards) != 0;
    if (options & kCFCompareAnchored) {
        CFIndex p = backwards ? end - length : 0;
        if (h.compare(size_t(p), size_t(length), n) != 0) return;
        CFRange found = rangeOfHit(p);
        if (found.location != kCFNotFound) visit(found);
        return;
    }
    Horspool<char16_t, Identity> searcher(n.data(), length, backwards, Identity());
    if (!backwards) {
        for (CFIndex from = 0;;) {
            CFIndex p = searcher.next(h.data(), from, end);
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
        CFIndex p = searcher.previous(h.data(), 0, to);
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
