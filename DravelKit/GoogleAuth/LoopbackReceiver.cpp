#include "DravelKit/GoogleAuth/LoopbackReceiver.h"

#include "DravelKit/Foundation/Text.h"
#include "DravelKit/GoogleAuth/AuthError.h"
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

constexpr std::string_view style = R"css(
:root { color-scheme: light dark;
  --bg: #f5f5f5; --card: #ffffff; --text: #131927; --muted: #394050; --line: #d4d7dd;
  --ok: #2f7a45; --ok-soft: #c5e9cd; --ko: #c0392f; --ko-soft: #fac5c3; }
@media (prefers-color-scheme: dark) { :root {
  --bg: #131927; --card: #1e2436; --text: #f5f5f5; --muted: #c2c7d0; --line: #2c3346;
  --ok: #43b75d; --ok-soft: #173524; --ko: #f26b66; --ko-soft: #3a1c19; } }
* { box-sizing: border-box; margin: 0; }
body { min-height: 100vh; display: grid; place-items: center; padding: 24px; background: var(--bg); color: var(--text);
  font: 15px/1.5 "Atkinson Hyperlegible Next", system-ui, sans-serif; }
main { width: 100%; max-width: 400px; padding: 40px 32px 28px; text-align: center; background: var(--card);
  border: 1px solid var(--line); border-radius: 20px; overflow-wrap: anywhere;
  box-shadow: 0 1px 2px rgb(0 0 0 / .06), 0 12px 32px rgb(0 0 0 / .08);
  animation: rise .45s cubic-bezier(.2, .8, .2, 1) both; }
.badge { width: 64px; height: 64px; margin: 0 auto 20px; border-radius: 50%; display: grid; place-items: center; }
.ok .badge { background: var(--ok-soft); color: var(--ok); }
.ko .badge { background: var(--ko-soft); color: var(--ko); }
.badge svg { width: 40px; height: 40px; fill: none; stroke: currentColor; stroke-width: 3.2; stroke-linecap: round;
  stroke-linejoin: round; }
.draw { stroke-dasharray: 32; stroke-dashoffset: 32; animation: draw .5s .25s ease-out forwards; }
h1 { font-size: 22px; font-weight: 650; line-height: 1.25; margin-bottom: 8px; }
p { color: var(--muted); text-wrap: balance; }
code { font: .92em ui-monospace, monospace; }
footer { margin-top: 28px; padding-top: 16px; border-top: 1px solid var(--line); display: flex; flex-wrap: wrap;
  gap: 4px 12px; font-size: 12px; color: var(--muted); }
footer span { margin: 0 auto; }
.app { display: inline-flex; align-items: center; gap: 6px; }
.app svg { width: 16px; height: 16px; }
@keyframes rise { from { opacity: 0; transform: translateY(12px); } }
@keyframes draw { to { stroke-dashoffset: 0; } }
@media (prefers-reduced-motion: reduce) { main, .draw { animation: none; } .draw { stroke-dashoffset: 0; } }
)css";

constexpr std::string_view checkMark = R"(<path class="draw" d="M14 25.5l7 7L34 18"/>)";
constexpr std::string_view exclamationMark =
    R"(<path d="M24 14v13"/><circle cx="24" cy="33.5" r="1.6" fill="currentColor" stroke="none"/>)";

struct Content {
    std::string_view variant, heading, mark;
    std::string message; // HTML
};

std::string escaped(std::string_view text) {
    auto html = replacedAll(text, "&", "&amp;");
    html = replacedAll(html, "<", "&lt;");
    html = replacedAll(html, ">", "&gt;");
    return replacedAll(html, "\"", "&quot;");
}

std::string document(const Content& content, const GoogleConfig& config) {
    const auto name = escaped(config.appName);
    std::string html = "<!DOCTYPE html>\n<html lang=\"fr\">\n<head>\n<meta charset=\"utf-8\">\n"
                       "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>";
    html.append(name).append(" · ").append(content.heading).append("</title>\n<style>").append(style);
    html.append("</style>\n</head>\n<body>\n<main class=\"").append(content.variant);
    html.append(
        "\">\n<div class=\"badge\"><svg viewBox=\"0 0 48 48\" width=\"48\" height=\"48\" aria-hidden=\"true\">");
    html.append(content.mark).append("</svg></div>\n<h1>").append(content.heading).append("</h1>\n<p>");
    html.append(content.message).append("</p>\n<footer><span class=\"app\">");
    html.append("<svg viewBox=\"0 0 16 16\" width=\"16\" height=\"16\" aria-hidden=\"true\">").append(config.icon);
    html.append("</svg>").append(name).append(", par Dravel</span>");
    html.append("<span>Vous pouvez fermer cet onglet.</span></footer>\n</main>\n</body>\n</html>\n");
    return html;
}

std::string reason(const std::string& error, const GoogleConfig& config) {
    if (error == "access_denied") return "Vous avez refusé l'accès à votre agenda.";
    if (error == "admin_policy_enforced" || error == "org_internal")
        return "L'administrateur Google Workspace de votre organisation bloque les apps tierces : "
               "demandez-lui d'autoriser " +
               escaped(config.appName) + ".";
    return "Google a répondu : <code>" + escaped(error) + "</code>.";
}

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

// Every Host header of the lines names this machine, and the browser opens a page: an image or a frame in somebody
// else's page says here what it is.
bool isVisit(std::string_view lines) {
    for (const auto line : split(lines, "\n", false)) {
        const auto colon = line.find(':');
        if (colon == line.npos) continue;
        const auto name = trimmed(line.substr(0, colon)), value = trimmed(line.substr(colon + 1));
        if (equalIgnoringCase(name, "host") && !namesThisMachine(value)) return false;
        if (equalIgnoringCase(name, "sec-fetch-dest") && value != "document") return false;
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

std::string CallbackPage::success(const GoogleConfig& config) {
    return document(
        {.variant = "ok", .heading = "C'est connecté", .mark = checkMark, .message = escaped(config.connectedText)},
        config);
}

std::string CallbackPage::failure(const std::string& error, const GoogleConfig& config) {
    return document({.variant = "ko",
                     .heading = "Connexion annulée",
                     .mark = exclamationMark,
                     .message = reason(error, config) + " Relancez « Se connecter à Google… » depuis " +
                                escaped(config.retryPlace) + " quand vous voulez."},
                    config);
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
    request.isForUs = isVisit(bytes.substr(end));
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
