// The property-list entry points: validity, writing, reading (XML first,
// then the old OpenStep form) and deep copies, with the errors they return.
#include "CFPropertyListInternal.h"
#include "CFStringInternal.h"

#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFError.h>
#include <CoreFoundation/CFPropertyList.h>

#include <cstring>
#include <string>

using namespace halvane::detail;

namespace halvane::detail {

namespace {

// The writer's buffer lives on between calls so that writing a document
// of a size written before does not grow it again; an unusually large one
// is given back.
constexpr size_t kKeptWriterCapacity = size_t(4) << 20;

CFStringRef newUTF8String(const std::string& text) { return TextBuilder().utf8(text).create(); }

// A new error of NSCocoaErrorDomain with the message under
// NSDebugDescription, and the OpenStep reader's error when there is one.
CFErrorRef newPropertyListError(CFIndex code, const std::string& message, CFErrorRef oldStyleError = nullptr) {
    CFStringRef text = newUTF8String(message);
    const void* keys[2] = {kCFErrorDebugDescriptionKey, CFSTR("kCFPropertyListOldStyleParsingError")};
    const void* values[2] = {text, oldStyleError};
    CFErrorRef error =
        CFErrorCreateWithUserInfoKeysAndValues(nullptr, kCFErrorDomainCocoa, code, keys, values, oldStyleError ? 2 : 1);
    CFRelease(text);
    return error;
}

void setError(CFErrorRef* out, CFErrorRef error) {
    if (out != nullptr) {
        *out = error;
    } else if (error != nullptr) {
        CFRelease(error);
    }
}

CFOptionFlags mutabilityFrom(CFOptionFlags options) {
    if (options == kCFPropertyListImmutable || options == kCFPropertyListMutableContainersAndLeaves) return options;
    return kCFPropertyListMutableContainers;
}

bool isKnownFormat(CFPropertyListFormat format) {
    return format == kCFPropertyListOpenStepFormat || format == kCFPropertyListXMLFormat_v1_0 ||
           format == kCFPropertyListBinaryFormat_v1_0;
}

TraversalRules rulesFor(CFPropertyListFormat format) {
    TraversalRules rules;
    rules.openStepTypesOnly = format == kCFPropertyListOpenStepFormat;
    rules.limitReferences = format != kCFPropertyListBinaryFormat_v1_0;
    return rules;
}

// Sees the list without doing anything: the walk does the checking.
struct CheckOnly {
    bool leaf(CFTypeRef, PlistKind, size_t) { return true; }
    void beginContainer(CFTypeRef, PlistKind, CFIndex, size_t) {}
    void key(CFStringRef, size_t) {}
    void endContainer(CFTypeRef, PlistKind, CFIndex, size_t) {}
};

// Makes the copy as the walk goes: leaves at once, each container when its
// last element has been copied.
class DeepCopier {
public:
    DeepCopier(CFAllocatorRef allocator, CFOptionFlags mutability) : builder_(allocator, mutability) {}

    bool leaf(CFTypeRef object, PlistKind kind, size_t) {
        CFAllocatorRef allocator = builder_.allocator();
        bool mutableLeaves = builder_.mutability() == kCFPropertyListMutableContainersAndLeaves;
        switch (kind) {
            case PlistKind::kString: {
                auto s = static_cast<CFStringRef>(object);
                return keep(mutableLeaves ? CFStringCreateMutableCopy(allocator, 0, s) : CFStringCreateCopy(allocator, s));
            }
            case PlistKind::kData: {
                auto d = static_cast<CFDataRef>(object);
                return keep(mutableLeaves ? CFDataCreateMutableCopy(allocator, 0, d) : CFDataCreateCopy(allocator, d));
            }
            case PlistKind::kNumber: {
                auto n = static_cast<CFNumberRef>(object);
                CFNumberType type = CFNumberGetType(n);
                alignas(8) unsigned char value[16] = {};
                CFNumberGetValue(n, type, value);
                return keep(CFNumberCreate(allocator, type, value));
            }
            case PlistKind::kDate:
                return keep(CFDateCreate(allocator, CFDateGetAbsoluteTime(static_cast<CFDateRef>(object))));
            case PlistKind::kBoolean:
                builder_.pushBoolean(object == kCFBooleanTrue);
                return true;
            default:
                return false;
        }
    }

    void beginContainer(CFTypeRef, PlistKind, CFIndex, size_t) { marks_.push_back(builder_.size()); }

    void key(CFStringRef key, size_t) { keep(CFStringCreateCopy(builder_.allocator(), key)); }

    void endContainer(CFTypeRef, PlistKind kind, CFIndex, size_t) {
        size_t mark = marks_.back();
        marks_.pop_back();
        if (failed_) return;
        bool made = kind == PlistKind::kArray ? builder_.makeArray(mark) : builder_.makeDictionary(mark);
        if (!made) failed_ = true;
    }

    // The copy (+1), or NULL when something could not be made.
    CFTypeRef take() { return failed_ ? nullptr : builder_.take(); }

private:
    bool keep(CFTypeRef copy) {
        if (!builder_.push(copy)) failed_ = true;
        return !failed_;
    }

    PropertyListBuilder builder_;
    std::vector<size_t> marks_;
    bool failed_ = false;
};

}  // namespace

}  // namespace halvane::detail

Boolean CFPropertyListIsValid(CFPropertyListRef plist, CFPropertyListFormat format) {
    if (plist == nullptr) {
        reportMisuse("CFPropertyList: CFPropertyListIsValid(): NULL property list");
        return false;
    }
    if (!isKnownFormat(format)) return false;
    CheckOnly visitor;
    return !traversePropertyList(plist, rulesFor(format), visitor);
}

CFDataRef CFPropertyListCreateData(CFAllocatorRef allocator, CFPropertyListRef propertyList,
                                   CFPropertyListFormat format, CFOptionFlags, CFErrorRef* error) {
    if (error != nullptr) *error = nullptr;
    if (propertyList == nullptr) {
        reportMisuse("CFPropertyList: CFPropertyListCreateData(): NULL property list");
        return nullptr;
    }
    if (format == kCFPropertyListBinaryFormat_v1_0) {
        // Documented limitation: only the XML format is written here.
        setError(error, newPropertyListError(kCFPropertyListWriteStreamError,
                                             "Property list format kCFPropertyListBinaryFormat_v1_0 is not supported "
                                             "for writing on this platform"));
        return nullptr;
    }
    if (format == kCFPropertyListOpenStepFormat) {
        setError(error, newPropertyListError(kCFPropertyListWriteStreamError,
                                             "Property list format kCFPropertyListOpenStepFormat not supported for "
                                             "writing"));
        return nullptr;
    }
    if (format != kCFPropertyListXMLFormat_v1_0) {
        setError(error, newPropertyListError(kCFPropertyListWriteStreamError, "Unknown format option"));
        return nullptr;
    }
    thread_local std::string buffer;
    buffer.clear();
    PlistIssue issue = writeXMLPropertyList(propertyList, buffer);
    CFDataRef data = nullptr;
    if (issue) {
        setError(error, newPropertyListError(kCFPropertyListWriteStreamError,
                                             "Property list invalid for format: " + std::to_string(format) + " (" +
                                                 plistIssueText(issue) + ")"));
    } else {
        data = CFDataCreate(allocator, reinterpret_cast<const UInt8*>(buffer.data()), CFIndex(buffer.size()));
    }
    if (buffer.capacity() > kKeptWriterCapacity) std::string().swap(buffer);
    return data;
}

CFDataRef CFPropertyListCreateXMLData(CFAllocatorRef allocator, CFPropertyListRef propertyList) {
    return CFPropertyListCreateData(allocator, propertyList, kCFPropertyListXMLFormat_v1_0, 0, nullptr);
}

CFPropertyListRef CFPropertyListCreateWithData(CFAllocatorRef allocator, CFDataRef data, CFOptionFlags options,
                                               CFPropertyListFormat* format, CFErrorRef* error) {
    if (error != nullptr) *error = nullptr;
    if (data != nullptr && !isA(data, kCFDataTypeID)) {
        reportMisuse("CFPropertyList: CFPropertyListCreateWithData(): the data argument is not a CFData");
        data = nullptr;
    }
    const uint8_t* bytes = data != nullptr ? CFDataGetBytePtr(data) : nullptr;
    size_t length = data != nullptr ? size_t(CFDataGetLength(data)) : 0;
    if (length == 0) {
        setError(error, newPropertyListError(kCFPropertyListReadCorruptError,
                                             "Cannot parse a NULL or zero-length data"));
        return nullptr;
    }
    if (length > kPropertyListMaxDocumentBytes) {
        setError(error, newPropertyListError(kCFPropertyListReadCorruptError,
                                             "Cannot parse property list data of more than " +
                                                 std::to_string(kPropertyListMaxDocumentBytes) + " bytes"));
        return nullptr;
    }
    if (length >= 8 && std::memcmp(bytes, "bplist00", 8) == 0) {
        // Documented limitation: binary property lists are not read here.
        setError(error, newPropertyListError(kCFPropertyListReadCorruptError,
                                             "Cannot parse a binary property list: the binary format is not "
                                             "supported on this platform"));
        return nullptr;
    }
    CFOptionFlags mutability = mutabilityFrom(options);
    ParseError xmlError;
    std::string converted;
    const char* text = nullptr;
    size_t textLength = 0;
    if (!propertyListTextAsUTF8(bytes, length, converted, text, textLength, xmlError)) {
        setError(error, newPropertyListError(kCFPropertyListReadCorruptError, xmlError.message));
        return nullptr;
    }
    {
        PropertyListBuilder builder(allocator, mutability);
        if (readXMLPropertyList(text, textLength, builder, xmlError)) {
            if (format != nullptr) *format = kCFPropertyListXMLFormat_v1_0;
            return builder.take();
        }
    }
    // Text that is not XML may still be an old-style property list.
    PropertyListBuilder builder(allocator, mutability);
    ParseError openStepError;
    if (readOpenStepPropertyList(text, textLength, builder, openStepError)) {
        if (format != nullptr) *format = kCFPropertyListOpenStepFormat;
        return builder.take();
    }
    if (error != nullptr) {
        CFErrorRef oldStyleError = newPropertyListError(kCFPropertyListReadCorruptError, openStepError.message);
        *error = newPropertyListError(kCFPropertyListReadCorruptError, xmlError.message, oldStyleError);
        CFRelease(oldStyleError);
    }
    return nullptr;
}

CFPropertyListRef CFPropertyListCreateFromXMLData(CFAllocatorRef allocator, CFDataRef xmlData,
                                                  CFOptionFlags mutabilityOption, CFStringRef* errorString) {
    CFErrorRef error = nullptr;
    CFPropertyListRef plist = CFPropertyListCreateWithData(allocator, xmlData, mutabilityOption, nullptr, &error);
    if (errorString != nullptr) *errorString = nullptr;
    if (error != nullptr) {
        if (errorString != nullptr) {
            CFDictionaryRef userInfo = CFErrorCopyUserInfo(error);
            auto message = static_cast<CFStringRef>(CFDictionaryGetValue(userInfo, kCFErrorDebugDescriptionKey));
            *errorString = message != nullptr ? CFStringCreateCopy(nullptr, message) : nullptr;
            CFRelease(userInfo);
        }
        CFRelease(error);
    }
    return plist;
}

CFPropertyListRef CFPropertyListCreateDeepCopy(CFAllocatorRef allocator, CFPropertyListRef propertyList,
                                               CFOptionFlags mutabilityOption) {
    if (propertyList == nullptr) {
        reportMisuse("CFPropertyList: CFPropertyListCreateDeepCopy(): NULL property list");
        return nullptr;
    }
    DeepCopier copier(allocator, mutabilityFrom(mutabilityOption));
    if (traversePropertyList(propertyList, rulesFor(kCFPropertyListBinaryFormat_v1_0), copier)) return nullptr;
    return copier.take();
}
