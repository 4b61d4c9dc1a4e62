// CFURL: creation from strings and bytes, resolution against a base, the
// component accessors, equality, hashing and descriptions.
#include "CFURLInternal.h"

#include <CoreFoundation/CFURL.h>

#include <unistd.h>

#include <strings.h>

#include <cerrno>
#include <climits>
#include <cstring>

using namespace halvane::detail;

namespace halvane::detail {

namespace {

using URL = const __CFURL*;

inline URL urlOf(CFTypeRef cf) {
    return static_cast<URL>(cf);
}

void finalizeURL(CFTypeRef cf) {
    URL url = urlOf(cf);
    CFRelease(url->string);
    if (url->baseURL != nullptr) CFRelease(url->baseURL);
}

Boolean equalURLs(CFTypeRef cf1, CFTypeRef cf2) {
    URL a = urlOf(cf1), b = urlOf(cf2);
    if ((classBits(a) & kURLDirectory) != (classBits(b) & kURLDirectory)) return false;
    if ((a->baseURL == nullptr) != (b->baseURL == nullptr)) return false;
    if (!CFEqual(a->string, b->string)) return false;
    return a->baseURL == nullptr || CFEqual(a->baseURL, b->baseURL);
}

CFHashCode hashURL(CFTypeRef cf) {
    return CFHash(urlOf(cf)->string);
}

CFStringRef copyURLFormattingDescription(CFTypeRef cf, CFDictionaryRef) {
    URL url = urlOf(cf);
    if (url->baseURL == nullptr) return static_cast<CFStringRef>(CFRetain(url->string));
    return TextBuilder().string(url->string).ascii(" -- ").string(url->baseURL->string).create();
}

CFStringRef copyURLDebugDescription(CFTypeRef cf) {
    URL url = urlOf(cf);
    std::string_view text = textOf(url);
    TextBuilder builder;
    builder.ascii("<CFURL ").pointer(cf).ascii(" [").pointer(descriptionAllocatorAddress(cf)).ascii("]>{string = ");
    // Inline data can be huge; its description shows the two ends.
    constexpr size_t kLongestDataText = 128, kHeadShown = 120, kTailShown = 8;
    if (text.size() > kLongestDataText && schemeIs(effectiveScheme(url), "data")) {
        builder.ascii(text.substr(0, kHeadShown)).ascii(" ... ").ascii(text.substr(text.size() - kTailShown));
    } else {
        builder.ascii(text);
    }
    builder.ascii(", encoding = 134217984");
    if (url->baseURL == nullptr) {
        builder.ascii(", base = (null)}");
    } else {
        builder.ascii("\n\tbase = ").description(url->baseURL).ascii("}");
    }
    return builder.create();
}

// The URL whose net location describes url: its own, or its base's when a
// relative URL has neither a scheme nor a net location; nullptr if none.
URL netLocationSource(URL url) {
    if (url->parts.hasNetLocation) return url;
    if (!url->parts.hasScheme && url->baseURL != nullptr && url->baseURL->parts.hasNetLocation) return url->baseURL;
    return nullptr;
}

struct NetLocation {
    bool hasUser = false, hasPassword = false, hasPort = false;
    std::string_view user, password, host, port;
};

// user:password@host:port, with "[...]" around an IPv6 host.
NetLocation splitNetLocation(std::string_view location) {
    NetLocation parts;
    size_t at = location.rfind('@');
    std::string_view hostAndPort = location;
    if (at != std::string_view::npos) {
        std::string_view userInfo = location.substr(0, at);
        hostAndPort = location.substr(at + 1);
        size_t colon = userInfo.find(':');
        parts.hasUser = true;
        parts.user = userInfo.substr(0, colon);
        if (colon != std::string_view::npos) {
            parts.hasPassword = true;
            parts.password = userInfo.substr(colon + 1);
        }
    }
    size_t portColon = std::string_view::npos;
    if (!hostAndPort.empty() && hostAndPort[0] == '[' && hostAndPort.find(']') != std::string_view::npos) {
        size_t close = hostAndPort.find(']');
        parts.host = hostAndPort.substr(1, close - 1);
        if (close + 1 < hostAndPort.size() && hostAndPort[close + 1] == ':') portColon = close + 1;
    } else {
        portColon = hostAndPort.find(':');
        parts.host = hostAndPort.substr(0, portColon);
    }
    if (portColon != std::string_view::npos) {
        parts.hasPort = true;
        parts.port = hostAndPort.substr(portColon + 1);
    }
    return parts;
}

// A query or fragment, unescaped as asked.
CFStringRef copyComponent(std::string_view text, CFStringRef charactersToLeaveEscaped, const char* caller) {
    if (charactersToLeaveEscaped == nullptr) return createASCIIString(nullptr, text);
    if (!isA(charactersToLeaveEscaped, kCFStringTypeID)) {
        reportMisuse("CFURL: %s(): the character list is not a string", caller);
        return nullptr;
    }
    std::u16string decoded;
    if (!replacePercentEscapesUTF8(text, unitsOf(charactersToLeaveEscaped), decoded)) return nullptr;
    return createUnitsString(nullptr, decoded);
}

bool checkBase(CFURLRef baseURL, const char* caller) {
    return baseURL == nullptr || checkURL(baseURL, caller);
}

// Takes over text (an ASCII-storage string of legal URL text).
CFURLRef createURL(CFAllocatorRef allocator, CFStringRef text, CFURLRef absoluteBase, DirectoryFlag directory) {
    std::string_view view(reinterpret_cast<const char*>(text->contents.ascii), size_t(text->length));
    URLParts parts = parseURL(view);
    CFURLRef base = parts.hasScheme ? nullptr : absoluteBase;
    bool isDirectory = directory == DirectoryFlag::kYes;
    if (directory == DirectoryFlag::kFromPath) {
        if (parts.path.length > 0 || parts.hasNetLocation || base == nullptr) {
            isDirectory = parts.decomposable && isDirectoryPath(parts.path.in(view));
        } else {
            isDirectory = (classBits(base) & kURLDirectory) != 0;
        }
    }
    auto* url = createInstance<__CFURL>(allocator, kCFURLTypeID, 0, isDirectory ? uintptr_t(kURLDirectory) : 0);
    if (url == nullptr) {
        CFRelease(text);
        return nullptr;
    }
    url->string = text;
    url->baseURL = base != nullptr ? static_cast<CFURLRef>(CFRetain(base)) : nullptr;
    url->parts = parts;
    return url;
}

}  // namespace

constinit const CFRuntimeClass kURLClass = {.version = 0,
                                            .className = "CFURL",
                                            .init = nullptr,
                                            .copy = nullptr,
                                            .finalize = finalizeURL,
                                            .equal = equalURLs,
                                            .hash = hashURL,
                                            .copyFormattingDesc = copyURLFormattingDescription,
                                            .copyDebugDesc = copyURLDebugDescription,
                                            .reclaim = nullptr,
                                            .refcount = nullptr,
                                            .requiredAlignment = 0};

bool checkURL(CFURLRef url, const char* caller) {
    if (isA(url, kCFURLTypeID)) return true;
    reportMisuse("CFURL: %s(): %s is not a URL", caller, url == nullptr ? "NULL" : "the argument");
    return false;
}

CFURLRef createURLFromText(CFAllocatorRef allocator, std::string_view text, CFURLRef absoluteBase,
                           DirectoryFlag directory) {
    if (allocator == kCFAllocatorNull) return nullptr;
    CFStringRef string = createASCIIString(nullptr, text);
    if (string == nullptr) return nullptr;
    return createURL(allocator, string, absoluteBase, directory);
}

bool schemeIs(std::string_view scheme, const char* name) {
    return scheme.size() == std::strlen(name) && strncasecmp(scheme.data(), name, scheme.size()) == 0;
}

std::string_view effectiveScheme(CFURLRef url) {
    if (url->parts.hasScheme) return url->parts.scheme.in(textOf(url));
    if (url->baseURL != nullptr) return effectiveScheme(url->baseURL);
    return {};
}

CFURLRef createCurrentDirectoryURL() {
    std::string path(256, '\0');
    while (getcwd(path.data(), path.size()) == nullptr) {
        if (errno != ERANGE || path.size() > (size_t(1) << 20)) return nullptr;
        path.resize(path.size() * 2);
    }
    path.resize(std::strlen(path.c_str()));
    std::string text = "file://";
    appendEscapedBytes(text, path, kPathCharacters);
    if (text.back() != '/') text.push_back('/');
    return createURLFromText(nullptr, text, nullptr, DirectoryFlag::kYes);
}

}  // namespace halvane::detail

CFTypeID CFURLGetTypeID(void) {
    return kCFURLTypeID;
}

CFURLRef CFURLCreateWithString(CFAllocatorRef allocator, CFStringRef URLString, CFURLRef baseURL) {
    if (URLString == nullptr) return nullptr;
    if (!isA(URLString, kCFStringTypeID)) {
        reportMisuse("CFURL: CFURLCreateWithString(): the URL string is not a string");
        return nullptr;
    }
    if (!checkBase(baseURL, "CFURLCreateWithString")) return nullptr;
    if (allocator == kCFAllocatorNull) return nullptr;
    std::u16string units = unitsOf(URLString);
    if (!isValidURLText(units)) return nullptr;
    // Keep the caller's string when it can serve as it is.
    CFStringRef text = isASCIIString(URLString) && !isMutableString(URLString)
                           ? static_cast<CFStringRef>(CFRetain(URLString))
                           : createUnitsString(nullptr, units);
    if (text == nullptr) return nullptr;
    CFURLRef absoluteBase = baseURL != nullptr ? CFURLCopyAbsoluteURL(baseURL) : nullptr;
    CFURLRef url = createURL(allocator, text, absoluteBase, DirectoryFlag::kFromPath);
    if (absoluteBase != nullptr) CFRelease(absoluteBase);
    return url;
}

CFURLRef CFURLCreateWithBytes(CFAllocatorRef allocator, const UInt8* URLBytes, CFIndex length,
                              CFStringEncoding encoding, CFURLRef baseURL) {
    if (length < 0 || (URLBytes == nullptr && length > 0)) {
        reportMisuse("CFURL: CFURLCreateWithBytes(): %ld bytes at %p", length, static_cast<const void*>(URLBytes));
        return nullptr;
    }
    if (!checkBase(baseURL, "CFURLCreateWithBytes")) return nullptr;
    CFStringRef string = CFStringCreateWithBytes(nullptr, URLBytes, length, encoding, false);
    if (string == nullptr) return nullptr;
    std::string text = escapeIllegalURLCharacters(unitsOf(string));
    CFRelease(string);
    CFURLRef absoluteBase = baseURL != nullptr ? CFURLCopyAbsoluteURL(baseURL) : nullptr;
    CFURLRef url = createURLFromText(allocator, text, absoluteBase);
    if (absoluteBase != nullptr) CFRelease(absoluteBase);
    return url;
}

CFURLRef CFURLCreateAbsoluteURLWithBytes(CFAllocatorRef alloc, const UInt8* relativeURLBytes, CFIndex length,
                                         CFStringEncoding encoding, CFURLRef baseURL, Boolean) {
    CFURLRef relative = CFURLCreateWithBytes(alloc, relativeURLBytes, length, encoding, baseURL);
    if (relative == nullptr) return nullptr;
    CFURLRef absolute = CFURLCopyAbsoluteURL(relative);
    CFRelease(relative);
    return absolute;
}

CFStringRef CFURLGetString(CFURLRef anURL) {
    if (!checkURL(anURL, "CFURLGetString")) return nullptr;
    return anURL->string;
}

CFURLRef CFURLGetBaseURL(CFURLRef anURL) {
    if (!checkURL(anURL, "CFURLGetBaseURL")) return nullptr;
    return anURL->baseURL;
}

CFURLRef CFURLCopyAbsoluteURL(CFURLRef relativeURL) {
    if (!checkURL(relativeURL, "CFURLCopyAbsoluteURL")) return nullptr;
    CFURLRef base = relativeURL->baseURL;
    if (base == nullptr) return static_cast<CFURLRef>(CFRetain(relativeURL));
    std::string text = resolveURLText(textOf(relativeURL), relativeURL->parts, textOf(base), base->parts);
    return createURLFromText(nullptr, text, nullptr);
}

Boolean CFURLCanBeDecomposed(CFURLRef anURL) {
    if (!checkURL(anURL, "CFURLCanBeDecomposed")) return false;
    return anURL->parts.decomposable;
}

CFStringRef CFURLCopyScheme(CFURLRef anURL) {
    if (!checkURL(anURL, "CFURLCopyScheme")) return nullptr;
    std::string_view scheme = effectiveScheme(anURL);
    if (scheme.empty()) return nullptr;
    return createASCIIString(nullptr, scheme);
}

CFStringRef CFURLCopyNetLocation(CFURLRef anURL) {
    if (!checkURL(anURL, "CFURLCopyNetLocation")) return nullptr;
    URL source = netLocationSource(anURL);
    if (source == nullptr || source->parts.netLocation.length == 0) return nullptr;
    return createASCIIString(nullptr, source->parts.netLocation.in(textOf(source)));
}

CFStringRef CFURLCopyHostName(CFURLRef anURL) {
    if (!checkURL(anURL, "CFURLCopyHostName")) return nullptr;
    URL source = netLocationSource(anURL);
    if (source == nullptr) return nullptr;
    std::string_view host = splitNetLocation(source->parts.netLocation.in(textOf(source))).host;
    if (host.empty()) return nullptr;
    return createUnescapedString(host);
}

SInt32 CFURLGetPortNumber(CFURLRef anURL) {
    if (!checkURL(anURL, "CFURLGetPortNumber")) return -1;
    URL source = netLocationSource(anURL);
    if (source == nullptr) return -1;
    NetLocation location = splitNetLocation(source->parts.netLocation.in(textOf(source)));
    if (!location.hasPort || location.port.empty()) return -1;
    long value = 0;
    for (char c : location.port) {
        if (c < '0' || c > '9') return -1;
        value = value * 10 + (c - '0');
        if (value > INT32_MAX) return -1;
    }
    return SInt32(value);
}

CFStringRef CFURLCopyUserName(CFURLRef anURL) {
    if (!checkURL(anURL, "CFURLCopyUserName")) return nullptr;
    URL source = netLocationSource(anURL);
    if (source == nullptr) return nullptr;
    NetLocation location = splitNetLocation(source->parts.netLocation.in(textOf(source)));
    return location.hasUser ? createUnescapedString(location.user) : nullptr;
}

CFStringRef CFURLCopyPassword(CFURLRef anURL) {
    if (!checkURL(anURL, "CFURLCopyPassword")) return nullptr;
    URL source = netLocationSource(anURL);
    if (source == nullptr) return nullptr;
    NetLocation location = splitNetLocation(source->parts.netLocation.in(textOf(source)));
    return location.hasPassword ? createUnescapedString(location.password) : nullptr;
}

CFStringRef CFURLCopyPath(CFURLRef anURL) {
    if (!checkURL(anURL, "CFURLCopyPath")) return nullptr;
    if (!anURL->parts.decomposable) return nullptr;
    return createASCIIString(nullptr, anURL->parts.path.in(textOf(anURL)));
}

Boolean CFURLHasDirectoryPath(CFURLRef anURL) {
    if (!checkURL(anURL, "CFURLHasDirectoryPath")) return false;
    return (classBits(anURL) & kURLDirectory) != 0;
}

CFStringRef CFURLCopyQueryString(CFURLRef anURL, CFStringRef charactersToLeaveEscaped) {
    if (!checkURL(anURL, "CFURLCopyQueryString")) return nullptr;
    if (!anURL->parts.decomposable || !anURL->parts.hasQuery) return nullptr;
    return copyComponent(anURL->parts.query.in(textOf(anURL)), charactersToLeaveEscaped, "CFURLCopyQueryString");
}

CFStringRef CFURLCopyFragment(CFURLRef anURL, CFStringRef charactersToLeaveEscaped) {
    if (!checkURL(anURL, "CFURLCopyFragment")) return nullptr;
    if (!anURL->parts.hasFragment) return nullptr;
    return copyComponent(anURL->parts.fragment.in(textOf(anURL)), charactersToLeaveEscaped, "CFURLCopyFragment");
}

CFStringRef CFURLCopyResourceSpecifier(CFURLRef anURL) {
    if (!checkURL(anURL, "CFURLCopyResourceSpecifier")) return nullptr;
    std::string_view text = textOf(anURL);
    if (!anURL->parts.decomposable) return createASCIIString(nullptr, anURL->parts.specifier.in(text));
    std::string_view afterPath = text.substr(anURL->parts.path.end());
    if (afterPath.empty()) return nullptr;
    return createASCIIString(nullptr, afterPath);
}
