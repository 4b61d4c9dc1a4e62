// A client of the installed library: links both libraries and uses each.
#include <halvane/Halvane.h>

#include <cstdio>
#include <string>

int main() {
    // The words come through the JSON reader, which the library links privately.
    const std::string json = "[\"hello, \", \"world\"]";
    HVArray words = HVJSONSerialization::ArrayWithJSONData(HVData::DataWithBytesOfLength(json.data(), json.size()));
    CFMutableStringRef text = CFStringCreateMutable(kCFAllocatorDefault, 0);
    for (unsigned long long i = 0; i < words.Count(); ++i) {
        CFStringAppend(text, static_cast<CFStringRef>(words.StringAtIndex(i).Ref()));
    }
    CFIndex length = CFStringGetLength(text);
    std::u16string units(size_t(length), u'\0');
    CFStringGetCharacters(text, CFRangeMake(0, length), units.data());
    std::string ascii(units.begin(), units.end());
    std::printf("consumer: Halvane %s, %s (%ld units)\n", HVLibraryVersion(), ascii.c_str(), length);
    CFRelease(text);
    return 0;
}
