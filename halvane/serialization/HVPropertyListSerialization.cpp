#include <halvane/serialization/HVPropertyListSerialization.h>

#include <halvane/errors/HVError.h>
#include <halvane/errors/HVLog.h>

#include <CoreFoundation/CoreFoundation.h>

namespace {

// Reading reports the writer's name too: kept so, log readers match on it.
void reportUnhandledFormat(HVPropertyListFormat format) {
    if (format != HVPropertyListXMLFormat_v1_0) {
        HVLog("HVPropertyListSerialization::DataWithPropertyListUsingFormat - Format not handled; defaulting to XML");
    }
}

// The parser's result, released once the object that holds it is made.
struct ParsedPropertyList {
    CFPropertyListRef ref;
    ~ParsedPropertyList() {
        if (ref != nullptr) CFRelease(ref);
    }
};

HVError errorWithCode(long long code, const HVString& description) {
    return HVError::ErrorWithCodeDescriptionAndDomain(code, description, HVPropertyListSerialization::ErrorDomain());
}

}  // namespace

HVString HVPropertyListSerialization::ErrorDomain() {
    static const HVString domain("HVPropertyListSerializationDomain");
    return domain;
}

bool HVPropertyListSerialization::PropertyListIsValidForFormat(const HVObject& object, HVPropertyListFormat format) {
    return object.Ref() != nullptr && CFPropertyListIsValid(object.Ref(), CFPropertyListFormat(format));
}

HVData HVPropertyListSerialization::DataWithPropertyListUsingFormat(const HVObject& object,
                                                                    HVPropertyListFormat format, HVError& error) {
    HVData data;
    reportUnhandledFormat(format);
    CFDataRef bytes = object.Ref() != nullptr ? CFPropertyListCreateXMLData(kCFAllocatorDefault, object.Ref()) : nullptr;
    if (bytes != nullptr) data.AssignAndTakeOwnership(bytes);
    error.Nullify();
    if (bytes == nullptr) {
        HVLog("HVPropertyListSerialization::DataWithPropertyListUsingFormat - CFPropertyListCreateXMLData return NULL");
        error = errorWithCode(1, HVString::StringWithFormat("Property list invalid for format: %d (property lists "
                                                            "cannot contain some objects contained within)",
                                                            int(format)));
    }
    return data;
}

HVData HVPropertyListSerialization::DataWithPropertyListUsingFormat(const HVObject& object,
                                                                    HVPropertyListFormat format) {
    HVError error;
    return DataWithPropertyListUsingFormat(object, format, error);
}

HVData HVPropertyListSerialization::DataWithArrayPropertyListUsingFormat(const HVArray& array,
                                                                         HVPropertyListFormat format, HVError& error) {
    return DataWithPropertyListUsingFormat(array, format, error);
}

HVData HVPropertyListSerialization::DataWithArrayPropertyListUsingFormat(const HVArray& array,
                                                                         HVPropertyListFormat format) {
    HVError error;
    return DataWithPropertyListUsingFormat(array, format, error);
}

HVData HVPropertyListSerialization::DataWithDictionaryPropertyListUsingFormat(const HVDictionary& dictionary,
                                                                              HVPropertyListFormat format,
                                                                              HVError& error) {
    return DataWithPropertyListUsingFormat(dictionary, format, error);
}

HVData HVPropertyListSerialization::DataWithDictionaryPropertyListUsingFormat(const HVDictionary& dictionary,
                                                                              HVPropertyListFormat format) {
    HVError error;
    return DataWithPropertyListUsingFormat(dictionary, format, error);
}

HVObject HVPropertyListSerialization::PropertyListWithDataAndFormatIdentifiedAs(const HVData& data,
                                                                                HVPropertyListFormat& format,
                                                                                HVError& error) {
    reportUnhandledFormat(format);
    CFStringRef errorString = nullptr;
    ParsedPropertyList parsed{CFPropertyListCreateFromXMLData(kCFAllocatorDefault, static_cast<CFDataRef>(data.Ref()),
                                                              kCFPropertyListImmutable, &errorString)};
    if (errorString != nullptr) {
        error = errorWithCode(-1234, HVString(static_cast<const void*>(errorString)));
        CFRelease(errorString);
    } else {
        error.Nullify();
    }
    // Made in place, so that the object keeps the class type of what it
    // holds as its own (a copy would be a plain object).
    return HVObject::Create(parsed.ref);
}

HVObject HVPropertyListSerialization::PropertyListWithDataAndFormatIdentifiedAs(const HVData& data,
                                                                                HVPropertyListFormat& format) {
    HVError error;
    return PropertyListWithDataAndFormatIdentifiedAs(data, format, error);
}

HVObject HVPropertyListSerialization::PropertyListWithData(const HVData& data, HVError& error) {
    HVPropertyListFormat format = HVPropertyListXMLFormat_v1_0;
    return PropertyListWithDataAndFormatIdentifiedAs(data, format, error);
}

HVObject HVPropertyListSerialization::PropertyListWithData(const HVData& data) {
    HVError error;
    return PropertyListWithData(data, error);
}

HVArray HVPropertyListSerialization::ArrayPropertyListWithData(const HVData& data, HVError& error) {
    return HVArray::ArrayFromObject(PropertyListWithData(data, error));
}

HVArray HVPropertyListSerialization::ArrayPropertyListWithData(const HVData& data) {
    HVError error;
    return ArrayPropertyListWithData(data, error);
}

HVArray HVPropertyListSerialization::ArrayPropertyListWithDataAndFormatIdentifiedAs(const HVData& data,
                                                                                    HVPropertyListFormat& format,
                                                                                    HVError& error) {
    return HVArray::ArrayFromObject(PropertyListWithDataAndFormatIdentifiedAs(data, format, error));
}

HVArray HVPropertyListSerialization::ArrayPropertyListWithDataAndFormatIdentifiedAs(const HVData& data,
                                                                                    HVPropertyListFormat& format) {
    HVError error;
    return ArrayPropertyListWithDataAndFormatIdentifiedAs(data, format, error);
}

HVDictionary HVPropertyListSerialization::DictionaryPropertyListWithData(const HVData& data, HVError& error) {
    return HVDictionary::DictionaryFromObject(PropertyListWithData(data, error));
}

HVDictionary HVPropertyListSerialization::DictionaryPropertyListWithData(const HVData& data) {
    HVError error;
    return DictionaryPropertyListWithData(data, error);
}

HVDictionary HVPropertyListSerialization::DictionaryPropertyListWithDataAndFormatIdentifiedAs(
    const HVData& data, HVPropertyListFormat& format, HVError& error) {
    return HVDictionary::DictionaryFromObject(PropertyListWithDataAndFormatIdentifiedAs(data, format, error));
}

HVDictionary HVPropertyListSerialization::DictionaryPropertyListWithDataAndFormatIdentifiedAs(
    const HVData& data, HVPropertyListFormat& format) {
    HVError error;
    return DictionaryPropertyListWithDataAndFormatIdentifiedAs(data, format, error);
}
