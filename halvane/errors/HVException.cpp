#include <halvane/errors/HVException.h>

#include <halvane/core/detail/ClassRegistry.h>
#include <halvane/errors/HVError.h>
#include <halvane/values/HVNumber.h>

#include <halvane/os/File.h>

#include <CoreFoundation/CoreFoundation.h>

HV_REGISTER_CLASS_EMPTY_WHEN_NULL(HVException);

#define HV_EXCEPTION_NAME(Name)                           \
    const HVString& HVExceptionName::Name() {             \
        static const HVString name(#Name);                \
        return name;                                      \
    }

HV_EXCEPTION_NAME(GenericException)
HV_EXCEPTION_NAME(RangeException)
HV_EXCEPTION_NAME(InvalidArgumentException)
HV_EXCEPTION_NAME(FileNotFoundException)
HV_EXCEPTION_NAME(InvalidFilePathException)
HV_EXCEPTION_NAME(TooManyOpenFilesException)
HV_EXCEPTION_NAME(FileAccessDeniedException)
HV_EXCEPTION_NAME(InvalidFileHandleException)
HV_EXCEPTION_NAME(RemoveCurrentDirectoryException)
HV_EXCEPTION_NAME(DirectoryFullException)
HV_EXCEPTION_NAME(InvalidFilePositionException)
HV_EXCEPTION_NAME(HardwareException)
HV_EXCEPTION_NAME(SharingViolationException)
HV_EXCEPTION_NAME(LockViolationException)
HV_EXCEPTION_NAME(DiskFullException)
HV_EXCEPTION_NAME(EndOfFileException)
HV_EXCEPTION_NAME(MemoryException)

#undef HV_EXCEPTION_NAME

namespace {

CFStringRef nameKey() { return CFSTR("name"); }
CFStringRef reasonKey() { return CFSTR("reason"); }
CFStringRef userInfoKey() { return CFSTR("userInfo"); }

// The name of a file error by the framework's cause numbers.
const HVString& nameOfCause(int cause) {
    switch (cause) {
        case 2: return HVExceptionName::FileNotFoundException();
        case 3: return HVExceptionName::InvalidFilePathException();
        case 4: return HVExceptionName::TooManyOpenFilesException();
        case 5: return HVExceptionName::FileAccessDeniedException();
        case 6: return HVExceptionName::InvalidFileHandleException();
        case 7: return HVExceptionName::RemoveCurrentDirectoryException();
        case 8: return HVExceptionName::DirectoryFullException();
        case 9: return HVExceptionName::InvalidFilePositionException();
        case 10: return HVExceptionName::HardwareException();
        case 11: return HVExceptionName::SharingViolationException();
        case 12: return HVExceptionName::LockViolationException();
        case 13: return HVExceptionName::DiskFullException();
        case 14: return HVExceptionName::EndOfFileException();
        default: return HVExceptionName::GenericException();
    }
}

}  // namespace

HVException::HVException() : HVObject(SharedEmptyObject(), HVExceptionClassType) {}

HVException::HVException(const HVException& other) : HVObject(other, HVExceptionClassType) {}

HVException::HVException(const void* const& ref) : HVObject(ref, HVExceptionClassType) {}

HVClassType HVException::ClassType() { return HVExceptionClassType; }

const void* const& HVException::SharedEmptyObject() {
    static const void* const empty = CFDictionaryCreate(kCFAllocatorDefault, nullptr, nullptr, 0,
                                                        &kCFTypeDictionaryKeyCallBacks,
                                                        &kCFTypeDictionaryValueCallBacks);
    return empty;
}

HVException HVException::ExceptionWithNameAndReason(const HVString& name, const HVString& reason) {
    HVException exception;
    exception.InitWithNameAndReason(name, reason);
    return exception;
}

HVException HVException::ExceptionWithNameReasonAndUserInfo(const HVString& name, const HVString& reason,
                                                           const HVDictionary& userInfo) {
    HVException exception;
    exception.InitWithNameReasonAndUserInfo(name, reason, userInfo);
    return exception;
}

HVException HVException::ExceptionWithNameAndError(const HVString& name, const HVError& error) {
    HVException exception;
    exception.InitWithNameAndError(name, error);
    return exception;
}

HVException HVException::ExceptionWithException(const halvane::os::FileError& exception) {
    CFMutableDictionaryRef entries = CFDictionaryCreateMutable(kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks,
                                                               &kCFTypeDictionaryValueCallBacks);
    CFDictionarySetValue(entries, CFSTR("Cause"), HVNumber(int(exception.cause())).Ref());
    CFDictionarySetValue(entries, CFSTR("OSError"), HVNumber(long(exception.osError())).Ref());
    CFDictionarySetValue(entries, CFSTR("FilePath"), HVString(exception.path()).Ref());
    HVDictionary userInfo;
    userInfo.AssignAndTakeOwnership(CFDictionaryCreateCopy(kCFAllocatorDefault, entries));
    CFRelease(entries);
    return ExceptionWithNameReasonAndUserInfo(nameOfCause(exception.cause()), HVString(exception.what()), userInfo);
}

HVException HVException::ExceptionWithException(const std::bad_alloc& exception) {
    return ExceptionWithNameAndReason(HVExceptionName::MemoryException(), HVString(exception.what()));
}

HVException HVException::ExceptionWithException(const std::exception& exception) {
    if (auto file = dynamic_cast<const halvane::os::FileError*>(&exception)) return ExceptionWithException(*file);
    if (auto memory = dynamic_cast<const std::bad_alloc*>(&exception)) return ExceptionWithException(*memory);
    return ExceptionWithNameAndReason(HVExceptionName::GenericException(), HVString(exception.what()));
}

void HVException::InitWithNameAndReason(const HVString& name, const HVString& reason) {
    InitWithNameReasonAndUserInfo(name, reason, HVDictionary());
}

void HVException::InitWithNameReasonAndUserInfo(const HVString& name, const HVString& reason,
                                                const HVDictionary& userInfo) {
    CFMutableDictionaryRef entries = CFDictionaryCreateMutable(kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks,
                                                               &kCFTypeDictionaryValueCallBacks);
    // Empty values are left out.
    if (!name.IsEmpty()) CFDictionarySetValue(entries, nameKey(), name.Ref());
    if (!reason.IsEmpty()) CFDictionarySetValue(entries, reasonKey(), reason.Ref());
    if (!userInfo.IsEmpty()) CFDictionarySetValue(entries, userInfoKey(), userInfo.Ref());
    m_ClassType = HVExceptionClassType;
    AssignAndTakeOwnership(CFDictionaryCreateCopy(kCFAllocatorDefault, entries));
    CFRelease(entries);
}

void HVException::InitWithNameAndError(const HVString& name, const HVError& error) {
    InitWithNameReasonAndUserInfo(name, error.LocalizedDescription(), error.UserInfo());
}

namespace {

HVString stringEntry(const void* dictionary, CFStringRef key) {
    if (CFGetTypeID(dictionary) != CFDictionaryGetTypeID()) return HVString();
    CFTypeRef value = CFDictionaryGetValue(static_cast<CFDictionaryRef>(dictionary), key);
    if (value == nullptr || CFGetTypeID(value) != CFStringGetTypeID()) return HVString();
    return HVString(value);
}

}  // namespace

HVString HVException::Name() const { return stringEntry(m_Ref, nameKey()); }

HVString HVException::Reason() const { return stringEntry(m_Ref, reasonKey()); }

HVDictionary HVException::UserInfo() const {
    if (m_Ref == nullptr || CFGetTypeID(m_Ref) != CFDictionaryGetTypeID()) return HVDictionary();
    CFTypeRef value = CFDictionaryGetValue(static_cast<CFDictionaryRef>(m_Ref), userInfoKey());
    if (value == nullptr || CFGetTypeID(value) != CFDictionaryGetTypeID()) return HVDictionary();
    return HVDictionary(value);
}

HVString HVException::Serialize() {
    // The name does not survive: the first field is a number. Kept so:
    // stored texts have this shape.
    return HVString::StringWithFormat("%d;%@;%@", 0, Reason().Ref(), UserInfo().Serialize().Ref());
}

void HVException::Deserialize(const HVString& text) {
    Empty();
    if (text.Ref() == nullptr) return;
    CFArrayRef parts =
        CFStringCreateArrayBySeparatingStrings(kCFAllocatorDefault, static_cast<CFStringRef>(text.Ref()), CFSTR(";"));
    if (parts == nullptr) return;
    if (CFArrayGetCount(parts) == 3) {
        HVDictionary userInfo;
        userInfo.Deserialize(HVString(CFArrayGetValueAtIndex(parts, 2)));
        InitWithNameReasonAndUserInfo(HVString(CFArrayGetValueAtIndex(parts, 0)),
                                      HVString(CFArrayGetValueAtIndex(parts, 1)), userInfo);
    }
    CFRelease(parts);
}

HVException& HVException::operator=(const HVException& other) {
    HVObject::operator=(other);
    return *this;
}
