#include "tests/support/ModelWorld.h"

#include <gtest/gtest.h>

namespace tacla::testing {

using namespace std::chrono_literals;

TEST(NotificationCentre, ShowsEachAtItsMomentAndNeverAgain) {
    ModelWorld world("2025-03-04 08:00",
                     "- [ ] A · 2025-03-04\n- [ ] B · 2025-03-04 8:30\n- [ ] C · 2025-03-04 7:00\n");
    world.start();
    EXPECT_EQ(world.notifications.transcript(), "08:00 C | Prévue à 07:00\n");
    world.loop.advanceTo(moment("2025-03-04 12:00"));
    EXPECT_EQ(world.notifications.transcript(), "08:30 B | Prévue à 08:30\n09:00 A | Prévue aujourd'hui\n");
    world.loop.setClock(moment("2025-03-04 06:00"));
    world.loop.advanceTo(moment("2025-03-05 12:00"));
    EXPECT_EQ(world.notifications.transcript(), "");
}

TEST(NotificationCentre, ShowsWhatFellDueAsleepInTheOrderOfTheMoments) {
    ModelWorld world("2025-03-04 08:00", "- [ ] Z · 2025-03-05\n- [ ] B · 2025-03-04\n- [ ] A · 2025-03-04 8:30\n"
                                         "- [ ] D · 2025-03-04\n- [ ] C · 2025-03-06\n");
    world.start();
    world.loop.suspend(28h);
    world.model.wokeUp();
    EXPECT_EQ(world.notifications.transcript(), "12:00 A | Prévue à 08:30\n12:00 B | Prévue aujourd'hui\n"
                                                "12:00 D | Prévue aujourd'hui\n12:00 Z | Prévue aujourd'hui\n");
}

TEST(NotificationCentre, TriesAgainWhatAServerRefused) {
    ModelWorld world("2025-03-04 08:00", "- [ ] A · 2025-03-04\n");
    world.notifications.refusal = "full";
    world.start();
    world.loop.advance(2h);
    EXPECT_EQ(world.preferences.notifiedTasks(), Preferences::Notified{});
    world.notifications.refusal.reset();
    world.loop.advance(std::chrono::minutes(1));
    EXPECT_EQ(world.notifications.transcript(), "10:01 A | Prévue aujourd'hui\n");
}

TEST(NotificationCentre, GivesThePlaceOfThoseShownToOthersOfTheFile) {
    std::string text = "- [ ] first · 2025-03-04\n";
    for (int number = 2; number <= 60; ++number) text += "- [ ] t" + std::to_string(number) + " · 2026-01-01\n";
    ModelWorld world("2025-03-04 08:00", text + "- [ ] last · 2025-03-04 10:00\n");
    world.start();
    world.loop.advance(4h);
    EXPECT_EQ(world.notifications.transcript(), "09:00 first | Prévue aujourd'hui\n10:00 last | Prévue à 10:00\n");
}

TEST(TestNotification, SaysWhatBecameOfIt) {
    ModelWorld world("2025-03-04 14:05", "");
    const auto sent = [&world](bool reachable, bool actions, NotificationServer::Error refusal = {}) {
        world.notifications.capabilities = {.reachable = reachable, .actions = actions};
        world.notifications.refusal = std::move(refusal);
        world.model.testNotification();
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
