// CFSocket: an object that owns a native socket descriptor, with its
// addresses and a way to send data. There is no run loop in this layer, so
// the callback and context are only stored; the callback is never invoked.
#include "CFInternal.h"

#include <CoreFoundation/CFSocket.h>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cmath>
#include <mutex>
#include <new>
#include <unordered_map>

namespace halvane::detail {

struct SocketState {
    std::mutex mutex;  // guards everything below
    CFSocketNativeHandle fd = -1;
    bool valid = true;
    CFOptionFlags flags = 0;
    CFOptionFlags callBackTypes = 0;
    CFSocketCallBack callout = nullptr;
    CFSocketContext context{};
    CFDataRef address = nullptr;
    CFDataRef peerAddress = nullptr;
};

}  // namespace halvane::detail

struct __CFSocket {
    CFRuntimeBase base;
    halvane::detail::SocketState* state;
};

namespace halvane::detail {
namespace {

// Every valid socket by descriptor. The table holds a reference, so a valid
// socket lives on after its creators release it, until it is invalidated.
// Never destroyed: sockets may be invalidated while the process exits.
struct SocketTable {
    std::mutex mutex;
    std::unordered_map<CFSocketNativeHandle, CFSocketRef> sockets;
};

SocketTable& socketTable() {
    static SocketTable* table = new SocketTable;
    return *table;
}

SocketState* stateOf(CFSocketRef s, const char* caller) {
    if (!isA(s, kCFSocketTypeID)) {
        reportMisuse("CFSocket: %s(): %s is not a socket", caller, s == nullptr ? "NULL" : "the argument");
        return nullptr;
    }
    return s->state;
}

void finalizeSocket(CFTypeRef cf) {
    SocketState* state = static_cast<const __CFSocket*>(cf)->state;
    if (state == nullptr) return;
    if (state->address != nullptr) CFRelease(state->address);
    if (state->peerAddress != nullptr) CFRelease(state->peerAddress);
    delete state;
}

using AddressQuery = int (*)(int, sockaddr*, socklen_t*);

// The cached address, read with query on first use (+1, or nullptr).
CFDataRef copyAddress(CFSocketRef s, CFDataRef SocketState::*cache, AddressQuery query, const char* caller) {
    SocketState* state = stateOf(s, caller);
    if (state == nullptr) return nullptr;
    std::lock_guard lock(state->mutex);
    if (!state->valid) return nullptr;
    CFDataRef& cached = state->*cache;
    if (cached == nullptr) {
        sockaddr_storage address{};
        socklen_t length = sizeof address;
        if (query(state->fd, reinterpret_cast<sockaddr*>(&address), &length) != 0) return nullptr;
        cached = CFDataCreate(nullptr, reinterpret_cast<const UInt8*>(&address),
                              CFIndex(std::min<socklen_t>(length, sizeof address)));
    }
    return cached != nullptr ? static_cast<CFDataRef>(CFRetain(cached)) : nullptr;
}

// The send timeout for a CFSocketSendData timeout: none (the largest
// interval) for 0, a negative value, NaN or INT_MAX seconds and more.
timeval sendTimeout(CFTimeInterval timeout) {
    if (!(timeout > 0) || timeout >= double(INT_MAX)) return timeval{INT_MAX, 0};
    double seconds = std::floor(timeout);
    auto microseconds = suseconds_t((timeout - seconds) * 1.0e6);
    // A timeout below one microsecond would read as "none".
    if (seconds == 0 && microseconds == 0) microseconds = 1;
    return timeval{time_t(seconds), microseconds};
}

}  // namespace

constinit const CFRuntimeClass kSocketClass = {0,       "CFSocket", nullptr, nullptr, finalizeSocket, nullptr,
                                               nullptr, nullptr,    nullptr, nullptr, nullptr,        0};

}  // namespace halvane::detail

using namespace halvane::detail;

CFTypeID CFSocketGetTypeID(void) {
    return kCFSocketTypeID;
}

CFSocketRef CFSocketCreateWithNative(CFAllocatorRef allocator, CFSocketNativeHandle sock, CFOptionFlags callBackTypes,
                                     CFSocketCallBack callout, const CFSocketContext* context) {
    if (sock < 0 || ::fcntl(sock, F_GETFD) < 0) {
        reportMisuse("CFSocket: CFSocketCreateWithNative(): %d is not an open descriptor", sock);
        return nullptr;
    }
    SocketTable& table = socketTable();
    std::lock_guard tableLock(table.mutex);
    if (auto existing = table.sockets.find(sock); existing != table.sockets.end()) {
        CFRetain(existing->second);
        return existing->second;
    }
    auto* state = new (std::nothrow) SocketState;
    if (state == nullptr) return nullptr;
    auto* s = createInstance<__CFSocket>(allocator, kCFSocketTypeID);
    if (s == nullptr) {
        delete state;
        return nullptr;
    }
    s->state = state;
    state->fd = sock;
    state->callBackTypes = callBackTypes;
    // The read, accept and data callbacks re-enable themselves; the socket owns the descriptor.
    state->flags = (callBackTypes & kCFSocketDataCallBack) | kCFSocketCloseOnInvalidate;
    state->callout = callout;
    if (context != nullptr) {
        state->context = *context;
        if (context->retain != nullptr && context->info != nullptr) {
            state->context.info = const_cast<void*>(context->retain(context->info));
        }
    }
    try {
        table.sockets.emplace(sock, s);
    } catch (const std::bad_alloc&) {
        if (state->context.release != nullptr && state->context.info != nullptr) {
            state->context.release(state->context.info);
        }
        CFRelease(s);
        return nullptr;
    }
    CFRetain(s);  // the table's reference
    return s;
}

void CFSocketInvalidate(CFSocketRef s) {
    SocketState* state = stateOf(s, __func__);
    if (state == nullptr) return;
    CFRetain(s);  // the table's reference may be the last one
    CFSocketContext context{};
    bool invalidated = false;
    {
        SocketTable& table = socketTable();
        std::lock_guard tableLock(table.mutex);
        std::lock_guard lock(state->mutex);
        if (state->valid) {
            invalidated = true;
            state->valid = false;
            table.sockets.erase(state->fd);
            if (state->flags & kCFSocketCloseOnInvalidate) ::close(state->fd);
            state->fd = -1;
            if (state->peerAddress != nullptr) CFRelease(state->peerAddress);
            state->peerAddress = nullptr;
            context = state->context;
            state->context.info = nullptr;
        }
    }
    if (invalidated) {
        // Outside the locks: the release callback may call back into this API.
        if (context.release != nullptr && context.info != nullptr) context.release(context.info);
        CFRelease(s);  // the table's reference
    }
    CFRelease(s);
}

Boolean CFSocketIsValid(CFSocketRef s) {
    SocketState* state = stateOf(s, __func__);
    if (state == nullptr) return false;
    std::lock_guard lock(state->mutex);
    return state->valid;
}

CFSocketNativeHandle CFSocketGetNative(CFSocketRef s) {
    SocketState* state = stateOf(s, __func__);
    if (state == nullptr) return -1;
    std::lock_guard lock(state->mutex);
    return state->fd;
}

CFDataRef CFSocketCopyAddress(CFSocketRef s) {
    return copyAddress(s, &SocketState::address, ::getsockname, __func__);
}

CFDataRef CFSocketCopyPeerAddress(CFSocketRef s) {
    return copyAddress(s, &SocketState::peerAddress, ::getpeername, __func__);
}

void CFSocketGetContext(CFSocketRef s, CFSocketContext* context) {
    SocketState* state = stateOf(s, __func__);
    if (state == nullptr) return;
    if (context == nullptr || context->version != 0) {
        reportMisuse("CFSocket: CFSocketGetContext(): needs a context of version 0");
        return;
    }
    std::lock_guard lock(state->mutex);
    *context = state->context;
}

CFOptionFlags CFSocketGetSocketFlags(CFSocketRef s) {
    SocketState* state = stateOf(s, __func__);
    if (state == nullptr) return 0;
    std::lock_guard lock(state->mutex);
    return state->flags;
}

void CFSocketSetSocketFlags(CFSocketRef s, CFOptionFlags flags) {
    SocketState* state = stateOf(s, __func__);
    if (state == nullptr) return;
    std::lock_guard lock(state->mutex);
    state->flags = flags;
}

CFSocketError CFSocketSendData(CFSocketRef s, CFDataRef address, CFDataRef data, CFTimeInterval timeout) {
    SocketState* state = stateOf(s, __func__);
    if (state == nullptr) return kCFSocketError;
    if (!isA(data, kCFDataTypeID) || (address != nullptr && !isA(address, kCFDataTypeID))) {
        reportMisuse("CFSocket: CFSocketSendData(): the data and the address must be data objects");
        return kCFSocketError;
    }
    CFSocketNativeHandle fd;
    {
        std::lock_guard lock(state->mutex);
        if (!state->valid) return kCFSocketError;
        fd = state->fd;
    }
    CFIndex length = CFDataGetLength(data);
    if (length == 0) return kCFSocketError;

    timeval limit = sendTimeout(timeout);
    ::setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    ssize_t sent;
    if (address != nullptr && CFDataGetLength(address) > 0) {
        sent = ::sendto(fd, CFDataGetBytePtr(data), size_t(length), MSG_NOSIGNAL,
                        reinterpret_cast<const sockaddr*>(CFDataGetBytePtr(address)),
                        socklen_t(std::min<CFIndex>(CFDataGetLength(address), INT_MAX)));
    } else {
        sent = ::send(fd, CFDataGetBytePtr(data), size_t(length), MSG_NOSIGNAL);
    }
    if (sent > 0) return kCFSocketSuccess;
    // Kept so: callers rely on a send that times out giving kCFSocketTimeout.
    if (sent < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) return kCFSocketTimeout;
    return kCFSocketError;
}
