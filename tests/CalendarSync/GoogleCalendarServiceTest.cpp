#include "Tacla/CalendarSync/GoogleCalendarService.h"

#include "tests/CalendarSync/MirrorWorld.h"

#include <gtest/gtest.h>

#include <thread>

namespace tacla::testing {
namespace {

// A user who agrees, or not, in a browser that follows redirects.
struct SigningIn : ::testing::Test {
    MirrorWorld world;
    std::string opened, page;
    std::jthread browser;
    GoogleCalendarService service{{.preferences = world.preferences,
                                   .folders = {world.home.path(), world.home.path()},
                                   .endpoints = world.endpoints,
                                   .keyring = world.keyring,
                                   .openBrowser = [this](const std::string& url) {
                                       opened = url;
                                       browser = std::jthread([this] { visit(); });
                                   }}};

    static dravel::HttpResponse get(const std::string& url) {
        return dravel::HttpClient().send({.method = "GET", .url = url, .headers = {}, .bearer = {}, .body = {}});
    }
    void visit() { page = get(get(opened).header("Location").value_or("")).body; }

    std::string signIn(const char* answer) {
        world.google.control({{"automatic", answer}});
        try {
            service.signIn({});
            return "signed in";
        } catch (const std::exception& error) {
            return error.what();
        }
    }
};

TEST_F(SigningIn, GivesAnAccountThatMirrorsUntilItIsGone) {
    world.keyring->items.clear();
    EXPECT_EQ(service.account({}), Connection::signedOut);
    EXPECT_EQ(signIn("refuse"), "Connexion Google échouée : accès refusé.");
    EXPECT_EQ(service.account({}), Connection::signedOut);
    EXPECT_EQ(signIn("allow"), "signed in");
    EXPECT_EQ(service.account({}), Connection::signedIn);
    EXPECT_NE(opened.find("calendar.app.created"), opened.npos);

    const auto tasks = TaskFile::parse("- [ ] Pain · 2025-03-04\n");
    service.run(tasks, {}, {});
    EXPECT_EQ(world.google.state("calendars").begin()->at("events").size(), 1U);
    world.google.control({{"revoke", true}, {"forget_tokens", true}});
    EXPECT_THROW(service.run(tasks, {}, {}), CalendarService::NotSignedIn);
    EXPECT_EQ(service.account({}), Connection::signedOut);

    EXPECT_EQ(signIn("allow"), "signed in");
    service.signOut({});
    EXPECT_TRUE(world.keyring->items.empty());
}

TEST_F(SigningIn, TellsNoSecretToAnybody) {
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    std::string told = signIn("allow");
    browser.join();
    for (const Json& fault : {Json{{"kind", "reset"}}, Json{{"kind", "cut"}}, Json{{"kind", "status"}, {"status", 500}},
                              Json{{"kind", "text"}, {"body", "{\"error\":3}"}, {"status", 400}}}) {
        for (const char* on : {"token", "calendar"}) {
            Json order = fault;
            order.update({{"on", on}, {"at", 1}});
            world.google.control({{"faults", {order}}, {"forget_tokens", true}});
            told += signIn("allow");
            browser.join();
            try {
                service.run(TaskFile::parse("- [ ] Pain · 2025-03-04\n"), {}, {});
            } catch (const std::exception& error) {
                told += error.what();
            }
        }
    }
    told += page + ::testing::internal::GetCapturedStdout() + ::testing::internal::GetCapturedStderr() + opened;
    for (const auto& file : std::filesystem::recursive_directory_iterator(world.home.path())) {
        if (file.is_regular_file() && file.path().filename() != "client.json") told += readBytes(file.path());
    }
    const auto secrets = world.google.state("secrets");
    EXPECT_GT(secrets.size(), 10U) << "the client's, codes, verifiers, refresh and access tokens";
    for (const std::string secret : secrets) EXPECT_EQ(told.find(secret), told.npos);
}

}
}
