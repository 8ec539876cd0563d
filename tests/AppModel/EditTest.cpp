#include "Tacla/TaskList/TaskFile.h"
#include "tests/support/ModelWorld.h"

#include <gtest/gtest.h>

namespace tacla::testing {

using namespace std::chrono_literals;

TEST(AppModel, EditsTitleAndMomentByTheirRules) {
    const std::tuple<const char*, std::optional<Day>, std::optional<Clock>, const char*> table[] = {
        {"Lait", Day{2025, 3, 9}, Clock{9, 5}, "- [ ] ❗ Lait · 2025-03-09 09:05\n"},
        {"  ❗ Lait ", Day{2025, 3, 6}, {}, "- [ ] ❗ Lait · 2025-03-06\n"},
        {"Lait", {}, {}, "- [ ] ❗ Lait · 2025-03-06\n"},
        {"PAIN", {}, {}, "- [ ] ❗ PAIN · 2025-03-06\n"},
        {"a · b · · c", {}, {}, "- [ ] ❗ a - b - - c · 2025-03-06\n"},
        {"  ", Day{2025, 3, 7}, {}, "- [ ] ❗ Pain · 2025-03-07\n"},
        {"two\nlines", Day{2025, 3, 7}, {}, "- [ ] ❗ Pain · 2025-03-07\n"},
        {"two\u2028lines", {}, {}, "- [ ] ❗ Pain · 2025-03-06\n"},
    };
    for (const auto& [title, day, time, text] : table) {
        ModelWorld world("2025-03-04 08:00", "- [ ] ❗ Pain · 2025-03-06\n");
        world.start();
        world.model.edit(world.task("❗ Pain"), title, day, time);
        EXPECT_EQ(world.text(), text) << title;
    }
}

TEST(AppModel, ChangesTheTaskThatWasSeenOrNone) {
    using Act = std::function<void(AppModel&, const TaskItem&)>;
    const std::pair<const char*, Act> acts[] = {
        {"- [x] Pain · 2025-03-07 · ✅ 2025-03-04\n", [](auto& model, const auto& seen) { model.toggle(seen); }},
        {"- [x] Pain · 2025-03-07 · ✅ 2025-03-04\n", [](auto& model, const auto& seen) { model.setDone(seen); }},
        {"- [ ] Pain · 2025-03-05\n",
         [](auto& model, const auto& seen) {
             model.reschedule(seen, Day{2025, 3, 5}, {});
         }},
        {"- [ ] Sel · 2025-03-07\n", [](auto& model, const auto& seen) { model.edit(seen, "Sel", {}, {}); }},
        {"", [](auto& model, const auto& seen) { model.remove(seen); }},
    };
    const std::string first = "- [ ] Pain · 2025-03-04\n", other = "- [ ] Pain · 2025-03-11\n";
    const std::string moved = "- [ ] Pain · 2025-03-07\n", timed = "- [ ] Pain · 2025-03-04 09:00\n";
    const std::tuple<std::string, std::string, bool> races[] = {
        {first + other, other, false}, // today's was deleted: next week's has its key now
        {other + first, first, false}, // the same the other way round
        {first + other, "- [x]" + first.substr(5) + other, false},
        {first + other, timed + other, false}, // several stood: another mark is not unmistakable
        {first, moved + other, false},         // one stood, several stand
        {first, "", false},
        {first, "# Liste\n" + moved, true}, // one stood, one stands
    };
    for (const auto& [drawn, now, unmistakable] : races)
        for (const auto& [changed, act] : acts) {
            ModelWorld world("2025-03-04 08:00", drawn);
            world.start();
            const auto seen = world.state().tasks.at(0);
            world.save(now);
            act(world.model, seen);
            EXPECT_EQ(world.text(), unmistakable ? std::string("# Liste\n") + changed : now) << drawn;
            EXPECT_EQ(world.state().tasks.size(), TaskFile::parse(world.text()).size()) << "the list as it is now";
        }
}

TEST(AppModel, FindsATaskByAnyKeyItHadInThisRun) {
    ModelWorld world("2025-03-04 08:00", "- [ ] Pain · 2025-03-04\n- [ ] pain · 2025-03-04\n");
    world.start();
    const auto first = world.task("Pain").key, second = world.task("pain").key;
    world.model.edit(world.task("Pain"), "Lait", {}, {}); // the second one becomes the first of its title
    world.model.edit(world.task("Lait"), "Beurre", {}, {});
    world.model.edit(world.task("pain"), "Sel", {}, {});
    world.model.setDone(second);
    EXPECT_EQ(world.text(), "- [ ] Beurre · 2025-03-04\n- [x] Sel · 2025-03-04 · ✅ 2025-03-04\n");
}

TEST(AppModel, StaysSilentAfterAnEditIntoThePastAndAfterARename) {
    ModelWorld world("2025-03-04 10:00", "- [ ] A · 2025-03-04\n- [ ] B · 2025-03-05\n");
    world.start();
    EXPECT_EQ(world.notifications.transcript(), "10:00 A | Prévue aujourd'hui\n");
    world.model.edit(world.task("A"), "AA", Day{2025, 3, 4}, {});
    world.model.edit(world.task("B"), "B", Day{2025, 3, 4}, Clock{9, 59});
    world.loop.advance(48h);
    EXPECT_EQ(world.notifications.transcript(), "");
}

}
