// Files over POSIX descriptors, with the share modes and error causes of the
// Windows class framework's file class that the library was written
// against.
#ifndef HALVANE_OS_FILE_H
#define HALVANE_OS_FILE_H

#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>

#include <halvane/os/Export.h>

namespace halvane::os {

// A failed file operation. Cause numbers are the framework's:
// 0 none, 1 generic, 2 file not found, 3 bad path, 4 too many open files,
// 5 access denied, 6 invalid handle, 7 removing the current directory,
// 8 directory full, 9 bad seek, 10 hardware (I/O), 11 sharing violation,
// 12 lock violation, 13 disk full, 14 end of file.
class HALVANE_OS_API FileError : public std::runtime_error {
public:
    enum Cause : int {
        None = 0,
        Generic = 1,
        FileNotFound = 2,
        BadPath = 3,
        TooManyOpenFiles = 4,
        AccessDenied = 5,
        InvalidFile = 6,
        RemoveCurrentDirectory = 7,
        DirectoryFull = 8,
        BadSeek = 9,
        Hardware = 10,
        SharingViolation = 11,
        LockViolation = 12,
        DiskFull = 13,
        EndOfFile = 14,
    };

    FileError(Cause cause, int osError, std::string path);

    // The cause for an errno value of a failed open, read or write.
    static Cause CauseOfErrno(int error);
    // A FileError for errno after a failed operation on path.
    static FileError FromErrno(int error, const std::string& path);

    Cause cause() const { return cause_; }
    int osError() const { return osError_; }
    const std::string& path() const { return path_; }

private:
    Cause cause_;
    int osError_;
    std::string path_;
};

// An open file. Every failure throws FileError.
class HALVANE_OS_API File {
public:
    enum OpenFlags : unsigned {
        ReadOnly = 0x0000,
        WriteOnly = 0x0001,
        ReadWrite = 0x0002,
        ShareExclusive = 0x0010,  // no other process may open the file
        ShareDenyWrite = 0x0020,  // others may read only
        ShareDenyRead = 0x0030,   // others may write only
        ShareDenyNone = 0x0040,
        Create = 0x1000,      // create, truncating an existing file
        NoTruncate = 0x2000,  // with Create: keep an existing file's contents
    };

    File() = default;
    File(const std::string& path, unsigned flags);
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    File(File&& other) noexcept;
    File& operator=(File&& other) noexcept;
    ~File();

    void Open(const std::string& path, unsigned flags);
    void Close();
    bool IsOpen() const { return descriptor_ >= 0; }
    const std::string& Path() const { return path_; }

    // Reads up to count bytes; fewer only at the end of the file.
    size_t Read(void* buffer, size_t count);
    // Reads from the current position to the end.
    std::string ReadToEnd();
    void Write(const void* bytes, size_t count);
    uint64_t Seek(int64_t offset, int whence);
    uint64_t SeekToEnd() { return Seek(0, SEEK_END); }
    uint64_t Position() const;
    uint64_t Length() const;
    void SetLength(uint64_t length);
    // Writes buffered data through to the device.
    void Flush();

private:
    int descriptor_ = -1;
    std::string path_;
};

// Small queries and operations on paths (UTF-8).
HALVANE_OS_API bool ItemExists(const std::string& path, bool* isDirectory = nullptr);
// Removes a file or a whole directory tree; 0 on success, else errno.
HALVANE_OS_API int RemoveItem(const std::string& path);

}  // namespace halvane::os

#endif  // HALVANE_OS_FILE_H
