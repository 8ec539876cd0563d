#include "Tacla/TaskList/TaskItem.h"

#include "Tacla/TaskList/TaskLines.h"

namespace tacla {

bool TaskItem::strong() const { return title.starts_with(strongMark); }

std::string TaskItem::when() const { return day ? written(*day, time) : std::string(); }

}
