#pragma once

#include "Tacla/TaskList/TaskList.h"

#include <cstddef>
#include <vector>

// What the pages and the menu show: lists made of the tasks on demand.
namespace tacla {

using Tasks = std::vector<TaskItem>;

// Sorted by moment, then by line; for those who hold tasks of their own.
Tasks late(const Tasks&, Instant now);   // open and past, to the minute
Tasks todays(const Tasks&, Instant now); // of today, done or not, without the late ones

// The same and others of a list of any length: one look at each task, and no calendar.
Places late(const TaskList&, Instant now);
Places todays(const TaskList&, Instant now);
Places upcoming(const TaskList&, Day today, std::size_t most);    // open; the first ones
std::vector<DayPlaces> upcomingByDay(const TaskList&, Day today); // all of them

Places undated(const TaskList&);                              // open, in file order
std::vector<DayPlaces> doneByDay(const TaskList&, Day today); // newest first, each in file order
std::size_t openCount(const TaskList&, Instant now);          // late, plus open today

}
