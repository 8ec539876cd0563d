#include "DravelKit/Foundation/Hash.h"
#include "tests/GoogleAuth/AccountWorld.h"

using namespace dravel;
using namespace tacla::testing;

namespace {

using SignIn = AccountWorld;
using Query = std::map<std::string, std::string>;

LoopbackServer::Answer tokens(const std::string& access, const std::string& refresh) {
    return LoopbackServer::answer(200, R"({"access_token": ")" + access +
                                           R"(", "expires_in": 3599, "refresh_token": ")" + refresh + "\"}");
}

std::string agree(const Query& asked) { return "state=" + asked.at("state") + "&code=4%2Fcode&scope=x"; }

}

TEST_F(SignIn, AsksGoogleInTheBrowserAndKeepsTheTokens) {
    google({tokens("acces-1", "jeton-1")});
    Query asked;
    user = [&](const Query& query) { return agree(asked = query); };
    EXPECT_EQ(signIn(), "");

    const auto names = decodedItems(Url::parse(opened)->query);
    std::vector<std::string> order;
    for (const auto& [name, value] : names) order.push_back(name);
    EXPECT_EQ(order, (std::vector<std::string>{"client_id", "redirect_uri", "response_type", "scope", "code_challenge",
                                               "code_challenge_method", "state", "access_type", "prompt"}));
    EXPECT_TRUE(
        opened.starts_with(server->base() + "/o/oauth2/v2/auth?client_id=client&redirect_uri=http%3A%2F%2F127"));
    EXPECT_EQ(asked.at("scope"), "https://www.googleapis.com/auth/calendar.app.created");
    EXPECT_EQ(asked.at("response_type") + asked.at("code_challenge_method") + asked.at("access_type") +
                  asked.at("prompt"),
              "codeS256offlineconsent");
    EXPECT_EQ(asked.at("state").size(), 22u);

    auto fields = form(0);
    const auto verifier = fields["code_verifier"];
    EXPECT_EQ(verifier.size(), 64u);
    EXPECT_EQ(base64Url(sha256(verifier)), asked.at("code_challenge"));
    EXPECT_EQ(fields, (Query{{"grant_type", "authorization_code"},
                             {"code", "4/code"},
                             {"code_verifier", verifier},
                             {"redirect_uri", asked.at("redirect_uri")},
                             {"client_id", "client"},
                             {"client_secret", "secret-client"}}));
    EXPECT_EQ(server->requests().at(0).line, "POST /token HTTP/1.1");
    EXPECT_NE(server->requests().at(0).headers.find("Content-Type: application/x-www-form-urlencoded\r\n"),
              std::string::npos);

    EXPECT_EQ(keyring->items.at(key), "jeton-1");
    EXPECT_EQ(accessToken(), "acces-1");
    EXPECT_NE(browser.back().answer().find("C'est connecté"), std::string::npos);
}

TEST_F(SignIn, ReplacesTheAccountThatWasThere) {
    keyring->items[key] = "jeton-0";
    google({tokens("acces-1", "jeton-1"), tokens("acces-2", "jeton-2")});
    user = agree;
    EXPECT_EQ(signIn() + signIn(), "");
    EXPECT_EQ(keyring->items.size(), 1u);
    EXPECT_EQ(keyring->items.at(key), "jeton-2");
    EXPECT_EQ(accessToken(), "acces-2");
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
    }
}

TEST_F(SignIn, StoresNothingUnlessGoogleGivesARefreshTokenAndTheKeyringTakesIt) {
    user = agree;
    google({LoopbackServer::answer(200, R"({"access_token": "a", "expires_in": 3599})")});
    EXPECT_EQ(signIn(), "Connexion Google échouée : Google n'a pas renvoyé de refresh token");
    EXPECT_EQ(accessToken(), "Pas connecté à Google");

    google({tokens("a", "r")});
    keyring->storeTrouble = Keyring::Trouble{.reason = "le trousseau de clés a refusé l'opération"};
    EXPECT_EQ(signIn(), "Connexion Google échouée : le trousseau de clés a refusé l'opération");
    EXPECT_EQ(accessToken(), "Pas connecté à Google");
    EXPECT_TRUE(keyring->items.empty());
}

TEST_F(SignIn, NeedsAClientBeforeItOpensTheBrowser) {
    google({});
    std::filesystem::remove(folder / "Essai/client.json");
    EXPECT_EQ(signIn(), "Client Google absent de cette version de l'app");
    writeBytes(folder / "Essai/client.json", R"({"web": {"client_id": "i", "client_secret": "s"}})");
    EXPECT_EQ(signIn(), "Client Google illisible (attendu : client OAuth « Application de bureau »)");
    EXPECT_EQ(opened, "");
}
