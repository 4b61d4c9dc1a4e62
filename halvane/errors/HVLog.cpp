#include <halvane/errors/HVLog.h>

#include <halvane/errors/detail/LogLine.h>
#include <halvane/text/HVString.h>

#include <halvane/os/DebugOutput.h>
#include <halvane/os/Process.h>

#include <CoreFoundation/CoreFoundation.h>

#include <algorithm>
#include <ctime>
#include <string>

namespace halvane::detail {

namespace {

// The running program's file name, fetched once.
const HVString& programName() {
    static const HVString name = [] {
        std::string path = halvane::os::ExecutablePath();
        size_t slash = path.find_last_of('/');
        return HVString(slash == std::string::npos ? path : path.substr(slash + 1));
    }();
    return name;
}

}  // namespace

HVString LogTimeStamp() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    std::tm local{};
    localtime_r(&now.tv_sec, &local);
    return HVString::StringWithFormat("%02d-%02d-%04d %02d:%02d:%02d.%03d", local.tm_mon + 1, local.tm_mday,
                                      local.tm_year + 1900, local.tm_hour, local.tm_min, local.tm_sec,
                                      int(now.tv_nsec / 1000000));
}

HVString LogLine(const HVString& message) {
    const HVString& name = programName();
    if (name.IsEmpty()) return HVString::StringWithFormat("%@ : %@\n", LogTimeStamp().Ref(), message.Ref());
    return HVString::StringWithFormat("%@ : %@ : %@\n", name.Ref(), LogTimeStamp().Ref(), message.Ref());
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

}  // namespace halvane::detail

void HVLog(HVString format, ...) {
    va_list arguments;
    va_start(arguments, format);
    HVLogV(format, arguments);
    va_end(arguments);
}

void HVLogV(const HVString& format, va_list arguments) {
    HVString message = HVString::StringWithFormatAndArguments(format, arguments);
    halvane::detail::WriteToDebugOutput(halvane::detail::LogLine(message));
}
