// HVString: the library's immutable text value, over a CoreFoundation
// string. Lengths and indices count UTF-16 units.
#ifndef HALVANE_TEXT_HVSTRING_H
#define HALVANE_TEXT_HVSTRING_H

#include <halvane/core/HVObject.h>
#include <halvane/text/HVCompare.h>
#include <halvane/text/HVRange.h>

#include <cstdarg>
#include <memory>
#include <string>

class HVArray;
class HVCharacterSet;
class HVData;
struct __CFString;

// The encodings the library converts text to and from.
enum HVStringEncoding {
    HVUTF8StringEncoding = 0,
    HVUTF16StringEncoding = 1,  // little-endian
    HVMacOSRomanStringEncoding = 2,
    HVWindowsLatin1StringEncoding = 3,
    HVISOLatin1StringEncoding = 4,
    HVASCIIStringEncoding = 5,
};

class HV_EXPORT HVStringEncodingUtilites {
public:
    // The CoreFoundation encoding of an HVStringEncoding; an unknown value is
    // logged ("Unhandled string encoding") and taken as UTF-8.
    static unsigned int ConvertToUnderlyingStringEncoding(HVStringEncoding encoding);
};

class HV_EXPORT HVString : public HVObject {
public:
    HVString();
    HVString(const HVString& other);
    HVString(const void* const& ref);
    HVString(const char* text);
    HVString(const unsigned char* text);
    HVString(const wchar_t* text);
    HVString(const char16_t* text);
    HVString(std::string text);
    // The 32-bit text is not read: any non-null pointer gives the empty
    // string, a null pointer a null string. Kept so: callers rely on it.
    HVString(const unsigned int* text);
    HVString(const HVData& data);
    HVString(const HVObject& object);
    HVString(const __CFString* ref);

    static HVClassType ClassType();
    static const void* const& SharedEmptyObject();
    static HVString SharedEmptyString();
    static HVString SharedNullString();

    static HVString StringFromId(const void* const& ref);
    static HVString StringFromObject(const HVObject& object);

    static HVString StringWithFormat(HVString format, ...);
    static HVString StringWithFormatAndArguments(const HVString& format, va_list arguments);
    static HVString StringWithCStringUsingEncoding(const char* text, HVStringEncoding encoding);
    static HVString StringWithCStringUsingEncoding(const std::string& text, HVStringEncoding encoding);
    static HVString StringWithBytesOfLengthUsingEncoding(const void* bytes, unsigned long long length,
                                                         HVStringEncoding encoding);
    static HVString StringWithDataUsingEncoding(const HVData& data, HVStringEncoding encoding);
    static HVString StringWithContentsOfFileUsingEncoding(const HVString& path, HVStringEncoding encoding);
    static HVString StringWithUnicodeCharacter(wchar_t character);
    static HVString StringWithUnicodeCharacter(unsigned int character);
    static HVString StringWithUnicodeEscapeSequence(const char* text);
    static HVString StringWithUnicodeEscapeSequence(const std::string& text);
    static HVString StringWithUnicodeEscapeSequence(const HVString& text);
    static HVString StringWithUnicodeEscapeSequence(const wchar_t* text);
    static wchar_t UnicodeEscapeSequenceToUniChar(const HVString& text);

    void InitWithString(const HVString& other);
    void InitWithFormat(HVString format, ...);
    void InitWithFormatAndArguments(const HVString& format, va_list arguments);
    void InitWithCStringUsingEncoding(const char* text, HVStringEncoding encoding);
    void InitWithCStringUsingEncoding(const unsigned char* text, HVStringEncoding encoding);
    void InitWithCStringUsingEncoding(const wchar_t* text, HVStringEncoding encoding);
    void InitWithCStringUsingEncoding(const std::string& text, HVStringEncoding encoding);
    void InitWithBytesOfLengthUsingEncoding(const void* bytes, unsigned long long length, HVStringEncoding encoding);
    void InitWithDataUsingEncoding(const HVData& data, HVStringEncoding encoding);
    void InitWithContentsOfFileUsingEncoding(const HVString& path, HVStringEncoding encoding);
    void InitWithUnicodeCharacter(wchar_t character);
    void InitWithUnicodeCharacter(unsigned int character);
    void InitWithUnicodeEscapeSequence(const char* text);
    void InitWithUnicodeEscapeSequence(const std::string& text);
    void InitWithUnicodeEscapeSequence(const HVString& text);
    // Wraps the caller's units without copying: the buffer must outlive the
    // string. Escapes are not decoded.
    void InitWithUnicodeEscapeSequence(const wchar_t* text);
    void InitWithUnicodeEscapeSequence(const unsigned int* text);
    // Wraps a constant Windows Latin 1 text without copying; the text must
    // live for the rest of the process.
    void InitWithDefaultSingleByteConstantString(const char* text);

    HVString& operator=(const HVString& other);
    HVString& operator=(const char* text);
    HVString& operator=(const unsigned char* text);
    HVString& operator=(const std::string& text);
    HVString& operator=(const wchar_t* text);
    HVString& operator=(const char16_t* text);
    HVString& operator=(const unsigned int* text);
    HVString& operator=(const __CFString* ref);

    HVString& operator+=(const HVString& other);
    HVString& operator+=(const char* text);
    HVString& operator+=(const unsigned char* text);
    HVString& operator+=(const wchar_t* text);
    HVString& operator+=(const std::string& text);

    // Conversion out: new buffers holding the text and a terminating zero;
    // null when the string is null or converts to nothing.
    std::unique_ptr<const char[]> UTF8CString() const;
    std::unique_ptr<const char[]> DefaultOSSingleByteCString() const;
    std::unique_ptr<const char[]> CStringUsingEncoding(HVStringEncoding encoding) const;
    std::unique_ptr<const char16_t[]> UTF16CString() const;
    operator std::string() const;

    HVData DataContainingStringUsingEncoding(HVStringEncoding encoding) const;
    HVData DataContainingStringUsingEncodingAndLossByte(HVStringEncoding encoding, unsigned char lossByte) const;
    HVData DataContainingUTF8String() const;
    HVData DataContainingUTF16String() const;
    HVData DataContainingASCIIString() const;
    HVData DataContainingMacOSRomanString() const;
    HVData DataContainingWindowsLatin1String() const;
    HVData DataContainingCStringUsingEncoding(HVStringEncoding encoding) const;
    HVData DataContainingWindowsLatin1CString() const;
    HVData DataContainingUTF16CString() const;
    bool CanBeConvertedToEncoding(HVStringEncoding encoding) const;

    operator const void*() const;
    operator const __CFString*() const;

    unsigned long long Length() const;
    bool IsEmpty() const override;
    // Throws HVException (range) when the index is not below the length.
    wchar_t CharacterAtIndex(unsigned long long index) const;
    // The unit at index, unchecked.
    wchar_t operator[](unsigned long long index) const;
    wchar_t operator[](int index) const;

    // Searching. Every search of an empty text, or for an empty one, finds
    // nothing (the not-found location with length 0). Ranges reach the
    // platform cut to 32 bits. A case-insensitive search compares the
    // upper-cased texts, so a match has the length of what was sought.
    HVRange RangeOfString(const HVString& target) const;
    HVRange RangeOfStringWithOptions(const HVString& target, HVStringCompareOptions options) const;
    HVRange RangeOfStringInRange(const HVString& target, const HVRange& range) const;
    HVRange RangeOfStringWithOptionsInRange(const HVString& target, HVStringCompareOptions options,
                                            const HVRange& range) const;
    HVRange RangeOfCharacterFromSet(const HVCharacterSet& set) const;
    HVRange RangeOfCharacterFromSetWithOptions(const HVCharacterSet& set, HVStringCompareOptions options) const;
    HVRange RangeOfCharacterFromSetInRange(const HVCharacterSet& set, const HVRange& range) const;
    HVRange RangeOfCharacterFromSetWithOptionsInRange(const HVCharacterSet& set, HVStringCompareOptions options,
                                                      const HVRange& range) const;
    // False for an empty prefix or suffix.
    bool HasPrefix(const HVString& prefix) const;
    bool HasSuffix(const HVString& suffix) const;

    // Substrings. An empty receiver or range gives the empty string; a range
    // that does not lie inside the text throws HVException (range).
    HVString SubstringWithRange(HVRange range) const;
    HVString SubstringToIndex(unsigned long long index) const;
    HVString SubstringFromIndex(unsigned long long index) const;

    // Splitting and replacing. Adjacent separators give empty pieces; a
    // text without the separator gives a one-element array.
    HVArray ComponentsSeparatedByString(const HVString& separator) const;
    HVArray ComponentsSeparatedByCharactersInSet(const HVCharacterSet& set) const;
    HVString StringByReplacingOccurrencesOfStringWithString(const HVString& target, const HVString& replacement) const;

    // Case. Upper- and lower-casing map each character by itself in the
    // user's locale, so the text keeps its length.
    HVString UppercaseString() const;
    HVString LowercaseString() const;
    // Each word that begins with one of a to z gets a capital first letter
    // and the rest lower-cased; other words stay as they are.
    HVString CapitalizedString() const;

    // Trimming. With the whitespace set, every kind of space and line end
    // is trimmed; with any other set, the members of the set.
    HVString StringByTrimmingCharactersInSet(const HVCharacterSet& set) const;

    // Paths, as text on every platform: "/" and "\" both separate
    // components ("/" is looked for first), a drive root such as "C:\" is
    // kept whole, and a new separator is the one the text already uses.
    HVString StringByAppendingPathComponent(const HVString& component) const;
    HVString StringByAppendingPathExtension(const HVString& extension) const;
    HVString StringByDeletingLastPathComponent() const;
    HVString StringByDeletingPathExtension() const;
    HVString LastPathComponent() const;
    HVString PathExtension() const;
    HVString StringByExpandingTildeInPath() const;

    // Percent escapes in UTF-8 (or the given encoding). Adding escapes
    // ":?=,!$&'()*+;[]@#" besides what URLs never allow, or the given
    // characters instead of that list.
    HVString StringByAddingPercentEscapes() const;
    HVString StringByAddingPercentEscapesSpecifyingEscapeCharacters(const HVString& characters) const;
    HVString StringByReplacingPercentEscapes() const;
    HVString StringByReplacingPercentEscapesUsingEncoding(HVStringEncoding encoding) const;

    // Numbers read from the text; 0 (false) for an empty text. The integer
    // forms are 32-bit readings (also the 64-bit ones); LongLongValue and
    // ULongLongValue read the text as a double and truncate it.
    int IntValue() const;
    unsigned int UnsignedIntValue() const;
    long long IntegerValue() const;
    unsigned long long UIntegerValue() const;
    long long LongLongValue() const;
    unsigned long long ULongLongValue() const;
    double DoubleValue() const;
    float FloatValue() const;
    // True for a text beginning with Y, y, T or t, or holding a non-zero
    // integer.
    bool BoolValue() const;

    // Comparison: by UTF-16 units, by case folding, or collated for the
    // user's current locale.
    HVComparisonResult Compare(const HVString& other) const;
    HVComparisonResult CompareWithOptions(const HVString& other, HVStringCompareOptions options) const;
    HVComparisonResult CaseInsensitiveCompare(const HVString& other) const;
    bool IsEqualToStringIgnoringCase(const HVString& other) const;
    HVComparisonResult LocalizedCompare(const HVString& other) const;
    HVComparisonResult LocalizedCaseInsensitiveCompare(const HVString& other) const;

    bool IsEqualToString(const HVString& other) const;
    bool IsEqualToString(const char* other) const;
    bool IsEqualToString(const unsigned char* other) const;
    bool IsEqualToString(const wchar_t* other) const;
    bool IsEqualToString(const std::string& other) const;
    bool IsEqualToString(const unsigned int* other) const;
    bool IsEqualToString(const __CFString* other) const;

    bool operator==(const HVString& other) const;
    bool operator!=(const HVString& other) const;
    bool operator==(const char* other) const;
    bool operator!=(const char* other) const;
    bool operator==(const unsigned char* other) const;
    bool operator!=(const unsigned char* other) const;
    bool operator==(const wchar_t* other) const;
    bool operator!=(const wchar_t* other) const;
    bool operator==(const std::string& other) const;
    bool operator!=(const std::string& other) const;
    bool operator==(const unsigned int* other) const;
    bool operator!=(const unsigned int* other) const;
    bool operator==(const __CFString* other) const;
    bool operator!=(const __CFString* other) const;

    // Both compare by UTF-16 code units and are inverted with respect to
    // their names: a < b is true when a is the larger string. Kept so:
    // callers rely on it.
    bool operator<(const HVString& other) const;
    bool operator>(const HVString& other) const;

protected:
    void AssignUnderlyingString(const void* ref);
    void AssignUnderlyingStringAndTakeOwnership(const void* ref);

public:
    // The text between double quotes; inner quotes are not escaped.
    HVString Serialize() override;
    // Takes what lies between the first and the last character when both
    // are double quotes; any other text gives the empty string.
    void Deserialize(const HVString& text) override;
    bool IsNativelyAllowedInPropertyList() const override;
};

inline HVString::HVString(const HVString& other) : HVObject(other, HVStringClassType) {}

inline HVString::HVString(const void* const& ref) : HVObject(ref, HVStringClassType) {}

HV_EXPORT HVString operator+(const HVString& left, const HVString& right);
HV_EXPORT HVString operator+(const HVString& left, const char* right);
HV_EXPORT HVString operator+(const char* left, const HVString& right);
HV_EXPORT HVString operator+(const HVString& left, const unsigned char* right);
HV_EXPORT HVString operator+(const unsigned char* left, const HVString& right);
HV_EXPORT HVString operator+(const HVString& left, const wchar_t* right);
HV_EXPORT HVString operator+(const wchar_t* left, const HVString& right);
HV_EXPORT HVString operator+(const HVString& left, const std::string& right);
HV_EXPORT HVString operator+(const std::string& left, const HVString& right);
HV_EXPORT HVString operator+(const HVString& left, const __CFString* right);
HV_EXPORT HVString operator+(const __CFString* left, const HVString& right);

class HV_EXPORT HVUtilities {
public:
    // A new sequential UUID in its 36-character text form; the empty string
    // when none can be made.
    static HVString CreateUUID();
};

#endif  // HALVANE_TEXT_HVSTRING_H
