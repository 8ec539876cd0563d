#include "tests/support/ModelWorld.h"

#include <gtest/gtest.h>

namespace tacla::testing {

using namespace std::chrono_literals;

namespace {

constexpr auto list =
    "# Liste\r\n- [ ] ❗ Pain · 2025-03-05\n  - [ ] Lait · 2025-03-04 07:00 · due 2025-03-01\n- [x] Œufs";

}

TEST(Undo, GivesBackEveryByteAndTheBarOffersItForTenSeconds) {
    const std::tuple<const char*, std::function<void(ModelWorld&)>, std::optional<UndoBar>> table[] = {
        {"check", [](ModelWorld& w) { w.model.toggle(w.task("Lait")); }, UndoBar{"Tâche cochée : Lait", true}},
        {"uncheck", [](ModelWorld& w) { w.model.toggle(w.task("Œufs")); }, UndoBar{"Tâche décochée : Œufs", true}},
        {"« Fait »", [](ModelWorld& w) { w.model.setDone(w.task("❗ Pain").key); },
         UndoBar{"Tâche cochée : Pain", true}},
        {"« Demain »",
         [](ModelWorld& w) {
             w.model.reschedule(w.task("Lait").key, {2025, 3, 5});
         },
         UndoBar{"Tâche reportée : Lait", true}},
        {"edit",
         [](ModelWorld& w) {
             w.model.edit(w.task("❗ Pain"), "Lait", Day{2025, 3, 9}, Clock{9, 5});
         },
         UndoBar{"Tâche modifiée : Lait", true}},
        {"delete", [](ModelWorld& w) { w.model.remove(w.task("❗ Pain")); }, UndoBar{"Tâche supprimée : Pain", true}},
        {"add", [](ModelWorld& w) { w.model.add("Sel", {}, {}, false); }, {}},
    };
    for (const auto& [what, act, bar] : table) {
        ModelWorld world("2025-03-04 08:00", list);
        world.start();
        act(world);
        EXPECT_NE(world.text(), list) << what;
        EXPECT_EQ(world.state().undoBar, bar) << what;
        world.loop.advance(9999ms);
        EXPECT_EQ(world.state().undoBar, bar) << what;
        world.loop.advance(1ms);
        EXPECT_EQ(world.state().undoBar, std::nullopt) << what;
        world.told = 0;
        world.model.undo();
        EXPECT_EQ(world.text(), list) << what;
        EXPECT_EQ(world.told, 1) << what;
        world.model.undo(); // there is nothing more to take back
        EXPECT_EQ(world.told, 1) << what;
    }
}

TEST(Undo, WritesNothingOnceTheFileChanged) {
    ModelWorld world("2025-03-04 08:00", list);
    world.start();
    world.model.remove(world.task("Lait"));
    const auto edited = world.text() + "\n";
    world.save(edited);
    world.model.undo();
    EXPECT_EQ(world.text(), edited);
    EXPECT_EQ(world.state().undoBar, (UndoBar{"Le fichier a changé depuis : rien n'a été annulé.", false}));
    world.loop.advance(10s);
    EXPECT_EQ(world.state().undoBar, std::nullopt);

    world.model.toggle(world.task("Œufs"));
    world.model.use(world.folder / "other.md"); // another list has nothing to undo
    EXPECT_EQ(world.state().undoBar, std::nullopt);
    world.model.undo();
    EXPECT_EQ(world.state().undoBar, std::nullopt);
}

TEST(Undo, CanBeTriedAgainAfterItCouldNotBeWritten) {
    ModelWorld world("2025-03-04 08:00", list);
    world.start();
    world.model.toggle(world.task("Lait"));
    std::filesystem::rename(world.file, world.folder / "aside");
    world.model.undo();
    EXPECT_TRUE(world.state().fileError.value().starts_with("Impossible d'écrire "));
    std::filesystem::rename(world.folder / "aside", world.file);
    world.model.undo();
    EXPECT_EQ(world.text(), list);
}

TEST(Undo, CarriesRemindersAndEventsBack) {
    ModelWorld world("2025-03-04 08:00", "- [ ] B · 2025-03-05 08:00\n");
    world.start();
    world.model.setCalendarSync(true);
    world.loop.advance(1s);
    const auto before = world.task("B").key;
    world.model.edit(world.task("B"), "C", Day{2025, 3, 4}, Clock{9, 0});
    const auto after = world.task("C").key;
    world.loop.advance(1s);
    EXPECT_EQ(world.calendar.runs.back(), (std::map<std::string, std::string>{{before, after}}));
    world.model.undo();
    world.loop.advance(1s);
    EXPECT_EQ(world.calendar.runs.back(), (std::map<std::string, std::string>{{after, before}}));
    world.model.setDone(after); // as an old notification would
    EXPECT_EQ(world.text(), "- [x] B · 2025-03-05 08:00 · ✅ 2025-03-04\n");
    world.model.undo();
    world.loop.advance(24h);
    EXPECT_EQ(world.notifications.transcript(), "08:00 B | Prévue à 08:00\n");
}

TEST(Undo, RingsForNothingThatIsPastByThen) {
    const std::function<void(ModelWorld&)> changes[] = {
        [](ModelWorld& w) { w.model.toggle(w.task("A")); },
        [](ModelWorld& w) { w.model.remove(w.task("A")); },
        [](ModelWorld& w) {
            w.model.reschedule(w.task("A"), {2025, 3, 5}, {});
        },
    };
    for (const auto& change : changes) {
        ModelWorld world("2025-03-04 08:00", "- [ ] A · 2025-03-04 08:30\n- [x] Fait · 2025-03-04 08:30\n- [ ] B\n");
        world.start();
        change(world);
        world.loop.advance(1h);
        world.model.undo();
        world.loop.advance(1h);
        EXPECT_EQ(world.notifications.transcript(), "");
        EXPECT_EQ(world.preferences.notifiedTasks().size(), 1U); // the one that would have rung
    }
}

}
