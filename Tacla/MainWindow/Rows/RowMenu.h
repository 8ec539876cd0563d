#pragma once

#include "Tacla/TaskList/TaskItem.h"

#include <string_view>
#include <vector>

namespace tacla {

enum class RowCommand { postponeToTomorrow, postponeToMonday, postponeByAWeek, toggle, edit, remove };

struct RowEntry {
    RowCommand command;
    std::string_view label;
    bool destructive = false;
    bool separatorBefore = false;

    bool operator==(const RowEntry&) const = default;
};

// The actions menu of a task's row, top to bottom.
std::vector<RowEntry> rowMenu(const TaskItem&);

// Where a postponing command moves the task; none for the other commands.
std::optional<Day> postponedDay(RowCommand, const TaskItem&, Day today);

}
