// Fuzzes CFURL: the input, read as UTF-8, becomes a URL with and without a
// fixed base, and every accessor and path operation runs on the result. The
// same text also goes through the non-validating creation, the file-system
// path conversions and the percent-escape functions.
//
// Beyond "no crash, no leak", it checks that every URL this library makes
// has a string CFURLCreateWithString accepts, and that URLs survive a
// round trip through their string.
#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>
#include <cstdlib>
#include <initializer_list>

namespace {

void release(CFTypeRef cf) {
    if (cf != nullptr) CFRelease(cf);
}

// A URL made by the library must have a legal string: a URL string made
// from it again is accepted and equal.
void checkLegal(CFURLRef url) {
    if (url == nullptr) return;
    CFURLRef again = CFURLCreateWithString(nullptr, CFURLGetString(url), CFURLGetBaseURL(url));
    if (again == nullptr) std::abort();
    if (CFURLHasDirectoryPath(again) == CFURLHasDirectoryPath(url) && !CFEqual(again, url)) std::abort();
    if (CFEqual(again, url) && CFHash(again) != CFHash(url)) std::abort();
    CFRelease(again);
}

void exerciseStrings(CFURLRef url) {
    CFStringRef leaveNone = CFSTR("");
    CFStringRef leaveSome = CFSTR("/?#%");
    CFStringRef results[] = {
        CFURLCopyScheme(url),
        CFURLCopyNetLocation(url),
        CFURLCopyHostName(url),
        CFURLCopyUserName(url),
        CFURLCopyPassword(url),
        CFURLCopyPath(url),
        CFURLCopyQueryString(url, nullptr),
        CFURLCopyQueryString(url, leaveNone),
        CFURLCopyQueryString(url, leaveSome),
        CFURLCopyFragment(url, nullptr),
        CFURLCopyFragment(url, leaveNone),
        CFURLCopyResourceSpecifier(url),
        CFURLCopyLastPathComponent(url),
        CFURLCopyPathExtension(url),
        CFURLCopyFileSystemPath(url, kCFURLPOSIXPathStyle),
        CFURLCopyFileSystemPath(url, kCFURLWindowsPathStyle),
        CFCopyDescription(url),
        CFStringCreateWithFormat(nullptr, nullptr, CFSTR("%@"), url),
    };
    for (CFStringRef s : results) release(s);
    (void)CFURLGetPortNumber(url);
    (void)CFURLHasDirectoryPath(url);
    (void)CFURLCanBeDecomposed(url);
    (void)CFHash(url);
}

// Path arithmetic changes the path only: the result shares the base and
// has the same scheme and net location. (Except for an empty path, where
// ".." and extensions are glued to the net location on purpose.)
void checkSameOrigin(CFURLRef url, CFURLRef derived) {
    if (derived == nullptr) return;
    if (CFURLGetBaseURL(derived) != CFURLGetBaseURL(url)) std::abort();
    CFStringRef path = CFURLCopyPath(url);
    bool emptyPath = path == nullptr || CFStringGetLength(path) == 0;
    release(path);
    if (emptyPath) return;
    CFStringRef parts[2][2] = {{CFURLCopyScheme(url), CFURLCopyNetLocation(url)},
                               {CFURLCopyScheme(derived), CFURLCopyNetLocation(derived)}};
    for (int i = 0; i < 2; ++i) {
        bool same = parts[0][i] == parts[1][i] || (parts[0][i] && parts[1][i] && CFEqual(parts[0][i], parts[1][i]));
        if (!same) std::abort();
        release(parts[0][i]);
        release(parts[1][i]);
    }
}

void exercisePaths(CFURLRef url) {
    CFURLRef results[] = {
        CFURLCopyAbsoluteURL(url),
        CFURLCreateCopyAppendingPathComponent(nullptr, url, CFSTR("a b/"), false),
        CFURLCreateCopyAppendingPathComponent(nullptr, url, CFSTR("/x?#%"), true),
        CFURLCreateCopyDeletingLastPathComponent(nullptr, url),
        CFURLCreateCopyAppendingPathExtension(nullptr, url, CFSTR("tar.gz")),
        CFURLCreateCopyAppendingPathExtension(nullptr, url, CFSTR("")),
        CFURLCreateCopyDeletingPathExtension(nullptr, url),
    };
    // Derived URLs get the checks and the path accessors; the full set of
    // accessors runs on the URLs made from the input, which keeps each run
    // fast enough for the fuzzer to explore.
    for (CFURLRef result : results) {
        if (result != results[0]) checkSameOrigin(url, result);
        checkLegal(result);
        if (result != nullptr) {
            release(CFURLCopyPath(result));
            release(CFURLCopyLastPathComponent(result));
            release(CFURLCopyFileSystemPath(result, kCFURLWindowsPathStyle));
        }
        release(result);
    }
}

void exerciseURL(CFURLRef url) {
    if (url == nullptr) return;
    checkLegal(url);
    exerciseStrings(url);
    exercisePaths(url);
}

void exerciseEscapes(CFStringRef text) {
    CFStringRef results[] = {
        CFURLCreateStringByAddingPercentEscapes(nullptr, text, nullptr, nullptr, kCFStringEncodingUTF8),
        CFURLCreateStringByAddingPercentEscapes(nullptr, text, CFSTR(" %"), CFSTR("/?&="), kCFStringEncodingUTF8),
        CFURLCreateStringByAddingPercentEscapes(nullptr, text, nullptr, nullptr, kCFStringEncodingISOLatin1),
        CFURLCreateStringByReplacingPercentEscapes(nullptr, text, CFSTR("")),
        CFURLCreateStringByReplacingPercentEscapes(nullptr, text, CFSTR("/%")),
        CFURLCreateStringByReplacingPercentEscapesUsingEncoding(nullptr, text, CFSTR(""), kCFStringEncodingISOLatin1),
        CFURLCreateStringByReplacingPercentEscapesUsingEncoding(nullptr, text, CFSTR("a"), kCFStringEncodingUTF16BE),
    };
    // Escaping everything but the legal characters makes a legal URL.
    if (results[0] != nullptr) {
        CFURLRef escaped = CFURLCreateWithString(nullptr, results[0], nullptr);
        if (escaped == nullptr) std::abort();
        exerciseURL(escaped);
        release(escaped);
    }
    for (CFStringRef s : results) release(s);
}

CFURLRef fixedBase() {
    static CFURLRef base = CFURLCreateWithString(nullptr, CFSTR("http://user:pw@host:8080/a/b/c;p?q#f"), nullptr);
    return base;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    CFStringRef text = CFStringCreateWithBytes(nullptr, data, CFIndex(size), kCFStringEncodingUTF8, false);
    if (text == nullptr) return 0;

    for (CFURLRef base : {CFURLRef(nullptr), fixedBase()}) {
        CFURLRef url = CFURLCreateWithString(nullptr, text, base);
        exerciseURL(url);
        release(url);
        CFURLRef fromBytes = CFURLCreateWithBytes(nullptr, data, CFIndex(size), kCFStringEncodingUTF8, base);
        if (fromBytes == nullptr) std::abort();  // valid UTF-8 always gives a URL
        exerciseURL(fromBytes);
        release(fromBytes);
    }
    for (CFURLPathStyle style : {kCFURLPOSIXPathStyle, kCFURLWindowsPathStyle}) {
        for (Boolean isDirectory : {false, true}) {
            CFURLRef file = CFURLCreateWithFileSystemPath(nullptr, text, style, isDirectory);
            if (file != nullptr && CFURLHasDirectoryPath(file) != isDirectory) std::abort();
            if (isDirectory) exerciseURL(file);
            checkLegal(file);
            release(file);
        }
    }
    exerciseEscapes(text);
    CFRelease(text);
    return 0;
}
