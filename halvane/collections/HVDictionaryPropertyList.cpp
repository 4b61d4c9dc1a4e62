// HVDictionary from and to XML property-list data: parsing (with the
// fallback for a dictionary's inner text), reading files and writing them.
#include <halvane/collections/HVDictionary.h>

#include <halvane/errors/HVLog.h>

#include <CoreFoundation/CoreFoundation.h>

#include <string_view>

namespace {

// The frame put round a dictionary's inner text. Its public identifier
// differs from the one of the documents the library writes elsewhere; both
// are kept, and readers accept either.
constexpr std::string_view kFrameHead =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?><!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\"><plist version=\"1.0\"><dict>";
constexpr std::string_view kFrameTail = "</dict></plist>";

HVData framed(const HVData& inner) {
    HVMutableData whole;
    whole.AppendBytesOfLength(kFrameHead.data(), kFrameHead.size());
    whole.AppendData(inner);
    whole.AppendBytesOfLength(kFrameTail.data(), kFrameTail.size());
    return whole.Copy();
}

// Set while the framed text is being parsed, one for data and one for text.
// Plain process-wide flags: parsing on two threads at once may see each
// other's flag, which is accepted.
bool parsingFramedData = false;
bool parsingFramedText = false;

CFURLRef fileURL(const HVString& path) {
    return CFURLCreateWithFileSystemPath(kCFAllocatorDefault, static_cast<CFStringRef>(path.Ref()),
                                         kCFURLWindowsPathStyle, false);
}

}  // namespace

HVDictionary& HVDictionary::operator=(const HVData& data) {
    AssignPropertyListData(data, parsingFramedData);
    return *this;
}

HVDictionary& HVDictionary::operator=(const HVString& text) {
    AssignPropertyListData(text.DataContainingUTF8String(), parsingFramedText);
    return *this;
}

void HVDictionary::AssignPropertyListData(const HVData& data, bool& parsingFramedInnerText) {
    CFStringRef errorString = nullptr;
    CFPropertyListRef parsed = CFPropertyListCreateFromXMLData(
        kCFAllocatorDefault, static_cast<CFDataRef>(data.Ref()), kCFPropertyListMutableContainersAndLeaves,
        &errorString);
    if (errorString != nullptr) {
        HVLog("HVDictionary::operator=(const HVData&) had an error, it was %@", errorString);
        CFRelease(errorString);
    }
    if (parsed != nullptr && CFGetTypeID(parsed) == CFDictionaryGetTypeID()) {
        CFPropertyListRef copy = CFPropertyListCreateDeepCopy(kCFAllocatorDefault, parsed, kCFPropertyListImmutable);
        if (copy != nullptr) AssignUnderlyingDictionaryAndTakeOwnership(copy);
    } else if (!parsingFramedInnerText) {
        // Perhaps a dictionary's inner text without its frame.
        parsingFramedInnerText = true;
        AssignPropertyListData(framed(data), parsingFramedInnerText);
        parsingFramedInnerText = false;
    } else {
        HVLog("HVDictionary::operator=(const HVData&) The data is not a dictionary");
    }
    if (parsed != nullptr) CFRelease(parsed);
}

HVDictionary HVDictionary::DictionaryWithContentsOfFile(const HVString& path) {
    HVDictionary dictionary;
    if (path.IsEmpty()) return dictionary;
    CFURLRef url = fileURL(path);
    if (url == nullptr) return dictionary;
    CFDataRef bytes = nullptr;
    SInt32 errorCode = 0;
    if (CFURLCreateDataAndPropertiesFromResource(kCFAllocatorDefault, url, &bytes, nullptr, nullptr, &errorCode) &&
        bytes != nullptr) {
        dictionary = HVData(static_cast<const void*>(bytes));
    }
    if (bytes != nullptr) CFRelease(bytes);
    CFRelease(url);
    return dictionary;
}

bool HVDictionary::WriteToFile(const HVString& path) const {
    if (path.IsEmpty() || IsNull()) return false;
    CFDataRef bytes = CFPropertyListCreateXMLData(kCFAllocatorDefault, m_Ref);
    // A dictionary that is no property list writes nothing: the file keeps
    // what it held.
    if (bytes == nullptr) return false;
    CFURLRef url = fileURL(path);
    SInt32 errorCode = 0;
    bool written = url != nullptr && CFURLWriteDataAndPropertiesToResource(url, bytes, nullptr, &errorCode);
    if (url != nullptr) CFRelease(url);
    CFRelease(bytes);
    return written;
}

bool HVDictionary::WriteToFileAtomically(const HVString& path) const { return WriteToFile(path); }
