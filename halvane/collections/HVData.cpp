#include <halvane/collections/HVData.h>

#include <halvane/collections/HVDictionary.h>
#include <halvane/core/detail/ClassRegistry.h>
#include <halvane/errors/HVAssert.h>
#include <halvane/errors/HVError.h>
#include <halvane/errors/HVException.h>

#include <halvane/serialization/HVPropertyListSerialization.h>

#include <halvane/os/File.h>

#include <CoreFoundation/CoreFoundation.h>

#include <algorithm>
#include <cstring>
#include <string>

HV_REGISTER_CLASS(HVData);
HV_REGISTER_CLASS(HVMutableData);

namespace {

CFDataRef asData(const void* ref) { return static_cast<CFDataRef>(ref); }

// Lengths and locations reach the platform cut to 32 bits; lengths read
// back are sign-extended from 32 bits.
CFIndex toPlatform(unsigned long long value) { return CFIndex(int32_t(uint32_t(value))); }
unsigned long long fromPlatform(CFIndex value) {
    return static_cast<unsigned long long>(static_cast<long long>(int32_t(value)));
}

// The whole file, or false when it cannot be read. Only the text of the
// path is used: paths are UTF-8 here.
bool readWholeFile(const HVString& path, std::string& bytes) {
    std::string file = path;
    if (!halvane::os::ItemExists(file)) return false;
    try {
        halvane::os::File handle(file, halvane::os::File::ReadOnly);
        bytes = handle.ReadToEnd();
        handle.Close();
        return true;
    } catch (const halvane::os::FileError&) {
        return false;
    }
}

}  // namespace

// HVData

HVData::HVData() : HVObject(SharedEmptyObject(), HVDataClassType) {}

HVData::HVData(const HVData& other) : HVData() {
    // A mutable buffer is never shared by an immutable wrapper: it keeps a
    // copy of its own.
    if (other.m_ActualClassType == HVMutableDataClassType) {
        AssignUnderlyingDataAndTakeOwnership(CFDataCreateCopy(kCFAllocatorDefault, asData(other.m_Ref)));
    } else {
        AssignUnderlyingData(other.m_Ref);
    }
}

HVData::HVData(const HVString& string) : HVData() { InitWithStringUsingEncoding(string, HVUTF8StringEncoding); }

HVData::HVData(const HVDictionary& dictionary) : HVData() { InitWithDictionary(dictionary); }

HVData::HVData(const HVObject& object) : HVData() {
    HVClassType actual = object.ObjectsActualClassType();
    if (actual == HVDataClassType) {
        AssignUnderlyingData(object.Ref());
    } else if (actual == HVMutableDataClassType) {
        AssignUnderlyingDataAndTakeOwnership(CFDataCreateCopy(kCFAllocatorDefault, asData(object.Ref())));
    } else if (object.IsNull()) {
        Nullify();
    } else if (object.ObjectsClassType() == HVObjectClassType) {
        HVObject::operator=(object);
    } else {
        HVAssertionFailed("0", "HVData::HVData(const HVObject& Object) parameter type unhandled.", "HVData::HVData",
                          "HVData", 248);
    }
}

HVData::HVData(const void* const& ref) : HVObject(ref, HVDataClassType) {}

HVData::HVData(const __CFData* ref) : HVObject(static_cast<const void*>(ref), HVDataClassType) {}

HVData::HVData(const void* const& ref, HVClassType type) : HVObject(ref, type) {}

HVData::HVData(const HVObject& object, HVClassType type) : HVObject(object, type) {}

HVClassType HVData::ClassType() { return HVDataClassType; }

const void* const& HVData::SharedEmptyObject() {
    static const void* const empty = CFDataCreate(kCFAllocatorDefault, nullptr, 0);
    return empty;
}

HVData HVData::DataWithData(const HVData& data) {
    HVData result;
    result.InitWithData(data);
    return result;
}

HVData HVData::DataWithDictionary(const HVDictionary& dictionary) {
    HVData result;
    result.InitWithDictionary(dictionary);
    return result;
}

HVData HVData::DataWithContentsOfFile(const HVString& path) {
    HVData result;
    result.InitWithContentsOfFile(path);
    return result;
}

HVData HVData::DataWithBytesOfLength(const void* bytes, unsigned long long length) {
    HVData result;
    result.InitWithBytesOfLength(bytes, length);
    return result;
}

HVData HVData::DataWithBytesNoCopyOfLength(void* bytes, unsigned long long length) {
    return DataWithBytesNoCopyOfLengthAndShouldFreeWhenDone(bytes, length, true);
}

HVData HVData::DataWithBytesNoCopyOfLengthAndShouldFreeWhenDone(void* bytes, unsigned long long length,
                                                                bool shouldFree) {
    HVData result;
    if (bytes == nullptr || length == 0) return result;
    CFDataRef data = CFDataCreateWithBytesNoCopy(kCFAllocatorDefault, static_cast<const UInt8*>(bytes),
                                                 toPlatform(length), shouldFree ? kCFAllocatorDefault : kCFAllocatorNull);
    if (data != nullptr) result.AssignUnderlyingDataAndTakeOwnership(data);
    return result;
}

HVData HVData::DataWithStringUsingEncoding(const HVString& string, HVStringEncoding encoding) {
    HVData result;
    result.InitWithStringUsingEncoding(string, encoding);
    return result;
}

HVData HVData::DataContainingCStringWithStringUsingEncoding(const HVString& string, HVStringEncoding encoding) {
    return string.DataContainingCStringUsingEncoding(encoding);
}

HVData HVData::DataFromObject(const HVObject& object) { return HVData(object); }

HVData HVData::DataFromId(const void* const& ref) { return HVData(ref); }

unsigned long long HVData::Length() const {
    if (m_Ref == nullptr) return 0;
    return fromPlatform(CFDataGetLength(asData(m_Ref)));
}

const void* HVData::Bytes() const { return m_Ref != nullptr ? CFDataGetBytePtr(asData(m_Ref)) : nullptr; }

const char* HVData::CharPointer() const { return static_cast<const char*>(Bytes()); }

const char32_t* HVData::UTF32CharPointer() const { return static_cast<const char32_t*>(Bytes()); }

const wchar_t* HVData::WideCharPointer() const { return static_cast<const wchar_t*>(Bytes()); }

void HVData::GetBytes(void* out) const {
    if (m_Ref == nullptr) return;
    CFDataGetBytes(asData(m_Ref), CFRangeMake(0, CFDataGetLength(asData(m_Ref))), static_cast<UInt8*>(out));
}

void HVData::GetBytesWithLength(void* out, unsigned long long length) const {
    if (m_Ref == nullptr) return;
    CFDataGetBytes(asData(m_Ref), CFRangeMake(0, toPlatform(length)), static_cast<UInt8*>(out));
}

void HVData::GetBytesWithRange(void* out, const HVRange& range) const {
    if (m_Ref == nullptr) return;
    CFDataGetBytes(asData(m_Ref), range, static_cast<UInt8*>(out));
}

HVData HVData::SubdataWithRange(const HVRange& range) const {
    HVData result;
    unsigned long long length = Length();
    if (m_Ref == nullptr || range.Location() >= length) return result;
    unsigned long long end = std::min(length, range.Location() + range.Length());
    if (end <= range.Location()) return result;
    const UInt8* start = static_cast<const UInt8*>(Bytes()) + range.Location();
    result.AssignUnderlyingDataAndTakeOwnership(
        CFDataCreate(kCFAllocatorDefault, start, toPlatform(end - range.Location())));
    return result;
}

void HVData::InitWithData(const HVData& data) {
    bool receiverMutable = IsMutable();
    bool sourceMutable = data.IsMutable();
    if (!receiverMutable && sourceMutable) {
        AssignUnderlyingDataAndTakeOwnership(CFDataCreateCopy(kCFAllocatorDefault, asData(data.m_Ref)));
    } else if (receiverMutable && !sourceMutable) {
        AssignUnderlyingDataAndTakeOwnership(CFDataCreateMutableCopy(kCFAllocatorDefault, 0, asData(data.m_Ref)));
        m_ClassType = HVMutableDataClassType;
    } else {
        AssignUnderlyingData(data.m_Ref);
        m_ClassType = data.m_ClassType;
    }
    // Deliberately the immutable class after every branch, even where the
    // adopted buffer is mutable.
    m_ActualClassType = HVDataClassType;
}

HVData& HVData::operator=(const HVData& other) {
    if (this == &other) return *this;
    bool receiverMutable = IsMutable();
    bool sourceMutable = other.IsMutable();
    if (!receiverMutable && sourceMutable) {
        AssignUnderlyingDataAndTakeOwnership(CFDataCreateCopy(kCFAllocatorDefault, asData(other.m_Ref)));
    } else if (receiverMutable && !sourceMutable) {
        // Emptied, then refilled with the source's bytes in a fresh mutable
        // buffer (the shared empty buffer is never written).
        Empty();
        if (other.Length() > 0) {
            CFMutableDataRef buffer = CFDataCreateMutable(kCFAllocatorDefault, 0);
            CFDataAppendBytes(buffer, static_cast<const UInt8*>(other.Bytes()), toPlatform(other.Length()));
            AssignUnderlyingDataAndTakeOwnership(buffer);
            m_ClassType = HVMutableDataClassType;
        }
    } else {
        AssignUnderlyingData(other.m_Ref);
        m_ClassType = other.m_ClassType;
    }
    m_ActualClassType = HVDataClassType;
    return *this;
}

void HVData::InitWithContentsOfFile(const HVString& path) {
    std::string bytes;
    if (!readWholeFile(path, bytes)) return;
    InitWithData(DataWithBytesOfLength(bytes.data(), bytes.size()));
}

void HVData::InitWithString(const HVString& string) { InitWithStringUsingEncoding(string, HVUTF8StringEncoding); }

void HVData::InitWithStringUsingEncoding(const HVString& string, HVStringEncoding encoding) {
    Empty();
    if (string.IsEmpty()) return;
    // Characters the encoding cannot hold become '?'.
    CFDataRef bytes = CFStringCreateExternalRepresentation(
        kCFAllocatorDefault, static_cast<CFStringRef>(string.Ref()),
        HVStringEncodingUtilites::ConvertToUnderlyingStringEncoding(encoding), '?');
    if (bytes != nullptr) AssignUnderlyingDataAndTakeOwnership(bytes);
}

void HVData::InitContainingCStringWithStringUsingEncoding(const HVString& string, HVStringEncoding encoding) {
    InitWithData(string.DataContainingCStringUsingEncoding(encoding));
}

void HVData::InitWithDictionary(const HVDictionary& dictionary) {
    // A dictionary that is no property list gives what the writer gives
    // then: empty data.
    InitWithData(
        HVPropertyListSerialization::DataWithDictionaryPropertyListUsingFormat(dictionary, HVPropertyListXMLFormat_v1_0));
}

void HVData::InitWithBytesOfLength(const void* bytes, unsigned long long length) {
    if (bytes == nullptr || length == 0) {
        Empty();
        return;
    }
    AssignUnderlyingDataAndTakeOwnership(
        CFDataCreate(kCFAllocatorDefault, static_cast<const UInt8*>(bytes), toPlatform(length)));
}

namespace {

// Runs a file operation, turning faults into the error or an exception as
// the data class reports them.
template <typename Operation>
bool reportingFileFaults(HVError& error, Operation operation) {
    try {
        return operation();
    } catch (const halvane::os::FileError& fault) {
        HVError converted = HVError::ErrorWithException(HVException::ExceptionWithException(fault));
        if (!converted.IsError()) throw HVException::ExceptionWithException(fault);
        error = converted;
        return false;
    } catch (const std::bad_alloc& fault) {
        HVError converted = HVError::ErrorWithException(HVException::ExceptionWithException(fault));
        error = converted;
        return false;
    } catch (const HVException&) {
        throw;
    } catch (...) {
        throw HVException::ExceptionWithNameAndReason(HVExceptionName::GenericException(),
                                                      "Unknown Exception caught in HVData.");
    }
}

}  // namespace

bool HVData::WriteToFile(const HVString& path, HVError& error) const {
    return reportingFileFaults(error, [&] {
        std::string file = path;
        // Created or truncated first, then written through a second handle.
        halvane::os::File(file, halvane::os::File::ReadWrite | halvane::os::File::Create).Close();
        halvane::os::File handle(file, halvane::os::File::WriteOnly);
        handle.Write(Bytes(), size_t(Length()));
        handle.Close();
        return true;
    });
}

bool HVData::WriteToFile(const HVString& path) const {
    HVError error;
    return WriteToFile(path, error);
}

bool HVData::WriteToFileAtomically(const HVString& path) const { return WriteToFile(path); }

bool HVData::WriteToFileAtomically(const HVString& path, HVError& error) const { return WriteToFile(path, error); }

bool HVData::AppendToFile(const HVString& path, HVError& error) const {
    if (path.IsEmpty()) return false;
    std::string file = path;
    bool isDirectory = false;
    if (!halvane::os::ItemExists(file, &isDirectory)) return WriteToFile(path, error);
    if (isDirectory) return false;
    return reportingFileFaults(error, [&] {
        halvane::os::File handle(file, halvane::os::File::WriteOnly);
        handle.SeekToEnd();
        handle.Write(Bytes(), size_t(Length()));
        handle.Close();
        return true;
    });
}

bool HVData::AppendToFile(const HVString& path) const {
    HVError error;
    return AppendToFile(path, error);
}

HVData& HVData::operator=(const HVString& string) {
    InitWithString(string);
    return *this;
}

HVData& HVData::operator=(const HVDictionary& dictionary) {
    InitWithDictionary(dictionary);
    return *this;
}

HVData& HVData::operator=(const __CFData* ref) {
    AssignUnderlyingData(ref);
    return *this;
}

HVData::operator const __CFData*() const { return asData(m_Ref); }

bool HVData::IsEmpty() const { return m_Ref == nullptr || Length() == 0; }

HVString HVData::Serialize() {
    // "<%@>" around the digits, built as one ASCII text and made into a
    // string with a single copy.
    static const char digits[] = "0123456789abcdef";
    auto bytes = static_cast<const unsigned char*>(Bytes());
    unsigned long long length = Length();
    std::string text(size_t(length) * 2 + 2, '\0');
    text.front() = '<';
    text.back() = '>';
    for (unsigned long long i = 0; i < length; ++i) {
        text[size_t(1 + 2 * i)] = digits[bytes[i] >> 4];
        text[size_t(2 + 2 * i)] = digits[bytes[i] & 15];
    }
    HVString result;
    result.AssignAndTakeOwnership(CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(text.data()),
                                                          CFIndex(text.size()), kCFStringEncodingASCII, false));
    return result;
}

void HVData::Deserialize(const HVString& text) {
    unsigned long long length = text.Length();
    if (length < 2 || text[0ull] != L'<' || text[length - 1] != L'>') {
        InitWithData(HVData());
        return;
    }
    // Each digit counts its character minus '0', less 39 more above 9:
    // lowercase hexadecimal decodes; anything else is not rejected but gives
    // its own value. Kept so: stored texts rely on it.
    auto digit = [](wchar_t c) {
        int value = int(c) - 48;
        return value > 9 ? value - 39 : value;
    };
    unsigned long long count = (length - 2) / 2;
    std::string bytes(size_t(count), '\0');
    for (unsigned long long i = 0; i < count; ++i) {
        int high = digit(text.CharacterAtIndex(1 + 2 * i));
        int low = digit(text.CharacterAtIndex(2 + 2 * i));
        bytes[size_t(i)] = char(uint8_t(high * 16 + low));
    }
    InitWithData(DataWithBytesOfLength(bytes.data(), bytes.size()));
}

bool HVData::IsNativelyAllowedInPropertyList() const { return true; }

void HVData::AssignUnderlyingData(const void* ref) { ReplaceReference(ref, m_ActualClassType); }

void HVData::AssignUnderlyingDataAndTakeOwnership(const void* ref) {
    ReplaceReferenceTakingOwnership(ref, m_ActualClassType);
}

// HVMutableData

HVMutableData::HVMutableData() : HVData(SharedEmptyObject(), HVMutableDataClassType) {}

HVMutableData::HVMutableData(const HVMutableData& other) : HVData(static_cast<const HVObject&>(other), HVMutableDataClassType) {}

HVMutableData::HVMutableData(const HVData& data) : HVMutableData() { SetData(data); }

HVMutableData::HVMutableData(const HVString& string) : HVMutableData() { InitWithString(string); }

HVMutableData::HVMutableData(const HVObject& object) : HVMutableData() {
    HVClassType actual = object.ObjectsActualClassType();
    HVClassType held = object.ObjectsClassType();
    if (actual == HVMutableDataClassType) {
        AssignUnderlyingData(object.Ref());
    } else if (actual == HVDataClassType) {
        AssignUnderlyingDataAndTakeOwnership(CFDataCreateMutableCopy(kCFAllocatorDefault, 0, asData(object.Ref())));
    } else if (held == HVStringClassType) {
        InitWithString(HVString(object));
    } else if (held == HVDictionaryClassType || held == HVMutableDictionaryClassType) {
        InitWithDictionary(HVDictionary(object.Ref()));
    } else if (object.IsNull()) {
        Nullify();
    } else {
        HVAssertionFailed("0", "HVMutableData::HVMutableData(const HVObject& Object) parameter type unhandled.",
                          "HVMutableData::HVMutableData", "HVMutableData", 99);
    }
}

HVMutableData::HVMutableData(const void* const& ref) : HVData(ref, HVMutableDataClassType) {}

HVMutableData::HVMutableData(__CFData* ref) : HVData(static_cast<const void*>(ref), HVMutableDataClassType) {}

HVClassType HVMutableData::ClassType() { return HVMutableDataClassType; }

const void* const& HVMutableData::SharedEmptyObject() {
    static const void* const empty = CFDataCreateMutable(kCFAllocatorDefault, 0);
    return empty;
}

HVMutableData HVMutableData::DataWithLength(unsigned long long length) {
    HVMutableData result;
    result.InitWithLength(length);
    return result;
}

HVMutableData HVMutableData::MutableDataFromObject(const HVObject& object) { return HVMutableData(object); }

HVMutableData HVMutableData::MutableDataFromId(const void* const& ref) { return HVMutableData(ref); }

// A buffer of the receiver's own to write into: not null and not one of the
// shared empty objects. An empty buffer made with a capacity is its own and
// keeps its fixed maximum.
bool HVMutableData::HasOwnBuffer() const {
    return m_Ref != nullptr && m_Ref != kCFNull && m_Ref != HVMutableData::SharedEmptyObject() &&
           m_Ref != HVData::SharedEmptyObject();
}

void* HVMutableData::MutableBytes() const {
    if (IsEmpty()) return nullptr;
    return CFDataGetMutableBytePtr(static_cast<CFMutableDataRef>(const_cast<void*>(m_Ref)));
}

void HVMutableData::IncreaseLengthBy(unsigned long long length) {
    if (length == 0) return;
    if (!HasOwnBuffer()) {
        InitWithLength(length);
        return;
    }
    CFDataIncreaseLength(static_cast<CFMutableDataRef>(const_cast<void*>(m_Ref)), toPlatform(length));
}

void HVMutableData::SetLength(unsigned long long length) {
    if (length == Length()) return;
    if (!HasOwnBuffer()) {
        InitWithLength(length);
        return;
    }
    CFDataSetLength(static_cast<CFMutableDataRef>(const_cast<void*>(m_Ref)), toPlatform(length));
}

void HVMutableData::InitWithCapacity(unsigned long long capacity) {
    if (capacity == 0) {
        Empty();
        return;
    }
    AssignUnderlyingDataAndTakeOwnership(CFDataCreateMutable(kCFAllocatorDefault, toPlatform(capacity)));
}

void HVMutableData::InitWithLength(unsigned long long length) {
    if (length == 0) {
        Empty();
        return;
    }
    CFMutableDataRef buffer = CFDataCreateMutable(kCFAllocatorDefault, 0);
    CFDataIncreaseLength(buffer, toPlatform(length));
    AssignUnderlyingDataAndTakeOwnership(buffer);
}

void HVMutableData::InitWithData(const HVData& data) { SetData(data); }

void HVMutableData::SetData(const HVData& data) {
    // Adopts the source's buffer as it is, mutable or not.
    AssignUnderlyingData(data.Ref());
    m_ActualClassType = HVMutableDataClassType;
}

void HVMutableData::SetData(const HVMutableData& data) { SetData(static_cast<const HVData&>(data)); }

namespace {

CFMutableDataRef mutableCopyOf(const HVData& data) {
    return CFDataCreateMutableCopy(kCFAllocatorDefault, 0, static_cast<CFDataRef>(data.Ref()));
}

}  // namespace

void HVMutableData::InitWithString(const HVString& string) {
    HVData immutable;
    immutable.InitWithString(string);
    AssignUnderlyingDataAndTakeOwnership(mutableCopyOf(immutable));
}

void HVMutableData::InitWithContentsOfFile(const HVString& path) {
    HVData immutable;
    std::string bytes;
    if (!readWholeFile(path, bytes)) return;
    immutable.InitWithBytesOfLength(bytes.data(), bytes.size());
    AssignUnderlyingDataAndTakeOwnership(mutableCopyOf(immutable));
}

void HVMutableData::InitWithDictionary(const HVDictionary& dictionary) {
    HVData immutable;
    immutable.InitWithDictionary(dictionary);
    AssignUnderlyingDataAndTakeOwnership(mutableCopyOf(immutable));
}

void HVMutableData::InitWithBytesOfLength(const void* bytes, unsigned long long length) {
    if (bytes == nullptr || length == 0) {
        Empty();
        return;
    }
    CFMutableDataRef buffer = CFDataCreateMutable(kCFAllocatorDefault, 0);
    CFDataAppendBytes(buffer, static_cast<const UInt8*>(bytes), toPlatform(length));
    AssignUnderlyingDataAndTakeOwnership(buffer);
}

void HVMutableData::AppendData(const HVData& data) { AppendBytesOfLength(data.Bytes(), data.Length()); }

void HVMutableData::AppendBytesOfLength(const void* bytes, unsigned long long length) {
    if (bytes == nullptr || length == 0) return;
    // A receiver without a buffer of its own gets a fresh one: the shared
    // empty object is never written.
    if (!HasOwnBuffer()) {
        InitWithBytesOfLength(bytes, length);
        return;
    }
    CFDataAppendBytes(static_cast<CFMutableDataRef>(const_cast<void*>(m_Ref)), static_cast<const UInt8*>(bytes),
                      toPlatform(length));
}

void HVMutableData::ReplaceBytesInRangeWithBytes(const HVRange& range, const void* bytes) {
    ReplaceBytesInRangeWithBytesOfLength(range, bytes, range.Length());
}

void HVMutableData::ReplaceBytesInRangeWithBytesOfLength(const HVRange& range, const void* bytes,
                                                         unsigned long long length) {
    if (m_Ref == nullptr) return;
    CFDataReplaceBytes(static_cast<CFMutableDataRef>(const_cast<void*>(m_Ref)), range,
                       static_cast<const UInt8*>(bytes), toPlatform(length));
}

void HVMutableData::ResetBytesInRange(const HVRange& range) {
    std::string zeros(size_t(range.Length()), '\0');
    ReplaceBytesInRangeWithBytesOfLength(range, zeros.data(), range.Length());
}

HVData HVMutableData::Copy() const {
    HVData copy;
    if (m_Ref != nullptr) copy.AssignAndTakeOwnership(CFDataCreateCopy(kCFAllocatorDefault, asData(m_Ref)));
    return copy;
}

HVMutableData& HVMutableData::operator=(const HVMutableData& other) {
    SetData(other);
    return *this;
}

HVMutableData& HVMutableData::operator=(const HVData& data) {
    SetData(data);
    return *this;
}

HVMutableData& HVMutableData::operator=(const HVString& string) {
    InitWithString(string);
    return *this;
}

HVMutableData& HVMutableData::operator=(const HVDictionary& dictionary) {
    InitWithDictionary(dictionary);
    return *this;
}

HVMutableData& HVMutableData::operator=(__CFData* ref) {
    AssignUnderlyingData(ref);
    return *this;
}
