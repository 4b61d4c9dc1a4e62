// A tour of what the library can do so far. Each section prints what it
// built, so the output reads as a short report.
#include <halvane/Halvane.h>

#include <cstdarg>
#include <cstdio>
#include <string>

namespace {

// Prints a CoreFoundation string as UTF-8.
void print(CFStringRef text) {
    CFIndex length = CFStringGetLength(text);
    CFIndex size = CFStringGetMaximumSizeForEncoding(length, kCFStringEncodingUTF8) + 1;
    std::string buffer(size_t(size), '\0');
    if (CFStringGetCString(text, buffer.data(), size, kCFStringEncodingUTF8)) std::printf("%s\n", buffer.c_str());
}

// printf-style output through CFStringCreateWithFormat, so "%@" shows objects.
void show(CFStringRef format, ...) {
    va_list arguments;
    va_start(arguments, format);
    CFStringRef line = CFStringCreateWithFormatAndArguments(kCFAllocatorDefault, nullptr, format, arguments);
    va_end(arguments);
    print(line);
    CFRelease(line);
}

void strings() {
    show(CFSTR("== Strings =="));
    CFStringRef greeting = CFSTR("Grüße, world");
    show(CFSTR("constant:          %@ (%ld units, immortal: %s)"), greeting, CFStringGetLength(greeting),
         CFGetRetainCount(greeting) == 0x0FFFFFFFFFFFFFFFL ? "yes" : "no");

    const UInt8 latin1[] = {'c', 'a', 'f', 0xE9};
    CFStringRef cafe = CFStringCreateWithBytes(kCFAllocatorDefault, latin1, 4, kCFStringEncodingISOLatin1, false);
    CFDataRef utf16 = CFStringCreateExternalRepresentation(kCFAllocatorDefault, cafe, kCFStringEncodingUTF16, 0);
    show(CFSTR("Latin-1 bytes:     %@, as UTF-16 with a byte-order mark: %@"), cafe, utf16);
    CFRelease(utf16);

    CFStringRef upper = CFSTR("CAFÉ");
    show(CFSTR("compare:           \"%@\" vs \"%@\": literal %ld, case-insensitive %ld"), cafe, upper,
         CFStringCompare(cafe, upper, 0), CFStringCompare(cafe, upper, kCFCompareCaseInsensitive));
    show(CFSTR("numeric order:     file2 vs file10 -> %ld"),
         CFStringCompare(CFSTR("file2"), CFSTR("file10"), kCFCompareNumerically));
    show(CFSTR("scanning:          \"  42 apples\" -> %d, \"3.5e2x\" -> %g"), CFStringGetIntValue(CFSTR("  42 apples")),
         CFStringGetDoubleValue(CFSTR("3.5e2x")));
    CFRelease(cafe);
}

void numbersAndDates() {
    show(CFSTR("\n== Numbers, booleans, dates =="));
    int answer = 42;
    double pi = 3.14;
    unsigned long long big = 18446744073709551615ull;
    CFNumberRef n1 = CFNumberCreate(kCFAllocatorDefault, kCFNumberIntType, &answer);
    CFNumberRef n2 = CFNumberCreate(kCFAllocatorDefault, kCFNumberDoubleType, &pi);
    CFNumberRef n3 = CFNumberCreate(kCFAllocatorDefault, kCFNumberUInt64Type, &big);
    show(CFSTR("numbers:           %@, %@, %@ (unsigned 64-bit kept exactly)"), n1, n2, n3);
    int truncated = 0;
    Boolean exact = CFNumberGetValue(n2, kCFNumberIntType, &truncated);
    show(CFSTR("3.14 as int:       %d (exact: %s)"), truncated, exact ? "yes" : "no");
    show(CFSTR("booleans:          %@ / %@, null: %@"), kCFBooleanTrue, kCFBooleanFalse, kCFNull);
    CFDateRef epoch = CFDateCreate(kCFAllocatorDefault, 0);
    show(CFSTR("reference date:    %@"), epoch);
    CFRelease(epoch);
    CFRelease(n1);
    CFRelease(n2);
    CFRelease(n3);
}

void collections() {
    show(CFSTR("\n== Collections =="));
    int one = 1;
    CFNumberRef number = CFNumberCreate(kCFAllocatorDefault, kCFNumberIntType, &one);
    const void* values[] = {CFSTR("a"), number};
    CFArrayRef array = CFArrayCreate(kCFAllocatorDefault, values, 2, &kCFTypeArrayCallBacks);
    show(CFSTR("array:             %@"), array);

    CFMutableDictionaryRef settings = CFDictionaryCreateMutable(kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks,
                                                                &kCFTypeDictionaryValueCallBacks);
    CFDictionarySetValue(settings, CFSTR("name"), CFSTR("Halvane"));
    CFDictionarySetValue(settings, CFSTR("items"), array);
    show(CFSTR("dictionary count:  %ld, name = %@"), CFDictionaryGetCount(settings),
         CFDictionaryGetValue(settings, CFSTR("name")));

    const UInt8 bytes[] = {0xDE, 0xAD, 0xBE, 0xEF};
    CFDataRef data = CFDataCreate(kCFAllocatorDefault, bytes, sizeof bytes);
    show(CFSTR("data:              %@"), data);
    CFRelease(data);
    CFRelease(settings);
    CFRelease(array);
    CFRelease(number);
}

void errors() {
    show(CFSTR("\n== Errors =="));
    CFErrorRef missing = CFErrorCreate(kCFAllocatorDefault, kCFErrorDomainPOSIX, 2, nullptr);
    CFStringRef description = CFErrorCopyDescription(missing);
    show(CFSTR("POSIX error 2:     %@"), description);
    CFRelease(description);
    CFRelease(missing);

    const void* keys[] = {kCFErrorLocalizedDescriptionKey};
    const void* texts[] = {CFSTR("The settings file is damaged.")};
    CFDictionaryRef info = CFDictionaryCreate(kCFAllocatorDefault, keys, texts, 1, &kCFTypeDictionaryKeyCallBacks,
                                              &kCFTypeDictionaryValueCallBacks);
    CFErrorRef custom = CFErrorCreate(kCFAllocatorDefault, CFSTR("DemoDomain"), 7, info);
    show(CFSTR("own error:         %@"), custom);
    CFRelease(custom);
    CFRelease(info);
}

}  // namespace

int main() {
    std::printf("Halvane %s\n\n", HVLibraryVersion());
    strings();
    numbersAndDates();
    collections();
    errors();
    return 0;
}
