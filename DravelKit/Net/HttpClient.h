#pragma once

#include "DravelKit/Net/HttpError.h"
#include "DravelKit/Net/Secret.h"

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace dravel {

struct HttpRequest {
    std::string method = "GET";
    std::string url;
    std::vector<std::pair<std::string, std::string>> headers;
    std::optional<Secret> bearer;    // sent as "Authorization: Bearer …"
    std::optional<std::string> body; // none: no body at all
};

struct HttpResponse {
    int status = 0;
    std::map<std::string, std::string> headers; // names in lower case
    std::string body;

    // The value of a header such as "Retry-After", whatever the case of the name; none when the answer has no such
    // header.
    std::optional<std::string> header(std::string_view name) const;
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

    explicit HttpClient(
        HttpLimits = {}, SteadyNow = [] { return std::chrono::steady_clock::now(); });
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
