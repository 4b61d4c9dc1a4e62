// Sequential (time-based) UUIDs.
#ifndef HALVANE_OS_UUID_H
#define HALVANE_OS_UUID_H

#include <string>

#include <halvane/os/Export.h>

namespace halvane::os {

// A new time-based UUID in the 36-character 8-4-4-4-12 form, lowercase;
// empty if none could be made.
HALVANE_OS_API std::string CreateSequentialUUIDString();

}  // namespace halvane::os

#endif  // HALVANE_OS_UUID_H
