// The operating-system layer is linked into the library; its interface is
// exported from there so that the library's tests and tools reach the same
// state (for example the debug-output sink) as the library itself.
#ifndef HALVANE_OS_EXPORT_H
#define HALVANE_OS_EXPORT_H

#define HALVANE_OS_API __attribute__((visibility("default")))

#endif  // HALVANE_OS_EXPORT_H
