#include "DravelKit/Foundation/WallCalendar.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace dravel;

namespace {

Instant utc(int year, unsigned month, unsigned day, int hour, int minute) {
    using namespace std::chrono;
    return sys_days(std::chrono::year(year) / month / day) + hours(hour) + minutes(minute);
}

}

TEST(WallCalendar, followsTheClockThroughDaylightSavingNights) {
    EXPECT_EQ(wall::instant({2025, 7, 14, 9, 0}), utc(2025, 7, 14, 7, 0));
    EXPECT_EQ(wall::instant({2025, 3, 30, 2, 30}), utc(2025, 3, 30, 1, 0));    // skipped: 03:00 is the next that exists
    EXPECT_EQ(wall::instant({2025, 10, 26, 2, 30}), utc(2025, 10, 26, 0, 30)); // repeated: the first
    EXPECT_EQ(wall::instant({2025, 2, 30, 0, 0}), wall::instant({2025, 3, 2, 0, 0}));
    EXPECT_EQ(wall::instant({2025, 12, 31, 24, 0}), wall::instant({2026, 1, 1, 0, 0}));
    const auto reading = wall::read(utc(2025, 10, 26, 1, 30));
    EXPECT_EQ(std::pair(reading.hour, reading.minute), std::pair(2L, 30L));
}

TEST(WallCalendar, speaksFrench) {
    EXPECT_EQ(wall::frenchLongDay(2025, 3, 4), "mardi 4 mars");
    EXPECT_EQ(wall::frenchLongDay(2025, 6, 1), "dimanche 1 juin");
    EXPECT_EQ(wall::frenchLongDay(2025, 8, 15), "vendredi 15 août");
    EXPECT_EQ(wall::weekday(2025, 3, 9), 0);
    EXPECT_EQ(wall::weekday(1960, 1, 2), 6);
}

TEST(WallCalendar, followsTheUserToAnotherZone) {
    EXPECT_EQ(wall::zoneIdentifier(), "Europe/Paris");
    wall::refreshZone();
    EXPECT_FALSE(wall::refreshZone());
    ::setenv("TZ", "Asia/Tokyo", 1);
    EXPECT_TRUE(wall::refreshZone());
    EXPECT_EQ(wall::zoneIdentifier(), "Asia/Tokyo");
    EXPECT_EQ(wall::instant({2025, 3, 4, 9, 0}), utc(2025, 3, 4, 0, 0));
    EXPECT_EQ(wall::read(utc(2025, 3, 4, 0, 0)).hour, 9);
    ::setenv("TZ", "Europe/Paris", 1);
    EXPECT_TRUE(wall::refreshZone());
}
