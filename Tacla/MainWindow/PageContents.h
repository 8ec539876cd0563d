#pragma once

#include "Tacla/AppModel/ModelState.h"
#include "Tacla/MainWindow/Mood.h"
#include "Tacla/MainWindow/Section.h"

#include <optional>
#include <string>
#include <vector>

// What the pages show, as values.
namespace dravel {
enum class Symbol;
}

namespace tacla {

// One card of tasks. A day's name is made when the card comes into view: there may be thousands.
struct TaskGroup {
    std::string heading;    // the whole title, or what stands before the day's name
    std::optional<Day> day; // the day that the title names
    dravel::Symbol symbol;
    Mood mood = Mood::accent;
    Tasks tasks;
    std::string empty; // said instead of the tasks when there are none
    bool showDay = true;

    std::string title() const;
    bool operator==(const TaskGroup&) const = default;
};

using TaskGroups = std::vector<TaskGroup>;

struct TodayContents {
    std::string overline, headline, detail;
    std::size_t done = 0, total = 0; // of today's tasks
    TaskGroups groups;
};

TodayContents todayContents(const ModelState&);
TaskGroups lateGroups(const ModelState&);
TaskGroups upcomingGroups(const ModelState&);
TaskGroups doneGroups(const ModelState&);

struct Problem {
    std::string text;
    Mood mood;

    bool operator==(const Problem&) const = default;
};

std::vector<Problem> problems(const ModelState&);

// A page that is one list: late, upcoming or done.
struct ListContents {
    std::string subtitle;
    TaskGroups groups;
    dravel::Symbol emptySymbol{};
    std::string empty; // said when there are no groups
    std::vector<Problem> problems{};
};

ListContents listContents(Section, const ModelState&);

}
