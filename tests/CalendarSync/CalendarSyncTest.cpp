#include "tests/CalendarSync/MirrorWorld.h"

#include <gtest/gtest.h>

#include <numeric>

namespace tacla::testing {
namespace {

using Lines = std::vector<std::string>;
using namespace std::chrono_literals;

TEST(CalendarSync, CreatesItsCalendarOnceThenFollowsTheFile) {
    MirrorWorld world;
    EXPECT_EQ(world.run("- [ ] Pain · 2025-03-04\n- [ ] Sans date\n- [x] ❗ TVA · 2025-03-05 14:30\n"), "+2 ~0 -0");
    EXPECT_EQ(world.requests(), (Lines{"POST", "POST", "POST"}));
    EXPECT_TRUE(world.preferences.calendarCreatedByTacla());
    EXPECT_EQ(world.calendar()["summary"], "Tacla");
    EXPECT_EQ(world.calendar()["timeZone"], "Europe/Paris");

    EXPECT_EQ(world.run("- [ ] Pain · 2025-03-04\n- [x] ❗ TVA · 2025-03-05 14:30\n"), "+0 ~0 -0");
    EXPECT_EQ(world.requests(), Lines{"GET"});

    // From a whole day to an hour and back: the service merges what it gets.
    EXPECT_EQ(world.run("- [ ] Pain · 2025-03-04 10:00\n- [x] ❗ TVA · 2025-03-05\n- [ ] Lait · 2025-03-06\n"),
              "+1 ~2 -0");
    EXPECT_EQ(world.shown()["Pain"]["start"],
              Json({{"dateTime", "2025-03-04T10:00:00"}, {"timeZone", "Europe/Paris"}}));
    EXPECT_EQ(world.shown()["✅ TVA"]["start"], Json({{"date", "2025-03-05"}}));

    EXPECT_EQ(world.run("- [ ] Pain\n"), "+0 ~0 -3") << "no longer dated";
    EXPECT_EQ(world.run(""), "+0 ~0 -0") << "nothing in the file, nothing in the calendar";
}

TEST(CalendarSync, ReplacesItsOwnCalendarWhenTheUserDeletedItButNoOther) {
    MirrorWorld world;
    world.run("- [ ] Pain · 2025-03-04\n");
    const auto first = world.preferences.calendarID();
    world.google.control({{"calendars", Json::object()}});
    EXPECT_EQ(world.run("- [ ] Pain · 2025-03-04\n"), "+1 ~0 -0");
    EXPECT_NE(world.preferences.calendarID(), first);

    world.google.control({{"calendars", Json::object()}});
    world.preferences.setCalendar("famille#1@group.calendar.google.com", false);
    EXPECT_EQ(world.run("- [ ] Pain · 2025-03-04\n"), "L'agenda de Tacla est introuvable dans Google Agenda");
    EXPECT_EQ(world.google.state("calendars"), Json::object());
}

TEST(CalendarSync, WorksInACalendarThatWasGivenToIt) {
    MirrorWorld world("calendar.events");
    const std::string id = "famille#1/é@group.calendar.google.com";
    world.google.control({{"calendars", {{id, {{"created_by_app", false}, {"events", Json::object()}}}}}});
    world.preferences.setCalendar(id, false);
    EXPECT_EQ(world.run("- [ ] Pain · 2025-03-04\n"), "+1 ~0 -0");
    EXPECT_EQ(world.shown().size(), 1U);
}

TEST(CalendarSync, RemembersACalendarThatItCouldNotWriteDown) {
    MirrorWorld world;
    std::filesystem::create_directories(world.home / "preferences.json"); // a folder stands in the way
    EXPECT_NE(world.run("- [ ] Pain · 2025-03-04\n"), "+1 ~0 -0");
    std::filesystem::remove(world.home / "preferences.json");
    EXPECT_EQ(world.run("- [ ] Pain · 2025-03-04\n"), "+1 ~0 -0");
    EXPECT_EQ(world.google.state("calendars").size(), 1U);
}

TEST(CalendarSync, SendsAFirstMirrorInOneLineAtTheServicesPace) {
    MirrorWorld world;
    world.google.control({{"page_size", 700}});
    std::string text;
    for (int i = 0; i < 2000; ++i) text += "- [ ] Tâche " + std::to_string(i) + " · 2025-03-04 14:30\n";
    EXPECT_EQ(world.run(text), "+2000 ~0 -0");
    EXPECT_EQ(world.google.state("overlap"), 1);
    std::set<Json> connections;
    for (const Json& entry : world.google.state("log")) {
        if (entry["path"] != "/token") connections.insert(entry["connection"]);
    }
    EXPECT_EQ(connections.size(), 1U);
    EXPECT_EQ(world.waits.size(), 2001U - 200U);
    EXPECT_NEAR(std::chrono::duration<double>(world.now.time_since_epoch()).count(), (2001 - 200) / 6.0, 2);

    world.requests();
    EXPECT_EQ(world.run(text), "+0 ~0 -0");
    EXPECT_EQ(world.requests(), (Lines{"GET", "GET", "GET"})) << "in pages";
}

TEST(CalendarSync, WaitsLongerAfterEachRefusalForPace) {
    MirrorWorld world;
    const std::string text = "- [ ] Pain · 2025-03-04\n";
    const auto refusedWith = [&](const Json& fault) {
        Json order = {{"at", 1}, {"kind", "status"}, {"status", 429}};
        order.update(fault);
        world.google.control({{"faults", {order}}});
        EXPECT_NE(world.run(text), "+1 ~0 -0");
    };
    for (int i = 0; i < 8; ++i) refusedWith(Json::object());
    refusedWith({{"headers", {{"Retry-After", "17"}}}});
    refusedWith({{"status", 503}, {"headers", {{"Retry-After", "86400"}}}});
    refusedWith({{"status", 403}, {"reason", "userRateLimitExceeded"}});
    refusedWith({{"status", 403}, {"reason", "insufficientPermissions"}});
    const auto waited = std::exchange(world.waits, {});
    EXPECT_EQ(waited, (std::vector<Pace::Wait>{1s, 2s, 4s, 8s, 16s, 32s, 64s, 64s, 17s, 300s, 64s}));
    world.google.control({{"faults", Json::array()}});
    EXPECT_EQ(world.run(text), "+1 ~0 -0");
    EXPECT_EQ(world.waits, std::vector<Pace::Wait>{}) << "another refusal is no reason to wait";
    refusedWith(Json::object());
    world.run(text);
    EXPECT_EQ(world.waits, std::vector<Pace::Wait>{1s}) << "a whole pass starts over";
}

}
}
