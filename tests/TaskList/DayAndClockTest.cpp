#include "Tacla/TaskList/TaskItem.h"
#include "Tacla/TaskList/UsualNotation.h"

#include <gtest/gtest.h>

using namespace tacla;

// What else reads, and what does not: QuickReading compares it with plain words.
TEST(DayAndClock, ReadTheNotationOfTheFile) {
    for (const auto* text : {"2025-03-04", "2025-3-4", "2025-0003-04", "2025--03-04-"}) // empty pieces are dropped
        EXPECT_EQ(Day::parse(text), (Day{2025, 3, 4})) << text;
    for (const auto* text : {"", "25-03-04", "2025-03-04-05", " 2025-03-04", "2025-13-01", "2025-01-00", "+025-01-01",
                             "2025-0x1-01", "２０２５-01-01"})
        EXPECT_FALSE(Day::parse(text)) << text;
    for (const auto* text : {"09:05", "9:05", ":9::05:"}) EXPECT_EQ(Clock::parse(text), (Clock{9, 5})) << text;
    for (const auto* text : {"", ":", "9", "9:5", "009:05", "24:00", "23:60", " 9:05", "1:02:03", "-1:00", "9:+5"})
        EXPECT_FALSE(Clock::parse(text)) << text;
}

TEST(UsualNotation, IsWhateverTheEditsWrite) {
    for (std::int64_t year = 0; year < 10'000; ++year)
        for (const auto& [month, day] :
             {std::pair<std::int64_t, std::int64_t>{1, 1}, {year % 12 + 1, year % 31 + 1}, {12, 31}})
            ASSERT_EQ(unpackedDay(usualDay((Day{year, month, day}.description()))), (Day{year, month, day}));
    for (std::int64_t minute = 0; minute < 24 * 60; ++minute) {
        const Clock clock{minute / 60, minute % 60};
        ASSERT_EQ(unpackedClock(usualClock(clock.description())), clock);
    }
}

TEST(Day, MovesThroughTheCalendar) {
    EXPECT_EQ((Day{2025, 3, 3}).nextMonday(), (Day{2025, 3, 10}));
    EXPECT_EQ((Day{2025, 3, 9}).nextMonday(), (Day{2025, 3, 10}));
    EXPECT_EQ((Day{2025, 3, 8}).nextMonday(), (Day{2025, 3, 10}));
    EXPECT_EQ((Day{2025, 12, 31}).plusDays(1), (Day{2026, 1, 1}));
    EXPECT_EQ((Day{2025, 2, 30}).plusDays(0), (Day{2025, 3, 2}));
    EXPECT_EQ(Day::of((Day{2025, 2, 31}).date()), (Day{2025, 3, 3}));
    EXPECT_LT((Day{2025, 3, 4}), (Day{2025, 10, 1}));
    EXPECT_EQ((Day{-5, 1, 1}).description(), "-005-01-01");
}

TEST(TaskItem, FallsDueAtItsTimeOrAtNine) {
    const auto due = [](std::optional<Day> day, std::optional<Clock> time) {
        return TaskItem{0, false, "A", day, time, {}, {}, ""}.at();
    };
    EXPECT_EQ(due({}, {}), std::nullopt);
    EXPECT_EQ(Clock::of(*due(Day{2025, 3, 30}, {})), (Clock{9, 0}));
    EXPECT_EQ(Clock::of(*due(Day{2025, 3, 30}, Clock{2, 30})), (Clock{3, 0})); // the night without 02:30
    EXPECT_EQ(due(Day{2025, 10, 26}, Clock{3, 0}).value() - due(Day{2025, 10, 26}, Clock{2, 0}).value(),
              std::chrono::hours(2));
}
