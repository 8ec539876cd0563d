#include "DravelKit/GoogleAuth/LoopbackReceiver.h"

#include "DravelKit/GoogleAuth/AuthError.h"
#include "DravelKit/GoogleAuth/CallbackPage.h"
#include "DravelKit/GoogleAuth/CallbackRequest.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

namespace dravel {

namespace {

using Point = ReceiverClock::Point;
using Query = std::map<std::string, std::string>;

constexpr std::size_t longestRequest = std::size_t{16} << 10;
constexpr std::size_t mostVisitors = 8;
constexpr std::chrono::seconds patience{5};

class Descriptor {
  public:
    explicit Descriptor(int fd) : fd_(fd) {}
    Descriptor(Descriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(fd_, other.fd_);
        return *this;
    }
    ~Descriptor() {
        if (fd_ >= 0) ::close(fd_);
    }
    int get() const { return fd_; }

  private:
    int fd_;
};

// One connection: what it has sent so far, and until when it may.
struct Visitor {
    Descriptor socket;
    Point end;
    std::string bytes = {};
};

enum class Progress { waiting, over };

// Reads what is there. Over: the head is whole, the visitor has hung up, or it has talked enough.
Progress read(Visitor& visitor) {
    std::array<char, 4096> buffer;
    while (visitor.bytes.size() < longestRequest) {
        const auto room = std::min(buffer.size(), longestRequest - visitor.bytes.size());
        const auto count = ::recv(visitor.socket.get(), buffer.data(), room, MSG_DONTWAIT);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) return Progress::waiting;
        if (count <= 0) return Progress::over;
        visitor.bytes.append(buffer.data(), static_cast<std::size_t>(count));
        if (CallbackRequest::isComplete(visitor.bytes)) return Progress::over;
    }
    return Progress::over;
}

// A page fits into the buffer of a fresh connection: one attempt, and a visitor who does not read does not hold us up.
void respond(const Visitor& visitor, const std::string& status, const std::string& html) {
    const auto text = "HTTP/1.1 " + status +
                      "\r\nContent-Type: text/html; charset=utf-8\r\nContent-Length: " + std::to_string(html.size()) +
                      "\r\nConnection: close\r\n\r\n" + html;
    [[maybe_unused]] const auto sent =
        ::send(visitor.socket.get(), text.data(), text.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    ::shutdown(visitor.socket.get(), SHUT_WR);
}

// Answers; the query when this was the callback.
std::optional<Query> serve(const Visitor& visitor, const GoogleConfig& config) {
    if (visitor.bytes.empty()) return std::nullopt; // opened ahead and never used
    auto request = CallbackRequest::parse(visitor.bytes);
    if (!request || !request->isCallback()) {
        respond(visitor, "404 Not Found", "");
        return std::nullopt;
    }
    const auto error = request->query.find("error");
    respond(visitor, "200 OK",
            request->query.contains("code")
                ? CallbackPage::success(config)
                : CallbackPage::failure(error == request->query.end() ? "inconnu" : error->second, config));
    return std::move(request->query);
}

AuthError cannotListen() {
    return AuthError(AuthError::Kind::loginFailed,
                     "écoute impossible sur 127.0.0.1 (erreur " + std::to_string(errno) + ")");
}

// The connections of one wait.
class Reception {
  public:
    Reception(const GoogleConfig& config, const ReceiverClock& clock, int listener, int wake)
        : config_(config), clock_(clock), listener_(listener), wake_(wake) {}

    // Waits for the next thing to happen, at most until the end. The callback's query when it has come.
    std::optional<Query> turn(Point end) {
        std::vector<pollfd> polled{{listener_, POLLIN, 0}, {wake_, POLLIN, 0}};
        for (const auto& visitor : visitors_) {
            polled.push_back({visitor.socket.get(), POLLIN, 0});
            end = std::min(end, visitor.end);
        }
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - clock_.now());
        clock_.wait(polled, std::max(left, std::chrono::milliseconds(0)));
        if (auto query = hear(std::span(polled).subspan(2))) return query;
        if (polled[0].revents != 0) welcome();
        return std::nullopt;
    }

  private:
    // Those who have talked before anybody new: a full house then never turns away the one who came with the callback.
    std::optional<Query> hear(std::span<const pollfd> polled) {
        const Point now = clock_.now();
        std::optional<Query> query;
        std::size_t index = 0;
        std::erase_if(visitors_, [&](Visitor& visitor) {
            const bool ready = polled[index++].revents != 0;
            if (query || (!(ready && read(visitor) == Progress::over) && now < visitor.end)) return false;
            query = serve(visitor, config_);
            return true;
        });
        return query;
    }

    void welcome() {
        const int fd = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
        if (fd < 0) {
            // Out of descriptors, the knock stays: a pause, or this would spin.
            if (errno == EMFILE || errno == ENFILE) clock_.wait({}, std::chrono::milliseconds(100));
            return;
        }
        // A browser opens connections ahead and leaves them silent: the oldest goes.
        if (visitors_.size() >= mostVisitors) visitors_.erase(visitors_.begin());
        visitors_.push_back({.socket = Descriptor(fd), .end = clock_.now() + patience});
    }

    const GoogleConfig& config_;
    const ReceiverClock& clock_;
    const int listener_, wake_;
    std::vector<Visitor> visitors_;
};

}

int ReceiverClock::pollDescriptors(std::span<pollfd> polled, std::chrono::milliseconds time) {
    return ::poll(polled.data(), polled.size(), static_cast<int>(time.count()));
}

LoopbackReceiver::LoopbackReceiver(GoogleConfig config, ReceiverClock clock)
    : config_(std::move(config)), clock_(std::move(clock)),
      listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto* const any = reinterpret_cast<sockaddr*>(&address);
    if (listener_ < 0 || ::bind(listener_, any, length) != 0 || ::listen(listener_, SOMAXCONN) != 0 ||
        ::getsockname(listener_, any, &length) != 0) {
        const auto error = cannotListen();
        close();
        throw error;
    }
    port_ = ntohs(address.sin_port);
}

LoopbackReceiver::~LoopbackReceiver() { close(); }

void LoopbackReceiver::close() {
    if (listener_ >= 0) ::close(std::exchange(listener_, -1));
}

Query LoopbackReceiver::waitForCallback(std::chrono::milliseconds timeout, const std::stop_token& stop) {
    const Descriptor wake(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    const std::stop_callback woken(stop, [fd = wake.get()] { ::eventfd_write(fd, 1); });
    Reception reception(config_, clock_, listener_, wake.get());
    const Point end = clock_.now() + timeout;
    while (!stop.stop_requested() && clock_.now() < end) {
        if (auto query = reception.turn(end)) {
            close();
            return *query;
        }
    }
    close();
    if (stop.stop_requested()) throw AuthError(AuthError::Kind::cancelled);
    throw AuthError(AuthError::Kind::loginFailed, "délai dépassé");
}

}
