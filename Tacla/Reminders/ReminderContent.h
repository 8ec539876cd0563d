#pragma once

#include "Tacla/Reminders/NotificationContent.h"
#include "Tacla/TaskList/TaskItem.h"

namespace tacla {

// What a task's reminder says: "Prévue à 14:30 · prioritaire · due le 04/03".
NotificationContent reminderContent(const TaskItem&);

}
