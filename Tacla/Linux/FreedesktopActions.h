#pragma once

#include "DravelKit/Foundation/UserFolders.h"
#include "Tacla/Linux/Bus.h"
#include "Tacla/MainWindow/DesktopActions.h"

#include <string>
#include <string_view>

namespace tacla {

// Opening files, addresses and panels as freedesktop.org's desktops do. The bus outlives the actions.
DesktopActions freedesktopActions(Bus& session, const dravel::UserFolders&, std::string version);

// The command that opens the notification settings of the desktops that XDG_CURRENT_DESKTOP names ("ubuntu:GNOME"),
// its words split by blanks; empty when none is known.
std::string_view notificationSettingsCommand(std::string_view currentDesktop);

}
