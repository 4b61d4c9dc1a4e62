// CodePointSet: the bitmap-plus-ranges storage behind CFCharacterSet.
#include "CFCharacterSetInternal.h"

#include <algorithm>
#include <cstring>

namespace halvane::detail {

namespace {

constexpr UTF32Char kFirstSupplementary = 0x10000;
constexpr uint64_t kAllBits = ~uint64_t(0);

using Ranges = std::vector<CodePointRange>;

// Sorted, disjoint, non-adjacent ranges from two such lists.
Ranges unionOf(const Ranges& a, const Ranges& b) {
    Ranges merged;
    merged.reserve(a.size() + b.size());
    std::merge(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(merged),
               [](const CodePointRange& x, const CodePointRange& y) { return x.first < y.first; });
    Ranges out;
    out.reserve(merged.size());
    for (const CodePointRange& range : merged) {
        if (!out.empty() && range.first <= out.back().last + 1) {
            out.back().last = std::max(out.back().last, range.last);
        } else {
            out.push_back(range);
        }
    }
    return out;
}

// The supplementary code points not in ranges.
Ranges complementOf(const Ranges& ranges) {
    Ranges out;
    UTF32Char next = kFirstSupplementary;
    for (const CodePointRange& range : ranges) {
        if (range.first > next) out.push_back({next, range.first - 1});
        next = range.last + 1;
    }
    if (next <= kLastCodePoint) out.push_back({next, kLastCodePoint});
    return out;
}

Ranges intersectionOf(const Ranges& a, const Ranges& b) {
    Ranges out;
    size_t i = 0, j = 0;
    while (i < a.size() && j < b.size()) {
        UTF32Char first = std::max(a[i].first, b[j].first);
        UTF32Char last = std::min(a[i].last, b[j].last);
        if (first <= last) out.push_back({first, last});
        if (a[i].last < b[j].last) {
            ++i;
        } else {
            ++j;
        }
    }
    return out;
}

}  // namespace

CodePointSet::CodePointSet(const CodePointSet& other) : supplementary_(other.supplementary_) {
    if (other.bmp_ != nullptr) {
        bmp_ = std::make_unique<uint64_t[]>(kBMPWords);
        std::memcpy(bmp_.get(), other.bmp_.get(), kBMPWords * sizeof(uint64_t));
    }
}

CodePointSet& CodePointSet::operator=(const CodePointSet& other) {
    if (this != &other) *this = CodePointSet(other);
    return *this;
}

bool CodePointSet::containsSupplementary(UTF32Char c) const {
    if (c > kLastCodePoint) return false;
    auto after = std::upper_bound(supplementary_.begin(), supplementary_.end(), c,
                                  [](UTF32Char value, const CodePointRange& range) { return value < range.first; });
    return after != supplementary_.begin() && c <= std::prev(after)->last;
}

uint64_t* CodePointSet::writableBMP() {
    if (bmp_ == nullptr) bmp_ = std::make_unique<uint64_t[]>(kBMPWords);  // zero-filled
    return bmp_.get();
}

void CodePointSet::fillBMP(UTF32Char first, UTF32Char last, bool value) {
    if (!value && bmp_ == nullptr) return;
    uint64_t* words = writableBMP();
    for (UTF32Char w = first >> 6; w <= last >> 6; ++w) {
        UTF32Char low = std::max(first, w << 6) & 63;
        UTF32Char high = std::min(last, (w << 6) | 63) & 63;
        uint64_t mask = (high == 63 ? kAllBits : ((uint64_t(1) << (high + 1)) - 1)) & (kAllBits << low);
        if (value) {
            words[w] |= mask;
        } else {
            words[w] &= ~mask;
        }
    }
}

void CodePointSet::add(UTF32Char first, UTF32Char last) {
    if (first <= 0xFFFF) fillBMP(first, std::min<UTF32Char>(last, 0xFFFF), true);
    if (last >= kFirstSupplementary) {
        supplementary_ = unionOf(supplementary_, Ranges{{std::max(first, kFirstSupplementary), last}});
    }
}

void CodePointSet::remove(UTF32Char first, UTF32Char last) {
    if (first <= 0xFFFF) fillBMP(first, std::min<UTF32Char>(last, 0xFFFF), false);
    if (last >= kFirstSupplementary && !supplementary_.empty()) {
        supplementary_ =
            intersectionOf(supplementary_, complementOf(Ranges{{std::max(first, kFirstSupplementary), last}}));
    }
}

namespace {

// The supplementary parts of sorted ranges, made disjoint and non-adjacent.
Ranges supplementaryPartsOf(const std::vector<CodePointRange>& ranges) {
    Ranges parts;
    for (const CodePointRange& range : ranges) {
        if (range.last >= kFirstSupplementary)
            parts.push_back({std::max(range.first, kFirstSupplementary), range.last});
    }
    return unionOf(parts, Ranges{});
}

}  // namespace

void CodePointSet::add(const std::vector<CodePointRange>& ranges) {
    for (const CodePointRange& range : ranges) {
        if (range.first <= 0xFFFF) fillBMP(range.first, std::min<UTF32Char>(range.last, 0xFFFF), true);
    }
    Ranges parts = supplementaryPartsOf(ranges);
    if (!parts.empty()) supplementary_ = unionOf(supplementary_, parts);
}

void CodePointSet::remove(const std::vector<CodePointRange>& ranges) {
    for (const CodePointRange& range : ranges) {
        if (range.first <= 0xFFFF) fillBMP(range.first, std::min<UTF32Char>(range.last, 0xFFFF), false);
    }
    Ranges parts = supplementaryPartsOf(ranges);
    if (!parts.empty() && !supplementary_.empty()) {
        supplementary_ = intersectionOf(supplementary_, complementOf(parts));
    }
}

void CodePointSet::unite(const CodePointSet& other) {
    if (other.bmp_ != nullptr) {
        uint64_t* words = writableBMP();
        for (size_t w = 0; w < kBMPWords; ++w) words[w] |= other.bmp_[w];
    }
    if (!other.supplementary_.empty()) supplementary_ = unionOf(supplementary_, other.supplementary_);
}

void CodePointSet::intersect(const CodePointSet& other) {
    if (bmp_ != nullptr) {
        if (other.bmp_ == nullptr) {
            bmp_.reset();
        } else {
            for (size_t w = 0; w < kBMPWords; ++w) bmp_[w] &= other.bmp_[w];
        }
    }
    supplementary_ = intersectionOf(supplementary_, other.supplementary_);
}

void CodePointSet::invert() {
    uint64_t* words = writableBMP();
    for (size_t w = 0; w < kBMPWords; ++w) words[w] = ~words[w];
    supplementary_ = complementOf(supplementary_);
}

bool CodePointSet::isEmpty() const {
    if (!supplementary_.empty()) return false;
    if (bmp_ == nullptr) return true;
    return std::all_of(bmp_.get(), bmp_.get() + kBMPWords, [](uint64_t word) { return word == 0; });
}

bool CodePointSet::isFull() const {
    if (supplementary_.size() != 1 || supplementary_[0] != CodePointRange{kFirstSupplementary, kLastCodePoint}) {
        return false;
    }
    return bmp_ != nullptr && std::all_of(bmp_.get(), bmp_.get() + kBMPWords, [](uint64_t w) { return w == kAllBits; });
}

bool CodePointSet::operator==(const CodePointSet& other) const {
    if (supplementary_ != other.supplementary_) return false;
    for (size_t w = 0; w < kBMPWords; ++w) {
        uint64_t mine = bmp_ != nullptr ? bmp_[w] : 0;
        uint64_t theirs = other.bmp_ != nullptr ? other.bmp_[w] : 0;
        if (mine != theirs) return false;
    }
    return true;
}

CFHashCode CodePointSet::hash() const {
    // Depends on the members only (an allocated all-zero bitmap hashes as
    // no bitmap), so that equal sets hash alike.
    uint64_t h = 0xcbf29ce484222325u;
    auto mix = [&h](uint64_t value) { h = (h ^ value) * 0x100000001b3u; };
    if (bmp_ != nullptr) {
        for (size_t w = 0; w < kBMPWords; ++w) {
            if (bmp_[w] != 0) {
                mix(w);
                mix(bmp_[w]);
            }
        }
    }
    for (const CodePointRange& range : supplementary_) {
        mix(range.first);
        mix(range.last);
    }
    return CFHashCode(h);
}

}  // namespace halvane::detail
