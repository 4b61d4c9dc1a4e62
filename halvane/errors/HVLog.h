// The global log: every line goes to the debugger output and to the log
// file.
#ifndef HALVANE_ERRORS_HVLOG_H
#define HALVANE_ERRORS_HVLOG_H

#include <halvane/core/HVExport.h>

#include <cstdarg>

class HVString;

// Formats the arguments ("%@" takes CoreFoundation objects: pass an
// HVObject as its Ref()) and writes the result as one log line:
// "<program> : <MM-dd-yyyy HH:mm:ss.SSS> : <message>".
HV_EXPORT void HVLog(HVString format, ...);
HV_EXPORT void HVLogV(const HVString& format, va_list arguments);

// Makes path the log file: whatever is there is deleted and an empty file
// created, so every process starts its log empty. Until a path is set,
// lines go to "HVLog.log" beside the executable (replaced at the first
// line), else to Logs/HVLog.log in the user's data folder.
HV_EXPORT void SetHVLogFilePath(const HVString& path);

#endif  // HALVANE_ERRORS_HVLOG_H
