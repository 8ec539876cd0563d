#include "DravelKit/Foundation/WallCalendar.h"
#include "DravelKit/Foundation/WallNames.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace dravel;

namespace {

Instant utc(int year, int month, int day, int hour, int minute) {
    using namespace std::chrono;
    return sys_days(std::chrono::year(year) / month / day) + hours(hour) + minutes(minute);
}

// Whether the zone is another one then.
bool goTo(const std::string& zone) {
    ::setenv("TZ", zone.c_str(), 1);
    return wall::refreshZone();
}

}

TEST(WallCalendar, SpeaksFrench) {
    EXPECT_EQ(wall::frenchLongDay(2025, 3, 4), "mardi 4 mars");
    EXPECT_EQ(wall::frenchLongDay(2025, 8, 15), "vendredi 15 août");
    EXPECT_EQ(wall::frenchLongDay(2025, 2, 30), "dimanche 2 mars");
    EXPECT_EQ(wall::weekday(2025, 3, 9), 0);
    EXPECT_EQ(wall::weekday(1960, 1, 2), 6);
}

TEST(WallCalendar, KnowsTheOddNightsOfTheWorld) {
    const struct {
        const char* zone;
        wall::Reading reading;
        Instant expected;
    } cases[] = {
        {"America/Sao_Paulo", {2018, 11, 4, 0, 0}, utc(2018, 11, 4, 3, 0)},      // no midnight: the day begins at 01:00
        {"America/Havana", {2025, 11, 2, 0, 30}, utc(2025, 11, 2, 4, 30)},       // two midnights: the first
        {"Australia/Lord_Howe", {2025, 10, 5, 2, 10}, utc(2025, 10, 4, 15, 30)}, // a change of half an hour
        {"Pacific/Apia", {2011, 12, 30, 12, 0}, utc(2011, 12, 30, 10, 0)},       // a day that never was
        {"Africa/Cairo", {2025, 7, 1, 9, 0}, utc(2025, 7, 1, 6, 0)},             // summer time, again since 2023
        {"America/Mexico_City", {2025, 7, 1, 9, 0}, utc(2025, 7, 1, 15, 0)},     // none any more since 2022
        {"EST5EDT,M3.2.0,M11.1.0", {2025, 7, 1, 9, 0}, utc(2025, 7, 1, 13, 0)},  // a rule in place of a name
        {"Europe/Paris", {2025, 7, 14, 9, 0}, utc(2025, 7, 14, 7, 0)},
        {"Europe/Paris", {2025, 3, 30, 2, 30}, utc(2025, 3, 30, 1, 0)},    // skipped: 03:00 is the next that exists
        {"Europe/Paris", {2025, 10, 26, 2, 30}, utc(2025, 10, 26, 0, 30)}, // repeated: the first
        {"Europe/Paris", {2025, 2, 30, 0, 0}, utc(2025, 3, 1, 23, 0)},
        {"Europe/Paris", {2025, 12, 31, 24, 0}, utc(2025, 12, 31, 23, 0)},
    };
    for (const auto& [zone, reading, expected] : cases) {
        goTo(zone);
        EXPECT_EQ(wall::instant(reading), expected) << zone;
    }
    EXPECT_EQ(wall::read(utc(2025, 10, 26, 1, 30)).hour, 2);
}

TEST(WallCalendar, FollowsTheUserToAnotherZone) {
    const tacla::testing::TemporaryFolder folder;
    const auto link = ":" + (folder / "localtime").string();
    std::filesystem::create_symlink("/usr/share/zoneinfo/Asia/Tokyo", folder / "localtime");
    const bool twins = std::filesystem::exists("/usr/share/zoneinfo/posix"); // Debian 13 packs them apart
    const std::pair<std::string, const char*> names[] = {{"", "UTC"},
                                                         {":America/Lima", "America/Lima"},
                                                         {"/usr/share/zoneinfo/Asia/Tokyo", "Asia/Tokyo"},
                                                         {link, "Asia/Tokyo"},
                                                         {"CET-1CEST,M3.5.0,M10.5.0/3", "Europe/Paris"},
                                                         {"posix/Asia/Tokyo", twins ? "Asia/Tokyo" : "UTC"},
                                                         {"/usr/share/zoneinfo/right/Asia/Tokyo", "Asia/Tokyo"},
                                                         {"Nulle/Part", "UTC"},
                                                         {"XYZ-3:17", "UTC"},
                                                         {"Europe/Paris", "Europe/Paris"}};
    for (const auto& [variable, name] : names) {
        goTo(variable);
        EXPECT_EQ(wall::zoneIdentifier(), name) << variable;
    }
    goTo("EST5EDT,M3.2.0,M11.1.0"); // which zone that is, the system may know
    EXPECT_FALSE(wall::zoneIdentifier().empty());
    ::unsetenv("TZ");
    EXPECT_TRUE(wall::refreshZone());
    EXPECT_FALSE(wall::zoneIdentifier().empty());
    goTo("Europe/Paris");
    EXPECT_FALSE(goTo("Europe/Paris"));
    EXPECT_TRUE(goTo("Asia/Tokyo"));
    EXPECT_EQ(wall::zoneIdentifier(), "Asia/Tokyo");
    EXPECT_EQ(wall::instant({2025, 3, 4, 9, 0}), utc(2025, 3, 4, 0, 0));
    EXPECT_EQ(wall::read(utc(2025, 3, 4, 0, 0)).hour, 9);
    EXPECT_TRUE(goTo("Europe/Paris"));
}
