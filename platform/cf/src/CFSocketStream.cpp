// A read stream and a write stream over one TCP connection to a host and
// port. Opening the first of them starts name resolution and the connection
// on a worker thread, so that the open itself never blocks; reads and writes
// wait for the outcome. The descriptor is closed once both streams are
// closed or gone.
#include "CFStreamInternal.h"
#include "CFStringInternal.h"

#include <CoreFoundation/CFData.h>

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>

namespace halvane::detail {
namespace {

// How often a connection attempt checks whether its streams have gone.
constexpr int kAbandonCheckMilliseconds = 100;

// Waits for events on fd, retrying after signals. The poll result.
int pollOne(int fd, short events, int timeoutMilliseconds) {
    pollfd entry{fd, events, 0};
    int ready;
    do {
        ready = ::poll(&entry, 1, timeoutMilliseconds);
    } while (ready < 0 && errno == EINTR);
    return ready;
}

class SocketConnection : public std::enable_shared_from_this<SocketConnection> {
public:
    SocketConnection(std::string host, UInt32 port, int streams)
        : host_(std::move(host)), port_(port), users_(streams) {}

    ~SocketConnection() {
        if (fd_ >= 0) ::close(fd_);
    }

    SocketConnection(const SocketConnection&) = delete;
    SocketConnection& operator=(const SocketConnection&) = delete;

    // The first call starts connecting and reports the open as in progress,
    // however quickly the attempt ends; later ones join the attempt.
    OpenState start(CFStreamError& error) {
        {
            std::lock_guard lock(mutex_);
            if (phase_ != Phase::idle) return stateLocked(error);
            phase_ = Phase::connecting;
        }
        launchWorker();
        return OpenState::opening;
    }

    OpenState progress(bool wait, CFStreamError& error) {
        std::unique_lock lock(mutex_);
        if (wait) changed_.wait(lock, [this] { return phase_ != Phase::connecting; });
        return stateLocked(error);
    }

    // The descriptor once connected, else -1.
    int descriptor() {
        std::lock_guard lock(mutex_);
        return phase_ == Phase::connected ? fd_ : -1;
    }

    // One of the streams is closed or gone; the last one closes the descriptor.
    void detach() {
        std::lock_guard lock(mutex_);
        if (--users_ > 0) return;
        if (fd_ >= 0) ::close(fd_);
        fd_ = -1;
        if (phase_ == Phase::connected) phase_ = Phase::closed;
    }

private:
    enum class Phase { idle, connecting, connected, failed, closed };

    OpenState stateLocked(CFStreamError& error) const {
        switch (phase_) {
            case Phase::connected:
                return OpenState::open;
            case Phase::idle:
            case Phase::connecting:
                return OpenState::opening;
            case Phase::failed:
            case Phase::closed:
                break;
        }
        error = error_;
        return OpenState::failed;
    }

    void launchWorker() {
        try {
            std::thread([self = shared_from_this()] { self->establish(); }).detach();
        } catch (const std::system_error& failure) {
            finish(-1, posixStreamError(failure.code().value()));
        }
    }

    bool abandoned() {
        std::lock_guard lock(mutex_);
        return users_ == 0;
    }

    void finish(int fd, CFStreamError error) {
        std::lock_guard lock(mutex_);
        if (fd >= 0 && users_ == 0) {
            ::close(fd);
            fd = -1;
            error = posixStreamError(ECANCELED);
        }
        fd_ = fd;
        error_ = error;
        phase_ = fd >= 0 ? Phase::connected : Phase::failed;
        changed_.notify_all();
    }

    // Runs on the worker thread.
    void establish() {
        if (port_ > 65535) return finish(-1, posixStreamError(EINVAL));
        // getaddrinfo would stop at an embedded NUL and look up another name.
        if (host_.find('\0') != std::string::npos) {
            return finish(-1, CFStreamError{kCFStreamErrorDomainNetDB, EAI_NONAME});
        }
        addrinfo hints{};
        hints.ai_family = AF_UNSPEC;
        hints.ai_socktype = SOCK_STREAM;
        hints.ai_protocol = IPPROTO_TCP;
        hints.ai_flags = AI_NUMERICSERV;
        addrinfo* addresses = nullptr;
        int lookup = ::getaddrinfo(host_.c_str(), std::to_string(port_).c_str(), &hints, &addresses);
        if (lookup == EAI_SYSTEM) return finish(-1, posixStreamError(errno));
        if (lookup != 0) return finish(-1, CFStreamError{kCFStreamErrorDomainNetDB, lookup});

        CFStreamError error = posixStreamError(ECONNREFUSED);
        int fd = -1;
        for (addrinfo* a = addresses; a != nullptr && fd < 0 && !abandoned(); a = a->ai_next) {
            fd = connectTo(*a, error);
        }
        ::freeaddrinfo(addresses);
        finish(fd, error);
    }

    // A connected descriptor, or -1 with error set.
    int connectTo(const addrinfo& address, CFStreamError& error) {
        int fd = ::socket(address.ai_family, address.ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC, address.ai_protocol);
        if (fd < 0) {
            error = posixStreamError(errno);
            return -1;
        }
        int result = ::connect(fd, address.ai_addr, address.ai_addrlen);
        if (result < 0 && errno == EINPROGRESS) {
            int ready = 0;
            while (ready == 0 && !abandoned()) ready = pollOne(fd, POLLOUT, kAbandonCheckMilliseconds);
            int failure = ECANCELED;
            socklen_t size = sizeof failure;
            if (ready > 0) ::getsockopt(fd, SOL_SOCKET, SO_ERROR, &failure, &size);
            if (ready < 0) failure = errno;
            errno = failure;
            result = failure == 0 ? 0 : -1;
        }
        if (result == 0) return fd;
        error = posixStreamError(errno);
        ::close(fd);
        return -1;
    }

    const std::string host_;
    const UInt32 port_;
    std::mutex mutex_;
    std::condition_variable changed_;
    Phase phase_ = Phase::idle;
    int users_;
    int fd_ = -1;
    CFStreamError error_{0, 0};
};

// What the two directions share: opening through the connection and giving
// it up once.
template <typename Base>
class SocketEndpoint : public Base {
public:
    explicit SocketEndpoint(std::shared_ptr<SocketConnection> connection) : connection_(std::move(connection)) {}
    ~SocketEndpoint() override { close(); }

    OpenState open(CFStreamError& error) override { return connection_->start(error); }
    OpenState openProgress(bool wait, CFStreamError& error) override { return connection_->progress(wait, error); }

    void close() override {
        if (attached_) connection_->detach();
        attached_ = false;
    }

    CFTypeRef copyProperty(CFStringRef name) override {
        if (!CFEqual(name, kCFStreamPropertySocketNativeHandle)) return nullptr;
        int fd = connection_->descriptor();
        if (fd < 0) return nullptr;
        return CFDataCreate(nullptr, reinterpret_cast<const UInt8*>(&fd), sizeof fd);
    }

protected:
    // Waits until the descriptor is ready for events; false with error set
    // when it cannot become ready.
    bool waitFor(short events, CFStreamError& error) {
        int fd = connection_->descriptor();
        if (fd < 0) {
            error = posixStreamError(EBADF);
            return false;
        }
        if (pollOne(fd, events, -1) < 0) {
            error = posixStreamError(errno);
            return false;
        }
        return true;
    }

    bool isReady(short events) {
        int fd = connection_->descriptor();
        if (fd < 0) return false;
        return pollOne(fd, events, 0) > 0;
    }

    std::shared_ptr<SocketConnection> connection_;

private:
    bool attached_ = true;
};

class SocketReadEndpoint final : public SocketEndpoint<ReadEndpoint> {
public:
    using SocketEndpoint::SocketEndpoint;

    CFIndex read(UInt8* buffer, CFIndex length, bool& atEnd, CFStreamError& error) override {
        for (;;) {
            if (!waitFor(POLLIN, error)) return -1;
            ssize_t count = ::recv(connection_->descriptor(), buffer, size_t(length), 0);
            if (count > 0) return count;
            if (count == 0) {
                atEnd = true;
                return 0;
            }
            if (errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR) {
                error = posixStreamError(errno);
                return -1;
            }
        }
    }

    // Also true at the end of the stream or on an error: a read would not block.
    bool hasBytesAvailable() override { return isReady(POLLIN); }
};

class SocketWriteEndpoint final : public SocketEndpoint<WriteEndpoint> {
public:
    using SocketEndpoint::SocketEndpoint;

    CFIndex write(const UInt8* buffer, CFIndex length, CFStreamError& error) override {
        for (;;) {
            if (!waitFor(POLLOUT, error)) return -1;
            // MSG_NOSIGNAL: a peer that has gone gives EPIPE, not a signal that ends the process.
            ssize_t count = ::send(connection_->descriptor(), buffer, size_t(length), MSG_NOSIGNAL);
            if (count >= 0) return count;
            if (errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR) {
                error = posixStreamError(errno);
                return -1;
            }
        }
    }

    bool canAcceptBytes() override { return isReady(POLLOUT); }
};

}  // namespace
}  // namespace halvane::detail

using namespace halvane::detail;

void CFStreamCreatePairWithSocketToHost(CFAllocatorRef alloc, CFStringRef host, UInt32 port,
                                        CFReadStreamRef* readStream, CFWriteStreamRef* writeStream) {
    if (readStream != nullptr) *readStream = nullptr;
    if (writeStream != nullptr) *writeStream = nullptr;
    if (!isA(host, kCFStringTypeID)) {
        reportMisuse("CFStream: CFStreamCreatePairWithSocketToHost(): %s is not a string",
                     host == nullptr ? "NULL" : "the host");
        return;
    }
    int streams = (readStream != nullptr) + (writeStream != nullptr);
    if (streams == 0) return;
    std::shared_ptr<SocketConnection> connection;
    try {
        connection = std::make_shared<SocketConnection>(utf8Of(host), port, streams);
    } catch (const std::bad_alloc&) {
        return;
    }
    // An endpoint that is never built gives up its share of the connection
    // at once, so that the other stream alone decides when it closes.
    if (readStream != nullptr) {
        auto endpoint = std::unique_ptr<ReadEndpoint>(new (std::nothrow) SocketReadEndpoint(connection));
        if (endpoint != nullptr) {
            *readStream = createReadStream(alloc, std::move(endpoint));
        } else {
            connection->detach();
        }
    }
    if (writeStream != nullptr) {
        auto endpoint = std::unique_ptr<WriteEndpoint>(new (std::nothrow) SocketWriteEndpoint(connection));
        if (endpoint != nullptr) {
            *writeStream = createWriteStream(alloc, std::move(endpoint));
        } else {
            connection->detach();
        }
    }
}
