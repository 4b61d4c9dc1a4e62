// Reading and writing the resources URLs name: whole files and their
// properties for file: URLs, inline data for data: URLs.
//
// Writing replaces a file atomically (a temporary file in the same
// directory, flushed, then renamed over the target): a reader never sees a
// half-written file and a failed write leaves the old contents in place.
#include "CFConstantString.h"
#include "CFURLInternal.h"

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFURLAccess.h>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <random>
#include <string>
#include <vector>

using namespace halvane::detail;

const CFStringRef kCFURLFileExists = &constantString<"kCFURLFileExists">;
const CFStringRef kCFURLFileDirectoryContents = &constantString<"kCFURLFileDirectoryContents">;
const CFStringRef kCFURLFileLength = &constantString<"kCFURLFileLength">;
const CFStringRef kCFURLFileLastModificationTime = &constantString<"kCFURLFileLastModificationTime">;
const CFStringRef kCFURLFilePOSIXMode = &constantString<"kCFURLFilePOSIXMode">;
const CFStringRef kCFURLFileOwnerID = &constantString<"kCFURLFileOwnerID">;

namespace {

void setError(SInt32* errorCode, SInt32 code) {
    if (errorCode != nullptr) *errorCode = code;
}

// The file-system path a file URL names: resolved against its base, escapes
// decoded to bytes (file names are byte strings, not necessarily UTF-8).
bool filePathOf(CFURLRef url, std::string& path) {
    CFURLRef absolute = CFURLCopyAbsoluteURL(url);
    if (absolute == nullptr) return false;
    bool decoded = absolute->parts.decomposable && decodePercentBytes(absolute->parts.path.in(textOf(absolute)), path);
    CFRelease(absolute);
    return decoded && !path.empty() && path.find('\0') == std::string::npos;
}

bool readWholeFile(const std::string& path, std::string& contents) {
    int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    struct stat status;
    bool ok = fstat(fd, &status) == 0 && S_ISREG(status.st_mode);
    if (ok && status.st_size > 0) contents.reserve(size_t(status.st_size));
    char buffer[65536];
    while (ok) {
        ssize_t count = read(fd, buffer, sizeof buffer);
        if (count > 0) {
            contents.append(buffer, size_t(count));
        } else if (count == 0) {
            break;
        } else if (errno != EINTR) {
            ok = false;
        }
    }
    close(fd);
    return ok;
}

CFNumberRef createNumber(SInt64 value) {
    return CFNumberCreate(nullptr, kCFNumberSInt64Type, &value);
}

CFNumberRef createNumber32(SInt32 value) {
    return CFNumberCreate(nullptr, kCFNumberSInt32Type, &value);
}

// File URLs for the entries of a directory, sorted by name (directory order
// differs between file systems).
CFArrayRef createDirectoryContents(const std::string& directory) {
    DIR* stream = opendir(directory.c_str());
    if (stream == nullptr) return nullptr;
    std::vector<std::pair<std::string, bool>> entries;
    while (dirent* entry = readdir(stream)) {
        std::string name = entry->d_name;
        if (name == "." || name == "..") continue;
        bool isDirectory = entry->d_type == DT_DIR;
        if (entry->d_type == DT_UNKNOWN || entry->d_type == DT_LNK) {
            struct stat status;
            isDirectory = fstatat(dirfd(stream), entry->d_name, &status, 0) == 0 && S_ISDIR(status.st_mode);
        }
        entries.emplace_back(std::move(name), isDirectory);
    }
    closedir(stream);
    std::sort(entries.begin(), entries.end());

    std::string prefix = "file://";
    appendEscapedBytes(prefix, directory, kPathCharacters);
    if (prefix.back() != '/') prefix.push_back('/');
    CFMutableArrayRef urls = CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks);
    for (const auto& [name, isDirectory] : entries) {
        std::string text = prefix;
        appendEscapedBytes(text, name, kPathCharacters);
        if (isDirectory) text.push_back('/');
        CFURLRef url =
            createURLFromText(nullptr, text, nullptr, isDirectory ? DirectoryFlag::kYes : DirectoryFlag::kNo);
        if (url == nullptr) continue;
        CFArrayAppendValue(urls, url);
        CFRelease(url);
    }
    return urls;
}

// The properties asked for (all of them for NULL). problem receives the
// first thing that could not be answered: -16 for a key this library does
// not know, -10 for information the file system did not give.
CFDictionaryRef createFileProperties(const std::string& path, CFArrayRef desired, SInt32& problem) {
    const CFStringRef allKeys[] = {kCFURLFileExists,    kCFURLFileLength,
                                   kCFURLFilePOSIXMode, kCFURLFileLastModificationTime,
                                   kCFURLFileOwnerID,   kCFURLFileDirectoryContents};
    std::vector<CFTypeRef> keys;
    if (desired == nullptr) {
        keys.assign(std::begin(allKeys), std::end(allKeys));
    } else {
        for (CFIndex i = 0; i < CFArrayGetCount(desired); ++i) keys.push_back(CFArrayGetValueAtIndex(desired, i));
    }
    struct stat status;
    bool exists = stat(path.c_str(), &status) == 0;
    auto noteProblem = [&problem](SInt32 code) {
        if (problem == 0) problem = code;
    };

    CFMutableDictionaryRef properties =
        CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
    for (CFTypeRef key : keys) {
        CFTypeRef value = nullptr;
        if (CFEqual(key, kCFURLFileExists)) {
            value = CFRetain(exists ? kCFBooleanTrue : kCFBooleanFalse);
        } else if (CFEqual(key, kCFURLFileLength)) {
            if (exists) value = createNumber(SInt64(status.st_size));
        } else if (CFEqual(key, kCFURLFilePOSIXMode)) {
            if (exists) value = createNumber32(SInt32(status.st_mode));
        } else if (CFEqual(key, kCFURLFileLastModificationTime)) {
            if (exists) {
                value = CFDateCreate(nullptr, double(status.st_mtim.tv_sec) - kCFAbsoluteTimeIntervalSince1970 +
                                                  double(status.st_mtim.tv_nsec) / 1e9);
            }
        } else if (CFEqual(key, kCFURLFileOwnerID)) {
            if (exists) value = createNumber32(SInt32(status.st_uid));
        } else if (CFEqual(key, kCFURLFileDirectoryContents)) {
            if (exists && S_ISDIR(status.st_mode)) value = createDirectoryContents(path);
        } else {
            noteProblem(kCFURLUnknownPropertyKeyError);
            continue;
        }
        if (value == nullptr) {
            noteProblem(kCFURLUnknownError);
            continue;
        }
        CFDictionarySetValue(properties, key, value);
        CFRelease(value);
    }
    CFDictionaryRef result = CFDictionaryCreateCopy(nullptr, properties);
    CFRelease(properties);
    return result;
}

int base64Value(char c) {
    if (c >= 'A' && c <= 'Z') return c - 'A';
    if (c >= 'a' && c <= 'z') return c - 'a' + 26;
    if (c >= '0' && c <= '9') return c - '0' + 52;
    if (c == '+') return 62;
    if (c == '/') return 63;
    return -1;
}

bool decodeBase64(std::string_view text, std::string& out) {
    uint32_t accumulator = 0;
    int bits = 0;
    bool padding = false;
    for (char c : text) {
        if (c == ' ' || c == '\t' || c == '\r' || c == '\n') continue;
        if (c == '=') {
            padding = true;
            continue;
        }
        int value = base64Value(c);
        if (value < 0 || padding) return false;
        accumulator = (accumulator << 6 | uint32_t(value)) & 0xFFFFFF;
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            out.push_back(char(accumulator >> bits & 0xFF));
        }
    }
    return true;
}

// data:[type][;base64],payload
bool decodeDataURL(CFURLRef url, std::string& bytes) {
    std::string_view text = textOf(url);
    size_t end = url->parts.hasFragment ? url->parts.fragment.start - 1 : text.size();
    std::string_view specifier = text.substr(url->parts.scheme.end() + 1, end - url->parts.scheme.end() - 1);
    size_t comma = specifier.find(',');
    if (comma == std::string_view::npos) return false;
    std::string_view header = specifier.substr(0, comma);
    std::string payload;
    if (!decodePercentBytes(specifier.substr(comma + 1), payload)) return false;
    constexpr std::string_view kBase64 = ";base64";
    if (header.size() >= kBase64.size() && schemeIs(header.substr(header.size() - kBase64.size()), ";base64")) {
        return decodeBase64(payload, bytes);
    }
    bytes = std::move(payload);
    return true;
}

bool writeAll(int fd, const UInt8* bytes, size_t length) {
    while (length > 0) {
        ssize_t written = write(fd, bytes, length);
        if (written < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        bytes += written;
        length -= size_t(written);
    }
    return true;
}

// A new file next to path, created with mode 0666 under the umask.
int createTemporaryFile(const std::string& directory, const std::string& name, std::string& temporaryPath) {
    static thread_local std::mt19937_64 random{std::random_device{}()};
    constexpr size_t kLongestNamePart = 200;  // the whole name must stay below NAME_MAX
    for (int attempt = 0; attempt < 64; ++attempt) {
        char suffix[17];
        std::snprintf(suffix, sizeof suffix, "%016llx", static_cast<unsigned long long>(random()));
        temporaryPath = directory + "/." + name.substr(0, kLongestNamePart) + "." + suffix;
        int fd = open(temporaryPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd >= 0 || errno != EEXIST) return fd;
    }
    return -1;
}

bool writeFileAtomically(const std::string& target, const UInt8* bytes, size_t length, std::optional<mode_t> mode) {
    // Through a symbolic link: the link stays, the file it names is replaced.
    std::string path = target;
    struct stat status;
    if (lstat(target.c_str(), &status) == 0 && S_ISLNK(status.st_mode)) {
        if (char* resolved = realpath(target.c_str(), nullptr)) {
            path = resolved;
            std::free(resolved);
        }
    }
    bool exists = stat(path.c_str(), &status) == 0;
    if (exists && !S_ISREG(status.st_mode)) return false;

    size_t slash = path.rfind('/');
    std::string directory = slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
    std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    if (name.empty()) return false;
    std::string temporaryPath;
    int fd = createTemporaryFile(directory == "/" ? "" : directory, name, temporaryPath);
    if (fd < 0) return false;

    bool ok = writeAll(fd, bytes, length);
    if (ok && exists) {
        // The replacement keeps the old file's permissions and, where the
        // process may set them, its owner and group.
        ok = fchmod(fd, status.st_mode & 07777) == 0;
        if (ok && fchown(fd, status.st_uid, status.st_gid) != 0) {
            // Only a privileged process may give a file away; the mode is kept.
        }
    }
    if (ok && mode) ok = fchmod(fd, *mode) == 0;
    if (ok) ok = fsync(fd) == 0;
    if (close(fd) != 0) ok = false;
    if (ok) ok = rename(temporaryPath.c_str(), path.c_str()) == 0;
    if (!ok) {
        unlink(temporaryPath.c_str());
        return false;
    }
    // Make the rename itself durable.
    int directoryFD = open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (directoryFD >= 0) {
        fsync(directoryFD);
        close(directoryFD);
    }
    return true;
}

// The mode to set, from properties that may hold kCFURLFilePOSIXMode only.
bool modeToWrite(CFDictionaryRef properties, std::optional<mode_t>& mode) {
    CFIndex count = CFDictionaryGetCount(properties);
    std::vector<const void*> keys(static_cast<size_t>(count)), values(static_cast<size_t>(count));
    CFDictionaryGetKeysAndValues(properties, keys.data(), values.data());
    for (CFIndex i = 0; i < count; ++i) {
        SInt32 value = 0;
        if (!CFEqual(keys[size_t(i)], kCFURLFilePOSIXMode) || !isA(values[size_t(i)], kCFNumberTypeID) ||
            !CFNumberGetValue(static_cast<CFNumberRef>(values[size_t(i)]), kCFNumberSInt32Type, &value)) {
            return false;
        }
        mode = mode_t(value) & 07777;
    }
    return true;
}

}  // namespace

Boolean CFURLCreateDataAndPropertiesFromResource(CFAllocatorRef alloc, CFURLRef url, CFDataRef* resourceData,
                                                 CFDictionaryRef* properties, CFArrayRef desiredProperties,
                                                 SInt32* errorCode) {
    static constexpr const char* kCaller = "CFURLCreateDataAndPropertiesFromResource";
    if (resourceData != nullptr) *resourceData = nullptr;
    if (properties != nullptr) *properties = nullptr;
    setError(errorCode, 0);
    if (!checkURL(url, kCaller)) {
        setError(errorCode, kCFURLImproperArgumentsError);
        return false;
    }
    if (desiredProperties != nullptr && !isA(desiredProperties, kCFArrayTypeID)) {
        reportMisuse("CFURL: %s(): the desired properties are not an array", kCaller);
        setError(errorCode, kCFURLImproperArgumentsError);
        return false;
    }
    std::string_view scheme = effectiveScheme(url);
    if (scheme.empty()) {
        setError(errorCode, kCFURLImproperArgumentsError);
        return false;
    }
    if (schemeIs(scheme, "data")) {
        CFURLRef absolute = CFURLCopyAbsoluteURL(url);
        std::string bytes;
        bool decoded = absolute != nullptr && decodeDataURL(absolute, bytes);
        if (absolute != nullptr) CFRelease(absolute);
        if (!decoded) {
            setError(errorCode, kCFURLUnknownError);
            return false;
        }
        if (resourceData != nullptr) {
            *resourceData = CFDataCreate(alloc, reinterpret_cast<const UInt8*>(bytes.data()), CFIndex(bytes.size()));
            if (*resourceData == nullptr) {
                setError(errorCode, kCFURLUnknownError);
                return false;
            }
        }
        if (properties != nullptr) {
            // Inline data has no file properties.
            *properties = CFDictionaryCreate(nullptr, nullptr, nullptr, 0, &kCFTypeDictionaryKeyCallBacks,
                                             &kCFTypeDictionaryValueCallBacks);
            setError(errorCode, kCFURLPropertyKeyUnavailableError);
        }
        return true;
    }
    if (!schemeIs(scheme, "file")) {
        setError(errorCode, kCFURLUnknownSchemeError);
        return false;
    }
    std::string path;
    if (!filePathOf(url, path)) {
        setError(errorCode, kCFURLUnknownError);
        return false;
    }
    SInt32 problem = 0;
    bool ok = true;
    if (resourceData != nullptr) {
        std::string contents;
        if (readWholeFile(path, contents)) {
            *resourceData =
                CFDataCreate(alloc, reinterpret_cast<const UInt8*>(contents.data()), CFIndex(contents.size()));
        }
        if (*resourceData == nullptr) {
            ok = false;
            problem = kCFURLUnknownError;
        }
    }
    if (properties != nullptr) *properties = createFileProperties(path, desiredProperties, problem);
    setError(errorCode, problem);
    return ok;
}

Boolean CFURLWriteDataAndPropertiesToResource(CFURLRef url, CFDataRef dataToWrite, CFDictionaryRef propertiesToWrite,
                                              SInt32* errorCode) {
    static constexpr const char* kCaller = "CFURLWriteDataAndPropertiesToResource";
    setError(errorCode, 0);
    bool arguments = checkURL(url, kCaller);
    if (arguments && dataToWrite != nullptr && !isA(dataToWrite, kCFDataTypeID)) {
        reportMisuse("CFURL: %s(): the data to write is not a data object", kCaller);
        arguments = false;
    }
    if (arguments && propertiesToWrite != nullptr && !isA(propertiesToWrite, kCFDictionaryTypeID)) {
        reportMisuse("CFURL: %s(): the properties to write are not a dictionary", kCaller);
        arguments = false;
    }
    if (!arguments) {
        setError(errorCode, kCFURLImproperArgumentsError);
        return false;
    }
    std::string_view scheme = effectiveScheme(url);
    if (scheme.empty()) {
        setError(errorCode, kCFURLImproperArgumentsError);
        return false;
    }
    if (scheme != "file") {
        setError(errorCode, kCFURLUnknownSchemeError);
        return false;
    }
    std::string path;
    std::optional<mode_t> mode;
    // Properties are checked before anything is written, so that a refused
    // call changes nothing.
    if (!filePathOf(url, path) || (propertiesToWrite != nullptr && !modeToWrite(propertiesToWrite, mode))) {
        setError(errorCode, kCFURLUnknownError);
        return false;
    }
    bool ok = true;
    bool modeApplied = false;
    if (dataToWrite != nullptr) {
        if (CFURLHasDirectoryPath(url)) {
            ok = mkdir(path.c_str(), 0777) == 0;
        } else {
            ok = writeFileAtomically(path, CFDataGetBytePtr(dataToWrite), size_t(CFDataGetLength(dataToWrite)), mode);
            modeApplied = true;
        }
    }
    if (ok && mode && !modeApplied) ok = chmod(path.c_str(), *mode) == 0;
    if (!ok) setError(errorCode, kCFURLUnknownError);
    return ok;
}
