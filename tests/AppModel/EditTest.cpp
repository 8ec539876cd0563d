#include "Tacla/TaskList/TaskFile.h"
#include "tests/support/ModelWorld.h"

namespace tacla::testing {

TEST(AppModel, EditsTitleAndMomentByTheirRules) {
    const std::optional<Clock> none;
    const std::tuple<TaskChange, const char*, const char*> table[] = {
        {{"Lait", Day{2025, 3, 9}, Clock{9, 5}}, "❗ Pain · 2025-03-06", "❗ Lait · 2025-03-09 09:05"},
        {{"  ❗ Lait ", Day{2025, 3, 6}, none}, "❗ Pain · 2025-03-06", "❗ Lait · 2025-03-06"},
        {{.title = "PAIN"}, "❗ Pain · 2025-03-06", "❗ PAIN · 2025-03-06"},
        {{.title = "a · b · · c"}, "❗ Pain · 2025-03-06", "❗ a - b - - c · 2025-03-06"},
        {{"  ", Day{2025, 3, 7}}, "❗ Pain · 2025-03-06", "❗ Pain · 2025-03-07"},
        {{"two\r\nlines", Day{2025, 3, 7}}, "❗ Pain · 2025-03-06", "❗ two lines · 2025-03-07"},
        {{.title = "\u2028three\u2028\u0085 \flines"}, "❗ Pain · 2025-03-06", "❗ three   lines · 2025-03-06"},
        // What was not touched stays as the file has it, in its own spelling.
        {{.title = "Lait"}, "Pain · 2025-03-07 9:05", "Lait · 2025-03-07 9:05"},
        {{.title = "Lait"}, "Pain · 2027-02-30", "Lait · 2027-02-30"},
        {{.title = "Lait"}, "Pain · 2025-03-01 · 2025-03-02 14:00", "Lait · 2025-03-01 · 2025-03-02 14:00"},
        {{.title = "Lait"}, "Pain", "Lait"},
        {{.time = Clock{9, 5}}, "Pain · 2025-03-07", "Pain · 2025-03-07 09:05"},
        {{.time = none}, "Pain · 2025-03-07 10:00", "Pain · 2025-03-07"},
        {{.day = Day{2025, 3, 9}}, "Pain · 2025-03-07 10:00", "Pain · 2025-03-09 10:00"},
    };
    for (const auto& [change, line, expected] : table) {
        LivingWorld world("2025-03-04 08:00", "- [ ] Pain · 2025-03-06\n");
        auto seen = world.state().tasks.at(0);
        world.save(std::string("- [ ] ") + line + "\n"); // an editor was faster
        world.list().edit(seen, change);
        EXPECT_EQ(world.text(), std::string("- [ ] ") + expected + "\n");
    }
}

TEST(AppModel, ChangesTheTaskThatWasSeenOrNone) {
    constexpr Day fifth{2025, 3, 5};
    using Act = std::function<void(LiveDocument&, const TaskItem&)>;
    const std::pair<const char*, Act> acts[] = {
        {"- [x] Pain · 2025-03-07 · ✅ 2025-03-04\n", [](auto& list, const auto& seen) { list.toggle(seen); }},
        {"- [ ] Pain · 2025-03-05\n", [](auto& list, const auto& seen) { list.reschedule(seen, fifth, {}); }},
        {"- [ ] Sel · 2025-03-07\n", [](auto& list, const auto& seen) { list.edit(seen, {.title = "Sel"}); }},
        {"", [](auto& list, const auto& seen) { list.remove(seen); }},
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
            LivingWorld world("2025-03-04 08:00", drawn);
            const auto seen = world.state().tasks.at(0);
            world.save(now);
            act(world.list(), seen);
            EXPECT_EQ(world.text(), unmistakable ? std::string("# Liste\n") + changed : now) << drawn;
            EXPECT_EQ(world.state().tasks.size(), TaskFile::parse(world.text()).size()) << "the list as it is now";
        }
}

TEST(AppModel, StaysSilentAfterAnEditIntoThePastAndAfterARename) {
    LivingWorld world("2025-03-04 10:00", "- [ ] A · 2025-03-04\n- [ ] B · 2025-03-05\n");
    EXPECT_EQ(world.notifications.transcript(), "10:00 A | Prévue aujourd'hui\n");
    world.list().edit(world.task("A"), {.title = "AA", .day = Day{2025, 3, 4}});
    world.list().edit(world.task("B"), {.day = Day{2025, 3, 4}, .time = Clock{9, 59}});
    world.loop.advance(48h);
    EXPECT_EQ(world.notifications.transcript(), "");
}

}
