#include "DravelKit/GoogleAuth/LoopbackReceiver.h"

#include "DravelKit/Foundation/Text.h"
#include "DravelKit/GoogleAuth/AuthError.h"
#include "DravelKit/GoogleAuth/CallbackPage.h"
#include "DravelKit/Net/Url.h"

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
constexpr std::size_t mostConnections = 8;
constexpr std::chrono::seconds patience{5};

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\r");
    if (first == text.npos) return {};
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

// "127.0.0.1", "localhost", each with or without a port. A page on the web can make its own name lead to this machine,
// but the browser still says that name here.
bool namesThisMachine(std::string_view host) {
    const auto colon = host.find(':');
    const auto port = colon == host.npos ? std::string_view{} : host.substr(colon + 1);
    const auto name = host.substr(0, colon);
    return (name == "127.0.0.1" || equalIgnoringCase(name, "localhost")) &&
           port.find_first_not_of("0123456789") == port.npos;
}

// Every Host header of the lines names this machine.
bool hostsAreOurs(std::string_view lines) {
    for (const auto line : split(lines, "\n", false)) {
        const auto colon = line.find(':');
        if (colon == line.npos || !equalIgnoringCase(trimmed(line.substr(0, colon)), "host")) continue;
        if (!namesThisMachine(trimmed(line.substr(colon + 1)))) return false;
    }
    return true;
}

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
struct Connection {
    Descriptor socket;
    Point end;
    std::string bytes = {};
};

// Reads what is there. Over: the head is whole, the other side has hung up, or it has sent enough.
bool isOver(Connection& connection) {
    std::array<char, 4096> buffer;
    while (connection.bytes.size() < longestRequest) {
        const auto room = std::min(buffer.size(), longestRequest - connection.bytes.size());
        const auto count = ::recv(connection.socket.get(), buffer.data(), room, MSG_DONTWAIT);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) return false;
        if (count <= 0) return true;
        connection.bytes.append(buffer.data(), static_cast<std::size_t>(count));
        if (CallbackRequest::isComplete(connection.bytes)) return true;
    }
    return true;
}

// A page fits into the buffer of a fresh connection: one attempt, and one that does not read does not hold us up.
void respond(const Connection& connection, const std::string& status, const std::string& html) {
    const auto text = "HTTP/1.1 " + status +
                      "\r\nContent-Type: text/html; charset=utf-8\r\nContent-Length: " + std::to_string(html.size()) +
                      "\r\nConnection: close\r\n\r\n" + html;
    [[maybe_unused]] const auto sent =
        ::send(connection.socket.get(), text.data(), text.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    ::shutdown(connection.socket.get(), SHUT_WR);
}

// Answers; the query when this was the callback.
std::optional<Query> serve(const Connection& connection, const GoogleConfig& config) {
    if (connection.bytes.empty()) return std::nullopt; // opened ahead and never used
    auto request = CallbackRequest::parse(connection.bytes);
    if (!request || !request->isCallback()) {
        respond(connection, "404 Not Found", "");
        return std::nullopt;
    }
    const auto error = request->query.find("error");
    respond(connection, "200 OK",
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
class Connections {
  public:
    Connections(const GoogleConfig& config, const ReceiverClock& clock, int listener, int wake)
        : config_(config), clock_(clock), listener_(listener), wake_(wake) {}

    // Waits for the next thing to happen, at most until the end. The callback's query when it has come.
    std::optional<Query> poll(Point end) {
        std::vector<pollfd> polled{{listener_, POLLIN, 0}, {wake_, POLLIN, 0}};
        for (const auto& connection : connections_) {
            polled.push_back({connection.socket.get(), POLLIN, 0});
            end = std::min(end, connection.end);
        }
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - clock_.now());
        clock_.wait(polled, std::max(left, std::chrono::milliseconds(0)));
        if (auto query = serveReady(std::span(polled).subspan(2))) return query;
        if (polled[0].revents != 0) acceptOne();
        return std::nullopt;
    }

  private:
    // What has been sent comes before what is new: the connection that brings the callback is never the one that
    // makes room.
    std::optional<Query> serveReady(std::span<const pollfd> polled) {
        const Point now = clock_.now();
        std::optional<Query> query;
        std::size_t index = 0;
        std::erase_if(connections_, [&](Connection& connection) {
            const bool ready = polled[index++].revents != 0;
            if (query || (!(ready && isOver(connection)) && now < connection.end)) return false;
            query = serve(connection, config_);
            return true;
        });
        return query;
    }

    void acceptOne() {
        const int fd = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
        if (fd < 0) {
            // Out of descriptors, the connection stays pending: a pause, or this would spin.
            if (errno == EMFILE || errno == ENFILE) clock_.wait({}, std::chrono::milliseconds(100));
            return;
        }
        // A browser opens connections ahead and leaves them silent: the oldest goes.
        if (connections_.size() >= mostConnections) connections_.erase(connections_.begin());
        connections_.push_back({.socket = Descriptor(fd), .end = clock_.now() + patience});
    }

    const GoogleConfig& config_;
    const ReceiverClock& clock_;
    const int listener_, wake_;
    std::vector<Connection> connections_;
};

}

bool CallbackRequest::isComplete(std::string_view bytes) {
    return bytes.find("\r\n\r\n") != bytes.npos || bytes.find("\n\n") != bytes.npos;
}

std::optional<CallbackRequest> CallbackRequest::parse(std::string_view bytes) {
    const auto end = bytes.find('\n');
    if (end == bytes.npos) return std::nullopt;
    const auto pieces = split(trimmed(bytes.substr(0, end)), " ");
    if (pieces.size() != 3 || !pieces[2].starts_with("HTTP/")) return std::nullopt;
    auto target = pieces[1].substr(0, pieces[1].find('#'));
    const auto mark = target.find('?');
    CallbackRequest request;
    if (mark != target.npos)
        for (auto& [name, value] : decodedItems(target.substr(mark + 1)))
            if (isValidUtf8(name) && isValidUtf8(value)) request.query.emplace(std::move(name), std::move(value));
    request.isForUs = hostsAreOurs(bytes.substr(end));
    return request;
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
    Connections connections(config_, clock_, listener_, wake.get());
    const Point end = clock_.now() + timeout;
    while (!stop.stop_requested() && clock_.now() < end) {
        if (auto query = connections.poll(end)) {
            close();
            return *query;
        }
    }
    close();
    if (stop.stop_requested()) throw AuthError(AuthError::Kind::cancelled);
    throw AuthError(AuthError::Kind::loginFailed, "délai dépassé");
}

}
