#pragma once

#include "Tacla/AppModel/ModelState.h"
#include "Tacla/TaskList/TaskFile.h"

#include <gtest/gtest.h>

// Model states written down as the task file that they come from.
namespace tacla::testing {

inline TaskItem taskOf(std::string_view line) { return TaskFile::parse(line).at(0); }

inline ModelState stateOf(std::string_view taskFile, std::string_view now = "2026-11-24 10:40") {
    ModelState state;
    state.tasks = TaskList(std::string(taskFile));
    state.now = *taskOf("- [ ] Maintenant · " + std::string(now)).at();
    state.today = Day::of(state.now);
    state.file = "/home/camille/Documents/taches.md";
    return state;
}

}
