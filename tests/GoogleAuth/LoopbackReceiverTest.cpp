#include "DravelKit/GoogleAuth/LoopbackReceiver.h"

#include "DravelKit/GoogleAuth/AuthError.h"
#include "DravelKit/GoogleAuth/CallbackPage.h"
#include "tests/GoogleAuth/Loopback.h"

#include <gtest/gtest.h>

#include <vector>

using namespace dravel;
using namespace std::chrono_literals;
using tacla::testing::essai;
using tacla::testing::IdleClock;
using tacla::testing::Visit;

namespace {

constexpr std::string_view callback = "GET /?state=s&code=c HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n";
constexpr std::string_view notFound = "HTTP/1.1 404 Not Found\r\nContent-Type: text/html; charset=utf-8\r\n"
                                      "Content-Length: 0\r\nConnection: close\r\n\r\n";
const std::map<std::string, std::string> expected{{"code", "c"}, {"state", "s"}};

struct Reception : testing::Test {
    IdleClock clock;
    LoopbackReceiver receiver{essai(), clock.reader()};

    Visit visit(std::string_view bytes = "") { return Visit(receiver.port(), bytes); }
    auto wait(std::stop_token stop = {}) { return receiver.waitForCallback(300s, stop); }
};

}

TEST_F(Reception, AnswersTheCallbackWithThePageAndStopsListening) {
    auto browser = visit(callback); // before anybody waits
    EXPECT_EQ(wait(), expected);
    const auto page = CallbackPage::success(essai());
    EXPECT_EQ(browser.answer(), "HTTP/1.1 200 OK\r\nContent-Type: text/html; charset=utf-8\r\nContent-Length: " +
                                    std::to_string(page.size()) + "\r\nConnection: close\r\n\r\n" + page);
    EXPECT_FALSE(visit().connected());
}

TEST_F(Reception, ShowsTheFailureAndStillHandsOverTheQuery) {
    auto browser = visit("GET /?error=access_denied&state=s HTTP/1.1\r\n\r\n");
    EXPECT_EQ(wait(), (std::map<std::string, std::string>{{"error", "access_denied"}, {"state", "s"}}));
    EXPECT_TRUE(browser.answer().ends_with(CallbackPage::failure("access_denied", essai())));
}

TEST_F(Reception, IsReachedAtOneAddressOnly) {
    EXPECT_TRUE(visit().connected());
    EXPECT_FALSE(Visit(receiver.port(), "", "127.0.0.2").connected());
}

TEST_F(Reception, WaitsOnAfterEverythingThatIsNotTheCallback) {
    auto icon = visit("GET /favicon.ico HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
    auto stranger = visit("GET /?code=volé&state=s HTTP/1.1\r\nHost: pirate.example\r\n\r\n");
    auto half = visit("GET /?code=moitié&state=");
    half.finish();
    auto garbage = visit();
    EXPECT_GT(garbage.say(std::string(std::size_t{1} << 20, '\xff')), 16u << 10);
    auto gone = std::make_unique<Visit>(visit("GET /?co"));
    gone.reset();
    auto slow = visit("GET /?state=s&code=c HTTP/1.1\r\nHo"); // the rest does not come: served after five seconds
    EXPECT_EQ(wait(), expected);
    for (auto* other : {&icon, &stranger, &half}) EXPECT_EQ(other->answer(), notFound);
    EXPECT_EQ(clock.elapsed(), 5s);
}

TEST_F(Reception, ReadsARequestThatComesInPieces) {
    std::unique_ptr<Visit> browser;
    std::size_t sent = 0;
    auto pieces = clock.reader();
    pieces.wait = [&, wait = pieces.wait](std::span<pollfd> polled, std::chrono::milliseconds time) {
        if (const int ready = wait(polled, 0ms)) return ready;
        browser->say(callback.substr(sent, 7));
        sent = std::min(sent + 7, callback.size());
        return wait(polled, time);
    };
    LoopbackReceiver other(essai(), pieces);
    browser = std::make_unique<Visit>(other.port());
    EXPECT_EQ(other.waitForCallback(300s), expected);
}

TEST_F(Reception, IsNotHeldUpByHundredIdleConnections) {
    std::vector<Visit> idle;
    for (int i = 0; i < 50; ++i) idle.push_back(visit());
    auto browser = visit(callback);
    for (int i = 0; i < 50; ++i) idle.push_back(visit());
    EXPECT_EQ(wait(), expected);
    EXPECT_EQ(clock.elapsed(), 0s);
}

TEST_F(Reception, GivesUpAfterFiveMinutes) {
    auto idle = visit();
    try {
        wait();
        FAIL() << "a callback from nowhere";
    } catch (const AuthError& error) {
        EXPECT_EQ(error.description(), "Connexion Google échouée : délai dépassé");
    }
    EXPECT_EQ(clock.elapsed(), 300s);
    EXPECT_FALSE(visit().connected());
    EXPECT_EQ(idle.answer(), "");
}

TEST_F(Reception, StopsWhenAskedTo) {
    std::stop_source stop;
    auto reader = ReceiverClock{}; // really asleep, until the token wakes it
    reader.wait = [&](std::span<pollfd> polled, std::chrono::milliseconds time) {
        stop.request_stop();
        return ReceiverClock::pollDescriptors(polled, time);
    };
    LoopbackReceiver other(essai(), reader);
    try {
        other.waitForCallback(300s, stop.get_token());
        FAIL() << "a callback from nowhere";
    } catch (const AuthError& error) {
        EXPECT_EQ(error.kind, AuthError::Kind::cancelled);
    }
}
