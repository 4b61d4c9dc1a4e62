#include <halvane/serialization/detail/JSONConversion.h>

#include <halvane/collections/HVArray.h>
#include <halvane/collections/HVData.h>
#include <halvane/core/HVObject.h>
#include <halvane/text/HVString.h>
#include <halvane/text/detail/TextConversion.h>
#include <halvane/values/HVBool.h>
#include <halvane/values/HVNumber.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <unordered_map>
#include <vector>

namespace halvane::detail {

namespace {

// jsoncpp leaves strings and member names of 2^30 bytes or more undefined.
constexpr size_t kJSONLongestString = (size_t(1) << 30) - 1;

const char* const kNotConverted = "Could not convert object to JSON object for encoding.";

// Text to units

// Decodes UTF-8 that may carry surrogate code points of its own (jsoncpp
// writes an escaped unpaired surrogate such as "\udc00" that way). Each
// surrogate stays one unit; a malformed byte becomes U+FFFD.
std::u16string unitsOfLooseUTF8(const unsigned char* bytes, size_t length) {
    std::u16string units;
    units.reserve(length);
    size_t i = 0;
    while (i < length) {
        const unsigned char lead = bytes[i];
        if (lead < 0x80) {
            units.push_back(char16_t(lead));
            ++i;
            continue;
        }
        size_t extra = 0;
        char32_t c = 0;
        if (lead >= 0xC2 && lead <= 0xDF) {
            extra = 1;
            c = lead & 0x1F;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            extra = 2;
            c = lead & 0x0F;
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            extra = 3;
            c = lead & 0x07;
        }
        bool valid = extra != 0 && i + extra < length;
        for (size_t k = 1; valid && k <= extra; ++k) {
            valid = (bytes[i + k] & 0xC0) == 0x80;
            c = (c << 6) | (bytes[i + k] & 0x3F);
        }
        if (valid) valid = c <= 0x10FFFF && !(extra == 2 && c < 0x800) && !(extra == 3 && c < 0x10000);
        if (!valid) {
            units.push_back(char16_t(0xFFFD));
            ++i;
            continue;
        }
        i += extra + 1;
        appendUTF16(units, c);
    }
    return units;
}

bool startsWithByteOrderMark(const char* begin, const char* end) {
    return end - begin >= 3 && static_cast<unsigned char>(begin[0]) == 0xEF &&
           static_cast<unsigned char>(begin[1]) == 0xBB && static_cast<unsigned char>(begin[2]) == 0xBF;
}

// A string from the UTF-8 bytes of a JSON string or member name. The
// platform's decoder drops a leading byte-order mark and refuses encoded
// surrogates; both are kept as the text's own units instead.
CFStringRef createString(const char* begin, const char* end) {
    if (!startsWithByteOrderMark(begin, end)) {
        CFStringRef string = CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(begin),
                                                     CFIndex(end - begin), kCFStringEncodingUTF8, false);
        if (string != nullptr) return string;
    }
    std::u16string units = unitsOfLooseUTF8(reinterpret_cast<const unsigned char*>(begin), size_t(end - begin));
    return CFStringCreateWithCharacters(kCFAllocatorDefault, reinterpret_cast<const UniChar*>(units.data()),
                                        CFIndex(units.size()));
}

// Decoding

class Decoder {
public:
    const char* failureReason = nullptr;

    ~Decoder() {
        releaseFrom(0, 0);
        for (const auto& entry : names_) CFRelease(entry.second);
    }

    CFTypeRef decode(const Json::Value& value, unsigned depth) {
        switch (value.type()) {
            case Json::nullValue:
                return CFRetain(kCFNull);
            case Json::intValue: {
                // A signed 32-bit number: wider values keep their low 32 bits.
                int number = int(uint32_t(uint64_t(value.asLargestInt())));
                return CFNumberCreate(kCFAllocatorDefault, kCFNumberIntType, &number);
            }
            case Json::uintValue: {
                unsigned int number = static_cast<unsigned int>(value.asLargestUInt());
                return CFNumberCreate(kCFAllocatorDefault, kCFNumberUInt32Type, &number);
            }
            case Json::realValue: {
                double number = value.asDouble();
                return CFNumberCreate(kCFAllocatorDefault, kCFNumberDoubleType, &number);
            }
            case Json::stringValue: {
                const char* begin = nullptr;
                const char* end = nullptr;
                value.getString(&begin, &end);
                return createString(begin, end);
            }
            case Json::booleanValue:
                return CFRetain(value.asBool() ? kCFBooleanTrue : kCFBooleanFalse);
            case Json::arrayValue:
                return decodeArray(value, depth + 1);
            case Json::objectValue:
                return decodeObject(value, depth + 1);
        }
        failureReason = "An unknown element type was encountered within the JSON data.";
        return nullptr;
    }

private:
    // The members converted so far, of every container being walked: each
    // container works on the end of these stacks and takes its part away.
    std::vector<const void*> values_;
    std::vector<const void*> keys_;
    // Member names repeat from object to object: each distinct name becomes
    // one string, shared by every dictionary that has it. The views point
    // into the jsoncpp value, which outlives the decoder. A document of
    // mostly distinct names stops adding to the table.
    static constexpr size_t kNamesKept = 4096;
    std::unordered_map<std::string_view, CFStringRef> names_;

    CFStringRef createName(const char* begin, const char* end) {
        std::string_view name(begin, size_t(end - begin));
        auto found = names_.find(name);
        if (found != names_.end()) return static_cast<CFStringRef>(CFRetain(found->second));
        CFStringRef string = createString(begin, end);
        if (names_.size() < kNamesKept) names_.emplace(name, static_cast<CFStringRef>(CFRetain(string)));
        return string;
    }

    void releaseFrom(size_t valueMark, size_t keyMark) {
        for (size_t i = valueMark; i < values_.size(); ++i) CFRelease(values_[i]);
        for (size_t i = keyMark; i < keys_.size(); ++i) CFRelease(keys_[i]);
        values_.resize(valueMark);
        keys_.resize(keyMark);
    }

    CFTypeRef decodeArray(const Json::Value& value, unsigned depth) {
        if (depth > kJSONMaximumDepth) {
            failureReason = kJSONTooDeepToDecode;
            return nullptr;
        }
        const size_t mark = values_.size();
        for (const Json::Value& element : value) {
            CFTypeRef object = decode(element, depth);
            if (failureReason != nullptr) {
                // The member that failed is not kept, partial or not.
                if (object != nullptr) CFRelease(object);
                break;
            }
            values_.push_back(object);
        }
        CFArrayRef array = CFArrayCreate(kCFAllocatorDefault, values_.data() + mark, CFIndex(values_.size() - mark),
                                         &kCFTypeArrayCallBacks);
        releaseFrom(mark, keys_.size());
        return array;
    }

    CFTypeRef decodeObject(const Json::Value& value, unsigned depth) {
        if (depth > kJSONMaximumDepth) {
            failureReason = kJSONTooDeepToDecode;
            return nullptr;
        }
        const size_t valueMark = values_.size();
        const size_t keyMark = keys_.size();
        // Members come in the order of their names, as getMemberNames gives them.
        for (auto member = value.begin(); member != value.end(); ++member) {
            CFTypeRef object = decode(*member, depth);
            if (failureReason != nullptr) {
                if (object != nullptr) CFRelease(object);
                break;
            }
            values_.push_back(object);
            const char* nameEnd = nullptr;
            const char* name = member.memberName(&nameEnd);
            keys_.push_back(createName(name, nameEnd));
        }
        CFDictionaryRef dictionary =
            CFDictionaryCreate(kCFAllocatorDefault, keys_.data() + keyMark, values_.data() + valueMark,
                               CFIndex(values_.size() - valueMark), &kCFTypeDictionaryKeyCallBacks,
                               &kCFTypeDictionaryValueCallBacks);
        releaseFrom(valueMark, keyMark);
        return dictionary;
    }
};

// Encoding

class Encoder {
public:
    HVString failureReason;

    // The value for an object of the given class type. False leaves the
    // "no value" marker: nothing was written to out.
    bool encode(const void* ref, HVClassType type, Json::Value& out, unsigned depth) {
        switch (type) {
            case HVNullClassType:
                out = Json::Value(Json::nullValue);
                return true;
            case HVBoolClassType:
                out = Json::Value(CFGetTypeID(ref) == CFBooleanGetTypeID()
                                      ? bool(CFBooleanGetValue(static_cast<CFBooleanRef>(ref)))
                                      : bool(HVBool::BoolFromId(ref)));
                return true;
            case HVNumberClassType: {
                // What HVNumber's IsFloatType, DoubleValue and IntValue read.
                auto number = static_cast<CFNumberRef>(ref);
                if (CFNumberIsFloatType(number)) {
                    double value = 0;
                    CFNumberGetValue(number, kCFNumberDoubleType, &value);
                    out = Json::Value(value);
                } else {
                    // A signed 32-bit value: wider integers are cut to 32 bits.
                    int value = 0;
                    CFNumberGetValue(number, kCFNumberIntType, &value);
                    out = Json::Value(Json::Int(value));
                }
                return true;
            }
            case HVStringClassType: {
                std::string_view text = UTF8TextOfString(static_cast<CFStringRef>(ref), text_);
                if (text.size() > kJSONLongestString) return refuse(kNotConverted);
                if (isInPlace(text)) {
                    out = Json::Value(Json::StaticString(text.data()));
                } else {
                    out = Json::Value(text.data(), text.data() + text.size());
                }
                return true;
            }
            case HVArrayClassType:
            case HVMutableArrayClassType:
                return encodeArray(static_cast<CFArrayRef>(ref), out, depth + 1);
            case HVDictionaryClassType:
            case HVMutableDictionaryClassType:
                return encodeDictionary(static_cast<CFDictionaryRef>(ref), out, depth + 1);
            default:
                return refuse(HVString::StringWithFormat("Unable to encode an object of type %@ into JSON.",
                                                         HVObject::ClassNameOfClassType(type).Ref()));
        }
    }

private:
    // Scratch space shared by every level: the members of the containers
    // being walked, and the UTF-8 text of the string at hand.
    std::vector<const void*> members_;
    std::string text_;

    // Text that the platform keeps as terminated ASCII without NUL goes
    // into the value in place (jsoncpp's static strings) rather than copied:
    // the objects outlive the value, which is written before the call
    // returns.
    bool isInPlace(std::string_view text) const {
        return text.data() != text_.data() && std::memchr(text.data(), 0, text.size()) == nullptr;
    }

    // Each refused object sets the error; the walks go on, so the error
    // names the last object refused.
    bool refuse(const HVString& reason) {
        failureReason = reason;
        return false;
    }

    bool encodeElement(const void* ref, Json::Value& out, unsigned depth) {
        return encode(ref, HVObject::ClassTypeNeededForObject(ref), out, depth);
    }

    bool encodeArray(CFArrayRef array, Json::Value& out, unsigned depth) {
        if (depth > kJSONMaximumDepth) return refuse(kJSONTooDeepToEncode);
        out = Json::Value(Json::arrayValue);
        const size_t mark = members_.size();
        const CFIndex count = array != nullptr ? CFArrayGetCount(array) : 0;
        members_.resize(mark + size_t(count));
        if (count > 0) CFArrayGetValues(array, CFRangeMake(0, count), members_.data() + mark);
        for (CFIndex i = 0; i < count; ++i) {
            // Converted in place; an element left as the marker is taken out.
            if (!encodeElement(members_[mark + size_t(i)], out.append(Json::Value()), depth)) {
                out.resize(out.size() - 1);
            }
        }
        members_.resize(mark);
        return true;
    }

    bool encodeDictionary(CFDictionaryRef dictionary, Json::Value& out, unsigned depth) {
        if (depth > kJSONMaximumDepth) return refuse(kJSONTooDeepToEncode);
        out = Json::Value(Json::objectValue);
        const size_t mark = members_.size();
        const size_t count = dictionary != nullptr ? size_t(CFDictionaryGetCount(dictionary)) : 0;
        // Keys, then the value of each key, in the key enumerator's order.
        members_.resize(mark + 2 * count);
        if (count > 0) CFDictionaryGetKeysAndValues(dictionary, members_.data() + mark, members_.data() + mark + count);
        for (size_t i = 0; i < count; ++i) {
            const void* key = members_[mark + i];
            // The walk ends at the first key that reads as a string of
            // length 0: the empty key, or a key that is not a string, which
            // the enumerator reports as it hands it out.
            if (CFGetTypeID(key) != CFStringGetTypeID()) {
                reportKeyOfAnotherKind(members_.data() + mark, count, i);
                break;
            }
            auto name = static_cast<CFStringRef>(key);
            if (CFStringGetLength(name) == 0) break;
            std::string_view text = UTF8TextOfString(name, text_);
            if (text.size() > kJSONLongestString) {
                refuse(kNotConverted);
                continue;
            }
            Json::Value& member = isInPlace(text) ? out[Json::StaticString(text.data())]
                                                  : *out.demand(text.data(), text.data() + text.size());
            // Converted in place; a member left as the marker is taken out.
            if (!encodeElement(members_[mark + count + i], member, depth)) {
                text = UTF8TextOfString(name, text_);
                Json::Value removed;
                out.removeMember(text.data(), text.data() + text.size(), &removed);
            }
        }
        members_.resize(mark);
        return true;
    }

    // The report the key enumerator gives for an element that is not a
    // string, made by the same accessor.
    static void reportKeyOfAnotherKind(const void** keys, size_t count, size_t index) {
        CFArrayRef snapshot = CFArrayCreate(kCFAllocatorDefault, keys, CFIndex(count), &kCFTypeArrayCallBacks);
        HVArray(static_cast<const void*>(snapshot)).StringAtIndex(index);
        CFRelease(snapshot);
    }
};

// UTF-8 of UTF-16 units, written into room made once (at most three bytes
// a unit). An unpaired surrogate becomes U+FFFD.
void appendUTF8(std::string& text, const UniChar* units, size_t length) {
    const size_t start = text.size();
    text.resize(start + 3 * length);
    char* out = text.data() + start;
    for (size_t i = 0; i < length; ++i) {
        char32_t c = units[i];
        if (c < 0x80) {
            *out++ = char(c);
            continue;
        }
        if (c >= 0xD800 && c <= 0xDFFF) {
            if (c <= 0xDBFF && i + 1 < length && units[i + 1] >= 0xDC00 && units[i + 1] <= 0xDFFF) {
                c = 0x10000 + ((c - 0xD800) << 10) + (units[i + 1] - 0xDC00);
                ++i;
            } else {
                c = 0xFFFD;
            }
        }
        if (c < 0x800) {
            *out++ = char(0xC0 | (c >> 6));
        } else if (c < 0x10000) {
            *out++ = char(0xE0 | (c >> 12));
            *out++ = char(0x80 | ((c >> 6) & 0x3F));
        } else {
            *out++ = char(0xF0 | (c >> 18));
            *out++ = char(0x80 | ((c >> 12) & 0x3F));
            *out++ = char(0x80 | ((c >> 6) & 0x3F));
        }
        *out++ = char(0x80 | (c & 0x3F));
    }
    text.resize(size_t(out - text.data()));
}

// Well-formed UTF-8 as the platform reads it: no overlong forms, no
// surrogates, nothing above U+10FFFF.
bool isWellFormedUTF8(const unsigned char* bytes, size_t length) {
    size_t i = 0;
    while (i < length) {
        if (i + 8 <= length) {
            uint64_t word;
            std::memcpy(&word, bytes + i, 8);
            if ((word & 0x8080808080808080ull) == 0) {
                i += 8;
                continue;
            }
        }
        const unsigned char lead = bytes[i];
        if (lead < 0x80) {
            ++i;
            continue;
        }
        size_t need = 0;
        unsigned char low = 0x80, high = 0xBF;  // range of the first continuation byte
        if (lead >= 0xC2 && lead <= 0xDF) {
            need = 1;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            need = 2;
            if (lead == 0xE0) low = 0xA0;
            if (lead == 0xED) high = 0x9F;
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            need = 3;
            if (lead == 0xF0) low = 0x90;
            if (lead == 0xF4) high = 0x8F;
        } else {
            return false;
        }
        if (length - i <= need || bytes[i + 1] < low || bytes[i + 1] > high) return false;
        for (size_t k = 2; k <= need; ++k) {
            if ((bytes[i + k] & 0xC0) != 0x80) return false;
        }
        i += need + 1;
    }
    return true;
}

}  // namespace

JSONDecoding DecodeJSONValue(const Json::Value& value) {
    Decoder decoder;
    JSONDecoding result;
    result.object = decoder.decode(value, 0);
    result.failureReason = decoder.failureReason;
    return result;
}

JSONEncoding EncodeJSONValue(const HVObject& object, Json::Value& root) {
    // The root goes by its wrapper's class; a plain object by what it holds.
    HVClassType type = object.ObjectsActualClassType();
    if (type == HVObjectClassType) type = object.ObjectsClassType();
    const void* ref = object.Ref();
    // A wrapper holding nothing writes its class's empty value.
    if (ref == nullptr || ref == kCFNull) {
        switch (type) {
            case HVArrayClassType:
            case HVMutableArrayClassType: ref = HVArray::SharedEmptyObject(); break;
            case HVDictionaryClassType:
            case HVMutableDictionaryClassType: ref = HVDictionary::SharedEmptyObject(); break;
            case HVStringClassType: ref = HVString::SharedEmptyObject(); break;
            case HVNumberClassType: ref = HVNumber::SharedEmptyObject(); break;
            case HVBoolClassType: ref = HVBool::SharedEmptyObject(); break;
            case HVNullClassType: ref = kCFNull; break;
            default: break;
        }
    }
    Encoder encoder;
    JSONEncoding result;
    result.converted = encoder.encode(ref, type, root, 0);
    result.failureReason = encoder.failureReason;
    return result;
}

std::string_view UTF8TextOfData(const HVData& data, std::string& storage) {
    auto bytes = static_cast<const unsigned char*>(data.Bytes());
    size_t length = bytes != nullptr ? size_t(data.Length()) : 0;
    // Trailing terminators go, as when the text is read.
    while (length > 0 && bytes[length - 1] == 0) --length;
    // Well-formed UTF-8 reads as text and back as the very same bytes, so
    // those are used as they are; anything else goes the long way, so that
    // whatever the platform makes of it is what is parsed.
    if (length <= size_t(INT32_MAX) && isWellFormedUTF8(bytes, length)) {
        return std::string_view(reinterpret_cast<const char*>(bytes), length);
    }
    HVString text = HVString::StringWithDataUsingEncoding(data, HVUTF8StringEncoding);
    std::string_view converted = UTF8TextOfString(static_cast<CFStringRef>(text.Ref()), storage);
    if (converted.data() != storage.data()) storage.assign(converted);
    return storage;
}

std::string_view UTF8TextOfString(CFStringRef string, std::string& storage) {
    storage.clear();
    if (string == nullptr) return {};
    const CFIndex length = CFStringGetLength(string);
    if (const char* ascii = CFStringGetCStringPtr(string, kCFStringEncodingUTF8)) {
        return std::string_view(ascii, size_t(length));
    }
    if (const UniChar* units = CFStringGetCharactersPtr(string)) {
        appendUTF8(storage, units, size_t(length));
        return storage;
    }
    std::u16string units(size_t(length), u'\0');
    CFStringGetCharacters(string, CFRangeMake(0, length), reinterpret_cast<UniChar*>(units.data()));
    appendUTF8(storage, reinterpret_cast<const UniChar*>(units.data()), units.size());
    return storage;
}

}  // namespace halvane::detail
