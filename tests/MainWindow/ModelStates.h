#pragma once

#include "Tacla/AppModel/ModelState.h"
#include "Tacla/TaskList/TaskFile.h"

#include <string_view>

// Model states written down as the task file that they come from.
namespace tacla::testing {

// The local moment "2026-11-24 10:40".
inline Instant moment(std::string_view text) {
    const TaskItem task{.line = 0,
                        .done = false,
                        .title = {},
                        .day = Day::parse(text.substr(0, 10)),
                        .time = Clock::parse(text.substr(11)),
                        .due = {},
                        .doneOn = {},
                        .key = {}};
    return *task.at();
}

inline ModelState stateOf(std::string_view taskFile, std::string_view now = "2026-11-24 10:40") {
    ModelState state;
    state.tasks = TaskFile::parse(taskFile);
    state.now = moment(now);
    state.today = Day::of(state.now);
    state.file = "/home/camille/Documents/taches.md";
    return state;
}

inline TaskItem taskOf(std::string_view line) { return TaskFile::parse(line).at(0); }

}
