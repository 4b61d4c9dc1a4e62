#include <halvane/errors/HVException.h>

#include <halvane/core/detail/ClassRegistry.h>

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

void HVException::InitWithNameAndReason(const HVString& name, const HVString& reason) {
    CFMutableDictionaryRef entries = CFDictionaryCreateMutable(kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks,
                                                               &kCFTypeDictionaryValueCallBacks);
    // Empty values are left out.
    if (!name.IsEmpty()) CFDictionarySetValue(entries, nameKey(), name.Ref());
    if (!reason.IsEmpty()) CFDictionarySetValue(entries, reasonKey(), reason.Ref());
    m_ClassType = HVExceptionClassType;
    AssignAndTakeOwnership(entries);
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

HVException& HVException::operator=(const HVException& other) {
    HVObject::operator=(other);
    return *this;
}
