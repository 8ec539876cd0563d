#pragma once

#include "Tacla/TaskDocument/TaskDocument.h"
#include "Tacla/TaskList/MomentWords.h"
#include "Tacla/TaskList/TaskList.h"

#include <array>
#include <string>
#include <string_view>
#include <vector>

// What the rows of tasks show and do, and what their editors hold, as values.
namespace dravel {
enum class Symbol;
}

namespace tacla {

// What a text or an icon means; the pages turn it into one of the theme's colours.
enum class ColourRole { accent, plain, faint, success, warning, danger };

// One of the small marks under a task's title.
struct TaskTag {
    std::string text;
    dravel::Symbol symbol;
    ColourRole role = ColourRole::plain;
};

// The date stands among them only with `showDay`.
std::vector<TaskTag> taskTags(const TaskItem&, Day today, bool showDay);
// All of them in one line, as a screen reader says them.
std::string spokenTags(const TaskItem&, Day today, bool showDay);
// Whether there are any, at no cost.
bool hasTags(const TaskList::Brief&, bool showDay);

enum class RowCommand { postponeToTomorrow, postponeToMonday, postponeByAWeek, toggle, edit, remove };

struct RowEntry {
    RowCommand command;
    std::string_view label;
    bool destructive = false;
    bool separatorBefore = false;
};

// The actions menu of a task's row, top to bottom.
std::vector<RowEntry> rowMenu(const TaskItem&);

// Where a postponing command moves the task; none for the other commands.
std::optional<Day> postponedDay(RowCommand, const TaskItem&, Day today);

// What the inline editor holds.
struct TaskDraft {
    std::string title; // without its "❗"
    Day day;
    bool hasTime = false;
    Clock time;         // 10:00 for a task without a time
    bool dated = false; // the task had a day, or words of its title told one

    bool operator==(const TaskDraft&) const = default;
};

TaskDraft draftOf(const TaskItem&, Day today);

// What saving the draft asks of the model: what differs from the draft that the editor opened with. A task without a
// day stays so unless a day or a time was chosen.
TaskChange changeOf(const TaskDraft&, const TaskDraft& opened, Day today);

// What the add card holds. Its day follows today until the user picks another one, or says one for this task in words.
struct NewTaskDraft {
    std::string title;
    std::optional<Day> picked, said;
    bool hasTime = false;
    Clock time{10, 0};
    bool strong = false;

    Day day(Day today) const { return said ? *said : picked.value_or(today); }
    void pick(Day day, Day today);
    void dropPast(Day today); // a day that was picked when it was still to come
};

// The words left the title: what they say is set.
NewTaskDraft taking(const MomentWords&, NewTaskDraft);
TaskDraft taking(const MomentWords&, TaskDraft); // says nothing of a priority

// None when the title is blank.
std::optional<NewTask> newTask(const NewTaskDraft&, Day today);
// The lines that were pasted, each a task: of the draft's day, unless the line tells another one as the file does.
std::vector<NewTask> pastedTasks(const std::vector<std::string>& lines, const NewTaskDraft&, Day today);
// Only the day stays, ready for the next task of that day.
NewTaskDraft afterAdding(const NewTaskDraft&);

// The same task once more.
struct Again {
    std::string_view label; // announces its access key
    Day day;
};
std::array<Again, 3> againDays(Day today);
NewTask again(const TaskItem&, Day);

struct QuickDay {
    std::string_view label;
    Day day;
};
std::array<QuickDay, 3> quickDays(Day today);

}
