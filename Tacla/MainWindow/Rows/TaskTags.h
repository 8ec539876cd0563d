#pragma once

#include "Tacla/MainWindow/Mood.h"
#include "Tacla/TaskList/TaskItem.h"

#include <string>
#include <vector>

namespace dravel {
enum class Symbol;
}

namespace tacla {

// One of the small marks under a task's title.
struct TaskTag {
    std::string text;
    dravel::Symbol symbol;
    Mood mood = Mood::plain;
    bool strong = false;

    bool operator==(const TaskTag&) const = default;
};

// The date stands among them only with `showDay`.
std::vector<TaskTag> taskTags(const TaskItem&, Day today, bool showDay);
// Whether there are any, at no cost.
bool hasTags(const TaskItem&, bool showDay);

}
