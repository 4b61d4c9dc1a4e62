#include <halvane/os/File.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace halvane::os {

namespace {

std::string messageFor(FileError::Cause cause, int osError, const std::string& path) {
    std::string text = path.empty() ? std::string("file") : path;
    text += ": ";
    if (cause == FileError::EndOfFile) return text + "unexpected end of file";
    if (cause == FileError::SharingViolation) return text + "the file is in use by another process";
    if (osError != 0) {
        // English whatever the process locale: the message ends up in logs
        // and exception reasons that callers compare.
        static locale_t english = newlocale(LC_ALL_MASK, "C", locale_t(0));
        return text + strerror_l(osError, english);
    }
    return text + "file error";
}

// Locks that exclude other processes for the framework's share modes.
// Open-file-description locks belong to this open, so two opens in one
// process exclude each other too, as the framework's share modes do.
bool applyShareMode(int descriptor, unsigned flags) {
    unsigned share = flags & 0x0070;
    if (share == 0 || share == File::ShareDenyNone) return true;
    struct flock lock {};
    lock.l_whence = SEEK_SET;
    lock.l_start = 0;
    lock.l_len = 0;
    // Denying writers takes a shared lock, denying everyone an exclusive
    // one; locks need the matching access, so fall back to what the
    // descriptor allows.
    unsigned access = flags & 0x0003;
    bool exclusive = share == File::ShareExclusive || share == File::ShareDenyRead;
    if (exclusive && access == File::ReadOnly) exclusive = false;
    if (!exclusive && access == File::WriteOnly) exclusive = true;
    lock.l_type = exclusive ? F_WRLCK : F_RDLCK;
    if (fcntl(descriptor, F_OFD_SETLK, &lock) == 0) return true;
    // File systems without these locks: open without them.
    return errno == EINVAL || errno == ENOLCK || errno == ENOSYS;
}

}  // namespace

FileError::FileError(Cause cause, int osError, std::string path)
    : std::runtime_error(messageFor(cause, osError, path)), cause_(cause), osError_(osError), path_(std::move(path)) {}

FileError::Cause FileError::CauseOfErrno(int error) {
    switch (error) {
        case ENOENT: return FileNotFound;
        case ENAMETOOLONG:
        case EINVAL:
        case ENOTDIR:
        case EISDIR: return BadPath;
        case EMFILE:
        case ENFILE: return TooManyOpenFiles;
        case EACCES:
        case EPERM:
        case EROFS: return AccessDenied;
        case EBADF: return InvalidFile;
        case EBUSY: return RemoveCurrentDirectory;
        case ESPIPE: return BadSeek;
        case EIO: return Hardware;
        case ETXTBSY: return SharingViolation;
        case EAGAIN:
        case EDEADLK: return LockViolation;
        case ENOSPC:
        case EDQUOT: return DiskFull;
        default: return Generic;
    }
}

FileError FileError::FromErrno(int error, const std::string& path) { return FileError(CauseOfErrno(error), error, path); }

File::File(const std::string& path, unsigned flags) { Open(path, flags); }

File::File(File&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)), path_(std::move(other.path_)) {}

File& File::operator=(File&& other) noexcept {
    if (this != &other) {
        if (descriptor_ >= 0) ::close(descriptor_);
        descriptor_ = std::exchange(other.descriptor_, -1);
        path_ = std::move(other.path_);
    }
    return *this;
}

File::~File() {
    if (descriptor_ >= 0) ::close(descriptor_);
}

void File::Open(const std::string& path, unsigned flags) {
    Close();
    int mode = O_CLOEXEC;
    switch (flags & 0x0003) {
        case WriteOnly: mode |= O_WRONLY; break;
        case ReadWrite: mode |= O_RDWR; break;
        default: mode |= O_RDONLY; break;
    }
    if (flags & Create) mode |= O_CREAT | ((flags & NoTruncate) ? 0 : O_TRUNC);
    int descriptor = ::open(path.c_str(), mode, 0666);
    if (descriptor < 0) throw FileError::FromErrno(errno, path);
    struct stat status {};
    if (fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode)) {
        ::close(descriptor);
        throw FileError(FileError::AccessDenied, EISDIR, path);
    }
    if (!applyShareMode(descriptor, flags)) {
        ::close(descriptor);
        throw FileError(FileError::SharingViolation, EAGAIN, path);
    }
    descriptor_ = descriptor;
    path_ = path;
}

void File::Close() {
    if (descriptor_ < 0) return;
    int result = ::close(descriptor_);
    descriptor_ = -1;
    if (result != 0 && errno != EINTR) throw FileError::FromErrno(errno, path_);
}

size_t File::Read(void* buffer, size_t count) {
    if (descriptor_ < 0) throw FileError(FileError::InvalidFile, EBADF, path_);
    size_t done = 0;
    while (done < count) {
        ssize_t n = ::read(descriptor_, static_cast<char*>(buffer) + done, count - done);
        if (n < 0) {
            if (errno == EINTR) continue;
            throw FileError::FromErrno(errno, path_);
        }
        if (n == 0) break;
        done += size_t(n);
    }
    return done;
}

std::string File::ReadToEnd() {
    std::string bytes;
    char chunk[65536];
    for (;;) {
        size_t n = Read(chunk, sizeof chunk);
        bytes.append(chunk, n);
        if (n < sizeof chunk) break;
    }
    return bytes;
}

void File::Write(const void* bytes, size_t count) {
    if (descriptor_ < 0) throw FileError(FileError::InvalidFile, EBADF, path_);
    size_t done = 0;
    while (done < count) {
        ssize_t n = ::write(descriptor_, static_cast<const char*>(bytes) + done, count - done);
        if (n < 0) {
            if (errno == EINTR) continue;
            throw FileError::FromErrno(errno, path_);
        }
        done += size_t(n);
    }
}

uint64_t File::Seek(int64_t offset, int whence) {
    if (descriptor_ < 0) throw FileError(FileError::InvalidFile, EBADF, path_);
    off_t position = ::lseek(descriptor_, off_t(offset), whence);
    if (position < 0) throw FileError(FileError::BadSeek, errno, path_);
    return uint64_t(position);
}

uint64_t File::Position() const {
    if (descriptor_ < 0) throw FileError(FileError::InvalidFile, EBADF, path_);
    off_t position = ::lseek(descriptor_, 0, SEEK_CUR);
    if (position < 0) throw FileError(FileError::BadSeek, errno, path_);
    return uint64_t(position);
}

uint64_t File::Length() const {
    struct stat status {};
    if (descriptor_ < 0) throw FileError(FileError::InvalidFile, EBADF, path_);
    if (fstat(descriptor_, &status) != 0) throw FileError::FromErrno(errno, path_);
    return uint64_t(status.st_size);
}

void File::SetLength(uint64_t length) {
    if (descriptor_ < 0) throw FileError(FileError::InvalidFile, EBADF, path_);
    if (ftruncate(descriptor_, off_t(length)) != 0) throw FileError::FromErrno(errno, path_);
}

void File::Flush() {
    if (descriptor_ < 0) throw FileError(FileError::InvalidFile, EBADF, path_);
    if (fsync(descriptor_) != 0 && errno != EINVAL && errno != EROFS) throw FileError::FromErrno(errno, path_);
}

bool ItemExists(const std::string& path, bool* isDirectory) {
    struct stat status {};
    bool exists = !path.empty() && ::stat(path.c_str(), &status) == 0;
    if (isDirectory != nullptr) *isDirectory = exists && S_ISDIR(status.st_mode);
    return exists;
}

int RemoveItem(const std::string& path) {
    std::error_code error;
    std::filesystem::remove_all(path, error);
    return error ? error.value() : 0;
}

}  // namespace halvane::os
