// The class types of the value classes. The numbers are part of the
// interface: they are compared numerically and passed to and from callers,
// so they never change (16 to 18 stay unassigned).
#ifndef HALVANE_CORE_HVCLASSTYPE_H
#define HALVANE_CORE_HVCLASSTYPE_H

#include <cstdint>

enum HVClassType : int32_t {
    HVUnknownClassType = 0,
    HVArrayClassType = 1,
    HVMutableArrayClassType = 2,
    HVBoolClassType = 3,
    HVBundleClassType = 4,
    HVCharacterSetClassType = 5,
    HVDataClassType = 6,
    HVMutableDataClassType = 7,
    HVDateClassType = 8,
    HVDateFormatterClassType = 9,
    HVDictionaryClassType = 10,
    HVMutableDictionaryClassType = 11,
    HVEnumeratorClassType = 12,
    HVErrorClassType = 13,
    HVExceptionClassType = 14,
    HVFileHandleClassType = 15,
    HVLockClassType = 19,
    HVNullClassType = 20,
    HVNumberClassType = 21,
    HVObjectClassType = 22,
    HVRetainedObjectClassType = 23,
    HVScannerClassType = 24,
    HVStringClassType = 25,
    HVURLClassType = 26,
    HVValueClassType = 27,
    HVTimeZoneClassType = 28,
    HVDateComponentsClassType = 29,
    HVCalendarClassType = 30,
    HVLocaleClassType = 31,
    HVReadStreamClassType = 32,
    HVWriteStreamClassType = 33,
    HVSocketClassType = 34,
};

#endif  // HALVANE_CORE_HVCLASSTYPE_H
