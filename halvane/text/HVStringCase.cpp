// HVString: upper- and lower-casing and capitalizing in the user's locale.
#include <halvane/text/HVString.h>

#include <halvane/text/detail/CurrentLocale.h>
#include <halvane/text/detail/LetterCase.h>
#include <halvane/text/detail/UnicodeText.h>

#include <CoreFoundation/CoreFoundation.h>
#include <unicode/uchar.h>
#include <unicode/utf16.h>

#include <vector>

using namespace halvane::detail;

namespace {

// A new string over a buffer of the default allocator, which the string
// frees; the buffer is freed here when no string could be made.
HVString adoptBuffer(void* buffer, CFIndex bytes, CFStringEncoding encoding) {
    HVString result;
    CFStringRef created = CFStringCreateWithBytesNoCopy(kCFAllocatorDefault, static_cast<const UInt8*>(buffer), bytes,
                                                        encoding, false, kCFAllocatorDefault);
    if (created != nullptr) {
        result.AssignAndTakeOwnership(created);
    } else {
        CFAllocatorDeallocate(kCFAllocatorDefault, buffer);
    }
    return result;
}

// The receiver's units mapped one by one, then read back as UTF-16 text the
// way data in that encoding is read: trailing zero units count as
// terminators and are dropped.
HVString mappedText(const HVString& text, LetterCase letterCase, std::string_view localeIdentifier) {
    auto string = static_cast<CFStringRef>(text.Ref());
    if (string == nullptr) return HVString();
    CFIndex length = CFStringGetLength(string);
    if (const char* ascii = CFStringGetCStringPtr(string, kCFStringEncodingASCII)) {
        // Text held as ASCII is mapped as bytes, which is most text most of
        // the time and four times less to move.
        while (length > 0 && ascii[length - 1] == 0) --length;
        if (length == 0) return HVString();
        auto* bytes = static_cast<char*>(CFAllocatorAllocate(kCFAllocatorDefault, length, 0));
        if (mapASCIILetterCase(ascii, bytes, size_t(length), letterCase, localeIdentifier)) {
            return adoptBuffer(bytes, length, kCFStringEncodingASCII);
        }
        CFAllocatorDeallocate(kCFAllocatorDefault, bytes);
    }
    if (length == 0) return HVString();
    auto* units =
        static_cast<char16_t*>(CFAllocatorAllocate(kCFAllocatorDefault, length * CFIndex(sizeof(UniChar)), 0));
    const auto* source = reinterpret_cast<const char16_t*>(CFStringGetCharactersPtr(string));
    if (source == nullptr) {
        CFStringGetCharacters(string, CFRangeMake(0, length), reinterpret_cast<UniChar*>(units));
        source = units;
    }
    mapLetterCase(source, units, size_t(length), letterCase, localeIdentifier);
    while (length > 0 && units[length - 1] == 0) --length;
    if (length == 0) {
        CFAllocatorDeallocate(kCFAllocatorDefault, units);
        return HVString();
    }
    return adoptBuffer(units, length * CFIndex(sizeof(UniChar)), kCFStringEncodingUTF16LE);
}

bool isCased(UChar32 c) {
    int8_t type = u_charType(c);
    return type == U_UPPERCASE_LETTER || type == U_LOWERCASE_LETTER || type == U_TITLECASE_LETTER;
}

// Marks, format controls, modifier letters and symbols, and the apostrophe
// neither start nor end a word ("don't" is one word).
bool isCaseIgnorable(UChar32 c) {
    if (c == u'\'') return true;
    int8_t type = u_charType(c);
    return type == U_NON_SPACING_MARK || type == U_ENCLOSING_MARK || type == U_FORMAT_CHAR ||
           type == U_MODIFIER_LETTER || type == U_MODIFIER_SYMBOL;
}

// The words of a text as the platform's capitalizing sees them: a word
// starts at the character after one that is neither cased nor ignorable.
// Answers the start of every word but the first, which starts at 0.
std::vector<CFIndex> wordStarts(const std::u16string& units) {
    std::vector<CFIndex> starts;
    bool previousCased = false;
    const int32_t length = int32_t(units.size());
    for (int32_t i = 0; i < length;) {
        int32_t start = i;
        UChar32 c;
        U16_NEXT(units.data(), i, length, c);
        if (!previousCased && start > 0) starts.push_back(start);
        if (isCased(c)) {
            previousCased = true;
        } else if (!isCaseIgnorable(c)) {
            previousCased = false;
        }
    }
    return starts;
}

}  // namespace

HVString HVString::UppercaseString() const {
    return mappedText(*this, LetterCase::kUpper, currentLocaleIdentifier());
}

HVString HVString::LowercaseString() const {
    return mappedText(*this, LetterCase::kLower, currentLocaleIdentifier());
}

HVString HVString::CapitalizedString() const {
    if (IsEmpty()) return *this;
    auto text = static_cast<CFStringRef>(Ref());
    std::u16string units = unitsOf(text);
    std::vector<CFIndex> starts = wordStarts(units);
    starts.push_back(CFIndex(units.size()));

    // Only a word that begins with one of these letters is capitalized;
    // every other word is kept as it is written.
    CFCharacterSetRef lowercaseLetters =
        CFCharacterSetCreateWithCharactersInString(kCFAllocatorDefault, CFSTR("abcdefghijklmnopqrstuvwxyz"));
    CFLocaleRef locale = CFLocaleCopyCurrent();
    CFMutableStringRef result = CFStringCreateMutable(kCFAllocatorDefault, 0);
    CFIndex wordStart = 0;
    for (CFIndex end : starts) {
        CFRange word = CFRangeMake(wordStart, end - wordStart);
        CFMutableStringRef piece = CFStringCreateMutable(kCFAllocatorDefault, 0);
        CFStringAppendCharacters(piece, reinterpret_cast<const UniChar*>(units.data()) + word.location, word.length);
        if (CFCharacterSetIsCharacterMember(lowercaseLetters, units[size_t(wordStart)])) {
            CFStringCapitalize(piece, locale);
        }
        CFStringAppend(result, piece);
        CFRelease(piece);
        wordStart = end;
    }
    HVString capitalized;
    capitalized.AssignAndTakeOwnership(CFStringCreateCopy(kCFAllocatorDefault, result));
    CFRelease(result);
    if (locale != nullptr) CFRelease(locale);
    CFRelease(lowercaseLetters);
    return capitalized;
}
