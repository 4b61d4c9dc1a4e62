// Run-time assertions, active in every build: a failed check writes one of
// the library's fixed assertion lines to the global log and execution goes
// on. It never stops the program.
#ifndef HALVANE_ERRORS_HVASSERT_H
#define HALVANE_ERRORS_HVASSERT_H

#include <halvane/core/HVExport.h>

class HVObject;

// "Failed Assert! (%s) - %@    Function:%s File:%s Line:%d"
HV_EXPORT void HVAssertionFailed(const char* condition, const HVObject& message, const char* function,
                                 const char* file, int line);
// "Failed Assert! (%s) - %s    Function:%s File:%s Line:%d"
HV_EXPORT void HVAssertionFailed(const char* condition, const char* message, const char* function, const char* file,
                                 int line);
// "Failed Assert! (%s)    Function:%s File:%s Line:%d"
HV_EXPORT void HVAssertionFailed(const char* condition, const char* function, const char* file, int line);
// "Failed Assert! (%s)  Function:%s File:%s Line:%d" (two spaces)
HV_EXPORT void HVAssertionFailedShort(const char* condition, const char* function, const char* file, int line);

// The function is given as Class::Method (a full signature is reduced to
// that) and the file by its name without directory and extension.
#define HV_ASSERT_PLAIN(condition)                                                                \
    do {                                                                                          \
        if (!(condition)) HVAssertionFailed(#condition, __PRETTY_FUNCTION__, __FILE__, __LINE__); \
    } while (0)
#define HV_ASSERT_WITH_MESSAGE(condition, message)                                                         \
    do {                                                                                                   \
        if (!(condition)) HVAssertionFailed(#condition, (message), __PRETTY_FUNCTION__, __FILE__, __LINE__); \
    } while (0)
#define HV_ASSERT_CHOOSE(_1, _2, chosen, ...) chosen

// HVAssert(condition) or HVAssert(condition, message), where message is an
// HVObject (written through "%@") or a byte string.
#define HVAssert(...) HV_ASSERT_CHOOSE(__VA_ARGS__, HV_ASSERT_WITH_MESSAGE, HV_ASSERT_PLAIN, unused)(__VA_ARGS__)

#endif  // HALVANE_ERRORS_HVASSERT_H
