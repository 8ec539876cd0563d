#include "DravelKit/Net/HttpClient.h"
#include "DravelKit/Net/Url.h"

#include "tests/support/LoopbackServer.h"
#include "tests/support/Outcome.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>

using namespace dravel;
using namespace std::chrono_literals;
using namespace tacla::testing;
using Then = LoopbackServer::Then;

namespace {

bool contains(const std::string& text, std::string_view part) { return text.find(part) != text.npos; }

// What became of a request: "200", or the French reason why there is no answer.
std::string outcome(HttpClient& client, const HttpRequest& request, std::stop_token stop = {}) {
    return tacla::testing::outcome([&] { return std::to_string(client.send(request, stop).status); });
}

}

TEST(HttpClient, SendsTheRequestAsItIsReadsTheAnswerAsItIsAndKeepsTheConnectionAlone) {
    LoopbackServer server({answered(429, "Trop vite", "Retry-After: 7 \r\nSet-Cookie: suivi=1; Path=/\r\n"),
                           answered(204, ""), answered(200, "trois")});
    const std::string strange("{\"a\":\0}", 7);
    HttpClient client;
    const auto answer = client.send({.method = "PATCH",
                                     .url = server.base() + "/events/a%40b?x=1",
                                     .headers = {{"Content-Type", "application/json"}},
                                     .bearer = Secret("jeton"),
                                     .body = strange});
    EXPECT_EQ(answer.status, 429);
    EXPECT_EQ(answer.body, "Trop vite");
    EXPECT_EQ(answer.retryAfter, std::chrono::seconds(7));
    EXPECT_EQ(client.send({.method = "DELETE", .url = server.base() + "/2"}).status, 204);
    EXPECT_EQ(client.send({.method = "POST", .url = server.base() + "/3", .body = "corps"}).body, "trois");

    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 3u);
    EXPECT_EQ(requests[0].line, "PATCH /events/a%40b?x=1 HTTP/1.1");
    EXPECT_EQ(requests[0].body + "|" + requests[1].body + "|" + requests[2].body, strange + "||corps");
    for (const auto& request : requests) {
        const bool first = &request == &requests[0];
        EXPECT_EQ(request.connection, 1);
        EXPECT_EQ(contains(request.headers, "Content-Type: application/json\r\n"), first);
        EXPECT_EQ(contains(request.headers, "Authorization: Bearer jeton\r\n"), first);
        EXPECT_TRUE(first || !(contains(request.headers, "Cookie") || contains(request.headers, "Authorization")));
    }
}

TEST(HttpClient, NeverFollowsARedirect) {
    LoopbackServer elsewhere({answered(200, "volé")});
    LoopbackServer server({answered(302, "", "Location: " + elsewhere.base() + "/\r\n")});
    HttpClient client;
    EXPECT_EQ(client.send({.url = server.base(), .bearer = Secret("jeton")}).status, 302);
    EXPECT_TRUE(elsewhere.requests().empty());
}

TEST(HttpClient, AsksNoProxyForThisMachine) {
    LoopbackServer proxy({answered(200, "proxy")}), server({answered(200, "direct")});
    ::setenv("http_proxy", proxy.base().c_str(), 1);
    HttpClient client;
    EXPECT_EQ(client.send({.url = server.base()}).body, "direct");
    EXPECT_EQ(HttpClient().send({.url = "http://calendrier.example/"}).body, "proxy");
    ::unsetenv("http_proxy");
}

TEST(HttpClient, SaysInFrenchWhyThereIsNoAnswer) {
    const std::string longHeader(300'000, 'x');
    const std::string lost = "Connexion perdue avec 127.0.0.1", tooLong = "Réponse trop longue de 127.0.0.1";
    const std::string head = "HTTP/1.1 200 OK\r\n", chunked = head + "Transfer-Encoding: chunked\r\n\r\n";
    const struct {
        const char* fault;
        LoopbackServer::Answer answer;
        std::string expected;
    } table[] = {
        {"cut body", {head + "Content-Length: 10\r\n\r\nabc", Then::close}, lost},
        {"cut chunk", {chunked + "A\r\nabc", Then::close}, lost},
        {"trailer", {chunked + "1\r\na\r\n0\r\nX: y\r\n\r\n"}, "200"},
        {"cut head", {head + "Content-Le", Then::close}, lost},
        {"closed", {"", Then::close}, lost},
        {"reset", {"", Then::reset}, lost},
        {"no HTTP", {"220 mail.example ESMTP\r\n", Then::close}, lost},
        {"bad compression", {head + "Content-Encoding: gzip\r\nContent-Length: 3\r\n\r\nabc", Then::close}, lost},
        {"too long", answered(200, "12345678901"), tooLong},
        {"just right", answered(200, "1234567890"), "200"},
        {"endless, in chunks", {chunked + "6\r\nabcdef\r\n6\r\nabcdef\r\n", Then::hang}, tooLong},
        {"endless header", answered(200, "", "X: " + longHeader + "\r\n"), "Échec de la requête à 127.0.0.1"},
    };
    HttpClient client({.answer = 10});
    std::string base;
    for (const auto& row : table) {
        SCOPED_TRACE(row.fault);
        LoopbackServer server({row.answer});
        base = server.base();
        EXPECT_EQ(outcome(client, {.url = base}), row.expected);
    }
    EXPECT_EQ(outcome(client, {.url = base}), "Connexion impossible à 127.0.0.1") << "nobody listens any more";
}

TEST(HttpClient, PoursABodyIntoTheSinkWithinTheLimit) {
    LoopbackServer server(
        {answered(404, "non"), answered(200, "1234567890"), answered(200, "12345678901"), answered(200, "1")});
    HttpClient client({.answer = 10});
    const HttpRequest request{.url = server.base()};
    std::string poured;
    const auto sink = [&](std::string_view bytes) { poured += bytes; };
    EXPECT_EQ(client.send(request, {}, sink).body + poured, "non");
    EXPECT_EQ(client.send(request, {}, sink).body + poured, "1234567890");
    EXPECT_THROW(client.send(request, {}, sink), HttpError);
    EXPECT_THROW(client.send(request, {}, [](auto) { throw 1; }), int);
}

TEST(HttpClient, SendsEachRequestOnceEvenWhenTheKeptConnectionWasClosed) {
    for (const char* method : {"GET", "POST"}) {
        for (const Then then : {Then::close, Then::reset}) {
            LoopbackServer server({answered(200, ""), {"", then}, answered(200, "")});
            HttpClient client;
            EXPECT_EQ(outcome(client, {.url = server.base() + "/1"}), "200");
            EXPECT_EQ(outcome(client, {.method = method, .url = server.base() + "/2"}),
                      "Connexion perdue avec 127.0.0.1");
            EXPECT_EQ(server.requests().size(), 2u);
            EXPECT_EQ(outcome(client, {.url = server.base() + "/3"}), "200");
        }
    }
}

// Each look at the clock moves it on.
TEST(HttpClient, GivesUpAfterAMinuteOfSilenceAndAfterFiveMinutesOfOneByteAfterTheOther) {
    for (const auto& [then, leap] : {std::pair{Then::hang, 31s}, {Then::drip, 1s}}) {
        LoopbackServer server({{"HTTP/1.1 200 OK\r\n\r\n", then}});
        std::chrono::steady_clock::time_point time;
        HttpClient client({}, [&, leap = leap] { return time += leap; });
        EXPECT_EQ(outcome(client, {.url = server.base()}), "Délai dépassé en attendant la réponse de 127.0.0.1");
        EXPECT_EQ(time.time_since_epoch() > 290s, then == Then::drip);
    }
}

TEST(HttpClient, StopsWhenAskedTo) {
    std::stop_source stop;
    LoopbackServer server({{"", Then::hang, [&] { stop.request_stop(); }}, answered(200, "")});
    HttpClient client;
    EXPECT_EQ(outcome(client, {.url = server.base()}, stop.get_token()), "Requête interrompue");
    EXPECT_EQ(outcome(client, {.url = server.base()}), "200");
}

TEST(HttpClient, RefusesWhatItCannotSend) {
    LoopbackServer server({});
    HttpClient client;
    for (const char* url : {"", "file:///etc/hostname", "ftp://127.0.0.1/", "127.0.0.1", "http://moi@127.0.0.1/"})
        EXPECT_TRUE(outcome(client, {.url = url}).starts_with("Requête impossible à envoyer")) << url;
    for (const auto& request : {HttpRequest{.url = server.base(), .headers = {{"X-Titre", "a\r\nX-Autre: b"}}},
                                HttpRequest{.url = server.base(), .bearer = Secret("jeton\nX: y")}})
        EXPECT_EQ(outcome(client, request), "Requête impossible à envoyer à 127.0.0.1");
    EXPECT_TRUE(server.requests().empty());
}

TEST(HttpClient, TrustsNoCertificateThatNobodyVouchesFor) {
    const TemporaryFolder folder;
    const std::string serve = "cd " + folder.path().string() + R"(; openssl req -x509 -newkey ec -nodes -days 1 \
        -pkeyopt ec_paramgen_curve:prime256v1 -subj /CN=127.0.0.1 -addext subjectAltName=IP:127.0.0.1 \
        -keyout key -out cert 2>/dev/null && \
        exec openssl s_server -accept 127.0.0.1:0 -naccept 1 -www -key key -cert cert 2>&1)";
    std::FILE* const output = ::popen(serve.c_str(), "r");
    int port = 0;
    for (std::array<char, 256> line; port == 0 && std::fgets(line.data(), line.size(), output) != nullptr;)
        if (std::sscanf(line.data(), "ACCEPT 127.0.0.1:%d", &port) == 1) break;
    HttpClient client;
    EXPECT_EQ(outcome(client, {.url = "https://127.0.0.1:" + std::to_string(port)}),
              "Connexion non sécurisée avec 127.0.0.1 : requête abandonnée");
    ::pclose(output);
}

TEST(Url, EncodesEverythingButLettersDigitsAndFourMarks) {
    EXPECT_EQ(percentEncoded("AZaz09-._~@#/ +é%"), "AZaz09-._~%40%23%2F%20%2B%C3%A9%25");
    EXPECT_EQ(percentEncoded(std::string_view("a\0b", 3).substr(1)) + percentEncoded(""), "%00b");
    EXPECT_EQ(encodedItems({{"scope", "https://a/b c"}, {"tacla", "1=1&2"}}),
              "scope=https%3A%2F%2Fa%2Fb%20c&tacla=1%3D1%262");
}

TEST(Url, DecodesWhatABrowserSends) {
    using Items = QueryItems;
    EXPECT_EQ(decodedItems("code=4%2F0A+b&state=x=y"), (Items{{"code", "4/0A+b"}, {"state", "x=y"}}));
    EXPECT_EQ(decodedItems("&&error&%63ode=%"), (Items{{"error", ""}, {"code", "%"}}));
    EXPECT_EQ(decodedItems("a=%4&b=%zz&c=%c3%a9"), (Items{{"a", "%4"}, {"b", "%zz"}, {"c", "é"}}));
    EXPECT_EQ(decodedItems(""), Items{});
}
