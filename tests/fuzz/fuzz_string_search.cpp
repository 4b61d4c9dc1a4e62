// Fuzzes searching, and checks what holds for any text and any flags:
// - a match lies inside the searched range (at its start or end when
//   anchored) and, literally, has the needle's units;
// - a match compares equal to the needle under the same flags, so that
//   searching and comparison agree on what "equal" means;
// - composed-character ranges contain their index; characters found from a
//   set are members of it.
//
// Input bytes pick characters from a small alphabet of the cases that
// matter (case foldings that change length, combining marks, width forms,
// Hangul, surrogate halves), so that short inputs reach them.
#include <CoreFoundation/CoreFoundation.h>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>

namespace {

constexpr char16_t kAlphabet[] = {
    u'a',      u'A',      u's',      u'S',      u'e',      u'E',      u'k',      u'x',      u' ',      u'\r',
    u'\n',     u'\u00DF', u'\u1E9E', u'\u00E9', u'\u00C9', u'\u0301', u'\u0323', u'\u0307', u'\uFB01', u'\u212A',
    u'\u0130', u'\u0131', u'\u03C2', u'\u03C3', u'\u03A3', u'\u212B', u'\u00E5', u'\uFF76', u'\uFF9E', u'\u30AC',
    u'\uFF21', u'\uAC00', u'\uAC01', u'\u1100', u'\u1161', u'\u11A8', u'\xD83D', u'\xDE00', u'\u0345', u'\u01F0',
    u'\u0390', u'\u3000', u'\u200D', u'f',      u'i',      u'\u1E69', u'\u0644', u'\u0627', u'\uFEFF'};

constexpr CFStringCompareFlags kFlagBits[] = {
    kCFCompareCaseInsensitive,      kCFCompareBackwards,       kCFCompareAnchored, kCFCompareNonliteral,
    kCFCompareDiacriticInsensitive, kCFCompareWidthInsensitive};

void check(bool condition) {
    if (!condition) __builtin_trap();
}

std::u16string textOf(const uint8_t* bytes, size_t count) {
    std::u16string text;
    for (size_t i = 0; i < count; ++i) text.push_back(kAlphabet[bytes[i] % std::size(kAlphabet)]);
    return text;
}

CFStringRef stringOf(const std::u16string& text, bool asMutable) {
    CFStringRef s =
        CFStringCreateWithCharacters(nullptr, reinterpret_cast<const UniChar*>(text.data()), CFIndex(text.size()));
    if (!asMutable) return s;
    CFMutableStringRef copy = CFStringCreateMutableCopy(nullptr, 0, s);
    CFRelease(s);
    return copy;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 4 || size > 512) return 0;
    CFStringCompareFlags options = 0;
    for (size_t k = 0; k < std::size(kFlagBits); ++k) {
        if (data[0] & (1u << k)) options |= kFlagBits[k];
    }
    size_t needleLength = data[1] % 8 + 1;
    if (needleLength > size - 4) needleLength = size - 4;
    std::u16string needleText = textOf(data + 4, needleLength);
    std::u16string haystackText = textOf(data + 4 + needleLength, size - 4 - needleLength);
    CFStringRef s = stringOf(haystackText, (data[0] & 0x80) != 0);
    CFStringRef needle = stringOf(needleText, false);
    CFIndex length = CFStringGetLength(s);
    CFIndex location = length == 0 ? 0 : data[2] % (length + 1);
    CFRange range = CFRangeMake(location, length == 0 ? 0 : data[3] % (length - location + 1));

    CFRange found = {kCFNotFound, 0};
    if (CFStringFindWithOptions(s, needle, range, options, &found)) {
        check(found.location >= range.location && found.length >= 0 &&
              found.location + found.length <= range.location + range.length);
        if (options & kCFCompareAnchored) {
            if (options & kCFCompareBackwards) {
                check(found.location + found.length == range.location + range.length);
            } else {
                check(found.location == range.location);
            }
        }
        CFStringCompareFlags matching = options & ~(kCFCompareBackwards | kCFCompareAnchored);
        if (matching == 0) {
            check(found.length == CFIndex(needleText.size()));
            for (CFIndex i = 0; i < found.length; ++i) {
                check(CFStringGetCharacterAtIndex(s, found.location + i) == needleText[size_t(i)]);
            }
        }
        check(CFStringCompareWithOptions(s, needle, found, matching) == kCFCompareEqualTo);
    }

    // Replacing every match agrees with finding them one after the other.
    CFMutableStringRef replaced = CFStringCreateMutableCopy(nullptr, 0, s);
    CFIndex count = CFStringFindAndReplace(replaced, needle, CFSTR("#"), range, options);
    check(count >= 0 && (count == 0) == (found.location == kCFNotFound));
    CFRelease(replaced);

    for (CFIndex i = 0; i < length; ++i) {
        CFRange cluster = CFStringGetRangeOfComposedCharactersAtIndex(s, i);
        check(cluster.location <= i && i < cluster.location + cluster.length && cluster.location >= 0 &&
              cluster.location + cluster.length <= length);
    }

    CFCharacterSetRef set = CFCharacterSetCreateWithCharactersInString(nullptr, needle);
    CFRange member = {kCFNotFound, 0};
    if (CFStringFindCharacterFromSet(s, set, range, options, &member)) {
        check(member.length == 1 || member.length == 2);
        check(member.location >= range.location && member.location + member.length <= range.location + range.length);
        UTF32Char c = CFStringGetCharacterAtIndex(s, member.location);
        if (member.length == 2) {
            c = 0x10000 + ((c - 0xD800) << 10) + (CFStringGetCharacterAtIndex(s, member.location + 1) - 0xDC00);
        }
        check(CFCharacterSetIsLongCharacterMember(set, c));
    }
    CFRelease(set);
    CFRelease(needle);
    CFRelease(s);
    return 0;
}
