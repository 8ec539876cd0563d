#include "Tacla/CalendarSync/GoogleCalendarService.h"
#include "tests/CalendarSync/MirrorFixture.h"

#include <curl/curl.h>

#include <future>

namespace tacla::testing {
namespace {

using Lines = std::vector<std::string>;
using namespace std::chrono_literals;

TEST(CalendarSync, CreatesItsCalendarOnceThenFollowsTheFile) {
    MirrorFixture mirror;
    EXPECT_EQ(mirror.run("- [ ] Pain · 2025-03-04\n- [ ] Sans date\n- [x] ❗ TVA · 2025-03-05 14:30\n"), "+2 ~0 -0");
    EXPECT_EQ(mirror.requests(), (Lines{"POST", "POST", "POST"}));
    EXPECT_TRUE(mirror.preferences.calendarCreatedByTacla());
    EXPECT_EQ(mirror.calendar()["timeZone"], "Europe/Paris");

    EXPECT_EQ(mirror.run("- [ ] Pain · 2025-03-04\n- [x] ❗ TVA · 2025-03-05 14:30\n"), "+0 ~0 -0");
    EXPECT_EQ(mirror.requests(), Lines{"GET"});

    // From a whole day to an hour and back: the service merges what it gets.
    EXPECT_EQ(mirror.run("- [ ] Pain · 2025-03-04 10:00\n- [x] ❗ TVA · 2025-03-05\n- [ ] Lait · 2025-03-06\n"),
              "+1 ~2 -0");
    EXPECT_EQ(mirror.shown()["Pain"]["start"],
              Json({{"dateTime", "2025-03-04T10:00:00"}, {"timeZone", "Europe/Paris"}}));
    EXPECT_EQ(mirror.shown()["✅ TVA"]["start"], Json({{"date", "2025-03-05"}}));
}

TEST(CalendarSync, ReplacesItsOwnCalendarWhenTheUserDeletedItButNoOther) {
    MirrorFixture mirror;
    mirror.run("- [ ] Pain · 2025-03-04\n");
    const auto first = mirror.preferences.calendarID();
    mirror.google.control({{"calendars", Json::object()}});
    EXPECT_EQ(mirror.run("- [ ] Pain · 2025-03-04\n"), "+1 ~0 -0");
    EXPECT_NE(mirror.preferences.calendarID(), first);

    mirror.google.control({{"calendars", Json::object()}});
    mirror.preferences.setCalendar("famille#1@group.calendar.google.com", false);
    EXPECT_EQ(mirror.run("- [ ] Pain · 2025-03-04\n"), "L'agenda de Tacla est introuvable dans Google Agenda");
    EXPECT_EQ(mirror.google.state("calendars"), Json::object());

    const std::string odd = "famille#1/é@group.calendar.google.com";
    mirror.google.control({{"calendars", {{odd, {{"created_by_app", true}, {"events", Json::object()}}}}}});
    mirror.preferences.setCalendar(odd, true);
    EXPECT_EQ(mirror.run("- [ ] Pain · 2025-03-04\n"), "+1 ~0 -0");
    EXPECT_EQ(mirror.calendar()["events"].size(), 1U);
}

const std::string two = "- [ ] Pain · 2025-03-04\n- [ ] Lait · 2025-03-05\n";

TEST(CalendarSync, CreatesNothingThatTheSettingsCannotHold) {
    MirrorFixture mirror;
    const auto settings = mirror.home / "preferences.json";
    const auto fails = [&](const std::string& beginning) {
        EXPECT_EQ(mirror.run(two).substr(0, beginning.size()), beginning);
        EXPECT_EQ(mirror.google.state("calendars"), Json::object());
        std::filesystem::remove(settings);
    };
    std::filesystem::create_directories(settings); // a folder stands in the way
    fails("Réglages de Tacla illisibles : " + settings.string() + " : C'est un dossier");
    writeBytes(settings, "{\"calendarID\": ");
    fails("Réglages de Tacla illisibles : " + settings.string() + " : Le contenu est endommagé");
    std::filesystem::create_symlink("/proc/nowhere/preferences.json", settings); // nothing to read, nor to write
    fails("/proc/");
    EXPECT_EQ(mirror.run(two), "+2 ~0 -0");
    EXPECT_EQ(mirror.google.state("calendars").size(), 1U);
}

TEST(CalendarSync, MakesNoSecondCalendarWhereverTheSettingsAreLost) {
    for (const auto* left : {"gone", "", "{", "folder"}) {
        for (int at = -1; at < 2; ++at) {
            SCOPED_TRACE(left + std::string(" before event ") + std::to_string(at));
            MirrorFixture mirror;
            const auto settings = mirror.home / "preferences.json";
            const auto lose = [&] {
                std::filesystem::remove(settings);
                if (left == std::string("folder"))
                    std::filesystem::create_directory(settings);
                else if (left != std::string("gone"))
                    writeBytes(settings, left);
            };
            const auto progress = [&](std::size_t sent, std::size_t) {
                if (static_cast<int>(sent) == at) lose();
            };
            mirror.sync.run(mirror.sync.takeTurn(), TaskFile::parse(two), {}, {}, progress);
            if (at < 0) lose();
            if (left == std::string("folder")) std::filesystem::remove(settings);
            mirror.run(two); // damaged settings are said once
            EXPECT_EQ(mirror.run(two), "+0 ~0 -0");
            CalendarSync another{mirror.auth, mirror.preferences, mirror.endpoints.calendar, mirror.home / "locks"};
            EXPECT_EQ(MirrorFixture::run(another, two, {}), "+0 ~0 -0");
            EXPECT_EQ(mirror.google.state("calendars").size(), 1U);
        }
    }
}

TEST(CalendarSync, WaitsForAnotherRunSaysSoAndGivesUp) {
    MirrorFixture mirror;
    auto other = mirror.sync.takeTurn();
    int said = 0;
    EXPECT_THROW(mirror.sync.takeTurn({}, [&] { ++said; }), SyncError);
    EXPECT_EQ(said, 1);
    EXPECT_NEAR(std::chrono::duration<double>(mirror.now.time_since_epoch()).count(), 120, 1);
    EXPECT_EQ(mirror.run(two),
              "Une autre recopie dans Google Agenda dure depuis plus de deux minutes : réessayez plus tard");
    other.reset();
    EXPECT_EQ(mirror.run(two), "+2 ~0 -0");
}

TEST(CalendarSync, SendsNothingMoreOnceItIsStopped) {
    MirrorFixture mirror;
    std::stop_source stop;
    const auto progress = [&](std::size_t sent, std::size_t) {
        if (sent == 1) stop.request_stop();
    };
    EXPECT_THROW(mirror.sync.run(mirror.sync.takeTurn(), TaskFile::parse(two), {}, stop.get_token(), progress),
                 dravel::HttpError);
    EXPECT_EQ(mirror.requests(), (Lines{"POST", "POST"})) << "the calendar and the first event";
    EXPECT_THROW(mirror.sync.takeTurn(stop.get_token()), dravel::HttpError);
    EXPECT_EQ(mirror.run(two), "+1 ~0 -0");
}

TEST(CalendarSync, NamesTheTaskThatIsRefusedOrLeftOut) {
    MirrorFixture mirror;
    const auto hint = [&](const Json& fault, std::size_t at) {
        mirror.disturb(fault, at);
        try {
            return mirror.sync.run(mirror.sync.takeTurn(), TaskFile::parse(two), {}).hint();
        } catch (const std::exception& error) {
            return hintOf(error);
        }
    };
    EXPECT_EQ(hint({{"kind", "status"}, {"status", 400}}, 2),
              "Tâche refusée : « Pain ». Google dit : « Injected ». Corrigez cette tâche, ou retirez sa date");
    EXPECT_EQ(hint({{"kind", "status"}, {"status", 503}}, 1),
              "Google dit : « Injected ». Rien n'est perdu : la prochaine recopie fera le reste");
    EXPECT_EQ(hint({{"kind", "reset"}}, 1), "Rien n'est perdu : la prochaine recopie fera le reste");
    mirror.calm();
    EXPECT_EQ(mirror.run(two + "- [ ] Thé · 9999-12-31\n- [ ] Vin · 0000-03-04 10:00\n- [ ] Sel · 9999-12-31 23:20\n"),
              "+3 ~0 -0Sans événement, car Google Agenda ne connaît pas leur date : « Thé », « Vin »");
}

TEST(CalendarSync, SendsAFirstMirrorInOneLineAtTheServicesPace) {
    MirrorFixture mirror;
    mirror.google.control({{"page_size", 700}});
    std::string text;
    for (int i = 0; i < 2000; ++i) text += "- [ ] Tâche " + std::to_string(i) + " · 2025-03-04 14:30\n";
    EXPECT_EQ(mirror.run(text), "+2000 ~0 -0");
    EXPECT_EQ(mirror.google.state("overlap"), 1);
    std::set<Json> connections;
    for (const Json& entry : mirror.google.state("log")) {
        if (entry["path"] != "/token") connections.insert(entry["connection"]);
    }
    EXPECT_EQ(connections.size(), 1U);
    EXPECT_EQ(mirror.waits.size(), 2001U - 200U);
    EXPECT_NEAR(std::chrono::duration<double>(mirror.now.time_since_epoch()).count(), (2001 - 200) / 6.0, 2);

    mirror.requests();
    EXPECT_EQ(mirror.run(text), "+0 ~0 -0");
    EXPECT_EQ(mirror.requests(), (Lines{"GET", "GET", "GET"})) << "in pages";
}

TEST(CalendarSync, WaitsLongerAfterEachRefusalForPace) {
    MirrorFixture mirror;
    const std::string text = "- [ ] Pain · 2025-03-04\n";
    const auto refusedWith = [&](const Json& fault) {
        Json order = {{"kind", "status"}, {"status", 429}};
        order.update(fault);
        mirror.disturb(order);
        EXPECT_NE(mirror.run(text), "+1 ~0 -0");
    };
    for (int i = 0; i < 8; ++i) refusedWith(Json::object());
    refusedWith({{"headers", {{"Retry-After", "17"}}}});
    refusedWith({{"status", 503}, {"headers", {{"Retry-After", "86400"}}}});
    refusedWith({{"status", 403}, {"reason", "userRateLimitExceeded"}});
    refusedWith({{"status", 403}, {"reason", "insufficientPermissions"}});
    const auto waited = std::exchange(mirror.waits, {});
    EXPECT_EQ(waited, (std::vector<Pace::Wait>{1s, 2s, 4s, 8s, 16s, 32s, 64s, 64s, 17s, 300s, 64s}));
    mirror.calm();
    EXPECT_EQ(mirror.run(text), "+1 ~0 -0");
    EXPECT_EQ(mirror.waits, std::vector<Pace::Wait>{}) << "another refusal is no reason to wait";
    refusedWith(Json::object());
    mirror.run(text);
    EXPECT_EQ(mirror.waits, std::vector<Pace::Wait>{1s}) << "a whole pass starts over";
}

// A user who agrees, or not, in a browser that follows redirects.
struct SigningIn : ::testing::Test {
    MirrorFixture mirror;
    std::string opened;
    std::future<std::string> browser; // what it shows in the end
    GoogleCalendarService service{{.preferences = mirror.preferences,
                                   .folders = {mirror.home.path(), mirror.home.path()},
                                   .locks = mirror.home / "locks",
                                   .endpoints = mirror.endpoints,
                                   .keyring = mirror.keyring,
                                   .openBrowser = [this](const std::string& url, const auto&) {
                                       opened = url;
                                       browser = std::async(std::launch::async, visit, url);
                                   }}};

    static std::string visit(const std::string& url) {
        std::string page;
        const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> easy(curl_easy_init(), curl_easy_cleanup);
        const curl_write_callback keep = [](char* bytes, std::size_t, std::size_t count, void* text) {
            static_cast<std::string*>(text)->append(bytes, count);
            return count;
        };
        curl_easy_setopt(easy.get(), CURLOPT_URL, url.c_str());
        curl_easy_setopt(easy.get(), CURLOPT_PROXY, "");
        curl_easy_setopt(easy.get(), CURLOPT_FOLLOWLOCATION, 1L);
        curl_easy_setopt(easy.get(), CURLOPT_WRITEFUNCTION, keep);
        curl_easy_setopt(easy.get(), CURLOPT_WRITEDATA, &page);
        curl_easy_perform(easy.get());
        return page;
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
    told += browser.get();
    for (const Json& fault : {Json{{"kind", "reset"}}, Json{{"kind", "cut"}}, Json{{"kind", "status"}, {"status", 500}},
                              Json{{"kind", "text"}, {"body", "{\"error\":3}"}, {"status", 400}}}) {
        for (const char* on : {"token", "calendar"}) {
            mirror.google.control({{"forget_tokens", true}});
            mirror.disturb(fault, 1, on);
            told += signIn("allow");
            told += browser.get();
            told += outcome([this] { service.run({}, TaskFile::parse("- [ ] Pain · 2025-03-04\n"), {}, {}); });
        }
    }
    told += ::testing::internal::GetCapturedStdout() + ::testing::internal::GetCapturedStderr() + opened;
    for (const auto& file : std::filesystem::recursive_directory_iterator(mirror.home.path())) {
        if (file.is_regular_file() && file.path().filename() != "client.json") told += readBytes(file.path());
    }
    const auto secrets = mirror.google.state("secrets");
    EXPECT_GT(secrets.size(), 10U) << "the client's, codes, verifiers, refresh and access tokens";
    for (const std::string secret : secrets) EXPECT_EQ(told.find(secret), told.npos);
}

}
}
