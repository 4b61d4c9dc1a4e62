#include <halvane/serialization/HVJSONSerialization.h>

#include <halvane/errors/HVAssert.h>
#include <halvane/errors/HVError.h>
#include <halvane/errors/detail/HalvaneDomain.h>
#include <halvane/serialization/detail/JSONConversion.h>

#include <CoreFoundation/CoreFoundation.h>

#include <json/reader.h>
#include <json/value.h>
#include <json/writer.h>

#include <exception>
#include <string>

using halvane::detail::DecodeJSONValue;
using halvane::detail::EncodeJSONValue;
using halvane::detail::JSONDecoding;
using halvane::detail::JSONEncoding;

namespace {

const char* const kFile = "HVJSONSerialization";

HVError codingError(const char* description, const HVString& failureReason) {
    return HVError::ErrorWithDomainCodeAndUserInfo(
        halvane::detail::HalvaneDomain(), HVCodingError,
        HVError::DictionaryWithErrorDescriptionAndFailureReason(description, failureReason));
}

HVError decodingError(const HVString& failureReason) {
    return codingError("Object failed to be decoded.", failureReason);
}

HVError encodingError(const HVString& failureReason) {
    return codingError("Object failed to be encoded.", failureReason);
}

// Logs "! error.IsError()" for the forms without an error parameter, once
// the result is made: the result goes to the caller in place, so that a
// decoded object keeps its own class type.
struct ReportErrorOnExit {
    HVError error;
    const char* function;
    int line;
    ~ReportErrorOnExit() {
        if (error.IsError()) HVAssertionFailed("! error.IsError()", error, function, kFile, line);
    }
};

// Json::Reader and Json::StyledWriter are the interfaces this mapping is
// defined over; newer jsoncpp releases mark them deprecated.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

bool parseJSON(const char* begin, const char* end, Json::Value& root) {
    try {
        Json::Reader reader;
        return reader.parse(begin, end, root, true);
    } catch (const std::exception&) {
        // jsoncpp throws when nesting passes its own limit.
        return false;
    }
}

std::string styledText(const Json::Value& root) {
    Json::StyledWriter writer;
    return writer.write(root);
}

#pragma GCC diagnostic pop

// The object for a decoded reference, which it adopts. Returned in place:
// a copy would be a plain object instead of one typed by what it holds.
struct AdoptedReference {
    CFTypeRef ref;
    ~AdoptedReference() {
        if (ref != nullptr) CFRelease(ref);
    }
};

HVObject objectAdopting(CFTypeRef ref) {
    AdoptedReference adopted{ref};
    if (ref == nullptr) return HVObject();
    return HVObject::Create(adopted.ref);
}

}  // namespace

HVObject HVJSONSerialization::ObjectWithJSONData(const HVData& data, HVError& error) {
    std::string storage;
    std::string_view bytes = halvane::detail::UTF8TextOfData(data, storage);
    Json::Value root;
    if (!parseJSON(bytes.data(), bytes.data() + bytes.size(), root)) {
        error = decodingError("Json::Reader failed to parse the supplied JSON data.");
        return HVObject();
    }
    JSONDecoding decoded = DecodeJSONValue(root);
    if (decoded.failureReason != nullptr) error = decodingError(decoded.failureReason);
    return objectAdopting(decoded.object);
}

HVObject HVJSONSerialization::ObjectWithJSONData(const HVData& data) {
    ReportErrorOnExit report{HVError(), "HVJSONSerialization::ObjectWithJSONData", 197};
    return ObjectWithJSONData(data, report.error);
}

HVArray HVJSONSerialization::ArrayWithJSONData(const HVData& data, HVError& error) {
    HVError failure;
    HVObject object = ObjectWithJSONData(data, failure);
    if (failure.IsError()) {
        error = failure;
    } else if (object.ObjectsClassType() != HVArrayClassType) {
        HVAssertionFailedShort("object.ObjectsClassType() == HVArrayClassType", "HVJSONSerialization::ArrayWithJSONData",
                               kFile, 229);
    }
    return HVArray(object);
}

HVArray HVJSONSerialization::ArrayWithJSONData(const HVData& data) {
    ReportErrorOnExit report{HVError(), "HVJSONSerialization::ArrayWithJSONData", 222};
    return ArrayWithJSONData(data, report.error);
}

HVDictionary HVJSONSerialization::DictionaryWithJSONData(const HVData& data, HVError& error) {
    HVObject decodedObject = ObjectWithJSONData(data, error);
    if (decodedObject.ObjectsClassType() != HVDictionaryClassType) {
        HVAssertionFailedShort("decodedObject.ObjectsClassType() == HVDictionaryClassType",
                               "HVJSONSerialization::DictionaryWithJSONData", kFile, 244);
    }
    return HVDictionary(decodedObject);
}

HVDictionary HVJSONSerialization::DictionaryWithJSONData(const HVData& data) {
    ReportErrorOnExit report{HVError(), "HVJSONSerialization::DictionaryWithJSONData", 237};
    return DictionaryWithJSONData(data, report.error);
}

HVData HVJSONSerialization::JSONDataWithObject(const HVObject& object, HVError& error) {
    std::string text;
    try {
        Json::Value root;
        JSONEncoding encoded = EncodeJSONValue(object, root);
        if (!encoded.failureReason.IsEmpty()) {
            error = encodingError(encoded.failureReason);
            return HVData();
        }
        if (!encoded.converted) {
            error = encodingError("Could not convert object to JSON object for encoding.");
            return HVData();
        }
        text = styledText(root);
    } catch (const std::exception&) {
        // Out of memory, or a value jsoncpp refuses to hold.
        error = encodingError("Could not convert object to JSON object for encoding.");
        return HVData();
    }
    return HVData::DataWithBytesOfLength(text.data(), text.size());
}

HVData HVJSONSerialization::JSONDataWithObject(const HVObject& object) {
    ReportErrorOnExit report{HVError(), "HVJSONSerialization::JSONDataWithObject", 252};
    return JSONDataWithObject(object, report.error);
}

HVData HVJSONSerialization::JSONDataWithArray(const HVArray& array, HVError& error) {
    return JSONDataWithObject(array, error);
}

HVData HVJSONSerialization::JSONDataWithArray(const HVArray& array) {
    ReportErrorOnExit report{HVError(), "HVJSONSerialization::JSONDataWithArray", 279};
    return JSONDataWithObject(array, report.error);
}

HVData HVJSONSerialization::JSONDataWithDictionary(const HVDictionary& dictionary, HVError& error) {
    return JSONDataWithObject(dictionary, error);
}

HVData HVJSONSerialization::JSONDataWithDictionary(const HVDictionary& dictionary) {
    ReportErrorOnExit report{HVError(), "HVJSONSerialization::JSONDataWithDictionary", 292};
    return JSONDataWithObject(dictionary, report.error);
}
