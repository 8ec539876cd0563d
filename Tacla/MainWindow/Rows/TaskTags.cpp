#include "Tacla/MainWindow/Rows/TaskTags.h"

#include "DravelKit/DravelUI/Symbols.h"
#include "Tacla/TaskList/Labels.h"

namespace tacla {

using dravel::Symbol;

namespace {

std::string dayText(Day day, Day today) {
    if (day == today.plusDays(1)) return "demain";
    if (day == today) return "aujourd'hui";
    return dayAndMonth(day);
}

}

bool hasTags(const TaskItem& task, bool showDay) {
    if ((showDay && task.day) || task.time) return true;
    return task.done ? task.doneOn && task.day != task.doneOn : task.due || task.strong();
}

std::vector<TaskTag> taskTags(const TaskItem& task, Day today, bool showDay) {
    std::vector<TaskTag> tags;
    if (showDay && task.day) tags.push_back({.text = dayText(*task.day, today), .symbol = Symbol::Calendar4});
    if (task.time) tags.push_back({.text = task.time->description(), .symbol = Symbol::Clock});
    if (task.strong() && !task.done)
        tags.push_back({.text = "Prioritaire", .symbol = Symbol::ExclamationLg, .mood = Mood::danger, .strong = true});
    if (task.due && !task.done)
        tags.push_back({.text = "due le " + dayAndMonth(*task.due),
                        .symbol = Symbol::HourglassSplit,
                        .mood = Mood::warning,
                        .strong = true});
    if (task.done && task.doneOn && task.day != task.doneOn)
        tags.push_back({.text = "faite le " + dayAndMonth(*task.doneOn),
                        .symbol = Symbol::CheckLg,
                        .mood = Mood::success,
                        .strong = true});
    return tags;
}

}
