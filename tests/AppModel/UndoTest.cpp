#include "tests/support/ModelWorld.h"

namespace tacla::testing {

static constexpr Day tomorrow{2025, 3, 5}, ninth{2025, 3, 9};
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
