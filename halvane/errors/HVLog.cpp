#include <halvane/errors/HVLog.h>

#include <halvane/errors/detail/LogLine.h>
#include <halvane/text/HVString.h>
#include <halvane/time/HVDate.h>
#include <halvane/time/HVTimeZone.h>
#include <halvane/time/detail/DateText.h>

#include <halvane/os/DebugOutput.h>
#include <halvane/os/File.h>
#include <halvane/os/Process.h>

#include <CoreFoundation/CoreFoundation.h>

#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <unistd.h>

namespace halvane::detail {

namespace {

std::string lastComponent(const std::string& path) {
    size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

// The running program's file name, fetched once.
const std::string& programName() {
    static const std::string name = lastComponent(halvane::os::ExecutablePath());
    return name;
}

// The global log's state: the path set by SetHVLogFilePath and the fallback
// stream, opened on first need and kept open for the life of the process.
struct GlobalLog {
    std::mutex mutex;
    std::string path;
    FILE* fallback = nullptr;
    bool fallbackTried = false;
};

GlobalLog& globalLog() {
    static GlobalLog* log = new GlobalLog;  // never destroyed: logging may go on during exit
    return *log;
}

// Beside the executable, replacing an old file; else in the user's data
// folder (which is not created here). Tried once per process.
FILE* openFallbackStream() {
    std::string executable = halvane::os::ExecutablePath();
    size_t slash = executable.find_last_of('/');
    if (slash != std::string::npos) {
        std::string path = executable.substr(0, slash + 1) + "HVLog.log";
        ::unlink(path.c_str());
        if (FILE* stream = std::fopen(path.c_str(), "a")) return stream;
    }
    std::string data;
    if (const char* xdg = std::getenv("XDG_DATA_HOME"); xdg != nullptr && xdg[0] == '/') {
        data = xdg;
    } else if (const char* home = std::getenv("HOME"); home != nullptr && home[0] != 0) {
        data = std::string(home) + "/.local/share";
    }
    if (data.empty()) return nullptr;
    return std::fopen((data + "/Logs/HVLog.log").c_str(), "a");
}

bool appendToLogFile(const std::string& path, const std::string& bytes) {
    bool isDirectory = false;
    if (path.empty() || !halvane::os::ItemExists(path, &isDirectory) || isDirectory) return false;
    try {
        halvane::os::File file(path, halvane::os::File::WriteOnly | halvane::os::File::ShareDenyNone);
        file.SeekToEnd();
        file.Write(bytes.data(), bytes.size());
        file.Flush();
        file.Close();
        return true;
    } catch (const halvane::os::FileError&) {
        return false;
    }
}

}  // namespace

HVString LogTimeStamp() {
    // The date class's own text, which is what the library's formatters
    // print for this pattern.
    return halvane::detail::DateTimeText(HVDate::Now(), HVTimeZone::CurrentTimeZone());
}

HVString LogLine(const HVString& message) {
    std::string name = programName();
    if (name.empty()) {
        GlobalLog& log = globalLog();
        std::lock_guard lock(log.mutex);
        name = lastComponent(log.path);
    }
    if (name.empty()) return HVString::StringWithFormat("%@ : %@\n", LogTimeStamp().Ref(), message.Ref());
    return HVString::StringWithFormat("%@ : %@ : %@\n", HVString(name).Ref(), LogTimeStamp().Ref(), message.Ref());
}

void WriteToDebugOutput(const HVString& line) {
    // The debugger output takes at most 1023 UTF-16 units at a time.
    constexpr size_t kPiece = 1023;
    CFStringRef text = static_cast<CFStringRef>(line.Ref());
    CFIndex length = CFStringGetLength(text);
    std::u16string units(size_t(length), u'\0');
    CFStringGetCharacters(text, CFRangeMake(0, length), reinterpret_cast<UniChar*>(units.data()));
    for (size_t start = 0; start < units.size(); start += kPiece) {
        halvane::os::WriteDebugOutput(std::u16string_view(units).substr(start, kPiece));
    }
}

void WriteToLogFile(const HVString& line) {
    std::string bytes = line;
    if (bytes.empty()) return;
    GlobalLog& log = globalLog();
    std::lock_guard lock(log.mutex);
    if (appendToLogFile(log.path, bytes)) return;
    if (!log.fallbackTried) {
        log.fallbackTried = true;
        log.fallback = openFallbackStream();
    }
    // No stream at all: the line is dropped.
    if (log.fallback != nullptr) std::fwrite(bytes.data(), 1, bytes.size(), log.fallback);
}

}  // namespace halvane::detail

void HVLog(HVString format, ...) {
    va_list arguments;
    va_start(arguments, format);
    HVLogV(format, arguments);
    va_end(arguments);
}

void HVLogV(const HVString& format, va_list arguments) {
    HVString line = halvane::detail::LogLine(HVString::StringWithFormatAndArguments(format, arguments));
    halvane::detail::WriteToDebugOutput(line);
    halvane::detail::WriteToLogFile(line);
}

void SetHVLogFilePath(const HVString& path) {
    std::string file = path;
    halvane::detail::GlobalLog& log = halvane::detail::globalLog();
    std::lock_guard lock(log.mutex);
    log.path = file;
    if (file.empty()) return;
    halvane::os::RemoveItem(file);
    if (halvane::os::ItemExists(file)) return;
    try {
        halvane::os::File created(file, halvane::os::File::WriteOnly | halvane::os::File::Create);
        created.Close();
    } catch (const halvane::os::FileError&) {
        // A log file that cannot be made: lines fall back to the other streams.
    }
}
