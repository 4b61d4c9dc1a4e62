// The mapping between jsoncpp values and the platform's objects, used by
// HVJSONSerialization. Objects are built and read through CoreFoundation
// directly: a wrapper per element would cost more than the parser itself.
#ifndef HALVANE_SERIALIZATION_DETAIL_JSONCONVERSION_H
#define HALVANE_SERIALIZATION_DETAIL_JSONCONVERSION_H

#include <halvane/text/HVString.h>

#include <CoreFoundation/CoreFoundation.h>

#include <json/value.h>

#include <string>
#include <string_view>

class HVData;
class HVObject;

namespace halvane::detail {

// Arrays and objects nested more deeply than this are refused in both
// directions, so that no recursive walk (ours, jsoncpp's writer, the
// destruction of a jsoncpp value) can run out of stack. jsoncpp's reader
// has a limit of its own, fixed when jsoncpp is built (1000 levels in the
// Debian build); this one does not depend on it and also covers objects
// that a caller nests by hand.
inline constexpr unsigned kJSONMaximumDepth = 512;

// Failure reasons of our own (the documented ones live with the class).
inline constexpr const char* kJSONTooDeepToDecode = "The JSON data is nested more than 512 levels deep.";
inline constexpr const char* kJSONTooDeepToEncode = "Unable to encode an object nested more than 512 levels deep into JSON.";

// The result of decoding: the object made (owned, +1; NULL when the root
// itself failed) and, when something could not be converted, the reason.
// On a failure the containers on the way to it keep the members converted
// before it, so the object is partial rather than absent.
struct JSONDecoding {
    CFTypeRef object = nullptr;
    const char* failureReason = nullptr;
};

JSONDecoding DecodeJSONValue(const Json::Value& value);

// The result of encoding: converted is false when the root is still the
// "no value" marker; failureReason is empty when nothing was refused.
struct JSONEncoding {
    bool converted = false;
    HVString failureReason;
};

// Encodes object into root (which must be null on entry).
JSONEncoding EncodeJSONValue(const HVObject& object, Json::Value& root);

// The UTF-8 text that the data holds, read as HVString's
// StringWithDataUsingEncoding reads it: trailing NUL bytes dropped, and no
// text at all when the bytes are not UTF-8. A view of the data's own bytes
// when they are well-formed UTF-8, otherwise of storage.
std::string_view UTF8TextOfData(const HVData& data, std::string& storage);

// The UTF-8 text of a string: a view of the platform's own bytes when it
// keeps them as ASCII, otherwise of storage, which receives the converted
// text. Unpaired surrogates become U+FFFD. A null string is empty.
std::string_view UTF8TextOfString(CFStringRef string, std::string& storage);

}  // namespace halvane::detail

#endif  // HALVANE_SERIALIZATION_DETAIL_JSONCONVERSION_H
