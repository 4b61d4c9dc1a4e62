// What the property-list entry points, the XML writer, the XML and
// OpenStep readers and the deep copy share.
#ifndef HALVANE_CF_PROPERTY_LIST_INTERNAL_H
#define HALVANE_CF_PROPERTY_LIST_INTERNAL_H

#include "CFPropertyListTraversal.h"

#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFPropertyList.h>

#include <string>
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

// Reads an old-style (OpenStep) property list from UTF-8 text into builder.
bool readOpenStepPropertyList(const char* text, size_t length, PropertyListBuilder& builder, ParseError& error);

// Lines as the readers count them: LF, CR and CRLF each end one.
size_t countLineBreaks(const char* begin, const char* end);

}  // namespace halvane::detail

#endif  // HALVANE_CF_PROPERTY_LIST_INTERNAL_H
