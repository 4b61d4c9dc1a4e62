// A client of the installed library: links both libraries and uses each.
#include <halvane/Halvane.h>

#include <cstdio>
#include <string>

int main() {
    CFMutableStringRef text = CFStringCreateMutable(kCFAllocatorDefault, 0);
    CFStringAppend(text, CFSTR("hello, "));
    CFStringAppend(text, CFSTR("world"));
    CFIndex length = CFStringGetLength(text);
    std::u16string units(size_t(length), u'\0');
    CFStringGetCharacters(text, CFRangeMake(0, length), units.data());
    std::string ascii(units.begin(), units.end());
    std::printf("consumer: Halvane %s, %s (%ld units)\n", HVLibraryVersion(), ascii.c_str(), length);
    CFRelease(text);
    return 0;
}
