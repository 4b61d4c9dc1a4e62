// A tour of what the library can do so far. Each section prints what it
// built, so the output reads as a short report.
#include <halvane/Halvane.h>

#include <cstdio>
#include <string>

namespace {

std::string text(CFStringRef s) {
    std::string out;
    CFIndex length = CFStringGetLength(s);
    for (CFIndex i = 0; i < length; ++i) {
        UniChar unit = CFStringGetCharacterAtIndex(s, i);
        if (unit < 0x80) {
            out.push_back(char(unit));
        } else {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04X", unsigned(unit));
            out += escaped;
        }
    }
    return out;
}

void show(const char* label, CFTypeRef object) {
    CFStringRef description = CFCopyDescription(object);
    std::printf("%-28s %s\n", label, text(description).c_str());
    CFRelease(description);
}

}  // namespace

int main() {
    std::printf("Halvane %s\n\n", HVLibraryVersion());

    std::printf("== Strings ==\n");
    CFStringRef greeting = CFSTR("Gr\xC3\xBC\xC3\x9F"
                                 "e, world");
    show("constant string:", greeting);
    std::printf("%-28s %ld units, retain count %#lx (immortal)\n", "", CFStringGetLength(greeting),
                CFGetRetainCount(greeting));

    CFMutableStringRef built = CFStringCreateMutable(kCFAllocatorDefault, 0);
    CFStringAppend(built, CFSTR("built "));
    CFStringAppend(built, CFSTR("piece by piece"));
    show("mutable string:", built);
    std::printf("%-28s equal to the constant? %s\n", "",
                CFEqual(built, CFSTR("built piece by piece")) ? "yes" : "no");
    CFRelease(built);
    return 0;
}
