#include "Tacla/CalendarSync/GoogleCalendarService.h"

#include "tests/CalendarSync/MirrorFixture.h"

#include <curl/curl.h>

#include <thread>

namespace tacla::testing {
namespace {

// A user who agrees, or not, in a browser that follows redirects.
struct SigningIn : ::testing::Test {
    MirrorFixture mirror;
    std::string opened, page;
    std::jthread browser;
    GoogleCalendarService service{{.preferences = mirror.preferences,
                                   .folders = {mirror.home.path(), mirror.home.path()},
                                   .locks = mirror.home / "locks",
                                   .endpoints = mirror.endpoints,
                                   .keyring = mirror.keyring,
                                   .openBrowser = [this](const std::string& url, const auto&) {
                                       browser = {}; // the visit before is over
                                       opened = url;
                                       page.clear();
                                       browser = std::jthread([this] { visit(); });
                                   }}};

    void visit() {
        const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> easy(curl_easy_init(), curl_easy_cleanup);
        const curl_write_callback keep = [](char* bytes, std::size_t, std::size_t count, void* text) {
            static_cast<std::string*>(text)->append(bytes, count);
            return count;
        };
        curl_easy_setopt(easy.get(), CURLOPT_URL, opened.c_str());
        curl_easy_setopt(easy.get(), CURLOPT_PROXY, "");
        curl_easy_setopt(easy.get(), CURLOPT_FOLLOWLOCATION, 1L);
        curl_easy_setopt(easy.get(), CURLOPT_WRITEFUNCTION, keep);
        curl_easy_setopt(easy.get(), CURLOPT_WRITEDATA, &page);
        curl_easy_perform(easy.get());
    }

    std::string signIn(const char* answer) {
        mirror.google.control({{"automatic", answer}});
        return outcome([this] { service.signIn([](const MirrorEvent&) {}, {}); });
    }
};

TEST_F(SigningIn, ForgetsAnAccountThatIsGone) {
    EXPECT_EQ(signIn("allow"), "");
    EXPECT_EQ(service.account(true, {}), Connection::signedIn);
    mirror.google.control({{"revoke", true}, {"forget_tokens", true}});
    EXPECT_THROW(service.run({}, {}, {}, {}), CalendarService::NotSignedIn);
    EXPECT_EQ(service.account(true, {}), Connection::signedOut);
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
            mirror.google.control({{"faults", {order}}, {"forget_tokens", true}});
            told += signIn("allow");
            browser.join();
            told += outcome([this] { service.run({}, TaskFile::parse("- [ ] Pain · 2025-03-04\n"), {}, {}); });
        }
    }
    told += page + ::testing::internal::GetCapturedStdout() + ::testing::internal::GetCapturedStderr() + opened;
    for (const auto& file : std::filesystem::recursive_directory_iterator(mirror.home.path())) {
        if (file.is_regular_file() && file.path().filename() != "client.json") told += readBytes(file.path());
    }
    const auto secrets = mirror.google.state("secrets");
    EXPECT_GT(secrets.size(), 10U) << "the client's, codes, verifiers, refresh and access tokens";
    for (const std::string secret : secrets) EXPECT_EQ(told.find(secret), told.npos);
}

}
}
