#pragma once

#include "Tacla/TaskList/TaskFile.h"
#include "Tacla/TaskList/TaskViews.h"

#include <cstddef>
#include <optional>
#include <vector>

// Who is who in two readings of one list, between which anybody may have edited it.
namespace tacla {

// Each task of the earlier reading finds itself in the later one, unless it is gone, or cannot be told for sure. Both
// readings must outlive this.
class Successors {
  public:
    Successors(const Tasks& before, const Tasks& after);

    const TaskItem* of(const TaskItem& earlier) const; // found by its line

    // The keys of the tasks that go by another one now: a new title, or another number among those of one title.
    NewKeys newKeys() const;

  private:
    const Tasks &before_, &after_;
    std::vector<std::optional<std::size_t>> found_;
};

}
