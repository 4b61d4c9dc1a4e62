/* CFSocket.h: an object that owns a native socket descriptor.
 *
 * There is no run loop in this layer: the callback and context given at
 * creation are stored (CFSocketGetContext returns the context) but the
 * callback is never invoked. */
#ifndef HALVANE_CF_CFSOCKET_H
#define HALVANE_CF_CFSOCKET_H

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFString.h>

CF_EXTERN_C_BEGIN

typedef int CFSocketNativeHandle;
typedef struct __CFSocket *CFSocketRef;

typedef CFIndex CFSocketError;
enum {
    kCFSocketSuccess = 0,
    kCFSocketError = -1,
    kCFSocketTimeout = -2
};

typedef CFOptionFlags CFSocketCallBackType;
enum {
    kCFSocketNoCallBack = 0,
    kCFSocketReadCallBack = 1,
    kCFSocketAcceptCallBack = 2,
    kCFSocketDataCallBack = 3,
    kCFSocketConnectCallBack = 4,
    kCFSocketWriteCallBack = 8
};

/* Socket flags. */
enum {
    kCFSocketAutomaticallyReenableReadCallBack = 1,
    kCFSocketAutomaticallyReenableAcceptCallBack = 2,
    kCFSocketAutomaticallyReenableDataCallBack = 3,
    kCFSocketAutomaticallyReenableWriteCallBack = 8,
    kCFSocketLeaveErrors = 64,
    kCFSocketCloseOnInvalidate = 128
};

typedef void (*CFSocketCallBack)(CFSocketRef s, CFSocketCallBackType type, CFDataRef address, const void *data,
                                 void *info);

typedef struct {
    CFIndex version; /* 0 */
    void *info;
    const void *(*retain)(const void *info);
    void (*release)(const void *info);
    CFStringRef (*copyDescription)(const void *info);
} CFSocketContext;

CF_EXPORT CFTypeID CFSocketGetTypeID(void);

/* Wraps an open descriptor. If a valid CFSocket already wraps it, that one
 * is returned (retained) and the other arguments are ignored. A new socket
 * has the flags kCFSocketCloseOnInvalidate plus the automatic re-enabling of
 * the read, accept or data callback requested, and stays alive while it is
 * valid, even when every caller has released it: CFSocketInvalidate ends it. */
CF_EXPORT CFSocketRef CFSocketCreateWithNative(CFAllocatorRef allocator, CFSocketNativeHandle sock,
                                               CFOptionFlags callBackTypes, CFSocketCallBack callout,
                                               const CFSocketContext *context);

/* Idempotent: removes the socket from the table of valid sockets, closes the
 * descriptor when kCFSocketCloseOnInvalidate is set and calls the context's
 * release on its info. */
CF_EXPORT void CFSocketInvalidate(CFSocketRef s);
CF_EXPORT Boolean CFSocketIsValid(CFSocketRef s);
/* -1 once the socket is invalid. */
CF_EXPORT CFSocketNativeHandle CFSocketGetNative(CFSocketRef s);

/* The raw sockaddr bytes of the local and the remote end, read once and
 * kept; NULL when the socket is invalid or has no such address. */
CF_EXPORT CFDataRef CFSocketCopyAddress(CFSocketRef s);
CF_EXPORT CFDataRef CFSocketCopyPeerAddress(CFSocketRef s);

CF_EXPORT void CFSocketGetContext(CFSocketRef s, CFSocketContext *context);
CF_EXPORT CFOptionFlags CFSocketGetSocketFlags(CFSocketRef s);
CF_EXPORT void CFSocketSetSocketFlags(CFSocketRef s, CFOptionFlags flags);

/* Sends data, to address (raw sockaddr bytes) when it is non-empty. The
 * timeout becomes the descriptor's send timeout (0, a negative value or one
 * of INT_MAX seconds or more: none). kCFSocketSuccess when at least one byte
 * was sent, kCFSocketTimeout when the send timed out, kCFSocketError
 * otherwise (also for an invalid socket or empty data). */
CF_EXPORT CFSocketError CFSocketSendData(CFSocketRef s, CFDataRef address, CFDataRef data, CFTimeInterval timeout);

CF_EXTERN_C_END

#endif /* HALVANE_CF_CFSOCKET_H */
