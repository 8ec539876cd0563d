#include "DravelKit/GoogleAuth/AuthError.h"
#include "DravelKit/GoogleAuth/OAuthClient.h"
#include "tests/GoogleAuth/Loopback.h"
#include "tests/support/TemporaryFolder.h"

#include <cstdlib>

using namespace dravel;
using namespace tacla::testing;

namespace {

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
    const GoogleFolders folders{.data = folder / "data", .resources = folder / "share", .locks = folder / "locks"};
    using Source = OAuthClient::Source;
    const auto source = [&] { return OAuthClient::source(essai(), folders); };
    const auto install = [&](const std::string& bytes) {
        writeBytes(folder / "download.json", bytes);
        return outcome([&] { return OAuthClient::install(essai(), folders, folder / "download.json"), ""; });
    };
    const auto own = folder / "data/Essai/client.json";
    const std::string unreadable = "Client Google illisible (attendu : client OAuth « Application de bureau »)";
    std::filesystem::create_directories(folders.data);
    std::filesystem::create_directories(folders.resources);
    const auto load = [&] { return outcome([&] { return OAuthClient::load(essai(), folders).clientID; }); };
    EXPECT_FALSE(OAuthClient::isAvailable(essai(), folders));
    EXPECT_EQ(load(), "Client Google absent de cette version de l'app");
    EXPECT_EQ(source(), Source::missing);

    writeBytes(folder / "share/google-client.json", R"({"installed": {"client_id": "package", "client_secret": "s"}})");
    EXPECT_TRUE(OAuthClient::isAvailable(essai(), folders));
    EXPECT_EQ(load(), "package");
    EXPECT_EQ(source(), Source::package);

    const std::string user = R"({"installed": {"client_id": "user", "client_secret": "s"}})";
    EXPECT_EQ(install(user), "");
    EXPECT_EQ(load(), "user");
    EXPECT_EQ(source(), Source::own);
    for (const auto& bytes : {std::string(R"({"web": {"client_id": "user", "client_secret": "s"}})"),
                              std::string("\xff"), std::string(), user + std::string(std::size_t{1} << 20, ' ')}) {
        EXPECT_EQ(install(bytes), unreadable);
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
        std::string text = R"({"access_token": "[[[\\\"{{{[", "expires_in": 1, "x": )";
        for (std::size_t i = 0; i < depth; ++i) text += open;
        text += "1";
        for (std::size_t i = 0; i < depth; ++i) text += close;
        return TokenResponse::parse(text + "}").has_value();
    };
    for (const auto& [open, close] : {std::pair{"[", "]"}, {R"({"a": )", "}"}}) {
        EXPECT_TRUE(nested(63, open, close));
        EXPECT_FALSE(nested(64, open, close));
    }
    EXPECT_TRUE(TokenResponse::parse(R"({"access_token": ")" + std::string(100, '[') + R"(", "expires_in": 1})"));
    EXPECT_FALSE(TokenResponse::parse(std::string(std::size_t{8} << 20, '['))) << "the memory of a machine";
    const auto lifetime = [](const std::string& number) {
        return TokenResponse::parse(R"({"access_token": "a", "expires_in": )" + number + "}").value().expiresIn.count();
    };
    EXPECT_EQ(lifetime("-5"), 0);
    EXPECT_EQ(lifetime("18446744073709551615"), 31'622'400);
}
