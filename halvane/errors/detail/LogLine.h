// The pieces of a global log line, shared by the global log and the logger.
#ifndef HALVANE_ERRORS_DETAIL_LOGLINE_H
#define HALVANE_ERRORS_DETAIL_LOGLINE_H

class HVString;

namespace halvane::detail {

// The current local time as "MM-dd-yyyy HH:mm:ss.SSS".
HVString LogTimeStamp();
// "<program> : <time stamp> : <message>\n" ("<time stamp> : <message>\n"
// when the program name is unknown).
HVString LogLine(const HVString& message);
// Hands the line to the debugger output in pieces of at most 1023 units.
void WriteToDebugOutput(const HVString& line);
// Appends the line's UTF-8 bytes to the global log file, or to the
// fallback stream when no log file is set or it cannot be written.
void WriteToLogFile(const HVString& line);

}  // namespace halvane::detail

#endif  // HALVANE_ERRORS_DETAIL_LOGLINE_H
