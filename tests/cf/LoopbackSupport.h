// Loopback TCP helpers for the stream and socket tests. Every wait has a
// time limit, and a watchdog ends a test that blocks anyway.
#ifndef HALVANE_TESTS_CF_LOOPBACK_SUPPORT_H
#define HALVANE_TESTS_CF_LOOPBACK_SUPPORT_H

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <string>

namespace cftest {

// Kills the test process (SIGALRM) if the test is still running after the
// given time, so that a blocking call that never returns fails the test
// instead of hanging it.
class Watchdog {
public:
    explicit Watchdog(unsigned seconds = 10) { ::alarm(seconds); }
    ~Watchdog() { ::alarm(0); }
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;
};

inline bool isOpenDescriptor(int fd) {
    return fd >= 0 && ::fcntl(fd, F_GETFD) >= 0;
}

// True when fd becomes ready for events within the time limit.
inline bool waitFor(int fd, short events, int milliseconds) {
    pollfd entry{fd, events, 0};
    return ::poll(&entry, 1, milliseconds) == 1;
}

// A TCP socket listening on 127.0.0.1 on a port the system chose.
class LoopbackServer {
public:
    LoopbackServer() {
        fd_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        EXPECT_EQ(::bind(fd_, reinterpret_cast<sockaddr*>(&address), length), 0);
        EXPECT_EQ(::listen(fd_, 4), 0);
        EXPECT_EQ(::getsockname(fd_, reinterpret_cast<sockaddr*>(&address), &length), 0);
        port_ = ntohs(address.sin_port);
    }
    ~LoopbackServer() { ::close(fd_); }
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    unsigned port() const { return port_; }
    int listener() const { return fd_; }

    // The next connection, or -1 when none arrives in time.
    int accept(int milliseconds = 3000) {
        if (!waitFor(fd_, POLLIN, milliseconds)) return -1;
        return ::accept4(fd_, nullptr, nullptr, SOCK_CLOEXEC);
    }

private:
    int fd_ = -1;
    unsigned port_ = 0;
};

// A plain client descriptor connected to 127.0.0.1:port (the system
// completes the connection before the server accepts it, while its queue has
// room), or -1.
inline int connectLoopback(unsigned port) {
    int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(uint16_t(port));
    if (::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) return fd;
    ::close(fd);
    return -1;
}

// A loopback port on which nothing listens (bound a moment ago, then freed).
inline unsigned unusedPort() {
    LoopbackServer probe;
    return probe.port();
}

// Reads what arrives on fd within the time limit, up to length bytes.
inline std::string receive(int fd, size_t length, int milliseconds = 3000) {
    std::string text;
    while (text.size() < length && waitFor(fd, POLLIN, milliseconds)) {
        char buffer[256];
        ssize_t count = ::recv(fd, buffer, std::min(sizeof buffer, length - text.size()), 0);
        if (count <= 0) break;
        text.append(buffer, size_t(count));
    }
    return text;
}

}  // namespace cftest

#endif  // HALVANE_TESTS_CF_LOOPBACK_SUPPORT_H
