#include "tests/support/ModelWorld.h"

namespace tacla::testing {

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
