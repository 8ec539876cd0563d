#include "DravelKit/GoogleAuth/LoopbackReceiver.h"
#include "DravelKit/GoogleAuth/OAuthClient.h"

#include "tests/GoogleAuth/Loopback.h"
#include "tests/support/TemporaryFolder.h"

#include <cstdlib>
#include <vector>

using namespace dravel;
using namespace std::chrono_literals;
using namespace tacla::testing;

namespace {

// "code=… state=…" of a callback, "404" of another request, "?" of what is no request yet.
std::string read(std::string_view bytes) {
    const auto request = CallbackRequest::parse(bytes);
    if (!request) return "?";
    if (!request->isCallback()) return "404";
    std::string items;
    for (const auto& [name, value] : request->query) items += (items.empty() ? "" : " ") + name + "=" + value;
    return items;
}

constexpr std::string_view callback = "GET /?state=s&code=c HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n";
constexpr std::string_view notFound = "HTTP/1.1 404 Not Found\r\nContent-Type: text/html; charset=utf-8\r\n"
                                      "Content-Length: 0\r\nConnection: close\r\n\r\n";
const std::map<std::string, std::string> expected{{"code", "c"}, {"state", "s"}};

struct Receiver : testing::Test {
    IdleClock clock;
    LoopbackReceiver receiver{essai(), clock.reader()};

    Connection connect(std::string_view bytes = "") { return Connection(receiver.port(), bytes); }
    auto wait() { return receiver.waitForCallback(300s, {}); }
};

}

TEST(CallbackPage, SaysWhyItIsNotAndLoadsNothingFromElsewhere) {
    const auto refusal = CallbackPage::failure("<script>\"a\" & b</script>", essai());
    EXPECT_NE(refusal.find("<p>Google a répondu : <code>&lt;script&gt;&quot;a&quot; &amp; b&lt;/script&gt;</code>. "
                           "Relancez « Se connecter à Google… » depuis les réglages d'Essai quand vous voulez.</p>"),
              refusal.npos);
    for (const auto& page : {CallbackPage::success(essai()), refusal})
        for (const auto* elsewhere : {"http", "src=", "href=", "url(", "@import"})
            EXPECT_EQ(page.find(elsewhere), page.npos) << elsewhere;
}

TEST(CallbackRequest, ReadsTheQueryOfTheRequestLine) {
    const struct {
        std::string_view bytes, expected;
    } table[] = {
        {"GET /?state=s&code=4%2F0Ab&scope=a%20b HTTP/1.1\r\n\r\n", "code=4/0Ab scope=a b state=s"},
        {"GET /?error=access_denied&state=s HTTP/1.1\r\n\r\n", "error=access_denied state=s"},
        {"GET /n/importe/quoi?code HTTP/1.0\n\n", "code="},
        {"GET /?code=a&code=b HTTP/1.1\r\n\r\n", "code=a"},
        {"GET /?code=a+b#error=c HTTP/1.1\r\n\r\n", "code=a+b"},
        {"GET /?code=%C3%A9&x=%FF HTTP/1.1\r\n\r\n", "code=é"},
        {"GET /favicon.ico HTTP/1.1\r\n\r\n", "404"},
        {"GET / HTTP/1.1\r\nReferer: /?code=a\r\n\r\n", "404"},
        {"GET /?code=a HT", "?"},
        {"GET /?code=a\r\n\r\n", "?"},
        {"GET /?code=a b HTTP/1.1\r\n\r\n", "?"},
        {"\x16\x03\x01\x02\x01\n\x01", "?"},
    };
    for (const auto& row : table) EXPECT_EQ(read(row.bytes), row.expected) << row.bytes;
}

TEST(CallbackRequest, IsForUsWhenItIsAVisitOfThisMachine) {
    const auto withHost = [](const std::string& headers) {
        return read("GET /?code=a HTTP/1.1\r\n" + headers + "\r\n");
    };
    for (const auto* headers : {"", "Host: 127.0.0.1\r\n", "Host: 127.0.0.1:41234\r\n", "HOST:LocalHost:80\r\n",
                                "Accept: */*\r\nhost: localhost\r\n", "X-Host: example.org\r\n",
                                "Sec-Fetch-Dest: document\r\n", "sec-fetch-dest:document \r\nHost: localhost\r\n"})
        EXPECT_EQ(withHost(headers), "code=a") << headers;
    for (const auto* headers :
         {"Host: example.org\r\n", "Host: 127.0.0.1.example.org\r\n", "Host: 127.0.0.1:80.org\r\n", "Host: [::1]\r\n",
          "Host:\r\n", "Host: localhost\r\nHost: example.org\r\n", "Sec-Fetch-Dest: image\r\n",
          "SEC-FETCH-DEST: iframe\r\n", "Sec-Fetch-Dest:\r\n", "Host: 127.0.0.1\r\nSec-Fetch-Dest: empty\r\n"})
        EXPECT_EQ(withHost(headers), "404") << headers;
}

TEST_F(Receiver, AnswersTheCallbackAtOneAddressWithThePageAndStopsListening) {
    EXPECT_FALSE(Connection(receiver.port(), "", "127.0.0.2").connected());
    auto browser = connect(callback); // before anybody waits
    EXPECT_EQ(wait(), expected);
    const auto page = CallbackPage::success(essai());
    EXPECT_EQ(browser.answer(), "HTTP/1.1 200 OK\r\nContent-Type: text/html; charset=utf-8\r\nContent-Length: " +
                                    std::to_string(page.size()) + "\r\nConnection: close\r\n\r\n" + page);
    EXPECT_FALSE(connect().connected());
}

TEST_F(Receiver, WaitsOnAfterEverythingThatIsNotTheCallback) {
    auto icon = connect("GET /favicon.ico HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
    auto stranger = connect("GET /?code=volé&state=s HTTP/1.1\r\nHost: pirate.example\r\n\r\n");
    auto half = connect("GET /?code=moitié&state=");
    half.finish();
    auto garbage = connect();
    EXPECT_GT(garbage.send(std::string(std::size_t{1} << 20, '\xff')), 16u << 10);
    auto gone = std::make_unique<Connection>(connect("GET /?co"));
    gone.reset();
    auto slow = connect("GET /?state=s&code=c HTTP/1.1\r\nHo"); // the rest does not come: served after five seconds
    EXPECT_EQ(wait(), expected);
    for (auto* other : {&icon, &stranger, &half}) EXPECT_EQ(other->answer(), notFound);
    EXPECT_EQ(clock.elapsed(), 5s);
}

TEST_F(Receiver, ReadsARequestThatComesInPieces) {
    std::unique_ptr<Connection> browser;
    std::size_t sent = 0;
    auto pieces = clock.reader();
    pieces.wait = [&, wait = pieces.wait](std::span<pollfd> polled, std::chrono::milliseconds time) {
        if (const int ready = wait(polled, 0ms)) return ready;
        browser->send(callback.substr(sent, 7));
        sent = std::min(sent + 7, callback.size());
        return wait(polled, time);
    };
    LoopbackReceiver other(essai(), pieces);
    browser = std::make_unique<Connection>(other.port());
    EXPECT_EQ(other.waitForCallback(300s), expected);
}

TEST_F(Receiver, IsNotHeldUpByHundredIdleConnections) {
    std::vector<Connection> idle;
    for (int i = 0; i < 100; ++i) idle.push_back(connect(i == 50 ? callback : ""));
    EXPECT_EQ(wait(), expected);
    EXPECT_EQ(clock.elapsed(), 0s);
}

TEST_F(Receiver, StopsWhenAskedTo) {
    std::stop_source stop;
    auto reader = ReceiverClock{}; // really asleep, until the token wakes it
    reader.wait = [&](std::span<pollfd> polled, std::chrono::milliseconds time) {
        stop.request_stop();
        return ReceiverClock::pollDescriptors(polled, time);
    };
    LoopbackReceiver other(essai(), reader);
    EXPECT_EQ(outcome([&] { other.waitForCallback(300s, stop.get_token()); }), "Connexion Google interrompue");
}

TEST(GoogleEndpoints, AreGooglesOwnUnlessTheEnvironmentNamesAServerOfThisMachine) {
    const auto endpoints = [] { return GoogleEndpoints::fromEnvironment("TACLA_GOOGLE_BASE"); };
    EXPECT_EQ(endpoints().token, "https://oauth2.googleapis.com/token");
    const auto endpointsAt = [&](const char* base) {
        ::setenv("TACLA_GOOGLE_BASE", base, 1);
        return outcome(
            [&] { return endpoints().authorization + " " + endpoints().token + " " + endpoints().calendar; });
    };
    EXPECT_EQ(endpointsAt("http://127.0.0.1:8765"),
              "http://127.0.0.1:8765/o/oauth2/v2/auth http://127.0.0.1:8765/token http://127.0.0.1:8765/calendar/v3");
    EXPECT_EQ(endpointsAt("http://[::1]:8765/"),
              "http://[::1]:8765/o/oauth2/v2/auth http://[::1]:8765/token http://[::1]:8765/calendar/v3");
    for (const auto* base : {"", "127.0.0.1:8765", "http://localhost:8765", "http://example.org", "ftp://127.0.0.1/",
                             "http://127.0.0.1.example.org", "http://127.0.0.1@example.org", "http://127.0.0.1:1/x",
                             "http://127.0.0.1?x", "http:/127.0.0.1", "http://0.0.0.0:8765", "http://127.0.0.2",
                             "http://[::2]", "http://127.0.0.1:x", "http://127.0.0.1:99999"})
        EXPECT_EQ(endpointsAt(base),
                  "TACLA_GOOGLE_BASE refusée : seules les adresses http://127.0.0.1 et http://[::1] sont permises")
            << base;
    ::unsetenv("TACLA_GOOGLE_BASE");
}

// A client file of the user's own or of the package, and what can be read of it.
TEST(OAuthClient, TakesTheUsersFileBeforeThePackages) {
    const TemporaryFolder folder;
    const GoogleFolders folders{.data = folder / "data", .resources = folder / "share", .locks = folder / "locks"};
    using Source = OAuthClient::Source;
    const auto source = [&] { return OAuthClient::source(essai(), folders); };
    const auto install = [&](const std::string& bytes) {
        writeBytes(folder / "download.json", bytes);
        return outcome([&] { OAuthClient::install(essai(), folders, folder / "download.json"); });
    };
    const auto load = [&] { return outcome([&] { return OAuthClient::load(essai(), folders).clientID; }); };
    const auto own = folder / "data/Essai/client.json";
    const std::string unreadable = "Client Google illisible (attendu : client OAuth « Application de bureau »)";
    std::filesystem::create_directories(folders.data);
    std::filesystem::create_directories(folders.resources);
    EXPECT_EQ(load(), "Client Google absent de cette version de l'app");
    EXPECT_EQ(source(), Source::missing);

    writeBytes(folder / "share/google-client.json", R"({"installed": {"client_id": "package", "client_secret": "s"}})");
    EXPECT_EQ(load(), "package");
    EXPECT_EQ(source(), Source::package);

    const std::string user = R"({"installed": {"client_id": "user", "client_secret": "s", "redirect_uris": []}})";
    const auto endless = user + std::string(std::size_t{1} << 20, ' ');
    EXPECT_EQ(install(user), "");
    EXPECT_EQ(load(), "user");
    EXPECT_EQ(source(), Source::own);
    for (const std::string bytes :
         {"", "[]", "{}", R"({"web": {"client_id": "id", "client_secret": "secret"}})", R"({"installed": "id"})",
          R"({"installed": {"client_id": "id"}})", R"({"installed": {"client_id": 1, "client_secret": "secret"}})",
          R"({"installed": {"client_id": "id", "client_secret": null}})", "{\"installed\": {\"client_id\": \"\xff\"}",
          endless.c_str()}) {
        EXPECT_EQ(install(bytes), unreadable) << bytes.substr(0, 100);
        EXPECT_EQ(load(), "user") << "what was there stays";
        writeBytes(own, bytes);
        std::filesystem::permissions(own, std::filesystem::perms(0644));
        EXPECT_EQ(load(), unreadable);
        EXPECT_EQ(source(), Source::unreadable);
        EXPECT_EQ(install(user), "");
        EXPECT_EQ(std::filesystem::status(own).permissions(), std::filesystem::perms(0600));
    }
}

TEST(TokenAnswer, NestsNoDeeperThanAnybodyNeedsAndLastsNoLongerThanAYear) {
    const auto nested = [](std::size_t depth, const std::string& open, const std::string& close) {
        std::string brackets = "1";
        for (std::size_t i = 0; i < depth; ++i) brackets = open + brackets + close;
        const auto* const words = R"({"access_token": "[[[\\\"{{{[", "expires_in": 1, "x": )";
        return TokenResponse::parse(words + brackets + "}").has_value();
    };
    for (const auto& [open, close] : {std::pair{"[", "]"}, {R"({"a": )", "}"}}) {
        EXPECT_TRUE(nested(63, open, close));
        EXPECT_FALSE(nested(64, open, close));
    }
    EXPECT_FALSE(TokenResponse::parse(std::string(std::size_t{8} << 20, '['))) << "the memory of a machine";
    const auto lifetime = [](const std::string& number) {
        return TokenResponse::parse(R"({"access_token": "a", "expires_in": )" + number + "}").value().expiresIn.count();
    };
    EXPECT_EQ(lifetime("-5"), 0);
    EXPECT_EQ(lifetime("18446744073709551615"), 31'622'400);
}
