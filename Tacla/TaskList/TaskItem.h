#pragma once

#include "Tacla/TaskList/Clock.h"
#include "Tacla/TaskList/Day.h"

#include <cstdint>
#include <optional>
#include <string>
#include <tuple>

namespace tacla {

// One task line of the file.
struct TaskItem {
    std::int64_t line; // from 0, in the text split on line feeds
    bool done;
    std::string title; // as written, its "❗" included
    std::optional<Day> day;
    std::optional<Clock> time; // only together with a day
    std::optional<Day> due;    // when it was first due, once postponed
    std::optional<Day> doneOn;
    std::string key;   // 16 lower-case hexadecimal digits: the task's identity
    bool alone = true; // no other task of the text has its title

    bool strong() const;               // the title begins with "❗"
    std::string when() const;          // "", "2025-03-04" or "2025-03-04 14:30"
    std::optional<Instant> at() const; // when it falls due: at its time, else at 9:00; none without a day

    // Whether a task stands alone says something of its list.
    bool operator==(const TaskItem& other) const {
        const auto all = [](const TaskItem& task) {
            return std::tie(task.line, task.done, task.title, task.day, task.time, task.due, task.doneOn, task.key);
        };
        return all(*this) == all(other);
    }
};

}
