// HVJSONSerialization: JSON text (UTF-8, held in HVData) to the library's
// objects and back. jsoncpp parses and writes the text; this class maps
// its values to nulls, numbers, strings, booleans, arrays and dictionaries.
//
// Failures are HVError values in "HalvaneDomain" with code 20002
// (HVCodingError): "Object failed to be decoded." or "Object failed to be
// encoded.", the failure reason telling what went wrong. The error
// parameter is only written on a failure. The forms without one log an
// assertion line instead. Nothing is thrown.
#ifndef HALVANE_SERIALIZATION_HVJSONSERIALIZATION_H
#define HALVANE_SERIALIZATION_HVJSONSERIALIZATION_H

#include <halvane/collections/HVArray.h>
#include <halvane/collections/HVData.h>
#include <halvane/collections/HVDictionary.h>
#include <halvane/core/HVObject.h>

class HVError;

class HV_EXPORT HVJSONSerialization {
public:
    // The decoded object, typed by what it holds. Text that is not JSON
    // gives an object holding no reference; a value that cannot be
    // converted gives the containers around it with the members before it.
    // JSON integers become 32-bit numbers (signed, or unsigned above the
    // signed range); wider ones keep their low 32 bits.
    static HVObject ObjectWithJSONData(const HVData& data, HVError& error);
    static HVObject ObjectWithJSONData(const HVData& data);
    // The decoded object converted to an array; another kind of object is
    // reported (and the conversion reports it as well).
    static HVArray ArrayWithJSONData(const HVData& data, HVError& error);
    static HVArray ArrayWithJSONData(const HVData& data);
    static HVDictionary DictionaryWithJSONData(const HVData& data, HVError& error);
    static HVDictionary DictionaryWithJSONData(const HVData& data);

    // jsoncpp's styled (indented, multi-line) text of the object, or empty
    // data when anything in it cannot be written: only nulls, booleans,
    // numbers, strings, arrays and dictionaries can. Numbers that are not
    // of a floating type are written as signed 32-bit integers.
    static HVData JSONDataWithObject(const HVObject& object, HVError& error);
    static HVData JSONDataWithObject(const HVObject& object);
    static HVData JSONDataWithArray(const HVArray& array, HVError& error);
    static HVData JSONDataWithArray(const HVArray& array);
    static HVData JSONDataWithDictionary(const HVDictionary& dictionary, HVError& error);
    static HVData JSONDataWithDictionary(const HVDictionary& dictionary);
};

#endif  // HALVANE_SERIALIZATION_HVJSONSERIALIZATION_H
