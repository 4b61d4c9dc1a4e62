#include <halvane/core/HVLibraryVersion.h>

const char* HVLibraryVersion() { return HALVANE_VERSION_STRING; }
