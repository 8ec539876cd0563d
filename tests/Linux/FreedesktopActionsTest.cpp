#include "Tacla/Linux/FreedesktopActions.h"

#include <gtest/gtest.h>

using namespace tacla;

TEST(FreedesktopActions, knowTheNotificationSettingsOfEachDesktop) {
    EXPECT_EQ(notificationSettingsCommand("ubuntu:GNOME"), "gnome-control-center notifications");
    EXPECT_EQ(notificationSettingsCommand("KDE"), "systemsettings kcm_notifications");
    EXPECT_EQ(notificationSettingsCommand("XFCE"), "xfce4-notifyd-config");
    EXPECT_EQ(notificationSettingsCommand("sway"), "");
    EXPECT_EQ(notificationSettingsCommand(""), "");
}
