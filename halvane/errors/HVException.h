// HVException: the value the library throws (by value) for range faults and
// for file and memory faults it cannot report otherwise. It holds a
// dictionary with up to three entries: "name", "reason" and "userInfo".
#ifndef HALVANE_ERRORS_HVEXCEPTION_H
#define HALVANE_ERRORS_HVEXCEPTION_H

#include <halvane/core/HVObject.h>
#include <halvane/text/HVString.h>

#include <exception>
#include <new>

namespace halvane::os {
class FileError;
}

// The library's exception names, each a constant string made once.
class HV_EXPORT HVExceptionName {
public:
    static const HVString& GenericException();
    static const HVString& RangeException();
    static const HVString& InvalidArgumentException();
    static const HVString& FileNotFoundException();
    static const HVString& InvalidFilePathException();
    static const HVString& TooManyOpenFilesException();
    static const HVString& FileAccessDeniedException();
    static const HVString& InvalidFileHandleException();
    static const HVString& RemoveCurrentDirectoryException();
    static const HVString& DirectoryFullException();
    static const HVString& InvalidFilePositionException();
    static const HVString& HardwareException();
    static const HVString& SharingViolationException();
    static const HVString& LockViolationException();
    static const HVString& DiskFullException();
    static const HVString& EndOfFileException();
    static const HVString& MemoryException();
};

class HV_EXPORT HVException : public HVObject {
public:
    HVException();
    HVException(const HVException& other);
    HVException(const void* const& ref);

    static HVClassType ClassType();
    static const void* const& SharedEmptyObject();

    static HVException ExceptionWithNameAndReason(const HVString& name, const HVString& reason);

    void InitWithNameAndReason(const HVString& name, const HVString& reason);

    HVString Name() const;
    HVString Reason() const;

    HVException& operator=(const HVException& other);
};

#endif  // HALVANE_ERRORS_HVEXCEPTION_H
