#pragma once

#include "DravelKit/GoogleAuth/GoogleConfig.h"

#include <poll.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <string_view>

namespace dravel {

// What the receiver needs of an HTTP request.
struct CallbackRequest {
    std::map<std::string, std::string> query; // the first value of each name
    bool isForUs = true;                      // a visit, not a part of a page; its host, if any, is this machine

    // The browser came back from Google, with a code or a reason why there is none.
    bool isCallback() const { return isForUs && (query.contains("code") || query.contains("error")); }

    // None without a whole request line.
    static std::optional<CallbackRequest> parse(std::string_view bytes);

    // The head has come in whole: nothing more is worth waiting for.
    static bool isComplete(std::string_view bytes);
};

// The page that the browser shows when it comes back from Google: one HTML document without external resources.
namespace CallbackPage {

std::string success(const GoogleConfig&);

// error is the code that came with the callback: anybody's text, shown escaped.
std::string failure(const std::string& error, const GoogleConfig&);

}

// How the receiver reads time and waits; a test gives it a clock of its own.
struct ReceiverClock {
    using Point = std::chrono::steady_clock::time_point;

    std::function<Point()> now = [] { return std::chrono::steady_clock::now(); };
    // As poll(2): the number of ready descriptors, 0 after the time-out.
    std::function<int(std::span<pollfd>, std::chrono::milliseconds)> wait = pollDescriptors;

    static int pollDescriptors(std::span<pollfd>, std::chrono::milliseconds);
};

// Listens on 127.0.0.1, on a port of the system's choice, for the one request with which the browser comes back from
// Google; answers it with a page and stops listening. A callback that comes before anybody waits is kept by the system.
class LoopbackReceiver {
  public:
    // Listening when constructed. Throws AuthError (loginFailed).
    explicit LoopbackReceiver(GoogleConfig, ReceiverClock = {});
    ~LoopbackReceiver();
    LoopbackReceiver(const LoopbackReceiver&) = delete;
    LoopbackReceiver& operator=(const LoopbackReceiver&) = delete;

    std::uint16_t port() const { return port_; }

    // The query of the callback. Throws AuthError: loginFailed ("délai dépassé") after the time-out, cancelled.
    std::map<std::string, std::string> waitForCallback(std::chrono::milliseconds timeout, const std::stop_token& = {});

  private:
    void close();

    const GoogleConfig config_;
    const ReceiverClock clock_;
    int listener_ = -1;
    std::uint16_t port_ = 0;
};

}
