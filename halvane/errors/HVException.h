// HVException: the value the library throws (by value) for range faults and
// for file and memory faults it cannot report otherwise. It holds a
// dictionary with up to three entries: "name", "reason" and "userInfo".
#ifndef HALVANE_ERRORS_HVEXCEPTION_H
#define HALVANE_ERRORS_HVEXCEPTION_H

#include <halvane/collections/HVDictionary.h>
#include <halvane/core/HVObject.h>
#include <halvane/text/HVString.h>

#include <exception>
#include <new>

namespace halvane::os {
class FileError;
}
class HVError;

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
    static HVException ExceptionWithNameReasonAndUserInfo(const HVString& name, const HVString& reason,
                                                          const HVDictionary& userInfo);
    static HVException ExceptionWithNameAndError(const HVString& name, const HVError& error);
    // The platform's file and memory faults as library exceptions: a file
    // error is named by its cause and carries "Cause", "OSError" and
    // "FilePath"; running out of memory is "MemoryException"; anything else
    // "GenericException". The reason is the fault's message.
    static HVException ExceptionWithException(const halvane::os::FileError& exception);
    static HVException ExceptionWithException(const std::bad_alloc& exception);
    static HVException ExceptionWithException(const std::exception& exception);

    void InitWithNameAndReason(const HVString& name, const HVString& reason);
    void InitWithNameReasonAndUserInfo(const HVString& name, const HVString& reason, const HVDictionary& userInfo);
    void InitWithNameAndError(const HVString& name, const HVError& error);

    HVString Name() const;
    HVString Reason() const;
    HVDictionary UserInfo() const;

    // "%d;%@;%@": a number (the name does not survive), the reason and the
    // user information's text form.
    HVString Serialize() override;
    void Deserialize(const HVString& text) override;

    HVException& operator=(const HVException& other);
};

#endif  // HALVANE_ERRORS_HVEXCEPTION_H
