// The version of the library a program was built against and the one it
// runs with.
#ifndef HALVANE_CORE_HVLIBRARYVERSION_H
#define HALVANE_CORE_HVLIBRARYVERSION_H

#include <halvane/core/HVExport.h>

#define HALVANE_VERSION_MAJOR 0
#define HALVANE_VERSION_MINOR 1
#define HALVANE_VERSION_PATCH 0
#define HALVANE_VERSION_STRING "0.1.0"

// The version of the loaded library, as "major.minor.patch".
HV_EXPORT const char* HVLibraryVersion();

#endif  // HALVANE_CORE_HVLIBRARYVERSION_H
