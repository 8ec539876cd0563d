#include "DravelKit/GoogleAuth/GoogleAuth.h"
#include "DravelKit/GoogleAuth/TokenStore.h"

#include "DravelKit/Foundation/Hash.h"
#include "DravelKit/Net/Url.h"
#include "tests/GoogleAuth/Loopback.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/MemoryKeyring.h"
#include "tests/support/TemporaryFolder.h"

#include <list>
#include <thread>

using namespace dravel;
using namespace std::chrono_literals;
using namespace tacla::testing;

namespace {

constexpr auto key = "fr.dravel.Essai.google";
using Query = std::map<std::string, std::string>;

Query asMap(const std::string& items) {
    Query map;
    for (auto& [name, value] : decodedItems(items)) map[name] = value;
    return map;
}

// An account whose token endpoint, keyring, browser and clocks are the test's.
struct Account : ::testing::Test {
    TemporaryFolder folder;
    std::shared_ptr<MemoryKeyring> keyring = std::make_shared<MemoryKeyring>();
    Instant now{std::chrono::hours(24 * 20'000)};
    IdleClock idle;
    std::stop_source stop;
    std::unique_ptr<LoopbackServer> server;
    std::unique_ptr<GoogleAuth> auth;
    std::function<std::string(const Query&)> user; // authorization query to callback query
    std::string opened;                            // the address shown in the browser
    std::list<Connection> browser;

    Account() {
        std::filesystem::create_directories(folder / "Essai");
        writeBytes(folder / "Essai/client.json",
                   R"({"installed": {"client_id": "client", "client_secret": "secret-client"}})");
        keyring->items[key] = "jeton-1";
    }

    // Google's token endpoint gives these answers; a new account object each time.
    void google(std::vector<LoopbackServer::Answer> answers) {
        server = std::make_unique<LoopbackServer>(std::move(answers));
        auth = std::make_unique<GoogleAuth>(
            essai(), GoogleEnvironment{.folders = {.data = folder.path(), .resources = folder / "share"},
                                       .endpoints = GoogleEndpoints::onThisMachine(server->base(), "test"),
                                       .keyring = keyring,
                                       .now = [this] { return now; },
                                       .receiverClock = idle.reader()});
    }

    void browse(const std::string& url) {
        opened = url;
        const auto query = asMap(Url::parse(url).value().query);
        const auto port = Url::parse(query.at("redirect_uri")).value().port;
        const auto back = user(query);
        if (back.empty()) return; // the user walks away
        browser.emplace_back(static_cast<std::uint16_t>(std::stoi(port)),
                             "GET /?" + back + " HTTP/1.1\r\nHost: 127.0.0.1:" + port + "\r\n\r\n");
    }

    std::string signIn() {
        return outcome([this] { auth->signIn([this](const auto& url) { browse(url); }, stop.get_token()); });
    }
    std::string accessToken() {
        return outcome([this] { return auth->validAccessToken(stop.get_token()).reveal(); });
    }
    Query form(std::size_t request) const { return asMap(server->requests().at(request).body); }
};

LoopbackServer::Answer tokens(const std::string& access, const std::string& refresh = "ignored", int lifetime = 3599) {
    return answered(200, R"({"access_token": ")" + access + R"(", "expires_in": )" + std::to_string(lifetime) +
                             R"(, "refresh_token": ")" + refresh + "\"}");
}

std::string agree(const Query& asked) { return "state=" + asked.at("state") + "&code=4%2Fcode&scope=x"; }

struct SignIn : Account {
    SignIn() { keyring->items.clear(); }
};

struct Store : SignIn {
    const std::filesystem::path legacy = folder / "Essai/token.txt";
    TokenStore store{withLegacyFile(), {.data = folder.path(), .resources = {}}, keyring};

    static GoogleConfig withLegacyFile() {
        auto config = essai();
        config.legacyToken = {.file = "token.txt", .read = [](std::string_view bytes) -> std::optional<Secret> {
                                  if (!bytes.starts_with("jeton")) return {};
                                  return Secret(std::string(bytes));
                              }};
        return config;
    }
    std::string read(Keyring::Ask ask = Keyring::Ask::yes) {
        const auto found = store.read(ask, {});
        if (found.found == Keyring::Found::unreachable) return "unreachable: " + found.trouble.reason;
        return found.found == Keyring::Found::found ? found.secret.reveal() : "absent";
    }
};

}

TEST_F(Account, RefreshesAnAccessTokenThatLastsLessThanAMinute) {
    google({tokens("acces-1", "ignored", 100), tokens("acces-2"), tokens("acces-3")});
    EXPECT_EQ(accessToken(), "acces-1");
    EXPECT_EQ(form(0), (Query{{"grant_type", "refresh_token"},
                              {"refresh_token", "jeton-1"},
                              {"client_id", "client"},
                              {"client_secret", "secret-client"}}));
    now += 39s; // good for 61 seconds
    EXPECT_EQ(accessToken(), "acces-1");
    now += 2s; // for 59
    EXPECT_EQ(accessToken(), "acces-2");
    auth->invalidateAccessToken();
    EXPECT_EQ(accessToken(), "acces-3");
    EXPECT_EQ(keyring->items.at(key), "jeton-1");
}

TEST_F(Account, IsSignedOutOnlyByAnInvalidGrant) {
    const std::string failed = "Connexion Google échouée : ", unreadable = "Réponse de Google illisible";
    const struct {
        LoopbackServer::Answer answer;
        std::string message;
        bool kept = true;
    } table[] = {
        {answered(400, R"({"error": "invalid_grant", "error_description": "Revoked."})"), "Pas connecté à Google",
         false},
        {answered(400, R"({"error": "invalid_scope", "error_description": "Some scope."})"), failed + "Some scope."},
        {answered(401, R"({"error": "invalid_client"})"), failed + "invalid_client"},
        {answered(500, "oups"), failed + "réponse HTTP inattendue"},
        {answered(400, R"({"error": {"code": 400}})"), failed + "réponse HTTP inattendue"},
        {answered(302, "", "Location: /ailleurs\r\n"), failed + "réponse HTTP inattendue"},
        {answered(200, "<html>"), unreadable},
        {answered(200, R"({"access_token": "a"})"), unreadable},
        {{"", LoopbackServer::Then::reset}, "Connexion perdue avec 127.0.0.1"},
    };
    for (const auto& row : table) {
        SCOPED_TRACE(row.answer.bytes);
        keyring->items[key] = "jeton-1";
        google({row.answer});
        EXPECT_EQ(accessToken(), row.message);
        EXPECT_EQ(keyring->items.contains(key), row.kept);
        EXPECT_EQ(auth->isSignedIn(Keyring::Ask::yes),
                  row.kept ? GoogleAuth::Account::signedIn : GoogleAuth::Account::signedOut);
    }
}

TEST_F(Account, OutlivesAKeyringThatDoesNotAnswer) {
    keyring->trouble = Keyring::Trouble{.reason = "le trousseau de clés est verrouillé"};
    google({tokens("acces-1")});
    EXPECT_EQ(auth->isSignedIn(Keyring::Ask::yes), GoogleAuth::Account::unreachable);
    EXPECT_EQ(accessToken(), "Pas connecté à Google : le trousseau de clés est verrouillé");
    EXPECT_EQ(outcome([&] { auth->signOut(); }),
              "Déconnexion de Google incomplète : le trousseau de clés est verrouillé");
    keyring->trouble.reset();
    EXPECT_EQ(auth->isSignedIn(Keyring::Ask::yes), GoogleAuth::Account::signedIn);
    EXPECT_EQ(accessToken(), "acces-1");
}

TEST_F(Account, IsTheOneOfNowWhateverHappensDuringARefresh) {
    auto late = tokens("acces-1");
    late.before = [this] { auth->signOut(); };
    google({late});
    EXPECT_EQ(accessToken() + accessToken(), "Pas connecté à GooglePas connecté à Google");
    EXPECT_EQ(server->requests().size(), 1u);

    keyring->items[key] = "jeton-1"; // another process signs in while the old one is refused
    auto refusal = answered(400, R"({"error": "invalid_grant"})");
    refusal.before = [this] { keyring->items[key] = "jeton-2"; };
    google({refusal, tokens("acces-2")});
    EXPECT_EQ(accessToken(), "Pas connecté à Google");
    EXPECT_EQ(accessToken(), "acces-2");
    EXPECT_EQ(form(1).at("refresh_token"), "jeton-2");
}

TEST_F(Account, ServesSeveralThreadsAtOnce) {
    google(std::vector(64, tokens("acces-1")));
    const auto ask = [this] {
        for (int i = 0; i < 10; ++i) {
            EXPECT_EQ(accessToken(), "acces-1");
            auth->invalidateAccessToken();
        }
    };
    const std::jthread first(ask), second(ask), third(ask), fourth(ask);
}

// What else is asked, and how it is answered, the stand-in for Google looks at.
TEST_F(SignIn, KeepsItsTokensInPlaceOfOthersAndNobodyGuessesItsState) {
    keyring->items[key] = "jeton-0";
    google({tokens("acces-1", "jeton-1")});
    Query asked;
    user = [&](const Query& query) { return agree(asked = query); };
    EXPECT_EQ(signIn(), "");
    EXPECT_EQ(form(0).at("code_verifier").size(), 64u);
    EXPECT_EQ(asked.at("state").size(), 22u);
    EXPECT_EQ(asked.at("code_challenge"), base64Url(sha256(form(0).at("code_verifier"))));
    EXPECT_EQ(keyring->items, (Query{{key, "jeton-1"}}));
    EXPECT_EQ(accessToken(), "acces-1");
    EXPECT_NE(browser.back().answer().find("C'est connecté"), std::string::npos);
}

TEST_F(SignIn, FailsWithAFrenchReasonAndExchangesNoCode) {
    const auto wrongLast = [](std::string state) {
        state.back() = state.back() == 'A' ? 'B' : 'A';
        return "code=c&state=" + state;
    };
    const std::string administrator =
        "l'administrateur Google Workspace de votre organisation bloque les apps tierces : "
        "demandez-lui d'autoriser Essai.";
    const struct {
        std::function<std::string(const std::string& state)> answer;
        std::string reason;
    } table[] = {
        {[](const auto& state) { return "error=access_denied&state=" + state; }, "accès refusé."},
        {[](const auto& state) { return "error=admin_policy_enforced&state=" + state; }, administrator},
        {[](const auto& state) { return "error=org_internal&state=" + state; }, administrator},
        {[](const auto& state) { return "error=invalid_request&state=" + state; }, "invalid_request"},
        {[](const auto&) { return std::string("code=c"); }, "état OAuth inattendu"},
        {wrongLast, "état OAuth inattendu"},
        {[](const auto&) { return std::string("error=access_denied"); }, "état OAuth inattendu"},
        {[](const auto&) { return std::string(); }, "délai dépassé"},
    };
    for (const auto& row : table) {
        google({});
        user = [&](const Query& asked) { return row.answer(asked.at("state")); };
        EXPECT_EQ(signIn(), "Connexion Google échouée : " + row.reason);
        EXPECT_TRUE(server->requests().empty());
        EXPECT_TRUE(keyring->items.empty());
        EXPECT_EQ(idle.elapsed(), row.reason == "délai dépassé" ? 300s : 0s);
    }
}

TEST_F(SignIn, StoresNothingUnlessGoogleGivesARefreshTokenAndTheKeyringTakesIt) {
    user = agree;
    google({answered(200, R"({"access_token": "a", "expires_in": 3599})")});
    EXPECT_EQ(signIn(), "Connexion Google échouée : Google n'a pas renvoyé de refresh token");
    EXPECT_EQ(accessToken(), "Pas connecté à Google");

    opened.clear();
    google({tokens("a", "r")});
    keyring->storeTrouble = Keyring::Trouble{.reason = "le trousseau de clés a refusé l'opération"};
    EXPECT_EQ(signIn(), "Connexion Google échouée : le trousseau de clés a refusé l'opération");
    EXPECT_EQ(accessToken(), "Pas connecté à Google");
    EXPECT_TRUE(keyring->items.empty());
    std::filesystem::remove(folder / "Essai/client.json");
    EXPECT_EQ(signIn(), "Client Google absent de cette version de l'app");
    EXPECT_EQ(opened, "") << "nobody is sent to Google in vain";
}

TEST_F(SignIn, IsLeftAtOnceWhereverItStands) {
    google({});
    user = [this](const Query&) { return stop.request_stop(), ""; };
    EXPECT_EQ(signIn(), "Connexion Google interrompue");
    EXPECT_EQ(idle.elapsed(), 0s);
    opened.clear();
    EXPECT_EQ(signIn(), "Connexion Google interrompue") << "before the browser";
    EXPECT_EQ(opened, "");
    stop = {};
    google({{"", LoopbackServer::Then::hang, [&] { stop.request_stop(); }}});
    user = agree;
    EXPECT_EQ(signIn(), "Requête interrompue");
    EXPECT_TRUE(keyring->items.empty());
    keyring->items[key] = "jeton-1";
    EXPECT_EQ(accessToken(), "Connexion Google interrompue");
}

TEST_F(Store, MovesTheTokenOfAnEarlierVersionIntoTheKeyring) {
    keyring->items[key] = "ancien";
    for (const auto* bytes : {"jeton-1", "rien", "", "\xff\xfe"}) {
        writeBytes(legacy, bytes);
        EXPECT_EQ(read(), "jeton-1") << "what holds no token is dropped";
        EXPECT_FALSE(std::filesystem::exists(legacy));
    }
}

TEST_F(Store, KeepsTheFileUntilTheKeyringHasTheToken) {
    writeBytes(legacy, "jeton-1");
    keyring->storeTrouble = Keyring::Trouble{.reason = "le trousseau de clés a refusé l'opération"};
    EXPECT_EQ(read(), "unreachable: le trousseau de clés a refusé l'opération");
    keyring->storeTrouble.reset();
    keyring->trouble = Keyring::Trouble{.reason = "le trousseau de clés est verrouillé"};
    EXPECT_EQ(read(), "unreachable: le trousseau de clés est verrouillé");
    EXPECT_EQ(readBytes(legacy), "jeton-1");
    keyring->trouble.reset();
    EXPECT_EQ(read(), "jeton-1");
    EXPECT_FALSE(std::filesystem::exists(legacy));
}

TEST_F(Store, AsksTheUserOnceToUnlockTheKeyring) {
    keyring->items[key] = "jeton-1";
    keyring->trouble = Keyring::Trouble{.reason = "le trousseau de clés est verrouillé", .declined = true};
    writeBytes(legacy, "jeton-0");
    EXPECT_EQ(read(Keyring::Ask::no), "unreachable: le trousseau de clés est verrouillé");
    EXPECT_EQ(keyring->asked, 0) << "neither for a look nor for the file of an earlier version";
    std::filesystem::remove(legacy);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(read(), "unreachable: le trousseau de clés est verrouillé");
    EXPECT_EQ(keyring->asked, 1);
    EXPECT_TRUE(store.write(Secret("jeton-2"), {})); // the user's own wish: asked again
    EXPECT_EQ(keyring->asked, 2);
    keyring->trouble.reset();
    EXPECT_EQ(read(), "jeton-1");
}

TEST_F(Store, RemovesTheTokenAndTheFileAlike) {
    keyring->items[key] = "jeton-1";
    writeBytes(legacy, "jeton-0");
    EXPECT_FALSE(store.remove({}));
    EXPECT_TRUE(keyring->items.empty());
    EXPECT_FALSE(std::filesystem::exists(legacy));
    EXPECT_EQ(read(), "absent");
}
