// CFSocket: one object per descriptor kept alive by the table of valid
// sockets, invalidation, the addresses of both ends, and sending with and
// without a time-out.
#include "CFTestSupport.h"
#include "LoopbackSupport.h"
#include "MisuseReports.h"

#include <gtest/gtest.h>

#include <chrono>
#include <climits>
#include <cstring>
#include <string>
#include <vector>

using namespace cftest;

namespace {

struct ContextCounts {
    int retains = 0;
    int releases = 0;
};

const void* retainCounts(const void* info) {
    ++static_cast<ContextCounts*>(const_cast<void*>(info))->retains;
    return info;
}

void releaseCounts(const void* info) {
    ++static_cast<ContextCounts*>(const_cast<void*>(info))->releases;
}

void ignoreCallBack(CFSocketRef, CFSocketCallBackType, CFDataRef, const void*, void*) {}

std::vector<UInt8> bytesOf(CFDataRef data) {
    if (data == nullptr) return {};
    return std::vector<UInt8>(CFDataGetBytePtr(data), CFDataGetBytePtr(data) + CFDataGetLength(data));
}

// The expected raw address of 127.0.0.1:port: family in host order, port
// big-endian, the address, eight zero bytes.
std::vector<UInt8> loopbackAddress(unsigned port) {
    return {AF_INET, 0, UInt8(port >> 8), UInt8(port & 0xFF), 127, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0};
}

unsigned localPort(int fd) {
    sockaddr_in address{};
    socklen_t length = sizeof address;
    ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length);
    return ntohs(address.sin_port);
}

// A client descriptor connected to server, and the server's end.
std::pair<int, int> connectedPair(LoopbackServer& server) {
    int client = connectLoopback(server.port());
    return {client, server.accept()};
}

Owned<CFDataRef> dataOf(const std::string& text) {
    return own(CFDataCreate(nullptr, reinterpret_cast<const UInt8*>(text.data()), CFIndex(text.size())));
}

}  // namespace

TEST(Sockets, OneObjectPerDescriptorUntilInvalidated) {
    EXPECT_EQ(CFSocketGetTypeID(), 61u);
    EXPECT_EQ(ascii(own(CFCopyTypeIDDescription(61))), "CFSocket");

    int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ContextCounts counts;
    CFSocketContext context{0, &counts, retainCounts, releaseCounts, nullptr};
    CFSocketRef s =
        CFSocketCreateWithNative(nullptr, fd, kCFSocketReadCallBack | kCFSocketWriteCallBack, ignoreCallBack, &context);
    ASSERT_NE(s, nullptr);
    EXPECT_EQ(CFGetTypeID(s), 61u);
    EXPECT_EQ(counts.retains, 1);
    EXPECT_TRUE(CFSocketIsValid(s));
    EXPECT_EQ(CFSocketGetNative(s), fd);
    EXPECT_EQ(CFSocketGetSocketFlags(s),
              CFOptionFlags(kCFSocketCloseOnInvalidate | kCFSocketAutomaticallyReenableReadCallBack));
    CFSocketContext stored{};
    CFSocketGetContext(s, &stored);
    EXPECT_EQ(stored.info, &counts);
    EXPECT_EQ(stored.release, releaseCounts);
    // Ours and the table's reference.
    EXPECT_EQ(CFGetRetainCount(s), 2);

    // The same descriptor gives the same object; the new arguments are ignored.
    ContextCounts otherCounts;
    CFSocketContext otherContext{0, &otherCounts, retainCounts, releaseCounts, nullptr};
    CFSocketRef again = CFSocketCreateWithNative(nullptr, fd, kCFSocketDataCallBack, nullptr, &otherContext);
    EXPECT_EQ(again, s);
    EXPECT_EQ(CFGetRetainCount(s), 3);
    EXPECT_EQ(otherCounts.retains, 0);
    EXPECT_EQ(CFSocketGetSocketFlags(s),
              CFOptionFlags(kCFSocketCloseOnInvalidate | kCFSocketAutomaticallyReenableReadCallBack));

    // Releasing every reference of ours leaves the valid socket in the table.
    CFRelease(again);
    CFRelease(s);
    CFSocketRef kept = CFSocketCreateWithNative(nullptr, fd, 0, nullptr, nullptr);
    EXPECT_EQ(kept, s);
    EXPECT_EQ(CFGetRetainCount(kept), 2);
    EXPECT_TRUE(isOpenDescriptor(fd));

    // Invalidation closes the descriptor, releases the context once and empties the table slot.
    CFSocketInvalidate(kept);
    EXPECT_FALSE(isOpenDescriptor(fd));
    EXPECT_FALSE(CFSocketIsValid(kept));
    EXPECT_EQ(CFSocketGetNative(kept), -1);
    EXPECT_EQ(counts.releases, 1);
    EXPECT_EQ(CFGetRetainCount(kept), 1);
    CFSocketInvalidate(kept);
    EXPECT_EQ(counts.releases, 1);
    EXPECT_EQ(CFSocketCopyAddress(kept), nullptr);
    EXPECT_EQ(CFSocketSendData(kept, nullptr, dataOf("x"), 1.0), kCFSocketError);

    // The descriptor number, reused, makes a new object.
    int reused = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(reused, fd);
    CFSocketRef fresh = CFSocketCreateWithNative(nullptr, reused, kCFSocketNoCallBack, nullptr, nullptr);
    EXPECT_NE(fresh, kept);
    CFRelease(kept);
    // Without close-on-invalidate the descriptor stays the caller's.
    CFSocketSetSocketFlags(fresh, 0);
    EXPECT_EQ(CFSocketGetSocketFlags(fresh), 0u);
    CFSocketInvalidate(fresh);
    CFRelease(fresh);
    EXPECT_TRUE(isOpenDescriptor(reused));
    ::close(reused);

    std::string reports = reportsOf([&] {
        EXPECT_EQ(CFSocketCreateWithNative(nullptr, -1, 0, nullptr, nullptr), nullptr);
        EXPECT_EQ(CFSocketCreateWithNative(nullptr, INT_MAX, 0, nullptr, nullptr), nullptr);  // not open
        EXPECT_FALSE(CFSocketIsValid(nullptr));
        EXPECT_EQ(CFSocketGetNative(reinterpret_cast<CFSocketRef>(const_cast<void*>(CFTypeRef(CFSTR("s"))))), -1);
        CFSocketInvalidate(nullptr);
        EXPECT_EQ(CFSocketSendData(nullptr, nullptr, dataOf("x"), 1.0), kCFSocketError);
    });
    EXPECT_EQ(lineCount(reports), 6) << reports;
    EXPECT_NE(reports.find("CFSocket: CFSocketIsValid(): NULL is not a socket"), std::string::npos) << reports;
}

TEST(Sockets, AddressesOfBothEndsAreRawAndCached) {
    Watchdog watchdog;
    LoopbackServer server;
    auto [client, peer] = connectedPair(server);
    ASSERT_GE(peer, 0);
    CFSocketRef s = CFSocketCreateWithNative(nullptr, client, kCFSocketNoCallBack, nullptr, nullptr);

    auto local = own(CFSocketCopyAddress(s));
    ASSERT_TRUE(local);
    EXPECT_EQ(CFDataGetLength(local), 16);
    EXPECT_EQ(bytesOf(local), loopbackAddress(localPort(client)));
    auto remote = own(CFSocketCopyPeerAddress(s));
    EXPECT_EQ(bytesOf(remote), loopbackAddress(server.port()));
    // Read once and kept.
    auto localAgain = own(CFSocketCopyAddress(s));
    EXPECT_EQ(localAgain.get(), local.get());
    auto remoteAgain = own(CFSocketCopyPeerAddress(s));
    EXPECT_EQ(remoteAgain.get(), remote.get());

    // The listener has a local address but no peer.
    CFSocketRef listening = CFSocketCreateWithNative(nullptr, ::dup(server.listener()), 0, nullptr, nullptr);
    EXPECT_EQ(bytesOf(own(CFSocketCopyAddress(listening))), loopbackAddress(server.port()));
    EXPECT_EQ(CFSocketCopyPeerAddress(listening), nullptr);

    for (CFSocketRef each : {s, listening}) {
        CFSocketInvalidate(each);
        EXPECT_EQ(CFSocketCopyPeerAddress(each), nullptr);
        CFRelease(each);
    }
    ::close(peer);
}

TEST(Sockets, SendDataSucceedsFailsAndTimesOut) {
    Watchdog watchdog;
    LoopbackServer server;
    auto [client, peer] = connectedPair(server);
    ASSERT_GE(peer, 0);
    CFSocketRef s = CFSocketCreateWithNative(nullptr, client, kCFSocketNoCallBack, nullptr, nullptr);

    EXPECT_EQ(CFSocketSendData(s, nullptr, dataOf("hello"), 1.0), kCFSocketSuccess);
    EXPECT_EQ(receive(peer, 5), "hello");
    EXPECT_EQ(CFSocketSendData(s, nullptr, dataOf(""), 1.0), kCFSocketError);
    std::string reports = reportsOf([&] { EXPECT_EQ(CFSocketSendData(s, nullptr, nullptr, 1.0), kCFSocketError); });
    EXPECT_EQ(lineCount(reports), 1);

    // The time-out stays on the descriptor; 0 means none (INT_MAX seconds).
    timeval limit{};
    socklen_t size = sizeof limit;
    EXPECT_EQ(CFSocketSendData(s, nullptr, dataOf("!"), 0.25), kCFSocketSuccess);
    ::getsockopt(client, SOL_SOCKET, SO_SNDTIMEO, &limit, &size);
    EXPECT_EQ(limit.tv_sec, 0);
    EXPECT_NEAR(double(limit.tv_usec), 250000.0, 4000.0);
    EXPECT_EQ(CFSocketSendData(s, nullptr, dataOf("!"), 0), kCFSocketSuccess);
    ::getsockopt(client, SOL_SOCKET, SO_SNDTIMEO, &limit, &size);
    EXPECT_EQ(limit.tv_sec, INT_MAX);
    EXPECT_EQ(limit.tv_usec, 0);
    EXPECT_EQ(receive(peer, 2), "!!");

    // A peer that never reads: small buffers fill, then a send times out.
    int small = 4096;
    ::setsockopt(client, SOL_SOCKET, SO_SNDBUF, &small, sizeof small);
    ::setsockopt(peer, SOL_SOCKET, SO_RCVBUF, &small, sizeof small);
    auto chunk = dataOf(std::string(16384, 'z'));
    auto started = std::chrono::steady_clock::now();
    CFSocketError result = kCFSocketSuccess;
    int sends = 0;
    while (result == kCFSocketSuccess && sends < 1000) {
        result = CFSocketSendData(s, nullptr, chunk, 0.1);
        ++sends;
    }
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    EXPECT_EQ(result, kCFSocketTimeout);
    EXPECT_GT(sends, 1);  // the first sends went through, at least in part
    EXPECT_LT(seconds, 3.0);

    // Sending after the sending side was shut down is a broken pipe: an
    // error, not a SIGPIPE that would end this test process.
    ::shutdown(client, SHUT_WR);
    EXPECT_EQ(CFSocketSendData(s, nullptr, dataOf("x"), 1.0), kCFSocketError);
    ::close(peer);
    CFSocketInvalidate(s);
    CFRelease(s);

    // With an address the bytes go to it: datagrams between two loopback sockets.
    auto datagramSocket = [] {
        int fd = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        ::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address);
        return CFSocketCreateWithNative(nullptr, fd, kCFSocketNoCallBack, nullptr, nullptr);
    };
    CFSocketRef sender = datagramSocket();
    CFSocketRef receiver = datagramSocket();
    auto destination = own(CFSocketCopyAddress(receiver));
    EXPECT_EQ(CFSocketSendData(sender, destination, dataOf("datagram"), 1.0), kCFSocketSuccess);
    EXPECT_EQ(receive(CFSocketGetNative(receiver), 8), "datagram");
    // Without one, an unconnected datagram socket has nowhere to send.
    EXPECT_EQ(CFSocketSendData(sender, nullptr, dataOf("lost"), 1.0), kCFSocketError);
    for (CFSocketRef each : {sender, receiver}) {
        CFSocketInvalidate(each);
        CFRelease(each);
    }
}
