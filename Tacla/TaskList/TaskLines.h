#pragma once

#include "Tacla/TaskList/TaskItem.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// The grammar of a task line. Views into the text, no keys: what a quick look at a long list needs.
namespace tacla {

inline constexpr std::string_view separator = " · ";
inline constexpr std::string_view strongMark = "❗";
inline constexpr std::string_view doneMark = "✅";
inline constexpr std::string_view duePrefix = "due ";
inline constexpr std::size_t checkboxLength = 6; // "- [ ] "

struct TaskLine {
    std::int64_t line;
    bool done = false;
    std::string_view title; // empty when the line is no task
    std::optional<Day> day;
    std::optional<Clock> time;
    std::optional<Day> due, doneOn;

    // A constructor of its own: without one, each line would begin with the filling of all this with zeros.
    explicit TaskLine(std::int64_t number) : line(number) {}
    bool isTask() const { return !title.empty(); }
};

// A date with or without a time, as in "2025-03-04 14:30"; none for any other text.
struct When {
    Day day;
    std::optional<Clock> time;
};
std::optional<When> parsedWhen(std::string_view part);
std::string whenText(Day, std::optional<Clock>); // the reverse

// Where the checkbox stands in a task line: behind the indentation.
struct Checkbox {
    std::size_t begin;
    bool done;
};
std::optional<Checkbox> checkbox(std::string_view line);

TaskLine readTaskLine(std::string_view line, std::int64_t number);
void readAttributes(TaskLine&, std::string_view behindTheTitle); // the parts of its line
TaskItem itemOf(const TaskLine&);                                // without a key

template <class Action>
void forEachTask(std::string_view text, Action action) {
    std::int64_t number = 0;
    for (std::size_t begin = 0; begin <= text.size(); ++number) {
        const auto end = std::min(text.find('\n', begin), text.size());
        if (const auto task = readTaskLine(text.substr(begin, end - begin), number); task.isTask()) action(task);
        begin = end + 1;
    }
}

}
