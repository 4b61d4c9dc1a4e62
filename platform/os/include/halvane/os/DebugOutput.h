// The debugger output channel: where a Windows build calls
// OutputDebugStringW, the library sends its text to this sink.
#ifndef HALVANE_OS_DEBUGOUTPUT_H
#define HALVANE_OS_DEBUGOUTPUT_H

#include <functional>
#include <string_view>

#include <halvane/os/Export.h>

namespace halvane::os {

using DebugOutputSink = std::function<void(std::u16string_view text)>;

// Hands text to the current sink. The default sink writes the text as UTF-8
// to standard error, but only while a debugger is attached to the process
// or the environment variable HALVANE_DEBUG_OUTPUT is "1"; otherwise the
// text goes nowhere, as debugger output does on Windows.
HALVANE_OS_API void WriteDebugOutput(std::u16string_view text);

// Installs sink (an empty function restores the default) and returns the
// one it replaces. Tests use this to capture what the library writes.
HALVANE_OS_API DebugOutputSink SetDebugOutputSink(DebugOutputSink sink);

// True while a tracer (debugger) is attached to this process.
HALVANE_OS_API bool IsDebuggerAttached();

}  // namespace halvane::os

#endif  // HALVANE_OS_DEBUGOUTPUT_H
