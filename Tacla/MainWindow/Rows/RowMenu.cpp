#include "Tacla/MainWindow/Rows/RowMenu.h"

namespace tacla {

std::vector<RowEntry> rowMenu(const TaskItem& task) {
    std::vector<RowEntry> entries;
    if (!task.done)
        entries = {{.command = RowCommand::postponeToTomorrow, .label = "Reporter à demain"},
                   {.command = RowCommand::postponeToMonday, .label = "Reporter à lundi"},
                   {.command = RowCommand::postponeByAWeek, .label = "Reporter d'une semaine"}};
    entries.push_back({.command = RowCommand::toggle,
                       .label = task.done ? "Décocher" : "Cocher",
                       .separatorBefore = !entries.empty()});
    entries.push_back({.command = RowCommand::edit, .label = "Modifier"});
    entries.push_back({.command = RowCommand::remove, .label = "Supprimer", .destructive = true});
    return entries;
}

std::optional<Day> postponedDay(RowCommand command, const TaskItem& task, Day today) {
    switch (command) {
    case RowCommand::postponeToTomorrow: return today.plusDays(1);
    case RowCommand::postponeToMonday: return today.nextMonday();
    case RowCommand::postponeByAWeek: return task.day.value_or(today).plusDays(7);
    case RowCommand::toggle:
    case RowCommand::edit:
    case RowCommand::remove: break;
    }
    return std::nullopt;
}

}
