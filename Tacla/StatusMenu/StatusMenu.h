#pragma once

#include "Tacla/AppModel/ModelState.h"
#include "Tacla/Linux/MenuEntry.h"

#include <cstddef>
#include <string>

namespace tacla {

// What the tray menu shows for that state: late tasks, today's, what is coming, and the program's own entries.
Menu statusMenu(const ModelState&, bool updatesAvailable);

// The texts beside and over the tray icon, by the number of open tasks.
std::string statusTitle(std::size_t open);   // " 3", or nothing
std::string statusToolTip(std::size_t open); // "Tacla · 3 à faire"

}
