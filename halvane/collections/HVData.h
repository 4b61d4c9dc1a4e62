// HVData and HVMutableData: byte buffers over CoreFoundation data. Lengths
// and indices are 64-bit here and cut to the platform's 32-bit index on the
// way in, so buffers of 2 GiB and more are not supported.
#ifndef HALVANE_COLLECTIONS_HVDATA_H
#define HALVANE_COLLECTIONS_HVDATA_H

#include <halvane/core/HVObject.h>
#include <halvane/text/HVRange.h>
#include <halvane/text/HVString.h>

struct __CFData;

class HVDictionary;
class HVError;

class HV_EXPORT HVData : public HVObject {
public:
    HVData();
    HVData(const HVData& other);
    HVData(const HVString& string);
    // The dictionary's XML property-list text.
    HVData(const HVDictionary& dictionary);
    HVData(const HVObject& object);
    HVData(const void* const& ref);
    HVData(const __CFData* ref);

    static HVClassType ClassType();
    static const void* const& SharedEmptyObject();

    static HVData DataWithData(const HVData& data);
    static HVData DataWithDictionary(const HVDictionary& dictionary);
    static HVData DataWithContentsOfFile(const HVString& path);
    static HVData DataWithBytesOfLength(const void* bytes, unsigned long long length);
    // The buffer takes the bytes over and frees them (free) when the last
    // reference goes; nothing is taken over when bytes is null or length 0.
    static HVData DataWithBytesNoCopyOfLength(void* bytes, unsigned long long length);
    static HVData DataWithBytesNoCopyOfLengthAndShouldFreeWhenDone(void* bytes, unsigned long long length,
                                                                   bool shouldFree);
    static HVData DataWithStringUsingEncoding(const HVString& string, HVStringEncoding encoding);
    static HVData DataContainingCStringWithStringUsingEncoding(const HVString& string, HVStringEncoding encoding);
    static HVData DataFromObject(const HVObject& object);
    static HVData DataFromId(const void* const& ref);

    unsigned long long Length() const;
    const void* Bytes() const;
    const char* CharPointer() const;
    const char32_t* UTF32CharPointer() const;
    const wchar_t* WideCharPointer() const;
    // The copy functions do not check the range against the length.
    void GetBytes(void* out) const;
    void GetBytesWithLength(void* out, unsigned long long length) const;
    void GetBytesWithRange(void* out, const HVRange& range) const;
    HVData SubdataWithRange(const HVRange& range) const;

    void InitWithData(const HVData& data);
    void InitWithContentsOfFile(const HVString& path);
    void InitWithString(const HVString& string);
    void InitWithStringUsingEncoding(const HVString& string, HVStringEncoding encoding);
    void InitContainingCStringWithStringUsingEncoding(const HVString& string, HVStringEncoding encoding);
    // The XML property-list text of the dictionary; empty when it cannot be
    // written as a property list.
    void InitWithDictionary(const HVDictionary& dictionary);
    void InitWithBytesOfLength(const void* bytes, unsigned long long length);

    // Writing replaces the file; the atomic forms are the same operation.
    // File faults come back in error (false); a fault that has no error of
    // its own is thrown as HVException.
    bool WriteToFile(const HVString& path, HVError& error) const;
    bool WriteToFile(const HVString& path) const;
    bool WriteToFileAtomically(const HVString& path) const;
    bool WriteToFileAtomically(const HVString& path, HVError& error) const;
    bool AppendToFile(const HVString& path, HVError& error) const;
    bool AppendToFile(const HVString& path) const;

    HVData& operator=(const HVData& other);
    HVData& operator=(const HVString& string);
    HVData& operator=(const HVDictionary& dictionary);
    HVData& operator=(const __CFData* ref);
    operator const __CFData*() const;

    bool IsEmpty() const override;
    // "<0aff>": every byte as two lowercase hexadecimal digits.
    HVString Serialize() override;
    void Deserialize(const HVString& text) override;
    bool IsNativelyAllowedInPropertyList() const override;

protected:
    HVData(const void* const& ref, HVClassType type);
    HVData(const HVObject& object, HVClassType type);

    void AssignUnderlyingData(const void* ref);
    void AssignUnderlyingDataAndTakeOwnership(const void* ref);
};

class HV_EXPORT HVMutableData : public HVData {
public:
    HVMutableData();
    HVMutableData(const HVMutableData& other);
    HVMutableData(const HVData& data);
    HVMutableData(const HVString& string);
    HVMutableData(const HVObject& object);
    HVMutableData(const void* const& ref);
    HVMutableData(__CFData* ref);

    static HVClassType ClassType();
    static const void* const& SharedEmptyObject();

    static HVMutableData DataWithLength(unsigned long long length);
    static HVMutableData MutableDataFromObject(const HVObject& object);
    static HVMutableData MutableDataFromId(const void* const& ref);

    // Null when the buffer is empty.
    void* MutableBytes() const;
    void IncreaseLengthBy(unsigned long long length);
    void SetLength(unsigned long long length);

    // A non-zero capacity is a fixed maximum size the buffer never exceeds.
    void InitWithCapacity(unsigned long long capacity);
    void InitWithLength(unsigned long long length);
    void InitWithData(const HVData& data);
    void InitWithString(const HVString& string);
    void InitWithContentsOfFile(const HVString& path);
    void InitWithDictionary(const HVDictionary& dictionary);
    void InitWithBytesOfLength(const void* bytes, unsigned long long length);
    void SetData(const HVData& data);
    void SetData(const HVMutableData& data);

    void AppendData(const HVData& data);
    void AppendBytesOfLength(const void* bytes, unsigned long long length);
    void ReplaceBytesInRangeWithBytes(const HVRange& range, const void* bytes);
    void ReplaceBytesInRangeWithBytesOfLength(const HVRange& range, const void* bytes, unsigned long long length);
    void ResetBytesInRange(const HVRange& range);

    // An immutable copy.
    HVData Copy() const;

    HVMutableData& operator=(const HVMutableData& other);
    HVMutableData& operator=(const HVData& data);
    HVMutableData& operator=(const HVString& string);
    HVMutableData& operator=(const HVDictionary& dictionary);
    HVMutableData& operator=(__CFData* ref);

private:
    bool HasOwnBuffer() const;
};

#endif  // HALVANE_COLLECTIONS_HVDATA_H
