#include "Tacla/MainWindow/PageContents.h"

#include "DravelKit/DravelUI/Symbols.h"
#include "Tacla/TaskList/Labels.h"

#include <algorithm>
#include <iterator>

namespace tacla {

using dravel::Symbol;

namespace {

constexpr std::size_t nextShown = 5;

std::string headline(std::size_t open, bool anyToday) {
    if (open >= 1) return counted(open, "tâche") + " à cocher";
    return anyToday ? "Tout est coché 🎉" : "Journée libre";
}

std::string detail(const Tasks& todays, std::size_t done, std::size_t late, Instant now) {
    auto text = counted(done, "faite");
    if (late > 0) text += " · " + std::to_string(late) + " en retard";
    const auto next = std::find_if(todays.begin(), todays.end(),
                                   [now](const TaskItem& task) { return !task.done && task.time && *task.at() > now; });
    if (next != todays.end()) text += " · prochaine à " + next->time->description();
    return text;
}

// Neighbours with one key make a group; the tasks are moved out.
template <class DayOf, class Make>
TaskGroups grouped(Tasks tasks, DayOf dayOf, Make make) {
    TaskGroups groups;
    for (auto first = tasks.begin(); first != tasks.end();) {
        const Day day = dayOf(*first);
        const auto last = std::find_if(first, tasks.end(), [&](const TaskItem& task) { return dayOf(task) != day; });
        TaskGroup group = make(day);
        group.tasks.assign(std::make_move_iterator(first), std::make_move_iterator(last));
        groups.push_back(std::move(group));
        first = last;
    }
    return groups;
}

}

std::string TaskGroup::title() const {
    if (!day) return heading;
    return heading.empty() ? capitalised(day->longLabel()) : heading + day->longLabel();
}

TodayContents todayContents(const ModelState& state) {
    TodayContents contents;
    auto late = state.late();
    auto todays = state.todays();
    auto next = state.upcoming();
    contents.total = todays.size();
    contents.done = static_cast<std::size_t>(std::ranges::count(todays, true, &TaskItem::done));
    contents.overline = "Aujourd'hui · " + state.today.longLabel();
    contents.headline = headline(late.size() + contents.total - contents.done, contents.total > 0);
    contents.detail = detail(todays, contents.done, late.size(), state.now);

    if (!late.empty())
        contents.groups.push_back({.heading = "En retard",
                                   .day = {},
                                   .symbol = Symbol::ExclamationTriangleFill,
                                   .mood = Mood::danger,
                                   .tasks = std::move(late),
                                   .empty = {}});
    contents.groups.push_back({.heading = "Au programme",
                               .day = {},
                               .symbol = Symbol::SunFill,
                               .tasks = std::move(todays),
                               .empty = "Rien de prévu aujourd'hui.",
                               .showDay = false});
    if (!next.empty()) {
        if (next.size() > nextShown) next.erase(next.begin() + nextShown, next.end());
        contents.groups.push_back(
            {.heading = "Ensuite", .day = {}, .symbol = Symbol::Calendar3, .tasks = std::move(next), .empty = {}});
    }
    return contents;
}

TaskGroups lateGroups(const ModelState& state) {
    auto late = state.late();
    if (late.empty()) return {};
    return {{.heading = std::to_string(late.size()) + " en retard",
             .day = {},
             .symbol = Symbol::ExclamationTriangleFill,
             .mood = Mood::danger,
             .tasks = std::move(late),
             .empty = {}}};
}

TaskGroups upcomingGroups(const ModelState& state) {
    const auto tomorrow = state.today.plusDays(1);
    auto groups = grouped(
        state.upcoming(), [](const TaskItem& task) { return *task.day; },
        [&](Day day) {
            return TaskGroup{.heading = day == tomorrow ? "Demain · " : "",
                             .day = day,
                             .symbol = Symbol::Calendar3,
                             .tasks = {},
                             .empty = {}};
        });
    if (auto undated = state.undated(); !undated.empty())
        groups.push_back({.heading = "Sans date",
                          .day = {},
                          .symbol = Symbol::Inbox,
                          .mood = Mood::plain,
                          .tasks = std::move(undated),
                          .empty = {}});
    return groups;
}

TaskGroups doneGroups(const ModelState& state) {
    const auto today = state.today;
    const auto yesterday = today.plusDays(-1);
    return grouped(
        state.doneTasks(),
        [today](const TaskItem& task) { return task.doneOn ? *task.doneOn : task.day.value_or(today); },
        [&](Day day) {
            TaskGroup group{.heading = day == yesterday ? "Hier · " : "",
                            .day = day,
                            .symbol = Symbol::CheckCircleFill,
                            .mood = Mood::faint,
                            .tasks = {},
                            .empty = {}};
            if (day == today) {
                group.heading = "Aujourd'hui";
                group.day.reset();
                group.mood = Mood::success;
            }
            return group;
        });
}

std::vector<Problem> problems(const ModelState& state) {
    std::vector<Problem> found;
    if (state.fileError) found.push_back({*state.fileError, Mood::danger});
    if (state.calendarSync && state.syncError) found.push_back({"Agenda : " + *state.syncError, Mood::warning});
    return found;
}

ListContents listContents(Section section, const ModelState& state) {
    switch (section) {
    case Section::late:
        return {.subtitle = "Cochez-les, ou reportez-les avec « … » : demain, lundi ou dans une semaine.",
                .groups = lateGroups(state),
                .emptySymbol = Symbol::HandThumbsUpFill,
                .empty = "Aucun retard. 👌",
                .problems = problems(state)};
    case Section::upcoming:
        return {.subtitle = "Jour par jour, dans l'ordre où elles sonneront.",
                .groups = upcomingGroups(state),
                .emptySymbol = Symbol::Calendar3,
                .empty = "Rien de prévu pour la suite."};
    case Section::done:
        return {.subtitle = state.calendarSync
                                ? "Elles restent dans la liste et dans l'agenda, avec un ✅."
                                : "Elles restent dans la liste, avec la date du jour où elles ont été faites.",
                .groups = doneGroups(state),
                .emptySymbol = Symbol::CheckCircle,
                .empty = "Rien de coché pour l'instant."};
    case Section::today:
    case Section::settings: break;
    }
    return {};
}

}
