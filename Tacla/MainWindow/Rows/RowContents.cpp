#include "Tacla/MainWindow/Rows/RowContents.h"

#include "DravelKit/DravelUI/Symbols.h"
#include "DravelKit/Foundation/Text.h"
#include "Tacla/TaskList/Labels.h"
#include "Tacla/TaskList/TaskFile.h"

#include <algorithm>

namespace tacla {

using dravel::Symbol;

namespace {

std::string dayText(Day day, Day today) {
    if (day == today.plusDays(1)) return "demain";
    if (day == today) return "aujourd'hui";
    return dayAndMonth(day);
}

constexpr Day lastDay{9999, 12, 31}; // a fifth digit of the year would be read as no date at all

// As a date picker shows it: a day that its month lacks becomes the one that it rolls over to.
Day existing(Day day) { return Day::of(day.date()); }

}

bool hasTags(const TaskList::Brief& task, bool showDay) {
    return (showDay && task.day != 0) || task.minutes != 0 || task.marked;
}

std::vector<TaskTag> taskTags(const TaskItem& task, Day today, bool showDay) {
    std::vector<TaskTag> tags;
    if (showDay && task.day) tags.push_back({.text = dayText(*task.day, today), .symbol = Symbol::calendar4});
    if (task.time) tags.push_back({.text = task.time->description(), .symbol = Symbol::clock});
    if (task.strong() && !task.done)
        tags.push_back({.text = "Prioritaire", .symbol = Symbol::exclamationLg, .role = ColourRole::danger});
    if (task.due && !task.done)
        tags.push_back({.text = "due le " + dayAndMonth(*task.due),
                        .symbol = Symbol::hourglassSplit,
                        .role = ColourRole::warning});
    if (task.done && task.doneOn && task.day != task.doneOn)
        tags.push_back(
            {.text = "faite le " + dayAndMonth(*task.doneOn), .symbol = Symbol::checkLg, .role = ColourRole::success});
    return tags;
}

std::string spokenTags(const TaskItem& task, Day today, bool showDay) {
    std::string all;
    for (const auto& tag : taskTags(task, today, showDay)) all += (all.empty() ? "" : ", ") + tag.text;
    return all;
}

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
    case RowCommand::postponeByAWeek: return std::min(task.day.value_or(today).plusDays(7), lastDay);
    case RowCommand::toggle:
    case RowCommand::edit:
    case RowCommand::remove: break;
    }
    return std::nullopt;
}

TaskDraft draftOf(const TaskItem& task, Day today) {
    const Day day = task.day ? existing(*task.day) : today;
    return {.title = TaskFile::dropStrongMark(task.title),
            .day = day,
            .hasTime = task.time.has_value(),
            .time = task.time.value_or(Clock{10, 0}),
            .dated = task.day.has_value()};
}

TaskChange changeOf(const TaskDraft& draft, const TaskDraft& opened, Day today) {
    TaskChange change;
    if (draft.title != opened.title) change.title = draft.title;
    // Midnight may pass while the editor is open: a day that nobody touched is not a choice either.
    const bool saidInWords = draft.dated && !opened.dated;
    if (saidInWords || (draft.day != opened.day && (draft.dated || draft.day != today))) change.day = draft.day;
    const auto timeOf = [](const TaskDraft& one) { return one.hasTime ? std::optional(one.time) : std::nullopt; };
    if (timeOf(draft) != timeOf(opened)) change.time = timeOf(draft);
    if (draft.dated != opened.dated || (!draft.dated && draft.hasTime)) change.day = draft.day;
    return change;
}

void NewTaskDraft::pick(Day day, Day today) {
    picked = day == today ? std::nullopt : std::optional(day);
    said.reset();
}

void NewTaskDraft::dropPast(Day today) {
    for (auto* day : {&picked, &said})
        if (*day && **day < today) day->reset();
}

NewTaskDraft taking(const MomentWords& told, NewTaskDraft draft) {
    draft.title = withoutWords(draft.title, told);
    if (told.day) draft.said = told.day;
    if (told.clock) draft.hasTime = true;
    draft.time = told.clock.value_or(draft.time);
    draft.strong = draft.strong || told.strong;
    return draft;
}

TaskDraft taking(const MomentWords& told, TaskDraft draft) {
    draft.title = withoutWords(draft.title, told);
    draft.day = told.day.value_or(draft.day);
    draft.dated = draft.dated || told.day;
    if (told.clock) draft.hasTime = true;
    draft.time = told.clock.value_or(draft.time);
    return draft;
}

std::optional<NewTask> newTask(const NewTaskDraft& draft, Day today) {
    const auto title = dravel::trimmedOfWhiteSpaceAndLineBreaks(draft.title);
    if (title.empty()) return std::nullopt;
    return NewTask{.title = std::string(title),
                   .day = draft.day(today),
                   .time = draft.hasTime ? std::optional(draft.time) : std::nullopt,
                   .strong = draft.strong};
}

std::vector<NewTask> pastedTasks(const std::vector<std::string>& lines, const NewTaskDraft& draft, Day today) {
    std::vector<NewTask> tasks;
    for (const auto& typed : lines) {
        auto line = dravel::trimmedOfWhiteSpaceAndLineBreaks(typed);
        if (const auto read = TaskFile::parse(line); !read.empty()) {
            const auto& task = read.front();
            tasks.push_back({task.title, task.day.value_or(draft.day(today)), task.time, task.strong()});
            continue;
        }
        if (line.starts_with('#')) continue;
        for (const std::string_view bullet : {"- ", "* ", "• ", "– "})
            if (line.starts_with(bullet)) line.remove_prefix(bullet.size());
        if (!line.empty()) tasks.push_back({std::string(line), draft.day(today), {}, draft.strong});
    }
    return tasks;
}

std::array<Again, 3> againDays(Day today) {
    return {{{"Refaire &demain", today.plusDays(1)},
             {"Refaire &lundi prochain", today.nextMonday()},
             {"Refaire dans une &semaine", today.plusDays(7)}}};
}

NewTask again(const TaskItem& task, Day day) { return {task.title, day, task.time, task.strong()}; }

NewTaskDraft afterAdding(const NewTaskDraft& draft) {
    NewTaskDraft next;
    next.picked = draft.picked;
    return next;
}

std::array<QuickDay, 3> quickDays(Day today) {
    return {{{"Aujourd'hui", today}, {"Demain", today.plusDays(1)}, {"Lundi", today.nextMonday()}}};
}

}
