#include "DravelKit/Net/HttpClient.h"

#include "DravelKit/Net/Url.h"

#include <curl/curl.h>

#include <algorithm>
#include <exception>
#include <string_view>

namespace dravel {

namespace {

using Kind = HttpError::Kind;
using Point = std::chrono::steady_clock::time_point;

constexpr std::size_t longestHeaders = std::size_t{256} << 10;

// libcurl's set-up is not safe from two threads at once; that of a function's static is.
void initialiseOnce() {
    static const CURLcode result = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (result != CURLE_OK) throw HttpError(Kind::failed, "Internet");
}

Kind kindOf(CURLcode code) {
    switch (code) {
    case CURLE_URL_MALFORMAT: return Kind::badRequest;
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY: return Kind::unknownHost;
    case CURLE_COULDNT_CONNECT: return Kind::unreachable;
    case CURLE_OPERATION_TIMEDOUT: return Kind::timedOut;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_ISSUER_ERROR: return Kind::insecure;
    case CURLE_PARTIAL_FILE:
    case CURLE_GOT_NOTHING:
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_UNSUPPORTED_PROTOCOL: // an answer without a status line; the address has been looked at before
    case CURLE_HTTP2:
    case CURLE_HTTP2_STREAM:
    case CURLE_BAD_CONTENT_ENCODING:
    case CURLE_ABORTED_BY_CALLBACK: // see beforeRequest
        return Kind::lost;
    default: return Kind::failed;
    }
}

std::string describe(HttpError::Kind kind, const std::string& host) {
    switch (kind) {
    case HttpError::Kind::badRequest: return "Requête impossible à envoyer à " + host;
    case HttpError::Kind::unknownHost: return "Serveur " + host + " introuvable : vérifiez la connexion à Internet";
    case HttpError::Kind::unreachable: return "Connexion impossible à " + host;
    case HttpError::Kind::timedOut: return "Délai dépassé en attendant la réponse de " + host;
    case HttpError::Kind::lost: return "Connexion perdue avec " + host;
    case HttpError::Kind::insecure: return "Connexion non sécurisée avec " + host + " : requête abandonnée";
    case HttpError::Kind::tooLarge: return "Réponse trop longue de " + host;
    case HttpError::Kind::cancelled: return "Requête interrompue";
    case HttpError::Kind::failed: return "Échec de la requête à " + host;
    }
    return {};
}

// "Retry-After: 0", which libcurl reports like the lack of that header.
bool asksForNoWait(CURL* easy) {
    curl_header* found = nullptr;
    return curl_easy_header(easy, "Retry-After", 0, CURLH_HEADER, -1, &found) == CURLHE_OK &&
           found->value == std::string_view("0");
}

// The answer of one request while it comes in.
struct Exchange {
    const HttpLimits& limits;
    const HttpClient::BodySink& sink;
    HttpResponse response;
    std::optional<Kind> failure;
    std::exception_ptr thrown = nullptr; // by the sink
    std::size_t headerBytes = 0, bodyBytes = 0;
    bool streams = false;
    curl_off_t moved = 0; // bytes in both directions
    bool sent = false, headWhole = false;

    bool refuse(Kind kind) {
        failure = kind;
        return false;
    }

    bool takeHeader(std::string_view line) {
        headerBytes += line.size();
        if (headerBytes > longestHeaders) return refuse(Kind::tooLarge);
        // libcurl takes a head that breaks off for a whole one. An interim answer has a head of its own, and lines
        // after the body (a trailer) belong to none.
        if (line.starts_with("HTTP/")) {
            headWhole = false;
            streams = sink && line.substr(std::min(line.find(' '), line.size())).starts_with(" 200");
        }
        if (line == "\r\n" || line == "\n") headWhole = true;
        return true;
    }

    bool takeBody(std::string_view bytes) {
        if (bytes.size() > limits.answer - bodyBytes) return refuse(Kind::tooLarge);
        bodyBytes += bytes.size();
        if (streams) return pour(bytes);
        response.body += bytes;
        return true;
    }

    // No exception may pass through libcurl.
    bool pour(std::string_view bytes) {
        try {
            sink(bytes);
            return true;
        } catch (...) {
            thrown = std::current_exception();
            return refuse(Kind::failed);
        }
    }
};

std::size_t onHeader(char* bytes, std::size_t, std::size_t count, void* exchange) {
    return static_cast<Exchange*>(exchange)->takeHeader({bytes, count}) ? count : 0;
}

std::size_t onBody(char* bytes, std::size_t, std::size_t count, void* exchange) {
    return static_cast<Exchange*>(exchange)->takeBody({bytes, count}) ? count : 0;
}

int onProgress(void* exchange, curl_off_t, curl_off_t down, curl_off_t, curl_off_t up) {
    static_cast<Exchange*>(exchange)->moved = down + up;
    return 0;
}

// libcurl sends a request again when a kept connection turns out to be closed. A server that had taken the request
// would then see it twice: each one goes out once, and the caller decides.
int beforeRequest(void* exchange, char*, char*, int, int) {
    return std::exchange(static_cast<Exchange*>(exchange)->sent, true) ? CURL_PREREQFUNC_ABORT : CURL_PREREQFUNC_OK;
}

class HeaderList {
  public:
    ~HeaderList() { curl_slist_free_all(list_); }
    HeaderList() = default;
    HeaderList(const HeaderList&) = delete;
    HeaderList& operator=(const HeaderList&) = delete;

    void add(const std::string& line) {
        curl_slist* longer = curl_slist_append(list_, line.c_str());
        if (longer == nullptr) throw std::bad_alloc();
        list_ = longer;
    }
    curl_slist* get() const { return list_; }

  private:
    curl_slist* list_ = nullptr;
};

// A value with a line break would begin a header of its own.
bool isOneLine(std::string_view text) { return text.find_first_of(std::string_view("\r\n\0", 3)) == text.npos; }

void fill(HeaderList& list, const HttpRequest& request, const std::string& host) {
    const auto add = [&](const std::string& name, const std::string& value) {
        if (!isOneLine(name) || !isOneLine(value)) throw HttpError(Kind::badRequest, host);
        list.add(name + ": " + value);
    };
    for (const auto& [name, value] : request.headers) add(name, value);
    if (request.bearer) add("Authorization", "Bearer " + request.bearer->reveal());
    list.add("Expect:"); // no waiting for an interim answer before the body
}

}

HttpError::HttpError(Kind k, std::string h) : std::runtime_error(describe(k, h)), kind(k), host(std::move(h)) {}

struct HttpClient::Session {
    using Easy = std::unique_ptr<CURL, decltype(&curl_easy_cleanup)>;
    using Multi = std::unique_ptr<CURLM, decltype(&curl_multi_cleanup)>;

    HttpLimits limits;
    SteadyNow now;
    Multi multi{nullptr, curl_multi_cleanup}; // keeps the connection
    Easy easy{nullptr, curl_easy_cleanup};

    Session(const HttpLimits& l, SteadyNow n) : limits(l), now(std::move(n)) {
        initialiseOnce();
        multi.reset(curl_multi_init());
        easy.reset(curl_easy_init());
        if (!multi || !easy) throw std::bad_alloc();
    }

    template <class Value>
    void set(CURLoption option, Value value) {
        curl_easy_setopt(easy.get(), option, value);
    }

    void prepare(const HttpRequest& request, const Url& url, const HeaderList& headers) {
        curl_easy_reset(easy.get());
        set(CURLOPT_URL, request.url.c_str());
        set(CURLOPT_PROTOCOLS_STR, "http,https");
        set(CURLOPT_FOLLOWLOCATION, 0L);
        set(CURLOPT_NOSIGNAL, 1L);
        set(CURLOPT_QUICK_EXIT, 1L); // giving up does not wait for the name look-up
        set(CURLOPT_ACCEPT_ENCODING, "gzip");
        set(CURLOPT_USERAGENT, "DravelKit (gzip)"); // Google compresses for those alone who say so here, too
        set(CURLOPT_HTTPHEADER, headers.get());
        if (url.isLoopback() || equalIgnoringCase(url.host, "localhost")) set(CURLOPT_PROXY, "");
        if (request.body) {
            set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body->size()));
            set(CURLOPT_POSTFIELDS, request.body->c_str());
        } else if (request.method == "POST") {
            set(CURLOPT_POSTFIELDSIZE_LARGE, curl_off_t{0});
            set(CURLOPT_POSTFIELDS, "");
        }
        set(CURLOPT_CUSTOMREQUEST, request.method.c_str());
    }

    void observe(Exchange& exchange) {
        set(CURLOPT_HEADERFUNCTION, onHeader);
        set(CURLOPT_HEADERDATA, &exchange);
        set(CURLOPT_WRITEFUNCTION, onBody);
        set(CURLOPT_WRITEDATA, &exchange);
        set(CURLOPT_XFERINFOFUNCTION, onProgress);
        set(CURLOPT_XFERINFODATA, &exchange);
        set(CURLOPT_NOPROGRESS, 0L);
        set(CURLOPT_PREREQFUNCTION, beforeRequest);
        set(CURLOPT_PREREQDATA, &exchange);
    }

    std::optional<CURLcode> finished() {
        int left = 0;
        const CURLMsg* message = curl_multi_info_read(multi.get(), &left);
        if (message == nullptr || message->msg != CURLMSG_DONE) return std::nullopt;
        return message->data.result;
    }

    // Drives the transfer to its end. None when it ended well.
    std::optional<Kind> drive(const Exchange& exchange, const std::stop_token& stop) {
        const Point start = now();
        Point lastByte = start;
        curl_off_t moved = 0;
        for (;;) {
            int running = 0;
            if (curl_multi_perform(multi.get(), &running) != CURLM_OK) return Kind::failed;
            if (exchange.failure) return exchange.failure;
            if (const auto code = finished()) {
                if (*code != CURLE_OK) return kindOf(*code);
                return exchange.headWhole ? std::nullopt : std::optional(Kind::lost);
            }
            if (stop.stop_requested()) return Kind::cancelled;
            const Point moment = now();
            if (std::exchange(moved, exchange.moved) != exchange.moved) lastByte = moment;
            if (moment - lastByte >= limits.silence || moment - start >= limits.exchange) return Kind::timedOut;
            const auto left = std::min(lastByte + limits.silence, start + limits.exchange) - moment;
            const auto wait = std::min<std::chrono::milliseconds>(std::chrono::ceil<std::chrono::milliseconds>(left),
                                                                  std::chrono::seconds(1));
            curl_multi_poll(multi.get(), nullptr, 0, static_cast<int>(wait.count()), nullptr);
        }
    }
};

HttpClient::HttpClient(HttpLimits limits, SteadyNow now)
    : session_(std::make_unique<Session>(limits, std::move(now))) {}
HttpClient::~HttpClient() = default;
HttpClient::HttpClient(HttpClient&&) noexcept = default;
HttpClient& HttpClient::operator=(HttpClient&&) noexcept = default;

HttpResponse HttpClient::send(const HttpRequest& request, const std::stop_token& stop, const BodySink& sink) {
    const auto url = Url::parse(request.url);
    if (!url || !isOneLine(request.method)) throw HttpError(Kind::badRequest, url ? url->host : "?");
    HeaderList headers;
    fill(headers, request, url->host);
    Exchange exchange{.limits = session_->limits, .sink = sink, .response = {}, .failure = {}};
    session_->prepare(request, *url, headers);
    session_->observe(exchange);

    CURLM* const multi = session_->multi.get();
    CURL* const easy = session_->easy.get();
    if (curl_multi_add_handle(multi, easy) != CURLM_OK) throw HttpError(Kind::failed, url->host);
    std::optional<Kind> failure;
    {
        const std::stop_callback wake(stop, [multi] { curl_multi_wakeup(multi); });
        failure = session_->drive(exchange, stop);
    }
    long status = 0;
    curl_off_t seconds = 0;
    curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
    curl_easy_getinfo(easy, CURLINFO_RETRY_AFTER, &seconds);
    const char* contentType = nullptr;
    curl_easy_getinfo(easy, CURLINFO_CONTENT_TYPE, &contentType);
    if (contentType != nullptr) exchange.response.contentType = contentType; // libcurl's own dies with the request
    curl_multi_remove_handle(multi, easy);
    curl_easy_reset(easy); // nothing of this request, its headers least of all, stays behind
    if (exchange.thrown) std::rethrow_exception(exchange.thrown);
    if (failure) throw HttpError(*failure, url->host);
    exchange.response.status = static_cast<int>(status);
    if (seconds > 0 || asksForNoWait(easy)) exchange.response.retryAfter = std::chrono::seconds(seconds);
    return std::move(exchange.response);
}

}
