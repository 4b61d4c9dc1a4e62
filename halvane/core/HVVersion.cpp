#include <halvane/core/HVVersion.h>

const char* HVLibraryVersion() { return HALVANE_VERSION_STRING; }
