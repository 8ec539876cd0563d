#include "Tacla/TaskList/TaskViews.h"

#include <gtest/gtest.h>

using namespace tacla;

namespace {

// 5 March 2025 at 14:05 and 30 seconds, in Paris.
const Day today{2025, 3, 5};
// Not before main has set the zone.
Instant now() { return *TaskItem{0, false, "", today, Clock{14, 5}, {}, {}, ""}.at() + std::chrono::seconds(30); }

std::string titles(const TaskSelection& tasks) {
    std::string all;
    for (const auto& task : tasks) all += (all.empty() ? "" : ", ") + task.title;
    return all;
}

const char* const text = "- [ ] demain 8h · 2025-03-06 08:00\n"
                         "- [ ] 14:06 · 2025-03-05 14:06\n"
                         "- [ ] 14:05 · 2025-03-05 14:05\n"
                         "- [ ] 14:04 · 2025-03-05 14:04\n"
                         "- [ ] sans heure · 2025-03-05\n"
                         "- [x] faite 8:00 · 2025-03-05 08:00\n"
                         "- [ ] demain · 2025-03-06\n"
                         "- [ ] hier · 2025-03-04 23:00\n"
                         "- [ ] un jour\n"
                         "- [x] faite hier · 2025-03-04 · ✅ 2025-03-05\n"
                         "- [x] sans rien\n"
                         "- [x] vieille · 2025-03-06 · ✅ 2025-01-01\n"
                         "- [ ] aussi hier 23h · 2025-03-04 23:00\n";

}

TEST(TaskViews, SortEachTaskIntoItsList) {
    const TaskList tasks(text);
    const auto shown = [&](Places places) { return titles({tasks, std::move(places)}); };
    EXPECT_EQ(shown(late(tasks, now())), "hier, aussi hier 23h, 14:04");
    EXPECT_EQ(shown(todays(tasks, now())), "faite 8:00, sans heure, 14:05, 14:06");
    EXPECT_EQ(shown(upcoming(tasks, today, 9)), "demain 8h, demain");
    EXPECT_EQ(shown(undated(tasks)), "un jour");
    std::string done;
    for (auto& [day, places] : doneByDay(tasks, today)) done += shown(std::move(places)) + " / ";
    EXPECT_EQ(done, "faite 8:00, faite hier, sans rien / vieille / ");
    EXPECT_EQ(openCount(tasks, now()), 6U);
    EXPECT_EQ(shown(late(tasks, now() + std::chrono::seconds(30))), "hier, aussi hier 23h, 14:04, 14:05");
}
