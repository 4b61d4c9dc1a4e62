// Halvane: the whole public interface of the library.
#ifndef HALVANE_HALVANE_H
#define HALVANE_HALVANE_H

#include <CoreFoundation/CoreFoundation.h>

#include <halvane/core/HVClassType.h>
#include <halvane/core/HVExport.h>
#include <halvane/core/HVLibraryVersion.h>
#include <halvane/core/HVNull.h>
#include <halvane/core/HVObject.h>
#include <halvane/core/HVRetainedObject.h>
#include <halvane/text/HVComparisonResult.h>
#include <halvane/text/HVCharacterSet.h>
#include <halvane/text/HVCompare.h>
#include <halvane/text/HVRange.h>
#include <halvane/text/HVScanner.h>
#include <halvane/text/HVString.h>
#include <halvane/values/HVBool.h>
#include <halvane/values/HVNumber.h>
#include <halvane/values/HVNumericUtilities.h>
#include <halvane/values/HVPoint.h>
#include <halvane/values/HVRect.h>
#include <halvane/values/HVSerialization.h>
#include <halvane/values/HVSize.h>
#include <halvane/values/HVValue.h>
#include <halvane/collections/HVArray.h>
#include <halvane/collections/HVData.h>
#include <halvane/collections/HVDictionary.h>
#include <halvane/collections/HVEnumerator.h>
#include <halvane/collections/HVMutableArray.h>
#include <halvane/collections/HVMutableDictionary.h>
#include <halvane/serialization/HVJSONSerialization.h>
#include <halvane/serialization/HVPropertyListSerialization.h>
#include <halvane/errors/HVAssert.h>
#include <halvane/errors/HVError.h>
#include <halvane/errors/HVException.h>
#include <halvane/errors/HVLog.h>
#include <halvane/time/HVDate.h>
#include <halvane/time/HVTimeZone.h>

#endif  // HALVANE_HALVANE_H
