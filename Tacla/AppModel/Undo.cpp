#include "Tacla/AppModel/Undo.h"

#include "Tacla/Reminders/ReminderPlan.h"
#include "Tacla/TaskList/TaskFile.h"

#include <algorithm>
#include <set>

namespace tacla {

namespace {

bool remindsOf(const TaskItem& task) { return !task.done && task.day; }

}

std::optional<std::string> undone(const dravel::SafeFile::Change& change, std::string_view text) {
    if (text != change.after) return {};
    return change.before;
}

std::map<std::string, std::string> keysGivenBack(const dravel::SafeFile::Change& change) {
    // A task that was added or deleted shifts the lines below it, and renames none.
    if (std::ranges::count(change.before, '\n') != std::ranges::count(change.after, '\n')) return {};
    return TaskFile::renamedKeys(change.after, change.before);
}

std::vector<TaskItem> remindersGivenBack(const dravel::SafeFile::Change& change) {
    std::set<std::string> kept;
    for (const auto& task : TaskFile::parse(change.after)) {
        if (remindsOf(task)) kept.insert(reminderIdentifier(task));
    }
    auto tasks = TaskFile::parse(change.before);
    std::erase_if(tasks,
                  [&](const TaskItem& task) { return !remindsOf(task) || kept.contains(reminderIdentifier(task)); });
    return tasks;
}

}
