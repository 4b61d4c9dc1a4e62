// The storage of CFCharacterSet, shared with the string functions that test
// membership in their inner loops (searching by set, trimming).
#ifndef HALVANE_CF_CHARACTER_SET_INTERNAL_H
#define HALVANE_CF_CHARACTER_SET_INTERNAL_H

#include "CFInternal.h"

#include <CoreFoundation/CFCharacterSet.h>

#include <memory>
#include <vector>

namespace halvane::detail {

inline constexpr UTF32Char kLastCodePoint = 0x10FFFF;

struct CodePointRange {
    UTF32Char first;
    UTF32Char last;  // inclusive
    bool operator==(const CodePointRange&) const = default;
};

// A set of code points: one bit per code point of the Basic Multilingual
// Plane (an 8 KiB bitmap, allocated on the first member there), so that
// testing a UTF-16 unit is one load, and sorted ranges for the
// supplementary planes, where sets are sparse and few strings reach.
class CodePointSet {
public:
    static constexpr size_t kBMPWords = 0x10000 / 64;

    CodePointSet() = default;
    CodePointSet(const CodePointSet& other);
    CodePointSet& operator=(const CodePointSet& other);
    CodePointSet(CodePointSet&&) noexcept = default;
    CodePointSet& operator=(CodePointSet&&) noexcept = default;

    bool containsUnit(UniChar unit) const { return bmp_ != nullptr && ((bmp_[unit >> 6] >> (unit & 63)) & 1) != 0; }
    bool contains(UTF32Char c) const { return c <= 0xFFFF ? containsUnit(UniChar(c)) : containsSupplementary(c); }

    // first <= last <= kLastCodePoint.
    void add(UTF32Char first, UTF32Char last);
    void remove(UTF32Char first, UTF32Char last);
    // Many at once, in time linear in the ranges; sorted by first, they may
    // overlap or touch.
    void add(const std::vector<CodePointRange>& ranges);
    void remove(const std::vector<CodePointRange>& ranges);
    void unite(const CodePointSet& other);
    void intersect(const CodePointSet& other);
    void invert();

    bool isEmpty() const;
    bool isFull() const;
    bool operator==(const CodePointSet& other) const;
    CFHashCode hash() const;

    // Calls visit(first, last) for every maximal run of members, in
    // ascending order (a run may cross from the BMP into plane 1).
    template <typename Visit>
    void forEachRange(Visit visit) const;

private:
    bool containsSupplementary(UTF32Char c) const;
    uint64_t* writableBMP();
    void fillBMP(UTF32Char first, UTF32Char last, bool value);

    std::unique_ptr<uint64_t[]> bmp_;            // kBMPWords words, or null: no member below U+10000
    std::vector<CodePointRange> supplementary_;  // sorted, disjoint, never adjacent
};

template <typename Visit>
void CodePointSet::forEachRange(Visit visit) const {
    bool open = false;
    UTF32Char runStart = 0;
    if (bmp_ != nullptr) {
        for (size_t w = 0; w < kBMPWords; ++w) {
            uint64_t word = bmp_[w];
            if ((word == 0 && !open) || (word == ~uint64_t(0) && open)) continue;
            for (unsigned bit = 0; bit < 64; ++bit) {
                bool member = (word >> bit) & 1;
                UTF32Char c = UTF32Char(w * 64 + bit);
                if (member && !open) {
                    open = true;
                    runStart = c;
                } else if (!member && open) {
                    open = false;
                    visit(runStart, c - 1);
                }
            }
        }
    }
    for (const CodePointRange& range : supplementary_) {
        if (open && range.first == 0x10000) {
            visit(runStart, range.last);
            open = false;
            continue;
        }
        if (open) {
            visit(runStart, UTF32Char(0xFFFF));
            open = false;
        }
        visit(range.first, range.last);
    }
    if (open) visit(runStart, UTF32Char(0xFFFF));
}

// How a set was made, which is what its description tells.
enum class CharacterSetForm : uint8_t {
    kBitmap,      // anything changed or computed
    kRange,       // CFCharacterSetCreateWithCharactersInRange
    kItems,       // a few characters from a string
    kPredefined,  // CFCharacterSetGetPredefined
};

// Class bits of a set (fixed at creation).
enum CharacterSetBits : uintptr_t { kCharacterSetMutable = 1 };

}  // namespace halvane::detail

struct __CFCharacterSet {
    CFRuntimeBase base;
    halvane::detail::CodePointSet members;
    halvane::detail::CharacterSetForm form;
    CFCharacterSetPredefinedSet predefined;  // kPredefined: which one
    CFRange range;                           // kRange: the range it was made from
};

namespace halvane::detail {

// The shared predefined set of an identifier from 1 to 15, else nullptr.
CFCharacterSetRef predefinedCharacterSet(CFCharacterSetPredefinedSet identifier);

// Builds the members of a predefined set (identifier 1 to 15).
CodePointSet predefinedMembers(CFCharacterSetPredefinedSet identifier);

}  // namespace halvane::detail

#endif  // HALVANE_CF_CHARACTER_SET_INTERNAL_H
