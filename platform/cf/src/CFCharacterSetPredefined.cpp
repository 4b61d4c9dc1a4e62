// The predefined character sets: Unicode properties from ICU, except the
// whitespace and newline sets, whose members are fixed lists that callers
// rely on (U+200B counts as whitespace, U+FEFF does not), not a Unicode
// property.
#include "CFCharacterSetInternal.h"

#include <unicode/uchar.h>
#include <unicode/uset.h>

#include <array>
#include <mutex>

namespace halvane::detail {

namespace {

constexpr CodePointRange kWhitespace[] = {{0x0009, 0x0009}, {0x0020, 0x0020}, {0x00A0, 0x00A0}, {0x1680, 0x1680},
                                          {0x2000, 0x200B}, {0x202F, 0x202F}, {0x205F, 0x205F}, {0x3000, 0x3000}};
constexpr CodePointRange kNewline[] = {{0x000A, 0x000D}, {0x0085, 0x0085}, {0x2028, 0x2029}};

template <size_t N>
void addRanges(CodePointSet& set, const CodePointRange (&ranges)[N]) {
    for (const CodePointRange& range : ranges) set.add(range.first, range.last);
}

// Adds the code points that have the given value of an ICU property.
void addProperty(CodePointSet& set, UProperty property, int32_t value) {
    UErrorCode status = U_ZERO_ERROR;
    USet* members = uset_openEmpty();
    uset_applyIntPropertyValue(members, property, value, &status);
    if (U_SUCCESS(status)) {
        int32_t count = uset_getItemCount(members);
        for (int32_t i = 0; i < count; ++i) {
            UChar32 first = 0, last = 0;
            status = U_ZERO_ERROR;
            // Ranges come first and are all there is: the set has no strings.
            if (uset_getItem(members, i, &first, &last, nullptr, 0, &status) == 0 && U_SUCCESS(status)) {
                set.add(UTF32Char(first), UTF32Char(last));
            }
        }
    }
    uset_close(members);
}

void addCategories(CodePointSet& set, uint32_t categoryMask) {
    addProperty(set, UCHAR_GENERAL_CATEGORY_MASK, int32_t(categoryMask));
}

constinit std::array<std::once_flag, 16> builtOnce{};
constinit std::array<__CFCharacterSet*, 16> builtSets{};

}  // namespace

CodePointSet predefinedMembers(CFCharacterSetPredefinedSet identifier) {
    CodePointSet set;
    switch (identifier) {
        case kCFCharacterSetControl:
            addCategories(set, U_GC_CC_MASK | U_GC_CF_MASK);
            break;
        case kCFCharacterSetWhitespace:
            addRanges(set, kWhitespace);
            break;
        case kCFCharacterSetWhitespaceAndNewline:
            addRanges(set, kWhitespace);
            addRanges(set, kNewline);
            break;
        case kCFCharacterSetDecimalDigit:
            addCategories(set, U_GC_ND_MASK);
            break;
        case kCFCharacterSetLetter:
            addCategories(set, U_GC_L_MASK | U_GC_M_MASK);
            break;
        case kCFCharacterSetLowercaseLetter:
            addCategories(set, U_GC_LL_MASK);
            break;
        case kCFCharacterSetUppercaseLetter:
            addCategories(set, U_GC_LU_MASK | U_GC_LT_MASK);
            break;
        case kCFCharacterSetNonBase:
            addCategories(set, U_GC_M_MASK);
            break;
        case kCFCharacterSetDecomposable:
            addProperty(set, UCHAR_DECOMPOSITION_TYPE, U_DT_CANONICAL);
            break;
        case kCFCharacterSetAlphaNumeric:
            addCategories(set, U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK);
            break;
        case kCFCharacterSetPunctuation:
            addCategories(set, U_GC_P_MASK);
            break;
        case kCFCharacterSetIllegal:
            // Noncharacters are unassigned (Cn) already; named for clarity.
            addCategories(set, U_GC_CN_MASK);
            addProperty(set, UCHAR_NONCHARACTER_CODE_POINT, 1);
            break;
        case kCFCharacterSetCapitalizedLetter:
            addCategories(set, U_GC_LT_MASK);
            break;
        case kCFCharacterSetSymbol:
            addCategories(set, U_GC_S_MASK);
            break;
        case kCFCharacterSetNewline:
            addRanges(set, kNewline);
            break;
        default:
            break;
    }
    return set;
}

CFCharacterSetRef predefinedCharacterSet(CFCharacterSetPredefinedSet identifier) {
    if (identifier < kCFCharacterSetControl || identifier > kCFCharacterSetNewline) return nullptr;
    size_t slot = size_t(identifier);
    // Built on first use and kept for the life of the process: callers hold
    // these without retaining them, from any thread.
    std::call_once(builtOnce[slot], [identifier, slot] {
        auto* set = new __CFCharacterSet{immortalHeader(kCFCharacterSetTypeID), predefinedMembers(identifier),
                                         CharacterSetForm::kPredefined, identifier, CFRange{0, 0}};
        builtSets[slot] = set;
    });
    return builtSets[slot];
}

}  // namespace halvane::detail
