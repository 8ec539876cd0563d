#pragma once

#include "Tacla/TaskList/TaskItem.h"

#include <array>
#include <string>
#include <string_view>

namespace tacla {

// What the inline editor holds.
struct TaskDraft {
    std::string title; // without its "❗"
    Day day;
    bool hasTime = false;
    Clock time;         // 10:00 for a task without a time
    Day openedOn;       // the day that the editor opened with
    bool dated = false; // the task had a day

    bool operator==(const TaskDraft&) const = default;
};

TaskDraft draftOf(const TaskItem&, Day today);

// What saving the draft asks of the model. A task without a day stays so unless a day or a time was chosen.
struct TaskEdit {
    std::string title;
    std::optional<Day> day;
    std::optional<Clock> time;

    bool operator==(const TaskEdit&) const = default;
};

TaskEdit editOf(const TaskDraft&, Day today);

// What the add card holds. Its day follows today until the user picks another one.
struct NewTaskDraft {
    std::string title;
    std::optional<Day> picked;
    bool hasTime = false;
    Clock time{10, 0};
    bool strong = false;

    Day day(Day today) const { return picked.value_or(today); }
    void pick(Day day, Day today);

    bool operator==(const NewTaskDraft&) const = default;
};

struct NewTask {
    std::string title;
    Day day;
    std::optional<Clock> time;
    bool strong = false;

    bool operator==(const NewTask&) const = default;
};

// None when the title is blank.
std::optional<NewTask> newTask(const NewTaskDraft&, Day today);
// Only the day stays, ready for the next task of that day.
NewTaskDraft afterAdding(const NewTaskDraft&);

struct QuickDay {
    std::string_view label;
    Day day;
};
std::array<QuickDay, 3> quickDays(Day today);

}
