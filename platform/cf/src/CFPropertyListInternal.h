// What the property-list entry points, the XML writer, the XML and
// OpenStep readers and the deep copy share.
#ifndef HALVANE_CF_PROPERTY_LIST_INTERNAL_H
#define HALVANE_CF_PROPERTY_LIST_INTERNAL_H

#include "CFPropertyListTraversal.h"

#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFPropertyList.h>

#include <string>
#include <string_view>
#include <vector>

namespace halvane::detail {

// Larger documents are refused before anything is parsed, so that hostile
// input cannot make the reader exhaust memory.
inline constexpr size_t kPropertyListMaxDocumentBytes = size_t(256) << 20;

// Makes the objects a reader produces, mutable or not as the option says,
// and keeps those not yet placed in a container on a stack. Identical
// immutable strings of one document are made once and shared.
class PropertyListBuilder {
public:
    PropertyListBuilder(CFAllocatorRef allocator, CFOptionFlags mutability);
    PropertyListBuilder(const PropertyListBuilder&) = delete;
    PropertyListBuilder& operator=(const PropertyListBuilder&) = delete;
    ~PropertyListBuilder();  // releases whatever is still on the stack

    size_t size() const { return stack_.size(); }
    CFOptionFlags mutability() const { return mutability_; }
    CFAllocatorRef allocator() const { return allocator_; }

    // Each push adds one object and returns false when it could not be made
    // (text that is not UTF-8, or no memory); the stack is unchanged then.
    // Keys are always immutable strings.
    bool pushString(const char* utf8, size_t length, bool isKey);
    bool pushData(const uint8_t* bytes, size_t length);
    bool pushNumber(CFNumberType type, const void* value);
    bool pushDate(CFAbsoluteTime time);
    void pushBoolean(bool value);
    // Takes over a reference made elsewhere (NULL: false).
    bool push(CFTypeRef object);

    // Replace the objects from mark to the top by one container holding them.
    // Dictionaries take them as key, value, key, value...; a repeated key
    // keeps its last value.
    bool makeArray(size_t mark);
    bool makeDictionary(size_t mark);

    // The top object (+1), taken off the stack.
    CFTypeRef take();

private:
    struct InternSlot {
        uint64_t hash;
        uint32_t offset;  // of the text in internText_
        uint32_t length;
        CFStringRef string;  // NULL: empty slot
    };
    CFStringRef internedString(const char* utf8, size_t length);
    void growInternTable();
    bool isMutableContainers() const { return mutability_ != kCFPropertyListImmutable; }

    CFAllocatorRef allocator_;
    CFOptionFlags mutability_;
    std::vector<CFTypeRef> stack_;
    std::vector<const void*> scratchKeys_;
    std::vector<const void*> scratchValues_;
    std::vector<InternSlot> internSlots_;  // a power of two in size, at most half full
    size_t internUsed_ = 0;
    std::string internText_;
};

// The XML text of plist appended to out; on a problem, out holds part of
// the text and the issue says why.
PlistIssue writeXMLPropertyList(CFPropertyListRef plist, std::string& out);

// Why a reader refused a document; message is UTF-8.
struct ParseError {
    std::string message;
};

// Reads the XML property list in text (UTF-8) into builder, which then
// holds the one object read on top. false with error filled when the text
// is not one; whatever the builder holds then is for the caller to discard.
bool readXMLPropertyList(const char* text, size_t length, PropertyListBuilder& builder, ParseError& error);

// The text of data as UTF-8, decoded as the XML reader sees it (byte-order
// marks and encoding declaration); false with error filled when the
// encoding is not known or the text cannot be converted.
bool propertyListTextAsUTF8(const uint8_t* bytes, size_t length, std::string& storage, const char*& text,
                            size_t& textLength, ParseError& error);

// The scalars of the XML form. An <integer> is optional whitespace, an
// optional sign, optional whitespace, then decimal digits or 0x and hex
// digits, in [-2^63, 2^64 - 1].
enum class IntegerProblem { kNone, kEmpty, kIncomplete, kHexDigitInDecimal, kUnknownCharacter, kOverflow, kUnderflow };
struct ParsedInteger {
    IntegerProblem problem = IntegerProblem::kNone;
    size_t position = 0;  // of the character at fault
    bool negative = false;
    uint64_t magnitude = 0;
};
ParsedInteger parseXMLInteger(std::string_view text);
// nan, inf and infinity (any case, optionally signed), or leading
// whitespace and a decimal number that takes the rest of the text.
bool parseXMLReal(std::string_view text, double& value);
// [-]Y...Y-MM-DDTHH:MM:SSZ exactly, in UTC; fields are not range-checked.
// Only times that can be written back are accepted.
bool parseXMLDate(std::string_view text, CFAbsoluteTime& time);

// Reads an old-style (OpenStep) property list from UTF-8 text into builder.
bool readOpenStepPropertyList(const char* text, size_t length, PropertyListBuilder& builder, ParseError& error);

// Lines as the readers count them: LF, CR and CRLF each end one.
size_t countLineBreaks(const char* begin, const char* end);

inline bool isXMLSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

// Skips the prolog of an XML document (whitespace, processing instructions,
// comments, DOCTYPE declarations without an internal subset); offset and
// line receive where the first element starts.
bool skipProlog(const char* text, size_t length, size_t& offset, size_t& line, ParseError& error);

// Expat refuses characters that property-list strings have always carried
// (C0 controls other than TAB, LF and CR; U+FFFE; U+FFFF). Documents that
// hold any are handed to it with stand-ins from U+FDD0...U+FDEF, which the
// reader turns back in the text it reads.
// 0: nothing to replace; 1: stand-ins needed; -1: the text also holds the
// stand-ins themselves, so the replacement could not be undone.
int refusedCharacters(const char* text, size_t length);
std::string withStandIns(const char* text, size_t length);
void restoreRefused(std::string& text);

// The character at p as UTF-8 for a message: a stand-in as what it stands
// for, a byte that starts no valid sequence as U+FFFD.
std::string characterAt(const char* p, size_t available);
// The code point of the one character that UTF-8 text holds.
uint32_t codePointOf(const std::string& character);

}  // namespace halvane::detail

#endif  // HALVANE_CF_PROPERTY_LIST_INTERNAL_H
