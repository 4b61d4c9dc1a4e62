// The tagged text form of objects ("HVString:\"abc\""), and the
// property-list document put round a fragment of property-list text so that
// texts written by the platform can be nested in one another.
#include <halvane/core/HVObject.h>

#include <halvane/text/HVString.h>

#include <CoreFoundation/CoreFoundation.h>

#include <memory>

namespace {

CFStringRef asString(const HVString& text) { return static_cast<CFStringRef>(text.Ref()); }

// The range from location to the end of the text.
CFRange rangeFrom(CFIndex location, CFIndex length) { return CFRangeMake(location, length - location); }

}  // namespace

HVObject HVObject::CreateObjectFromString(const HVString& text) {
    HVObject result;
    CFStringRef string = asString(text);
    if (string == nullptr || !CFStringHasPrefix(string, CFSTR("HV"))) return result;
    std::shared_ptr<HVObject> object = CreateObjectOfClassType(nullptr, ClassTypeOfClassName(text));
    if (object == nullptr) return result;
    // The payload follows the first colon; a text without one has none.
    CFIndex length = CFStringGetLength(string);
    CFRange colon = CFStringFind(string, CFSTR(":"), 0);
    HVString payload;
    if (colon.location != kCFNotFound) {
        payload.AssignAndTakeOwnership(
            CFStringCreateWithSubstring(kCFAllocatorDefault, string, rangeFrom(colon.location + 1, length)));
    }
    object->Deserialize(payload);
    result = *object;
    return result;
}

HVString HVObject::AddPropertyListFileText(const HVString& fragment) {
    if (asString(fragment) != nullptr && CFStringHasPrefix(asString(fragment), CFSTR("<?xml"))) return fragment;
    return HVString::StringWithFormat(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?><!DOCTYPE plist PUBLIC \"-//Apple Computer//DTD PLIST 1.0//EN\" "
        "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\"><plist version=\"1.0\">%@</plist>",
        fragment.Ref());
}

HVString HVObject::RemovePropertyListFileText(const HVString& document) {
    CFStringRef text = asString(document);
    if (text == nullptr) return document;
    CFIndex length = CFStringGetLength(text);
    CFRange content = CFRangeMake(0, length);
    CFRange found;
    if (CFStringFindWithOptions(text, CFSTR("<plist"), content, 0, &found)) {
        content = rangeFrom(found.location + found.length, length);
        // Past the end of the opening plist tag.
        if (CFStringFindWithOptions(text, CFSTR(">"), content, 0, &found)) {
            content = rangeFrom(found.location + found.length, length);
        }
        if (CFStringFindWithOptions(text, CFSTR("</plist>"), content, 0, &found)) {
            content.length = found.location - content.location;
        }
        if (content.length == 0) content = CFRangeMake(0, length);
    }
    CFMutableStringRef trimmed = CFStringCreateMutable(kCFAllocatorDefault, 0);
    CFStringRef inner = CFStringCreateWithSubstring(kCFAllocatorDefault, text, content);
    CFStringAppend(trimmed, inner);
    CFRelease(inner);
    CFStringTrimWhitespace(trimmed);
    HVString result;
    result.AssignAndTakeOwnership(CFStringCreateCopy(kCFAllocatorDefault, trimmed));
    CFRelease(trimmed);
    return result;
}
