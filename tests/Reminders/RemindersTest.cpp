#include "DravelKit/Foundation/Text.h"
#include "tests/support/ModelWorld.h"

#include <algorithm>

namespace tacla::testing {

using Action = NotificationServer::Action;

TEST(NotificationCentre, RingsAtItsMomentThoughTheClockHadBeenAhead) {
    LivingWorld world("2025-03-04 11:30", "- [ ] A · 2025-03-04 11:00\n");
    EXPECT_EQ(world.notifications.transcript(), "11:30 A | Prévue à 11:00\n");
    world.loop.setClock(moment("2025-03-04 09:30"));
    world.loop.advance(3h);
    EXPECT_EQ(world.notifications.transcript(), "11:00 A | Prévue à 11:00\n");
    EXPECT_EQ(world.notifications.bubbles.size(), 1U); // in the place of the early one
}

TEST(NotificationCentre, KeepsWhatIsDueUntilAServerComes) {
    ModelWorld world("2025-03-04 08:00", "- [ ] A · 2025-03-04\n- [ ] B · 2025-03-04 9:30\n- [ ] C · 2025-03-04\n");
    world.notifications.capabilities.reachable = false;
    world.start();
    EXPECT_FALSE(world.state().notificationsAllowed);
    world.loop.advanceTo(moment("2025-03-05 10:00"));
    world.list().toggle(world.task("C"));
    world.save("- [ ] ❗ AA · 2025-03-04\n" + world.text().substr(world.text().find('\n') + 1)); // its text follows
    world.loop.advance(2s);
    EXPECT_EQ(world.preferences.notifiedTasks(), Preferences::Notified{});
    world.notifications.setReachable(true);
    world.loop.runPosted();
    EXPECT_TRUE(world.state().notificationsAllowed);
    EXPECT_EQ(world.notifications.transcript(),
              "10:00 AA | Prévue le 04/03 · prioritaire\n10:00 B | Prévue le 04/03 à 09:30\n");
    EXPECT_EQ(world.preferences.notifiedTasks().size(), 2U);
}

TEST(NotificationCentre, HoldsTheFirstSixtyOfTheFileAndGivesTheirPlaceToOthers) {
    std::string text = "- [ ] first · 2025-03-04\n";
    for (int number = 2; number <= 60; ++number) text += "- [ ] t" + std::to_string(number) + " · 2026-01-01\n";
    LivingWorld world("2025-03-04 08:00", text + "- [ ] last · 2025-03-04 10:00\n- [ ] now · 2025-03-04 07:59\n");
    EXPECT_EQ(world.model.pendingReminders()->size(), 60U);
    EXPECT_EQ(world.notifications.transcript(), "08:00 now | Prévue à 07:59\n");
    world.loop.advance(4h);
    EXPECT_EQ(world.notifications.transcript(), "09:00 first | Prévue aujourd'hui\n10:00 last | Prévue à 10:00\n");
}

TEST(NotificationCentre, DeliversAFewASecondTheOldestMomentFirst) {
    std::string text;
    for (int number = 0; number < 1000; ++number)
        text += "- [ ] t" + std::to_string(number) + " · 2025-03-04 " + Clock{number % 9, 0}.description() + "\n";
    LivingWorld world("2025-03-04 10:00", text);
    const auto& shown = world.notifications.shown;
    world.loop.advance(2500ms);
    EXPECT_EQ(shown.size(), 12U);
    world.notifications.refusal = "full"; // after a while there is no room
    world.loop.advance(100s);
    EXPECT_EQ(shown.size(), 12U);
    world.notifications.refusal.reset();
    world.notifications.close(shown[0].handle);
    world.loop.advance(300s);
    EXPECT_EQ(shown.size(), 1000U);
    EXPECT_TRUE(std::ranges::is_sorted(shown, {}, [](const auto& one) { return one.request.content.body; }));
    EXPECT_EQ(world.notifications.bubbles.size(), 999U);
}

TEST(Bubbles, BelongToTheTaskForWhichTheyWereShown) {
    LivingWorld world("2025-03-04 10:00", "- [ ] Courses · 2025-03-04\n- [ ] Pain · 2025-03-04\n");
    world.list().edit(world.task("Courses"), {.title = "Courses de Noël"});
    world.list().add({{"Courses", Day{2025, 3, 4}}});
    world.loop.advance(2s);
    world.notifications.press(world.notifications.shown.back().handle, Action::done); // the new one's
    EXPECT_TRUE(world.task("Courses").done);
    EXPECT_FALSE(world.task("Courses de Noël").done);
    world.list().undo();
    world.save("- [ ] Lait · 2025-03-04\n" + dravel::replacedAll(world.text(), "Pain", "Pain bis")); // by an editor
    world.notifications.press("Courses", Action::tomorrow); // of which there are two: the first one's
    world.notifications.press("Pain", Action::done);
    EXPECT_EQ(world.text(), "- [ ] Lait · 2025-03-04\n- [ ] Courses de Noël · 2025-03-05\n"
                            "- [x] Pain bis · 2025-03-04 · ✅ 2025-03-04\n- [ ] Courses · 2025-03-04\n");
}

TEST(Bubbles, EndWithTheirTaskWithinTwoSeconds) {
    const auto list = std::string("- [ ] A · 2025-03-04\n");
    const std::pair<const char*, const char*> edits[] = {
        {"- [x] A · 2025-03-04 · ✅ 2025-03-04\n", "La tâche « A » est déjà cochée."},
        {"- [ ] A · 2025-03-05\n", "La tâche « A » a changé entre-temps."},
        {"# rien\n", "La tâche « A » n'est plus dans la liste."},
        {"- [ ] B · 2025-03-04\n- [ ] A · 2025-03-05\n", "La tâche « A » a changé entre-temps."},
    };
    for (const auto& [edit, reason] : edits) {
        for (const auto button : {Action::done, Action::tomorrow}) {
            ModelWorld world("2025-03-04 10:00", list);
            int asked = 0;
            const auto windows = world.model.windowAsked.connect([&asked](const auto&) { ++asked; });
            world.start();
            world.save(edit);
            world.notifications.press("A", button); // before anybody looked
            EXPECT_EQ(world.text(), edit);
            EXPECT_EQ(asked, 1);
            EXPECT_EQ(world.state().undoBar, (UndoBar{reason, false}));
        }
        LivingWorld world("2025-03-04 10:00", list);
        world.save(edit);
        world.loop.advance(2s);
        EXPECT_THROW(world.notifications.press("A", Action::done), std::runtime_error) << edit;
    }
}

TEST(Bubbles, AreAnsweredByTheNextProcessOrClosed) {
    LivingWorld world("2025-03-04 10:00",
                      "- [ ] A · 2025-03-04\n- [ ] B · 2025-03-04\n- [ ] C\tD · 2025-03-04 09:30\n");
    world.restart();
    EXPECT_EQ(world.notifications.bubbles.size(), 3U);
    world.notifications.press("A", Action::done);
    EXPECT_TRUE(world.task("A").done);
    world.restart([&] { world.save(dravel::replacedAll(world.text(), "] B", "] Bis")); });
    world.notifications.press("C\tD", Action::tomorrow);
    EXPECT_EQ(world.task("C\tD").day, (Day{2025, 3, 5}));
    EXPECT_EQ(world.notifications.bubbles.size(), 1U); // of Bis, which nobody followed: it rings anew
    world.notifications.capabilities.tellsOnlyOwner = true;
    const auto handle = world.notifications.bubbles.begin()->first;
    world.restart();
    EXPECT_EQ(world.notifications.shown.back().request.replaced, handle);
    EXPECT_EQ(world.notifications.bubbles.size(), 1U);
    world.model.end();
    EXPECT_TRUE(world.notifications.bubbles.empty());
}

TEST(TestNotification, SaysWhatBecameOfIt) {
    ModelWorld world("2025-03-04 14:05", "");
    const auto sent = [&world](bool reachable, bool actions, NotificationServer::Error refusal = {}) {
        world.notifications.capabilities = {.reachable = reachable, .actions = actions};
        world.notifications.refusal = std::move(refusal);
        world.model.permission().test();
        world.loop.runPosted();
        return world.state().notificationTest.value();
    };
    EXPECT_EQ(sent(true, true), "Envoyée à 14:05 · affichage avec les boutons « Fait » et « Demain »");
    EXPECT_EQ(world.notifications.transcript(),
              "14:05 Notification d'essai | Si vous lisez ceci, les rappels de Tacla arrivent bien.\n");
    EXPECT_EQ(sent(true, false), "Envoyée à 14:05 · affichage sans boutons");
    EXPECT_EQ(sent(false, false), "Refusées par le bureau : à autoriser dans ses réglages de notifications");
    EXPECT_EQ(sent(true, true, "trop de notifications"), "Échec : trop de notifications");
    NotificationPermission nowhere(world.loop, nullptr, [] {});
    nowhere.test();
    EXPECT_EQ(nowhere.testResult, "Indisponible hors d'une session de bureau");
}

}
