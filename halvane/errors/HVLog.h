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

#endif  // HALVANE_ERRORS_HVLOG_H
