#include "Tacla/main/TaskSearch.h"

#include "DravelKit/Foundation/Text.h"

namespace tacla {

TaskSearch::TaskSearch(std::string_view text) : text_(text), possible_(!text.empty() && dravel::isValidUtf8(text)) {
    if (possible_) text_ = dravel::lowerCased(text);
}

bool TaskSearch::matches(const TaskItem& task) const {
    return possible_ && dravel::lowerCased(task.title).find(text_) != std::string::npos;
}

}
