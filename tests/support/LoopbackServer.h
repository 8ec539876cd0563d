#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <functional>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace tacla::testing {

// An HTTP server on 127.0.0.1 that gives one scripted answer per request, in order, and remembers the requests.
class LoopbackServer {
  public:
    struct Request {
        std::string line;    // "GET /path HTTP/1.1"
        std::string headers; // "Name: value\r\n" each
        std::string body;
        int connection; // 1 for the first connection
    };

    enum class Then { keep, close, reset, hang, drip }; // drip: a byte after the other without end
    struct Answer {
        std::string bytes; // as they go out
        Then then = Then::keep;
        std::function<void()> before = {}; // runs when the request has come
    };

    explicit LoopbackServer(std::vector<Answer> script)
        : script_(std::move(script)), listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        auto* const any = reinterpret_cast<sockaddr*>(&address);
        if (::bind(listener_, any, length) != 0 || ::listen(listener_, 16) != 0 ||
            ::getsockname(listener_, any, &length) != 0)
            throw std::runtime_error("no loopback server");
        base_ = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port));
        thread_ = std::jthread([this] { serve(); });
    }
    ~LoopbackServer() {
        {
            const std::lock_guard lock(mutex_);
            over_ = true;
            ::shutdown(listener_, SHUT_RDWR);
            if (client_ >= 0) ::shutdown(client_, SHUT_RDWR);
        }
        thread_.join();
        ::close(listener_);
    }
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    const std::string& base() const { return base_; } // "http://127.0.0.1:41234"
    std::vector<Request> requests() const {
        const std::lock_guard lock(mutex_);
        return requests_;
    }

  private:
    void serve() {
        for (int connection = 1;; ++connection) {
            const int client = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
            if (client < 0) return;
            {
                const std::lock_guard lock(mutex_);
                client_ = client;
            }
            while (serveOne(client, connection)) {
            }
            const std::lock_guard lock(mutex_);
            client_ = -1;
            ::close(client);
            if (over_) return;
        }
    }

    // False when the connection is over.
    bool serveOne(int client, int connection) {
        const auto request = receive(client, connection);
        if (!request) return false;
        std::size_t number;
        {
            const std::lock_guard lock(mutex_);
            number = requests_.size();
            requests_.push_back(*request);
        }
        if (number >= script_.size()) return false;
        const Answer& answer = script_[number];
        if (answer.before) answer.before();
        [[maybe_unused]] const auto sent = ::send(client, answer.bytes.data(), answer.bytes.size(), MSG_NOSIGNAL);
        if (answer.then == Then::reset) {
            const linger now{.l_onoff = 1, .l_linger = 0};
            ::setsockopt(client, SOL_SOCKET, SO_LINGER, &now, sizeof now);
        }
        char byte = 'x'; // until the client gives up
        while (answer.then == Then::drip && ::send(client, &byte, 1, MSG_NOSIGNAL) > 0) {
        }
        while (answer.then == Then::hang && ::recv(client, &byte, 1, 0) > 0) {
        }
        return answer.then == Then::keep;
    }

    static std::optional<Request> receive(int client, int connection) {
        std::string bytes;
        std::array<char, 65536> buffer;
        for (ssize_t count; (count = ::recv(client, buffer.data(), buffer.size(), 0)) > 0;) {
            bytes.append(buffer.data(), static_cast<std::size_t>(count));
            constexpr std::string_view name = "\r\nContent-Length: ";
            const auto lineEnd = bytes.find("\r\n"), head = bytes.find("\r\n\r\n"), length = bytes.find(name);
            if (head == bytes.npos) continue;
            auto body = bytes.substr(head + 4);
            if (length < head && body.size() < std::stoul(bytes.substr(length + name.size()))) continue;
            return Request{bytes.substr(0, lineEnd), bytes.substr(lineEnd + 2, head - lineEnd), std::move(body),
                           connection};
        }
        return {};
    }

    const std::vector<Answer> script_;
    const int listener_;
    std::string base_;
    mutable std::mutex mutex_; // guards what follows
    std::vector<Request> requests_;
    int client_ = -1;
    bool over_ = false;
    std::jthread thread_;
};

// A whole answer with its length.
inline LoopbackServer::Answer answered(int status, std::string_view body, std::string_view headers = "") {
    return {.bytes = "HTTP/1.1 " + std::to_string(status) + " Status\r\n" + std::string(headers) +
                     "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + std::string(body)};
}

}
