// Streams over memory: reading from bytes, writing into a fixed buffer or
// into a growing buffer of the stream's own. They open at once and never
// block.
#include "CFStreamInternal.h"

#include <CoreFoundation/CFData.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>

namespace halvane::detail {
namespace {

class BytesReadEndpoint final : public ReadEndpoint {
public:
    explicit BytesReadEndpoint(CFDataRef bytes) : bytes_(bytes) {}
    ~BytesReadEndpoint() override { CFRelease(bytes_); }

    OpenState open(CFStreamError&) override { return OpenState::open; }

    CFIndex read(UInt8* buffer, CFIndex length, bool& atEnd, CFStreamError&) override {
        CFIndex count = std::min(length, remaining());
        if (count > 0) std::memcpy(buffer, CFDataGetBytePtr(bytes_) + offset_, size_t(count));
        offset_ += count;
        atEnd = remaining() == 0;
        return count;
    }

    bool hasBytesAvailable() override { return remaining() > 0; }

private:
    CFIndex remaining() const { return CFDataGetLength(bytes_) - offset_; }

    CFDataRef bytes_;
    CFIndex offset_ = 0;
};

class BufferWriteEndpoint final : public WriteEndpoint {
public:
    BufferWriteEndpoint(UInt8* buffer, CFIndex capacity) : buffer_(buffer), capacity_(capacity) {}

    OpenState open(CFStreamError&) override { return OpenState::open; }

    CFIndex write(const UInt8* bytes, CFIndex length, CFStreamError&) override {
        CFIndex count = std::min(length, capacity_ - used_);
        if (count > 0) std::memcpy(buffer_ + used_, bytes, size_t(count));
        used_ += count;
        return count;
    }

    bool canAcceptBytes() override { return used_ < capacity_; }

private:
    UInt8* buffer_;
    CFIndex capacity_;
    CFIndex used_ = 0;
};

class GrowingWriteEndpoint final : public WriteEndpoint {
public:
    explicit GrowingWriteEndpoint(CFMutableDataRef data) : data_(data) {}
    ~GrowingWriteEndpoint() override { CFRelease(data_); }

    OpenState open(CFStreamError&) override { return OpenState::open; }

    CFIndex write(const UInt8* bytes, CFIndex length, CFStreamError& error) override {
        CFIndex before = CFDataGetLength(data_);
        CFDataAppendBytes(data_, bytes, length);
        if (CFDataGetLength(data_) != before + length) {
            error = posixStreamError(ENOMEM);
            return -1;
        }
        return length;
    }

    bool canAcceptBytes() override { return true; }

    CFTypeRef copyProperty(CFStringRef name) override {
        if (!CFEqual(name, kCFStreamPropertyDataWritten)) return nullptr;
        return CFDataCreateCopy(nullptr, data_);
    }

private:
    CFMutableDataRef data_;
};

template <typename Endpoint, typename... Arguments>
std::unique_ptr<Endpoint> makeEndpoint(Arguments&&... arguments) {
    return std::unique_ptr<Endpoint>(new (std::nothrow) Endpoint(std::forward<Arguments>(arguments)...));
}

}  // namespace
}  // namespace halvane::detail

using namespace halvane::detail;

CFReadStreamRef CFReadStreamCreateWithBytesNoCopy(CFAllocatorRef alloc, const UInt8* bytes, CFIndex length,
                                                  CFAllocatorRef bytesDeallocator) {
    if (length < 0 || (bytes == nullptr && length > 0)) {
        reportMisuse("CFStream: CFReadStreamCreateWithBytesNoCopy(): %ld bytes at %p", length,
                     static_cast<const void*>(bytes));
        return nullptr;
    }
    if (alloc == kCFAllocatorNull) return nullptr;
    // The data takes over the bytes and frees them with the deallocator.
    CFDataRef data = CFDataCreateWithBytesNoCopy(nullptr, bytes, length, bytesDeallocator);
    if (data == nullptr) return nullptr;
    auto endpoint = makeEndpoint<BytesReadEndpoint>(data);
    if (endpoint == nullptr) {
        CFRelease(data);
        return nullptr;
    }
    return createReadStream(alloc, std::move(endpoint));
}

CFWriteStreamRef CFWriteStreamCreateWithBuffer(CFAllocatorRef alloc, UInt8* buffer, CFIndex bufferCapacity) {
    if (bufferCapacity < 0 || (buffer == nullptr && bufferCapacity > 0)) {
        reportMisuse("CFStream: CFWriteStreamCreateWithBuffer(): %ld bytes at %p", bufferCapacity,
                     static_cast<void*>(buffer));
        return nullptr;
    }
    auto endpoint = makeEndpoint<BufferWriteEndpoint>(buffer, bufferCapacity);
    if (endpoint == nullptr) return nullptr;
    return createWriteStream(alloc, std::move(endpoint));
}

CFWriteStreamRef CFWriteStreamCreateWithAllocatedBuffers(CFAllocatorRef alloc, CFAllocatorRef) {
    if (alloc == kCFAllocatorNull) return nullptr;
    CFMutableDataRef data = CFDataCreateMutable(nullptr, 0);
    if (data == nullptr) return nullptr;
    auto endpoint = makeEndpoint<GrowingWriteEndpoint>(data);
    if (endpoint == nullptr) {
        CFRelease(data);
        return nullptr;
    }
    return createWriteStream(alloc, std::move(endpoint));
}
