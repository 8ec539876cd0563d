#pragma once

#include "Tacla/MainWindow/SyncBadgeContent.h"

#include <string>

namespace tacla {

std::string syncText(const ModelState&, const TimeText&);
std::string calendarSyncText(bool on);

}
