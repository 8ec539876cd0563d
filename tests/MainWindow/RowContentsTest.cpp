#include "Tacla/MainWindow/Rows/RowContents.h"
#include "tests/MainWindow/ModelStates.h"

namespace tacla::testing {

static constexpr Day today{2026, 11, 24};

static std::string transcript(const std::vector<TaskTag>& tags) {
    std::string text;
    for (const auto& tag : tags)
        text += (text.empty() ? "" : ", ") + tag.text + (tag.role == ColourRole::plain ? "" : "!");
    return text;
}

TEST(TaskTags, StandInOrder) {
    const std::tuple<const char*, const char*, const char*> cases[] = {
        // with the day, without it
        {"- [ ] Pain", "", ""},
        {"- [ ] Pain · 2026-11-24", "aujourd'hui", ""},
        {"- [ ] Pain · 2026-11-25 09:30", "demain, 09:30", "09:30"},
        {"- [ ] Pain · 2026-12-01", "01/12", ""},
        {"- [ ] ❗ Pain · 2026-11-20 14:00 · due 2026-11-12", "20/11, 14:00, Prioritaire!, due le 12/11!",
         "14:00, Prioritaire!, due le 12/11!"},
        {"- [x] ❗ Pain · 2026-11-20 · due 2026-11-12", "20/11", ""},
        {"- [x] Pain · 2026-11-23 · ✅ 2026-11-24", "23/11, faite le 24/11!", "faite le 24/11!"},
        {"- [x] Pain · 2026-11-24 · ✅ 2026-11-24", "aujourd'hui", ""},
        {"- [x] Pain · ✅ 2026-11-23", "faite le 23/11!", "faite le 23/11!"},
    };
    for (const auto& [line, withDay, withoutDay] : cases) {
        SCOPED_TRACE(line);
        EXPECT_EQ(transcript(taskTags(taskOf(line), today, true)), withDay);
        EXPECT_EQ(transcript(taskTags(taskOf(line), today, false)), withoutDay);
        const auto brief = TaskList(line).brief(0);
        EXPECT_EQ(hasTags(brief, true), *withDay != '\0');
        EXPECT_EQ(hasTags(brief, false), *withoutDay != '\0');
    }
}

TEST(RowMenu, PostponesOpenTasksFromTodayAndByAWeekFromTheirOwnDay) {
    const auto dated = taskOf("- [ ] Pain · 2026-11-03");
    EXPECT_EQ(postponedDay(RowCommand::postponeToTomorrow, dated, today), (Day{2026, 11, 25}));
    EXPECT_EQ(postponedDay(RowCommand::postponeToMonday, dated, today), (Day{2026, 11, 30}));
    EXPECT_EQ(postponedDay(RowCommand::postponeByAWeek, dated, today), (Day{2026, 11, 10}));
    EXPECT_EQ(postponedDay(RowCommand::postponeByAWeek, taskOf("- [ ] Pain"), today), (Day{2026, 12, 1}));
    EXPECT_EQ(postponedDay(RowCommand::postponeByAWeek, taskOf("- [ ] Pain · 9999-12-28"), today), (Day{9999, 12, 31}));
    for (const auto& entry : rowMenu(taskOf("- [x] Pain"))) {
        EXPECT_EQ(postponedDay(entry.command, dated, today), std::nullopt) << entry.label;
        EXPECT_FALSE(entry.separatorBefore) << entry.label;
    }
}

TEST(TaskEditor, OpensOnTheTaskWithTenOClockForOneWithoutATime) {
    EXPECT_EQ(draftOf(taskOf("- [ ] ❗ Pain · 2026-11-26 18:00"), today),
              (TaskDraft{"Pain", {2026, 11, 26}, true, {18, 0}, true}));
    EXPECT_EQ(draftOf(taskOf("- [ ] Pain"), today), (TaskDraft{"Pain", today, false, {10, 0}, false}));
    EXPECT_EQ(draftOf(taskOf("- [ ] Pain · 2026-02-30"), today).day, (Day{2026, 3, 2}));
}

TEST(TaskEditor, AsksForWhatWasTouchedAndKeepsATaskWithoutADayUndated) {
    struct Case {
        const char *what, *line;
        Day day;
        bool hasTime;
        Day savedOn;
        TaskChange expected;
    };
    const Day tomorrow{2026, 11, 25}, friday{2026, 11, 20};
    const std::optional<Clock> none;
    const Case cases[] = {
        {"untouched", "- [ ] Pain", today, false, today, {}},
        {"untouched over midnight", "- [ ] Pain", today, false, tomorrow, {}},
        {"another day", "- [ ] Pain", tomorrow, false, today, {.day = tomorrow}},
        {"a time", "- [ ] Pain", today, true, today, {.day = today, .time = Clock{10, 0}}},
        {"dated, untouched", "- [ ] Pain · 2026-11-24", today, false, today, {}},
        {"dated, to the day of its saving", "- [ ] Pain · 2026-11-20", today, false, today, {.day = today}},
        {"its time taken away", "- [ ] Pain · 2026-11-20 18:00", friday, false, today, {.time = none}},
    };
    for (const auto& [what, line, day, hasTime, savedOn, expected] : cases) {
        SCOPED_TRACE(what);
        const auto opened = draftOf(taskOf(line), today);
        auto draft = opened;
        draft.day = day;
        draft.hasTime = hasTime;
        EXPECT_EQ(changeOf(draft, opened, savedOn), expected);
        draft.title = "Vin";
        EXPECT_EQ(changeOf(draft, opened, savedOn).title, "Vin");
    }
}

}
