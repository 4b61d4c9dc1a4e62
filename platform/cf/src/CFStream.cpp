// CFReadStream and CFWriteStream: the status machine shared by every kind of
// stream, error reporting, and the property keys. The bytes themselves move
// through an endpoint (CFMemoryStream.cpp, CFSocketStream.cpp).
#include "CFStreamInternal.h"
#include "CFStringInternal.h"

#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFNumber.h>

#include <mutex>
#include <new>
#include <optional>
#include <utility>

namespace halvane::detail {

struct StreamState {
    explicit StreamState(std::unique_ptr<StreamEndpoint> e) : endpoint(std::move(e)) {}
    // Guards status and error; never held while an endpoint blocks.
    std::mutex mutex;
    CFStreamStatus status = kCFStreamStatusNotOpen;
    CFStreamError error{0, 0};
    std::unique_ptr<StreamEndpoint> endpoint;
};

}  // namespace halvane::detail

struct __CFReadStream {
    CFRuntimeBase base;
    halvane::detail::StreamState* state;
};

struct __CFWriteStream {
    CFRuntimeBase base;
    halvane::detail::StreamState* state;
};

namespace halvane::detail {
namespace {

constexpr uint8_t kDataWrittenText[] = "kCFStreamPropertyDataWritten";
constexpr uint8_t kSocketNativeHandleText[] = "kCFStreamPropertySocketNativeHandle";

template <size_t N>
constexpr __CFString constantASCIIString(const uint8_t (&text)[N]) {
    return {immortalHeader(kCFStringTypeID, kStringASCII | kStringNulTerminated),
            CFIndex(N - 1),
            {.ascii = text},
            0,
            nullptr};
}

constinit __CFString dataWrittenKey = constantASCIIString(kDataWrittenText);
constinit __CFString socketNativeHandleKey = constantASCIIString(kSocketNativeHandleText);

const char* streamKind(CFTypeID typeID) {
    return typeID == kCFReadStreamTypeID ? "read stream" : "write stream";
}

// The state of stream when it is of the given type; reports and returns
// nullptr otherwise.
StreamState* stateOf(CFTypeRef stream, CFTypeID typeID, const char* caller) {
    if (!isA(stream, typeID)) {
        reportMisuse("CFStream: %s(): %s is not a %s", caller, stream == nullptr ? "NULL" : "the argument",
                     streamKind(typeID));
        return nullptr;
    }
    if (typeID == kCFReadStreamTypeID) return static_cast<const __CFReadStream*>(stream)->state;
    return static_cast<const __CFWriteStream*>(stream)->state;
}

template <typename Endpoint>
Endpoint& endpointOf(StreamState& s) {
    return static_cast<Endpoint&>(*s.endpoint);
}

template <typename Object>
void finalizeStream(CFTypeRef cf) {
    StreamState* s = static_cast<const Object*>(cf)->state;
    if (s == nullptr) return;
    if (s->status != kCFStreamStatusClosed) s->endpoint->close();
    delete s;
}

template <typename Object>
Object* createStream(CFAllocatorRef allocator, CFTypeID typeID, std::unique_ptr<StreamEndpoint> endpoint) {
    auto* state = new (std::nothrow) StreamState(std::move(endpoint));
    if (state == nullptr) return nullptr;
    auto* stream = createInstance<Object>(allocator, typeID);
    if (stream == nullptr) {
        delete state;
        return nullptr;
    }
    stream->state = state;
    return stream;
}

Boolean openStream(StreamState& s) {
    std::lock_guard lock(s.mutex);
    if (s.status != kCFStreamStatusNotOpen) return false;
    CFStreamError error{0, 0};
    switch (s.endpoint->open(error)) {
        case OpenState::open:
            s.status = kCFStreamStatusOpen;
            return true;
        case OpenState::opening:
            s.status = kCFStreamStatusOpening;
            return true;
        case OpenState::failed:
            break;
    }
    s.status = kCFStreamStatusError;
    s.error = error;
    return false;
}

// Moves an opening stream on to Open or Error once its endpoint knows the
// outcome; waits for the outcome when wait is set.
void settleOpen(StreamState& s, bool wait) {
    {
        std::lock_guard lock(s.mutex);
        if (s.status != kCFStreamStatusOpening) return;
    }
    CFStreamError error{0, 0};
    OpenState state = s.endpoint->openProgress(wait, error);
    std::lock_guard lock(s.mutex);
    if (s.status != kCFStreamStatusOpening) return;  // closed meanwhile
    if (state == OpenState::open) {
        s.status = kCFStreamStatusOpen;
    } else if (state == OpenState::failed) {
        s.status = kCFStreamStatusError;
        s.error = error;
    }
}

void closeStream(StreamState& s) {
    std::lock_guard lock(s.mutex);
    if (s.status == kCFStreamStatusClosed) return;
    s.status = kCFStreamStatusClosed;
    s.endpoint->close();
}

CFStreamStatus statusOf(StreamState& s) {
    settleOpen(s, false);
    std::lock_guard lock(s.mutex);
    return s.status;
}

CFStreamError errorOf(StreamState& s) {
    settleOpen(s, false);
    std::lock_guard lock(s.mutex);
    return s.error;
}

// Whether the endpoint may be asked if a transfer would block.
bool isReady(StreamState& s, CFStreamStatus busy) {
    settleOpen(s, false);
    std::lock_guard lock(s.mutex);
    return s.status == kCFStreamStatusOpen || s.status == busy;
}

// Marks the stream busy for one transfer; the result of the call when the
// stream cannot transfer (or there is nothing to transfer), else nullopt.
std::optional<CFIndex> beginTransfer(StreamState& s, CFStreamStatus busy, CFIndex length) {
    settleOpen(s, true);
    std::lock_guard lock(s.mutex);
    if (busy == kCFStreamStatusReading && s.status == kCFStreamStatusAtEnd) return 0;
    if (s.status != kCFStreamStatusOpen) return -1;
    if (length == 0) return 0;
    s.status = busy;
    return std::nullopt;
}

void endTransfer(StreamState& s, CFStreamStatus busy, CFIndex count, bool atEnd, CFStreamError error) {
    std::lock_guard lock(s.mutex);
    if (s.status != busy) return;  // closed meanwhile
    if (count < 0) {
        s.status = kCFStreamStatusError;
        s.error = error;
    } else {
        s.status = atEnd ? kCFStreamStatusAtEnd : kCFStreamStatusOpen;
    }
}

bool checkBuffer(const void* buffer, CFIndex length, const char* caller) {
    if (length >= 0 && (buffer != nullptr || length == 0)) return true;
    reportMisuse("CFStream: %s(): %ld bytes at %p", caller, length, buffer);
    return false;
}

// The CFError equivalent of a stream error (+1), nullptr for none.
CFErrorRef copyErrorFor(CFStreamError error) {
    if (error.domain == 0 && error.error == 0) return nullptr;
    if (error.domain == kCFStreamErrorDomainPOSIX)
        return CFErrorCreate(nullptr, kCFErrorDomainPOSIX, error.error, nullptr);
    if (error.domain == kCFStreamErrorDomainMacOSStatus) {
        return CFErrorCreate(nullptr, kCFErrorDomainOSStatus, error.error, nullptr);
    }
    // Kept for compatibility: callers recognise errors of the other domains
    // by this domain name and find the stream domain under this key.
    CFIndex domain = error.domain;
    CFNumberRef domainNumber = CFNumberCreate(nullptr, kCFNumberCFIndexType, &domain);
    const void* keys[] = {CFSTR("CFStreamErrorDomainKey")};
    const void* values[] = {domainNumber};
    CFDictionaryRef userInfo =
        CFDictionaryCreate(nullptr, keys, values, 1, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
    CFErrorRef result = CFErrorCreate(nullptr, CFSTR("BogusCFStreamErrorCompatibilityDomain"), error.error, userInfo);
    CFRelease(userInfo);
    CFRelease(domainNumber);
    return result;
}

CFTypeRef copyProperty(StreamState& s, CFStringRef name, const char* caller) {
    if (!isA(name, kCFStringTypeID)) {
        reportMisuse("CFStream: %s(): the property name is not a string", caller);
        return nullptr;
    }
    return s.endpoint->copyProperty(name);
}

}  // namespace

constinit const CFRuntimeClass kReadStreamClass = {
    0,       "CFReadStream", nullptr, nullptr, finalizeStream<__CFReadStream>, nullptr, nullptr, nullptr,
    nullptr, nullptr,        nullptr, 0};

constinit const CFRuntimeClass kWriteStreamClass = {
    0,       "CFWriteStream", nullptr, nullptr, finalizeStream<__CFWriteStream>, nullptr, nullptr, nullptr,
    nullptr, nullptr,         nullptr, 0};

CFReadStreamRef createReadStream(CFAllocatorRef allocator, std::unique_ptr<ReadEndpoint> endpoint) {
    return createStream<__CFReadStream>(allocator, kCFReadStreamTypeID, std::move(endpoint));
}

CFWriteStreamRef createWriteStream(CFAllocatorRef allocator, std::unique_ptr<WriteEndpoint> endpoint) {
    return createStream<__CFWriteStream>(allocator, kCFWriteStreamTypeID, std::move(endpoint));
}

}  // namespace halvane::detail

using namespace halvane::detail;

const CFStreamPropertyKey kCFStreamPropertyDataWritten = &dataWrittenKey;
const CFStreamPropertyKey kCFStreamPropertySocketNativeHandle = &socketNativeHandleKey;

CFTypeID CFReadStreamGetTypeID(void) {
    return kCFReadStreamTypeID;
}

CFTypeID CFWriteStreamGetTypeID(void) {
    return kCFWriteStreamTypeID;
}

CFStreamStatus CFReadStreamGetStatus(CFReadStreamRef stream) {
    StreamState* s = stateOf(stream, kCFReadStreamTypeID, __func__);
    return s != nullptr ? statusOf(*s) : CFStreamStatus(kCFStreamStatusNotOpen);
}

CFStreamStatus CFWriteStreamGetStatus(CFWriteStreamRef stream) {
    StreamState* s = stateOf(stream, kCFWriteStreamTypeID, __func__);
    return s != nullptr ? statusOf(*s) : CFStreamStatus(kCFStreamStatusNotOpen);
}

CFStreamError CFReadStreamGetError(CFReadStreamRef stream) {
    StreamState* s = stateOf(stream, kCFReadStreamTypeID, __func__);
    return s != nullptr ? errorOf(*s) : CFStreamError{0, 0};
}

CFStreamError CFWriteStreamGetError(CFWriteStreamRef stream) {
    StreamState* s = stateOf(stream, kCFWriteStreamTypeID, __func__);
    return s != nullptr ? errorOf(*s) : CFStreamError{0, 0};
}

CFErrorRef CFReadStreamCopyError(CFReadStreamRef stream) {
    StreamState* s = stateOf(stream, kCFReadStreamTypeID, __func__);
    return s != nullptr ? copyErrorFor(errorOf(*s)) : nullptr;
}

CFErrorRef CFWriteStreamCopyError(CFWriteStreamRef stream) {
    StreamState* s = stateOf(stream, kCFWriteStreamTypeID, __func__);
    return s != nullptr ? copyErrorFor(errorOf(*s)) : nullptr;
}

Boolean CFReadStreamOpen(CFReadStreamRef stream) {
    StreamState* s = stateOf(stream, kCFReadStreamTypeID, __func__);
    return s != nullptr && openStream(*s);
}

Boolean CFWriteStreamOpen(CFWriteStreamRef stream) {
    StreamState* s = stateOf(stream, kCFWriteStreamTypeID, __func__);
    return s != nullptr && openStream(*s);
}

void CFReadStreamClose(CFReadStreamRef stream) {
    if (StreamState* s = stateOf(stream, kCFReadStreamTypeID, __func__)) closeStream(*s);
}

void CFWriteStreamClose(CFWriteStreamRef stream) {
    if (StreamState* s = stateOf(stream, kCFWriteStreamTypeID, __func__)) closeStream(*s);
}

Boolean CFReadStreamHasBytesAvailable(CFReadStreamRef stream) {
    StreamState* s = stateOf(stream, kCFReadStreamTypeID, __func__);
    if (s == nullptr || !isReady(*s, kCFStreamStatusReading)) return false;
    return endpointOf<ReadEndpoint>(*s).hasBytesAvailable();
}

Boolean CFWriteStreamCanAcceptBytes(CFWriteStreamRef stream) {
    StreamState* s = stateOf(stream, kCFWriteStreamTypeID, __func__);
    if (s == nullptr || !isReady(*s, kCFStreamStatusWriting)) return false;
    return endpointOf<WriteEndpoint>(*s).canAcceptBytes();
}

CFIndex CFReadStreamRead(CFReadStreamRef stream, UInt8* buffer, CFIndex bufferLength) {
    StreamState* s = stateOf(stream, kCFReadStreamTypeID, __func__);
    if (s == nullptr || !checkBuffer(buffer, bufferLength, __func__)) return -1;
    if (auto early = beginTransfer(*s, kCFStreamStatusReading, bufferLength)) return *early;
    bool atEnd = false;
    CFStreamError error{0, 0};
    CFIndex count = endpointOf<ReadEndpoint>(*s).read(buffer, bufferLength, atEnd, error);
    endTransfer(*s, kCFStreamStatusReading, count, atEnd, error);
    return count;
}

CFIndex CFWriteStreamWrite(CFWriteStreamRef stream, const UInt8* buffer, CFIndex bufferLength) {
    StreamState* s = stateOf(stream, kCFWriteStreamTypeID, __func__);
    if (s == nullptr || !checkBuffer(buffer, bufferLength, __func__)) return -1;
    if (auto early = beginTransfer(*s, kCFStreamStatusWriting, bufferLength)) return *early;
    CFStreamError error{0, 0};
    CFIndex count = endpointOf<WriteEndpoint>(*s).write(buffer, bufferLength, error);
    endTransfer(*s, kCFStreamStatusWriting, count, count == 0, error);
    return count;
}

CFTypeRef CFReadStreamCopyProperty(CFReadStreamRef stream, CFStreamPropertyKey propertyName) {
    StreamState* s = stateOf(stream, kCFReadStreamTypeID, __func__);
    return s != nullptr ? copyProperty(*s, propertyName, __func__) : nullptr;
}

CFTypeRef CFWriteStreamCopyProperty(CFWriteStreamRef stream, CFStreamPropertyKey propertyName) {
    StreamState* s = stateOf(stream, kCFWriteStreamTypeID, __func__);
    return s != nullptr ? copyProperty(*s, propertyName, __func__) : nullptr;
}
