// Paths of URLs: conversion from and to file-system paths (POSIX and Windows
// styles, both pure text conversions), the last component and extension,
// and the path arithmetic that makes new URLs.
#include "CFStringEncodingInternal.h"
#include "CFURLInternal.h"

#include <CoreFoundation/CFURL.h>

#include <optional>
#include <vector>

using namespace halvane::detail;

namespace {

using URL = const __CFURL*;

bool isASCIILetter(char16_t c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool isDirectionalControl(char16_t c) {
    return c == 0x061C || c == 0x200E || c == 0x200F || (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

// Where the extension of a path component starts (its '.'): the last dot,
// when it is neither the first nor the last character and no space, '/' or
// directional control follows it; npos otherwise.
template <typename Text>
size_t extensionDot(Text component) {
    size_t dot = component.rfind('.');
    if (dot == Text::npos || dot == 0 || dot + 1 == component.size()) return Text::npos;
    for (size_t i = dot + 1; i < component.size(); ++i) {
        auto c = char16_t(component[i]);
        if (c == ' ' || c == '/' || isDirectionalControl(c)) return Text::npos;
    }
    return dot;
}

// The last segment of a path, ignoring one trailing '/'.
Span lastSegment(std::string_view path) {
    size_t end = path.size();
    if (end > 0 && path[end - 1] == '/') --end;
    size_t slash = end == 0 ? std::string_view::npos : path.substr(0, end).rfind('/');
    size_t start = slash == std::string_view::npos ? 0 : slash + 1;
    return {start, end - start};
}

std::string_view pathOf(URL url) {
    return url->parts.path.in(textOf(url));
}

// A relative path whose first segment looks like "name:" would read as a
// scheme; its colon is escaped so that the URL stays relative.
void keepRelative(std::string& text) {
    if (!parseURL(text).hasScheme) return;
    size_t colon = text.find(':');
    text.replace(colon, 1, "%3A");
}

// A new URL like url (same base) with its path replaced. The new path must
// not change how the rest reads: without a net location, a path starting
// with "//" is written "/.//", which resolves the same; a relative URL keeps
// its first segment from turning into a scheme.
CFURLRef createWithPath(CFAllocatorRef allocator, URL url, std::string_view newPath) {
    std::string_view text = textOf(url);
    std::string out(text.substr(0, url->parts.path.start));
    if (!url->parts.hasNetLocation && newPath.starts_with("//")) out.append("/.");
    out.append(newPath);
    out.append(text.substr(url->parts.path.end()));
    if (!url->parts.hasScheme) keepRelative(out);
    return createURLFromText(allocator, out, url->baseURL);
}

// Text escaped for a path: UTF-8, everything outside the path characters
// as %XX. Nothing for a lone surrogate (no file name can hold one).
std::optional<std::string> escapedPathText(std::u16string_view units) {
    std::string utf8;
    if (!strictUTF8(units, utf8)) return std::nullopt;
    std::string out;
    appendEscapedBytes(out, utf8, kPathCharacters);
    return out;
}

std::optional<std::string> posixPathURLText(std::u16string_view path, bool isDirectory) {
    std::string utf8;
    if (!strictUTF8(path, utf8)) return std::nullopt;
    if (isDirectory) {
        if (utf8.back() != '/') utf8.push_back('/');
    } else {
        while (utf8.size() > 1 && utf8.back() == '/') utf8.pop_back();
    }
    bool absolute = utf8[0] == '/';
    std::string text = absolute ? "file://" : "";
    appendEscapedBytes(text, utf8, kPathCharacters);
    if (!absolute) keepRelative(text);
    return text;
}

bool isDrive(std::u16string_view segment) {
    return segment.size() == 2 && isASCIILetter(segment[0]) && segment[1] == ':';
}

std::optional<std::string> windowsPathURLText(std::u16string_view original, bool isDirectory, bool& absolute) {
    std::u16string path(original);
    for (char16_t& c : path) {
        if (c == '/') c = '\\';
    }
    absolute = path[0] == '\\' || (path.size() >= 2 && isASCIILetter(path[0]) && (path[1] == ':' || path[1] == '|'));
    std::vector<std::u16string_view> segments;
    std::u16string_view rest(path);
    for (size_t start = 0;;) {
        size_t separator = rest.find(u'\\', start);
        segments.push_back(rest.substr(start, separator == std::u16string_view::npos ? separator : separator - start));
        if (separator == std::u16string_view::npos) break;
        start = separator + 1;
    }
    if (!isDirectory && segments.size() > 1 && segments.back().empty()) segments.pop_back();
    if (isDirectory && !segments.back().empty()) segments.push_back(u"");

    std::string text;
    for (size_t i = 0; i < segments.size(); ++i) {
        if (i > 0) text.push_back('/');
        if (i == 0 && isDrive(segments[0])) {
            text.push_back(char(segments[0][0]));
            text.push_back(':');
            continue;
        }
        std::optional<std::string> escaped = escapedPathText(segments[i]);
        if (!escaped) return std::nullopt;
        text.append(*escaped);
    }
    if (!absolute) {
        keepRelative(text);
        return text;
    }
    // A rooted path supplies its own slash ("\dir" is "file:///dir"); a
    // drive needs one ("file:///C:/dir"), and so does a UNC path, whose
    // leading separators stay path text below an empty host
    // ("\\server\share" is "file://///server/share"), as other software
    // writes and expects these URLs.
    bool rooted = text.size() >= 1 && text[0] == '/' && (text.size() == 1 || text[1] != '/');
    return (rooted ? "file://" : "file:///") + text;
}

CFURLRef createWithFileSystemPath(CFAllocatorRef allocator, CFStringRef filePath, CFURLPathStyle pathStyle,
                                  bool isDirectory, CFURLRef baseURL, const char* caller) {
    if (!isA(filePath, kCFStringTypeID)) {
        reportMisuse("CFURL: %s(): the path is %s", caller, filePath == nullptr ? "NULL" : "not a string");
        return nullptr;
    }
    if (baseURL != nullptr && !checkURL(baseURL, caller)) return nullptr;
    if (pathStyle != kCFURLPOSIXPathStyle && pathStyle != kCFURLWindowsPathStyle) {
        reportMisuse("CFURL: %s(): path style %ld is not supported", caller, long(pathStyle));
        return nullptr;
    }
    std::u16string path = unitsOf(filePath);
    if (path.empty()) return nullptr;
    std::optional<std::string> text;
    bool absolute = path[0] == '/';
    // A POSIX path handed over as a Windows one is taken as what it is.
    if (pathStyle == kCFURLPOSIXPathStyle || absolute) {
        text = posixPathURLText(path, isDirectory);
    } else {
        text = windowsPathURLText(path, isDirectory, absolute);
    }
    if (!text) return nullptr;
    CFURLRef base = nullptr;
    if (!absolute) base = baseURL != nullptr ? CFURLCopyAbsoluteURL(baseURL) : createCurrentDirectoryURL();
    CFURLRef url = createURLFromText(allocator, *text, base, isDirectory ? DirectoryFlag::kYes : DirectoryFlag::kNo);
    if (base != nullptr) CFRelease(base);
    return url;
}

CFStringRef copyWindowsPath(std::string_view path) {
    std::vector<std::string> segments;
    for (size_t start = 0;;) {
        size_t slash = path.find('/', start);
        segments.emplace_back(path.substr(start, slash == std::string_view::npos ? slash : slash - start));
        if (slash == std::string_view::npos) break;
        start = slash + 1;
    }
    if (segments.size() > 1 && segments.back().empty()) segments.pop_back();
    // The root alone: "\" rather than nothing.
    if (segments.size() == 1 && segments[0].empty() && !path.empty()) return CFSTR("\\");
    if (segments.size() >= 2 && segments[0].empty()) {
        std::u16string drive;
        if (replacePercentEscapesUTF8(segments[1], u"", drive) && drive.size() == 2 &&
            (drive[1] == ':' || drive[1] == '|')) {
            std::string& escaped = segments[1];
            // "C|" and "C%7C" become "C:", as do "C%3A" and "C:".
            escaped.erase(escaped.back() == ':' || escaped.back() == '|' ? escaped.size() - 1 : escaped.size() - 3);
            escaped.push_back(':');
            segments.erase(segments.begin());
        }
    }
    std::string joined;
    for (size_t i = 0; i < segments.size(); ++i) {
        if (i > 0) joined.push_back('\\');
        joined.append(segments[i]);
    }
    std::u16string decoded;
    if (!replacePercentEscapesUTF8(joined, u"", decoded)) return nullptr;
    return createUnitsString(nullptr, decoded);
}

// A path component or extension, escaped like a path.
bool escapedComponent(CFStringRef component, bool dropTrailingSlashes, std::string& out) {
    std::string utf8;
    if (!strictUTF8(unitsOf(component), utf8)) return false;
    if (dropTrailingSlashes) {
        while (!utf8.empty() && utf8.back() == '/') utf8.pop_back();
    }
    appendEscapedBytes(out, utf8, kPathCharacters);
    return true;
}

bool checkComponentString(CFStringRef s, const char* caller) {
    if (isA(s, kCFStringTypeID)) return true;
    reportMisuse("CFURL: %s(): the component is %s", caller, s == nullptr ? "NULL" : "not a string");
    return false;
}

}  // namespace

CFURLRef CFURLCreateWithFileSystemPath(CFAllocatorRef allocator, CFStringRef filePath, CFURLPathStyle pathStyle,
                                       Boolean isDirectory) {
    return createWithFileSystemPath(allocator, filePath, pathStyle, isDirectory, nullptr,
                                    "CFURLCreateWithFileSystemPath");
}

CFURLRef CFURLCreateWithFileSystemPathRelativeToBase(CFAllocatorRef allocator, CFStringRef filePath,
                                                     CFURLPathStyle pathStyle, Boolean isDirectory, CFURLRef baseURL) {
    return createWithFileSystemPath(allocator, filePath, pathStyle, isDirectory, baseURL,
                                    "CFURLCreateWithFileSystemPathRelativeToBase");
}

CFStringRef CFURLCopyFileSystemPath(CFURLRef anURL, CFURLPathStyle pathStyle) {
    if (!checkURL(anURL, "CFURLCopyFileSystemPath")) return nullptr;
    if (pathStyle != kCFURLPOSIXPathStyle && pathStyle != kCFURLWindowsPathStyle) {
        reportMisuse("CFURL: CFURLCopyFileSystemPath(): path style %ld is not supported", long(pathStyle));
        return nullptr;
    }
    if (!anURL->parts.decomposable) return nullptr;
    std::string_view path = pathOf(anURL);
    if (pathStyle == kCFURLWindowsPathStyle) return copyWindowsPath(path);
    if (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
    std::u16string decoded;
    if (!replacePercentEscapesUTF8(path, u"", decoded)) return nullptr;
    return createUnitsString(nullptr, decoded);
}

CFStringRef CFURLCopyLastPathComponent(CFURLRef url) {
    if (!checkURL(url, "CFURLCopyLastPathComponent")) return nullptr;
    std::string_view path = url->parts.decomposable ? pathOf(url) : std::string_view();
    if (path == "/") return createASCIIString(nullptr, path);
    return createUnescapedString(lastSegment(path).in(path));
}

CFStringRef CFURLCopyPathExtension(CFURLRef url) {
    if (!checkURL(url, "CFURLCopyPathExtension")) return nullptr;
    CFStringRef component = CFURLCopyLastPathComponent(url);
    std::u16string units = unitsOf(component);
    CFRelease(component);
    size_t dot = extensionDot(std::u16string_view(units));
    if (dot == std::u16string_view::npos) return nullptr;
    return createUnitsString(nullptr, std::u16string_view(units).substr(dot + 1));
}

CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef allocator, CFURLRef url, CFStringRef pathComponent,
                                               Boolean isDirectory) {
    static constexpr const char* kCaller = "CFURLCreateCopyAppendingPathComponent";
    if (!checkURL(url, kCaller) || !checkComponentString(pathComponent, kCaller)) return nullptr;
    if (!url->parts.decomposable) return nullptr;
    // File names never end with '/'; other paths may.
    bool isFileURL = schemeIs(effectiveScheme(url), "file");
    std::string component;
    if (!escapedComponent(pathComponent, isFileURL, component)) return nullptr;
    std::string_view path = pathOf(url);
    std::string newPath(path);
    bool separated = (!path.empty() && path.back() == '/') || (!component.empty() && component[0] == '/');
    if (!separated) newPath.push_back('/');
    newPath.append(component);
    if (isDirectory && newPath.back() != '/') newPath.push_back('/');
    return createWithPath(allocator, url, newPath);
}

CFURLRef CFURLCreateCopyDeletingLastPathComponent(CFAllocatorRef allocator, CFURLRef url) {
    if (!checkURL(url, "CFURLCreateCopyDeletingLastPathComponent")) return nullptr;
    if (!url->parts.decomposable) return nullptr;
    std::string_view path = pathOf(url);
    std::string newPath;
    if (path.empty()) {
        // Glued to the net location: "http://h" gives "http://h../".
        newPath = "../";
    } else {
        Span last = lastSegment(path);
        std::string_view segment = last.in(path);
        if (segment.empty() || segment == "..") {
            // Nothing to remove: go one level up instead.
            newPath = path;
            if (newPath.back() != '/') newPath.push_back('/');
            newPath.append("../");
        } else if (segment == ".") {
            newPath = path.substr(0, last.start);
            newPath.append("../");
        } else {
            newPath = path.substr(0, last.start);
            if (newPath.empty()) newPath = "./";
        }
    }
    return createWithPath(allocator, url, newPath);
}

CFURLRef CFURLCreateCopyAppendingPathExtension(CFAllocatorRef allocator, CFURLRef url, CFStringRef extension) {
    static constexpr const char* kCaller = "CFURLCreateCopyAppendingPathExtension";
    if (!checkURL(url, kCaller) || !checkComponentString(extension, kCaller)) return nullptr;
    std::u16string units = unitsOf(extension);
    if (units.empty()) return static_cast<CFURLRef>(CFRetain(url));
    if (units.back() == '.' || units.find(u'/') != std::u16string::npos) return nullptr;
    size_t lastDot = units.rfind(u'.');
    for (size_t i = lastDot == std::u16string::npos ? 0 : lastDot + 1; i < units.size(); ++i) {
        if (units[i] == ' ' || isDirectionalControl(units[i])) return nullptr;
    }
    if (!url->parts.decomposable) return nullptr;
    std::string escaped;
    if (!escapedComponent(extension, false, escaped)) return nullptr;
    std::string_view path = pathOf(url);
    // Before a trailing '/', except for the root: "/" + "txt" gives "/.txt".
    size_t insertAt = path.size() > 1 && path.back() == '/' ? path.size() - 1 : path.size();
    std::string newPath(path.substr(0, insertAt));
    newPath.push_back('.');
    newPath.append(escaped);
    newPath.append(path.substr(insertAt));
    return createWithPath(allocator, url, newPath);
}

CFURLRef CFURLCreateCopyDeletingPathExtension(CFAllocatorRef allocator, CFURLRef url) {
    if (!checkURL(url, "CFURLCreateCopyDeletingPathExtension")) return nullptr;
    if (!url->parts.decomposable) return nullptr;
    std::string_view path = pathOf(url);
    Span last = lastSegment(path);
    size_t dot = extensionDot(last.in(path));
    if (dot == std::string_view::npos) return static_cast<CFURLRef>(CFRetain(url));
    std::string newPath(path.substr(0, last.start + dot));
    newPath.append(path.substr(last.end()));
    return createWithPath(allocator, url, newPath);
}
