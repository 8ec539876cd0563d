#include "Tacla/Reminders/ReminderContent.h"

#include "Tacla/TaskList/Labels.h"
#include "Tacla/TaskList/TaskFile.h"

namespace tacla {

NotificationContent reminderContent(const TaskItem& task) {
    std::string body = task.time ? "Prévue à " + task.time->description() : "Prévue aujourd'hui";
    if (task.strong()) body += " · prioritaire";
    if (task.due) body += " · due le " + dayAndMonth(*task.due);
    return {.title = TaskFile::dropStrongMark(task.title), .body = std::move(body), .key = task.key};
}

}
