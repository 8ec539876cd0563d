#pragma once

#include "Tacla/TaskList/TaskFile.h"
#include "Tacla/TaskList/TaskViews.h"

#include <limits>
#include <optional>
#include <vector>

// Who is who in two readings of one list, between which anybody may have edited it.
namespace tacla {

// Each task of the earlier reading finds itself in the later one, unless it is gone, or cannot be told for sure.
class Successors {
  public:
    Successors(TaskList before, TaskList after);

    std::optional<TaskItem> of(const TaskItem& earlier) const; // found by its line
    // The keys of the tasks that go by another one now: a new title, or another number among those of one title.
    const NewKeys& newKeys() const { return newKeys_; }

    static constexpr Place none = std::numeric_limits<Place>::max();

  private:
    TaskList before_, after_;
    std::vector<Place> found_; // for each earlier task
    NewKeys newKeys_;
};

}
