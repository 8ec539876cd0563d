#include "DravelKit/Net/HttpClient.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>

using namespace dravel;
using namespace std::chrono_literals;
using tacla::testing::LoopbackServer;
using Kind = HttpError::Kind;
using Then = LoopbackServer::Then;

namespace {

HttpRequest get(const std::string& url) {
    return {.method = "GET", .url = url, .headers = {}, .bearer = {}, .body = {}};
}

// What became of a request: "200", or the French reason why there is no answer.
std::string outcome(HttpClient& client, const HttpRequest& request, std::stop_token stop = {}) {
    try {
        return std::to_string(client.send(request, stop).status);
    } catch (const HttpError& error) {
        return error.description();
    }
}

// A clock that each look at it moves on.
struct LeapingClock {
    std::chrono::steady_clock::time_point time;
    std::chrono::seconds leap;
    std::function<void()> look = [] {};

    HttpClient::SteadyNow reader() {
        return [this] {
            look();
            return time += leap;
        };
    }
};

}

TEST(HttpClient, SaysInFrenchWhyThereIsNoAnswer) {
    const std::string longHeader(300'000, 'x');
    struct {
        const char* fault;
        LoopbackServer::Answer answer;
        std::string expected;
    } const table[] = {
        {"cut body",
         {"HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc", Then::close},
         "Connexion perdue avec 127.0.0.1"},
        {"cut chunk",
         {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nA\r\nabc", Then::close},
         "Connexion perdue avec 127.0.0.1"},
        {"cut head", {"HTTP/1.1 200 OK\r\nContent-Le", Then::close}, "Connexion perdue avec 127.0.0.1"},
        {"closed", {"", Then::close}, "Connexion perdue avec 127.0.0.1"},
        {"reset", {"", Then::reset}, "Connexion perdue avec 127.0.0.1"},
        {"no HTTP", {"220 mail.example ESMTP\r\n", Then::close}, "Connexion perdue avec 127.0.0.1"},
        {"bad compression",
         {"HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Length: 3\r\n\r\nabc", Then::close},
         "Connexion perdue avec 127.0.0.1"},
        {"too long", LoopbackServer::answer(200, "12345678901"), "Réponse trop longue de 127.0.0.1"},
        {"just right", LoopbackServer::answer(200, "1234567890"), "200"},
        {"endless, in chunks",
         {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n6\r\nabcdef\r\n6\r\nabcdef\r\n", Then::hang},
         "Réponse trop longue de 127.0.0.1"},
        {"endless header", LoopbackServer::answer(200, "", "X: " + longHeader + "\r\n"),
         "Échec de la requête à 127.0.0.1"},
    };
    for (const auto& row : table) {
        SCOPED_TRACE(row.fault);
        LoopbackServer server({row.answer});
        HttpClient client({.answer = 10});
        EXPECT_EQ(outcome(client, get(server.base())), row.expected);
    }
}

TEST(HttpClient, SaysWhenNobodyListens) {
    std::string base;
    { base = LoopbackServer({}).base(); }
    HttpClient client;
    EXPECT_EQ(outcome(client, get(base)), "Connexion impossible à 127.0.0.1");
}

TEST(HttpClient, PoursABodyIntoTheSinkWithinTheLimit) {
    LoopbackServer server({LoopbackServer::answer(404, "non"), LoopbackServer::answer(200, "1234567890"),
                           LoopbackServer::answer(200, "12345678901"), LoopbackServer::answer(200, "1")});
    HttpClient client({.answer = 10});
    std::string poured;
    const auto sink = [&](std::string_view bytes) { poured += bytes; };
    EXPECT_EQ(client.send(get(server.base()), {}, sink).body + poured, "non");
    EXPECT_EQ(client.send(get(server.base()), {}, sink).body + poured, "1234567890");
    EXPECT_THROW(client.send(get(server.base()), {}, sink), HttpError);
    EXPECT_THROW(client.send(get(server.base()), {}, [](auto) { throw 1; }), int);
}

TEST(HttpClient, SendsEachRequestOnceEvenWhenTheKeptConnectionWasClosed) {
    for (const char* method : {"GET", "POST"}) {
        for (const Then then : {Then::close, Then::reset}) {
            LoopbackServer server({LoopbackServer::answer(200, ""), {"", then}, LoopbackServer::answer(200, "")});
            HttpClient client;
            EXPECT_EQ(outcome(client, get(server.base() + "/1")), "200");
            auto second = get(server.base() + "/2");
            second.method = method;
            EXPECT_EQ(outcome(client, second), "Connexion perdue avec 127.0.0.1");
            EXPECT_EQ(server.requests().size(), 2u);
            EXPECT_EQ(outcome(client, get(server.base() + "/3")), "200");
        }
    }
}

TEST(HttpClient, GivesUpAfterAMinuteOfSilence) {
    LoopbackServer server({{"HTTP/1.1 200 OK\r\n", Then::hang}});
    LeapingClock clock{.time = {}, .leap = 31s};
    HttpClient client({}, clock.reader());
    EXPECT_EQ(outcome(client, get(server.base())), "Délai dépassé en attendant la réponse de 127.0.0.1");
}

TEST(HttpClient, GivesUpAfterFiveMinutesOfOneByteASecond) {
    LoopbackServer server({{"HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n", Then::hang}});
    LeapingClock clock{.time = {}, .leap = 1s};
    clock.look = [&, looks = 0]() mutable {
        if (++looks > 3) server.push("x");
    };
    HttpClient client({}, clock.reader());
    EXPECT_EQ(outcome(client, get(server.base())), "Délai dépassé en attendant la réponse de 127.0.0.1");
    EXPECT_GT(clock.time.time_since_epoch(), 290s);
}

TEST(HttpClient, StopsWhenAskedTo) {
    std::stop_source stop;
    LoopbackServer server({{"", Then::hang, [&] { stop.request_stop(); }}, LoopbackServer::answer(200, "")});
    HttpClient client;
    EXPECT_EQ(outcome(client, get(server.base()), stop.get_token()), "Requête interrompue");
    EXPECT_EQ(outcome(client, get(server.base())), "200");
}

TEST(HttpClient, RefusesWhatItCannotSend) {
    LoopbackServer server({});
    HttpClient client;
    for (const char* url : {"", "file:///etc/hostname", "ftp://127.0.0.1/", "127.0.0.1", "http://moi@127.0.0.1/"})
        EXPECT_TRUE(outcome(client, get(url)).starts_with("Requête impossible à envoyer")) << url;
    auto split = get(server.base());
    split.headers = {{"X-Titre", "a\r\nX-Autre: b"}};
    EXPECT_EQ(outcome(client, split), "Requête impossible à envoyer à 127.0.0.1");
    auto token = get(server.base());
    token.bearer = Secret("jeton\nX: y");
    EXPECT_EQ(outcome(client, token), "Requête impossible à envoyer à 127.0.0.1");
    EXPECT_TRUE(server.requests().empty());
}

TEST(HttpClient, TrustsNoCertificateThatNobodyVouchesFor) {
    const tacla::testing::TemporaryFolder folder;
    const auto pem = (folder / "cert.pem").string();
    const std::string make = "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 1 "
                             "-subj /CN=127.0.0.1 -addext subjectAltName=IP:127.0.0.1 -keyout " +
                             pem + " -out " + pem +
                             ".crt 2>&1 && exec openssl s_server -accept 127.0.0.1:0 -www -key " + pem + " -cert " +
                             pem + ".crt 2>&1";
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe(ends.data()), 0);
    const auto child = ::fork();
    if (child == 0) {
        ::dup2(ends[1], 1);
        ::execl("/bin/sh", "sh", "-c", make.c_str(), nullptr);
        ::_exit(127);
    }
    ::close(ends[1]);
    std::FILE* const output = ::fdopen(ends[0], "r");
    int port = 0;
    for (std::array<char, 256> line; port == 0 && std::fgets(line.data(), line.size(), output) != nullptr;)
        [[maybe_unused]] const int read = std::sscanf(line.data(), "ACCEPT 127.0.0.1:%d", &port);
    HttpClient client;
    EXPECT_EQ(outcome(client, get("https://127.0.0.1:" + std::to_string(port))),
              "Connexion non sécurisée avec 127.0.0.1 : requête abandonnée");
    ::kill(child, SIGTERM);
    ::waitpid(child, nullptr, 0);
    std::fclose(output);
}
