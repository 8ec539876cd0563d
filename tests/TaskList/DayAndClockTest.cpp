#include "Tacla/TaskList/TaskItem.h"
#include "Tacla/TaskList/UsualNotation.h"

#include <gtest/gtest.h>

using namespace tacla;

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
