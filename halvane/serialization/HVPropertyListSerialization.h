// HVPropertyListSerialization: property-list objects (arrays, dictionaries,
// strings, numbers, booleans, dates, data) to XML property-list bytes and
// back. Only the XML format is written or read; another format given as an
// argument is logged and treated as XML.
#ifndef HALVANE_SERIALIZATION_HVPROPERTYLISTSERIALIZATION_H
#define HALVANE_SERIALIZATION_HVPROPERTYLISTSERIALIZATION_H

#include <halvane/collections/HVArray.h>
#include <halvane/collections/HVData.h>
#include <halvane/collections/HVDictionary.h>
#include <halvane/core/HVObject.h>
#include <halvane/text/HVString.h>

class HVError;

// The platform's format numbers; only the XML format is acted on.
enum HVPropertyListFormat {
    HVPropertyListOpenStepFormat = 1,
    HVPropertyListXMLFormat_v1_0 = 100,
    HVPropertyListBinaryFormat_v1_0 = 200,
    HVPropertyListXMLFormat = HVPropertyListXMLFormat_v1_0,
    HVPropertyListBinaryFormat = HVPropertyListBinaryFormat_v1_0,
};

class HV_EXPORT HVPropertyListSerialization {
public:
    // "HVPropertyListSerializationDomain": code 1 when an object cannot be
    // written (a property list cannot hold something it contains), -1234
    // when data cannot be read (the description is the parser's message).
    static HVString ErrorDomain();

    static bool PropertyListIsValidForFormat(const HVObject& object, HVPropertyListFormat format);

    // The XML bytes; empty data and error code 1 when the object cannot be
    // written. error is cleared on every call.
    static HVData DataWithPropertyListUsingFormat(const HVObject& object, HVPropertyListFormat format,
                                                  HVError& error);
    static HVData DataWithPropertyListUsingFormat(const HVObject& object, HVPropertyListFormat format);
    static HVData DataWithArrayPropertyListUsingFormat(const HVArray& array, HVPropertyListFormat format,
                                                       HVError& error);
    static HVData DataWithArrayPropertyListUsingFormat(const HVArray& array, HVPropertyListFormat format);
    static HVData DataWithDictionaryPropertyListUsingFormat(const HVDictionary& dictionary,
                                                            HVPropertyListFormat format, HVError& error);
    static HVData DataWithDictionaryPropertyListUsingFormat(const HVDictionary& dictionary,
                                                            HVPropertyListFormat format);

    // The object the bytes hold, or an object holding no reference (error
    // code -1234). The format is only read: it is never set to the format
    // found.
    static HVObject PropertyListWithDataAndFormatIdentifiedAs(const HVData& data, HVPropertyListFormat& format,
                                                              HVError& error);
    static HVObject PropertyListWithDataAndFormatIdentifiedAs(const HVData& data, HVPropertyListFormat& format);
    static HVObject PropertyListWithData(const HVData& data, HVError& error);
    static HVObject PropertyListWithData(const HVData& data);

    // A parsed object of another kind is reported by the collection's
    // conversion and gives the empty collection.
    static HVArray ArrayPropertyListWithData(const HVData& data, HVError& error);
    static HVArray ArrayPropertyListWithData(const HVData& data);
    static HVArray ArrayPropertyListWithDataAndFormatIdentifiedAs(const HVData& data, HVPropertyListFormat& format,
                                                                  HVError& error);
    static HVArray ArrayPropertyListWithDataAndFormatIdentifiedAs(const HVData& data, HVPropertyListFormat& format);
    static HVDictionary DictionaryPropertyListWithData(const HVData& data, HVError& error);
    static HVDictionary DictionaryPropertyListWithData(const HVData& data);
    static HVDictionary DictionaryPropertyListWithDataAndFormatIdentifiedAs(const HVData& data,
                                                                            HVPropertyListFormat& format,
                                                                            HVError& error);
    static HVDictionary DictionaryPropertyListWithDataAndFormatIdentifiedAs(const HVData& data,
                                                                            HVPropertyListFormat& format);
};

#endif  // HALVANE_SERIALIZATION_HVPROPERTYLISTSERIALIZATION_H
