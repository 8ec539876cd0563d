#include "Tacla/TaskList/TaskViews.h"

#include <algorithm>
#include <iterator>

namespace tacla {

namespace {

// Dated tasks by (moment, line): the moment is asked for once a task, for it costs a calendar.
Tasks sorted(Tasks tasks) {
    struct Placed {
        Instant moment;
        std::int64_t line;
        std::size_t index;
    };
    std::vector<Placed> order;
    order.reserve(tasks.size());
    for (std::size_t i = 0; i < tasks.size(); ++i) order.push_back({*tasks[i].at(), tasks[i].line, i});
    std::ranges::stable_sort(order, {}, [](const Placed& task) { return std::pair(task.moment, task.line); });
    Tasks result;
    result.reserve(tasks.size());
    for (const auto& task : order) result.push_back(std::move(tasks[task.index]));
    return result;
}

template <class Predicate>
Tasks filtered(const Tasks& tasks, Predicate predicate) {
    Tasks result;
    std::ranges::copy_if(tasks, std::back_inserter(result), predicate);
    return result;
}

// The wall clock of one instant, against which tasks are judged.
struct Present {
    Day day;
    Clock clock;
    explicit Present(Instant now) : day(Day::of(now)), clock(Clock::of(now)) {}

    bool isLate(const TaskItem& task) const {
        if (task.done || !task.day) return false;
        return *task.day < day || (*task.day == day && task.time && *task.time < clock);
    }
    bool isTodays(const TaskItem& task) const { return task.day == day && !isLate(task); }
};

}

Tasks late(const Tasks& tasks, Instant now) {
    const Present present(now);
    return sorted(filtered(tasks, [&](const TaskItem& task) { return present.isLate(task); }));
}

Tasks todays(const Tasks& tasks, Instant now) {
    const Present present(now);
    return sorted(filtered(tasks, [&](const TaskItem& task) { return present.isTodays(task); }));
}

Tasks upcoming(const Tasks& tasks, Day today) {
    return sorted(filtered(tasks, [&](const TaskItem& task) { return !task.done && task.day && *task.day > today; }));
}

Tasks undated(const Tasks& tasks) {
    return filtered(tasks, [](const TaskItem& task) { return !task.done && !task.day; });
}

Tasks doneTasks(const Tasks& tasks, Day today) {
    auto done = filtered(tasks, [](const TaskItem& task) { return task.done; });
    std::ranges::stable_sort(done, std::ranges::greater{},
                             [&](const TaskItem& task) { return task.doneOn.value_or(task.day.value_or(today)); });
    return done;
}

std::size_t openCount(const Tasks& tasks, Instant now) {
    const Present present(now);
    return static_cast<std::size_t>(std::ranges::count_if(
        tasks, [&](const TaskItem& task) { return present.isLate(task) || (!task.done && present.isTodays(task)); }));
}

}
