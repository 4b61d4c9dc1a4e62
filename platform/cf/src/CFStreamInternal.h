// The interface between the generic stream state machine (CFStream.cpp) and
// the kinds of streams (memory, socket) that move the bytes.
#ifndef HALVANE_CF_STREAM_INTERNAL_H
#define HALVANE_CF_STREAM_INTERNAL_H

#include "CFInternal.h"

#include <CoreFoundation/CFStream.h>

#include <memory>

namespace halvane::detail {

enum class OpenState { open, opening, failed };

// What a stream reads from or writes to. The state machine calls these
// without holding the stream's lock, so a blocking read does not stop a
// status query; it never calls read or write before the open has
// succeeded, nor after close.
class StreamEndpoint {
public:
    virtual ~StreamEndpoint() = default;
    // Starts opening; on failure sets error.
    virtual OpenState open(CFStreamError& error) = 0;
    // While opening: the state now, after waiting for the outcome when wait is set.
    virtual OpenState openProgress(bool /*wait*/, CFStreamError& /*error*/) { return OpenState::open; }
    // Called once, when the stream is closed.
    virtual void close() {}
    // +1, or nullptr for a property the endpoint does not have.
    virtual CFTypeRef copyProperty(CFStringRef /*name*/) { return nullptr; }
};

class ReadEndpoint : public StreamEndpoint {
public:
    // Blocks until bytes or the end are there. Returns the count (0 at the
    // end) and sets atEnd when no more bytes will come, or -1 with error set.
    virtual CFIndex read(UInt8* buffer, CFIndex length, bool& atEnd, CFStreamError& error) = 0;
    virtual bool hasBytesAvailable() = 0;
};

class WriteEndpoint : public StreamEndpoint {
public:
    // Blocks until some bytes can be taken. Returns the count, 0 when no more
    // bytes fit, or -1 with error set.
    virtual CFIndex write(const UInt8* buffer, CFIndex length, CFStreamError& error) = 0;
    virtual bool canAcceptBytes() = 0;
};

// New unopened streams (+1) over an endpoint; nullptr (endpoint discarded)
// for kCFAllocatorNull or when memory runs out.
CFReadStreamRef createReadStream(CFAllocatorRef allocator, std::unique_ptr<ReadEndpoint> endpoint);
CFWriteStreamRef createWriteStream(CFAllocatorRef allocator, std::unique_ptr<WriteEndpoint> endpoint);

inline CFStreamError posixStreamError(int code) {
    return CFStreamError{kCFStreamErrorDomainPOSIX, SInt32(code)};
}

}  // namespace halvane::detail

#endif  // HALVANE_CF_STREAM_INTERNAL_H
