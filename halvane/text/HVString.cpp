#include <halvane/text/HVString.h>

#include <halvane/collections/HVData.h>
#include <halvane/core/detail/ClassRegistry.h>
#include <halvane/errors/HVAssert.h>
#include <halvane/errors/HVException.h>
#include <halvane/errors/HVLog.h>
#include <halvane/text/detail/TextConversion.h>
#include <halvane/text/detail/UnicodeText.h>
#include <halvane/time/HVDate.h>
#include <halvane/time/HVTimeZone.h>
#include <halvane/time/detail/DateText.h>
#include <halvane/os/UUID.h>

#include <CoreFoundation/CoreFoundation.h>

#include <cstring>

HV_REGISTER_CLASS(HVString);

using halvane::detail::unicodeOf;
using halvane::detail::wideToUTF16;

namespace {

CFStringRef asString(const void* ref) { return static_cast<CFStringRef>(ref); }

// UTF-8 bytes up to the terminating zero, a leading byte-order mark honoured
// and dropped; NULL when they are not UTF-8.
CFStringRef createFromUTF8(const char* text) {
    return CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(text), CFIndex(std::strlen(text)),
                                   kCFStringEncodingUTF8, true);
}

CFStringRef createFromUnits(const char16_t* units, size_t length) {
    return CFStringCreateWithCharacters(kCFAllocatorDefault, reinterpret_cast<const UniChar*>(units), CFIndex(length));
}

size_t unitLength(const char16_t* units) {
    size_t length = 0;
    while (units[length] != 0) ++length;
    return length;
}

}  // namespace

unsigned int HVStringEncodingUtilites::ConvertToUnderlyingStringEncoding(HVStringEncoding encoding) {
    switch (encoding) {
        case HVUTF8StringEncoding: return kCFStringEncodingUTF8;
        case HVUTF16StringEncoding: return kCFStringEncodingUTF16LE;
        case HVMacOSRomanStringEncoding: return kCFStringEncodingMacRoman;
        case HVWindowsLatin1StringEncoding: return kCFStringEncodingWindowsLatin1;
        case HVISOLatin1StringEncoding: return kCFStringEncodingISOLatin1;
        case HVASCIIStringEncoding: return kCFStringEncodingASCII;
    }
    HVLog("Unhandled string encoding");
    return kCFStringEncodingUTF8;
}

// Construction. Every form starts as a string wrapper holding the shared
// empty string and then replaces it.

HVString::HVString() : HVObject(SharedEmptyObject(), HVStringClassType) {}


HVString::HVString(const __CFString* ref) : HVObject(static_cast<const void*>(ref), HVStringClassType) {}

HVString::HVString(const char* text) : HVString() { operator=(text); }

HVString::HVString(const unsigned char* text) : HVString() { operator=(text); }

HVString::HVString(const wchar_t* text) : HVString() { operator=(text); }

HVString::HVString(const char16_t* text) : HVString() { operator=(text); }

HVString::HVString(std::string text) : HVString() {
    if (!text.empty()) operator=(text.c_str());
}

HVString::HVString(const unsigned int* text) : HVString() { operator=(text); }

HVString::HVString(const HVData& data) : HVString() { InitWithDataUsingEncoding(data, HVUTF8StringEncoding); }

HVString::HVString(const HVObject& object) : HVString() {
    HVClassType held = object.ObjectsClassType();
    if (held == HVStringClassType) {
        AssignUnderlyingString(object.Ref());
    } else if (object.IsNull()) {
        Nullify();
    } else if (object.IsEmpty()) {
        // Stays the empty string.
    } else if (held == HVDataClassType || held == HVMutableDataClassType) {
        InitWithDataUsingEncoding(HVData(object), HVUTF8StringEncoding);
    } else if (held == HVDateClassType) {
        // The default date formatter's text: the day in the machine's zone.
        InitWithString(halvane::detail::DateText(HVDate(object), HVTimeZone::CurrentTimeZone()));
    } else if (held == HVObjectClassType) {
        HVObject::operator=(object);
    } else {
        HVAssertionFailed("0",
                          StringWithFormat("This string assignment is going away so fix this assignment. Cant "
                                           "convert %d.",
                                           int(held)),
                          "HVString::HVString", "HVString", 551);
        AssignUnderlyingString(const_cast<HVObject&>(object).Description().Ref());
    }
}

HVClassType HVString::ClassType() { return HVStringClassType; }

const void* const& HVString::SharedEmptyObject() {
    static const void* const empty = CFSTR("");
    return empty;
}

HVString HVString::SharedEmptyString() {
    static const HVString empty;
    return empty;
}

HVString HVString::SharedNullString() {
    static const HVString null(static_cast<const char*>(nullptr));
    return null;
}

HVString HVString::StringFromId(const void* const& ref) { return HVString(ref); }

HVString HVString::StringFromObject(const HVObject& object) { return HVString(object); }

// Formatting

HVString HVString::StringWithFormat(HVString format, ...) {
    va_list arguments;
    va_start(arguments, format);
    HVString result = StringWithFormatAndArguments(format, arguments);
    va_end(arguments);
    return result;
}

HVString HVString::StringWithFormatAndArguments(const HVString& format, va_list arguments) {
    HVString result;
    result.InitWithFormatAndArguments(format, arguments);
    return result;
}

void HVString::InitWithFormat(HVString format, ...) {
    va_list arguments;
    va_start(arguments, format);
    InitWithFormatAndArguments(format, arguments);
    va_end(arguments);
}

void HVString::InitWithFormatAndArguments(const HVString& format, va_list arguments) {
    Empty();
    if (format.IsEmpty()) return;
    try {
        va_list copy;
        va_copy(copy, arguments);
        CFStringRef text =
            CFStringCreateWithFormatAndArguments(kCFAllocatorDefault, nullptr, asString(format.Ref()), copy);
        va_end(copy);
        if (text != nullptr) AssignUnderlyingStringAndTakeOwnership(text);
    } catch (...) {
        // A description that throws leaves the empty string.
        Empty();
    }
}

// Byte strings in an encoding

HVString HVString::StringWithCStringUsingEncoding(const char* text, HVStringEncoding encoding) {
    HVString result;
    if (text != nullptr && text[0] != 0) result.InitWithCStringUsingEncoding(text, encoding);
    return result;
}

HVString HVString::StringWithCStringUsingEncoding(const std::string& text, HVStringEncoding encoding) {
    return StringWithCStringUsingEncoding(text.c_str(), encoding);
}

void HVString::InitWithCStringUsingEncoding(const char* text, HVStringEncoding encoding) {
    Empty();
    CFStringRef created = nullptr;
    if (encoding == HVUTF16StringEncoding) {
        // The pointer holds 16-bit units up to a zero unit; it need not be
        // aligned for them.
        std::u16string units;
        if (text != nullptr) {
            for (const char* p = text;; p += 2) {
                char16_t unit;
                std::memcpy(&unit, p, 2);
                if (unit == 0) break;
                units.push_back(unit);
            }
        }
        created = createFromUnits(units.data(), units.size());
    } else {
        CFIndex length = text != nullptr ? CFIndex(std::strlen(text)) : 0;
        created = CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(text), length,
                                          HVStringEncodingUtilites::ConvertToUnderlyingStringEncoding(encoding), true);
    }
    if (created != nullptr) AssignUnderlyingStringAndTakeOwnership(created);
}

void HVString::InitWithCStringUsingEncoding(const unsigned char* text, HVStringEncoding encoding) {
    InitWithCStringUsingEncoding(reinterpret_cast<const char*>(text), encoding);
}

void HVString::InitWithCStringUsingEncoding(const wchar_t* text, HVStringEncoding) {
    // Wide text is UTF-32 on this platform whatever encoding is named.
    Empty();
    if (text == nullptr) return;
    std::u16string units = wideToUTF16(text);
    if (CFStringRef created = createFromUnits(units.data(), units.size())) {
        AssignUnderlyingStringAndTakeOwnership(created);
    }
}

void HVString::InitWithCStringUsingEncoding(const std::string& text, HVStringEncoding encoding) {
    InitWithCStringUsingEncoding(text.c_str(), encoding);
}

HVString HVString::StringWithBytesOfLengthUsingEncoding(const void* bytes, unsigned long long length,
                                                        HVStringEncoding encoding) {
    HVString result;
    if (bytes != nullptr && length != 0) result.InitWithBytesOfLengthUsingEncoding(bytes, length, encoding);
    return result;
}

void HVString::InitWithBytesOfLengthUsingEncoding(const void* bytes, unsigned long long length,
                                                  HVStringEncoding encoding) {
    Empty();
    // Lengths reach the platform cut to 32 bits.
    CFIndex platformLength = CFIndex(int32_t(uint32_t(length)));
    if (platformLength < 0) return;
    auto start = static_cast<const UInt8*>(bytes);
    // Without external representation a byte-order mark is text. The
    // platform drops a UTF-8 mark in any case, so it is put back here.
    bool keepMark = encoding == HVUTF8StringEncoding && platformLength >= 3 && start[0] == 0xEF && start[1] == 0xBB &&
                    start[2] == 0xBF;
    CFStringRef created =
        CFStringCreateWithBytes(kCFAllocatorDefault, start, platformLength,
                                HVStringEncodingUtilites::ConvertToUnderlyingStringEncoding(encoding), false);
    if (created != nullptr && keepMark) {
        CFMutableStringRef marked = CFStringCreateMutable(kCFAllocatorDefault, 0);
        const UniChar mark = 0xFEFF;
        CFStringAppendCharacters(marked, &mark, 1);
        CFStringAppend(marked, created);
        CFRelease(created);
        created = CFStringCreateCopy(kCFAllocatorDefault, marked);
        CFRelease(marked);
    }
    if (created != nullptr) AssignUnderlyingStringAndTakeOwnership(created);
}

HVString HVString::StringWithDataUsingEncoding(const HVData& data, HVStringEncoding encoding) {
    HVString result;
    if (!data.IsEmpty()) result.InitWithDataUsingEncoding(data, encoding);
    return result;
}

void HVString::InitWithDataUsingEncoding(const HVData& data, HVStringEncoding encoding) {
    if (data.IsEmpty()) {
        Empty();
        return;
    }
    auto bytes = static_cast<const unsigned char*>(data.Bytes());
    unsigned long long length = data.Length();
    // Trailing terminators go first: zero bytes, or zero units for UTF-16.
    if (encoding == HVUTF16StringEncoding) {
        while (length >= 2 && bytes[length - 1] == 0 && bytes[length - 2] == 0) length -= 2;
    } else {
        while (length > 0 && bytes[length - 1] == 0) --length;
    }
    InitWithBytesOfLengthUsingEncoding(bytes, length, encoding);
}

HVString HVString::StringWithContentsOfFileUsingEncoding(const HVString& path, HVStringEncoding encoding) {
    return StringWithDataUsingEncoding(HVData::DataWithContentsOfFile(path), encoding);
}

void HVString::InitWithContentsOfFileUsingEncoding(const HVString& path, HVStringEncoding encoding) {
    InitWithDataUsingEncoding(HVData::DataWithContentsOfFile(path), encoding);
}

// Single characters and escapes

HVString HVString::StringWithUnicodeCharacter(wchar_t character) {
    HVString result;
    result.InitWithUnicodeCharacter(character);
    return result;
}

HVString HVString::StringWithUnicodeCharacter(unsigned int character) {
    HVString result;
    result.InitWithUnicodeCharacter(character);
    return result;
}

void HVString::InitWithUnicodeCharacter(wchar_t character) {
    // One unit: the character is taken as a UTF-16 unit value.
    UniChar unit = UniChar(character);
    if (CFStringRef created = CFStringCreateWithCharacters(kCFAllocatorDefault, &unit, 1)) {
        AssignUnderlyingStringAndTakeOwnership(created);
    } else {
        Empty();
    }
}

void HVString::InitWithUnicodeCharacter(unsigned int) { Empty(); }

wchar_t HVString::UnicodeEscapeSequenceToUniChar(const HVString& text) {
    CFStringRef string = asString(text.Ref());
    CFIndex length = CFStringGetLength(string);
    if (length < 2 || CFStringGetCharacterAtIndex(string, 0) != u'\\' || CFStringGetCharacterAtIndex(string, 1) != u'u') {
        return 0;
    }
    // The digits are upper-cased and taken without a check: each step adds
    // the character minus '0' below 'A', else minus 55. Kept so.
    uint16_t value = 0;
    for (CFIndex i = 2; i < length && i < 6; ++i) {
        UniChar c = CFStringGetCharacterAtIndex(string, i);
        if (c >= u'a' && c <= u'z') c = UniChar(c - 32);
        value = uint16_t(value * 16 + (c < u'A' ? c - 48 : c - 55));
    }
    return wchar_t(value);
}

HVString HVString::StringWithUnicodeEscapeSequence(const char* text) {
    HVString result;
    result.InitWithUnicodeEscapeSequence(text);
    return result;
}

HVString HVString::StringWithUnicodeEscapeSequence(const std::string& text) {
    HVString result;
    result.InitWithUnicodeEscapeSequence(text);
    return result;
}

HVString HVString::StringWithUnicodeEscapeSequence(const HVString& text) {
    HVString result;
    result.InitWithUnicodeEscapeSequence(text);
    return result;
}

HVString HVString::StringWithUnicodeEscapeSequence(const wchar_t* text) {
    HVString result;
    result.InitWithUnicodeEscapeSequence(text);
    return result;
}

void HVString::InitWithUnicodeEscapeSequence(const char* text) { InitWithUnicodeEscapeSequence(HVString(text)); }

void HVString::InitWithUnicodeEscapeSequence(const std::string& text) {
    InitWithUnicodeEscapeSequence(HVString(text));
}

void HVString::InitWithUnicodeEscapeSequence(const HVString& text) {
    InitWithUnicodeCharacter(UnicodeEscapeSequenceToUniChar(text));
}

void HVString::InitWithUnicodeEscapeSequence(const wchar_t* text) {
    // Wide text is UTF-32 here, so it cannot be wrapped as UTF-16 units
    // without converting it: the string keeps a converted copy.
    Empty();
    if (text == nullptr) return;
    std::u16string units = wideToUTF16(text);
    if (CFStringRef created = createFromUnits(units.data(), units.size())) {
        AssignUnderlyingStringAndTakeOwnership(created);
    }
}

void HVString::InitWithUnicodeEscapeSequence(const unsigned int*) { Empty(); }

void HVString::InitWithDefaultSingleByteConstantString(const char* text) {
    Empty();
    if (text == nullptr) return;
    CFStringRef created =
        CFStringCreateWithCStringNoCopy(kCFAllocatorDefault, text, kCFStringEncodingWindowsLatin1, kCFAllocatorNull);
    if (created != nullptr) AssignUnderlyingStringAndTakeOwnership(created);
}

void HVString::InitWithString(const HVString& other) { AssignUnderlyingString(other.Ref()); }

// Assignment

HVString& HVString::operator=(const HVString& other) {
    AssignUnderlyingString(other.Ref());
    return *this;
}

HVString& HVString::operator=(const char* text) {
    if (text == nullptr) {
        Nullify();
    } else if (text[0] == 0) {
        Empty();
    } else if (CFStringRef created = createFromUTF8(text)) {
        AssignUnderlyingStringAndTakeOwnership(created);
    } else {
        Empty();
    }
    return *this;
}

HVString& HVString::operator=(const unsigned char* text) { return operator=(reinterpret_cast<const char*>(text)); }

HVString& HVString::operator=(const std::string& text) {
    if (text.empty()) {
        Empty();
        return *this;
    }
    return operator=(text.c_str());
}

HVString& HVString::operator=(const wchar_t* text) {
    if (text == nullptr) {
        Nullify();
        return *this;
    }
    std::u16string units = wideToUTF16(text);
    if (units.empty()) {
        Empty();
    } else if (CFStringRef created = createFromUnits(units.data(), units.size())) {
        AssignUnderlyingStringAndTakeOwnership(created);
    } else {
        Empty();
    }
    return *this;
}

HVString& HVString::operator=(const char16_t* text) {
    if (text == nullptr) {
        Nullify();
        return *this;
    }
    size_t length = unitLength(text);
    if (length == 0) {
        Empty();
    } else if (CFStringRef created = createFromUnits(text, length)) {
        AssignUnderlyingStringAndTakeOwnership(created);
    } else {
        Empty();
    }
    return *this;
}

HVString& HVString::operator=(const unsigned int* text) {
    if (text == nullptr) {
        Nullify();
    } else {
        Empty();
    }
    return *this;
}

HVString& HVString::operator=(const __CFString* ref) {
    AssignUnderlyingString(ref);
    return *this;
}

void HVString::AssignUnderlyingString(const void* ref) { ReplaceReference(ref, HVStringClassType); }

void HVString::AssignUnderlyingStringAndTakeOwnership(const void* ref) {
    ReplaceReferenceTakingOwnership(ref, HVStringClassType);
}

// Appending

HVString& HVString::operator+=(const HVString& other) {
    if (other.Length() == 0) return *this;
    if (Length() == 0) {
        AssignUnderlyingString(other.Ref());
        return *this;
    }
    CFMutableStringRef joined = CFStringCreateMutableCopy(kCFAllocatorDefault, 0, asString(m_Ref));
    CFStringAppend(joined, asString(other.Ref()));
    CFStringRef result = CFStringCreateCopy(kCFAllocatorDefault, joined);
    CFRelease(joined);
    AssignUnderlyingStringAndTakeOwnership(result);
    return *this;
}

HVString& HVString::operator+=(const char* text) { return operator+=(HVString(text)); }
HVString& HVString::operator+=(const unsigned char* text) { return operator+=(HVString(text)); }
HVString& HVString::operator+=(const wchar_t* text) { return operator+=(HVString(text)); }
HVString& HVString::operator+=(const std::string& text) { return operator+=(HVString(text)); }

HVString operator+(const HVString& left, const HVString& right) {
    HVString result(left);
    result += right;
    return result;
}
HVString operator+(const HVString& left, const char* right) { return left + HVString(right); }
HVString operator+(const char* left, const HVString& right) { return HVString(left) + right; }
HVString operator+(const HVString& left, const unsigned char* right) { return left + HVString(right); }
HVString operator+(const unsigned char* left, const HVString& right) { return HVString(left) + right; }
HVString operator+(const HVString& left, const wchar_t* right) { return left + HVString(right); }
HVString operator+(const wchar_t* left, const HVString& right) { return HVString(left) + right; }
HVString operator+(const HVString& left, const std::string& right) { return left + HVString(right); }
HVString operator+(const std::string& left, const HVString& right) { return HVString(left) + right; }
HVString operator+(const HVString& left, const __CFString* right) { return left + HVString(right); }
HVString operator+(const __CFString* left, const HVString& right) { return HVString(left) + right; }

// Conversion out

namespace {

// A new buffer with the bytes of data; null when the data is empty.
std::unique_ptr<const char[]> bufferOf(const HVData& data) {
    if (data.Length() == 0) return nullptr;
    auto buffer = std::make_unique<char[]>(data.Length());
    std::memcpy(buffer.get(), data.Bytes(), data.Length());
    return buffer;
}

}  // namespace

std::unique_ptr<const char[]> HVString::UTF8CString() const { return CStringUsingEncoding(HVUTF8StringEncoding); }

std::unique_ptr<const char[]> HVString::DefaultOSSingleByteCString() const {
    return CStringUsingEncoding(HVWindowsLatin1StringEncoding);
}

std::unique_ptr<const char[]> HVString::CStringUsingEncoding(HVStringEncoding encoding) const {
    if (m_Ref == nullptr) return nullptr;
    return bufferOf(DataContainingCStringUsingEncoding(encoding));
}

std::unique_ptr<const char16_t[]> HVString::UTF16CString() const {
    if (m_Ref == nullptr) return nullptr;
    HVData data = DataContainingUTF16CString();
    size_t units = size_t(data.Length() / 2);
    if (units == 0) return nullptr;
    auto buffer = std::make_unique<char16_t[]>(units);
    std::memcpy(buffer.get(), data.Bytes(), units * 2);
    return buffer;
}

HVString::operator std::string() const {
    std::unique_ptr<const char[]> text = UTF8CString();
    return text != nullptr ? std::string(text.get()) : std::string();
}

HVData HVString::DataContainingStringUsingEncoding(HVStringEncoding encoding) const {
    HVData data;
    if (m_Ref == nullptr) return data;
    CFDataRef bytes = CFStringCreateExternalRepresentation(
        kCFAllocatorDefault, asString(m_Ref), HVStringEncodingUtilites::ConvertToUnderlyingStringEncoding(encoding), 0);
    if (bytes != nullptr) data.AssignAndTakeOwnership(bytes);
    return data;
}

HVData HVString::DataContainingStringUsingEncodingAndLossByte(HVStringEncoding encoding, unsigned char lossByte) const {
    if (CanBeConvertedToEncoding(encoding)) return DataContainingStringUsingEncoding(encoding);
    HVData data;
    if (m_Ref == nullptr) return data;
    unsigned int platformEncoding = HVStringEncodingUtilites::ConvertToUnderlyingStringEncoding(encoding);
    // With loss byte 0 the unconvertible characters are marked with the
    // escape character and then dropped.
    const UInt8 escape = 27;
    CFDataRef bytes = CFStringCreateExternalRepresentation(kCFAllocatorDefault, asString(m_Ref), platformEncoding,
                                                           lossByte != 0 ? lossByte : escape);
    if (bytes == nullptr) return data;
    if (lossByte != 0) {
        data.AssignAndTakeOwnership(bytes);
        return data;
    }
    CFStringRef decoded = CFStringCreateFromExternalRepresentation(kCFAllocatorDefault, bytes, platformEncoding);
    CFRelease(bytes);
    if (decoded == nullptr) return data;
    std::u16string kept;
    for (CFIndex i = 0, length = CFStringGetLength(decoded); i < length; ++i) {
        UniChar unit = CFStringGetCharacterAtIndex(decoded, i);
        if (unit != escape) kept.push_back(unit);
    }
    CFRelease(decoded);
    HVString text;
    if (!kept.empty()) text.AssignUnderlyingStringAndTakeOwnership(createFromUnits(kept.data(), kept.size()));
    return text.DataContainingStringUsingEncoding(encoding);
}

HVData HVString::DataContainingUTF8String() const { return DataContainingStringUsingEncoding(HVUTF8StringEncoding); }
HVData HVString::DataContainingUTF16String() const { return DataContainingStringUsingEncoding(HVUTF16StringEncoding); }
HVData HVString::DataContainingASCIIString() const { return DataContainingStringUsingEncoding(HVASCIIStringEncoding); }
HVData HVString::DataContainingMacOSRomanString() const {
    return DataContainingStringUsingEncoding(HVMacOSRomanStringEncoding);
}
HVData HVString::DataContainingWindowsLatin1String() const {
    return DataContainingStringUsingEncoding(HVWindowsLatin1StringEncoding);
}

HVData HVString::DataContainingCStringUsingEncoding(HVStringEncoding encoding) const {
    HVData text = DataContainingStringUsingEncoding(encoding);
    CFMutableDataRef bytes = CFDataCreateMutableCopy(kCFAllocatorDefault, 0, static_cast<CFDataRef>(text.Ref()));
    if (bytes == nullptr) return HVData();
    const UInt8 terminator[2] = {0, 0};
    CFDataAppendBytes(bytes, terminator, encoding == HVUTF16StringEncoding ? 2 : 1);
    HVData data;
    data.AssignAndTakeOwnership(bytes);
    return data;
}

HVData HVString::DataContainingWindowsLatin1CString() const {
    return DataContainingCStringUsingEncoding(HVWindowsLatin1StringEncoding);
}

HVData HVString::DataContainingUTF16CString() const { return DataContainingCStringUsingEncoding(HVUTF16StringEncoding); }

bool HVString::CanBeConvertedToEncoding(HVStringEncoding encoding) const {
    if (m_Ref == nullptr) return false;
    CFStringRef string = asString(m_Ref);
    CFIndex length = CFStringGetLength(string);
    CFIndex converted = CFStringGetBytes(string, CFRangeMake(0, length),
                                         HVStringEncodingUtilites::ConvertToUnderlyingStringEncoding(encoding), 0,
                                         false, nullptr, 0, nullptr);
    return converted == length;
}

HVString::operator const void*() const { return m_Ref; }

HVString::operator const __CFString*() const { return asString(m_Ref); }

// Length and characters

unsigned long long HVString::Length() const {
    if (m_Ref == nullptr) return 0;
    return static_cast<unsigned long long>(static_cast<long long>(int32_t(CFStringGetLength(asString(m_Ref)))));
}

bool HVString::IsEmpty() const { return Length() == 0; }

wchar_t HVString::CharacterAtIndex(unsigned long long index) const {
    if (m_Ref == nullptr || index >= Length()) {
        throw HVException::ExceptionWithNameAndReason(HVExceptionName::RangeException(),
                                                      "HVString::CharacterAtIndex Index is out of range.");
    }
    return wchar_t(CFStringGetCharacterAtIndex(asString(m_Ref), CFIndex(index)));
}

wchar_t HVString::operator[](unsigned long long index) const {
    return wchar_t(CFStringGetCharacterAtIndex(asString(m_Ref), CFIndex(index)));
}

wchar_t HVString::operator[](int index) const {
    return wchar_t(CFStringGetCharacterAtIndex(asString(m_Ref), CFIndex(index)));
}

// Equality and order

bool HVString::IsEqualToString(const HVString& other) const {
    if (IsEmpty()) return other.IsEmpty();
    if (other.m_Ref == nullptr) return false;
    return CFStringCompare(asString(m_Ref), asString(other.m_Ref), 0) == kCFCompareEqualTo;
}

bool HVString::IsEqualToString(const char* other) const { return IsEqualToString(HVString(other)); }
bool HVString::IsEqualToString(const unsigned char* other) const { return IsEqualToString(HVString(other)); }
bool HVString::IsEqualToString(const wchar_t* other) const { return IsEqualToString(HVString(other)); }
bool HVString::IsEqualToString(const std::string& other) const { return IsEqualToString(HVString(other)); }
bool HVString::IsEqualToString(const unsigned int* other) const { return IsEqualToString(HVString(other)); }
bool HVString::IsEqualToString(const __CFString* other) const { return IsEqualToString(HVString(other)); }

bool HVString::operator==(const HVString& other) const { return IsEqualToString(other); }
bool HVString::operator!=(const HVString& other) const { return !IsEqualToString(other); }
bool HVString::operator==(const char* other) const { return IsEqualToString(other); }
bool HVString::operator!=(const char* other) const { return !IsEqualToString(other); }
bool HVString::operator==(const unsigned char* other) const { return IsEqualToString(other); }
bool HVString::operator!=(const unsigned char* other) const { return !IsEqualToString(other); }
bool HVString::operator==(const wchar_t* other) const { return IsEqualToString(other); }
bool HVString::operator!=(const wchar_t* other) const { return !IsEqualToString(other); }
bool HVString::operator==(const std::string& other) const { return IsEqualToString(other); }
bool HVString::operator!=(const std::string& other) const { return !IsEqualToString(other); }
bool HVString::operator==(const unsigned int* other) const { return IsEqualToString(other); }
bool HVString::operator!=(const unsigned int* other) const { return !IsEqualToString(other); }
bool HVString::operator==(const __CFString* other) const { return IsEqualToString(other); }
bool HVString::operator!=(const __CFString* other) const { return !IsEqualToString(other); }

bool HVString::operator<(const HVString& other) const { return unicodeOf(*this).compare(unicodeOf(other)) == 1; }

bool HVString::operator>(const HVString& other) const { return unicodeOf(*this).compare(unicodeOf(other)) == -1; }

HVString HVUtilities::CreateUUID() {
    std::string text = halvane::os::CreateSequentialUUIDString();
    return text.empty() ? HVString() : HVString(text);
}

// Text form

HVString HVString::Serialize() { return StringWithFormat("\"%@\"", m_Ref); }

void HVString::Deserialize(const HVString& text) {
    HVString source = text;  // text may be this very string
    Empty();
    unsigned long long length = source.Length();
    if (length < 2 || source[0ull] != L'"' || source[length - 1] != L'"') return;
    AssignUnderlyingStringAndTakeOwnership(CFStringCreateWithSubstring(kCFAllocatorDefault, asString(source.Ref()),
                                                                       CFRangeMake(1, CFIndex(length - 2))));
}

bool HVString::IsNativelyAllowedInPropertyList() const { return true; }
