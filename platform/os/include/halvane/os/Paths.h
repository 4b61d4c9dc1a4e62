// Well-known places in the file system.
#ifndef HALVANE_OS_PATHS_H
#define HALVANE_OS_PATHS_H

#include <string>

#include <halvane/os/Export.h>

namespace halvane::os {

// The user's home directory (UTF-8, no trailing separator unless it is the
// root): $HOME, else the user database's entry; empty if neither is known.
HALVANE_OS_API std::string HomeDirectoryPath();

}  // namespace halvane::os

#endif  // HALVANE_OS_PATHS_H
