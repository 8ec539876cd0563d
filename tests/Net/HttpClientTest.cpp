#include "DravelKit/Net/HttpClient.h"

#include "tests/support/LoopbackServer.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>

using namespace dravel;
using tacla::testing::LoopbackServer;

namespace {

HttpRequest get(const std::string& url) {
    return {.method = "GET", .url = url, .headers = {}, .bearer = {}, .body = {}};
}

bool contains(const std::string& text, std::string_view part) { return text.find(part) != text.npos; }

}

TEST(HttpClient, SendsTheRequestAsItIsAndReadsTheAnswerAsItIs) {
    LoopbackServer server({LoopbackServer::answer(429, "Trop vite", "Retry-After: 7 \r\n")});
    HttpClient client;
    const auto answer = client.send({.method = "PATCH",
                                     .url = server.base() + "/events/a%40b?x=1",
                                     .headers = {{"Content-Type", "application/json"}},
                                     .bearer = Secret("jeton"),
                                     .body = std::string("{\"a\":\0}", 7)});
    EXPECT_EQ(answer.status, 429);
    EXPECT_EQ(answer.body, "Trop vite");
    EXPECT_EQ(answer.retryAfter, std::chrono::seconds(7));

    const auto request = server.requests().at(0);
    EXPECT_EQ(request.line, "PATCH /events/a%40b?x=1 HTTP/1.1");
    EXPECT_TRUE(contains(request.headers, "Content-Type: application/json\r\n"));
    EXPECT_TRUE(contains(request.headers, "Authorization: Bearer jeton\r\n"));
    EXPECT_EQ(request.body, std::string("{\"a\":\0}", 7));
}

TEST(HttpClient, KeepsOneConnectionAndNothingElseBetweenRequests) {
    LoopbackServer server({LoopbackServer::answer(200, "un", "Set-Cookie: suivi=1; Path=/\r\n"),
                           LoopbackServer::answer(204, ""), LoopbackServer::answer(200, "trois")});
    HttpClient client;
    auto first = get(server.base() + "/1");
    first.bearer = Secret("jeton");
    EXPECT_EQ(client.send(first).body, "un");
    EXPECT_EQ(
        client.send({.method = "DELETE", .url = server.base() + "/2", .headers = {}, .bearer = {}, .body = {}}).status,
        204);
    EXPECT_EQ(
        client.send({.method = "POST", .url = server.base() + "/3", .headers = {}, .bearer = {}, .body = "corps"}).body,
        "trois");
    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 3u);
    for (const auto& request : requests) EXPECT_EQ(request.connection, 1);
    for (const auto& later : {requests[1], requests[2]}) {
        EXPECT_FALSE(contains(later.headers, "Cookie"));
        EXPECT_FALSE(contains(later.headers, "Authorization"));
    }
    EXPECT_EQ(requests[1].body, "");
    EXPECT_EQ(requests[2].body, "corps");
}

TEST(HttpClient, NeverFollowsARedirect) {
    LoopbackServer elsewhere({LoopbackServer::answer(200, "volé")});
    LoopbackServer server({LoopbackServer::answer(302, "", "Location: " + elsewhere.base() + "/\r\n")});
    HttpClient client;
    auto request = get(server.base());
    request.bearer = Secret("jeton");
    EXPECT_EQ(client.send(request).status, 302);
    EXPECT_TRUE(elsewhere.requests().empty());
}

TEST(HttpClient, UnpacksACompressedAnswer) {
    const std::string packed("\x1f\x8b\x08\0\0\0\0\0\x02\x03K\xca\xcf\xcb\xca/-\x02\0\xc8\xf0\xb6\xa5\x07\0\0\0", 27);
    LoopbackServer server({LoopbackServer::answer(200, packed, "Content-Encoding: gzip\r\n")});
    HttpClient client;
    EXPECT_EQ(client.send(get(server.base())).body, "bonjour");
}

TEST(HttpClient, AsksNoProxyForThisMachine) {
    LoopbackServer proxy({LoopbackServer::answer(200, "proxy")}), server({LoopbackServer::answer(200, "direct")});
    ::setenv("http_proxy", proxy.base().c_str(), 1);
    HttpClient client;
    EXPECT_EQ(client.send(get(server.base())).body, "direct");
    HttpClient other;
    EXPECT_EQ(other.send(get("http://calendrier.example/")).body, "proxy");
    ::unsetenv("http_proxy");
    EXPECT_EQ(proxy.requests().at(0).line, "GET http://calendrier.example/ HTTP/1.1");
}

TEST(HttpClient, PrintsASecretAsAnEllipsis) {
    std::ostringstream out;
    out << Secret("jeton");
    EXPECT_EQ(out.str(), "…");
}
