#pragma once

#include "Tacla/TaskList/TaskItem.h"

#include <string>
#include <string_view>

namespace tacla {

// A piece of a title, whatever its case. Accents count; an empty piece, or one that is no UTF-8, is in no title.
class TaskSearch {
  public:
    explicit TaskSearch(std::string_view text);

    const std::string& text() const { return text_; } // lower-cased
    bool matches(const TaskItem&) const;

  private:
    std::string text_;
    bool possible_;
};

}
