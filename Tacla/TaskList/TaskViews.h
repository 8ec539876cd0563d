#pragma once

#include "Tacla/TaskList/TaskItem.h"

#include <cstddef>
#include <vector>

// What the pages and the menu show: lists made of the tasks on demand.
namespace tacla {

using Tasks = std::vector<TaskItem>;

// Sorted by moment, then by line.
Tasks late(const Tasks&, Instant now);   // open and past, to the minute
Tasks todays(const Tasks&, Instant now); // of today, done or not, without the late ones
Tasks upcoming(const Tasks&, Day today); // open, after today

Tasks undated(const Tasks&);                      // open, in file order
Tasks doneTasks(const Tasks&, Day today);         // newest first
std::size_t openCount(const Tasks&, Instant now); // late, plus open today

}
