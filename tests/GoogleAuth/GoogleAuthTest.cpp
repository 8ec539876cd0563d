#include "tests/GoogleAuth/AccountWorld.h"

#include <array>
#include <thread>

using namespace dravel;
using namespace std::chrono_literals;
using namespace tacla::testing;

namespace {

using Account = AccountWorld;

LoopbackServer::Answer fresh(const std::string& token, int lifetime = 3599) {
    return LoopbackServer::answer(200, R"({"access_token": ")" + token + R"(", "expires_in": )" +
                                           std::to_string(lifetime) + R"(, "refresh_token": "ignored"})");
}

}

TEST_F(Account, RefreshesAnAccessTokenThatLastsLessThanAMinute) {
    keyring->items[key] = "jeton-1";
    google({fresh("acces-1", 100), fresh("acces-2"), fresh("acces-3")});
    EXPECT_EQ(accessToken(), "acces-1");
    EXPECT_EQ(form(0), (std::map<std::string, std::string>{{"grant_type", "refresh_token"},
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
    const struct {
        LoopbackServer::Answer answer;
        const char* message;
        bool kept;
    } table[] = {
        {LoopbackServer::answer(400, R"({"error": "invalid_grant", "error_description": "Token has been revoked."})"),
         "Pas connecté à Google", false},
        {LoopbackServer::answer(400, R"({"error": "invalid_scope", "error_description": "Some scope."})"),
         "Connexion Google échouée : Some scope.", true},
        {LoopbackServer::answer(401, R"({"error": "invalid_client"})"), "Connexion Google échouée : invalid_client",
         true},
        {LoopbackServer::answer(403, R"({"error": "access_denied"})"), "Connexion Google échouée : accès refusé.",
         true},
        {LoopbackServer::answer(500, "oups"), "Connexion Google échouée : réponse HTTP inattendue", true},
        {LoopbackServer::answer(400, R"({"error": {"code": 400}})"),
         "Connexion Google échouée : réponse HTTP inattendue", true},
        {LoopbackServer::answer(302, "", "Location: /ailleurs\r\n"),
         "Connexion Google échouée : réponse HTTP inattendue", true},
        {LoopbackServer::answer(200, "<html>"), "Réponse de Google illisible", true},
        {LoopbackServer::answer(200, R"({"access_token": "a"})"), "Réponse de Google illisible", true},
        {{"", LoopbackServer::Then::reset}, "Connexion perdue avec 127.0.0.1", true},
    };
    for (const auto& row : table) {
        SCOPED_TRACE(row.answer.bytes);
        keyring->items[key] = "jeton-1";
        google({row.answer});
        EXPECT_EQ(accessToken(), row.message);
        EXPECT_EQ(keyring->items.contains(key), row.kept);
        EXPECT_EQ(auth->isSignedIn(), row.kept ? GoogleAuth::Account::signedIn : GoogleAuth::Account::signedOut);
    }
}

TEST_F(Account, OutlivesAKeyringThatDoesNotAnswer) {
    keyring->items[key] = "jeton-1";
    keyring->trouble = Keyring::Trouble{.reason = "le trousseau de clés est verrouillé"};
    google({fresh("acces-1")});
    EXPECT_EQ(auth->isSignedIn(), GoogleAuth::Account::unreachable);
    EXPECT_EQ(accessToken(), "Pas connecté à Google : le trousseau de clés est verrouillé");
    EXPECT_EQ(outcome([&] { auth->signOut(); }),
              "Déconnexion de Google incomplète : le trousseau de clés est verrouillé");
    keyring->trouble.reset();
    EXPECT_EQ(auth->isSignedIn(), GoogleAuth::Account::signedIn);
    EXPECT_EQ(accessToken(), "acces-1");
}

TEST_F(Account, DoesNotComeBackWhenItIsSignedOutDuringARefresh) {
    keyring->items[key] = "jeton-1";
    auto late = fresh("acces-1");
    late.before = [this] { auth->signOut(); };
    google({late});
    EXPECT_EQ(accessToken(), "Pas connecté à Google");
    EXPECT_EQ(accessToken(), "Pas connecté à Google");
    EXPECT_EQ(server->requests().size(), 1u);
}

TEST_F(Account, IsKeptWhenAnotherProcessSignsInWhileTheOldTokenIsRefused) {
    keyring->items[key] = "jeton-1";
    auto refusal = LoopbackServer::answer(400, R"({"error": "invalid_grant"})");
    refusal.before = [this] { keyring->items[key] = "jeton-2"; };
    google({refusal, fresh("acces-2")});
    EXPECT_EQ(accessToken(), "Pas connecté à Google");
    EXPECT_EQ(accessToken(), "acces-2");
    EXPECT_EQ(form(1).at("refresh_token"), "jeton-2");
}

TEST_F(Account, ServesSeveralThreadsAtOnce) {
    keyring->items[key] = "jeton-1";
    google(std::vector(64, fresh("acces-1")));
    std::array<int, 4> wrong{};
    {
        std::vector<std::jthread> threads;
        for (int& count : wrong)
            threads.emplace_back([this, &count] {
                for (int i = 0; i < 10; ++i) {
                    count += auth->validAccessToken().reveal() != "acces-1";
                    auth->invalidateAccessToken();
                }
            });
    }
    EXPECT_EQ(wrong, (std::array<int, 4>{}));
}

TEST_F(Account, GivesUpWhenAskedTo) {
    keyring->items[key] = "jeton-1";
    std::stop_source stop;
    google({{"", LoopbackServer::Then::hang, [&] { stop.request_stop(); }}});
    EXPECT_EQ(outcome([&] { auth->validAccessToken(stop.get_token()); }), "Requête interrompue");
    EXPECT_EQ(keyring->items.at(key), "jeton-1");
    EXPECT_EQ(outcome([&] { auth->validAccessToken(stop.get_token()); }), "Connexion Google interrompue");
}
