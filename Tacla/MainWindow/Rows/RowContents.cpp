#include "Tacla/MainWindow/Rows/RowContents.h"

#include "DravelKit/Foundation/Text.h"
#include "Tacla/TaskList/TaskFile.h"

namespace tacla {

namespace {

// As a date picker shows it: a day that its month lacks becomes the one that it rolls over to.
Day existing(Day day) { return Day::of(day.date()); }

}

TaskDraft draftOf(const TaskItem& task, Day today) {
    const Day day = task.day ? existing(*task.day) : today;
    return {.title = TaskFile::dropStrongMark(task.title),
            .day = day,
            .hasTime = task.time.has_value(),
            .time = task.time.value_or(Clock{10, 0}),
            .openedOn = day,
            .dated = task.day.has_value()};
}

TaskEdit editOf(const TaskDraft& draft, Day today) {
    // Midnight may pass while the editor is open: a day that nobody touched is not a choice either.
    const bool dayChosen = draft.day != today && draft.day != draft.openedOn;
    if (!draft.dated && !draft.hasTime && !dayChosen) return {.title = draft.title, .day = {}, .time = {}};
    return {.title = draft.title, .day = draft.day, .time = draft.hasTime ? std::optional(draft.time) : std::nullopt};
}

void NewTaskDraft::pick(Day day, Day today) { picked = day == today ? std::nullopt : std::optional(day); }

std::optional<NewTask> newTask(const NewTaskDraft& draft, Day today) {
    const auto title = dravel::trimmedOfWhiteSpaceAndLineBreaks(draft.title);
    if (title.empty()) return std::nullopt;
    return NewTask{.title = std::string(title),
                   .day = draft.day(today),
                   .time = draft.hasTime ? std::optional(draft.time) : std::nullopt,
                   .strong = draft.strong};
}

NewTaskDraft afterAdding(const NewTaskDraft& draft) {
    NewTaskDraft next;
    next.picked = draft.picked;
    return next;
}

std::array<QuickDay, 3> quickDays(Day today) {
    return {{{"Aujourd'hui", today}, {"Demain", today.plusDays(1)}, {"Lundi", today.nextMonday()}}};
}

}
