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

namespace {

// The same of packed tasks.
struct PackedPresent {
    PackedDay day;
    std::int64_t minutes;
    explicit PackedPresent(Instant now) : day(packedDay(Day::of(now))) {
        const auto clock = Clock::of(now);
        minutes = clock.hour * 60 + clock.minute + 1;
    }

    bool isLate(const TaskList& tasks, TaskList::Dated task) const {
        if (task.done || task.day != day) return !task.done && task.day < day;
        const auto at = tasks.brief(task.place).minutes;
        return at != 0 && at < minutes;
    }
};

template <class Predicate>
Places byMoment(const TaskList& tasks, Predicate predicate) {
    Places places;
    for (const auto task : tasks.orders().byMoment)
        if (predicate(task)) places.push_back(task.place);
    return places;
}

}

Places late(const TaskList& tasks, Instant now) {
    const PackedPresent present(now);
    return byMoment(tasks, [&](TaskList::Dated task) { return present.isLate(tasks, task); });
}

Places todays(const TaskList& tasks, Instant now) {
    const PackedPresent present(now);
    return byMoment(tasks,
                    [&](TaskList::Dated task) { return task.day == present.day && !present.isLate(tasks, task); });
}

Places upcoming(const TaskList& tasks, Day today, std::size_t most) {
    const auto past = packedDay(today);
    Places places;
    for (const auto task : tasks.orders().byMoment) {
        if (places.size() == most) break;
        if (task.done == 0 && task.day > past) places.push_back(task.place);
    }
    return places;
}

std::vector<DayPlaces> upcomingByDay(const TaskList& tasks, Day today) {
    const auto past = packedDay(today);
    std::vector<DayPlaces> days;
    for (const auto task : tasks.orders().byMoment) {
        if (task.done != 0 || task.day <= past) continue;
        if (days.empty() || days.back().day != task.day) days.push_back({task.day, {}});
        days.back().places.push_back(task.place);
    }
    return days;
}

Places undated(const TaskList& tasks) {
    Places places;
    for (Place place = 0; const auto& task : tasks.briefs()) {
        if (!task.done && task.day == 0) places.push_back(place);
        ++place;
    }
    return places;
}

// Those without any day count as done today.
std::vector<DayPlaces> doneByDay(const TaskList& tasks, Day today) {
    const auto& anyTime = tasks.orders().doneAnyTime;
    auto days = tasks.orders().byCompletion;
    if (anyTime.empty()) return days;
    auto todays = std::ranges::lower_bound(days, packedDay(today), std::ranges::greater(), &DayPlaces::day);
    if (todays == days.end() || todays->day != packedDay(today)) todays = days.insert(todays, {packedDay(today), {}});
    Places all;
    std::ranges::merge(todays->places, anyTime, std::back_inserter(all));
    todays->places = std::move(all);
    return days;
}

std::size_t openCount(const TaskList& tasks, Instant now) {
    const PackedPresent present(now);
    return static_cast<std::size_t>(std::ranges::count_if(
        tasks.orders().byMoment, [&](TaskList::Dated task) { return task.done == 0 && task.day <= present.day; }));
}

}
