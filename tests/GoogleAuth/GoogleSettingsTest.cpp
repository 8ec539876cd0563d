#include "DravelKit/GoogleAuth/AuthError.h"
#include "DravelKit/GoogleAuth/OAuthClient.h"
#include "tests/GoogleAuth/Loopback.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace dravel;
using tacla::testing::essai;
using tacla::testing::writeBytes;

namespace {

// What the function gives, or the French reason why it gives nothing.
template <class Function>
std::string outcome(Function function) {
    try {
        return function();
    } catch (const AuthError& error) {
        return error.description();
    }
}

std::string endpointsOf(const char* base) {
    return outcome([&] {
        const auto endpoints = GoogleEndpoints::onThisMachine(base, "TACLA_GOOGLE_BASE");
        return endpoints.authorization + " " + endpoints.token + " " + endpoints.calendar;
    });
}

}

TEST(GoogleEndpoints, AreGooglesOwnUnlessTheEnvironmentNamesAServerOfThisMachine) {
    EXPECT_EQ(GoogleEndpoints::fromEnvironment("TACLA_GOOGLE_BASE").token, "https://oauth2.googleapis.com/token");
    ::setenv("TACLA_GOOGLE_BASE", "http://127.0.0.1:8765", 1);
    EXPECT_EQ(GoogleEndpoints::fromEnvironment("TACLA_GOOGLE_BASE").token, "http://127.0.0.1:8765/token");
    ::setenv("TACLA_GOOGLE_BASE", "", 1);
    EXPECT_THROW(GoogleEndpoints::fromEnvironment("TACLA_GOOGLE_BASE"), AuthError);
    ::unsetenv("TACLA_GOOGLE_BASE");
}

TEST(GoogleEndpoints, RefuseEveryOtherMachine) {
    EXPECT_EQ(endpointsOf("http://127.0.0.1:8765"),
              "http://127.0.0.1:8765/o/oauth2/v2/auth http://127.0.0.1:8765/token http://127.0.0.1:8765/calendar/v3");
    EXPECT_EQ(endpointsOf("http://[::1]:8765/"),
              "http://[::1]:8765/o/oauth2/v2/auth http://[::1]:8765/token http://[::1]:8765/calendar/v3");
    for (const auto* base : {"", "127.0.0.1:8765", "http://localhost:8765", "http://example.org", "ftp://127.0.0.1/",
                             "http://127.0.0.1.example.org", "http://127.0.0.1@example.org", "http://127.0.0.1:1/x",
                             "http://127.0.0.1?x", "http:/127.0.0.1", "http://0.0.0.0:8765", "http://127.0.0.2",
                             "http://[::2]", "http://127.0.0.1:x", "http://127.0.0.1:99999"})
        EXPECT_EQ(endpointsOf(base), "TACLA_GOOGLE_BASE refusée : seules les adresses http://127.0.0.1 et http://[::1] "
                                     "sont permises")
            << base;
}

TEST(OAuthClient, ReadsADesktopClientAndNothingElse) {
    const auto client = OAuthClient::parse(
        R"({"installed": {"client_id": "id", "client_secret": "secret", "redirect_uris": ["http://localhost"]}})");
    ASSERT_TRUE(client);
    EXPECT_EQ(client->clientID, "id");
    EXPECT_EQ(client->clientSecret.reveal(), "secret");
    for (const auto* other :
         {"", "[]", "{}", R"({"web": {"client_id": "id", "client_secret": "secret"}})", R"({"installed": "id"})",
          R"({"installed": {"client_id": "id"}})", R"({"installed": {"client_id": 1, "client_secret": "secret"}})",
          R"({"installed": {"client_id": "id", "client_secret": null}})", "{\"installed\": {\"client_id\": \"\xff\"}"})
        EXPECT_FALSE(OAuthClient::parse(other)) << other;
}

TEST(OAuthClient, TakesTheUsersFileBeforeThePackages) {
    const tacla::testing::TemporaryFolder folder;
    const GoogleFolders folders{.data = folder / "data", .resources = folder / "share"};
    std::filesystem::create_directories(folders.data / "Essai");
    std::filesystem::create_directories(folders.resources);
    const auto load = [&] { return outcome([&] { return OAuthClient::load(essai(), folders).clientID; }); };
    EXPECT_FALSE(OAuthClient::isAvailable(essai(), folders));
    EXPECT_EQ(load(), "Client Google absent de cette version de l'app");

    writeBytes(folder / "share/google-client.json", R"({"installed": {"client_id": "package", "client_secret": "s"}})");
    EXPECT_TRUE(OAuthClient::isAvailable(essai(), folders));
    EXPECT_EQ(load(), "package");

    writeBytes(folder / "data/Essai/client.json", R"({"installed": {"client_id": "user", "client_secret": "s"}})");
    EXPECT_EQ(load(), "user");

    for (const auto* bytes : {R"({"web": {"client_id": "user", "client_secret": "s"}})", "\xff", ""}) {
        writeBytes(folder / "data/Essai/client.json", bytes);
        EXPECT_EQ(load(), "Client Google illisible (attendu : client OAuth « Application de bureau »)");
    }
}

TEST(TokenAnswer, LastsFromNothingToAYear) {
    const auto lifetime = [](const std::string& number) {
        return TokenResponse::parse(R"({"access_token": "a", "expires_in": )" + number + "}").value().expiresIn.count();
    };
    EXPECT_EQ(lifetime("3599"), 3599);
    EXPECT_EQ(lifetime("-5"), 0);
    EXPECT_EQ(lifetime("18446744073709551615"), 31'622'400);
}
