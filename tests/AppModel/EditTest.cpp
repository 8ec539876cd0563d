#include "Tacla/TaskList/TaskFile.h"
#include "tests/support/ModelWorld.h"

namespace tacla::testing {

static constexpr Day tomorrow{2025, 3, 5}, ninth{2025, 3, 9};
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
    using Act = std::function<void(LiveDocument&, const TaskItem&)>;
    const std::pair<const char*, Act> acts[] = {
        {"- [x] Pain · 2025-03-07 · ✅ 2025-03-04\n", [](auto& list, const auto& seen) { list.toggle(seen); }},
        {"- [ ] Pain · 2025-03-05\n", [](auto& list, const auto& seen) { list.reschedule(seen, tomorrow, {}); }},
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

static constexpr auto list =
    "# Liste\r\n- [ ] ❗ Pain · 2025-03-05\n  - [ ] Lait · 2025-03-04 07:00 · due 2025-03-01\n- [x] Œufs";

TEST(AppModel, WritesEachActionTellsOfItOnceAndGivesBackEveryByte) {
    const std::string pain = "- [ ] ❗ Pain · 2025-03-05\n", eggs = "- [x] Œufs";
    const std::string lait = "  - [ ] Lait · 2025-03-04 07:00 · due 2025-03-01\n";
    const TaskChange salt{"Sel", ninth, Clock{9, 5}};
    const std::vector<NewTask> today{{"Sel", Day{2025, 3, 4}}}, later{{"Sel", ninth}};
    using Act = std::function<void(LiveDocument&, const TaskItem&)>;
    const std::tuple<const char*, Act, std::string, const char*> table[] = {
        {"Lait", [&](auto& shown, auto& seen) { shown.toggle(seen); },
         pain + "  - [x] Lait · 2025-03-04 07:00 · due 2025-03-01 · ✅ 2025-03-04\n" + eggs, "Tâche cochée : Lait"},
        {"Œufs", [&](auto& shown, auto& seen) { shown.toggle(seen); }, pain + lait + "- [ ] Œufs",
         "Tâche décochée : Œufs"},
        {"❗ Pain", [&](auto& shown, auto& seen) { shown.toggle(seen); },
         "- [x] ❗ Pain · 2025-03-05 · ✅ 2025-03-04\n" + lait + eggs, "Tâche cochée : Pain"},
        {"Lait", [&](auto& shown, auto& seen) { shown.reschedule(seen, tomorrow, seen.time); },
         pain + "  - [ ] Lait · 2025-03-05 07:00 · due 2025-03-01\n" + eggs, "Tâche reportée : Lait"},
        {"❗ Pain", [&](auto& shown, auto& seen) { shown.edit(seen, salt); },
         "- [ ] ❗ Sel · 2025-03-09 09:05\n" + lait + eggs, "Tâche modifiée : Sel"},
        {"❗ Pain", [&](auto& shown, auto& seen) { shown.remove(seen); }, lait + eggs, "Tâche supprimée : Pain"},
        {"Lait", [&](auto& shown, auto&) { shown.add(today); }, pain + lait + eggs + "\n- [ ] Sel · 2025-03-04",
         "Tâche ajoutée"},
        {"Lait", [&](auto& shown, auto&) { shown.add(later); }, pain + lait + eggs + "\n- [ ] Sel · 2025-03-09",
         "Ajoutée pour dimanche 9 mars"},
    };
    for (const auto& [title, act, text, said] : table) {
        LivingWorld world("2025-03-04 08:00", list);
        auto stranger = world.task("Lait");
        stranger.key = "0123456789abcdef";
        world.list().toggle(stranger);
        world.list().reschedule(stranger, tomorrow, {});
        EXPECT_EQ(world.told, 0) << text;
        act(world.list(), world.task(title));
        EXPECT_EQ(world.text(), "# Liste\r\n" + text) << text;
        EXPECT_EQ(world.told, 1) << text;
        world.loop.advance(9999ms);
        EXPECT_EQ(world.state().undoBar, (UndoBar{said, true})) << text;
        world.loop.advance(1ms);
        EXPECT_EQ(world.state().undoBar, std::nullopt) << text;
        world.told = 0;
        world.list().undo();
        EXPECT_EQ(world.text(), list) << text;
        world.list().undo(); // there is nothing more to take back
        EXPECT_EQ(world.told, 1) << text;
    }
}

TEST(Undo, WritesNothingOnceTheFileChanged) {
    LivingWorld world("2025-03-04 08:00", list);
    world.list().remove(world.task("Lait"));
    const auto edited = world.text() + "\n";
    world.save(edited);
    world.list().undo();
    EXPECT_EQ(world.text(), edited);
    EXPECT_EQ(world.state().undoBar, (UndoBar{"Le fichier a changé depuis : rien n'a été annulé.", false}));
    world.loop.advance(10s);
    EXPECT_EQ(world.state().undoBar, std::nullopt);

    world.list().toggle(world.task("Œufs"));
    world.list().open(world.folder / "other.md"); // another list has nothing to undo
    EXPECT_EQ(world.state().undoBar, std::nullopt);
    world.list().undo();
    EXPECT_EQ(world.state().undoBar, std::nullopt);
}

TEST(Undo, TakesTheLastTenChangesBack) {
    LivingWorld world("2025-03-04 08:00", list);
    std::vector<std::string> texts;
    for (int i = 0; i < 12; ++i) {
        texts.push_back(world.text());
        world.list().toggle(world.task(i % 3 == 0 ? "Œufs" : "Lait"));
    }
    for (; texts.size() > 2; texts.pop_back()) {
        world.list().undo();
        EXPECT_EQ(world.text(), texts.back());
    }
    EXPECT_FALSE(world.list().state().canUndo);
}

TEST(Undo, CanBeTriedAgainAfterItCouldNotBeWritten) {
    LivingWorld world("2025-03-04 08:00", list);
    world.list().toggle(world.task("Lait"));
    std::filesystem::rename(world.file, world.folder / "aside");
    world.list().undo();
    EXPECT_TRUE(world.state().fileError.value().starts_with("Impossible d'écrire "));
    std::filesystem::rename(world.folder / "aside", world.file);
    world.list().undo();
    EXPECT_EQ(world.text(), list);
}

TEST(Undo, CarriesRemindersAndEventsBack) {
    MirroredWorld world("- [ ] B · 2025-03-05 08:00\n");
    const auto before = world.task("B").key;
    world.list().edit(world.task("B"), {"C", Day{2025, 3, 4}, Clock{9, 0}});
    const auto after = world.task("C").key;
    world.loop.advance(1s);
    EXPECT_EQ(world.calendar.runs.back(), (std::map<std::string, std::string>{{before, after}}));
    world.list().undo();
    world.loop.advance(1s);
    EXPECT_EQ(world.calendar.runs.back(), (std::map<std::string, std::string>{{after, before}}));
    world.loop.advance(24h);
    EXPECT_EQ(world.notifications.transcript(), "08:00 B | Prévue à 08:00\n");
}

TEST(Undo, LeavesANamesakeThatWaitsForAServerToRing) {
    ModelWorld world("2025-03-04 08:00", "- [ ] pain · 2025-03-09\n- [ ] Pain · 2025-03-04\n");
    world.notifications.capabilities.reachable = false;
    world.start();
    world.loop.advanceTo(moment("2025-03-05 10:00"));
    world.list().remove(world.task("pain")); // the other one takes over its key, and gives it back
    world.list().undo();
    world.notifications.setReachable(true);
    world.loop.runPosted();
    EXPECT_EQ(world.notifications.transcript(), "10:00 Pain | Prévue le 04/03\n");
}

TEST(Undo, RingsForNothingThatIsPastByThen) {
    const std::function<void(ModelWorld&)> changes[] = {
        [](ModelWorld& w) { w.list().toggle(w.task("A")); },
        [](ModelWorld& w) { w.list().remove(w.task("A")); },
        [](ModelWorld& w) { w.list().reschedule(w.task("A"), tomorrow, {}); },
    };
    for (const auto& change : changes) {
        LivingWorld world("2025-03-04 08:00", "- [ ] A · 2025-03-04 08:30\n- [x] Fait · 2025-03-04 08:30\n- [ ] B\n");
        change(world);
        world.loop.advance(1h);
        world.list().undo();
        world.loop.advance(1h);
        EXPECT_EQ(world.notifications.transcript(), "");
        EXPECT_EQ(world.preferences.notifiedTasks().size(), 1U); // the one that would have rung
    }
}

}
