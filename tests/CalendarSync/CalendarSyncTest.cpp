#include "tests/CalendarSync/MirrorFixture.h"

#include <gtest/gtest.h>

#include <numeric>

namespace tacla::testing {
namespace {

using Lines = std::vector<std::string>;
using namespace std::chrono_literals;

TEST(CalendarSync, CreatesItsCalendarOnceThenFollowsTheFile) {
    MirrorFixture mirror;
    EXPECT_EQ(mirror.run("- [ ] Pain · 2025-03-04\n- [ ] Sans date\n- [x] ❗ TVA · 2025-03-05 14:30\n"), "+2 ~0 -0");
    EXPECT_EQ(mirror.requests(), (Lines{"POST", "POST", "POST"}));
    EXPECT_TRUE(mirror.preferences.calendarCreatedByTacla());
    EXPECT_EQ(mirror.calendar()["summary"], "Tacla");
    EXPECT_EQ(mirror.calendar()["timeZone"], "Europe/Paris");

    EXPECT_EQ(mirror.run("- [ ] Pain · 2025-03-04\n- [x] ❗ TVA · 2025-03-05 14:30\n"), "+0 ~0 -0");
    EXPECT_EQ(mirror.requests(), Lines{"GET"});

    // From a whole day to an hour and back: the service merges what it gets.
    EXPECT_EQ(mirror.run("- [ ] Pain · 2025-03-04 10:00\n- [x] ❗ TVA · 2025-03-05\n- [ ] Lait · 2025-03-06\n"),
              "+1 ~2 -0");
    EXPECT_EQ(mirror.shown()["Pain"]["start"],
              Json({{"dateTime", "2025-03-04T10:00:00"}, {"timeZone", "Europe/Paris"}}));
    EXPECT_EQ(mirror.shown()["✅ TVA"]["start"], Json({{"date", "2025-03-05"}}));

    EXPECT_EQ(mirror.run("- [ ] Pain\n"), "+0 ~0 -3") << "no longer dated";
    EXPECT_EQ(mirror.run(""), "+0 ~0 -0") << "nothing in the file, nothing in the calendar";
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
}

TEST(CalendarSync, WorksInACalendarThatWasGivenToIt) {
    MirrorFixture mirror("calendar.events");
    const std::string id = "famille#1/é@group.calendar.google.com";
    mirror.google.control({{"calendars", {{id, {{"created_by_app", false}, {"events", Json::object()}}}}}});
    mirror.preferences.setCalendar(id, false);
    EXPECT_EQ(mirror.run("- [ ] Pain · 2025-03-04\n"), "+1 ~0 -0");
    EXPECT_EQ(mirror.shown().size(), 1U);
}

TEST(CalendarSync, RemembersACalendarThatItCouldNotWriteDown) {
    MirrorFixture mirror;
    std::filesystem::create_directories(mirror.home / "preferences.json"); // a folder stands in the way
    EXPECT_NE(mirror.run("- [ ] Pain · 2025-03-04\n"), "+1 ~0 -0");
    std::filesystem::remove(mirror.home / "preferences.json");
    EXPECT_EQ(mirror.run("- [ ] Pain · 2025-03-04\n"), "+1 ~0 -0");
    EXPECT_EQ(mirror.google.state("calendars").size(), 1U);
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
        Json order = {{"at", 1}, {"kind", "status"}, {"status", 429}};
        order.update(fault);
        mirror.google.control({{"faults", {order}}});
        EXPECT_NE(mirror.run(text), "+1 ~0 -0");
    };
    for (int i = 0; i < 8; ++i) refusedWith(Json::object());
    refusedWith({{"headers", {{"Retry-After", "17"}}}});
    refusedWith({{"status", 503}, {"headers", {{"Retry-After", "86400"}}}});
    refusedWith({{"status", 403}, {"reason", "userRateLimitExceeded"}});
    refusedWith({{"status", 403}, {"reason", "insufficientPermissions"}});
    const auto waited = std::exchange(mirror.waits, {});
    EXPECT_EQ(waited, (std::vector<Pace::Wait>{1s, 2s, 4s, 8s, 16s, 32s, 64s, 64s, 17s, 300s, 64s}));
    mirror.google.control({{"faults", Json::array()}});
    EXPECT_EQ(mirror.run(text), "+1 ~0 -0");
    EXPECT_EQ(mirror.waits, std::vector<Pace::Wait>{}) << "another refusal is no reason to wait";
    refusedWith(Json::object());
    mirror.run(text);
    EXPECT_EQ(mirror.waits, std::vector<Pace::Wait>{1s}) << "a whole pass starts over";
}

}
}
