#include "DravelKit/GoogleAuth/OAuthClient.h"
#include "tests/GoogleAuth/Loopback.h"
#include "tests/support/TemporaryFolder.h"

#include <cstdlib>

using namespace dravel;
using namespace tacla::testing;

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
