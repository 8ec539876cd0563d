#pragma once

#include "DravelKit/Net/Secret.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace dravel {

// Why an HTTP exchange gave no answer at all. An answer with any status is not an error here.
class HttpError : public std::runtime_error {
  public:
    enum class Kind {
        badRequest,  // the address or a header cannot be sent
        unknownHost, // no such name, or no network
        unreachable, // nobody listens there
        timedOut,    // silent for too long, or the whole exchange took too long
        lost,        // the connection broke, or the answer is cut or no HTTP
        insecure,    // TLS failed
        tooLarge,    // the answer is longer than allowed
        cancelled,   // the stop token asked
        failed,      // anything else
    };

    HttpError(Kind kind, std::string host);

    // In French, for the user; also what().
    std::string description() const { return what(); }

    const Kind kind;
    const std::string host;
};

struct HttpRequest {
    std::string method = "GET";
    std::string url = {};
    std::vector<std::pair<std::string, std::string>> headers = {};
    std::optional<Secret> bearer = {};    // sent as "Authorization: Bearer …"
    std::optional<std::string> body = {}; // none: no body at all
};

struct HttpResponse {
    int status = 0;
    std::optional<std::chrono::seconds> retryAfter; // how long the server asks to be left alone
    std::string contentType;                        // "text/html; charset=utf-8"; empty when the server does not say
    std::string body;
};

struct HttpLimits {
    std::chrono::milliseconds silence = std::chrono::seconds(60); // without one byte in either direction
    std::chrono::milliseconds exchange = std::chrono::minutes(5); // from the first byte to the last
    std::size_t answer = std::size_t{8} << 20;                    // bytes of the body, decompressed
};

// Sends one request after the other, each at most once, over one connection that is kept alive. Follows no redirect,
// keeps no cookie, checks certificates, and asks the system's proxy for all but this machine. For one thread at a time.
class HttpClient {
  public:
    using SteadyNow = std::function<std::chrono::steady_clock::time_point()>;

    explicit HttpClient(HttpLimits = {}, SteadyNow = std::chrono::steady_clock::now);
    ~HttpClient();
    HttpClient(HttpClient&&) noexcept;
    HttpClient& operator=(HttpClient&&) noexcept;

    // Takes pieces of a body as they come in. What it throws ends the exchange and is thrown by send.
    using BodySink = std::function<void(std::string_view bytes)>;

    // Waits for the whole answer, whatever its status. Throws HttpError. With a sink, the body of an answer of status
    // 200 goes there, and the response's own stays empty.
    HttpResponse send(const HttpRequest&, const std::stop_token& = {}, const BodySink& = {});

  private:
    struct Session;
    std::unique_ptr<Session> session_;
};

}
