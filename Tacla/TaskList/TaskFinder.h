#pragma once

#include "DravelKit/Foundation/FoldedText.h"
#include "Tacla/TaskList/TaskViews.h"

#include <string>
#include <string_view>
#include <vector>

namespace tacla {

using dravel::TextRange;

// The words to look for: all of them, in any order, each anywhere in a title. Case, accents and apostrophes do not
// count.
class SoughtWords {
  public:
    explicit SoughtWords(std::string_view typed);

    bool standIn(std::string_view foldedTitle) const;              // false for no words
    std::vector<TextRange> rangesIn(std::string_view title) const; // every letter found, in order, no two touching

  private:
    std::vector<std::string> words_;
};

// The titles of a list, made ready once for many searches.
class TaskFinder {
  public:
    explicit TaskFinder(const TaskList&);

    // Their places in the list: open tasks first, then done ones, each in file order.
    Places find(std::string_view typed) const;

  private:
    std::string folded_;            // all titles, one after the other
    std::vector<std::size_t> ends_; // of each in it
    std::vector<bool> done_;
};

// The first open tasks that are found, at most so many.
Places firstFound(const TaskList&, std::string_view typed, std::size_t most);

}
