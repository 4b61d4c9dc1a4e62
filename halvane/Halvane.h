// Halvane: the whole public interface of the library.
#ifndef HALVANE_HALVANE_H
#define HALVANE_HALVANE_H

#include <CoreFoundation/CoreFoundation.h>

#include <halvane/core/HVExport.h>
#include <halvane/core/HVLibraryVersion.h>
#include <halvane/core/HVNull.h>
#include <halvane/values/HVBool.h>
#include <halvane/values/HVNumber.h>
#include <halvane/values/HVNumericUtilities.h>

#endif  // HALVANE_HALVANE_H
