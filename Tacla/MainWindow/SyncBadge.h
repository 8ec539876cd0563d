#pragma once

#include "DravelKit/DravelUI/SidebarList.h"

namespace tacla {

class AppModel;

// The block at the foot of the sidebar that tells how list and calendar stand.
dravel::SidebarBadge* makeSyncBadge(AppModel&, QWidget* parent);

}
