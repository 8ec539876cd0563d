#pragma once

#include "DravelKit/GoogleAuth/LoopbackReceiver.h"
#include "tests/support/Outcome.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

// Both ends of the loopback receiver, in one thread: what is sent waits in the system until the receiver looks.
namespace tacla::testing {

// One connection to 127.0.0.1.
class Connection {
  public:
    explicit Connection(std::uint16_t port, std::string_view bytes = "", const char* host = "127.0.0.1")
        : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        ::inet_pton(AF_INET, host, &address.sin_addr);
        connected_ = ::connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
        send(bytes);
    }
    Connection(Connection&& other) noexcept : socket_(std::exchange(other.socket_, -1)), connected_(other.connected_) {}
    ~Connection() { ::close(socket_); }

    bool connected() const { return connected_; }
    std::size_t send(std::string_view bytes) {
        const auto sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        return sent < 0 ? 0 : static_cast<std::size_t>(sent);
    }
    void finish() { ::shutdown(socket_, SHUT_WR); }

    // Everything that has been answered; the receiver must have looked before.
    std::string answer() {
        std::string all;
        std::array<char, 4096> buffer;
        for (ssize_t count; (count = ::recv(socket_, buffer.data(), buffer.size(), MSG_DONTWAIT)) > 0;)
            all.append(buffer.data(), static_cast<std::size_t>(count));
        return all;
    }

  private:
    int socket_;
    bool connected_ = false;
};

// A clock that moves on exactly when nothing else happens.
class IdleClock {
  public:
    dravel::ReceiverClock reader() {
        return {.now = [this] { return time_; },
                .wait =
                    [this](std::span<pollfd> polled, std::chrono::milliseconds timeout) {
                        const int ready = dravel::ReceiverClock::pollDescriptors(polled, {});
                        if (ready == 0) time_ += timeout;
                        return ready;
                    }};
    }
    std::chrono::steady_clock::duration elapsed() const { return time_.time_since_epoch(); }

  private:
    dravel::ReceiverClock::Point time_;
};

inline dravel::GoogleConfig essai() {
    return {.appName = "Essai",
            .folder = "Essai",
            .tokenService = "fr.dravel.Essai.google",
            .scope = [] { return std::string("https://www.googleapis.com/auth/calendar.app.created"); },
            .legacyToken = std::nullopt,
            .connectedText = "L'agenda est à jour.",
            .retryPlace = "les réglages d'Essai",
            .icon = "<path d=\"M1 1h14\"/>"};
}

}
