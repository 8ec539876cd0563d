#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
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

    enum class Then { keep, close, reset, hang };
    struct Answer {
        std::string bytes; // as they go out
        Then then = Then::keep;
        std::function<void()> before = {}; // runs when the request has come
    };

    explicit LoopbackServer(std::vector<Answer> script);
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    std::string base() const; // "http://127.0.0.1:41234"
    std::vector<Request> requests() const;

    // More bytes for the client whose answer hangs; waits until there is one.
    void push(std::string_view bytes);

  private:
    void serve();
    bool serveOne(int client, int connection);
    static std::optional<Request> receive(int client, int connection);

    const std::vector<Answer> script_;
    int listener_ = -1, port_ = 0;
    mutable std::mutex mutex_; // guards what follows
    std::condition_variable changed_;
    std::vector<Request> requests_;
    int hanging_ = -1; // the client that waits for more
    int client_ = -1;
    bool over_ = false;
    std::jthread thread_;
};

// A whole answer with its length.
LoopbackServer::Answer answered(int status, std::string_view body, std::string_view headers = "");

}
