#include "Tacla/TaskList/TaskItem.h"

#include "DravelKit/Foundation/WallCalendar.h"
#include "Tacla/TaskList/TaskLines.h"

namespace tacla {

bool TaskItem::strong() const { return title.starts_with(strongMark); }

std::string TaskItem::when() const { return day ? whenText(*day, time) : std::string(); }

std::optional<Instant> TaskItem::at() const {
    if (!day) return std::nullopt;
    const auto clock = time.value_or(Clock{9, 0});
    return dravel::wall::instant({day->year, day->month, day->day, clock.hour, clock.minute});
}

}
