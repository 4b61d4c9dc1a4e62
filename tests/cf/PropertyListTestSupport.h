// Helpers shared by the property-list tests: documents in and out as text,
// the messages of the errors, and small objects.
#ifndef HALVANE_TESTS_CF_PROPERTY_LIST_SUPPORT_H
#define HALVANE_TESTS_CF_PROPERTY_LIST_SUPPORT_H

#include "CFTestSupport.h"
#include "MisuseReports.h"

#include <CoreFoundation/CoreFoundation.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

// A namespace of their own: other suites have helpers of the same names.
namespace cftest::plist {

inline constexpr std::string_view kDocumentHead =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n";
inline constexpr std::string_view kDocumentTail = "</plist>\n";

// A whole document as the writer lays it out around body.
inline std::string document(std::string_view body) {
    return std::string(kDocumentHead) + std::string(body) + std::string(kDocumentTail);
}

inline Owned<CFDataRef> bytes(std::string_view text) {
    return own(CFDataCreate(nullptr, reinterpret_cast<const UInt8*>(text.data()), CFIndex(text.size())));
}

inline std::string textOf(CFDataRef data) {
    if (data == nullptr) return "(no data)";
    return std::string(reinterpret_cast<const char*>(CFDataGetBytePtr(data)), size_t(CFDataGetLength(data)));
}

// The UTF-8 text of a string (for messages that may hold any character).
inline std::string utf8(CFStringRef s) {
    if (s == nullptr) return "(null)";
    CFIndex size = CFStringGetMaximumSizeForEncoding(CFStringGetLength(s), kCFStringEncodingUTF8) + 1;
    std::string out(size_t(size), '\0');
    CFStringGetCString(s, out.data(), size, kCFStringEncodingUTF8);
    out.resize(std::char_traits<char>::length(out.c_str()));
    return out;
}

// The NSDebugDescription of an error, or "(no error)".
inline std::string messageOf(CFErrorRef error) {
    if (error == nullptr) return "(no error)";
    auto userInfo = own(CFErrorCopyUserInfo(error));
    return utf8(static_cast<CFStringRef>(CFDictionaryGetValue(userInfo, kCFErrorDebugDescriptionKey)));
}

struct Read {
    Owned<CFPropertyListRef> plist;
    CFPropertyListFormat format = 0;
    Owned<CFErrorRef> error;
};

inline Read read(std::string_view text, CFOptionFlags option = kCFPropertyListImmutable) {
    CFPropertyListFormat format = 0;
    CFErrorRef error = nullptr;
    CFPropertyListRef plist = CFPropertyListCreateWithData(nullptr, bytes(text), option, &format, &error);
    return Read{own(plist), format, own(error)};
}

// The message a document is refused with ("(no error)" when it is read).
inline std::string readError(std::string_view text) { return messageOf(read(text).error); }

// The XML text of plist, or the writer's message.
inline std::string xml(CFPropertyListRef plist) {
    CFErrorRef error = nullptr;
    auto data = own(CFPropertyListCreateData(nullptr, plist, kCFPropertyListXMLFormat_v1_0, 0, &error));
    auto owned = own(error);
    return data ? textOf(data) : messageOf(error);
}

inline Owned<CFStringRef> str(const char* utf8Text) {
    return own(CFStringCreateWithCString(nullptr, utf8Text, kCFStringEncodingUTF8));
}

template <typename T>
Owned<CFNumberRef> number(CFNumberType type, T value) {
    return own(CFNumberCreate(nullptr, type, &value));
}

inline Owned<CFMutableArrayRef> mutableArray() {
    return own(CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks));
}

inline Owned<CFMutableDictionaryRef> mutableDictionary() {
    return own(CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
}

inline CFTypeRef at(CFTypeRef array, CFIndex index) {
    return CFArrayGetValueAtIndex(static_cast<CFArrayRef>(array), index);
}

inline CFIndex countOf(CFTypeRef container) {
    if (CFGetTypeID(container) == CFArrayGetTypeID()) return CFArrayGetCount(static_cast<CFArrayRef>(container));
    return CFDictionaryGetCount(static_cast<CFDictionaryRef>(container));
}

inline std::vector<UInt8> bytesOf(CFTypeRef d) {
    auto data = static_cast<CFDataRef>(d);
    return std::vector<UInt8>(CFDataGetBytePtr(data), CFDataGetBytePtr(data) + CFDataGetLength(data));
}

// Whether s takes an appended "!" without a misuse report (it keeps it).
inline bool isMutableString(CFTypeRef s) {
    auto asMutable = static_cast<CFMutableStringRef>(const_cast<void*>(s));
    CFIndex before = CFStringGetLength(asMutable);
    std::string reports = reportsOf([&] { CFStringAppend(asMutable, CFSTR("!")); });
    return CFStringGetLength(asMutable) == before + 1 && reports.empty();
}

inline CFTypeRef valueFor(CFTypeRef dictionary, const char* key) {
    return CFDictionaryGetValue(static_cast<CFDictionaryRef>(dictionary), str(key));
}

inline std::string stringFor(CFTypeRef dictionary, const char* key) {
    return utf8(static_cast<CFStringRef>(valueFor(dictionary, key)));
}

// A file of the team's test data (tests/data/...).
inline std::string testDataFile(const std::string& name) {
    std::ifstream file(std::string(HALVANE_TEST_DATA_DIR) + "/" + name, std::ios::binary);
    std::stringstream contents;
    contents << file.rdbuf();
    return contents.str();
}

}  // namespace cftest::plist

#endif  // HALVANE_TESTS_CF_PROPERTY_LIST_SUPPORT_H
