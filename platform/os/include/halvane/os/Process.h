// Facts about the running process.
#ifndef HALVANE_OS_PROCESS_H
#define HALVANE_OS_PROCESS_H

#include <string>

#include <halvane/os/Export.h>

namespace halvane::os {

// The full path of the running executable (UTF-8); empty if unknown.
HALVANE_OS_API std::string ExecutablePath();

}  // namespace halvane::os

#endif  // HALVANE_OS_PROCESS_H
