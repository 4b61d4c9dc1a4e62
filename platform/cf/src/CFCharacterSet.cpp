// CFCharacterSet: creation, membership, changes, equality and descriptions.
#include "CFCharacterSetInternal.h"
#include "CFStringInternal.h"

#include <unicode/utf16.h>

#include <algorithm>
#include <new>
#include <utility>

using namespace halvane::detail;

namespace halvane::detail {

namespace {

// Sets made from a string with at most this many characters describe
// themselves by listing them.
constexpr size_t kMaximumListedItems = 64;

constexpr const char* kPredefinedNames[] = {"",
                                            "Control",
                                            "Whitespace",
                                            "WhitespaceAndNewline",
                                            "DecimalDigit",
                                            "Letter",
                                            "LowercaseLetter",
                                            "UppercaseLetter",
                                            "NonBase",
                                            "Decomposable",
                                            "AlphaNumeric",
                                            "Punctuation",
                                            "Illegal",
                                            "CapitalizedLetter",
                                            "Symbol",
                                            "Newline"};

bool isMutableSet(CFCharacterSetRef set) {
    return (classBits(set) & kCharacterSetMutable) != 0;
}

void finalizeCharacterSet(CFTypeRef cf) {
    static_cast<__CFCharacterSet*>(const_cast<void*>(cf))->members.~CodePointSet();
}

Boolean equalCharacterSets(CFTypeRef cf1, CFTypeRef cf2) {
    return static_cast<CFCharacterSetRef>(cf1)->members == static_cast<CFCharacterSetRef>(cf2)->members;
}

CFHashCode hashCharacterSet(CFTypeRef cf) {
    return static_cast<CFCharacterSetRef>(cf)->members.hash();
}

// "U+0061 U+0062": every member, ascending.
void appendItems(TextBuilder& text, const CodePointSet& members) {
    bool first = true;
    members.forEachRange([&](UTF32Char low, UTF32Char high) {
        for (UTF32Char c = low; c <= high; ++c) {
            text.ascii(first ? "" : " ").format("U+%04X", unsigned(c));
            first = false;
        }
    });
}

CFStringRef copyCharacterSetDescription(CFTypeRef cf) {
    auto set = static_cast<CFCharacterSetRef>(cf);
    TextBuilder text;
    text.ascii("<CFCharacterSet ");
    if (set->form == CharacterSetForm::kPredefined) {
        text.ascii("Predefined ").ascii(kPredefinedNames[set->predefined]).ascii(" Set");
    } else if (set->members.isEmpty()) {
        text.ascii("Empty");
    } else if (set->members.isFull()) {
        text.ascii("All");
    } else if (set->form == CharacterSetForm::kRange) {
        text.format("Range(%ld, %ld)", set->range.location, set->range.length);
    } else if (set->form == CharacterSetForm::kItems) {
        text.ascii("Items(");
        appendItems(text, set->members);
        text.ascii(")");
    } else {
        text.ascii("Bitmap");
    }
    return text.ascii(">").create();
}

// A new set (+1) holding members.
__CFCharacterSet* newSet(CFAllocatorRef allocator, CodePointSet&& members, CharacterSetForm form, bool isMutable) {
    auto* set = createInstance<__CFCharacterSet>(allocator, kCFCharacterSetTypeID, 0,
                                                 isMutable ? uintptr_t(kCharacterSetMutable) : 0);
    if (set == nullptr) return nullptr;
    new (&set->members) CodePointSet(std::move(members));
    set->form = form;
    return set;
}

__CFCharacterSet* copySet(CFAllocatorRef allocator, CFCharacterSetRef source, bool isMutable) {
    __CFCharacterSet* copy = newSet(allocator, CodePointSet(source->members), source->form, isMutable);
    if (copy != nullptr) {
        copy->predefined = source->predefined;
        copy->range = source->range;
    }
    return copy;
}

// The code points of a string as sorted ranges: a surrogate pair counts as
// its supplementary character, unpaired surrogates count for nothing.
std::vector<CodePointRange> rangesOfCharacters(CFStringRef s) {
    std::vector<UTF32Char> codePoints;
    codePoints.reserve(size_t(s->length));
    withUnits(s, [&codePoints](auto* units, CFIndex length) {
        for (CFIndex i = 0; i < length; ++i) {
            UTF32Char c = units[i];
            if (U16_IS_LEAD(c) && i + 1 < length && U16_IS_TRAIL(units[i + 1])) {
                codePoints.push_back(U16_GET_SUPPLEMENTARY(c, units[i + 1]));
                ++i;
            } else if (!U16_IS_SURROGATE(c)) {
                codePoints.push_back(c);
            }
        }
    });
    std::sort(codePoints.begin(), codePoints.end());
    std::vector<CodePointRange> ranges;
    for (UTF32Char c : codePoints) {
        if (!ranges.empty() && c <= ranges.back().last + 1) {
            ranges.back().last = std::max(ranges.back().last, c);
        } else {
            ranges.push_back({c, c});
        }
    }
    return ranges;
}

size_t countOf(const std::vector<CodePointRange>& ranges) {
    size_t count = 0;
    for (const CodePointRange& range : ranges) count += range.last - range.first + 1;
    return count;
}

bool isValidUnicodeRange(CFRange range, const char* caller) {
    if (range.location < 0 || range.length < 0 || range.location > CFIndex(kLastCodePoint) + 1 ||
        range.length > CFIndex(kLastCodePoint) + 1 - range.location) {
        reportMisuse(
            "CFCharacterSet: %s(): Range (location: %ld, length: %ld) outside of valid Unicode range (0x0 - 0x10FFFF)",
            caller, range.location, range.length);
        return false;
    }
    return true;
}

bool isSetArgument(CFCharacterSetRef set, const char* caller) {
    if (isA(set, kCFCharacterSetTypeID)) return true;
    reportMisuse("CFCharacterSet: %s(): not a character set", caller);
    return false;
}

bool isStringArgument(CFStringRef s, const char* caller) {
    if (isA(s, kCFStringTypeID)) return true;
    reportMisuse("CFCharacterSet: %s(): not a string", caller);
    return false;
}

// The set about to be changed, or nullptr after reporting why it may not be.
__CFCharacterSet* mutableSet(CFMutableCharacterSetRef set, const char* caller) {
    if (!isSetArgument(set, caller)) return nullptr;
    if (!isMutableSet(set)) {
        reportMisuse("CFCharacterSet: %s(): Expect mutable character set (%s)", caller,
                     set->form == CharacterSetForm::kPredefined ? "predefined sets never change" : "immutable");
        return nullptr;
    }
    // Once changed, a set no longer describes itself by how it was made.
    set->form = CharacterSetForm::kBitmap;
    return set;
}

}  // namespace

constinit const CFRuntimeClass kCharacterSetClass = {0,
                                                     "CFCharacterSet",
                                                     nullptr,
                                                     nullptr,
                                                     finalizeCharacterSet,
                                                     equalCharacterSets,
                                                     hashCharacterSet,
                                                     nullptr,
                                                     copyCharacterSetDescription,
                                                     nullptr,
                                                     nullptr,
                                                     0};

}  // namespace halvane::detail

CFTypeID CFCharacterSetGetTypeID(void) {
    return kCFCharacterSetTypeID;
}

CFCharacterSetRef CFCharacterSetGetPredefined(CFCharacterSetPredefinedSet theSetIdentifier) {
    CFCharacterSetRef set = predefinedCharacterSet(theSetIdentifier);
    if (set == nullptr) {
        reportMisuse("CFCharacterSet: CFCharacterSetGetPredefined(): unknown predefined set %ld", theSetIdentifier);
    }
    return set;
}

CFCharacterSetRef CFCharacterSetCreateWithCharactersInString(CFAllocatorRef alloc, CFStringRef theString) {
    if (!isStringArgument(theString, "CFCharacterSetCreateWithCharactersInString")) return nullptr;
    std::vector<CodePointRange> ranges = rangesOfCharacters(theString);
    CodePointSet members;
    members.add(ranges);
    return newSet(alloc, std::move(members),
                  countOf(ranges) <= kMaximumListedItems ? CharacterSetForm::kItems : CharacterSetForm::kBitmap, false);
}

CFCharacterSetRef CFCharacterSetCreateWithCharactersInRange(CFAllocatorRef alloc, CFRange theRange) {
    if (!isValidUnicodeRange(theRange, "CFCharacterSetCreateWithCharactersInRange")) return nullptr;
    CodePointSet members;
    if (theRange.length > 0) {
        members.add(UTF32Char(theRange.location), UTF32Char(theRange.location + theRange.length - 1));
    }
    __CFCharacterSet* set = newSet(alloc, std::move(members), CharacterSetForm::kRange, false);
    if (set != nullptr) set->range = theRange;
    return set;
}

CFCharacterSetRef CFCharacterSetCreateInvertedSet(CFAllocatorRef alloc, CFCharacterSetRef theSet) {
    if (!isSetArgument(theSet, "CFCharacterSetCreateInvertedSet")) return nullptr;
    CodePointSet members(theSet->members);
    members.invert();
    return newSet(alloc, std::move(members), CharacterSetForm::kBitmap, false);
}

CFCharacterSetRef CFCharacterSetCreateCopy(CFAllocatorRef alloc, CFCharacterSetRef theSet) {
    if (!isSetArgument(theSet, "CFCharacterSetCreateCopy")) return nullptr;
    return copySet(alloc, theSet, false);
}

CFMutableCharacterSetRef CFCharacterSetCreateMutable(CFAllocatorRef alloc) {
    return newSet(alloc, CodePointSet(), CharacterSetForm::kBitmap, true);
}

CFMutableCharacterSetRef CFCharacterSetCreateMutableCopy(CFAllocatorRef alloc, CFCharacterSetRef theSet) {
    if (!isSetArgument(theSet, "CFCharacterSetCreateMutableCopy")) return nullptr;
    return copySet(alloc, theSet, true);
}

Boolean CFCharacterSetIsCharacterMember(CFCharacterSetRef theSet, UniChar theChar) {
    if (!isSetArgument(theSet, "CFCharacterSetIsCharacterMember")) return false;
    return theSet->members.containsUnit(theChar);
}

Boolean CFCharacterSetIsLongCharacterMember(CFCharacterSetRef theSet, UTF32Char theChar) {
    if (!isSetArgument(theSet, "CFCharacterSetIsLongCharacterMember")) return false;
    return theSet->members.contains(theChar);
}

void CFCharacterSetAddCharactersInRange(CFMutableCharacterSetRef theSet, CFRange theRange) {
    if (!isValidUnicodeRange(theRange, "CFCharacterSetAddCharactersInRange")) return;
    __CFCharacterSet* set = mutableSet(theSet, "CFCharacterSetAddCharactersInRange");
    if (set == nullptr || theRange.length == 0) return;
    set->members.add(UTF32Char(theRange.location), UTF32Char(theRange.location + theRange.length - 1));
}

void CFCharacterSetRemoveCharactersInRange(CFMutableCharacterSetRef theSet, CFRange theRange) {
    if (!isValidUnicodeRange(theRange, "CFCharacterSetRemoveCharactersInRange")) return;
    __CFCharacterSet* set = mutableSet(theSet, "CFCharacterSetRemoveCharactersInRange");
    if (set == nullptr || theRange.length == 0) return;
    set->members.remove(UTF32Char(theRange.location), UTF32Char(theRange.location + theRange.length - 1));
}

void CFCharacterSetAddCharactersInString(CFMutableCharacterSetRef theSet, CFStringRef theString) {
    if (!isStringArgument(theString, "CFCharacterSetAddCharactersInString")) return;
    __CFCharacterSet* set = mutableSet(theSet, "CFCharacterSetAddCharactersInString");
    if (set != nullptr) set->members.add(rangesOfCharacters(theString));
}

void CFCharacterSetRemoveCharactersInString(CFMutableCharacterSetRef theSet, CFStringRef theString) {
    if (!isStringArgument(theString, "CFCharacterSetRemoveCharactersInString")) return;
    __CFCharacterSet* set = mutableSet(theSet, "CFCharacterSetRemoveCharactersInString");
    if (set != nullptr) set->members.remove(rangesOfCharacters(theString));
}

void CFCharacterSetUnion(CFMutableCharacterSetRef theSet, CFCharacterSetRef theOtherSet) {
    if (!isSetArgument(theOtherSet, "CFCharacterSetUnion")) return;
    __CFCharacterSet* set = mutableSet(theSet, "CFCharacterSetUnion");
    if (set != nullptr && set != theOtherSet) set->members.unite(theOtherSet->members);
}

void CFCharacterSetIntersect(CFMutableCharacterSetRef theSet, CFCharacterSetRef theOtherSet) {
    if (!isSetArgument(theOtherSet, "CFCharacterSetIntersect")) return;
    __CFCharacterSet* set = mutableSet(theSet, "CFCharacterSetIntersect");
    if (set != nullptr && set != theOtherSet) set->members.intersect(theOtherSet->members);
}

void CFCharacterSetInvert(CFMutableCharacterSetRef theSet) {
    __CFCharacterSet* set = mutableSet(theSet, "CFCharacterSetInvert");
    if (set != nullptr) set->members.invert();
}
