#include "DravelKit/Foundation/WallCalendar.h"
#include "tests/support/ModelWorld.h"

#include <sys/resource.h>

#include <csignal>

namespace tacla::testing {

namespace fs = std::filesystem;

TEST(AppModel, SeesAnEditorsSaveWithinTwoSecondsAndLeavesTheSyncToThePeriodOrAWake) {
    MirroredWorld world("- [ ] A · 2025-03-05\n");
    world.save("- [ ] B · 2025-03-05\n");
    world.loop.advance(2s);
    EXPECT_EQ(world.task("B").line, 0);
    EXPECT_EQ(world.told, 1);
    world.loop.advance(9min);
    EXPECT_EQ(world.calendar.runs.size(), 0U);
    world.loop.advance(1min);
    EXPECT_EQ(world.calendar.runs.size(), 1U);

    world.save("- [ ] C\n");
    world.loop.suspend(50h);
    world.model.wokeUp();
    EXPECT_EQ(world.state().today, (Day{2025, 3, 6}));
    EXPECT_EQ(world.task("C").line, 0);
    world.loop.advance(1999ms);
    EXPECT_EQ(world.calendar.runs.size(), 1U);
    world.loop.advance(1ms);
    EXPECT_EQ(world.calendar.runs.size(), 2U);
}

TEST(AppModel, TicksEachMinute) {
    LivingWorld world("2025-03-04 23:57", "- [ ] A\n");
    world.loop.advance(2min);
    EXPECT_EQ(world.told, 2);
    EXPECT_EQ(world.state().now, moment("2025-03-04 23:59"));
    world.loop.advance(1min);
    EXPECT_EQ(world.state().today, (Day{2025, 3, 5}));
}

TEST(AppModel, KeepsTheTasksOfAFileThatCannotBeReadAndRecoversByItself) {
    MirroredWorld world("- [ ] A\n");
    const auto aside = world.folder / "aside";
    const std::function<void()> ways[] = {
        [] {},
        [&] { fs::create_directory(world.file); },
        [&] { writeBytes(world.file, "- [ ] \xFF\n"); },
    };
    for (const auto& spoil : ways) {
        fs::rename(world.file, aside);
        spoil();
        const auto runs = world.calendar.runs.size();
        world.loop.advance(11min);
        EXPECT_TRUE(world.state().fileError.value().starts_with("Impossible de lire " + world.file.string() + " : "));
        EXPECT_EQ(world.state().tasks.size(), 1U);
        EXPECT_EQ(world.calendar.runs.size(), runs);
        fs::remove(world.file);
        fs::rename(aside, world.file); // with the old modification time
        world.loop.advance(11min);
        EXPECT_EQ(world.state().fileError, std::nullopt);
        EXPECT_GT(world.calendar.runs.size(), runs);
    }
}

TEST(AppModel, LeavesFileTasksAndRemindersAloneWhenAWriteFails) {
    LivingWorld world("2025-03-04 08:00", "- [ ] A · 2025-03-04\n");
    const auto pending = *world.model.pendingReminders();
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const rlimit none{0, before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &none);
    world.list().toggle(world.task("A"));
    ::setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_TRUE(world.state().fileError.value().starts_with("Impossible d'écrire " + world.file.string() + " : "));
    EXPECT_EQ(world.text(), "- [ ] A · 2025-03-04\n");
    EXPECT_FALSE(world.task("A").done);
    EXPECT_EQ(*world.model.pendingReminders(), pending);
    EXPECT_EQ(world.told, 1);
    fs::permissions(world.file, fs::perms::owner_read); // a reload is due, and says nothing of it
    world.loop.advance(4s);
    EXPECT_TRUE(world.state().fileError.value_or("").starts_with("Impossible d'écrire "));
    world.loop.advance(4s);
    EXPECT_FALSE(world.state().fileError);
}

TEST(AppModel, SavesOnASlowDiskInOrderInTheBackgroundAndWaitsForItAtTheEnd) {
    LivingWorld world("2025-03-04 08:00", "- [ ] A\n- [ ] B\n");
    world.disk.held = true;
    world.list().toggle(world.task("A"));
    world.list().remove(world.task("B"));
    std::optional<std::optional<std::string>> answer;
    world.list().add({{"C", world.state().today}}, [&](const auto& why) { answer = why; });
    world.loop.advance(499ms);
    EXPECT_EQ(world.told, 0);
    world.loop.advance(10s);
    EXPECT_EQ(world.disk.waiting(), 1U) << "one at a time, and the poll is left out";
    EXPECT_EQ(world.state().undoBar, (UndoBar{"Enregistrement…", false}));
    EXPECT_EQ(world.text(), "- [ ] A\n- [ ] B\n");
    world.disk.runOne();
    EXPECT_EQ(world.text(), "- [x] A · ✅ 2025-03-04\n- [ ] B\n");
    EXPECT_EQ(world.state().undoBar, (UndoBar{"Tâche cochée : A", true}));
    EXPECT_EQ(world.task("A").done, true);
    EXPECT_EQ(answer, std::nullopt);
    world.model.end();
    EXPECT_EQ(world.text(), "- [x] A · ✅ 2025-03-04\n- [ ] C · 2025-03-04\n");
    EXPECT_EQ(answer.value(), std::nullopt);
}

TEST(AppModel, RingsAgainWhenTheButtonOfAReminderCouldNotBeSaved) {
    LivingWorld world("2025-03-04 09:59", "- [ ] A · 2025-03-04 10:00\n");
    world.loop.advance(1min);
    EXPECT_EQ(world.notifications.transcript(), "10:00 A | Prévue à 10:00\n");
    fs::rename(world.file, world.folder / "aside");
    world.notifications.press("A", NotificationServer::Action::done);
    EXPECT_TRUE(world.state().fileError.value_or("").starts_with("Impossible d'écrire "));
    EXPECT_EQ(world.notifications.transcript(), "");
    fs::rename(world.folder / "aside", world.file);
    world.loop.advance(10s);
    EXPECT_EQ(world.notifications.transcript(), "10:00 A | Prévue à 10:00\n");
    world.notifications.press("A", NotificationServer::Action::done);
    EXPECT_EQ(world.text(), "- [x] A · 2025-03-04 10:00 · ✅ 2025-03-04\n");
}

TEST(AppModel, MendsDamagedSettingsWithinTwoSeconds) {
    LivingWorld world("2025-03-04 08:00", "");
    world.preferences.setOnboardingDone(true);
    writeBytes(world.folder / "preferences.json", "{");
    world.loop.advance(2s);
    EXPECT_EQ(readBytes(world.folder / "preferences.json"), "{\n  \"onboardingDone\": true\n}\n");
}

TEST(AppModel, ChoosesAndMakesFiles) {
    ModelWorld world("2025-03-04 08:00", "- [ ] A\n");
    const auto other = world.folder / "new/list.md";
    world.list().open(other, true);
    EXPECT_EQ(world.preferences.taskFilePath(), other.string());
    world.list().open(world.file / "impossible.md", true);
    EXPECT_TRUE(world.state().fileError.value().starts_with("Impossible de créer "));
    EXPECT_EQ(world.state().file, other);
    world.list().open(world.file);
    EXPECT_EQ(world.task("A").line, 0);
}

TEST(AppModel, OpensAtLoginUnlessTheUserSaidNo) {
    ModelWorld world("2025-03-04 08:00", "");
    world.model.login().apply();
    EXPECT_TRUE(world.loginItem.enabled);
    EXPECT_TRUE(world.state().launchAtLogin);
    world.model.login().choose(false);
    world.model.login().apply();
    EXPECT_FALSE(world.loginItem.enabled);

    const dravel::FileError error(dravel::FileError::Kind::system, "/autostart", EACCES);
    world.loginItem.failure.emplace(error);
    world.model.login().choose(true);
    EXPECT_EQ(world.state().syncError, "Ouverture au démarrage : " + error.description());
    EXPECT_FALSE(world.state().launchAtLogin);
}

TEST(AppModel, LeavesAnEntryAloneThatTheUserSwitchedOffAndMakesNoneFromABuild) {
    ModelWorld world("2025-03-04 08:00", "");
    world.loginItem.unasked = false;
    world.model.login().apply();
    EXPECT_FALSE(world.loginItem.enabled || world.preferences.wantsLaunchAtLogin());
    world.loginItem.unasked = world.loginItem.switchedOff = true;
    world.model.login().apply();
    EXPECT_FALSE(world.loginItem.enabled);
    EXPECT_EQ(world.preferences.wantsLaunchAtLogin(), false);
}

TEST(AppModel, OpensTheDesktopsSettingsWhenNotificationsStayForbidden) {
    ModelWorld world("2025-03-04 08:00", "");
    int opened = 0;
    for (const bool reachable : {false, true}) {
        world.notifications.capabilities.reachable = reachable;
        world.model.permission().request([&opened] { ++opened; });
        world.loop.runPosted();
        EXPECT_EQ(world.state().notificationsAllowed, reachable);
    }
    EXPECT_EQ(opened, 1);
}

TEST(AppModel, TurnsAPreferenceThatCannotBeStoredIntoAStatusText) {
    ModelWorld world("2025-03-04 08:00", "");
    std::filesystem::create_directory(world.folder / "preferences.json");
    world.mirror(Happened::switchAsked, true);
    EXPECT_TRUE(world.state().syncError.value().starts_with("Impossible d'écrire "));
    EXPECT_FALSE(world.state().calendarSync);
}

}
