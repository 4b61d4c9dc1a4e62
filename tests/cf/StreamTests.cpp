// CFReadStream and CFWriteStream: the status machine on memory streams, and
// socket stream pairs over loopback TCP (exchange, end of stream, refused
// and unresolvable connections, a reset peer, closing the descriptor).
#include "CFTestSupport.h"
#include "LoopbackSupport.h"
#include "MisuseReports.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <string>
#include <thread>

using namespace cftest;

namespace {

const UInt8* bytesOf(const char* text) {
    return reinterpret_cast<const UInt8*>(text);
}

CFIndex write(CFWriteStreamRef stream, const char* text) {
    return CFWriteStreamWrite(stream, bytesOf(text), CFIndex(std::strlen(text)));
}

std::string read(CFReadStreamRef stream, CFIndex length, CFIndex* result = nullptr) {
    std::string buffer(size_t(length), '\0');
    CFIndex count = CFReadStreamRead(stream, reinterpret_cast<UInt8*>(buffer.data()), length);
    if (result != nullptr) *result = count;
    buffer.resize(count > 0 ? size_t(count) : 0);
    return buffer;
}

// Both streams of a connection to host:port.
struct Pair {
    Owned<CFReadStreamRef> in;
    Owned<CFWriteStreamRef> out;
};

Pair connectTo(const char* host, unsigned port) {
    CFReadStreamRef in = nullptr;
    CFWriteStreamRef out = nullptr;
    std::string name(host);
    CFStreamCreatePairWithSocketToHost(nullptr, string(std::u16string(name.begin(), name.end())), port, &in, &out);
    return Pair{own(in), own(out)};
}

int nativeHandle(CFReadStreamRef stream) {
    auto handle = own(static_cast<CFDataRef>(CFReadStreamCopyProperty(stream, kCFStreamPropertySocketNativeHandle)));
    if (!handle || CFDataGetLength(handle) != sizeof(int)) return -1;
    int fd;
    std::memcpy(&fd, CFDataGetBytePtr(handle), sizeof fd);
    return fd;
}

size_t openDescriptorCount() {
    std::error_code ignored;
    auto entries = std::filesystem::directory_iterator("/proc/self/fd", ignored);
    return size_t(std::distance(entries, std::filesystem::directory_iterator()));
}

bool isError(CFStreamError error, CFIndex domain, SInt32 code) {
    return error.domain == domain && error.error == code;
}

}  // namespace

TEST(StreamStates, MemoryReadStreamWalksThroughTheStates) {
    EXPECT_EQ(CFReadStreamGetTypeID(), 38u);
    EXPECT_EQ(CFWriteStreamGetTypeID(), 39u);
    EXPECT_EQ(ascii(own(CFCopyTypeIDDescription(38))), "CFReadStream");
    EXPECT_EQ(ascii(own(CFCopyTypeIDDescription(39))), "CFWriteStream");

    // The bytes belong to the stream and are freed with it (the leak checker
    // fails the run otherwise).
    auto* bytes = static_cast<UInt8*>(std::malloc(5));
    std::memcpy(bytes, "abcde", 5);
    auto stream = own(CFReadStreamCreateWithBytesNoCopy(nullptr, bytes, 5, nullptr));
    EXPECT_EQ(CFGetTypeID(stream), 38u);
    EXPECT_EQ(CFReadStreamGetStatus(stream), kCFStreamStatusNotOpen);
    CFIndex result = 0;
    read(stream, 2, &result);
    EXPECT_EQ(result, -1);
    EXPECT_FALSE(CFReadStreamHasBytesAvailable(stream));

    EXPECT_TRUE(CFReadStreamOpen(stream));
    EXPECT_EQ(CFReadStreamGetStatus(stream), kCFStreamStatusOpen);
    EXPECT_FALSE(CFReadStreamOpen(stream));
    EXPECT_EQ(CFReadStreamGetStatus(stream), kCFStreamStatusOpen);
    EXPECT_TRUE(CFReadStreamHasBytesAvailable(stream));
    EXPECT_EQ(read(stream, 3), "abc");
    EXPECT_EQ(CFReadStreamGetStatus(stream), kCFStreamStatusOpen);
    EXPECT_EQ(read(stream, 0, &result), "");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(CFReadStreamGetStatus(stream), kCFStreamStatusOpen);

    // The read that takes the last bytes reports the end.
    EXPECT_EQ(read(stream, 10), "de");
    EXPECT_EQ(CFReadStreamGetStatus(stream), kCFStreamStatusAtEnd);
    EXPECT_EQ(read(stream, 10, &result), "");
    EXPECT_EQ(result, 0);
    EXPECT_FALSE(CFReadStreamHasBytesAvailable(stream));
    EXPECT_FALSE(CFReadStreamOpen(stream));

    CFStreamError error = CFReadStreamGetError(stream);
    EXPECT_TRUE(isError(error, 0, 0));
    EXPECT_EQ(CFReadStreamCopyError(stream), nullptr);

    CFReadStreamClose(stream);
    EXPECT_EQ(CFReadStreamGetStatus(stream), kCFStreamStatusClosed);
    read(stream, 1, &result);
    EXPECT_EQ(result, -1);
    EXPECT_FALSE(CFReadStreamOpen(stream));
    EXPECT_EQ(CFReadStreamGetStatus(stream), kCFStreamStatusClosed);

    // An empty stream is at its end on the first read; a closed unopened one stays closed.
    auto empty = own(CFReadStreamCreateWithBytesNoCopy(nullptr, nullptr, 0, kCFAllocatorNull));
    ASSERT_TRUE(CFReadStreamOpen(empty));
    EXPECT_EQ(read(empty, 4, &result), "");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(CFReadStreamGetStatus(empty), kCFStreamStatusAtEnd);
    auto neverOpened = own(CFReadStreamCreateWithBytesNoCopy(nullptr, bytesOf("x"), 1, kCFAllocatorNull));
    CFReadStreamClose(neverOpened);
    EXPECT_EQ(CFReadStreamGetStatus(neverOpened), kCFStreamStatusClosed);
    EXPECT_FALSE(CFReadStreamOpen(neverOpened));
}

TEST(StreamStates, MemoryWriteStreamsFillAndKeepTheBytes) {
    UInt8 buffer[6] = {};
    auto fixed = own(CFWriteStreamCreateWithBuffer(nullptr, buffer, sizeof buffer));
    EXPECT_EQ(write(fixed, "abcd"), -1);
    EXPECT_FALSE(CFWriteStreamCanAcceptBytes(fixed));
    ASSERT_TRUE(CFWriteStreamOpen(fixed));
    EXPECT_FALSE(CFWriteStreamOpen(fixed));
    EXPECT_TRUE(CFWriteStreamCanAcceptBytes(fixed));
    EXPECT_EQ(write(fixed, "abcd"), 4);
    EXPECT_EQ(write(fixed, "efgh"), 2);
    EXPECT_EQ(CFWriteStreamGetStatus(fixed), kCFStreamStatusOpen);
    EXPECT_FALSE(CFWriteStreamCanAcceptBytes(fixed));
    EXPECT_EQ(std::string(reinterpret_cast<char*>(buffer), 6), "abcdef");
    // A full stream takes nothing and is at its end; later writes fail.
    EXPECT_EQ(write(fixed, "i"), 0);
    EXPECT_EQ(CFWriteStreamGetStatus(fixed), kCFStreamStatusAtEnd);
    EXPECT_EQ(write(fixed, "i"), -1);
    EXPECT_EQ(CFWriteStreamCopyProperty(fixed, kCFStreamPropertyDataWritten), nullptr);

    auto growing = own(CFWriteStreamCreateWithAllocatedBuffers(nullptr, nullptr));
    ASSERT_TRUE(CFWriteStreamOpen(growing));
    EXPECT_EQ(write(growing, "hello, "), 7);
    EXPECT_EQ(write(growing, "world"), 5);
    auto written = own(static_cast<CFDataRef>(CFWriteStreamCopyProperty(growing, kCFStreamPropertyDataWritten)));
    ASSERT_TRUE(written);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(CFDataGetBytePtr(written)), size_t(CFDataGetLength(written))),
              "hello, world");
    // The property is a snapshot, and keys compare by content.
    EXPECT_EQ(write(growing, "!"), 1);
    EXPECT_EQ(CFDataGetLength(written), 12);
    auto again = own(static_cast<CFDataRef>(CFWriteStreamCopyProperty(growing, CFSTR("kCFStreamPropertyDataWritten"))));
    EXPECT_EQ(CFDataGetLength(again), 13);
    EXPECT_EQ(CFWriteStreamCopyProperty(growing, kCFStreamPropertySocketNativeHandle), nullptr);
    CFWriteStreamClose(growing);
    EXPECT_EQ(CFWriteStreamGetStatus(growing), kCFStreamStatusClosed);
    EXPECT_EQ(write(growing, "?"), -1);
}

TEST(StreamStates, MisuseIsReportedAndRefused) {
    auto data = own(CFDataCreate(nullptr, bytesOf("x"), 1));
    auto notAStream = reinterpret_cast<CFReadStreamRef>(const_cast<__CFData*>(data.get()));
    auto notAWriteStream = reinterpret_cast<CFWriteStreamRef>(const_cast<__CFData*>(data.get()));
    auto stream = own(CFReadStreamCreateWithBytesNoCopy(nullptr, bytesOf("x"), 1, kCFAllocatorNull));
    UInt8 buffer[4];
    std::string reports = reportsOf([&] {
        EXPECT_FALSE(CFReadStreamOpen(nullptr));
        EXPECT_FALSE(CFReadStreamOpen(notAStream));
        EXPECT_EQ(CFReadStreamRead(notAStream, buffer, 4), -1);
        EXPECT_EQ(CFReadStreamGetStatus(nullptr), kCFStreamStatusNotOpen);
        EXPECT_TRUE(isError(CFReadStreamGetError(notAStream), 0, 0));
        EXPECT_EQ(CFWriteStreamWrite(notAWriteStream, buffer, 4), -1);
        EXPECT_FALSE(CFWriteStreamCanAcceptBytes(nullptr));
        CFWriteStreamClose(notAWriteStream);
        EXPECT_EQ(CFReadStreamRead(stream, nullptr, 4), -1);
        EXPECT_EQ(CFReadStreamRead(stream, buffer, -1), -1);
        EXPECT_EQ(CFReadStreamCreateWithBytesNoCopy(nullptr, nullptr, 3, nullptr), nullptr);
        EXPECT_EQ(CFReadStreamCopyProperty(stream, nullptr), nullptr);
    });
    EXPECT_EQ(lineCount(reports), 12) << reports;
    EXPECT_NE(reports.find("CFStream: CFReadStreamOpen(): NULL is not a read stream"), std::string::npos) << reports;
    EXPECT_EQ(CFGetRetainCount(data), 1);
    // Misuse leaves the stream as it was.
    EXPECT_EQ(CFReadStreamGetStatus(stream), kCFStreamStatusNotOpen);

    CFReadStreamRef in = nullptr;
    CFWriteStreamRef out = nullptr;
    reports = reportsOf([&] { CFStreamCreatePairWithSocketToHost(nullptr, nullptr, 80, &in, &out); });
    EXPECT_EQ(lineCount(reports), 1);
    EXPECT_EQ(in, nullptr);
    EXPECT_EQ(out, nullptr);
}

TEST(SocketStreams, ExchangeBytesBothWaysUntilThePeerCloses) {
    Watchdog watchdog;
    LoopbackServer server;
    Pair pair = connectTo("127.0.0.1", server.port());
    ASSERT_TRUE(pair.in && pair.out);
    EXPECT_EQ(CFReadStreamGetStatus(pair.in), kCFStreamStatusNotOpen);
    EXPECT_EQ(CFWriteStreamGetStatus(pair.out), kCFStreamStatusNotOpen);
    // Nothing connects before an open, and an unopened stream moves no bytes.
    EXPECT_EQ(server.accept(100), -1);
    EXPECT_EQ(write(pair.out, "x"), -1);
    EXPECT_EQ(nativeHandle(pair.in), -1);

    ASSERT_TRUE(CFReadStreamOpen(pair.in));
    CFStreamStatus status = CFReadStreamGetStatus(pair.in);
    EXPECT_TRUE(status == kCFStreamStatusOpening || status == kCFStreamStatusOpen) << status;
    EXPECT_FALSE(CFReadStreamOpen(pair.in));
    int peer = server.accept();
    ASSERT_GE(peer, 0);
    ASSERT_TRUE(CFWriteStreamOpen(pair.out));

    // The write waits for the connection, then both streams are open on one descriptor.
    EXPECT_EQ(write(pair.out, "hello"), 5);
    EXPECT_EQ(CFReadStreamGetStatus(pair.in), kCFStreamStatusOpen);
    EXPECT_EQ(CFWriteStreamGetStatus(pair.out), kCFStreamStatusOpen);
    EXPECT_TRUE(CFWriteStreamCanAcceptBytes(pair.out));
    EXPECT_EQ(receive(peer, 5), "hello");
    int fd = nativeHandle(pair.in);
    EXPECT_TRUE(isOpenDescriptor(fd));
    auto outHandle =
        own(static_cast<CFDataRef>(CFWriteStreamCopyProperty(pair.out, kCFStreamPropertySocketNativeHandle)));
    EXPECT_EQ(*reinterpret_cast<const int*>(CFDataGetBytePtr(outHandle)), fd);

    // A read blocks until the peer sends.
    EXPECT_FALSE(CFReadStreamHasBytesAvailable(pair.in));
    std::thread sender([peer] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        ::send(peer, "world", 5, 0);
    });
    EXPECT_EQ(read(pair.in, 16), "world");
    sender.join();
    ::send(peer, "!?", 2, 0);
    ASSERT_TRUE(waitFor(fd, POLLIN, 3000));
    EXPECT_TRUE(CFReadStreamHasBytesAvailable(pair.in));
    EXPECT_EQ(read(pair.in, 1), "!");
    EXPECT_EQ(read(pair.in, 16), "?");

    // The peer's close is the end of the stream.
    ::close(peer);
    CFIndex result = -1;
    EXPECT_EQ(read(pair.in, 16, &result), "");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(CFReadStreamGetStatus(pair.in), kCFStreamStatusAtEnd);
    read(pair.in, 16, &result);
    EXPECT_EQ(result, 0);
    EXPECT_TRUE(isError(CFReadStreamGetError(pair.in), 0, 0));

    // The descriptor lives until both streams are closed.
    CFReadStreamClose(pair.in);
    EXPECT_EQ(CFReadStreamGetStatus(pair.in), kCFStreamStatusClosed);
    read(pair.in, 16, &result);
    EXPECT_EQ(result, -1);
    EXPECT_TRUE(isOpenDescriptor(fd));
    CFWriteStreamClose(pair.out);
    EXPECT_FALSE(isOpenDescriptor(fd));
    EXPECT_EQ(write(pair.out, "late"), -1);
}

TEST(SocketStreams, OpeningLastsUntilTheConnectionIsAccepted) {
    Watchdog watchdog;
    // With a backlog of 0 one unaccepted connection fills the queue, and the
    // system drops further connection requests until it is accepted.
    LoopbackServer server;
    ASSERT_EQ(::listen(server.listener(), 0), 0);
    int blocker = connectLoopback(server.port());
    ASSERT_GE(blocker, 0);

    Pair pair = connectTo("127.0.0.1", server.port());
    ASSERT_TRUE(CFWriteStreamOpen(pair.out));
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    EXPECT_EQ(CFWriteStreamGetStatus(pair.out), kCFStreamStatusOpening);
    EXPECT_FALSE(CFWriteStreamCanAcceptBytes(pair.out));
    EXPECT_TRUE(isError(CFWriteStreamGetError(pair.out), 0, 0));
    EXPECT_FALSE(CFWriteStreamOpen(pair.out));
    // The read stream joins the attempt.
    ASSERT_TRUE(CFReadStreamOpen(pair.in));
    EXPECT_EQ(CFReadStreamGetStatus(pair.in), kCFStreamStatusOpening);
    EXPECT_FALSE(CFReadStreamHasBytesAvailable(pair.in));

    // Once the queue has room the retried request gets through; the write waits for it.
    int first = server.accept();
    ASSERT_GE(first, 0);
    EXPECT_EQ(write(pair.out, "late"), 4);
    EXPECT_EQ(CFWriteStreamGetStatus(pair.out), kCFStreamStatusOpen);
    EXPECT_EQ(CFReadStreamGetStatus(pair.in), kCFStreamStatusOpen);
    int second = server.accept();
    EXPECT_EQ(receive(second, 4), "late");
    ::close(first);
    ::close(second);
    ::close(blocker);

    // Closing while opening gives up the attempt: the socket being connected is closed soon after.
    blocker = connectLoopback(server.port());
    ASSERT_GE(blocker, 0);
    size_t descriptorsBefore = openDescriptorCount();
    Pair abandoned = connectTo("127.0.0.1", server.port());
    ASSERT_TRUE(CFReadStreamOpen(abandoned.in));
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(openDescriptorCount(), descriptorsBefore + 1);
    CFReadStreamClose(abandoned.in);
    CFWriteStreamClose(abandoned.out);
    EXPECT_EQ(CFReadStreamGetStatus(abandoned.in), kCFStreamStatusClosed);
    CFIndex result = 0;
    read(abandoned.in, 4, &result);
    EXPECT_EQ(result, -1);
    for (int wait = 0; wait < 20 && openDescriptorCount() != descriptorsBefore; ++wait) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    EXPECT_EQ(openDescriptorCount(), descriptorsBefore);
    ::close(blocker);
}

TEST(SocketStreams, DescriptorClosesWhenTheLastStreamGoes) {
    Watchdog watchdog;
    LoopbackServer server;
    // "localhost" may name ::1 first, where nothing listens: the next address is tried.
    CFReadStreamRef in = nullptr;
    CFWriteStreamRef out = nullptr;
    CFStreamCreatePairWithSocketToHost(nullptr, CFSTR("localhost"), server.port(), &in, &out);
    ASSERT_TRUE(CFWriteStreamOpen(out));
    EXPECT_EQ(write(out, "ping"), 4);
    int peer = server.accept();
    EXPECT_EQ(receive(peer, 4), "ping");
    int fd = nativeHandle(in);
    EXPECT_TRUE(isOpenDescriptor(fd));
    // Releasing counts as closing; the unopened read stream still holds the connection.
    CFRelease(out);
    EXPECT_TRUE(isOpenDescriptor(fd));
    ASSERT_TRUE(CFReadStreamOpen(in));
    EXPECT_EQ(CFReadStreamGetStatus(in), kCFStreamStatusOpen);
    ::send(peer, "pong", 4, 0);
    EXPECT_EQ(read(in, 4), "pong");
    CFRelease(in);
    EXPECT_FALSE(isOpenDescriptor(fd));
    EXPECT_EQ(receive(peer, 1), "");  // the peer sees the end
    ::close(peer);

    // A pair asked for one stream only closes with that one.
    in = nullptr;
    CFStreamCreatePairWithSocketToHost(nullptr, CFSTR("127.0.0.1"), server.port(), &in, nullptr);
    ASSERT_TRUE(CFReadStreamOpen(in));
    peer = server.accept();
    ::close(peer);
    EXPECT_EQ(read(in, 4), "");
    fd = nativeHandle(in);
    EXPECT_TRUE(isOpenDescriptor(fd));
    CFRelease(in);
    EXPECT_FALSE(isOpenDescriptor(fd));
}

TEST(SocketStreams, RefusedConnectionIsAPOSIXError) {
    Watchdog watchdog;
    Pair pair = connectTo("127.0.0.1", unusedPort());
    EXPECT_TRUE(CFReadStreamOpen(pair.in));
    CFIndex result = 0;
    read(pair.in, 4, &result);
    EXPECT_EQ(result, -1);
    EXPECT_EQ(CFReadStreamGetStatus(pair.in), kCFStreamStatusError);
    EXPECT_TRUE(isError(CFReadStreamGetError(pair.in), 1, 111));  // POSIX, ECONNREFUSED
    auto error = own(CFReadStreamCopyError(pair.in));
    ASSERT_TRUE(error);
    EXPECT_EQ(ascii(CFErrorGetDomain(error)), "NSPOSIXErrorDomain");
    EXPECT_EQ(CFErrorGetCode(error), 111);

    // The other stream shares the failed connection: its open fails at once.
    EXPECT_FALSE(CFWriteStreamOpen(pair.out));
    EXPECT_EQ(CFWriteStreamGetStatus(pair.out), kCFStreamStatusError);
    EXPECT_TRUE(isError(CFWriteStreamGetError(pair.out), kCFStreamErrorDomainPOSIX, ECONNREFUSED));
    EXPECT_EQ(write(pair.out, "x"), -1);
    // Closing keeps the error.
    CFReadStreamClose(pair.in);
    EXPECT_EQ(CFReadStreamGetStatus(pair.in), kCFStreamStatusClosed);
    EXPECT_TRUE(isError(CFReadStreamGetError(pair.in), kCFStreamErrorDomainPOSIX, ECONNREFUSED));
}

TEST(SocketStreams, UnresolvableHostIsANetDBError) {
    Watchdog watchdog;
    // Creation looks nothing up; the open starts the lookup and does not fail at once.
    Pair pair = connectTo("no-such-host.halvane.invalid", 80);
    ASSERT_TRUE(pair.in && pair.out);
    ASSERT_TRUE(CFWriteStreamOpen(pair.out));
    EXPECT_EQ(write(pair.out, "x"), -1);
    EXPECT_EQ(CFWriteStreamGetStatus(pair.out), kCFStreamStatusError);
    CFStreamError error = CFWriteStreamGetError(pair.out);
    EXPECT_EQ(error.domain, kCFStreamErrorDomainNetDB);
    EXPECT_EQ(error.domain, 12);
    EXPECT_EQ(error.error, -2);  // EAI_NONAME

    // Other domains than POSIX and OSStatus keep the stream domain in the user info.
    auto copied = own(CFWriteStreamCopyError(pair.out));
    ASSERT_TRUE(copied);
    EXPECT_EQ(ascii(CFErrorGetDomain(copied)), "BogusCFStreamErrorCompatibilityDomain");
    EXPECT_EQ(CFErrorGetCode(copied), -2);
    auto userInfo = own(CFErrorCopyUserInfo(copied));
    auto domain = static_cast<CFNumberRef>(CFDictionaryGetValue(userInfo, CFSTR("CFStreamErrorDomainKey")));
    CFIndex domainValue = 0;
    ASSERT_TRUE(CFNumberGetValue(domain, kCFNumberCFIndexType, &domainValue));
    EXPECT_EQ(domainValue, 12);

    // A port out of range fails the open as an invalid argument.
    Pair outOfRange = connectTo("127.0.0.1", 70000);
    ASSERT_TRUE(CFReadStreamOpen(outOfRange.in));
    EXPECT_EQ(read(outOfRange.in, 1), "");
    EXPECT_TRUE(isError(CFReadStreamGetError(outOfRange.in), 1, 22));  // POSIX, EINVAL
}

namespace {
volatile std::sig_atomic_t brokenPipeSignals = 0;
void countBrokenPipe(int) {
    brokenPipeSignals = brokenPipeSignals + 1;
}
}  // namespace

TEST(SocketStreams, AResetPeerGivesErrorsWithoutASignal) {
    Watchdog watchdog;
    std::signal(SIGPIPE, countBrokenPipe);
    LoopbackServer server;
    Pair pair = connectTo("127.0.0.1", server.port());
    ASSERT_TRUE(CFReadStreamOpen(pair.in));
    ASSERT_TRUE(CFWriteStreamOpen(pair.out));
    int peer = server.accept();
    ASSERT_GE(peer, 0);
    EXPECT_EQ(write(pair.out, "first"), 5);
    // Closing with unread data and a zero linger time resets the connection.
    linger abort{1, 0};
    ::setsockopt(peer, SOL_SOCKET, SO_LINGER, &abort, sizeof abort);
    EXPECT_EQ(receive(peer, 2), "fi");
    ::close(peer);

    CFIndex result = 0;
    read(pair.in, 4, &result);
    EXPECT_EQ(result, -1);
    EXPECT_EQ(CFReadStreamGetStatus(pair.in), kCFStreamStatusError);
    EXPECT_TRUE(isError(CFReadStreamGetError(pair.in), 1, 104));  // POSIX, ECONNRESET
    // The reset is consumed: writing now is a broken pipe, which would raise SIGPIPE without protection.
    EXPECT_EQ(write(pair.out, "more"), -1);
    EXPECT_EQ(CFWriteStreamGetStatus(pair.out), kCFStreamStatusError);
    EXPECT_TRUE(isError(CFWriteStreamGetError(pair.out), 1, 32));  // POSIX, EPIPE
    EXPECT_EQ(brokenPipeSignals, 0);
    std::signal(SIGPIPE, SIG_DFL);
}
