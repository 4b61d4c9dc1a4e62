/* CFStream.h: read and write streams over memory and TCP connections.
 *
 * There is no run loop in this layer: streams are used synchronously. A read
 * or write on a stream that is still opening waits for the open to finish,
 * and reads and writes on sockets block until they can make progress. */
#ifndef HALVANE_CF_CFSTREAM_H
#define HALVANE_CF_CFSTREAM_H

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFError.h>
#include <CoreFoundation/CFString.h>

CF_EXTERN_C_BEGIN

typedef CFIndex CFStreamStatus;
enum {
    kCFStreamStatusNotOpen = 0,
    kCFStreamStatusOpening = 1,
    kCFStreamStatusOpen = 2,
    kCFStreamStatusReading = 3,
    kCFStreamStatusWriting = 4,
    kCFStreamStatusAtEnd = 5,
    kCFStreamStatusClosed = 6,
    kCFStreamStatusError = 7
};

typedef CFOptionFlags CFStreamEventType;
enum {
    kCFStreamEventNone = 0,
    kCFStreamEventOpenCompleted = 1,
    kCFStreamEventHasBytesAvailable = 2,
    kCFStreamEventCanAcceptBytes = 4,
    kCFStreamEventErrorOccurred = 8,
    kCFStreamEventEndEncountered = 16
};

typedef CFIndex CFStreamErrorDomain;
enum {
    kCFStreamErrorDomainCustom = -1,
    kCFStreamErrorDomainPOSIX = 1,      /* error: an errno value */
    kCFStreamErrorDomainMacOSStatus = 2 /* error: an OSStatus */
};
/* Domains of networking errors. */
enum {
    kCFStreamErrorDomainSSL = 3,
    kCFStreamErrorDomainHTTP = 4,
    kCFStreamErrorDomainSOCKS = 5,
    kCFStreamErrorDomainFTP = 6,
    kCFStreamErrorDomainNetServices = 10,
    kCFStreamErrorDomainMach = 11,
    kCFStreamErrorDomainNetDB = 12, /* error: a getaddrinfo() EAI_ code of this system */
    kCFStreamErrorDomainSystemConfiguration = 13
};

/* {0, 0} when there is no error. */
typedef struct {
    CFIndex domain;
    SInt32 error;
} CFStreamError;

typedef struct __CFReadStream *CFReadStreamRef;
typedef struct __CFWriteStream *CFWriteStreamRef;

typedef CFStringRef CFStreamPropertyKey;
/* Write streams with allocated buffers: a CFData copy of the bytes written. */
CF_EXPORT const CFStreamPropertyKey kCFStreamPropertyDataWritten;
/* Socket streams, once connected: a CFData holding the CFSocketNativeHandle
 * (int) of the connection. */
CF_EXPORT const CFStreamPropertyKey kCFStreamPropertySocketNativeHandle;

CF_EXPORT CFTypeID CFReadStreamGetTypeID(void);
CF_EXPORT CFTypeID CFWriteStreamGetTypeID(void);

/* Reads length bytes from bytes; bytesDeallocator frees them when the stream
 * goes away (NULL: the default allocator, kCFAllocatorNull: never). */
CF_EXPORT CFReadStreamRef CFReadStreamCreateWithBytesNoCopy(CFAllocatorRef alloc, const UInt8 *bytes, CFIndex length,
                                                            CFAllocatorRef bytesDeallocator);
/* Writes into the caller's buffer of bufferCapacity bytes; a write to the
 * full buffer returns 0 and moves the stream to kCFStreamStatusAtEnd. */
CF_EXPORT CFWriteStreamRef CFWriteStreamCreateWithBuffer(CFAllocatorRef alloc, UInt8 *buffer, CFIndex bufferCapacity);
/* Writes into memory of its own; kCFStreamPropertyDataWritten gives the bytes. */
CF_EXPORT CFWriteStreamRef CFWriteStreamCreateWithAllocatedBuffers(CFAllocatorRef alloc, CFAllocatorRef bufferAllocator);

/* Two unopened streams over one TCP connection to host:port (either output
 * may be NULL). Name resolution and the connection start when the first of
 * them is opened; the connection is closed when both are closed or released. */
CF_EXPORT void CFStreamCreatePairWithSocketToHost(CFAllocatorRef alloc, CFStringRef host, UInt32 port,
                                                  CFReadStreamRef *readStream, CFWriteStreamRef *writeStream);

CF_EXPORT CFStreamStatus CFReadStreamGetStatus(CFReadStreamRef stream);
CF_EXPORT CFStreamStatus CFWriteStreamGetStatus(CFWriteStreamRef stream);
CF_EXPORT CFStreamError CFReadStreamGetError(CFReadStreamRef stream);
CF_EXPORT CFStreamError CFWriteStreamGetError(CFWriteStreamRef stream);
/* NULL when the stream has no error. */
CF_EXPORT CFErrorRef CFReadStreamCopyError(CFReadStreamRef stream);
CF_EXPORT CFErrorRef CFWriteStreamCopyError(CFWriteStreamRef stream);

/* Only from kCFStreamStatusNotOpen; true when the stream is open or opening. */
CF_EXPORT Boolean CFReadStreamOpen(CFReadStreamRef stream);
CF_EXPORT Boolean CFWriteStreamOpen(CFWriteStreamRef stream);
CF_EXPORT void CFReadStreamClose(CFReadStreamRef stream);
CF_EXPORT void CFWriteStreamClose(CFWriteStreamRef stream);

CF_EXPORT Boolean CFReadStreamHasBytesAvailable(CFReadStreamRef stream);
/* Bytes read, 0 at the end of the stream, -1 on error or when the stream is
 * not open. */
CF_EXPORT CFIndex CFReadStreamRead(CFReadStreamRef stream, UInt8 *buffer, CFIndex bufferLength);
CF_EXPORT Boolean CFWriteStreamCanAcceptBytes(CFWriteStreamRef stream);
/* Bytes written (possibly fewer than bufferLength), 0 when the stream is
 * full, -1 on error or when the stream is not open. */
CF_EXPORT CFIndex CFWriteStreamWrite(CFWriteStreamRef stream, const UInt8 *buffer, CFIndex bufferLength);

/* NULL for a property the stream does not have. */
CF_EXPORT CFTypeRef CFReadStreamCopyProperty(CFReadStreamRef stream, CFStreamPropertyKey propertyName);
CF_EXPORT CFTypeRef CFWriteStreamCopyProperty(CFWriteStreamRef stream, CFStreamPropertyKey propertyName);

CF_EXTERN_C_END

#endif /* HALVANE_CF_CFSTREAM_H */
