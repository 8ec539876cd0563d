#include "Tacla/MainWindow/Rows/TaskTags.h"

#include "Tacla/TaskList/Labels.h"

namespace tacla {

namespace {

std::string dayText(Day day, Day today) {
    if (day == today.plusDays(1)) return "demain";
    if (day == today) return "aujourd'hui";
    return dayAndMonth(day);
}

}

std::vector<TaskTag> taskTags(const TaskItem& task, Day today, bool showDay) {
    std::vector<TaskTag> tags;
    if (showDay && task.day) tags.push_back({.text = dayText(*task.day, today), .symbol = "calendar4"});
    if (task.time) tags.push_back({.text = task.time->description(), .symbol = "clock"});
    if (task.strong() && !task.done)
        tags.push_back({.text = "Prioritaire", .symbol = "exclamation-lg", .mood = Mood::danger, .strong = true});
    if (task.due && !task.done)
        tags.push_back({.text = "due le " + dayAndMonth(*task.due),
                        .symbol = "hourglass-split",
                        .mood = Mood::warning,
                        .strong = true});
    if (task.done && task.doneOn && task.day != task.doneOn)
        tags.push_back({.text = "faite le " + dayAndMonth(*task.doneOn),
                        .symbol = "check-lg",
                        .mood = Mood::success,
                        .strong = true});
    return tags;
}

}
